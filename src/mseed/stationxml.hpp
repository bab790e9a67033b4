#pragma once
// The StationXML document (FDSN StationXML 1.2) of an export: every station and channel with its
// position, orientation, equipment and, where the metadata hold every stage, its response.
#include <cstddef>
#include <string>
#include <vector>

#include "mseed/station_meta.hpp"

namespace lm::mseed {

struct XmlResult {
  bool ok = false;
  std::string error;                      // one line naming the file, when !ok
  std::vector<std::string> warnings;      // e.g. a value cut or cleaned (hostile metadata), one line each
  std::vector<std::string> no_response;   // "NET.STA.LOC.CHA: <why>" for each channel written without Response
};

// Writes one FDSNStationXML 1.2 document (Source "lm_mseed <version>", Created now) with every station
// and channel. The first `root` characters of `path` are the output directory the user named (open_below).
XmlResult write_stationxml(const std::string& path, std::size_t root, const std::vector<StationMeta>& stations);

}  // namespace lm::mseed

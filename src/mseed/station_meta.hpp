#pragma once
// What the export learned of each station and channel while writing its records: the StationXML
// document is written from these values alone, after the last input.
#include <cstdint>
#include <string>
#include <vector>

#include "config/ini.hpp"

namespace lm::mseed {

// One SEED channel (network, station, location and channel code) as its records were written.
struct ChannelMeta {
  std::string loc, cha;              // codes exactly as in the miniSEED files
  std::int64_t start_ns = 0;         // first sample, nanoseconds since 1970-01-01 UTC
  std::int64_t end_ns = 0;           // last sample
  double rate = 0;                   // samples per second
  ChnMeta chn;                       // the INI values, with the event header's applied on top
  double tbw = 0;                    // bit weight, volts per count; 0 when the event header gave none
  std::uint8_t gain_ndx = 0;         // row of the gain table (the event header's gain code)
  bool gain_known = false;           // the event header gave a gain code
};

struct StationMeta {
  std::string net, sta;              // codes as in the miniSEED files
  std::uint16_t unit_id = 0;
  std::string site;                  // the INI Station value as written, empty when none
  double lat = 0, lon = 0, elev = 0; // the INI position, replaced by the event header's
  bool position_known = false;
  std::string das_model, das_serial; // from SC packets, empty when the input had none
  std::int64_t start_ns = 0, end_ns = 0;
  std::vector<ChannelMeta> channels;
};

}  // namespace lm::mseed

#pragma once
// The export: packet files in, miniSEED records and a StationXML document out.
#include <cstdio>

#include "mseed/cli.hpp"

namespace lm::mseed {

// Exit statuses of lm_mseed.
namespace status {
inline constexpr int kOk = 0;
inline constexpr int kUsage = 2;
inline constexpr int kNoOutDir = 10;
inline constexpr int kInput = 20;      // an input could not be opened or read
inline constexpr int kWrite = 22;      // an output file could not be opened or written
inline constexpr int kNoData = 1;      // no data packet in any input
}  // namespace status

// Runs the export; messages go to `err`. Returns the exit status.
int run_export(const Options& o, const char* argv0, std::FILE* err);

}  // namespace lm::mseed

#pragma once
// lm_mseed's command line.
#include <string>
#include <vector>

namespace lm::mseed {

enum class Layout { kFlat, kSds };

struct Options {
  std::string out_dir = ".";
  Layout layout = Layout::kFlat;
  std::string net = "XX";
  std::string loc;
  int reclen = 4096;
  int encoding = 11;            // libmseed's DE_STEIM2
  std::string ini;              // empty: found as lm_asc finds it
  bool quiet = false;
  std::string stationxml;       // empty: OUT_DIR/NET.xml
  bool no_stationxml = false;
  std::vector<std::string> inputs;
};

extern const char kUsage[];

// The options of argv[1..]; false with `error` set when the command line is wrong.
bool parse_cli(int argc, char** argv, Options& o, std::string& error);
// The INI file when none is named: LMU, else lmu.ini in the working directory, else beside the program.
std::string default_ini(const char* argv0);

}  // namespace lm::mseed

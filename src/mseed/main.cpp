// lm_mseed: recorder packet files as miniSEED and StationXML.
#include <cstdio>
#include <cstring>
#include <string>

#include "lm_version.hpp"
#include "mseed/cli.hpp"
#include "mseed/export.hpp"

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--help") == 0) return std::fputs(lm::mseed::kUsage, stdout) < 0;
    if (std::strcmp(argv[i], "--version") == 0) return std::printf("lm_mseed %s\n", LM_VERSION) < 0;
  }
  lm::mseed::Options o;
  std::string error;
  if (!lm::mseed::parse_cli(argc, argv, o, error)) {
    std::fprintf(stderr, "lm_mseed: %s\n%s", error.c_str(), lm::mseed::kUsage);
    return lm::mseed::status::kUsage;
  }
  return lm::mseed::run_export(o, argc > 0 ? argv[0] : nullptr, stderr);
}

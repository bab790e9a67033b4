// The INI reader over arbitrary text: the unit 0A2B and three of its channels read their values.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/exit.hpp"
#include "config/ini.hpp"

namespace {
std::string g_path;
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  if (!std::freopen("/dev/null", "w", stdout)) std::abort();
  char tmpl[] = "/tmp/lm_fuzz_ini_XXXXXX";
  const int fd = ::mkstemp(tmpl);
  if (fd < 0) std::abort();
  ::close(fd);
  g_path = tmpl;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::FILE* f = std::fopen(g_path.c_str(), "wb");
  if (!f) std::abort();
  std::fwrite(data, 1, size, f);
  std::fclose(f);
  lm::UnitMeta unit;
  unit.ini_last = -1;
  try {
    lm::Unit_ini(unit, 0x0A2B, g_path.c_str());
    for (std::uint16_t n : {0, 1, 165}) {
      lm::ChnMeta chn;
      lm::Chn_ini(chn, n, unit, 0x0A2B, g_path.c_str());
    }
  } catch (const lm::RunExit&) {
    // A reader may end the run with a status; that is a clean end, not a finding.
  }
  return 0;
}

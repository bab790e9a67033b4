// The INI reader over arbitrary text: the unit 0A2B and three of its channels read their values.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "config/ini.hpp"
#include "run/exit.hpp"
#include "run/globals.hpp"
#include "base/text.hpp"

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
  lm::set_text(lm::G.FileIni, g_path);
  lm::UNIT_T unit;
  unit.unit_id = 0x0A2B;
  unit.ini_last = -1;
  lm::Evt evt;
  evt.unit = &unit;
  try {
    lm::Unit_ini(&unit);
    for (std::uint16_t n : {0, 1, 165}) {
      lm::CHNLST_T chn;
      chn.unit = &unit;
      chn.evt = &evt;
      chn.channel = n;
      lm::Chn_ini(&chn);
    }
  } catch (const lm::RunExit&) {
    // A reader may end the run with a status; that is a clean end, not a finding.
  }
  lm::run_ending_reset();
  return 0;
}

// The whole conversion in-process: the bytes are the input file, except the last two, which choose
// the switches. Output goes to a temporary directory that is emptied after every run.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "run/cli.hpp"
#include "base/file_util.hpp"

namespace fs = std::filesystem;

namespace {

fs::path g_dir;

std::vector<std::string> switches(std::uint8_t a, std::uint8_t b) {
  std::vector<std::string> s = {"-VN"};
  if (a & 0x01) s.push_back("-Q+");
  if (a & 0x02) s.push_back("-DY");
  if (a & 0x04) s.push_back("-G+");
  if (a & 0x08) s.push_back("-HN");
  if (a & 0x10) s.push_back("-LN");
  if (a & 0x20) s.push_back("-T" + std::to_string(b % 7));
  if (a & 0x40) s.push_back("-S" + std::to_string(b % 13));
  if (a & 0x80) s.push_back("-V+");
  s.push_back("-P" + std::to_string(b % 5));
  s.push_back("-N" + std::to_string(b / 5 % 3));
  return s;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // Progress lines are not wanted, and the diagnostic dumps' key prompts must not wait.
  if (!std::freopen("/dev/null", "w", stdout) || !std::freopen("/dev/null", "r", stdin)) std::abort();
  char tmpl[] = "/tmp/lm_fuzz_convert_XXXXXX";
  if (!::mkdtemp(tmpl)) std::abort();
  g_dir = tmpl;
  ::setenv("LMU", (g_dir / "no.ini").c_str(), 1);
  // A file that cannot be opened fails at once: the five-second retry would leave no time to fuzz.
  lm::set_open_retry_seconds(-1);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const fs::path in = g_dir / "in.pkt";
  const fs::path out = g_dir / "out";
  {
    std::ofstream f(in, std::ios::binary | std::ios::trunc);
    f.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size - 2));
  }
  fs::create_directories(out);
  std::vector<std::string> args = {"lm_asc", in.string(), out.string()};
  for (auto& s : switches(data[size - 2], data[size - 1])) args.push_back(s);
  std::vector<char*> argv;
  for (auto& a : args) argv.push_back(a.data());
  argv.push_back(nullptr);
  lm::run_main(static_cast<int>(args.size()), argv.data());
  fs::remove_all(out);
  return 0;
}

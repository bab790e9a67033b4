// The miniSEED export in-process, flat and SDS alike. The last byte chooses the options; of the bytes
// before it, the whole packets are the input and the rest (under one packet) is the INI file. Output
// goes to a temporary directory that is emptied after every run.
#include <libmseed.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "mseed/cli.hpp"
#include "mseed/export.hpp"

namespace fs = std::filesystem;

namespace {

fs::path g_dir;
std::FILE* g_err = nullptr;

void write(const fs::path& path, const std::uint8_t* data, std::size_t size) {
  std::ofstream f(path, std::ios::binary | std::ios::trunc);
  f.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // The summary and the StationXML line go to standard output, the warnings to g_err: neither is wanted.
  if (!std::freopen("/dev/null", "w", stdout)) std::abort();
  g_err = std::fopen("/dev/null", "w");
  char tmpl[] = "/tmp/lm_fuzz_mseed_XXXXXX";
  if (!g_err || !::mkdtemp(tmpl)) std::abort();
  g_dir = tmpl;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const std::uint8_t sw = data[size - 1];
  const std::size_t body = size - 1, packets = body / 1024 * 1024;
  lm::mseed::Options o;
  // Two inputs, split at a packet boundary: a channel goes on from one file into the next.
  const std::size_t split = (sw & 0x20) ? packets / 2048 * 1024 : packets;
  write(g_dir / "a.pkt", data, split);
  o.inputs.push_back((g_dir / "a.pkt").string());
  if (split < packets) {
    write(g_dir / "b.pkt", data + split, packets - split);
    o.inputs.push_back((g_dir / "b.pkt").string());
  }
  o.ini = (g_dir / "lmu.ini").string();
  if (body > packets) write(o.ini, data + packets, body - packets);
  else fs::remove(o.ini);
  static const int kEncodings[] = {DE_STEIM2, DE_STEIM1, DE_INT32, DE_STEIM2};
  o.encoding = kEncodings[sw & 0x03];
  o.reclen = (sw & 0x04) ? 512 : 4096;
  o.no_stationxml = (sw & 0x08) != 0;
  if (sw & 0x10) o.loc = "00";
  o.quiet = true;
  o.out_dir = (g_dir / "out").string();
  for (const lm::mseed::Layout layout : {lm::mseed::Layout::kFlat, lm::mseed::Layout::kSds}) {
    fs::create_directories(o.out_dir);
    o.layout = layout;
    const int st = lm::mseed::run_export(o, "lm_mseed", g_err);
    // Inputs and output are in order, so only an input without a whole packet (1) may fail: a write
    // error here would be a record libmseed could not pack.
    if (st != 0 && st != 1) std::abort();
    fs::remove_all(o.out_dir);
  }
  return 0;
}

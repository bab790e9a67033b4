#pragma once
// Test support for the packet log: what a writer puts into a fresh log file, and the "ruler" packet
// whose byte i is the base-62 digit of i % 62, so that any slice of it tells its offset and width.
#include <gtest/gtest.h>

#include <string>

#include "output/out_file.hpp"
#include "pktkit/packet_builder.hpp"
#include "support/e2e.hpp"

namespace log_test {

// Runs `write` against a fresh log file and returns what it holds.
template <class F>
std::string logged(F write) {
  e2e::TempDir tmp;
  const std::string path = tmp / "x.lml";
  lm::OutFile f;
  EXPECT_TRUE(f.open(path.c_str(), "wb"));
  write(f);
  f.close();
  return e2e::read_file(path);
}

inline constexpr char kDigits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

inline pktkit::Packet ruler() {
  pktkit::Packet p;
  for (std::size_t i = 0; i < p.size(); ++i) p[i] = static_cast<std::uint8_t>(kDigits[i % 62]);
  return p;
}

// The ruler's bytes from `off`, `width` of them, as far as the packet goes.
inline std::string R(int off, int width) {
  std::string s;
  for (int i = off; i < off + width && i < 1024; ++i) s += kDigits[i % 62];
  return s;
}

// What a packet dump writer makes of a packet.
using Writer = void (*)(lm::OutFile&, const std::uint8_t*);
inline std::string dump(Writer w, const pktkit::Packet& p) {
  return logged([&](lm::OutFile& f) { w(f, p.data()); });
}

// A label line with the ruler's field at off, width; a label line with a value.
inline std::string F(const char* label, int off, int width) { return label + R(off, width) + "\r\n"; }
inline std::string L(const char* label, const std::string& value) { return label + value + "\r\n"; }

}  // namespace log_test

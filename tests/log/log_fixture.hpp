#pragma once
// Test support for the packet log: what a writer puts into a fresh log file, and the "ruler" packet
// whose byte i is the base-62 digit of i % 62, so that any slice of it tells its offset and width.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>

#include "base/out_file.hpp"
#include "pktkit/packet_builder.hpp"
#include "support/e2e.hpp"

namespace log_test {

// Runs `write` against a fresh log file and returns what it holds.
template <class F>
std::string logged(F write) {
  e2e::TempDir tmp;
  const std::string path = tmp / "x.lml";
  lm::OutFile f;
  EXPECT_TRUE(f.open(path.c_str(), 0, "wb"));
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

// Label lines as the dumps write them: `lead` blanks, the label padded to `pad`, ": " and the value,
// by default the ruler's field at off, width.
struct Row {
  Row(const char* l, int off, int width) : label(l), value(R(off, width)) {}
  Row(const char* l, std::string v) : label(l), value(std::move(v)) {}
  std::string label, value;
};
inline std::string lines(std::size_t lead, std::size_t pad, std::initializer_list<Row> rows) {
  std::string s;
  for (const Row& r : rows) s += std::string(lead, ' ') + r.label + std::string(pad - r.label.size(), ' ') + ": " + r.value + "\r\n";
  return s;
}
inline std::string top(std::initializer_list<Row> rows) { return lines(5, 29, rows); }
inline std::string sub(std::initializer_list<Row> rows) { return lines(6, 28, rows); }
inline std::string evt(std::initializer_list<Row> rows) { return lines(3, 23, rows); }

}  // namespace log_test

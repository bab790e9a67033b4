#pragma once
// Test support for the sample decoders: hand-built Steim frames, decoding through an exactly
// 1024-byte heap copy of the packet (so that the sanitizers catch any read beyond it), and a unit
// packet log on a temporary file.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "decode/decoders.hpp"
#include "model/records.hpp"
#include "pktkit/packet_builder.hpp"
#include "support/e2e.hpp"

namespace decode_test {

using pktkit::Packet;

// A DT packet with Steim frames written word by word.
class Frames {
 public:
  Frames(std::uint8_t format, unsigned n_hdr, std::uint32_t x0, std::uint32_t xn)
      : p_(pktkit::make_header("DT", 0x1234, {9, 32, 1, 2, 3, 400}, 5)) {
    pktkit::put_ext(p_, 7, 0, 2, n_hdr, 0, format);
    pktkit::put_be32(p_, 64 + 4, x0);
    pktkit::put_be32(p_, 64 + 8, xn);
  }
  // Word w (0-15) of frame f (1-15) with its code in the frame's control word.
  Frames& at(int f, int w, unsigned code, std::uint32_t word) {
    pktkit::put_be32(p_, 64 * f + 4 * w, word);
    const int ctl = 64 * f;
    const std::uint32_t c = (std::uint32_t{p_[ctl]} << 24) | (std::uint32_t{p_[ctl + 1]} << 16) |
                            (std::uint32_t{p_[ctl + 2]} << 8) | p_[ctl + 3];
    pktkit::put_be32(p_, ctl, (c & ~(3u << (30 - 2 * w))) | (code << (30 - 2 * w)));
    return *this;
  }
  // The next data word after the last one added (from frame 1 word 3 on).
  Frames& add(unsigned code, std::uint32_t word) {
    at(f_, w_, code, word);
    if (++w_ == 16) {
      ++f_;
      w_ = 1;
    }
    return *this;
  }
  const Packet& packet() const { return p_; }

 private:
  Packet p_;
  int f_ = 1, w_ = 3;
};

// Runs a decoder on a heap copy of exactly 1024 bytes and returns the samples it produced.
inline std::vector<std::int32_t> decode(lm::Decoder dec, const Packet& p, lm::CHNLST_T* chn,
                                        std::uint32_t* count_word = nullptr) {
  auto exact = std::make_unique<std::uint8_t[]>(p.size());
  std::copy(p.begin(), p.end(), exact.get());
  auto buf = std::make_unique<std::uint32_t[]>(1582);
  buf[0] = 0xDEADBEEF;
  dec(chn, exact.get(), buf.get());
  if (count_word) *count_word = buf[0];
  const std::uint32_t n = buf[0] < 1582 ? buf[0] : 0;
  std::vector<std::int32_t> out(n);
  for (std::uint32_t i = 0; i < n; ++i) out[i] = static_cast<std::int32_t>(buf[1 + i]);
  return out;
}

// A channel whose unit has its packet log open on a temporary file.
class LoggedChannel {
 public:
  LoggedChannel() : path_(tmp_ / "unit.lml") {
    unit_.fd_log.open(path_.c_str(), "wb");
    chn_.unit = &unit_;
  }
  lm::CHNLST_T* chn() { return &chn_; }
  // Everything logged so far (closes the log).
  std::string log() {
    unit_.fd_log.close();
    return e2e::read_file(path_);
  }

 private:
  e2e::TempDir tmp_;
  std::string path_;
  lm::UNIT_T unit_;
  lm::CHNLST_T chn_;
};

// The hex dump of a whole packet as the unit log shows it after a report.
inline std::string packet_dump(const Packet& p) {
  std::string out;
  char line[128];
  for (int off = 0; off < 1024; off += 16) {
    std::string hex, text;
    for (int i = 0; i < 16; ++i) {
      std::snprintf(line, sizeof line, "%02X ", p[off + i]);
      hex += line;
      if (i == 7) hex += "- ";
      text += (p[off + i] < 32 || p[off + i] > 126) ? '.' : static_cast<char>(p[off + i]);
    }
    std::snprintf(line, sizeof line, "     %03X   ", off);
    out += line + hex + "  " + text + "\r\n";
  }
  return out + "\r\n";
}

// A random walk from `start` whose every step has a width in bits drawn from `widths` (a step of
// width b lies in [-2^(b-1), 2^(b-1) - 1]); the walk stays within [lo, hi], reversing a step that
// would leave it.
inline std::vector<std::int32_t> random_walk(std::uint32_t seed, std::size_t n, std::int32_t start,
                                             const std::vector<int>& widths, std::int64_t lo = INT32_MIN,
                                             std::int64_t hi = INT32_MAX) {
  std::mt19937 rng(seed);
  std::vector<std::int32_t> out;
  std::int64_t v = start;
  for (std::size_t i = 0; i < n; ++i) {
    out.push_back(static_cast<std::int32_t>(v));
    const int b = widths[rng() % widths.size()];
    const std::int64_t half = std::int64_t{1} << (b - 1);
    std::int64_t step = static_cast<std::int64_t>(rng() % static_cast<std::uint64_t>(2 * half)) - half;
    if (v + step < lo || v + step > hi) step = std::min(-step, half - 1);
    if (v + step < lo || v + step > hi) step = 0;
    v += step;
  }
  return out;
}

}  // namespace decode_test

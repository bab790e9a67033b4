#pragma once
// Test support for the sample decoders: decoding from an exact 1024-byte heap copy (the sanitizers
// catch any read beyond it), a unit packet log on a temporary file, random traces.
#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "decode/decoders.hpp"
#include "model/records.hpp"
#include "run/globals.hpp"
#include "support/e2e.hpp"

namespace decode_test {

// The samples a decoder yields (at most what the buffer holds, whatever its count word says).
inline std::vector<std::int32_t> decode(lm::Decoder dec, const pktkit::Packet& p, lm::CHNLST_T* chn) {
  const std::vector<std::uint8_t> exact(p.begin(), p.end());
  std::vector<std::uint32_t> buf(lm::kDataBufWords, 0xDEADBEEF);
  dec(chn, exact.data(), buf.data());
  return {buf.begin() + 1, buf.begin() + 1 + std::min<std::uint32_t>(buf[0], lm::kDataBufWords - 1)};
}

// A channel whose unit has its packet log open on a temporary file.
struct LoggedChannel {
  e2e::TempDir tmp;
  lm::UNIT_T unit;
  lm::CHNLST_T chn;
  LoggedChannel() { unit.fd_log.open((tmp / "u.lml").c_str(), "wb"); chn.unit = &unit; }
  std::string log() { unit.fd_log.close(); return e2e::read_file(tmp / "u.lml"); }  // all logged so far; closes it
};

// A random walk from v with steps of a bit width drawn from `widths` (width b: a step in
// [-2^(b-1), 2^(b-1) - 1]), kept within [lo, hi] by reversing a step that would leave it.
inline std::vector<std::int32_t> random_walk(std::uint32_t seed, std::size_t n, std::int64_t v, const std::vector<int>& widths,
                                             std::int64_t lo = INT32_MIN, std::int64_t hi = INT32_MAX) {
  std::mt19937 rng(seed);
  std::vector<std::int32_t> out;
  while (out.size() < n) {
    out.push_back(static_cast<std::int32_t>(v));
    const std::int64_t half = std::int64_t{1} << (widths[rng() % widths.size()] - 1);
    std::int64_t step = std::int64_t(rng() % std::uint64_t(2 * half)) - half;
    if (v + step < lo || v + step > hi) step = std::min(-step, half - 1);
    if (v + step >= lo && v + step <= hi) v += step;
  }
  return out;
}

}  // namespace decode_test

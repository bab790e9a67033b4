#pragma once
// Test support for the sample decoders: decoding from an exact 1024-byte heap copy (the sanitizers
// catch any read beyond it) into a span of exactly the largest size, random traces.
#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "decode/decoders.hpp"
#include "pktkit/packet_builder.hpp"

namespace decode_test {

// The samples a decoder yields (at most what the span holds, whatever its count says), carrying the
// channel's last sample in `last` (a fresh 0 when null); `result` receives the decoder's result.
inline std::vector<std::int32_t> decode(lm::Decoder dec, const pktkit::Packet& p, std::int32_t* last = nullptr,
                                        lm::Decoded* result = nullptr) {
  const std::vector<std::uint8_t> exact(p.begin(), p.end());
  std::vector<std::uint32_t> buf(lm::kMaxSamples, 0xDEADBEEF);
  std::int32_t fresh = 0;
  const lm::Decoded d = dec(exact.data(), last ? *last : fresh, buf);
  if (result) *result = d;
  return {buf.begin(), buf.begin() + std::min<std::size_t>(d.count, buf.size())};
}

// A random walk from v with steps of a bit width drawn from `widths` (width b: a step in
// [-2^(b-1), 2^(b-1) - 1]), kept within the 32-bit range by reversing a step that would leave it.
inline std::vector<std::int32_t> random_walk(std::uint32_t seed, std::size_t n, std::int64_t v, const std::vector<int>& widths) {
  std::mt19937 rng(seed);
  std::vector<std::int32_t> out;
  while (out.size() < n) {
    out.push_back(static_cast<std::int32_t>(v));
    const std::int64_t half = std::int64_t{1} << (widths[rng() % widths.size()] - 1);
    std::int64_t step = std::int64_t(rng() % std::uint64_t(2 * half)) - half;
    if (v + step < INT32_MIN || v + step > INT32_MAX) step = std::min(-step, half - 1);
    if (v + step >= INT32_MIN && v + step <= INT32_MAX) v += step;
  }
  return out;
}

}  // namespace decode_test

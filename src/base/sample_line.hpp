#pragma once
// A sample's line of text, "%ld\r\n", by table lookups: on the per-sample path printf would cost
// more than all the rest of the work. Most samples are below 10000 in magnitude; their whole line,
// line end included, is one eight-byte copy from a table that also holds its length.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace lm {

// Longest sample line: "-2147483648\r\n".
inline constexpr std::size_t kSampleLineMax = 13;
// put_sample_line stores whole eight-byte words: a buffer of lines needs this much room past its
// last line's end.
inline constexpr std::size_t kSampleLineSlack = 8;

namespace line_detail {

using Entry = std::array<char, 8>;

// Filled once at start-up, not at compile time: that many steps pass some compilers' constant-evaluation limits.
// For q below 10000: its four digits, leading zeros kept, then "\r\n".
inline const auto kFour = [] {
  std::array<Entry, 10000> t{};
  for (int q = 0; q < 10000; ++q) {
    for (int k = 0, p = 1000; k < 4; ++k, p /= 10) t[q][k] = static_cast<char>('0' + q / p % 10);
    t[q][4] = '\r';
    t[q][5] = '\n';
  }
  return t;
}();

// For q below 10000: its digits without leading zeros, then "\r\n"; the last byte holds the digit
// count.
inline const auto kShort = [] {
  std::array<Entry, 10000> t{};
  for (int q = 0; q < 10000; ++q) {
    const int digits = q < 10 ? 1 : q < 100 ? 2 : q < 1000 ? 3 : 4;
    for (int k = 0; k < digits; ++k) t[q][k] = kFour[q][4 - digits + k];
    t[q][digits] = '\r';
    t[q][digits + 1] = '\n';
    t[q][7] = static_cast<char>(digits);
  }
  return t;
}();

// q below 10000 without leading zeros and with the line end; returns the end of the digits.
inline char* put_short(char* out, std::uint32_t q) {
  std::memcpy(out, kShort[q].data(), 8);
  return out + kShort[q][7];
}

}  // namespace line_detail

// v as "%ld\r\n" prints it. Writes within out[0..kSampleLineMax + kSampleLineSlack); returns the
// end of the line.
inline char* put_sample_line(char* out, std::int32_t v) {
  using namespace line_detail;
  // The sign without a branch: a random walk's signs are as good as random.
  const std::uint32_t neg = v < 0;
  const std::uint32_t u = neg ? 0u - static_cast<std::uint32_t>(v) : static_cast<std::uint32_t>(v);
  *out = '-';
  out += neg;
  // Widths change slowly along a trace, so these branches are well predicted.
  if (u < 10000) return put_short(out, u) + 2;
  std::uint32_t hi = u / 10000;
  if (hi >= 10000) {
    out = put_short(out, hi / 10000);
    hi %= 10000;
    std::memcpy(out, kFour[hi].data(), 4);
    out += 4;
  } else {
    out = put_short(out, hi);
  }
  std::memcpy(out, kFour[u % 10000].data(), 8);
  return out + 6;
}

}  // namespace lm

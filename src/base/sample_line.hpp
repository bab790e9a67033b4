#pragma once
// A sample's line of text, "%ld\r\n", by table lookups: on the per-sample path printf would cost
// more than all the rest of the work. Most samples are below 10000 in magnitude; their whole line,
// sign and line end included, is one eight-byte copy from a table that also holds its length.
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
inline constexpr std::int32_t kSmallMax = 9999;

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

// For v in [-9999, 9999], at v + 9999: its whole line, sign and "\r\n" included (7 bytes at
// most); the last byte holds the line's length.
inline const auto kSmall = [] {
  std::array<Entry, 2 * kSmallMax + 1> t{};
  for (int v = -kSmallMax; v <= kSmallMax; ++v) {
    Entry& e = t[static_cast<std::size_t>(v + kSmallMax)];
    const int q = v < 0 ? -v : v;
    const int digits = q < 10 ? 1 : q < 100 ? 2 : q < 1000 ? 3 : 4;
    int k = 0;
    if (v < 0) e[k++] = '-';
    for (int d = 0; d < digits; ++d) e[k++] = kFour[q][4 - digits + d];
    e[k++] = '\r';
    e[k++] = '\n';
    e[7] = static_cast<char>(k);
  }
  return t;
}();

// v in [-9999, 9999] with its line end; returns the end of the line.
inline char* put_small(char* out, std::int32_t v) {
  const Entry& e = kSmall[static_cast<std::uint32_t>(v + kSmallMax)];
  std::memcpy(out, e.data(), 8);
  return out + e[7];
}

}  // namespace line_detail

// v as "%ld\r\n" prints it. Writes within out[0..kSampleLineMax + kSampleLineSlack); returns the
// end of the line.
inline char* put_sample_line(char* out, std::int32_t v) {
  using namespace line_detail;
  // One unsigned comparison tells a small value of either sign; widths change slowly along a
  // trace, so the branch is well predicted.
  if (static_cast<std::uint32_t>(v) + kSmallMax <= 2 * kSmallMax) return put_small(out, v);
  const std::uint32_t neg = v < 0;
  const std::uint32_t u = neg ? 0u - static_cast<std::uint32_t>(v) : static_cast<std::uint32_t>(v);
  *out = '-';
  out += neg;
  // The leading digits come from the small table without their line end, which the rest covers.
  std::uint32_t hi = u / 10000;
  if (hi >= 10000) {
    out = put_small(out, static_cast<std::int32_t>(hi / 10000)) - 2;
    hi %= 10000;
    std::memcpy(out, kFour[hi].data(), 4);
    out += 4;
  } else {
    out = put_small(out, static_cast<std::int32_t>(hi)) - 2;
  }
  std::memcpy(out, kFour[u % 10000].data(), 8);
  return out + 6;
}

}  // namespace lm

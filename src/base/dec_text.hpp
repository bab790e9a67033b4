#pragma once
// Number text by hand for the paths that run once per sample or per packet, where printf costs
// more than the rest of the work; decimal samples four digits at a time from one table.
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace lm {
namespace dec_detail {

inline constexpr auto kQuads = [] {
  std::array<char, 4 * 10000> t{};
  for (int i = 0; i < 10000; ++i) {
    t[4 * i] = static_cast<char>('0' + i / 1000);
    t[4 * i + 1] = static_cast<char>('0' + i / 100 % 10);
    t[4 * i + 2] = static_cast<char>('0' + i / 10 % 10);
    t[4 * i + 3] = static_cast<char>('0' + i % 10);
  }
  return t;
}();

inline char* put_quad(char* out, std::uint32_t q) {
  std::memcpy(out, &kQuads[4 * q], 4);
  return out + 4;
}

// q below 10000 without leading zeros (at least one digit). The zeros are counted in the four
// digits themselves, without a branch: sample widths jump about.
inline char* put_lead(char* out, std::uint32_t q) {
  std::uint32_t digits;
  std::memcpy(&digits, &kQuads[4 * q], 4);
  // The first digit is the lowest byte in memory order; a zero digit XORs to a zero byte. Bit 24
  // keeps the last digit.
  std::uint32_t first = digits ^ 0x30303030u;
  if constexpr (std::endian::native == std::endian::big) first = __builtin_bswap32(first);
  const int skip = std::countr_zero(first | 1u << 24) >> 3;
  std::memcpy(out, &kQuads[4 * q] + skip, 4);  // all 4 copied, only 4 - skip kept
  return out + 4 - skip;
}

}  // namespace dec_detail

// v as "%ld" would print it. Writes only within out[0..10], also past a short text, so out needs
// room for 11 bytes. Returns the end of the text.
inline char* put_dec(char* out, std::int32_t v) {
  using namespace dec_detail;
  // The sign without a branch: a random walk's signs are as good as random.
  const std::uint32_t neg = v < 0;
  const std::uint32_t u = neg ? 0u - static_cast<std::uint32_t>(v) : static_cast<std::uint32_t>(v);
  *out = '-';
  out += neg;
  if (u < 10000) return put_lead(out, u);
  if (u < 100000000) return put_quad(put_lead(out, u / 10000), u % 10000);
  return put_quad(put_quad(put_lead(out, u / 100000000), u / 10000 % 10000), u % 10000);
}

// v with at least `width` digits (zero-padded), as "%0*lu" prints it.
inline char* put_dec_min(char* out, std::uint64_t v, int width) {
  char tmp[20];
  int n = 0;
  do {
    tmp[n++] = static_cast<char>('0' + v % 10);
    v /= 10;
  } while (v != 0);
  while (n < width && n < 20) tmp[n++] = '0';
  while (n > 0) *out++ = tmp[--n];
  return out;
}

// The low 4 * `digits` bits of v as upper-case hexadecimal digits, as "%0*X" prints a value that fits.
inline char* put_hex(char* out, std::uint32_t v, int digits) {
  for (int i = digits - 1; i >= 0; --i, v >>= 4) out[i] = "0123456789ABCDEF"[v & 15];
  return out + digits;
}

inline char* put_text(char* out, std::string_view s) {
  std::memcpy(out, s.data(), s.size());
  return out + s.size();
}

// At most n characters of s, stopping at a NUL, as "%.*s" prints them.
inline char* put_text_n(char* out, const char* s, int n) {
  for (int i = 0; i < n && s[i] != '\0'; ++i) *out++ = s[i];
  return out;
}

}  // namespace lm

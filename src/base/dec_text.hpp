#pragma once
// Number text by hand for the paths that run once per packet, where printf costs more than the
// rest of the work. Sample lines have their own: base/sample_line.hpp.
#include <cstdint>
#include <cstring>
#include <string_view>

namespace lm {

// v with at least `width` digits (zero-padded), as "%0*lu" prints it.
inline char* put_dec_min(char* out, std::uint64_t v, int width) {
  // Most values fill their width exactly: the digits go straight to their places.
  constexpr std::uint64_t kTen[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000,
                                    10000000000};
  if (width >= 1 && width <= 10 && v < kTen[width]) {
    for (int i = width - 1; i >= 0; --i, v /= 10) out[i] = static_cast<char>('0' + v % 10);
    return out + width;
  }
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

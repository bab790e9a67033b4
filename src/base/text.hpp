#pragma once
#include <cstddef>
#include <cstring>
#include <string_view>

namespace lm {

// Copies text into a fixed buffer of N bytes (N - 1 characters and a NUL). Returns false,
// leaving the text cut to fit, when it was too long.
template <std::size_t N>
bool set_text(char (&dst)[N], std::string_view src) {
  const std::size_t n = src.size() < N ? src.size() : N - 1;
  std::memcpy(dst, src.data(), n);
  dst[n] = '\0';
  return n == src.size();
}

// Appends text to a fixed buffer; false (and cut) when it does not fit.
template <std::size_t N>
bool append_text(char (&dst)[N], std::string_view src) {
  const std::size_t have = std::strlen(dst);
  const std::size_t room = N - 1 - have;
  const std::size_t n = src.size() < room ? src.size() : room;
  std::memcpy(dst + have, src.data(), n);
  dst[have + n] = '\0';
  return n == src.size();
}

// A fixed-width field's text without the blanks that pad it (and the NULs after it).
inline std::string_view trimmed(std::string_view s) {
  while (!s.empty() && (s.back() == ' ' || s.back() == '\0')) s.remove_suffix(1);
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  return s;
}

}  // namespace lm

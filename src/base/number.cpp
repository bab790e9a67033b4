#include "base/number.hpp"

#include <charconv>
#include <cstdlib>
#include <limits>
#include <string>

namespace lm {
namespace {

bool is_space(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_xdigit(char c) { return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

// Skips white space and a sign; true when the sign was a minus.
bool skip_to_digits(std::string_view& s) {
  while (!s.empty() && is_space(s.front())) s.remove_prefix(1);
  const bool neg = !s.empty() && s.front() == '-';
  if (!s.empty() && (s.front() == '+' || s.front() == '-')) s.remove_prefix(1);
  return neg;
}

}  // namespace

std::optional<std::int64_t> lead_int(std::string_view s, int base) {
  const bool neg = skip_to_digits(s);
  if (base == 0) {
    base = 10;
    if (s.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X') && is_xdigit(s[2])) {
      base = 16;
      s.remove_prefix(2);
    } else if (!s.empty() && s[0] == '0') {
      base = 8;
    }
  }
  std::uint64_t v = 0;
  const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v, base);
  if (ec == std::errc::invalid_argument) return std::nullopt;
  constexpr std::uint64_t kMax = std::numeric_limits<std::int64_t>::max();
  if (ec == std::errc::result_out_of_range || v > kMax) v = kMax;
  const auto m = static_cast<std::int64_t>(v);
  return neg ? -m : m;
}

std::optional<double> lead_double(std::string_view s) {
  const bool neg = skip_to_digits(s);
  // Only a digit, or a point and a digit, start a number: "inf", "nan" and "0x" forms do not.
  const bool starts = !s.empty() && (is_digit(s[0]) || (s[0] == '.' && s.size() > 1 && is_digit(s[1])));
  if (!starts) return std::nullopt;
  double v = 0;
  const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v, std::chars_format::general);
  if (ec == std::errc::invalid_argument) return std::nullopt;
  // Too large or too small for a double: the C library's answer (infinity or 0), rare enough to copy.
  if (ec == std::errc::result_out_of_range) v = std::strtod(std::string(s.data(), end).c_str(), nullptr);
  return neg ? -v : v;
}

}  // namespace lm

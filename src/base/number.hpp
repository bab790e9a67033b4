#pragma once
// The one reader of leading numbers in texts: white space (tabs included), an optional sign, then
// the digits. Whatever follows the number is ignored.
#include <cstdint>
#include <optional>
#include <string_view>

namespace lm {

// The leading integer, nullopt when the text has none. Base 0 picks it from the prefix as C does
// ("0x" hexadecimal, "0" octal, else decimal). A magnitude beyond 64 bits saturates.
std::optional<std::int64_t> lead_int(std::string_view text, int base = 10);
// The leading decimal number in fixed or exponent form, nullopt when the text has none. No
// hexadecimal, infinity or NaN forms.
std::optional<double> lead_double(std::string_view text);

// The same with 0 for a text without a number, as the field readers want it. A field of a few
// plain digits, the form of every time field read once a packet, is read here in line.
inline std::int64_t int_or_0(std::string_view text) {
  if (!text.empty() && text.size() <= 9) {
    std::int64_t v = 0;
    std::size_t i = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) v = v * 10 + (text[i] - '0');
    if (i == text.size()) return v;
  }
  return lead_int(text).value_or(0);
}
inline double double_or_0(std::string_view text) { return lead_double(text).value_or(0.0); }

}  // namespace lm

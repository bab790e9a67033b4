#include "time/time_str.hpp"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "packet/bcd.hpp"
#include "packet/fields.hpp"
#include "run/dec_text.hpp"

namespace lm {
namespace {

// The decimal value of the leading number of a slice of at most n characters, read as atoi
// reads a copy of the slice (blanks, sign, digits; nothing numeric gives 0).
long slice_int(const char* s, int n) {
  int i = 0;
  while (i < n && (s[i] == ' ' || s[i] == '\t')) ++i;
  bool neg = false;
  if (i < n && (s[i] == '+' || s[i] == '-')) neg = s[i++] == '-';
  long v = 0;
  while (i < n && s[i] >= '0' && s[i] <= '9') v = v * 10 + (s[i++] - '0');
  return neg ? -v : v;
}

}  // namespace

void pkt_time_str(const std::uint8_t* packet, char* out) {
  const HeaderDigits h(packet);
  const long yy = slice_int(h.at(hdr::digit::kYear), 2);
  out[0] = yy < 85 ? '2' : '1';
  out[1] = yy < 85 ? '0' : '9';
  std::memcpy(out + 2, h.at(hdr::digit::kYear), 2);
  std::memcpy(out + 4, h.at(hdr::digit::kDay), 3);
  std::memcpy(out + 7, h.at(hdr::digit::kHour), 2);
  std::memcpy(out + 9, h.at(hdr::digit::kMinute), 2);
  std::memcpy(out + 11, h.at(hdr::digit::kSecond), 2);
  std::memcpy(out + 13, h.at(hdr::digit::kMilli), 3);
  out[16] = '\0';
}

void add_str_tim(char* time, float rate, const std::uint8_t* count) {
  // Fields keep the widths of the recorder's arithmetic: 16 bits, milliseconds 32 bits.
  std::uint16_t year = static_cast<std::uint16_t>(slice_int(time, 4));
  std::uint16_t day = static_cast<std::uint16_t>(slice_int(time + 4, 3));
  std::uint16_t hour = static_cast<std::uint16_t>(slice_int(time + 7, 2));
  std::uint16_t minute = static_cast<std::uint16_t>(slice_int(time + 9, 2));
  std::uint16_t second = static_cast<std::uint16_t>(slice_int(time + 11, 2));
  std::uint32_t milli = static_cast<std::uint32_t>(slice_int(time + 13, 3));

  if (rate != 0.0f) {
    char digits[4];
    unbcd(digits, count, 2);
    long n = 0;
    for (char c : digits) {
      if (c < '0' || c > '9') break;
      n = n * 10 + (c - '0');
    }
    const std::int32_t n_ms = static_cast<std::int32_t>(n * 1000);
    double sum = static_cast<double>(milli) + static_cast<double>(n_ms) / static_cast<double>(rate);
    // A rate from a damaged header can be negative or tiny: keep the sum within the field.
    if (!(sum >= 0.0)) sum = 0.0;
    if (sum > 4294967295.0) sum = 4294967295.0;
    milli = static_cast<std::uint32_t>(std::trunc(sum));
  }

  // Carries, as the one-at-a-time loops would do them (16-bit fields wrap).
  second = static_cast<std::uint16_t>(second + milli / 1000);
  milli %= 1000;
  minute = static_cast<std::uint16_t>(minute + second / 60);
  second %= 60;
  hour = static_cast<std::uint16_t>(hour + minute / 60);
  minute %= 60;
  day = static_cast<std::uint16_t>(day + hour / 24);
  hour %= 24;
  const std::uint16_t year_len = (year % 4 == 0) ? 366 : 365;  // decided before the carry
  while (day > year_len) {
    ++year;
    day = static_cast<std::uint16_t>(day - year_len);
  }
  // Once per data packet: by hand, as "%04u%03d%02u%02u%02u%03lu" would write it.
  char out[64];
  char* p = put_dec_min(out, year, 4);
  p = put_dec_min(p, day, 3);
  p = put_dec_min(put_dec_min(put_dec_min(p, hour, 2), minute, 2), second, 2);
  put_dec_min(p, milli, 3);
  std::memcpy(time, out, kTimeLen);  // the fields fit 16 digits; never write past the string
  time[kTimeLen] = '\0';
}

void secs_split(std::uint32_t packed, char* out) {
  const unsigned long year = 1984 + (packed >> 25);
  const unsigned long s = packed & 0x01FFFFFFu;
  const unsigned long m = s / 60, second = s % 60;
  const unsigned long h = m / 60, minute = m % 60;
  const unsigned long d = h / 24, hour = h % 24;
  std::snprintf(out, 14, "%04lu%03lu%02lu%02lu%02lu", year, d + 1, hour, minute, second);
}

float Time_update(const char* from, const char* to) {
  auto millis = [](const char* t) {
    const std::size_t len = strnlen(t, kTimeLen + 1);
    auto field = [&](std::size_t at, int n) -> std::int16_t {
      if (at >= len) return 0;
      const int avail = static_cast<int>(len - at);
      return static_cast<std::int16_t>(slice_int(t + at, n < avail ? n : avail));
    };
    const std::int16_t year = field(0, 4), day = field(4, 3), hour = field(7, 2);
    const std::int16_t minute = field(9, 2), second = field(11, 2);
    double ms = field(13, 3);
    // A two-digit fraction counts in hundredths.
    std::size_t i = 13, w = 0;
    while (i < len && t[i] == ' ') ++i;
    while (i < len && t[i] != ' ' && w < 3) ++i, ++w;
    if (w < 3) ms *= 10;
    return ((((static_cast<double>(year) * 365 + day) * 24 + hour) * 60 + minute) * 60 + second) * 1000 + ms;
  };
  return static_cast<float>((millis(to) - millis(from)) * 0.001);
}

}  // namespace lm

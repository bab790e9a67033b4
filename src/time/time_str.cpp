#include "time/time_str.hpp"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "packet/bcd.hpp"
#include "packet/fields.hpp"
#include "base/number.hpp"
#include "base/dec_text.hpp"

namespace lm {
TimeText::TimeText(const char* time) { std::memcpy(t_, time, strnlen(time, kTimeLen)); }

std::string_view TimeText::field(Slice s) const { return {at(s), strnlen(at(s), static_cast<std::size_t>(s.len))}; }

long TimeText::number(Slice s) const { return static_cast<long>(int_or_0(field(s))); }


void pkt_time_str(const std::uint8_t* packet, char* out) {
  const HeaderDigits h(packet);
  const std::int64_t yy = int_or_0({h.at(hdr::digit::kYear), 2});
  out[0] = yy < 85 ? '2' : '1';
  out[1] = yy < 85 ? '0' : '9';
  // The header's fields are as wide as the string's, but for the year's two digits.
  std::memcpy(out + 2, h.at(hdr::digit::kYear), 2);
  auto put = [&](TimeText::Slice s, int from) { std::memcpy(out + s.at, h.at(from), static_cast<std::size_t>(s.len)); };
  put(TimeText::kDay, hdr::digit::kDay);
  put(TimeText::kHour, hdr::digit::kHour);
  put(TimeText::kMinute, hdr::digit::kMinute);
  put(TimeText::kSecond, hdr::digit::kSecond);
  put(TimeText::kMilli, hdr::digit::kMilli);
  out[kTimeLen] = '\0';
}

namespace {

// A time string's fields in the widths of the recorder's arithmetic: 16 bits, milliseconds 32 bits.
struct Fields {
  std::uint16_t year, day, hour, minute, second;
  std::uint32_t milli;
};

// The fields, each read by the one number reader from the text `field` gives for its slice.
template <class Field>
Fields fields_of(Field field) {
  auto u16 = [&](TimeText::Slice s) { return static_cast<std::uint16_t>(int_or_0(field(s))); };
  const auto milli = static_cast<std::uint32_t>(int_or_0(field(TimeText::kMilli)));
  return {u16(TimeText::kYear),   u16(TimeText::kDay),    u16(TimeText::kHour),
          u16(TimeText::kMinute), u16(TimeText::kSecond), milli};
}

// The fields of `time`. Sixteen plain digits, as every undamaged packet gives, are read in place
// (once per data packet); any other text through a copy whose fields end where the text does.
Fields read_fields(const char* time) {
  int n = 0;
  while (n < kTimeLen && time[n] >= '0' && time[n] <= '9') ++n;
  if (n == kTimeLen) {
    return fields_of(
        [time](TimeText::Slice s) { return std::string_view(time + s.at, static_cast<std::size_t>(s.len)); });
  }
  const TimeText t(time);
  return fields_of([&t](TimeText::Slice s) { return t.field(s); });
}

}  // namespace

void add_str_tim(char* time, float rate, const std::uint8_t* count) {
  auto [year, day, hour, minute, second, milli] = read_fields(time);

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
  auto millis = [](const char* text) {
    const TimeText t(text);
    auto field = [&](TimeText::Slice s) { return static_cast<std::int16_t>(t.number(s)); };
    const std::int16_t year = field(TimeText::kYear), day = field(TimeText::kDay), hour = field(TimeText::kHour);
    const std::int16_t minute = field(TimeText::kMinute), second = field(TimeText::kSecond);
    double ms = field(TimeText::kMilli);
    // A two-digit fraction counts in hundredths.
    std::string_view frac = t.field(TimeText::kMilli);
    while (!frac.empty() && frac.front() == ' ') frac.remove_prefix(1);
    if (frac.substr(0, frac.find(' ')).size() < 3) ms *= 10;
    return ((((static_cast<double>(year) * 365 + day) * 24 + hour) * 60 + minute) * 60 + second) * 1000 + ms;
  };
  return static_cast<float>((millis(to) - millis(from)) * 0.001);
}

bool time_epoch_us(const char* time, std::int64_t& us) {
  for (int i = 0; i < kTimeLen; ++i)
    if (time[i] < '0' || time[i] > '9') return false;
  const TimeText t(time);
  const long year = t.number(TimeText::kYear), day = t.number(TimeText::kDay);
  const long hour = t.number(TimeText::kHour), minute = t.number(TimeText::kMinute);
  const long second = t.number(TimeText::kSecond), milli = t.number(TimeText::kMilli);
  if (year < 1970) return false;
  // Leap years before a year, counted from year 1.
  auto leaps_before = [](std::int64_t y) { return (y - 1) / 4 - (y - 1) / 100 + (y - 1) / 400; };
  const std::int64_t days = 365 * (year - 1970) + leaps_before(year) - leaps_before(1970) + day - 1;
  us = ((days * 24 + hour) * 60 + minute) * 60 + second;
  us = us * 1000000 + milli * 1000;
  return true;
}

}  // namespace lm

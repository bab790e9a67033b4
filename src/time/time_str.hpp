#pragma once
// Time strings: 16 digits YYYYDDDHHMMSSmmm and a NUL; text order is time order.
#include <cstdint>
#include <string_view>

namespace lm {

inline constexpr int kTimeLen = 16;

// A time string read field by field. The text is copied (at most 16 characters, NULs after it),
// so the fields of a short or damaged text come out short and never read past it.
class TimeText {
 public:
  struct Slice {
    int at;
    int len;
  };
  static constexpr Slice kYear{0, 4}, kDay{4, 3}, kHour{7, 2}, kMinute{9, 2}, kSecond{11, 2}, kMilli{13, 3};

  explicit TimeText(const char* time);

  // Starts of the fields, for printing with the field's width as precision ("%4.4s" for the year).
  const char* year() const { return at(kYear); }
  const char* day() const { return at(kDay); }
  const char* hour() const { return at(kHour); }
  const char* minute() const { return at(kMinute); }
  const char* second() const { return at(kSecond); }
  const char* milli() const { return at(kMilli); }

  // The field's characters, ending early where the text ends.
  std::string_view field(Slice s) const;
  // The field's leading number, 0 when it has none.
  long number(Slice s) const;
  // The whole text (at most 16 characters): the six fields one after the other, as file names use it.
  const char* text() const { return t_; }

 private:
  const char* at(Slice s) const { return t_ + s.at; }
  char t_[kTimeLen + 1] = {};
};

// The time string of a packet header (two-digit year widened with the pivot 85).
void pkt_time_str(const std::uint8_t* packet, char* out);
// Advances a time string in place by a BCD sample count (2 bytes) at a rate in samples per second.
void add_str_tim(char* time, float rate, const std::uint8_t* count);
// A packed directory time (7 bits year - 1984, 25 bits seconds of that year) as 13 digits and a NUL.
void secs_split(std::uint32_t packed, char* out);
// Microseconds since 1970-01-01 UTC of a time string; false when a character is not a digit (a damaged
// packet's nibble above 9) or the year is before 1970. A field past its range carries into the next
// one (minute 61 is an hour and a minute), as the converter's own time arithmetic carries.
bool time_epoch_us(const char* time, std::int64_t& us);
// Seconds from `from` to `to`, every year counted as 365 days.
float Time_update(const char* from, const char* to);

}  // namespace lm

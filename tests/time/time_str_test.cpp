#include "time/time_str.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "pktkit/packet_builder.hpp"

namespace {

// Advances a copy of `time`; a guard byte after the 17-byte string must survive.
std::string advanced(const char* time, float rate, std::uint8_t hi, std::uint8_t lo) {
  char buf[18];
  std::memset(buf, '#', sizeof buf);
  std::memcpy(buf, time, std::strlen(time) + 1);
  const std::uint8_t count[2] = {hi, lo};
  lm::add_str_tim(buf, rate, count);
  EXPECT_EQ(buf[17], '#') << "written past the time string";
  return std::string(buf, strnlen(buf, sizeof buf));
}

TEST(PktTimeStr, CenturyPivotAndFieldOrder) {
  for (int yy : {84, 85}) {
    char out[17];
    lm::pkt_time_str(pktkit::make_header("DT", 1, {yy, 123, 14, 5, 30, 250}, 1).data(), out);
    EXPECT_STREQ(out, yy == 84 ? "2084123140530250" : "1985123140530250");
  }
}

TEST(AddStrTim, AdvanceCarryAndYearEnd) {
  // hi, lo: the BCD sample count.
  const struct { const char* from; float rate; std::uint8_t hi, lo; const char* want; } cases[] = {
      {"2008366235959990", 100, 0x00, 0x05, "2009001000000040"},  // leap year end
      {"1999365235959999", 1000, 0x00, 0x01, "2000001000000000"},  // 365-day year
      {"2100365235959999", 1000, 0x00, 0x01, "2100366000000000"},  // no century rule
      {"2009032000000000", 3, 0x00, 0x02, "2009032000000666"},     // 666.7 ms truncated, not rounded
      {"2009032000000000", 1, 0x99, 0x99, "2009032024639000"},     // 9999 s = 2 h 46 min 39 s
      {"2009032123456789", 0, 0x01, 0x00, "2009032123456789"},     // rate 0: not advanced
      {"2009032123456789", 100, 0x00, 0x00, "2009032123456789"},   // count 0
      {"2009032000000000", 1000, 0x1A, 0x00, "2009032000000001"},  // a nibble above 9 ends the count
      {"2009032236060000", 0, 0, 0, "2009033000100000"},           // minute 60 and second 60 carry
      // The year length is taken once, from the starting year (2003: 365), even across a leap year.
      {"2003999000000000", 0, 0, 0, "2005269000000000"},
      {"2009032000000500", -1, 0x00, 0x01, "2009032000000000"},    // a damaged negative rate stops at zero
  };
  for (const auto& c : cases)
    EXPECT_EQ(advanced(c.from, c.rate, c.hi, c.lo), c.want) << c.from << " rate " << c.rate;
  // Damaged input keeps the string at its 16 characters.
  EXPECT_EQ(advanced("9999365235959999", 1000, 0x00, 0x01).size(), 16u);
  EXPECT_EQ(advanced("2009032000000500", 1e-30f, 0x99, 0x99).size(), 16u);
}

TEST(TimeUpdate, ElapsedSecondsWith365DayYears) {
  const struct { const char* from; const char* to; float want; } cases[] = {
      {"2008366235959000", "2009001000000000", -86399.0f},  // the year step adds 365 days
      {"2009032000000000", "2009032010203004", 3723.004f},
      // A two-digit fraction counts in hundredths, a one-digit one in tenths of that.
      {"2009032000000000", "200903200000050 ", 0.5f},
      {"2009032000000000", "20090320000005", 0.05f},
      {"200903200000050 ", "2009032000001000", 0.5f},
  };
  for (const auto& c : cases)
    EXPECT_FLOAT_EQ(lm::Time_update(c.from, c.to), c.want) << c.from << " -> " << c.to;
}

// Epoch microseconds against dates counted by hand (2009-02-01 is 14276 days after 1970-01-01).
TEST(TimeEpochUs, LeapYearsCarriesAndDamage) {
  constexpr std::int64_t kDay = 86400LL * 1000000;
  const struct { const char* time; bool ok; std::int64_t want; } cases[] = {
      {"1970001000000000", true, 0},
      {"2009032000000000", true, 14276 * kDay},
      {"2009032235959999", true, 14277 * kDay - 1000},
      {"2000366000000000", true, 11322 * kDay},             // 2000 is a leap year
      {"2100060000000000", true, 47541 * kDay},             // 2100 is not
      {"2009032006100000", true, 14276 * kDay + 3660000000LL},  // minute 61 carries into the hour
      {"1969365000000000", false, 0},
      {"20090320:0000000", false, 0},                       // a nibble above 9
  };
  for (const auto& c : cases) {
    std::int64_t us = 0;
    EXPECT_EQ(lm::time_epoch_us(c.time, us), c.ok) << c.time;
    if (c.ok) {
      EXPECT_EQ(us, c.want) << c.time;
    }
  }
}

}  // namespace

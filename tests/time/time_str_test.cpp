#include "time/time_str.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "pktkit/packet_builder.hpp"

namespace {

using lm::add_str_tim;

// Advances a copy of `time` and returns it; a guard byte after the 17-byte string must survive.
std::string advanced(const char* time, float rate, std::uint8_t hi, std::uint8_t lo) {
  char buf[18];
  std::memset(buf, '#', sizeof buf);
  std::memcpy(buf, time, std::strlen(time) + 1);
  const std::uint8_t count[2] = {hi, lo};
  add_str_tim(buf, rate, count);
  EXPECT_EQ(buf[17], '#') << "written past the time string";
  EXPECT_EQ(buf[16], '\0');
  return buf;
}

TEST(PktTimeStr, CenturyPivotAndFieldOrder) {
  const struct {
    int yy;
    const char* want;
  } cases[] = {
      {84, "2084123140530250"},
      {85, "1985123140530250"},
      {0, "2000123140530250"},
      {99, "1999123140530250"},
  };
  for (const auto& c : cases) {
    const auto p = pktkit::make_header("DT", 1, {c.yy, 123, 14, 5, 30, 250}, 1);
    char out[17];
    lm::pkt_time_str(p.data(), out);
    EXPECT_STREQ(out, c.want) << "year " << c.yy;
  }
}

TEST(AddStrTim, AdvanceCarryAndYearEnd) {
  const struct {
    const char* from;
    float rate;
    std::uint8_t hi, lo;  // BCD sample count
    const char* want;
  } cases[] = {
      {"2008366235959990", 100, 0x00, 0x05, "2009001000000040"},  // leap year end
      {"1999365235959999", 1000, 0x00, 0x01, "2000001000000000"},
      {"2001365235959999", 1000, 0x00, 0x01, "2002001000000000"},  // 365-day year
      {"2004365235959999", 1000, 0x00, 0x01, "2004366000000000"},  // leap year: day 366 exists
      {"2100365235959999", 1000, 0x00, 0x01, "2100366000000000"},  // no century rule
      {"2009032000000000", 3, 0x00, 0x01, "2009032000000333"},     // 333.3 ms truncated, not rounded
      {"2009032000000000", 3, 0x00, 0x02, "2009032000000666"},     // 666.7 ms truncated
      {"2009032000000999", 3, 0x00, 0x01, "2009032000001332"},     // fraction dropped after the sum
      {"2009032235959500", 100, 0x01, 0x00, "2009033000000500"},   // 100 samples: one second, carries to the day
      {"2009032000000000", 1, 0x99, 0x99, "2009032024639000"},     // 9999 s = 2 h 46 min 39 s
      {"2009032000000000", 0.5f, 0x00, 0x01, "2009032000002000"},
      {"2009032123456789", 0, 0x01, 0x00, "2009032123456789"},     // rate 0: not advanced
      {"2009032123456789", 100, 0x00, 0x00, "2009032123456789"},   // count 0
      {"2009032000000000", 1000, 0x1A, 0x00, "2009032000000001"},  // a nibble above 9 ends the count: "1"
      {"2009032000000000", 1000, 0xA5, 0x00, "2009032000000000"},  // first digit not a digit: 0
  };
  for (const auto& c : cases)
    EXPECT_EQ(advanced(c.from, c.rate, c.hi, c.lo), c.want) << c.from << " rate " << c.rate;
}

TEST(AddStrTim, NormalisesFieldsEvenWithoutAdvance) {
  const struct {
    const char* from;
    const char* want;
  } cases[] = {
      {"2009032236060000", "2009033000100000"},  // minute 60 and second 60 carry
      // The year length is taken once, from the starting year (2003: 365), even across a leap year.
      {"2003999000000000", "2005269000000000"},
      {"20090320000005", "2009032000000005"},    // short millisecond slice reads its digits
  };
  for (const auto& c : cases) EXPECT_EQ(advanced(c.from, 0, 0, 0), c.want) << c.from;
}

TEST(AddStrTim, DamagedInputStaysWithinTheString) {
  // Year 9999 rolls over to a five-digit year; the string keeps its 16 characters.
  EXPECT_EQ(advanced("9999365235959999", 1000, 0x00, 0x01).size(), 16u);
  // A negative rate from a damaged header does not move the time backwards past zero.
  EXPECT_EQ(advanced("2009032000000500", -1, 0x00, 0x01), "2009032000000000");
  EXPECT_EQ(advanced("2009032000000500", 1e-30f, 0x99, 0x99).size(), 16u);
}

TEST(SecsSplit, PackedDirectoryTimes) {
  const struct {
    std::uint32_t packed;
    const char* want;
  } cases[] = {
      {25u << 25, "2009001000000"},
      {(25u << 25) | 86399u, "2009001235959"},
      {(25u << 25) | 86400u, "2009002000000"},
      {1u, "1984001000001"},
      {(25u << 25) | (31u * 86400u + 3723u), "2009032010203"},
      {0xFFFFFFFFu, "2111389084031"},  // largest fields still fit 13 digits
  };
  for (const auto& c : cases) {
    char out[16];
    std::memset(out, '#', sizeof out);
    lm::secs_split(c.packed, out);
    EXPECT_STREQ(out, c.want) << std::hex << c.packed;
    EXPECT_EQ(out[14], '#');
  }
}

TEST(TimeUpdate, ElapsedSecondsWith365DayYears) {
  const struct {
    const char* from;
    const char* to;
    float want;
  } cases[] = {
      {"2009001000000000", "2009001000000000", 0.0f},
      {"2009032000000000", "2009032000001500", 1.5f},
      {"2009032000001500", "2009032000000000", -1.5f},
      {"2008366235959000", "2009001000000000", -86399.0f},  // the year step adds 365 days
      {"2004001000000000", "2005001000000000", 31536000.0f},
      {"2009032000000000", "2009032010203004", 3723.004f},
      // A two-digit fraction counts in hundredths, a one-digit one in tenths of that.
      {"2009032000000000", "200903200000050 ", 0.5f},
      {"2009032000000000", "200903200000050", 0.5f},
      {"2009032000000000", "20090320000005", 0.05f},
      {"200903200000050 ", "2009032000001000", 0.5f},
  };
  for (const auto& c : cases)
    EXPECT_FLOAT_EQ(lm::Time_update(c.from, c.to), c.want) << c.from << " -> " << c.to;
}

}  // namespace

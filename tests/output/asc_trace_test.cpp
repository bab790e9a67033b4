// The trace writer in-process: statistics of the written samples, the final header's rate in place.
#include "output/asc_trace.hpp"

#include <gtest/gtest.h>

#include <cstdio>

#include "../model/chn_world.hpp"

namespace {

using namespace lm;

class AscTrace : public ChnWorld {};

TEST_F(AscTrace, StatisticsOfTheWrittenSamplesKeepFirstOccurrences) {
  constexpr std::uint32_t kAll = 4294967295u;
  const struct {
    std::uint32_t skip, limit;
    double start_sum;
    std::vector<std::vector<std::int32_t>> packets;
    const char* want;  // sum, sum of squares, minimum and maximum at their sample numbers
  } cases[] = {
      {0, kAll, 0, {{1, 2, 3, 4}}, "10 30 1@1 4@4"},
      {0, kAll, 0, {{5, 1, 5, 1}}, "12 52 1@2 5@1"},
      {0, kAll, 0, {{-7, -7, -7}}, "-21 147 -7@1 -7@1"},
      {0, kAll, 0, {{3, 1}, {1, 0, 3, 0}}, "8 20 0@4 3@1"},  // ties across packets too
      {0, 2, 0, {{3, 4, -100, 100}}, "7 25 3@1 4@2"},        // beyond the limit nothing counts
      {2, kAll, 0, {{-100, 100, 3, 4}}, "7 25 3@1 4@2"},     // nor what is skipped
      {1, 3, 0, {{9}, {-1, 2}, {5, 6}}, "6 30 -1@1 5@3"},
      // Past 2^53 a double rounds each addition (ties to even): 2^53 - 2 plus four ones is 2^53.
      {0, kAll, 9007199254740990.0, {{1, 1, 1, 1}}, "9007199254740992 4 1@1 1@1"},
      {0, kAll, -9007199254740990.0, {{-1, -1, -1, -1}}, "-9007199254740992 4 -1@1 -1@1"},
      {0, kAll, 0, {{2147483647, -2147483647 - 1, 2147483647}},
       "2147483646 1.3835058046692229e+19 -2147483648@2 2147483647@1"},
  };
  for (const auto& c : cases) {
    fresh();
    G.Smp_skip = c.skip;
    G.Smp_limit = c.limit;
    CHNLST_T* chn = feed({}, 0, {});
    chn->sum = c.start_sum;
    for (const auto& p : c.packets) feed({}, 0, p);
    char got[160];
    std::snprintf(got, sizeof got, "%.17g %.17g %.17g@%u %.17g@%u", chn->sum, chn->sq_sum, chn->min, chn->min_at,
                  chn->max, chn->max_at);
    EXPECT_STREQ(got, c.want);
  }
}

// The final header is written over the first one: the rate keeps the first one's width.
TEST_F(AscTrace, FinalHeaderKeepsTheFirstOnesLength) {
  const struct {
    std::uint8_t pkt_eh;
    float first_rate, final_rate;
    const char* final;
  } cases[] = {
      {1, 100.0f, 1000.0f, "1000.000"}, {1, 1000.0f, 50.0f, "  50.0000"}, {1, 0.0f, 100.0f, "100.00"},
      {1, 100.0f, 1e20f, "1.00e+20"},   {0, 0.0f, 4e12f, "  4.0000e+12"},  // rate not known at creation
  };
  for (const auto& c : cases) {
    fresh();
    evt->pkt_eh = c.pkt_eh;
    evt->rate = c.first_rate;
    const std::string name = feed({}, 0, {123456, -7})->name;
    evt->rate = c.final_rate;
    fresh();
    EXPECT_EQ(e2e::read_file(name), std::string("$ChnID=9A3F:0042:01:01\r\n$Station=     \r\n$Samples=2         \r\n") +
                                        "$Rate=" + c.final + "\r\n$Time=2009:032:00:00:00.000\r\n$TimeQual=-1\r\n"
                                        "$BitWeight=        \r\n$Gain= 1.000\r\n$SensorVPU= 0.000 ???             \r\n"
                                        "$LLA= 0.000  0.000    0.0\r\n123456\r\n-7\r\n")
        << c.final_rate;
  }
}

}  // namespace

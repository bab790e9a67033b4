// The trace writer in-process: statistics of the written samples, the final header's rate in place.
#include "output/asc_trace.hpp"

#include <gtest/gtest.h>

#include <cstdio>

#include "../model/chn_world.hpp"

namespace {

using namespace lm;

class AscTrace : public ChnWorld {};

TEST_F(AscTrace, StatisticsOfTheWrittenSamplesKeepFirstOccurrences) {
  const struct {
    std::uint32_t skip, limit;
    std::vector<std::int32_t> samples;
    const char* want;  // sum, sum of squares, minimum and maximum at their sample numbers
  } cases[] = {
      {0, 4294967295u, {1, 2, 3, 4}, "10 30 1@1 4@4"},
      {0, 4294967295u, {5, 1, 5, 1}, "12 52 1@2 5@1"},
      {0, 4294967295u, {-7, -7, -7}, "-21 147 -7@1 -7@1"},
      {0, 2, {3, 4, -100, 100}, "7 25 3@1 4@2"},  // beyond the limit nothing counts
      {2, 4294967295u, {-100, 100, 3, 4}, "7 25 3@1 4@2"},  // nor what is skipped
  };
  for (const auto& c : cases) {
    fresh();
    G.Smp_skip = c.skip;
    G.Smp_limit = c.limit;
    const CHNLST_T* chn = feed({}, 0, c.samples);
    char got[128];
    std::snprintf(got, sizeof got, "%g %g %g@%u %g@%u", chn->sum, chn->sq_sum, chn->min, chn->min_at, chn->max,
                  chn->max_at);
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

// The trace writer: header lines, skip and limit counts, statistics, the header rewrite in place.
#include "output/asc_trace.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "../model/chn_world.hpp"

namespace {

using namespace lm;

constexpr const char* kStdHeader =
    "$ChnID=9A3F:0042:01:01\r\n$Station=     \r\n$Samples=%-10s\r\n$Rate=%s\r\n"
    "$Time=2009:032:00:00:00.000\r\n$TimeQual=-1\r\n$BitWeight=        \r\n$Gain= 1.000\r\n"
    "$SensorVPU= 0.000 ???             \r\n$LLA= 0.000  0.000    0.0\r\n";

std::string std_header(const std::string& samples, const std::string& rate) {
  char out[512];
  std::snprintf(out, sizeof out, kStdHeader, samples.c_str(), rate.c_str());
  return out;
}

std::string lines(const std::vector<std::int32_t>& v) {
  std::string s;
  for (auto x : v) s += std::to_string(x) + "\r\n";
  return s;
}

class AscTrace : public chn_test::ChnWorld {
 protected:
  // One channel of the event with its file, after its first packet of `samples`.
  CHNLST_T* start(const std::vector<std::int32_t>& samples) { return feed(dt({}, 0, samples), samples); }
  std::string final_text() {
    finish_files();
    return e2e::read_file(evt.chn->name);
  }
};

TEST_F(AscTrace, HeaderLinesFromChannelAndEvent) {
  std::memcpy(evt.stn_name, "AB D", 4);
  evt.time_qual = 10;
  evt.rate = 62.5f;
  unit.lat = 34.0522;
  unit.lon = -118.2437;
  unit.alt = 71;
  auto put = [&](const ChnColumn& col, std::uint16_t ch, const char* text) {
    std::memcpy(column_ptr(evt.chn_info[ch >> 4], col) + (ch & 15) * col.width, text, std::strlen(text));
  };
  put(chn_col::kBitWght, 16, "2.384 uV");  // channel 17: second block, first place
  put(chn_col::kGain, 16, "<");           // code 12
  put(chn_col::kSVPU, 16, "1.2500");
  const std::vector<std::int32_t> s{1};
  CHNLST_T* c17 = feed(dt({9, 123, 14, 5, 30, 250}, 16, s, 1, 2), s);
  c17->fp.flush();
  EXPECT_EQ(e2e::read_file(c17->name),
            "$ChnID=9A3F:0042:03:17\r\n$Station=AB D \r\n$Samples=0         \r\n$Rate=62.5000\r\n"
            "$Time=2009:123:14:05:30.250\r\n$TimeQual=10\r\n$BitWeight=2.384 uV\r\n$Gain=63.100\r\n"
            "$SensorVPU= 1.250 ???             \r\n$LLA=34.052 -118.244   71.0\r\n1\r\n");
}

TEST_F(AscTrace, SkipLimitAndStatistics) {
  const struct {
    std::uint32_t skip, limit;
    std::vector<std::vector<std::int32_t>> packets;
    std::vector<std::int32_t> written;
    std::uint32_t trash_left;
  } cases[] = {
      {5, 4294967295u, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, {6, 7, 8, 9}, 0},
      {0, 10, {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13}}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 0},
      {2, 3, {{1, 2, 3, 4}, {5, 6}}, {3, 4, 5}, 0},
      {7, 4294967295u, {{1, 2}}, {}, 5},
      {0, 4294967295u, {{INT_MIN, INT_MAX, 0, -1}}, {INT_MIN, INT_MAX, 0, -1}, 0},
  };
  for (const auto& c : cases) {
    chn_test::free_channels(evt);
    G.Smp_skip = c.skip;
    G.Smp_limit = c.limit;
    CHNLST_T* chn = nullptr;
    for (const auto& p : c.packets) chn = feed(dt({}, 0, p), p);
    EXPECT_EQ(chn->cnt, c.written.size());
    EXPECT_EQ(chn->trash, c.trash_left);
    double sum = 0, sq = 0;
    for (auto x : c.written) sum += x, sq += double(x) * x;
    EXPECT_EQ(chn->sum, sum);
    EXPECT_EQ(chn->sq_sum, sq);
    const std::string text = final_text();
    EXPECT_EQ(text, std_header(std::to_string(c.written.size()), "100.0000") + lines(c.written)) << c.skip;
  }
}

TEST_F(AscTrace, MinimumAndMaximumKeepTheirFirstOccurrence) {
  const struct {
    std::vector<std::int32_t> samples;
    double min, max;
    std::uint32_t min_at, max_at;
  } cases[] = {
      {{1, 2, 3, 4}, 1, 4, 1, 4},
      {{5, 1, 5, 1}, 1, 5, 2, 1},
      {{-7, -7, -7}, -7, -7, 1, 1},
  };
  for (const auto& c : cases) {
    chn_test::free_channels(evt);
    CHNLST_T* chn = start(c.samples);
    EXPECT_EQ(chn->min, c.min);
    EXPECT_EQ(chn->max, c.max);
    EXPECT_EQ(chn->min_at, c.min_at);
    EXPECT_EQ(chn->max_at, c.max_at);
  }
  chn_test::free_channels(evt);
  G.Smp_limit = 2;
  CHNLST_T* chn = start({3, 4, -100, 100});
  EXPECT_EQ(chn->min, 3.0) << "samples beyond the limit change nothing";
  EXPECT_EQ(chn->max, 4.0);
}

TEST_F(AscTrace, HeaderSwitchOffWritesSamplesOnly) {
  G.Flag_info.trace_hdr = 0;
  start({10, -20});
  EXPECT_EQ(final_text(), "10\r\n-20\r\n");
}

TEST_F(AscTrace, FinalHeaderKeepsTheFirstOnesLength) {
  const struct {
    std::uint8_t pkt_eh;
    float first_rate, final_rate;
    const char* first;
    const char* final;
  } cases[] = {
      {1, 100.0f, 100.0f, "100.0000", "100.0000"},  // the usual file: plain both times
      {1, 100.0f, 1000.0f, "100.0000", "1000.000"},
      {1, 1000.0f, 50.0f, "1000.0000", "  50.0000"},
      {1, 0.0f, 100.0f, "0.0000", "100.00"},
      {1, 100.0f, 1e20f, "100.0000", "1.00e+20"},
      {0, 0.0f, 100.0f, "      0.0000", "    100.0000"},  // rate not known at creation
      {0, 0.0f, 4e12f, "      0.0000", "  4.0000e+12"},
      {0, 0.0f, -3.5f, "      0.0000", "     -3.5000"},
  };
  for (const auto& c : cases) {
    chn_test::free_channels(evt);
    evt.pkt_eh = c.pkt_eh;
    evt.rate = c.first_rate;
    CHNLST_T* chn = start({123456, -7});
    chn->fp.flush();
    EXPECT_EQ(e2e::read_file(chn->name), std_header("0", c.first) + "123456\r\n-7\r\n");
    evt.rate = c.final_rate;
    EXPECT_EQ(final_text(), std_header("2", c.final) + "123456\r\n-7\r\n") << c.final_rate;
  }
}

}  // namespace

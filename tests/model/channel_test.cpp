// The channel registry in-process: ring, times, continuity, trace files, open-file limit, rate.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "chn_world.hpp"
#include "run/file_util.hpp"

namespace {

using namespace lm;
using chn_test::ring_channels;
using pktkit::PktTime;

class ChnFind : public chn_test::ChnWorld {
 protected:
  // Open trace files of the event, counted by their handles.
  int open_files() {
    int n = 0;
    if (!evt.chn) return 0;
    CHNLST_T* c = evt.chn;
    do {
      n += c->fp.is_open();
      c = c->nxt;
    } while (c != evt.chn);
    return n;
  }
};

TEST_F(ChnFind, FirstPacketMakesChannelFileAndTimes) {
  evt.rate = 200.0f;
  G.sign = 5;
  const auto p = dt({9, 32, 10, 59, 59, 990}, 4, {1, 2, 3}, 7);
  CHNLST_T* c = Chn_find(&evt, p.data());
  EXPECT_EQ(evt.chn, c);
  EXPECT_EQ(ring_channels(c), std::vector<unsigned>{4});
  EXPECT_EQ(evt.lo, 4);
  EXPECT_EQ(evt.hi, 4);
  EXPECT_EQ(evt.chn_cnt, 1);
  EXPECT_EQ(G.sign, 0);
  EXPECT_STREQ(c->first_time, "2009032105959990");
  EXPECT_STREQ(c->prv_time, "2009032105959990");
  EXPECT_STREQ(evt.last, "2009032105959990");
  EXPECT_STREQ(evt.smp_time_1st, "2009032105959990");
  EXPECT_STREQ(c->nxt_time, "2009032110000005") << "3 samples at 200/s";
  EXPECT_EQ(c->seq, 7);
  EXPECT_EQ(c->evt_num, 42);
  EXPECT_EQ(c->file_open, 1);
  EXPECT_EQ(G.N_opn_fls, 1);
  EXPECT_TRUE(fexist(c->name));
}

TEST_F(ChnFind, ContinuitySignComparesWithTheExpectedTime) {
  const struct {
    PktTime t;
    int sign;
  } steps[] = {
      {{9, 32, 0, 0, 0, 0}, 0},    // new channel
      {{9, 32, 0, 0, 0, 100}, 0},  // 10 samples at 100/s later: joins exactly
      {{9, 32, 0, 0, 0, 250}, 1},  // gap
      {{9, 32, 0, 0, 0, 300}, -1}, // overlap: expected 350
      {{9, 32, 0, 0, 0, 400}, 0},
  };
  for (const auto& s : steps) {
    G.sign = 99;
    Chn_find(&evt, dt(s.t, 0, std::vector<std::int32_t>(10, 1)).data());
    EXPECT_EQ(G.sign, s.sign) << s.t.ms;
  }
}

TEST_F(ChnFind, NewChannelGoesRightAfterTheCurrentOneAndRangeWidens) {
  const PktTime t{9, 32, 0, 0, 0, 0};
  for (unsigned ch : {5u, 3u, 7u, 5u, 4u}) Chn_find(&evt, dt(t, ch, {1}).data());
  // 5; 5 3; 5 3 7; back to 5; 4 after 5.
  EXPECT_EQ(ring_channels(evt.chn), (std::vector<unsigned>{4, 3, 7, 5}));
  EXPECT_EQ(evt.chn->channel, 4);
  EXPECT_EQ(evt.chn_cnt, 4);
  EXPECT_EQ(evt.lo, 3);
  EXPECT_EQ(evt.hi, 7);
}

TEST_F(ChnFind, EventFirstTimeIsTheEarliestChannelStart) {
  std::strcpy(evt.smp_time_1st, "2009032000000500");  // from an event header
  Chn_find(&evt, dt({9, 32, 0, 0, 1, 0}, 0, {1}).data());
  EXPECT_STREQ(evt.smp_time_1st, "2009032000000500");
  Chn_find(&evt, dt({9, 32, 0, 0, 0, 200}, 1, {1}).data());
  EXPECT_STREQ(evt.smp_time_1st, "2009032000000200");
  Chn_find(&evt, dt({9, 32, 0, 0, 0, 100}, 1, {1}).data());
  EXPECT_STREQ(evt.smp_time_1st, "2009032000000200") << "only new channels lower it";
  std::strcpy(evt.smp_time_1st, "20090");  // not a whole time string
  Chn_find(&evt, dt({9, 32, 0, 0, 9, 0}, 2, {1}).data());
  EXPECT_STREQ(evt.smp_time_1st, "2009032000009000");
}

TEST_F(ChnFind, NoTraceFileWithLimitZero) {
  G.Smp_limit = 0;
  CHNLST_T* c = Chn_find(&evt, dt({}, 0, {1}).data());
  Chn_find(&evt, dt({}, 0, {1}).data());
  EXPECT_FALSE(c->fp.is_open());
  EXPECT_FALSE(fexist(c->name));
  EXPECT_EQ(G.N_opn_fls, 0);
}

TEST_F(ChnFind, BadEventStopsEveryChannelAtTheLimit) {
  const struct {
    std::uint32_t limit, want;
  } cases[] = {{1000, 1001}, {4294967295u, 4294967295u}, {0, 1}};
  for (const auto& c : cases) {
    chn_test::free_channels(evt);
    evt.bad = 0;
    G.Smp_limit = c.limit;
    CHNLST_T* chn = feed(dt({}, 0, {1}), {1, 2});
    EXPECT_EQ(chn->cnt, c.limit ? 2u : 0u);
    evt.bad = 1;
    chn = feed(dt({}, 0, {1}), {3, 4});
    EXPECT_EQ(chn->cnt, c.want);
  }
}

TEST_F(ChnFind, FortyChannelsKeepOpenFilesNearTheLimitAndAppendOnReopen) {
  const int kChannels = 40;
  for (int round = 0; round < 3; ++round) {
    for (int ch = 0; ch < kChannels; ++ch) {
      feed(dt({9, 32, 0, 0, round, 0}, static_cast<unsigned>(ch), {1}, 1),
           {round * 1000 + ch, -(round * 1000 + ch)});
      EXPECT_LE(G.N_opn_fls, kOpenFilesMax + 1);
      EXPECT_EQ(open_files(), G.N_opn_fls);
      EXPECT_TRUE(evt.chn->fp.is_open());
    }
  }
  EXPECT_EQ(evt.chn_cnt, kChannels);
  finish_files();
  EXPECT_EQ(G.N_opn_fls, 0);
  // Every re-open appended: the last channel closed to make room holds all its lines.
  const CHNLST_T* reopened = evt.chn->prv;
  ASSERT_EQ(reopened->channel, 38);
  const std::string text = e2e::read_file(reopened->name);
  const std::string want = "38\r\n-38\r\n1038\r\n-1038\r\n2038\r\n-2038\r\n";
  EXPECT_EQ(text.substr(text.size() - want.size()), want);
  EXPECT_NE(text.find("$Samples=6         \r\n"), std::string::npos);
}

TEST_F(ChnFind, MakingRoomClosesTheStartingChannelFirstAndNeverTheOwnOne) {
  const PktTime t{};
  CHNLST_T* a = Chn_find(&evt, dt(t, 0, {1}).data());
  CHNLST_T* b = Chn_find(&evt, dt(t, 1, {1}).data());
  G.N_opn_fls = kOpenFilesMax + 1;  // other events' files, as far as the count knows
  CHNLST_T* c = Chn_find(&evt, dt(t, 2, {1}).data());
  EXPECT_FALSE(b->fp.is_open()) << "the walk starts at the current channel";
  EXPECT_TRUE(a->fp.is_open());
  EXPECT_TRUE(c->fp.is_open());
  EXPECT_EQ(G.N_opn_fls, kOpenFilesMax + 1);

  Chn_file_close(a);
  Chn_file_close(c);
  G.N_opn_fls = kOpenFilesMax + 5;
  Chn_find(&evt, dt(t, 2, {1}).data());  // walk: c (own) at once
  EXPECT_TRUE(c->fp.is_open());
  EXPECT_EQ(G.N_opn_fls, kOpenFilesMax + 6);
}

TEST_F(ChnFind, FileOpenAccounting) {
  CHNLST_T* c = Chn_find(&evt, dt({}, 0, {1}).data());
  EXPECT_EQ(Chn_file_open(c, "a+b"), 1) << "already open: nothing opened";
  EXPECT_EQ(G.N_opn_fls, 1);
  Chn_file_close(c);
  Chn_file_close(c);
  EXPECT_EQ(G.N_opn_fls, 0);
  EXPECT_EQ(c->file_open, 0);
  G.N_opn_fls = 0;
  EXPECT_EQ(Chn_file_open(c, "r+b"), 1);
  EXPECT_EQ(G.N_opn_fls, 1);
}

TEST_F(ChnFind, RateEstimatedFromTheFirstChannelWithASecondPacket) {
  evt.rate = 0;
  evt.pkt_eh = 0;
  const std::vector<std::int32_t> hundred(100, 7);
  feed(dt({9, 32, 0, 0, 0, 0}, 0, hundred), hundred);
  EXPECT_EQ(evt.rate, 0.0f);
  feed(dt({9, 32, 0, 0, 0, 0}, 1, hundred), hundred);
  EXPECT_EQ(evt.rate, 0.0f);
  // Same time again: no duration, so no estimate yet (and no division by zero).
  feed(dt({9, 32, 0, 0, 0, 0}, 1, hundred), hundred);
  EXPECT_EQ(evt.rate, 0.0f);
  EXPECT_EQ(evt.pkt_eh, 0);
  feed(dt({9, 32, 0, 0, 0, 500}, 0, hundred), hundred);
  EXPECT_FLOAT_EQ(evt.rate, 200.0f) << "100 samples written in 500 ms";
  EXPECT_EQ(evt.pkt_eh, 1);
  feed(dt({9, 32, 0, 0, 4, 0}, 1, hundred), hundred);
  EXPECT_FLOAT_EQ(evt.rate, 200.0f) << "later packets keep it";
}

TEST_F(ChnFind, RateStaysUnknownWhileEverySampleIsSkipped) {
  evt.rate = 0;
  evt.pkt_eh = 0;
  G.Smp_skip = 1000;
  const std::vector<std::int32_t> ten(10, 1);
  feed(dt({9, 32, 0, 0, 0, 0}, 0, ten), ten);
  CHNLST_T* c = feed(dt({9, 32, 0, 0, 1, 0}, 0, ten), ten);
  EXPECT_EQ(c->cnt, 0u);
  EXPECT_EQ(evt.rate, 0.0f);
  EXPECT_EQ(evt.pkt_eh, 0);
}

TEST_F(ChnFind, UnopenableTraceFileEndsTheRun) {
  pktkit::write_file(tmp / "blocker", {});  // a file where the output directory should be
  ASSERT_TRUE(set_text(G.DirOut, tmp / "blocker/"));
  testing::internal::CaptureStdout();
  const int status = chn_test::exit_status([&] { Chn_find(&evt, dt({}, 0, {1}).data()); });
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\n\nERROR!!!!\n   unable to open " + tmp / "blocker/" + "2009032000000000_09A3F_1_1.atr for output.");
  EXPECT_EQ(status, 20);
}

}  // namespace

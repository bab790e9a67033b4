// The ring of open events of a unit, driven in-process.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "log/log_file.hpp"
#include "model/channel.hpp"
#include "model/event.hpp"
#include "model/ring.hpp"
#include "model/unit.hpp"
#include "pktkit/packet_builder.hpp"
#include "run/globals.hpp"
#include "run/text.hpp"
#include "support/e2e.hpp"

namespace {

using namespace lm;
using pktkit::Packet;

constexpr std::uint16_t kUnit = 0x0042;

Packet dt(unsigned event, unsigned seq, unsigned stream = 0) {
  return pktkit::make_dt16(kUnit, {}, seq, event, stream, 0, {});
}

std::vector<unsigned> ring_events(Evt* from) {
  std::vector<unsigned> nums;
  ring_for_each(from, [&](Evt* e) {
    EXPECT_EQ(e->nxt->prv, e);
    nums.push_back(e->evt);
  });
  return nums;
}

class EventRegistry : public testing::Test {
 protected:
  void SetUp() override {
    reset_globals();
    G.Log_on = 0;
    unit = Unit_find(dt(0, 0).data());
  }
  void TearDown() override { reset_globals(); }

  Evt* find(unsigned event, unsigned seq = 0) { return Evt_find(unit, dt(event, seq).data()); }

  // A channel of the event with an open trace file in the temporary directory.
  CHNLST_T* add_channel(Evt* e, std::uint16_t number) {
    auto* c = new CHNLST_T;
    c->evt = e;
    c->unit = e->unit;
    c->channel = number;
    set_text(c->name, tmp / ("c" + std::to_string(e->evt) + "_" + std::to_string(number) + ".atr"));
    if (e->chn) ring_insert_after(e->chn, c); else ring_init(c);
    e->chn = c;
    EXPECT_EQ(Chn_file_open(c, "a+b"), 1);
    return c;
  }

  e2e::TempDir tmp;
  UNIT_T* unit = nullptr;
};

TEST_F(EventRegistry, NewEventsGoRightAfterTheCurrentOne) {
  const struct {
    std::vector<unsigned> packets;
    std::vector<unsigned> ring;  // from the first event met
    unsigned current;
  } cases[] = {
      {{7}, {7}, 7},
      {{1, 2, 3}, {1, 2, 3}, 3},
      {{1, 2, 1, 3}, {1, 3, 2}, 3},
      {{1, 2, 1, 2, 1}, {1, 2}, 1},
      {{0, 9999, 0}, {0, 9999}, 0},
  };
  for (const auto& c : cases) {
    reset_globals();
    G.Log_on = 0;
    unit = Unit_find(dt(0, 0).data());
    Evt* first = nullptr;
    std::vector<Evt*> seen;
    for (unsigned n : c.packets) {
      Evt* e = find(n);
      EXPECT_EQ(unit->evt, e);
      EXPECT_EQ(e->evt, n);
      if (!first) first = e;
      seen.push_back(e);
    }
    EXPECT_EQ(ring_events(first), c.ring);
    EXPECT_EQ(unit->evt->evt, c.current);
    // A number met again is the same record, not a new one.
    for (std::size_t i = 0; i < c.packets.size(); ++i)
      for (std::size_t j = 0; j < i; ++j)
        if (c.packets[i] == c.packets[j]) {
          EXPECT_EQ(seen[i], seen[j]);
        }
  }
}

TEST_F(EventRegistry, CreatedEventStartsBlank) {
  Evt* e = Evt_find(unit, dt(12, 345, 5).data());
  EXPECT_EQ(e->unit, unit);
  EXPECT_EQ(e->unit_id, kUnit);
  EXPECT_EQ(e->evt, 12);
  EXPECT_EQ(e->strm, 5);
  EXPECT_EQ(e->seq, 345);
  EXPECT_EQ(e->chn, nullptr);
  EXPECT_EQ(e->chn_cnt, 0);
  EXPECT_EQ(e->lo, 99);
  EXPECT_EQ(e->hi, 0);
  EXPECT_EQ(e->bad + e->pkt_eh + e->pkt_et, 0);
  EXPECT_EQ(e->rate, 0.0f);
  EXPECT_EQ(e->time_qual, -1);
  EXPECT_STREQ(e->smp_time_1st, "");
  EXPECT_STREQ(e->last, "");
  EXPECT_STREQ(e->evt_file_name, "");
  EXPECT_STREQ(e->stn_name, "     ");
  EXPECT_FALSE(e->fd_evt.is_open());
  for (std::uint16_t ch : {0, 15, 16, 31})
    for (const ChnColumn& col : chn_col::kAll) EXPECT_EQ(chn_entry(*e, col, ch), std::string(col.width, ' '));

  // Another stream with the same number joins the event; its stream stays.
  EXPECT_EQ(Evt_find(unit, dt(12, 346, 2).data()), e);
  EXPECT_EQ(e->strm, 5);
}

TEST_F(EventRegistry, OnlyEventPacketsReadTheHeaderBody) {
  pktkit::EventInfo info;
  info.rate = " 250";
  const Packet eh = pktkit::make_event_packet("EH", kUnit, {}, 1, 3, 0, false, info);
  Evt* e = Evt_find(unit, eh.data());
  EXPECT_EQ(e->rate, 250.0f);
  EXPECT_STREQ(e->trg_type, "EVT ");

  // A DT packet whose body happens to hold text at the same offsets leaves the header values alone.
  Packet d = eh;
  d[0] = 'D';
  d[1] = 'T';
  pktkit::put_text(d, 88, " 999");
  pktkit::put_bcd(d, 14, 2, 2);
  EXPECT_EQ(Evt_find(unit, d.data()), e);
  EXPECT_EQ(e->rate, 250.0f);

  Packet et = pktkit::make_event_packet("ET", kUnit, {}, 3, 3, 0, false, info);
  pktkit::put_text(et, 88, "  50");
  EXPECT_EQ(Evt_find(unit, et.data()), e);
  EXPECT_EQ(e->rate, 50.0f);
}

TEST_F(EventRegistry, SequenceCheck) {
  ASSERT_TRUE(set_text(G.DirOut, tmp.str() + "/"));
  const auto line = [](int seq, int event) {
    return "\nBlock sequence # " + std::to_string(seq) + " is out of sequence in Event #" + std::to_string(event) +
           "\n\n";
  };
  using Pkts = std::vector<std::pair<unsigned, unsigned>>;  // (event, sequence)
  const struct {
    Pkts packets;
    bool bad7;  // event 7 marked
    std::string logged;
  } cases[] = {
      {{{7, 42}}, false, ""},  // the first packet of an event is never out of sequence
      {{{7, 1}, {7, 2}, {7, 3}}, false, ""},
      {{{7, 5}, {7, 6}, {7, 8}}, true, line(8, 7)},
      {{{7, 5}, {7, 5}}, true, line(5, 7)},
      {{{7, 5}, {7, 4}, {7, 9}}, true, line(4, 7) + line(9, 7)},
      {{{7, 9998}, {7, 9999}, {7, 1}}, false, ""},  // any number after 9999
      {{{7, 0}, {7, 17}}, false, ""},               // and after 0
      {{{7, 1}, {8, 1}, {7, 2}, {8, 5}}, false, line(5, 8)},  // each event keeps its own count
  };
  for (const auto& c : cases) {
    reset_globals();
    std::filesystem::remove(tmp / "ID0042.lml");
    ASSERT_TRUE(set_text(G.DirOut, tmp.str() + "/"));
    G.Log_on = 1;
    unit = Unit_find(dt(0, 0).data());
    Evt* seven = nullptr;
    for (const auto& [event, seq] : c.packets) {
      Evt* e = find(event, seq);
      EXPECT_EQ(e->seq, seq);
      if (event == 7) seven = e;
    }
    EXPECT_EQ(seven->bad, c.bad7 ? 1 : 0);
    unit->fd_log.close();
    OutFile hdr;
    ASSERT_TRUE(hdr.open((tmp / "expected").c_str(), "wb"));
    Log_fhdr(hdr);
    hdr.close();
    EXPECT_EQ(e2e::read_file(tmp / "ID0042.lml"), e2e::read_file(tmp / "expected") + c.logged);
  }
}

TEST_F(EventRegistry, RemovalMakesThePredecessorCurrent) {
  const struct {
    std::vector<unsigned> created;
    unsigned make_current;  // met again before the removal
    unsigned removed;
    std::vector<unsigned> ring_after;  // from the unit's current event
  } cases[] = {
      {{5}, 5, 5, {}},
      {{1, 2, 3}, 3, 3, {2, 1}},
      {{1, 2, 3}, 1, 1, {3, 2}},
      {{1, 2, 3}, 2, 2, {1, 3}},
      {{1, 2}, 2, 2, {1}},
  };
  for (const auto& c : cases) {
    reset_globals();
    G.Log_on = 0;
    unit = Unit_find(dt(0, 0).data());
    for (unsigned n : c.created) find(n);
    Evt* e = find(c.make_current);
    Evt_remove(e);
    if (c.ring_after.empty()) {
      EXPECT_EQ(unit->evt, nullptr);
    } else {
      ASSERT_NE(unit->evt, nullptr);
      EXPECT_EQ(ring_events(unit->evt), c.ring_after);
    }
  }
  // The unit goes on: a later packet of the removed number opens a fresh event.
  Evt* again = find(2, 40);
  EXPECT_EQ(again->seq, 40);
  EXPECT_EQ(again->bad, 0);
}

TEST_F(EventRegistry, RemovalRewritesEachTraceFileAndGoesOnPastOneThatCannotBeReopened) {
  Evt* keep = find(8);
  Evt* e = find(9);
  add_channel(e, 0);
  CHNLST_T* lost = add_channel(e, 1);
  add_channel(e, 2);
  EXPECT_EQ(G.N_opn_fls, 3);
  Chn_file_close(lost);
  std::filesystem::remove(lost->name);
  const std::string lost_name = lost->name;
  ASSERT_NE(std::freopen("/dev/null", "r", stdin), nullptr);  // the channel dump waits for a key
  testing::internal::CaptureStdout();
  Evt_remove(e);
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out.rfind("\n!!!Could not re-open '" + lost_name + "'!!!\nChan structure (", 0), 0u) << out;
  EXPECT_FALSE(e2e::exists(lost_name));
  for (int ch : {0, 2}) {
    const std::string text = e2e::read_file(tmp / ("c9_" + std::to_string(ch) + ".atr"));
    EXPECT_EQ(text.rfind("$ChnID=", 0), 0u) << "header rewritten in channel " << ch;
  }
  EXPECT_EQ(G.N_opn_fls, 0);
  EXPECT_EQ(unit->evt, keep);
  EXPECT_EQ(ring_events(keep), std::vector<unsigned>{8});
}

TEST_F(EventRegistry, AnotherEventClosesTheCurrentOnesTraceFiles) {
  Evt* a = find(1);
  CHNLST_T* a0 = add_channel(a, 0);
  CHNLST_T* a1 = add_channel(a, 1);
  EXPECT_EQ(G.N_opn_fls, 2);

  EXPECT_EQ(find(1), a);  // same event: files stay open
  EXPECT_TRUE(a0->fp.is_open() && a1->fp.is_open());

  Evt* b = find(2);
  EXPECT_FALSE(a0->fp.is_open() || a1->fp.is_open());
  EXPECT_EQ(a0->file_open + a1->file_open, 0);
  EXPECT_EQ(G.N_opn_fls, 0);
  CHNLST_T* b0 = add_channel(b, 0);

  EXPECT_EQ(find(1), a);  // back to A: B's file closes, A stays an open event
  EXPECT_FALSE(b0->fp.is_open());
  EXPECT_EQ(ring_events(a), (std::vector<unsigned>{1, 2}));
}

TEST_F(EventRegistry, UnitSwitchClosesTraceFilesWhateverTheLogSwitch) {
  for (std::uint16_t log : {0, 1}) {
    reset_globals();
    ASSERT_TRUE(set_text(G.DirOut, tmp.str() + "/"));
    G.Log_on = log;
    unit = Unit_find(dt(0, 0).data());
    CHNLST_T* c = add_channel(find(4), 3);
    Unit_find(pktkit::make_header("SH", 0x0777, {}, 1).data());
    EXPECT_FALSE(c->fp.is_open()) << "log " << log;
    EXPECT_EQ(G.N_opn_fls, 0) << "log " << log;
    EXPECT_EQ(unit->evt->chn, c) << "the event and its channels stay";
  }
}

}  // namespace

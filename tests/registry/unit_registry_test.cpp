// The unit ring and each unit's ring of open events, driven in-process.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <memory>

#include "base/ring.hpp"
#include "base/text.hpp"
#include "pktkit/packet_builder.hpp"
#include "registry/channels.hpp"
#include "registry/events.hpp"
#include "registry/units.hpp"
#include "support/e2e.hpp"

namespace {

using namespace lm;

pktkit::Packet sh(std::uint16_t unit) { return pktkit::make_header("SH", unit, {}, 1); }
pktkit::Packet dt(unsigned event, unsigned seq, unsigned channel = 0) {
  return pktkit::make_dt16(0x0042, {}, seq, event, 0, channel, {});
}

unsigned id_of(const UNIT_T* u) { return u->unit_id; }
unsigned id_of(const Evt* e) { return e->evt; }
// The numbers around a ring, starting at `from`.
template <class T>
std::vector<unsigned> ring_ids(T* from) {
  std::vector<unsigned> ids;
  ring_for_each(from, [&](T* x) { ids.push_back(id_of(x)); });
  return ids;
}

class Registry : public testing::Test {
 protected:
  void SetUp() override { restart(0); }
  // A fresh run that has met unit 0042; its files go to the temporary directory.
  void restart(std::uint16_t log) {
    run.reset();
    std::filesystem::remove(tmp / "ID0042.lml");
    set = Settings{};
    ASSERT_TRUE(set_text(set.DirOut, tmp.str() + "/"));
    set.Log_on = log;
    run = std::make_unique<lm::Run>(set);
    unit = Unit_find(*run, dt(0, 0).data());
  }
  Evt* find(unsigned event, unsigned seq = 0) { return Evt_find(*run, unit, dt(event, seq).data()); }
  e2e::TempDir tmp;
  Settings set;
  std::unique_ptr<lm::Run> run;
  UNIT_T* unit = nullptr;
};

// A new unit or event goes right after the cursor, one met again becomes the cursor, and a removed
// event leaves its predecessor current, or none when it was alone. Rings are listed from the cursor.
TEST_F(Registry, RingsAndSequenceCheck) {
  for (std::uint16_t id : {0xA, 0xB, 0xC, 0xB, 0xD}) EXPECT_EQ(Unit_find(*run, sh(id).data()), run->unit_start);
  EXPECT_EQ(ring_ids(run->unit_start), (std::vector<unsigned>{0xD, 0xC, 0x42, 0xA, 0xB}));
  const auto line = [](int seq, int event) {
    return "\nBlock sequence # " + std::to_string(seq) + " is out of sequence in Event #" + std::to_string(event) +
           "\n\n";
  };
  // Packets as (event, sequence). The first packet of an event, and any after 9999 or 0, is in
  // sequence; each event keeps its own count; the check goes on from the last number seen.
  const struct { std::vector<std::pair<unsigned, unsigned>> packets; std::vector<unsigned> ring, after_removal;
                 std::string logged; } cases[] = {
      {{{1, 0}, {2, 0}, {3, 0}, {2, 0}, {4, 0}}, {4, 3, 1, 2}, {2, 3, 1}, ""},
      {{{7, 9998}, {8, 1}, {7, 9999}, {8, 5}, {7, 0}, {7, 17}}, {7, 8}, {8}, line(5, 8)},
      {{{7, 5}, {7, 6}, {7, 8}, {7, 8}, {7, 7}}, {7}, {}, line(8, 7) + line(8, 7) + line(7, 7)},
  };
  for (const auto& c : cases) {
    restart(1);
    for (const auto& [event, seq] : c.packets) EXPECT_EQ(find(event, seq), unit->evt);
    EXPECT_EQ(ring_ids(unit->evt), c.ring);
    Evt_remove(*run, unit->evt);
    EXPECT_EQ(ring_ids(unit->evt), c.after_removal);
    unit->fd_log.close();
    EXPECT_EQ(e2e::log_body(e2e::read_file(tmp / "ID0042.lml")), c.logged);
  }
}

TEST_F(Registry, OnlyTheCurrentEventOfTheCurrentUnitKeepsTraceFilesOpen) {
  for (std::uint16_t log : {0, 1}) {
    restart(log);
    Evt* a = find(1);
    Chn_find(*run, a, dt(1, 0, 0).data());
    Chn_find(*run, a, dt(1, 0, 1).data());
    EXPECT_EQ(find(1), a);  // same event: files stay open
    EXPECT_EQ(run->N_opn_fls, 2);
    CHNLST_T* b0 = Chn_find(*run, find(2), dt(2, 0, 0).data());
    EXPECT_EQ(run->N_opn_fls, 1);
    Unit_find(*run, sh(0x0777).data());  // another unit, whatever the log switch
    EXPECT_FALSE(b0->fp.is_open()) << "log " << log;
    EXPECT_EQ(ring_ids(a), (std::vector<unsigned>{1, 2})) << "the events stay open";
  }
}

TEST_F(Registry, RemovalGoesOnPastATraceFileThatCannotBeReopened) {
  ASSERT_NE(std::freopen("/dev/null", "r", stdin), nullptr);  // the channel dump waits for a key
  Evt* e = find(1);
  const std::string lost = Chn_find(*run, e, dt(1, 0, 0).data())->name;
  CHNLST_T* chn = Chn_find(*run, e, dt(1, 0, 1).data());
  chn->cnt = 7;
  const std::string kept = chn->name;
  std::filesystem::remove(lost);
  testing::internal::CaptureStdout();
  Evt_remove(*run, e);
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(out.starts_with("\n!!!Could not re-open '" + lost + "'!!!\nChan structure (0042):")) << out;
  EXPECT_NE(e2e::read_file(kept).find("$Samples=7         \r\n"), std::string::npos) << "the other channel is finished";
}

}  // namespace

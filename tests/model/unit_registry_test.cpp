// The unit ring and the per-unit files, driven in-process.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "log/log_file.hpp"
#include "model/event.hpp"
#include "model/unit.hpp"
#include "pktkit/packet_builder.hpp"
#include "run/exit.hpp"
#include "run/globals.hpp"
#include "run/text.hpp"
#include "support/e2e.hpp"

namespace {

using namespace lm;

pktkit::Packet sh(std::uint16_t unit) { return pktkit::make_header("SH", unit, {}, 1); }

// Unit IDs around the ring, starting at `from`; fails when the back links disagree.
std::vector<std::uint16_t> ring_ids(UNIT_T* from) {
  std::vector<std::uint16_t> ids;
  UNIT_T* u = from;
  do {
    ids.push_back(u->unit_id);
    EXPECT_EQ(u->nxt->prv, u);
    u = u->nxt;
  } while (u != from && ids.size() < 100);
  return ids;
}

class UnitRegistry : public testing::Test {
 protected:
  void SetUp() override {
    reset_globals();
    G.Log_on = 0;
  }
  void TearDown() override { reset_globals(); }
  // Routes the unit files into the temporary directory.
  void use_dir() { ASSERT_TRUE(set_text(G.DirOut, tmp.str() + "/")); }
  e2e::TempDir tmp;
};

TEST_F(UnitRegistry, NewUnitGoesRightAfterTheCursor) {
  const struct {
    std::vector<std::uint16_t> packets;
    std::vector<std::uint16_t> ring;  // from the first unit met
    std::uint16_t cursor;
  } cases[] = {
      {{0xA}, {0xA}, 0xA},
      {{0xA, 0xB, 0xC}, {0xA, 0xB, 0xC}, 0xC},
      {{0xA, 0xB, 0xA, 0xC}, {0xA, 0xC, 0xB}, 0xC},
      {{0xA, 0xB, 0xC, 0xB, 0xD}, {0xA, 0xB, 0xD, 0xC}, 0xD},
      {{0xA, 0xB, 0xA, 0xB, 0xA}, {0xA, 0xB}, 0xA},
      {{0x0000, 0xFFFF, 0x0000}, {0xFFFF}, 0xFFFF},  // unit 0 is filed under FFFF
  };
  for (const auto& c : cases) {
    reset_globals();
    G.Log_on = 0;
    UNIT_T* first = nullptr;
    for (std::uint16_t id : c.packets) {
      UNIT_T* u = Unit_find(sh(id).data());
      ASSERT_NE(u, nullptr);
      EXPECT_EQ(u, G.unit_start) << "the found unit is the cursor";
      if (!first) first = u;
    }
    EXPECT_EQ(ring_ids(first), c.ring);
    EXPECT_EQ(G.unit_start->unit_id, c.cursor);
    EXPECT_EQ(first->ini_last, -1);
  }
}

TEST_F(UnitRegistry, FilesFollowTheCursor) {
  use_dir();
  G.Log_on = 1;
  G.Qcc_on = 1;
  UNIT_T* a = Unit_find(sh(0x9A3F).data());
  EXPECT_EQ(std::string(a->log_name), tmp / "ID9A3F.lml");
  EXPECT_EQ(std::string(a->qcc_name), tmp / "ID9A3F.qcc");
  a->fd_log.write("a1|");
  a->fd_qcc.write("q1|");

  EXPECT_EQ(Unit_find(sh(0x9A3F).data()), a);  // same unit: nothing closes
  EXPECT_TRUE(a->fd_log.is_open() && a->fd_qcc.is_open());

  UNIT_T* b = Unit_find(sh(0x0001).data());
  EXPECT_EQ(a->log_open, 0);
  EXPECT_EQ(a->qcc_open, 0);
  EXPECT_FALSE(a->fd_log.is_open() || a->fd_qcc.is_open());
  EXPECT_EQ(b->log_open, 1);
  EXPECT_EQ(b->qcc_open, 1);

  EXPECT_EQ(Unit_find(sh(0x9A3F).data()), a);
  EXPECT_EQ(a->log_open, 1);
  EXPECT_EQ(a->qcc_open, 1);
  EXPECT_FALSE(b->fd_log.is_open() || b->fd_qcc.is_open());
  a->fd_log.write("a2|");
  a->fd_qcc.write("q2|");
  a->fd_log.close();
  a->fd_qcc.close();

  // One header each (written at creation), the re-opened file appended to.
  OutFile hdr;
  ASSERT_TRUE(hdr.open((tmp / "expected").c_str(), "wb"));
  Log_fhdr(hdr);
  hdr.close();
  const std::string head = e2e::read_file(tmp / "expected");
  EXPECT_EQ(e2e::read_file(tmp / "ID9A3F.lml"), head + "a1|a2|");
  EXPECT_EQ(e2e::read_file(tmp / "ID9A3F.qcc"), head + "\r\n\r\n" + "q1|q2|");
  EXPECT_EQ(e2e::read_file(tmp / "ID0001.lml"), head);
}

TEST_F(UnitRegistry, PathMustFitTheNameField) {
  // DirOut + "ID0001.lml" of exactly 132 characters fits the 133-byte field; one more does not.
  const std::string base = tmp.str() + "/";
  const std::size_t pad = 132 - base.size() - std::string("/ID0001.lml").size();
  const std::string dir = base + std::string(pad, 'd');
  std::filesystem::create_directory(dir);
  std::filesystem::create_directory(dir + "e");
  G.Log_on = 1;

  ASSERT_TRUE(set_text(G.DirOut, dir + "/"));
  UNIT_T* u = Unit_find(sh(1).data());
  EXPECT_EQ(std::string(u->log_name).size(), 132u);
  EXPECT_TRUE(e2e::exists(dir + "/ID0001.lml"));

  ASSERT_TRUE(set_text(G.DirOut, dir + "e/"));
  try {
    Unit_find(sh(2).data());
    ADD_FAILURE() << "an over-long unit file path must end the run";
  } catch (const RunExit& e) {
    EXPECT_EQ(e.status, 20);
  }
  EXPECT_FALSE(e2e::exists(dir + "e/ID0002.lml"));
}

}  // namespace

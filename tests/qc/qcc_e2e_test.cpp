// Statistics files as a run with -Q leaves them: the unit's file and the run's, compared whole.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/e2e.hpp"

namespace {

using pktkit::Packet;

constexpr std::uint16_t kUnit = 0x9A3F;
const std::string kHeads =
    "\r\n                        Min          Max        Range         Mean       St Dev";
const std::string kFew = " 00000000.0000 00000000.0000 00000000.0000 00000000.0000 00000000.0000";
const std::string kNone = " 0000000.0000 0000000.0000 0000000.0000 0000000.0000 0000000.0000";

TEST(QccE2e, UnitAndRunFilesWhole) {
  e2e::TempDir tmp;
  const std::string dir = std::filesystem::canonical(tmp.path()).string();
  std::vector<Packet> p;
  p.push_back(pktkit::make_header("NH", kUnit, {}, 1));
  p.push_back(pktkit::make_event_packet("EH", kUnit, {}, 2, 7, 0, false, {}));
  // Channels 2, 3, 1, then 3 again (numbers 1, 2, 0, 2): the last one seen is the highest, so the
  // block starts at the next, the lowest.
  p.push_back(pktkit::make_dt16(kUnit, {}, 3, 7, 0, 1, {7}));
  p.push_back(pktkit::make_dt16(kUnit, {}, 4, 7, 0, 2, {5, 5, 5}));
  p.push_back(pktkit::make_dt16(kUnit, {}, 5, 7, 0, 0, {9, 9, 1, 2, 3, 4}));
  p.push_back(pktkit::make_dt16(kUnit, {}, 6, 7, 0, 2, {5}));
  p.push_back(pktkit::make_event_packet("ET", kUnit, {}, 7, 7, 0, false, {}));
  // Event 8 of another unit skips a sequence number: bad, and still open at the end of the input.
  p.push_back(pktkit::make_dt16(0x0B0B, {}, 1, 8, 0, 0, {1, 2}));
  p.push_back(pktkit::make_dt16(0x0B0B, {}, 3, 8, 0, 0, {3}));
  // Event 9 ends with the input; its channel with samples skipped wholly by -T2 writes zeros.
  p.push_back(pktkit::make_dt16(kUnit, {}, 8, 9, 0, 0, {-1, 9, 30, -20}));
  p.push_back(pktkit::make_dt16(kUnit, {}, 9, 9, 0, 5, {6, 6}));
  e2e::write_packets(dir + "/in.pkt", p);
  const auto r = e2e::run({"in.pkt", "-VN", "-QY", "-T2"}, dir, (dir + "/none.ini").c_str());
  ASSERT_EQ(r.status, 0);
  EXPECT_NE(r.out.find("\nNo ET block for U:9A3F E:0009"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("\nNo ET block for U:0B0B E:0008"), std::string::npos) << r.out;

  const std::string h = e2e::log_head(e2e::mask_time(e2e::read_file(dir + "/in.lml"))) + "\r\n\r\n";
  auto file = [&](const char* name) { return e2e::mask_time(e2e::read_file(dir + "/" + name)); };

  // With -T2 channel 1 keeps 1, 2, 3, 4; channel 3 keeps 5, 5; channel 2 keeps nothing.
  EXPECT_EQ(file("ID9A3F.qcc"),
            h + "ET 09:032:00:00:00.000 U:9A3F E:0007 D:1            F:00 N:0007 B:0000000006\r\n" + kHeads +
                "\r\n   Channel  0:       1.0000       4.0000       3.0000       2.5000       1.2910"
                "\r\n   Channel  1:" + kFew +
                "\r\n   Channel  2:       5.0000       5.0000       0.0000       5.0000       0.0000\r\n\r\n" +
                "No ET block for U:9A3F E:0009\r\n" + kHeads +
                "\r\n   Channel  0:     -20.0000      30.0000      50.0000       5.0000      35.3553"
                "\r\n   Channel  5:" + kFew + "\r\n\r\n");
  EXPECT_EQ(file("ID0B0B.qcc"), h + "No ET block for U:0B0B E:0008\r\n" + kHeads + "\r\n   Channel ---" + kNone +
                                    "\r\n\r\n");
  EXPECT_EQ(file("in.qcc"),
            h + "\r\n\r\nNH 09:032:00:00:00.000 U:9A3F E:0000 D:1            F:00 N:0001 B:0000000000\r\n" + kHeads +
                "\r\n   9A3F     0:       1.0000       4.0000       3.0000       2.5000       1.2910"
                "\r\n   9A3F     1:" + kFew +
                "\r\n   9A3F     2:       5.0000       5.0000       0.0000       5.0000       0.0000" +
                "\r\n   9A3F     0:     -20.0000      30.0000      50.0000       5.0000      35.3553"
                "\r\n   9A3F     5:" + kFew + "\r\n   0B0B    ---" + kNone);
}

}  // namespace

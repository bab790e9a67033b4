#include <gtest/gtest.h>

#include <string>

#include "log/log_file.hpp"
#include "log/log_fixture.hpp"
#include "run/globals.hpp"

namespace {

using namespace lm;
using log_test::logged;
using pktkit::Packet;

class LogHead : public testing::Test {
 protected:
  void SetUp() override { reset_globals(); }
  void TearDown() override { reset_globals(); }
};

TEST_F(LogHead, SummaryLinesByType) {
  const pktkit::PktTime t{9, 123, 14, 5, 30, 250};
  Packet dt = pktkit::make_header("DT", 0x9F2A, t, 17);
  pktkit::put_ext(dt, 42, 0, 0x11, 100, 0, 0xC0);
  dt[19] = 0x11;  // channel index 11 shows as C
  Packet eh = pktkit::make_header("EH", 0x0001, t, 1);
  pktkit::put_ext(eh, 9999, 1, 0, 0, 0, 0);
  Packet sh = pktkit::make_header("SH", 0x00AB, t, 3);

  const struct {
    const Packet* pkt;
    std::uint16_t code;
    int sign;
    std::uint32_t blk;
    const char* want;
  } cases[] = {
      {&dt, 3, 0, 5, "DT 09:123:14:05:30.250 U:9F2A E:0042 D:1 C:C S:0100 F:C0 N:0017 B:0000000005\r\n"},
      {&eh, 1, 1, 0, "EH+09:123:14:05:30.250 U:0001 E:9999 D:2            F:00 N:0001 B:0000000000\r\n"},
      {&sh, 4, -3, 1234567, "SH-09:123:14:05:30.250 U:00AB                            N:0003 B:0001234567\r\n"},
  };
  for (const auto& c : cases) {
    G.sign = c.sign;
    G.Blk_cnt = c.blk;
    EXPECT_EQ(logged([&](OutFile& f) { log_head(f, c.pkt->data(), c.code, 0); }), c.want);
    EXPECT_EQ(G.sign, 0) << "the marker is consumed";
  }
}

TEST_F(LogHead, ChannelCharacterAndDamagedBcdStayInBounds) {
  const struct {
    std::uint8_t channel_byte;
    char want;
  } cases[] = {{0x00, '1'}, {0x08, '9'}, {0x09, 'A'}, {0x34, 'Z'}, {0x35, '?'}, {0xFF, '?'}};
  for (const auto& c : cases) {
    Packet dt = pktkit::make_header("DT", 1, {}, 1);
    pktkit::put_ext(dt, 1, 0, 0, 1, 0, 0x16);
    dt[19] = c.channel_byte;
    const std::string line = logged([&](OutFile& f) { log_head(f, dt.data(), 3, 0); });
    EXPECT_EQ(line.substr(line.find(" C:") + 3, 1), std::string(1, c.want)) << int(c.channel_byte);
  }
}

TEST_F(LogHead, ShTextDumpLineEnds) {
  const struct {
    std::string text;
    const char* want;
  } cases[] = {
      {"GPS OK\r\n", "     GPS OK\r\n     \r\n"},
      {"A\nB", "     A\n     B\r\n\r\n"},
      {"LOW BATT", "     LOW BATT\r\n\r\n"},
      {"X\r", "     X\r\r\n\r\n"},
      {"", "     \r\n\r\n"},
  };
  for (const auto& c : cases) {
    Packet sh = pktkit::make_header("SH", 1, {}, 1);
    pktkit::put_text(sh, 24, c.text);
    pktkit::put_bcd(sh, 12, 2, static_cast<unsigned>(24 + c.text.size()));
    EXPECT_EQ(logged([&](OutFile& f) { log_block(f, sh.data(), 4); }), c.want) << c.text;
  }
  // Byte counts outside the packet are bounded to it.
  Packet sh = pktkit::make_header("SH", 1, {}, 1);
  pktkit::put_bcd(sh, 12, 2, 9999);
  EXPECT_EQ(logged([&](OutFile& f) { log_block(f, sh.data(), 4); }).size(), 5u + 1000u + 2u + 2u);
  pktkit::put_bcd(sh, 12, 2, 3);
  EXPECT_EQ(logged([&](OutFile& f) { log_block(f, sh.data(), 4); }), "     \r\n\r\n");
}

TEST_F(LogHead, HexDumpOfWholePacket) {
  Packet p{};
  for (int i = 0; i < 1024; ++i) p[i] = static_cast<std::uint8_t>(i);
  const std::string dump = logged([&](OutFile& f) { log_block(f, p.data(), 0); });
  EXPECT_EQ(dump.substr(0, 81),
            "     000   00 01 02 03 04 05 06 07 - 08 09 0A 0B 0C 0D 0E 0F   ................\r\n");
  EXPECT_NE(dump.find("     3F0   F0 F1 F2 F3 F4 F5 F6 F7 - F8 F9 FA FB FC FD FE FF   ................\r\n\r\n"),
            std::string::npos);
  EXPECT_EQ(dump.size(), 64u * 81u + 2u);
}

}  // namespace

// The packet loop as a user sees it: progress display, run-log lines, partial packets.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "support/e2e.hpp"

namespace {

using e2e::run;
using e2e::TempDir;
using pktkit::Packet;

const std::string kVerboseStart =
    "\r\n\nBlock     Type      Unit      Event     Stream    Channel   Trg   Rate"
    "\r\n\n    0       -          -          -          -          -     -      -";

// What the run printed after its settings echo.
std::string after_echo(const std::string& out) {
  const std::string key = "Press CTRL-BRK or CTRL-C to abort.\n";
  const auto at = out.find(key);
  return at == std::string::npos ? "<no echo>" : out.substr(at + key.size());
}

Packet text_packet(const char* type, std::uint16_t unit, unsigned seq) {
  return pktkit::make_header(type, unit, {9, 45, 1, 2, 3, 456}, seq);
}

// Every packet type's console and run-log line; a cut last packet is dropped.
TEST(Spine, VerboseLinesAndRunLogForEveryType) {
  TempDir tmp;
  const char* plain[] = {"SC", "DS", "CD", "OM", "AD", "DR", "FD"};
  std::vector<Packet> pkts;
  for (const char* t : plain) pkts.push_back(text_packet(t, 0x00AB, 1));
  pkts.push_back(text_packet("zz", 0x00AB, 2));  // unknown: skipped silently, still counted
  pkts.push_back(text_packet("HE", 0x00AB, 2));  // straddles two known codes: unknown too
  Packet nh = text_packet("NH", 0x00AB, 3);
  pktkit::put_ext(nh, 12, 0, 0, 0, 0, 0);
  pkts.push_back(nh);
  Packet dt = text_packet("DT", 0x00AB, 4);
  pktkit::put_ext(dt, 12, 1, 4, 0, 0, 0x15);  // a data format that is not decoded
  pkts.push_back(dt);
  pkts.push_back(text_packet("SH", 0x00AB, 5));
  std::vector<std::uint8_t> bytes;
  for (const Packet& p : pkts) pktkit::append(bytes, p);
  bytes.insert(bytes.end(), pkts.back().begin(), pkts.back().end() - 1);  // the SH packet again, cut
  pktkit::write_file(tmp / "in.pkt", bytes);

  const auto r = run({"in.pkt", "-S0"}, tmp.str());
  EXPECT_EQ(r.status, 0);
  std::string want = kVerboseStart;
  for (int i = 0; i < 7; ++i)
    want += "\r0000" + std::to_string(i + 1) + "       " + plain[i] + "         -          -          -          -   ";
  want += "\r00010       NH      00AB       0012          -          -    ";
  want += "\r00011       DT      00AB       0012         02         05   ";
  want += "\r00012       SH      00AB          -          -          -   ";
  want += "\r\n";
  EXPECT_EQ(after_echo(r.out), want);

  std::string log;
  for (int i = 0; i < 7; ++i)
    log += std::string(plain[i]) + " 09:045:01:02:03.456 U:00AB                            N:0001 B:000000000" +
           std::to_string(i) + "\r\n";
  log += "NH 09:045:01:02:03.456 U:00AB E:0012 D:1            F:00 N:0003 B:0000000009\r\n";
  log += "DT 09:045:01:02:03.456 U:00AB E:0012 D:2 C:5 S:0000 F:15 N:0004 B:0000000010\r\n";
  log += "SH 09:045:01:02:03.456 U:00AB                            N:0005 B:0000000011\r\n";
  EXPECT_EQ(e2e::log_body(e2e::read_file(tmp / "in.lml")), log);
}

// A DT packet that starts later (+) or earlier (-) than its channel's previous packet ended is marked
// on the next summary line, as its own is written before the check. Channels show as 1-9, A-Z, then '?'.
TEST(Spine, ContinuityMarkAndChannelCharacterInTheRunLog) {
  TempDir tmp;
  std::vector<Packet> pkts = {pktkit::make_event_packet("EH", 0x00AB, {}, 1, 7, 0, false, {})};
  unsigned seq = 2;
  for (int ms : {0, 100, 250, 300, 400})  // 10 samples at 100/s: each packet lasts 100 ms
    pkts.push_back(pktkit::make_dt16(0x00AB, {9, 32, 0, 0, 0, ms}, seq++, 7, 0, 0, std::vector<std::int32_t>(10, 1)));
  for (std::uint8_t channel_byte : {0x09, 0x34, 0x35}) {
    pkts.push_back(pktkit::make_dt16(0x00AB, {}, seq++, 7, 0, 0, {1}));
    pkts.back()[19] = channel_byte;
  }
  e2e::write_packets(tmp / "in.pkt", pkts);
  ASSERT_EQ(run({"in.pkt", "-VN", "-S0"}, tmp.str()).status, 0);
  EXPECT_EQ(e2e::log_body(e2e::read_file(tmp / "in.lml")),
            "EH 09:032:00:00:00.000 U:00AB E:0007 D:1            F:00 N:0001 B:0000000000\r\n"
            "DT 09:032:00:00:00.000 U:00AB E:0007 D:1 C:1 S:0010 F:16 N:0002 B:0000000001\r\n"
            "DT 09:032:00:00:00.100 U:00AB E:0007 D:1 C:1 S:0010 F:16 N:0003 B:0000000002\r\n"
            "DT 09:032:00:00:00.250 U:00AB E:0007 D:1 C:1 S:0010 F:16 N:0004 B:0000000003\r\n"
            "DT+09:032:00:00:00.300 U:00AB E:0007 D:1 C:1 S:0010 F:16 N:0005 B:0000000004\r\n"
            "DT-09:032:00:00:00.400 U:00AB E:0007 D:1 C:1 S:0010 F:16 N:0006 B:0000000005\r\n"
            "DT 09:032:00:00:00.000 U:00AB E:0007 D:1 C:A S:0001 F:16 N:0007 B:0000000006\r\n"
            "DT 09:032:00:00:00.000 U:00AB E:0007 D:1 C:Z S:0001 F:16 N:0008 B:0000000007\r\n"
            "DT 09:032:00:00:00.000 U:00AB E:0007 D:1 C:? S:0001 F:16 N:0009 B:0000000008\r\n");
}

// The unit log: each packet's summary line, then its dump; an NH before any EH is dumped in full.
TEST(Spine, UnitLogDumpsFollowTheirSummaryLines) {
  TempDir tmp;
  std::filesystem::create_directory(tmp / "out");
  const Packet nh = pktkit::make_event_packet("NH", 0x00AB, {}, 1, 12, 0, false, {});
  e2e::write_packets(tmp / "in.pkt", {nh, text_packet("DR", 0x00AB, 2), text_packet("FD", 0x00AB, 3)});
  ASSERT_EQ(run({"in.pkt", "out"}, tmp.str()).status, 0);
  EXPECT_EQ(e2e::log_body(e2e::read_file(tmp / "out/ID00AB.lml")),
            "NH 09:032:00:00:00.000 U:00AB E:0012 D:1            F:00 N:0001 B:0000000000\r\n"
            "   Trigger time           : 2009032000000500\r\n"
            "   First sample time      : 2009032000000000\r\n"
            "   Detrigger time         : 2009032000009000\r\n"
            "   Last sample time       : 2009032000010000\r\n"
            "   Sample rate            :  100\r\n"
            "   Trigger type           : EVT \r\n"
            "   Stream Name            : STREAM ONE              \r\n"
            "\r\n"
            "DR 09:045:01:02:03.456 U:00AB                            N:0002 B:0000000001\r\n"
            "     Prev Dir Location (Block)    : 0000000000\r\n"
            "     Next Dir Location (Block)    : 0000000000\r\n"
            "     Block/Sector Flag            : 0\r\n"
            "     No of dir entries            : 0\r\n"
            "     Last Entry Number            : 0\r\n"
            "\r\n"
            "FD 09:045:01:02:03.456 U:00AB                            N:0003 B:0000000002\r\n");
}

TEST(Spine, MegabyteCounterWhenNotVerbose) {
  TempDir tmp;
  std::vector<Packet> pkts(1025, text_packet("FD", 1, 1));
  e2e::write_packets(tmp / "in.pkt", pkts);
  const auto r = run({"in.pkt", "-VN", "-LN"}, tmp.str());
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(after_echo(r.out), "\r\n\nMeg:     0\rMeg:    0\rMeg:    1\r\n");
  EXPECT_FALSE(e2e::exists(tmp / "in.lml"));
}

// On a terminal the progress line is drawn at most about 20 times a second: some packets' lines are
// never drawn, those drawn come in order, and the last packet's line always stands at the end, whether
// it is a DT packet's (made into text only when drawn) or another's after DT packets.
TEST(Spine, OnATerminalProgressIsThinnedAndEndsWithTheLastPacket) {
  constexpr unsigned kPackets = 3000;
  const Packet fd = text_packet("FD", 1, 1);
  const Packet eh = pktkit::make_event_packet("EH", 0x00AB, {}, 1, 7, 0, false, {});
  const Packet dt = pktkit::make_dt16(0x00AB, {}, 2, 7, 1, 2, {1});
  const std::string fd_line = "       FD         -          -          -          -   ";
  const std::string dt_line = "       DT      00AB       0007         02         03   ";
  struct Case {
    const char* name;
    std::vector<const Packet*> stream;  // packet i + 1 is stream[min(i, size - 2)], the last is stream.back()
  } cases[] = {{"plain lines", {&fd, &fd}},
               {"DT lines", {&eh, &dt, &dt}},
               {"DT lines, then a plain one", {&eh, &dt, &fd}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TempDir tmp;
    std::vector<Packet> pkts;
    for (unsigned i = 0; i + 1 < kPackets; ++i)
      pkts.push_back(*c.stream[std::min<std::size_t>(i, c.stream.size() - 2)]);
    pkts.push_back(*c.stream.back());
    e2e::write_packets(tmp / "in.pkt", pkts);
    e2e::Child child = e2e::start({"in.pkt", "-LN", "-S0"}, tmp.str(), nullptr, {}, true);
    const auto r = e2e::finish(child);
    EXPECT_EQ(r.status, 0);
    const std::string rest = after_echo(r.out);
    ASSERT_TRUE(rest.starts_with(kVerboseStart + "\r") && rest.ends_with("\r\n")) << rest.substr(0, 200);
    std::istringstream drawn(rest.substr(kVerboseStart.size() + 1, rest.size() - kVerboseStart.size() - 3));
    unsigned lines = 0, last = 0;
    for (std::string line; std::getline(drawn, line, '\r'); ++lines) {
      const auto n = static_cast<unsigned>(std::stoul(line));
      char blk[8];
      std::snprintf(blk, sizeof blk, "%05u", n);
      const Packet* p = n == kPackets ? c.stream.back() : c.stream[std::min<std::size_t>(n - 1, c.stream.size() - 2)];
      if (p != &eh) {
        EXPECT_EQ(line, blk + (p == &fd ? fd_line : dt_line));
      }
      EXPECT_GT(n, last);
      last = n;
    }
    EXPECT_EQ(last, kPackets);  // the last packet's line stands at the end
    EXPECT_LT(lines, kPackets / 2);  // would take 75 s of drawing at 20 lines a second
  }
}

}  // namespace

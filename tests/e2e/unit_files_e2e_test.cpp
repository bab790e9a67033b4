// Per-unit log and statistics files as a run leaves them, and the event bookkeeping they show.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "log/log_packets.hpp"
#include "output/out_file.hpp"
#include "support/e2e.hpp"

namespace {

using e2e::TempDir;
using pktkit::Packet;

const pktkit::PktTime kT{9, 45, 1, 2, 3, 456};
const char kTimeText[] = "09:045:01:02:03.456";

struct Switches {
  bool log = true, dt = false, qcc = false;
};

class UnitFiles : public testing::Test {
 protected:
  UnitFiles() : dir(std::filesystem::canonical(tmp.path()).string()), ini(dir + "/none.ini") {}

  std::vector<std::string> args(const Switches& s) const {
    std::vector<std::string> a{"in.pkt"};
    if (!s.log) a.push_back("-LN");
    if (s.dt) a.push_back("-DY");
    if (s.qcc) a.push_back("-QY");
    return a;
  }

  int run(const std::vector<Packet>& packets, const Switches& s = {}) const {
    e2e::write_packets(dir + "/in.pkt", packets);
    return e2e::run(args(s), dir, ini.c_str()).status;
  }

  std::string file(const std::string& name) const { return e2e::mask_time(e2e::read_file(dir + "/" + name)); }

  // The settings block that heads every log and statistics file of a run.
  std::string header(const Switches& s) const {
    const auto yn = [](bool b) { return std::string(b ? "YES" : "NO"); };
    std::string cmd = LM_ASC_BIN;
    for (const auto& a : args(s)) cmd += " " + a;
    return "LM_ASC - Version mrg02   \r\nSystem time: <time>\r\n\r\n     Input File : in.pkt"
           "\r\n       INI File : " + ini + " - not found; using defaults"
           "\r\n  Original Path : " + dir +
           "\r\n    Output Path : " + dir + "/"
           "\r\n    Path Option : 0\r\n    Name Option : Auto\r\n         Gather : NO\r\n      trace Hdr : YES"
           "\r\n     Log enable : " + yn(s.log) +
           "\r\n    Log DT Blks : " + yn(s.dt) +
           "\r\n       Log File : " + dir + "/in.lml"
           "\r\n     QCC enable : " + yn(s.qcc) +
           "\r\n       QCC File : " + dir + "/in.qcc"
           "\r\n    Sample Rate : 100.0000\r\n    Max Samples : 4294967295\r\n   Skip Samples : 0"
           "\r\n   Command Line : " + cmd.substr(0, 131) + "\r\n\r\n";
  }

  TempDir tmp;
  std::string dir;
  std::string ini;  // LMU points at a file that does not exist: defaults, no warnings
};

std::string hex4(unsigned v) {
  char b[8];
  std::snprintf(b, sizeof b, "%04X", v);
  return b;
}
std::string dec(unsigned v, int width) {
  char b[16];
  std::snprintf(b, sizeof b, "%0*u", width, v);
  return b;
}

// An SH packet with a short text, and what the unit log shows of it.
Packet sh(std::uint16_t unit, unsigned seq, const std::string& text) {
  Packet p = pktkit::make_header("SH", unit, kT, seq);
  pktkit::put_bcd(p, 12, 2, static_cast<unsigned>(24 + text.size()));
  pktkit::put_text(p, 24, text);
  return p;
}
std::string sh_logged(std::uint16_t unit, unsigned seq, unsigned blk, const std::string& text) {
  return std::string("SH ") + kTimeText + " U:" + hex4(unit) + std::string(27, ' ') + " N:" + dec(seq, 4) +
         " B:" + dec(blk, 10) + "\r\n     " + text + "\r\n\r\n";
}

Packet event_pkt(const char* type, std::uint16_t unit, unsigned seq, unsigned event, bool channels_17_32) {
  return pktkit::make_event_packet(type, unit, kT, seq, event, 0, channels_17_32, pktkit::EventInfo{});
}
// Summary line, body dump and blank line of an EH or ET packet.
std::string event_logged(const Packet& p, unsigned seq, unsigned event, unsigned blk) {
  TempDir t;
  lm::OutFile f;
  EXPECT_TRUE(f.open((t / "dump").c_str(), "wb"));
  lm::log_eh_et(f, p.data());
  f.close();
  return std::string(reinterpret_cast<const char*>(p.data()), 2) + " " + kTimeText + " U:" +
         hex4(static_cast<unsigned>(p[4] << 8 | p[5])) + " E:" + dec(event, 4) + " D:1" + std::string(11, ' ') +
         " F:00 N:" + dec(seq, 4) + " B:" + dec(blk, 10) + "\r\n" + e2e::read_file(t / "dump") + "\r\n";
}

Packet dt(std::uint16_t unit, unsigned seq, unsigned event, unsigned channel) {
  return pktkit::make_dt16(unit, kT, seq, event, 0, channel, {1, 2, 3});
}
std::string dt_logged(std::uint16_t unit, unsigned seq, unsigned event, unsigned channel, unsigned blk) {
  return std::string("DT ") + kTimeText + " U:" + hex4(unit) + " E:" + dec(event, 4) + " D:1 C:" +
         std::to_string(channel + 1) + " S:0003 F:16 N:" + dec(seq, 4) + " B:" + dec(blk, 10) + "\r\n";
}

std::string out_of_sequence(unsigned seq, unsigned event) {
  return "\nBlock sequence # " + std::to_string(seq) + " is out of sequence in Event #" + std::to_string(event) + "\n\n";
}

TEST_F(UnitFiles, InterleavedUnitsKeepOneHeaderPerRun) {
  ASSERT_EQ(run({sh(0xA1, 1, "a one"), sh(0xB2, 2, "b one"), sh(0xA1, 3, "a two"), sh(0xB2, 4, "b two")}), 0);
  EXPECT_EQ(e2e::list_files(dir), (std::vector<std::string>{"ID00A1.lml", "ID00B2.lml", "in.lml", "in.pkt"}));
  const std::string h = header({});
  EXPECT_EQ(file("ID00A1.lml"), h + sh_logged(0xA1, 1, 0, "a one") + sh_logged(0xA1, 3, 2, "a two"));
  EXPECT_EQ(file("ID00B2.lml"), h + sh_logged(0xB2, 2, 1, "b one") + sh_logged(0xB2, 4, 3, "b two"));
}

TEST_F(UnitFiles, UnitZeroIsFiledUnderFFFF) {
  ASSERT_EQ(run({sh(0x0000, 1, "zero"), sh(0xFFFF, 2, "ffff"), sh(0x0000, 3, "zero again")}), 0);
  EXPECT_EQ(e2e::list_files(dir), (std::vector<std::string>{"IDFFFF.lml", "in.lml", "in.pkt"}));
  EXPECT_EQ(file("IDFFFF.lml"), header({}) + sh_logged(0x0000, 1, 0, "zero") + sh_logged(0xFFFF, 2, 1, "ffff") +
                                    sh_logged(0x0000, 3, 2, "zero again"));
}

TEST_F(UnitFiles, ASecondRunAppendsWithItsOwnHeader) {
  const std::string h = header({});
  ASSERT_EQ(run({sh(0x0001, 1, "first A"), sh(0x0002, 2, "first B")}), 0);
  ASSERT_EQ(run({sh(0x0002, 7, "second B"), sh(0x0003, 8, "second C")}), 0);
  EXPECT_EQ(file("ID0001.lml"), h + sh_logged(1, 1, 0, "first A"));
  EXPECT_EQ(file("ID0002.lml"), h + sh_logged(2, 2, 1, "first B") + h + sh_logged(2, 7, 0, "second B"));
  EXPECT_EQ(file("ID0003.lml"), h + sh_logged(3, 8, 1, "second C"));
  // The run log starts afresh.
  EXPECT_EQ(file("in.lml").substr(0, h.size()), h);
  EXPECT_EQ(file("in.lml").find("first"), std::string::npos);
}

TEST_F(UnitFiles, OutOfSequenceLineInTheUnitLog) {
  constexpr std::uint16_t u = 0x0A0B;
  const Packet eh = event_pkt("EH", u, 1, 7, false);
  const Packet et = event_pkt("ET", u, 5, 7, false);
  const std::vector<Packet> packets{eh, dt(u, 2, 7, 0), dt(u, 4, 7, 1), et};
  const struct {
    Switches s;
    std::string want;
  } cases[] = {
      {{}, event_logged(eh, 1, 7, 0) + out_of_sequence(4, 7) + event_logged(et, 5, 7, 3)},
      // The sequence line comes before the packet's own line.
      {{.log = true, .dt = true},
       event_logged(eh, 1, 7, 0) + dt_logged(u, 2, 7, 0, 1) + out_of_sequence(4, 7) + dt_logged(u, 4, 7, 1, 2) +
           event_logged(et, 5, 7, 3)},
  };
  for (const auto& c : cases) {
    std::filesystem::remove(dir + "/ID0A0B.lml");
    ASSERT_EQ(run(packets, c.s), 0);
    EXPECT_EQ(file("ID0A0B.lml"), header(c.s) + c.want);
  }
}

TEST_F(UnitFiles, TrailerOfChannels17To32LeavesTheEventOpen) {
  constexpr std::uint16_t u = 0x0C0D;
  const Packet eh = event_pkt("EH", u, 1, 7, false);
  const struct {
    bool high;         // the trailer describes channels 17-32
    std::string seq_line;  // a later packet numbered 4 is out of sequence only in the still open event
  } cases[] = {{true, out_of_sequence(4, 7)}, {false, ""}};
  for (const auto& c : cases) {
    std::filesystem::remove(dir + "/ID0C0D.lml");
    const Packet et = event_pkt("ET", u, 2, 7, c.high);
    const Packet later = sh(u, 9, "later");
    ASSERT_EQ(run({eh, et, dt(u, 4, 7, 0), later}), 0);
    EXPECT_EQ(file("ID0C0D.lml"), header({}) + event_logged(eh, 1, 7, 0) + event_logged(et, 2, 7, 1) + c.seq_line +
                                      sh_logged(u, 9, 3, "later"))
        << "high " << c.high;
  }
}

TEST_F(UnitFiles, EventLeftOpenIsCompletedAtTheEndOfInput) {
  constexpr std::uint16_t u = 0x0E0F;
  ASSERT_EQ(run({event_pkt("EH", u, 1, 7, false), event_pkt("ET", u, 2, 7, true), dt(u, 3, 7, 0)}), 0);
  std::vector<std::string> traces;
  for (const auto& f : e2e::list_files(dir))
    if (f.size() > 4 && f.substr(f.size() - 4) == ".atr") traces.push_back(f);
  ASSERT_EQ(traces.size(), 1u);
  // The final header, rewritten when the event is removed, counts the three samples written.
  EXPECT_NE(e2e::read_file(dir + "/" + traces[0]).find("\r\n$Samples=3         \r\n"), std::string::npos);
}

TEST_F(UnitFiles, StatisticsFilesPerUnit) {
  const std::vector<Packet> packets{sh(0xA1, 1, "a"), sh(0xB2, 2, "b"), sh(0xA1, 3, "a")};
  const struct {
    Switches s;
    std::vector<std::string> files;
  } cases[] = {
      {{.log = false, .dt = false, .qcc = true}, {"ID00A1.qcc", "ID00B2.qcc", "in.pkt", "in.qcc"}},
      {{.log = true, .dt = false, .qcc = true},
       {"ID00A1.lml", "ID00A1.qcc", "ID00B2.lml", "ID00B2.qcc", "in.lml", "in.pkt", "in.qcc"}},
  };
  for (const auto& c : cases) {
    for (const auto& f : e2e::list_files(dir)) std::filesystem::remove(dir + "/" + f);
    // Two runs: each adds its header once, however often the unit comes back.
    ASSERT_EQ(run(packets, c.s), 0);
    ASSERT_EQ(run(packets, c.s), 0);
    EXPECT_EQ(e2e::list_files(dir), c.files);
    const std::string q = header(c.s) + "\r\n\r\n";
    EXPECT_EQ(file("ID00A1.qcc"), q + q);
    EXPECT_EQ(file("ID00B2.qcc"), q + q);
  }
}

}  // namespace

// Per-unit log and statistics files as whole runs leave them.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "log/log_packets.hpp"
#include "output/out_file.hpp"
#include "support/e2e.hpp"

namespace {

using pktkit::Packet;

const pktkit::PktTime kT{9, 45, 1, 2, 3, 456};

class UnitFiles : public testing::Test {
 protected:
  UnitFiles() : dir(std::filesystem::canonical(tmp.path()).string()) {}
  // Runs the packets; returns the header of the run log, which every unit file of the run repeats.
  std::string run(const std::vector<Packet>& packets, std::vector<std::string> args) const {
    e2e::write_packets(dir + "/in.pkt", packets);
    args.insert(args.begin(), "in.pkt");
    EXPECT_EQ(e2e::run(args, dir, (dir + "/none.ini").c_str()).status, 0);
    return e2e::log_head(file("in.lml"));
  }
  std::string file(const std::string& name) const { return e2e::mask_time(e2e::read_file(dir + "/" + name)); }
  e2e::TempDir tmp;
  std::string dir;
};

// An SH packet with a short text; its summary line; what the unit log shows of a one-line text.
Packet sh(std::uint16_t unit, unsigned seq, const std::string& text) {
  Packet p = pktkit::make_header("SH", unit, kT, seq);
  pktkit::put_bcd(p, 12, 2, static_cast<unsigned>(24 + text.size()));
  pktkit::put_text(p, 24, text);
  return p;
}
std::string sh_head(unsigned unit, unsigned seq, unsigned blk) {
  char b[96];
  std::snprintf(b, sizeof b, "SH 09:045:01:02:03.456 U:%04X%27s N:%04u B:%010u\r\n", unit, "", seq, blk);
  return b;
}
std::string sh_logged(unsigned unit, unsigned seq, unsigned blk, const std::string& text) {
  return sh_head(unit, seq, blk) + "     " + text + "\r\n\r\n";
}

// Summary line, body dump and blank line of an EH or ET packet of event 7.
std::string event_logged(const Packet& p, unsigned seq, unsigned blk) {
  e2e::TempDir t;
  lm::OutFile f;
  EXPECT_TRUE(f.open((t / "dump").c_str(), "wb"));
  lm::log_eh_et(f, p.data());
  f.close();
  char b[96];
  std::snprintf(b, sizeof b, "%.2s 09:045:01:02:03.456 U:%04X E:0007 D:1%11s F:00 N:%04u B:%010u\r\n",
                reinterpret_cast<const char*>(p.data()), unsigned(p[4] << 8 | p[5]), "", seq, blk);
  return b + e2e::read_file(t / "dump") + "\r\n";
}

TEST_F(UnitFiles, InterleavedUnitsKeepOneHeaderPerRunAndALaterRunAppends) {
  const std::string h = run({sh(0xA1, 1, "a one"), sh(0xB2, 2, "b one"), sh(0xA1, 3, "a two"), sh(0xB2, 4, "b two")},
                            {"-QY"});
  EXPECT_EQ(file("ID00A1.lml"), h + sh_logged(0xA1, 1, 0, "a one") + sh_logged(0xA1, 3, 2, "a two"));
  EXPECT_EQ(file("ID00A1.qcc"), h + "\r\n\r\n");
  EXPECT_EQ(run({sh(0xB2, 7, "b three"), sh(0xC3, 8, "c one")}, {"-QY"}), h);
  EXPECT_EQ(e2e::list_files(dir), (std::vector<std::string>{"ID00A1.lml", "ID00A1.qcc", "ID00B2.lml", "ID00B2.qcc",
                                                            "ID00C3.lml", "ID00C3.qcc", "in.lml", "in.pkt", "in.qcc"}));
  EXPECT_EQ(file("ID00B2.lml"), h + sh_logged(0xB2, 2, 1, "b one") + sh_logged(0xB2, 4, 3, "b two") + h +
                                    sh_logged(0xB2, 7, 0, "b three"));
  EXPECT_EQ(file("ID00B2.qcc"), h + "\r\n\r\n" + h + "\r\n\r\n");
  EXPECT_EQ(file("ID00C3.lml"), h + sh_logged(0xC3, 8, 1, "c one"));
  EXPECT_EQ(file("in.lml").find("a one"), std::string::npos) << "the run log starts afresh";
}

// Unit 0 shares the file of unit FFFF. Each line of an SH text is indented; a text not ending in a line
// feed gets one, with a carriage return unless the byte before its last is one.
TEST_F(UnitFiles, UnitZeroIsFiledUnderFFFFAndShTextLinesAreIndented) {
  const std::string h = run({sh(0x0000, 1, "GPS OK\r\n"), sh(0xFFFF, 2, "A\nB"), sh(0x0000, 3, "X\r"), sh(0x0000, 4, "X\rY")}, {});
  EXPECT_EQ(e2e::list_files(dir), (std::vector<std::string>{"IDFFFF.lml", "in.lml", "in.pkt"}));
  EXPECT_EQ(file("IDFFFF.lml"), h + sh_head(0x0000, 1, 0) + "     GPS OK\r\n     \r\n" + sh_head(0xFFFF, 2, 1) +
                                    "     A\n     B\r\n\r\n" + sh_head(0x0000, 3, 2) + "     X\r\r\n\r\n" +
                                    sh_head(0x0000, 4, 3) + "     X\rY\n\r\n");
}

TEST_F(UnitFiles, TrailerOfChannels17To32LeavesTheEventOpen) {
  constexpr std::uint16_t u = 0x0C0D;
  for (bool high : {true, false}) {
    std::filesystem::remove(dir + "/ID0C0D.lml");
    const Packet eh = pktkit::make_event_packet("EH", u, kT, 1, 7, 0, false, {});
    const Packet et = pktkit::make_event_packet("ET", u, kT, 2, 7, 0, high, {});
    const std::string h = run({eh, et, pktkit::make_dt16(u, kT, 4, 7, 0, 0, {1, 2, 3}), sh(u, 9, "later")}, {"-DY"});
    // Packet 4 is out of sequence only in the still open event; the line comes before the packet's own.
    const std::string seq_line = high ? "\nBlock sequence # 4 is out of sequence in Event #7\n\n" : "";
    EXPECT_EQ(file("ID0C0D.lml"),
              h + event_logged(eh, 1, 0) + event_logged(et, 2, 1) + seq_line +
                  "DT 09:045:01:02:03.456 U:0C0D E:0007 D:1 C:1 S:0003 F:16 N:0004 B:0000000002\r\n" +
                  sh_logged(u, 9, 3, "later"))
        << "high " << high;
  }
}

}  // namespace

// Per-unit log and statistics files as whole runs leave them.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "support/e2e.hpp"

namespace {

using pktkit::Packet;

const pktkit::PktTime kT{9, 45, 1, 2, 3, 456};

// An SH packet with a short text (and byte 23, just before it), and its summary line in the unit log.
Packet sh(std::uint16_t unit, unsigned seq, const std::string& text, std::uint8_t byte23 = 0) {
  Packet p = pktkit::make_header("SH", unit, kT, seq);
  p[23] = byte23;
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

// An EH or ET packet of event 7 of unit 0C0D whose byte count asks for the short dump (31 bytes from 24,
// here a text), and what the unit log shows of it.
Packet event(const char* type, unsigned seq, bool channels_17_32) {
  Packet p = pktkit::make_event_packet(type, 0x0C0D, kT, seq, 7, 0, channels_17_32, {});
  pktkit::put_bcd(p, 12, 2, 57);
  pktkit::put_text(p, 24, std::string(type) + " short form of event seven   ");
  return p;
}
std::string event_logged(const char* type, unsigned seq, unsigned blk) {
  char b[96];
  std::snprintf(b, sizeof b, "%s 09:045:01:02:03.456 U:0C0D E:0007 D:1%11s F:00 N:%04u B:%010u\r\n", type, "", seq,
                blk);
  return b + std::string(type) + " short form of event seven   \r\n\r\n";
}

// Interleaved units keep one header per run, a later run appends. Unit 0 shares the file of unit FFFF.
// Each line of an SH text is indented; a text not ending in a line feed gets one, with a carriage return
// unless the byte before its last is one; those two bytes are the byte count's last two, even when they lie
// before the text (packets 9 and 10). A trailer of channels 17-32 leaves its event open, so packet 4
// is out of sequence; a trailer of channels 1-16 closes it, so packet 7 starts a new event.
TEST(UnitFiles, PerRunHeadersAppendedRunsAndWhatEachUnitLogShows) {
  e2e::TempDir tmp;
  const std::string dir = std::filesystem::canonical(tmp.path()).string();
  auto file = [&](const std::string& name) { return e2e::mask_time(e2e::read_file(dir + "/" + name)); };
  // Runs the packets; returns the header of the run log, which every unit file of the run repeats.
  auto run = [&](const std::vector<Packet>& packets) {
    e2e::write_packets(dir + "/in.pkt", packets);
    EXPECT_EQ(e2e::run({"in.pkt", "-QY", "-DY"}, dir, (dir + "/none.ini").c_str()).status, 0);
    return e2e::log_head(file("in.lml"));
  };
  const std::string h =
      run({sh(0xA1, 1, "a one"), sh(0xB2, 2, "b one"), sh(0xA1, 3, "a two"), sh(0xB2, 4, "b two"),
           sh(0x0000, 5, "GPS OK\r\n"), sh(0xFFFF, 6, "A\nB"), sh(0x0000, 7, "X\r"), sh(0x0000, 8, "X\rY"),
           event("EH", 1, false), event("ET", 2, true), pktkit::make_dt16(0x0C0D, kT, 4, 7, 0, 0, {1, 2, 3}),
           event("ET", 5, false), pktkit::make_dt16(0x0C0D, kT, 7, 7, 0, 0, {1, 2, 3}), sh(0x0000, 9, "X", '\r'),
           sh(0x0000, 10, "", '\n')});
  EXPECT_EQ(file("ID00A1.lml"), h + sh_logged(0xA1, 1, 0, "a one") + sh_logged(0xA1, 3, 2, "a two"));
  EXPECT_EQ(file("IDFFFF.lml"), h + sh_head(0x0000, 5, 4) + "     GPS OK\r\n     \r\n" + sh_head(0xFFFF, 6, 5) +
                                    "     A\n     B\r\n\r\n" + sh_head(0x0000, 7, 6) + "     X\r\r\n\r\n" +
                                    sh_head(0x0000, 8, 7) + "     X\rY\n\r\n" + sh_head(0x0000, 9, 13) +
                                    "     X\n\r\n" + sh_head(0x0000, 10, 14) + "     \r\n");
  EXPECT_EQ(file("ID0C0D.lml"), h + event_logged("EH", 1, 8) + event_logged("ET", 2, 9) +
                                    "\nBlock sequence # 4 is out of sequence in Event #7\n\n" +
                                    "DT 09:045:01:02:03.456 U:0C0D E:0007 D:1 C:1 S:0003 F:16 N:0004 B:0000000010\r\n" +
                                    event_logged("ET", 5, 11) +
                                    "DT 09:045:01:02:03.456 U:0C0D E:0007 D:1 C:1 S:0003 F:16 N:0007 B:0000000012\r\n");
  EXPECT_EQ(run({sh(0xB2, 7, "b three")}), h);
  EXPECT_EQ(e2e::list_files(dir),
            (std::vector<std::string>{"2009045010203456_00C0D_1_1.atr", "2009045010203456_STN1__1_1.atr", "ID00A1.lml",
                                      "ID00A1.qcc", "ID00B2.lml", "ID00B2.qcc", "ID0C0D.lml", "ID0C0D.qcc",
                                      "IDFFFF.lml", "IDFFFF.qcc", "in.lml", "in.pkt", "in.qcc"}));
  EXPECT_EQ(file("ID00B2.lml"), h + sh_logged(0xB2, 2, 1, "b one") + sh_logged(0xB2, 4, 3, "b two") + h +
                                    sh_logged(0xB2, 7, 0, "b three"));
  EXPECT_EQ(file("ID00B2.qcc"), h + "\r\n\r\n" + h + "\r\n\r\n");
  EXPECT_EQ(file("in.lml").find("a one"), std::string::npos) << "the run log starts afresh";
}

}  // namespace

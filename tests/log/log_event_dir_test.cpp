// The readable dumps of event (EH, ET, NH, NT) and directory (DR) packets: a ruler packet each with
// its whole dump written out, then the edge cases.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "log/log_fixture.hpp"
#include "log/log_packets.hpp"

namespace {

using namespace log_test;
using pktkit::Packet;

const char kChannelInfo[] = "   Channel Info :  BitWght   TruWght    Gain  R  FSV  SEED  SFSV   SVPU   U\r\n";

std::string times() {
  return evt({{"Trigger time", 96, 16}, {"First sample time", 112, 16}, {"Detrigger time", 128, 16},
              {"Last sample time", 144, 16}});
}

// The ruler is in the telemetry form (bytes 1016-1021 are not blank), its flags byte is not 0 (channels
// from 17), its time source is neither 1 nor 2, and none of its gain codes (416-431: i..x) is a hex digit.
// The plain form blanks the telemetry mark and has the least byte count that gets the full dump (57
// gets the short form, seen in the unit-file runs), channels from 1, gain codes 3, C, b and z, and
// its fifth channel not installed.
TEST(EventDump, EhRulerTelemetryAndPlain) {
  const auto want = [](bool telemetry, const char* source, int first, const std::string (&gains)[4], int skipped) {
    std::string s = evt({{"Station Name", R(60, 4) + R(59, 1)}, {"Station Comment", 862, 40}, {"Position", 918, 26},
                         {"Stream Name", 64, 24}}) +
                    (telemetry ? evt({{"Sample rate", 88, 8}}) : evt({{"Sample rate", 88, 4}, {"Trigger type", 92, 4}})) +
                    evt({{"Time Source", source + ("  Days since PLL " + R(58, 1))}}) + times() +
                    evt({{"Filter list", 902, 16}, {"Installed channels", 860, 2}}) + kChannelInfo;
    for (int i = 0; i < 16; ++i)
      if (i != skipped)
        s += (first + i < 10 ? "    Chn  " : "    Chn ") + std::to_string(first + i) + "(" + R(656 + 3 * i, 3) + ") : " +
             R(160 + 8 * i, 8) + "  " + R(288 + 8 * i, 8) + "  " + (i < 4 ? gains[i] : "     0") + "  " + R(432 + i, 1) +
             "    " + R(448 + i, 1) + "  " + R(464 + 4 * i, 4) + "     " + R(528 + i, 1) + "  " + R(544 + 6 * i, 6) +
             "  " + R(640 + i, 1) + "\r\n";
    if (telemetry)
      s += evt({{"VRN-DAU Version", 960, 8}, {"VRN-DAU Xmitter Freq", 968, 8}, {"VRN-DAU Xmitter Id", 976, 8},
                {"VRN-DAU Xmitter Site", 984, 8}, {"VRN-DAU Sensor", 992, 8}, {"VRN-DAU Receiver Site", 1000, 8},
                {"VRN-DAU Propagatn Delay", 1012, 4}, {"VRN-DAU Data Chn", 1016, 2},
                {"VRN-DAU Data Chn Positn", 1018, 4}, {"VRN-DAU Overscale Count", 954, 6}});
    return s;
  };
  const std::string none[4] = {"     0", "     0", "     0", "     0"};
  EXPECT_EQ(dump(lm::log_eh_et, ruler()), want(true, "Unknown ", 17, none, -1));
  Packet internal = ruler();
  internal[57] = '1';
  EXPECT_EQ(dump(lm::log_eh_et, internal), want(true, "Internal", 17, none, -1));
  Packet plain = ruler();
  pktkit::put_text(plain, 1016, "      ");
  pktkit::put_bcd(plain, 12, 2, 58);
  plain[22] = 0;
  plain[57] = '2';
  pktkit::put_text(plain, 416, "3Cbz");
  plain[160 + 8 * 4] = ' ';
  EXPECT_EQ(dump(lm::log_eh_et, plain), want(false, "GPS     ", 1, {"    32", "    63", "    16", "     0"}, 4));
}

TEST(EventDump, NhRuler) {
  EXPECT_EQ(dump(lm::log_nh_nt, ruler()),
            times() + evt({{"Sample rate", 88, 8}, {"Stream Name", 64, 24}, {"VRN-CRU Version", 960, 8},
                           {"VRN-CRU Xmitter Freq", 968, 8}, {"VRN-CRU Xmitter Id", 976, 8},
                           {"VRN-CRU Xmitter Site", 984, 8}, {"VRN-CRU (Xmitter Freq)", 992, 8},
                           {"VRN-CRU Site", 1000, 8}, {"VRN-CRU Propagatn Delay", 1012, 4},
                           {"VRN-CRU Data Chn", 1016, 2}, {"VRN-CRU Data Chn Positn", 1018, 4}}));
}

std::string dir_head(const char* prev, const char* next, int flag, int n, const char* last) {
  return top({{"Prev Dir Location (Block)", prev}, {"Next Dir Location (Block)", next},
              {"Block/Sector Flag", std::to_string(flag)}, {"No of dir entries", std::to_string(n)},
              {"Last Entry Number", last}});
}

// A directory entry's lines, given its values in order; the values left out are empty.
std::string entry(const std::array<std::string, 20>& v) {
  return "\r\n" + sub({{"Entry Number", v[0]}, {"Entry Status", v[1]}, {"Entry Format", v[2]}, {"Entry Length", v[3]},
                        {"Unit ID", v[4]}, {"Event Number", v[5]}, {"Event Header Flag", v[6]},
                        {"Event Trailer Flag", v[7]}, {"Stream Number", v[8]}, {"Data Stream Name", v[9]},
                        {"Trigger Type", v[10]}, {"Data Format", v[11]}, {"Data Location (Block)", v[12]},
                        {"Data Length (Blocks)", v[13]}, {"Disk Errors (Blocks)", v[14]}, {"Trigger time", v[15]},
                        {"First sample time", v[16]}, {"Detrigger time", v[17]}, {"Last sample time", v[18]},
                        {"Entry time", v[19]}});
}
// An entry of zero bytes except its length, data location and first sample time.
std::string zero_entry(const char* length, const char* location = "0000000000", const char* first = "") {
  return entry({"0", "0", "0", length, "0000", "0", "0", "0", "0", "        ", "    ", "00", location, "0000000000",
                "0", "", first});
}

Packet dir(unsigned entries) {
  Packet p = pktkit::make_header("DR", 1, {}, 1);
  pktkit::put_be16(p, 26, static_cast<std::uint16_t>(entries));
  return p;
}

// The ruler counts sectors (byte 25 is 'P') and claims 20818 entries; the first entry's length of
// 25444 sends the next one past the end, so one entry is shown. Then zero pages counting blocks,
// whose entries are walked by their lengths up to the packet's end.
TEST(DirDump, RulerAndWalk) {
  Packet to_end = dir(9);  // the second entry's 72 bytes end at byte 1023; its length 0 ends the walk
  pktkit::put_be32(to_end, 16, 200);
  pktkit::put_be32(to_end, 20, 301);
  pktkit::put_be16(to_end, 32 + 6, 920);
  pktkit::put_be32(to_end, 32 + 60, 5);  // from the page's location
  pktkit::put_be32(to_end, 32 + 32, 0x3200003D);  // first sample time: 2009, second 61 of the year
  pktkit::put_be16(to_end, 32 + 50, 7);
  Packet past_end = dir(9);  // one byte further: no room for the second
  pktkit::put_be16(past_end, 32 + 6, 921);

  const struct { const char* name; Packet p; std::string want; } cases[] = {
      {"ruler", ruler(),
       dir_head("0597959845", "0631645863", 80, 20818, "1398035798") +
           entry({"1465407834", "97", "98", "25444", "25958", "26472", "105", "106", "27500", "mnopqrst", "uvwx", "5354",
                  "2029681661", "1499095394", "1667523942", "2044:287:20:42:25.18762", "2009:039:20:08:21.19276",
                  "2011:042:21:14:33.19790", "2016:245:10:36:52.20304", "2018:248:11:43:04.20818"})},
      {"to the end", to_end,
       dir_head("0000000200", "0000000301", 0, 9, "0") + zero_entry("920", "0000000205", "2009:001:00:01:01.007") +
           zero_entry("0", "0000000200")},
      {"past the end", past_end, dir_head("0000000000", "0000000000", 0, 9, "0") + zero_entry("921")},
  };
  for (const auto& c : cases) EXPECT_EQ(dump(lm::log_dr, c.p), c.want) << c.name;
}

}  // namespace

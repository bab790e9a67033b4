// The readable dumps of event (EH, ET, NH, NT) and directory (DR) packets: a ruler packet each with
// its whole dump written out, then the edge cases.
#include <gtest/gtest.h>

#include <string>

#include "log/log_fixture.hpp"
#include "log/log_packets.hpp"

namespace {

using namespace log_test;
using pktkit::Packet;

const char kChannelInfo[] = "   Channel Info :  BitWght   TruWght    Gain  R  FSV  SEED  SFSV   SVPU   U\r\n";

std::string times() {
  return F("   Trigger time           : ", 96, 16) + F("   First sample time      : ", 112, 16) +
         F("   Detrigger time         : ", 128, 16) + F("   Last sample time       : ", 144, 16);
}

// The ruler is in the telemetry form (bytes 1016-1021 are not blank), its flags byte is not 0 (channels
// from 17), its time source is neither 1 nor 2, and none of its gain codes (416-431: i..x) is a hex digit.
TEST(EventDump, EhRuler) {
  std::string want = "   Station Name           : " + R(60, 4) + R(59, 1) + "\r\n" +
                     F("   Station Comment        : ", 862, 40) + F("   Position               : ", 918, 26) +
                     F("   Stream Name            : ", 64, 24) + F("   Sample rate            : ", 88, 8) +
                     "   Time Source            : Unknown   Days since PLL " + R(58, 1) + "\r\n" + times() +
                     F("   Filter list            : ", 902, 16) + F("   Installed channels     : ", 860, 2) + kChannelInfo;
  for (int i = 0; i < 16; ++i)
    want += "    Chn " + std::to_string(17 + i) + "(" + R(656 + 3 * i, 3) + ") : " + R(160 + 8 * i, 8) + "  " +
            R(288 + 8 * i, 8) + "       0  " + R(432 + i, 1) + "    " + R(448 + i, 1) + "  " + R(464 + 4 * i, 4) +
            "     " + R(528 + i, 1) + "  " + R(544 + 6 * i, 6) + "  " + R(640 + i, 1) + "\r\n";
  want += F("   VRN-DAU Version        : ", 960, 8) + F("   VRN-DAU Xmitter Freq   : ", 968, 8) +
          F("   VRN-DAU Xmitter Id     : ", 976, 8) + F("   VRN-DAU Xmitter Site   : ", 984, 8) +
          F("   VRN-DAU Sensor         : ", 992, 8) + F("   VRN-DAU Receiver Site  : ", 1000, 8) +
          F("   VRN-DAU Propagatn Delay: ", 1012, 4) + F("   VRN-DAU Data Chn       : ", 1016, 2) +
          F("   VRN-DAU Data Chn Positn: ", 1018, 4) + F("   VRN-DAU Overscale Count: ", 954, 6);
  EXPECT_EQ(dump(lm::log_eh_et, ruler()), want);
}

TEST(EventDump, NhRuler) {
  const std::string want =
      times() + F("   Sample rate            : ", 88, 8) + F("   Stream Name            : ", 64, 24) +
      F("   VRN-CRU Version        : ", 960, 8) + F("   VRN-CRU Xmitter Freq   : ", 968, 8) +
      F("   VRN-CRU Xmitter Id     : ", 976, 8) + F("   VRN-CRU Xmitter Site   : ", 984, 8) +
      F("   VRN-CRU (Xmitter Freq) : ", 992, 8) + F("   VRN-CRU Site           : ", 1000, 8) +
      F("   VRN-CRU Propagatn Delay: ", 1012, 4) + F("   VRN-CRU Data Chn       : ", 1016, 2) +
      F("   VRN-CRU Data Chn Positn: ", 1018, 4);
  EXPECT_EQ(dump(lm::log_nh_nt, ruler()), want);
}

Packet event(const char* type, unsigned byte_count) {
  pktkit::EventInfo info;
  info.bit_wght = {"0.000001", " skipped", "2.5E-06", "1"};
  info.tru_wght = {"1.1", "2.2", "3.3", "4.4"};
  info.gain = "3Gbz";
  info.seed = {"BHZ", "", "", "LHN"};
  info.units = "V";
  Packet p = pktkit::make_event_packet(type, 7, {}, 1, 1, 0, false, info);
  pktkit::put_bcd(p, 12, 2, byte_count);
  return p;
}

const char kEventTimes[] =
    "   Trigger time           : 2009032000000500\r\n   First sample time      : 2009032000000000\r\n"
    "   Detrigger time         : 2009032000009000\r\n   Last sample time       : 2009032000010000\r\n";

// Byte count 58, the least that gets the full dump (57 gets the short form, seen in the unit-file runs):
// no telemetry; gain codes 3 (32), G (none, the channel skipped), b (15.85) and z (not a hex digit).
TEST(EventDump, FullDumpWithoutTelemetry) {
  EXPECT_EQ(dump(lm::log_eh_et, event("ET", 58)),
            "   Station Name           : STN1 \r\n"
            "   Station Comment        : " + std::string(40, ' ') + "\r\n"
            "   Position               : " + std::string(26, ' ') + "\r\n"
            "   Stream Name            : STREAM ONE              \r\n"
            "   Sample rate            :  100\r\n"
            "   Trigger type           : EVT \r\n"
            "   Time Source            : GPS       Days since PLL 0\r\n" + kEventTimes +
            "   Filter list            :                 \r\n"
            "   Installed channels     : 03\r\n" + kChannelInfo +
            "    Chn  1(   ) : 0.000001  1.1           32          BHZ                 V\r\n"
            "    Chn  3(   ) : 2.5E-06   3.3           16" + std::string(31, ' ') + "\r\n"
            "    Chn  4(   ) : 1         4.4            0          LHN" + std::string(18, ' ') + "\r\n");
}

// A directory entry of zero bytes except its length.
std::string zero_entry(unsigned length, const char* location = "0000000000") {
  return "\r\n      Entry Number                : 0\r\n      Entry Status                : 0\r\n"
         "      Entry Format                : 0\r\n      Entry Length                : " + std::to_string(length) +
         "\r\n      Unit ID                     : 0000\r\n      Event Number                : 0\r\n"
         "      Event Header Flag           : 0\r\n      Event Trailer Flag          : 0\r\n"
         "      Stream Number               : 0\r\n      Data Stream Name            :         \r\n"
         "      Trigger Type                :     \r\n      Data Format                 : 00\r\n"
         "      Data Location (Block)       : " + location + "\r\n"
         "      Data Length (Blocks)        : 0000000000\r\n      Disk Errors (Blocks)        : 0\r\n"
         "      Trigger time                : \r\n      First sample time           : \r\n"
         "      Detrigger time              : \r\n      Last sample time            : \r\n"
         "      Entry time                  : \r\n";
}

std::string dir_head(const char* prev, const char* next, unsigned flag, unsigned n, unsigned long last) {
  return std::string("     Prev Dir Location (Block)    : ") + prev + "\r\n     Next Dir Location (Block)    : " + next +
         "\r\n     Block/Sector Flag            : " + std::to_string(flag) +
         "\r\n     No of dir entries            : " + std::to_string(n) +
         "\r\n     Last Entry Number            : " + std::to_string(last) + "\r\n";
}

// The ruler counts sectors (byte 25 is 'P') and claims 20818 entries; the first entry's length of
// 25444 sends the next one past the end, so one entry is shown.
TEST(DirDump, DrRuler) {
  const std::string want = dir_head("0597959845", "0631645863", 80, 20818, 1398035798) +
                           "\r\n      Entry Number                : 1465407834\r\n"
                           "      Entry Status                : 97\r\n"
                           "      Entry Format                : 98\r\n"
                           "      Entry Length                : 25444\r\n"
                           "      Unit ID                     : 25958\r\n"
                           "      Event Number                : 26472\r\n"
                           "      Event Header Flag           : 105\r\n"
                           "      Event Trailer Flag          : 106\r\n"
                           "      Stream Number               : 27500\r\n"
                           "      Data Stream Name            : mnopqrst\r\n"
                           "      Trigger Type                : uvwx\r\n"
                           "      Data Format                 : 5354\r\n"
                           "      Data Location (Block)       : 2029681661\r\n"
                           "      Data Length (Blocks)        : 1499095394\r\n"
                           "      Disk Errors (Blocks)        : 1667523942\r\n"
                           "      Trigger time                : 2044:287:20:42:25.18762\r\n"
                           "      First sample time           : 2009:039:20:08:21.19276\r\n"
                           "      Detrigger time              : 2011:042:21:14:33.19790\r\n"
                           "      Last sample time            : 2016:245:10:36:52.20304\r\n"
                           "      Entry time                  : 2018:248:11:43:04.20818\r\n";
  EXPECT_EQ(dump(lm::log_dr, ruler()), want);
}

Packet dir(unsigned entries) {
  Packet p = pktkit::make_header("DR", 1, {}, 1);
  pktkit::put_be16(p, 26, static_cast<std::uint16_t>(entries));
  return p;
}

TEST(DirDump, EdgeCases) {
  // Sector flag: locations halved, the entry's location added to the halved base; one time set.
  Packet sectors = dir(1);
  sectors[25] = 1;
  pktkit::put_be32(sectors, 16, 200);
  pktkit::put_be32(sectors, 20, 301);
  pktkit::put_be16(sectors, 32 + 6, 72);
  pktkit::put_be32(sectors, 32 + 60, 5);
  pktkit::put_be32(sectors, 32 + 32, 0x3200003D);  // first sample time: 2009, second 61 of the year
  pktkit::put_be16(sectors, 32 + 50, 7);
  std::string timed = zero_entry(72, "0000000105");
  timed.replace(timed.find("First sample time           : ") + 30, 0, "2009:001:00:01:01.007");

  Packet zero_length = dir(3);  // a length of 0 shows the entry once and ends the walk
  Packet past_end = dir(9);     // 32 + 950 leaves no room for a second entry's 72 bytes
  pktkit::put_be16(past_end, 32 + 6, 950);
  Packet last_fit = dir(9);     // entries of 136 bytes: the seventh ends at byte 1023
  for (int k = 0; k < 7; ++k) pktkit::put_be16(last_fit, 32 + 136 * k + 6, 136);
  std::string seven;
  for (int k = 0; k < 7; ++k) seven += zero_entry(136);

  const struct { const char* name; Packet p; std::string want; } cases[] = {
      {"sector flag and a packed time", sectors, dir_head("0000000100", "0000000150", 1, 1, 0) + timed},
      {"length 0", zero_length, dir_head("0000000000", "0000000000", 0, 3, 0) + zero_entry(0)},
      {"length past the end", past_end, dir_head("0000000000", "0000000000", 0, 9, 0) + zero_entry(950)},
      {"the last entry that fits", last_fit, dir_head("0000000000", "0000000000", 0, 9, 0) + seven},
  };
  for (const auto& c : cases) EXPECT_EQ(dump(lm::log_dr, c.p), c.want) << c.name;
}

}  // namespace

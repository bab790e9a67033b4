// The readable packet dumps: one ruler packet per type with its whole dump written out (every
// offset, width and label at once), then the edge cases of each type.
#include <gtest/gtest.h>

#include <string>

#include "log/log_fixture.hpp"
#include "log/log_packets.hpp"

namespace {

using namespace log_test;
using pktkit::Packet;

std::string sc_channel(int b) {
  return "\r\n" + F("      Channel Number              : ", b + 0, 2) + F("      Channel Name                : ", b + 2, 10) +
         F("      Azimuth                     : ", b + 12, 10) + F("      Inclination                 : ", b + 22, 10) +
         F("      X Coordinate                : ", b + 32, 10) + F("      Y Coordinate                : ", b + 42, 10) +
         F("      Z Coordinate                : ", b + 52, 10) + F("      Unit type for X, Y          : ", b + 62, 4) +
         F("      Unit type for Z             : ", b + 66, 4) + F("      Preamp Gain                 : ", b + 70, 4) +
         F("      Sensor Model                : ", b + 74, 12) + F("      Sensor Serial Number        : ", b + 86, 12) +
         F("      Comments                    : ", b + 98, 40) + F("      Bit-count Voltage           : ", b + 138, 8);
}

// The ruler, then the ruler with its experiment name cut by a NUL and all channel numbers but the
// second blank: blank channels are left out.
TEST(PacketDump, ScRulerAndBlankChannels) {
  const auto want = [](const std::string& name, const std::string& channels) {
    return F("     Experiment Number            : ", 16, 2) + L("     Experiment Name              : ", name) +
           F("     Experiment Comment           : ", 42, 40) + F("     Station Number               : ", 82, 4) +
           F("     Station Name                 : ", 86, 24) + F("     Station Comment              : ", 110, 40) +
           F("     DAS Model                    : ", 150, 12) + F("     DAS Serial Number            : ", 162, 12) +
           F("     Experiment Start             : ", 174, 14) + F("     Time Clock Type              : ", 188, 4) +
           F("     Time Clock S/N               : ", 192, 10) + channels + "\r\n";
  };
  EXPECT_EQ(dump(lm::log_sc, ruler()),
            want(R(18, 24), sc_channel(202) + sc_channel(348) + sc_channel(494) + sc_channel(640) + sc_channel(786)));
  Packet p = ruler();
  pktkit::put_text(p, 18, std::string("EXP\0HIDDEN", 10));
  for (int b : {202, 494, 640, 786}) pktkit::put_text(p, b, "  ");
  EXPECT_EQ(dump(lm::log_sc, p), want("EXP", sc_channel(348)));
}

TEST(PacketDump, AdRulerAndBlanksInTheChannelList) {
  const auto ad = [](const std::string& channels, const std::string& rest) {
    return L("     Channels Included            : ", channels) + rest + "\r\n";
  };
  const std::string rest = F("     Sample Interval              : ", 34, 8) +
                           F("     Data Format                  : ", 42, 2) + F("     Record Length                : ", 44, 8);
  EXPECT_EQ(dump(lm::log_ad, ruler()), ad(R(18, 16), rest));
  Packet p = ruler();
  pktkit::put_text(p, 18, "1 3             ");
  EXPECT_EQ(dump(lm::log_ad, p), ad("1_3_____________", rest));
}

std::string om_wake(int b) {
  return "\r\n" + F("      Sequence number             : ", b, 2) + F("      Start time                  : ", b + 2, 12) +
         F("      Power Duration              :     ", b + 14, 6) + F("      Repeat Interval             :     ", b + 20, 6) +
         F("      Number of Intervals         : ", b + 26, 2);
}

TEST(PacketDump, OmRuler) {
  Packet p = ruler();
  p[24] = 'Y';  // auto-dump on ET block enabled
  p[34] = 'O';  // SCSI device power always on
  std::string want = F("     Power State                  : ", 16, 2) + F("     Recording Mode               : ", 18, 2) +
                     F("     Primary Disk ID              : ", 20, 1) + F("     Secondary Disk ID            : ", 21, 1) +
                     F("     Tape ID                      : ", 22, 1) + F("     Auto-dump Device             : ", 23, 1) +
                     "     Auto-dump on ET Block        : Enabled\r\n"
                     "     Auto-dump in Serial Mode     : Disabled\r\n"
                     "     Auto-dump Threshold          : " + R(26, 2) + "%\r\n"
                     "     SCSI Powerdown Delay         : " + R(28, 4) + " seconds\r\n"
                     "     SCSI Disk Wrap               : Disabled\r\n"
                     "     SCSI Directory               : Disabled\r\n"
                     "     SCSI Device Power            : Always On\r\n"
                     "     SCSI Termintor Power         : Toggle\r\n"
                     "     Wake Sequence Information\r\n";
  for (int b = 48; b <= 496; b += 64) want += om_wake(b);
  EXPECT_EQ(dump(lm::log_om, p), want + "\r\n");
}

// The fields of a DS block up to its trigger type, which the tests set.
std::string ds_head(int b, const char* type) {
  return F("     Data Stream No               : ", b, 2) + F("     Data Stream Name             : ", b + 2, 24) +
         F("     Channels Included            : ", b + 26, 16) + F("     Sample Rate                  : ", b + 42, 4) +
         F("     Data Format                  : ", b + 46, 2) + L("     Trigger Type                 : ", type);
}

std::string ds_evt(int t) {
  return F("      Trigger Channels            : ", t, 16) + F("      Minimum Channels            : ", t + 16, 2) +
         F("      Trigger Window              : ", t + 18, 8) + F("      Pretrigger Length           : ", t + 26, 8) +
         F("      Posttrigger Length          : ", t + 34, 8) + F("      Record Length               : ", t + 42, 8) +
         F("      STA Length                  : ", t + 58, 8) + F("      LTA Length                  : ", t + 66, 8) +
         F("      Mean Removal                : ", t + 74, 8) + F("      Trigger Ratio               : ", t + 82, 8) +
         F("      Detrigger Ratio             : ", t + 90, 8) + F("      LTA hold                    : ", t + 98, 4);
}

// Five blocks with five trigger types; the fifth's TML block starts at 1004 and is cut at the packet's end.
TEST(PacketDump, DsRuler) {
  Packet p = ruler();
  const char* types[] = {"EVT ", "tim ", " LEV", "CRS ", "TML "};
  for (int k = 0; k < 5; ++k) pktkit::put_text(p, 16 + 230 * k + 64, types[k]);
  std::string tml;
  const char* n[] = {"01", "02", "03", "04", "05", "06", "07", "08", "09", "10", "11"};
  for (int i = 0; i < 11; ++i) tml += std::string("   Start Time ") + n[i] + "               : " + R(1004 + 14 * i, 14) + "\r\n";
  const std::string want =
      ds_head(16, "EVT ") + ds_evt(84) + "\r\n" +
      ds_head(246, "tim ") + F("      Start Time                  : ", 314, 14) +
      F("      Repeat Interval             : ", 328, 8) + F("      Number of Intervals         : ", 336, 4) +
      F("      Record Length               : ", 348, 8) + "\r\n" +
      ds_head(476, " LEV") + F("      Trigger Level               : ", 544, 8) +
      F("      Pretrigger Length           : ", 552, 8) + F("      Record Length               : ", 560, 8) + "\r\n" +
      ds_head(706, "CRS ") + F("      Trigger Stream Number       : ", 774, 2) +
      F("      Pretrigger Length           : ", 776, 8) + F("      Record Length               : ", 784, 8) + "\r\n" +
      ds_head(936, "TML ") + tml + "      Record Length               : \r\n\r\n";
  EXPECT_EQ(dump(lm::log_ds, p), want);
}

TEST(PacketDump, DsTriggerTypeCaseAndBlanks) {
  const struct { const char* type; bool evt; } cases[] = {
      {" EVT", true}, {"evt ", true}, {"Evt ", false}, {"  EV", false}, {"XYZ ", false}};
  for (const auto& c : cases) {
    Packet p = ruler();
    for (int b = 246; b < 1024; b += 230) p[b] = ' ';  // only the first block
    pktkit::put_text(p, 80, c.type);
    EXPECT_EQ(dump(lm::log_ds, p), ds_head(16, c.type) + (c.evt ? ds_evt(84) : "") + "\r\n") << c.type;
  }
}

TEST(PacketDump, CdRulerAndStep) {
  const std::string head = F("     Start Time                   : ", 16, 14) + F("     Repeat Interval              : ", 30, 8) +
                           F("     No of Intervals              : ", 38, 4) + F("     Length of Intervals          : ", 42, 8);
  const std::string step = F("      Step Period                 : ", 54, 8) + F("      Step Size                   : ", 62, 8) +
                           F("      Step Amplitude              : ", 70, 8) + F("      Step Output                 : ", 78, 4);
  const struct { const char* field; bool on; } cases[] = {{"ON", true}, {"on", true}, {"OFF ", false}, {"On", false}};
  for (const auto& c : cases) {
    Packet p = ruler();
    pktkit::put_text(p, 50, c.field);
    const int len = static_cast<int>(std::string(c.field).size());
    const std::string field = c.field + R(50 + len, 4 - len);
    EXPECT_EQ(dump(lm::log_cd, p), head + L("     Step                         : ", field) + (c.on ? "\r\n" + step : "") + "\r\n")
        << c.field;
  }
}

}  // namespace

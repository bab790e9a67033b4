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
  return "\r\n" + sub({{"Channel Number", b, 2}, {"Channel Name", b + 2, 10}, {"Azimuth", b + 12, 10},
                        {"Inclination", b + 22, 10}, {"X Coordinate", b + 32, 10}, {"Y Coordinate", b + 42, 10},
                        {"Z Coordinate", b + 52, 10}, {"Unit type for X, Y", b + 62, 4}, {"Unit type for Z", b + 66, 4},
                        {"Preamp Gain", b + 70, 4}, {"Sensor Model", b + 74, 12}, {"Sensor Serial Number", b + 86, 12},
                        {"Comments", b + 98, 40}, {"Bit-count Voltage", b + 138, 8}});
}

// The ruler with its experiment name cut by a NUL and the second channel's number blank: that channel
// is left out; a blank in the AD channel list is shown as "_".
TEST(PacketDump, ScAndAd) {
  Packet p = ruler();
  pktkit::put_text(p, 18, std::string("EXP\0HIDDEN", 10));
  pktkit::put_text(p, 348, "  ");
  EXPECT_EQ(dump(lm::log_sc, p),
            top({{"Experiment Number", 16, 2}, {"Experiment Name", "EXP"}, {"Experiment Comment", 42, 40},
                 {"Station Number", 82, 4}, {"Station Name", 86, 24}, {"Station Comment", 110, 40},
                 {"DAS Model", 150, 12}, {"DAS Serial Number", 162, 12}, {"Experiment Start", 174, 14},
                 {"Time Clock Type", 188, 4}, {"Time Clock S/N", 192, 10}}) +
                sc_channel(202) + sc_channel(494) + sc_channel(640) + sc_channel(786) + "\r\n");
  Packet q = ruler();
  q[19] = ' ';
  EXPECT_EQ(dump(lm::log_ad, q), top({{"Channels Included", R(18, 1) + "_" + R(20, 14)}, {"Sample Interval", 34, 8},
                                      {"Data Format", 42, 2}, {"Record Length", 44, 8}}) + "\r\n");
}

TEST(PacketDump, OmRuler) {
  Packet p = ruler();
  p[24] = 'Y';  // auto-dump on ET block enabled
  p[34] = 'O';  // SCSI device power always on
  std::string want =
      top({{"Power State", 16, 2}, {"Recording Mode", 18, 2}, {"Primary Disk ID", 20, 1}, {"Secondary Disk ID", 21, 1},
           {"Tape ID", 22, 1}, {"Auto-dump Device", 23, 1}, {"Auto-dump on ET Block", "Enabled"},
           {"Auto-dump in Serial Mode", "Disabled"}, {"Auto-dump Threshold", R(26, 2) + "%"},
           {"SCSI Powerdown Delay", R(28, 4) + " seconds"}, {"SCSI Disk Wrap", "Disabled"},
           {"SCSI Directory", "Disabled"}, {"SCSI Device Power", "Always On"}, {"SCSI Termintor Power", "Toggle"}}) +
      "     Wake Sequence Information\r\n";
  for (int b = 48; b <= 496; b += 64)
    want += "\r\n" + sub({{"Sequence number", b, 2}, {"Start time", b + 2, 12}, {"Power Duration", "    " + R(b + 14, 6)},
                          {"Repeat Interval", "    " + R(b + 20, 6)}, {"Number of Intervals", b + 26, 2}});
  EXPECT_EQ(dump(lm::log_om, p), want + "\r\n");
}

// The fields of a DS block up to its trigger type, which the tests set.
std::string ds_head(int b, const char* type) {
  return top({{"Data Stream No", b, 2}, {"Data Stream Name", b + 2, 24}, {"Channels Included", b + 26, 16},
              {"Sample Rate", b + 42, 4}, {"Data Format", b + 46, 2}, {"Trigger Type", type}});
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
      ds_head(16, "EVT ") +
      sub({{"Trigger Channels", 84, 16}, {"Minimum Channels", 100, 2}, {"Trigger Window", 102, 8},
           {"Pretrigger Length", 110, 8}, {"Posttrigger Length", 118, 8}, {"Record Length", 126, 8},
           {"STA Length", 142, 8}, {"LTA Length", 150, 8}, {"Mean Removal", 158, 8}, {"Trigger Ratio", 166, 8},
           {"Detrigger Ratio", 174, 8}, {"LTA hold", 182, 4}}) + "\r\n" +
      ds_head(246, "tim ") +
      sub({{"Start Time", 314, 14}, {"Repeat Interval", 328, 8}, {"Number of Intervals", 336, 4},
           {"Record Length", 348, 8}}) + "\r\n" +
      ds_head(476, " LEV") +
      sub({{"Trigger Level", 544, 8}, {"Pretrigger Length", 552, 8}, {"Record Length", 560, 8}}) + "\r\n" +
      ds_head(706, "CRS ") +
      sub({{"Trigger Stream Number", 774, 2}, {"Pretrigger Length", 776, 8}, {"Record Length", 784, 8}}) + "\r\n" +
      ds_head(936, "TML ") + tml + sub({{"Record Length", ""}}) + "\r\n";
  EXPECT_EQ(dump(lm::log_ds, p), want);
}

// Types with no trigger block, mixed case or unknown. Only the first block is shown.
TEST(PacketDump, DsTypesWithoutTriggerBlock) {
  for (const char* type : {"Evt ", "XYZ "}) {
    Packet p = ruler();
    for (int b = 246; b < 1024; b += 230) p[b] = ' ';
    pktkit::put_text(p, 80, type);
    EXPECT_EQ(dump(lm::log_ds, p), ds_head(16, type) + "\r\n") << type;
  }
}

TEST(PacketDump, CdRulerAndStep) {
  const std::string head = top({{"Start Time", 16, 14}, {"Repeat Interval", 30, 8}, {"No of Intervals", 38, 4},
                                {"Length of Intervals", 42, 8}});
  const std::string step =
      sub({{"Step Period", 54, 8}, {"Step Size", 62, 8}, {"Step Amplitude", 70, 8}, {"Step Output", 78, 4}});
  const struct { const char* field; bool on; } cases[] = {{"ON", true}, {"on", true}, {"On", false}};
  for (const auto& c : cases) {
    Packet p = ruler();
    pktkit::put_text(p, 50, c.field);
    EXPECT_EQ(dump(lm::log_cd, p), head + top({{"Step", c.field + R(52, 2)}}) + (c.on ? "\r\n" + step : "") + "\r\n")
        << c.field;
  }
}

}  // namespace

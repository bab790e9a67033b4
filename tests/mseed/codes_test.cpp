// The SEED code rules: each row a channel's metadata and rate against the code a user would look up by hand.
#include <gtest/gtest.h>

#include "config/tables.hpp"
#include "mseed/codes.hpp"

namespace {

using namespace lm::mseed;

// Catalogue rows by their make and model, so that the table reads as sensors, not row numbers.
std::uint16_t row(const char* make, const char* model) { return lm::Sensor_find(make, model); }

TEST(SeedCodes, ChannelCodeFromMetadataAndRate) {
  struct Case {
    char band, type, axis;
    std::uint16_t sensor;
    double freq;
    std::uint16_t channel;
    double rate;
    const char* want;
  };
  const std::uint16_t fba = row("Kinemetrics", "FBA-23"), l4 = row("Mark", "L-4"), sts2 = row("Strecheisen", "STS-2");
  const std::uint16_t pressure = row("Pressure", ""), unknown = row("", "");
  const Case cases[] = {
      {' ', ' ', 'Z', 0, 0, 0, 100, "HHZ"},         // nothing known: long-period column, type H
      {' ', ' ', 'N', fba, 0, 1, 200, "HNN"},       // accelerometer
      {' ', ' ', 'E', l4, 1.0, 2, 100, "EHE"},      // 1 Hz seismometer: short period
      {' ', ' ', 'Z', l4, 1.0, 0, 40, "SHZ"},
      {' ', ' ', 'Z', sts2, 0.00833, 0, 40, "BHZ"},  // 120 s seismometer: broadband
      {' ', ' ', 'Z', sts2, 0, 0, 1, "LHZ"},
      {' ', ' ', 'Z', unknown, 0, 0, 500, "CHZ"},
      {' ', ' ', 'Z', 0, 0, 0, 1000, "FHZ"},
      {' ', ' ', 'Z', 0, 0, 0, 5, "MHZ"},
      {' ', ' ', 'Z', 0, 0, 0, 0.1, "VHZ"},
      {' ', ' ', 'Z', pressure, 0, 0, 1, "LDZ"},
      {'s', 'h', 'z', fba, 0, 0, 100, "SHZ"},       // given codes win, in upper case
      {' ', 'L', ' ', 0, 0, 4, 100, "HLN"},         // a blank axis takes the channel's default
      {'-', ' ', '?', 0, 0, 5, 100, "HHE"},         // characters no code may hold count as not given
      {' ', ' ', ' ', 0, 0, 165, 100, "HHZ"},       // a damaged channel number still has a default axis
  };
  for (const Case& c : cases) {
    lm::ChnMeta m;
    m.band = c.band;
    m.type = c.type;
    m.axis = c.axis;
    m.sensor_ndx = c.sensor;
    m.freq = c.freq;
    EXPECT_EQ(channel_code(m, c.channel, c.rate), c.want) << c.want << " at " << c.rate;
  }
}

TEST(SeedCodes, StationAndNetwork) {
  struct Case {
    const char* ini;
    const char* header;
    std::uint16_t unit;
    const char* want;
    bool altered;
  };
  const Case cases[] = {
      {"PIER1", "ABCD ", 0x0A2B, "PIER1", false},  // the INI first
      {"", "abcd ", 0x0A2B, "ABCD", false},        // then the event header, in upper case
      {"     ", "     ", 0x0A2B, "0A2B", false},  // then the unit ID
      {"P-1 x", "", 0x0A2B, "P1X", true},          // only letters and digits
      {"--", "XY", 0x0A2B, "XY", false},           // a text with none falls through to the next source
      {"", "", 0xFFFF, "FFFF", false},
  };
  for (const Case& c : cases) {
    bool altered = false;
    EXPECT_EQ(station_code(c.ini, c.header, c.unit, altered), c.want) << c.want;
    EXPECT_EQ(altered, c.altered) << c.want;
  }
  bool altered = false;
  EXPECT_EQ(seed_code("ABCDEFG", 5, altered), "ABCDE");
  EXPECT_TRUE(altered);
  EXPECT_EQ(network_code("nz", "XX"), "NZ");
  EXPECT_EQ(network_code("  ", "XY"), "XY");
}

}  // namespace

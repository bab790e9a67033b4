// What an event header or trailer puts into the event and its unit.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "model/event.hpp"
#include "model/records.hpp"
#include "pktkit/packet_builder.hpp"

namespace {

using namespace lm;
using pktkit::Packet;

Packet eh(const pktkit::EventInfo& info, bool channels_17_32 = false) {
  return pktkit::make_event_packet("EH", 0x0101, {}, 1, 7, 0, channels_17_32, info);
}

struct Fixture {
  UNIT_T unit;
  Evt evt;
  Fixture() { evt.unit = &unit; }
};

TEST(EvtInfo, RateAndTriggerType) {
  const struct {
    const char* what;
    std::function<void(Packet&)> edit;
    float rate;
    const char* trigger;
  } cases[] = {
      {"plain", [](Packet& p) { pktkit::put_text(p, 88, "  40TRG1"); }, 40.0f, "TRG1"},
      {"blank rate", [](Packet& p) { pktkit::put_text(p, 88, "    TRG1"); }, 0.0f, "TRG1"},
      {"fraction", [](Packet& p) { pktkit::put_text(p, 88, "12.5EXT "); }, 12.5f, "EXT "},
      {"NUL in trigger", [](Packet& p) { pktkit::put_text(p, 88, std::string(" 100AB\0D", 8)); }, 100.0f, "AB"},
      // Any character in 1016-1021 makes the telemetry form: 8 rate characters, no trigger type.
      {"telemetry", [](Packet& p) { pktkit::put_text(p, 88, "  200.25"); pktkit::put_text(p, 1016, "01    "); },
       200.25f, "MIM "},
      {"telemetry mark at 1021", [](Packet& p) { pktkit::put_text(p, 88, "   40TRG"); p[1021] = '7'; }, 40.0f, "MIM "},
      {"not telemetry", [](Packet& p) { pktkit::put_text(p, 88, "   40TRG"); }, 4.0f, "0TRG"},
  };
  for (const auto& c : cases) {
    Packet p = eh({});
    c.edit(p);
    Fixture f;
    Evt_info(&f.evt, p.data());
    EXPECT_FLOAT_EQ(f.evt.rate, c.rate) << c.what;
    EXPECT_STREQ(f.evt.trg_type, c.trigger) << c.what;
  }
}

TEST(EvtInfo, TimesAreCopiedUpToANul) {
  pktkit::EventInfo info;
  info.first_time = "2009032000000123";
  info.last_time = "2009032000059999";
  Fixture f;
  Evt_info(&f.evt, eh(info).data());
  EXPECT_STREQ(f.evt.smp_time_1st, "2009032000000123");
  EXPECT_STREQ(f.evt.last, "2009032000059999");

  Packet p = eh(info);
  p[112 + 7] = '\0';
  Evt_info(&f.evt, p.data());
  EXPECT_STREQ(f.evt.smp_time_1st, "2009032");
}

TEST(EvtInfo, ChannelColumnsGoToTheFlaggedBlockOnly) {
  pktkit::EventInfo low;
  low.bit_wght = {"1.000E-6", "2.000E-6"};
  low.tru_wght = {"1.100E-6"};
  low.gain = "12";
  low.res = "34";
  low.fsv = "56";
  low.seed = {"HHZ ", "HHN "};
  low.sfsv = "78";
  low.svpu = {"  2.00", "  4.00"};
  low.units = "9A";
  pktkit::EventInfo high = low;
  high.seed = {"BHZ ", "BHE "};
  high.gain = "F0";

  Fixture f;
  Evt_info(&f.evt, eh(low).data());
  const Packet hp = eh(high, true);
  Evt_info(&f.evt, hp.data());

  EXPECT_EQ(chn_entry(f.evt, chn_col::kSEED, 0), "HHZ ");
  EXPECT_EQ(chn_entry(f.evt, chn_col::kSEED, 1), "HHN ");
  EXPECT_EQ(chn_entry(f.evt, chn_col::kGain, 0), "1");
  EXPECT_EQ(chn_entry(f.evt, chn_col::kSEED, 16), "BHZ ");
  EXPECT_EQ(chn_entry(f.evt, chn_col::kSEED, 17), "BHE ");
  EXPECT_EQ(chn_entry(f.evt, chn_col::kGain, 16), "F");
  EXPECT_EQ(chn_entry(f.evt, chn_col::kSEED, 2), "    ");
  // Every column of block 1 holds the packet's whole column; the spare byte stays a terminator.
  for (const ChnColumn& c : chn_col::kAll) {
    const std::string want(reinterpret_cast<const char*>(hp.data()) + c.pkt_off, 16u * c.width);
    EXPECT_EQ(std::string(column_ptr(f.evt.chn_info[1], c)), want) << "column at " << c.pkt_off;
  }
}

TEST(EvtInfo, StationNameAndClockQuality) {
  const struct {
    const char* station;
    char ext;
    char clock;
    const char* want_station;  // after a first packet named "OLD1" with extension 'x'
    int want_qual;
  } cases[] = {
      {"STN1", 'A', '?', "STN1A", 10},
      {"AB  ", ' ', ' ', "AB   ", -1},
      {" XYZ", 'B', '7', "OLD1x", 7},  // blank first character: the name is kept
      {"    ", 'C', '0', "OLD1x", 0},
      {"Q123", 'D', 'x', "Q123D", -1},   // not a digit
      {"Q123", 'D', '\0', "Q123D", -1},
  };
  for (const auto& c : cases) {
    Fixture f;
    EXPECT_STREQ(f.evt.stn_name, "     ");
    pktkit::EventInfo first;
    first.station = "OLD1";
    first.station_ext = 'x';
    first.clock = '5';
    Evt_info(&f.evt, eh(first).data());
    EXPECT_EQ(f.evt.time_qual, 5);
    pktkit::EventInfo info;
    info.station = c.station;
    info.station_ext = c.ext;
    info.clock = c.clock;
    Evt_info(&f.evt, eh(info).data());
    EXPECT_STREQ(f.evt.stn_name, c.want_station) << c.station;
    EXPECT_EQ(f.evt.time_qual, c.want_qual) << c.station;
  }
}

TEST(EvtInfo, PositionIntoTheUnit) {
  const struct {
    std::string position;  // 26 characters at 918; empty: blank
    double lat, lon, alt;  // the unit held 1, 2, 3 before
  } cases[] = {
      {"", 1, 2, 3},
      {std::string("\0", 1) + "N4530.000W12215.000   123", 1, 2, 3},  // NUL at 918: no position
      {"PN4530.000W12215.000   123", 45.5, -122.25, 123},
      {"PN4530.000E12215.000   -12", 45.5, 122.25, -12},
      {"S 4530.000E01230.000001000", -45.5, 12.5, 1000},  // southern marker in the first character
      {"PS0006.000W00000.600     0", -0.1, -0.01, 0},     // or in the second
      {"P 45xx.000W122        12.7", 45.0, -122.0, 12},   // unreadable minutes count 0; whole metres
  };
  for (const auto& c : cases) {
    pktkit::EventInfo info;
    info.position = c.position;
    Fixture f;
    f.unit.lat = 1;
    f.unit.lon = 2;
    f.unit.alt = 3;
    Evt_info(&f.evt, eh(info).data());
    EXPECT_NEAR(f.unit.lat, c.lat, 1e-5) << c.position;
    EXPECT_NEAR(f.unit.lon, c.lon, 1e-5) << c.position;
    EXPECT_DOUBLE_EQ(f.unit.alt, c.alt) << c.position;
  }
}

}  // namespace

// What an event header or trailer puts into the event and its unit.
#include <gtest/gtest.h>

#include <string>

#include "model/event.hpp"
#include "model/records.hpp"
#include "pktkit/packet_builder.hpp"

namespace {

using namespace lm;

// An event of a unit that held position 1, 2, 3; each call reads a header with the texts at their offsets.
struct Read {
  UNIT_T unit{};
  Evt evt{};
  Read() { unit.lat = 1, unit.lon = 2, unit.alt = 3, evt.unit = &unit; }
  Read& operator()(std::initializer_list<std::pair<std::size_t, std::string>> texts) {
    pktkit::Packet p = pktkit::make_event_packet("EH", 0x0101, {}, 1, 7, 0, false, {});
    for (const auto& [at, text] : texts) pktkit::put_text(p, at, text);
    Evt_info(&evt, p.data());
    return *this;
  }
};

TEST(EvtInfo, RateAndTriggerTelemetryOrNot) {
  // Rate and trigger type at 88, telemetry marks at 1016.
  const struct { std::string at88, at1016; float rate; const char* trigger; } cases[] = {
      {"12.5EXT ", "      ", 12.5f, "EXT "},
      {std::string(" 100AB\0D", 8), "      ", 100.0f, "AB"},  // a NUL ends the trigger type
      {"   40TRG", "      ", 4.0f, "0TRG"},                     // not telemetry: 4 rate characters
      // Any character in 1016-1021 makes the telemetry form: 8 rate characters, no trigger type.
      {"  200.25", "01    ", 200.25f, "MIM "},
      {"   40TRG", "     7", 40.0f, "MIM "},
  };
  for (const auto& c : cases) {
    Read r;
    r({{88, c.at88}, {1016, c.at1016}});
    EXPECT_FLOAT_EQ(r.evt.rate, c.rate) << c.at88;
    EXPECT_STREQ(r.evt.trg_type, c.trigger) << c.at88;
  }
}

TEST(EvtInfo, StationNameAndClockQuality) {
  // Clock, station extension and name at 58, read after a first packet naming "OLD1x" with clock 5.
  const struct { const char* at58; const char* station; int qual; } cases[] = {
      {"?ASTN1", "STN1A", 10},
      {"  AB  ", "AB   ", -1},
      {"0C    ", "OLD1x", 0},   // blank first character: the name is kept
      {"xDQ123", "Q123D", -1},  // not a digit
  };
  for (const auto& c : cases) {
    Read r;
    r({{58, "5xOLD1"}})({{58, c.at58}});
    EXPECT_STREQ(r.evt.stn_name, c.station) << c.at58;
    EXPECT_EQ(r.evt.time_qual, c.qual) << c.at58;
  }
}

TEST(EvtInfo, PositionIntoTheUnit) {
  // 26 characters at 918; the unit held 1, 2, 3 before.
  const struct { std::string position; double lat, lon, alt; } cases[] = {
      {"", 1, 2, 3},
      {std::string("\0", 1) + "N4530.000W12215.000   123", 1, 2, 3},  // NUL at 918: no position
      {"S 4530.000E01230.000001000", -45.5, 12.5, 1000},  // southern marker in the first character
      {"PS0006.000W00000.600   -12", -0.1, -0.01, -12},   // or in the second
      {"P 45xx.000W122        12.7", 45.0, -122.0, 12},   // unreadable minutes count 0; whole metres
  };
  for (const auto& c : cases) {
    Read r;
    r({{918, c.position}});
    EXPECT_NEAR(r.unit.lat, c.lat, 1e-5) << c.position;
    EXPECT_NEAR(r.unit.lon, c.lon, 1e-5) << c.position;
    EXPECT_DOUBLE_EQ(r.unit.alt, c.alt) << c.position;
  }
}

}  // namespace

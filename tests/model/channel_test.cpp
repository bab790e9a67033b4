// Channel set-up in-process: the event header's channel information over the defaults, the sensor
// catalogue lookup.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "config/tables.hpp"
#include "model/channel.hpp"
#include "model/event.hpp"
#include "pktkit/packet_builder.hpp"

namespace {

using namespace lm;

// What Chn_ehet makes of the column texts for `ch`, after an EH packet of channels 1-16 and one of
// 17-32. The columns (bit weight, true bit weight, gain, resolution, FSV, SEED, SFSV, SVPU) go to
// place 1 of the second block (channel 17); the rest of both blocks holds `fill`, except the first
// block's gain at place 1.
std::string ehet(const std::vector<std::string>& cols, std::uint16_t ch = 17, char fill = ' ') {
  const int off[] = {168, 296, 417, 433, 449, 468, 529, 550};
  pktkit::Packet low = pktkit::make_event_packet("EH", 1, {}, 1, 7, 0, false, {});
  pktkit::Packet high = pktkit::make_event_packet("EH", 1, {}, 2, 7, 0, true, {});
  for (pktkit::Packet* p : {&low, &high}) pktkit::put_text(*p, 160, std::string(656 - 160, fill));
  low[417] = '7';
  for (std::size_t i = 0; i < cols.size(); ++i) pktkit::put_text(high, off[i], cols[i]);
  UNIT_T unit;
  Evt e;
  e.unit = &unit;
  Evt_info(&e, low.data());
  Evt_info(&e, high.data());
  CHNLST_T c;  // values as the defaults and the INI file left them
  c.evt = &e;
  c.channel = ch;
  c.bits = 24, c.gain_ndx = 5;
  c.band = 'b', c.type = 't', c.axis = 'a';
  c.sns_fsa = 2.5, c.vpu = 0.75, c.chn_fsa = 1.5;
  Chn_ehet(&c);
  char s[128];
  std::snprintf(s, sizeof s, "%g %d %d %g %g %c%c%c %g", c.tbw, c.gain_ndx, c.bits, c.chn_fsa, c.sns_fsa, c.band,
                c.type, c.axis, c.vpu);
  return s;
}

TEST(ChnEhet, EventHeaderItemsOverrideOnlyWhereTheyHaveAValue) {
  // want: bit weight in volts, gain row, bits, full scales, band/type/axis, VPU
  const struct { std::vector<std::string> cols; const char* want; } cases[] = {
      {{"        ", "1.589 uV", "9", "2", "3", "HNZ ", "4", "1.2500"}, "1.589e-06 9 16 10 20 HNZ 1.25"},
      {{"        ", "2.000 nV", " ", "0", "X", "    ", " ", "      "}, "2e-09 5 24 10 2.5 bta 0.75"},
      {{"9.999 uV", "3.500 mV", "x", "5", " ", " L  ", "1", "2.5   "}, "0.0035 5 24 1.5 3.75 bLa 2.5"},
      {{"        ", "4.500 V ", "?", "4", "1", "  E ", "2", " 3.0  "}, "4.5 15 32 3.75 5 btE 0.75"},
      {{"1.000 uV", "        ", "0", "1", "2", "S   ", "9", "      "}, "1e-06 0 8 5 10 Sta 0.75"},
      {{"        ", "12345mxV"}, "12345 5 24 1.5 2.5 bta 0.75"},  // the prefix counts only at place 6
  };
  for (const auto& c : cases) EXPECT_EQ(ehet(c.cols), c.want) << testing::PrintToString(c.cols);
  // Channels beyond the two blocks (damaged packets) find no values.
  EXPECT_EQ(ehet({}, 165, '1'), "0 5 24 1.5 2.5 bta 0.75");
}

TEST(SensorFind, FirstRowWhoseTextsArePrefixes) {
  const struct { const char *make, *model; std::uint16_t row; } cases[] = {
      {"guralp", "cmg-40t", 31}, {"Lum", "VXA-440/T", 20}, {"Mark Products", "", 41}, {"", "FBA-1", 41},
      {"-------", "-------", 0}};
  for (const auto& c : cases) EXPECT_EQ(Sensor_find(c.make, c.model), c.row) << c.make << "/" << c.model;
}

}  // namespace

// The channel registry and channel creation in-process: continuity sign, open-file limit, the
// event header's channel information, the sensor catalogue.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "chn_world.hpp"

namespace {

using namespace lm;

class ChnFind : public ChnWorld {};

TEST_F(ChnFind, ContinuitySignComparesWithTheExpectedTime) {
  const struct {
    int ms, sign;
  } steps[] = {{0, 0}, {100, 0}, {250, 1}, {300, -1}, {400, 0}};  // 10 samples at 100/s each: 100 ms
  for (const auto& s : steps) {
    G.sign = 99;
    feed({9, 32, 0, 0, 0, s.ms}, 0, std::vector<std::int32_t>(10, 1));
    EXPECT_EQ(G.sign, s.sign) << s.ms;
  }
}

TEST_F(ChnFind, FortyChannelsKeepTheOpenFilesAtTheLimit) {
  for (int round = 0; round < 2; ++round) {
    for (unsigned ch = 0; ch < 40; ++ch) {
      feed({9, 32, 0, 0, round, 0}, ch, {1});
      int open = 0;
      ring_for_each(evt->chn, [&](CHNLST_T* c) { open += c->fp.is_open(); });
      EXPECT_EQ(open, G.N_opn_fls);
      EXPECT_LE(G.N_opn_fls, kOpenFilesMax + 1);
      EXPECT_TRUE(evt->chn->fp.is_open());
    }
  }
  EXPECT_EQ(G.N_opn_fls, kOpenFilesMax + 1);
}

// What Chn_ehet makes of the columns in chn_col::kAll order for channel 17 (second block, place 1).
std::string ehet(const std::vector<std::string>& cols, std::uint16_t ch = 17) {
  Evt e;
  for (std::size_t i = 0; i < cols.size(); ++i) {
    const ChnColumn& col = chn_col::kAll[i];
    std::memcpy(column_ptr(e.chn_info[ch >> 4], col) + (ch & 15) * col.width, cols[i].data(),
                std::min<std::size_t>(cols[i].size(), col.width));
  }
  if (ch >= 32) std::memset(&e.chn_info, '1', sizeof e.chn_info);
  std::memset(column_ptr(e.chn_info[0], chn_col::kGain) + 1, '7', 1);  // the same place of the first block
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
  // Nominal and true bit weight, gain, resolution, FSV, SEED, SFSV, SVPU.
  const struct {
    std::vector<std::string> cols;
    const char* want;  // bit weight in volts, gain row, bits, full scales, band/type/axis, VPU
  } cases[] = {
      {{"        ", "1.589 uV", "9", "2", "3", "HNZ ", "4", "1.2500"}, "1.589e-06 9 16 10 20 HNZ 1.25"},
      {{"        ", "2.000 nV", " ", "0", "X", "    ", " ", "      "}, "2e-09 5 24 10 2.5 bta 0.75"},
      {{"9.999 uV", "3.500 mV", "x", "5", " ", " L  ", "1", "2.5   "}, "0.0035 5 24 1.5 3.75 bLa 2.5"},
      {{"        ", "4.500 V ", "?", "4", "1", "  E ", "2", " 3.0  "}, "4.5 15 32 3.75 5 btE 0.75"},
      {{"1.000 uV", "        ", "0", "1", "2", "S   ", "9", "      "}, "1e-06 0 8 5 10 Sta 0.75"},
      {{"        ", "        ", " ", " ", " ", "    ", " ", "      "}, "0 5 24 1.5 2.5 bta 0.75"},
      {{"        ", "12345mxV"}, "12345 5 24 1.5 2.5 bta 0.75"},  // the prefix counts only at place 6
  };
  for (const auto& c : cases) EXPECT_EQ(ehet(c.cols), c.want) << c.cols[0] << "|" << c.cols[1];
  // Channels beyond the two blocks (damaged packets) find no values.
  EXPECT_EQ(ehet({}, 165), "0 5 24 1.5 2.5 bta 0.75");
}

TEST(SensorFind, FirstRowWhoseTextsArePrefixes) {
  const struct {
    const char *make, *model;
    std::uint16_t row;
  } cases[] = {
      {"guralp", "cmg-40t", 31},          {"Lum", "VXA-440/T/INS-2", 19}, {"Lum", "VXA-440/T", 20},
      {"Mark", "L-4C", 34},               {"Mark Products", "", 41},      {"Kinemetrics Inc.", "FBA-13DH", 2},
      {"kinemetrics", "Episensor ES-T", 9}, {"", "FBA-1", 41},           {"", "", 41},
      {"Pressure gauge", "P9", 37},       {"Optical", "", 1},             {"LUM", "vxb-220/t", 23},
      {"-------", "-------", 0},
  };
  for (const auto& c : cases) {
    CHNLST_T chn;
    std::strcpy(chn.make, c.make);
    std::strcpy(chn.model, c.model);
    EXPECT_EQ(Sensor_find(&chn), c.row) << c.make << "/" << c.model;
  }
}

}  // namespace

// Channel creation: defaults, the event header's channel information, the sensor catalogue.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "chn_world.hpp"
#include "config/tables.hpp"

namespace {

using namespace lm;

// Writes the entry of `channel` in a column of the event's channel information.
void put_entry(Evt& e, const ChnColumn& col, std::uint16_t channel, std::string_view text) {
  char* at = column_ptr(e.chn_info[channel >> 4], col) + (channel & 15) * col.width;
  std::memcpy(at, text.data(), std::min<std::size_t>(text.size(), col.width));
}

class ChnCreate : public chn_test::ChnWorld {};

TEST_F(ChnCreate, EventHeaderItemsOverrideOnlyWhereTheyHaveAValue) {
  const struct {
    const char* tru;
    const char* nominal;
    double tbw;
  } weights[] = {
      {"1.589 uV", "        ", 0.000001589}, {"2.000 nV", "        ", 0.000000002},
      {"3.500 mV", "        ", 0.0035},      {"4.500 V ", "        ", 4.5},
      {"        ", "1.000 uV", 0.000001},    {"        ", "        ", 0.0},
      {"12345mxV", "        ", 12345.0},     // the prefix counts only at place 6
  };
  for (const auto& w : weights) {
    Evt e;
    put_entry(e, chn_col::kTruWght, 3, w.tru);
    put_entry(e, chn_col::kBitWght, 3, w.nominal);
    CHNLST_T c;
    c.evt = &e;
    c.channel = 3;
    Chn_ehet(&c);
    EXPECT_NEAR(c.tbw, w.tbw, w.tbw * 1e-12) << w.tru << "|" << w.nominal;
  }

  const struct {
    char gain, res, fsv, sfsv;
    const char* seed;
    const char* svpu;
    int gain_ndx, bits;
    double chn_fsa, sns_fsa;
    char band, type, axis;
    double vpu;
  } items[] = {
      {'9', '2', '3', '4', "HNZ ", "1.2500", 9, 16, 10.0, 20.0, 'H', 'N', 'Z', 1.25},
      {' ', '0', 'X', ' ', "    ", "      ", 5, 24, 10.0, 2.5, 'b', 't', 'a', 0.75},
      {'x', '5', ' ', '1', " L  ", "2.5   ", 5, 24, 1.5, 3.75, 'b', 'L', 'a', 2.5},
      {'?', '4', '1', '2', "  E ", " 3.0  ", 15, 32, 3.75, 5.0, 'b', 't', 'E', 0.75},
      {'0', '1', '2', '9', "S   ", "      ", 0, 8, 5.0, 10.0, 'S', 't', 'a', 0.75},
  };
  for (const auto& it : items) {
    Evt e;
    const std::uint16_t ch = 17;  // second block, place 1
    put_entry(e, chn_col::kGain, ch, std::string(1, it.gain));
    put_entry(e, chn_col::kR, ch, std::string(1, it.res));
    put_entry(e, chn_col::kFSV, ch, std::string(1, it.fsv));
    put_entry(e, chn_col::kSFSV, ch, std::string(1, it.sfsv));
    put_entry(e, chn_col::kSEED, ch, it.seed);
    put_entry(e, chn_col::kSVPU, ch, it.svpu);
    // The same place of the first block holds other values that must not leak in.
    put_entry(e, chn_col::kGain, 1, "7");
    put_entry(e, chn_col::kSVPU, 1, "9.9999");
    CHNLST_T c;  // values as the INI file would have left them
    c.evt = &e;
    c.channel = ch;
    c.gain_ndx = 5;
    c.bits = 24;
    c.chn_fsa = 1.5;
    c.sns_fsa = 2.5;
    c.band = 'b';
    c.type = 't';
    c.axis = 'a';
    c.vpu = 0.75;
    Chn_ehet(&c);
    EXPECT_EQ(c.gain_ndx, it.gain_ndx) << it.gain;
    EXPECT_EQ(c.bits, it.bits) << it.res;
    EXPECT_DOUBLE_EQ(c.chn_fsa, it.chn_fsa) << it.fsv;
    EXPECT_DOUBLE_EQ(c.sns_fsa, it.sns_fsa) << it.sfsv;
    EXPECT_EQ(std::string({c.band, c.type, c.axis}), std::string({it.band, it.type, it.axis})) << it.seed;
    EXPECT_DOUBLE_EQ(c.vpu, it.vpu) << it.svpu;
  }

  // Channels beyond the two blocks (damaged packets) find no values.
  Evt e;
  std::memset(&e.chn_info, '1', sizeof e.chn_info);
  CHNLST_T c;
  c.evt = &e;
  c.channel = 165;
  c.bits = 24;
  Chn_ehet(&c);
  EXPECT_EQ(c.bits, 24);
  EXPECT_EQ(c.gain_ndx, 0);
  EXPECT_EQ(c.tbw, 0.0);
}

TEST_F(ChnCreate, SensorFindTakesTheFirstRowWhoseTextsArePrefixes) {
  const struct {
    const char* make;
    const char* model;
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
  EXPECT_FLOAT_EQ(Gain_info[12], 63.1f);
  EXPECT_STREQ(Measures[0].name, "???");
  EXPECT_STREQ(Sensor[19].desc, "VXA-440/T/INS");
  EXPECT_DOUBLE_EQ(Sensor[19].vpu, 1.2);
}

TEST_F(ChnCreate, DefaultsFromUnitEventAndSettings) {
  unit.lat = 34.5;
  unit.lon = -118.25;
  unit.alt = 71;
  G.Smp_skip = 5;
  G.Path_option = 1;
  const char axes[] = "ZNEZNEZ";
  for (std::uint16_t ch = 0; ch <= 6; ++ch) {
    std::unique_ptr<CHNLST_T> c(Chn_create(&evt, ch, 42, 2, "2009032000000000"));
    EXPECT_EQ(c->axis, axes[ch]) << ch;
    EXPECT_EQ(c->band, ' ');
    EXPECT_EQ(c->type, ' ');
    EXPECT_EQ(c->bits, 24);
    EXPECT_EQ(c->trash, 5u);
    EXPECT_EQ(c->unit, &unit);
    EXPECT_EQ(c->evt, &evt);
    EXPECT_EQ(c->unit_id, 0x9A3F);
    EXPECT_EQ(c->evt_num, 42);
    EXPECT_EQ(c->stream, 2);
    EXPECT_EQ(c->channel, ch);
    EXPECT_EQ(c->lat, 34.5);
    EXPECT_EQ(c->lon, -118.25);
    EXPECT_EQ(c->alt, 71.0);
    EXPECT_EQ(c->min, 1.797693e+308);
    EXPECT_EQ(c->max, -1.797693e+308);
    EXPECT_EQ(c->cnt, 0u);
    EXPECT_EQ(c->prv, nullptr) << "not linked";
    char want[16];
    std::snprintf(want, sizeof want, "3_%X.atr", ch + 1u);
    EXPECT_EQ(std::string(c->name), dir() + "2009_032/2009032000000000_09A3F_" + want);
  }
  EXPECT_TRUE(std::filesystem::is_directory(dir() + "2009_032"));
}

}  // namespace

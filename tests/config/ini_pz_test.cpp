// The channel keys that carry the sensor's response and orientation: what each line stores.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "config/ini.hpp"
#include "support/e2e.hpp"

namespace {

struct PzCase {
  const char* what;
  std::string lines;  // of channel 1 (Ch2 lines belong to another channel)
  int cnt;            // roots stored
  unsigned poles;     // pole_bits
  double re1, im1;    // the last root stored
  int nz, np;         // NZNP, -1 when not given
  double norm;
  bool overflow, azm, dip;
};

const PzCase kCases[] = {
    {"a zero and a pole, in order", "Ch1Zero=0,0\nCh1Pole=-4.44,4.44 ; rad/s\n", 2, 0b10, -4.44, 4.44, -1, -1, 0, false, false, false},
    {"no imaginary part is a real root", "Ch1Pole= -12.5\n", 1, 0b1, -12.5, 0, -1, -1, 0, false, false, false},
    {"counts and normalisation", "Ch1NZNP=2,3\nCh1Norm=1.5\nCh1Pole=-1e3,2E2\n", 1, 0b1, -1000, 200, 2, 3, 1.5, false, false, false},
    {"another channel's lines stay there", "Ch2Pole=-1,1\nCh2Azm=10\nCh2Norm=3\n", 0, 0, 0, 0, -1, -1, 0, false, false, false},
    {"17 roots overflow; the 16 first stay",
     [] { std::string s; for (int i = 1; i <= 17; ++i) s += "Ch1Pole=-" + std::to_string(i) + ",0\n"; return s; }(),
     16, 0xFFFF, -16, 0, -1, -1, 0, true, false, false},
    {"Azm 0 and Dip 0 are given values", "Ch1Azm=0\nCh1Dip=0\n", 0, 0, 0, 0, -1, -1, 0, false, true, true},
    {"Dip alone", "Ch1Dip=-90\n", 0, 0, 0, 0, -1, -1, 0, false, false, true},
};

TEST(IniPz, ResponseAndOrientationKeys) {
  for (const PzCase& c : kCases) {
    e2e::TempDir tmp;
    std::ofstream(tmp / "lmu.ini") << "[0A2B]\n" << c.lines << "[0A2C]\nCh1Pole=-7,7\n";
    lm::UnitMeta unit;
    lm::ChnMeta m;
    lm::Chn_ini(m, 0, unit, 0x0A2B, (tmp / "lmu.ini").c_str());
    EXPECT_EQ(m.pz_cnt, c.cnt) << c.what;
    EXPECT_EQ(m.pole_bits, c.poles) << c.what;
    if (c.cnt > 0) {
      EXPECT_EQ(m.pz[c.cnt - 1].re, c.re1) << c.what;
      EXPECT_EQ(m.pz[c.cnt - 1].im, c.im1) << c.what;
    }
    EXPECT_EQ(m.nznp_given, c.nz >= 0) << c.what;
    if (c.nz >= 0) {
      EXPECT_EQ(m.nznp_zeros, c.nz) << c.what;
      EXPECT_EQ(m.nznp_poles, c.np) << c.what;
    }
    EXPECT_EQ(m.norm_freq, c.norm) << c.what;
    EXPECT_EQ(m.pz_overflow, c.overflow) << c.what;
    EXPECT_EQ(m.azimuth_given, c.azm) << c.what;
    EXPECT_EQ(m.dip_given, c.dip) << c.what;
  }
}

}  // namespace

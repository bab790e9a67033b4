// The StationXML document read back through libxml2 and checked by the schema: values from a hand-written
// INI against values worked out by hand, hostile texts, and files that cannot be written.
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>
#include <sys/wait.h>

#include <cmath>
#include <complex>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <optional>
#include <vector>
#include <string>

#include "config/ini.hpp"
#include "mseed/stationxml.hpp"
#include "mseed/readback.hpp"
#include "support/e2e.hpp"

namespace {

using lm::mseed::ChannelMeta;
using lm::mseed::StationMeta;
using Cx = std::complex<double>;
constexpr double kPi = std::numbers::pi;
using readback::Doc;
using readback::expect_valid;

ChannelMeta channel(const char* cha, double rate, double tbw, int gain_ndx, std::uint16_t n, const std::string& ini) {
  ChannelMeta c{"", cha, 1234567890123456000, 1234567950123456000, rate, {}, tbw, 0, false};
  c.gain_ndx = static_cast<std::uint8_t>(gain_ndx);
  c.gain_known = gain_ndx >= 0;
  lm::UnitMeta unit;
  lm::Chn_ini(c.chn, n, unit, 0x0A2B, ini.c_str());
  return c;
}

StationMeta station(const std::string& ini) {
  StationMeta st;
  st.net = "XX";
  st.sta = "TST";
  st.site = "North pier";
  st.lat = 34.0522, st.lon = -118.2437, st.elev = 71, st.position_known = true;
  st.das_model = "DAS-1", st.das_serial = "1234";
  st.start_ns = 1234567890123456000, st.end_ns = 1234567950123456000;
  st.channels = {channel("EHZ", 100, 1.589e-6, 3, 0, ini), channel("HNN", 200, 2.5e-6, 0, 1, ini),
                 channel("HHE", 100, 0, -1, 2, ini)};
  return st;
}

const char kIni[] =
    "[0A2B]\n"
    "Ch1SnsMake=Mark\nCh1SnsModel=L-4\nCh1SnsFreq=1.0\nCh1SnsDamp=0.6\nCh1SnsVPU=171\nCh1Depth=2.5\n"
    "Ch2SnsMake=Kinemetrics\nCh2SnsModel=Episensor\nCh2SnsVPU=0.25\nCh2Azm=45\nCh2NZNP=0,4\n"
    "Ch2Pole=-981,1009\nCh2Pole=-981,-1009\nCh2Pole=-3290,1263\nCh2Pole=-3290,-1263\nCh2Norm=1\n";

TEST(StationXml, ValuesOfAHandWrittenIni) {
  e2e::TempDir tmp;
  std::ofstream(tmp / "lmu.ini") << kIni;
  const auto r = lm::mseed::write_stationxml(tmp / "XX.xml", tmp.str().size(), {station(tmp / "lmu.ini")});
  ASSERT_TRUE(r.ok) << r.error;
  expect_valid(tmp / "XX.xml");
  const Doc d(tmp / "XX.xml");
  ASSERT_TRUE(d.parsed());
  const std::string sta = "//s:Network[@code='XX']/s:Station[@code='TST']";
  EXPECT_EQ(d.str(sta + "/@startDate"), "2009-02-13T23:31:30.123456Z");
  EXPECT_EQ(d.str(sta + "/s:Site/s:Name"), "North pier");
  EXPECT_EQ(d.str(sta + "/s:Equipment/s:SerialNumber"), "1234");
  const std::string z = sta + "/s:Channel[@code='EHZ']", n = sta + "/s:Channel[@code='HNN']",
                    e = sta + "/s:Channel[@code='HHE']";
  // Position and orientation: the INI's, else by axis.
  const double want[][6] = {{34.0522, -118.2437, 71, 2.5, 0, -90}, {34.0522, -118.2437, 71, 0, 45, 0},
                            {34.0522, -118.2437, 71, 0, 90, 0}};
  const char* fields[] = {"Latitude", "Longitude", "Elevation", "Depth", "Azimuth", "Dip"};
  for (int c = 0; c < 3; ++c)
    for (int f = 0; f < 6; ++f) EXPECT_EQ(d.num((c == 0 ? z : c == 1 ? n : e) + "/s:" + fields[f]), want[c][f]) << c << fields[f];
  EXPECT_EQ(d.str(z + "/s:Sensor/s:Manufacturer"), "Mark");
  EXPECT_EQ(d.str(z + "/s:DataLogger/s:Model"), "DAS-1");

  // Velocity sensor, f0 1 Hz, h 0.6: poles -0.6 w0 +- 0.8 i w0; normalised at 5 f0 = 5 Hz, where
  // |H| = 25 / sqrt((25 - 1)^2 + (2 * 0.6 * 5)^2) = 25 / sqrt(612).
  const std::string zpz = z + "/s:Response/s:Stage[@number='1']/s:PolesZeros";
  EXPECT_EQ(d.count(zpz + "/s:Zero[s:Real=0 and s:Imaginary=0]"), 2);
  EXPECT_NEAR(std::abs(d.root(zpz + "/s:Pole[1]") - Cx(-0.6 * 2 * kPi, 0.8 * 2 * kPi)), 0, 1e-12);
  EXPECT_NEAR(std::abs(d.root(zpz + "/s:Pole[2]") - Cx(-0.6 * 2 * kPi, -0.8 * 2 * kPi)), 0, 1e-12);
  EXPECT_NEAR(d.num(zpz + "/s:NormalizationFactor"), std::sqrt(612.0) / 25, 1e-12);
  EXPECT_EQ(d.num(zpz + "/s:NormalizationFrequency"), 5);
  EXPECT_NEAR(d.normalised_gain(zpz), 1, 1e-6);
  EXPECT_EQ(d.num(z + "/s:Response/s:Stage[1]/s:StageGain/s:Value"), 171);
  EXPECT_NEAR(d.num(z + "/s:Response/s:Stage[2]/s:StageGain/s:Value"), 32 / 1.589e-6, 1e-6);
  EXPECT_NEAR(d.num(z + "/s:Response/s:InstrumentSensitivity/s:Value"), 171 * 32 / 1.589e-6, 1e-3);
  EXPECT_EQ(d.str(z + "/s:Response/s:InstrumentSensitivity/s:InputUnits/s:Name"), "M/S");
  EXPECT_EQ(d.num(z + "/s:Response/s:InstrumentSensitivity/s:Frequency"), 5);

  // Accelerometer with the INI's four poles, normalised at its 1 Hz.
  const std::string npz = n + "/s:Response/s:Stage[@number='1']/s:PolesZeros";
  const Cx s(0, 2 * kPi);
  const double a0 = std::abs((s - Cx(-981, 1009)) * (s - Cx(-981, -1009)) * (s - Cx(-3290, 1263)) * (s - Cx(-3290, -1263)));
  EXPECT_EQ(d.count(npz + "/s:Zero"), 0);
  EXPECT_EQ(d.count(npz + "/s:Pole"), 4);
  EXPECT_NEAR(d.num(npz + "/s:NormalizationFactor") / a0, 1, 1e-12);
  EXPECT_NEAR(d.normalised_gain(npz), 1, 1e-6);
  EXPECT_NEAR(d.num(n + "/s:Response/s:InstrumentSensitivity/s:Value"), 0.25 / 2.5e-6, 1e-9);
  EXPECT_EQ(d.str(n + "/s:Response/s:InstrumentSensitivity/s:InputUnits/s:Name"), "M/S**2");

  // No metadata: no Response, and a line that says why.
  EXPECT_EQ(d.count(e + "/s:Response"), 0);
  ASSERT_EQ(r.no_response.size(), 1u);
  EXPECT_EQ(r.no_response[0].rfind("XX.TST..HHE: ", 0), 0u) << r.no_response[0];
  EXPECT_TRUE(r.warnings.empty());
}

struct Stages {
  const char* what;
  const char* lines;  // of unit 0A2B (channel 1 the one written, on an axis with no default orientation)
  int gain_ndx;       // -1: the event header gave no gain code
  const char* why;    // the no_response reason, empty when a response is written
  int zeros;          // of the sensor stage at the origin, when written
  std::vector<Cx> poles = {};
  double norm = 0;    // the normalisation frequency, when the INI gives it
  std::optional<double> azm = {}, dip = {};
};

const std::string kManyPoles = [] {
  std::string s = "Ch1SnsMake=Mark\nCh1SnsModel=L-4\nCh1SnsVPU=100\n";
  for (int i = 1; i <= 17; ++i) s += "Ch1Pole=-" + std::to_string(i) + ",0\n";
  return s;
}();

const Stages kStages[] = {
    {"NZNP puts the zeros without a line at the origin",
     "Ch1SnsMake=Mark\nCh1SnsModel=L-4\nCh1SnsVPU=100\nCh1NZNP=2,2\nCh1Pole=-4,4\nCh1Pole=-4,-4\n", 0, "", 2,
     {{-4, 4}, {-4, -4}}},
    {"NZNP and the lines disagree", "Ch1SnsMake=Mark\nCh1SnsModel=L-4\nCh1SnsVPU=100\nCh1NZNP=0,3\nCh1Pole=-4,4\n", 0,
     "NZNP gives 0 zeros and 3 poles, the INI lists 0 and 1", 0},
    {"the roots in order, a pole without imaginary part real; 0 is a given azimuth and dip",
     "Ch1SnsMake=Mark\nCh1SnsModel=L-4\nCh1SnsVPU=100\nCh1Zero=0,0\nCh1Pole=-4.44,4.44 ; rad/s\nCh1Pole= -12.5\n"
     "Ch1Pole=-1e3,2E2\nCh1Norm=1.5\nCh1Azm=0\nCh1Dip=0\n", 0, "", 1, {{-4.44, 4.44}, {-12.5, 0}, {-1000, 200}}, 1.5,
     0, 0},
    {"a gain-only sensor stage; other channels' and units' lines stay there; a dip alone",
     "Ch1SnsMake=Mark\nCh1SnsModel=L-4\nCh1SnsVPU=100\nCh1Dip=-90\nCh2Pole=-1,1\nCh2Azm=10\nCh2Norm=3\n"
     "[0A2C]\nCh1Pole=-7,7\n", 0, "", 0, {}, 0, {}, -90},
    {"17 roots are more than fit", kManyPoles.c_str(), 0, "more than 16 poles and zeros in the INI", 0},
    {"no volts per unit", "Ch1SnsMake=Mark\nCh1SnsModel=L-4\nCh1SnsFreq=1\nCh1SnsDamp=0.7\n", 0, "no volts per unit", 0},
    {"no gain code", "Ch1SnsMake=Mark\nCh1SnsModel=L-4\nCh1SnsVPU=100\n", -1, "no gain code", 0},
    {"a pressure sensor has no ground-motion unit", "Ch1SnsMake=Pressure\nCh1SnsModel=x\nCh1SnsVPU=1\n", 0,
     "no ground-motion unit", 0},
};

TEST(StationXml, AResponseOnlyWhenEveryStageIsKnown) {
  for (const Stages& c : kStages) {
    e2e::TempDir tmp;
    std::ofstream(tmp / "lmu.ini") << "[0A2B]\n" << c.lines;
    StationMeta st = station(tmp / "lmu.ini");
    st.channels = {channel("EH1", 100, 1e-6, c.gain_ndx, 0, tmp / "lmu.ini")};
    const auto r = lm::mseed::write_stationxml(tmp / "XX.xml", tmp.str().size(), {st});
    ASSERT_TRUE(r.ok) << r.error;
    expect_valid(tmp / "XX.xml");
    const Doc d(tmp / "XX.xml");
    EXPECT_EQ(d.count("//s:Channel/s:Azimuth"), c.azm.has_value()) << c.what;
    EXPECT_EQ(d.count("//s:Channel/s:Dip"), c.dip.has_value()) << c.what;
    if (c.azm) {
      EXPECT_EQ(d.num("//s:Channel/s:Azimuth"), *c.azm) << c.what;
    }
    if (c.dip) {
      EXPECT_EQ(d.num("//s:Channel/s:Dip"), *c.dip) << c.what;
    }
    const std::string pz = "//s:Channel/s:Response/s:Stage[1]/s:PolesZeros";
    if (*c.why) {
      ASSERT_EQ(r.no_response.size(), 1u) << c.what;
      EXPECT_NE(r.no_response[0].find(c.why), std::string::npos) << c.what << ": " << r.no_response[0];
      EXPECT_EQ(d.count("//s:Response"), 0) << c.what;
      continue;
    }
    EXPECT_TRUE(r.no_response.empty()) << c.what;
    EXPECT_EQ(d.count(pz + "/s:Zero[s:Real=0 and s:Imaginary=0]"), c.zeros) << c.what;
    ASSERT_EQ(d.count(pz + "/s:Pole"), static_cast<int>(c.poles.size())) << c.what;
    for (std::size_t i = 0; i < c.poles.size(); ++i)
      EXPECT_EQ(d.root(pz + "/s:Pole[" + std::to_string(i + 1) + "]"), c.poles[i]) << c.what << " pole " << i + 1;
    if (c.norm > 0) {
      EXPECT_EQ(d.num(pz + "/s:NormalizationFrequency"), c.norm) << c.what;
    }
    EXPECT_NEAR(d.normalised_gain(pz), 1, 1e-6) << c.what;
    EXPECT_NEAR(d.num("//s:InstrumentSensitivity/s:Value"), 100 / 1e-6, 1e-3) << c.what;
  }
}

struct Hostile {
  const char* what;
  std::string text;   // the site name and the DAS model
  std::string back;   // as the document holds it
  bool warned;
};

const Hostile kHostile[] = {
    {"markup is escaped, nothing lost", "<a & b> \"q\" 'r' ]]>", "<a & b> \"q\" 'r' ]]>", false},
    {"valid UTF-8 stays", "Z\xC3\xBCrich", "Z\xC3\xBCrich", false},
    {"invalid bytes, a surrogate and U+FFFF are replaced", "a\xFF\xC3" "b\xED\xA0\x80\xEF\xBF\xBF",
     "a\xEF\xBF\xBD\xEF\xBF\xBD" "b\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD", true},
    {"control characters are dropped", "a\x01" "b\tc\r\n", "abc", true},
    {"a 1 MB value is cut", std::string(1 << 20, 'x'), std::string(256, 'x'), true},
};

TEST(StationXml, HostileTextsGiveAValidDocument) {
  for (const Hostile& h : kHostile) {
    e2e::TempDir tmp;
    StationMeta st = station(tmp / "none.ini");
    st.site = h.text;
    st.das_model = h.text;
    const auto r = lm::mseed::write_stationxml(tmp / "XX.xml", tmp.str().size(), {st});
    ASSERT_TRUE(r.ok) << h.what << r.error;
    expect_valid(tmp / "XX.xml");
    const Doc d(tmp / "XX.xml");
    EXPECT_EQ(d.str("//s:Station/s:Site/s:Name"), h.back) << h.what;
    EXPECT_EQ(d.str("//s:Station/s:Equipment/s:Model"), h.back) << h.what;
    bool site_warned = false;
    for (const std::string& w : r.warnings) site_warned = site_warned || w.rfind("XX.TST: site name:", 0) == 0;
    EXPECT_EQ(site_warned, h.warned) << h.what;
  }
}

}  // namespace

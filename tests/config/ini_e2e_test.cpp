// The INI file as a field user writes it, seen in the trace headers it gives: the section, which
// line wins, comments, long lines, channel numbers and the sensor catalogue.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/e2e.hpp"

namespace {

struct IniCase {
  const char* what;
  std::string ini;
  unsigned channel;  // of the converted packet, from 0
  const char* vpu;   // "$SensorVPU=" value
  const char* lla = " 0.000  0.000    0.0";  // "$LLA=" value
};

const std::string kLong = "Station=" + std::string(91, 'x');  // 99 characters

const IniCase kCases[] = {
    {"header in any case; numbers end at the first non-digit",
     "[9a3f]\nLatitude=12.5abc\nLongitude=-3.25\nAltitude=71\n", 0, " 0.000", "12.500 -3.250   71.0"},
    {"an indented header selects nothing", " [9A3F]\nLatitude=5\n", 0, " 0.000"},
    {"only the unit's own section, ended by any '[' line",
     "[1234]\nLatitude=1\n[9A3F]junk\nLatitude=2\n[oops\nLongitude=3\n[9A3F]\nAltitude=4\n", 0, " 0.000",
     " 2.000  0.000    0.0"},
    {"the first of two lines wins, and a value without number counts as unset",
     "[9A3F]\nLatitude=1\nLatitude=2\nLongitude=x\nLongitude=3\n", 0, " 0.000", " 1.000  3.000    0.0"},
    {"comments, blanks, and key lines without value",
     "[9A3F]\n;Latitude=9\nLatitude\nLatitude=\nLatitude=;\nLatitude =  4.5 ; pier\r\nAltitudeX=-7e1\n", 0,
     " 0.000", " 4.500  0.000  -70.0"},
    {"the rest of a line past 99 characters is a line of its own",
     "[9A3F]\n" + kLong + "Latitude=6.5\n", 0, " 0.000", " 6.500  0.000    0.0"},
    {"two digits", "[9A3F]\nCh1SnsVPU=1.5\nCh10SnsVPU=2.5\n", 9, " 2.500"},
    {"a capital letter; a small one is another channel", "[9A3F]\nChaSnsVPU=9\nChASnsVPU=3.5\n", 9, " 3.500"},
    {"make before model finds the sensor", "[9A3F]\nCh1SnsMake=lum\nCh1SnsModel=VXA-440/T/INS-2\n", 0, " 1.200"},
    {"model before make: unknown sensor", "[9A3F]\nCh1SnsModel=VXA-440/T/INS\nCh1SnsMake=Lum\n", 0, " 0.000"},
    {"a value before the lookup wins over the catalogue",
     "[9A3F]\nCh1SnsVPU=3.25\nCh1SnsMake=Lum\nCh1SnsModel=VXA-440/U\n", 0, " 3.250"},
    {"after the lookup the catalogue's value stays",
     "[9A3F]\nCh1SnsMake=Lum\nCh1SnsModel=VXB-220/T\nCh1SnsVPU=3.25\n", 0, " 1.600"},
};

TEST(IniE2e, TraceHeadersShowTheUnitAndChannelValues) {
  for (const IniCase& c : kCases) {
    e2e::TempDir tmp;
    std::filesystem::create_directories(tmp / "out");
    e2e::write_packets(tmp / "in.pkt", {pktkit::make_dt16(0x9A3F, {}, 1, 7, 0, c.channel, {5, -6})});
    std::ofstream(tmp / "lmu.ini", std::ios::binary) << c.ini;
    const auto r = e2e::run({"in.pkt", "out", "-VN", "-LN"}, tmp.str(), (tmp / "lmu.ini").c_str());
    ASSERT_EQ(r.status, 0) << c.what;
    char name[64];
    std::snprintf(name, sizeof name, "out/2009032000000000_09A3F_1_%X.atr", c.channel + 1);
    EXPECT_EQ(e2e::read_file(tmp / name), e2e::bare_trace(c.channel + 1, 2, "5\r\n-6\r\n", c.vpu, c.lla))
        << c.what;
    EXPECT_EQ(r.out.find("WARNING"), std::string::npos) << c.what;
  }
}

}  // namespace

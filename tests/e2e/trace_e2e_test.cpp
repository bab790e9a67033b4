// Trace files through the real binary: whole files byte for byte, names and directories, the skip,
// limit and header switches, many channels at once, events without an event header.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/e2e.hpp"

namespace {

using e2e::TempDir;
using pktkit::Packet;
using pktkit::PktTime;

constexpr std::uint16_t kUnit = 0x9A3F;
constexpr unsigned kEvent = 7;

std::string lines(const std::vector<std::int32_t>& v) {
  std::string s;
  for (auto x : v) s += std::to_string(x) + "\r\n";
  return s;
}

// The .atr files below dir.
std::vector<std::string> traces(const std::string& dir) {
  std::vector<std::string> out;
  for (const auto& f : e2e::list_files(dir))
    if (f.size() > 4 && f.substr(f.size() - 4) == ".atr") out.push_back(f);
  return out;
}

// An input file built packet by packet with running sequence numbers.
struct Input {
  std::vector<Packet> pkts;
  unsigned seq = 1;
  std::uint16_t unit = kUnit;

  void eh(const pktkit::EventInfo& info, bool block2 = false, const char* type = "EH") {
    pkts.push_back(pktkit::make_event_packet(type, unit, {9, 32, 0, 0, 0, 0}, seq++, kEvent, 0, block2, info));
  }
  void et(const pktkit::EventInfo& info) { eh(info, false, "ET"); }
  void dt(PktTime t, unsigned channel, const std::vector<std::int32_t>& samples, bool wide = false,
          unsigned stream = 0) {
    pkts.push_back(wide ? pktkit::make_dt32(unit, t, seq++, kEvent, stream, channel, samples)
                        : pktkit::make_dt16(unit, t, seq++, kEvent, stream, channel, samples));
  }
};

class TraceE2e : public testing::Test {
 protected:
  // Runs the input into tmp/out with the switches; the run must end normally.
  void convert(const Input& in, std::vector<std::string> switches = {}) {
    std::filesystem::create_directories(tmp / "out");
    e2e::write_packets(tmp / "in.pkt", in.pkts);
    std::vector<std::string> args{"in.pkt", "out", "-VN"};
    args.insert(args.end(), switches.begin(), switches.end());
    const auto r = e2e::run(args, tmp.str());
    ASSERT_EQ(r.status, 0) << r.out;
  }
  std::string out(const std::string& name) { return e2e::read_file(tmp / ("out/" + name)); }
  TempDir tmp;
};

pktkit::EventInfo info_100() {
  pktkit::EventInfo info;
  info.bit_wght = {"2.384 uV", "4.768 uV"};
  info.tru_wght = {"2.380 uV"};
  info.gain = "3";
  info.svpu = {"1.2500"};
  return info;
}

TEST_F(TraceE2e, WholeTraceFilesOfOneEvent) {
  Input in;
  in.eh(info_100());
  in.dt({9, 32, 0, 0, 0, 0}, 0, {1, -2, 3});
  in.dt({9, 32, 0, 0, 0, 0}, 1, {100000, -100000}, true);
  in.dt({9, 32, 0, 0, 0, 30}, 0, {32767, -32768, 0});
  in.et(info_100());
  convert(in);
  EXPECT_EQ(traces(tmp / "out"),
            (std::vector<std::string>{"2009032000000000_STN1__1_1.atr", "2009032000000000_STN1__1_2.atr"}));
  EXPECT_EQ(out("2009032000000000_STN1__1_1.atr"),
            "$ChnID=9A3F:0007:01:01\r\n"
            "$Station=STN1 \r\n"
            "$Samples=6         \r\n"
            "$Rate=100.0000\r\n"
            "$Time=2009:032:00:00:00.000\r\n"
            "$TimeQual=0 \r\n"
            "$BitWeight=2.380 uV\r\n"
            "$Gain=32.000\r\n"
            "$SensorVPU= 1.250 ???             \r\n"
            "$LLA= 0.000  0.000    0.0\r\n"
            "1\r\n-2\r\n3\r\n32767\r\n-32768\r\n0\r\n");
  EXPECT_EQ(out("2009032000000000_STN1__1_2.atr"),
            "$ChnID=9A3F:0007:01:02\r\n"
            "$Station=STN1 \r\n"
            "$Samples=2         \r\n"
            "$Rate=100.0000\r\n"
            "$Time=2009:032:00:00:00.000\r\n"
            "$TimeQual=0 \r\n"
            "$BitWeight=4.768 uV\r\n"
            "$Gain= 1.000\r\n"
            "$SensorVPU= 0.000 ???             \r\n"
            "$LLA= 0.000  0.000    0.0\r\n"
            "100000\r\n-100000\r\n");
}

TEST_F(TraceE2e, NamesAndDirectoriesForEveryPathAndNameOption) {
  const char* dirs[] = {"", "2009_045/", "2009_045/13/", "2009_045/13_07/", "2009_045/13_07_21/"};
  const struct {
    const char* option;
    const char* station;
    const char* part;
  } names[] = {
      {"-N0", "AB D", "AB_D_"}, {"-N1", "AB D", "09A3F"}, {"-NS", "AB D", "AB_D_"},
      {"-N-", "    ", "09A3F"}, {"-N2", "    ", "_____"},
  };
  for (int p = 0; p <= 4; ++p) {
    for (const auto& n : names) {
      TempDir run_dir;
      pktkit::EventInfo info;
      info.station = n.station;
      Input in;
      in.eh(info);
      in.dt({9, 45, 13, 7, 21, 500}, 9, {5}, false, 1);
      in.et(info);
      std::filesystem::create_directories(run_dir / "out");
      e2e::write_packets(run_dir / "in.pkt", in.pkts);
      const auto r = e2e::run({"in.pkt", "out", "-VN", "-P" + std::to_string(p), n.option}, run_dir.str());
      ASSERT_EQ(r.status, 0) << r.out;
      const std::string want = std::string(dirs[p]) + "2009045130721500_" + n.part + "_2_A.atr";
      EXPECT_EQ(traces(run_dir / "out"), std::vector<std::string>{want}) << p << " " << n.option;
    }
  }
}

TEST_F(TraceE2e, LaterRunsIntoTheSameDirectoryGetLetters) {
  Input in;
  in.eh(info_100());
  in.dt({9, 32, 0, 0, 0, 0}, 0, {1});
  in.dt({9, 32, 0, 0, 0, 0}, 10, {2});
  in.et(info_100());
  for (int i = 0; i < 3; ++i) convert(in, {"-P1"});
  EXPECT_EQ(traces(tmp / "out"),
            (std::vector<std::string>{
                "2009_032/2009032000000000_STN1__1A1.atr", "2009_032/2009032000000000_STN1__1AB.atr",
                "2009_032/2009032000000000_STN1__1B1.atr", "2009_032/2009032000000000_STN1__1BB.atr",
                "2009_032/2009032000000000_STN1__1_1.atr", "2009_032/2009032000000000_STN1__1_B.atr"}));
  EXPECT_EQ(out("2009_032/2009032000000000_STN1__1BB.atr"), out("2009_032/2009032000000000_STN1__1_B.atr"));
}

TEST_F(TraceE2e, SkipLimitAndHeaderSwitches) {
  Input in;
  in.eh(info_100());
  in.dt({9, 32, 0, 0, 0, 0}, 0, {1, 2, 3});
  in.dt({9, 32, 0, 0, 0, 30}, 0, {4, 5, 6});
  in.dt({9, 32, 0, 0, 0, 60}, 0, {7, 8, 9});
  in.et(info_100());
  const std::string name = "2009032000000000_STN1__1_1.atr";
  const struct {
    std::vector<std::string> switches;
    std::string samples_line;
    std::vector<std::int32_t> written;
    bool header;
  } cases[] = {
      {{"-T5"}, "$Samples=4         \r\n", {6, 7, 8, 9}, true},
      {{"-T2", "-S0x3"}, "$Samples=3         \r\n", {3, 4, 5}, true},
      {{"-HN", "-S5"}, "", {1, 2, 3, 4, 5}, false},
  };
  for (const auto& c : cases) {
    std::filesystem::remove_all(tmp / "out");
    convert(in, c.switches);
    const std::string text = out(name);
    const std::string samples = lines(c.written);
    ASSERT_GE(text.size(), samples.size());
    EXPECT_EQ(text.substr(text.size() - samples.size()), samples) << c.switches[0];
    if (c.header) {
      EXPECT_EQ(text.find("$ChnID=9A3F:0007:01:01\r\n$Station=STN1 \r\n" + c.samples_line + "$Rate=100.0000\r\n"), 0u)
          << text;
      EXPECT_EQ(text.size(), 218 + samples.size());  // ten header lines, then the samples alone
    } else {
      EXPECT_EQ(text, samples);
    }
  }
}

TEST_F(TraceE2e, LimitZeroMakesNoTraceFile) {
  Input in;
  in.eh(info_100());
  in.dt({9, 32, 0, 0, 0, 0}, 0, {1, 2, 3});
  in.et(info_100());
  convert(in, {"-S0"});
  EXPECT_TRUE(traces(tmp / "out").empty());
}

TEST_F(TraceE2e, FortyChannelsInOneEventKeepEverySample) {
  Input in;
  in.eh(info_100());
  for (int round = 0; round < 3; ++round)
    for (unsigned ch = 0; ch < 40; ++ch)
      in.dt({9, 32, 0, 0, 0, 10 * round}, ch,
            {static_cast<std::int32_t>(round * 1000 + ch), -static_cast<std::int32_t>(ch)}, round == 1);
  in.et(info_100());
  convert(in);
  const auto files = traces(tmp / "out");
  ASSERT_EQ(files.size(), 40u);
  for (unsigned ch = 0; ch < 40; ++ch) {
    char name[64];
    std::snprintf(name, sizeof name, "2009032000000000_STN1__1_%X.atr", ch + 1);
    std::vector<std::int32_t> want;
    for (int round = 0; round < 3; ++round) {
      want.push_back(static_cast<std::int32_t>(round * 1000 + ch));
      want.push_back(-static_cast<std::int32_t>(ch));
    }
    const std::string bw = ch == 0 ? "2.380 uV" : ch == 1 ? "4.768 uV" : "        ";
    char chn_id[32];
    std::snprintf(chn_id, sizeof chn_id, "$ChnID=9A3F:0007:01:%02u\r\n", ch + 1);
    EXPECT_EQ(out(name), std::string(chn_id) + "$Station=STN1 \r\n$Samples=6         \r\n$Rate=100.0000\r\n"
                             "$Time=2009:032:00:00:00.000\r\n$TimeQual=0 \r\n$BitWeight=" + bw +
                             "\r\n$Gain=" + (ch == 0 ? "32.000" : " 1.000") + "\r\n$SensorVPU=" +
                             (ch == 0 ? " 1.250" : " 0.000") +
                             " ???             \r\n$LLA= 0.000  0.000    0.0\r\n" + lines(want))
        << name;
  }
}

TEST_F(TraceE2e, EventWithoutHeaderGetsTheEstimatedRateInPlace) {
  Input in;
  in.unit = 0x0012;
  std::vector<std::int32_t> s(100);
  for (int i = 0; i < 100; ++i) s[i] = i * 37 - 1800;
  in.dt({9, 32, 0, 0, 0, 0}, 0, s);
  in.dt({9, 32, 0, 0, 0, 0}, 1, s);  // made while the rate is unknown
  in.dt({9, 32, 0, 0, 1, 0}, 0, s);  // 100 samples in one second
  in.dt({9, 32, 0, 0, 1, 0}, 1, s);
  in.dt({9, 32, 0, 0, 2, 0}, 2, s);  // made after the estimate
  convert(in);
  auto header = [](unsigned ch, unsigned n, const char* rate, const char* time) {
    return "$ChnID=0012:0007:01:0" + std::to_string(ch) + "\r\n$Station=     \r\n$Samples=" + std::to_string(n) +
           std::string(10 - std::to_string(n).size(), ' ') + "\r\n$Rate=" + rate + "\r\n$Time=" + time +
           "\r\n$TimeQual=-1\r\n$BitWeight=        \r\n$Gain= 1.000\r\n$SensorVPU= 0.000 ???             \r\n"
           "$LLA= 0.000  0.000    0.0\r\n";
  };
  const std::string two = lines(s) + lines(s);
  EXPECT_EQ(out("2009032000000000_00012_1_1.atr"), header(1, 200, "    100.0000", "2009:032:00:00:00.000") + two);
  EXPECT_EQ(out("2009032000000000_00012_1_2.atr"), header(2, 200, "    100.0000", "2009:032:00:00:00.000") + two);
  EXPECT_EQ(out("2009032000002000_00012_1_3.atr"), header(3, 100, "100.0000", "2009:032:00:00:02.000") + lines(s));
}

TEST_F(TraceE2e, ChannelsAbove16UseTheSecondBlock) {
  pktkit::EventInfo high;
  high.bit_wght = {"9.537 uV", "1.000 mV"};
  high.tru_wght = {"        ", "0.998 mV"};
  high.gain = "2";
  high.svpu = {"", "0.5000"};
  Input in;
  in.eh(info_100());
  in.eh(high, true);
  in.dt({9, 32, 0, 0, 0, 0}, 0, {1});
  in.dt({9, 32, 0, 0, 0, 0}, 16, {17});
  in.dt({9, 32, 0, 0, 0, 0}, 17, {18});
  in.et(info_100());
  convert(in);
  const std::string c17 = out("2009032000000000_STN1__1_11.atr");
  EXPECT_NE(c17.find("$ChnID=9A3F:0007:01:17\r\n"), std::string::npos) << c17;
  EXPECT_NE(c17.find("$BitWeight=9.537 uV\r\n$Gain= 8.000\r\n$SensorVPU= 0.000"), std::string::npos) << c17;
  const std::string c18 = out("2009032000000000_STN1__1_12.atr");
  EXPECT_NE(c18.find("$BitWeight=0.998 mV\r\n$Gain= 1.000\r\n$SensorVPU= 0.500"), std::string::npos) << c18;
  const std::string c1 = out("2009032000000000_STN1__1_1.atr");
  EXPECT_NE(c1.find("$BitWeight=2.380 uV\r\n$Gain=32.000\r\n"), std::string::npos) << c1;
}

}  // namespace

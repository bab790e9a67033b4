// Trace files through the real binary: whole files byte for byte, names and directories, letters on
// later runs, paths that do not fit, the skip, limit and header switches, bad events, many channels,
// events without an event header.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "support/e2e.hpp"

namespace {

std::string lines(const std::vector<std::int32_t>& v) {
  std::string s;
  for (auto x : v) s += std::to_string(x) + "\r\n";
  return s;
}

// The header of a trace file of event 7 of the station STN1 at its position (see `info` below).
std::string header(const char* id, unsigned n, const char* bw, const char* gain = " 1.000",
                   const char* vpu = " 0.000") {
  return e2e::TraceHeader{.chn_id = std::string("9A3F:0007:") + id, .station = "STN1 ", .samples = n,
                          .rate = "100.0000", .time_qual = "0 ", .bit_weight = bw, .gain = gain, .vpu = vpu,
                          .lla = "45.500 -122.250  123.0"}
      .text();
}

// An input file of event 7 built packet by packet with running sequence numbers.
struct Input {
  std::vector<pktkit::Packet> pkts;
  unsigned seq = 1;
  void ev(const pktkit::EventInfo& info, const char* type = "EH", bool block2 = false) {
    pkts.push_back(pktkit::make_event_packet(type, 0x9A3F, {}, seq++, 7, 0, block2, info));
  }
  void dt(pktkit::PktTime t, unsigned ch, const std::vector<std::int32_t>& s, bool wide = false, unsigned stream = 0) {
    pkts.push_back(wide ? pktkit::make_dt32(0x9A3F, t, seq++, 7, stream, ch, s)
                        : pktkit::make_dt16(0x9A3F, t, seq++, 7, stream, ch, s));
  }
};

// Runs the input into dir/out with the switches, logs off; the run must end normally.
void convert(const e2e::TempDir& dir, const Input& in, std::vector<std::string> args = {}) {
  std::filesystem::create_directories(dir / "out");
  e2e::write_packets(dir / "in.pkt", in.pkts);
  args.insert(args.begin(), {"in.pkt", "out", "-VN", "-LN"});
  const auto r = e2e::run(args, dir.str());
  ASSERT_EQ(r.status, 0) << r.out;
}

class TraceE2e : public testing::Test {
 protected:
  std::string out(const std::string& name) { return e2e::read_file(tmp / ("out/" + name)); }
  static std::vector<std::string> files(const e2e::TempDir& dir) { return e2e::list_files(dir / "out"); }
  e2e::TempDir tmp;
  const pktkit::EventInfo info = [] {
    pktkit::EventInfo i;
    i.bit_wght = {"2.384 uV", "4.768 uV"};
    i.tru_wght = {"2.380 uV"};
    i.gain = "<3";
    i.svpu = {"1.2500"};
    i.position = "PN4530.000W12215.000   123";
    return i;
  }();
};

TEST_F(TraceE2e, WholeTraceFilesOfOneEventWithBothChannelBlocks) {
  pktkit::EventInfo high;  // channels 17 to 32
  high.bit_wght = {"9.537 uV", "1.000 mV"};
  high.tru_wght = {"        ", "0.998 mV"};
  high.gain = "2";
  high.svpu = {"", "0.5000"};
  Input in;
  in.ev(info);
  in.ev(high, "EH", true);
  // Packets whose extremes lie at the edges of the small lines' range and just past them.
  in.dt({}, 0, {1, -2, 3, -9999, 9999});
  // Sample text is built in groups of four digits: every width's ends, both signs, and the 32-bit limits.
  std::vector<std::int32_t> widths{0, INT32_MIN, INT32_MIN + 1, INT32_MAX - 1, INT32_MAX};
  for (std::int64_t p = 1; p <= 1000000000; p *= 10)
    for (const std::int64_t v : {p - 1, p, p + 1, 10 * p - 1})
      if (v > 0 && v <= INT32_MAX) widths.insert(widths.end(), {static_cast<std::int32_t>(v), static_cast<std::int32_t>(-v)});
  in.dt({}, 1, widths, true);
  in.dt({}, 16, {17, 10000, -9999});
  in.dt({}, 17, {18, 9999, -10000});
  in.dt({9, 32, 0, 0, 0, 30}, 0, {32767, -32768, 0});
  in.ev(info, "ET");
  convert(tmp, in);
  const std::string f = "2009032000000000_STN1__1_";
  EXPECT_EQ(files(tmp), (std::vector<std::string>{f + "1.atr", f + "11.atr", f + "12.atr", f + "2.atr"}));
  EXPECT_EQ(out(f + "1.atr"),
            header("01:01", 8, "2.380 uV", "63.100", " 1.250") +
                                 "1\r\n-2\r\n3\r\n-9999\r\n9999\r\n32767\r\n-32768\r\n0\r\n");
  // A true bit weight beginning with a blank gives way to the nominal one.
  EXPECT_EQ(out(f + "2.atr"), header("01:02", static_cast<unsigned>(widths.size()), "4.768 uV", "32.000") +
                                 "0\r\n-2147483648\r\n-2147483647\r\n2147483646\r\n2147483647\r\n" +
                                 lines({widths.begin() + 5, widths.end()}));
  EXPECT_EQ(out(f + "11.atr"), header("01:17", 3, "9.537 uV", " 8.000") + "17\r\n10000\r\n-9999\r\n");
  EXPECT_EQ(out(f + "12.atr"), header("01:18", 3, "0.998 mV", " 1.000", " 0.500") + "18\r\n9999\r\n-10000\r\n");
}

// A trace file path holds at most 132 characters: with -P4 an output directory of 83 leaves room for
// the subdirectories and the base name, one of 84 ends the run.
TEST_F(TraceE2e, NamesAndDirectoriesForEveryPathAndNameOption) {
  const struct {
    const char* path;
    const char* name;
    std::string station;
    const char* want;
    std::string out = "out";
  } cases[] = {
      {"-P0", "-N0", "AB D", "2009045130721500_AB_D__2_A.atr"},
      {"-P1", "-N1", "AB D", "2009_045/2009045130721500_09A3F_2_A.atr"},
      {"-P2", "-N2", "    ", "2009_045/13/2009045130721500_______2_A.atr"},
      {"-P3", "-N-", "    ", "2009_045/13_07/2009045130721500_09A3F_2_A.atr"},
      {"-P4", "-NS", "    ", "2009_045/13_07_21/2009045130721500_______2_A.atr"},
      {"-P0", "-N0", std::string("S/\0X", 4), "2009045130721500_S_____2_A.atr"},  // damaged: ends at the NUL
      {"-P4", "-N0", "    ", "2009_045/13_07_21/2009045130721500_09A3F_2_A.atr", std::string(83, 'd')},
      {"-P4", "-N0", "    ", "2009_045/13_07_21/2009045130721500_09A3F_2_A.atr", std::string(84, 'd')},
  };
  for (const auto& c : cases) {
    e2e::TempDir dir;
    std::filesystem::create_directories(dir / c.out);
    pktkit::EventInfo station;
    station.station = c.station;
    Input in;
    in.ev(station);
    in.dt({9, 45, 13, 7, 21, 500}, 9, {5}, false, 1);
    e2e::write_packets(dir / "in.pkt", in.pkts);
    const auto r = e2e::run({"in.pkt", c.out, "-VN", "-LN", c.path, c.name}, dir.str());
    const std::string path = c.out + "/" + c.want;
    const bool fits = path.size() <= 132;
    EXPECT_EQ(r.status, fits ? 0 : 20) << path;
    EXPECT_EQ(e2e::list_files(dir / c.out), fits ? std::vector<std::string>{c.want} : std::vector<std::string>{});
    EXPECT_EQ(r.out.ends_with("\nFile open error for '" + path + "'"), !fits) << r.out;
  }
}

TEST_F(TraceE2e, LaterRunsIntoTheSameDirectoryGetLettersUpToX) {
  Input in;
  in.ev(info);
  in.dt({}, 0, {1});
  in.dt({}, 10, {2});
  in.ev(info, "ET");
  for (int i = 0; i < 3; ++i) convert(tmp, in, {"-P1"});
  const std::string d = "2009_032/2009032000000000_STN1__1";
  EXPECT_EQ(files(tmp), (std::vector<std::string>{d + "A1.atr", d + "AB.atr", d + "B1.atr", d + "BB.atr",
                                                   d + "_1.atr", d + "_B.atr"}));
  for (char l = 'C'; l <= 'W'; ++l) pktkit::write_file(tmp / ("out/" + d + l + "1.atr"), {});
  convert(tmp, in, {"-P1"});
  EXPECT_EQ(out(d + "X1.atr"), out(d + "_1.atr")) << "the 25th name is still tried";
  const auto r = e2e::run({"in.pkt", "out", "-VN", "-LN", "-P1"}, tmp.str());
  EXPECT_EQ(r.status, 23);
  EXPECT_TRUE(r.out.ends_with("\n\nERROR!!!!!\n   Unable to create an unique filename.")) << r.out;
}

// Channel 1 gets 1 to 9 in three packets. In a bad event a packet is lost after the first, and
// channel 2 first comes after the loss: every channel stops at the limit.
TEST_F(TraceE2e, SkipLimitAndHeaderSwitchesAndBadEvents) {
  const auto one = [](unsigned n) { return header("01:01", n, "2.380 uV", "63.100", " 1.250"); };
  const auto two = [](unsigned n) { return header("01:02", n, "4.768 uV", "32.000"); };
  const struct {
    bool lost;
    std::vector<std::string> args;
    std::string ch1, ch2;  // the trace files; "" for none
  } cases[] = {
      {false, {"-T5"}, one(4) + lines({6, 7, 8, 9}), ""},  // the time stays the first packet's
      {false, {"-T2", "-S0x3"}, one(3) + lines({3, 4, 5}), ""},
      {false, {"-HN", "-S5"}, lines({1, 2, 3, 4, 5}), ""},
      {false, {"-S0"}, "", ""},  // no trace file at all
      {true, {"-S1000"}, one(1001) + lines({1, 2, 3}), two(1001)},
      {true, {"-T0"}, one(4294967295u) + lines({1, 2, 3}), two(4294967295u)},
  };
  for (const auto& c : cases) {
    Input in;
    in.ev(info);
    for (int i = 0; i < 3; ++i) {
      in.dt({9, 32, 0, 0, 0, 30 * i}, 0, {3 * i + 1, 3 * i + 2, 3 * i + 3});
      in.seq += c.lost && i == 0;
    }
    if (c.lost) in.dt({}, 1, {10});
    in.ev(info, "ET");
    std::filesystem::remove_all(tmp / "out");
    convert(tmp, in, c.args);
    EXPECT_EQ(files(tmp).size(), !c.ch1.empty() + !c.ch2.empty()) << c.args[0];
    EXPECT_EQ(out("2009032000000000_STN1__1_1.atr"), c.ch1) << c.args[0];
    EXPECT_EQ(out("2009032000000000_STN1__1_2.atr"), c.ch2) << c.args[0];
  }
}

// More channels than trace files kept open: files closed on the way are reopened and appended to.
TEST_F(TraceE2e, FortyChannelsInOneEventKeepEverySample) {
  Input in;
  for (int round = 0; round < 3; ++round)
    for (int ch = 0; ch < 40; ++ch) in.dt({}, ch, {1000 * round + ch, -ch}, round == 1);
  convert(tmp, in);
  ASSERT_EQ(files(tmp).size(), 40u);
  for (int ch = 0; ch < 40; ++ch) {
    char name[40];
    std::snprintf(name, sizeof name, "2009032000000000_09A3F_1_%X.atr", ch + 1);
    EXPECT_EQ(out(name), e2e::bare_trace(ch + 1, 6, lines({ch, -ch, 1000 + ch, -ch, 2000 + ch, -ch})));
  }
}

TEST_F(TraceE2e, EventWithoutHeaderGetsTheEstimatedRateInPlace) {
  Input in;
  std::vector<std::int32_t> s(100);
  for (int i = 0; i < 100; ++i) s[i] = i * 37 - 1800;
  in.dt({}, 0, s);
  in.dt({}, 1, s);                   // made while the rate is unknown
  in.dt({}, 0, s);                   // no time has passed: no estimate yet
  in.dt({9, 32, 0, 0, 1, 0}, 0, s);  // 200 samples written in the first second: 200/s
  in.dt({9, 32, 0, 0, 1, 0}, 1, s);  // which stays, though this channel alone would give 100/s
  in.dt({9, 32, 0, 0, 2, 0}, 2, s);  // made after the estimate
  convert(tmp, in);
  auto head = [](const char* id, unsigned n, const char* rate, const char* time) {
    return e2e::TraceHeader{.chn_id = std::string("9A3F:0007:01:") + id, .samples = n, .rate = rate,
                            .time = std::string("2009:032:00:00:") + time}
        .text();
  };
  const std::string f = "2009032000000000_09A3F_1_", one = lines(s);
  EXPECT_EQ(out(f + "1.atr"), head("01", 300, "    200.0000", "00.000") + one + one + one);
  EXPECT_EQ(out(f + "2.atr"), head("02", 200, "    200.0000", "00.000") + one + one);
  EXPECT_EQ(out("2009032000002000_09A3F_1_3.atr"), head("03", 100, "200.0000", "02.000") + one);
}

}  // namespace

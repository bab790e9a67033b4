// Hostile surroundings through the real binary: files that cannot be written, a low limit on open
// files with thousands of units and every channel number, and an operator interrupt.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "support/e2e.hpp"

namespace {

namespace fs = std::filesystem;
using pktkit::Packet;

// Event 7 of unit 9A3F: channel 0 gets `packets` DT packets of 500 samples (0, 1, ... 99, 0, ...).
std::vector<Packet> one_event(unsigned packets) {
  std::vector<Packet> p;
  unsigned seq = 1;
  p.push_back(pktkit::make_event_packet("EH", 0x9A3F, {}, seq++, 7, 0, false, {}));
  for (unsigned k = 0; k < packets; ++k) {
    std::vector<std::int32_t> s(500);
    for (int i = 0; i < 500; ++i) s[i] = i % 100;
    p.push_back(pktkit::make_dt16(0x9A3F, {9, 32, 0, 0, static_cast<int>(5 * k), 0}, seq++, 7, 0, 0, s));
  }
  p.push_back(pktkit::make_event_packet("ET", 0x9A3F, {}, seq++, 7, 0, false, {}));
  return p;
}

std::string trace_text(unsigned samples) {
  std::string s = e2e::TraceHeader{.chn_id = "9A3F:0007:01:01", .station = "STN1 ", .samples = samples,
                                   .rate = "100.0000", .time_qual = "0 "}
                      .text();
  for (unsigned i = 0; i < samples; ++i) s += std::to_string(i % 100) + "\r\n";
  return s;
}

// The trace file cut at `size` bytes after its first header, as a file size limit leaves it.
std::string cut_trace(std::size_t size) {
  const std::string first = trace_text(0);
  return first + trace_text(1000).substr(first.size(), size - first.size());
}

const char kTrace[] = "2009032000000000_STN1__1_1.atr";

// Files still open when a failed write ends the run keep what they were given, as the process exit would
// flush them: the unit log is the start of that of a whole run.
TEST(Reliability, TheFirstFailedWriteEndsTheRunNamingTheFile) {
  const struct {
    const char* full;  // output file made a link to the full device, or empty
    std::vector<std::string> args;
    unsigned long file_size;
    const char* named;
    std::string trace;  // the trace file afterwards
  } cases[] = {
      {"in.lml", {}, 0, "in.lml", trace_text(1000)},
      {"ID9A3F.lml", {}, 0, "ID9A3F.lml", trace_text(1000)},
      {"in.qcc", {"-Q+", "-LN"}, 0, "in.qcc", trace_text(1000)},
      {"ID9A3F.qcc", {"-Q+"}, 0, "ID9A3F.qcc", trace_text(1000)},
      // The trace file reaches the size limit: what fitted stays, under its first header.
      {"", {}, 4096, kTrace, cut_trace(4096)},
  };
  e2e::TempDir tmp;  // one for all runs, whose logs name it
  e2e::write_packets(tmp / "in.pkt", one_event(2));
  fs::create_directories(tmp / "out");
  ASSERT_EQ(e2e::run({"in.pkt", "out", "-VN"}, tmp.str()).status, 0);
  const std::string whole_log = e2e::mask_time(e2e::read_file(tmp / "out/ID9A3F.lml"));
  for (const auto& c : cases) {
    fs::remove_all(tmp / "out");
    fs::create_directories(tmp / "out");
    if (*c.full) fs::create_symlink("/dev/full", tmp / ("out/" + std::string(c.full)));
    std::vector<std::string> args = c.args;
    args.insert(args.begin(), {"in.pkt", "out", "-VN"});
    const auto r = e2e::run(args, tmp.str(), nullptr, "", {0, c.file_size});
    EXPECT_EQ(r.status, 22) << c.named << r.out;
    EXPECT_TRUE(r.out.ends_with("\nFile write error for 'out/" + std::string(c.named) + "'")) << c.named << r.out;
    EXPECT_EQ(e2e::read_file(tmp / ("out/" + std::string(kTrace))), c.trace) << c.named;
    if (!c.file_size) continue;
    const std::string log = e2e::mask_time(e2e::read_file(tmp / "out/ID9A3F.lml"));
    EXPECT_FALSE(log.empty());
    EXPECT_TRUE(whole_log.starts_with(log)) << log;
  }
}

// One DT packet of 2 samples for unit, event and a raw channel byte (values above 0x99 included).
Packet dt(std::uint16_t unit, unsigned event, std::uint8_t channel_byte, unsigned seq) {
  Packet p = pktkit::make_dt16(unit, {}, seq, event, 0, 0, {3, -3});
  p[19] = channel_byte;
  return p;
}

TEST(Reliability, ThousandsOfOpenEventsAndEveryChannelNumberUnderFewFileHandles) {
  std::vector<Packet> pkts;
  for (unsigned u = 0; u < 2000; ++u) pkts.push_back(dt(static_cast<std::uint16_t>(0x1000 + u), 1, 0, 1));
  for (unsigned b = 0; b < 256; ++b) pkts.push_back(dt(0x9A3F, 7, static_cast<std::uint8_t>(b), b + 1));
  e2e::TempDir tmp;
  fs::create_directories(tmp / "out");
  e2e::write_packets(tmp / "in.pkt", pkts);
  // Three standard streams, the input, two run files, two unit files and about 33 trace files.
  const auto r = e2e::run({"in.pkt", "out", "-VN", "-Q+"}, tmp.str(), nullptr, "", {48, 0});
  ASSERT_EQ(r.status, 0) << r.out.substr(r.out.size() > 500 ? r.out.size() - 500 : 0);
  std::map<std::string, unsigned> kinds;
  for (const auto& f : e2e::list_files(tmp / "out")) ++kinds[fs::path(f).extension().string()];
  // Channel bytes 0x00-0xFF read as 0 to 165.
  EXPECT_EQ(kinds, (std::map<std::string, unsigned>{{".atr", 2000 + 166}, {".lml", 2002}, {".qcc", 2002}}));
  const std::string samples = "3\r\n-3\r\n";
  EXPECT_EQ(e2e::read_file(tmp / "out/2009032000000000_01000_1_1.atr"),
            e2e::bare_trace(1, 2, samples, " 0.000", " 0.000  0.000    0.0", "1000:0001"));
  // Channel byte FF: channel 165, the 166th, whose packets alternate with no other of its number.
  EXPECT_EQ(e2e::read_file(tmp / "out/2009032000000000_09A3F_1_A6.atr"), e2e::bare_trace(166, 2, samples));
}

// Whether every trace file's header counts exactly the sample lines that follow it.
void expect_complete_traces(const std::string& dir) {
  for (const auto& f : e2e::list_files(dir)) {
    if (!f.ends_with(".atr")) continue;
    const std::string text = e2e::read_file(dir + "/" + f);
    const std::size_t at = text.find("$Samples=");
    ASSERT_NE(at, std::string::npos) << f;
    const unsigned long header_count = std::stoul(text.substr(at + 9, 10));
    std::size_t lines = 0;
    for (char ch : text) lines += ch == '\n';
    EXPECT_EQ(lines - 10, header_count) << f;
  }
}

TEST(Reliability, AnInterruptFinishesWhatWasConvertedAndEndsWithStatusOne) {
  for (int sig : {SIGINT, SIGTERM}) {
    e2e::TempDir tmp;
    fs::create_directories(tmp / "out");
    // Long enough that the run is still converting when the signal comes.
    const auto gen = std::string(LM_PKTGEN_BIN) + " " + (tmp / "in.pkt") + " 30 100 >/dev/null";
    ASSERT_EQ(std::system(gen.c_str()), 0);
    e2e::Child child = e2e::start({"in.pkt", "out", "-VN"}, tmp.str());
    // The first trace file shows that the conversion (and with it the interrupt handling) has begun.
    while (e2e::list_files(tmp / "out").size() < 4) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ::kill(child.pid, sig);
    const auto r = e2e::finish(child);
    ASSERT_EQ(r.status, 1) << r.out.substr(r.out.size() > 300 ? r.out.size() - 300 : 0);
    EXPECT_TRUE(r.out.ends_with("\nProgram aborted by user")) << sig;
    expect_complete_traces(tmp / "out");
    // The unit logs were closed with their lines in them, the run log too.
    for (const char* log : {"out/ID9A3F.lml", "out/in.lml"})
      EXPECT_NE(e2e::read_file(tmp / log).find("\r\nEH"), std::string::npos) << log;
  }
}

}  // namespace

// Hostile surroundings through the real binary: files that cannot be written, a low limit on open
// files with thousands of units and every channel number, and an operator interrupt.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "base/exit.hpp"
#include "base/text.hpp"
#include "registry/channels.hpp"
#include "registry/events.hpp"
#include "registry/units.hpp"
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
    const char* full;  // output file made a full device (as /dev/full), or empty
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
  // Not a link to /dev/full: the converter refuses links in its output tree.
  if (::geteuid() != 0) GTEST_SKIP() << "making a device node needs root";
  for (const auto& c : cases) {
    fs::remove_all(tmp / "out");
    fs::create_directories(tmp / "out");
    if (*c.full) {
      ASSERT_EQ(::mknod((tmp / ("out/" + std::string(c.full))).c_str(), S_IFCHR | 0666, makedev(1, 7)), 0);
    }
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

// A channel's trace file, claimed and written, then closed by a change of unit; what reopening it
// gives once `plant` has replaced it. In-process: a run cannot be stopped between the two.
lm::RunExit reopen_after_unit_change(const std::string& out, const std::function<void(const std::string&)>& plant) {
  lm::Settings set;
  set.Log_on = 0;
  lm::set_text(set.DirOut, out + "/");
  lm::Run run(set);
  const auto dt = [](std::uint16_t unit) { return pktkit::make_dt16(unit, {}, 1, 7, 0, 0, {1, 2}); };
  lm::UNIT_T* a = lm::Unit_find(run, dt(0x9A3F).data());
  lm::Evt* e = lm::Evt_find(run, a, dt(0x9A3F).data());
  const std::string trace = lm::Chn_find(run, e, dt(0x9A3F).data())->name;
  lm::Unit_find(run, dt(0x0B0B).data());
  plant(trace);
  try {
    lm::Chn_find(run, lm::Evt_find(run, lm::Unit_find(run, dt(0x9A3F).data()), dt(0x9A3F).data()), dt(0x9A3F).data());
  } catch (const lm::RunExit& x) {
    return x;
  }
  return {0, false, nullptr, {}};
}

// A link planted in the output tree, under a name the run will use, to a file or folder outside:
// the run refuses it, names it, and the outside target stays as it was.
TEST(Reliability, NoOutputFollowsALinkPlantedInTheOutputTree) {
  enum Tool { kAsc, kReopen, kPlot, kMseed };
  const std::string mseed_file = "XX.STN1..HHZ.2009.032.000000.mseed";
  const struct {
    Tool tool;
    std::string planted;  // below out/ (its folders made real first); empty: the trace file the run reopens
    bool folder;          // the link points at a folder
    std::vector<std::string> args;
    int status;
    std::string says;     // the end of standard output (standard error for lm_plot and lm_mseed)
  } cases[] = {
      {kAsc, "in.lml", false, {}, 20, "\nFile open error for 'out/in.lml'"},
      {kAsc, "ID9A3F.lml", false, {}, 20, "\nFile open error for 'out/ID9A3F.lml'"},
      {kAsc, "in.qcc", false, {"-Q+"}, 20, "\nFile open error for 'out/in.qcc'"},
      {kAsc, "ID9A3F.qcc", false, {"-Q+"}, 20, "\nFile open error for 'out/ID9A3F.qcc'"},
      // A gathered file that cannot be made leaves the event's trace files, as any failed open of it does.
      {kAsc, "2009032000000000_STN1__1.adt", false, {"-G+"}, 0, "\r\n"},
      {kAsc, "2009_032", true, {"-P1"}, 20,
       "\n\nERROR!!!!\n   unable to open out/2009_032/" + std::string(kTrace) + " for output."},
      {kReopen, "", false, {}, 20, "\n\nERROR!!!!\n   unable to open %s for output."},
      {kPlot, "2009032000000000_STN1__1.png", false, {}, 1, "Too many levels of symbolic links\n"},
      // lm_mseed: an SDS level at the top and one below real ones, a flat data file, the StationXML file.
      {kMseed, "2009", true, {"--layout", "sds"}, 22,
       "a link or a file stands where a directory belongs, in 'out/2009/XX/STN1/HHZ.D/XX.STN1..HHZ.D.2009.032': "
       "Not a directory; "
       "the export stopped there\n"},
      {kMseed, "2009/XX/STN1", true, {"--layout", "sds"}, 22,
       "a link or a file stands where a directory belongs, in 'out/2009/XX/STN1/HHZ.D/XX.STN1..HHZ.D.2009.032': "
       "Not a directory; "
       "the export stopped there\n"},
      {kMseed, mseed_file, false, {}, 22,
       "cannot open 'out/" + mseed_file + "': Too many levels of symbolic links; the export stopped there\n"},
      {kMseed, "XX.xml", false, {}, 22, "cannot open 'out/XX.xml': Too many levels of symbolic links\n"},
  };
  e2e::TempDir tmp;
  e2e::write_packets(tmp / "in.pkt", one_event(2));
  const std::string outside = tmp / "outside";
  for (const auto& c : cases) {
#ifndef LM_PLOT_BIN
    if (c.tool == kPlot) continue;  // lm_plot is built only with Cairo
#endif
#ifndef LM_MSEED_BIN
    if (c.tool == kMseed) continue;  // lm_mseed is built only with libmseed and libxml2
#endif
    fs::remove_all(tmp / "out");
    fs::remove_all(outside);
    fs::create_directories(tmp / "out");
    if (c.folder) fs::create_directories(outside);
    else std::ofstream(outside) << "kept\n";
    const auto plant = [&](const std::string& name) {
      fs::create_directories(fs::path(name).parent_path());
      fs::create_symlink(outside, name);
    };
    int status = -1;
    std::string says;
    if (c.tool == kReopen) {
      const lm::RunExit x = reopen_after_unit_change(tmp / "out", [&](const std::string& trace) {
        fs::remove(trace);
        plant(trace);
      });
      status = x.status;
      says = x.fmt ? x.fmt : "";
    } else if (c.tool == kAsc) {
      plant(tmp / ("out/" + c.planted));
      std::vector<std::string> args = c.args;
      args.insert(args.begin(), {"in.pkt", "out", "-VN"});
      const e2e::RunResult r = e2e::run(args, tmp.str());
      status = r.status;
      says = r.out;
      if (c.status == 0) {
        EXPECT_TRUE(e2e::exists(tmp / ("out/" + std::string(kTrace)))) << c.planted;
      }
    } else if (c.tool == kMseed) {
#ifdef LM_MSEED_BIN
      plant(tmp / ("out/" + c.planted));
      std::string cmd = "cd " + tmp.str() + " && LMU=none " LM_MSEED_BIN " -q -o out";
      for (const std::string& a : c.args) cmd += " " + a;
      const int st = std::system((cmd + " in.pkt >/dev/null 2>err").c_str());
      status = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
      says = e2e::read_file(tmp / "err");
#endif
    } else {
#ifdef LM_PLOT_BIN
      ASSERT_EQ(e2e::run({"in.pkt", "out", "-VN"}, tmp.str()).status, 0);
      plant(tmp / ("out/" + c.planted));
      const int st = std::system(("cd " + tmp.str() + " && " LM_PLOT_BIN " out/" + kTrace + " >/dev/null 2>err").c_str());
      status = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
      says = e2e::read_file(tmp / "err");
#endif
    }
    EXPECT_EQ(status, c.status) << c.planted << says;
    EXPECT_TRUE(says.ends_with(c.says)) << c.planted << ": " << says;
    if (c.folder) {
      EXPECT_TRUE(fs::is_empty(outside)) << c.planted;
    } else {
      EXPECT_EQ(e2e::read_file(outside), "kept\n") << c.planted;
    }
  }
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

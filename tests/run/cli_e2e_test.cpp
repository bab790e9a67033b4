// Command line, run set-up and the failure table (paths that do not fit), through the real binary.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/e2e.hpp"

namespace {

using e2e::run;

const std::string kBanner = "\nLM_ASC - Version mrg02   ";

std::string usage_text(const char* skip = "0") {
  return "\r\n\nPurpose:"
         "\r\n   Reads a file containing TERVEL data packets and converts"
         "\r\n   the data to LUMARA ASCII format."
         "\r\n\nUsage:"
         "\r\n   LM_ASC [switches] sourceFile [output_path] [switches]"
         "\r\n\n Switches               Description                               Default    "
         "\r\n ----------------------------------------------------------------------------"
         "\r\n   -Dc     DT  LOG  output: Y, +, N or -                          (NO)"
         "\r\n   -Gc     output Gathered file: Y, +, N or -                     (NO)"
         "\r\n   -Hc     output trace Header: Y, +, N or -                      (YES)"
         "\r\n   -Lc     LOG File output: Y, +, N or -                          (YES)"
         "\r\n   -Nc     file Name option:                                      (Auto)"
         "\r\n             0/- = use Station Name when present, else use Unit ID"
         "\r\n             1/I = always use Unit ID"
         "\r\n             2/S = always use Station Name"
         "\r\n   -Pn     output Path levels                                     (0)"
         "\r\n             0 = no additional subdirectories"
         "\r\n             1 = one subdirectory level:  YYYY_DDD"
         "\r\n             2 = two subdirectory levels: YYYY_DDD/HH"
         "\r\n             3 = two subdirectory levels: YYYY_DDD/HH_MM"
         "\r\n             4 = two subdirectory levels: YYYY_DDD/HH_MM_SS"
         "\r\n   -Qc     QCC File output: Y, +, N or -                          (NO)"
         "\r\n   -Rn     sample Rate (if not found in the data)                 (100)"
         "\r\n   -Sn     Sample count per channel per event                     (4294967295)"
         "\r\n   -Tn     Trash n samples from each event                        (" + std::string(skip) + ")"
         "\r\n   -Vc     Verbose message output: Y, +, N or -                   (ENABLED)"
         "\r\n\nSwitches may appear anywhere on the command line."
         "\r\nArguments and switches are NOT case sensitive."
         "\r\n";
}

class Cli : public testing::Test {
 protected:
  e2e::TempDir tmp;
  std::string empty_input() {
    const std::string p = tmp / "empty.pkt";
    e2e::write_packets(p, {});
    return p;
  }
};

TEST_F(Cli, UsageErrorsPrintTheUsageAndExit2BeforeAnyFileIsMade) {
  const std::string in = empty_input();
  const std::vector<std::vector<std::string>> cases = {
      {}, {"-D", in}, {"-DX", in}, {"-P5", in}, {"-P-1", in}, {"-P65541", in}, {in, "?x"}, {in, tmp.str(), "third"},
      {"-", in}, {"-Z", in}, {"-N3", in}, {"-LY"}, {"-T7", "-DX", in},  // the usage shows the skip count read
  };
  for (const auto& args : cases) {
    const auto r = run(args, tmp.str());
    EXPECT_EQ(r.status, 2) << testing::PrintToString(args);
    EXPECT_EQ(r.out, kBanner + usage_text(args.size() == 3 && args[0] == "-T7" ? "7" : "0"))
        << testing::PrintToString(args);
  }
  EXPECT_EQ(e2e::list_files(tmp.str()), std::vector<std::string>{"empty.pkt"});
}

// The echo line for a label, as printed on the console.
std::string echo_value(const std::string& out, const std::string& label) {
  const auto at = out.find(label + " : ");
  if (at == std::string::npos) return "<missing>";
  const auto from = at + label.size() + 3;
  return out.substr(from, out.find('\n', from) - from);
}

// Switch values, base names, the output directory and the INI file, as the run echoes them.
TEST_F(Cli, SettingsAsEchoed) {
  for (const char* d : {"v.2/raw", "out"}) std::filesystem::create_directories(tmp / d);
  for (const char* name : {"e", "run.01.pkt", "v.2/raw/day", "lmu.ini", "my.ini"}) e2e::write_packets(tmp / name, {});
  const std::string t = tmp.str(), my = tmp / "my.ini", none = tmp / "none.ini";
  const struct { std::vector<std::string> args; std::string label, want; const char* lmu = nullptr; } cases[] = {
      {{"-dy", "e"}, "Log DT Blks", "YES"}, {{"-DYes", "-d-", "e"}, "Log DT Blks", "NO"},
      {{"-Pabc", "e"}, "Path Option", "0"}, {{"-P4", "e"}, "Path Option", "4"},
      // The path option keeps the low 16 bits of the number it is given.
      {{"-P65539", "e"}, "Path Option", "3"}, {{"-P131072", "e"}, "Path Option", "0"},
      {{"-P-65533", "e"}, "Path Option", "3"},
      {{"-S0x10", "e"}, "Max Samples", "16"}, {{"-S010", "e"}, "Max Samples", "8"},
      {{"-S-5", "e"}, "Max Samples", "4294967291"}, {{"-S99999999999", "e"}, "Max Samples", "4294967295"},
      {{"-S", "e"}, "Max Samples", "0"}, {{"-T 25", "e"}, "Skip Samples", "25"},
      {{"-R50", "e"}, "Sample Rate", "50.0000"}, {{"-R1/ 4", "e"}, "Sample Rate", "0.2500"},
      {{"-R1/4", "e"}, "Sample Rate", "0.2500"}, {{"-R0x10", "e"}, "Sample Rate", "0.0000"},
      {{"-R", "e"}, "Sample Rate", "0.0000"}, {{"-R5/ 0", "e"}, "Sample Rate", "5.0000"},  // a zero divisor: ignored
      {{"-GE", "e"}, "Gather", "YES"}, {{"-gr", "e"}, "Gather", "YES"}, {{"-GS", "e"}, "Gather", "YES"},
      {{"-F-anything", "e"}, "Gather", "NO"},
      // Gathering keeps the trace header, whichever switch comes first.
      {{"-HN", "e"}, "trace Hdr", "NO"}, {{"-G+", "-HN", "e"}, "trace Hdr", "YES"},
      {{"-HN", "-G+", "e"}, "trace Hdr", "YES"}, {{"-G+", "-GN", "-HN", "e"}, "trace Hdr", "NO"},
      {{"-Ni", "e"}, "Name Option", "Unit ID"}, {{"-NS", "e"}, "Name Option", "Station"},
      {{"-LN", "e"}, "Log enable", "NO"}, {{"-Q+", "e"}, "QCC enable", "YES"},
      // The base name loses its directory and its last extension only; the output path ends in one "/"
      // and is the working directory by default.
      {{t + "/run.01.pkt", "out"}, "Log File", "out/run.01.lml"},
      {{"./v.2/raw/day", "out/"}, "Log File", "out/day.lml"},
      {{"e"}, "QCC File", t + "/e.qcc"},
      // The INI file of the working directory, unless LMU names one (there or not).
      {{"e"}, "INI File", t + "/lmu.ini"}, {{"e"}, "INI File", my, my.c_str()},
      {{"e"}, "INI File", none + " - not found; using defaults", none.c_str()},
  };
  for (const auto& c : cases)
    EXPECT_EQ(echo_value(run(c.args, t, c.lmu).out, c.label), c.want) << testing::PrintToString(c.args);
}

TEST_F(Cli, EmptyInputEndsWithStatus1AndAHeaderOnlyRunLog) {
  std::filesystem::create_directories(tmp / "out");
  const std::string in = empty_input();
  const auto r = run({in, "out", "-Q+"}, tmp.str());
  EXPECT_EQ(r.status, 1);
  const std::string echo =
      "\n\n     Input File : " + in + "\n       INI File : " + std::filesystem::path(LM_ASC_BIN).parent_path().string() +
      "/lmu.ini - not found; using defaults\n  Original Path : " + tmp.str() +
      "\n    Output Path : out/\n    Path Option : 0\n    Name Option : Auto\n         Gather : NO"
      "\n      trace Hdr : YES\n     Log enable : YES\n    Log DT Blks : NO\n       Log File : out/empty.lml"
      "\n     QCC enable : YES\n       QCC File : out/empty.qcc\n    Sample Rate : 100.0000"
      "\n    Max Samples : 4294967295\n   Skip Samples : 0\n      TEMP File : empty"
      "\n\nPress CTRL-BRK or CTRL-C to abort.\n";
  EXPECT_EQ(r.out, kBanner + echo);
  const std::string settings = echo.substr(0, echo.find("\n      TEMP File"));
  std::string crlf = "LM_ASC - Version mrg02   \r\nSystem time: <time>";
  for (char ch : settings) crlf += ch == '\n' ? std::string("\r\n") : std::string(1, ch);
  crlf += "\r\n   Command Line : " + std::string(LM_ASC_BIN) + " " + in + " out -Q+\r\n\r\n";
  EXPECT_EQ(e2e::mask_time(e2e::read_file(tmp / "out/empty.lml")), crlf);
}

TEST_F(Cli, FatalSetUpFailures) {
  const std::string in = empty_input(), d125(125, 'd'), d121(121, 'u'), d122(122, 'u');
  const std::string long_in = tmp.str() + "/" + std::string(140, 'a') + ".pkt";
  for (const auto& d : {d125, d121, d122, std::string("dir.pkt"), std::string("log/empty.lml")})
    std::filesystem::create_directories(tmp / d);
  e2e::write_packets(tmp / "u.pkt", {pktkit::make_header("SH", 1, {}, 1)});
  const struct { std::vector<std::string> args; int status; std::string end; bool before_echo; } cases[] = {
      {{in, "no/such/dir"}, 10, "\nUnable to change to directory 'no/such/dir'", true},
      // A path longer than its buffer is refused as a file that cannot be opened, before any file is made.
      {{long_in}, 20, "\nFile open error for '" + long_in + "'", true},
      {{in, d125}, 20, "\nFile open error for '" + d125 + "/empty.lml'", true},
      {{in, "log"}, 20, "\nFile open error for 'log/empty.lml'", true},  // a directory in the run log's place
      // A unit file path of 132 characters still fits; one more does not.
      {{"u.pkt", d121, "-VN"}, 0, "\n", false},
      {{"u.pkt", d122, "-VN"}, 20, "\nFile open error for '" + d122 + "/ID0001.lml'", false},
      {{"dir.pkt", "-LN"}, 21, "\nFile read error for 'dir.pkt'", false},  // reading a directory fails
  };
  for (const auto& c : cases) {
    const auto r = run(c.args, tmp.str());
    EXPECT_EQ(r.status, c.status) << c.end;
    if (c.before_echo) EXPECT_EQ(r.out, kBanner + c.end);
    else EXPECT_TRUE(r.out.ends_with(c.end)) << r.out;
  }
}

}  // namespace
// The trace-file reader: headers and sample bodies as lm_asc writes them, and broken files. An empty
// file, a non-numeric sample and a trailing header alone are covered by lm_plot_run_test.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "lm_plot/trace_reader.hpp"
#include "support/e2e.hpp"

namespace {

using lmplot::TraceHeader;
using lmplot::TraceReader;

const std::string kHead =
    "$ChnID=9A3F:0001:01:02\r\n$Station=PIER1\r\n$Samples=3         \r\n$Rate=100.0000\r\n"
    "$Time=2009:032:14:05:30.250\r\n$TimeQual=0 \r\n$BitWeight=1.589 uV\r\n$Gain= 8.000\r\n"
    "$SensorVPU= 1.250 ???             \r\n$LLA=34.052 -118.244   71.0\r\n";

// Everything the reader delivered, one line per trace, then "error: ..." with the path cut off.
std::string read_all(const std::string& path) {
  TraceReader r(path);
  std::string s;
  TraceHeader h;
  TraceReader::Next n;
  while ((n = r.next_header(h)) == TraceReader::Next::Item) {
    char head[200];
    std::snprintf(head, sizeof head, "%04X:%u:%u:%u '%s' '%s' n=%lld rate=%g t=%lld:", h.unit, h.event, h.stream,
                  h.channel, h.station.c_str(), h.seed.c_str(), h.declared, h.rate, h.has_time ? h.start_ms : -1);
    s += head;
    std::int32_t v;
    while ((n = r.next_sample(v)) == TraceReader::Next::Item) s += " " + std::to_string(v);
    s += "\n";
    if (n == TraceReader::Next::Error) break;
  }
  if (n == TraceReader::Next::Error) s += "error: " + r.error().substr(path.size()) + "\n";
  return s;
}

struct Case {
  const char* name;
  std::string text;
  const char* expected;
};

const std::string kChn = "$ChnID=0A2B:0007:02:11\n";
const std::string kLong(300, '1');

const Case kCases[] = {
    {"lm_asc trace", kHead + "-48\r\n714\r\n0\r\n",
     "9A3F:1:1:2 'PIER1' '' n=3 rate=100 t=1233497130250: -48 714 0\n"},
    {"bare newlines, no final newline, leap-year day 366", kChn + "$Time=2000:366:23:59:59.999\n5\n-6",
     "0A2B:7:2:11 '' '' n=-1 rate=0 t=978307199999: 5 -6\n"},
    {"gathered traces, the first without samples", kHead + kChn + "$Rate=0.0000\n$SEED=HHZ\n1\n" + kHead + "2\n",
     "9A3F:1:1:2 'PIER1' '' n=3 rate=100 t=1233497130250:\n"
     "0A2B:7:2:11 '' 'HHZ' n=-1 rate=0 t=-1: 1\n"
     "9A3F:1:1:2 'PIER1' '' n=3 rate=100 t=1233497130250: 2\n"},
    {"a rate no recorder has", kChn + "$Rate=20000000\n", "0A2B:7:2:11 '' '' n=-1 rate=0 t=-1:\n"},
    {"32-bit limits", kChn + "-2147483648\n+2147483647\n", "0A2B:7:2:11 '' '' n=-1 rate=0 t=-1: -2147483648 2147483647\n"},
    {"no header", "12\n13\n", "error: :1: no trace header ($ChnID line expected)\n"},
    {"blank sample line", kChn + "1\n\n2\n", "0A2B:7:2:11 '' '' n=-1 rate=0 t=-1: 1\nerror: :3: not a sample value\n"},
    {"NUL inside a sample", kChn + std::string("1\0" "2\n", 4), "0A2B:7:2:11 '' '' n=-1 rate=0 t=-1:\nerror: :2: not a sample value\n"},
    {"sample beyond 32 bits", kChn + "2147483648\n", "0A2B:7:2:11 '' '' n=-1 rate=0 t=-1:\nerror: :2: not a sample value\n"},
    {"line too long", kChn + "1\n" + kLong + "\n", "0A2B:7:2:11 '' '' n=-1 rate=0 t=-1: 1\nerror: :3: line too long\n"},
    {"next header not led by $ChnID", kChn + "1\n$Station=X\n",
     "0A2B:7:2:11 '' '' n=-1 rate=0 t=-1: 1\nerror: :3: trace header does not begin with $ChnID\n"},
    {"unit not hexadecimal", "$ChnID=9A3G:0001:01:01\n", "error: :1: malformed $ChnID (expected UUUU:EEEE:SS:CC)\n"},
    {"channel missing", "$ChnID=9A3F:0001:01\n", "error: :1: malformed $ChnID (expected UUUU:EEEE:SS:CC)\n"},
    {"rate not a number", kChn + "$Rate=fast\n", "error: :2: malformed $Rate\n"},
    {"count not a number", kChn + "$Samples=many\n", "error: :2: malformed $Samples\n"},
    {"time cut short", kChn + "$Time=2009:032:14:05\n", "error: :2: malformed $Time (expected YYYY:DDD:HH:MM:SS.mmm)\n"},
    {"day of year 400", kChn + "$Time=2009:400:14:05:30.250\n",
     "error: :2: malformed $Time (expected YYYY:DDD:HH:MM:SS.mmm)\n"},
    {"header line without '='", kChn + "$Station\n", "error: :2: header line without '='\n"},
};

TEST(LmPlotReader, HeadersAndBodies) {
  e2e::TempDir dir;
  for (const Case& c : kCases) {
    const std::string path = dir / "t.atr";
    std::ofstream(path, std::ios::binary) << c.text;
    EXPECT_EQ(read_all(path), c.expected) << c.name;
  }
  EXPECT_EQ(read_all(dir / "missing.atr"), "error: : cannot open: No such file or directory\n");
}

}  // namespace

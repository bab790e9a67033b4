// lm_plot run in process: events from trace and gathered files, their labels and picture names, broken
// inputs, the envelope of a long trace read back from the picture.
#include <cairo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "lm_plot/draw.hpp"
#include "lm_plot/plot_run.hpp"
#include "support/e2e.hpp"

namespace {

struct Plot {
  int status;
  std::string out, err;
};

Plot plot(const std::vector<std::string>& args) {
  char *ob = nullptr, *eb = nullptr;
  std::size_t on = 0, en = 0;
  std::FILE* o = open_memstream(&ob, &on);
  std::FILE* e = open_memstream(&eb, &en);
  Plot p{lmplot::run(args, o, e), "", ""};
  std::fclose(o);
  std::fclose(e);
  p.out.assign(ob, on);
  p.err.assign(eb, en);
  std::free(ob);
  std::free(eb);
  return p;
}

// A trace file as lm_asc writes it.
void write_trace(const std::string& path, const char* id, const char* rate, const std::vector<std::int32_t>& v,
                 long declared = -1) {
  std::ofstream f(path, std::ios::binary | std::ios::app);
  char head[400];
  std::snprintf(head, sizeof head,
                "$ChnID=%s\r\n$Station=PIER1\r\n$Samples=%-10lu\r\n$Rate=%s\r\n$Time=2009:032:14:05:30.250\r\n"
                "$TimeQual=0 \r\n$BitWeight=1.589 uV\r\n$Gain= 1.000\r\n$SensorVPU= 1.250 ???             \r\n"
                "$LLA=34.052 -118.244   71.0\r\n",
                id, declared < 0 ? v.size() : static_cast<unsigned long>(declared), rate);
  f << head;
  for (auto x : v) f << x << "\r\n";
}

// n samples of a small wobble, then `hits` copies of `limit`.
std::vector<std::int32_t> wobble(std::size_t n, std::int32_t limit = 0, std::size_t hits = 0) {
  std::vector<std::int32_t> v;
  for (std::size_t i = 0; i < n; ++i) v.push_back(static_cast<std::int32_t>(i % 13) - 6);
  v.insert(v.end(), hits, limit);
  return v;
}

TEST(LmPlotRun, EventsLabelsAndBrokenFiles) {
  e2e::TempDir dir;
  std::filesystem::create_directory(dir / "pics");
  const std::string stem = dir / "2009032140530250_PIER1_1_";
  struct { const char* chn; std::vector<std::int32_t> v; long declared; } traces[] = {
      {"3", wobble(90, 32767, 10), -1},     // clipped at the 16-bit limit
      {"1", wobble(100), -1},               // fine
      {"2", std::vector<std::int32_t>(100, 5), -1},
      {"4", wobble(50), -1},                // ends early
      {"5", wobble(95, -8388608, 5), -1},   // clipped at the 24-bit limit
      {"6", wobble(96, 32767, 4), -1},      // a few hits only
      {"7", wobble(100), 200},              // fewer than its header promised
      {"8", wobble(99), -1},                // one sample short is within tolerance
  };
  std::vector<std::string> args = {"-o", dir / "pics"};
  for (const auto& t : traces) {
    write_trace(stem + t.chn + ".atr", (std::string("9A3F:0001:01:0") + t.chn).c_str(), "100.0000", t.v, t.declared);
    args.push_back(stem + t.chn + ".atr");
  }
  write_trace(dir / "g.adt", "0A2B:0002:01:02", "0.0000", {3, 1, 4});
  write_trace(dir / "g.adt", "0A2B:0002:01:01", "0.0000", {});
  std::ofstream(dir / "bad.atr") << "$ChnID=9A3F:0001:01:09\n1\nx\n";
  std::ofstream(dir / "empty.atr") << "";
  args.insert(args.end(), {dir / "g.adt", dir / "bad.atr", dir / "empty.atr"});
  // A second conversion into the same directory repeats every channel under lettered names: a picture
  // of its own. A picture whose name is taken in this run is numbered.
  for (const char* name : {"x_1A1", "x_1A2", "x_1_1", "x_1_2"}) {
    write_trace(dir / name + ".atr", (std::string("9A3F:0001:01:0") + name[4]).c_str(), "100.0000", {1, 2});
    args.push_back(dir / name + ".atr");
  }
  std::filesystem::create_directories(dir / "a");
  write_trace(dir / "a/g.adt", "9A3F:0002:01:01", "100.0000", {1, 2});
  args.push_back(dir / "a/g.adt");

  const Plot p = plot(args);
  const std::string start = ", start 2009-02-01 14:05:30.250 UTC\n";
  EXPECT_EQ(p.status, 1);
  EXPECT_EQ(p.out, dir / "pics/2009032140530250_PIER1_1.png" +
                       ": 8 traces, start 2009-02-01 14:05:30.250 UTC; channel 2 flat; channel 3 clipped; "
                       "channel 4 short; channel 5 clipped; channel 7 short\n" +
                       dir / "pics/g.png" + ": 2 traces, by sample index (no sample rate); channel 1 no samples\n" +
                       dir / "pics/x.png" + ": 2 traces" + start + dir / "pics/x_1.png" + ": 2 traces" + start +
                       dir / "pics/g-2.png" + ": 1 trace" + start);
  EXPECT_EQ(p.err, "lm_plot: " + dir / "empty.atr" + ": empty file\nlm_plot: " + dir / "bad.atr" +
                       ":3: not a sample value\n");
  cairo_surface_t* png = cairo_image_surface_create_from_png((dir / "pics/2009032140530250_PIER1_1.png").c_str());
  EXPECT_EQ(cairo_image_surface_get_width(png), 1600);
  EXPECT_NEAR(cairo_image_surface_get_height(png), 8 * 250, 100);
  cairo_surface_destroy(png);

  const Plot svg = plot({"--svg", dir / "g.adt"});
  EXPECT_EQ(svg.out, dir / "g.svg" + ": 2 traces, by sample index (no sample rate); channel 1 no samples\n");
  EXPECT_EQ(e2e::read_file(dir / "g.svg").substr(0, 40).find("<?xml"), 0u);
}

TEST(LmPlotRun, UsageErrors) {
  const struct { std::vector<std::string> args; const char* err_start; } cases[] = {
      {{}, "usage: lm_plot [-o DIR] [--common] [--svg] FILE..."},
      {{"-x", "a.atr"}, "lm_plot: unknown option -x\nusage:"},
      {{"-o", "/nonexistent/dir", "a.atr"}, "lm_plot: no such directory: /nonexistent/dir\n"},
      {{"a.atr", "-o"}, "lm_plot: unknown option -o\n"},
  };
  for (const auto& c : cases) {
    const Plot p = plot(c.args);
    EXPECT_EQ(p.status, 2) << c.err_start;
    EXPECT_EQ(p.err.substr(0, std::string(c.err_start).size()), c.err_start);
    EXPECT_EQ(p.out, "");
  }
}

// Rows [top, bottom] of each vertical run of trace-coloured pixels in column x.
std::vector<std::pair<int, int>> bands(cairo_surface_t* s, int x) {
  const unsigned char* data = cairo_image_surface_get_data(s);
  const int stride = cairo_image_surface_get_stride(s), h = cairo_image_surface_get_height(s);
  std::vector<std::pair<int, int>> runs;
  for (int y = 0; y < h; ++y) {
    const auto px = *reinterpret_cast<const std::uint32_t*>(data + y * stride + 4 * x) & 0xFFFFFF;
    if (px != lmplot::kTraceRgb) continue;
    if (!runs.empty() && runs.back().second == y - 1) runs.back().second = y;
    else runs.emplace_back(y, y);
  }
  return runs;
}

// Two long sines of period 40 samples, so that both reach their amplitude exactly: 4000 around 0, and
// 1000 around 2000. On a common scale the second fills rows 1/8 to 3/8 of the first one's height.
TEST(LmPlotRun, EnvelopeOfLongSinesReachesTheirExtremes) {
  e2e::TempDir dir;
  std::vector<std::int32_t> big, small;
  for (int i = 0; i < 300000; ++i) {
    const double s = std::sin(2 * M_PI * i / 40.0);
    big.push_back(static_cast<std::int32_t>(std::lround(4000 * s)));
    small.push_back(static_cast<std::int32_t>(std::lround(2000 + 1000 * s)));
  }
  write_trace(dir / "e_1_1.atr", "9A3F:0003:01:01", "100.0000", big);
  write_trace(dir / "e_1_2.atr", "9A3F:0003:01:02", "100.0000", small);
  int panel = 0;  // rows from one panel to the next, found where each trace fills its own panel
  for (bool common : {false, true}) {
    std::vector<std::string> args = {dir / "e_1_2.atr", dir / "e_1_1.atr"};
    if (common) args.push_back("--common");
    ASSERT_EQ(plot(args).status, 0);
    cairo_surface_t* png = cairo_image_surface_create_from_png((dir / "e_1.png").c_str());
    const auto ref = bands(png, 800);
    ASSERT_EQ(ref.size(), 2u);
    const auto [t, b] = ref[0];
    const double h = b - t;
    if (!common) panel = ref[1].first - t;
    if (common) {
      EXPECT_NEAR(ref[1].first - panel, t + h / 8, 1);
      EXPECT_NEAR(ref[1].second - panel, t + 3 * h / 8, 1);
    } else {
      EXPECT_EQ(ref[1].second - ref[1].first, b - t);
    }
    // Every column the trace covers holds several periods, so reaches both extremes: no gaps, no dents.
    int first = -1, last = -1, full = 0;
    for (int x = 0; x < cairo_image_surface_get_width(png); ++x) {
      const auto c = bands(png, x);
      if (c.empty()) continue;
      if (first < 0) first = x;
      last = x;
      full += c.size() == 2 && c[0] == ref[0] && c[1] == ref[1];
    }
    EXPECT_GT(last - first, 1000);
    EXPECT_EQ(full, last - first + 1) << "common " << common;
    cairo_surface_destroy(png);
  }
}

}  // namespace

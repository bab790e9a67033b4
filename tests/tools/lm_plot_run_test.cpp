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

struct Plot { int status; std::string out, err; };

Plot plot(const std::vector<std::string>& args) {
  char *ob = nullptr, *eb = nullptr;
  std::size_t on = 0, en = 0;
  std::FILE *o = open_memstream(&ob, &on), *e = open_memstream(&eb, &en);
  const int status = lmplot::run(args, o, e);
  std::fclose(o);
  std::fclose(e);
  Plot p{status, std::string(ob, on), std::string(eb, en)};
  std::free(ob);
  std::free(eb);
  return p;
}

// A trace file as lm_asc writes it.
void write_trace(const std::string& path, const std::string& id, const std::vector<std::int32_t>& v,
                 long declared = -1, const char* rate = "100.0000") {
  std::ofstream f(path, std::ios::binary | std::ios::app);
  f << e2e::TraceHeader{.chn_id = id, .station = "PIER1",
                        .samples = declared < 0 ? v.size() : static_cast<unsigned long>(declared), .rate = rate,
                        .time = "2009:032:14:05:30.250", .time_qual = "0 ", .bit_weight = "1.589 uV",
                        .vpu = " 1.250", .lla = "34.052 -118.244   71.0"}
           .text();
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
  for (const char* d : {"pics", "a"}) std::filesystem::create_directory(dir / d);
  const std::string stem = dir / "2009032140530250_PIER1_1_", id = "9A3F:0001:01:0";
  // g.adt has no rate. A second conversion into the same directory repeats channels under lettered names:
  // a picture of its own. A picture whose name is taken in this run is numbered.
  struct File { std::string path, id; std::vector<std::int32_t> v; long declared = -1; const char* rate = "100.0000"; };
  const File files[] = {
      {stem + "3.atr", id + "3", wobble(90, 32767, 10)},    // clipped at the 16-bit limit
      {stem + "2.atr", id + "2", std::vector<std::int32_t>(100, 5)},
      {stem + "4.atr", id + "4", wobble(50)},               // ends early
      {stem + "5.atr", id + "5", wobble(95, -8388608, 5)},  // clipped at the 24-bit limit
      {stem + "6.atr", id + "6", wobble(96, 32767, 4)},     // a few hits only
      {stem + "7.atr", id + "7", wobble(100), 200},         // fewer than its header promised
      {stem + "8.atr", id + "8", wobble(99)},               // one sample short is within tolerance
      {dir / "g.adt", "0A2B:0002:01:02", {3, 1, 4}, -1, "0.0000"},
      {dir / "g.adt", "0A2B:0002:01:01", {}, -1, "0.0000"},
      {dir / "x_1A2.atr", id + "2", {1, 2}}, {dir / "x_1A3.atr", id + "3", {1, 2}},
      {dir / "a/g.adt", "9A3F:0002:01:01", {1, 2}},
  };
  std::vector<std::string> args = {"-o", dir / "pics"};
  for (const auto& f : files) {
    write_trace(f.path, f.id, f.v, f.declared, f.rate);
    if (args.back() != f.path) args.push_back(f.path);
  }
  // A broken trace file does not keep the rest of its event from the picture.
  std::ofstream(dir / "bad.atr") << "$ChnID=9A3F:0001:01:09\n1\nx\n";
  std::ofstream(dir / "empty.atr") << "";
  args.insert(args.end(), {dir / "bad.atr", dir / "empty.atr"});

  const Plot p = plot(args);
  const std::string start = ", start 2009-02-01 14:05:30.250 UTC\n";
  EXPECT_EQ(p.status, 1);
  EXPECT_EQ(p.out, dir / "pics/2009032140530250_PIER1_1.png" +
                       ": 7 traces, start 2009-02-01 14:05:30.250 UTC; channel 2 flat; channel 3 clipped; "
                       "channel 4 short; channel 5 clipped; channel 7 short\n" +
                       dir / "pics/g.png" + ": 2 traces, by sample index (no sample rate); channel 1 no samples\n" +
                       dir / "pics/x.png" + ": 2 traces" + start + dir / "pics/g-2.png" + ": 1 trace" + start);
  EXPECT_EQ(p.err, "lm_plot: " + dir / "empty.atr" + ": empty file\nlm_plot: " + dir / "bad.atr" +
                       ":3: not a sample value\n");
  cairo_surface_t* png = cairo_image_surface_create_from_png((dir / "pics/2009032140530250_PIER1_1.png").c_str());
  EXPECT_NEAR(cairo_image_surface_get_height(png), 7 * 250, 100);  // a panel of 250 rows per trace
  cairo_surface_destroy(png);

  const Plot svg = plot({"--svg", dir / "g.adt"});
  EXPECT_EQ(svg.out, dir / "g.svg" + ": 2 traces, by sample index (no sample rate); channel 1 no samples\n");
  EXPECT_TRUE(e2e::read_file(dir / "g.svg").starts_with("<?xml"));
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
// 1000 around 2000, in panels 250 rows apart. Each on its own scale fills its panel alike; on a common
// scale the second fills rows 1/8 to 3/8 of the first one's height.
TEST(LmPlotRun, EnvelopeOfLongSinesReachesTheirExtremes) {
  e2e::TempDir dir;
  std::vector<std::int32_t> big, small;
  for (int i = 0; i < 300000; ++i) {
    const double s = std::sin(2 * M_PI * i / 40.0);
    big.push_back(static_cast<std::int32_t>(std::lround(4000 * s)));
    small.push_back(static_cast<std::int32_t>(std::lround(2000 + 1000 * s)));
  }
  write_trace(dir / "e_1_1.atr", "9A3F:0003:01:01", big);
  write_trace(dir / "e_1_2.atr", "9A3F:0003:01:02", small);
  for (bool common : {false, true}) {
    std::vector<std::string> args = {dir / "e_1_2.atr", dir / "e_1_1.atr"};
    if (common) args.push_back("--common");
    ASSERT_EQ(plot(args).status, 0);
    cairo_surface_t* png = cairo_image_surface_create_from_png((dir / "e_1.png").c_str());
    const auto ref = bands(png, 800);
    ASSERT_EQ(ref.size(), 2u);
    const auto [t, b] = ref[0];
    EXPECT_NEAR(ref[1].first - 250, common ? t + (b - t) / 8.0 : t, 1) << "common " << common;
    EXPECT_NEAR(ref[1].second - 250, common ? t + 3 * (b - t) / 8.0 : b, 1) << "common " << common;
    // Each of the 1360 columns of the plot area holds several periods, so reaches both extremes.
    int full = 0;
    for (int x = 0; x < cairo_image_surface_get_width(png); ++x) full += bands(png, x) == ref;
    EXPECT_EQ(full, 1360) << "common " << common;
    cairo_surface_destroy(png);
  }
}

}  // namespace

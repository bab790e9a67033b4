#include "lm_plot/draw.hpp"

#include <cairo-svg.h>
#include <cairo.h>

#include "base/file_util.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace lmplot {

namespace {

constexpr int kWidth = 1600, kPanelH = 250, kTitleH = 40, kAxisH = 50;
constexpr int kPlotX = 220, kPlotW = 1360, kPanelPad = 12;
constexpr int kPlotH = kPanelH - 2 * kPanelPad;

void rgb(cairo_t* cr, unsigned c) {
  cairo_set_source_rgb(cr, (c >> 16 & 0xFF) / 255.0, (c >> 8 & 0xFF) / 255.0, (c & 0xFF) / 255.0);
}

void font(cairo_t* cr, double size, bool bold) {
  cairo_select_font_face(cr, "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                         bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(cr, size);
}

void text(cairo_t* cr, double x, double y, const char* s, double size = 13, bool bold = false) {
  font(cr, size, bold);
  cairo_move_to(cr, x, y);
  cairo_show_text(cr, s);
}

// Centred on x, kept inside the picture.
void centred_text(cairo_t* cr, double x, double y, const char* s) {
  cairo_text_extents_t e;
  font(cr, 12, false);
  cairo_text_extents(cr, s, &e);
  text(cr, std::clamp(x - e.x_advance / 2, 2.0, kWidth - e.x_advance - 2), y, s, 12);
}

// The smallest round step giving at most ten ticks over `span` (milliseconds, or samples).
double tick_step(double span, bool by_time) {
  static constexpr double kTimeSteps[] = {1, 2, 5, 10, 20, 50, 100, 200, 500, 1e3, 2e3, 5e3, 1e4, 15e3, 3e4, 6e4,
                                          12e4, 3e5, 6e5, 9e5, 18e5, 36e5, 72e5, 108e5, 216e5, 432e5, 864e5};
  if (by_time) {
    for (double s : kTimeSteps)
      if (span / s <= 10) return s;
    return 864e5 * std::ceil(span / 10 / 864e5);
  }
  for (double mag = 1;; mag *= 10)
    for (double m : {1.0, 2.0, 5.0})
      if (span / (m * mag) <= 10) return m * mag;
}

void draw_axis(cairo_t* cr, const Axis& a, int panels) {
  const int bottom = kTitleH + panels * kPanelH;
  const double span = a.by_time ? a.span * 1000 : a.span, step = tick_step(span, a.by_time);
  const double origin = a.by_time ? static_cast<double>(a.t0_ms) : 0;
  for (double t = std::ceil(origin / step) * step; t <= origin + span + 1e-9; t += step) {
    const double x = std::floor(kPlotX + (t - origin) / span * kPlotW) + 0.5;
    rgb(cr, 0xDDDDDD);
    cairo_move_to(cr, x, kTitleH);
    cairo_line_to(cr, x, bottom + 6);
    cairo_stroke(cr);
    char label[64];
    if (a.by_time) {
      Utc u = utc_text(static_cast<long long>(t));
      if (step >= 1000) u.clock[8] = '\0';  // whole seconds need no milliseconds
      std::snprintf(label, sizeof label, "%s", u.clock);
    } else {
      std::snprintf(label, sizeof label, "%.0f", t);
    }
    rgb(cr, 0x333333);
    centred_text(cr, x, bottom + 22, label);
  }
  text(cr, kPlotX + kPlotW - 120, bottom + 42, a.by_time ? "time (UTC)" : "sample index", 12);
}

void draw_title(cairo_t* cr, const Event& ev, const Axis& a) {
  const TraceHeader& h = ev.traces.front()->hdr;
  char who[32], when[160] = "", line[256];
  if (h.station.empty()) std::snprintf(who, sizeof who, "unit %04X", h.unit);
  else std::snprintf(who, sizeof who, "%s", h.station.c_str());
  if (a.by_time) {
    const Utc u = utc_text(a.t0_ms);
    std::snprintf(when, sizeof when, "start %s %s UTC", u.date, u.clock);
  } else {
    std::snprintf(when, sizeof when, "plotted by sample index: %s", a.why);
  }
  std::snprintf(line, sizeof line, "%s    event %u    stream %u    %s", who, h.event, h.stream, when);
  rgb(cr, 0x000000);
  text(cr, 12, 26, line, 16, true);
}

struct Scale {
  double lo, hi;
  int top;  // first pixel row of the plot area
  int row(double v) const {
    if (hi <= lo) return top + (kPlotH - 1) / 2;
    return top + static_cast<int>(std::lround((hi - v) / (hi - lo) * (kPlotH - 1)));
  }
};

void draw_labels(cairo_t* cr, const Trace& t, int top) {
  char s[64];
  rgb(cr, 0x000000);
  std::snprintf(s, sizeof s, "Ch %u%s%s", t.hdr.channel, t.hdr.seed.empty() ? "" : "  ", t.hdr.seed.c_str());
  text(cr, 12, top + 30, s, 15, true);
  if (t.count > 0) {
    std::snprintf(s, sizeof s, "max %ld", static_cast<long>(t.max));
    text(cr, 12, top + 56, s);
    std::snprintf(s, sizeof s, "min %ld", static_cast<long>(t.min));
    text(cr, 12, top + 76, s);
  }
  std::snprintf(s, sizeof s, "%lld sample%s", t.count, t.count == 1 ? "" : "s");
  text(cr, 12, top + 96, s);
  rgb(cr, kWarnRgb);
  text(cr, 12, top + 124, flag_words(t.flags).c_str(), 15, true);
}

// Samples further apart than a pixel: a line through them.
void draw_line(cairo_t* cr, const Trace& t, const Axis& a, const Scale& sc) {
  const double x0 = kPlotX + trace_start(a, t) / a.span * kPlotW, dx = sample_step(a, t) / a.span * kPlotW;
  cairo_set_line_width(cr, 1.2);
  cairo_new_path(cr);  // text leaves a current point behind
  for (std::size_t i = 0; i < t.env.size(); ++i) cairo_line_to(cr, x0 + i * dx, sc.row(t.env.hi(i)) + 0.5);
  if (t.count == 1) cairo_rectangle(cr, x0 - 1, sc.row(t.env.hi(0)) - 0.5, 2, 2);
  cairo_stroke(cr);
}

// Denser samples: per pixel column the range of the buckets that begin in it, joined to its neighbour.
void draw_envelope(cairo_t* cr, const Trace& t, const Axis& a, const Scale& sc) {
  std::array<std::int32_t, kPlotW> lo, hi;
  std::array<bool, kPlotW> seen{};
  const double x0 = trace_start(a, t) / a.span * kPlotW, dx = sample_step(a, t) * t.env.per_bucket() / a.span * kPlotW;
  for (std::size_t i = 0; i < t.env.size(); ++i) {
    const int c = static_cast<int>(std::clamp(x0 + i * dx, 0.0, kPlotW - 1.0));
    lo[c] = seen[c] ? std::min(lo[c], t.env.lo(i)) : t.env.lo(i);
    hi[c] = seen[c] ? std::max(hi[c], t.env.hi(i)) : t.env.hi(i);
    seen[c] = true;
  }
  cairo_set_antialias(cr, CAIRO_ANTIALIAS_NONE);
  for (int c = 0; c < kPlotW; ++c) {
    if (!seen[c]) continue;
    double l = lo[c], h = hi[c];
    if (c > 0 && seen[c - 1]) l = std::min<double>(l, hi[c - 1]), h = std::max<double>(h, lo[c - 1]);
    const int top = sc.row(h), bottom = sc.row(l);
    cairo_rectangle(cr, kPlotX + c, top, 1, bottom - top + 1);
  }
  cairo_fill(cr);
  cairo_set_antialias(cr, CAIRO_ANTIALIAS_DEFAULT);
}

void draw_panel(cairo_t* cr, const Trace& t, const Axis& a, const Scale& sc, int top) {
  rgb(cr, 0xBBBBBB);
  cairo_rectangle(cr, kPlotX - 0.5, top + 0.5, kPlotW + 1, kPanelH - 1);
  cairo_stroke(cr);
  draw_labels(cr, t, top);
  if (t.count == 0) return;
  rgb(cr, t.flags & (kFlat | kClipped) ? kWarnRgb : kTraceRgb);
  const bool sparse = t.env.per_bucket() == 1 && sample_step(a, t) / a.span * kPlotW >= 1.0;
  if (sparse) draw_line(cr, t, a, sc);
  else draw_envelope(cr, t, a, sc);
}

void draw_all(cairo_t* cr, const Event& ev, const Axis& a, bool common) {
  rgb(cr, 0xFFFFFF);
  cairo_paint(cr);
  cairo_set_line_width(cr, 1);
  draw_axis(cr, a, static_cast<int>(ev.traces.size()));
  draw_title(cr, ev, a);
  double lo = ev.traces.front()->min, hi = ev.traces.front()->max;
  for (const auto& t : ev.traces)
    if (t->count > 0) lo = std::min<double>(lo, t->min), hi = std::max<double>(hi, t->max);
  for (std::size_t i = 0; i < ev.traces.size(); ++i) {
    const Trace& t = *ev.traces[i];
    const int top = kTitleH + static_cast<int>(i) * kPanelH;
    const Scale sc = common ? Scale{lo, hi, top + kPanelPad} : Scale{double(t.min), double(t.max), top + kPanelPad};
    draw_panel(cr, t, a, sc, top);
  }
}

}  // namespace

namespace {

cairo_status_t write_to(void* closure, const unsigned char* data, unsigned int length) {
  return std::fwrite(data, 1, length, static_cast<std::FILE*>(closure)) == length ? CAIRO_STATUS_SUCCESS
                                                                                : CAIRO_STATUS_WRITE_ERROR;
}

}  // namespace

std::string draw_event(const Event& ev, const Axis& axis, const DrawOptions& opt, const std::string& path) {
  if (ev.traces.empty() || ev.traces.size() > kMaxPanels) return "no picture: the event holds " + std::to_string(ev.traces.size()) + " traces (1 to 128 fit)";
  // The picture's own name is never followed if it is a link; its directory is the user's choice.
  const std::size_t slash = path.rfind('/');
  std::FILE* f = lm::fopen_below(path.c_str(), slash == std::string::npos ? 0 : slash + 1, "wb");
  if (!f) return path + ": " + std::strerror(errno);
  const int height = kTitleH + static_cast<int>(ev.traces.size()) * kPanelH + kAxisH;
  cairo_surface_t* s = opt.svg ? cairo_svg_surface_create_for_stream(write_to, f, kWidth, height)
                               : cairo_image_surface_create(CAIRO_FORMAT_RGB24, kWidth, height);
  cairo_t* cr = cairo_create(s);
  draw_all(cr, ev, axis, opt.common);
  cairo_status_t st = cairo_status(cr);
  cairo_destroy(cr);
  if (st == CAIRO_STATUS_SUCCESS && !opt.svg) st = cairo_surface_write_to_png_stream(s, write_to, f);
  cairo_surface_finish(s);
  if (st == CAIRO_STATUS_SUCCESS) st = cairo_surface_status(s);
  cairo_surface_destroy(s);
  if (std::fclose(f) != 0 && st == CAIRO_STATUS_SUCCESS) st = CAIRO_STATUS_WRITE_ERROR;
  return st == CAIRO_STATUS_SUCCESS ? "" : path + ": " + cairo_status_to_string(st);
}

}  // namespace lmplot

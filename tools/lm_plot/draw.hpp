#pragma once
// Draws one event as a picture: a title, one panel per trace stacked in channel order, a shared axis.
#include <string>

#include "lm_plot/event.hpp"

namespace lmplot {

struct DrawOptions {
  bool common = false;  // one value range for all traces
  bool svg = false;     // SVG instead of PNG
};

// Colours of a normal trace and of a flat or clipped one, 0xRRGGBB. Envelopes are drawn without
// antialiasing, in exactly these colours.
inline constexpr unsigned kTraceRgb = 0x1F4E9A;
inline constexpr unsigned kWarnRgb = 0xD03020;
// Most panels one picture holds (the drawing surface is limited to 32767 pixels).
inline constexpr std::size_t kMaxPanels = 128;

// Writes the picture to `path`; returns "" or what went wrong.
std::string draw_event(const Event& ev, const Axis& axis, const DrawOptions& opt, const std::string& path);

}  // namespace lmplot

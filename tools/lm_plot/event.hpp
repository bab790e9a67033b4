#pragma once
// An event as drawn: its traces in channel order and the time (or sample-index) axis they share.
#include <memory>
#include <string>
#include <vector>

#include "lm_plot/trace.hpp"

namespace lmplot {

struct Event {
  std::vector<std::unique_ptr<Trace>> traces;
  std::string stem;  // output path without extension
};

// Reads every trace the reader still holds into ev (the first header already read into `first`).
// False when the file broke; the traces completed before the fault stay in ev.
bool read_traces(TraceReader& r, TraceHeader first, Event& ev);

struct Axis {
  bool by_time = true;      // else by sample index
  const char* why = "";     // why not by time
  long long t0_ms = 0;      // earliest start, when by time
  double span = 1;          // seconds, or samples
};

// Sorts the traces into channel order, fixes the axis and sets each trace's flags.
Axis settle_event(Event& ev);
// Where the trace begins on the axis (seconds from t0, or 0) and how many axis units one sample takes.
double trace_start(const Axis& a, const Trace& t);
double sample_step(const Axis& a, const Trace& t);

// "YYYY-MM-DD" and "HH:MM:SS.mmm" of a UTC time in milliseconds since 1970.
struct Utc {
  char date[64], clock[64];
};
Utc utc_text(long long ms);

}  // namespace lmplot

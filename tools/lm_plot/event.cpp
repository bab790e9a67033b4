#include "lm_plot/event.hpp"

#include <algorithm>
#include <cmath>

namespace lmplot {

bool read_traces(TraceReader& r, TraceHeader first, Event& ev) {
  for (;;) {
    auto t = std::make_unique<Trace>();
    t->hdr = std::move(first);
    std::int32_t v = 0;
    TraceReader::Next n;
    while ((n = r.next_sample(v)) == TraceReader::Next::Item) t->add(v);
    if (n == TraceReader::Next::Error) return false;
    ev.traces.push_back(std::move(t));
    n = r.next_header(first);
    if (n != TraceReader::Next::Item) return n == TraceReader::Next::End;
  }
}

double trace_start(const Axis& a, const Trace& t) {
  return a.by_time ? static_cast<double>(t.hdr.start_ms - a.t0_ms) / 1000.0 : 0.0;
}

double sample_step(const Axis& a, const Trace& t) { return a.by_time ? 1.0 / t.hdr.rate : 1.0; }

Axis settle_event(Event& ev) {
  std::stable_sort(ev.traces.begin(), ev.traces.end(),
                   [](const auto& x, const auto& y) { return x->hdr.channel < y->hdr.channel; });
  Axis a;
  for (const auto& t : ev.traces) {
    if (t->hdr.rate <= 0) a.by_time = false, a.why = "no sample rate";
    else if (!t->hdr.has_time && a.by_time) a.by_time = false, a.why = "no start time";
  }
  if (a.by_time) {
    a.t0_ms = ev.traces.front()->hdr.start_ms;
    for (const auto& t : ev.traces) a.t0_ms = std::min(a.t0_ms, t->hdr.start_ms);
  }
  double end = 0;
  for (const auto& t : ev.traces)
    end = std::max(end, trace_start(a, *t) + static_cast<double>(t->count) * sample_step(a, *t));
  a.span = end > 0 ? end : 1;
  for (auto& t : ev.traces) {
    // The samples the trace would hold if it ran from its start to the end of the event.
    const double room = (end - trace_start(a, *t)) / sample_step(a, *t);
    t->flags = trace_flags(*t, static_cast<long long>(std::floor(room + 1e-6)));
  }
  return a;
}

}  // namespace lmplot

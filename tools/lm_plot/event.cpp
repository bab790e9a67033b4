#include "lm_plot/event.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

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
  if (ev.traces.empty()) return a;
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
    t->flags = trace_flags(*t, static_cast<long long>(std::clamp(std::floor(room + 1e-6), 0.0, 1e15)));
  }
  return a;
}

Utc utc_text(long long ms) {
  long long days = ms / 86400000, rest = ms % 86400000;
  if (rest < 0) rest += 86400000, --days;
  const long long z = days + 719468, era = (z >= 0 ? z : z - 146096) / 146097, doe = z - era * 146097;
  const long long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365, doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const long long mp = (5 * doy + 2) / 153, d = doy - (153 * mp + 2) / 5 + 1, m = mp < 10 ? mp + 3 : mp - 9;
  Utc u;
  std::snprintf(u.date, sizeof u.date, "%04lld-%02lld-%02lld", yoe + era * 400 + (m <= 2), m, d);
  std::snprintf(u.clock, sizeof u.clock, "%02lld:%02lld:%02lld.%03lld", rest / 3600000, rest / 60000 % 60,
                rest / 1000 % 60, rest % 1000);
  return u;
}

}  // namespace lmplot

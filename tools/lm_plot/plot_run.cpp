#include "lm_plot/plot_run.hpp"

#include <algorithm>
#include <filesystem>
#include <map>
#include <tuple>

#include "lm_plot/draw.hpp"

namespace lmplot {

namespace {

namespace fs = std::filesystem;

constexpr const char* kUsage =
    "usage: lm_plot [-o DIR] [--common] [--svg] FILE...\n"
    "  Draws each event of trace files (.atr) and gathered event files (.adt) as one picture,\n"
    "  beside its input or in DIR. --common scales all traces of an event to one range;\n"
    "  --svg writes SVG instead of PNG.\n";

struct Options {
  std::string out_dir;
  DrawOptions draw;
  std::vector<std::string> files;
};

// A picture to make: one gathered file, or the trace files of one unit, event and stream.
struct Job {
  bool gathered = false;
  std::vector<std::pair<unsigned, std::string>> files;  // channel, path
};

int parse_args(const std::vector<std::string>& args, Options& o, std::FILE* err) {
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "--common") o.draw.common = true;
    else if (a == "--svg") o.draw.svg = true;
    else if (a == "-o" && i + 1 < args.size()) o.out_dir = args[++i];
    else if (!a.empty() && a[0] == '-') return std::fprintf(err, "lm_plot: unknown option %s\n%s", a.c_str(), kUsage), 2;
    else o.files.push_back(a);
  }
  if (o.files.empty()) return std::fprintf(err, "%s", kUsage), 2;
  std::error_code ec;
  if (!o.out_dir.empty() && !fs::is_directory(o.out_dir, ec))
    return std::fprintf(err, "lm_plot: no such directory: %s\n", o.out_dir.c_str()), 2;
  return 0;
}

// Gathered files stand alone; trace files join the job of their unit, event and stream.
std::vector<Job> make_jobs(const std::vector<std::string>& files, std::FILE* err, bool& failed) {
  std::vector<Job> jobs;
  std::map<std::tuple<unsigned, unsigned, unsigned>, std::size_t> by_event;
  for (const auto& f : files) {
    if (fs::path(f).extension() == ".adt") {
      jobs.push_back(Job{true, {{0, f}}});
      continue;
    }
    TraceReader r(f);
    TraceHeader h;
    if (r.next_header(h) != TraceReader::Next::Item) {
      std::fprintf(err, "lm_plot: %s\n", r.error().c_str());
      failed = true;
      continue;
    }
    const auto [it, fresh] = by_event.try_emplace({h.unit, h.event, h.stream}, jobs.size());
    if (fresh) jobs.emplace_back();
    jobs[it->second].files.emplace_back(h.channel, f);
  }
  for (auto& j : jobs)
    std::stable_sort(j.files.begin(), j.files.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  return jobs;
}

// Beside the first input (or in the chosen directory); trace files lose their channel part.
std::string picture_path(const Job& j, const Options& o) {
  const fs::path first(j.files.front().second);
  std::string name = first.stem().string();
  const std::size_t cut = name.rfind('_');
  if (!j.gathered && cut != std::string::npos && cut > 0) name.resize(cut);
  const fs::path dir = o.out_dir.empty() ? first.parent_path() : fs::path(o.out_dir);
  return (dir / (name + (o.draw.svg ? ".svg" : ".png"))).string();
}

bool plot_job(const Job& j, const Options& o, std::FILE* out, std::FILE* err) {
  bool ok = true;
  Event ev;
  for (const auto& [chn, path] : j.files) {
    TraceReader r(path);
    TraceHeader h;
    const TraceReader::Next n = r.next_header(h);
    if (n == TraceReader::Next::Item && read_traces(r, h, ev)) continue;
    std::fprintf(err, "lm_plot: %s\n", r.error().c_str());
    ok = false;
  }
  if (ev.traces.empty()) return ok;
  const Axis axis = settle_event(ev);
  const std::string pic = picture_path(j, o);
  const std::string why = draw_event(ev, axis, o.draw, pic);
  if (!why.empty()) return std::fprintf(err, "lm_plot: %s\n", why.c_str()), false;
  std::fprintf(out, "%s: %zu traces, ", pic.c_str(), ev.traces.size());
  const Utc u = utc_text(axis.t0_ms);
  if (axis.by_time) std::fprintf(out, "start %s %s UTC", u.date, u.clock);
  else std::fprintf(out, "by sample index (%s)", axis.why);
  for (const auto& t : ev.traces)
    if (t->flags) std::fprintf(out, "; channel %u %s", t->hdr.channel, flag_words(t->flags).c_str());
  std::fprintf(out, "\n");
  return ok;
}

}  // namespace

int run(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
  Options o;
  if (const int st = parse_args(args, o, err)) return st;
  bool failed = false;
  for (const Job& j : make_jobs(o.files, err, failed)) failed |= !plot_job(j, o, out, err);
  return failed ? 1 : 0;
}

}  // namespace lmplot

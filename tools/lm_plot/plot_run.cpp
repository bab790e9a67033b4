#include "lm_plot/plot_run.hpp"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <tuple>

#include "lm_plot/draw.hpp"

namespace lmplot {

const char* const kUsage =
    "usage: lm_plot [-o DIR] [--common] [--svg] FILE...\n"
    "       lm_plot --help | --version\n"
    "  Draws each event of trace files (.atr) and gathered event files (.adt) as one picture,\n"
    "  beside its input or in DIR. --common scales all traces of an event to one range;\n"
    "  --svg writes SVG instead of PNG.\n";

namespace {

namespace fs = std::filesystem;

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

// Gathered files stand alone; trace files join the latest job of their unit, event and stream, unless it
// holds their channel already (a second conversion of the same input into the same directory).
std::vector<Job> make_jobs(const std::vector<std::string>& files, std::FILE* err, bool& failed) {
  std::vector<Job> jobs;
  std::map<std::tuple<unsigned, unsigned, unsigned>, std::size_t> by_event;  // latest job + 1
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
    std::size_t& job = by_event[{h.unit, h.event, h.stream}];
    const auto holds_channel = [&](const Job& j) {
      return std::any_of(j.files.begin(), j.files.end(), [&](const auto& x) { return x.first == h.channel; });
    };
    if (job == 0 || holds_channel(jobs[job - 1])) {
      jobs.emplace_back();
      job = jobs.size();
    }
    jobs[job - 1].files.emplace_back(h.channel, f);
  }
  for (auto& j : jobs)
    std::stable_sort(j.files.begin(), j.files.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  return jobs;
}

// Beside the first input (or in the chosen directory); trace files lose their channel part. A name this
// run has used already gets a number, so that no picture of the run replaces another.
std::string picture_path(const Job& j, const Options& o, std::set<std::string>& used) {
  const fs::path first(j.files.front().second);
  std::string name = first.stem().string();
  const std::size_t cut = name.rfind('_');
  if (!j.gathered && cut != std::string::npos && cut > 0) name.resize(cut);
  const fs::path dir = o.out_dir.empty() ? first.parent_path() : fs::path(o.out_dir);
  const char* ext = o.draw.svg ? ".svg" : ".png";
  std::string path = (dir / (name + ext)).string();
  for (int n = 2; !used.insert(path).second; ++n) path = (dir / (name + "-" + std::to_string(n) + ext)).string();
  return path;
}

bool plot_job(const Job& j, const Options& o, std::set<std::string>& used, std::FILE* out, std::FILE* err) {
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
  const std::string pic = picture_path(j, o, used);
  const std::string why = draw_event(ev, axis, o.draw, pic);
  if (!why.empty()) return std::fprintf(err, "lm_plot: %s\n", why.c_str()), false;
  std::fprintf(out, "%s: %zu trace%s, ", pic.c_str(), ev.traces.size(), ev.traces.size() == 1 ? "" : "s");
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
  std::set<std::string> used;
  for (const Job& j : make_jobs(o.files, err, failed)) failed |= !plot_job(j, o, used, out, err);
  return failed ? 1 : 0;
}

}  // namespace lmplot

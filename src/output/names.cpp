#include "output/names.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "base/exit.hpp"
#include "base/file_util.hpp"
#include "model/settings.hpp"
#include "time/time_str.hpp"

namespace lm {
namespace {

// Place of the uniqueness letter in a trace file's base name.
constexpr std::size_t kUniquePos = 24;
// Room for any path the name rules can build (DirOut, subdirectories, base name, extension).
constexpr std::size_t kPathRoom = 256;

// What snprintf wrote; an output error counts as a text that does not fit.
std::size_t written(int n) { return n < 0 ? kPathRoom : static_cast<std::size_t>(n); }

// Claims a trace file name by creating the file exclusively, so that two runs into one directory
// never share a file. With a sample limit of 0 no file is made, so only its absence is tested.
// An error other than an existing file leaves the name to the open that follows, which reports it.
bool claim(const char* path, std::uint8_t& claimed, const Settings& set) {
  if (set.Smp_limit == 0) return !fexist(path);
  const int fd = open_below(path, set.out_root(), O_WRONLY | O_CREAT | O_EXCL);
  if (fd < 0) return errno != EEXIST;
  ::close(fd);
  claimed = 1;
  return true;
}

// The run ends with the file-open error when a path does not fit its record.
[[noreturn]] void too_long(const char* path) { shut_down(20, path); }

// DirOut followed by the subdirectories of Path_option for the time string; the length written,
// or cap or more when it did not fit.
std::size_t out_dir(char* out, std::size_t cap, const char* time, const Settings& set) {
  const TimeText t(time);
  const char* s = Dir_sep;
  int n = -1;
  const char* const dir = set.DirOut;
  switch (set.Path_option) {
    case 1: n = std::snprintf(out, cap, "%s%4.4s_%3.3s%s", dir, t.year(), t.day(), s); break;
    case 2:
      n = std::snprintf(out, cap, "%s%4.4s_%3.3s%s%2.2s%s", dir, t.year(), t.day(), s, t.hour(), s);
      break;
    case 3:
      n = std::snprintf(out, cap, "%s%4.4s_%3.3s%s%2.2s_%2.2s%s", dir, t.year(), t.day(), s, t.hour(),
                        t.minute(), s);
      break;
    case 4:
      n = std::snprintf(out, cap, "%s%4.4s_%3.3s%s%2.2s_%2.2s_%2.2s%s", dir, t.year(), t.day(), s, t.hour(),
                        t.minute(), t.second(), s);
      break;
    default: n = std::snprintf(out, cap, "%s", dir); break;
  }
  return written(n);
}

// The five-character name part: station name or unit ID by Name_option.
void name_part(const Evt& evt, char (&out)[6], const Settings& set) {
  const std::string_view station(evt.stn_name, strnlen(evt.stn_name, sizeof evt.stn_name));
  const bool use_station = set.Name_option == 2 || (set.Name_option == 0 && station != "     ");
  if (!use_station) {
    std::snprintf(out, sizeof out, "%05hX", evt.unit_id);
    return;
  }
  for (std::size_t i = 0; i < 5; ++i) {
    const char ch = i < station.size() ? station[i] : '\0';
    // A NUL or a '/' from a damaged header would shorten the name or leave the directory; they
    // become '_' like blanks, so the name keeps its five characters.
    out[i] = (ch == ' ' || ch == '\0' || ch == '/') ? '_' : ch;
  }
  out[5] = '\0';
}

// Base name of a trace file (without extension); the length written, cap or more when cut.
std::size_t trace_base(char* out, std::size_t cap, const char* time, const char* name, std::uint16_t stream,
                       std::uint16_t channel) {
  const TimeText stamp(time);
  return written(std::snprintf(out, cap, "%s_%s_%01u_%01X", stamp.text(), name, unsigned{stream} + 1u,
                               unsigned{channel} + 1u));
}

}  // namespace

void Asc_chn_name(CHNLST_T* chn, const char* time, const Settings& set) {
  char path[kPathRoom];
  const std::size_t dir_len = out_dir(path, sizeof path, time, set);
  char name[6];
  name_part(*chn->evt, name, set);
  std::size_t len = dir_len;
  if (dir_len < sizeof path) {
    len += trace_base(path + dir_len, sizeof path - dir_len, time, name, chn->stream, chn->channel);
    if (len < sizeof path) len += written(std::snprintf(path + len, sizeof path - len, "%s", Fn_ext_chn));
  }
  if (len >= sizeof chn->name) too_long(path);

  const char first = path[dir_len];
  path[dir_len] = '\0';
  make_dirs_below(path, set.out_root());  // a refused level leaves the open that follows to fail
  path[dir_len] = first;

  // The plain name first, then the letters A to X in place 24 of the base name.
  char* const letter = path + dir_len + kUniquePos;
  for (int variant = -1; variant < 24; ++variant) {
    if (variant >= 0) *letter = Spec_char[variant];
    if (claim(path, chn->claimed, set)) {
      std::memcpy(chn->name, path, len + 1);
      return;
    }
  }
  fatal(ending::kNoUniqueName);
}

const char* Asc_evt_name(Evt* evt, const Settings& set) {
  evt->evt_file_name[0] = '\0';
  char path[kPathRoom];
  std::size_t len = out_dir(path, sizeof path, evt->smp_time_1st, set);
  if (len < sizeof path) {
    char name[6];
    name_part(*evt, name, set);
    const TimeText stamp(evt->smp_time_1st);
    len += written(std::snprintf(path + len, sizeof path - len, "%s_%s_%1u%s", stamp.text(), name,
                                 unsigned{evt->strm} + 1u, Fn_ext_evt));
  }
  if (len >= sizeof evt->evt_file_name) too_long(path);
  std::memcpy(evt->evt_file_name, path, len + 1);
  return evt->evt_file_name;
}

}  // namespace lm

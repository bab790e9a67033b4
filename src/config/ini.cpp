#include "config/ini.hpp"

#include <cstdio>
#include <cstring>
#include <iterator>
#include <optional>
#include <string_view>

#include "base/file_util.hpp"
#include "base/number.hpp"
#include "base/text.hpp"
#include "config/tables.hpp"

namespace lm {
namespace {

// A read takes at most 99 characters; the rest of a longer line comes back as a line of its own.
constexpr int kLineBuf = 100;

bool is_digit(char c) { return c >= '0' && c <= '9'; }
char upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

bool starts_nocase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (std::size_t i = 0; i < prefix.size(); ++i)
    if (upper(text[i]) != upper(prefix[i])) return false;
  return true;
}

// The value of a key line: after the first "=" and any ";", CR or LF right behind it, up to the
// next ";", CR or LF, leading blanks dropped and trailing ones kept. None without "=" or text after it.
std::optional<std::string_view> value_of(std::string_view line) {
  const std::size_t eq = line.find('=');
  if (eq == std::string_view::npos) return std::nullopt;
  std::string_view v = line.substr(eq + 1);
  const std::size_t from = v.find_first_not_of(";\r\n");
  if (from == std::string_view::npos) return std::nullopt;
  v = v.substr(from);
  v = v.substr(0, v.find_first_of(";\r\n"));
  const std::size_t text = v.find_first_not_of(' ');
  return text == std::string_view::npos ? std::string_view() : v.substr(text);
}

// Field setters. "first" ones take a value only while the field is still 0 (the first line wins).
template <class T>
void first(T& field, T value) {
  if (field == 0) field = value;
}
template <class T>
T as_int(std::string_view v) {
  return static_cast<T>(int_or_0(v));  // cut to the field's width
}
template <std::size_t N>
void text(char (&field)[N], std::string_view v, std::size_t max) {
  set_text(field, v.substr(0, max));
}

using UnitSetter = void (*)(UnitMeta&, std::string_view);
void unit_none(UnitMeta&, std::string_view) {}  // matched, but nothing reads it

// In the order of IniKeyUnit.
constexpr UnitSetter kUnitSetters[] = {
    unit_none,                                                                         // DASType
    [](UnitMeta& u, std::string_view v) { first(u.alt, double_or_0(v)); },               // Altitude
    [](UnitMeta& u, std::string_view v) { first(u.lat, double_or_0(v)); },               // Latitude
    [](UnitMeta& u, std::string_view v) { first(u.lon, double_or_0(v)); },               // Longitude
    unit_none,                                                                         // Network
    [](UnitMeta& u, std::string_view v) { text(u.net_seed, v, 2); },                   // NetSEED
    [](UnitMeta& u, std::string_view v) { text(u.station, v, 5); },                      // Station
    [](UnitMeta& u, std::string_view v) { first(u.orientation, as_int<std::uint16_t>(v)); },  // Orientation
    [](UnitMeta& u, std::string_view v) { first(u.das_cnt, as_int<std::uint16_t>(v)); },      // StatDASCnt
    [](UnitMeta& u, std::string_view v) { first(u.chn_cnt, as_int<std::uint16_t>(v)); },      // StatChnCnt
    [](UnitMeta& u, std::string_view v) { text(u.geology, v, 40); },                     // CosGeology
    unit_none,                                                                         // CosNet
    [](UnitMeta& u, std::string_view v) { u.stn_type = as_int<std::uint16_t>(v); },      // CosStn
};
static_assert(std::size(kUnitSetters) + 1 == std::size(IniKeyUnit));

// The sensor row of the channel's make and model, with its constants for the fields still 0, unless
// a known sensor was identified already.
void lookup_sensor(ChnMeta& c) {
  const std::uint16_t row = Sensor_find(c.make, c.model);
  if (c.sensor_ndx != 0 && c.sensor_ndx != kSensorUnknown) return;
  const SensorInfo* s = sensor_row(row);
  if (!s) return;
  c.sensor_ndx = row;
  first(c.freq, s->freq);
  first(c.damp, s->damp);
  first(c.vpu, s->vpu);
  first(c.sns_fsa, s->fsa);
}

// Two numbers "a,b" (the second omitted: 0), each read as a double field reads its value.
PzRoot pair_of(std::string_view v) {
  PzRoot r{double_or_0(v), 0};
  if (const std::size_t comma = v.find(','); comma != std::string_view::npos) r.im = double_or_0(v.substr(comma + 1));
  return r;
}

void add_root(ChnMeta& c, std::string_view v, bool pole) {
  if (c.pz_cnt == kPzRoots) {
    c.pz_overflow = true;
    return;
  }
  if (pole) c.pole_bits = static_cast<std::uint16_t>(c.pole_bits | 1u << c.pz_cnt);
  c.pz[c.pz_cnt++] = pair_of(v);
}

// Counts beyond the array's bound are kept as a bound so that the response can say they do not fit.
std::uint8_t count_of(double v) { return static_cast<std::uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v); }

using ChnSetter = void (*)(ChnMeta&, std::string_view);
void chn_none(ChnMeta&, std::string_view) {}  // matched, but nothing reads it

// In the order of IniKeyChn.
constexpr ChnSetter kChnSetters[] = {
    [](ChnMeta& c, std::string_view v) { c.chn_fsa = double_or_0(v); },                  // ChnFSA
    [](ChnMeta& c, std::string_view v) { c.bits = as_int<std::uint8_t>(v); },            // ChnRes
    [](ChnMeta& c, std::string_view v) { c.band = v.empty() ? '\0' : v[0]; },            // ChnBand
    [](ChnMeta& c, std::string_view v) { c.type = v.empty() ? '\0' : upper(v[0]); },     // ChnType
    [](ChnMeta& c, std::string_view v) { c.axis = v.empty() ? '\0' : v[0]; },            // ChnAxis
    [](ChnMeta& c, std::string_view v) {                                                 // ChnSnsMake
      if (c.make[0] == '\0') text(c.make, v, 30);
    },
    [](ChnMeta& c, std::string_view v) {                                                 // ChnSnsModel
      text(c.model, v, 14);
      lookup_sensor(c);
    },
    [](ChnMeta& c, std::string_view v) { c.sn = as_int<std::uint32_t>(v); },             // ChnSnsSN
    [](ChnMeta& c, std::string_view v) { first(c.sns_fsa, double_or_0(v)); },            // ChnSnsFSA
    [](ChnMeta& c, std::string_view v) { first(c.vpu, double_or_0(v)); },                // ChnSnsVPU
    [](ChnMeta& c, std::string_view v) { first(c.freq, double_or_0(v)); },               // ChnSnsFreq
    [](ChnMeta& c, std::string_view v) { first(c.damp, double_or_0(v)); },               // ChnSnsDamp
    chn_none,                                                                             // ChnLat
    chn_none,                                                                             // ChnLon
    chn_none,                                                                             // ChnAlt
    [](ChnMeta& c, std::string_view v) {                                                 // ChnAzm
      c.azimuth = as_int<std::uint16_t>(v);
      c.azimuth_given = true;
    },
    [](ChnMeta& c, std::string_view v) { c.depth = double_or_0(v); },                    // ChnDepth
    [](ChnMeta& c, std::string_view v) {                                                 // ChnDip
      c.dip = as_int<std::int16_t>(v);
      c.dip_given = true;
    },
    [](ChnMeta& c, std::string_view v) {                                                 // ChnNZNP
      const PzRoot n = pair_of(v);
      c.nznp_zeros = count_of(n.re);
      c.nznp_poles = count_of(n.im);
      c.nznp_given = true;
    },
    [](ChnMeta& c, std::string_view v) { add_root(c, v, false); },                       // ChnZero
    [](ChnMeta& c, std::string_view v) { add_root(c, v, true); },                        // ChnPole
    [](ChnMeta& c, std::string_view v) { c.norm_freq = double_or_0(v); },                // ChnNorm
    [](ChnMeta& c, std::string_view v) { text(c.seiscomp, v, 4); },                      // ChnSeisComp
    chn_none,                                                                             // ChnStnChn
};
static_assert(std::size(kChnSetters) + 1 == std::size(IniKeyChn));

// Index of the first key whose name (from `skip` characters on) starts the text, -1 for none.
template <std::size_t N>
int key_of(std::string_view text, const char (&keys)[N][kIniKeyLen], std::size_t skip) {
  for (std::size_t k = 0; k + 1 < N; ++k)
    if (starts_nocase(text, std::string_view(keys[k]).substr(skip))) return static_cast<int>(k);
  return -1;
}

void unit_line(UnitMeta& unit, std::string_view line) {
  const int key = key_of(line, IniKeyUnit, 0);
  if (key < 0) return;
  if (const auto v = value_of(line)) kUnitSetters[key](unit, *v);
}

// "Ch", the channel number (one or two digits counted from 1, or a letter: code - 55), the key's
// suffix after "Chn", "=" and the value.
void chn_line(ChnMeta& chn, std::uint16_t channel, std::string_view line) {
  if (line.size() < 3 || !starts_nocase(line, "ch")) return;
  const char c = line[2];
  std::uint16_t n;
  std::size_t suffix = 3;
  if (is_digit(c)) {
    n = static_cast<std::uint16_t>(c - '0');
    if (line.size() > 3 && is_digit(line[3])) {
      n = static_cast<std::uint16_t>(10 * n + (line[3] - '0'));
      suffix = 4;
    }
  } else {
    n = static_cast<std::uint16_t>(static_cast<unsigned char>(c) - 55);
  }
  if (static_cast<std::uint16_t>(n - 1) != channel) return;
  const int key = key_of(line.substr(suffix), IniKeyChn, 3);
  if (key < 0) return;
  if (const auto v = value_of(line)) kChnSetters[key](chn, *v);
}

// Reads the unit's section, handing each of its lines to `take`. The header's offset is kept in
// ini_first so later reads start there; with `keep_end` the offset where reading stopped goes to ini_last.
template <class Take>
void read_section(UnitMeta& unit, std::uint16_t unit_id, const char* path, bool keep_end, Take take) {
  if (!fexist(path)) return;
  std::FILE* f = fopen_lm(path, "r");
  if (!f) {
    std::printf("\nWARNING: Unable to open the INI file %s", path);
    return;
  }
  char tag[8];
  std::snprintf(tag, sizeof tag, "[%04hX]", unit_id);
  if (std::fseek(f, unit.ini_first, SEEK_SET) != 0) {
    std::printf("\nWARNING: Unable to set position within the INI file %s", path);
    std::fclose(f);
    return;
  }
  bool found = false;
  char buf[kLineBuf];
  for (;;) {
    const long at = std::ftell(f);
    if (!std::fgets(buf, sizeof buf, f)) break;
    const std::string_view line(buf, std::strlen(buf));
    if (!found) {
      if (starts_nocase(line, tag)) {
        unit.ini_first = static_cast<std::int32_t>(at);
        found = true;
      }
      continue;
    }
    if (line.starts_with('[')) break;
    take(line);
  }
  if (keep_end) unit.ini_last = static_cast<std::int32_t>(std::ftell(f));
  std::fclose(f);
}

}  // namespace

void Unit_ini(UnitMeta& unit, std::uint16_t unit_id, const char* path) {
  read_section(unit, unit_id, path, true, [&unit](std::string_view line) { unit_line(unit, line); });
}

void Chn_ini(ChnMeta& chn, std::uint16_t channel, UnitMeta& unit, std::uint16_t unit_id, const char* path) {
  read_section(unit, unit_id, path, false, [&](std::string_view line) { chn_line(chn, channel, line); });
}

}  // namespace lm

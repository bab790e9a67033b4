#include "mseed/codes.hpp"

#include <cctype>
#include <cstdio>

#include "base/text.hpp"
#include "config/tables.hpp"

namespace lm::mseed {
namespace {

bool is_code_char(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; }
char upper(char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); }

// A code character given by the INI or the event header, or 0 when it gives none usable.
char given(char c) { return is_code_char(c) ? upper(c) : 0; }

struct BandRow {
  double min_rate;  // from this rate up (samples per second)
  char long_period;   // corner period 10 s and more
  char short_period;  // corner period below 10 s
};
// The SEED band codes by sample rate, highest first; M is for rates above 1 and below 10, and the
// rows below it take the rates around their nominal one.
constexpr BandRow kBands[] = {
    {1000, 'F', 'G'}, {250, 'C', 'D'}, {80, 'H', 'E'}, {10, 'B', 'S'}, {1.000001, 'M', 'M'},
    {0.5, 'L', 'L'}, {0.05, 'V', 'V'}, {0.005, 'U', 'U'}, {0.00005, 'R', 'R'}, {0.000005, 'P', 'P'},
    {0.0000005, 'T', 'T'}, {0, 'Q', 'Q'},
};

}  // namespace

SensorClass sensor_class(std::uint16_t sensor_ndx) {
  const SensorInfo* row = sensor_row(sensor_ndx);
  if (!row || row->code == 0 || row->code >= 9000) return SensorClass::kUnknown;
  if (row->code < 1000) return SensorClass::kAccelerometer;
  if (row->code < 2000) return SensorClass::kSeismometer;
  if (row->code < 3500) return SensorClass::kPressure;
  if (row->code < 4000) return SensorClass::kDilatometer;
  if (row->code < 4500) return SensorClass::kDisplacement;
  return SensorClass::kRotational;
}

std::string seed_code(std::string_view text, std::size_t max, bool& altered) {
  text = trimmed(text);  // blanks that pad a fixed-width field are not part of the name
  std::string out;
  for (char c : text) {
    if (!is_code_char(c) || out.size() == max) {
      altered = true;
      continue;
    }
    out += upper(c);
  }
  return out;
}

std::string station_code(std::string_view ini, std::string_view event_header, std::uint16_t unit_id, bool& altered) {
  for (std::string_view source : {ini, event_header}) {
    bool cut = false;
    std::string code = seed_code(source, 5, cut);
    if (!code.empty()) {
      altered = altered || cut;
      return code;
    }
  }
  char hex[5];
  std::snprintf(hex, sizeof hex, "%04X", static_cast<unsigned>(unit_id));
  return hex;
}

std::string network_code(std::string_view ini, std::string_view fallback) {
  bool cut = false;
  std::string code = seed_code(ini, 2, cut);
  return code.empty() ? seed_code(fallback, 2, cut) : code;
}

char band_code(double rate, SensorClass cls, double natural_freq) {
  const bool short_period = cls == SensorClass::kSeismometer && natural_freq > 0.1;
  for (const BandRow& row : kBands)
    if (rate >= row.min_rate) return short_period ? row.short_period : row.long_period;
  return 'Q';  // a rate below 0 cannot come from a packet; kept total all the same
}

std::string channel_code(const ChnMeta& m, std::uint16_t channel, double rate) {
  const SensorClass cls = sensor_class(m.sensor_ndx);
  char band = given(m.band);
  if (!band) band = band_code(rate, cls, m.freq);
  char type = given(m.type);
  if (!type) {
    switch (cls) {
      case SensorClass::kAccelerometer: type = 'N'; break;
      case SensorClass::kPressure: type = 'D'; break;
      case SensorClass::kRotational: type = 'J'; break;
      default: type = 'H'; break;
    }
  }
  char axis = given(m.axis);
  if (!axis) axis = Axis[channel % 6];
  return {band, type, axis};
}

}  // namespace lm::mseed

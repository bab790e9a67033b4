#include "config/tables.hpp"

#include <strings.h>

#include <cstring>
#include <string_view>

namespace lm {
namespace {

constexpr bool fits(const char* s, std::size_t n) { return std::string_view(s).size() <= n; }

constexpr bool sensor_texts_fit() {
  for (const SensorInfo& s : Sensor)
    if (!fits(s.make, 30) || !fits(s.model, 14) || !fits(s.desc, 15)) return false;
  return true;
}

constexpr bool key_names_fit() {
  for (const auto& k : IniKeyUnit)
    if (!fits(k, kIniKeyLen - 1)) return false;
  for (const auto& k : IniKeyChn)
    if (!fits(k, kIniKeyLen - 1)) return false;
  return true;
}

// The shape the lookups and the record widths rely on.
static_assert(sensor_texts_fit(), "sensor texts exceed the channel record's widths");
static_assert(Sensor[kSensorUnknown].make[0] == '\0' && Sensor[kSensorUnknown].model[0] == '\0',
              "the last sensor row must match every channel");
static_assert(Measures[0].name[0] == '?' && Measures[kMeasureRows - 1].name[0] == '\0');
static_assert(sizeof Axis == 7);
static_assert(key_names_fit());
static_assert(IniKeyUnit[13][0] == '\0' && IniKeyChn[24][0] == '\0', "key lists end with an empty slot");

}  // namespace
std::uint16_t Sensor_find(const char* make, const char* model) {
  for (std::uint16_t i = 0; i < kSensorRows; ++i) {
    const SensorInfo& row = Sensor[i];
    if (strncasecmp(row.make, make, std::strlen(row.make)) == 0 &&
        strncasecmp(row.model, model, std::strlen(row.model)) == 0)
      return i;
  }
  return kSensorRows;
}

}  // namespace lm

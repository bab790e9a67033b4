#pragma once
// SEED codes of the exported data: network, station, location and channel, from the INI file, the
// event header and the sample rate. One place, so that the miniSEED files and the StationXML agree.
#include <cstdint>
#include <string>
#include <string_view>

#include "config/ini.hpp"

namespace lm::mseed {

// The sensor's class by its catalogue code: accelerometers below 1000, seismometers from 1000 to
// 1999, then pressure, dilatometer, displacement and rotational sensors; kUnknown for row 0 and the
// catch-all unknown sensor.
enum class SensorClass { kUnknown, kAccelerometer, kSeismometer, kPressure, kDilatometer, kDisplacement, kRotational };
SensorClass sensor_class(std::uint16_t sensor_ndx);

// Letters and digits of `text` in upper case, at most `max` of them; `altered` is set when anything
// was dropped or cut (case alone does not count).
std::string seed_code(std::string_view text, std::size_t max, bool& altered);

// Station: the INI Station of the unit, else the event header's station name, else the unit ID as
// four hex digits. `altered` tells that the chosen text had to be cleaned or cut.
std::string station_code(std::string_view ini, std::string_view event_header, std::uint16_t unit_id, bool& altered);
// Network: the INI NetSEED of the unit, else the fallback (--net).
std::string network_code(std::string_view ini, std::string_view fallback);

// SEED band code of a sample rate; seismometers with a natural frequency above 0.1 Hz count as short
// period (corner below 10 s), everything else takes the long-period column as strong-motion practice does.
char band_code(double rate, SensorClass cls, double natural_freq);
// The three-letter channel code: band, type and axis where the INI or the event header gave them,
// else band from the rate, type by sensor class (N accelerometer, H seismometer and unknown) and the
// channel's axis code (its default axis when that is not a letter or digit).
std::string channel_code(const ChnMeta& m, std::uint16_t channel, double rate);

}  // namespace lm::mseed

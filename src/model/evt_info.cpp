#include <cmath>
#include <cstring>

#include "model/event.hpp"
#include "packet/event_fields.hpp"
#include "base/file_util.hpp"
#include "base/text.hpp"

namespace lm {

namespace {

float number(const TextField& f, const std::uint8_t* pkt) { return stof(f.ptr(pkt), f.width); }

}  // namespace

void Evt_info(Evt* evt, const std::uint8_t* packet) {
  if (eh::is_telemetry(packet)) {
    evt->rate = number(eh::kRateTelemetry, packet);
    std::memcpy(evt->trg_type, "MIM ", 5);
  } else {
    evt->rate = number(eh::kRate, packet);
    set_text(evt->trg_type, eh::kTrigger.text(packet));
  }

  set_text(evt->smp_time_1st, eh::kFirstTime.text(packet));
  set_text(evt->last, eh::kLastTime.text(packet));

  ChnInfo& info = evt->chn_info[eh::block(packet)];
  for (const ChnColumn& c : chn_col::kAll)
    std::memcpy(column_ptr(info, c), packet + c.pkt_off, 16u * c.width);

  if (eh::kStation.at(packet) != ' ') {
    std::memcpy(evt->stn_name, eh::kStation.ptr(packet), eh::kStation.width);
    evt->stn_name[4] = eh::kStationExt.at(packet);
    evt->stn_name[5] = '\0';
  }

  evt->time_qual = -1;
  const char clock = eh::kClockDays.at(packet);
  if (clock == '?') evt->time_qual = 10;
  else if (clock >= '0' && clock <= '9') evt->time_qual = static_cast<std::int16_t>(clock - '0');

  const char given = eh::kPosGiven.at(packet);
  if (given != ' ' && given != '\0') {
    // A slice that does not read as a number counts as 0.
    double lat = number(eh::kLatDeg, packet) + number(eh::kLatMin, packet) / 60.0;
    double lon = number(eh::kLonDeg, packet) + number(eh::kLonMin, packet) / 60.0;
    // The latitude hemisphere letter may stand in either character before the degrees.
    if (given == 'S' || eh::kLatHemi.at(packet) == 'S') lat = -lat;
    if (eh::kLonHemi.at(packet) == 'W') lon = -lon;
    UNIT_T* unit = evt->unit;
    unit->lat = lat;
    unit->lon = lon;
    unit->alt = std::trunc(static_cast<double>(number(eh::kElevation, packet)));
  }
}

}  // namespace lm

#pragma once
// Body of event header (EH) and trailer (ET) packets: fixed-width ASCII fields after the common
// header and its extension. The channel columns (bit weights to units code) are in chn_col::kAll.
#include <cstdint>

#include "packet/fields.hpp"

namespace lm::eh {

inline constexpr TextField kTimeSource{57, 1};    // "1" internal clock, "2" GPS
inline constexpr TextField kClockDays{58, 1};     // days since the clock was locked: digit, "?" or blank
inline constexpr TextField kStationExt{59, 1};    // fifth character of the station name
inline constexpr TextField kStation{60, 4};
inline constexpr TextField kStreamName{64, 24};
inline constexpr TextField kRate{88, 4};
inline constexpr TextField kRateTelemetry{88, 8};  // the telemetry form widens the rate over the trigger type
inline constexpr TextField kTrigger{92, 4};
inline constexpr TextField kTriggerTime{96, 16};
inline constexpr TextField kFirstTime{112, 16};
inline constexpr TextField kDetriggerTime{128, 16};
inline constexpr TextField kLastTime{144, 16};
inline constexpr TextField kStationChannel{656, 3};  // 16 entries of 3 characters
inline constexpr TextField kInstalled{860, 2};
inline constexpr TextField kComment{862, 40};
inline constexpr TextField kFilters{902, 16};

// Position block.
inline constexpr TextField kPosition{918, 26};
inline constexpr TextField kPosGiven{918, 1};    // blank or NUL: no position
inline constexpr TextField kLatHemi{919, 1};
inline constexpr TextField kLatDeg{920, 2};
inline constexpr TextField kLatMin{922, 6};
inline constexpr TextField kLonHemi{928, 1};     // "W": western longitude
inline constexpr TextField kLonDeg{929, 3};
inline constexpr TextField kLonMin{932, 6};
inline constexpr TextField kElevation{938, 6};

// Telemetry block.
inline constexpr TextField kTmOverscale{954, 6};
inline constexpr TextField kTmVersion{960, 8};
inline constexpr TextField kTmFrequency{968, 8};
inline constexpr TextField kTmTransmitterId{976, 8};
inline constexpr TextField kTmTransmitterSite{984, 8};
inline constexpr TextField kTmSensor{992, 8};
inline constexpr TextField kTmReceiverSite{1000, 8};
inline constexpr TextField kTmDelay{1012, 4};
inline constexpr TextField kTmChannel{1016, 2};
inline constexpr TextField kTmChannelPos{1018, 4};
inline constexpr TextField kTmMark{1016, 6};     // not all blanks: the packet is in the telemetry form

inline bool is_telemetry(const std::uint8_t* pkt) {
  for (char c : kTmMark.view(pkt))
    if (c != ' ') return true;
  return false;
}

// Channel information block the packet describes: 1 for channels 17-32, else 0.
inline unsigned block(const std::uint8_t* pkt) {
  return (hdr::kFlags.value(pkt) & hdr::kFlagBlock17to32) ? 1u : 0u;
}

}  // namespace lm::eh

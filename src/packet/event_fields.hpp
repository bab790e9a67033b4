#pragma once
// Body of event header (EH) and trailer (ET) packets: fixed-width ASCII fields after the common
// header and its extension, then the 16-channel table and the log dump rows.
#include <cstdint>

#include "packet/dump_table.hpp"
#include "packet/fields.hpp"

namespace lm::eh {

inline constexpr std::uint16_t kFullCount = 58;   // byte counts below this: only the short text
inline constexpr TextField kShortText{24, 31};
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

// The channel table: one column per property, entry i (channel i + 1 of the block) at off + i * width.
struct ColumnField {
  std::uint16_t off;
  std::uint16_t width;
  const char* at(const std::uint8_t* pkt, unsigned i) const {
    return reinterpret_cast<const char*>(pkt + off + (i & 15u) * width);
  }
};
inline constexpr int kColumnEntries = 16;
inline constexpr ColumnField kBitWght{160, 8};  // a leading blank: the channel is not installed
inline constexpr ColumnField kTruWght{288, 8};
inline constexpr ColumnField kGain{416, 1};     // hexadecimal digit, a row of the gain table
inline constexpr ColumnField kRes{432, 1};
inline constexpr ColumnField kFSV{448, 1};
inline constexpr ColumnField kSEED{464, 4};
inline constexpr ColumnField kSFSV{528, 1};
inline constexpr ColumnField kSVPU{544, 6};
inline constexpr ColumnField kUnits{640, 1};
inline constexpr ColumnField kStationChannel{656, 3};
static_assert(kStationChannel.off + kColumnEntries * kStationChannel.width <= kInstalled.off);

// Log dump rows.
inline constexpr DumpRow kStationRows[] = {row("Station Comment", kComment), row("Position", kPosition)};
inline constexpr DumpRow kStreamRow[] = {row("Stream Name", kStreamName)};
inline constexpr DumpRow kRateRows[] = {row("Sample rate", kRate), row("Trigger type", kTrigger)};
inline constexpr DumpRow kRateTelemetryRow[] = {row("Sample rate", kRateTelemetry)};
inline constexpr DumpRow kTimeRows[] = {row("Trigger time", kTriggerTime), row("First sample time", kFirstTime),
                                        row("Detrigger time", kDetriggerTime), row("Last sample time", kLastTime)};
inline constexpr DumpRow kSetupRows[] = {row("Filter list", kFilters), row("Installed channels", kInstalled)};
inline constexpr DumpRow kTelemetryDau[] = {
    row("VRN-DAU Version", kTmVersion),          row("VRN-DAU Xmitter Freq", kTmFrequency),
    row("VRN-DAU Xmitter Id", kTmTransmitterId), row("VRN-DAU Xmitter Site", kTmTransmitterSite),
    row("VRN-DAU Sensor", kTmSensor),            row("VRN-DAU Receiver Site", kTmReceiverSite),
    row("VRN-DAU Propagatn Delay", kTmDelay),    row("VRN-DAU Data Chn", kTmChannel),
    row("VRN-DAU Data Chn Positn", kTmChannelPos), row("VRN-DAU Overscale Count", kTmOverscale),
};
// NH and NT packets read the sensor and receiver fields as a second frequency and the site.
inline constexpr DumpRow kTelemetryCru[] = {
    row("VRN-CRU Version", kTmVersion),          row("VRN-CRU Xmitter Freq", kTmFrequency),
    row("VRN-CRU Xmitter Id", kTmTransmitterId), row("VRN-CRU Xmitter Site", kTmTransmitterSite),
    row("VRN-CRU (Xmitter Freq)", kTmSensor),    row("VRN-CRU Site", kTmReceiverSite),
    row("VRN-CRU Propagatn Delay", kTmDelay),    row("VRN-CRU Data Chn", kTmChannel),
    row("VRN-CRU Data Chn Positn", kTmChannelPos),
};
static_assert(rows_fit(kStationRows, kPacketSize) && rows_fit(kTelemetryDau, kPacketSize) &&
              rows_fit(kTelemetryCru, kPacketSize) && rows_fit(kSetupRows, kPacketSize));

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

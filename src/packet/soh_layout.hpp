#pragma once
// Bodies of the set-up packets (SC, AD, OM, DS, CD): fixed-width text fields, laid out for the log dumps.
#include "packet/dump_table.hpp"

namespace lm::soh {

// SC: the recorder's model and serial number, which the export's station metadata also reads.
inline constexpr TextField kDasModel{150, 12};
inline constexpr TextField kDasSerial{162, 12};

// SC: station and experiment, then five channel blocks.
inline constexpr DumpRow kScStation[] = {
    {"Experiment Number", 16, 2},   {"Experiment Name", 18, 24},  {"Experiment Comment", 42, 40},
    {"Station Number", 82, 4},      {"Station Name", 86, 24},     {"Station Comment", 110, 40},
    row("DAS Model", kDasModel),   row("DAS Serial Number", kDasSerial), {"Experiment Start", 174, 14},
    {"Time Clock Type", 188, 4},    {"Time Clock S/N", 192, 10},
};
inline constexpr DumpRow kScChannel[] = {
    {"Channel Number", 0, 2},       {"Channel Name", 2, 10},      {"Azimuth", 12, 10},
    {"Inclination", 22, 10},        {"X Coordinate", 32, 10},     {"Y Coordinate", 42, 10},
    {"Z Coordinate", 52, 10},       {"Unit type for X, Y", 62, 4}, {"Unit type for Z", 66, 4},
    {"Preamp Gain", 70, 4},         {"Sensor Model", 74, 12},     {"Sensor Serial Number", 86, 12},
    {"Comments", 98, 40},           {"Bit-count Voltage", 138, 8},
};
inline constexpr DumpBlocks kScChannels{kScChannel, 202, 146, 5};
static_assert(rows_fit(kScStation, kScChannels.first) && blocks_fit(kScChannels));
static_assert(kScChannels.first + kScChannels.count * kScChannels.stride <= kPacketSize);

// AD: auxiliary data.
inline constexpr DumpRow kAd[] = {
    {"Channels Included", 18, 16, Show::kBlanks}, {"Sample Interval", 34, 8},
    {"Data Format", 42, 2},                       {"Record Length", 44, 8},
};
static_assert(rows_fit(kAd, kPacketSize));

// OM: operating mode, then eight wake sequence blocks.
inline constexpr DumpRow kOm[] = {
    {"Power State", 16, 2},
    {"Recording Mode", 18, 2},
    {"Primary Disk ID", 20, 1, Show::kChar},
    {"Secondary Disk ID", 21, 1, Show::kChar},
    {"Tape ID", 22, 1, Show::kChar},
    {"Auto-dump Device", 23, 1, Show::kChar},
    {"Auto-dump on ET Block", 24, 1, Show::kEnabled},
    {"Auto-dump in Serial Mode", 25, 1, Show::kEnabled},
    {"Auto-dump Threshold", 26, 2, Show::kText, "", "%"},
    {"SCSI Powerdown Delay", 28, 4, Show::kText, "", " seconds"},
    {"SCSI Disk Wrap", 32, 1, Show::kEnabled},
    {"SCSI Directory", 33, 1, Show::kEnabled},
    {"SCSI Device Power", 34, 1, Show::kAlwaysOn},
    {"SCSI Termintor Power", 35, 1, Show::kAlwaysOn},
};
inline constexpr DumpRow kOmWake[] = {
    {"Sequence number", 0, 2},
    {"Start time", 2, 12},
    {"Power Duration", 14, 6, Show::kText, "    "},
    {"Repeat Interval", 20, 6, Show::kText, "    "},
    {"Number of Intervals", 26, 2},
};
inline constexpr DumpBlocks kOmWakes{kOmWake, 48, 64, 8};
static_assert(rows_fit(kOm, kOmWakes.first) && blocks_fit(kOmWakes));

// DS: five data stream blocks, each with a trigger block whose layout the trigger type selects.
// The fifth block starts at 936, so its trigger block runs past the end of the packet.
inline constexpr DumpRow kDsStream[] = {
    {"Data Stream No", 0, 2},  {"Data Stream Name", 2, 24}, {"Channels Included", 26, 16, Show::kBlanks},
    {"Sample Rate", 42, 4},    {"Data Format", 46, 2},      {"Trigger Type", 64, 4},
};
inline constexpr DumpBlocks kDsStreams{kDsStream, 16, 230, 5};
inline constexpr TextField kDsTriggerType{64, 4};  // from the block start
inline constexpr std::uint16_t kDsTrigger = 68;    // trigger block, from the block start

inline constexpr DumpRow kTrgEvt[] = {
    {"Trigger Channels", 0, 16, Show::kBlanks}, {"Minimum Channels", 16, 2}, {"Trigger Window", 18, 8},
    {"Pretrigger Length", 26, 8},  {"Posttrigger Length", 34, 8}, {"Record Length", 42, 8},
    {"STA Length", 58, 8},         {"LTA Length", 66, 8},         {"Mean Removal", 74, 8},
    {"Trigger Ratio", 82, 8},      {"Detrigger Ratio", 90, 8},    {"LTA hold", 98, 4},
};
inline constexpr DumpRow kTrgTim[] = {
    {"Start Time", 0, 14}, {"Repeat Interval", 14, 8}, {"Number of Intervals", 22, 4}, {"Record Length", 34, 8}};
inline constexpr DumpRow kTrgLev[] = {{"Trigger Level", 0, 8}, {"Pretrigger Length", 8, 8}, {"Record Length", 16, 8}};
inline constexpr DumpRow kTrgCon[] = {{"Record Length", 0, 8}};
inline constexpr DumpRow kTrgExt[] = {{"Pretrigger Length", 0, 8}, {"Record Length", 8, 8}};
inline constexpr DumpRow kTrgCrs[] = {
    {"Trigger Stream Number", 0, 2}, {"Pretrigger Length", 2, 8}, {"Record Length", 10, 8}};
// TML: eleven start times, then the record length.
inline constexpr int kTmlTimes = 11;
inline constexpr TextField kTmlTime{0, 14};  // time n (from 0) at n * 14
inline constexpr DumpRow kTrgTml[] = {{"Record Length", 154, 8}};

// Trigger types by their three letters, as the recorder writes them in upper or lower case.
struct TriggerLayout {
  char upper[4];
  std::span<const DumpRow> rows;
  int start_times = 0;  // TML: this many start times come before the rows
};
inline constexpr TriggerLayout kTriggers[] = {
    {"EVT", kTrgEvt}, {"TIM", kTrgTim}, {"LEV", kTrgLev}, {"CON", kTrgCon},
    {"EXT", kTrgExt}, {"RAD", kTrgExt}, {"CRS", kTrgCrs}, {"TML", kTrgTml, kTmlTimes},
};
constexpr bool triggers_fit() {
  for (const TriggerLayout& t : kTriggers)
    if (!rows_fit(t.rows, kDsStreams.stride - kDsTrigger)) return false;
  return kDsTrigger + kTmlTimes * kTmlTime.width <= kDsStreams.stride;
}
static_assert(blocks_fit(kDsStreams) && rows_fit(kDsStream, kDsTrigger) && triggers_fit());
// Every block's trigger type lies in the packet, even the fifth's.
static_assert(kDsStreams.first + (kDsStreams.count - 1u) * kDsStreams.stride + kDsTrigger <= kPacketSize);

// CD: calibration, with a step block when the step field begins with "ON".
inline constexpr DumpRow kCd[] = {
    {"Start Time", 16, 14},          {"Repeat Interval", 30, 8}, {"No of Intervals", 38, 4},
    {"Length of Intervals", 42, 8},  {"Step", 50, 4},
};
inline constexpr TextField kCdStepOn{50, 2};  // "ON" or "on": the step block follows
inline constexpr DumpRow kCdStep[] = {
    {"Step Period", 54, 8}, {"Step Size", 62, 8}, {"Step Amplitude", 70, 8}, {"Step Output", 78, 4}};
static_assert(rows_fit(kCd, kPacketSize) && rows_fit(kCdStep, kPacketSize));

}  // namespace lm::soh

#pragma once
// Built-in constant tables: the sensor catalogue, measurement unit names, gain factors, default
// axes, INI key names and a blank filler text. Read-only, shared by every unit and channel.
#include <cstdint>

namespace lm {

// One sensor of the catalogue; a channel keeps the row number, not the code.
struct SensorInfo {
  std::uint16_t code;
  const char* make;   // up to 30 characters, matched as a prefix of the channel's make
  const char* model;  // up to 14 characters, matched as a prefix of the channel's model
  const char* desc;   // up to 15 characters
  double freq;        // natural frequency
  double damp;        // damping
  double vpu;         // volts per unit of ground motion
  double fsa;         // full-scale voltage
};

inline constexpr int kSensorRows = 42;
inline constexpr std::uint16_t kSensorUnknown = 41;  // the catch-all row

// Order matters: the lookup takes the first row whose make and model are prefixes of the channel's.
inline constexpr SensorInfo Sensor[kSensorRows] = {
    {0, "-------", "-------", "", 0, 0, 0, 0},
    {1, "Optical", "", "Optical-Mechan", 0, 0, 0, 0},
    {2, "Kinemetrics", "FBA-1", "FBA-1", 0, 0, 0, 0},
    {3, "Kinemetrics", "FBA-3", "FBA-3", 0, 0, 0, 0},
    {4, "Kinemetrics", "FBA-11", "FBA-11", 0, 0, 0, 0},
    {5, "Kinemetrics", "FBA-13", "FBA-13", 0, 0, 0, 0},
    {6, "Kinemetrics", "FBA-13DH", "FBA-13DH", 0, 0, 0, 0},
    {7, "Kinemetrics", "FBA-23", "FBA-23", 0, 0, 0, 0},
    {8, "Kinemetrics", "FBA-23DH", "FBA-23DH", 0, 0, 0, 0},
    {20, "Kinemetrics", "Episensor", "ES", 0, 0, 0, 0},
    {21, "Kinemetrics", "Episensor US-U", "ES-U", 0, 0, 0, 0},
    {50, "Sprengnether", "FBX-23", "FBX-23", 0, 0, 0, 0},
    {51, "Sprengnether", "FBX-26", "FBX-26", 0, 0, 0, 0},
    {100, "Terratech", "SSA 120", "SSA 120", 0, 0, 0, 0},
    {101, "Terratech", "SSA 220", "SSA 220", 0, 0, 0, 0},
    {102, "Terratech", "SSA 320", "SSA 320", 0, 0, 0, 0},
    {150, "Wilcoxon", "731A", "731A", 0, 0, 0, 0},
    {200, "Guralp", "CMG-5", "CMG-5", 0, 0, 0, 0},
    {250, "Lum", "VXA-440/U", "VXA-440/U", 900.0, 0.1, 2.4, 10.0},
    {255, "Lum", "VXA-440/T/INS", "VXA-440/T/INS", 900.0, 0.1, 1.2, 5.0},
    {251, "Lum", "VXA-440/T", "VXA-440/T", 900.0, 0.1, 2.4, 10.0},
    {252, "Lum", "VXA-440/DH", "VXA-440/DH", 900.0, 0.1, 2.4, 10.0},
    {253, "Lum", "VXB-220/U", "VXB-220/U", 1300.0, 0.1, 1.6, 10.0},
    {254, "Lum", "VXB-220/T", "VXB-220/T", 1300.0, 0.1, 1.6, 10.0},
    {256, "Lum", "VX-66110", "VX-66110", 900.0, 0.1, 2.4, 10.0},
    {900, "Accelerometer", "Other", "Unknown Accel.", 0, 0, 0, 0},
    {1001, "Kinemetrics", "SS-1", "SS-1", 0, 0, 0, 0},
    {1050, "Sprengnether", "S-3000", "S-3000", 0, 0, 0, 0},
    {1201, "Guralp", "CMG-1", "CMG-1", 0, 0, 0, 0},
    {1202, "Guralp", "CMG-3T", "CMG-3T", 0, 0, 0, 0},
    {1203, "Guralp", "CMG-3ESP", "CMG-3ESP", 0, 0, 0, 0},
    {1204, "Guralp", "CMG-40", "CMG-40", 0, 0, 0, 0},
    {1250, "Strecheisen", "STS-1", "STS-1", 0, 0, 0, 0},
    {1251, "Strecheisen", "STS-2", "STS-2", 0, 0, 0, 0},
    {1300, "Mark", "L-4", "L-4", 0, 0, 0, 0},
    {1301, "Mark", "L-22D", "L-22D", 0, 0, 0, 0},
    {1900, "Seismometer", "Other", "Unknown Seism.", 0, 0, 0, 0},
    {3000, "Pressure", "", "Pressure Snsr.", 0, 0, 0, 0},
    {3500, "Dilatometer", "", "Dilatometer", 0, 0, 0, 0},
    {4000, "Displacement", "Relative", "Rel. Displcmt.", 0, 0, 0, 0},
    {4500, "Rotational", "", "Rotatnl. Snsr.", 0, 0, 0, 0},
    {9000, "", "", "Unknown Sensor", 0, 0, 0, 0},
};

// Name of a measurement unit; a channel's vpu_ndx selects the row by number.
struct MeasureInfo {
  std::uint16_t code;
  const char* name;  // up to 15 characters
};

inline constexpr int kMeasureRows = 22;
inline constexpr MeasureInfo Measures[kMeasureRows] = {
    {0, "???"},          {1, "Seconds"},      {2, "G"},           {3, "Seconds&G"},
    {4, "cM/Sec/Sec"},   {5, "cM/Sec"},       {6, "cM"},          {7, "Inches/Sec/Sec"},
    {8, "Inches/Sec"},   {9, "Inches"},       {10, "gallons"},    {11, "mG"},
    {12, "uG"},          {23, "Degrees/Sec/Sec"}, {24, "Degrees/Sec"}, {25, "Degrees"},
    {50, "counts"},      {51, "Volts"},       {52, "mV"},         {60, "PSI"},
    {80, "uStrain"},     {0, ""},
};

// Gain factor behind a channel's gain code (0-15).
inline constexpr int kGainRows = 16;
inline constexpr float Gain_info[kGainRows] = {1.0f,   1.0f,  8.0f,   32.0f,  128.0f, 512.0f,  2048.0f, 8192.0f,
                                               100.0f, 1.0f,  3.98f,  15.85f, 63.1f,  251.19f, 1000.0f, 1.0f};

// Default axis of channel number n (from 0): Axis[n % 6].
inline constexpr char Axis[] = "ZNEZNE";

// INI key names in 12-character slots, each list closed by an empty slot. The first name that
// matches a line as a prefix wins, so the order matters.
inline constexpr int kIniKeyLen = 12;
inline constexpr char IniKeyUnit[13 + 1][kIniKeyLen] = {
    "DASType", "Altitude",   "Latitude",   "Longitude",  "Network", "NetSEED", "Station",
    "Orientation", "StatDASCnt", "StatChnCnt", "CosGeology", "CosNet",  "CosStn",  "",
};
inline constexpr char IniKeyChn[24 + 1][kIniKeyLen] = {
    "ChnFSA",     "ChnRes",    "ChnBand",    "ChnType",    "ChnAxis",  "ChnSnsMake", "ChnSnsModel",
    "ChnSnsSN",   "ChnSnsFSA", "ChnSnsVPU",  "ChnSnsFreq", "ChnSnsDamp", "ChnLat",   "ChnLon",
    "ChnAlt",     "ChnAzm",    "ChnDepth",   "ChnDip",     "ChnNZNP",  "ChnZero",    "ChnPole",
    "ChnNorm",    "ChnSeisComp", "ChnStnChn", "",
};

// Bounded row lookups for values that come from records filled by packets.
inline const SensorInfo* sensor_row(std::uint16_t ndx) { return ndx < kSensorRows ? &Sensor[ndx] : nullptr; }
inline float gain_of(std::uint8_t ndx) { return ndx < kGainRows ? Gain_info[ndx] : 1.0f; }
inline const char* measure_name(std::uint16_t ndx) { return ndx < kMeasureRows ? Measures[ndx].name : "???"; }

// Row of the sensor catalogue whose make and model start the given texts (case ignored);
// kSensorRows when none does.
std::uint16_t Sensor_find(const char* make, const char* model);

}  // namespace lm

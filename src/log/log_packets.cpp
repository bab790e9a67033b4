#include "log/log_packets.hpp"

#include "config/tables.hpp"
#include "log/field_dump.hpp"
#include "base/out_file.hpp"
#include "packet/event_fields.hpp"
#include "packet/soh_layout.hpp"

namespace lm {

namespace {

// A gain code that is no hexadecimal digit selects no row of the table: its gain shows as 0.
float gain_for(char code) {
  int row = -1;
  if (code >= '0' && code <= '9') row = code - '0';
  else if (code >= 'A' && code <= 'F') row = code - 'A' + 10;
  else if (code >= 'a' && code <= 'f') row = code - 'a' + 10;
  return row < 0 ? 0.0f : Gain_info[row];
}

void log_channel_table(OutFile& s, const std::uint8_t* p) {
  s.write("   Channel Info :  BitWght   TruWght    Gain  R  FSV  SEED  SFSV   SVPU   U\r\n");
  const unsigned first = hdr::kFlags.value(p) != 0 ? 17 : 1;
  for (unsigned i = 0; i < eh::kColumnEntries; ++i) {
    if (*eh::kBitWght.at(p, i) == ' ') continue;
    s.printf("    Chn %2u(%.3s) : %.8s  %.8s  %6.0f  %c    %c  %.4s     %c  %.6s  %c\r\n", first + i,
             eh::kStationChannel.at(p, i), eh::kBitWght.at(p, i), eh::kTruWght.at(p, i),
             static_cast<double>(gain_for(*eh::kGain.at(p, i))), *eh::kRes.at(p, i), *eh::kFSV.at(p, i),
             eh::kSEED.at(p, i), *eh::kSFSV.at(p, i), eh::kSVPU.at(p, i), *eh::kUnits.at(p, i));
  }
}

// The sample rate, and the trigger type unless the telemetry form widens the rate over it.
void log_rate(OutFile& s, const std::uint8_t* p, bool telemetry) {
  dump_rows(s, p, 0, telemetry ? std::span<const DumpRow>(eh::kRateTelemetryRow) : eh::kRateRows, kEventLevel);
}

// The trigger layout named by a DS block's type: its first three letters after one leading blank,
// all upper or all lower case; null for any other type.
const soh::TriggerLayout* trigger_layout(const std::uint8_t* p, unsigned block) {
  const std::string_view type = soh::kDsTriggerType.view(p + block);
  const std::string_view name = type.substr(type[0] == ' ' ? 1 : 0, 3);
  for (const soh::TriggerLayout& t : soh::kTriggers) {
    bool upper = true, lower = true;
    for (int i = 0; i < 3; ++i) {
      upper = upper && name[i] == t.upper[i];
      lower = lower && name[i] == t.upper[i] - 'A' + 'a';
    }
    if (upper || lower) return &t;
  }
  return nullptr;
}

void log_ds_trigger(OutFile& s, const std::uint8_t* p, unsigned block) {
  const unsigned at = block + soh::kDsTrigger;
  if (const soh::TriggerLayout* t = trigger_layout(p, block)) {
    for (int n = 1; n <= t->start_times; ++n) {
      s.printf("   Start Time %02d               : ", n);
      s.write(field_text(p, at + soh::kTmlTime.off + (n - 1) * soh::kTmlTime.width, soh::kTmlTime.width));
      s.write("\r\n");
    }
    dump_rows(s, p, at, t->rows, kSubBlock);
  }
  s.write("\r\n");
}

}  // namespace

void log_eh_et(OutFile& s, const std::uint8_t* p) {
  if (hdr::kByteCount.value(p) < eh::kFullCount) {
    s.write(field_text(p, eh::kShortText.off, eh::kShortText.width));
    s.write("\r\n");
    return;
  }
  const bool telemetry = eh::is_telemetry(p);
  s.printf("   Station Name           : %.4s%c\r\n", eh::kStation.ptr(p), eh::kStationExt.at(p));
  dump_rows(s, p, 0, eh::kStationRows, kEventLevel);
  dump_rows(s, p, 0, eh::kStreamRow, kEventLevel);
  log_rate(s, p, telemetry);
  const char source = eh::kTimeSource.at(p);
  s.printf("   Time Source            : %s  Days since PLL %c\r\n",
           source == '2' ? "GPS     " : (source == '1' ? "Internal" : "Unknown "), eh::kClockDays.at(p));
  dump_rows(s, p, 0, eh::kTimeRows, kEventLevel);
  dump_rows(s, p, 0, eh::kSetupRows, kEventLevel);
  log_channel_table(s, p);
  if (telemetry) dump_rows(s, p, 0, eh::kTelemetryDau, kEventLevel);
}

void log_nh_nt(OutFile& s, const std::uint8_t* p) {
  const bool telemetry = eh::is_telemetry(p);
  dump_rows(s, p, 0, eh::kTimeRows, kEventLevel);
  log_rate(s, p, telemetry);
  dump_rows(s, p, 0, eh::kStreamRow, kEventLevel);
  if (telemetry) dump_rows(s, p, 0, eh::kTelemetryCru, kEventLevel);
}

void log_sc(OutFile& s, const std::uint8_t* p) {
  dump_rows(s, p, 0, soh::kScStation, kTopLevel);
  dump_blocks(s, p, soh::kScChannels, kSubBlock, "\r\n");
  s.write("\r\n");
}

void log_ad(OutFile& s, const std::uint8_t* p) {
  dump_rows(s, p, 0, soh::kAd, kTopLevel);
  s.write("\r\n");
}

void log_om(OutFile& s, const std::uint8_t* p) {
  dump_rows(s, p, 0, soh::kOm, kTopLevel);
  s.write("     Wake Sequence Information\r\n");
  dump_blocks(s, p, soh::kOmWakes, kSubBlock, "\r\n");
  s.write("\r\n");
}

void log_ds(OutFile& s, const std::uint8_t* p) { dump_blocks(s, p, soh::kDsStreams, kTopLevel, "", log_ds_trigger); }

void log_cd(OutFile& s, const std::uint8_t* p) {
  dump_rows(s, p, 0, soh::kCd, kTopLevel);
  const std::string_view step = soh::kCdStepOn.view(p);
  if (step == "ON" || step == "on") {
    s.write("\r\n");
    dump_rows(s, p, 0, soh::kCdStep, kSubBlock);
  }
  s.write("\r\n");
}

}  // namespace lm

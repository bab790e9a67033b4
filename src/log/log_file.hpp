#pragma once
#include <cstdint>

namespace lm {

class OutFile;
struct Decoded;
struct Settings;

// Where the run stands for a packet's summary line: the number of packets before it, and the
// continuity mark of the latest channel packet, shown by the next summary line, which takes it.
struct LineState {
  std::uint32_t Blk_cnt = 0;
  int sign = 0;
};

// The settings block that heads every log and statistics file.
void Log_fhdr(OutFile& stream, const Settings& set);
// One summary line for a packet; it takes the continuity mark (back to none).
void log_head(OutFile& stream, const std::uint8_t* packet, std::uint16_t code, LineState& at);
// kind 4: an SH packet's text; kind 0: a hex dump of the whole packet.
void log_block(OutFile& stream, const std::uint8_t* packet, int kind);
// A Steim packet that failed its end check: what it claims, what decoding gave, and its hex dump.
void log_steim_check(OutFile& stream, const std::uint8_t* packet, const Decoded& d);
// FD packets have their summary line only.
void log_fd(OutFile& stream, const std::uint8_t* packet);

}  // namespace lm

namespace lm {

// The settings lines shared by the console echo and the file headers, from "Input File" to
// "Skip Samples", each preceded by `nl` (the first by two), handed one at a time to `emit`.
void settings_lines(const Settings& set, void (*emit)(void* ctx, const char* line), void* ctx, const char* nl);

}  // namespace lm

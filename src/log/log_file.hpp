#pragma once
#include <cstdint>

namespace lm {

class OutFile;
struct Decoded;

// The settings block that heads every log and statistics file.
void Log_fhdr(OutFile& stream);
// One summary line for a packet.
void log_head(OutFile& stream, const std::uint8_t* packet, std::uint16_t code, int unused);
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
void settings_lines(void (*emit)(void* ctx, const char* line), void* ctx, const char* nl);

}  // namespace lm

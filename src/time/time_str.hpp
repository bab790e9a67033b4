#pragma once
// Time strings: 16 digits YYYYDDDHHMMSSmmm and a NUL; text order is time order.
#include <cstdint>

namespace lm {

inline constexpr int kTimeLen = 16;

// The time string of a packet header (two-digit year widened with the pivot 85).
void pkt_time_str(const std::uint8_t* packet, char* out);
// Advances a time string in place by a BCD sample count (2 bytes) at a rate in samples per second.
void add_str_tim(char* time, float rate, const std::uint8_t* count);
// A packed directory time (7 bits year - 1984, 25 bits seconds of that year) as 13 digits and a NUL.
void secs_split(std::uint32_t packed, char* out);
// Seconds from `from` to `to`, every year counted as 365 days.
float Time_update(const char* from, const char* to);

}  // namespace lm

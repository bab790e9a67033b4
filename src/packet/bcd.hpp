#pragma once
#include <cstdint>

namespace lm {

// Two characters per byte, high nibble first, each nibble + '0' (nibbles above 9 give ':' to '?').
// Writes no terminating NUL.
void unbcd(char* text, const std::uint8_t* bytes, std::uint16_t count);
// Packed decimal to binary, kept modulo 65536; nibbles above 9 are not rejected. Inline: a packet's
// header fields are read through it a dozen times.
inline std::uint16_t bcd2i(const std::uint8_t* bytes, std::int16_t count) {
  unsigned value = 0;
  for (std::int16_t i = 0; i < count; ++i)
    value = (value * 100 + (bytes[i] >> 4) * 10 + (bytes[i] & 0x0F)) & 0xFFFF;
  return static_cast<std::uint16_t>(value);
}
std::uint16_t bcdtoi(const std::uint8_t* bytes, std::uint16_t count);

// count bytes (2 or 4) read most significant first; any other count prints a message and gives 0.
std::uint32_t reverse(const void* address, std::uint8_t count);

// One 68-character hex dump line of 16 bytes into text (at least 69 bytes), NUL-terminated.
void hex_str(char* text, const std::uint8_t* bytes);

// Big-endian loads: the one way packet numbers are read, whatever the host's byte order.
inline std::uint32_t load_be32(const std::uint8_t* p) {
  return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) | p[3];
}
inline std::uint16_t load_be16(const std::uint8_t* p) {
  return static_cast<std::uint16_t>((p[0] << 8) | p[1]);
}

}  // namespace lm

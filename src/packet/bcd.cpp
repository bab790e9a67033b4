#include "packet/bcd.hpp"

#include <cstdio>

namespace lm {

void unbcd(char* text, const std::uint8_t* bytes, std::uint16_t count) {
  for (std::uint16_t i = 0; i < count; ++i) {
    text[2 * i] = static_cast<char>('0' + (bytes[i] >> 4));
    text[2 * i + 1] = static_cast<char>('0' + (bytes[i] & 0x0F));
  }
}

std::uint16_t bcd2i(const std::uint8_t* bytes, std::int16_t count) {
  unsigned value = 0;
  for (std::int16_t i = 0; i < count; ++i)
    value = (value * 100 + (bytes[i] >> 4) * 10 + (bytes[i] & 0x0F)) & 0xFFFF;
  return static_cast<std::uint16_t>(value);
}

std::uint16_t bcdtoi(const std::uint8_t* bytes, std::uint16_t count) {
  return bcd2i(bytes, static_cast<std::int16_t>(count));
}

std::uint32_t reverse(const void* address, std::uint8_t count) {
  const auto* p = static_cast<const std::uint8_t*>(address);
  if (count == 2) return load_be16(p);
  if (count == 4) return load_be32(p);
  std::printf("reverse: Incorrect no of bytes passed\n");
  return 0;
}

void hex_str(char* text, const std::uint8_t* bytes) {
  static const char kHex[] = "0123456789ABCDEF";
  char* o = text;
  for (int i = 0; i < 16; ++i) {
    if (i == 8) {
      *o++ = '-';
      *o++ = ' ';
    }
    *o++ = kHex[bytes[i] >> 4];
    *o++ = kHex[bytes[i] & 0x0F];
    *o++ = ' ';
  }
  *o++ = ' ';
  *o++ = ' ';
  for (int i = 0; i < 16; ++i) *o++ = (bytes[i] < 32 || bytes[i] > 126) ? '.' : static_cast<char>(bytes[i]);
  *o = '\0';
}

}  // namespace lm

#include "packet/bcd.hpp"

#include <cstdio>
#include <cstring>

namespace lm {

void unbcd(char* text, const std::uint8_t* bytes, std::uint16_t count) {
  // Eight bytes a step in vector lanes, the last step ending at the last byte (it may redo some of the
  // step before): every packet's header goes through here.
  typedef std::uint8_t Bytes __attribute__((vector_size(16)));
  auto eight = [&](std::uint16_t i) {
    Bytes b{};
    std::memcpy(&b, bytes + i, 8);
    const Bytes hi = b >> 4, lo = b & 15;
    const Bytes digits = __builtin_shufflevector(hi, lo, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23) + '0';
    std::memcpy(text + 2 * i, &digits, sizeof digits);
  };
  if (count >= 8) {
    for (std::uint16_t i = 0; i + 8 < count; i += 8) eight(i);
    eight(static_cast<std::uint16_t>(count - 8));
    return;
  }
  for (std::uint16_t i = 0; i < count; ++i) {
    text[2 * i] = static_cast<char>('0' + (bytes[i] >> 4));
    text[2 * i + 1] = static_cast<char>('0' + (bytes[i] & 0x0F));
  }
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

#include "decode/decoders.hpp"

namespace lm {

Decoder decoder_for(std::uint8_t format) {
  switch (format) {
    case 0x00: case 0x32: case 0x33: return Buf_32;
    case 0x01: case 0x16: case 0x17: return Buf_16;
    case 0x02: case 0x03: case 0xC0: case 0xC1: return Buf_c0;
    case 0xC2: case 0xC3: return Buf_c2;
    default: return nullptr;
  }
}

}  // namespace lm

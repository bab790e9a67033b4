// The Steim-1 and Steim-2 decoders over one arbitrary packet.
#include <cstdint>
#include <cstring>

#include "decode/decoders.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  alignas(8) std::uint8_t packet[1024] = {};
  std::memcpy(packet, data, size < sizeof packet ? size : sizeof packet);
  static std::uint32_t buf[lm::kMaxSamples];
  std::int32_t last = 0;  // carried from the first decoder to the second, as within one channel
  lm::Buf_c0(packet, last, buf);
  lm::Buf_c2(packet, last, buf);
  return 0;
}

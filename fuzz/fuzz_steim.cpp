// The Steim-1 and Steim-2 decoders over one arbitrary packet, into a span of exactly the largest
// count a packet can yield, so that a write past it is caught.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "decode/decoders.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  alignas(8) std::uint8_t packet[1024] = {};
  std::memcpy(packet, data, size < sizeof packet ? size : sizeof packet);
  static std::uint32_t buf[lm::kMaxSamples];
  // The sample carried over from a previous packet: taken from the input past the packet, if any.
  std::int32_t last = 0;
  if (size >= sizeof packet + 4) std::memcpy(&last, data + sizeof packet, 4);
  for (const lm::Decoder decode : {lm::Buf_c0, lm::Buf_c2}) {
    const lm::Decoded d = decode(packet, last, buf);
    if (d.count > lm::kMaxSamples || d.n_undefined > lm::kMaxDataWords) std::abort();
  }
  return 0;
}

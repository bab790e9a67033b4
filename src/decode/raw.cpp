#include "decode/decoders.hpp"
#include "packet/bcd.hpp"
#include "packet/fields.hpp"

namespace lm {

namespace {
// What fits in the 1000 data bytes after the DT header.
constexpr unsigned kMax16 = (kPacketSize - dt::kRawData) / 2;
constexpr unsigned kMax32 = (kPacketSize - dt::kRawData) / 4;
static_assert(kMax16 == 500 && kMax32 == 250);
}  // namespace

void Buf_16(CHNLST_T*, const std::uint8_t* packet, std::uint32_t* buf) {
  unsigned n = hdr::kSamples.value(packet);
  if (n > kMax16) n = kMax16;
  const std::uint8_t* p = packet + dt::kRawData;
  for (unsigned i = 0; i < n; ++i, p += 2)
    buf[1 + i] = static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<std::int16_t>(load_be16(p))));
  buf[0] = n;
}

void Buf_32(CHNLST_T*, const std::uint8_t* packet, std::uint32_t* buf) {
  unsigned n = hdr::kSamples.value(packet);
  if (n > kMax32) n = kMax32;
  const std::uint8_t* p = packet + dt::kRawData;
  for (unsigned i = 0; i < n; ++i, p += 4) buf[1 + i] = load_be32(p);
  buf[0] = n;
}

}  // namespace lm

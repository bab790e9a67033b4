#include "decode/decoders.hpp"
#include "packet/bcd.hpp"
#include "packet/fields.hpp"

namespace lm {

namespace {
// What fits in the 1000 data bytes after the DT header.
constexpr unsigned kMax16 = (kPacketSize - dt::kRawData) / 2;
constexpr unsigned kMax32 = (kPacketSize - dt::kRawData) / 4;
static_assert(kMax16 == 500 && kMax32 == 250 && kMax16 <= kMaxSamples);

unsigned sample_count(const std::uint8_t* packet, unsigned fit, std::size_t room) {
  const unsigned n = hdr::kSamples.value(packet);
  return room < kMaxSamples ? 0 : (n > fit ? fit : n);
}
}  // namespace

Decoded Buf_16(const std::uint8_t* packet, std::int32_t&, std::span<std::uint32_t> out) {
  const unsigned n = sample_count(packet, kMax16, out.size());
  const std::uint8_t* p = packet + dt::kRawData;
  for (unsigned i = 0; i < n; ++i, p += 2)
    out[i] = static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<std::int16_t>(load_be16(p))));
  return Decoded(n);
}

Decoded Buf_32(const std::uint8_t* packet, std::int32_t&, std::span<std::uint32_t> out) {
  const unsigned n = sample_count(packet, kMax32, out.size());
  const std::uint8_t* p = packet + dt::kRawData;
  for (unsigned i = 0; i < n; ++i, p += 4) out[i] = load_be32(p);
  return Decoded(n);
}

}  // namespace lm

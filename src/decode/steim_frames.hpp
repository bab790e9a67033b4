#pragma once
// What the Steim-1 and Steim-2 decoders share: the frame layout, sign extension of a bit field,
// and the end-of-packet check with its report.
#include <cstdint>

#include "packet/bcd.hpp"
#include "packet/fields.hpp"

namespace lm {

struct CHNLST_T;

namespace steim {

inline constexpr int kWordsPerFrame = 16;
inline constexpr int kFirstDataWord = 3;  // frame 1: words 1 and 2 hold X0 and Xn

// Byte offset of word `w` (0-15) of frame `f` (1-15); the last word of frame 15 ends at byte 1023.
constexpr std::uint16_t word_offset(int f, int w) {
  return static_cast<std::uint16_t>(dt::kFrames * f + 4 * w);
}
static_assert(word_offset(dt::kFrameCount, kWordsPerFrame - 1) + 4 == kPacketSize);

// Two-bit code of word k of a control word.
constexpr unsigned code_of(std::uint32_t control, int k) { return (control >> (30 - 2 * k)) & 3u; }

// The low `bits` bits of v as a two's complement number (1 <= bits <= 32).
constexpr std::int32_t sext(std::uint32_t v, int bits) {
  return static_cast<std::int32_t>(v << (32 - bits)) >> (32 - bits);
}

// What every Steim packet states about itself: its sample count and the integration constants.
struct PacketClaims {
  std::uint16_t n_hdr;
  std::uint32_t x0, xn;
  explicit PacketClaims(const std::uint8_t* packet)
      : n_hdr(hdr::kSamples.value(packet)), x0(load_be32(packet + dt::kX0)), xn(load_be32(packet + dt::kXn)) {}
};

// The checks after the last frame: on success the channel carries s on; otherwise the report goes
// to the unit's packet log (when logging is on) and the channel carries Xn on.
void finish(CHNLST_T* chn, const std::uint8_t* packet, const std::uint32_t* buf, const PacketClaims& claims,
            std::uint32_t d0, std::uint32_t s, bool mismatch);

}  // namespace steim
}  // namespace lm

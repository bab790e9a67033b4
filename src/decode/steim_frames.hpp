#pragma once
// What the Steim-1 and Steim-2 decoders share: the frame layout, the packet's claims and the end check.
#include <cstdint>

#include "decode/decoders.hpp"
#include "packet/bcd.hpp"
#include "packet/fields.hpp"

namespace lm::steim {

inline constexpr int kWordsPerFrame = 16;
inline constexpr int kFirstDataWord = 3;  // frame 1: words 1 and 2 hold X0 and Xn

// Byte offset of word `w` (0-15) of frame `f` (1-15); the last word of frame 15 ends at byte 1023.
constexpr std::uint16_t word_offset(int f, int w) {
  return static_cast<std::uint16_t>(dt::kFrames * f + 4 * w);
}
static_assert(word_offset(dt::kFrameCount, kWordsPerFrame - 1) + 4 == kPacketSize);
static_assert(kMaxSamples == 7 * (dt::kFrameCount * (kWordsPerFrame - 1) - 2));

// The codes of frame f's control word.
inline void frame_codes(const std::uint8_t* packet, int f, std::uint8_t* codes) {
  C0_flag_cvt(packet + word_offset(f, 0), codes);
}

// What every Steim packet states about itself: its sample count and the integration constants.
struct PacketClaims {
  std::uint16_t n_hdr;
  std::uint32_t x0, xn;
  explicit PacketClaims(const std::uint8_t* packet)
      : n_hdr(hdr::kSamples.value(packet)), x0(load_be32(packet + dt::kX0)), xn(load_be32(packet + dt::kXn)) {}
};

// The result after the last frame, with the end check against `last` applied.
Decoded finish(std::int32_t& last, const PacketClaims& claims, std::uint32_t count, std::uint32_t d0, std::uint32_t s);

}  // namespace lm::steim

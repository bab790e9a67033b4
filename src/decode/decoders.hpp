#pragma once
// Sample decoders of DT packets. Each fills a bounded span with signed 32-bit samples (kept as their
// bit patterns) and returns how many it wrote and, for Steim packets, the end check.
#include <cstdint>
#include <span>

namespace lm {

// Most samples one packet can yield: 223 Steim-2 data words of seven differences each.
inline constexpr std::size_t kMaxSamples = 1561;

// A Steim packet's own claims against what decoding it gave.
struct SteimCheck {
  std::uint32_t x0 = 0, xn = 0;                  // integration constants in the packet
  std::uint16_t n_hdr = 0;                       // sample count in the header
  std::uint32_t calc_start = 0, calc_stop = 0;   // carried sample + first difference; last sample
};

// Data words a packet can hold: 13 in frame 1, 15 in each of frames 2 to 15.
inline constexpr std::size_t kMaxDataWords = 223;

struct Decoded {
  explicit Decoded(std::uint32_t n = 0) : count(n) {}
  std::uint32_t count;      // samples written
  bool steim = false;       // a Steim packet: the end check applies
  bool failed = false;      // the Steim end check failed; `check` tells how
  std::uint32_t d0 = 0;     // the first difference, which links the packet to the channel's last sample
  SteimCheck check;
  // Nibbles of the Steim-2 words that no difference layout fits, in packet order: the caller tells the
  // operator, so that decoding itself stays silent.
  std::uint16_t n_undefined = 0;
  std::uint8_t undefined[kMaxDataWords] = {};
};

// The end check of a Steim packet against the channel's last sample: sets `failed` and the check's
// carried value, and carries `last` on. The samples do not depend on `last`, so a packet decoded
// ahead of its turn (against any last) is checked again here against the channel's own.
void end_check(Decoded& d, std::int32_t& last);

// `last`: the channel's last sample after its previous Steim packet, carried on to the next one.
// A span shorter than kMaxSamples gets no samples.
using Decoder = Decoded (*)(const std::uint8_t* packet, std::int32_t& last, std::span<std::uint32_t> out);

Decoded Buf_16(const std::uint8_t* packet, std::int32_t& last, std::span<std::uint32_t> out);
Decoded Buf_32(const std::uint8_t* packet, std::int32_t& last, std::span<std::uint32_t> out);
Decoded Buf_c0(const std::uint8_t* packet, std::int32_t& last, std::span<std::uint32_t> out);
Decoded Buf_c2(const std::uint8_t* packet, std::int32_t& last, std::span<std::uint32_t> out);

// The sixteen two-bit codes of a stored (big-endian) control word, code 0 first.
void C0_flag_clr(std::uint8_t* codes);
// Inline: the decoders take a frame's codes fifteen times a packet.
inline void C0_flag_cvt(const std::uint8_t* word, std::uint8_t* codes) {
  const std::uint32_t control = std::uint32_t{word[0]} << 24 | std::uint32_t{word[1]} << 16 |
                                std::uint32_t{word[2]} << 8 | word[3];
  for (int k = 0; k < 16; ++k) codes[k] = static_cast<std::uint8_t>((control >> (30 - 2 * k)) & 3u);
}

// The nbits bits of word from bit shift up, sign-extended; 0 for a width of 0 or above 32 or a shift above 32.
constexpr std::int32_t Steim2_get_bits(std::uint32_t word, int shift, int nbits) {
  if (nbits <= 0 || nbits > 32 || shift < 0 || shift > 32) return 0;
  // 64-bit so that a shift of 32 is defined: it leaves only the sign fill.
  const std::int64_t shifted = static_cast<std::int64_t>(static_cast<std::int32_t>(word)) >> shift;
  const std::uint32_t mask = nbits == 32 ? 0xFFFFFFFFu : (1u << nbits) - 1u;
  std::uint32_t v = static_cast<std::uint32_t>(shifted) & mask;
  if (v & (1u << (nbits - 1))) v |= ~mask;
  return static_cast<std::int32_t>(v);
}

// The decoder for a data format byte, or null when the format is not decoded.
Decoder decoder_for(std::uint8_t format);

}  // namespace lm

#include <cstdio>

#include "decode/decoders.hpp"
#include "decode/steim_frames.hpp"
#include "model/records.hpp"

namespace lm {

std::int32_t Steim2_get_bits(std::uint32_t word, int shift, int nbits) {
  if (nbits <= 0 || nbits > 32 || shift < 0 || shift > 32) return 0;
  // 64-bit so that a shift of 32 is defined: it leaves only the sign fill.
  const std::int64_t shifted = static_cast<std::int64_t>(static_cast<std::int32_t>(word)) >> shift;
  const std::uint32_t mask = nbits == 32 ? 0xFFFFFFFFu : (1u << nbits) - 1u;
  std::uint32_t v = static_cast<std::uint32_t>(shifted) & mask;
  if (v & (1u << (nbits - 1))) v |= ~mask;
  return static_cast<std::int32_t>(v);
}

namespace {

using steim::sext;

// First difference of a data word with a non-zero code; the whole word for an undefined nibble.
std::uint32_t first_difference(unsigned code, std::uint32_t w) {
  const unsigned nibble = w >> 30;
  if (code == 1) return static_cast<std::uint32_t>(sext(w >> 24, 8));
  if (code == 2) {
    switch (nibble) {
      case 1: return static_cast<std::uint32_t>(sext(w, 30));
      case 2: return static_cast<std::uint32_t>(sext(w >> 15, 15));
      case 3: return static_cast<std::uint32_t>(sext(w >> 20, 10));
      default: return w;
    }
  }
  switch (nibble) {
    case 0: return static_cast<std::uint32_t>(sext(w >> 24, 6));
    case 1: return static_cast<std::uint32_t>(sext(w >> 25, 5));
    case 2: return static_cast<std::uint32_t>(sext(w >> 24, 4));
    default: return w;
  }
}

// Appends the N fields of Bits bits that fill the low N * Bits bits of w, most significant first.
template <int N, int Bits>
inline std::uint32_t* unpack(std::uint32_t w, std::uint32_t& s, std::uint32_t* out) {
  for (int i = 0; i < N; ++i) *out++ = s += static_cast<std::uint32_t>(sext(w >> (Bits * (N - 1 - i)), Bits));
  return out;
}

void undefined_nibble(unsigned nibble) { std::printf("Error in Steim2 W-type (%d) for C=2\n", static_cast<int>(nibble)); }

}  // namespace

void Buf_c2(CHNLST_T* chn, const std::uint8_t* packet, std::uint32_t* buf) {
  using namespace steim;
  const PacketClaims claims(packet);
  const std::uint32_t x0 = claims.x0;
  buf[0] = 0;

  // The first data word is the first one of frame 1 with a non-zero code; earlier words are empty.
  const std::uint32_t control1 = load_be32(packet + word_offset(1, 0));
  int first = kFirstDataWord;
  while (first < kWordsPerFrame && code_of(control1, first) == 0) ++first;
  // No data word in frame 1: d0 = 0, as for an empty first word in Steim-1.
  const std::uint32_t d0 =
      first < kWordsPerFrame ? first_difference(code_of(control1, first), load_be32(packet + word_offset(1, first))) : 0;

  std::uint32_t s = x0 - d0;  // unsigned: the integration wraps modulo 2^32
  const bool mismatch = chn->last != 0 && static_cast<std::uint32_t>(chn->last) + d0 != x0;

  std::uint32_t* out = buf + 1;
  for (int f = 1; f <= dt::kFrameCount; ++f) {
    const std::uint32_t control = f == 1 ? control1 : load_be32(packet + word_offset(f, 0));
    for (int w = f == 1 ? first : 1; w < kWordsPerFrame; ++w) {
      const std::uint8_t* p = packet + word_offset(f, w);
      const unsigned code = code_of(control, w);
      if (code == 0) continue;
      const std::uint32_t word = load_be32(p);
      if (code == 1) {
        out = unpack<4, 8>(word, s, out);
        continue;
      }
      const unsigned nibble = word >> 30;
      if (code == 2) {
        switch (nibble) {
          case 1: out = unpack<1, 30>(word, s, out); break;
          case 2: out = unpack<2, 15>(word, s, out); break;
          case 3: out = unpack<3, 10>(word, s, out); break;
          default: undefined_nibble(nibble); break;
        }
      } else {
        switch (nibble) {
          case 0: out = unpack<5, 6>(word, s, out); break;
          case 1: out = unpack<6, 5>(word, s, out); break;
          case 2: out = unpack<7, 4>(word, s, out); break;
          default: undefined_nibble(nibble); break;
        }
      }
    }
  }
  buf[0] = static_cast<std::uint32_t>(out - (buf + 1));
  finish(chn, packet, buf, claims, d0, s, mismatch);
}

}  // namespace lm

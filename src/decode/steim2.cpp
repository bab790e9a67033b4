#include <algorithm>

#include "decode/decoders.hpp"
#include "decode/steim_frames.hpp"

namespace lm {

namespace {

// The low `bits` bits of w >> shift, sign-extended.
constexpr std::uint32_t field(std::uint32_t w, int shift, int bits) {
  return static_cast<std::uint32_t>(Steim2_get_bits(w, shift, bits));
}

// First difference of a data word with a non-zero code; the whole word for an undefined nibble.
std::uint32_t first_difference(unsigned code, std::uint32_t w) {
  const unsigned nibble = w >> 30;
  if (code == 1) return field(w, 24, 8);
  if (code == 2) {
    switch (nibble) {
      case 1: return field(w, 0, 30);
      case 2: return field(w, 15, 15);
      case 3: return field(w, 20, 10);
      default: return w;
    }
  }
  switch (nibble) {
    case 0: return field(w, 24, 6);
    case 1: return field(w, 25, 5);
    case 2: return field(w, 24, 4);
    default: return w;
  }
}

// Appends the N fields of Bits bits that fill the low N * Bits bits of w, most significant first.
template <int N, int Bits>
inline std::uint32_t* unpack(std::uint32_t w, std::uint32_t& s, std::uint32_t* out) {
  for (int i = 0; i < N; ++i) *out++ = s += field(w, Bits * (N - 1 - i), Bits);
  return out;
}

}  // namespace

Decoded Buf_c2(const std::uint8_t* packet, std::int32_t& last, std::span<std::uint32_t> span) {
  using namespace steim;
  if (span.size() < kMaxSamples) return Decoded();
  const PacketClaims claims(packet);
  std::uint8_t codes[kWordsPerFrame];
  frame_codes(packet, 1, codes);

  // The first data word is the first one of frame 1 with a non-zero code; earlier words are empty.
  int first = kFirstDataWord;
  while (first < kWordsPerFrame && codes[first] == 0) ++first;
  // No data word in frame 1: d0 = 0, as for an empty first word in Steim-1.
  const std::uint32_t d0 =
      first < kWordsPerFrame ? first_difference(codes[first], load_be32(packet + word_offset(1, first))) : 0;

  std::uint32_t s = claims.x0 - d0;  // unsigned: the integration wraps modulo 2^32
  const bool mismatch = last != 0 && static_cast<std::uint32_t>(last) + d0 != claims.x0;

  std::uint8_t undefined[kMaxDataWords];
  std::uint16_t n_undefined = 0;  // bounded: one entry per data word at most
  std::uint32_t* const start = span.data();
  std::uint32_t* out = start;
  for (int f = 1; f <= dt::kFrameCount; ++f) {
    if (f > 1) frame_codes(packet, f, codes);
    for (int w = f == 1 ? first : 1; w < kWordsPerFrame; ++w) {
      const std::uint8_t* p = packet + word_offset(f, w);
      const unsigned code = codes[w];
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
          default: undefined[n_undefined++] = static_cast<std::uint8_t>(nibble); break;
        }
      } else {
        switch (nibble) {
          case 0: out = unpack<5, 6>(word, s, out); break;
          case 1: out = unpack<6, 5>(word, s, out); break;
          case 2: out = unpack<7, 4>(word, s, out); break;
          default: undefined[n_undefined++] = static_cast<std::uint8_t>(nibble); break;
        }
      }
    }
  }
  Decoded d = finish(last, claims, static_cast<std::uint32_t>(out - start), d0, s, mismatch);
  d.n_undefined = n_undefined;
  std::copy_n(undefined, n_undefined, d.undefined);
  return d;
}

}  // namespace lm

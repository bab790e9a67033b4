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

// How a data word splits, by its code and top nibble: `n` differences of `bits` bits, most
// significant first; n = 0 for an empty word or an undefined nibble (`bad`). Lane i of the seven
// is word * up[i] (its difference moved to the top bits: a multiply costs less than a shift by a
// variable count), taken as signed and shifted right by `right`; up[i] = 0 empties the lanes past n.
struct WordShape {
  std::uint8_t n;
  bool bad;
  std::uint8_t right;
  std::uint32_t up[7];
};

constexpr WordShape shape(int n, int bits, bool bad = false) {
  WordShape sh{static_cast<std::uint8_t>(n), bad, static_cast<std::uint8_t>(n ? 32 - bits : 0), {}};
  for (int i = 0; i < n; ++i) sh.up[i] = 1u << (32 - bits * (n - i));
  return sh;
}

constexpr WordShape kShapes[16] = {
    shape(0, 0), shape(0, 0),  shape(0, 0),  shape(0, 0),         // code 0: no data
    shape(4, 8), shape(4, 8),  shape(4, 8),  shape(4, 8),         // code 1: four bytes, any nibble
    shape(0, 0, true), shape(1, 30), shape(2, 15), shape(3, 10),  // code 2
    shape(5, 6), shape(6, 5),  shape(7, 4),  shape(0, 0, true),   // code 3
};

// Adds the differences of one data word to s and writes the n running values to out[0..n), using
// out[n..7) as scratch. Branch-free: the widths of neighbouring words are as random as the signal.
inline std::uint32_t* unpack(std::uint32_t w, const WordShape& sh, std::uint32_t& s, std::uint32_t* out) {
  std::uint32_t run = s;
#pragma GCC unroll 7
  for (int i = 0; i < 7; ++i) {
    run += static_cast<std::uint32_t>(static_cast<std::int32_t>(w * sh.up[i]) >> sh.right);
    out[i] = run;
  }
  s = run;
  return out + sh.n;
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

  std::uint8_t undefined[kMaxDataWords];
  std::uint16_t n_undefined = 0;  // bounded: one entry per data word at most
  // Every word writes all seven lanes from `out`, which stands at most seven places a word from the
  // start: the 223 words' lanes all fall within the span's kMaxSamples.
  static_assert(kMaxSamples == 7 * kMaxDataWords);
  std::uint32_t* const start = span.data();
  std::uint32_t* out = start;
  for (int f = 1; f <= dt::kFrameCount; ++f) {
    if (f > 1) frame_codes(packet, f, codes);
    for (int w = f == 1 ? first : 1; w < kWordsPerFrame; ++w) {
      const std::uint32_t word = load_be32(packet + word_offset(f, w));
      const WordShape& sh = kShapes[codes[w] << 2 | word >> 30];
      if (sh.bad) undefined[n_undefined++] = static_cast<std::uint8_t>(word >> 30);
      out = unpack(word, sh, s, out);
    }
  }
  Decoded d = finish(last, claims, static_cast<std::uint32_t>(out - start), d0, s);
  d.n_undefined = n_undefined;
  std::copy_n(undefined, n_undefined, d.undefined);
  return d;
}

}  // namespace lm

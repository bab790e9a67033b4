#include <array>
#include <bit>
#include <cstring>
#include <type_traits>

#include "base/cpu_features.hpp"
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

// Four 32-bit lanes. A word's seven differences take two of them: the low half differences 0-3, the
// high half differences 3-6, which go out as two four-lane stores at out and out + 3.
typedef std::uint32_t Lanes __attribute__((vector_size(16)));
typedef std::int32_t SignedLanes __attribute__((vector_size(16)));

// How a data word splits, by its code and top nibble: `n` differences of `bits` bits, most
// significant first; n = 0 for an empty word or an undefined nibble (`bad`).
struct Layout {
  int n, bits;
  bool bad;
};
constexpr Layout kLayouts[16] = {
    {0, 0, false}, {0, 0, false},  {0, 0, false},  {0, 0, false},   // code 0: no data
    {4, 8, false}, {4, 8, false},  {4, 8, false},  {4, 8, false},   // code 1: four bytes, any nibble
    {0, 0, true},  {1, 30, false}, {2, 15, false}, {3, 10, false},  // code 2
    {5, 6, false}, {6, 5, false},  {7, 4, false},  {0, 0, true},    // code 3
};

// A layout for the plain copy. A lane's difference is word * up (moved to the top bits: before AVX2,
// vector units cannot shift lanes by different counts), taken as signed and shifted right by `right`;
// up = 0 empties the lanes past n. 64 bytes, so that an index scales by a shift.
struct alignas(64) WordShape {
  std::uint32_t up[8];  // the low half's lanes, then the high half's
  std::uint8_t right;
  std::uint8_t n;
  bool bad;
};

constexpr WordShape shape(const Layout& l) {
  WordShape sh{{}, static_cast<std::uint8_t>(l.n ? 32 - l.bits : 0), static_cast<std::uint8_t>(l.n), l.bad};
  for (int lane = 0; lane < 8; ++lane) {
    const int i = lane < 4 ? lane : lane - 1;
    if (i < l.n) sh.up[lane] = 1u << (32 - l.bits * (l.n - i));
  }
  return sh;
}

// The same layout for the AVX2 copy, whose lanes shift by counts of their own: difference i is the
// word shifted left by left[i], then right by right[i] with its sign. Lanes past n shift by 0; their
// values are overwritten by the next word or lie past the count.
struct alignas(64) WordShifts {
  std::uint32_t left[8];
  std::uint32_t right[8];
};

constexpr WordShifts shifts(const Layout& l) {
  WordShifts sh{};
  for (int i = 0; i < l.n; ++i) {
    sh.left[i] = static_cast<std::uint32_t>(32 - l.bits * (l.n - i));
    sh.right[i] = static_cast<std::uint32_t>(32 - l.bits);
  }
  return sh;
}

template <typename T, T (*make)(const Layout&)>
constexpr std::array<T, 16> table() {
  std::array<T, 16> t{};
  for (std::size_t k = 0; k < t.size(); ++k) t[k] = make(kLayouts[k]);
  return t;
}
constexpr auto kShapes = table<WordShape, shape>();
constexpr auto kShifts = table<WordShifts, shifts>();

// The differences of one data word at out[0..7): the low half's lanes hold differences 0-3, the
// high half's 3-6 (lane 3 twice, the same value), so two four-lane stores never pass the seventh place.
// Branch-free, since the widths of neighbouring words are as random as the signal; the running sum
// is left to one pass over the packet, so that no word waits for the one before.
[[gnu::always_inline]] inline std::uint32_t* spread(std::uint32_t w, const WordShape& sh, std::uint32_t* out) {
  Lanes low, high;
  std::memcpy(&low, sh.up, sizeof low);
  std::memcpy(&high, sh.up + 4, sizeof high);
  low = reinterpret_cast<Lanes>(reinterpret_cast<SignedLanes>(w * low) >> sh.right);
  high = reinterpret_cast<Lanes>(reinterpret_cast<SignedLanes>(w * high) >> sh.right);
  std::memcpy(out, &low, sizeof low);
  std::memcpy(out + 3, &high, sizeof high);
  return out + sh.n;
}

typedef std::uint32_t Lanes8 __attribute__((vector_size(32)));
typedef std::int32_t SignedLanes8 __attribute__((vector_size(32)));

// spread() for the AVX2 copy: the differences in eight lanes by two shifts. Eight places go out from
// `out` while it stands at or below `room` (eight places before the span's end), seven past it.
[[gnu::always_inline]] inline std::uint32_t* spread_wide(std::uint32_t w, unsigned k, std::uint32_t* out,
                                                         const std::uint32_t* room) {
  Lanes8 left, right;
  std::memcpy(&left, kShifts[k].left, sizeof left);
  std::memcpy(&right, kShifts[k].right, sizeof right);
  const Lanes8 d = reinterpret_cast<Lanes8>(reinterpret_cast<SignedLanes8>((Lanes8{} + w) << left) >>
                                            reinterpret_cast<SignedLanes8>(right));
  std::memcpy(out, &d, out <= room ? sizeof d : sizeof d - sizeof w);
  return out + kShapes[k].n;
}

// Replaces the n differences at v by the running values they lead to from s; returns the last one
// (s when there is none). A vector of N lanes a step: four for the plain copy, eight for the AVX2 one
// (eight lanes made of two halves cost the plain copy 2.6 times as much).
template <int N>
[[gnu::always_inline]] inline std::uint32_t integrate(std::uint32_t* v, std::uint32_t n, std::uint32_t s) {
  using V = std::conditional_t<N == 8, Lanes8, Lanes>;
  const V zero{};
  V carry = zero + s;
  std::uint32_t i = 0;
  for (; i + N <= n; i += N) {
    V d;
    std::memcpy(&d, v + i, sizeof d);
    if constexpr (N == 8) {
      d += __builtin_shufflevector(d, zero, 8, 0, 1, 2, 8, 4, 5, 6);
      d += __builtin_shufflevector(d, zero, 8, 8, 0, 1, 8, 8, 4, 5);
      d += __builtin_shufflevector(d, zero, 8, 8, 8, 8, 3, 3, 3, 3);
    } else {
      d += __builtin_shufflevector(d, zero, 4, 0, 1, 2);
      d += __builtin_shufflevector(d, zero, 4, 4, 0, 1);
    }
    d += carry;
    std::memcpy(v + i, &d, sizeof d);
    if constexpr (N == 8) carry = __builtin_shufflevector(d, d, 7, 7, 7, 7, 7, 7, 7, 7);
    else carry = __builtin_shufflevector(d, d, 3, 3, 3, 3);
  }
  s = carry[0];
  for (; i < n; ++i) v[i] = s += v[i];
  return s;
}

// A frame's sixteen words in host order, and for each its shape's index in kShapes: code * 4 + top
// nibble, below 16 by construction. Taken for the whole frame at once in vector lanes, so that a
// word's own work starts from loads.
struct FrameWords {
  alignas(16) std::uint32_t word[16];
  alignas(16) std::uint32_t shape[16];
};

// Control word * 4^k brings word k's code to the top bits.
constexpr Lanes kCodeUp[4] = {{1u << 0, 1u << 2, 1u << 4, 1u << 6},
                              {1u << 8, 1u << 10, 1u << 12, 1u << 14},
                              {1u << 16, 1u << 18, 1u << 20, 1u << 22},
                              {1u << 24, 1u << 26, 1u << 28, 1u << 30}};

// Four big-endian words in host order: bytes swapped within 16-bit lanes, then the lanes in pairs.
[[gnu::always_inline]] inline Lanes from_big_endian(Lanes w) {
  if constexpr (std::endian::native == std::endian::big) return w;
  typedef std::uint16_t Shorts __attribute__((vector_size(16)));
  const Shorts h = reinterpret_cast<Shorts>(w) << 8 | reinterpret_cast<Shorts>(w) >> 8;
  return reinterpret_cast<Lanes>(__builtin_shufflevector(h, h, 1, 0, 3, 2, 5, 4, 7, 6));
}

[[gnu::always_inline]] inline void split_frame(const std::uint8_t* frame, FrameWords& fw) {
  const Lanes control = Lanes{} + load_be32(frame);
  for (int q = 0; q < 4; ++q) {
    Lanes w;
    std::memcpy(&w, frame + sizeof w * q, sizeof w);
    w = from_big_endian(w);
    const Lanes shape = (control * kCodeUp[q]) >> 30 << 2 | w >> 30;
    std::memcpy(fw.word + 4 * q, &w, sizeof w);
    std::memcpy(fw.shape + 4 * q, &shape, sizeof shape);
  }
}

// The nibbles of the words no layout fits, in packet order, into `nibbles` (room for every data word);
// returns their count. A second pass over the rare packets that have them keeps the decoding loop
// free of branches.
std::uint16_t undefined_nibbles(const std::uint8_t* packet, int first, std::uint8_t* nibbles) {
  using namespace steim;
  std::uint16_t n = 0;
  std::uint8_t codes[kWordsPerFrame];
  for (int f = 1; f <= dt::kFrameCount; ++f) {
    frame_codes(packet, f, codes);
    for (int w = f == 1 ? first : 1; w < kWordsPerFrame; ++w) {
      const unsigned nibble = load_be32(packet + word_offset(f, w)) >> 30;
      if (kShapes[codes[w] << 2 | nibble].bad) nibbles[n++] = static_cast<std::uint8_t>(nibble);
    }
  }
  return n;
}

// The decoder's steps, built twice below: for any processor, and with AVX2 (`wide`).
template <bool wide>
[[gnu::always_inline]] inline Decoded decode(const std::uint8_t* packet, std::int32_t& last,
                                             std::span<std::uint32_t> span) {
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

  bool any_undefined = false;
  // Every word writes seven places from `out`, which stands at most seven places a word from the
  // start: the 223 words' places all fall within the span's kMaxSamples.
  static_assert(kMaxSamples == 7 * kMaxDataWords);
  std::uint32_t* const start = span.data();
  std::uint32_t* out = start;
  const std::uint32_t* const room = start + span.size() - 8;
  FrameWords fw;
  for (int f = 1; f <= dt::kFrameCount; ++f) {
    split_frame(packet + word_offset(f, 0), fw);
    for (int w = f == 1 ? first : 1; w < kWordsPerFrame; ++w) {
      const unsigned k = fw.shape[w];
      any_undefined |= kShapes[k].bad;
      if constexpr (wide) out = spread_wide(fw.word[w], k, out, room);
      else out = spread(fw.word[w], kShapes[k], out);
    }
  }
  const auto count = static_cast<std::uint32_t>(out - start);
  // Unsigned: the integration wraps modulo 2^32.
  std::uint32_t s = claims.x0 - d0;
  s = integrate<wide ? 8 : 4>(start, count, s);
  Decoded d = finish(last, claims, count, d0, s);
  if (any_undefined) d.n_undefined = undefined_nibbles(packet, first, d.undefined);
  return d;
}

LM_TARGET_WIDE Decoded decode_wide(const std::uint8_t* packet, std::int32_t& last, std::span<std::uint32_t> span) {
  return decode<true>(packet, last, span);
}

}  // namespace

// The same steps for any processor or with AVX2, so the same results.
Decoded Buf_c2(const std::uint8_t* packet, std::int32_t& last, std::span<std::uint32_t> span) {
  return has_wide_vectors() ? decode_wide(packet, last, span) : decode<false>(packet, last, span);
}

}  // namespace lm

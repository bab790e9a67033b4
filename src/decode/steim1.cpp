#include "decode/decoders.hpp"
#include "decode/steim_frames.hpp"

namespace lm {

void C0_flag_clr(std::uint8_t* codes) {
  for (int k = 0; k < steim::kWordsPerFrame; ++k) codes[k] = 0;
}

namespace steim {

Decoded finish(std::int32_t& last, const PacketClaims& claims, std::uint32_t count, std::uint32_t d0, std::uint32_t s) {
  Decoded r(count);
  r.steim = true;
  r.d0 = d0;
  r.check = {claims.x0, claims.xn, claims.n_hdr, 0, s};
  end_check(r, last);
  return r;
}

}  // namespace steim

// On success the channel carries the last sample on; otherwise it carries Xn on and the result
// tells the caller what to report.
void end_check(Decoded& d, std::int32_t& last) {
  if (!d.steim) return;
  SteimCheck& c = d.check;
  const bool mismatch = last != 0 && static_cast<std::uint32_t>(last) + d.d0 != c.x0;
  d.failed = c.calc_stop != c.xn || (d.count & 0xFFFFu) != c.n_hdr || mismatch;
  c.calc_start = d.failed ? static_cast<std::uint32_t>(last) + d.d0 : 0;
  last = static_cast<std::int32_t>(d.failed ? c.xn : c.calc_stop);
}

Decoded Buf_c0(const std::uint8_t* packet, std::int32_t& last, std::span<std::uint32_t> span) {
  using namespace steim;
  if (span.size() < kMaxSamples) return Decoded();
  const PacketClaims claims(packet);
  std::uint8_t codes[kWordsPerFrame];
  frame_codes(packet, 1, codes);

  // The first difference only sets the integration start so that the first sample is X0.
  const std::uint32_t w3 = load_be32(packet + word_offset(1, kFirstDataWord));
  std::uint32_t d0 = 0;
  switch (codes[kFirstDataWord]) {
    case 1: d0 = static_cast<std::uint32_t>(Steim2_get_bits(w3, 24, 8)); break;
    case 2: d0 = static_cast<std::uint32_t>(Steim2_get_bits(w3, 16, 16)); break;
    case 3: d0 = w3; break;
    default: break;
  }
  // Unsigned arithmetic: the integration wraps modulo 2^32 like the recorder's.
  std::uint32_t s = claims.x0 - d0;

  std::uint32_t* const first = span.data();
  std::uint32_t* out = first;
  for (int f = 1; f <= dt::kFrameCount; ++f) {
    if (f > 1) frame_codes(packet, f, codes);
    for (int w = f == 1 ? kFirstDataWord : 1; w < kWordsPerFrame; ++w) {
      const std::uint8_t* p = packet + word_offset(f, w);
      switch (codes[w]) {
        case 1:
          out[0] = s += static_cast<std::uint32_t>(static_cast<std::int8_t>(p[0]));
          out[1] = s += static_cast<std::uint32_t>(static_cast<std::int8_t>(p[1]));
          out[2] = s += static_cast<std::uint32_t>(static_cast<std::int8_t>(p[2]));
          out[3] = s += static_cast<std::uint32_t>(static_cast<std::int8_t>(p[3]));
          out += 4;
          break;
        case 2:
          out[0] = s += static_cast<std::uint32_t>(static_cast<std::int16_t>(load_be16(p)));
          out[1] = s += static_cast<std::uint32_t>(static_cast<std::int16_t>(load_be16(p + 2)));
          out += 2;
          break;
        case 3:
          *out++ = s += load_be32(p);
          break;
        default:
          break;
      }
    }
  }
  return finish(last, claims, static_cast<std::uint32_t>(out - first), d0, s);
}

}  // namespace lm

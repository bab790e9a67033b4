#include "decode/decoders.hpp"
#include "decode/steim_frames.hpp"
#include "log/log_file.hpp"
#include "model/records.hpp"
#include "run/globals.hpp"

namespace lm {

void C0_flag_clr(std::uint8_t* codes) {
  for (int k = 0; k < 16; ++k) codes[k] = 0;
}

void C0_flag_cvt(const std::uint8_t* word, std::uint8_t* codes) {
  C0_flag_clr(codes);
  const std::uint32_t control = load_be32(word);
  for (int k = 0; k < 16; ++k) codes[k] = static_cast<std::uint8_t>(steim::code_of(control, k));
}

namespace steim {

void finish(CHNLST_T* chn, const std::uint8_t* packet, const std::uint32_t* buf, const PacketClaims& claims,
            std::uint32_t d0, std::uint32_t s, bool mismatch) {
  const auto [n_hdr, x0, xn] = claims;
  const unsigned n_calc = buf[0] & 0xFFFFu;
  if (s == xn && n_calc == n_hdr && !mismatch) {
    chn->last = static_cast<std::int32_t>(s);
    return;
  }
  if (G.Log_on && chn->unit) {
    OutFile& log = chn->unit->fd_log;
    const std::uint32_t calc_start = static_cast<std::uint32_t>(chn->last) + d0;
    log.printf("     Read start 0x%08lX  ", static_cast<unsigned long>(x0));
    log.printf("stop 0x%08lX  ", static_cast<unsigned long>(xn));
    log.printf("samples %d\r\n", static_cast<int>(n_hdr));
    log.printf("     Calc start 0x%08lX  ", static_cast<unsigned long>(calc_start));
    log.printf("stop 0x%08lX  ", static_cast<unsigned long>(s));
    log.printf("samples %d\r\n", static_cast<int>(n_calc));
    log_block(log, packet, 0);
  }
  chn->last = static_cast<std::int32_t>(xn);
}

}  // namespace steim

void Buf_c0(CHNLST_T* chn, const std::uint8_t* packet, std::uint32_t* buf) {
  using namespace steim;
  const PacketClaims claims(packet);
  const std::uint32_t x0 = claims.x0;
  buf[0] = 0;

  // The first difference only sets the integration start so that the first sample is X0.
  const std::uint32_t w3 = load_be32(packet + word_offset(1, kFirstDataWord));
  std::uint32_t d0 = 0;
  switch (code_of(load_be32(packet + word_offset(1, 0)), kFirstDataWord)) {
    case 1: d0 = static_cast<std::uint32_t>(sext(w3 >> 24, 8)); break;
    case 2: d0 = static_cast<std::uint32_t>(sext(w3 >> 16, 16)); break;
    case 3: d0 = w3; break;
    default: break;
  }
  // Unsigned arithmetic: the integration wraps modulo 2^32 like the recorder's.
  std::uint32_t s = x0 - d0;
  const bool mismatch = chn->last != 0 && static_cast<std::uint32_t>(chn->last) + d0 != x0;

  std::uint32_t* out = buf + 1;
  for (int f = 1; f <= dt::kFrameCount; ++f) {
    const std::uint32_t control = load_be32(packet + word_offset(f, 0));
    for (int w = f == 1 ? kFirstDataWord : 1; w < kWordsPerFrame; ++w) {
      const std::uint8_t* p = packet + word_offset(f, w);
      switch (code_of(control, w)) {
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
  buf[0] = static_cast<std::uint32_t>(out - (buf + 1));
  finish(chn, packet, buf, claims, d0, s, mismatch);
}

}  // namespace lm

#include "decode/decoders.hpp"

namespace lm {

void Buf_c0(CHNLST_T*, const std::uint8_t*, std::uint32_t* buf) { buf[0] = 0; }
void C0_flag_clr(std::uint8_t* codes) { for (int k = 0; k < 16; ++k) codes[k] = 0; }
void C0_flag_cvt(const std::uint8_t*, std::uint8_t* codes) { C0_flag_clr(codes); }

}  // namespace lm

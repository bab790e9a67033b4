#include "decode/decoders.hpp"

namespace lm {

void Buf_16(CHNLST_T*, const std::uint8_t*, std::uint32_t* buf) { buf[0] = 0; }
void Buf_32(CHNLST_T*, const std::uint8_t*, std::uint32_t* buf) { buf[0] = 0; }

}  // namespace lm

#include "decode/decoders.hpp"

namespace lm {

void Buf_c2(CHNLST_T*, const std::uint8_t*, std::uint32_t* buf) { buf[0] = 0; }
std::int32_t Steim2_get_bits(std::uint32_t, int, int) { return 0; }

}  // namespace lm

#pragma once
// Sample decoders of DT packets: each fills buf (word 0 the count, then signed samples).
#include <cstdint>

namespace lm {

struct CHNLST_T;

using Decoder = void (*)(CHNLST_T* chn, const std::uint8_t* packet, std::uint32_t* buf);

void Buf_16(CHNLST_T* chn, const std::uint8_t* packet, std::uint32_t* buf);
void Buf_32(CHNLST_T* chn, const std::uint8_t* packet, std::uint32_t* buf);
void Buf_c0(CHNLST_T* chn, const std::uint8_t* packet, std::uint32_t* buf);
void Buf_c2(CHNLST_T* chn, const std::uint8_t* packet, std::uint32_t* buf);

void C0_flag_clr(std::uint8_t* codes);
void C0_flag_cvt(const std::uint8_t* word, std::uint8_t* codes);
std::int32_t Steim2_get_bits(std::uint32_t word, int shift, int nbits);

// The decoder for a data format byte, or null when the format is not decoded.
Decoder decoder_for(std::uint8_t format);

}  // namespace lm

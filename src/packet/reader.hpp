#pragma once
#include <cstdint>

namespace lm {

inline constexpr std::uint16_t kBlkEnd = 29;

// Reads one 1024-byte packet from the input: 0, or 29 when fewer bytes were left (dropped).
std::uint16_t Blk_read(std::uint8_t* buffer);
// The conversion loop over the whole input; 0 after the whole input was read.
std::uint16_t lm_cvt();

}  // namespace lm

#pragma once
#include <cstdint>

namespace lm {

// Packet type codes in table order; 0 is any other two letters.
enum PktCode : std::uint16_t {
  kNone = 0, kEH = 1, kET, kDT, kSH, kSC, kDS, kCD, kOM, kAD, kDR, kNH, kNT, kFD
};

inline constexpr char Pkt_codes[] = "EHETDTSHSCDSCDOMADDRNHNTFD";

std::uint16_t code_set(const std::uint8_t* packet);

}  // namespace lm

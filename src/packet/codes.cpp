#include "packet/codes.hpp"

namespace lm {

std::uint16_t code_set(const std::uint8_t* packet) {
  for (std::uint16_t i = 0; i < 13; ++i)
    if (packet[0] == static_cast<std::uint8_t>(Pkt_codes[2 * i]) &&
        packet[1] == static_cast<std::uint8_t>(Pkt_codes[2 * i + 1]))
      return static_cast<std::uint16_t>(i + 1);
  return 0;
}

}  // namespace lm

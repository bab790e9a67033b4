#pragma once
#include <cstdint>

#include "model/records.hpp"

namespace lm {

// Copies what an EH or ET packet says into the event and its unit.
void Evt_info(Evt* evt, const std::uint8_t* packet);

}  // namespace lm

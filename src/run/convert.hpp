#pragma once
#include <cstdint>

#include "registry/run_state.hpp"

namespace lm {

// The conversion loop over the whole input; 0 after the whole input was read.
std::uint16_t lm_cvt(Run& run);

}  // namespace lm

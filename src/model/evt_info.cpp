#include "model/event.hpp"

namespace lm {

void Evt_info(Evt*, const std::uint8_t*) {}

}  // namespace lm

#pragma once
#include <cstddef>
#include <cstdint>

#include "model/records.hpp"

namespace lm {

// The gathered event file's path, stored in the event's evt_file_name.
const char* Asc_evt_name(Evt* evt);

}  // namespace lm

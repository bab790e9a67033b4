#pragma once
#include <cstdint>

#include "model/records.hpp"
#include "registry/run_state.hpp"

namespace lm {

// The open event of an EH, ET or DT packet, created on first sight; the unit's current event.
Evt* Evt_find(Run& run, UNIT_T* unit, const std::uint8_t* packet);
// Closes the trace files of all the event's channels (null event or no channels: nothing).
void Evt_close_files(Evt* evt, std::uint16_t& open_files);
// Completes the event's trace files, gathers them when asked, and frees the event and its channels.
void Evt_remove(Run& run, Evt* evt);

}  // namespace lm

#pragma once
#include <cstdint>

#include "model/records.hpp"
#include "registry/run_state.hpp"

namespace lm {

// The two files of a unit, as the `kind` of the calls below.
enum : int { kLog = 0, kQcc = 1 };

// The unit of a packet, created on first sight; makes its files the open ones. Never null.
UNIT_T* Unit_find(Run& run, const std::uint8_t* packet);
// Names, opens and heads the unit's log (kind 0) or statistics file (kind 1).
void Unit_file_create(Run& run, UNIT_T* unit, const std::uint8_t* packet, int kind);
// Closes the unit's log (kind 0, also the channel files of its current event) or statistics file (kind 1).
void Unit_file_close(Run& run, UNIT_T* unit, int kind);
// Opens a unit file for appending; ends the run with the file-open error when it cannot.
void open_file(OutFile& file, const char* path, std::size_t root, const std::uint8_t* packet);
// The statistics block of an ending event in the unit's file (opened for it when it is not the
// current unit's) and the run's.
void Unit_qcc_store(Run& run, UNIT_T* unit, Evt* evt, const std::uint8_t* packet);

}  // namespace lm

#pragma once
#include <cstdint>

#include "model/records.hpp"
#include "registry/run_state.hpp"

namespace lm {

// Above this many open trace files, one other file of the same event is closed before an open.
inline constexpr std::uint16_t kOpenFilesMax = 32;

// The channel of a DT packet within its event, created with its trace file on first sight.
CHNLST_T* Chn_find(Run& run, Evt* evt, const std::uint8_t* packet);

// A new channel record with its metadata, directory and unique trace file name (not yet linked).
CHNLST_T* Chn_create(Run& run, Evt* evt, std::uint16_t channel, std::uint16_t evt_num, std::uint16_t stream,
                     const char* time);
// Ends the run when a channel (record or index entry) cannot be allocated.
[[noreturn]] void chn_out_of_heap();

}  // namespace lm

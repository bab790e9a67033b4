#pragma once
#include <cstdint>

#include "model/records.hpp"

namespace lm {

// Above this many open trace files, one other file of the same event is closed before an open.
inline constexpr std::uint16_t kOpenFilesMax = 32;

// The channel of a DT packet within its event, created with its trace file on first sight.
CHNLST_T* Chn_find(Evt* evt, const std::uint8_t* packet);
// Opens the channel's trace file when it is not open; returns file_open.
std::uint8_t Chn_file_open(CHNLST_T* chn, const char* mode);
void Chn_file_close(CHNLST_T* chn);
// Diagnostic dump of a channel record on standard output, then waits for a key.
void Chn_show(CHNLST_T* chn);

// A new channel record with its metadata, directory and unique trace file name (not yet linked).
CHNLST_T* Chn_create(Evt* evt, std::uint16_t channel, std::uint16_t evt_num, std::uint16_t stream,
                     const char* time);
// Ends the run when a channel (record or index entry) cannot be allocated.
[[noreturn]] void chn_out_of_heap();
// The event header's channel information applied to the channel.
void Chn_ehet(CHNLST_T* chn);
// Row of the sensor catalogue matching the channel's make and model.
std::uint16_t Sensor_find(CHNLST_T* chn);

}  // namespace lm

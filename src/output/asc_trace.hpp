#pragma once
#include <cstdint>

#include "model/records.hpp"

namespace lm {

// The ten header lines of a trace file at the file's current position (when headers are on).
void Asc_dhdr_out(CHNLST_T* chn);
// The samples of one packet, with the skip (-T) and limit (-S) counts and the running statistics.
void Asc_data_out(CHNLST_T* chn, const std::int32_t* samples, std::uint16_t count);
// Rewinds the trace file (opened "r+b") and writes the final header in place.
void Asc_data_close(CHNLST_T* chn);

}  // namespace lm

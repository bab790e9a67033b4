#pragma once
#include <cstdint>

#include "model/records.hpp"

namespace lm {

class OutFile;

// Statistics of a channel back to their starting values.
void Qcc_init(CHNLST_T* chn);
// Header of a statistics file.
void Qcc_fhdr(OutFile& stream);
// The statistics block of one ending event.
void Qcc_store(UNIT_T* unit, Evt* evt, const std::uint8_t* packet);

}  // namespace lm

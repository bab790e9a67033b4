#pragma once
#include <cstdint>

#include "model/records.hpp"

namespace lm {

class OutFile;
struct LineState;
struct Settings;

// What a channel's statistics line shows, from its running sums.
struct QccValues {
  double min, max, range, mean, dev;
};
// The values of a channel with at least two samples written (sample deviation, divisor n - 1).
QccValues Qcc_values(const CHNLST_T& chn);

// Statistics of a channel back to their starting values.
void Qcc_init(CHNLST_T* chn);
// Header of a statistics file.
void Qcc_fhdr(OutFile& stream, const Settings& set);
// The statistics block of one ending event, in the unit's file (open) and the run's.
void Qcc_store(UNIT_T* unit, Evt* evt, const std::uint8_t* packet, OutFile& run_qcc, LineState& at);
// The block heading an NH packet starts in the run statistics file.
void Qcc_nh_head(OutFile& run_qcc, const std::uint8_t* packet, LineState& at);

}  // namespace lm

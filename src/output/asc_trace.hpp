#pragma once
#include <cstddef>
#include <cstdint>

#include "model/records.hpp"
#include "model/settings.hpp"

namespace lm {

// Sum and extremes of a run of samples; where an extreme first occurs is looked up only when it
// is the channel's new extreme.
struct PacketStats {
  std::int64_t sum = 0;
  std::int32_t lo = 0, hi = 0;
};

// The statistics of v[0..n) (n >= 1): a pass apart from the lines, simple enough to vectorise.
PacketStats packet_stats(const std::int32_t* v, std::uint32_t n);

// The ten header lines of a trace file at the file's current position (when headers are on).
void Asc_dhdr_out(CHNLST_T* chn, const Settings& set);
// The samples of one packet, with the skip (-T) and limit (-S) counts and the running statistics;
// `ahead` holds the statistics of all `count` samples when they were taken ahead of time.
void Asc_data_out(CHNLST_T* chn, const std::int32_t* samples, std::uint16_t count, std::uint32_t smp_limit,
                  const PacketStats* ahead = nullptr);
// Rewinds the trace file (opened "r+b") and writes the final header in place.
void Asc_data_close(CHNLST_T* chn, const Settings& set);

}  // namespace lm

#pragma once
#include <cstddef>
#include <cstdint>

#include "base/sample_line.hpp"
#include "model/records.hpp"
#include "model/settings.hpp"

namespace lm {

// Count, sum and extremes of a run of samples, with where each extreme first occurs.
struct PacketStats {
  std::int64_t sum = 0;
  std::int32_t lo = 0, hi = 0;
  std::uint32_t lo_at = 0, hi_at = 0;
};

// A packet's sample lines and their statistics, made ahead of the packet's turn: used when the
// channel takes all of the packet's samples.
struct SampleText {
  const char* text = nullptr;
  std::size_t len = 0;
  PacketStats stats;
};

// One "%ld\r\n" line per sample of v[0..n) (n >= 1) into out, which has room for
// n * kSampleLineMax + kSampleLineSlack bytes, and the samples' statistics, in one pass.
SampleText sample_text(char* out, const std::int32_t* v, std::uint32_t n);

// The ten header lines of a trace file at the file's current position (when headers are on).
void Asc_dhdr_out(CHNLST_T* chn, const Settings& set);
// The samples of one packet, with the skip (-T) and limit (-S) counts and the running statistics.
void Asc_data_out(CHNLST_T* chn, const std::int32_t* samples, std::uint16_t count, std::uint32_t smp_limit,
                  const SampleText* ahead = nullptr);
// Rewinds the trace file (opened "r+b") and writes the final header in place.
void Asc_data_close(CHNLST_T* chn, const Settings& set);

}  // namespace lm

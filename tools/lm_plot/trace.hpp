#pragma once
// One trace as the picture needs it: its header, its statistics and a min/max envelope of fixed size,
// filled sample by sample so that memory does not grow with the trace's length.
#include <array>
#include <cstdint>
#include <string>

#include "lm_plot/trace_reader.hpp"

namespace lmplot {

// Min/max per bucket of k consecutive samples. When the buckets are full, neighbours merge pairwise and k
// doubles, so between kCap/2 and kCap buckets cover the whole trace.
class Envelope {
 public:
  static constexpr std::size_t kCap = 4096;
  void add(std::int32_t v);
  std::size_t size() const { return n_; }
  long long per_bucket() const { return k_; }
  std::int32_t lo(std::size_t i) const { return lo_[i]; }
  std::int32_t hi(std::size_t i) const { return hi_[i]; }

 private:
  std::array<std::int32_t, kCap> lo_{}, hi_{};
  std::size_t n_ = 0;
  long long k_ = 1, fill_ = 0;
};

enum TraceFlag : unsigned { kEmpty = 1, kFlat = 2, kClipped = 4, kShort = 8 };

struct Trace {
  TraceHeader hdr;
  long long count = 0;
  std::int32_t min = 0, max = 0;
  long long n_min = 0, n_max = 0;  // samples equal to min, to max
  unsigned flags = 0;
  Envelope env;
  void add(std::int32_t v);
};

// Flat, clipped or empty from the samples; short when fewer than `expected` (allowing 1 %).
unsigned trace_flags(const Trace& t, long long expected);
// The flags as words ("flat", "clipped", "short", "no samples"), blank-separated; "" when none.
std::string flag_words(unsigned flags);

}  // namespace lmplot

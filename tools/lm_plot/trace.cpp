#include "lm_plot/trace.hpp"

#include <algorithm>

namespace lmplot {

void Envelope::add(std::int32_t v) {
  if (fill_ == 0) {
    if (n_ == kCap) {
      for (std::size_t i = 0; i < kCap / 2; ++i) {
        lo_[i] = std::min(lo_[2 * i], lo_[2 * i + 1]);
        hi_[i] = std::max(hi_[2 * i], hi_[2 * i + 1]);
      }
      n_ = kCap / 2;
      k_ *= 2;
    }
    lo_[n_] = hi_[n_] = v;
    ++n_;
  } else {
    lo_[n_ - 1] = std::min(lo_[n_ - 1], v);
    hi_[n_ - 1] = std::max(hi_[n_ - 1], v);
  }
  if (++fill_ == k_) fill_ = 0;
}

void Trace::add(std::int32_t v) {
  if (count == 0 || v < min) min = v, n_min = 0;
  if (count == 0 || v > max) max = v, n_max = 0;
  n_min += v == min;
  n_max += v == max;
  ++count;
  env.add(v);
}

unsigned trace_flags(const Trace& t, long long expected) {
  // A digitiser at full scale repeats its 16- or 24-bit limit; a handful of hits can be a real peak.
  constexpr long long kClipHits = 4;
  unsigned f = 0;
  if (t.count == 0) f |= kEmpty;
  else if (t.min == t.max) f |= kFlat;
  const bool hi_clip = (t.max == 32767 || t.max == 8388607) && t.n_max > kClipHits;
  const bool lo_clip = (t.min == -32768 || t.min == -8388608) && t.n_min > kClipHits;
  if (!(f & kFlat) && (hi_clip || lo_clip)) f |= kClipped;
  const long long want = std::max(expected, t.hdr.declared);
  if (t.count > 0 && t.count + std::max(1LL, want / 100) < want) f |= kShort;
  return f;
}

std::string flag_words(unsigned flags) {
  static constexpr struct {
    unsigned flag;
    const char* word;
  } kWords[] = {{kEmpty, "no samples"}, {kFlat, "flat"}, {kClipped, "clipped"}, {kShort, "short"}};
  std::string s;
  for (const auto& w : kWords)
    if (flags & w.flag) s += (s.empty() ? "" : " ") + std::string(w.word);
  return s;
}

}  // namespace lmplot

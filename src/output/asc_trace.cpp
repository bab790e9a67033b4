#include "output/asc_trace.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "base/cpu_features.hpp"
#include "base/sample_line.hpp"
#include "config/tables.hpp"
#include "decode/decoders.hpp"
#include "model/settings.hpp"
#include "time/time_str.hpp"

namespace lm {
namespace {

// Width of the rate when the first header is written before any event header gave the rate: the
// estimate or a late event header replaces the 0, and the padded text keeps the line's length.
constexpr int kPendingRateWidth = 12;

// The rate text of a header line. The first header fixes its width: plain "%4.4f" when the rate
// is known, or kPendingRateWidth otherwise. The final header keeps that width, with fewer
// decimals or an exponent when the value needs more room, so the rewrite stays in place.
int rate_text(CHNLST_T* chn, char* out, std::size_t cap) {
  const double rate = chn->evt->rate;
  if (chn->rate_width == 0) {
    const int n = chn->evt->pkt_eh ? std::snprintf(out, cap, "%4.4f", rate)
                                   : std::snprintf(out, cap, "%*.4f", kPendingRateWidth, rate);
    chn->rate_width = static_cast<std::uint8_t>(n < 255 ? n : 255);
    return n;
  }
  const int width = chn->rate_width;
  int n = 0;
  for (int prec = 4; prec >= 0; --prec)
    if ((n = std::snprintf(out, cap, "%*.*f", width, prec, rate)) <= width) return n;
  for (int prec = 4; prec >= 0; --prec)
    if ((n = std::snprintf(out, cap, "%*.*e", width, prec, rate)) <= width) return n;
  out[width] = '\0';  // unreachable for the widths the first header gives (6 and more)
  return width;
}

// The running statistics of a channel, held in registers for the length of one packet. Every
// value is what adding the samples one at a time in double precision gives, bit for bit: the
// count, sum and extremes are taken in integers where double arithmetic would be exact anyway.
struct Running {
  std::uint32_t cnt, min_at, max_at;
  double sum, sq_sum, min, max;

  explicit Running(const CHNLST_T& c)
      : cnt(c.cnt), min_at(c.min_at), max_at(c.max_at), sum(c.sum), sq_sum(c.sq_sum), min(c.min), max(c.max) {}
  void store(CHNLST_T& c) const {
    c.cnt = cnt;
    c.min_at = min_at;
    c.max_at = max_at;
    c.sum = sum;
    c.sq_sum = sq_sum;
    c.min = min;
    c.max = max;
  }
  // Count, sum and extremes of the packet's n samples v[0..n) with their statistics st.
  void add_packet(const std::int32_t* v, std::uint32_t n, const PacketStats& st) {
    if (st.lo < min) {
      min = st.lo;
      min_at = cnt + 1 + static_cast<std::uint32_t>(std::find(v, v + n, st.lo) - v);
    }
    if (st.hi > max) {
      max = st.hi;
      max_at = cnt + 1 + static_cast<std::uint32_t>(std::find(v, v + n, st.hi) - v);
    }
    // Below this every partial sum of a packet is an integer under 2^53, exact in a double.
    constexpr double kExactSum = 9007199254740992.0 - kMaxSamples * 2147483648.0;
    if (std::fabs(sum) <= kExactSum) {
      sum += static_cast<double>(st.sum);
    } else {
      for (std::uint32_t j = 0; j < n; ++j) sum += v[j];
    }
    cnt += n;
  }
};

// The sample lines of v[0..n) at out, and their squares added to sq_sum one at a time (their
// rounding depends on the order): the additions' latency hides behind the lines' work. Most packets
// hold only samples the small table covers: their loop skips the test of each sample's size.
char* sample_lines(char* out, const std::int32_t* v, std::uint32_t n, const PacketStats& st, double& sq_sum) {
  double sq = sq_sum;
  auto each = [&](auto put) {
    for (std::uint32_t j = 0; j < n; ++j) {
      const double x = v[j];
      sq += x * x;
      out = put(out, v[j]);
    }
  };
  if (st.lo >= -line_detail::kSmallMax && st.hi <= line_detail::kSmallMax)
    each([](char* o, std::int32_t x) { return line_detail::put_small(o, x); });
  else
    each([](char* o, std::int32_t x) { return put_sample_line(o, x); });
  sq_sum = sq;
  return out;
}

// The longest line of samples in [st.lo, st.hi]: that of one of the two.
std::size_t longest_line(const PacketStats& st) {
  char line[kSampleLineMax + kSampleLineSlack];
  const auto lo = put_sample_line(line, st.lo) - line, hi = put_sample_line(line, st.hi) - line;
  return static_cast<std::size_t>(lo > hi ? lo : hi);
}

// Simple enough for the compiler to vectorise; inlined into each copy below.
[[gnu::always_inline]] inline PacketStats stats_of(const std::int32_t* v, std::uint32_t n) {
  std::int64_t sum = 0;
  std::int32_t lo = v[0], hi = v[0];
  for (std::uint32_t j = 0; j < n; ++j) {
    sum += v[j];
    lo = v[j] < lo ? v[j] : lo;
    hi = v[j] > hi ? v[j] : hi;
  }
  return PacketStats{sum, lo, hi};
}

// Eight samples a step where the processor has 256-bit integer vectors, four otherwise.
LM_TARGET_WIDE PacketStats stats_wide(const std::int32_t* v, std::uint32_t n) { return stats_of(v, n); }

}  // namespace

PacketStats packet_stats(const std::int32_t* v, std::uint32_t n) {
  return has_wide_vectors() ? stats_wide(v, n) : stats_of(v, n);
}

void Asc_dhdr_out(CHNLST_T* chn, const Settings& set) {
  if (!set.Flag_info.trace_hdr) return;
  const Evt& e = *chn->evt;
  OutFile& f = chn->fp;
  f.printf("$ChnID=%04X:%04u:%02u:%02u\r\n", unsigned{chn->unit_id}, unsigned{chn->evt_num},
           unsigned{chn->stream} + 1u, unsigned{chn->channel} + 1u);
  f.printf("$Station=%-5.5s\r\n", e.stn_name);
  f.printf("$Samples=%-10lu\r\n", static_cast<unsigned long>(chn->cnt));
  char rate[64];
  rate_text(chn, rate, sizeof rate);
  f.printf("$Rate=%s\r\n", rate);
  const TimeText t(chn->first_time);
  f.printf("$Time=%4.4s:%3.3s:%2.2s:%2.2s:%2.2s.%3.3s\r\n", t.year(), t.day(), t.hour(), t.minute(), t.second(),
           t.milli());
  f.printf("$TimeQual=%-2d\r\n", int{e.time_qual});
  std::string_view weight = chn_entry(e, chn_col::kTruWght, chn->channel);
  if (weight[0] == ' ') weight = chn_entry(e, chn_col::kBitWght, chn->channel);
  f.printf("$BitWeight=%8.8s\r\n", weight.data());
  f.printf("$Gain=%6.3f\r\n", static_cast<double>(gain_of(chn->gain_ndx)));
  f.printf("$SensorVPU=%6.3f %-16.16s\r\n", chn->vpu, measure_name(chn->vpu_ndx));
  f.printf("$LLA=%6.3f %6.3f %6.1f\r\n", chn->lat, chn->lon, chn->alt);
}

void Asc_data_out(CHNLST_T* chn, const std::int32_t* samples, std::uint16_t count, std::uint32_t smp_limit,
                  const PacketStats* ahead) {
  // The samples come from a packet's sample buffer: never read past it, whatever the count says.
  if (count > kMaxSamples) count = kMaxSamples;
  std::uint32_t i = 0;
  if (chn->trash > 0) {
    i = chn->trash < count ? chn->trash : count;
    chn->trash -= i;
  }
  // A bad event's channels stand past the limit: nothing more is taken.
  if (chn->cnt >= smp_limit) return;
  const std::uint32_t room = smp_limit - chn->cnt;
  const std::uint32_t end = i + (count - i < room ? count - i : room);
  if (i == end) return;
  const std::int32_t* const v = samples + i;
  const std::uint32_t n = end - i;
  Running run(*chn);
  const PacketStats st = ahead && n == count ? *ahead : packet_stats(v, n);
  run.add_packet(v, n, st);
  // The lines go out in one piece per packet, made in the file's buffer when it has room for the
  // longest they can be, else here and copied.
  static char elsewhere[kMaxSamples * kSampleLineMax + kSampleLineSlack];
  char* const text = chn->fp.compose(n * longest_line(st) + kSampleLineSlack);
  char* const start = text ? text : elsewhere;
  const auto len = static_cast<std::size_t>(sample_lines(start, v, n, st, run.sq_sum) - start);
  if (text) chn->fp.commit(len);
  else chn->fp.write(start, len);
  run.store(*chn);
}

void Asc_data_close(CHNLST_T* chn, const Settings& set) {
  chn->fp.rewind();
  Asc_dhdr_out(chn, set);
}

}  // namespace lm

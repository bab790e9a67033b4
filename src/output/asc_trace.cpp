#include "output/asc_trace.hpp"

#include <charconv>
#include <cstdio>
#include <string_view>

#include "config/tables.hpp"
#include "run/globals.hpp"
#include "time/time_str.hpp"

namespace lm {
namespace {

// Longest sample line: "-2147483648\r\n".
constexpr std::size_t kSampleLineMax = 13;
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

}  // namespace

void Asc_dhdr_out(CHNLST_T* chn) {
  if (!G.Flag_info.trace_hdr) return;
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

void Asc_data_out(CHNLST_T* chn, const std::int32_t* samples, std::uint16_t count) {
  // The samples come from Data_buf: never read past it, whatever the count says.
  if (count > kDataBufWords - 1) count = kDataBufWords - 1;
  std::uint32_t i = 0;
  if (chn->trash > 0) {
    i = chn->trash < count ? chn->trash : count;
    chn->trash -= i;
  }
  OutFile& f = chn->fp;
  const bool to_file = f.is_open();
  const std::uint32_t limit = G.Smp_limit;
  for (; i < count && chn->cnt < limit; ++i) {
    const std::int32_t v = samples[i];
    if (to_file) {
      char* const line = f.reserve(kSampleLineMax);
      char* end = std::to_chars(line, line + kSampleLineMax, v).ptr;
      *end++ = '\r';
      *end++ = '\n';
      f.commit(static_cast<std::size_t>(end - line));
    }
    ++chn->cnt;
    const double x = v;
    chn->sum += x;
    chn->sq_sum += x * x;
    if (x < chn->min) {
      chn->min = x;
      chn->min_at = chn->cnt;
    }
    if (x > chn->max) {
      chn->max = x;
      chn->max_at = chn->cnt;
    }
  }
}

void Asc_data_close(CHNLST_T* chn) {
  chn->fp.rewind();
  Asc_dhdr_out(chn);
}

}  // namespace lm

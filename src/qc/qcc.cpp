#include "qc/qcc.hpp"

#include <cmath>
#include <cstdio>

#include "base/out_file.hpp"
#include "log/log_file.hpp"
#include "packet/codes.hpp"
#include "packet/fields.hpp"

namespace lm {
namespace {

constexpr char kHeads[] = "\r\n                        Min          Max        Range         Mean       St Dev";
// A channel with fewer than two samples: no statistics, and fields one wider than the values'.
constexpr char kFewZeros[] = " 00000000.0000 00000000.0000 00000000.0000 00000000.0000 00000000.0000";
// An event without usable channels.
constexpr char kNoneZeros[] = " 0000000.0000 0000000.0000 0000000.0000 0000000.0000 0000000.0000";

// One channel's line, in the unit file and the run file.
void write_channel(UNIT_T* unit, const CHNLST_T& c, OutFile& run_qcc) {
  char values[160];
  if (c.cnt > 1) {
    const QccValues q = Qcc_values(c);
    std::snprintf(values, sizeof values, " %12.4lf %12.4lf %12.4lf %12.4lf %12.4lf", q.min, q.max, q.range, q.mean,
                  q.dev);
  } else {
    std::snprintf(values, sizeof values, "%s", kFewZeros);
  }
  const unsigned n = c.channel;
  unit->fd_qcc.printf("\r\n   Channel %2u:%s", n, values);
  run_qcc.printf("\r\n   %04hX    %2u:%s", unit->unit_id, n, values);
}

// The ET packet's summary line, or the note that the event ended without one.
void write_ending(UNIT_T* unit, const Evt* evt, const std::uint8_t* packet, LineState& at) {
  if (hdr::kType.view(packet) == "ET") {
    log_head(unit->fd_qcc, packet, kET, at);
    return;
  }
  std::printf("\nNo ET block for U:%04hX E:%04u", evt->unit_id, unsigned{evt->evt});
  unit->fd_qcc.printf("No ET block for U:%04hX E:%04u\r\n", evt->unit_id, unsigned{evt->evt});
}

// The ring's channel with the lowest number when the event's cursor is its last: the cursor moves there.
CHNLST_T* first_channel(Evt* evt) {
  CHNLST_T* c = evt->chn;
  if (c->nxt && c->channel >= c->nxt->channel) evt->chn = c->nxt;
  return evt->chn;
}

}  // namespace

QccValues Qcc_values(const CHNLST_T& c) {
  const double n = c.cnt;
  double v = c.sq_sum - c.sum * c.sum / n;
  if (v < 0) v = 0;  // only through rounding
  return {c.min, c.max, c.max - c.min, c.sum / n, std::sqrt(v / (n - 1))};
}

void Qcc_init(CHNLST_T* chn) {
  chn->sum = 0;
  chn->sq_sum = 0;
  chn->min = 1.797693e+308;
  chn->max = -1.797693e+308;
  chn->min_at = 0;
  chn->max_at = 0;
}

void Qcc_fhdr(OutFile& stream, const Settings& set) {
  Log_fhdr(stream, set);
  stream.write("\r\n\r\n");
}

void Qcc_store(UNIT_T* unit, Evt* evt, const std::uint8_t* packet, OutFile& run_qcc, LineState& at) {
  write_ending(unit, evt, packet, at);
  unit->fd_qcc.write(kHeads);
  if (!evt->chn || evt->bad) {
    unit->fd_qcc.printf("\r\n   Channel ---%s\r\n\r\n", kNoneZeros);
    run_qcc.printf("\r\n   %04hX    ---%s", unit->unit_id, kNoneZeros);
  } else {
    CHNLST_T* const start = first_channel(evt);
    CHNLST_T* c = start;
    do {
      write_channel(unit, *c, run_qcc);
      if (c->cnt > 1) Qcc_init(c);
      c = c->nxt;
    } while (c && c != start);
    unit->fd_qcc.write("\r\n\r\n");
  }
}

void Qcc_nh_head(OutFile& run_qcc, const std::uint8_t* packet, LineState& at) {
  run_qcc.write("\r\n\r\n");
  log_head(run_qcc, packet, kNH, at);
  run_qcc.write(kHeads);
}

}  // namespace lm

#include "model/channel.hpp"

#include <strings.h>

#include <cstdio>
#include <cstring>

#include "config/tables.hpp"
#include "base/ring.hpp"
#include "output/asc_trace.hpp"
#include "packet/fields.hpp"
#include "run/exit.hpp"
#include "base/file_util.hpp"
#include "run/globals.hpp"
#include "run/shut_down.hpp"
#include "base/text.hpp"
#include "time/time_str.hpp"

namespace lm {
namespace {

void set_time(char (&dst)[kTimeLen + 1], const char* time) { set_text(dst, {time, kTimeLen}); }

// Keeps the number of open trace files near the limit: closes the first open file met walking
// back from the walk's starting channel, stopping at the packet's own channel.
void make_room(CHNLST_T* start, const CHNLST_T* own) {
  if (G.N_opn_fls <= kOpenFilesMax) return;
  for (CHNLST_T* c = start; c != own; c = c->prv) {
    if (c->fp.is_open()) {
      Chn_file_close(c);
      return;
    }
  }
}

void open_trace(CHNLST_T* start, CHNLST_T* chn) {
  make_room(start, chn);
  if (Chn_file_open(chn, "a+b")) return;
  end_run(20, CloseFiles::yes, "\n\nERROR!!!!\n   unable to open %s for output.", chn->name);
}

// The event's rate from a channel's written samples over the time since its first packet.
void estimate_rate(Evt* evt, const CHNLST_T* chn) {
  const double elapsed_ms = Time_update(chn->first_time, chn->prv_time) * 1000.0;
  float rate = 0.0f;
  if (chn->cnt != 0) {
    // Two packets with the same time give no duration: the rate stays unestimated for this packet.
    if (elapsed_ms == 0.0) return;
    rate = static_cast<float>(1000.0 / (elapsed_ms / chn->cnt));
  }
  evt->rate = rate;
  if (rate != 0.0f) evt->pkt_eh = 1;
}

}  // namespace

CHNLST_T* Chn_find(Evt* evt, const std::uint8_t* packet) {
  const std::uint16_t evt_num = hdr::kEvent.value(packet);
  const std::uint16_t seq = hdr::kSequence.value(packet);
  const std::uint16_t stream = hdr::kStream.value(packet);
  const std::uint16_t channel = hdr::kChannel.value(packet);

  if (channel > evt->hi) evt->hi = channel;
  if (evt->lo == 99 || evt->lo > channel) evt->lo = channel;

  char time[kTimeLen + 1];
  pkt_time_str(packet, time);

  CHNLST_T* start = evt->chn;
  CHNLST_T* chn = evt->chn_index.find(channel);
  if (!chn) {
    chn = Chn_create(evt, channel, evt_num, stream, time);
    if (!evt->chn_index.insert(channel, chn)) {
      delete chn;
      chn_out_of_heap();
    }
    if (start) {
      ring_insert_after(start, chn);
    } else {
      ring_init(chn);
      start = chn;
      evt->chn = chn;  // reachable from its event at once, also when the run ends below
    }
    ++evt->chn_cnt;
    set_time(chn->first_time, time);
    set_time(chn->nxt_time, time);
    if (strnlen(evt->smp_time_1st, sizeof evt->smp_time_1st) != kTimeLen) set_time(evt->smp_time_1st, time);
    if (strncasecmp(time, evt->smp_time_1st, kTimeLen) <= 0) set_time(evt->smp_time_1st, time);
    chn->channel = channel;
  }

  const int cmp = std::strcmp(time, chn->nxt_time);
  G.sign = (cmp > 0) - (cmp < 0);

  set_time(evt->last, time);
  set_time(chn->prv_time, time);
  set_time(chn->nxt_time, time);
  add_str_tim(chn->nxt_time, evt->rate, packet + hdr::kSamples.off);
  chn->seq = seq;

  // An open trace file needs nothing, so the existence test is made only for a closed one.
  if (!chn->fp.is_open()) {
    if (chn->claimed || !fexist(chn->name)) {
      if (G.Smp_limit != 0) {
        open_trace(start, chn);
        Asc_dhdr_out(chn);
        chn->claimed = 0;
      }
    } else {
      open_trace(start, chn);
      chn->fp.seek_end();
    }
  }

  if (evt->bad) chn->cnt = G.Smp_limit == 4294967295u ? G.Smp_limit : G.Smp_limit + 1;

  evt->chn = chn;

  if (evt->pkt_eh == 0) estimate_rate(evt, chn);
  return chn;
}

std::uint8_t Chn_file_open(CHNLST_T* chn, const char* mode) {
  if (chn->fp.is_open()) return chn->file_open;
  if (chn->fp.open(chn->name, mode)) {
    chn->file_open = 1;
    ++G.N_opn_fls;
  } else {
    chn->file_open = 0;
  }
  return chn->file_open;
}

void Chn_file_close(CHNLST_T* chn) {
  chn->fp.close();
  if (chn->file_open == 1 && G.N_opn_fls > 0) --G.N_opn_fls;
  chn->file_open = 0;
}

void Chn_show(CHNLST_T* chn) {
  const SensorInfo* sensor = sensor_row(chn->sensor_ndx);
  auto p = [](const void* ptr) { return const_cast<void*>(ptr); };
  auto ul = [](std::uint32_t v) { return static_cast<unsigned long>(v); };
  std::printf("\nChan structure (%04hX):", chn->unit_id);
  std::printf("\n   prv/nxt    : %p %p", p(chn->prv), p(chn->nxt));
  std::printf("\n   evt        : %p", p(chn->evt));
  std::printf("\n   unit       : %p", p(chn->unit));
  std::printf("\n   file_open  : %u (%s)", unsigned{chn->file_open}, chn->fp.is_open() ? "open" : "closed");
  std::printf("\n   name       : %s", chn->name);
  std::printf("\n   sum        : %g", chn->sum);
  std::printf("\n   sq_sum     : %g", chn->sq_sum);
  std::printf("\n   min        : %g at %lu", chn->min, ul(chn->min_at));
  std::printf("\n   max        : %g at %lu", chn->max, ul(chn->max_at));
  std::printf("\n   unit_id    : %04hX", chn->unit_id);
  std::printf("\n   evt_num    : %u", unsigned{chn->evt_num});
  std::printf("\n   seq        : %u", unsigned{chn->seq});
  std::printf("\n   stream     : %u", unsigned{chn->stream});
  std::printf("\n   channel    : %u", unsigned{chn->channel});
  std::printf("\n   first_time : %s", chn->first_time);
  std::printf("\n   prv_time   : %s", chn->prv_time);
  std::printf("\n   nxt_time   : %s", chn->nxt_time);
  std::printf("\n   cnt        : %lu", ul(chn->cnt));
  std::printf("\n   trash      : %lu", ul(chn->trash));
  std::printf("\n   bits       : %u", unsigned{chn->bits});
  std::printf("\n   gain_ndx   : %u (%.3f)", unsigned{chn->gain_ndx}, static_cast<double>(gain_of(chn->gain_ndx)));
  std::printf("\n   tbw        : %g", chn->tbw);
  std::printf("\n   chn_fsa    : %f", chn->chn_fsa);
  std::printf("\n   sns_fsa    : %f", chn->sns_fsa);
  std::printf("\n   make       : %s", chn->make);
  std::printf("\n   model      : %s", chn->model);
  std::printf("\n   sn         : %lu", ul(chn->sn));
  std::printf("\n   sensor_ndx : %u (%s)", unsigned{chn->sensor_ndx}, sensor ? sensor->desc : "?");
  std::printf("\n   band       : %c", chn->band);
  std::printf("\n   type       : %c", chn->type);
  std::printf("\n   axis       : %c", chn->axis);
  std::printf("\n   seiscomp   : %s", chn->seiscomp);
  std::printf("\n   freq       : %f", chn->freq);
  std::printf("\n   damp       : %f", chn->damp);
  std::printf("\n   vpu        : %f %s", chn->vpu, measure_name(chn->vpu_ndx));
  std::printf("\n   lat/lon/alt: %f %f %f", chn->lat, chn->lon, chn->alt);
  std::printf("\n   depth      : %f", chn->depth);
  std::printf("\n   azimuth    : %u", unsigned{chn->azimuth});
  std::printf("\n   dip        : %d", int{chn->dip});
  any_key();
}

}  // namespace lm

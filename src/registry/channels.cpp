#include "registry/channels.hpp"

#include <strings.h>

#include <cstdio>
#include <cstring>

#include "base/exit.hpp"
#include "base/file_util.hpp"
#include "base/ring.hpp"
#include "base/text.hpp"
#include "output/asc_trace.hpp"
#include "output/trace_file.hpp"
#include "packet/fields.hpp"
#include "time/time_str.hpp"

namespace lm {
namespace {

void set_time(char (&dst)[kTimeLen + 1], const char* time) { set_text(dst, {time, kTimeLen}); }

// Keeps the number of open trace files near the limit: closes the first open file met walking
// back from the walk's starting channel, stopping at the packet's own channel.
void make_room(Run& run, CHNLST_T* start, const CHNLST_T* own) {
  if (run.N_opn_fls <= kOpenFilesMax) return;
  for (CHNLST_T* c = start; c != own; c = c->prv) {
    if (c->fp.is_open()) {
      Chn_file_close(c, run.N_opn_fls);
      return;
    }
  }
}

void open_trace(Run& run, CHNLST_T* start, CHNLST_T* chn) {
  make_room(run, start, chn);
  if (Chn_file_open(chn, "a+b", run.set.out_root(), run.N_opn_fls)) return;
  fatal(ending::kTraceOpen, chn->name);
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

// A channel met for the first time: created, indexed and linked after `start` (its event's first
// channel when there is none), with the event's first sample time. `start` becomes the ring's start.
CHNLST_T* add_channel(Run& run, Evt* evt, CHNLST_T*& start, const std::uint8_t* packet, const char* time) {
  const std::uint16_t channel = hdr::kChannel.value(packet);
  CHNLST_T* chn = Chn_create(run, evt, channel, hdr::kEvent.value(packet), hdr::kStream.value(packet), time);
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
  return chn;
}

// The trace file of a closed channel: its first header on a name this run claimed, else appended to.
// An open trace file needs nothing, so the existence test is made only for a closed one.
void reopen_trace(Run& run, CHNLST_T* start, CHNLST_T* chn) {
  if (chn->fp.is_open()) return;
  if (chn->claimed || !fexist(chn->name)) {
    if (run.set.Smp_limit != 0) {
      open_trace(run, start, chn);
      Asc_dhdr_out(chn, run.set);
      chn->claimed = 0;
    }
  } else {
    open_trace(run, start, chn);
    chn->fp.seek_end();
  }
}

}  // namespace

CHNLST_T* Chn_find(Run& run, Evt* evt, const std::uint8_t* packet) {
  const std::uint16_t channel = hdr::kChannel.value(packet);
  if (channel > evt->hi) evt->hi = channel;
  if (evt->lo == 99 || evt->lo > channel) evt->lo = channel;

  char time[kTimeLen + 1];
  pkt_time_str(packet, time);

  CHNLST_T* start = evt->chn;
  CHNLST_T* chn = evt->chn_index.find(channel);
  if (!chn) chn = add_channel(run, evt, start, packet, time);

  const int cmp = std::strcmp(time, chn->nxt_time);
  run.line.sign = (cmp > 0) - (cmp < 0);

  set_time(evt->last, time);
  set_time(chn->prv_time, time);
  set_time(chn->nxt_time, time);
  add_str_tim(chn->nxt_time, evt->rate, packet + hdr::kSamples.off);
  chn->seq = hdr::kSequence.value(packet);

  reopen_trace(run, start, chn);

  const std::uint32_t limit = run.set.Smp_limit;
  if (evt->bad) chn->cnt = limit == 4294967295u ? limit : limit + 1;

  evt->chn = chn;

  if (evt->pkt_eh == 0) estimate_rate(evt, chn);
  return chn;
}

}  // namespace lm

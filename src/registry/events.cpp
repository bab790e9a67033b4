#include "registry/events.hpp"
#include "model/event.hpp"

#include <cstdio>
#include <new>

#include "base/exit.hpp"
#include "base/ring.hpp"
#include "output/asc_trace.hpp"
#include "output/gather.hpp"
#include "output/trace_file.hpp"
#include "packet/codes.hpp"
#include "packet/fields.hpp"

namespace lm {

namespace {

[[noreturn]] void out_of_heap() { fatal(ending::kEventHeap); }

Evt* new_event(UNIT_T* unit, std::uint16_t number, std::uint16_t stream) {
  Evt* e = new (std::nothrow) Evt;  // zeroed counters, blank channel columns, no name
  if (!e) out_of_heap();
  e->unit = unit;
  e->unit_id = unit->unit_id;
  e->evt = number;
  e->strm = stream;
  return e;
}

}  // namespace

Evt* Evt_find(Run& run, UNIT_T* unit, const std::uint8_t* packet) {
  const std::uint16_t number = hdr::kEvent.value(packet);
  const std::uint16_t seq = hdr::kSequence.value(packet);
  const std::uint16_t stream = hdr::kStream.value(packet);

  Evt* const current = unit->evt;
  // Another event's packet: the current one's trace files are closed, the event stays open.
  if (current && current->evt != number) Evt_close_files(current, run.N_opn_fls);

  Evt* e = unit->evt_index.find(number);
  if (!e) {
    e = new_event(unit, number, stream);
    if (!unit->evt_index.insert(number, e)) {
      delete e;
      out_of_heap();
    }
    if (current) ring_insert_after(current, e);
    else ring_init(e);
  }

  const std::uint16_t code = code_set(packet);
  if (code == kEH || code == kET) Evt_info(e, packet);

  if (seq != e->seq + 1 && e->seq != 0 && e->seq != 9999) {
    e->bad = 1;
    if (run.set.Log_on)
      unit->fd_log.printf("\nBlock sequence # %d is out of sequence in Event #%d\n\n", int{seq}, int{number});
  }

  unit->evt = e;
  e->seq = seq;
  return e;
}

void Evt_close_files(Evt* evt, std::uint16_t& open_files) {
  if (!evt) return;
  ring_for_each(evt->chn, [&](CHNLST_T* c) {
    if (c->fp.is_open()) Chn_file_close(c, open_files);
  });
}

void Evt_remove(Run& run, Evt* evt) {
  // Complete every trace file's header with the final counts.
  ring_for_each(evt->chn, [&](CHNLST_T* c) {
    Chn_file_close(c, run.N_opn_fls);
    // With a sample limit of 0 no trace file is ever made: there is nothing to complete, and
    // reporting every channel as unreadable (with its retries and key prompts) would help nobody.
    if (run.set.Smp_limit == 0) return;
    if (Chn_file_open(c, "r+b", run.set.out_root(), run.N_opn_fls)) {
      Asc_data_close(c, run.set);
      Chn_file_close(c, run.N_opn_fls);
    } else {
      std::printf("\n!!!Could not re-open '%s'!!!", c->name);
      Chn_show(c);
    }
  });

  if (run.set.Flag_info.gather) Asc_merge(evt, run.set, run.N_opn_fls);

  ring_delete_all(evt->chn);
  evt->chn = nullptr;
  evt->chn_index.clear();

  UNIT_T* unit = evt->unit;
  Evt* before = ring_unlink(evt);
  if (unit) {
    unit->evt = before;
    unit->evt_index.erase(evt->evt);
  }
  delete evt;
}

}  // namespace lm

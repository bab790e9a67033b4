#include "model/event.hpp"

#include "model/ring.hpp"
#include "packet/fields.hpp"

namespace lm {

// Placeholder until the event registry lands.
Evt* Evt_find(UNIT_T* unit, const std::uint8_t* packet) {
  const std::uint16_t num = hdr::kEvent.value(packet);
  if (Evt* e = ring_find(unit->evt, [num](Evt* x) { return x->evt == num; })) {
    unit->evt = e;
    return e;
  }
  auto* e = new Evt{};
  e->unit = unit;
  e->unit_id = unit->unit_id;
  e->evt = num;
  if (unit->evt) ring_insert_after(unit->evt, e); else ring_init(e);
  unit->evt = e;
  return e;
}

void Evt_close_files(Evt*) {}

void Evt_remove(Evt* evt) {
  UNIT_T* u = evt->unit;
  Evt* before = ring_unlink(evt);
  u->evt = before;
  delete evt;
}

}  // namespace lm

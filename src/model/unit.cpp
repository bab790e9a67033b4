#include "model/unit.hpp"

#include "model/ring.hpp"
#include "packet/fields.hpp"
#include "run/globals.hpp"

namespace lm {

// Placeholder until the unit registry lands: units are found and created, no files are kept.
UNIT_T* Unit_find(const std::uint8_t* packet) {
  std::uint16_t id = hdr::kUnitId.value(packet);
  if (id == 0) id = 0xFFFF;
  if (UNIT_T* u = ring_find(G.unit_start, [id](UNIT_T* x) { return x->unit_id == id; })) {
    G.unit_start = u;
    return u;
  }
  auto* u = new UNIT_T{};
  u->unit_id = id;
  u->ini_last = -1;
  if (G.unit_start) ring_insert_after(G.unit_start, u); else ring_init(u);
  G.unit_start = u;
  return u;
}

void Unit_file_create(UNIT_T*, const std::uint8_t*, int) {}
void Unit_file_close(UNIT_T*, int) {}
void open_file(OutFile&, const char*, const std::uint8_t*) {}

}  // namespace lm

#include "model/channel.hpp"

#include "model/ring.hpp"
#include "packet/fields.hpp"

namespace lm {

// Placeholder until the channel registry lands: channels without files.
CHNLST_T* Chn_find(Evt* evt, const std::uint8_t* packet) {
  const std::uint16_t ch = hdr::kChannel.value(packet);
  if (CHNLST_T* c = ring_find(evt->chn, [ch](CHNLST_T* x) { return x->channel == ch; })) {
    evt->chn = c;
    return c;
  }
  auto* c = new CHNLST_T{};
  c->evt = evt;
  c->unit = evt->unit;
  c->channel = ch;
  if (evt->chn) ring_insert_after(evt->chn, c); else ring_init(c);
  evt->chn = c;
  return c;
}

std::uint8_t Chn_file_open(CHNLST_T* chn, const char*) { return chn->file_open; }
void Chn_file_close(CHNLST_T*) {}
void Chn_show(CHNLST_T*) {}

}  // namespace lm

#include <memory>
#include <new>

#include "base/exit.hpp"
#include "config/ini.hpp"
#include "config/tables.hpp"
#include "model/channel.hpp"
#include "output/names.hpp"
#include "qc/qcc.hpp"
#include "registry/channels.hpp"

namespace lm {

void chn_out_of_heap() { fatal(ending::kChannelHeap); }

CHNLST_T* Chn_create(Run& run, Evt* evt, std::uint16_t channel, std::uint16_t evt_num, std::uint16_t stream,
                     const char* time) {
  std::unique_ptr<CHNLST_T> chn(new (std::nothrow) CHNLST_T{});
  if (!chn) {
    chn_out_of_heap();
  }
  chn->unit = evt->unit;
  chn->unit_id = evt->unit_id;
  chn->evt = evt;
  if (const UNIT_T* u = evt->unit) {
    chn->lat = u->lat;
    chn->lon = u->lon;
    chn->alt = u->alt;
  }
  chn->trash = run.set.Smp_skip;
  chn->evt_num = evt_num;
  chn->stream = stream;
  chn->channel = channel;
  chn->band = ' ';
  chn->type = ' ';
  chn->axis = Axis[channel % 6];
  chn->bits = 24;

  Qcc_init(chn.get());
  if (evt->unit) Chn_ini(*chn, channel, *evt->unit, chn->unit_id, run.set.FileIni);
  Chn_ehet(chn.get());

  Asc_chn_name(chn.get(), time, run.set);
  return chn.release();
}

}  // namespace lm

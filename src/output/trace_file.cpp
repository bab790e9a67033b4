#include "output/trace_file.hpp"

#include <cstdio>

#include "config/tables.hpp"

namespace lm {
namespace {

// Waits for the operator after a diagnostic dump.
std::uint16_t any_key() {
  std::fprintf(stderr, "\r\nPress ENTER/RETURN to continue.");
  std::fflush(stdout);
  const int c = std::getchar();
  return static_cast<std::uint16_t>(c == EOF ? 0 : c);
}

}  // namespace

std::uint8_t Chn_file_open(CHNLST_T* chn, const char* mode, std::size_t root, std::uint16_t& open_files) {
  if (chn->fp.is_open()) return chn->file_open;
  if (chn->fp.open(chn->name, root, mode)) {
    chn->file_open = 1;
    ++open_files;
  } else {
    chn->file_open = 0;
  }
  return chn->file_open;
}

void Chn_file_close(CHNLST_T* chn, std::uint16_t& open_files) {
  chn->fp.close();
  if (chn->file_open == 1 && open_files > 0) --open_files;
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

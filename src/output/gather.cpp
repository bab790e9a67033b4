#include "output/gather.hpp"

#include <cstdio>

#include "output/names.hpp"
#include "output/trace_file.hpp"

namespace lm {
namespace {

// The ring's channel with the event's lowest number, where the gathered file begins.
CHNLST_T* lowest(Evt* evt) {
  CHNLST_T* c = evt->chn;
  do {
    if (c->channel == evt->lo) return c;
    c = c->nxt;
  } while (c && c != evt->chn);
  return evt->chn;  // lo names one of the channels; this only guards a damaged ring
}

// Appends the channel's trace file to the gathered file; true when every byte reached it.
bool append_trace(Evt* evt, CHNLST_T* c, std::size_t root, std::uint16_t& open_files) {
  if (!Chn_file_open(c, "rb", root, open_files)) return false;
  std::FILE* in = c->fp.stream();
  // The copy is byte for byte, so its pieces need not follow the lines: large blocks are faster.
  char block[8192];
  std::size_t n;
  while ((n = std::fread(block, 1, sizeof block, in)) > 0) evt->fd_evt.write(block, n);
  const bool read_ok = !std::ferror(in);
  Chn_file_close(c, open_files);
  std::FILE* out = evt->fd_evt.stream();  // flushed: a failed write shows on the stream
  return read_ok && out && !std::ferror(out);
}

}  // namespace

void Asc_fhdr_out(Evt* evt, const Settings& set) { evt->fd_evt.open(Asc_evt_name(evt, set), set.out_root(), "w+b"); }

void Asc_merge(Evt* evt, const Settings& set, std::uint16_t& open_files) {
  if (!evt->chn || evt->chn->cnt == 0) return;
  Asc_fhdr_out(evt, set);
  if (!evt->fd_evt.is_open()) return;
  CHNLST_T* const first = lowest(evt);
  CHNLST_T* c = first;
  do {
    Chn_file_close(c, open_files);
    // A trace file that cannot be read, or whose copy failed, stays on disk.
    if (append_trace(evt, c, set.out_root(), open_files)) std::remove(c->name);
    c = c->nxt;
  } while (c && c != first);
  evt->fd_evt.close();
}

}  // namespace lm

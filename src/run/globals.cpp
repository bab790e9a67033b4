#include "run/globals.hpp"

#include "model/records.hpp"
#include "model/ring.hpp"

namespace lm {

Globals G;

namespace {

void free_event(Evt* e) {
  CHNLST_T* c = e->chn;
  if (c) {
    c->prv->nxt = nullptr;  // break the ring, then free along it
    while (c) {
      CHNLST_T* next = c->nxt;
      delete c;  // closes (flushes) its trace file
      c = next;
    }
  }
  delete e;
}

}  // namespace

void reset_globals() {
  if (UNIT_T* start = G.unit_start) {
    start->prv->nxt = nullptr;
    for (UNIT_T* u = start; u;) {
      UNIT_T* next = u->nxt;
      if (Evt* e = u->evt) {
        e->prv->nxt = nullptr;
        while (e) {
          Evt* en = e->nxt;
          free_event(e);
          e = en;
        }
      }
      delete u;
      u = next;
    }
    G.unit_start = nullptr;
  }
  if (G.FdIn) std::fclose(G.FdIn);
  G.FdIn = nullptr;
  G.FdLog.close();
  G.FdQcc.close();

  G.Verbose = 1;
  G.Log_on = 1;
  G.Log_dt = 0;
  G.Qcc_on = 0;
  G.Flag_info = FlagInfo{};
  G.Name_option = 0;
  G.Path_option = 0;
  G.Smp_rate_cmd = 100.0f;
  G.Smp_limit = 4294967295u;
  G.Smp_skip = 0;
  G.Sys_time = 0;
  for (char* t : {G.Cmd_line, G.FileIn, G.DirOrg, G.DirOut, G.FileIni, G.File_temp, G.FileLog, G.FileQcc})
    t[0] = '\0';
  G.Blk_cnt = 0;
  G.N_opn_fls = 0;
  G.sign = 0;
  G.Data_buf[0] = 0;
}

}  // namespace lm

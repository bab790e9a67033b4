#include "run/globals.hpp"

#include "model/records.hpp"
#include "base/ring.hpp"
#include "run/exit.hpp"

namespace lm {

Globals G;

void reset_globals() {
  // Records own their files: deleting them closes (flushes) every stream still open.
  ring_delete_all(G.unit_start, [](UNIT_T* u) {
    ring_delete_all(u->evt, [](Evt* e) { ring_delete_all(e->chn); });
  });
  G.unit_start = nullptr;
  G.unit_index.clear();
  run_ending_reset();
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
}

}  // namespace lm

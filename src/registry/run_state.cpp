#include "registry/run_state.hpp"

#include "base/ring.hpp"

namespace lm {

Run::~Run() {
  ring_delete_all(unit_start, [](UNIT_T* u) {
    ring_delete_all(u->evt, [](Evt* e) { ring_delete_all(e->chn); });
  });
  if (FdIn) std::fclose(FdIn);
}

namespace {

void close_input(Run& run) {
  if (run.FdIn) std::fclose(run.FdIn);
  run.FdIn = nullptr;
}

}  // namespace

void fcloseall(Run& run) {
  close_input(run);
  run.FdQcc.close();
  run.FdLog.close();
}

void fcloseall_quietly(Run& run) {
  close_input(run);
  run.FdQcc.close_quietly();
  run.FdLog.close_quietly();
}

}  // namespace lm

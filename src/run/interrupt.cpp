#include "run/interrupt.hpp"

#include <csignal>

namespace lm {

namespace {

volatile std::sig_atomic_t g_interrupted = 0;
struct sigaction g_old_int, g_old_term;
bool g_armed = false;

extern "C" void on_interrupt(int) { g_interrupted = 1; }

}  // namespace

void interrupt_arm() {
  g_interrupted = 0;
  struct sigaction sa {};
  sa.sa_handler = on_interrupt;
  sigemptyset(&sa.sa_mask);
  // No SA_RESTART: a read blocked on a pipe returns, and the loop sees the flag. SA_RESETHAND
  // leaves the default action in place for a second signal.
  sa.sa_flags = SA_RESETHAND;
  sigaction(SIGINT, &sa, &g_old_int);
  sigaction(SIGTERM, &sa, &g_old_term);
  g_armed = true;
}

void interrupt_disarm() {
  if (g_armed) {
    sigaction(SIGINT, &g_old_int, nullptr);
    sigaction(SIGTERM, &g_old_term, nullptr);
  }
  g_armed = false;
  g_interrupted = 0;
}

bool interrupted() { return g_interrupted != 0; }

}  // namespace lm

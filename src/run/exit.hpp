#pragma once
// A fatal end of the run travels to main() as this exception, after its message has been printed,
// so that whole conversions can also run in-process (tests, fuzzers).
namespace lm {

struct RunExit {
  int status;
};

// Ends the run with the given exit status; the caller has printed its message already.
[[noreturn]] inline void run_exit(int status) { throw RunExit{status}; }

}  // namespace lm

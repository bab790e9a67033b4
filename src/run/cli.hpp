#pragma once

namespace lm {

// The whole life of a run: set-up from the command line, the conversion, and the exit status.
// Safe to call more than once in a process: it starts from and leaves the defaults.
int run_main(int argc, char** argv);
// Prints the usage text.
void syntax();

}  // namespace lm

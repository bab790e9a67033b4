#pragma once

namespace lm {

struct Settings;

// The whole life of a run: set-up from the command line, the conversion, and the exit status.
// Safe to call more than once in a process: it starts from and leaves the defaults.
int run_main(int argc, char** argv);
// Prints the usage text (with the skip count in force).
void syntax(const Settings& set);

}  // namespace lm

#pragma once
// Every fatal end of a run goes through end_run(): the message, whether the run's own files are
// closed, and the status. The end travels to run_main() as RunExit, so that whole conversions can
// also run in-process (tests, fuzzers).
namespace lm {

struct RunExit {
  int status;
};

enum class CloseFiles : bool { no, yes };

// Closes the run's files when asked, prints fmt with text in place of its "%s" (null fmt: no
// message) and ends the run with the status. From here on the run is ending (run_ending()).
[[noreturn]] void end_run(int status, CloseFiles close, const char* fmt, const char* text = nullptr);
// True once a fatal end has begun: files closed while the run unwinds drop their write errors,
// since the first failure has been reported already.
bool run_ending();
// Back to a run that is not ending, for the next run in the same process.
void run_ending_reset();

}  // namespace lm

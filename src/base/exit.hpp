#pragma once
// Every fatal end of a run is one entry of one table: its status, its message and whether the run's
// own files are closed. Code deep down raises it (fatal, shut_down) and throws; the program's top
// catches the RunExit, closes what it owns and prints the message, so no layer below needs to know
// which files the run has open.
#include <cstdint>
#include <string>

namespace lm {

struct Ending {
  int status;
  bool close_files;  // the run's input, log and statistics files are closed before the message
  const char* fmt;   // printf format with at most one "%s"; null: no message
};

// The endings that are not one of shut_down's numbered codes.
namespace ending {
inline constexpr Ending kUsage{2, false, nullptr};
inline constexpr Ending kTraceOpen{20, true, "\n\nERROR!!!!\n   unable to open %s for output."};
inline constexpr Ending kNoUniqueName{23, true, "\n\nERROR!!!!!\n   Unable to create an unique filename."};
inline constexpr Ending kChannelHeap{40, false, " Out of Heap allocating CHNLST_T pointer"};
inline constexpr Ending kEventHeap{255, false, "\n\nOut of Heap allocating Event pointer"};
}  // namespace ending

// The ending of a numbered code (1 interrupt, 10 directory, 20 open, 21 read, 22 write, 40 memory, ...).
Ending ending_of(std::uint8_t code);

struct RunExit {
  int status;
  bool close_files;
  const char* fmt;
  std::string text;  // copied: what it named may be freed while the exception travels
  // Prints the message on standard output: fmt with the text in place of its "%s".
  void print() const;
};

// Ends the run with the ending and its text (null: empty).
[[noreturn]] void fatal(const Ending& e, const char* text = nullptr);
// Ends the run with the numbered code's message and status; the run's files are closed.
[[noreturn]] inline void shut_down(std::uint8_t code, const char* text) { fatal(ending_of(code), text); }

}  // namespace lm

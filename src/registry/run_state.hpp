#pragma once
// The live state of one conversion: the run's own files, its counters and the unit ring. The
// conversion's top owns it and hands it to the registry's calls; the settings are fixed.
#include <cstdint>
#include <cstdio>

#include "base/out_file.hpp"
#include "base/ring_index.hpp"
#include "log/log_file.hpp"
#include "model/records.hpp"
#include "model/settings.hpp"

namespace lm {

struct Run {
  explicit Run(const Settings& s) : set(s) {}
  // Frees every record; files still open keep what was written to them, as the process exit would.
  ~Run();
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  const Settings& set;
  std::FILE* FdIn = nullptr;
  OutFile FdLog;
  OutFile FdQcc;
  LineState line;               // packets so far and the continuity mark for the next summary line
  std::uint16_t N_opn_fls = 0;  // trace files open
  UNIT_T* unit_start = nullptr;  // cursor of the unit ring: the unit of the latest recognised packet
  RingIndex<UNIT_T> unit_index;  // unit ID -> unit
};

// Closes the input, the run statistics file and the run log (each only when open); a failing
// close ends the run with the write error.
void fcloseall(Run& run);
// The same without checking, for a run that is ending already.
void fcloseall_quietly(Run& run);

}  // namespace lm

#pragma once
// Names and directories of trace files and gathered event files: cut from the time of the first
// data, the station name or unit ID, and the stream and channel numbers.
#include <cstddef>
#include <cstdint>

#include "model/records.hpp"
#include "model/settings.hpp"

namespace lm {

inline constexpr char Spec_char[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
// Makes the channel's directory and stores in chn->name the first trace file path of the 25
// variants that does not exist yet. Ends the run when the path does not fit or all variants exist.
void Asc_chn_name(CHNLST_T* chn, const char* time, const Settings& set);
// The gathered event file's path, stored in the event's evt_file_name.
const char* Asc_evt_name(Evt* evt, const Settings& set);

}  // namespace lm

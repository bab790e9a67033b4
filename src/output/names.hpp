#pragma once
// Names and directories of trace files and gathered event files: cut from the time of the first
// data, the station name or unit ID, and the stream and channel numbers.
#include <cstddef>
#include <cstdint>

#include "model/records.hpp"

namespace lm {

inline constexpr char Spec_char[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
// Place of the uniqueness letter in a trace file's base name.
inline constexpr std::size_t kUniquePos = 24;
// Room for any path the name rules can build (DirOut, subdirectories, base name, extension).
inline constexpr std::size_t kPathRoom = 256;

// DirOut followed by the subdirectories of Path_option for the time string; the length written,
// or cap or more when it did not fit.
std::size_t out_dir(char* out, std::size_t cap, const char* time);
// The five-character name part: station name or unit ID by Name_option.
void name_part(const Evt& evt, char (&out)[6]);
// Base name of a trace file (without extension); the length written, cap or more when cut.
std::size_t trace_base(char* out, std::size_t cap, const char* time, const char* name, std::uint16_t stream,
                       std::uint16_t channel);

// Makes the channel's directory and stores in chn->name the first trace file path of the 25
// variants that does not exist yet. Ends the run when the path does not fit or all variants exist.
void Asc_chn_name(CHNLST_T* chn, const char* time);
// The gathered event file's path, stored in the event's evt_file_name.
const char* Asc_evt_name(Evt* evt);

}  // namespace lm

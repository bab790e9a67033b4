#pragma once
// Process-wide state in one place: run settings (written only by set-up), the run's own streams,
// counters and the unit ring. reset_globals() returns it to its defaults so that
// whole conversions can run one after another in one process.
#include <cstdint>
#include <cstdio>
#include <ctime>

#include "base/ring_index.hpp"
#include "base/out_file.hpp"

namespace lm {

struct UNIT_T;

inline constexpr char Program[] = "LM_ASC";
inline constexpr char Version[] = "mrg02   ";
inline constexpr char Fname_ini[] = "lmu.ini";
inline constexpr char Dir_sep[] = "/";
inline constexpr char Fn_ext_log[] = ".lml";
inline constexpr char Fn_ext_qcc[] = ".qcc";
inline constexpr char Fn_ext_chn[] = ".atr";
inline constexpr char Fn_ext_evt[] = ".adt";


struct FlagInfo {
  std::uint8_t trace_hdr = 1;
  std::uint16_t gather = 0;
};

struct Globals {
  // Run settings.
  std::uint8_t Verbose = 1;
  std::uint16_t Log_on = 1;
  std::uint8_t Log_dt = 0;
  std::uint16_t Qcc_on = 0;
  FlagInfo Flag_info;
  std::uint16_t Name_option = 0;
  std::uint16_t Path_option = 0;
  float Smp_rate_cmd = 100.0f;
  std::uint32_t Smp_limit = 4294967295u;
  std::uint32_t Smp_skip = 0;
  std::time_t Sys_time = 0;

  // Text settings, 132-byte buffers.
  char Cmd_line[132] = {};
  char FileIn[132] = {};
  char DirOrg[132] = {};
  char DirOut[132] = {};
  char FileIni[132] = {};
  char File_temp[132] = {};
  char FileLog[132] = {};
  char FileQcc[132] = {};

  // The run's own streams.
  std::FILE* FdIn = nullptr;
  OutFile FdLog;
  OutFile FdQcc;

  // Counters of the conversion.
  std::uint32_t Blk_cnt = 0;
  std::uint16_t N_opn_fls = 0;
  int sign = 0;

  // Cursor of the unit ring: the unit of the latest recognised packet.
  UNIT_T* unit_start = nullptr;
  RingIndex<UNIT_T> unit_index;  // unit ID -> unit
};

extern Globals G;

// Frees every record and closes every file still open (what the process exit would do), then
// restores all defaults.
void reset_globals();

}  // namespace lm

#pragma once
// The converter's settings: plain values, written by the set-up from the command line and fixed
// after it; everything below the conversion's top reads them as passed in.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>

namespace lm {

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

struct Settings {
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

  // Length of the output directory's part of every output path: links are followed only in it.
  std::size_t out_root() const { return std::strlen(DirOut); }
};

}  // namespace lm

#include "run/cli.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "base/exit.hpp"
#include "base/file_util.hpp"
#include "base/number.hpp"
#include "base/text.hpp"
#include "log/log_file.hpp"
#include "model/settings.hpp"
#include "qc/qcc.hpp"
#include "registry/run_state.hpp"
#include "run/convert.hpp"
#include "run/interrupt.hpp"

namespace lm {

void syntax(const Settings& set) {
  std::printf("\r\n\nPurpose:");
  std::printf("\r\n   Reads a file containing TERVEL data packets and converts");
  std::printf("\r\n   the data to LUMARA ASCII format.");
  std::printf("\r\n\nUsage:");
  std::printf("\r\n   %s [switches] sourceFile [output_path] [switches]", Program);
  std::printf("\r\n\n Switches               Description                               Default    ");
  std::printf("\r\n ----------------------------------------------------------------------------");
  std::printf("\r\n   -Dc     DT  LOG  output: Y, +, N or -                          (%s)", "NO");
  std::printf("\r\n   -Gc     output Gathered file: Y, +, N or -                     (%s)", "NO");
  std::printf("\r\n   -Hc     output trace Header: Y, +, N or -                      (%s)", "YES");
  std::printf("\r\n   -Lc     LOG File output: Y, +, N or -                          (%s)", "YES");
  std::printf("\r\n   -Nc     file Name option:                                      (%s)", "Auto");
  std::printf("\r\n             0/- = use Station Name when present, else use Unit ID");
  std::printf("\r\n             1/I = always use Unit ID");
  std::printf("\r\n             2/S = always use Station Name");
  std::printf("\r\n   -Pn     output Path levels                                     (%d)", 0);
  std::printf("\r\n             0 = no additional subdirectories");
  std::printf("\r\n             1 = one subdirectory level:  YYYY_DDD");
  std::printf("\r\n             2 = two subdirectory levels: YYYY_DDD%cHH", '/');
  std::printf("\r\n             3 = two subdirectory levels: YYYY_DDD%cHH_MM", '/');
  std::printf("\r\n             4 = two subdirectory levels: YYYY_DDD%cHH_MM_SS", '/');
  std::printf("\r\n   -Qc     QCC File output: Y, +, N or -                          (%s)", "NO");
  std::printf("\r\n   -Rn     sample Rate (if not found in the data)                 (%u)", 100u);
  std::printf("\r\n   -Sn     Sample count per channel per event                     (%lu)", 4294967295ul);
  std::printf("\r\n   -Tn     Trash n samples from each event                        (%lu)",
              static_cast<unsigned long>(set.Smp_skip));
  std::printf("\r\n   -Vc     Verbose message output: Y, +, N or -                   (%s)", "ENABLED");
  std::printf("\r\n\nSwitches may appear anywhere on the command line.");
  std::printf("\r\nArguments and switches are NOT case sensitive.");
  std::printf("\r\n");
}

namespace {

[[noreturn]] void usage(const Settings& set) {
  syntax(set);
  fatal(ending::kUsage);
}

// Yes/no switch value: 1, 0, or the usage.
std::uint8_t yes_no(const Settings& set, const char* value) {
  const int c = std::toupper(static_cast<unsigned char>(value[0]));
  if (c == 'Y' || c == '+') return 1;
  if (c == 'N' || c == '-') return 0;
  usage(set);
}

// Unsigned 32-bit count with automatic base (0x hexadecimal, 0 octal, else decimal); a minus sign
// negates modulo 2^32; a value beyond the 32-bit range gives 4294967295.
std::uint32_t read_count(const char* s) {
  const std::int64_t v = lead_int(s, 0).value_or(0);
  if (v > 0xFFFFFFFFll || v < -0xFFFFFFFFll) return 0xFFFFFFFFu;
  return static_cast<std::uint32_t>(v);
}

void take_switch(Settings& set, const char* arg) {
  const char letter = static_cast<char>(std::toupper(static_cast<unsigned char>(arg[1])));
  const char* value = arg[1] ? arg + 2 : arg + 1;
  switch (letter) {
    case 'D': set.Log_dt = yes_no(set, value); break;
    case 'L': set.Log_on = yes_no(set, value); break;
    case 'Q': set.Qcc_on = yes_no(set, value); break;
    case 'V': set.Verbose = yes_no(set, value); break;
    case 'H':
      if (yes_no(set, value)) set.Flag_info.trace_hdr = 1;
      else if (set.Flag_info.gather == 0) set.Flag_info.trace_hdr = 0;
      break;
    case 'G': {
      const int c = std::toupper(static_cast<unsigned char>(value[0]));
      if (c && std::strchr("Y+ERS", c)) {
        set.Flag_info.gather = 1;
        set.Flag_info.trace_hdr = 1;
      } else if (c == 'N' || c == '-') {
        set.Flag_info.gather = 0;
      } else {
        usage(set);
      }
      break;
    }
    case 'N': {
      const int c = std::toupper(static_cast<unsigned char>(value[0]));
      if (c == '0' || c == '-' || c == 'N') set.Name_option = 0;
      else if (c == '1' || c == 'I') set.Name_option = 1;
      else if (c == '2' || c == 'S') set.Name_option = 2;
      else usage(set);
      break;
    }
    case 'P': {
      // The setting is 16 bits wide and takes the number's low bits before the range check, so
      // 65539 is 3 and -1 is 65535.
      set.Path_option = static_cast<std::uint16_t>(int_or_0(value));
      if (set.Path_option > 4) usage(set);
      break;
    }
    case 'R': set.Smp_rate_cmd = stof(value, 0); break;
    case 'S': set.Smp_limit = read_count(value); break;
    case 'T': set.Smp_skip = read_count(value); break;
    case 'F': break;
    default: usage(set);
  }
}

void echo_line(void*, const char* line) { std::fputs(line, stdout); }

// The command line into the settings; the paths given, input first.
std::vector<std::string> read_command_line(Settings& set, int argc, char** argv) {
  // Over-long command lines are cut to the buffer where they are echoed.
  set_text(set.Cmd_line, argc > 0 && argv[0] ? argv[0] : Program);
  std::vector<std::string> paths;
  for (int i = 1; i < argc; ++i) {
    append_text(set.Cmd_line, " ");
    append_text(set.Cmd_line, argv[i]);
    const char* arg = argv[i];
    if (arg[0] == '-') {
      take_switch(set, arg);
    } else {
      if (arg[0] == '?' || paths.size() == 2) usage(set);
      paths.emplace_back(arg);
    }
  }
  if (paths.empty()) usage(set);
  return paths;
}

// The input, output, INI, log and statistics paths of the settings.
void set_paths(Settings& set, const std::vector<std::string>& paths, const char* argv0) {
  // Paths that do not fit their buffers end the run as a file that cannot be opened would.
  if (!set_text(set.FileIn, paths[0])) shut_down(20, paths[0].c_str());

  char cwd[4096];
  if (!::getcwd(cwd, sizeof cwd)) cwd[0] = '\0';
  set_text(set.DirOrg, cwd);
  std::string dir_out = paths.size() >= 2 ? paths[1] : std::string(cwd);
  if (paths.size() >= 2 && !fexist(paths[1].c_str())) {
    set_text(set.DirOut, paths[1]);
    shut_down(10, paths[1].c_str());
  }
  if (dir_out.empty() || dir_out.back() != '/') dir_out += '/';
  if (!set_text(set.DirOut, dir_out)) shut_down(20, dir_out.c_str());

  std::string ini;
  if (const char* env = std::getenv("LMU")) ini = env;
  else if (fexist(Fname_ini)) ini = std::string(set.DirOrg) + Dir_sep + Fname_ini;
  else ini = program_dir(argv0) + Fname_ini;
  if (!fexist(ini.c_str())) ini += " - not found; using defaults";
  set_text(set.FileIni, ini);  // shown only; an over-long one is cut

  std::string_view base(set.FileIn);
  if (const auto slash = base.rfind('/'); slash != std::string_view::npos) base.remove_prefix(slash + 1);
  if (const auto dot = base.rfind('.'); dot != std::string_view::npos) base = base.substr(0, dot);
  set_text(set.File_temp, base);
  const std::string log_path = std::string(set.DirOut) + std::string(base) + Fn_ext_log;
  const std::string qcc_path = std::string(set.DirOut) + std::string(base) + Fn_ext_qcc;
  if (!set_text(set.FileLog, log_path)) shut_down(20, log_path.c_str());
  if (!set_text(set.FileQcc, qcc_path)) shut_down(20, qcc_path.c_str());
}

// The run log and statistics file, headed, and the input; 1 for an empty input, else 0.
int open_run_files(Run& run) {
  const Settings& set = run.set;
  if (set.Log_on) {
    if (!run.FdLog.open(set.FileLog, set.out_root(), "wb")) shut_down(20, set.FileLog);
    Log_fhdr(run.FdLog, set);
  }
  if (set.Qcc_on) {
    if (!run.FdQcc.open(set.FileQcc, set.out_root(), "wb")) shut_down(20, set.FileQcc);
    Qcc_fhdr(run.FdQcc, set);
  }

  settings_lines(set, echo_line, nullptr, "\n");
  std::printf("\n      TEMP File : %s", set.File_temp);
  std::printf("\n\nPress CTRL-BRK or CTRL-C to abort.\n");

  run.FdIn = fopen_lm(set.FileIn, "rb");
  if (!run.FdIn) shut_down(20, set.FileIn);
  static char in_buffer[1 << 16];  // the C library would otherwise read 4 KiB at a time
  std::setvbuf(run.FdIn, in_buffer, _IOFBF, sizeof in_buffer);
  struct stat st {};
  if (::fstat(::fileno(run.FdIn), &st) == 0 && st.st_size == 0) return 1;
  return 0;
}

int convert(Settings& set, Run& run, int argc, char** argv) {
  std::printf("\n%s - Version %s", Program, Version);
  set.Sys_time = std::time(nullptr);
  const std::vector<std::string> paths = read_command_line(set, argc, argv);
  set_paths(set, paths, argc > 0 ? argv[0] : nullptr);
  // From here on the settings are fixed.
  if (open_run_files(run) != 0) return 1;

  interrupt_arm();
  const std::uint16_t status = lm_cvt(run);
  fcloseall(run);
  std::printf("\r\n");
  return status;
}

}  // namespace

int run_main(int argc, char** argv) {
  Settings set;  // every default, written once
  int status;
  {
    Run run(set);
    try {
      try {
        status = convert(set, run, argc, argv);
      } catch (const std::bad_alloc&) {
        // Allocations without a check of their own (library containers) end the run the same way.
        shut_down(40, "heap");
      }
    } catch (const RunExit& e) {
      if (e.close_files) fcloseall_quietly(run);
      e.print();
      status = e.status;
    }
    interrupt_disarm();
  }  // the records go: what is still open is closed and flushed, as the process exit would
  std::fflush(stdout);
  return status;
}

}  // namespace lm

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

#include "log/log_file.hpp"
#include "packet/reader.hpp"
#include "qc/qcc.hpp"
#include "run/exit.hpp"
#include "run/file_util.hpp"
#include "run/globals.hpp"
#include "run/number.hpp"
#include "run/interrupt.hpp"
#include "run/shut_down.hpp"
#include "run/text.hpp"

namespace lm {

void syntax() {
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
              static_cast<unsigned long>(G.Smp_skip));
  std::printf("\r\n   -Vc     Verbose message output: Y, +, N or -                   (%s)", "ENABLED");
  std::printf("\r\n\nSwitches may appear anywhere on the command line.");
  std::printf("\r\nArguments and switches are NOT case sensitive.");
  std::printf("\r\n");
}

namespace {

[[noreturn]] void usage() {
  syntax();
  end_run(2, CloseFiles::no, nullptr);
}

// Yes/no switch value: 1, 0, or the usage.
std::uint8_t yes_no(const char* value) {
  const int c = std::toupper(static_cast<unsigned char>(value[0]));
  if (c == 'Y' || c == '+') return 1;
  if (c == 'N' || c == '-') return 0;
  usage();
}

// Unsigned 32-bit count with automatic base (0x hexadecimal, 0 octal, else decimal); a minus sign
// negates modulo 2^32; a value beyond the 32-bit range gives 4294967295.
std::uint32_t read_count(const char* s) {
  const std::int64_t v = lead_int(s, 0).value_or(0);
  if (v > 0xFFFFFFFFll || v < -0xFFFFFFFFll) return 0xFFFFFFFFu;
  return static_cast<std::uint32_t>(v);
}

void take_switch(const char* arg) {
  const char letter = static_cast<char>(std::toupper(static_cast<unsigned char>(arg[1])));
  const char* value = arg[1] ? arg + 2 : arg + 1;
  switch (letter) {
    case 'D': G.Log_dt = yes_no(value); break;
    case 'L': G.Log_on = yes_no(value); break;
    case 'Q': G.Qcc_on = yes_no(value); break;
    case 'V': G.Verbose = yes_no(value); break;
    case 'H':
      if (yes_no(value)) G.Flag_info.trace_hdr = 1;
      else if (G.Flag_info.gather == 0) G.Flag_info.trace_hdr = 0;
      break;
    case 'G': {
      const int c = std::toupper(static_cast<unsigned char>(value[0]));
      if (c && std::strchr("Y+ERS", c)) {
        G.Flag_info.gather = 1;
        G.Flag_info.trace_hdr = 1;
      } else if (c == 'N' || c == '-') {
        G.Flag_info.gather = 0;
      } else {
        usage();
      }
      break;
    }
    case 'N': {
      const int c = std::toupper(static_cast<unsigned char>(value[0]));
      if (c == '0' || c == '-' || c == 'N') G.Name_option = 0;
      else if (c == '1' || c == 'I') G.Name_option = 1;
      else if (c == '2' || c == 'S') G.Name_option = 2;
      else usage();
      break;
    }
    case 'P': {
      // The setting is 16 bits wide and takes the number's low bits before the range check, so
      // 65539 is 3 and -1 is 65535.
      G.Path_option = static_cast<std::uint16_t>(int_or_0(value));
      if (G.Path_option > 4) usage();
      break;
    }
    case 'R': G.Smp_rate_cmd = stof(value, 0); break;
    case 'S': G.Smp_limit = read_count(value); break;
    case 'T': G.Smp_skip = read_count(value); break;
    case 'F': break;
    default: usage();
  }
}

void echo_line(void*, const char* line) { std::fputs(line, stdout); }

// The directory of this program, with its trailing "/", for an invocation name without one.
std::string program_dir(const char* argv0) {
  std::string_view name(argv0 ? argv0 : "");
  if (const auto slash = name.rfind('/'); slash != std::string_view::npos) return std::string(name.substr(0, slash + 1));
  // Without a "/" in the name, look beside the executable the system ran.
  char exe[4096];
  const ssize_t n = ::readlink("/proc/self/exe", exe, sizeof exe - 1);
  if (n <= 0) return {};
  std::string_view path(exe, static_cast<std::size_t>(n));
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? std::string() : std::string(path.substr(0, slash + 1));
}

int convert(int argc, char** argv) {
  std::printf("\n%s - Version %s", Program, Version);
  G.Sys_time = std::time(nullptr);

  // Over-long command lines are cut to the buffer where they are echoed.
  set_text(G.Cmd_line, argc > 0 && argv[0] ? argv[0] : Program);
  std::string in_path, out_path;
  int paths = 0;
  for (int i = 1; i < argc; ++i) {
    append_text(G.Cmd_line, " ");
    append_text(G.Cmd_line, argv[i]);
    const char* arg = argv[i];
    if (arg[0] == '-') {
      take_switch(arg);
    } else {
      if (arg[0] == '?') usage();
      if (paths == 0) in_path = arg;
      else if (paths == 1) out_path = arg;
      else usage();
      ++paths;
    }
  }
  if (paths == 0) usage();
  // Paths that do not fit their buffers end the run as a file that cannot be opened would.
  if (!set_text(G.FileIn, in_path)) shut_down(20, in_path.c_str());

  char cwd[4096];
  if (!::getcwd(cwd, sizeof cwd)) cwd[0] = '\0';
  set_text(G.DirOrg, cwd);
  std::string dir_out = paths >= 2 ? out_path : std::string(cwd);
  if (paths >= 2 && !fexist(out_path.c_str())) {
    set_text(G.DirOut, out_path);
    shut_down(10, out_path.c_str());
  }
  if (dir_out.empty() || dir_out.back() != '/') dir_out += '/';
  if (!set_text(G.DirOut, dir_out)) shut_down(20, dir_out.c_str());

  std::string ini;
  if (const char* env = std::getenv("LMU")) ini = env;
  else if (fexist(Fname_ini)) ini = std::string(G.DirOrg) + Dir_sep + Fname_ini;
  else ini = program_dir(argc > 0 ? argv[0] : nullptr) + Fname_ini;
  if (!fexist(ini.c_str())) ini += " - not found; using defaults";
  set_text(G.FileIni, ini);  // shown only; an over-long one is cut

  std::string_view base(G.FileIn);
  if (const auto slash = base.rfind('/'); slash != std::string_view::npos) base.remove_prefix(slash + 1);
  if (const auto dot = base.rfind('.'); dot != std::string_view::npos) base = base.substr(0, dot);
  set_text(G.File_temp, base);
  const std::string log_path = std::string(G.DirOut) + std::string(base) + Fn_ext_log;
  const std::string qcc_path = std::string(G.DirOut) + std::string(base) + Fn_ext_qcc;
  if (!set_text(G.FileLog, log_path)) shut_down(20, log_path.c_str());
  if (!set_text(G.FileQcc, qcc_path)) shut_down(20, qcc_path.c_str());

  if (G.Log_on) {
    if (!G.FdLog.open(G.FileLog, "wb")) shut_down(20, G.FileLog);
    Log_fhdr(G.FdLog);
  }
  if (G.Qcc_on) {
    if (!G.FdQcc.open(G.FileQcc, "wb")) shut_down(20, G.FileQcc);
    Qcc_fhdr(G.FdQcc);
  }

  settings_lines(echo_line, nullptr, "\n");
  std::printf("\n      TEMP File : %s", G.File_temp);
  std::printf("\n\nPress CTRL-BRK or CTRL-C to abort.\n");

  G.FdIn = fopen_lm(G.FileIn, "rb");
  if (!G.FdIn) shut_down(20, G.FileIn);
  static char in_buffer[1 << 16];  // the C library would otherwise read 4 KiB at a time
  std::setvbuf(G.FdIn, in_buffer, _IOFBF, sizeof in_buffer);
  struct stat st {};
  if (::fstat(::fileno(G.FdIn), &st) == 0 && st.st_size == 0) return 1;

  interrupt_arm();
  const std::uint16_t status = lm_cvt();
  fcloseall();
  std::printf("\r\n");
  return status;
}

}  // namespace

int run_main(int argc, char** argv) {
  reset_globals();
  int status;
  try {
    try {
      status = convert(argc, argv);
    } catch (const std::bad_alloc&) {
      // Allocations without a check of their own (library containers) end the run the same way.
      shut_down(40, "heap");
    }
  } catch (const RunExit& e) {
    status = e.status;
  }
  interrupt_disarm();
  reset_globals();  // closes and flushes whatever is still open, as the process exit would
  std::fflush(stdout);
  return status;
}

}  // namespace lm

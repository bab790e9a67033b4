#include "run/shut_down.hpp"

#include <cstdio>

#include "run/exit.hpp"
#include "run/globals.hpp"

namespace lm {

namespace {

bool g_ending = false;

const char* message_of(std::uint8_t code) {
  switch (code) {
    case 1: return "\nProgram aborted by user";
    case 10: return "\nUnable to change to directory '%s'";
    case 20: return "\nFile open error for '%s'";
    case 21: return "\nFile read error for '%s'";
    case 22: return "\nFile write error for '%s'";
    case 23: return "\nERROR: unable to generate a unique filename '%s'";
    case 29: return "\nUnexpected end of file error on input";
    case 40: return "\nMemory allocation error for '%s'";
    case 41: return "\nMemory linkage error";
    case 130: return "\nSCSI RESET error";
    case 131: return "\nSCSI READY error";
    case 132: return "\nSCSI MODE error";
    case 133: return "\nSCSI LOW-LEVEL FORMAT error";
    case 134: return "\nSCSI LUMARA FORMAT error";
    case 135: return "\nSCSI READ error";
    case 136: return "\nSCSI WRITE error";
    default: return "\nUnknown error: processing terminated. (%s)";
  }
}

}  // namespace

void end_run(int status, CloseFiles close, const char* fmt, const char* text) {
  g_ending = true;
  if (close == CloseFiles::yes) fcloseall();
  // A caller without a text for a message that takes one leaves the quotes empty.
  if (fmt) std::printf(fmt, text ? text : "");
  throw RunExit{status};
}

bool run_ending() { return g_ending; }
void run_ending_reset() { g_ending = false; }

void shut_down(std::uint8_t code, const char* text) { end_run(code, CloseFiles::yes, message_of(code), text); }

void fcloseall() {
  if (G.FdIn) {
    std::fclose(G.FdIn);
    G.FdIn = nullptr;
  }
  G.FdQcc.close();
  G.FdLog.close();
}

std::uint16_t any_key() {
  std::fprintf(stderr, "\r\nPress ENTER/RETURN to continue.");
  std::fflush(stdout);
  const int c = std::getchar();
  return static_cast<std::uint16_t>(c == EOF ? 0 : c);
}

}  // namespace lm

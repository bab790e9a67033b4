#include "base/exit.hpp"

#include <cstdio>
#include <cstring>
#include <new>

namespace lm {

Ending ending_of(std::uint8_t code) {
  static constexpr struct {
    std::uint8_t code;
    Ending e;
  } kTable[] = {
      {1, {1, true, "\nProgram aborted by user"}},
      {10, {10, true, "\nUnable to change to directory '%s'"}},
      {20, {20, true, "\nFile open error for '%s'"}},
      {21, {21, true, "\nFile read error for '%s'"}},
      {22, {22, true, "\nFile write error for '%s'"}},
      {23, {23, true, "\nERROR: unable to generate a unique filename '%s'"}},
      {29, {29, true, "\nUnexpected end of file error on input"}},
      {40, {40, true, "\nMemory allocation error for '%s'"}},
      {41, {41, true, "\nMemory linkage error"}},
      {130, {130, true, "\nSCSI RESET error"}},
      {131, {131, true, "\nSCSI READY error"}},
      {132, {132, true, "\nSCSI MODE error"}},
      {133, {133, true, "\nSCSI LOW-LEVEL FORMAT error"}},
      {134, {134, true, "\nSCSI LUMARA FORMAT error"}},
      {135, {135, true, "\nSCSI READ error"}},
      {136, {136, true, "\nSCSI WRITE error"}},
  };
  for (const auto& row : kTable)
    if (row.code == code) return row.e;
  return {code, true, "\nUnknown error: processing terminated. (%s)"};
}

void RunExit::print() const {
  if (fmt) std::printf(fmt, text.c_str());
}

void fatal(const Ending& e, const char* text) {
  RunExit x{e.status, e.close_files, e.fmt, {}};
  // Out of memory, a long text may not be copied: its start still names the file.
  try {
    x.text = text ? text : "";
  } catch (const std::bad_alloc&) {
    x.text.assign(text, strnlen(text, 15));  // fits the string's own room
  }
  throw x;
}

}  // namespace lm

#pragma once
// The console's progress display: one line per packet (or a megabyte counter with -VN).
// Redirected, every line goes out as it comes. On a terminal drawing costs more than converting,
// and a line overwritten within 50 ms is never seen: lines come out at most about 20 times a
// second, and the latest one is always drawn at the end.
#include <chrono>
#include <cstddef>
#include <cstdint>

#include "decode/decoders.hpp"
#include "model/records.hpp"

namespace lm {

// What a DT packet's line shows, kept as numbers: on a terminal most of these lines are never drawn,
// so they are made into text only when they are.
struct DtLine {
  unsigned long blk;
  std::uint16_t unit;
  std::uint32_t evt;
  unsigned stream, channel;  // from 1
};

class Progress {
 public:
  Progress();
  void show(const char* text, std::size_t n);
  void show(const char* text);
  void show(const DtLine& line);
  // The latest line, when it has not been drawn yet.
  void settle();

 private:
  // On a terminal: whether the latest line is to be drawn now.
  bool due();
  void draw();
  bool tty_;
  char pending_[160];
  std::size_t pending_len_ = 0;
  DtLine pending_dt_{};
  bool dt_pending_ = false;  // the latest line is pending_dt_, not yet made into text
  std::chrono::steady_clock::time_point drawn_{};
};

// The heading of the display.
void show_start(bool verbose);
// The line of an EH or ET packet; `blk` counts from 1.
void show_eh_et(Progress& con, unsigned long blk, const char* type, const Evt* e);
// The line of a DT packet, the one that comes with nearly every packet.
void show_dt(Progress& con, unsigned long blk, const UNIT_T* unit, const CHNLST_T* chn, const std::uint8_t* pkt);
// The line of a packet that is only logged; SH packets show their unit.
void show_plain(Progress& con, unsigned long blk, const std::uint8_t* pkt, const UNIT_T* sh_unit);
void show_nh_nt(Progress& con, unsigned long blk, const char* type, const UNIT_T* unit, unsigned n);
// The megabyte counter of -VN, every 1024 packets.
void show_megs(Progress& con, std::uint32_t packets);
// Steim-2 words whose layout is undefined: one console line each, as the decoder met them.
void show_undefined_words(const Decoded& d);

}  // namespace lm

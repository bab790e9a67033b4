#include "run/progress.hpp"

#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "base/dec_text.hpp"
#include "packet/fields.hpp"

namespace lm {

Progress::Progress() : tty_(isatty(fileno(stdout)) != 0) {}

namespace {

// By hand: redirected, a line comes with nearly every packet.
std::size_t dt_text(const DtLine& l, char* line) {
  char* p = put_dec_min(put_text(line, "\r"), l.blk, 5);
  p = put_hex(put_text(p, "       DT      "), l.unit, 4);
  p = put_dec_min(put_text(p, "       "), l.evt, 4);
  p = put_dec_min(put_text(p, "         "), l.stream, 2);
  p = put_dec_min(put_text(p, "         "), l.channel, 2);
  p = put_text(p, "   ");
  return static_cast<std::size_t>(p - line);
}

}  // namespace

void Progress::show(const char* text, std::size_t n) {
  if (!tty_) {
    std::fwrite(text, 1, n, stdout);
    return;
  }
  std::memcpy(pending_, text, n < sizeof pending_ ? n : sizeof pending_);
  pending_len_ = n < sizeof pending_ ? n : sizeof pending_;
  dt_pending_ = false;
  if (due()) draw();
}

void Progress::show(const char* text) { show(text, std::strlen(text)); }

void Progress::show(const DtLine& line) {
  if (!tty_) {
    char text[96];
    std::fwrite(text, 1, dt_text(line, text), stdout);
    return;
  }
  pending_dt_ = line;
  dt_pending_ = true;
  if (due()) draw();
}

bool Progress::due() {
  const auto now = std::chrono::steady_clock::now();
  if (now - drawn_ < std::chrono::milliseconds(50)) return false;
  drawn_ = now;
  return true;
}

void Progress::settle() {
  if (tty_) draw();
}

void Progress::draw() {
  if (dt_pending_) {
    pending_len_ = dt_text(pending_dt_, pending_);
    dt_pending_ = false;
  }
  if (pending_len_ == 0) return;
  std::fwrite(pending_, 1, pending_len_, stdout);
  std::fflush(stdout);
  pending_len_ = 0;
}

void show_start(bool verbose) {
  if (verbose) {
    std::printf("\r\n\nBlock     Type      Unit      Event     Stream    Channel   Trg   Rate");
    std::printf("\r\n\n    0       -          -          -          -          -     -      -");
  } else {
    std::printf("\r\n\nMeg:     0");
  }
}

void show_megs(Progress& con, std::uint32_t packets) {
  char line[32];
  std::snprintf(line, sizeof line, "\rMeg: %4u", unsigned(packets / 1024));
  con.show(line);
}

void show_eh_et(Progress& con, unsigned long blk, const char* type, const Evt* e) {
  char line[160];
  std::snprintf(line, sizeof line, "\r%05lu       %s      %04hX       %04u          %02u         -    %3.3s  %.4f",
                blk, type, e->unit_id, unsigned{e->evt}, unsigned{e->strm} + 1u, e->trg_type,
                static_cast<double>(e->rate));
  con.show(line);
}

void show_dt(Progress& con, unsigned long blk, const UNIT_T* unit, const CHNLST_T* chn, const std::uint8_t* pkt) {
  con.show(DtLine{blk, unit->unit_id, chn->evt_num, unsigned{hdr::kStream.value(pkt)} + 1u,
                  unsigned{hdr::kChannel.value(pkt)} + 1u});
}

void show_plain(Progress& con, unsigned long blk, const std::uint8_t* pkt, const UNIT_T* sh_unit) {
  char line[96];
  if (sh_unit)
    std::snprintf(line, sizeof line, "\r%05lu       %2.2s      %04hX          -          -          -   ", blk,
                  hdr::kType.ptr(pkt), sh_unit->unit_id);
  else
    std::snprintf(line, sizeof line, "\r%05lu       %2.2s         -          -          -          -   ", blk,
                  hdr::kType.ptr(pkt));
  con.show(line);
}

void show_nh_nt(Progress& con, unsigned long blk, const char* type, const UNIT_T* unit, unsigned n) {
  char line[96];
  std::snprintf(line, sizeof line, "\r%05lu       %s      %04hX       %04u          -          -    ", blk, type,
                unit->unit_id, n);
  con.show(line);
}

void show_undefined_words(const Decoded& d) {
  for (std::uint16_t i = 0; i < d.n_undefined; ++i)
    std::printf("Error in Steim2 W-type (%d) for C=2\n", int{d.undefined[i]});
}

}  // namespace lm

#include "run/convert.hpp"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>

#include "decode/decoders.hpp"
#include "log/log_file.hpp"
#include "log/log_packets.hpp"
#include "model/channel.hpp"
#include "model/event.hpp"
#include "base/ring.hpp"
#include "model/unit.hpp"
#include "output/asc_trace.hpp"
#include "packet/codes.hpp"
#include "packet/fields.hpp"
#include "run/read_ahead.hpp"
#include "qc/qcc.hpp"
#include "base/dec_text.hpp"
#include "run/globals.hpp"
#include "run/interrupt.hpp"
#include "run/shut_down.hpp"

namespace lm {

namespace {

unsigned long blk_no() { return static_cast<unsigned long>(G.Blk_cnt) + 1; }

// The progress display. Redirected, every line goes out as it comes. On a terminal drawing costs
// more than converting, and a line overwritten within 50 ms is never seen: lines come out at most
// about 20 times a second, and the latest one is always drawn at the end.
class Progress {
 public:
  Progress() : tty_(isatty(fileno(stdout)) != 0) {}
  void show(const char* text, std::size_t n) {
    if (!tty_) {
      std::fwrite(text, 1, n, stdout);
      return;
    }
    std::memcpy(pending_, text, n < sizeof pending_ ? n : sizeof pending_);
    pending_len_ = n < sizeof pending_ ? n : sizeof pending_;
    const auto now = std::chrono::steady_clock::now();
    if (now - drawn_ >= std::chrono::milliseconds(50)) {
      drawn_ = now;
      draw();
    }
  }
  void show(const char* text) { show(text, std::strlen(text)); }
  // The latest line, when it has not been drawn yet.
  void settle() {
    if (tty_) draw();
  }

 private:
  void draw() {
    if (pending_len_ == 0) return;
    std::fwrite(pending_, 1, pending_len_, stdout);
    std::fflush(stdout);
    pending_len_ = 0;
  }
  bool tty_;
  char pending_[160];
  std::size_t pending_len_ = 0;
  std::chrono::steady_clock::time_point drawn_{};
};

// Console progress line of an EH or ET packet.
void show_eh_et(Progress& con, const char* type, const Evt* e) {
  char line[160];
  std::snprintf(line, sizeof line, "\r%05lu       %s      %04hX       %04u          %02u         -    %3.3s  %.4f",
                blk_no(), type, e->unit_id, unsigned{e->evt}, unsigned{e->strm} + 1u, e->trg_type,
                static_cast<double>(e->rate));
  con.show(line);
}

// Console progress line of a DT packet, the one that comes with nearly every packet: by hand.
void show_dt(Progress& con, const UNIT_T* unit, const CHNLST_T* chn, const std::uint8_t* pkt) {
  char line[96];
  char* p = put_dec_min(put_text(line, "\r"), blk_no(), 5);
  p = put_hex(put_text(p, "       DT      "), unit->unit_id, 4);
  p = put_dec_min(put_text(p, "       "), chn->evt_num, 4);
  p = put_dec_min(put_text(p, "         "), unsigned{hdr::kStream.value(pkt)} + 1u, 2);
  p = put_dec_min(put_text(p, "         "), unsigned{hdr::kChannel.value(pkt)} + 1u, 2);
  p = put_text(p, "   ");
  con.show(line, static_cast<std::size_t>(p - line));
}

// Console progress line of the packets that are only logged; SH packets show their unit.
void show_plain(Progress& con, const std::uint8_t* pkt, const UNIT_T* sh_unit) {
  char line[96];
  if (sh_unit)
    std::snprintf(line, sizeof line, "\r%05lu       %2.2s      %04hX          -          -          -   ", blk_no(),
                  hdr::kType.ptr(pkt), sh_unit->unit_id);
  else
    std::snprintf(line, sizeof line, "\r%05lu       %2.2s         -          -          -          -   ", blk_no(),
                  hdr::kType.ptr(pkt));
  con.show(line);
}

void show_nh_nt(Progress& con, const char* type, const UNIT_T* unit, unsigned n) {
  char line[96];
  std::snprintf(line, sizeof line, "\r%05lu       %s      %04hX       %04u          -          -    ", blk_no(), type,
                unit->unit_id, n);
  con.show(line);
}

// Steim-2 words whose layout is undefined: one console line each, as the decoder met them.
void show_undefined_words(const Decoded& d) {
  for (std::uint16_t i = 0; i < d.n_undefined; ++i)
    std::printf("Error in Steim2 W-type (%d) for C=2\n", int{d.undefined[i]});
}

bool channels_1_to_16(const std::uint8_t* pkt) { return (hdr::kFlags.value(pkt) & hdr::kFlagBlock17to32) == 0; }

// End of input: statistics of every open event, then every event removed, unit by unit.
void finish(std::uint8_t* packet) {
  // The last buffer goes on as a packet of no known type, so that no event takes it for its trailer.
  std::memcpy(packet + hdr::kType.off, "XX", hdr::kType.width);
  UNIT_T* const start = G.unit_start;
  if (!start) return;
  if (G.Qcc_on) {
    ring_for_each(start, [&](UNIT_T* u) {
      ring_for_each(u->evt, [&](Evt* e) {
        if (e->chn) Qcc_store(u, e, packet);
      });
    });
  }
  ring_for_each(start, [](UNIT_T* u) {
    while (u->evt) Evt_remove(u->evt);
    if (G.Log_on) Unit_file_close(u, kLog);
    // Closed here rather than at exit, so that a failing close is reported.
    if (G.Qcc_on) Unit_file_close(u, kQcc);
  });
}

}  // namespace

std::uint16_t lm_cvt() {
  if (G.Verbose) {
    std::printf("\r\n\nBlock     Type      Unit      Event     Stream    Channel   Trg   Rate");
    std::printf("\r\n\n    0       -          -          -          -          -     -      -");
  } else {
    std::printf("\r\n\nMeg:     0");
  }
  G.N_opn_fls = 0;
  G.Blk_cnt = 0;

  Progress con;
  ReadAhead input(G.FdIn);
  alignas(8) std::uint8_t packet[kPacketSize];
  while (!interrupted() && input.Blk_read(packet) == 0) {
    const std::uint16_t code = code_set(packet);
    UNIT_T* unit = nullptr;
    if (code != kNone) {
      if (G.Log_on) log_head(G.FdLog, packet, code, 0);
      unit = Unit_find(packet);
      if (code != kDT && G.Log_on) log_head(unit->fd_log, packet, code, 0);
    }
    const bool log = G.Log_on != 0;
    OutFile* ulog = unit ? &unit->fd_log : nullptr;
    const bool verbose = G.Verbose != 0;

    switch (code) {
      case kNone:
        break;
      case kEH:
      case kET: {
        Evt* e = Evt_find(unit, packet);
        const bool low = channels_1_to_16(packet);
        if (low) (code == kEH ? e->pkt_eh : e->pkt_et) = 1;
        if (verbose) show_eh_et(con, code == kEH ? "EH" : "ET", e);
        if (code == kET && low) {
          if (G.Qcc_on) Qcc_store(unit, e, packet);
          Evt_remove(e);
        }
        if (log) {
          log_eh_et(*ulog, packet);
          ulog->write("\r\n");
        }
        break;
      }
      case kDT: {
        Evt* e = Evt_find(unit, packet);
        if (log && G.Log_dt) log_head(*ulog, packet, kDT, 0);
        CHNLST_T* chn = Chn_find(e, packet);
        if (verbose) show_dt(con, unit, chn, packet);
        if (PreparedDt* p = input.prepared()) {
          Decoded& d = p->d;
          end_check(d, chn->last);
          show_undefined_words(d);
          if (d.failed && log && chn->unit) log_steim_check(chn->unit->fd_log, packet, d);
          Asc_data_out(chn, reinterpret_cast<const std::int32_t*>(p->samples), static_cast<std::uint16_t>(d.count),
                       &p->text);
        }
        break;
      }
      case kSH:
        if (verbose) show_plain(con, packet, unit);
        if (log) log_block(*ulog, packet, 4);
        break;
      case kNH:
      case kNT: {
        const unsigned n = hdr::kEvent.value(packet);
        if (verbose) show_nh_nt(con, code == kNH ? "NH" : "NT", unit, n);
        if (log) {
          log_nh_nt(*ulog, packet);
          ulog->write("\r\n");
        }
        if (code == kNH && G.Qcc_on) Qcc_nh_head(packet);
        break;
      }
      default: {
        if (verbose) show_plain(con, packet, nullptr);
        if (!log) break;
        switch (code) {
          case kSC: log_sc(*ulog, packet); break;
          case kDS: log_ds(*ulog, packet); break;
          case kCD: log_cd(*ulog, packet); break;
          case kOM: log_om(*ulog, packet); break;
          case kAD: log_ad(*ulog, packet); break;
          case kDR:
            log_dr(*ulog, packet);
            ulog->write("\r\n");
            break;
          case kFD: log_fd(*ulog, packet); break;
          default: break;
        }
        break;
      }
    }
    if (code != kNone && !verbose && G.Blk_cnt % 1024 == 0) {
      char line[32];
      std::snprintf(line, sizeof line, "\rMeg: %4u", unsigned(G.Blk_cnt / 1024));
      con.show(line);
    }
    ++G.Blk_cnt;
  }
  con.settle();
  // An interrupted run is finished like the end of the input, so what it converted is complete.
  finish(packet);
  if (interrupted()) {
    fcloseall();  // before the ending, so that a failing close is still reported as such
    shut_down(1, nullptr);
  }
  return 0;
}

}  // namespace lm

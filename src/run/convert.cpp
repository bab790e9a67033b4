#include "run/convert.hpp"

#include <cstdio>
#include <cstring>

#include "base/exit.hpp"
#include "base/ring.hpp"
#include "decode/decoders.hpp"
#include "log/log_file.hpp"
#include "log/log_packets.hpp"
#include "output/asc_trace.hpp"
#include "packet/codes.hpp"
#include "packet/fields.hpp"
#include "qc/qcc.hpp"
#include "registry/channels.hpp"
#include "registry/events.hpp"
#include "registry/units.hpp"
#include "run/interrupt.hpp"
#include "run/progress.hpp"
#include "run/read_ahead.hpp"

namespace lm {

namespace {

bool channels_1_to_16(const std::uint8_t* pkt) { return (hdr::kFlags.value(pkt) & hdr::kFlagBlock17to32) == 0; }

// One pass over the input: each packet to the registry, the writers and the console, in order.
class Loop {
 public:
  explicit Loop(Run& run) : run_(run), set_(run.set), input_(run.FdIn, run.set.FileIn) {}
  void convert(std::uint8_t* buffer);
  void finish(std::uint8_t* packet);

 private:
  unsigned long blk_no() const { return static_cast<unsigned long>(run_.line.Blk_cnt) + 1; }
  void event_packet(std::uint16_t code, UNIT_T* unit, const std::uint8_t* packet);
  void data_packet(UNIT_T* unit, const std::uint8_t* packet);
  void network_packet(std::uint16_t code, UNIT_T* unit, const std::uint8_t* packet);
  void logged_packet(std::uint16_t code, UNIT_T* unit, const std::uint8_t* packet);

  Run& run_;
  const Settings& set_;
  Progress con_;
  ReadAhead input_;
};

void Loop::event_packet(std::uint16_t code, UNIT_T* unit, const std::uint8_t* packet) {
  Evt* e = Evt_find(run_, unit, packet);
  const bool low = channels_1_to_16(packet);
  if (low) (code == kEH ? e->pkt_eh : e->pkt_et) = 1;
  if (set_.Verbose) show_eh_et(con_, blk_no(), code == kEH ? "EH" : "ET", e);
  if (code == kET && low) {
    if (set_.Qcc_on) Unit_qcc_store(run_, unit, e, packet);
    Evt_remove(run_, e);
  }
  if (set_.Log_on) {
    log_eh_et(unit->fd_log, packet);
    unit->fd_log.write("\r\n");
  }
}

void Loop::data_packet(UNIT_T* unit, const std::uint8_t* packet) {
  Evt* e = Evt_find(run_, unit, packet);
  if (set_.Log_on && set_.Log_dt) log_head(unit->fd_log, packet, kDT, run_.line);
  CHNLST_T* chn = Chn_find(run_, e, packet);
  if (set_.Verbose) show_dt(con_, blk_no(), unit, chn, packet);
  PreparedDt* p = input_.prepared();
  if (!p) return;
  Decoded& d = p->d;
  end_check(d, chn->last);
  show_undefined_words(d);
  if (d.failed && set_.Log_on && chn->unit) log_steim_check(chn->unit->fd_log, packet, d);
  Asc_data_out(chn, reinterpret_cast<const std::int32_t*>(p->samples), static_cast<std::uint16_t>(d.count),
               set_.Smp_limit, &p->stats);
}

void Loop::network_packet(std::uint16_t code, UNIT_T* unit, const std::uint8_t* packet) {
  const unsigned n = hdr::kEvent.value(packet);
  if (set_.Verbose) show_nh_nt(con_, blk_no(), code == kNH ? "NH" : "NT", unit, n);
  if (set_.Log_on) {
    log_nh_nt(unit->fd_log, packet);
    unit->fd_log.write("\r\n");
  }
  if (code == kNH && set_.Qcc_on) Qcc_nh_head(run_.FdQcc, packet, run_.line);
}

// The packets that are only shown and logged.
void Loop::logged_packet(std::uint16_t code, UNIT_T* unit, const std::uint8_t* packet) {
  if (set_.Verbose) show_plain(con_, blk_no(), packet, nullptr);
  if (!set_.Log_on) return;
  OutFile& log = unit->fd_log;
  switch (code) {
    case kSC: log_sc(log, packet); break;
    case kDS: log_ds(log, packet); break;
    case kCD: log_cd(log, packet); break;
    case kOM: log_om(log, packet); break;
    case kAD: log_ad(log, packet); break;
    case kDR:
      log_dr(log, packet);
      log.write("\r\n");
      break;
    case kFD: log_fd(log, packet); break;
    default: break;
  }
}

void Loop::convert(std::uint8_t* buffer) {
  const std::uint8_t* packet = nullptr;
  for (;;) {
    if (interrupted()) {
      // Stopped between packets: the buffer holds the last one, as at the end of the input.
      if (packet) std::memcpy(buffer, packet, kPacketSize);
      break;
    }
    if (!(packet = input_.Blk_read(buffer))) break;
    const std::uint16_t code = code_set(packet);
    if (code != kNone) {
      if (set_.Log_on) log_head(run_.FdLog, packet, code, run_.line);
      UNIT_T* unit = Unit_find(run_, packet);
      if (code != kDT && set_.Log_on) log_head(unit->fd_log, packet, code, run_.line);
      switch (code) {
        case kEH:
        case kET: event_packet(code, unit, packet); break;
        case kDT: data_packet(unit, packet); break;
        case kSH:
          if (set_.Verbose) show_plain(con_, blk_no(), packet, unit);
          if (set_.Log_on) log_block(unit->fd_log, packet, 4);
          break;
        case kNH:
        case kNT: network_packet(code, unit, packet); break;
        default: logged_packet(code, unit, packet); break;
      }
      if (!set_.Verbose && run_.line.Blk_cnt % 1024 == 0) show_megs(con_, run_.line.Blk_cnt);
    }
    ++run_.line.Blk_cnt;
  }
  con_.settle();
}

// End of input: statistics of every open event, then every event removed, unit by unit.
void Loop::finish(std::uint8_t* packet) {
  // The last buffer goes on as a packet of no known type, so that no event takes it for its trailer.
  std::memcpy(packet + hdr::kType.off, "XX", hdr::kType.width);
  UNIT_T* const start = run_.unit_start;
  if (!start) return;
  if (set_.Qcc_on) {
    ring_for_each(start, [&](UNIT_T* u) {
      ring_for_each(u->evt, [&](Evt* e) {
        if (e->chn) Unit_qcc_store(run_, u, e, packet);
      });
    });
  }
  ring_for_each(start, [&](UNIT_T* u) {
    while (u->evt) Evt_remove(run_, u->evt);
    if (set_.Log_on) Unit_file_close(run_, u, kLog);
    // Closed here rather than at exit, so that a failing close is reported.
    if (set_.Qcc_on) Unit_file_close(run_, u, kQcc);
  });
}

}  // namespace

std::uint16_t lm_cvt(Run& run) {
  show_start(run.set.Verbose != 0);
  run.N_opn_fls = 0;
  run.line.Blk_cnt = 0;

  alignas(8) std::uint8_t packet[kPacketSize];
  {
    Loop loop(run);
    loop.convert(packet);
    // An interrupted run is finished like the end of the input, so what it converted is complete.
    loop.finish(packet);
  }
  if (interrupted()) {
    fcloseall(run);  // before the ending, so that a failing close is still reported as such
    shut_down(1, nullptr);
  }
  return 0;
}

}  // namespace lm

#include "packet/reader.hpp"

#include <cstdio>

#include "decode/decoders.hpp"
#include "log/log_file.hpp"
#include "log/log_packets.hpp"
#include "model/channel.hpp"
#include "model/event.hpp"
#include "model/ring.hpp"
#include "model/unit.hpp"
#include "output/asc_trace.hpp"
#include "packet/codes.hpp"
#include "packet/fields.hpp"
#include "qc/qcc.hpp"
#include "run/globals.hpp"
#include "run/interrupt.hpp"
#include "run/shut_down.hpp"

namespace lm {

std::uint16_t Blk_read(std::uint8_t* buffer) {
  const std::size_t n = std::fread(buffer, 1, kPacketSize, G.FdIn);
  if (n == kPacketSize) return 0;
  // A read cut short by an interrupt is the end of the input, not a read error.
  if (std::ferror(G.FdIn) && !interrupted()) shut_down(21, G.FileIn);
  return kBlkEnd;
}

namespace {

unsigned long blk_no() { return static_cast<unsigned long>(G.Blk_cnt) + 1; }

// Console progress line of an EH or ET packet.
void show_eh_et(const char* type, const Evt* e) {
  std::printf("\r%05lu       %s      %04hX       %04u          %02u         -    %3.3s  %.4f", blk_no(), type,
              e->unit_id, unsigned{e->evt}, unsigned{e->strm} + 1u, e->trg_type, static_cast<double>(e->rate));
}

// Console progress line of the packets that are only logged.
void show_plain(const std::uint8_t* pkt) {
  std::printf("\r%05lu       %2.2s         -          -          -          -   ", blk_no(), hdr::kType.ptr(pkt));
}

void show_nh_nt(const char* type, const UNIT_T* unit, unsigned n) {
  std::printf("\r%05lu       %s      %04hX       %04u          -          -    ", blk_no(), type, unit->unit_id, n);
}

bool channels_1_to_16(const std::uint8_t* pkt) { return (hdr::kFlags.value(pkt) & hdr::kFlagBlock17to32) == 0; }

// End of input: statistics of every open event, then every event removed, unit by unit.
void finish(std::uint8_t* packet) {
  packet[0] = 'X';
  packet[1] = 'X';
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
    if (G.Log_on) Unit_file_close(u, 0);
    // Closed here rather than at exit, so that a failing close is reported.
    if (G.Qcc_on) Unit_file_close(u, 1);
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

  alignas(8) std::uint8_t packet[kPacketSize];
  while (!interrupted() && Blk_read(packet) == 0) {
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
        if (verbose) show_eh_et(code == kEH ? "EH" : "ET", e);
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
        if (verbose)
          std::printf("\r%05lu       DT      %04hX       %04u         %02u         %02u   ", blk_no(), unit->unit_id,
                      unsigned{chn->evt_num}, unsigned{hdr::kStream.value(packet)} + 1u,
                      unsigned{hdr::kChannel.value(packet)} + 1u);
        if (Decoder decode = decoder_for(hdr::kFormat.value(packet))) {
          decode(chn, packet, G.Data_buf);
          Asc_data_out(chn, reinterpret_cast<const std::int32_t*>(G.Data_buf + 1),
                       static_cast<std::uint16_t>(G.Data_buf[0]));
        }
        break;
      }
      case kSH:
        if (verbose)
          std::printf("\r%05lu       %2.2s      %04hX          -          -          -   ", blk_no(),
                      hdr::kType.ptr(packet), unit->unit_id);
        if (log) log_block(*ulog, packet, 4);
        break;
      case kNH:
      case kNT: {
        const unsigned n = bcd2i(packet + 16, 2);
        if (verbose) show_nh_nt(code == kNH ? "NH" : "NT", unit, n);
        if (log) {
          log_nh_nt(*ulog, packet);
          ulog->write("\r\n");
        }
        if (code == kNH && G.Qcc_on) {
          G.FdQcc.write("\r\n\r\n");
          log_head(G.FdQcc, packet, kNH, 0);
          G.FdQcc.write("\r\n                        Min          Max        Range");
          G.FdQcc.write("         Mean       St Dev");
        }
        break;
      }
      default: {
        if (verbose) show_plain(packet);
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
    if (code != kNone && !verbose && G.Blk_cnt % 1024 == 0) std::printf("\rMeg: %4u", unsigned(G.Blk_cnt / 1024));
    ++G.Blk_cnt;
  }
  // An interrupted run is finished like the end of the input, so what it converted is complete.
  finish(packet);
  if (interrupted()) {
    fcloseall();  // before the ending, so that a failing close is still reported as such
    shut_down(1, nullptr);
  }
  return 0;
}

}  // namespace lm

#pragma once
// The unit, event and channel records and their rings: data only. Finding, creating and removing
// them, with the files that go with it, is the registry's work above the writers.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/out_file.hpp"
#include "base/ring_index.hpp"
#include "config/ini.hpp"
#include "packet/event_fields.hpp"

namespace lm {

struct Evt;
struct CHNLST_T;

// A recorder unit, for the whole run. Only the current unit's files are open.
// Its INI values are those of UnitMeta.
struct UNIT_T : UnitMeta {
  UNIT_T* prv = nullptr;
  UNIT_T* nxt = nullptr;
  Evt* evt = nullptr;        // current event, null when none is open
  RingIndex<Evt> evt_index;  // event number -> open event
  OutFile fd_log;            // packet log
  OutFile fd_qcc;            // statistics file
  std::uint16_t unit_id = 0;
  std::uint8_t log_open = 0;
  std::uint8_t qcc_open = 0;
  char log_name[133] = {};
  char qcc_name[133] = {};
};

// Channel information of an event header for 16 channels: nine text columns, one spare byte each.
struct ChnInfo {
  char BitWght[128 + 1];
  char TruWght[128 + 1];
  char Gain[16 + 1];
  char R[16 + 1];
  char FSV[16 + 1];
  char SEED[64 + 1];
  char SFSV[16 + 1];
  char SVPU[96 + 1];
  char U[16 + 1];
};

// A column of ChnInfo: where it lies in the record, its width per channel, and where the same
// column stands in an EH/ET packet.
struct ChnColumn {
  std::uint16_t info_off;
  std::uint16_t width;
  std::uint16_t pkt_off;
  constexpr ChnColumn(std::size_t info, eh::ColumnField pkt)
      : info_off(static_cast<std::uint16_t>(info)), width(pkt.width), pkt_off(pkt.off) {}
};
namespace chn_col {
inline constexpr ChnColumn kBitWght{offsetof(ChnInfo, BitWght), eh::kBitWght};
inline constexpr ChnColumn kTruWght{offsetof(ChnInfo, TruWght), eh::kTruWght};
inline constexpr ChnColumn kGain{offsetof(ChnInfo, Gain), eh::kGain};
inline constexpr ChnColumn kR{offsetof(ChnInfo, R), eh::kRes};
inline constexpr ChnColumn kFSV{offsetof(ChnInfo, FSV), eh::kFSV};
inline constexpr ChnColumn kSEED{offsetof(ChnInfo, SEED), eh::kSEED};
inline constexpr ChnColumn kSFSV{offsetof(ChnInfo, SFSV), eh::kSFSV};
inline constexpr ChnColumn kSVPU{offsetof(ChnInfo, SVPU), eh::kSVPU};
inline constexpr ChnColumn kU{offsetof(ChnInfo, U), eh::kUnits};
inline constexpr ChnColumn kAll[] = {kBitWght, kTruWght, kGain, kR, kFSV, kSEED, kSFSV, kSVPU, kU};
}  // namespace chn_col

inline char* column_ptr(ChnInfo& b, const ChnColumn& c) { return reinterpret_cast<char*>(&b) + c.info_off; }
inline const char* column_ptr(const ChnInfo& b, const ChnColumn& c) {
  return reinterpret_cast<const char*>(&b) + c.info_off;
}

// One open event of a unit.
struct Evt {
  Evt* prv = nullptr;
  Evt* nxt = nullptr;
  CHNLST_T* chn = nullptr;   // current channel, null until the first data packet
  RingIndex<CHNLST_T> chn_index;  // channel number -> channel
  UNIT_T* unit = nullptr;
  std::uint16_t unit_id = 0;
  std::uint16_t evt = 0;
  std::uint16_t seq = 0;
  std::uint16_t strm = 0;
  std::int16_t time_qual = -1;
  std::uint16_t chn_cnt = 0;
  std::uint16_t lo = 99;
  std::uint16_t hi = 0;
  std::uint8_t bad = 0;
  std::uint8_t pkt_eh = 0;
  std::uint8_t pkt_et = 0;
  OutFile fd_evt;            // gathered event file while it is written
  float rate = 0;
  char smp_time_1st[17] = {};
  char last[17] = {};
  char trg_type[5] = {};
  char stn_name[6] = {' ', ' ', ' ', ' ', ' ', '\0'};
  ChnInfo chn_info[2];
  char evt_file_name[135] = {};

  Evt();  // every column entry of both channel information blocks blank
};

// One channel of one event, with its trace file. Its sensor metadata are those of ChnMeta.
struct CHNLST_T : ChnMeta {
  CHNLST_T* prv = nullptr;
  CHNLST_T* nxt = nullptr;
  Evt* evt = nullptr;
  UNIT_T* unit = nullptr;
  double sum = 0;
  double sq_sum = 0;
  double min = 0;
  double max = 0;
  std::uint32_t min_at = 0;
  std::uint32_t max_at = 0;
  std::uint32_t cnt = 0;
  std::uint32_t trash = 0;
  std::uint16_t unit_id = 0;
  std::uint16_t evt_num = 0;
  std::uint16_t seq = 0;
  std::uint16_t stream = 0;
  std::uint16_t channel = 0;
  std::uint8_t gain_ndx = 0;
  std::uint8_t file_open = 0;
  OutFile fp;                // trace file
  char name[133] = {};
  char nxt_time[17] = {};
  char first_time[17] = {};
  char prv_time[17] = {};
  double tbw = 0;
  double lat = 0, lon = 0, alt = 0;
  std::int32_t last = 0;     // last sample of the previous Steim packet, for the continuity check
  std::uint8_t rate_width = 0;  // width of the rate text in the trace file's first header, 0 before it
  std::uint8_t claimed = 0;  // this run created the (still empty) trace file; its first header is due
};

// The entry of channel n (0-based) in a column: entry n & 15 of block n >> 4. Channel numbers come
// from packets and may reach 165; beyond the two blocks an entry is blank (no value).
std::string_view chn_entry(const Evt& e, const ChnColumn& col, std::uint16_t channel);

}  // namespace lm

#include "mseed/export.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <ctime>
#include <map>
#include <memory>
#include <unordered_map>

#include "base/file_util.hpp"
#include "base/text.hpp"
#include "config/tables.hpp"
#include "decode/decoders.hpp"
#include "model/channel.hpp"
#include "model/event.hpp"
#include "mseed/codes.hpp"
#include "mseed/station_meta.hpp"
#include "mseed/stationxml.hpp"
#include "mseed/stream.hpp"
#include "packet/codes.hpp"
#include "packet/fields.hpp"
#include "packet/soh_layout.hpp"
#include "time/time_str.hpp"

namespace lm::mseed {
namespace {

// Most open events kept per unit: a damaged input that never closes its events cannot grow without end.
constexpr std::size_t kMaxEvents = 256;
// Damaged packets reported one by one per input; the rest are counted.
constexpr unsigned long kMaxReports = 100;

struct EventRec {
  Evt evt;
  std::uint64_t id = 0;   // this event record among all the run makes
  std::uint64_t gen = 0;  // changes whenever an event header or trailer updates the event
};

struct UnitState {
  UNIT_T unit;
  std::map<std::uint16_t, std::unique_ptr<EventRec>> events;
  std::string das_model, das_serial;
  bool station_warned = false;
};

// One channel of one unit and stream, across events and inputs.
struct ChanState {
  ChanState(Files& f, std::uint32_t k, std::uint16_t n) : stream(f), key(k), number(n) {}
  Stream stream;
  std::uint32_t key;               // unit, stream and channel number
  std::uint16_t number;            // channel number, from 0
  ChnMeta ini;                     // the INI's values, read once
  // The metadata and codes of the event last seen, refreshed when its header changes.
  std::uint64_t gen = 0;
  std::uint64_t evt_id = 0;        // the event of the last packet: each event's Steim data start afresh
  ChannelMeta meta;
  std::string stn_name;            // the event header's station name
  double codes_rate = -1;
  Codes codes;
  StationMeta* station = nullptr;  // the station metadata of the current segment
  std::size_t sink = 0;            // its channel
  // A first packet whose rate nothing gives yet: held until the next one's time tells it.
  std::vector<std::int32_t> held;
  hptime_t held_t = 0;
};

class Exporter {
 public:
  Exporter(const Options& o, std::string ini, std::FILE* err)
      : opt_(o), ini_(std::move(ini)), err_(err), files_(o, o.out_dir.size()),
        progress_(!o.quiet && ::isatty(::fileno(err))) {}
  int read_input(const std::string& path);
  void finish();
  std::vector<StationMeta> stations();
  void summary(std::size_t inputs, std::FILE* out) const;

 private:
  void packet(const std::uint8_t* p);
  void data_packet(const std::uint8_t* p);
  void event_packet(std::uint16_t code, const std::uint8_t* p);
  UnitState& unit(const std::uint8_t* p);
  EventRec& event(UnitState& u, std::uint16_t number);
  ChanState& channel(UnitState& u, const std::uint8_t* p);
  void samples(UnitState& u, ChanState& c, hptime_t t, double rate, const std::int32_t* s, std::size_t n);
  void emit(UnitState& u, ChanState& c, hptime_t t, double rate, const std::int32_t* s, std::size_t n);
  const Codes& codes_for(UnitState& u, ChanState& c, double rate);
  void refresh(ChanState& c, const EventRec& e);
  void note_segment(UnitState& u, ChanState& c);
  void damaged(const char* fmt, ...) __attribute__((format(printf, 2, 3)));
  void show_progress(long long bytes, bool last);

  const Options& opt_;
  std::string ini_;
  std::FILE* err_;
  Files files_;
  bool progress_;
  std::unordered_map<std::uint16_t, std::unique_ptr<UnitState>> units_;
  std::unordered_map<std::uint32_t, std::unique_ptr<ChanState>> chans_;
  std::map<std::string, StationMeta> stations_;
  std::map<std::string, std::uint32_t> code_owner_;    // the channel that first wrote each SEED code
  std::uint64_t gen_ = 0;
  unsigned long long samples_total_ = 0, damaged_total_ = 0;
  // The input being read.
  std::string input_;
  unsigned long packet_no_ = 0, reports_ = 0;
  std::uint32_t decoded_[kMaxSamples];
  std::time_t started_ = std::time(nullptr);
  std::time_t shown_ = 0;
};

UnitState& Exporter::unit(const std::uint8_t* p) {
  std::uint16_t id = hdr::kUnitId.value(p);
  if (id == 0) id = 0xFFFF;  // unit 0 is filed under FFFF, as the converter files it
  auto& slot = units_[id];
  if (!slot) {
    slot = std::make_unique<UnitState>();
    slot->unit.unit_id = id;
    slot->unit.ini_last = -1;
    Unit_ini(slot->unit, id, ini_.c_str());
  }
  return *slot;
}

EventRec& Exporter::event(UnitState& u, std::uint16_t number) {
  auto& slot = u.events[number];
  if (!slot) {
    slot = std::make_unique<EventRec>();
    slot->evt.unit = &u.unit;
    slot->evt.unit_id = u.unit.unit_id;
    slot->evt.evt = number;
    slot->id = slot->gen = ++gen_;
    if (u.events.size() > kMaxEvents) {
      auto oldest = u.events.begin();
      if (oldest->first == number) ++oldest;
      u.events.erase(oldest);
    }
  }
  return *u.events[number];
}

void Exporter::event_packet(std::uint16_t code, const std::uint8_t* p) {
  UnitState& u = unit(p);
  const std::uint16_t number = hdr::kEvent.value(p);
  EventRec& e = event(u, number);
  Evt_info(&e.evt, p);
  e.gen = ++gen_;
  // The trailer of channels 1 to 16 ends the event; data that still name it start a new one.
  if (code == kET && (hdr::kFlags.value(p) & hdr::kFlagBlock17to32) == 0) u.events.erase(number);
}

ChanState& Exporter::channel(UnitState& u, const std::uint8_t* p) {
  const std::uint16_t stream = hdr::kStream.value(p), chn = hdr::kChannel.value(p);
  const std::uint32_t key = std::uint32_t{u.unit.unit_id} << 16 | (stream & 0xFFu) << 8 | (chn & 0xFFu);
  auto& slot = chans_[key];
  if (!slot) {
    slot = std::make_unique<ChanState>(files_, key, chn);
    ChnMeta& m = slot->ini;
    m.band = ' ';
    m.type = ' ';
    m.axis = Axis[chn % 6];
    m.bits = 24;
    Chn_ini(m, chn, u.unit, u.unit.unit_id, ini_.c_str());
  }
  return *slot;
}

// The channel's metadata: the INI's, with the event header's on top, as the converter fills them.
void Exporter::refresh(ChanState& c, const EventRec& e) {
  CHNLST_T chn;
  static_cast<ChnMeta&>(chn) = c.ini;
  chn.evt = const_cast<Evt*>(&e.evt);
  chn.channel = c.number;
  Chn_ehet(&chn);
  c.meta.chn = chn;
  c.meta.tbw = chn.tbw;
  c.meta.gain_ndx = chn.gain_ndx;
  const int gain = chn_entry(e.evt, chn_col::kGain, c.number)[0] - '0';
  c.meta.gain_known = gain >= 0 && gain <= 15;
  c.stn_name.assign(e.evt.stn_name, strnlen(e.evt.stn_name, 5));
  c.gen = e.gen;
  c.codes_rate = -1;
}

const Codes& Exporter::codes_for(UnitState& u, ChanState& c, double rate) {
  if (rate == c.codes_rate) return c.codes;
  bool altered = false;
  const std::string sta = station_code(u.unit.station, c.stn_name, u.unit.unit_id, altered);
  if (altered && !u.station_warned) {
    u.station_warned = true;
    std::fprintf(err_, "lm_mseed: unit %04X: station written as '%s' (SEED codes are at most 5 letters and digits)\n",
                 unsigned{u.unit.unit_id}, sta.c_str());
  }
  const std::string net = network_code(u.unit.net_seed, opt_.net);
  const std::string cha = channel_code(c.meta.chn, c.number, rate);
  c.codes = Codes{};
  std::snprintf(c.codes.net, sizeof c.codes.net, "%s", net.c_str());
  std::snprintf(c.codes.sta, sizeof c.codes.sta, "%s", sta.c_str());
  std::snprintf(c.codes.loc, sizeof c.codes.loc, "%s", opt_.loc.c_str());
  std::snprintf(c.codes.cha, sizeof c.codes.cha, "%s", cha.c_str());
  c.codes_rate = rate;
  return c.codes;
}

// A new segment: the station metadata gets its channel, or widens the one it has.
void Exporter::note_segment(UnitState& u, ChanState& c) {
  const Codes& k = c.stream.codes();
  const auto [owner, first] = code_owner_.try_emplace(k.id(), c.key);
  if (!first && owner->second != c.key && owner->second != ~0u) {
    // Said once: readers would take the two channels' records for one channel's.
    std::fprintf(err_, "lm_mseed: WARNING: unit %04X channel %u and unit %04X channel %u are both written as %s; "
                 "set ChnBand, ChnType or ChnAxis in the INI file to tell them apart\n", owner->second >> 16,
                 (owner->second & 0xFFu) + 1, c.key >> 16, (c.key & 0xFFu) + 1, k.id().c_str());
    owner->second = ~0u;
  }
  const std::int64_t start = c.stream.start() * 1000;
  StationMeta& st = stations_[std::string(k.net) + "." + k.sta];
  if (st.net.empty()) {
    st.net = k.net;
    st.sta = k.sta;
    st.start_ns = start;
  }
  st.unit_id = u.unit.unit_id;  // the unit whose values describe the station, the latest
  st.start_ns = std::min(st.start_ns, start);
  std::size_t i = 0;
  while (i < st.channels.size() && !(st.channels[i].loc == k.loc && st.channels[i].cha == k.cha)) ++i;
  if (i == st.channels.size()) {
    st.channels.emplace_back();
    st.channels[i].loc = k.loc;
    st.channels[i].cha = k.cha;
    st.channels[i].start_ns = start;
  }
  // The segment's metadata replace the channel's; its codes and time span stay the channel's own.
  ChannelMeta& m = st.channels[i];
  m.chn = c.meta.chn;
  m.tbw = c.meta.tbw;
  m.gain_ndx = c.meta.gain_ndx;
  m.gain_known = c.meta.gain_known;
  m.rate = c.stream.rate();
  m.start_ns = std::min(m.start_ns, start);
  c.station = &st;
  c.sink = i;
}

void Exporter::emit(UnitState& u, ChanState& c, hptime_t t, double rate, const std::int32_t* s, std::size_t n) {
  if (c.stream.add(t, rate, codes_for(u, c, rate), s, n)) note_segment(u, c);
  const std::int64_t end = c.stream.end() * 1000;
  ChannelMeta& m = c.station->channels[c.sink];
  if (end > m.end_ns) m.end_ns = end;
  if (end > c.station->end_ns) c.station->end_ns = end;
  samples_total_ += n;
}

// A packet's samples at the event's rate; without one, at the rate of the segment they go on, or at
// the rate that the time to the next packet tells (the converter's own estimate).
void Exporter::samples(UnitState& u, ChanState& c, hptime_t t, double rate, const std::int32_t* s, std::size_t n) {
  // A rate no recorder samples at (a damaged header's) counts as none.
  if (!(rate >= 1e-6 && rate <= 1e7)) rate = 0;
  if (rate <= 0 && c.stream.open() && c.stream.rate() > 0) rate = c.stream.rate();
  if (rate <= 0 && !c.held.empty() && t > c.held_t) {
    double est = static_cast<double>(c.held.size()) * HPTMODULUS / static_cast<double>(t - c.held_t);
    if (est < 1e-6 || est > 1e7) est = 0;
    emit(u, c, c.held_t, est, c.held.data(), c.held.size());
    c.held.clear();
    rate = est;
  }
  if (!c.held.empty()) {
    // What was held is timed by the rate that has come since, or cannot be timed at all.
    emit(u, c, c.held_t, rate > 0 ? rate : 0, c.held.data(), c.held.size());
    c.held.clear();
  }
  if (rate > 0) return emit(u, c, t, rate, s, n);
  c.held.assign(s, s + n);
  c.held_t = t;
}

void Exporter::damaged(const char* fmt, ...) {
  ++damaged_total_;
  if (++reports_ > kMaxReports) return;
  std::fprintf(err_, "lm_mseed: %s: packet %lu: ", input_.c_str(), packet_no_);
  va_list ap;
  va_start(ap, fmt);
  std::vfprintf(err_, fmt, ap);
  va_end(ap);
  std::fputc('\n', err_);
}

void Exporter::data_packet(const std::uint8_t* p) {
  UnitState& u = unit(p);
  const EventRec& e = event(u, hdr::kEvent.value(p));
  ChanState& c = channel(u, p);
  const Decoder decode = decoder_for(hdr::kFormat.value(p));
  if (!decode) return damaged("data format 0x%02X is not known; skipped", unsigned{hdr::kFormat.value(p)});
  char time[kTimeLen + 1];
  pkt_time_str(p, time);
  std::int64_t t = 0;
  if (!time_epoch_us(time, t)) return damaged("time %.16s is not a time; skipped", time);
  if (c.evt_id != e.id) c.stream.last = 0;
  c.evt_id = e.id;
  std::int32_t ahead = c.stream.last;
  Decoded d = decode(p, ahead, std::span<std::uint32_t>(decoded_));
  end_check(d, c.stream.last);
  if (d.failed)
    damaged("Steim check failed (first sample %d against %d, last %d against %d); samples kept",
            static_cast<int>(d.check.x0), static_cast<int>(d.check.calc_start), static_cast<int>(d.check.xn),
            static_cast<int>(d.check.calc_stop));
  if (d.n_undefined) damaged("%u Steim-2 words of no known layout; samples kept", unsigned{d.n_undefined});
  if (d.count == 0) return;
  if (c.gen != e.gen) refresh(c, e);
  samples(u, c, t, e.evt.rate, reinterpret_cast<const std::int32_t*>(decoded_), d.count);
}

void Exporter::packet(const std::uint8_t* p) {
  const std::uint16_t code = code_set(p);
  switch (code) {
    case kDT: data_packet(p); break;
    case kEH:
    case kET: event_packet(code, p); break;
    case kSC: {
      UnitState& u = unit(p);
      u.das_model = lm::trimmed(soh::kDasModel.text(p));
      u.das_serial = lm::trimmed(soh::kDasSerial.text(p));
      break;
    }
    case kNone: damaged("not a packet of a known type; skipped"); break;
    default: break;
  }
}

void Exporter::show_progress(long long bytes, bool last) {
  const std::time_t now = std::time(nullptr);
  if (!progress_ || (!last && now == shown_)) return;
  shown_ = now;
  const double secs = now > started_ ? static_cast<double>(now - started_) : 1.0;
  std::fprintf(err_, "\rlm_mseed: %s: %.1f MB read, %.1f MB/s%s", input_.c_str(), static_cast<double>(bytes) / 1e6,
               static_cast<double>(bytes) / 1e6 / secs, last ? "\n" : "");
}

int Exporter::read_input(const std::string& path) {
  input_ = path;
  packet_no_ = reports_ = 0;
  std::FILE* in = std::fopen(path.c_str(), "rb");
  if (!in) return std::fprintf(err_, "lm_mseed: cannot read '%s': %s\n", path.c_str(), std::strerror(errno)), status::kInput;
  std::uint8_t p[kPacketSize];
  std::size_t got = 0;
  while ((got = std::fread(p, 1, sizeof p, in)) == sizeof p) {
    ++packet_no_;
    packet(p);
    if (packet_no_ % 4096 == 0) show_progress(static_cast<long long>(packet_no_) * 1024, false);
  }
  const bool failed = std::ferror(in) != 0;
  std::fclose(in);
  show_progress(static_cast<long long>(packet_no_) * 1024, true);
  if (reports_ > kMaxReports)
    std::fprintf(err_, "lm_mseed: %s: %lu more damaged packets not listed\n", path.c_str(), reports_ - kMaxReports);
  if (failed) return std::fprintf(err_, "lm_mseed: read error in '%s'\n", path.c_str()), status::kInput;
  if (got > 0)
    std::fprintf(err_, "lm_mseed: %s: the last %zu bytes are not a whole packet; ignored\n", path.c_str(), got);
  if (packet_no_ == 0) return std::fprintf(err_, "lm_mseed: %s: no packet in the file\n", path.c_str()), status::kNoData;
  return status::kOk;
}

void Exporter::finish() {
  for (auto& [key, c] : chans_) {
    if (!c->held.empty()) {
      std::fprintf(err_, "lm_mseed: unit %04X channel %u: a lone packet with no rate; written with rate 0\n",
                   key >> 16, unsigned{c->number} + 1);
      emit(*units_[static_cast<std::uint16_t>(key >> 16)], *c, c->held_t, 0, c->held.data(), c->held.size());
      c->held.clear();
    }
    c->stream.finish();
  }
  files_.close_all();
  files_.check();
}

std::vector<StationMeta> Exporter::stations() {
  std::vector<StationMeta> out;
  for (auto& [key, st] : stations_) {
    const UnitState& u = *units_[st.unit_id];
    st.site = lm::trimmed(u.unit.station);
    st.lat = u.unit.lat;
    st.lon = u.unit.lon;
    st.elev = u.unit.alt;
    st.position_known = u.unit.lat != 0 || u.unit.lon != 0 || u.unit.alt != 0;
    st.das_model = u.das_model;
    st.das_serial = u.das_serial;
    out.push_back(st);
  }
  return out;
}

void Exporter::summary(std::size_t inputs, std::FILE* out) const {
  std::fprintf(out, "lm_mseed: %zu input(s), %llu samples, %llu records in %zu files, %llu damaged packets\n", inputs,
               samples_total_, static_cast<unsigned long long>(files_.records), files_.files(), damaged_total_);
}

// The StationXML document beside the data, or where --stationxml puts it; a status.
int write_document(const Options& o, std::vector<StationMeta> stations, std::FILE* out, std::FILE* err) {
  // A document must hold a network: without data there is nothing to describe.
  if (stations.empty()) return std::fputs("lm_mseed: no data, so no StationXML\n", out), status::kOk;
  std::string path = o.stationxml;
  std::size_t root = o.out_dir.size();
  if (path.empty()) {
    path = o.out_dir + "/" + stations.front().net + ".xml";
  } else {
    // A path the user named is followed as given up to its file name.
    const std::size_t slash = path.rfind('/');
    root = slash == std::string::npos ? 0 : slash;
  }
  const XmlResult r = write_stationxml(path, root, stations);
  for (const std::string& w : r.warnings) std::fprintf(err, "lm_mseed: WARNING: %s\n", w.c_str());
  if (!r.ok) return std::fprintf(err, "lm_mseed: %s\n", r.error.c_str()), status::kWrite;
  std::string none;
  for (const std::string& n : r.no_response) none += (none.empty() ? "" : "; ") + n;
  std::fprintf(out, "lm_mseed: StationXML %s%s%s\n", path.c_str(), none.empty() ? "" : ", no Response for ",
               none.c_str());
  return status::kOk;
}

bool is_dir(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

}  // namespace

int run_export(const Options& o, const char* argv0, std::FILE* err) {
  if (!is_dir(o.out_dir)) {
    std::fprintf(err, "lm_mseed: the output directory '%s' does not exist\n", o.out_dir.c_str());
    return status::kNoOutDir;
  }
  std::string ini = o.ini.empty() ? default_ini(argv0) : o.ini;
  if (!o.ini.empty() && ::access(ini.c_str(), R_OK) != 0)
    std::fprintf(err, "lm_mseed: WARNING: the INI file '%s' cannot be read; using defaults\n", ini.c_str());
  set_open_retry_seconds(0);
  // libmseed's own error lines would go to standard error unasked; every failure is reported here.
  ms_loginit(nullptr, nullptr, [](char*) {}, nullptr);
  int st = status::kOk;
  try {
    auto ex = std::make_unique<Exporter>(o, ini, err);
    for (const std::string& in : o.inputs) st = std::max(st, ex->read_input(in));
    ex->finish();
    ex->summary(o.inputs.size(), stdout);
    if (!o.no_stationxml) st = std::max(st, write_document(o, ex->stations(), stdout, err));
  } catch (const WriteError& e) {
    std::fprintf(err, "lm_mseed: %s; the export stopped there\n", e.text.c_str());
    return status::kWrite;
  }
  return st;
}

}  // namespace lm::mseed

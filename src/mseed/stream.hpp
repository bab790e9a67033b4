#pragma once
// One channel's records: its samples gathered into the current continuous segment and packed into
// miniSEED records by libmseed as they fill, into the segment's file (flat) or the day's file (SDS).
#include <libmseed.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <unordered_set>
#include <vector>

#include "mseed/cli.hpp"

namespace lm::mseed {

// The SEED codes of a segment, fixed-size so that comparing them per packet costs no allocation.
struct Codes {
  char net[3] = {}, sta[6] = {}, loc[3] = {}, cha[4] = {};
  bool operator==(const Codes&) const = default;
  std::string id() const;  // NET.STA.LOC.CHA
};

// A write that failed: the export ends with it, naming the file.
struct WriteError {
  std::string text;
};

class Stream;

// The files the streams write. Few stay open at once, whatever the number of channels; a flat name
// claimed in this run is never taken again, so two segments starting in one second get a suffix.
class Files {
 public:
  Files(const Options& o, std::size_t root) : opt_(o), root_(root) {}
  ~Files();
  // Called from libmseed's record handler, so failures are kept, not thrown: see check().
  void write(Stream& s, const char* record, int len);
  void close(Stream& s);
  void close_all();
  // Throws the first failure kept since the last call.
  void check();
  // A stream about to take samples. Few streams hold unpacked samples at once: past the bound, the one
  // unused longest packs what it holds and gives its buffer back, so memory stays bounded however many
  // channels an input names.
  void use(Stream& s);
  // A stream that goes: its file closed without a word (the run has ended already) and its places freed.
  void forget(Stream& s);
  const Options& opt() const { return opt_; }
  std::uint64_t records = 0;
  std::size_t files() const { return claimed_.size(); }

 private:
  bool open(Stream& s);
  void fail(const std::string& path, const char* what);
  std::string name_for(const Stream& s);
  std::string error_;
  static constexpr std::size_t kMaxOpen = 64;
  static constexpr std::size_t kMaxBuffered = 256;
  const Options& opt_;
  std::vector<Stream*> buffered_;  // streams that hold a buffer
  std::uint64_t clock_ = 0;
  std::size_t root_;
  std::vector<Stream*> open_;
  std::unordered_set<std::string> claimed_;
};

class Stream {
 public:
  Stream(Files& files);
  ~Stream();
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  // Appends one packet's samples, first sample at `t`, at `rate` (0: unknown, a segment of its own).
  // True when they start a new segment: a gap, an overlap, another rate or other codes.
  bool add(hptime_t t, double rate, const Codes& codes, const std::int32_t* s, std::size_t n);
  // Packs what is left of the segment into records.
  void finish();

  std::int32_t last = 0;  // last sample of the previous Steim packet, for the decoders' end check

  // The segment that ended last (or is open), for the station metadata.
  bool open() const { return n_ > 0; }
  const Codes& codes() const { return codes_; }
  double rate() const { return rate_; }
  hptime_t start() const { return start_; }
  hptime_t end() const { return time_of(n_ ? n_ - 1 : 0); }

 private:
  friend class Files;
  hptime_t time_of(std::int64_t k) const;
  bool continues(hptime_t t, double rate, const Codes& codes) const;
  void begin(hptime_t t, double rate, const Codes& codes);
  void append(const std::int32_t* s, std::size_t n);
  std::int64_t first_of_next_day() const;
  bool steim_holds(const std::int32_t* s, std::size_t n) const;
  void pack(bool flush);
  static void on_record(char* record, int len, void* self);

  Files& files_;
  MSRecord* msr_ = nullptr;
  std::vector<std::int32_t> buf_;  // samples not packed yet: at most a record's worth and a packet
  Codes codes_;
  double rate_ = 0;
  hptime_t start_ = 0;         // the segment's first sample
  std::int64_t n_ = 0;         // samples in the segment
  std::int64_t packed_ = 0;    // of them, packed into records
  std::int32_t tail_ = 0;      // the segment's last sample, from which the next difference is taken
  hptime_t day_end_ = 0;       // SDS: the midnight that ends the current day file
  std::int32_t sequence_ = 1;  // record sequence number, on from segment to segment
  std::size_t pack_at_ = 0;     // enough samples for four full records of any content
  std::size_t buffered_at_ = kNone;  // place among the streams that hold a buffer
  std::uint64_t used_ = 0;      // when it last took samples
  static constexpr std::size_t kNone = ~std::size_t{0};
  // The file the records go to, named at its first record; `fp_` is null while the cache has it closed.
  std::string path_;
  std::FILE* fp_ = nullptr;
  bool fresh_ = false;         // a name this run claimed and has not written yet: replaced, not appended to
};

}  // namespace lm::mseed

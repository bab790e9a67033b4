#include "mseed/stream.hpp"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>

#include "base/file_util.hpp"
#include "decode/decoders.hpp"

namespace lm::mseed {
namespace {

constexpr hptime_t kDay = 86400LL * HPTMODULUS;

hptime_t next_midnight(hptime_t t) { return (t / kDay + 1) * kDay; }

// Most samples one record can hold, whatever their values: a Steim frame has 15 data words of at
// most seven (Steim-2) or four (Steim-1) differences each.
std::size_t record_capacity(int reclen, int encoding) {
  const std::size_t data = static_cast<std::size_t>(reclen) - 64;  // header and blockette 1000
  if (encoding == DE_INT32) return data / 4;
  return data / 64 * 15 * (encoding == DE_STEIM2 ? 7 : 4);
}

void put(char (&dst)[11], const char* src) { std::snprintf(dst, sizeof dst, "%s", src); }

}  // namespace

std::string Codes::id() const { return std::string(net) + "." + sta + "." + loc + "." + cha; }

Files::~Files() {
  while (!open_.empty()) forget(*open_.back());
}

void Files::forget(Stream& s) {
  if (s.fp_) {
    std::fclose(s.fp_);
    s.fp_ = nullptr;
    open_.erase(std::find(open_.begin(), open_.end(), &s));
  }
  if (s.buffered_at_ != Stream::kNone) {
    buffered_[s.buffered_at_] = buffered_.back();
    buffered_[s.buffered_at_]->buffered_at_ = s.buffered_at_;
    buffered_.pop_back();
    s.buffered_at_ = Stream::kNone;
  }
}

void Files::fail(const std::string& path, const char* what) {
  if (error_.empty()) error_ = std::string(what) + " '" + path + "': " + std::strerror(errno);
}

void Files::check() {
  if (error_.empty()) return;
  WriteError e{error_};
  error_.clear();
  throw e;
}

std::string Files::name_for(const Stream& s) {
  BTime bt;
  const Codes& c = s.codes_;
  char name[96];
  if (opt_.layout == Layout::kSds) {
    ms_hptime2btime(s.time_of(s.packed_), &bt);
    std::snprintf(name, sizeof name, "%04d/%s/%s/%s.D/%s.%s.%s.%s.D.%04d.%03d", bt.year, c.net, c.sta, c.cha, c.net,
                  c.sta, c.loc, c.cha, bt.year, bt.day);
    claimed_.insert(name);
    return name;
  }
  ms_hptime2btime(s.start_, &bt);
  std::snprintf(name, sizeof name, "%s.%s.%s.%s.%04d.%03d.%02d%02d%02d", c.net, c.sta, c.loc, c.cha, bt.year,
                bt.day, bt.hour, bt.min, bt.sec);
  std::string claimed = std::string(name) + ".mseed";
  // Two segments that start in one second: the second and later ones get a number.
  for (int k = 2; !claimed_.insert(claimed).second; ++k) claimed = std::string(name) + "_" + std::to_string(k) + ".mseed";
  return claimed;
}

bool Files::open(Stream& s) {
  if (s.path_.empty()) {
    s.path_ = opt_.out_dir + "/" + name_for(s);
    // A flat name is this run's own and replaces an older file; a day file of an archive is appended to.
    s.fresh_ = opt_.layout == Layout::kFlat;
    if (opt_.layout == Layout::kSds && !make_dirs_below(s.path_.c_str(), root_)) {
      // A planted link (or a file) where a directory belongs says "not a directory": say what it is.
      if (errno == ENOTDIR || errno == ELOOP) errno = ENOTDIR;
      return fail(s.path_, errno == ENOTDIR ? "a link or a file stands where a directory belongs, in"
                                            : "cannot make the directories of"), false;
    }
  }
  if (open_.size() >= kMaxOpen) close(*open_.front());
  s.fp_ = fopen_below(s.path_.c_str(), root_, s.fresh_ ? "wb" : "ab");
  if (!s.fp_) return fail(s.path_, "cannot open"), false;
  s.fresh_ = false;
  open_.push_back(&s);
  return true;
}

void Files::write(Stream& s, const char* record, int len) {
  if (!error_.empty()) return;
  if (!s.fp_ && !open(s)) return;
  if (std::fwrite(record, 1, static_cast<std::size_t>(len), s.fp_) != static_cast<std::size_t>(len))
    return fail(s.path_, "cannot write");
  ++records;
}

void Files::close(Stream& s) {
  if (!s.fp_) return;
  if (std::fclose(s.fp_) != 0) fail(s.path_, "cannot write");
  s.fp_ = nullptr;
  open_.erase(std::find(open_.begin(), open_.end(), &s));
}

void Files::use(Stream& s) {
  s.used_ = ++clock_;
  if (s.buffered_at_ != Stream::kNone) return;
  if (buffered_.size() == kMaxBuffered) {
    auto oldest = std::min_element(buffered_.begin(), buffered_.end(),
                                   [](const Stream* a, const Stream* b) { return a->used_ < b->used_; });
    Stream& o = **oldest;
    o.pack(true);  // a short record inside the segment, which goes on when the channel comes back
    std::vector<std::int32_t>().swap(o.buf_);
    o.buffered_at_ = Stream::kNone;
    *oldest = buffered_.back();
    (*oldest)->buffered_at_ = static_cast<std::size_t>(oldest - buffered_.begin());
    buffered_.pop_back();
  }
  s.buffered_at_ = buffered_.size();
  buffered_.push_back(&s);
  s.buf_.reserve(s.pack_at_ + kMaxSamples);
}

void Files::close_all() {
  while (!open_.empty()) close(*open_.back());
}

// libmseed packs whole records only and tries one more from what is left over, which it throws away: four
// records' worth a call keeps that wasted try to a small part of the work.
Stream::Stream(Files& files)
    : files_(files), pack_at_(4 * record_capacity(files.opt().reclen, files.opt().encoding)) {}

Stream::~Stream() {
  files_.forget(*this);
  if (msr_) msr_->datasamples = nullptr;  // ours, not libmseed's to free
  msr_free(&msr_);
}

hptime_t Stream::time_of(std::int64_t k) const {
  if (rate_ <= 0) return start_;
  // Beyond any year a time string can name, a damaged rate's times stop growing rather than overflow.
  constexpr double kLatest = 4e17;
  return start_ + std::llround(std::min(static_cast<double>(k) * HPTMODULUS / rate_, kLatest));
}

bool Stream::continues(hptime_t t, double rate, const Codes& codes) const {
  if (n_ == 0 || rate_ <= 0 || !(codes == codes_)) return false;
  if (std::fabs(rate - rate_) > rate_ * 1e-9) return false;
  // Within half a sample of where the segment ends, as libmseed's own tolerance has it.
  return std::llabs(t - time_of(n_)) <= std::llround(0.5 * HPTMODULUS / rate_);
}

bool Stream::add(hptime_t t, double rate, const Codes& codes, const std::int32_t* s, std::size_t n) {
  const bool fresh = !continues(t, rate, codes);
  if (fresh) begin(t, rate, codes);
  append(s, n);
  return fresh;
}

void Stream::begin(hptime_t t, double rate, const Codes& codes) {
  finish();
  files_.close(*this);
  path_.clear();
  if (msr_) {
    sequence_ = msr_->sequence_number;
    msr_->datasamples = nullptr;
  }
  msr_free(&msr_);
  msr_ = msr_init(nullptr);
  if (!msr_) throw WriteError{"out of memory"};
  msr_->sequence_number = sequence_;
  put(msr_->network, codes.net);
  put(msr_->station, codes.sta);
  put(msr_->location, codes.loc);
  put(msr_->channel, codes.cha);
  msr_->dataquality = 'D';
  msr_->reclen = files_.opt().reclen;
  msr_->encoding = static_cast<int8_t>(files_.opt().encoding);
  msr_->byteorder = 1;
  codes_ = codes;
  rate_ = rate;
  start_ = t;
  n_ = packed_ = 0;
  day_end_ = next_midnight(t);
}

// Index in the segment of the first sample at or after the midnight that ends the current day file.
std::int64_t Stream::first_of_next_day() const {
  const double at = std::ceil(static_cast<double>(day_end_ - start_) * rate_ / HPTMODULUS);
  auto k = static_cast<std::int64_t>(std::min(at, 9e18));
  // The estimate is off by rounding at most: a step or two either way settles it.
  for (int i = 0; i < 2 && k > 0 && time_of(k - 1) >= day_end_; ++i) --k;
  for (int i = 0; i < 2 && time_of(k) < day_end_; ++i) ++k;
  return k;
}

// Whether Steim can write every difference of the samples, from the segment's last one on: a damaged
// packet's kept samples may jump by more than Steim-2's 30 bits (or even Steim-1's 32).
bool Stream::steim_holds(const std::int32_t* s, std::size_t n) const {
  const std::int64_t lim = msr_->encoding == DE_STEIM2 ? std::int64_t{1} << 29 : std::int64_t{1} << 31;
  std::int64_t prev = n_ ? tail_ : s[0];  // a segment's first record has no difference before it
  for (std::size_t i = 0; i < n; ++i) {
    const std::int64_t d = s[i] - prev;
    if (d < -lim || d >= lim) return false;
    prev = s[i];
  }
  return true;
}

void Stream::append(const std::int32_t* s, std::size_t n) {
  files_.use(*this);
  if (msr_->encoding != DE_INT32 && !steim_holds(s, n)) {
    // What Steim cannot hold goes on in 32-bit integer records, so that no sample is lost.
    pack(true);
    msr_->encoding = DE_INT32;
  }
  if (n) tail_ = s[n - 1];
  const bool split = files_.opt().layout == Layout::kSds && rate_ > 0;
  while (n > 0) {
    std::size_t take = n;
    if (split) {
      const std::int64_t k = first_of_next_day();
      if (k <= n_) {
        // A day file never holds a record that crosses midnight: the day's records end here.
        pack(true);
        files_.close(*this);
        path_.clear();
        const hptime_t next = next_midnight(time_of(n_));
        if (next > day_end_) {
          day_end_ = next;
          continue;
        }
        // Times that no longer grow (a damaged rate at the end of the calendar) end no more days.
        day_end_ = std::numeric_limits<hptime_t>::max();
      } else {
        take = static_cast<std::size_t>(std::min<std::int64_t>(k - n_, static_cast<std::int64_t>(n)));
      }
    }
    buf_.insert(buf_.end(), s, s + take);
    n_ += static_cast<std::int64_t>(take);
    s += take;
    n -= take;
    if (buf_.size() >= pack_at_) pack(false);
  }
}

void Stream::on_record(char* record, int len, void* self) {
  auto* s = static_cast<Stream*>(self);
  s->files_.write(*s, record, len);
}

void Stream::pack(bool flush) {
  if (buf_.empty()) return;
  msr_->datasamples = buf_.data();
  msr_->numsamples = static_cast<int64_t>(buf_.size());
  msr_->sampletype = 'i';
  msr_->samprate = rate_;
  msr_->starttime = time_of(packed_);
  std::int64_t packed = 0;
  const int records = msr_pack(msr_, &Stream::on_record, this, &packed, flush ? 1 : 0, 0);
  msr_->datasamples = nullptr;
  msr_->numsamples = 0;
  files_.check();
  if (records < 0 || packed < 0 || static_cast<std::size_t>(packed) > buf_.size())
    throw WriteError{"libmseed could not pack the records of " + codes_.id()};
  buf_.erase(buf_.begin(), buf_.begin() + packed);
  packed_ += packed;
}

void Stream::finish() {
  if (msr_) pack(true);
}

}  // namespace lm::mseed

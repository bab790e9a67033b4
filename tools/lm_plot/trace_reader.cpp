#include "lm_plot/trace_reader.hpp"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace lmplot {

namespace {

std::string_view trim(std::string_view s) {
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

// Reads exactly `width` decimal digits at s[at]; the whole field must be digits.
bool digits(std::string_view s, std::size_t at, std::size_t width, int& out) {
  if (at + width > s.size()) return false;
  out = 0;
  for (std::size_t i = at; i < at + width; ++i) {
    if (s[i] < '0' || s[i] > '9') return false;
    out = out * 10 + (s[i] - '0');
  }
  return true;
}

// Days from 1970-01-01 to 1 January of `y` (proleptic Gregorian).
long long days_to_year(int y) {
  const long long p = y - 1;
  return 365LL * (y - 1970) + (p / 4 - p / 100 + p / 400) - (1969 / 4 - 1969 / 100 + 1969 / 400);
}

// An unsigned decimal in [0, max], the whole of s.
bool unsigned_field(std::string_view s, unsigned max, unsigned& out) {
  if (s.empty() || s.size() > 9) return false;
  int v = 0;
  if (!digits(s, 0, s.size(), v) || static_cast<unsigned>(v) > max) return false;
  out = static_cast<unsigned>(v);
  return true;
}

bool parse_chn_id(std::string_view v, TraceHeader& h) {
  const std::size_t a = v.find(':');
  if (a == std::string_view::npos || a == 0 || a > 4) return false;
  unsigned unit = 0;
  for (char c : v.substr(0, a)) {
    const char* hex = "0123456789ABCDEF";
    const char* p = c ? std::strchr(hex, c) : nullptr;
    if (!p) return false;
    unit = unit * 16 + static_cast<unsigned>(p - hex);
  }
  const std::string_view rest = v.substr(a + 1);
  const std::size_t b = rest.find(':');
  if (b == std::string_view::npos) return false;
  const std::size_t c = rest.find(':', b + 1);
  if (c == std::string_view::npos) return false;
  h.unit = unit;
  return unsigned_field(rest.substr(0, b), 9999, h.event) &&
         unsigned_field(rest.substr(b + 1, c - b - 1), 99, h.stream) &&
         unsigned_field(trim(rest.substr(c + 1)), 999, h.channel);
}

bool parse_number(std::string_view v, double& out) {
  v = trim(v);
  if (v.empty() || v.size() > 40) return false;
  char tmp[48];
  std::memcpy(tmp, v.data(), v.size());
  tmp[v.size()] = '\0';
  char* end = nullptr;
  errno = 0;
  out = std::strtod(tmp, &end);
  return end == tmp + v.size() && errno == 0 && std::isfinite(out);
}

// A signed 32-bit decimal, nothing else on the line.
bool parse_sample(const char* s, std::size_t len, std::int32_t& v) {
  std::size_t i = 0;
  const bool neg = len > 0 && s[0] == '-';
  if (len > 0 && (s[0] == '-' || s[0] == '+')) i = 1;
  if (i == len || len - i > 10) return false;
  long long x = 0;
  for (; i < len; ++i) {
    if (s[i] < '0' || s[i] > '9') return false;
    x = x * 10 + (s[i] - '0');
  }
  if (neg) x = -x;
  if (x < INT32_MIN || x > INT32_MAX) return false;
  v = static_cast<std::int32_t>(x);
  return true;
}

}  // namespace

bool parse_trace_time(const char* s, std::size_t len, long long& ms) {
  const std::string_view t = trim(std::string_view(s, len));
  if (t.size() != 21 || t[4] != ':' || t[8] != ':' || t[11] != ':' || t[14] != ':' || t[17] != '.') return false;
  int y, d, hh, mm, ss, mmm;
  if (!digits(t, 0, 4, y) || !digits(t, 5, 3, d) || !digits(t, 9, 2, hh) || !digits(t, 12, 2, mm) ||
      !digits(t, 15, 2, ss) || !digits(t, 18, 3, mmm))
    return false;
  if (d < 1 || d > 366 || hh > 23 || mm > 59 || ss > 60) return false;
  ms = ((((days_to_year(y) + d - 1) * 24 + hh) * 60 + mm) * 60 + ss) * 1000LL + mmm;
  return true;
}

TraceReader::TraceReader(std::string path) : path_(std::move(path)) {
  f_ = std::fopen(path_.c_str(), "rb");
  if (!f_) {
    fail((std::string("cannot open: ") + std::strerror(errno)).c_str(), false);
  }
}

TraceReader::~TraceReader() {
  if (f_) std::fclose(f_);
}

TraceReader::Next TraceReader::fail(const char* what, bool with_line) {
  if (!failed_) {
    error_ = path_ + (with_line ? ":" + std::to_string(line_no_) : std::string()) + ": " + what;
    failed_ = true;
  }
  return Next::Error;
}

TraceReader::Line TraceReader::fill() {
  end_ = std::fread(buf_, 1, sizeof buf_, f_);
  pos_ = 0;
  if (end_ > 0) return Line::Ok;
  if (std::ferror(f_)) {
    fail((std::string("read error: ") + std::strerror(errno)).c_str(), false);
    return Line::Error;
  }
  return Line::Eof;
}

// One line without its "\r\n" or "\n" into line_; the last line may lack its end.
TraceReader::Line TraceReader::read_line() {
  if (failed_ || !f_) return Line::Error;
  len_ = 0;
  bool any = false;
  for (;;) {
    if (pos_ == end_) {
      const Line l = fill();
      if (l == Line::Error) return l;
      if (l == Line::Eof) {
        if (!any) return Line::Eof;
        break;
      }
    }
    any = true;
    const char c = buf_[pos_++];
    if (c == '\n') break;
    if (len_ == kMaxLine) {
      ++line_no_;
      fail("line too long");
      return Line::Error;
    }
    line_[len_++] = c;
  }
  ++line_no_;
  if (len_ > 0 && line_[len_ - 1] == '\r') --len_;
  return Line::Ok;
}

TraceReader::Next TraceReader::parse_header_line(TraceHeader& h) {
  const std::string_view line(line_, len_);
  const std::size_t eq = line.find('=');
  if (eq == std::string_view::npos) return fail("header line without '='");
  const std::string_view key = line.substr(1, eq - 1), val = line.substr(eq + 1);
  double x = 0;
  if (key == "ChnID") {
    if (!parse_chn_id(val, h)) return fail("malformed $ChnID (expected UUUU:EEEE:SS:CC)");
  } else if (key == "Station") {
    h.station = std::string(trim(val));
  } else if (key == "SEED") {
    h.seed = std::string(trim(val).substr(0, 3));
  } else if (key == "Samples") {
    if (!parse_number(val, x) || x < 0 || x > 1e15) return fail("malformed $Samples");
    h.declared = static_cast<long long>(x);
  } else if (key == "Rate") {
    if (!parse_number(val, x) || x < 0) return fail("malformed $Rate");
    // Rates no recorder has are treated as unknown, which also keeps the time axis finite.
    h.rate = x >= 1e-6 && x <= 1e7 ? x : 0;
  } else if (key == "Time") {
    if (!parse_trace_time(val.data(), val.size(), h.start_ms)) return fail("malformed $Time (expected YYYY:DDD:HH:MM:SS.mmm)");
    h.has_time = true;
  }
  // Other keys carry metadata the picture does not show.
  return Next::Item;
}

TraceReader::Next TraceReader::next_header(TraceHeader& h) {
  if (failed_) return Next::Error;
  if (!pending_) {
    const Line l = read_line();
    if (l == Line::Error) return Next::Error;
    if (l == Line::Eof) return line_no_ == 0 ? fail("empty file", false) : Next::End;
  }
  pending_ = false;
  static constexpr std::string_view kFirst = "$ChnID=";
  if (std::string_view(line_, len_).substr(0, kFirst.size()) != kFirst)
    return fail(line_no_ == 1 ? "no trace header ($ChnID line expected)" : "trace header does not begin with $ChnID");
  h = TraceHeader{};
  for (bool first = true;; first = false) {
    if (!first) {
      const Line l = read_line();
      if (l == Line::Error) return Next::Error;
      if (l == Line::Eof) return Next::Item;
      if (len_ == 0 || line_[0] != '$') break;
      if (std::string_view(line_, len_).substr(0, kFirst.size()) == kFirst) break;  // a trace without samples
    }
    if (parse_header_line(h) == Next::Error) return Next::Error;
  }
  pending_ = true;
  return Next::Item;
}

TraceReader::Next TraceReader::next_sample(std::int32_t& v) {
  if (failed_) return Next::Error;
  if (!pending_) {
    const Line l = read_line();
    if (l == Line::Error) return Next::Error;
    if (l == Line::Eof) return Next::End;
    pending_ = true;
  }
  if (len_ > 0 && line_[0] == '$') return Next::End;  // the next trace's header
  pending_ = false;
  if (!parse_sample(line_, len_, v)) return fail("not a sample value");
  return Next::Item;
}

}  // namespace lmplot

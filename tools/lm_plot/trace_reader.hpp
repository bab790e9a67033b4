#pragma once
// Streams trace files (.atr) and gathered event files (.adt): a "$Key=value" header per trace, then one
// decimal sample per line. Lines, values and the buffer are bounded; nothing grows with the file.
#include <cstdint>
#include <cstdio>
#include <string>

namespace lmplot {

struct TraceHeader {
  unsigned unit = 0, event = 0, stream = 0, channel = 0;  // as printed in $ChnID (stream, channel from 1)
  std::string station;                                   // blanks trimmed; may be empty
  std::string seed;                                      // band/type/axis codes, when a $SEED line carries them
  long long declared = -1;                               // $Samples; -1 when absent
  double rate = 0;                                       // samples per second; 0 when absent or zero
  bool has_time = false;
  long long start_ms = 0;                                // UTC milliseconds since 1970-01-01
};

class TraceReader {
 public:
  enum class Next { Item, End, Error };
  static constexpr std::size_t kMaxLine = 200;

  explicit TraceReader(std::string path);
  ~TraceReader();
  TraceReader(const TraceReader&) = delete;
  TraceReader& operator=(const TraceReader&) = delete;

  // The next trace's header; End after the last trace, Error on a malformed or empty file.
  Next next_header(TraceHeader& h);
  // The next sample of the current trace; End where the next header or the file begins or ends.
  Next next_sample(std::int32_t& v);
  // "path:line: what" (or "path: what") after an Error.
  const std::string& error() const { return error_; }
  const std::string& path() const { return path_; }

 private:
  enum class Line { Ok, Eof, Error };
  Line read_line();
  Line fill();
  Next fail(const char* what, bool with_line = true);
  Next parse_header_line(TraceHeader& h);

  std::string path_;
  std::string error_;
  std::FILE* f_ = nullptr;
  char buf_[65536];
  std::size_t pos_ = 0, end_ = 0;
  char line_[kMaxLine + 1];
  std::size_t len_ = 0;
  long line_no_ = 0;
  bool pending_ = false;  // line_ holds a header line met while reading samples
  bool failed_ = false;
};

// Milliseconds since 1970 of "YYYY:DDD:HH:MM:SS.mmm"; false when the text is not such a time.
bool parse_trace_time(const char* s, std::size_t len, long long& ms);

}  // namespace lmplot

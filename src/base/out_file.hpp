#pragma once
#include <cstddef>
#include <cstdio>
#include <string_view>

namespace lm {

// The one file type for everything the program writes: a stream with a private buffer that each
// packet's sample lines are made in, in one piece. The buffer is flushed before every close,
// rewind, re-open or read, so the bytes on disk are exactly those written, in order. A buffer exists only while
// its file is open (taken from a small pool), so memory follows the number of open files. Every
// write, flush, seek and close is checked: a failure ends the run with the write error.
class OutFile {
 public:
  // A buffer's capacity: kCapacity for the first few files open at a time, kSmallCapacity past them,
  // so that memory stays bounded with many files open. 64 KiB a write: at half that, the kernel's cost
  // per call was 3 % of a conversion's processor time.
  static constexpr std::size_t kCapacity = 64 * 1024;
  static constexpr std::size_t kSmallCapacity = 32 * 1024;
  // Room past the capacity for a piece composed in place (a packet's sample lines).
  static constexpr std::size_t kComposeRoom = 8 * 1024;

  OutFile() = default;
  // A file still open when its record goes (a run that ended early) keeps what was written to it,
  // as the process exit would flush it; a failure here has nobody left to report to.
  ~OutFile() { close_quietly(); }
  OutFile(const OutFile&) = delete;
  OutFile& operator=(const OutFile&) = delete;

  // Opens through the retrying open, below the output directory that the first `root` characters
  // of the path name (no link followed below it); false when it failed. Write modes bypass stdio's
  // own buffer. `path` names the file in error messages and must outlive the open file.
  bool open(const char* path, std::size_t root, const char* mode);
  void close();
  // Writes out what is buffered and closes without checking: for a run that is ending already,
  // whose first failure has been reported.
  void close_quietly();
  bool is_open() const { return fp_ != nullptr; }
  explicit operator bool() const { return fp_ != nullptr; }

  void write(const char* data, std::size_t n);
  void write(std::string_view s) { write(s.data(), s.size()); }
  void put(char c) {
    if (!fp_) return;
    if (len_ == cap_) flush();
    buf_[len_++] = c;
  }
  void printf(const char* fmt, ...) __attribute__((format(printf, 2, 3)));
  // Where a piece of at most `most` bytes can be made in place, or null when the file is not open
  // or the buffer has not that much room left (the piece is then made elsewhere and given to
  // write()); commit(n) writes its first n bytes as write() would have.
  char* compose(std::size_t most) { return fp_ && most <= cap_ + kComposeRoom - len_ ? buf_ + len_ : nullptr; }
  void commit(std::size_t n);

  void flush();
  void rewind();
  void seek_end();
  // The underlying stream, flushed, for reading.
  std::FILE* stream() {
    flush();
    return fp_;
  }

 private:
  // Closes without checking and gives the buffer back: for destruction and for a failed file.
  void drop();
  // A write, flush, seek or close failed: the file is dropped and the run ends with the write error.
  void fail();

  std::FILE* fp_ = nullptr;
  char* buf_ = nullptr;
  std::size_t cap_ = 0;
  std::size_t len_ = 0;
  const char* path_ = nullptr;
};

}  // namespace lm

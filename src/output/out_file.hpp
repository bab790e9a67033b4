#pragma once
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string_view>

namespace lm {

// The one file type for everything the program writes: a stream with a private buffer that the
// per-sample path formats straight into. The buffer is flushed before every close, rewind, re-open
// or read, so the bytes on disk are exactly those written, in order.
class OutFile {
 public:
  static constexpr std::size_t kCapacity = 32 * 1024;

  OutFile() = default;
  ~OutFile() { close(); }
  OutFile(const OutFile&) = delete;
  OutFile& operator=(const OutFile&) = delete;

  // Opens through the retrying open; false when it failed. Write modes bypass stdio's own buffer.
  bool open(const char* path, const char* mode);
  void close();
  bool is_open() const { return fp_ != nullptr; }
  explicit operator bool() const { return fp_ != nullptr; }

  void write(const char* data, std::size_t n);
  void write(std::string_view s) { write(s.data(), s.size()); }
  void put(char c) {
    if (!fp_) return;
    if (len_ == kCapacity) flush();
    buf_[len_++] = c;
  }
  void printf(const char* fmt, ...) __attribute__((format(printf, 2, 3)));

  // Room for n bytes (n <= kCapacity) at the end of the buffer; commit() what was used.
  char* reserve(std::size_t n) {
    if (kCapacity - len_ < n) flush();
    return buf_.get() + len_;
  }
  void commit(std::size_t n) { len_ += n; }

  void flush();
  void rewind();
  void seek_end();
  // The underlying stream, flushed, for reading.
  std::FILE* stream() {
    flush();
    return fp_;
  }

 private:
  std::FILE* fp_ = nullptr;
  std::unique_ptr<char[]> buf_;  // allocated at the first open, kept across re-opens
  std::size_t len_ = 0;
};

}  // namespace lm

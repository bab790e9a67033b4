#include "base/out_file.hpp"

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <new>
#include <string>

#include "base/exit.hpp"
#include "base/file_util.hpp"

namespace lm {

namespace {

// Buffers of closed files wait here for the next open, so re-opening costs no allocation; the
// pools stay small, since the open files at any time are few. Large buffers (kCapacity) number at
// most kLargeMax, pooled or in use: files opened past them get small ones.
constexpr std::size_t kPoolMax = 8;
constexpr std::size_t kLargeMax = 8;
struct Pool {
  char* buf[kPoolMax];
  std::size_t n = 0;
};
Pool g_small, g_large;
std::size_t g_large_made = 0;

char* take_buffer(std::size_t& cap) {
  if (g_large.n > 0 || g_large_made < kLargeMax) {
    cap = OutFile::kCapacity;
    if (g_large.n > 0) return g_large.buf[--g_large.n];
    char* buf = new (std::nothrow) char[OutFile::kCapacity + OutFile::kComposeRoom];
    g_large_made += buf != nullptr;
    return buf;
  }
  cap = OutFile::kSmallCapacity;
  if (g_small.n > 0) return g_small.buf[--g_small.n];
  return new (std::nothrow) char[OutFile::kSmallCapacity + OutFile::kComposeRoom];
}

void give_back(char* buf, std::size_t cap) {
  if (!buf) return;
  const bool large = cap == OutFile::kCapacity;
  Pool& pool = large ? g_large : g_small;
  if (pool.n < kPoolMax) {
    pool.buf[pool.n++] = buf;
    return;
  }
  delete[] buf;
  g_large_made -= large;
}

}  // namespace

bool OutFile::open(const char* path, std::size_t root, const char* mode) {
  close();
  fp_ = fopen_below(path, root, mode);
  // A stream the library could not allocate is out of memory, not a file that cannot be opened.
  if (!fp_ && errno == ENOMEM) shut_down(40, path);
  if (!fp_) return false;
  path_ = path;
  len_ = 0;
  buf_ = take_buffer(cap_);
  if (!buf_) {
    drop();
    shut_down(40, path);
  }
  const bool read_only = mode[0] == 'r' && !std::strchr(mode, '+');
  if (!read_only) std::setvbuf(fp_, nullptr, _IONBF, 0);
  return true;
}

void OutFile::close() {
  if (!fp_) return;
  flush();
  std::FILE* fp = fp_;
  fp_ = nullptr;
  if (std::fclose(fp) != 0) fail();
  give_back(buf_, cap_);
  buf_ = nullptr;
}

void OutFile::close_quietly() {
  if (fp_ && len_ > 0) std::fwrite(buf_, 1, len_, fp_);
  drop();
}

void OutFile::drop() {
  if (fp_) std::fclose(fp_);
  fp_ = nullptr;
  give_back(buf_, cap_);
  buf_ = nullptr;
  len_ = 0;
}

void OutFile::fail() {
  const char* path = path_;
  drop();
  shut_down(22, path);
}

void OutFile::flush() {
  if (len_ == 0 || !fp_) return;
  const std::size_t n = len_;
  len_ = 0;
  if (std::fwrite(buf_, 1, n, fp_) != n) fail();
}

void OutFile::write(const char* data, std::size_t n) {
  if (!fp_) return;
  if (n > cap_ - len_) {
    flush();
    if (!fp_) return;
    if (n >= cap_) {
      if (std::fwrite(data, 1, n, fp_) != n) fail();
      return;
    }
  }
  std::memcpy(buf_ + len_, data, n);
  len_ += n;
}

void OutFile::commit(std::size_t n) {
  if (!fp_) return;
  if (n <= cap_ - len_) {
    len_ += n;
    return;
  }
  // As write() does with a piece that does not fit: what was buffered goes out first.
  const std::size_t at = len_;
  flush();
  if (!fp_) return;
  if (n >= cap_) {
    if (std::fwrite(buf_ + at, 1, n, fp_) != n) fail();
    return;
  }
  std::memmove(buf_, buf_ + at, n);
  len_ = n;
}

void OutFile::printf(const char* fmt, ...) {
  if (!fp_) return;
  va_list ap;
  va_start(ap, fmt);
  va_list again;
  va_copy(again, ap);
  const std::size_t room = cap_ - len_;
  const int n = std::vsnprintf(buf_ + len_, room, fmt, ap);
  va_end(ap);
  if (n >= 0 && static_cast<std::size_t>(n) < room) {
    len_ += static_cast<std::size_t>(n);
  } else if (n > 0) {
    std::string big(static_cast<std::size_t>(n) + 1, '\0');
    std::vsnprintf(big.data(), big.size(), fmt, again);
    write(big.data(), static_cast<std::size_t>(n));
  }
  va_end(again);
}

void OutFile::rewind() {
  flush();
  if (fp_ && std::fseek(fp_, 0, SEEK_SET) != 0) fail();
}

void OutFile::seek_end() {
  flush();
  if (fp_ && std::fseek(fp_, 0, SEEK_END) != 0) fail();
}

}  // namespace lm

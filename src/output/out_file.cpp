#include "output/out_file.hpp"

#include <cstdarg>
#include <cstring>
#include <string>

#include "run/file_util.hpp"

namespace lm {

bool OutFile::open(const char* path, const char* mode) {
  close();
  fp_ = fopen_lm(path, mode);
  if (!fp_) return false;
  if (!buf_) buf_ = std::make_unique<char[]>(kCapacity);
  len_ = 0;
  const bool read_only = mode[0] == 'r' && !std::strchr(mode, '+');
  if (!read_only) std::setvbuf(fp_, nullptr, _IONBF, 0);
  return true;
}

void OutFile::close() {
  if (!fp_) return;
  flush();
  std::fclose(fp_);
  fp_ = nullptr;
}

void OutFile::flush() {
  if (len_ == 0) return;
  if (fp_) std::fwrite(buf_.get(), 1, len_, fp_);
  len_ = 0;
}

void OutFile::write(const char* data, std::size_t n) {
  if (!fp_) return;
  if (n > kCapacity - len_) {
    flush();
    if (n >= kCapacity) {
      std::fwrite(data, 1, n, fp_);
      return;
    }
  }
  std::memcpy(buf_.get() + len_, data, n);
  len_ += n;
}

void OutFile::printf(const char* fmt, ...) {
  if (!fp_) return;
  va_list ap;
  va_start(ap, fmt);
  va_list again;
  va_copy(again, ap);
  const std::size_t room = kCapacity - len_;
  const int n = std::vsnprintf(buf_.get() + len_, room, fmt, ap);
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
  if (!fp_) return;
  flush();
  std::fseek(fp_, 0, SEEK_SET);
}

void OutFile::seek_end() {
  if (!fp_) return;
  flush();
  std::fseek(fp_, 0, SEEK_END);
}

}  // namespace lm

#include "base/file_util.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <ctime>

#include "base/number.hpp"

namespace lm {

bool fexist(const char* path) { return ::access(path, F_OK) == 0; }

namespace {
int g_retry_seconds = 5;
}  // namespace

void set_open_retry_seconds(int seconds) { g_retry_seconds = seconds; }

std::FILE* fopen_lm(const char* path, const char* mode) {
  const std::time_t deadline = std::time(nullptr) + g_retry_seconds;
  for (;;) {
    if (std::FILE* f = std::fopen(path, mode)) return f;
    if (std::time(nullptr) > deadline) return nullptr;
    ::usleep(10000);  // a pause between attempts, so that waiting does not burn a core
  }
}

void Make_dir(const char* path) {
  char prefix[136];
  const std::size_t len = std::strlen(path);
  for (std::size_t i = 0; i < len; ++i) {
    if (path[i] != '/') continue;
    if (i + 1 >= sizeof prefix) return;  // a longer prefix cannot be built; the open that follows fails
    std::memcpy(prefix, path, i + 1);
    prefix[i + 1] = '\0';
    if (!fexist(prefix)) ::mkdir(prefix, 0777);
  }
}

float stof(const char* text, std::uint16_t length) {
  if (length == 0) length = static_cast<std::uint16_t>(std::strlen(text));
  if (length == 0) return 0.0f;
  if (length > 19) length = 19;
  char buf[20];
  std::size_t n = 0;
  while (n < length && text[n] != '\0') {
    buf[n] = text[n];
    ++n;
  }
  buf[n] = '\0';
  float value = static_cast<float>(double_or_0(buf));
  if (const char* slash = std::strchr(buf, '/')) {
    // The zero test reads right after "/", the division one character later (so "1/ 4" is 0.25);
    // with the divisor written right after the slash ("1/4") the division also reads right after it,
    // which is what a user writing a plain fraction expects.
    const double probe = double_or_0(slash + 1);
    if (probe != 0.0) {
      const double divisor = (slash[1] == ' ' || slash[1] == '\t') ? double_or_0(slash + 2) : probe;
      if (divisor != 0.0) value = static_cast<float>(value / divisor);
    }
  }
  return value;
}

}  // namespace lm

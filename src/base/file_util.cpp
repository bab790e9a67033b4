#include "base/file_util.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <string_view>

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

namespace {

// The user's directory: the first `root` characters of path, or the working directory.
int open_root(const char* path, std::size_t root) {
  if (root == 0) return ::open(path[0] == '/' ? "/" : ".", O_PATH | O_DIRECTORY | O_CLOEXEC);
  char dir[4096];
  if (root >= sizeof dir) {
    errno = ENAMETOOLONG;
    return -1;
  }
  std::memcpy(dir, path, root);
  dir[root] = '\0';
  return ::open(dir, O_PATH | O_DIRECTORY | O_CLOEXEC);
}

// Enters the directory `name` (length n) of `dir`, which it closes; -1 for a link or a non-directory.
int enter(int dir, const char* name, std::size_t n, bool create) {
  char comp[256];
  if (n >= sizeof comp) {
    ::close(dir);
    errno = ENAMETOOLONG;
    return -1;
  }
  std::memcpy(comp, name, n);
  comp[n] = '\0';
  if (create && ::mkdirat(dir, comp, 0777) != 0 && errno != EEXIST) {
    ::close(dir);
    return -1;
  }
  const int next = ::openat(dir, comp, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  ::close(dir);
  return next;
}

// The directory holding the path's last component, entered from the root; `leaf` points at that component.
int walk(const char* path, std::size_t root, bool create, const char*& leaf) {
  int dir = open_root(path, root);
  const char* p = path + root;
  while (dir >= 0) {
    const char* slash = std::strchr(p, '/');
    if (!slash) break;
    const std::size_t n = static_cast<std::size_t>(slash - p);
    if (n > 0 && !(n == 1 && *p == '.')) dir = enter(dir, p, n, create);
    p = slash + 1;
  }
  leaf = p;
  return dir;
}

int flags_of(const char* mode) {
  const bool plus = std::strchr(mode, '+') != nullptr;
  switch (mode[0]) {
    case 'w': return (plus ? O_RDWR : O_WRONLY) | O_CREAT | O_TRUNC;
    case 'a': return (plus ? O_RDWR : O_WRONLY) | O_CREAT | O_APPEND;
    default: return plus ? O_RDWR : O_RDONLY;
  }
}

}  // namespace

int open_below(const char* path, std::size_t root, int flags) {
  const char* leaf = nullptr;
  const int dir = walk(path, root, false, leaf);
  if (dir < 0) return -1;
  const int fd = ::openat(dir, leaf, flags | O_NOFOLLOW | O_CLOEXEC, 0666);
  const int saved = errno;
  ::close(dir);
  errno = saved;
  return fd;
}

std::FILE* fopen_below(const char* path, std::size_t root, const char* mode) {
  const std::time_t deadline = std::time(nullptr) + g_retry_seconds;
  for (;;) {
    const int fd = open_below(path, root, flags_of(mode));
    if (fd >= 0) {
      if (std::FILE* f = ::fdopen(fd, mode)) return f;
      const int saved = errno;
      ::close(fd);
      errno = saved;
    }
    // A link where a file or directory of ours belongs does not go away by waiting.
    if (errno == ELOOP || errno == ENOTDIR || std::time(nullptr) > deadline) return nullptr;
    ::usleep(10000);
  }
}

bool make_dirs_below(const char* path, std::size_t root) {
  const char* leaf = nullptr;
  const int dir = walk(path, root, true, leaf);
  if (dir < 0) return false;
  ::close(dir);
  return true;
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

std::string program_dir(const char* argv0) {
  std::string_view name(argv0 ? argv0 : "");
  if (const auto slash = name.rfind('/'); slash != std::string_view::npos) return std::string(name.substr(0, slash + 1));
  // Without a "/" in the name, look beside the executable the system ran.
  char exe[4096];
  const ssize_t n = ::readlink("/proc/self/exe", exe, sizeof exe - 1);
  if (n <= 0) return {};
  std::string_view path(exe, static_cast<std::size_t>(n));
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? std::string() : std::string(path.substr(0, slash + 1));
}

}  // namespace lm

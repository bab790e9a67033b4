#include "support/e2e.hpp"

#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace e2e {

namespace fs = std::filesystem;

TempDir::TempDir() {
  std::string tmpl = (fs::temp_directory_path() / "lm_asc_test_XXXXXX").string();
  if (!::mkdtemp(tmpl.data())) throw std::runtime_error("mkdtemp failed");
  path_ = tmpl;
}

TempDir::~TempDir() {
  std::error_code ec;
  fs::remove_all(path_, ec);
}

Child start(const std::vector<std::string>& args, const std::string& cwd, const char* lmu, const Limits& limits,
            bool terminal) {
  int out[2], in[2];
  termios raw{};
  ::cfmakeraw(&raw);  // the bytes as written, no line-end translation
  if ((terminal ? ::openpty(&out[0], &out[1], nullptr, &raw, nullptr) : ::pipe(out)) != 0 || ::pipe(in) != 0)
    throw std::runtime_error("pipe failed");
  const pid_t pid = ::fork();
  if (pid == 0) {
    ::dup2(out[1], 1);
    ::dup2(in[0], 0);
    for (int fd : {out[0], out[1], in[0], in[1]}) ::close(fd);
    if (::chdir(cwd.c_str()) != 0) ::_exit(127);
    if (lmu) ::setenv("LMU", lmu, 1); else ::unsetenv("LMU");
    if (limits.open_files) {
      const rlimit r{limits.open_files, limits.open_files};
      ::setrlimit(RLIMIT_NOFILE, &r);
    }
    if (limits.file_size) {
      std::signal(SIGXFSZ, SIG_IGN);
      const rlimit r{limits.file_size, limits.file_size};
      ::setrlimit(RLIMIT_FSIZE, &r);
    }
    std::string bin = LM_ASC_BIN;
    std::vector<std::string> copy = args;
    std::vector<char*> argv{bin.data()};
    for (auto& a : copy) argv.push_back(a.data());
    argv.push_back(nullptr);
    ::execv(bin.c_str(), argv.data());
    ::_exit(127);
  }
  ::close(out[1]);
  ::close(in[0]);
  return Child{pid, out[0], in[1]};
}

RunResult finish(Child& child, const std::string& stdin_text) {
  if (!stdin_text.empty()) {
    std::signal(SIGPIPE, SIG_IGN);  // the run may end before it reads its input
    const ssize_t w = ::write(child.in_fd, stdin_text.data(), stdin_text.size());
    (void)w;
  }
  ::close(child.in_fd);
  RunResult r;
  char buf[65536];
  // Until the writer is gone; on a terminal the read fails (EIO) once the run has closed it.
  for (ssize_t n; (n = ::read(child.out_fd, buf, sizeof buf)) > 0;) r.out.append(buf, static_cast<std::size_t>(n));
  ::close(child.out_fd);
  int st = 0;
  ::waitpid(child.pid, &st, 0);
  r.status = WIFEXITED(st) ? WEXITSTATUS(st) : 128 + WTERMSIG(st);
  return r;
}

RunResult run(const std::vector<std::string>& args, const std::string& cwd, const char* lmu,
              const std::string& stdin_text, const Limits& limits) {
  Child child = start(args, cwd, lmu, limits);
  return finish(child, stdin_text);
}

std::string read_file(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

bool exists(const std::string& path) { return fs::exists(path); }

void write_packets(const std::string& path, const std::vector<pktkit::Packet>& packets) {
  std::vector<std::uint8_t> bytes;
  for (const auto& p : packets) pktkit::append(bytes, p);
  if (!pktkit::write_file(path, bytes)) throw std::runtime_error("cannot write " + path);
}

std::string mask_time(std::string text) {
  const std::string key = "System time: ";
  for (std::size_t at = text.find(key); at != std::string::npos; at = text.find(key, at + 1)) {
    const std::size_t from = at + key.size();
    const std::size_t end = text.find('\r', from);
    text.replace(from, (end == std::string::npos ? text.size() : end) - from, "<time>");
  }
  return text;
}

std::string log_head(const std::string& log) {
  return log.substr(0, log.find("\r\n\r\n", log.find("   Command Line : ")) + 4);
}

std::string log_body(const std::string& log) { return log.substr(log_head(log).size()); }

std::vector<std::string> list_files(const std::string& dir) {
  std::vector<std::string> names;
  for (const auto& e : fs::recursive_directory_iterator(dir))
    if (e.is_regular_file()) names.push_back(fs::relative(e.path(), dir).string());
  std::sort(names.begin(), names.end());
  return names;
}

std::string TraceHeader::text() const {
  std::string n = std::to_string(samples);
  n.resize(n.size() < 10 ? 10 : n.size(), ' ');
  return "$ChnID=" + chn_id + "\r\n$Station=" + station + "\r\n$Samples=" + n + "\r\n$Rate=" + rate +
         "\r\n$Time=" + time + "\r\n$TimeQual=" + time_qual + "\r\n$BitWeight=" + bit_weight + "\r\n$Gain=" + gain +
         "\r\n$SensorVPU=" + vpu + " ???             \r\n$LLA=" + lla + "\r\n";
}

std::string bare_trace(unsigned channel, unsigned count, const std::string& samples, const char* vpu,
                       const char* lla, const char* unit_event) {
  char id[32];
  std::snprintf(id, sizeof id, "%s:01:%02u", unit_event, channel);
  return TraceHeader{.chn_id = id, .samples = count, .vpu = vpu, .lla = lla}.text() + samples;
}

}  // namespace e2e

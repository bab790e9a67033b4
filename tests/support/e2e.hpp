#pragma once
// End-to-end kit: a fresh temporary directory per test, the real binary run in it, whole files read back.
#include <filesystem>
#include <string>
#include <vector>

#include "pktkit/packet_builder.hpp"

namespace e2e {

struct RunResult {
  int status = -1;
  std::string out;  // standard output
};

class TempDir {
 public:
  TempDir();
  ~TempDir();
  const std::filesystem::path& path() const { return path_; }
  std::string str() const { return path_.string(); }
  std::string operator/(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

// Resource limits of a run; 0 leaves a limit as it is.
struct Limits {
  unsigned long open_files = 0;  // descriptors
  unsigned long file_size = 0;   // bytes per file; a write beyond it fails (the signal is ignored)
};

// A converter started and not yet waited for.
struct Child {
  int pid = -1;
  int out_fd = -1;  // its standard output
  int in_fd = -1;   // its standard input
};

// Starts the converter with the arguments in `cwd`; environment LMU set when `lmu` is not null; its
// standard output a pseudo-terminal when `terminal`.
Child start(const std::vector<std::string>& args, const std::string& cwd, const char* lmu = nullptr,
            const Limits& limits = {}, bool terminal = false);
// Feeds its standard input, closes it, collects its output and waits for its status.
RunResult finish(Child& child, const std::string& stdin_text = "");
// start() then finish().
RunResult run(const std::vector<std::string>& args, const std::string& cwd, const char* lmu = nullptr,
              const std::string& stdin_text = "", const Limits& limits = {});

std::string read_file(const std::string& path);
bool exists(const std::string& path);
// Writes packets to a file.
void write_packets(const std::string& path, const std::vector<pktkit::Packet>& packets);
// Replaces the wall-clock text of "System time: ..." lines by a fixed marker.
std::string mask_time(std::string text);
// A log file's header block (through the command line and the blank line after it), and what follows it.
std::string log_head(const std::string& log);
std::string log_body(const std::string& log);
// Names of the regular files below dir (relative, sorted).
std::vector<std::string> list_files(const std::string& dir);

// A trace file's ten header lines as the converter writes them, each field as the file shows it;
// the defaults are those of an event without an event header at 2009:032 00:00:00.000.
struct TraceHeader {
  std::string chn_id;
  std::string station = "     ";
  unsigned long samples = 0;
  std::string rate = "      0.0000";
  std::string time = "2009:032:00:00:00.000";
  std::string time_qual = "-1";
  std::string bit_weight = "        ";
  std::string gain = " 1.000";
  std::string vpu = " 0.000";
  std::string lla = " 0.000  0.000    0.0";
  std::string text() const;
};

// A trace file of an event with no event header (event 7 of unit 9A3F unless told), its first packet at
// 2009:032 00:00:00.000, rate not estimated; channel counted from 1, `samples` the sample lines.
std::string bare_trace(unsigned channel, unsigned count, const std::string& samples, const char* vpu = " 0.000",
                       const char* lla = " 0.000  0.000    0.0", const char* unit_event = "9A3F:0007");

}  // namespace e2e

#include "mseed/cli.hpp"

#include <libmseed.h>
#include <cstdlib>
#include <cstring>

#include "base/file_util.hpp"
#include "mseed/codes.hpp"

namespace lm::mseed {

const char kUsage[] =
    "Usage: lm_mseed [options] INPUT...\n"
    "Writes the waveform data of recorder packet files as miniSEED, with a StationXML file.\n"
    "  -o DIR              output directory (default .; must exist)\n"
    "  --layout flat|sds   flat (default): NET.STA.LOC.CHA.YYYY.DDD.HHMMSS.mseed per channel and\n"
    "                      continuous segment; sds: DIR/YYYY/NET/STA/CHA.D/NET.STA.LOC.CHA.D.YYYY.DDD\n"
    "  --net XX            network code when the INI gives none (default XX)\n"
    "  --loc LL            location code (default empty)\n"
    "  --reclen 512|4096   record length (default 4096)\n"
    "  --encoding steim2|steim1|int32   (default steim2)\n"
    "  --ini FILE          the INI file (default: LMU, else lmu.ini here, else beside the program)\n"
    "  --stationxml FILE   where the StationXML goes (default DIR/NET.xml)\n"
    "  --no-stationxml     no StationXML file\n"
    "  -q                  no progress line\n"
    "  --help, --version\n";

namespace {

// A network or location code as given, in upper case; false when it is not one (letters and digits, at most 2).
bool code_of(const std::string& s, std::string& code) {
  bool altered = false;
  code = seed_code(s, 2, altered);
  return !altered && code.size() == s.size();
}

// The value of an option that takes one; null when the command line ends before it.
const char* value(int argc, char** argv, int& i) { return i + 1 < argc ? argv[++i] : nullptr; }

bool set_option(const std::string& opt, const char* v, Options& o, std::string& error) {
  if (!v) return error = opt + " needs a value", false;
  const std::string s = v;
  if (opt == "-o") o.out_dir = s;
  else if (opt == "--layout" && (s == "flat" || s == "sds")) o.layout = s == "sds" ? Layout::kSds : Layout::kFlat;
  else if (opt == "--net" && !s.empty() && code_of(s, o.net)) {}
  else if (opt == "--loc" && code_of(s, o.loc)) {}
  else if (opt == "--reclen" && (s == "512" || s == "4096")) o.reclen = std::atoi(v);
  else if (opt == "--encoding" && s == "steim2") o.encoding = DE_STEIM2;
  else if (opt == "--encoding" && s == "steim1") o.encoding = DE_STEIM1;
  else if (opt == "--encoding" && s == "int32") o.encoding = DE_INT32;
  else if (opt == "--ini") o.ini = s;
  else if (opt == "--stationxml") o.stationxml = s;
  else return error = "bad value '" + s + "' for " + opt, false;
  return true;
}

}  // namespace

bool parse_cli(int argc, char** argv, Options& o, std::string& error) {
  static const char* const kWithValue[] = {"-o", "--layout", "--net", "--loc", "--reclen",
                                           "--encoding", "--ini", "--stationxml"};
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    bool takes_value = false;
    for (const char* k : kWithValue) takes_value = takes_value || a == k;
    if (takes_value) {
      if (!set_option(a, value(argc, argv, i), o, error)) return false;
    } else if (a == "-q") {
      o.quiet = true;
    } else if (a == "--no-stationxml") {
      o.no_stationxml = true;
    } else if (a.size() > 1 && a[0] == '-') {
      return error = "unknown option " + a, false;
    } else {
      o.inputs.push_back(a);
    }
  }
  if (o.inputs.empty()) return error = "no input file", false;
  return true;
}

std::string default_ini(const char* argv0) {
  if (const char* env = std::getenv("LMU")) return env;
  if (fexist("lmu.ini")) return "lmu.ini";
  return program_dir(argv0) + "lmu.ini";
}

}  // namespace lm::mseed

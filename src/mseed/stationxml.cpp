#include "mseed/stationxml.hpp"

#include <fcntl.h>
#include <libxml/xmlwriter.h>
#include <unistd.h>

#include <cerrno>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <ctime>
#include <optional>
#include <string_view>

#include "base/file_util.hpp"
#include "config/tables.hpp"
#include "lm_version.hpp"
#include "mseed/response.hpp"

namespace lm::mseed {
namespace {

constexpr std::size_t kMaxText = 256;  // bytes of one text value; metadata longer than that is cut
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// Length of the UTF-8 sequence at s[i] when it is valid and a character XML allows, else 0.
std::size_t utf8_char(std::string_view s, std::size_t i) {
  const auto byte = [&s](std::size_t k) { return static_cast<unsigned char>(s[k]); };
  const unsigned c = byte(i);
  if (c < 0x80) return 1;
  std::size_t n;
  unsigned cp;
  if (c >= 0xC2 && c <= 0xDF) n = 2, cp = c & 0x1Fu;
  else if (c >= 0xE0 && c <= 0xEF) n = 3, cp = c & 0x0Fu;
  else if (c >= 0xF0 && c <= 0xF4) n = 4, cp = c & 0x07u;
  else return 0;
  if (i + n > s.size()) return 0;
  for (std::size_t k = 1; k < n; ++k) {
    if ((byte(i + k) & 0xC0u) != 0x80u) return 0;
    cp = cp << 6 | (byte(i + k) & 0x3Fu);
  }
  const bool overlong = (n == 3 && cp < 0x800) || (n == 4 && cp < 0x10000);
  const bool excluded = (cp >= 0xD800 && cp <= 0xDFFF) || cp == 0xFFFE || cp == 0xFFFF || cp > 0x10FFFF;
  return overlong || excluded ? 0 : n;
}

// A text as the document can hold it: blanks around it dropped, control characters dropped, invalid
// UTF-8 bytes replaced by U+FFFD, at most kMaxText bytes. A change is a warning naming `what`.
std::string clean(std::string_view s, const std::string& what, std::vector<std::string>& warnings) {
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  std::string out;
  bool dropped = false, replaced = false, cut = false;
  for (std::size_t i = 0; i < s.size() && !cut;) {
    const unsigned char c = static_cast<unsigned char>(s[i]);
    const std::size_t n = utf8_char(s, i);
    const std::string_view piece = n ? s.substr(i, n) : kReplacement;
    i += n ? n : 1;
    if (c < 0x20 || c == 0x7F) {
      dropped = true;
    } else if (out.size() + piece.size() > kMaxText) {
      cut = true;
    } else {
      out += piece;
      replaced |= n == 0;
    }
  }
  std::string why;
  if (dropped) why += ", control characters dropped";
  if (replaced) why += ", invalid UTF-8 bytes replaced";
  if (cut) why += ", cut to " + std::to_string(kMaxText) + " bytes";
  if (!why.empty()) warnings.push_back(what + ":" + why.substr(1));
  return out;
}

// The shortest text that reads back as the same double.
std::string num(double v) {
  char buf[32];
  const auto r = std::to_chars(buf, buf + sizeof buf, v);
  return std::string(buf, r.ptr);
}

// UTC time with microseconds, as xs:dateTime.
std::string iso_time(std::int64_t ns) {
  std::int64_t s = ns / 1000000000, rest = ns % 1000000000;
  if (rest < 0) --s, rest += 1000000000;
  const std::time_t t = static_cast<std::time_t>(s);
  std::tm tm{};
  gmtime_r(&t, &tm);
  char buf[64];
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02dT%02d:%02d:%02d.%06dZ", tm.tm_year + 1900, tm.tm_mon + 1,
                tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec, static_cast<int>(rest / 1000));
  return buf;
}

// The text writer over a memory buffer; the first failed call is remembered and later ones skipped.
class Writer {
 public:
  Writer() : buf_(xmlBufferCreate()), w_(buf_ ? xmlNewTextWriterMemory(buf_, 0) : nullptr) { ok_ = w_; }
  ~Writer() {
    if (w_) xmlFreeTextWriter(w_);
    if (buf_) xmlBufferFree(buf_);
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void start_doc() { check(ok_ && xmlTextWriterSetIndent(w_, 1) == 0 && xmlTextWriterStartDocument(w_, nullptr, "UTF-8", nullptr) >= 0); }
  void start(const char* name) { check(ok_ && xmlTextWriterStartElement(w_, BAD_CAST name) >= 0); }
  void end() { check(ok_ && xmlTextWriterEndElement(w_) >= 0); }
  void attr(const char* name, const std::string& v) {
    check(ok_ && xmlTextWriterWriteAttribute(w_, BAD_CAST name, BAD_CAST v.c_str()) >= 0);
  }
  void text(const char* name, const std::string& v) {
    check(ok_ && xmlTextWriterWriteElement(w_, BAD_CAST name, BAD_CAST v.c_str()) >= 0);
  }
  void number(const char* name, double v) { text(name, num(v)); }
  // The whole document, empty when a call failed.
  std::string_view finish() {
    check(ok_ && xmlTextWriterEndDocument(w_) >= 0);
    if (w_) xmlFreeTextWriter(w_);
    w_ = nullptr;
    if (!ok_) return {};
    return {reinterpret_cast<const char*>(xmlBufferContent(buf_)), static_cast<std::size_t>(xmlBufferLength(buf_))};
  }

 private:
  void check(bool fine) { ok_ = ok_ && fine; }
  xmlBufferPtr buf_;
  xmlTextWriterPtr w_;
  bool ok_ = false;
};

// What a station's parts share while they are written.
struct Ctx {
  Writer& w;
  XmlResult& r;
  std::string id;  // "NET.STA" or "NET.STA.LOC.CHA", for warnings
  std::string text(std::string_view s, const char* what) { return clean(s, id + ": " + what, r.warnings); }
  void warn(const std::string& line) { r.warnings.push_back(id + ": " + line); }
};

void write_units(Writer& w, const char* element, const char* name, const char* description) {
  w.start(element);
  w.text("Name", name);
  if (*description) w.text("Description", description);
  w.end();
}

void write_gain(Writer& w, double value, double freq) {
  w.start("StageGain");
  w.number("Value", value);
  w.number("Frequency", freq);
  w.end();
}

void write_roots(Writer& w, const char* element, const std::vector<std::complex<double>>& roots) {
  for (std::size_t i = 0; i < roots.size(); ++i) {
    w.start(element);
    w.attr("number", std::to_string(i));
    w.number("Real", roots[i].real());
    w.number("Imaginary", roots[i].imag());
    w.end();
  }
}

// Stage 1: ground motion to volts; a gain-only stage when no poles and zeros are known.
void write_sensor_stage(Writer& w, const Response& resp) {
  w.start("Stage");
  w.attr("number", "1");
  w.start("PolesZeros");
  write_units(w, "InputUnits", resp.unit, resp.unit_text);
  write_units(w, "OutputUnits", "V", "Volts");
  w.text("PzTransferFunctionType", "LAPLACE (RADIANS/SECOND)");
  w.number("NormalizationFactor", resp.a0);
  w.number("NormalizationFrequency", resp.freq);
  if (resp.pz) {
    write_roots(w, "Zero", resp.pz->zeros);
    write_roots(w, "Pole", resp.pz->poles);
  }
  w.end();
  write_gain(w, resp.sensor_gain, resp.freq);
  w.end();
}

// Stage 2: volts to counts at the channel's rate.
void write_logger_stage(Writer& w, const Response& resp, double rate) {
  w.start("Stage");
  w.attr("number", "2");
  w.start("Coefficients");
  write_units(w, "InputUnits", "V", "Volts");
  write_units(w, "OutputUnits", "COUNTS", "Digital counts");
  w.text("CfTransferFunctionType", "DIGITAL");
  w.end();
  if (rate > 0 && std::isfinite(rate)) {
    w.start("Decimation");
    w.number("InputSampleRate", rate);
    w.text("Factor", "1");
    w.text("Offset", "0");
    w.number("Delay", 0);
    w.number("Correction", 0);
    w.end();
  }
  write_gain(w, resp.logger_gain, resp.freq);
  w.end();
}

void write_response(Writer& w, const Response& resp, double rate) {
  w.start("Response");
  w.start("InstrumentSensitivity");
  w.number("Value", resp.sensitivity);
  w.number("Frequency", resp.freq);
  write_units(w, "InputUnits", resp.unit, resp.unit_text);
  write_units(w, "OutputUnits", "COUNTS", "Digital counts");
  w.end();
  write_sensor_stage(w, resp);
  write_logger_stage(w, resp, rate);
  w.end();
}

// Azimuth and dip: the INI's, else by the channel code's axis (Z 0/-90, N 0/0, E 90/0); none for
// another axis, as nothing tells it.
void write_orientation(Ctx& x, const ChannelMeta& ch) {
  const char axis = ch.cha.size() == 3 ? ch.cha[2] : '\0';
  std::optional<double> azm, dip;
  if (axis == 'Z') azm = 0, dip = -90;
  if (axis == 'N') azm = 0, dip = 0;
  if (axis == 'E') azm = 90, dip = 0;
  if (ch.chn.azimuth_given) {
    azm = ch.chn.azimuth % 360;
    if (ch.chn.azimuth >= 360) x.warn("azimuth " + std::to_string(ch.chn.azimuth) + " written as " + num(*azm));
  }
  if (ch.chn.dip_given && ch.chn.dip >= -90 && ch.chn.dip <= 90) dip = ch.chn.dip;
  else if (ch.chn.dip_given) x.warn("dip " + std::to_string(ch.chn.dip) + " is out of range; not used");
  if (azm) x.w.number("Azimuth", *azm);
  if (dip) x.w.number("Dip", *dip);
}

// One Equipment element of the texts that are not empty; none when all are.
void write_equipment(Writer& w, const char* element, const std::vector<std::pair<const char*, std::string>>& fields) {
  bool any = false;
  for (const auto& f : fields) any = any || !f.second.empty();
  if (!any) return;
  w.start(element);
  for (const auto& f : fields)
    if (!f.second.empty()) w.text(f.first, f.second);
  w.end();
}

// The sensor from the INI, the catalogue filling what the INI leaves empty.
void write_sensor(Ctx& x, const ChnMeta& m) {
  const SensorInfo* row = m.sensor_ndx != 0 ? sensor_row(m.sensor_ndx) : nullptr;
  const auto pick = [row](const char* ini, const char* SensorInfo::*col) {
    return std::string_view(*ini || !row ? ini : row->*col);
  };
  write_equipment(x.w, "Sensor",
                  {{"Description", x.text(row ? row->desc : "", "sensor description")},
                   {"Manufacturer", x.text(pick(m.make, &SensorInfo::make), "sensor make")},
                   {"Model", x.text(pick(m.model, &SensorInfo::model), "sensor model")},
                   {"SerialNumber", m.sn ? std::to_string(m.sn) : std::string()}});
}

// The DAS of the SC packets: the station's Equipment or a channel's DataLogger.
void write_datalogger(Ctx& x, const StationMeta& st, const char* element) {
  const std::string model = x.text(st.das_model, "DAS model"), serial = x.text(st.das_serial, "DAS serial number");
  if (model.empty() && serial.empty()) return;
  const bool station = std::strcmp(element, "Equipment") == 0;
  write_equipment(x.w, element, {{"Type", station ? "Datalogger" : ""}, {"Model", model}, {"SerialNumber", serial}});
}

// Latitude, longitude and elevation; 0 with a warning where unknown or out of range.
void write_position(Ctx& x, const StationMeta& st, bool warn) {
  const bool known = st.position_known && std::isfinite(st.elev);
  const bool lat_ok = std::isfinite(st.lat) && st.lat >= -90 && st.lat < 90;
  const bool lon_ok = std::isfinite(st.lon) && st.lon >= -180 && st.lon <= 180;
  if (warn && !known) x.warn("no position known; 0 written");
  if (warn && known && !(lat_ok && lon_ok)) x.warn("position " + num(st.lat) + ", " + num(st.lon) + " out of range; 0 written");
  const bool ok = known && lat_ok && lon_ok;
  x.w.number("Latitude", ok ? st.lat : 0);
  x.w.number("Longitude", ok ? st.lon : 0);
  x.w.number("Elevation", ok ? st.elev : 0);
}

void write_dates(Writer& w, std::int64_t start_ns, std::int64_t end_ns) {
  w.attr("startDate", iso_time(start_ns));
  w.attr("endDate", iso_time(end_ns));
}

void write_channel(Ctx& sx, const StationMeta& st, const ChannelMeta& ch) {
  Ctx x{sx.w, sx.r, st.net + "." + st.sta + "." + ch.loc + "." + ch.cha};
  Writer& w = x.w;
  w.start("Channel");
  w.attr("code", x.text(ch.cha, "channel code"));
  w.attr("locationCode", x.text(ch.loc, "location code"));
  write_dates(w, ch.start_ns, ch.end_ns);
  write_position(x, st, false);
  w.number("Depth", std::isfinite(ch.chn.depth) ? ch.chn.depth : 0);
  write_orientation(x, ch);
  if (ch.rate > 0 && std::isfinite(ch.rate)) w.number("SampleRate", ch.rate);
  write_sensor(x, ch.chn);
  write_datalogger(x, st, "DataLogger");
  std::string why;
  if (const auto resp = channel_response(ch, why)) write_response(w, *resp, ch.rate);
  else x.r.no_response.push_back(x.id + ": " + why);
  w.end();
}

void write_station(Writer& w, XmlResult& r, const StationMeta& st) {
  Ctx x{w, r, st.net + "." + st.sta};
  w.start("Station");
  w.attr("code", x.text(st.sta, "station code"));
  write_dates(w, st.start_ns, st.end_ns);
  write_position(x, st, true);
  w.start("Site");
  w.text("Name", x.text(st.site.empty() ? st.sta : st.site, "site name"));
  w.end();
  write_datalogger(x, st, "Equipment");
  for (const ChannelMeta& ch : st.channels) write_channel(x, st, ch);
  w.end();
}

// Stations under their networks, each network once, in the order they first appear.
void write_networks(Writer& w, XmlResult& r, const std::vector<StationMeta>& stations) {
  std::vector<std::string> done;
  for (const StationMeta& first : stations) {
    if (std::find(done.begin(), done.end(), first.net) != done.end()) continue;
    done.push_back(first.net);
    w.start("Network");
    w.attr("code", clean(first.net, first.net + ": network code", r.warnings));
    for (const StationMeta& st : stations)
      if (st.net == first.net) write_station(w, r, st);
    w.end();
  }
}

// The document to `fd`, all of it; an errno value on failure, 0 when written.
int write_all(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t n = ::write(fd, bytes.data(), bytes.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return n < 0 ? errno : EIO;
    bytes.remove_prefix(static_cast<std::size_t>(n));
  }
  return 0;
}

}  // namespace

XmlResult write_stationxml(const std::string& path, std::size_t root, const std::vector<StationMeta>& stations) {
  XmlResult r;
  Writer w;
  w.start_doc();
  w.start("FDSNStationXML");
  w.attr("xmlns", "http://www.fdsn.org/xml/station/1");
  w.attr("schemaVersion", "1.2");
  w.text("Source", std::string("lm_mseed ") + LM_VERSION);
  w.text("Created", iso_time(static_cast<std::int64_t>(std::time(nullptr)) * 1000000000));
  write_networks(w, r, stations);
  w.end();
  const std::string_view doc = w.finish();
  if (doc.empty()) {
    r.error = "StationXML could not be built for '" + path + "'";
    return r;
  }
  const int fd = open_below(path.c_str(), root, O_WRONLY | O_CREAT | O_TRUNC);
  if (fd < 0) {
    r.error = "cannot open '" + path + "': " + std::strerror(errno);
    return r;
  }
  int err = write_all(fd, doc);
  if (::close(fd) != 0 && err == 0) err = errno;
  if (err != 0) r.error = "cannot write '" + path + "': " + std::strerror(err);
  r.ok = err == 0;
  return r;
}

}  // namespace lm::mseed

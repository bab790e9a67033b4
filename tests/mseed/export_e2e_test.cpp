// The export end to end: packets built from known samples, exported, and read back through libmseed
// (every sample, start, rate and code) and libxml2 (the StationXML's codes and spans).
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "mseed/export.hpp"
#include "mseed/readback.hpp"
#include "pktkit/steim_encoder.hpp"
#include "support/e2e.hpp"

namespace {

namespace fs = std::filesystem;
using readback::Trace;

enum class Fmt { k16, k32, kSteim1, kSteim2 };

// 2009:032 00:00:00 UTC, the time every feed counts its milliseconds from.
const hptime_t kBase = ms_time2hptime(2009, 32, 0, 0, 0, 0);

pktkit::PktTime pkt_time(std::int64_t ms) {
  pktkit::PktTime t;
  t.ddd = 32 + static_cast<int>(ms / 86400000);
  ms %= 86400000;
  t.hh = static_cast<int>(ms / 3600000);
  t.mm = static_cast<int>(ms / 60000 % 60);
  t.ss = static_cast<int>(ms / 1000 % 60);
  t.ms = static_cast<int>(ms % 1000);
  return t;
}

// Samples that use every Steim width: a slow wave with spikes of growing size, up to 2^top.
std::vector<std::int32_t> wave(std::size_t n, int seed, int top = 28) {
  std::vector<std::int32_t> s(n);
  for (std::size_t i = 0; i < n; ++i)
    s[i] = static_cast<std::int32_t>(3000 * std::sin(0.05 * static_cast<double>(i + seed)) +
                                     (i % 97 == 0 ? 1 << (i % (top + 1)) : 0) * (i % 2 ? 1 : -1));
  return s;
}

// Packets of a feed, and the traces they must give.
struct Feed {
  std::vector<pktkit::Packet> packets;
  unsigned seq = 1;
  std::map<unsigned, std::int32_t> last;  // each channel's last sample, which its next Steim packet follows

  // `s` as channel `chn`'s packets of at most `per` samples at 100/s from `ms`; a Steim packet holds what fits.
  void channel(std::uint16_t unit, unsigned chn, Fmt f, std::int64_t ms, const std::vector<std::int32_t>& s,
               std::size_t per) {
    for (std::size_t at = 0; at < s.size();) {
      const std::vector<std::int32_t> part(s.begin() + at, s.begin() + std::min(s.size(), at + per));
      std::size_t used = part.size();
      const auto t = pkt_time(ms + static_cast<std::int64_t>(at) * 10);
      if (f == Fmt::k16) packets.push_back(pktkit::make_dt16(unit, t, seq++, 1, 0, chn, part));
      else if (f == Fmt::k32) packets.push_back(pktkit::make_dt32(unit, t, seq++, 1, 0, chn, part));
      else
        packets.push_back(pktkit::make_dt_steim(f == Fmt::kSteim1 ? pktkit::SteimLevel::k1 : pktkit::SteimLevel::k2,
                                                unit, t, seq++, 1, 0, chn, part, prev(unit, chn), &used));
      at += used;
      last[unsigned{unit} << 8 | chn] = part[used - 1];
    }
  }
  std::optional<std::int32_t> prev(std::uint16_t unit, unsigned chn) const {
    const auto it = last.find(unsigned{unit} << 8 | chn);
    return it == last.end() ? std::nullopt : std::optional<std::int32_t>(it->second);
  }
  // An event header, and the SC packet that names the recorder.
  void header(std::uint16_t unit, const std::string& station) {
    pktkit::EventInfo info;
    info.station = station;
    packets.push_back(pktkit::make_event_packet("EH", unit, pkt_time(0), seq++, 1, 0, false, info));
    pktkit::Packet sc = pktkit::make_header("SC", unit, pkt_time(0), seq++);
    pktkit::put_text(sc, 150, "DAS-7       1234        ");
    packets.push_back(sc);
  }
};

Trace trace(const char* id, std::int64_t ms, std::vector<std::int32_t> s) {
  return {id, kBase + ms * 1000, 100.0, std::move(s)};
}

std::vector<std::int32_t> join(std::vector<std::int32_t> a, const std::vector<std::int32_t>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

struct Export {
  int status = -1;
  std::string err, out;
};

Export run_export(lm::mseed::Options o) {
  Export r;
  std::FILE* err = std::tmpfile();
  std::fflush(stdout);
  r.status = lm::mseed::run_export(o, "lm_mseed", err);
  std::rewind(err);
  char buf[512];
  while (std::fgets(buf, sizeof buf, err)) r.err += buf;
  std::fclose(err);
  return r;
}

std::vector<std::string> data_files(const std::string& dir) {
  std::vector<std::string> out;
  for (const auto& e : fs::recursive_directory_iterator(dir))
    if (e.is_regular_file() && e.path().extension() != ".xml") out.push_back(e.path().string());
  std::sort(out.begin(), out.end());
  return out;
}

// Two inputs of one deployment: unit 1234 (event header, station ABCD, INI network NZ) with a channel
// of each format, a gap, an overlap, a channel across midnight, and a segment that goes on into the
// second input; unit 0042 without event header (rate estimated); two damaged packets.
struct Deployment {
  Feed a, b;
  std::vector<Trace> want;
  const std::vector<std::int32_t> z1 = wave(3000, 0), z2 = wave(500, 7), z3 = wave(700, 9);
  const std::vector<std::int32_t> n1 = wave(800, 1), n2 = wave(400, 2), e1 = wave(1200, 3, 14);
  const std::vector<std::int32_t> m1 = wave(1000, 4), u1 = wave(1000, 5), j1 = jumps();

  // A channel whose samples leap between the ends of the 32-bit range: no Steim difference holds them.
  static std::vector<std::int32_t> jumps() {
    std::vector<std::int32_t> s = wave(400, 6);
    for (std::size_t i = 150; i < s.size(); i += 50) s[i] = i % 100 ? INT32_MAX : INT32_MIN;
    return s;
  }

  Deployment() {
    a.header(0x1234, "ABCD");
    a.channel(0x1234, 0, Fmt::kSteim2, 0, z1, 1000);
    a.channel(0x1234, 1, Fmt::kSteim1, 0, n1, 300);
    a.channel(0x1234, 2, Fmt::k16, 0, e1, 400);
    a.channel(0x0042, 0, Fmt::k32, 0, u1, 200);
    a.channel(0x0042, 1, Fmt::k32, 0, j1, 200);
    a.channel(0x1234, 0, Fmt::kSteim2, 60000, z2, 1000);   // a gap of 30 s
    a.channel(0x1234, 1, Fmt::kSteim1, 7000, n2, 1000);    // 1 s back: an overlap
    a.channel(0x1234, 3, Fmt::k32, 86395000, m1, 250);     // 23:59:55, across midnight
    pktkit::Packet bad = pktkit::make_dt32(0x1234, pkt_time(0), a.seq++, 1, 0, 2, {1, 2, 3});
    bad[23] = 0x77;  // a data format nobody knows
    a.packets.push_back(bad);
    bad = pktkit::make_dt32(0x1234, pkt_time(0), a.seq++, 1, 0, 2, {1, 2, 3});
    bad[8] |= 0xA0;  // the hour's second digit a nibble above 9
    a.packets.push_back(bad);
    b.last = a.last;
    b.channel(0x1234, 0, Fmt::kSteim2, 65000, z3, 1000);   // goes on where the gap's segment ended
    want = {trace("NZ.ABCD..HHE", 0, e1),        trace("NZ.ABCD..HHN", 0, n1), trace("NZ.ABCD..HHN", 7000, n2),
            trace("NZ.ABCD..HHZ", 0, z1),        trace("NZ.ABCD..HHZ", 60000, join(z2, z3)),
            trace("NZ.ABCD..HNZ", 86395000, m1), trace("XY.0042..HHN", 0, j1),
            trace("XY.0042..HHZ", 0, u1)};
  }
  unsigned long packets_before_bad() const { return static_cast<unsigned long>(a.packets.size()) - 2; }
};

const char kIni[] = "[1234]\nNetSEED=nz\nCh4Type=N\n";

lm::mseed::Options options(const e2e::TempDir& tmp, lm::mseed::Layout layout, int reclen, int encoding) {
  lm::mseed::Options o;
  o.out_dir = tmp / "out";
  o.layout = layout;
  o.net = "XY";
  o.reclen = reclen;
  o.encoding = encoding;
  o.ini = tmp / "lmu.ini";
  o.quiet = true;
  o.inputs = {tmp / "a.pkt", tmp / "b.pkt"};
  return o;
}

// The StationXML (named after the first station's network) names the channels and time spans that
// the records read back hold, and the recorder of the SC packet.
void expect_document_agrees(const std::string& file, const std::vector<Trace>& traces) {
  readback::expect_valid(file);
  const readback::Doc doc(file);
  ASSERT_TRUE(doc.parsed());
  std::map<std::string, std::pair<hptime_t, hptime_t>> spans;
  for (const Trace& t : traces) {
    const hptime_t last = t.start + static_cast<hptime_t>((t.samples.size() - 1) * HPTMODULUS / t.rate);
    auto [it, fresh] = spans.try_emplace(t.id, t.start, last);
    it->second = {std::min(it->second.first, t.start), std::max(it->second.second, last)};
  }
  EXPECT_EQ(doc.count("//s:Channel"), static_cast<int>(spans.size()));
  EXPECT_EQ(doc.str("//s:Station[@code='ABCD']/s:Equipment/s:Model"), "DAS-7");
  EXPECT_EQ(doc.str("//s:Station[@code='ABCD']/s:Channel[@code='HHZ']/s:DataLogger/s:SerialNumber"), "1234");
  for (const auto& [id, span] : spans) {
    std::stringstream parts(id);
    std::string code[4];
    for (std::string& c : code) std::getline(parts, c, '.');
    const std::string ch = "//s:Network[@code='" + code[0] + "']/s:Station[@code='" + code[1] +
                           "']/s:Channel[@code='" + code[3] + "'][@locationCode='" + code[2] + "']";
    char first[40], last[40];
    ms_hptime2isotimestr(span.first, first, 1);
    ms_hptime2isotimestr(span.second, last, 1);
    EXPECT_EQ(doc.str(ch + "/@startDate"), std::string(first) + "Z") << id;
    EXPECT_EQ(doc.str(ch + "/@endDate"), std::string(last) + "Z") << id;
    EXPECT_EQ(doc.num(ch + "/s:SampleRate"), 100.0) << id;
  }
}

TEST(MseedExport, EverySampleTimeRateAndCodeReadBack) {
  struct Case {
    lm::mseed::Layout layout;
    int reclen, encoding;
    std::set<std::string> files;
  };
  const Case cases[] = {
      {lm::mseed::Layout::kFlat, 4096, DE_STEIM2,
       {"NZ.ABCD..HHE.2009.032.000000.mseed", "NZ.ABCD..HHN.2009.032.000000.mseed",
        "NZ.ABCD..HHN.2009.032.000007.mseed", "NZ.ABCD..HHZ.2009.032.000000.mseed",
        "NZ.ABCD..HHZ.2009.032.000100.mseed", "NZ.ABCD..HNZ.2009.032.235955.mseed",
        "XY.0042..HHN.2009.032.000000.mseed", "XY.0042..HHZ.2009.032.000000.mseed"}},
      {lm::mseed::Layout::kSds, 512, DE_STEIM1,
       {"2009/NZ/ABCD/HHE.D/NZ.ABCD..HHE.D.2009.032", "2009/NZ/ABCD/HHN.D/NZ.ABCD..HHN.D.2009.032",
        "2009/NZ/ABCD/HHZ.D/NZ.ABCD..HHZ.D.2009.032", "2009/NZ/ABCD/HNZ.D/NZ.ABCD..HNZ.D.2009.032",
        "2009/NZ/ABCD/HNZ.D/NZ.ABCD..HNZ.D.2009.033", "2009/XY/0042/HHN.D/XY.0042..HHN.D.2009.032",
        "2009/XY/0042/HHZ.D/XY.0042..HHZ.D.2009.032"}},
      {lm::mseed::Layout::kSds, 4096, DE_INT32, {}},
  };
  const Deployment d;
  for (const Case& c : cases) {
    e2e::TempDir tmp;
    fs::create_directory(tmp / "out");
    std::ofstream(tmp / "lmu.ini") << kIni;
    e2e::write_packets(tmp / "a.pkt", d.a.packets);
    e2e::write_packets(tmp / "b.pkt", d.b.packets);
    const Export r = run_export(options(tmp, c.layout, c.reclen, c.encoding));
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err.find("Steim check"), std::string::npos) << r.err;
    const std::string where = "a.pkt: packet " + std::to_string(d.packets_before_bad() + 1);
    EXPECT_NE(r.err.find(where + ": data format 0x77 is not known; skipped"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("packet " + std::to_string(d.packets_before_bad() + 2) + ": time"), std::string::npos);

    const std::vector<std::string> files = data_files(tmp / "out");
    const std::vector<Trace> traces = readback::read_traces(files);
    EXPECT_EQ(traces, d.want) << c.reclen;
    expect_document_agrees(tmp / "out/NZ.xml", traces);
    std::set<std::string> names;
    for (const std::string& f : files) names.insert(fs::relative(f, tmp / "out").string());
    if (!c.files.empty()) {
      EXPECT_EQ(names, c.files);
    }
    // A day file's every record starts and ends on the day of its name.
    for (const std::string& f : files) {
      if (c.layout != lm::mseed::Layout::kSds) break;
      const int day = std::stoi(f.substr(f.size() - 3));
      for (const readback::RecordSpan& s : readback::record_spans(f)) {
        BTime first, last;
        ms_hptime2btime(s.start, &first);
        ms_hptime2btime(s.last, &last);
        EXPECT_EQ(first.day, day) << f;
        EXPECT_EQ(last.day, day) << f;
      }
    }
  }
}

// More channels than may hold unpacked samples at once, their packets interleaved: each channel's
// records still join into one trace of every sample.
TEST(MseedExport, ChannelsBeyondTheBufferBoundLoseNothing) {
  constexpr unsigned kUnits = 1100;
  Feed f;
  std::vector<Trace> want;
  for (unsigned round = 0; round < 2; ++round)
    for (unsigned u = 1; u <= kUnits; ++u) f.channel(static_cast<std::uint16_t>(u), 0, Fmt::k32, round * 500, wave(50, u), 50);
  for (unsigned u = 1; u <= kUnits; ++u) {
    char id[32];
    std::snprintf(id, sizeof id, "XX.%04X..HHZ", u);
    want.push_back(trace(id, 0, join(wave(50, u), wave(50, u))));
  }
  std::sort(want.begin(), want.end(), [](const Trace& a, const Trace& b) { return a.id < b.id; });
  e2e::TempDir tmp;
  fs::create_directory(tmp / "out");
  e2e::write_packets(tmp / "a.pkt", f.packets);
  lm::mseed::Options o;
  o.out_dir = tmp / "out";
  o.inputs = {tmp / "a.pkt"};
  o.ini = tmp / "none.ini";
  o.no_stationxml = true;
  ASSERT_EQ(run_export(o).status, 0);
  EXPECT_EQ(readback::read_traces(data_files(tmp / "out")), want);
}

// What the user is told, and the status, when the export cannot do its work.
TEST(MseedExport, FailuresNameTheFileAndSetTheStatus) {
  e2e::TempDir tmp;
  fs::create_directory(tmp / "out");
  Feed f;
  f.channel(0x1234, 0, Fmt::k32, 0, wave(5000, 0), 250);
  e2e::write_packets(tmp / "a.pkt", f.packets);
  std::ofstream(tmp / "short.pkt") << "not a packet";
  struct Case {
    std::string input, out_dir, message;
    int status;
    rlim_t file_limit;
  };
  const Case cases[] = {
      {tmp / "missing.pkt", tmp / "out", "cannot read '" + tmp / "missing.pkt", 20, 0},
      {tmp / "a.pkt", tmp / "nowhere", "the output directory '" + tmp / "nowhere' does not exist", 10, 0},
      {tmp / "short.pkt", tmp / "out", "no packet in the file", 1, 0},
      {tmp / "a.pkt", tmp / "out", "cannot write '" + tmp / "out/XX.1234..HHZ.2009.032.000000.mseed", 22, 6000},
  };
  for (const Case& c : cases) {
    lm::mseed::Options o;
    o.out_dir = c.out_dir;
    o.inputs = {c.input};
    o.quiet = true;
    o.ini = tmp / "none.ini";
    rlimit saved{};
    ::getrlimit(RLIMIT_FSIZE, &saved);
    auto old = std::signal(SIGXFSZ, SIG_IGN);
    if (c.file_limit) {
      rlimit small{c.file_limit, saved.rlim_max};
      ::setrlimit(RLIMIT_FSIZE, &small);
    }
    const Export r = run_export(o);
    ::setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, old);
    EXPECT_EQ(r.status, c.status) << c.message;
    EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
  }
}

}  // namespace

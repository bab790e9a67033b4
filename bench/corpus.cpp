// Writes the benchmark corpus: one unit, `events` one-hour events of 3 Steim-2 channels at 100
// samples/s as a packet file, and the same samples as a miniSEED file (Steim-2, 4096-byte records)
// for the other converters. Traces are written event by event, channel by channel, the order in
// which the converter's trace file names sort, so the sample texts can be compared concatenated.
// Usage: corpus out.pkt out.mseed [events] [seconds-per-event]
#include <libmseed.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <vector>

#include "pktkit/packet_builder.hpp"
#include "pktkit/steim_encoder.hpp"

using namespace pktkit;

namespace {

constexpr unsigned kChannels = 3;
constexpr int kRate = 100;
constexpr std::uint16_t kUnit = 0x7B21;

struct Rng {
  std::uint64_t s;
  std::uint64_t next() {
    std::uint64_t z = (s += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }
  // Uniform in [-m, m].
  std::int32_t sym(std::int32_t m) { return static_cast<std::int32_t>(next() % (2 * std::uint64_t(m) + 1)) - m; }
};

// A mean-reverting random walk whose steps take every small width, plus a recurring large
// arrival (every 20 minutes) whose decaying swings pass through the wide difference widths.
std::vector<std::int32_t> trace(unsigned event, unsigned channel, std::size_t n) {
  Rng rng{event * 1000003ull + channel * 7919ull + 1};
  static constexpr std::int32_t kSteps[] = {7, 7, 7, 7, 7, 7, 15, 15, 31, 31, 127, 511};
  std::vector<std::int32_t> out(n);
  std::int64_t walk = 0;
  const std::size_t period = 20 * 60 * kRate, offset = (event * 97 + channel * 31) % period;
  for (std::size_t i = 0; i < n; ++i) {
    walk += rng.sym(kSteps[rng.next() % std::size(kSteps)]);
    walk -= walk / 256;
    const double since = static_cast<double>((i + offset) % period);
    const double arrival = std::ldexp(1.0, 26) * std::exp(-since / 400.0) * std::sin(since * 0.15 + channel);
    out[i] = static_cast<std::int32_t>(walk + static_cast<std::int64_t>(arrival));
  }
  return out;
}

PktTime at(unsigned event, std::size_t sample) {
  const long ms = static_cast<long>(event) * 3600000L + static_cast<long>(sample) * (1000 / kRate);
  PktTime t;
  t.yy = 24;
  t.ddd = static_cast<int>(100 + ms / 86400000L);
  t.hh = static_cast<int>(ms / 3600000L % 24);
  t.mm = static_cast<int>(ms / 60000L % 60);
  t.ss = static_cast<int>(ms / 1000L % 60);
  t.ms = static_cast<int>(ms % 1000);
  return t;
}

bool put(std::FILE* f, const Packet& p) { return std::fwrite(p.data(), 1, p.size(), f) == p.size(); }

// The event's traces as miniSEED records, channel by channel.
bool write_mseed(std::FILE* f, unsigned event, const std::vector<std::int32_t> (&tr)[kChannels]) {
  for (unsigned c = 0; c < kChannels; ++c) {
    MSRecord* msr = msr_init(nullptr);
    std::strcpy(msr->network, "XX");
    std::strcpy(msr->station, "BNCH");
    std::snprintf(msr->channel, sizeof msr->channel, "HH%c", "ZNE"[c]);
    msr->starttime = ms_time2hptime(2024, 100 + static_cast<int>(event / 24), static_cast<int>(event % 24), 0, 0, 0);
    msr->samprate = kRate;
    msr->reclen = 4096;
    msr->encoding = DE_STEIM2;
    msr->byteorder = 1;
    msr->numsamples = static_cast<std::int64_t>(tr[c].size());
    msr->datasamples = std::malloc(tr[c].size() * sizeof(std::int32_t));  // freed by msr_free
    std::memcpy(msr->datasamples, tr[c].data(), tr[c].size() * sizeof(std::int32_t));
    msr->sampletype = 'i';
    std::int64_t packed = 0;
    auto out = [](char* rec, int len, void* fp) { std::fwrite(rec, 1, static_cast<std::size_t>(len), static_cast<std::FILE*>(fp)); };
    const bool ok = msr_pack(msr, out, f, &packed, 1, 0) >= 0 && packed == msr->numsamples;
    msr_free(&msr);
    if (!ok) return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: %s out.pkt out.mseed [events] [seconds-per-event]\n", argv[0]);
    return 2;
  }
  const unsigned events = argc > 3 ? static_cast<unsigned>(std::atoi(argv[3])) : 28;
  const std::size_t n = (argc > 4 ? static_cast<std::size_t>(std::atol(argv[4])) : 3600) * kRate;
  std::FILE* pkt = std::fopen(argv[1], "wb");
  std::FILE* mseed = std::fopen(argv[2], "wb");
  if (!pkt || !mseed) {
    std::perror("corpus");
    return 1;
  }
  ms_loginit(nullptr, nullptr, [](char*) {}, nullptr);
  unsigned seq = 1;
  auto next_seq = [&seq] { const unsigned s = seq; seq = seq % 9999 + 1; return s; };
  bool ok = true;
  for (unsigned e = 0; e < events && ok; ++e) {
    const unsigned evt = e + 1;
    EventInfo info;
    info.station = "BNCH";
    info.rate = " 100";
    ok = put(pkt, make_event_packet("EH", kUnit, at(e, 0), next_seq(), evt, 0, false, info));
    std::vector<std::int32_t> tr[kChannels];
    for (unsigned c = 0; c < kChannels; ++c) tr[c] = trace(e, c, n);
    std::size_t pos[kChannels] = {};
    std::optional<std::int32_t> prev[kChannels];
    // Channels take turns, one packet each, as a recorder interleaves them.
    for (bool more = true; more && ok;) {
      more = false;
      for (unsigned c = 0; c < kChannels && ok; ++c) {
        if (pos[c] == n) continue;
        Packet p = make_header("DT", kUnit, at(e, pos[c]), next_seq());
        const std::size_t used = steim_encode(p, SteimLevel::k2, tr[c].data() + pos[c], std::min<std::size_t>(n - pos[c], 9999), prev[c]);
        put_ext(p, evt, 0, c, static_cast<unsigned>(used), 0, steim_format(SteimLevel::k2));
        ok = used > 0 && put(pkt, p);
        pos[c] += used;
        prev[c] = tr[c][pos[c] - 1];
        more = more || pos[c] < n;
      }
    }
    ok = ok && put(pkt, make_event_packet("ET", kUnit, at(e, n), next_seq(), evt, 0, false, info));
    ok = ok && write_mseed(mseed, e, tr);
  }
  ok = ok && !std::ferror(pkt) && !std::ferror(mseed);  // the record writer's fwrite included
  ok = std::fclose(pkt) == 0 && ok;
  ok = std::fclose(mseed) == 0 && ok;
  if (!ok) {
    std::fprintf(stderr, "corpus: cannot write the corpus\n");
    return 1;
  }
  std::printf("%llu\n", static_cast<unsigned long long>(events) * kChannels * n);
  return 0;
}

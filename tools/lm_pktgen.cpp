// Writes a realistic sample input: several units, events and channels, every packet type.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "pktkit/packet_builder.hpp"
#include "pktkit/steim_encoder.hpp"

using namespace pktkit;

namespace {

// A damped sine burst with a little deterministic noise.
std::int32_t signal(unsigned chan, unsigned i, int amplitude) {
  const double t = i / 100.0;
  const double env = std::exp(-t / 3.0);
  const double noise = static_cast<double>((i * 2654435761u + chan * 40503u) % 97) - 48.0;
  return static_cast<std::int32_t>(amplitude * env * std::sin(2 * M_PI * (1.5 + chan) * t) + noise);
}

PktTime advance(PktTime t, int ms) {
  long total = ((static_cast<long>(t.hh) * 60 + t.mm) * 60 + t.ss) * 1000 + t.ms + ms;
  t.ms = static_cast<int>(total % 1000);
  total /= 1000;
  t.ss = static_cast<int>(total % 60);
  total /= 60;
  t.mm = static_cast<int>(total % 60);
  t.hh = static_cast<int>(total / 60 % 24);
  return t;
}

// The 16-digit time text that event headers carry for their first and last samples.
std::string time_text(PktTime t) {
  char out[32];  // room for any int, though the generator's fields are all in range
  std::snprintf(out, sizeof out, "20%02d%03d%02d%02d%02d%03d", t.yy, t.ddd, t.hh, t.mm, t.ss, t.ms);
  return out;
}

Packet text_packet(const char* type, std::uint16_t unit, PktTime t, unsigned seq, const std::string& body) {
  Packet p = make_header(type, unit, t, seq);
  for (std::size_t i = 16; i < p.size(); ++i) p[i] = ' ';
  put_text(p, 24, body);
  put_bcd(p, 12, 2, static_cast<unsigned>(24 + body.size()));
  return p;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s output.pkt [events-per-unit] [packets-per-channel]\n", argv[0]);
    return 2;
  }
  const int events = argc > 2 ? std::atoi(argv[2]) : 2;
  const int per_channel = argc > 3 ? std::atoi(argv[3]) : 4;
  const std::uint16_t units[] = {0x9A3F, 0x0A2B};
  std::vector<std::uint8_t> out;
  unsigned seq[2] = {1, 1};

  for (int u = 0; u < 2; ++u) {
    const PktTime t0{9, 32 + u, 14, 5, 30, 250};
    append(out, text_packet("SH", units[u], t0, seq[u]++, "BATTERY 12.6V TEMP 21C\r\nGPS LOCKED\r\n"));
    Packet sc = text_packet("SC", units[u], t0, seq[u]++, "");
    put_text(sc, 16, "01FIELD TEST");
    append(out, sc);
    append(out, text_packet("OM", units[u], t0, seq[u]++, ""));
    append(out, text_packet("DS", units[u], t0, seq[u]++, ""));
    append(out, text_packet("AD", units[u], t0, seq[u]++, ""));
    append(out, text_packet("CD", units[u], t0, seq[u]++, ""));
    append(out, text_packet("DR", units[u], t0, seq[u]++, ""));
    append(out, text_packet("FD", units[u], t0, seq[u]++, ""));
    append(out, make_event_packet("NH", units[u], t0, seq[u]++, 0, 0, false, EventInfo{}));
  }

  for (int e = 0; e < events; ++e) {
    for (int u = 0; u < 2; ++u) {
      const unsigned evt = static_cast<unsigned>(1 + e);
      PktTime t{9, 32 + u, 14, 5 + 2 * e, 30, 250};
      EventInfo info;
      info.station = u == 0 ? "PIER" : "    ";
      info.station_ext = u == 0 ? '1' : ' ';
      info.bit_wght = {"1.589 uV", "1.589 uV", "1.589 uV", "1.589 uV", "0.298 uV"};
      info.tru_wght = {"1.592 uV", "        ", "1.590 uV", "1.589 uV", "0.298 uV"};
      info.gain = "12311";
      info.res = "33333";
      info.fsv = "22222";
      info.seed = {"HNZ ", "HNN ", "HNE ", "HHZ ", "HHN "};
      info.sfsv = "33333";
      info.svpu = {"1.2500", "1.2500", "1.2500", "1.2500", "1.2500"};
      info.units = "11111";
      info.position = "N 3403.132W11814.622    71";
      // Each event its own first-sample time, so gathered files of different events never share a name.
      info.first_time = time_text(t);
      info.last_time = time_text(advance(t, per_channel * 1000 - 10));
      append(out, make_event_packet("EH", units[u], t, seq[u]++, evt, 0, false, info));
      unsigned n = 0;
      // Channels 0-1: 16-bit, 2: 32-bit, 3: Steim-1, 4: Steim-2; the Steim ones carry their last sample on.
      std::optional<std::int32_t> prev[5];
      for (int k = 0; k < per_channel; ++k) {
        for (unsigned ch = 0; ch < 5; ++ch) {
          std::vector<std::int32_t> s(100);
          for (unsigned i = 0; i < 100; ++i) s[i] = signal(ch, n + i, ch == 2 || ch == 4 ? 300000 : 8000);
          if (ch >= 3) {
            append(out, make_dt_steim(ch == 3 ? SteimLevel::k1 : SteimLevel::k2, units[u], t, seq[u]++, evt, 0, ch, s,
                                      prev[ch]));
            prev[ch] = s.back();
          } else {
            append(out, ch == 2 ? make_dt32(units[u], t, seq[u]++, evt, 0, ch, s)
                                : make_dt16(units[u], t, seq[u]++, evt, 0, ch, s));
          }
        }
        n += 100;
        t = advance(t, 1000);
      }
      append(out, make_event_packet("ET", units[u], t, seq[u]++, evt, 0, false, info));
    }
  }
  for (int u = 0; u < 2; ++u)
    append(out, make_event_packet("NT", units[u], PktTime{9, 33, 23, 0, 0, 0}, seq[u]++, 0, 0, false, EventInfo{}));
  if (!write_file(argv[1], out)) {
    std::perror(argv[1]);
    return 1;
  }
  std::printf("%s: %zu packets\n", argv[1], out.size() / 1024);
  return 0;
}

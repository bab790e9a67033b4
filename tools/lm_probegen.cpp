// Writes the hostile inputs of the reliability probes:
//   lm_probegen units N out.pkt      N SH packets, each from another unit ID
//   lm_probegen events E C out.pkt   E events of one unit with C channels each, one DT packet per
//                                    channel, no event ever closed
//   lm_probegen wide C out.pkt       one event with C channels written at once, 60 Steim-2 packets
//                                    each of the most samples a packet holds: every write buffer
//                                    and the read-ahead ring at their largest
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "pktkit/packet_builder.hpp"
#include "pktkit/steim_encoder.hpp"

using namespace pktkit;

int main(int argc, char** argv) {
  const bool units = argc == 4 && std::strcmp(argv[1], "units") == 0;
  const bool events = argc == 5 && std::strcmp(argv[1], "events") == 0;
  const bool wide = argc == 4 && std::strcmp(argv[1], "wide") == 0;
  if (!units && !events && !wide) {
    std::fprintf(stderr, "usage: %s units N out.pkt | events E C out.pkt | wide C out.pkt\n", argv[0]);
    return 2;
  }
  std::vector<std::uint8_t> out;
  const PktTime t{9, 32, 14, 5, 30, 250};
  if (units) {
    const long n = std::atol(argv[2]);
    for (long i = 0; i < n; ++i) {
      Packet p = make_header("SH", static_cast<std::uint16_t>(i + 1), t, 1);
      put_text(p, 24, "BATTERY 12.6V\r\n");
      append(out, p);
    }
  } else if (wide) {
    const unsigned n_chn = static_cast<unsigned>(std::atoi(argv[2]));
    append(out, make_event_packet("EH", 0x1234, t, 1, 1, 0, false, {}));
    // Differences within 4 bits: seven to a data word, 1561 samples to a packet.
    std::vector<std::int32_t> samples(1561);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<std::int32_t>(i % 8);
    unsigned seq = 2;
    for (int k = 0; k < 60; ++k)
      for (unsigned c = 0; c < n_chn; ++c)
        append(out, make_dt_steim(SteimLevel::k2, 0x1234, t, seq++ % 10000, 1, 0, c, samples, samples.back()));
  } else {
    const unsigned n_evt = static_cast<unsigned>(std::atoi(argv[2]));
    const unsigned n_chn = static_cast<unsigned>(std::atoi(argv[3]));
    const std::vector<std::int32_t> samples = {1, -2, 3, -4, 5, -6, 7, -8, 9, -10};
    unsigned seq = 1;
    for (unsigned e = 1; e <= n_evt; ++e) {
      // Each event starts at another millisecond, so every channel gets a name of its own.
      const PktTime te{t.yy, t.ddd, t.hh, t.mm, static_cast<int>(e / 1000 % 60), static_cast<int>(e % 1000)};
      for (unsigned c = 0; c < n_chn; ++c) append(out, make_dt16(0x1234, te, seq++ % 10000, e, 0, c, samples));
    }
  }
  if (!write_file(argv[argc - 1], out)) {
    std::perror(argv[argc - 1]);
    return 1;
  }
  return 0;
}

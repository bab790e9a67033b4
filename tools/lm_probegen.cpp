// Writes the hostile inputs of the reliability probes:
//   lm_probegen units N out.pkt      N SH packets, each from another unit ID
//   lm_probegen events E C out.pkt   E events of one unit with C channels each, one DT packet per
//                                    channel, no event ever closed
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "pktkit/packet_builder.hpp"

using namespace pktkit;

int main(int argc, char** argv) {
  const bool units = argc == 4 && std::strcmp(argv[1], "units") == 0;
  const bool events = argc == 5 && std::strcmp(argv[1], "events") == 0;
  if (!units && !events) {
    std::fprintf(stderr, "usage: %s units N out.pkt | events E C out.pkt\n", argv[0]);
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

#include "pktkit/steim_encoder.hpp"

#include <algorithm>

namespace pktkit {

namespace {

// One way of filling a data word: its code, the nibble in bits 31-30 (-1: none), and how many
// differences of how many bits it holds, packed at the bottom of the word, first difference highest.
struct Layout {
  unsigned code;
  int nibble;
  int count;
  int bits;
};

// Densest first, so that a greedy choice packs the most differences per word.
constexpr Layout kSteim1[] = {{1, -1, 4, 8}, {2, -1, 2, 16}, {3, -1, 1, 32}};
constexpr Layout kSteim2[] = {{3, 2, 7, 4},  {3, 1, 6, 5},  {3, 0, 5, 6}, {1, -1, 4, 8},
                              {2, 3, 3, 10}, {2, 2, 2, 15}, {2, 1, 1, 30}};

bool fits(std::uint32_t d, int bits) {
  if (bits >= 32) return true;
  const std::int64_t v = static_cast<std::int32_t>(d);
  return v >= -(std::int64_t{1} << (bits - 1)) && v < (std::int64_t{1} << (bits - 1));
}

std::uint32_t pack(const Layout& l, const std::uint32_t* d) {
  const std::uint32_t mask = l.bits >= 32 ? 0xFFFFFFFFu : (1u << l.bits) - 1u;
  std::uint32_t word = l.nibble >= 0 ? static_cast<std::uint32_t>(l.nibble) << 30 : 0;
  for (int k = 0; k < l.count; ++k) word |= (d[k] & mask) << (l.bits * (l.count - 1 - k));
  return word;
}

}  // namespace

std::size_t steim_encode(Packet& p, SteimLevel level, const std::int32_t* samples, std::size_t n,
                         std::optional<std::int32_t> prev) {
  constexpr int kFrames = 15, kFrameOff = 64;
  std::fill(p.begin() + kFrameOff, p.end(), std::uint8_t{0});

  // Differences in unsigned arithmetic, so that they wrap as the decoder's integration does.
  std::vector<std::uint32_t> diff(n);
  for (std::size_t i = 0; i < n; ++i)
    diff[i] = i == 0 ? (prev ? static_cast<std::uint32_t>(samples[0]) - static_cast<std::uint32_t>(*prev) : 0u)
                     : static_cast<std::uint32_t>(samples[i]) - static_cast<std::uint32_t>(samples[i - 1]);

  const Layout* table = level == SteimLevel::k1 ? kSteim1 : kSteim2;
  const std::size_t layouts = level == SteimLevel::k1 ? std::size(kSteim1) : std::size(kSteim2);

  std::size_t used = 0;
  bool stopped = false;
  for (int f = 1; f <= kFrames && !stopped; ++f) {
    std::uint32_t control = 0;
    for (int w = f == 1 ? 3 : 1; w < 16 && used < n; ++w) {
      const Layout* pick = nullptr;
      for (std::size_t li = 0; li < layouts && !pick; ++li) {
        const Layout& l = table[li];
        if (n - used < static_cast<std::size_t>(l.count)) continue;
        bool ok = true;
        for (int k = 0; k < l.count && ok; ++k) ok = fits(diff[used + static_cast<std::size_t>(k)], l.bits);
        if (ok) pick = &l;
      }
      if (!pick) {  // a difference too wide for Steim-2
        stopped = true;
        break;
      }
      put_be32(p, kFrameOff * f + 4 * w, pack(*pick, diff.data() + used));
      control |= pick->code << (30 - 2 * w);
      used += static_cast<std::size_t>(pick->count);
    }
    put_be32(p, kFrameOff * f, control);
    if (used == n) break;
  }

  const std::int32_t none = prev.value_or(0);
  put_be32(p, kFrameOff + 4, static_cast<std::uint32_t>(used ? samples[0] : none));
  put_be32(p, kFrameOff + 8, static_cast<std::uint32_t>(used ? samples[used - 1] : none));
  return used;
}

Packet make_dt_steim(SteimLevel level, std::uint16_t unit, PktTime t, unsigned seq, unsigned event, unsigned stream,
                     unsigned channel, const std::vector<std::int32_t>& samples, std::optional<std::int32_t> prev,
                     std::size_t* used) {
  Packet p = make_header("DT", unit, t, seq);
  const std::size_t n = steim_encode(p, level, samples.data(), samples.size(), prev);
  put_ext(p, event, stream, channel, static_cast<unsigned>(n), 0, steim_format(level));
  if (used) *used = n;
  return p;
}

}  // namespace pktkit

// The packet kit's own Steim encoder against the decoders: random traces split into consecutive
// packets of one channel must come back sample for sample, with no report.
#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "decode/steim_fixture.hpp"
#include "packet/fields.hpp"
#include "pktkit/steim_encoder.hpp"
#include "run/globals.hpp"

namespace {

using decode_test::decode;
using decode_test::LoggedChannel;
using decode_test::random_walk;
using pktkit::SteimLevel;

class SteimRoundTrip : public testing::Test {
 protected:
  void SetUp() override {
    lm::reset_globals();
    lm::G.Log_on = 1;
  }
  void TearDown() override { lm::reset_globals(); }
};

// Encodes the whole trace packet after packet (each as full as the frames allow, or `per_packet`)
// and decodes every packet on one channel; returns the samples decoded, in order.
std::vector<std::int32_t> round_trip(SteimLevel level, const std::vector<std::int32_t>& trace, std::size_t per_packet,
                                     LoggedChannel& lc, std::size_t* packets = nullptr) {
  std::vector<std::int32_t> back;
  std::optional<std::int32_t> prev;
  std::size_t at = 0, count = 0;
  while (at < trace.size()) {
    const std::vector<std::int32_t> chunk(trace.begin() + static_cast<std::ptrdiff_t>(at),
                                          trace.begin() + static_cast<std::ptrdiff_t>(std::min(trace.size(), at + per_packet)));
    std::size_t used = 0;
    const auto p = pktkit::make_dt_steim(level, 0x1234, {}, static_cast<unsigned>(count + 1), 1, 0, 0, chunk, prev, &used);
    EXPECT_EQ(p[23], level == SteimLevel::k1 ? 0xC0 : 0xC2);
    EXPECT_EQ(lm::hdr::kSamples.value(p.data()), used);
    if (used == 0) break;
    const auto s = decode(level == SteimLevel::k1 ? lm::Buf_c0 : lm::Buf_c2, p, lc.chn());
    back.insert(back.end(), s.begin(), s.end());
    prev = trace[at + used - 1];
    at += used;
    ++count;
  }
  if (packets) *packets = count;
  return back;
}

TEST_F(SteimRoundTrip, RandomTracesComeBackExactly) {
  const struct {
    SteimLevel level;
    std::vector<int> widths;
    std::int32_t start;
    std::int64_t lo, hi;
  } cases[] = {
      {SteimLevel::k1, {8}, 0, INT32_MIN, INT32_MAX},
      {SteimLevel::k1, {8, 16}, -30000, INT32_MIN, INT32_MAX},
      {SteimLevel::k1, {4, 8, 16, 32}, 7, INT32_MIN, INT32_MAX},
      {SteimLevel::k1, {32}, INT32_MAX, INT32_MIN, INT32_MAX},
      {SteimLevel::k2, {4}, 1, INT32_MIN, INT32_MAX},
      {SteimLevel::k2, {4, 5, 6}, 0, INT32_MIN, INT32_MAX},
      {SteimLevel::k2, {4, 5, 6, 8, 10, 15, 30}, -123456, INT32_MIN, INT32_MAX},
      {SteimLevel::k2, {15, 30}, INT32_MAX, INT32_MAX - (1 << 30), INT32_MAX},
      {SteimLevel::k2, {10, 30}, INT32_MIN, INT32_MIN, INT32_MIN + (1 << 30)},
  };
  std::uint32_t seed = 1;
  for (const auto& c : cases) {
    for (std::size_t per_packet : {std::size_t{5000}, std::size_t{100}, std::size_t{1}}) {
      const auto trace = random_walk(seed++, 5000, c.start, c.widths, c.lo, c.hi);
      LoggedChannel lc;
      std::size_t packets = 0;
      EXPECT_EQ(round_trip(c.level, trace, per_packet, lc, &packets), trace) << "seed " << seed - 1;
      EXPECT_GE(packets, trace.size() / std::min<std::size_t>(per_packet, 1561));
      EXPECT_EQ(lc.chn()->last, trace.back());
      EXPECT_EQ(lc.log(), "") << "seed " << seed - 1 << ": no packet may be reported";
    }
  }
}

TEST_F(SteimRoundTrip, FullPacketsHoldWhatTheFramesAllow) {
  const std::vector<std::int32_t> flat(3000, 42);
  pktkit::Packet p{};
  EXPECT_EQ(pktkit::steim_encode(p, SteimLevel::k1, flat.data(), flat.size(), std::nullopt), 892u);
  EXPECT_EQ(pktkit::steim_encode(p, SteimLevel::k2, flat.data(), flat.size(), std::nullopt), 1561u);
  // Full-width differences: one per word.
  const auto wide = random_walk(9, 400, 0, {32});
  EXPECT_EQ(pktkit::steim_encode(p, SteimLevel::k1, wide.data(), wide.size(), std::nullopt), 223u);
}

TEST_F(SteimRoundTrip, Steim2StopsBeforeADifferenceWiderThan30Bits) {
  const std::vector<std::int32_t> trace{5, 6, 7, 7 + (1 << 29), 8};
  pktkit::Packet p{};
  EXPECT_EQ(pktkit::steim_encode(p, SteimLevel::k2, trace.data(), trace.size(), std::nullopt), 3u);
  EXPECT_EQ(pktkit::steim_encode(p, SteimLevel::k2, trace.data(), trace.size(), INT32_MIN), 0u);
  // An empty packet carries the previous sample as X0 and Xn and passes the decoder's checks.
  const auto empty = pktkit::make_dt_steim(SteimLevel::k2, 1, {}, 1, 1, 0, 0, {}, -77);
  LoggedChannel lc;
  lc.chn()->last = -77;
  EXPECT_TRUE(decode(lm::Buf_c2, empty, lc.chn()).empty());
  EXPECT_EQ(lc.chn()->last, -77);
  EXPECT_EQ(lc.log(), "");
}

}  // namespace

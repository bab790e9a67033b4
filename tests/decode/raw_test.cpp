// Uncompressed 16- and 32-bit samples: big-endian, sign extension, and the caps of the header count.
#include <gtest/gtest.h>

#include <vector>

#include "decode/decoders.hpp"
#include "decode/steim_fixture.hpp"

namespace {

using decode_test::decode;
using pktkit::Packet;

Packet raw_packet(unsigned n_hdr, const std::vector<std::uint8_t>& data) {
  Packet p = pktkit::make_header("DT", 1, {}, 1);
  pktkit::put_ext(p, 1, 0, 0, n_hdr, 0, 0x16);
  for (std::size_t i = 0; i < data.size(); ++i) p[24 + i] = data[i];
  return p;
}

TEST(RawSamples, BigEndianAndSignExtended) {
  const struct {
    lm::Decoder dec;
    std::vector<std::uint8_t> bytes;
    std::vector<std::int32_t> want;
  } cases[] = {
      {lm::Buf_16, {0xFF, 0xFE, 0x7F, 0xFF, 0x80, 0x00, 0x00, 0x01, 0x01, 0x00}, {-2, 32767, -32768, 1, 256}},
      {lm::Buf_32,
       {0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x01, 0x00, 0x80, 0x00, 0x00, 0x00, 0x7F, 0xFF, 0xFF, 0xFF, 0x12, 0x34,
        0x56, 0x78},
       {-1, 256, INT32_MIN, INT32_MAX, 0x12345678}},
  };
  for (const auto& c : cases) {
    const Packet p = raw_packet(static_cast<unsigned>(c.want.size()), c.bytes);
    EXPECT_EQ(decode(c.dec, p, nullptr), c.want);
  }
}

TEST(RawSamples, HeaderCountIsCappedAtWhatFits) {
  const struct {
    lm::Decoder dec;
    std::uint16_t bcd;  // the count bytes as stored
    std::uint32_t want;
  } cases[] = {
      {lm::Buf_16, 0x0000, 0},   {lm::Buf_16, 0x0003, 3},   {lm::Buf_16, 0x0500, 500}, {lm::Buf_16, 0x0501, 500},
      {lm::Buf_16, 0x9999, 500}, {lm::Buf_16, 0xFFFF, 500}, {lm::Buf_32, 0x0000, 0},   {lm::Buf_32, 0x0250, 250},
      {lm::Buf_32, 0x0251, 250}, {lm::Buf_32, 0x9999, 250}, {lm::Buf_32, 0x00FF, 165}, {lm::Buf_32, 0xFFFF, 250},
  };
  for (const auto& c : cases) {
    Packet p = raw_packet(0, {});
    pktkit::put_be16(p, 20, c.bcd);  // nibbles above 9 are taken at face value, then bounded
    for (std::size_t i = 24; i < p.size(); ++i) p[i] = static_cast<std::uint8_t>(i);
    std::uint32_t count = 0;
    const auto s = decode(c.dec, p, nullptr, &count);
    EXPECT_EQ(count, c.want) << std::hex << c.bcd;
    if (!s.empty()) {  // the last sample comes from the last bytes of the packet when the cap applies
      const std::size_t width = c.dec == lm::Buf_16 ? 2 : 4;
      const std::size_t at = 24 + width * (s.size() - 1);
      const std::int32_t lo = p[at + width - 1], hi = p[at + width - 2];
      EXPECT_EQ(s.back() & 0xFFFF, (hi << 8 | lo)) << std::hex << c.bcd;
    }
  }
}

}  // namespace

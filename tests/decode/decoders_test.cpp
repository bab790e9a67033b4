// The sample decoders: 16/32-bit samples; Steim frames built by hand (every word layout, the first
// difference, the frame walk, the end checks and their report); Steim channels through the converter.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "decode/steim_fixture.hpp"
#include "log/log_file.hpp"
#include "log/log_fixture.hpp"
#include "pktkit/steim_encoder.hpp"

namespace {

using decode_test::decode;
using pktkit::Packet;

// A DT packet with Steim frames written word by word (X0 and Xn in frame 1 words 1 and 2).
struct Frames {
  Packet p = pktkit::make_header("DT", 0x1234, {9, 32, 1, 2, 3, 400}, 5);
  std::uint32_t ctl[16] = {};
  int f = 1, w = 3;
  Frames(std::uint8_t format, unsigned n_hdr, std::uint32_t x0, std::uint32_t xn) {
    pktkit::put_ext(p, 7, 0, 2, n_hdr, 0, format);
    pktkit::put_be32(p, 68, x0);
    pktkit::put_be32(p, 72, xn);
  }
  Frames& at(int fr, int wd, unsigned code, std::uint32_t word) {  // word wd of frame fr, its code in word 0
    pktkit::put_be32(p, 64 * fr + 4 * wd, word);
    pktkit::put_be32(p, 64 * fr, ctl[fr] |= code << (30 - 2 * wd));
    return *this;
  }
  Frames& add(unsigned code, std::uint32_t word) {  // the next data word, from frame 1 word 3 on
    at(f, w, code, word);
    if (++w == 16) f++, w = 1;
    return *this;
  }
};

lm::Decoder steim(const Packet& p) { return p[23] == 0xC0 ? lm::Buf_c0 : lm::Buf_c2; }

// The hex dump of a whole packet as the unit log shows it after a report.
std::string packet_dump(const Packet& p) {
  std::string out;
  char s[8];
  for (int off = 0; off < 1024; off += 16) {
    out += (std::snprintf(s, sizeof s, "%03X", off), std::string("     ") + s + "   ");
    for (int i = 0; i < 16; ++i) out += (std::snprintf(s, sizeof s, i == 7 ? "%02X - " : "%02X ", p[off + i]), s);
    out += "  ";
    for (int i = 0; i < 16; ++i) out += std::isprint(p[off + i]) ? char(p[off + i]) : '.';
    out += "\r\n";
  }
  return out + "\r\n";
}

TEST(RawSamples, BigEndianSignExtendedAndCappedAtWhatFits) {
  Packet p = pktkit::make_header("DT", 1, {}, 1);
  const std::uint8_t bytes[] = {0xFF, 0xFE, 0x7F, 0xFF, 0x80, 0x00, 0x00, 0x00, 0x7F, 0xFF, 0xFF, 0xFF, 0x12, 0x34};
  std::copy(std::begin(bytes), std::end(bytes), p.begin() + 24);
  pktkit::put_bcd(p, 20, 2, 5);
  EXPECT_EQ(decode(lm::Buf_16, p), (std::vector<std::int32_t>{-2, 32767, -32768, 0, 32767}));
  pktkit::put_bcd(p, 20, 2, 3);
  EXPECT_EQ(decode(lm::Buf_32, p), (std::vector<std::int32_t>{-2 << 16 | 0x7FFF, INT32_MIN, INT32_MAX}));
  const struct { lm::Decoder dec; std::uint16_t bcd; std::uint32_t want; } cases[] = {  // bcd: the count bytes
      {lm::Buf_16, 0x0001, 1},   {lm::Buf_16, 0x0500, 500}, {lm::Buf_16, 0x0501, 500}, {lm::Buf_16, 0x9999, 500},
      {lm::Buf_16, 0xFFFF, 500}, {lm::Buf_32, 0x0250, 250}, {lm::Buf_32, 0x0251, 250}, {lm::Buf_32, 0x00FF, 165},
      {lm::Buf_32, 0xFFFF, 250}};
  for (std::size_t i = 24; i < p.size(); ++i) p[i] = static_cast<std::uint8_t>(i * 7);
  for (const auto& c : cases) {
    pktkit::put_be16(p, 20, c.bcd);  // nibbles above 9 are taken at face value, then bounded
    const auto s = decode(c.dec, p);
    ASSERT_EQ(s.size(), c.want) << std::hex << c.bcd;
    const std::size_t end = 24 + (c.dec == lm::Buf_16 ? 2 : 4) * s.size();  // the last sample's bytes end here
    EXPECT_EQ(s.back() & 0xFFFF, p[end - 2] << 8 | p[end - 1]) << std::hex << c.bcd;
  }
}

// Every word layout with the differences it yields, after a leading word and as the first data word
// (whose first difference only fixes the start so that sample 0 is X0).
TEST(SteimTest, EveryWordLayout) {
  const struct { std::uint8_t format; unsigned code; std::uint32_t word; std::vector<std::int32_t> diffs; } words[] = {
      {0xC0, 1, 0xFF01807Fu, {-1, 1, -128, 127}}, {0xC0, 2, 0x7FFF8000u, {32767, -32768}}, {0xC0, 2, 0xFFFF0001u, {-1, 1}},
      {0xC0, 3, 0x80000000u, {INT32_MIN}}, {0xC0, 3, 0x7FFFFFFFu, {INT32_MAX}}, {0xC0, 0, 0x12345678u, {}},
      // Steim-2 code 1: bytes; code 2: one 30-bit, two 15-bit, three 10-bit differences.
      {0xC2, 1, 0xFF01807Fu, {-1, 1, -128, 127}}, {0xC2, 2, 0x5FFFFFFFu, {536870911}}, {0xC2, 2, 0x7FFFFFFFu, {-1}},
      {0xC2, 2, 0x60000000u, {-536870912}}, {0xC2, 2, 0x8000FFFFu, {1, -1}}, {0xC2, 2, 0xA0003FFFu, {-16384, 16383}},
      {0xC2, 2, 0xE007FFFFu, {-512, 511, -1}}, {0xC2, 2, 0xC0100401u, {1, 1, 1}},
      // Code 3: five 6-bit, six 5-bit, seven 4-bit differences (bits 29-28 unused).
      {0xC2, 3, 0x207FF001u, {-32, 31, -1, 0, 1}}, {0xC2, 3, 0x60FF803Eu, {-16, 15, -1, 0, 1, -2}},
      {0xC2, 3, 0xB8701F2Eu, {-8, 7, 0, 1, -1, 2, -2}}, {0xC2, 0, 0xFFFFFFFFu, {}}};
  for (const auto& c : words) {
    for (const bool first : {false, true}) {
      if (first && c.diffs.empty()) continue;
      std::vector<std::int32_t> want{first ? -70000 : 1000};
      for (std::size_t i = first; i < c.diffs.size(); ++i) want.push_back(int(unsigned(want.back()) + unsigned(c.diffs[i])));
      Frames fr(c.format, unsigned(want.size()), unsigned(want[0]), unsigned(want.back()));
      if (!first) fr.add(c.format == 0xC0 ? 3 : 2, c.format == 0xC0 ? 0 : 0x40000000u);  // one difference of 0
      std::int32_t last = 0;
      EXPECT_EQ(decode(steim(fr.p), fr.add(c.code, c.word).p, &last), want) << std::hex << c.word << " first " << first;
      EXPECT_EQ(last, want.back());
    }
  }
}

TEST(SteimTest, BitFieldHelpers) {
  const struct { std::uint32_t word; int shift, nbits; std::int32_t want; } cases[] = {
      {0x5FFFFFFF, 0, 30, (1 << 29) - 1}, {0x8000FFFF, 15, 15, 1}, {0x8000FFFF, 0, 15, -1}, {0x40000000, 30, 2, 1},
      {0x8FFFFFFF, 24, 4, -1}, {0x00000041, 0, 6, 1}, {0xFFFFFFFF, 0, 32, -1}, {0x12345678, 0, 0, 0},
      {0x12345678, 33, 4, 0}, {0x12345678, 0, 33, 0}};
  for (const auto& c : cases) EXPECT_EQ(lm::Steim2_get_bits(c.word, c.shift, c.nbits), c.want) << std::hex << c.word;
  const std::uint8_t control[4] = {0x1B, 0xE4, 0x00, 0xFF};
  std::uint8_t codes[16];
  lm::C0_flag_cvt(control, codes);
  EXPECT_EQ(std::vector<int>(codes, codes + 16), (std::vector<int>{0, 1, 2, 3, 3, 2, 1, 0, 0, 0, 0, 0, 3, 3, 3, 3}));
}

TEST(SteimTest, AllFifteenFramesAreDecodedUpToTheLastByte) {
  const struct { std::uint8_t format; unsigned code; std::uint32_t word; unsigned per_word; } cases[] = {
      {0xC0, 1, 0x01010101u, 4}, {0xC2, 3, 0x81111111u, 7}, {0xC2, 2, 0xC0100401u, 3}};
  for (const auto& c : cases) {
    const unsigned n = 223 * c.per_word;  // 13 words in frame 1, 15 in each of frames 2-15
    Frames fr(c.format, n, unsigned(-400), n - 401);
    for (int i = 0; i < 223; ++i) fr.add(c.code, c.word);
    std::int32_t last = 0;
    const auto s = decode(steim(fr.p), fr.p, &last);
    ASSERT_EQ(s.size(), n);
    for (unsigned i = 0; i < n; ++i) ASSERT_EQ(s[i], int(i) - 400) << i;
    EXPECT_EQ(last, int(n) - 401);
  }
}

std::string report(const char* read, const char* calc) {
  return std::string("     Read start ") + read + "\r\n     Calc start " + calc + "\r\n";
}

// A packet failing a check is reported (with its dump) and the channel goes on from Xn.
TEST(SteimTest, EndChecksAndTheirReport) {
  // log: the report lines, empty when the packet passes; out: what goes to stdout.
  const struct { const char* name; Frames fr; std::int32_t last_before; std::vector<std::int32_t> samples;
    std::string log; std::int32_t last_after; std::string out = ""; } cases[] = {
      {"count differs", Frames(0xC0, 10, 0x10, 0x1B).add(1, 0x00010101u).add(1, 0x01010101u).add(1, 0x01010101u),
       0, {16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27},
       report("0x00000010  stop 0x0000001B  samples 10", "0x00000000  stop 0x0000001B  samples 12"), 27},
      {"last sample differs from Xn", Frames(0xC0, 2, 0xFFFFFFFBu, 0xFFFFFFF8u).add(2, 0x0001FFFEu), -6, {-5, -7},
       report("0xFFFFFFFB  stop 0xFFFFFFF8  samples 2", "0xFFFFFFFB  stop 0xFFFFFFF9  samples 2"), -8},
      {"continuity broken", Frames(0xC0, 4, 104, 107).add(1, 0x03010101u), 100, {104, 105, 106, 107},
       report("0x00000068  stop 0x0000006B  samples 4", "0x00000067  stop 0x0000006B  samples 4"), 107},
      {"continuity not judged after 0", Frames(0xC0, 4, 104, 107).add(1, 0x03010101u), 0, {104, 105, 106, 107}, "", 107},
      {"undefined nibbles", Frames(0xC2, 15, 50, 60).add(3, 0x41041u).add(3, 0xC0000000u).add(2, 5).add(1, 0x01010101u),
       0, {50, 51, 52, 53, 54, 55, 56, 57, 58},
       report("0x00000032  stop 0x0000003C  samples 15", "0x00000000  stop 0x0000003A  samples 9"), 60,
       "Error in Steim2 W-type (3) for C=2\nError in Steim2 W-type (0) for C=2\n"},
      {"undefined first word: d0 is the whole word", Frames(0xC2, 4, 10, 0x4000000Du).add(3, 0xC0000001u).add(1, 0x01010101u),
       2, {0x4000000A, 0x4000000B, 0x4000000C, 0x4000000D},
       report("0x0000000A  stop 0x4000000D  samples 4", "0xC0000003  stop 0x4000000D  samples 4"), 0x4000000D,
       "Error in Steim2 W-type (3) for C=2\n"},
      {"Steim-2 d0: first word with a code", Frames(0xC2, 4, 100, 103).at(1, 3, 0, 0x12345678u).at(1, 4, 0, ~0u)
       .at(1, 5, 1, 0x05010101u), 95, {100, 101, 102, 103}, "", 103},
      {"Steim-2 frame 1 empty: d0 = 0", Frames(0xC2, 4, 100, 108).at(2, 1, 1, 0x05010101u), 100, {105, 106, 107, 108}, "", 108},
      {"Steim-1 word 3 empty: d0 = 0", Frames(0xC0, 4, 100, 108).at(1, 4, 1, 0x05010101u), 100, {105, 106, 107, 108}, "", 108},
      {"no data, Xn differs", Frames(0xC2, 0, 42, 43), 0, {},
       report("0x0000002A  stop 0x0000002B  samples 0", "0x00000000  stop 0x0000002A  samples 0"), 43},
  };
  for (const auto& c : cases) {
    std::int32_t last = c.last_before;
    lm::Decoded d;
    EXPECT_EQ(decode(steim(c.fr.p), c.fr.p, &last, &d), c.samples) << c.name;
    std::string out;
    for (int i = 0; i < d.n_undefined; ++i)
      out += "Error in Steim2 W-type (" + std::to_string(d.undefined[i]) + ") for C=2\n";
    EXPECT_EQ(out, c.out) << c.name;
    const std::string log =
        d.failed ? log_test::logged([&](lm::OutFile& f) { lm::log_steim_check(f, c.fr.p.data(), d); }) : "";
    EXPECT_EQ(log, c.log.empty() ? "" : c.log + packet_dump(c.fr.p)) << c.name;
    EXPECT_EQ(last, c.last_after) << c.name;
  }
}

// Any bytes decode without a read outside the packet or a write beyond the span.
TEST(SteimTest, ArbitraryBytesStayInBounds) {
  std::mt19937 rng(12345);
  Packet p;
  std::int32_t last = 0;
  for (int round = 0; round < 200; ++round) {
    for (auto& b : p) b = static_cast<std::uint8_t>(rng());
    EXPECT_LE(decode(lm::Buf_c0, p, &last).size(), 892u);
    EXPECT_LE(decode(lm::Buf_c2, p, &last).size(), 1561u);
  }
}

// Two channels, Steim-1 and Steim-2, in consecutive packets through the converter; one packet's
// header count is one short: it is decoded in full and reported in the unit's log.
TEST(SteimE2e, SteimChannelsAreConvertedAndTheDamagedPacketReported) {
  e2e::TempDir tmp;
  std::filesystem::create_directory(tmp / "out");
  std::vector<Packet> packets;
  std::string want[2];
  std::optional<std::int32_t> prev[2];
  unsigned x0 = 0, xn = 0;
  for (int k = 0; k < 4; ++k) {
    for (unsigned ch = 0; ch < 2; ++ch) {
      const auto trace = decode_test::random_walk(40 + 2 * k + ch, 200, prev[ch].value_or(ch ? 4000 : -5000),
                                                  ch ? std::vector<int>{4, 6, 10, 30} : std::vector<int>{8, 16, 32});
      packets.push_back(pktkit::make_dt_steim(ch ? pktkit::SteimLevel::k2 : pktkit::SteimLevel::k1, 0x1234,
                                              {9, 32, 1, 2, 3 + 2 * k, 400}, 2 * k + ch + 1, 7, 0, ch, trace, prev[ch]));
      if (ch == 0 && k == 2) x0 = trace[0], xn = trace.back();
      for (const std::int32_t s : trace) want[ch] += std::to_string(s) + "\r\n";
      prev[ch] = trace.back();
    }
  }
  pktkit::put_bcd(packets[4], 20, 2, 199);  // channel 1's third packet: a header count one short
  e2e::write_packets(tmp / "in.pkt", packets);
  const auto r = e2e::run({"in.pkt", "out", "-HN"}, tmp.str());
  ASSERT_EQ(r.status, 0) << r.out;
  EXPECT_EQ(e2e::list_files(tmp / "out"), (std::vector<std::string>{"2009032010203400_01234_1_1.atr",
                                                                     "2009032010203400_01234_1_2.atr", "ID1234.lml", "in.lml"}));
  EXPECT_EQ(e2e::read_file(tmp / "out/2009032010203400_01234_1_1.atr"), want[0]);
  EXPECT_EQ(e2e::read_file(tmp / "out/2009032010203400_01234_1_2.atr"), want[1]);
  char rep[160];
  std::snprintf(rep, sizeof rep, "     Read start 0x%08X  stop 0x%08X  samples 199\r\n"
                "     Calc start 0x%08X  stop 0x%08X  samples 200\r\n", x0, xn, x0, xn);
  const std::string log = e2e::read_file(tmp / "out/ID1234.lml");
  const auto body = log.find("\r\n\r\n", log.find("   Command Line : "));  // the unit log after its header block
  ASSERT_NE(body, std::string::npos);
  EXPECT_EQ(log.substr(body + 4), rep + packet_dump(packets[4]));
}

}  // namespace

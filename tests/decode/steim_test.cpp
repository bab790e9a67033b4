// Steim-1 and Steim-2 frames built by hand: every code and nibble, sign extension at every width,
// frame walking, the first difference, and the failure report in the unit's packet log.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "decode/decoders.hpp"
#include "decode/steim_fixture.hpp"
#include "run/globals.hpp"

namespace {

using decode_test::decode;
using decode_test::Frames;
using decode_test::LoggedChannel;
using decode_test::packet_dump;

class SteimTest : public testing::Test {
 protected:
  void SetUp() override { lm::reset_globals(); }
  void TearDown() override { lm::reset_globals(); }
};

TEST_F(SteimTest, ControlWordSplitsIntoSixteenCodes) {
  const std::uint8_t word[] = {0x1B, 0xE4, 0x00, 0xFF};
  std::uint8_t codes[16];
  std::fill(std::begin(codes), std::end(codes), std::uint8_t{9});
  lm::C0_flag_cvt(word, codes);
  const std::uint8_t want[16] = {0, 1, 2, 3, 3, 2, 1, 0, 0, 0, 0, 0, 3, 3, 3, 3};
  EXPECT_TRUE(std::equal(std::begin(want), std::end(want), codes));
  lm::C0_flag_clr(codes);
  EXPECT_EQ(std::count(std::begin(codes), std::end(codes), 0), 16);
}

TEST_F(SteimTest, GetBitsSignExtendsEveryWidth) {
  const struct {
    std::uint32_t word;
    int shift, nbits;
    std::int32_t want;
  } cases[] = {
      {0xC0000000u, 30, 2, -1},      {0x40000000u, 30, 2, 1},      {0x80000000u, 30, 2, -2},
      {0x0000000Fu, 0, 4, -1},       {0x00000007u, 0, 4, 7},       {0x00000008u, 0, 4, -8},
      {0x3E000000u, 25, 5, -1},      {0x1E000000u, 25, 5, 15},     {0x20000000u, 25, 5, -16},
      {0x20000000u, 24, 6, -32},     {0x1F000000u, 24, 6, 31},     {0x000000FFu, 0, 8, -1},
      {0x3FF00000u, 20, 10, -1},     {0x1FF00000u, 20, 10, 511},   {0x20000000u, 20, 10, -512},
      {0x00004000u, 0, 15, -16384},  {0x00003FFFu, 0, 15, 16383},  {0x3FFF8000u, 15, 15, -1},
      {0x1FFFFFFFu, 0, 30, 536870911}, {0x20000000u, 0, 30, -536870912}, {0x5FFFFFFFu, 0, 30, 536870911},
      {0x3FFFFFFFu, 0, 30, -1},      {0x80000000u, 0, 32, INT32_MIN}, {0x7FFFFFFFu, 0, 32, INT32_MAX},
      // Bits above the word come from its sign.
      {0x80000000u, 28, 8, -8},      {0x80000000u, 32, 4, -1},     {0x7FFFFFFFu, 32, 4, 0},
      // Widths and shifts out of range.
      {0xFFFFFFFFu, 0, 0, 0},        {0xFFFFFFFFu, 0, 33, 0},      {0xFFFFFFFFu, 33, 4, 0},
      {0xFFFFFFFFu, -1, 4, 0},       {0xFFFFFFFFu, 0, -3, 0},
  };
  for (const auto& c : cases)
    EXPECT_EQ(lm::Steim2_get_bits(c.word, c.shift, c.nbits), c.want)
        << std::hex << c.word << " shift " << std::dec << c.shift << " bits " << c.nbits;
}

// One data word and the differences it must yield, in order.
struct WordCase {
  std::uint8_t format;
  unsigned code;
  std::uint32_t word;
  std::vector<std::int32_t> diffs;
};

const WordCase kWords[] = {
    // Steim-1: four bytes, two halves, one word.
    {0xC0, 1, 0xFF01807Fu, {-1, 1, -128, 127}},
    {0xC0, 1, 0x007F8001u, {0, 127, -128, 1}},
    {0xC0, 2, 0xFFFF8000u, {-1, -32768}},
    {0xC0, 2, 0x7FFF0001u, {32767, 1}},
    {0xC0, 3, 0x80000000u, {INT32_MIN}},
    {0xC0, 3, 0x7FFFFFFFu, {INT32_MAX}},
    {0xC0, 3, 0xFFFFFFFEu, {-2}},
    {0xC0, 0, 0x12345678u, {}},
    // Steim-2, code 1: four bytes.
    {0xC2, 1, 0xFF01807Fu, {-1, 1, -128, 127}},
    // Code 2: one 30-bit, two 15-bit, three 10-bit differences.
    {0xC2, 2, 0x5FFFFFFFu, {536870911}},
    {0xC2, 2, 0x7FFFFFFFu, {-1}},
    {0xC2, 2, 0x60000000u, {-536870912}},
    {0xC2, 2, 0x40000001u, {1}},
    {0xC2, 2, 0x8000FFFFu, {1, -1}},
    {0xC2, 2, 0xA0003FFFu, {-16384, 16383}},
    {0xC2, 2, 0xE007FFFFu, {-512, 511, -1}},
    {0xC2, 2, 0xC0100401u, {1, 1, 1}},
    // Code 3: five 6-bit, six 5-bit, seven 4-bit differences (bits 29-28 unused).
    {0xC2, 3, 0x00000041u, {0, 0, 0, 1, 1}},
    {0xC2, 3, 0x207FF001u, {-32, 31, -1, 0, 1}},
    {0xC2, 3, 0x60FF803Eu, {-16, 15, -1, 0, 1, -2}},
    {0xC2, 3, 0x8FFFFFFFu, {-1, -1, -1, -1, -1, -1, -1}},
    {0xC2, 3, 0xB8701F2Eu, {-8, 7, 0, 1, -1, 2, -2}},
    {0xC2, 0, 0xFFFFFFFFu, {}},
};

lm::Decoder decoder_of(std::uint8_t format) { return format == 0xC0 ? lm::Buf_c0 : lm::Buf_c2; }

// X0 + the running sum of diffs from index `from`, in 32-bit wrapping arithmetic.
std::vector<std::int32_t> integrate(std::int32_t x0, const std::vector<std::int32_t>& diffs, std::size_t from) {
  std::vector<std::int32_t> out{x0};
  std::uint32_t s = static_cast<std::uint32_t>(x0);
  for (std::size_t i = from; i < diffs.size(); ++i) out.push_back(static_cast<std::int32_t>(s += diffs[i]));
  return out;
}

TEST_F(SteimTest, EveryCodeAndWidthAfterALeadingSample) {
  for (const auto& c : kWords) {
    // A leading word with one zero difference makes the first sample X0; the word under test follows.
    const std::int32_t x0 = 1000;
    const auto want = integrate(x0, c.diffs, 0);
    Frames fr(c.format, static_cast<unsigned>(want.size()), x0, static_cast<std::uint32_t>(want.back()));
    if (c.format == 0xC0) fr.add(3, 0); else fr.add(2, 0x40000000u);
    fr.add(c.code, c.word);
    lm::CHNLST_T chn;
    EXPECT_EQ(decode(decoder_of(c.format), fr.packet(), &chn), want) << std::hex << c.word;
    EXPECT_EQ(chn.last, want.back()) << "a consistent packet carries its last sample on";
  }
}

TEST_F(SteimTest, FirstDifferenceComesFromTheFirstDataWord) {
  for (const auto& c : kWords) {
    if (c.diffs.empty()) continue;
    // The word under test is the first data word: its first difference only fixes the start.
    const std::int32_t x0 = -70000;
    const auto want = integrate(x0, c.diffs, 1);
    Frames fr(c.format, static_cast<unsigned>(want.size()), static_cast<std::uint32_t>(x0),
              static_cast<std::uint32_t>(want.back()));
    fr.add(c.code, c.word);
    lm::CHNLST_T chn;
    chn.last = static_cast<std::int32_t>(static_cast<std::uint32_t>(x0) - static_cast<std::uint32_t>(c.diffs[0]));
    EXPECT_EQ(decode(decoder_of(c.format), fr.packet(), &chn), want) << std::hex << c.word;
    EXPECT_EQ(chn.last, want.back()) << std::hex << c.word << ": continuity holds, no report";
  }
}

TEST_F(SteimTest, Steim2SkipsEmptyWordsToFindTheFirstDifference) {
  // Words 3 and 4 are empty whatever they hold; word 5 gives d0 = 5.
  Frames fr(0xC2, 4, 100, 103);
  fr.at(1, 3, 0, 0x12345678u).at(1, 4, 0, 0xFFFFFFFFu).at(1, 5, 1, 0x05010101u);
  lm::CHNLST_T chn;
  chn.last = 95;
  EXPECT_EQ(decode(lm::Buf_c2, fr.packet(), &chn), (std::vector<std::int32_t>{100, 101, 102, 103}));
  EXPECT_EQ(chn.last, 103);

  // Nothing in frame 1: the first difference is 0 and the data of frame 2 add to X0.
  Frames empty_first(0xC2, 4, 100, 108);
  empty_first.at(2, 1, 1, 0x05010101u);
  chn.last = 100;
  EXPECT_EQ(decode(lm::Buf_c2, empty_first.packet(), &chn), (std::vector<std::int32_t>{105, 106, 107, 108}));
  EXPECT_EQ(chn.last, 108);

  // Steim-1 takes word 3 only: empty, d0 = 0.
  Frames s1(0xC0, 4, 100, 108);
  s1.at(1, 4, 1, 0x05010101u);
  chn.last = 100;
  EXPECT_EQ(decode(lm::Buf_c0, s1.packet(), &chn), (std::vector<std::int32_t>{105, 106, 107, 108}));
  EXPECT_EQ(chn.last, 108);
}

TEST_F(SteimTest, AllFifteenFramesAreDecodedUpToTheLastByte) {
  const struct {
    std::uint8_t format;
    unsigned code;
    std::uint32_t word;
    unsigned per_word;
  } cases[] = {{0xC0, 1, 0x01010101u, 4}, {0xC2, 3, 0x81111111u, 7}, {0xC2, 2, 0xC0100401u, 3}};
  for (const auto& c : cases) {
    const unsigned n = 223 * c.per_word;  // 13 words in frame 1, 15 in each of frames 2-15
    const std::int32_t x0 = -400;
    Frames fr(c.format, n, static_cast<std::uint32_t>(x0), static_cast<std::uint32_t>(x0 + static_cast<int>(n) - 1));
    for (int i = 0; i < 223; ++i) fr.add(c.code, c.word);
    lm::CHNLST_T chn;
    std::uint32_t count = 0;
    const auto s = decode(decoder_of(c.format), fr.packet(), &chn, &count);
    ASSERT_EQ(count, n);
    for (unsigned i = 0; i < n; ++i) ASSERT_EQ(s[i], x0 + static_cast<int>(i)) << i;
    EXPECT_EQ(chn.last, s.back());
  }
  // The header count does not limit the walk: a count of 1 still yields all samples (and a report).
  Frames fr(0xC0, 1, 0, 7);
  fr.add(1, 0x00010101u).add(1, 0x01010101u);
  lm::CHNLST_T chn;
  EXPECT_EQ(decode(lm::Buf_c0, fr.packet(), &chn).size(), 8u);
}

TEST_F(SteimTest, IntegrationWrapsAroundThe32BitRange) {
  Frames fr(0xC0, 5, 0x7FFFFFFFu, 0x7FFFFFFFu);
  fr.add(3, 0).add(1, 0x0101FFFFu);
  lm::CHNLST_T chn;
  EXPECT_EQ(decode(lm::Buf_c0, fr.packet(), &chn),
            (std::vector<std::int32_t>{INT32_MAX, INT32_MIN, INT32_MIN + 1, INT32_MIN, INT32_MAX}));
  Frames f2(0xC2, 3, 0xA0000000u, 0x60000000u);  // -3 * 2^29, then two steps of -2^29 wrap past INT32_MIN
  f2.add(2, 0x40000000u).add(2, 0x60000000u).add(2, 0x60000000u);
  lm::CHNLST_T fresh;
  EXPECT_EQ(decode(lm::Buf_c2, f2.packet(), &fresh),
            (std::vector<std::int32_t>{static_cast<std::int32_t>(0xA0000000u), INT32_MIN, 0x60000000}));
  EXPECT_EQ(fresh.last, 0x60000000);
}

TEST_F(SteimTest, EmptyFramesPassOnlyWithXnEqualX0AndCountZero) {
  const struct {
    unsigned n_hdr;
    std::uint32_t xn;
    bool passes;
  } cases[] = {{0, 42, true}, {1, 42, false}, {0, 43, false}};
  for (std::uint8_t format : {std::uint8_t{0xC0}, std::uint8_t{0xC2}}) {
    for (const auto& c : cases) {
      Frames fr(format, c.n_hdr, 42, c.xn);
      LoggedChannel lc;
      lm::G.Log_on = 1;
      EXPECT_TRUE(decode(decoder_of(format), fr.packet(), lc.chn()).empty());
      EXPECT_EQ(lc.log().empty(), c.passes);
      EXPECT_EQ(lc.chn()->last, c.passes ? 42 : static_cast<std::int32_t>(c.xn));
    }
  }
}

// The six report lines of a failed packet.
std::string report(const char* read, const char* calc) {
  return std::string("     Read start ") + read + "\r\n     Calc start " + calc + "\r\n";
}

TEST_F(SteimTest, FailedPacketsAreReportedInTheUnitLog) {
  const struct {
    const char* name;
    Frames frames;
    std::int32_t last_before;
    std::vector<std::int32_t> samples;
    std::string want_log;
    std::int32_t last_after;
    std::string want_stdout;
  } cases[] = {
      {"count differs", Frames(0xC0, 10, 0x10, 0x1B).add(1, 0x00010101u).add(1, 0x01010101u).add(1, 0x01010101u),
       0, {16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27},
       report("0x00000010  stop 0x0000001B  samples 10", "0x00000000  stop 0x0000001B  samples 12"), 27, ""},
      {"last sample differs from Xn", Frames(0xC0, 2, 0xFFFFFFFBu, 0xFFFFFFF8u).add(2, 0x0001FFFEu), -6, {-5, -7},
       report("0xFFFFFFFB  stop 0xFFFFFFF8  samples 2", "0xFFFFFFFB  stop 0xFFFFFFF9  samples 2"), -8, ""},
      {"continuity broken", Frames(0xC0, 4, 104, 107).add(1, 0x03010101u), 100, {104, 105, 106, 107},
       report("0x00000068  stop 0x0000006B  samples 4", "0x00000067  stop 0x0000006B  samples 4"), 107, ""},
      {"undefined nibbles",
       Frames(0xC2, 15, 50, 60).add(3, 0x00041041u).add(3, 0xC0000000u).add(2, 0x00000005u).add(1, 0x01010101u), 0,
       {50, 51, 52, 53, 54, 55, 56, 57, 58},
       report("0x00000032  stop 0x0000003C  samples 15", "0x00000000  stop 0x0000003A  samples 9"), 60,
       "Error in Steim2 W-type (3) for C=2\nError in Steim2 W-type (0) for C=2\n"},
      {"undefined first word: d0 is the whole word",
       Frames(0xC2, 4, 10, 0x4000000Du).add(3, 0xC0000001u).add(1, 0x01010101u), 2,
       {0x4000000A, 0x4000000B, 0x4000000C, 0x4000000D},
       report("0x0000000A  stop 0x4000000D  samples 4", "0xC0000003  stop 0x4000000D  samples 4"), 0x4000000D,
       "Error in Steim2 W-type (3) for C=2\n"},
  };
  for (const auto& c : cases) {
    lm::G.Log_on = 1;
    LoggedChannel lc;
    lc.chn()->last = c.last_before;
    testing::internal::CaptureStdout();
    const auto s = decode(c.frames.packet()[23] == 0xC0 ? lm::Buf_c0 : lm::Buf_c2, c.frames.packet(), lc.chn());
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), c.want_stdout) << c.name;
    EXPECT_EQ(s, c.samples) << c.name;
    EXPECT_EQ(lc.log(), c.want_log + packet_dump(c.frames.packet())) << c.name;
    EXPECT_EQ(lc.chn()->last, c.last_after) << c.name;
  }
}

TEST_F(SteimTest, ContinuityIsJudgedOnlyAgainstANonZeroLast) {
  const struct {
    std::int32_t last_before;
    std::uint32_t x0;
    bool reported;
  } cases[] = {{100, 103, false}, {100, 104, true}, {0, 104, false}, {0, 7, false}, {-3, 0, false}, {-3, 1, true}};
  for (const auto& c : cases) {
    // One difference of 3 in word 3: the packet holds the single sample X0.
    Frames fr(0xC0, 1, c.x0, c.x0);
    fr.add(3, 3);
    lm::G.Log_on = 1;
    LoggedChannel lc;
    lc.chn()->last = c.last_before;
    EXPECT_EQ(decode(lm::Buf_c0, fr.packet(), lc.chn()), std::vector<std::int32_t>{static_cast<std::int32_t>(c.x0)});
    EXPECT_EQ(!lc.log().empty(), c.reported) << c.last_before << " " << c.x0;
    EXPECT_EQ(lc.chn()->last, static_cast<std::int32_t>(c.x0));
  }
}

TEST_F(SteimTest, ReportNeedsTheLogOnAndAUnit) {
  Frames fr(0xC0, 10, 1, 9);
  fr.add(1, 0x00010101u);
  LoggedChannel lc;
  lm::G.Log_on = 0;
  EXPECT_EQ(decode(lm::Buf_c0, fr.packet(), lc.chn()).size(), 4u);
  EXPECT_EQ(lc.log(), "");
  EXPECT_EQ(lc.chn()->last, 9) << "the channel goes on from Xn";

  lm::G.Log_on = 1;
  lm::CHNLST_T orphan;  // no unit: nothing to write to
  EXPECT_EQ(decode(lm::Buf_c2, fr.packet(), &orphan).size(), 4u);
  EXPECT_EQ(orphan.last, 9);
}

// Packets of any content decode without reading outside the packet or overflowing the buffer.
TEST_F(SteimTest, ArbitraryBytesStayInBounds) {
  std::uint32_t x = 12345;
  for (int round = 0; round < 200; ++round) {
    pktkit::Packet p{};
    for (auto& b : p) {
      x = x * 1103515245u + 12345u;
      b = static_cast<std::uint8_t>(x >> 16);
    }
    lm::CHNLST_T chn;
    std::uint32_t c0 = 0, c2 = 0;
    testing::internal::CaptureStdout();
    decode(lm::Buf_c0, p, &chn, &c0);
    decode(lm::Buf_c2, p, &chn, &c2);
    testing::internal::GetCapturedStdout();
    EXPECT_LE(c0, 892u);
    EXPECT_LE(c2, 1561u);
  }
}

}  // namespace

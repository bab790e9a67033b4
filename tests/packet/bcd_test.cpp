#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "packet/bcd.hpp"
#include "packet/codes.hpp"

namespace {

using namespace lm;

TEST(Bcd, Bcd2iTable) {
  struct Case {
    std::uint8_t bytes[3];
    std::int16_t count;
    std::uint16_t want;
  };
  const Case cases[] = {
      {{0x12, 0x34}, 2, 1234},
      {{0x99, 0x99}, 2, 9999},
      {{0x0A}, 1, 10},          // nibble above 9 is not rejected
      {{0xFF}, 1, 165},         // 15 * 10 + 15
      {{0xFF, 0xFF}, 2, 16665},
      {{0x99, 0x99, 0x99}, 3, static_cast<std::uint16_t>(999999 % 65536)},
      {{0x00, 0x01}, 2, 1},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(bcd2i(c.bytes, c.count), c.want) << int(c.bytes[0]);
    EXPECT_EQ(bcdtoi(c.bytes, static_cast<std::uint16_t>(c.count)), c.want);
  }
}

TEST(Bcd, UnbcdWritesTwoCharactersPerByteAndNoTerminator) {
  const std::uint8_t in[] = {0x12, 0x3F, 0xA0};
  char out[8];
  std::memset(out, '#', sizeof out);
  unbcd(out, in, 3);
  EXPECT_EQ(std::string(out, 7), "123?:0#");
}

TEST(Bcd, ReverseReadsMostSignificantFirstAndRejectsOtherWidths) {
  const std::uint8_t b[] = {0x01, 0x02, 0x03, 0x04};
  EXPECT_EQ(reverse(b, 4), 0x01020304u);
  EXPECT_EQ(reverse(b, 2), 0x0102u);
  testing::internal::CaptureStdout();
  EXPECT_EQ(reverse(b, 3), 0u);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "reverse: Incorrect no of bytes passed\n");
}

TEST(Bcd, HexStrLine) {
  std::uint8_t bytes[16];
  for (int i = 0; i < 16; ++i) bytes[i] = static_cast<std::uint8_t>(0x41 + i);
  char line[80];
  hex_str(line, bytes);
  EXPECT_STREQ(line, "41 42 43 44 45 46 47 48 - 49 4A 4B 4C 4D 4E 4F 50   ABCDEFGHIJKLMNOP");
  EXPECT_EQ(std::strlen(line), 68u);

  const std::uint8_t odd[16] = {0x00, 0x1F, 0x20, 0x7E, 0x7F, 0xFF, 0x0D, 0x0A, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
  hex_str(line, odd);
  EXPECT_STREQ(line, "00 1F 20 7E 7F FF 0D 0A - 61 62 63 64 65 66 67 68   .. ~....abcdefgh");
}

TEST(Codes, CodeSetIsExactAndCaseSensitive) {
  const struct {
    const char* letters;
    std::uint16_t want;
  } cases[] = {{"EH", 1}, {"DT", 3}, {"FD", 13}, {"eh", 0}, {"XX", 0},
               {"HE", 0}, {"TD", 0}};  // straddling two table entries ("EHETDT") is no code
  for (const auto& c : cases) {
    std::uint8_t pkt[2] = {static_cast<std::uint8_t>(c.letters[0]), static_cast<std::uint8_t>(c.letters[1])};
    EXPECT_EQ(code_set(pkt), c.want) << c.letters;
  }
}

}  // namespace

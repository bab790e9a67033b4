// Sample lines at every width and both signs, against hand-written lines and against std::to_chars,
// written back to back as a packet's lines are: the table's lengths and the bytes stored past a
// line's end must leave exactly the lines.
#include <gtest/gtest.h>

#include <charconv>
#include <climits>
#include <string>
#include <vector>

#include "base/sample_line.hpp"

namespace {

std::string lines(const std::vector<std::int32_t>& values) {
  std::string buf(values.size() * lm::kSampleLineMax + lm::kSampleLineSlack, '#');
  char* out = buf.data();
  for (const std::int32_t v : values) out = lm::put_sample_line(out, v);
  buf.resize(static_cast<std::size_t>(out - buf.data()));
  return buf;
}

TEST(SampleLine, HandWrittenLines) {
  const struct {
    std::int32_t v;
    const char* line;
  } cases[] = {
      {0, "0\r\n"},           {7, "7\r\n"},
      {-7, "-7\r\n"},         {10, "10\r\n"},
      {-305, "-305\r\n"},     {9999, "9999\r\n"},
      {10000, "10000\r\n"},   {-10007, "-10007\r\n"},
      {100000001, "100000001\r\n"},
      {INT_MAX, "2147483647\r\n"},
      {INT_MIN, "-2147483648\r\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(lines({c.v}), c.line) << c.v;
}

TEST(SampleLine, EveryWidthBackToBackAgreesWithToChars) {
  std::vector<std::int32_t> values{INT_MIN, INT_MIN + 1, INT_MAX - 1};
  for (std::int64_t p = 1; p <= 1000000000; p *= 10)
    for (const std::int64_t v : {p - 1, p, p + 1, 10 * p - 1})
      if (v <= INT_MAX) {
        values.push_back(static_cast<std::int32_t>(v));
        values.push_back(static_cast<std::int32_t>(-v));
      }
  std::string want;
  for (const std::int32_t v : values) {
    char text[16];
    want.append(text, std::to_chars(text, text + sizeof text, v).ptr);
    want += "\r\n";
  }
  EXPECT_EQ(lines(values), want);
}

}  // namespace

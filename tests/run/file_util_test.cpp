#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <filesystem>

#include "run/file_util.hpp"
#include "support/e2e.hpp"

namespace {

using namespace lm;

TEST(Stof, Table) {
  const struct {
    const char* text;
    std::uint16_t len;
    float want;
  } cases[] = {
      {"100", 0, 100.0f},
      {"1/ 4", 0, 0.25f},
      {"5/ 0", 0, 5.0f},          // zero divisor leaves the value
      {"1/4", 0, 0.25f},          // divisor right after the slash
      {"abc", 0, 0.0f},
      {"", 0, 0.0f},
      {"12345", 4, 1234.0f},
      {"  -2.5e1", 0, -25.0f},
      {"0x10", 0, 0.0f},          // no hexadecimal
      {"1234567890123456789999", 0, 1234567890123456789.0f},  // only 19 characters count
      {"   40", 5, 40.0f},
      {"  40", 4, 40.0f},
  };
  for (const auto& c : cases) EXPECT_FLOAT_EQ(stof(c.text, c.len), c.want) << c.text;
}

TEST(MakeDir, CreatesEveryLevelUpToTheLastSlash) {
  e2e::TempDir tmp;
  const std::string base = tmp.str() + "/out/2009_123/";
  Make_dir((base + "12/").c_str());
  EXPECT_TRUE(std::filesystem::is_directory(base + "12"));
  Make_dir((base + "file.atr").c_str());
  EXPECT_FALSE(std::filesystem::exists(base + "file.atr"));
  Make_dir((tmp.str() + "/a/b/name").c_str());
  EXPECT_TRUE(std::filesystem::is_directory(tmp.str() + "/a/b"));
  EXPECT_FALSE(std::filesystem::exists(tmp.str() + "/a/b/name"));
  EXPECT_TRUE(fexist(tmp.str().c_str()));
  EXPECT_FALSE(fexist((tmp.str() + "/nothing").c_str()));
}

TEST(FopenLm, RetriesUntilPastTheDeadline) {
  e2e::TempDir tmp;
  const std::time_t start = std::time(nullptr);
  EXPECT_EQ(fopen_lm((tmp.str() + "/missing").c_str(), "rb"), nullptr);
  EXPECT_GT(std::time(nullptr), start + 5);
  std::FILE* f = fopen_lm((tmp.str() + "/new").c_str(), "wb");
  ASSERT_NE(f, nullptr);
  std::fclose(f);
}

}  // namespace

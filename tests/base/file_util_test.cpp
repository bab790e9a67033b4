#include <gtest/gtest.h>

#include <ctime>

#include "base/file_util.hpp"
#include "support/e2e.hpp"

namespace {

using namespace lm;

// Files on removable media can appear late: an open is retried for a few seconds before it fails.
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

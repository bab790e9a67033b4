// Whole runs in-process: fatal ends come back as statuses and the state is fresh for the next run.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/exit.hpp"
#include "run/cli.hpp"
#include "support/e2e.hpp"

namespace {

int run_in_process(std::vector<std::string> args, std::string* out = nullptr) {
  std::vector<char*> argv;
  static char name[] = "lm_asc";
  argv.push_back(name);
  for (auto& a : args) argv.push_back(a.data());
  testing::internal::CaptureStdout();
  const int status = lm::run_main(static_cast<int>(argv.size()), argv.data());
  const std::string text = testing::internal::GetCapturedStdout();
  if (out) *out = text;
  return status;
}

TEST(RunMain, StatusesComeBackAndSettingsStartFresh) {
  e2e::TempDir tmp;
  const std::string in = tmp / "in.pkt";
  e2e::write_packets(in, {pktkit::make_header("FD", 1, {}, 1)});

  EXPECT_EQ(run_in_process({"-S5", "-T2", "-DX", in}), 2);
  EXPECT_EQ(run_in_process({in, tmp / "missing"}), 10);
  std::string out;
  EXPECT_EQ(run_in_process({in, tmp.str(), "-LN"}, &out), 0);
  EXPECT_NE(out.find("Max Samples : 4294967295"), std::string::npos) << "an earlier run's -S leaked";
  EXPECT_NE(out.find("Skip Samples : 0"), std::string::npos);
  EXPECT_EQ(run_in_process({in, tmp.str()}), 0);
  EXPECT_TRUE(e2e::exists(tmp / "in.lml"));
}

TEST(ShutDown, MessagesAndStatuses) {
  const struct {
    std::uint8_t code;
    const char* text;
    const char* want;
  } cases[] = {
      {7, "abc", "\nUnknown error: processing terminated. (abc)"},
      {29, nullptr, "\nUnexpected end of file error on input"},
      {40, nullptr, "\nMemory allocation error for ''"},
      {136, "ignored", "\nSCSI WRITE error"},
  };
  for (const auto& c : cases) {
    testing::internal::CaptureStdout();
    int status = -1;
    try {
      lm::shut_down(c.code, c.text);
    } catch (const lm::RunExit& e) {
      e.print();
      status = e.status;
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), c.want);
    EXPECT_EQ(status, c.code);
  }
}

}  // namespace

// Output directories and file names: patterns, name parts, uniqueness letters and bounded paths.
#include "output/names.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "../model/chn_world.hpp"

namespace {

using namespace lm;
using chn_test::exit_status;

constexpr const char* kTime = "2008123140530250";

class Names : public chn_test::ChnWorld {
 protected:
  // A channel record named as Chn_create names it.
  CHNLST_T* named(std::uint16_t channel, std::uint16_t stream = 0) {
    auto* c = new CHNLST_T{};
    c->evt = &evt;
    c->channel = channel;
    c->stream = stream;
    owned.emplace_back(c);
    Asc_chn_name(c, kTime);
    return c;
  }
  std::vector<std::unique_ptr<CHNLST_T>> owned;
};

// The usual options run end to end; here the texts that a damaged header can bring.
TEST_F(Names, NamePartKeepsFiveFileNameCharacters) {
  const struct {
    std::uint16_t option;
    const char station[6];
    const char* want;
  } cases[] = {
      {0, "ST/1 ", "ST_1_"},  // a '/' would leave the directory
      {2, {'S', 'T', '\0', 'X', 'Y', '\0'}, "ST___"},  // the text ends at a NUL
      {7, "STN1A", "09A3F"},  // an unknown option takes the unit ID
  };
  for (const auto& c : cases) {
    G.Name_option = c.option;
    std::memcpy(evt.stn_name, c.station, sizeof evt.stn_name);
    char out[6];
    name_part(evt, out);
    EXPECT_STREQ(out, c.want) << c.option << " '" << c.station << "'";
  }
}

TEST_F(Names, TraceBaseNameNumbersStreamFromOneAndChannelInHex) {
  const struct {
    std::uint16_t stream, channel;
    const char* want;
  } cases[] = {
      {0, 0, "2008123140530250_09A3F_1_1"},  {0, 9, "2008123140530250_09A3F_1_A"},
      {0, 15, "2008123140530250_09A3F_1_10"}, {9, 16, "2008123140530250_09A3F_10_11"},
      {165, 165, "2008123140530250_09A3F_166_A6"},
  };
  for (const auto& c : cases) {
    char out[64];
    EXPECT_EQ(trace_base(out, sizeof out, kTime, "09A3F", c.stream, c.channel), std::strlen(c.want));
    EXPECT_STREQ(out, c.want);
  }
}

TEST_F(Names, TraceFileInItsDirectoryThenLettersAtPlace24) {
  G.Path_option = 3;
  const std::string d = dir() + "2008_123/14_05/";
  CHNLST_T* first = named(0);
  EXPECT_STREQ(first->name, (d + "2008123140530250_09A3F_1_1.atr").c_str());
  EXPECT_TRUE(std::filesystem::is_directory(d));
  EXPECT_FALSE(e2e::exists(first->name)) << "naming does not create the file";

  std::string expected = first->name;
  for (char letter : std::string("ABC")) {
    pktkit::write_file(expected, {});
    CHNLST_T* next = named(0);
    expected = d + "2008123140530250_09A3F_1" + letter + "1.atr";
    EXPECT_STREQ(next->name, expected.c_str());
  }
  // With a two-digit stream number place 24 is its second digit.
  pktkit::write_file(d + "2008123140530250_09A3F_10_1.atr", {});
  EXPECT_STREQ(named(0, 9)->name, (d + "2008123140530250_09A3F_1A_1.atr").c_str());
}

TEST_F(Names, TwentyFiveTakenVariantsEndTheRun) {
  const std::string base = dir() + "2008123140530250_09A3F_1";
  pktkit::write_file(base + "_1.atr", {});
  for (char l = 'A'; l <= 'W'; ++l) pktkit::write_file(base + l + "1.atr", {});
  EXPECT_STREQ(named(0)->name, (base + "X1.atr").c_str()) << "the 25th candidate is still tried";
  pktkit::write_file(base + "X1.atr", {});
  testing::internal::CaptureStdout();
  const int status = exit_status([&] { named(0); });
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n\nERROR!!!!!\n   Unable to create an unique filename.");
  EXPECT_EQ(status, 23);
}

TEST_F(Names, PathThatDoesNotFitEndsTheRunWithTheOpenError) {
  // A name of 132 characters fits the record, 133 do not: base name and extension take 30.
  const std::size_t room = sizeof(CHNLST_T::name) - 1 - 30;
  for (std::size_t len : {room, room + 1}) {
    std::string out_dir_path = dir();
    out_dir_path += std::string(len - out_dir_path.size() - 1, 'd') + "/";
    ASSERT_EQ(out_dir_path.size(), len);
    ASSERT_TRUE(set_text(G.DirOut, out_dir_path));
    const std::string want = out_dir_path + "2008123140530250_09A3F_1_1.atr";
    testing::internal::CaptureStdout();
    const int status = exit_status([&] { named(0); });
    const std::string out = testing::internal::GetCapturedStdout();
    if (len == room) {
      EXPECT_EQ(status, -1);
      EXPECT_STREQ(owned.back()->name, want.c_str());
      EXPECT_TRUE(std::filesystem::is_directory(out_dir_path));
    } else {
      EXPECT_EQ(status, 20);
      EXPECT_EQ(out, "\nFile open error for '" + want + "'");
      EXPECT_FALSE(std::filesystem::exists(out_dir_path)) << "nothing is made for a path that cannot be used";
    }
  }
  // The longest output directory and subdirectories never overflow the path buffers either.
  ASSERT_TRUE(set_text(G.DirOut, std::string(131, 'x')));
  G.Path_option = 4;
  testing::internal::CaptureStdout();
  EXPECT_EQ(exit_status([&] { named(165, 165); }), 20);
  EXPECT_EQ(testing::internal::GetCapturedStdout().size(),
            std::string("\nFile open error for ''").size() + 131 + 18 + 29 + 4);
}

TEST_F(Names, GatheredFileNameFromTheEventsFirstTime) {
  std::memcpy(evt.smp_time_1st, kTime, 17);
  evt.strm = 1;
  std::strcpy(evt.evt_file_name, "stale");
  G.Path_option = 2;
  EXPECT_EQ(std::string(Asc_evt_name(&evt)), dir() + "2008_123/14/2008123140530250_09A3F_2.adt");
  EXPECT_EQ(Asc_evt_name(&evt), evt.evt_file_name);
  // A short time from a damaged header is padded by the field widths, never read past.
  std::memcpy(evt.smp_time_1st, "2008123\0XXXXXXXXX", 17);
  G.Path_option = 0;
  EXPECT_STREQ(Asc_evt_name(&evt), (dir() + "2008123         _09A3F_2.adt").c_str());
  ASSERT_TRUE(set_text(G.DirOut, std::string(131, 'x')));
  testing::internal::CaptureStdout();
  EXPECT_EQ(exit_status([&] { Asc_evt_name(&evt); }), 20);
  testing::internal::GetCapturedStdout();
  EXPECT_STREQ(evt.evt_file_name, "");
}

}  // namespace

// Gathered event files (-G) as a run leaves them: the channels' trace files joined in ring order
// from the lowest channel, and the trace files gone; or nothing gathered and the trace files kept.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/e2e.hpp"

namespace {

using e2e::bare_trace;

struct GatherCase {
  const char* what;
  std::vector<std::string> args;
  std::vector<unsigned> channels;  // of the DT packets in turn, counted from 1; sample n is 10 * packet + channel
  std::vector<std::string> files;  // in the output directory afterwards
  std::string gathered;            // the .adt file's content, when it exists
};

const GatherCase kCases[] = {
    {"a later first channel goes after the current one: 1, 4, 2, 3", {}, {1, 2, 3, 1, 4},
     {"2009032000000000_09A3F_1.adt"},
     bare_trace(1, 2, "11\r\n41\r\n") + bare_trace(4, 1, "54\r\n") + bare_trace(2, 1, "22\r\n") +
         bare_trace(3, 1, "33\r\n")},
    {"the last packet's channel wrote nothing: nothing gathered", {"-T1"}, {1, 1, 2},
     {"2009032000000000_09A3F_1_1.atr", "2009032000000000_09A3F_1_2.atr"}, ""},
};

TEST(GatherE2e, GatheredFilesWhole) {
  for (const GatherCase& c : kCases) {
    e2e::TempDir tmp;
    std::filesystem::create_directories(tmp / "out");
    std::vector<pktkit::Packet> pkts;
    for (unsigned i = 0; i < c.channels.size(); ++i) {
      const auto s = static_cast<std::int32_t>(10 * (i + 1) + c.channels[i]);
      pkts.push_back(pktkit::make_dt16(0x9A3F, {}, i + 1, 7, 0, c.channels[i] - 1, {s}));
    }
    e2e::write_packets(tmp / "in.pkt", pkts);
    std::vector<std::string> args = {"in.pkt", "out", "-VN", "-LN", "-GY"};
    args.insert(args.end(), c.args.begin(), c.args.end());
    ASSERT_EQ(e2e::run(args, tmp.str(), (tmp / "none.ini").c_str()).status, 0) << c.what;
    EXPECT_EQ(e2e::list_files(tmp / "out"), c.files) << c.what;
    if (!c.gathered.empty()) {
      EXPECT_EQ(e2e::read_file(tmp / ("out/" + c.files[0])), c.gathered) << c.what;
    }
  }
}

TEST(GatherE2e, ALaterRunReplacesTheGatheredFile) {
  e2e::TempDir tmp;
  for (std::int32_t sample : {1, 2}) {
    e2e::write_packets(tmp / "in.pkt", {pktkit::make_dt16(0x9A3F, {}, 1, 7, 0, 0, {sample})});
    ASSERT_EQ(e2e::run({"in.pkt", "-VN", "-LN", "-GY"}, tmp.str(), (tmp / "none.ini").c_str()).status, 0);
  }
  EXPECT_EQ(e2e::read_file(tmp / "2009032000000000_09A3F_1.adt"), bare_trace(1, 1, "2\r\n"));
}

}  // namespace

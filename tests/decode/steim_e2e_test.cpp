// Steim-1 and Steim-2 channels through the real converter: trace files hold every sample of the
// consecutive packets, and the one damaged packet is reported in its unit's log.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "decode/steim_fixture.hpp"
#include "pktkit/steim_encoder.hpp"
#include "support/e2e.hpp"

namespace {

using pktkit::Packet;
using pktkit::SteimLevel;

std::string sample_lines(const std::vector<std::int32_t>& samples) {
  std::string out;
  char line[16];
  for (const std::int32_t s : samples) {
    std::snprintf(line, sizeof line, "%ld\r\n", static_cast<long>(s));
    out += line;
  }
  return out;
}

// The unit log after its header block.
std::string after_header(const std::string& log) {
  const auto at = log.find("   Command Line : ");
  return at == std::string::npos ? "<no header>" : log.substr(log.find("\r\n\r\n", at) + 4);
}

TEST(SteimE2e, SteimChannelsAreConvertedAndTheDamagedPacketReported) {
  e2e::TempDir tmp;
  std::filesystem::create_directory(tmp / "out");
  const std::uint16_t unit = 0x1234;
  std::vector<Packet> packets;
  std::vector<std::int32_t> want[2];
  std::optional<std::int32_t> prev[2];
  unsigned seq = 1;
  Packet damaged{};
  for (int k = 0; k < 4; ++k) {
    const pktkit::PktTime t{9, 32, 1, 2, 3 + 2 * k, 400};
    for (unsigned ch = 0; ch < 2; ++ch) {
      const SteimLevel level = ch == 0 ? SteimLevel::k1 : SteimLevel::k2;
      const auto trace = decode_test::random_walk(40 + 2 * k + ch, 200, prev[ch].value_or(-5000 + 9000 * int(ch)),
                                                  ch == 0 ? std::vector<int>{8, 16, 32} : std::vector<int>{4, 6, 10, 30});
      std::size_t used = 0;
      Packet p = pktkit::make_dt_steim(level, unit, t, seq++, 7, 0, ch, trace, prev[ch], &used);
      ASSERT_EQ(used, trace.size());
      if (ch == 0 && k == 2) {  // a header count one short: decoded in full, and reported
        pktkit::put_bcd(p, 20, 2, 199);
        damaged = p;
      }
      packets.push_back(p);
      want[ch].insert(want[ch].end(), trace.begin(), trace.end());
      prev[ch] = trace.back();
    }
  }
  e2e::write_packets(tmp / "in.pkt", packets);

  const auto r = e2e::run({"in.pkt", "out", "-HN"}, tmp.str());
  ASSERT_EQ(r.status, 0) << r.out;
  EXPECT_EQ(e2e::list_files(tmp / "out"), (std::vector<std::string>{"2009032010203400_01234_1_1.atr",
                                                                     "2009032010203400_01234_1_2.atr", "ID1234.lml", "in.lml"}));
  const std::string base = tmp / "out/2009032010203400_01234_1_";
  EXPECT_EQ(e2e::read_file(base + "1.atr"), sample_lines(want[0]));
  EXPECT_EQ(e2e::read_file(base + "2.atr"), sample_lines(want[1]));

  // The damaged packet: its first sample continues the channel, its last is Xn; only the count differs.
  const std::int32_t x0 = want[0][400], xn = want[0][599];
  char report[256];
  std::snprintf(report, sizeof report,
                "     Read start 0x%08X  stop 0x%08X  samples 199\r\n"
                "     Calc start 0x%08X  stop 0x%08X  samples 200\r\n",
                static_cast<unsigned>(x0), static_cast<unsigned>(xn), static_cast<unsigned>(x0),
                static_cast<unsigned>(xn));
  EXPECT_EQ(after_header(e2e::read_file(tmp / "out/ID1234.lml")), report + decode_test::packet_dump(damaged));
}

}  // namespace

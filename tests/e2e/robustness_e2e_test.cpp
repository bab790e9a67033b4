// Damaged input of every kind must end in a clean run: status 0, no sanitizer report, no hang.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "support/e2e.hpp"

namespace {

using pktkit::Packet;

// A packet with a recognised type and otherwise arbitrary bytes, biased towards the values that
// stress bounds: BCD nibbles above 9, huge counts, every decoder's format byte.
Packet random_packet(std::mt19937& rng) {
  static const char* kTypes[] = {"EH", "ET", "DT", "DT", "DT", "DT", "SH", "SC", "DS", "CD", "OM", "AD", "DR", "NH", "NT", "FD"};
  static const std::uint8_t kFormats[] = {0x00, 0x01, 0x02, 0x03, 0x16, 0x17, 0x32, 0x33, 0xC0, 0xC1, 0xC2, 0xC3, 0x15};
  Packet p;
  for (auto& b : p) b = static_cast<std::uint8_t>(rng());
  const char* t = kTypes[rng() % std::size(kTypes)];
  p[0] = static_cast<std::uint8_t>(t[0]);
  p[1] = static_cast<std::uint8_t>(t[1]);
  p[4] = static_cast<std::uint8_t>(rng() % 3);  // few units, so events and channels meet again
  p[16] = 0;
  p[17] = static_cast<std::uint8_t>(rng() % 4);
  if (rng() % 2) p[19] = static_cast<std::uint8_t>(rng() % 0x40);
  p[23] = kFormats[rng() % std::size(kFormats)];
  if (rng() % 4 == 0) pktkit::put_bcd(p, 20, 2, 9999);
  if (rng() % 3 == 0) pktkit::put_bcd(p, 14, 2, 9999);
  return p;
}

// Seeds 1-20 give random streams, not verbose; 21-23 every type with all bytes clear, all set, or 0x99,
// verbose, so that each packet's line is made as well.
TEST(Robustness, DamagedPacketStreamsEndCleanly) {
  const std::vector<std::vector<std::string>> switch_sets = {
      {}, {"-Q+", "-DY"}, {"-G+", "-P4", "-N2"}, {"-T3", "-S7", "-HN", "-P1"}, {"-LN", "-Q+", "-N1", "-P3"},
  };
  for (unsigned seed = 1; seed <= 23; ++seed) {
    std::mt19937 rng(seed);
    std::vector<Packet> pkts;
    for (int i = 0; seed <= 20 && i < 120; ++i) pkts.push_back(random_packet(rng));
    for (const char* t : {"EH", "DT", "DT", "ET", "SH", "SC", "DS", "CD", "OM", "AD", "DR", "NH", "NT", "FD"}) {
      if (seed <= 20) break;
      Packet& p = pkts.emplace_back();
      p.fill(seed == 21 ? 0x00 : seed == 22 ? 0xFF : 0x99);
      p[0] = static_cast<std::uint8_t>(t[0]);
      p[1] = static_cast<std::uint8_t>(t[1]);
    }
    e2e::TempDir tmp;
    e2e::write_packets(tmp / "in.pkt", pkts);
    std::vector<std::string> args = switch_sets[seed % switch_sets.size()];
    args.insert(args.begin(), "in.pkt");
    if (seed <= 20) args.push_back("-VN");
    const auto r = e2e::run(args, tmp.str(), nullptr, std::string(64, '\n'));
    EXPECT_EQ(r.status, 0) << "seed " << seed << "\n" << r.out.substr(r.out.size() > 2000 ? r.out.size() - 2000 : 0);
  }
}

}  // namespace

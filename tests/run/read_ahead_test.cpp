// Reading ahead in batches: every packet in order whatever the file's length, the bytes of a cut
// last packet over the buffer, and each DT packet decoded and its lines made ahead.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "run/read_ahead.hpp"
#include "pktkit/packet_builder.hpp"
#include "support/e2e.hpp"

namespace {

using pktkit::Packet;

// Packet k: every fifth a DT packet of the samples k, -1, 7; the others of no known type, their
// bytes telling k apart.
Packet packet(unsigned k) {
  if (k % 5 == 0) return pktkit::make_dt16(0x1234, {}, k + 1, 1, 0, 0, {static_cast<std::int32_t>(k), -1, 7});
  Packet p{};
  for (unsigned i = 0; i < p.size(); ++i) p[i] = static_cast<std::uint8_t>(k * 7 + i);
  p[0] = 'X';
  p[1] = 'X';
  return p;
}

TEST(ReadAhead, EveryPacketInOrderAcrossBatchesThenTheCutOne) {
  constexpr unsigned kB = lm::ReadAhead::kBatch;
  for (const unsigned n : {1u, kB - 1, kB, kB + 1, 2 * kB, 2 * kB + 1, 5 * kB + 3}) {
    for (const unsigned cut : {0u, 700u}) {
      e2e::TempDir tmp;
      std::vector<Packet> pkts;
      for (unsigned k = 0; k < n; ++k) pkts.push_back(packet(k));
      e2e::write_packets(tmp / "in.pkt", pkts);
      const Packet tail = packet(n);
      if (cut) {
        std::FILE* f = std::fopen((tmp / "in.pkt").c_str(), "ab");
        std::fwrite(tail.data(), 1, cut, f);
        std::fclose(f);
      }
      std::FILE* in = std::fopen((tmp / "in.pkt").c_str(), "rb");
      std::uint8_t buf[1024];
      {
        lm::ReadAhead input(in, "in.pkt");
        for (unsigned k = 0; k < n; ++k) {
          ASSERT_EQ(input.Blk_read(buf), 0) << n << " packets, at " << k;
          ASSERT_EQ(Packet(std::to_array(buf)), pkts[k]) << n << " packets, at " << k;
          const lm::PreparedDt* p = input.prepared();
          ASSERT_EQ(p != nullptr, k % 5 == 0) << k;
          if (p) {
            EXPECT_EQ(p->d.count, 3u);
            EXPECT_EQ(std::string(p->text.text, p->text.len), std::to_string(k) + "\r\n-1\r\n7\r\n");
          }
        }
        ASSERT_EQ(input.Blk_read(buf), lm::kBlkEnd) << n;
      }
      std::fclose(in);
      Packet last = pkts[n - 1];
      std::copy_n(tail.begin(), cut, last.begin());
      EXPECT_EQ(Packet(std::to_array(buf)), last) << n << " packets and " << cut << " bytes";
    }
  }
}

}  // namespace

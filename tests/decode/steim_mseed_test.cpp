// Cross-check against an independent encoder: traces packed into 1024-byte records by libmseed,
// whose 15 frames at offset 64 are laid into consecutive DT packets of one channel and decoded.
#include <gtest/gtest.h>
#include <libmseed.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <utility>
#include <vector>

#include "decode/steim_fixture.hpp"
#include "packet/bcd.hpp"

namespace {

using Record = std::vector<std::uint8_t>;

// The trace packed by libmseed into big-endian 1024-byte records (empty when it refuses).
std::vector<Record> mseed_records(int encoding, const std::vector<std::int32_t>& trace) {
  MSRecord* msr = msr_init(nullptr);
  msr->reclen = 1024;
  msr->encoding = static_cast<std::int8_t>(encoding);
  msr->byteorder = 1;
  msr->datasamples = std::malloc(trace.size() * sizeof(std::int32_t));  // freed by msr_free
  std::memcpy(msr->datasamples, trace.data(), trace.size() * sizeof(std::int32_t));
  msr->numsamples = static_cast<std::int64_t>(trace.size());
  msr->sampletype = 'i';
  std::vector<Record> records;
  std::int64_t packed = 0;
  auto collect = [](char* r, int len, void* out) { static_cast<std::vector<Record>*>(out)->emplace_back(r, r + len); };
  if (msr_pack(msr, collect, &records, &packed, 1, 0) < 0 || packed != std::int64_t(trace.size())) records.clear();
  msr_free(&msr);
  return records;
}

TEST(MseedCrossCheck, EveryRecordDecodesToTheSamePackedSamples) {
  ms_loginit(nullptr, nullptr, [](char*) {}, nullptr);  // keep its diagnostics off the console
  for (const bool steim2 : {false, true}) {
    const std::vector<int> all = steim2 ? std::vector<int>{4, 5, 6, 8, 10, 15, 30} : std::vector<int>{8, 16, 32};
    std::vector<std::int32_t> jumps;  // differences that wrap around the 32-bit range
    for (int i = 0; i < 900; ++i) jumps.push_back(i % 3 == 0 ? INT32_MAX : i % 3 == 1 ? INT32_MIN : i - 1);
    std::vector<std::pair<const char*, std::vector<std::int32_t>>> traces = {
        {"every width", decode_test::random_walk(100 * steim2, 6000, 0, all)},
        {"small steps: full packets", decode_test::random_walk(100 * steim2 + 1, 4000, -5, {steim2 ? 4 : 8})},
        {"near INT32_MAX", decode_test::random_walk(100 * steim2 + 2, 3000, INT32_MAX, all, INT32_MAX - (1 << 30), INT32_MAX)},
        {"near INT32_MIN", decode_test::random_walk(100 * steim2 + 3, 3000, INT32_MIN, all, INT32_MIN, INT32_MIN + (1 << 30))}};
    if (!steim2) traces.push_back({"extreme jumps", jumps});
    std::set<std::pair<int, int>> seen;  // (code, nibble) of every data word; nibble -1 where there is none
    for (const auto& [name, trace] : traces) {
      const auto records = mseed_records(steim2 ? DE_STEIM2 : DE_STEIM1, trace);
      ASSERT_GE(records.size(), 2u) << name << ": the check needs consecutive packets";
      std::int32_t last = 0;
      std::vector<std::int32_t> back;
      for (const auto& r : records) {
        ASSERT_EQ((r[44] << 8) | r[45], 64) << "frames begin at offset 64";
        for (int k = 16; k < 256; ++k) {  // word k % 16 of frame k / 16: its code in the frame's word 0
          const int code = int(lm::load_be32(&r[64 * (k / 16)]) >> (30 - 2 * (k % 16))) & 3;
          if (code) seen.insert({code, steim2 && code >= 2 ? int(lm::load_be32(&r[4 * k]) >> 30) : -1});
        }
        pktkit::Packet p = pktkit::make_header("DT", 0x4321, {9, 32, 1, 2, 3, 0}, 1);
        pktkit::put_ext(p, 3, 0, 4, (r[30] << 8) | r[31], 0, steim2 ? 0xC2 : 0xC0);
        std::copy(r.begin() + 64, r.begin() + 1024, p.begin() + 64);
        lm::Decoded d;
        const auto s = decode_test::decode(steim2 ? lm::Buf_c2 : lm::Buf_c0, p, &last, &d);
        ASSERT_EQ(s.size(), std::size_t((r[30] << 8) | r[31])) << name;
        ASSERT_FALSE(d.failed) << name << ": consecutive packets pass every check";
        back.insert(back.end(), s.begin(), s.end());
        ASSERT_EQ(last, back.back()) << name << ": last carried to the next packet";
      }
      EXPECT_EQ(back, trace) << name;
    }
    const std::set<std::pair<int, int>> want =
        steim2 ? std::set<std::pair<int, int>>{{1, -1}, {2, 1}, {2, 2}, {2, 3}, {3, 0}, {3, 1}, {3, 2}}
               : std::set<std::pair<int, int>>{{1, -1}, {2, -1}, {3, -1}};
    EXPECT_EQ(seen, want) << "every layout of a data word appeared";
  }
}

}  // namespace

// Cross-check against an independent encoder: traces packed into 1024-byte records by libmseed,
// whose 15 frames at offset 64 are laid into consecutive DT packets of one channel and decoded.
#include <gtest/gtest.h>
#include <libmseed.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "decode/steim_fixture.hpp"

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
  std::vector<std::int32_t> jumps;  // differences that wrap around the 32-bit range
  for (int i = 0; i < 900; ++i) jumps.push_back(i % 3 == 0 ? INT32_MAX : i % 3 == 1 ? INT32_MIN : i - 1);
  const struct { bool steim2; const char* name; std::vector<std::int32_t> trace; } cases[] = {
      {false, "every width", decode_test::random_walk(0, 6000, 0, {8, 16, 32})},
      {false, "extreme jumps", jumps},
      {true, "every width", decode_test::random_walk(100, 6000, 0, {4, 5, 6, 8, 10, 15, 30})},
      {true, "small steps: full packets", decode_test::random_walk(101, 4000, -5, {4})},
      // Differences that wrap around the 32-bit range, from either end of it.
      {true, "from INT32_MAX", decode_test::random_walk(102, 3000, INT32_MAX, {4, 5, 6, 8, 10, 15, 30})},
      {true, "from INT32_MIN", decode_test::random_walk(103, 3000, INT32_MIN, {4, 5, 6, 8, 10, 15, 30})}};
  for (const auto& [steim2, name, trace] : cases) {
    std::int32_t last = 0;
    std::vector<std::int32_t> back;
    for (const auto& r : mseed_records(steim2 ? DE_STEIM2 : DE_STEIM1, trace)) {
      pktkit::Packet p = pktkit::make_header("DT", 0x4321, {9, 32, 1, 2, 3, 0}, 1);
      pktkit::put_ext(p, 3, 0, 4, (r[30] << 8) | r[31], 0, steim2 ? 0xC2 : 0xC0);
      std::copy(r.begin() + 64, r.begin() + 1024, p.begin() + 64);
      lm::Decoded d;
      const auto s = decode_test::decode(steim2 ? lm::Buf_c2 : lm::Buf_c0, p, &last, &d);
      ASSERT_FALSE(d.failed) << name << ": consecutive packets pass every check";
      back.insert(back.end(), s.begin(), s.end());
    }
    EXPECT_EQ(back, trace) << name;
  }
}

}  // namespace

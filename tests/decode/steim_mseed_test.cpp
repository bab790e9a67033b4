// Cross-check against an independent encoder: traces packed into 1024-byte records by libmseed,
// whose 15 frames at offset 64 are laid into DT packets of one channel and decoded.
#include <gtest/gtest.h>
#include <libmseed.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <utility>
#include <vector>

#include "decode/steim_fixture.hpp"
#include "run/globals.hpp"

namespace {

using decode_test::decode;
using decode_test::LoggedChannel;
using decode_test::random_walk;
using pktkit::Packet;

using Record = std::vector<std::uint8_t>;

void collect(char* record, int length, void* ctx) {
  static_cast<std::vector<Record>*>(ctx)->emplace_back(record, record + length);
}

// The trace packed by libmseed into big-endian 1024-byte records (empty when it refuses).
std::vector<Record> mseed_records(int encoding, const std::vector<std::int32_t>& trace) {
  MSRecord* msr = msr_init(nullptr);
  std::strcpy(msr->network, "XX");
  std::strcpy(msr->station, "TEST");
  std::strcpy(msr->channel, "HHZ");
  msr->samprate = 100.0;
  msr->reclen = 1024;
  msr->encoding = static_cast<std::int8_t>(encoding);
  msr->byteorder = 1;
  auto* copy = static_cast<std::int32_t*>(std::malloc(trace.size() * sizeof(std::int32_t)));
  std::memcpy(copy, trace.data(), trace.size() * sizeof(std::int32_t));
  msr->datasamples = copy;
  msr->numsamples = static_cast<std::int64_t>(trace.size());
  msr->sampletype = 'i';
  std::vector<Record> records;
  std::int64_t packed = 0;
  const int n = msr_pack(msr, collect, &records, &packed, 1, 0);
  if (n < 0 || packed != static_cast<std::int64_t>(trace.size())) records.clear();
  msr_free(&msr);  // frees the copy too
  return records;
}

std::uint32_t be32(const Record& r, std::size_t off) {
  return (std::uint32_t{r[off]} << 24) | (std::uint32_t{r[off + 1]} << 16) | (std::uint32_t{r[off + 2]} << 8) | r[off + 3];
}

// A DT packet carrying the record's frames, with the record's sample count in its header.
Packet dt_packet(const Record& r, std::uint8_t format, unsigned seq) {
  Packet p = pktkit::make_header("DT", 0x4321, {9, 32, 1, 2, 3, 0}, seq);
  pktkit::put_ext(p, 3, 0, 4, (r[30] << 8) | r[31], 0, format);
  std::copy(r.begin() + 64, r.begin() + 1024, p.begin() + 64);
  return p;
}

// (code, nibble) of every data word in the frames; nibble -1 for Steim-1 and for Steim-2 code 1.
void note_layouts(const Record& r, bool steim2, std::set<std::pair<int, int>>& seen) {
  for (int f = 1; f <= 15; ++f) {
    const std::uint32_t control = be32(r, 64 * static_cast<std::size_t>(f));
    for (int w = f == 1 ? 3 : 1; w < 16; ++w) {
      const int code = static_cast<int>((control >> (30 - 2 * w)) & 3);
      const int nibble = steim2 && code >= 2 ? static_cast<int>(be32(r, 64 * f + 4 * w) >> 30) : -1;
      if (code != 0) seen.insert({code, nibble});
    }
  }
}

class MseedCrossCheck : public testing::Test {
 protected:
  void SetUp() override {
    lm::reset_globals();
    lm::G.Log_on = 1;
    ms_loginit(nullptr, nullptr, [](char*) {}, nullptr);  // keep its diagnostics off the console
  }
  void TearDown() override { lm::reset_globals(); }
};

struct TraceCase {
  const char* name;
  std::vector<std::int32_t> trace;
};

std::vector<TraceCase> traces(bool steim2) {
  std::vector<TraceCase> out;
  std::uint32_t seed = steim2 ? 200 : 100;
  const std::vector<int> all = steim2 ? std::vector<int>{4, 5, 6, 8, 10, 15, 30} : std::vector<int>{8, 16, 32};
  out.push_back({"every width", random_walk(seed++, 6000, 0, all)});
  out.push_back({"small steps", random_walk(seed++, 4000, -5, {steim2 ? 4 : 8})});
  out.push_back({"near INT32_MAX", random_walk(seed++, 3000, INT32_MAX, all, INT32_MAX - (1 << 30), INT32_MAX)});
  out.push_back({"near INT32_MIN", random_walk(seed++, 3000, INT32_MIN, all, INT32_MIN, INT32_MIN + (1 << 30))});
  if (!steim2) {
    // Jumps between the extremes: differences that wrap around the 32-bit range.
    std::vector<std::int32_t> jumps;
    for (int i = 0; i < 900; ++i) jumps.push_back(i % 3 == 0 ? INT32_MAX : i % 3 == 1 ? INT32_MIN : -1 + i);
    out.push_back({"extreme jumps", jumps});
  }
  std::vector<std::int32_t> flat(2000, steim2 ? -1000000 : 123456789);
  out.push_back({"constant", flat});
  return out;
}

TEST_F(MseedCrossCheck, EveryRecordDecodesToTheSamePackedSamples) {
  for (const bool steim2 : {false, true}) {
    std::set<std::pair<int, int>> seen;
    for (const auto& c : traces(steim2)) {
      const auto records = mseed_records(steim2 ? DE_STEIM2 : DE_STEIM1, c.trace);
      ASSERT_FALSE(records.empty()) << c.name;
      ASSERT_GE(records.size(), 2u) << c.name << ": the check needs consecutive packets";
      LoggedChannel lc;
      std::vector<std::int32_t> back;
      std::size_t at = 0;
      unsigned seq = 1;
      for (const auto& r : records) {
        ASSERT_EQ(r.size(), 1024u);
        ASSERT_EQ((r[44] << 8) | r[45], 64) << "frames begin at offset 64";
        note_layouts(r, steim2, seen);
        const auto s = decode(steim2 ? lm::Buf_c2 : lm::Buf_c0, dt_packet(r, steim2 ? 0xC2 : 0xC0, seq++), lc.chn());
        ASSERT_EQ(s.size(), static_cast<std::size_t>((r[30] << 8) | r[31])) << c.name;
        ASSERT_EQ(lc.chn()->last, c.trace[at + s.size() - 1]) << c.name << ": last carried to the next packet";
        back.insert(back.end(), s.begin(), s.end());
        at += s.size();
      }
      EXPECT_EQ(back, c.trace) << c.name;
      EXPECT_EQ(lc.log(), "") << c.name << ": consecutive packets pass every check";
    }
    // Every layout of a data word appeared in libmseed's frames.
    const std::set<std::pair<int, int>> want =
        steim2 ? std::set<std::pair<int, int>>{{1, -1}, {2, 1}, {2, 2}, {2, 3}, {3, 0}, {3, 1}, {3, 2}}
               : std::set<std::pair<int, int>>{{1, -1}, {2, -1}, {3, -1}};
    EXPECT_EQ(seen, want) << (steim2 ? "Steim-2" : "Steim-1");
  }
}

}  // namespace

// The sample decoders: sample counts bounded to the packet; Steim frames built by hand for the first
// difference and the end checks with their report; Steim channels through the converter. Word layouts
// and whole packets are checked against an independent encoder elsewhere.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "decode/steim_fixture.hpp"
#include "log/log_file.hpp"
#include "log/log_fixture.hpp"
#include "pktkit/steim_encoder.hpp"

namespace {

using decode_test::decode;
using pktkit::Packet;

// A DT packet with Steim frames written word by word (X0 and Xn in frame 1 words 1 and 2).
struct Frames {
  Packet p = pktkit::make_header("DT", 0x1234, {9, 32, 1, 2, 3, 400}, 5);
  std::uint32_t ctl[16] = {};
  int f = 1, w = 3;
  Frames(std::uint8_t format, unsigned n_hdr, std::uint32_t x0, std::uint32_t xn) {
    pktkit::put_ext(p, 7, 0, 2, n_hdr, 0, format);
    pktkit::put_be32(p, 68, x0);
    pktkit::put_be32(p, 72, xn);
  }
  Frames& at(int fr, int wd, unsigned code, std::uint32_t word) {  // word wd of frame fr, its code in word 0
    pktkit::put_be32(p, 64 * fr + 4 * wd, word);
    pktkit::put_be32(p, 64 * fr, ctl[fr] |= code << (30 - 2 * wd));
    return *this;
  }
  Frames& add(unsigned code, std::uint32_t word) {  // the next data word, from frame 1 word 3 on
    at(f, w, code, word);
    if (++w == 16) f++, w = 1;
    return *this;
  }
};

lm::Decoder steim(const Packet& p) { return p[23] == 0xC0 ? lm::Buf_c0 : lm::Buf_c2; }

// The hex dump of a whole packet as the unit log shows it after a report.
std::string packet_dump(const Packet& p) {
  std::string out;
  char s[8];
  for (int off = 0; off < 1024; off += 16) {
    out += (std::snprintf(s, sizeof s, "%03X", off), std::string("     ") + s + "   ");
    for (int i = 0; i < 16; ++i) out += (std::snprintf(s, sizeof s, i == 7 ? "%02X - " : "%02X ", p[off + i]), s);
    out += "  ";
    for (int i = 0; i < 16; ++i) out += std::isprint(p[off + i]) ? char(p[off + i]) : '.';
    out += "\r\n";
  }
  return out + "\r\n";
}

// Damaged counts (BCD nibbles above 9, 9999) never take more samples than the packet holds.
TEST(RawSamples, CountsCappedAtWhatFits) {
  Packet p = pktkit::make_header("DT", 1, {}, 1);
  const struct { lm::Decoder dec; std::uint16_t bcd; std::uint32_t want; } cases[] = {  // bcd: the count bytes
      {lm::Buf_16, 0x0001, 1},   {lm::Buf_16, 0x0500, 500}, {lm::Buf_16, 0x0501, 500}, {lm::Buf_16, 0x9999, 500},
      {lm::Buf_16, 0xFFFF, 500}, {lm::Buf_32, 0x0250, 250}, {lm::Buf_32, 0x0251, 250}, {lm::Buf_32, 0x00FF, 165},
      {lm::Buf_32, 0xFFFF, 250}};
  for (std::size_t i = 24; i < p.size(); ++i) p[i] = static_cast<std::uint8_t>(i * 7);
  for (const auto& c : cases) {
    pktkit::put_be16(p, 20, c.bcd);  // nibbles above 9 are taken at face value, then bounded
    const auto s = decode(c.dec, p);
    ASSERT_EQ(s.size(), c.want) << std::hex << c.bcd;
    const std::size_t end = 24 + (c.dec == lm::Buf_16 ? 2 : 4) * s.size();  // the last sample's bytes end here
    EXPECT_EQ(s.back() & 0xFFFF, p[end - 2] << 8 | p[end - 1]) << std::hex << c.bcd;
  }
}

std::string report(const char* read, const char* calc) {
  return std::string("     Read start ") + read + "\r\n     Calc start " + calc + "\r\n";
}

// A packet failing a check is reported (with its dump) and the channel goes on from Xn.
TEST(SteimTest, EndChecksAndTheirReport) {
  // log: the report lines, empty when the packet passes; out: what goes to stdout.
  const struct { const char* name; Frames fr; std::int32_t last_before; std::vector<std::int32_t> samples;
    std::string log; std::int32_t last_after; std::string out = ""; } cases[] = {
      {"count differs", Frames(0xC0, 10, 0x10, 0x1B).add(1, 0x00010101u).add(1, 0x01010101u).add(1, 0x01010101u),
       0, {16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27},
       report("0x00000010  stop 0x0000001B  samples 10", "0x00000000  stop 0x0000001B  samples 12"), 27},
      {"last sample differs from Xn", Frames(0xC0, 2, 0xFFFFFFFBu, 0xFFFFFFF8u).add(2, 0x0001FFFEu), -6, {-5, -7},
       report("0xFFFFFFFB  stop 0xFFFFFFF8  samples 2", "0xFFFFFFFB  stop 0xFFFFFFF9  samples 2"), -8},
      {"continuity broken", Frames(0xC0, 4, 104, 107).add(1, 0x03010101u), 100, {104, 105, 106, 107},
       report("0x00000068  stop 0x0000006B  samples 4", "0x00000067  stop 0x0000006B  samples 4"), 107},
      {"continuity not judged after 0", Frames(0xC0, 4, 104, 107).add(1, 0x03010101u), 0, {104, 105, 106, 107}, "", 107},
      {"undefined nibbles", Frames(0xC2, 15, 50, 60).add(3, 0x41041u).add(3, 0xC0000000u).add(2, 5).add(1, 0x01010101u),
       0, {50, 51, 52, 53, 54, 55, 56, 57, 58},
       report("0x00000032  stop 0x0000003C  samples 15", "0x00000000  stop 0x0000003A  samples 9"), 60,
       "Error in Steim2 W-type (3) for C=2\nError in Steim2 W-type (0) for C=2\n"},
      {"undefined first word: d0 is the whole word", Frames(0xC2, 4, 10, 0x4000000Du).add(3, 0xC0000001u).add(1, 0x01010101u),
       2, {0x4000000A, 0x4000000B, 0x4000000C, 0x4000000D},
       report("0x0000000A  stop 0x4000000D  samples 4", "0xC0000003  stop 0x4000000D  samples 4"), 0x4000000D,
       "Error in Steim2 W-type (3) for C=2\n"},
      {"Steim-2 d0: first word with a code", Frames(0xC2, 4, 100, 103).at(1, 3, 0, 0x12345678u).at(1, 4, 0, ~0u)
       .at(1, 5, 1, 0x05010101u), 95, {100, 101, 102, 103}, "", 103},
      {"Steim-2 frame 1 empty: d0 = 0", Frames(0xC2, 4, 100, 108).at(2, 1, 1, 0x05010101u), 100, {105, 106, 107, 108}, "", 108},
      {"Steim-1 word 3 empty: d0 = 0", Frames(0xC0, 4, 100, 108).at(1, 4, 1, 0x05010101u), 100, {105, 106, 107, 108}, "", 108},
      {"no data, Xn differs", Frames(0xC2, 0, 42, 43), 0, {},
       report("0x0000002A  stop 0x0000002B  samples 0", "0x00000000  stop 0x0000002A  samples 0"), 43},
  };
  for (const auto& c : cases) {
    std::int32_t last = c.last_before;
    lm::Decoded d;
    EXPECT_EQ(decode(steim(c.fr.p), c.fr.p, &last, &d), c.samples) << c.name;
    std::string out;
    for (int i = 0; i < d.n_undefined; ++i)
      out += "Error in Steim2 W-type (" + std::to_string(d.undefined[i]) + ") for C=2\n";
    EXPECT_EQ(out, c.out) << c.name;
    const std::string log =
        d.failed ? log_test::logged([&](lm::OutFile& f) { lm::log_steim_check(f, c.fr.p.data(), d); }) : "";
    EXPECT_EQ(log, c.log.empty() ? "" : c.log + packet_dump(c.fr.p)) << c.name;
    EXPECT_EQ(last, c.last_after) << c.name;
  }
}

// Two channels, Steim-1 and Steim-2, in consecutive packets through the converter; one packet's
// header count is one short: it is decoded in full and reported in the unit's log.
TEST(SteimE2e, SteimChannelsAreConvertedAndTheDamagedPacketReported) {
  e2e::TempDir tmp;
  std::filesystem::create_directory(tmp / "out");
  std::vector<Packet> packets;
  std::string want[2];
  std::optional<std::int32_t> prev[2];
  unsigned x0 = 0, xn = 0;
  for (int k = 0; k < 4; ++k) {
    for (unsigned ch = 0; ch < 2; ++ch) {
      const auto trace = decode_test::random_walk(40 + 2 * k + ch, 200, prev[ch].value_or(ch ? 4000 : -5000),
                                                  ch ? std::vector<int>{4, 6, 10, 30} : std::vector<int>{8, 16, 32});
      packets.push_back(pktkit::make_dt_steim(ch ? pktkit::SteimLevel::k2 : pktkit::SteimLevel::k1, 0x1234,
                                              {9, 32, 1, 2, 3 + 2 * k, 400}, 2 * k + ch + 1, 7, 0, ch, trace, prev[ch]));
      if (ch == 0 && k == 2) x0 = trace[0], xn = trace.back();
      for (const std::int32_t s : trace) want[ch] += std::to_string(s) + "\r\n";
      prev[ch] = trace.back();
    }
  }
  pktkit::put_bcd(packets[4], 20, 2, 199);  // channel 1's third packet: a header count one short
  e2e::write_packets(tmp / "in.pkt", packets);
  const auto r = e2e::run({"in.pkt", "out", "-HN"}, tmp.str());
  ASSERT_EQ(r.status, 0) << r.out;
  EXPECT_EQ(e2e::list_files(tmp / "out"), (std::vector<std::string>{"2009032010203400_01234_1_1.atr",
                                                                     "2009032010203400_01234_1_2.atr", "ID1234.lml", "in.lml"}));
  EXPECT_EQ(e2e::read_file(tmp / "out/2009032010203400_01234_1_1.atr"), want[0]);
  EXPECT_EQ(e2e::read_file(tmp / "out/2009032010203400_01234_1_2.atr"), want[1]);
  char rep[160];
  std::snprintf(rep, sizeof rep, "     Read start 0x%08X  stop 0x%08X  samples 199\r\n"
                "     Calc start 0x%08X  stop 0x%08X  samples 200\r\n", x0, xn, x0, xn);
  EXPECT_EQ(e2e::log_body(e2e::read_file(tmp / "out/ID1234.lml")), rep + packet_dump(packets[4]));
}

}  // namespace

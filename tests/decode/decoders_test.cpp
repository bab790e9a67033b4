// The sample decoders: sample counts bounded to the packet; Steim frames built by hand for the first
// difference and the end checks with their report; Steim channels through the converter.
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
};

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

// Damaged counts (BCD nibbles above 9) never take more samples than the packet holds.
TEST(RawSamples, CountsCappedAtWhatFits) {
  Packet p = pktkit::make_header("DT", 1, {}, 1);
  const struct { lm::Decoder dec; std::uint16_t bcd; std::uint32_t want; } cases[] = {  // bcd: the count bytes
      {lm::Buf_16, 0x0500, 500}, {lm::Buf_16, 0x0501, 500}, {lm::Buf_32, 0x0251, 250}, {lm::Buf_32, 0x00FF, 165}};
  for (const auto& c : cases) {
    pktkit::put_be16(p, 20, c.bcd);  // nibbles above 9 are taken at face value, then bounded
    EXPECT_EQ(decode(c.dec, p).size(), c.want) << std::hex << c.bcd;
  }
}

// A Steim-2 packet as full as one can be: 223 data words of seven differences of +1, from 1.
Frames full_packet() {
  Frames f(0xC2, 1561, 1, 1561);
  for (int fr = 1; fr <= 15; ++fr)
    for (int wd = fr == 1 ? 3 : 1; wd < 16; ++wd) f.at(fr, wd, 3, 0x81111111u);
  return f;
}

std::vector<std::int32_t> one_to(int n) {
  std::vector<std::int32_t> v(n);
  for (int i = 0; i < n; ++i) v[i] = i + 1;
  return v;
}

std::string report(const char* read, const char* calc) {
  return std::string("     Read start ") + read + "\r\n     Calc start " + calc + "\r\n";
}

// A packet failing a check is reported (with its dump) and the channel goes on from Xn.
TEST(SteimTest, EndChecksAndTheirReport) {
  // log: the report lines, empty when the packet passes; undefined: the Steim-2 nibbles no layout fits.
  const struct { const char* name; Frames fr; std::int32_t last_before; std::vector<std::int32_t> samples;
    std::string log; std::int32_t last_after; std::vector<int> undefined = {}; } cases[] = {
      {"continuity broken", Frames(0xC0, 4, 104, 107).at(1, 3, 1, 0x03010101u), 100, {104, 105, 106, 107},
       report("0x00000068  stop 0x0000006B  samples 4", "0x00000067  stop 0x0000006B  samples 4"), 107},
      {"continuity not judged after 0", Frames(0xC0, 4, 104, 107).at(1, 3, 1, 0x03010101u), 0, {104, 105, 106, 107},
       "", 107},
      {"undefined nibbles", Frames(0xC2, 15, 50, 60).at(1, 3, 3, 0x41041u).at(1, 4, 3, 0xC0000000u).at(1, 5, 2, 5)
       .at(1, 6, 1, 0x01010101u), 0, {50, 51, 52, 53, 54, 55, 56, 57, 58},
       report("0x00000032  stop 0x0000003C  samples 15", "0x00000000  stop 0x0000003A  samples 9"), 60, {3, 0}},
      {"undefined first word: d0 is the whole word", Frames(0xC2, 4, 10, 0x4000000Du).at(1, 3, 3, 0xC0000001u)
       .at(1, 4, 1, 0x01010101u), 2, {0x4000000A, 0x4000000B, 0x4000000C, 0x4000000D},
       report("0x0000000A  stop 0x4000000D  samples 4", "0xC0000003  stop 0x4000000D  samples 4"), 0x4000000D, {3}},
      {"Steim-2 d0: first word with a code", Frames(0xC2, 4, 100, 103).at(1, 3, 0, 0x12345678u).at(1, 4, 0, ~0u)
       .at(1, 5, 1, 0x05010101u), 95, {100, 101, 102, 103}, "", 103},
      {"Steim-2 frame 1 empty: d0 = 0", Frames(0xC2, 4, 100, 108).at(2, 1, 1, 0x05010101u), 100, {105, 106, 107, 108}, "", 108},
      {"Steim-1 word 3 empty: d0 = 0", Frames(0xC0, 4, 100, 108).at(1, 4, 1, 0x05010101u), 100, {105, 106, 107, 108}, "", 108},
      {"Steim-2 d0 of five 6-bit differences", Frames(0xC2, 5, 100, 104).at(1, 3, 3, 0x03041041u), 97,
       {100, 101, 102, 103, 104}, "", 104},
      {"every word seven 4-bit differences: the span filled to its end", full_packet(), 0, one_to(1561), "", 1561},
      {"no data, Xn differs", Frames(0xC2, 0, 42, 43), 0, {},
       report("0x0000002A  stop 0x0000002B  samples 0", "0x00000000  stop 0x0000002A  samples 0"), 43},
  };
  for (const auto& c : cases) {
    std::int32_t last = c.last_before;
    lm::Decoded d;
    EXPECT_EQ(decode(lm::decoder_for(c.fr.p[23]), c.fr.p, &last, &d), c.samples) << c.name;
    EXPECT_EQ(std::vector<int>(d.undefined, d.undefined + d.n_undefined), c.undefined) << c.name;
    const std::string log =
        d.failed ? log_test::logged([&](lm::OutFile& f) { lm::log_steim_check(f, c.fr.p.data(), d); }) : "";
    EXPECT_EQ(log, c.log.empty() ? "" : c.log + packet_dump(c.fr.p)) << c.name;
    EXPECT_EQ(last, c.last_after) << c.name;
  }
}

// Two channels, Steim-1 and Steim-2, in alternate packets through the converter; one packet's
// header count is one short: it is decoded in full and reported in the unit's log.
TEST(SteimE2e, SteimChannelsAreConvertedAndTheDamagedPacketReported) {
  e2e::TempDir tmp;
  std::filesystem::create_directory(tmp / "out");
  std::vector<Packet> packets;
  std::string want[2];
  std::optional<std::int32_t> prev[2];
  unsigned x0 = 0, xn = 0;
  for (int i = 0; i < 8; ++i) {
    const unsigned ch = i % 2u;
    const auto trace = decode_test::random_walk(40 + i, 200, prev[ch].value_or(ch ? 4000 : -5000),
                                                ch ? std::vector<int>{4, 6, 10, 30} : std::vector<int>{8, 16, 32});
    packets.push_back(pktkit::make_dt_steim(ch ? pktkit::SteimLevel::k2 : pktkit::SteimLevel::k1, 0x1234,
                                            {9, 32, 1, 2, 3 + i / 2 * 2, 400}, i + 1, 7, 0, ch, trace, prev[ch]));
    if (i == 4) x0 = trace[0], xn = trace.back();
    for (const std::int32_t s : trace) want[ch] += std::to_string(s) + "\r\n";
    prev[ch] = trace.back();
  }
  pktkit::put_bcd(packets[4], 20, 2, 199);  // channel 1's third packet: a header count one short
  e2e::write_packets(tmp / "in.pkt", packets);
  const auto r = e2e::run({"in.pkt", "out", "-HN"}, tmp.str());
  ASSERT_EQ(r.status, 0) << r.out;
  EXPECT_EQ(e2e::read_file(tmp / "out/2009032010203400_01234_1_1.atr"), want[0]);
  EXPECT_EQ(e2e::read_file(tmp / "out/2009032010203400_01234_1_2.atr"), want[1]);
  char rep[160];
  std::snprintf(rep, sizeof rep, "     Read start 0x%08X  stop 0x%08X  samples 199\r\n"
                "     Calc start 0x%08X  stop 0x%08X  samples 200\r\n", x0, xn, x0, xn);
  EXPECT_EQ(e2e::log_body(e2e::read_file(tmp / "out/ID1234.lml")), rep + packet_dump(packets[4]));
}

}  // namespace

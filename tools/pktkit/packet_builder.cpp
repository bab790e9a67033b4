#include "pktkit/packet_builder.hpp"

#include <cstdio>

namespace pktkit {

void put_bcd(Packet& p, int off, int width, unsigned value) {
  for (int i = width - 1; i >= 0; --i) {
    const unsigned two = value % 100;
    value /= 100;
    p[off + i] = static_cast<std::uint8_t>(((two / 10) << 4) | (two % 10));
  }
}

void put_text(Packet& p, int off, std::string_view text) {
  for (std::size_t i = 0; i < text.size() && off + i < p.size(); ++i) p[off + i] = static_cast<std::uint8_t>(text[i]);
}

void put_be16(Packet& p, int off, std::uint16_t v) {
  p[off] = static_cast<std::uint8_t>(v >> 8);
  p[off + 1] = static_cast<std::uint8_t>(v);
}

void put_be32(Packet& p, int off, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) p[off + i] = static_cast<std::uint8_t>(v >> (24 - 8 * i));
}

Packet make_header(std::string_view type, std::uint16_t unit, PktTime t, unsigned seq) {
  Packet p{};
  put_text(p, 0, type.substr(0, 2));
  put_bcd(p, 3, 1, static_cast<unsigned>(t.yy));
  put_be16(p, 4, unit);
  // DDD HH MM SS TTT as 12 digits in bytes 6..11.
  char digits[13];
  std::snprintf(digits, sizeof digits, "%03d%02d%02d%02d%03d", t.ddd, t.hh, t.mm, t.ss, t.ms);
  for (int i = 0; i < 6; ++i)
    p[6 + i] = static_cast<std::uint8_t>(((digits[2 * i] - '0') << 4) | (digits[2 * i + 1] - '0'));
  put_bcd(p, 12, 2, 1024);
  put_bcd(p, 14, 2, seq);
  return p;
}

void put_ext(Packet& p, unsigned event, unsigned stream, unsigned channel, unsigned samples, std::uint8_t flags,
             std::uint8_t format) {
  put_bcd(p, 16, 2, event);
  put_bcd(p, 18, 1, stream);
  put_bcd(p, 19, 1, channel);
  put_bcd(p, 20, 2, samples);
  p[22] = flags;
  p[23] = format;
}

namespace {

// A DT packet of uncompressed samples of `bytes` bytes each (2 or 4), as many as fit.
Packet make_dt_raw(int bytes, std::uint16_t unit, PktTime t, unsigned seq, unsigned event, unsigned stream,
                   unsigned channel, const std::vector<std::int32_t>& samples) {
  Packet p = make_header("DT", unit, t, seq);
  put_ext(p, event, stream, channel, static_cast<unsigned>(samples.size()), 0, bytes == 2 ? 0x16 : 0x32);
  const std::size_t fit = 1000 / static_cast<std::size_t>(bytes);
  for (std::size_t i = 0; i < samples.size() && i < fit; ++i) {
    const int off = 24 + bytes * static_cast<int>(i);
    if (bytes == 2) put_be16(p, off, static_cast<std::uint16_t>(samples[i]));
    else put_be32(p, off, static_cast<std::uint32_t>(samples[i]));
  }
  return p;
}

}  // namespace

Packet make_dt16(std::uint16_t unit, PktTime t, unsigned seq, unsigned event, unsigned stream, unsigned channel,
                 const std::vector<std::int32_t>& samples) {
  return make_dt_raw(2, unit, t, seq, event, stream, channel, samples);
}

Packet make_dt32(std::uint16_t unit, PktTime t, unsigned seq, unsigned event, unsigned stream, unsigned channel,
                 const std::vector<std::int32_t>& samples) {
  return make_dt_raw(4, unit, t, seq, event, stream, channel, samples);
}

namespace {

void put_column(Packet& p, int off, int width, const std::vector<std::string>& entries) {
  for (std::size_t k = 0; k < entries.size() && k < 16; ++k)
    put_text(p, off + static_cast<int>(k) * width, std::string_view(entries[k]).substr(0, static_cast<std::size_t>(width)));
}

void put_chars(Packet& p, int off, const std::string& chars) { put_text(p, off, std::string_view(chars).substr(0, 16)); }

}  // namespace

Packet make_event_packet(std::string_view type, std::uint16_t unit, PktTime t, unsigned seq, unsigned event,
                         unsigned stream, bool channels_17_32, const EventInfo& info) {
  Packet p = make_header(type, unit, t, seq);
  for (std::size_t i = 24; i < p.size(); ++i) p[i] = ' ';
  put_ext(p, event, stream, 0, 0, channels_17_32 ? 0x04 : 0x00, 0);
  p[57] = static_cast<std::uint8_t>(info.time_source);
  p[58] = static_cast<std::uint8_t>(info.clock);
  p[59] = static_cast<std::uint8_t>(info.station_ext);
  put_text(p, 60, info.station.substr(0, 4));
  put_text(p, 64, "STREAM ONE");
  put_text(p, 88, info.rate.substr(0, info.telemetry ? 8 : 4));
  if (!info.telemetry) put_text(p, 92, info.trigger.substr(0, 4));
  put_text(p, 96, info.trigger_time.substr(0, 16));
  put_text(p, 112, info.first_time.substr(0, 16));
  put_text(p, 128, info.detrigger_time.substr(0, 16));
  put_text(p, 144, info.last_time.substr(0, 16));
  put_column(p, 160, 8, info.bit_wght);
  put_column(p, 288, 8, info.tru_wght);
  put_chars(p, 416, info.gain);
  put_chars(p, 432, info.res);
  put_chars(p, 448, info.fsv);
  put_column(p, 464, 4, info.seed);
  put_chars(p, 528, info.sfsv);
  put_column(p, 544, 6, info.svpu);
  put_chars(p, 640, info.units);
  put_text(p, 860, "03");
  if (!info.position.empty()) put_text(p, 918, info.position.substr(0, 26));
  if (info.telemetry) put_text(p, 1016, "01 0001");
  return p;
}

void append(std::vector<std::uint8_t>& out, const Packet& p) { out.insert(out.end(), p.begin(), p.end()); }

bool write_file(const std::string& path, const std::vector<std::uint8_t>& bytes) {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (!f) return false;
  const bool ok = bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
  return std::fclose(f) == 0 && ok;
}

}  // namespace pktkit

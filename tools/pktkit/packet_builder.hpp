#pragma once
// Builds input packets field by field, for the sample generator and the tests.
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pktkit {

using Packet = std::array<std::uint8_t, 1024>;

// Header time of a packet.
struct PktTime {
  int yy = 9;  // two-digit year
  int ddd = 32;
  int hh = 0, mm = 0, ss = 0, ms = 0;
};

// Packed decimal of `value` into `width` bytes at `off`.
void put_bcd(Packet& p, int off, int width, unsigned value);
void put_text(Packet& p, int off, std::string_view text);
void put_be16(Packet& p, int off, std::uint16_t v);
void put_be32(Packet& p, int off, std::uint32_t v);

// A packet of the given type with its common header (byte count 1024 unless told otherwise).
Packet make_header(std::string_view type, std::uint16_t unit, PktTime t, unsigned seq);
// Header extension of EH, ET, DT, NH and NT packets.
void put_ext(Packet& p, unsigned event, unsigned stream, unsigned channel, unsigned samples, std::uint8_t flags,
             std::uint8_t format);

// DT packets with uncompressed samples.
Packet make_dt16(std::uint16_t unit, PktTime t, unsigned seq, unsigned event, unsigned stream, unsigned channel,
                 const std::vector<std::int32_t>& samples);
Packet make_dt32(std::uint16_t unit, PktTime t, unsigned seq, unsigned event, unsigned stream, unsigned channel,
                 const std::vector<std::int32_t>& samples);

// Event header or trailer body (non-telemetry form unless `telemetry`).
struct EventInfo {
  std::string rate = " 100";      // 4 characters (8 in the telemetry form)
  std::string trigger = "EVT ";
  std::string station = "STN1";   // 4 characters at 60
  char station_ext = ' ';         // at 59
  char clock = '0';               // days since lock at 58
  char time_source = '2';         // at 57
  std::string first_time = "2009032000000000";
  std::string last_time = "2009032000010000";
  std::string trigger_time = "2009032000000500";
  std::string detrigger_time = "2009032000009000";
  std::string position;           // 26 characters at 918, empty: blank
  bool telemetry = false;
  // Per-channel columns (up to 16 entries each); shorter lists leave blanks.
  std::vector<std::string> bit_wght, tru_wght, seed, svpu;
  std::string gain, res, fsv, sfsv, units;
};
Packet make_event_packet(std::string_view type, std::uint16_t unit, PktTime t, unsigned seq, unsigned event,
                         unsigned stream, bool channels_17_32, const EventInfo& info);

// Appends packets to a byte stream / file.
void append(std::vector<std::uint8_t>& out, const Packet& p);
bool write_file(const std::string& path, const std::vector<std::uint8_t>& bytes);

}  // namespace pktkit

#pragma once
// Steim-1 and Steim-2 encoding of DT packets: 15 frames of 64 bytes from offset 64, frame 1 words
// 1 and 2 holding the first (X0) and the last (Xn) sample of the packet.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "pktkit/packet_builder.hpp"

namespace pktkit {

enum class SteimLevel { k1 = 1, k2 = 2 };

// Data format byte of a Steim DT packet.
constexpr std::uint8_t steim_format(SteimLevel level) { return level == SteimLevel::k1 ? 0xC0 : 0xC2; }

// Encodes the longest prefix of samples[0..n) that fits the frames into bytes 64-1023 of p (all of
// them rewritten) and returns its length. The first difference is taken against `prev`, the
// channel's previous sample, or is 0 when there is none. Steim-2 cannot hold a difference wider
// than 30 bits: encoding stops before such a sample. With nothing encoded, X0 and Xn are prev (or 0).
std::size_t steim_encode(Packet& p, SteimLevel level, const std::int32_t* samples, std::size_t n,
                         std::optional<std::int32_t> prev);

// A whole DT packet (format byte 0xC0 or 0xC2) holding as many of the samples as fit; its header
// count is the number encoded, which `used` receives when given.
Packet make_dt_steim(SteimLevel level, std::uint16_t unit, PktTime t, unsigned seq, unsigned event, unsigned stream,
                     unsigned channel, const std::vector<std::int32_t>& samples, std::optional<std::int32_t> prev,
                     std::size_t* used = nullptr);

}  // namespace pktkit

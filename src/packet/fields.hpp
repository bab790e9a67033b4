#pragma once
// Named accessors for packet fields: every offset, width and encoding of the packet formats lives
// here, beside the type it belongs to, never scattered through the logic.
#include <cstdint>
#include <cstring>
#include <string_view>

#include "packet/bcd.hpp"

namespace lm {

constexpr std::size_t kPacketSize = 1024;

// Packed decimal number of `width` bytes.
struct BcdField {
  std::uint16_t off;
  std::uint8_t width;
  std::uint16_t value(const std::uint8_t* pkt) const { return bcd2i(pkt + off, width); }
};

// Fixed-width ASCII text, blank-padded, not terminated.
struct TextField {
  std::uint16_t off;
  std::uint16_t width;
  std::string_view view(const std::uint8_t* pkt) const {
    return {reinterpret_cast<const char*>(pkt + off), width};
  }
  // The text up to the field's width or its first NUL.
  std::string_view text(const std::uint8_t* pkt) const { return {ptr(pkt), strnlen(ptr(pkt), width)}; }
  const char* ptr(const std::uint8_t* pkt) const { return reinterpret_cast<const char*>(pkt + off); }
  char at(const std::uint8_t* pkt, std::uint16_t i = 0) const { return static_cast<char>(pkt[off + i]); }
};

// Single byte.
struct ByteField {
  std::uint16_t off;
  std::uint8_t value(const std::uint8_t* pkt) const { return pkt[off]; }
};

// Big-endian binary number.
struct Be16Field {
  std::uint16_t off;
  std::uint16_t value(const std::uint8_t* pkt) const { return load_be16(pkt + off); }
};

// The common 16-byte header of every packet and the extension of EH, ET, DT, NH and NT packets.
namespace hdr {
inline constexpr TextField kType{0, 2};
inline constexpr BcdField kYear{3, 1};
inline constexpr Be16Field kUnitId{4};
inline constexpr std::uint16_t kTimeBytesFirst = 2;   // bytes 2..15 unpacked give 28 digits
inline constexpr std::uint16_t kTimeBytesCount = 14;
inline constexpr BcdField kByteCount{12, 2};
inline constexpr BcdField kSequence{14, 2};
inline constexpr BcdField kEvent{16, 2};
inline constexpr BcdField kStream{18, 1};
inline constexpr BcdField kChannel{19, 1};
inline constexpr BcdField kSamples{20, 2};
inline constexpr ByteField kFlags{22};
inline constexpr ByteField kFormat{23};
inline constexpr std::uint8_t kFlagBlock17to32 = 0x04;

// Digit positions within the 28 characters that unbcd() makes of bytes 2..15.
namespace digit {
inline constexpr int kYear = 2, kDay = 8, kHour = 11, kMinute = 13, kSecond = 15, kMilli = 17;
inline constexpr int kByteCount = 20, kSequence = 24;
inline constexpr int kEvent = 28;  // only when bytes 16..17 are unpacked too (16 bytes, 32 digits)
}  // namespace digit
}  // namespace hdr

// Unpacks header bytes 2..15 (and, with `with_event`, 16..17) into digit text.
struct HeaderDigits {
  char d[32];
  explicit HeaderDigits(const std::uint8_t* pkt, bool with_event = false) {
    unbcd(d, pkt + hdr::kTimeBytesFirst, with_event ? 16 : hdr::kTimeBytesCount);
  }
  const char* at(int i) const { return d + i; }
};

// State-of-health (SH) packets: free text from here to the header's byte count.
namespace sh {
inline constexpr std::uint16_t kText = 24;
}  // namespace sh

// Data (DT) packet payloads.
namespace dt {
inline constexpr std::uint16_t kRawData = 24;     // 16- and 32-bit samples
inline constexpr std::uint16_t kFrames = 64;      // Steim frames 1..15, 64 bytes each
inline constexpr std::uint16_t kFrameSize = 64;
inline constexpr std::uint16_t kX0 = kFrames + 4;  // integration constants: frame 1, words 1 and 2
inline constexpr std::uint16_t kXn = kFrames + 8;
inline constexpr int kFrameCount = 15;
}  // namespace dt

}  // namespace lm

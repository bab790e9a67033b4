#pragma once
// Directory (DR) packets: a page of the recorder's disk directory. Every number is unsigned big-endian.
#include <cstdint>

#include "packet/bcd.hpp"
#include "packet/fields.hpp"

namespace lm::dir {

// Unsigned big-endian number of 1, 2 or 4 bytes.
struct Number {
  std::uint16_t off;
  std::uint8_t width;
  std::uint32_t value(const std::uint8_t* at) const { return width == 1 ? at[off] : reverse(at + off, width); }
};

inline constexpr Number kPrevLocation{16, 4};
inline constexpr Number kNextLocation{20, 4};
inline constexpr Number kSectorFlag{25, 1};  // not 0: locations count sectors, two to a block
inline constexpr Number kEntryCount{26, 2};
inline constexpr Number kLastEntry{28, 4};
inline constexpr std::uint16_t kFirstEntry = 32;

// A directory entry, offsets from its start; entries follow one another by their own lengths.
namespace entry {
inline constexpr Number kNumber{0, 4};
inline constexpr Number kStatus{4, 1};
inline constexpr Number kFormat{5, 1};
inline constexpr Number kLength{6, 2};
inline constexpr Number kUnitId{8, 2};
inline constexpr Number kEvent{10, 2};
inline constexpr Number kHeaderFlag{12, 1};
inline constexpr Number kTrailerFlag{13, 1};
inline constexpr Number kStream{14, 2};
inline constexpr TextField kStreamName{16, 8};
inline constexpr TextField kTrigger{24, 4};
// Packed times (7 bits year - 1984, 25 bits seconds of the year) in the order trigger, first sample,
// detrigger, last sample, entry; then their milliseconds in the same order.
inline constexpr int kTimes = 5;
inline constexpr Number kTime0{28, 4};
inline constexpr Number kMilli0{48, 2};
constexpr Number time(int k) { return {static_cast<std::uint16_t>(kTime0.off + 4 * k), 4}; }
constexpr Number milli(int k) { return {static_cast<std::uint16_t>(kMilli0.off + 2 * k), 2}; }
inline constexpr Number kDataFormat{58, 2};
inline constexpr Number kDataLocation{60, 4};  // from the previous directory location
inline constexpr Number kDataBlocks{64, 4};
inline constexpr Number kDiskErrors{68, 4};
inline constexpr std::uint16_t kSize = 72;  // bytes every entry's fields span
static_assert(time(kTimes - 1).off + 4 == kMilli0.off && milli(kTimes - 1).off + 2 == kDataFormat.off);
static_assert(kDiskErrors.off + kDiskErrors.width == kSize);
}  // namespace entry

}  // namespace lm::dir

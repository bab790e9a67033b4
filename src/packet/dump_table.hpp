#pragma once
// How the readable log dumps describe a packet: rows of labelled fields, and repeated blocks of rows.
// The tables stand beside each packet type's layout; the engine that prints them is in the log.
#include <cstdint>
#include <span>

#include "packet/fields.hpp"

namespace lm {

// How a field's bytes are shown after its label.
enum class Show : std::uint8_t {
  kText,       // the characters as they are
  kBlanks,     // the characters, every blank as "_"
  kChar,       // exactly one byte, whatever it is
  kEnabled,    // "Enabled" when the byte is 'Y', else "Disabled"
  kAlwaysOn,   // "Always On" when the byte is 'O', else "Toggle"
};

struct DumpRow {
  const char* label;
  std::uint16_t off;     // from the start of the packet, or of the block
  std::uint16_t width;
  Show show = Show::kText;
  const char* before = "";  // text between the label and the field
  const char* after = "";   // text between the field and the line end
};

// A row showing a named text field as it is.
constexpr DumpRow row(const char* label, TextField f) { return {label, f.off, f.width}; }

// `count` blocks of `stride` bytes from `first`, each laid out by `rows`.
struct DumpBlocks {
  std::span<const DumpRow> rows;
  std::uint16_t first;
  std::uint16_t stride;
  std::uint8_t count;
};

// True when every row lies within `size` bytes.
constexpr bool rows_fit(std::span<const DumpRow> rows, unsigned size) {
  for (const DumpRow& r : rows)
    if (r.off + r.width > size || (r.show >= Show::kChar && r.width != 1)) return false;
  return true;
}
constexpr bool blocks_fit(const DumpBlocks& b) {
  return rows_fit(b.rows, b.stride) && unsigned{b.first} + (b.count - 1u) * b.stride < kPacketSize;
}

}  // namespace lm

#pragma once
// The one engine for "label : field" lines of the packet dumps, driven by the tables in src/packet.
#include <cstdint>
#include <span>
#include <string_view>

#include "packet/dump_table.hpp"

namespace lm {

class OutFile;

// Where a label line starts and how wide its label is padded.
struct Indent {
  std::uint8_t lead;
  std::uint8_t pad;
};
inline constexpr Indent kTopLevel{5, 29};
inline constexpr Indent kSubBlock{6, 28};
inline constexpr Indent kEventLevel{3, 23};

// The bytes of a field that lie in the packet, up to its first NUL.
std::string_view field_text(const std::uint8_t* pkt, unsigned off, unsigned width);

// The label, padded to the indent, and ": ".
void dump_label(OutFile& s, Indent in, const char* label);
// One line per row, the rows' offsets taken from `base`.
void dump_rows(OutFile& s, const std::uint8_t* pkt, unsigned base, std::span<const DumpRow> rows, Indent in);
// Every block whose first byte is not a blank: `lead`, its rows, then `tail` with the block's start.
void dump_blocks(OutFile& s, const std::uint8_t* pkt, const DumpBlocks& b, Indent in, const char* lead,
                 void (*tail)(OutFile&, const std::uint8_t*, unsigned) = nullptr);

}  // namespace lm

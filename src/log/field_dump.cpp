#include "log/field_dump.hpp"

#include <cstring>

#include "base/out_file.hpp"

namespace lm {

std::string_view field_text(const std::uint8_t* pkt, unsigned off, unsigned width) {
  if (off >= kPacketSize) return {reinterpret_cast<const char*>(pkt), 0};  // empty, but never a null pointer
  // A field cut by the end of the packet shows the bytes that are there.
  if (width > kPacketSize - off) width = kPacketSize - off;
  const char* p = reinterpret_cast<const char*>(pkt + off);
  return {p, strnlen(p, width)};
}

void dump_label(OutFile& s, Indent in, const char* label) {
  s.printf("%*s%-*s: ", int{in.lead}, "", int{in.pad}, label);
}

namespace {

void dump_field(OutFile& s, const std::uint8_t* pkt, unsigned off, const DumpRow& r) {
  const bool in_packet = off < kPacketSize;
  switch (r.show) {
    case Show::kText:
      s.write(field_text(pkt, off, r.width));
      break;
    case Show::kBlanks:
      for (char c : field_text(pkt, off, r.width)) s.put(c == ' ' ? '_' : c);
      break;
    case Show::kChar:
      if (in_packet) s.put(static_cast<char>(pkt[off]));
      break;
    case Show::kEnabled:
      s.write(in_packet && pkt[off] == 'Y' ? "Enabled" : "Disabled");
      break;
    case Show::kAlwaysOn:
      s.write(in_packet && pkt[off] == 'O' ? "Always On" : "Toggle");
      break;
  }
}

}  // namespace

void dump_rows(OutFile& s, const std::uint8_t* pkt, unsigned base, std::span<const DumpRow> rows, Indent in) {
  for (const DumpRow& r : rows) {
    dump_label(s, in, r.label);
    s.write(r.before);
    dump_field(s, pkt, base + r.off, r);
    s.write(r.after);
    s.write("\r\n");
  }
}

void dump_blocks(OutFile& s, const std::uint8_t* pkt, const DumpBlocks& b, Indent in, const char* lead,
                 void (*tail)(OutFile&, const std::uint8_t*, unsigned)) {
  for (unsigned i = 0; i < b.count; ++i) {
    const unsigned base = b.first + i * b.stride;
    if (base >= kPacketSize || pkt[base] == ' ') continue;
    s.write(lead);
    dump_rows(s, pkt, base, b.rows, in);
    if (tail) tail(s, pkt, base);
  }
}

}  // namespace lm

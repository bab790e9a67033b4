#include "log/log_file.hpp"

#include <cstdio>
#include <cstring>
#include <ctime>

#include "decode/decoders.hpp"
#include "packet/codes.hpp"
#include "packet/fields.hpp"
#include "base/out_file.hpp"
#include "base/dec_text.hpp"
#include "model/settings.hpp"

namespace lm {

namespace {

const char* yes_no(unsigned v) { return v ? "YES" : "NO"; }

const char* name_option_text(unsigned v) {
  if (v == 0) return "Auto";
  if (v == 1) return "Unit ID";
  return "Station";
}

bool has_extension(std::uint16_t code) {
  return code == kEH || code == kET || code == kDT || code == kNH || code == kNT;
}

}  // namespace

void settings_lines(const Settings& set, void (*emit)(void* ctx, const char* line), void* ctx, const char* nl) {
  char line[512];
  auto put = [&](const char* label, const char* value) {
    std::snprintf(line, sizeof line, "%s%s : %s", nl, label, value);
    emit(ctx, line);
  };
  char num[32];
  std::snprintf(line, sizeof line, "%s%s     Input File : %s", nl, nl, set.FileIn);
  emit(ctx, line);
  put("       INI File", set.FileIni);
  put("  Original Path", set.DirOrg);
  put("    Output Path", set.DirOut);
  std::snprintf(num, sizeof num, "%u", unsigned{set.Path_option});
  put("    Path Option", num);
  put("    Name Option", name_option_text(set.Name_option));
  put("         Gather", yes_no(set.Flag_info.gather));
  put("      trace Hdr", yes_no(set.Flag_info.trace_hdr));
  put("     Log enable", yes_no(set.Log_on));
  put("    Log DT Blks", yes_no(set.Log_dt));
  put("       Log File", set.FileLog);
  put("     QCC enable", yes_no(set.Qcc_on));
  put("       QCC File", set.FileQcc);
  std::snprintf(num, sizeof num, "%.4f", static_cast<double>(set.Smp_rate_cmd));
  put("    Sample Rate", num);
  std::snprintf(num, sizeof num, "%lu", static_cast<unsigned long>(set.Smp_limit));
  put("    Max Samples", num);
  std::snprintf(num, sizeof num, "%lu", static_cast<unsigned long>(set.Smp_skip));
  put("   Skip Samples", num);
}

void Log_fhdr(OutFile& stream, const Settings& set) {
  stream.printf("%s - Version %s", Program, Version);
  char when[32] = {};
  if (!ctime_r(&set.Sys_time, when)) when[0] = '\0';
  stream.printf("\r\nSystem time: %.24s", when);
  settings_lines(set, [](void* ctx, const char* line) { static_cast<OutFile*>(ctx)->write(line, std::strlen(line)); },
                 &stream, "\r\n");
  stream.printf("\r\n   Command Line : %s", set.Cmd_line);
  stream.write("\r\n\r\n");
}

void log_head(OutFile& stream, const std::uint8_t* packet, std::uint16_t code, LineState& at) {
  // One line per packet: formatted by hand, the widths and paddings of its printf form kept.
  const HeaderDigits h(packet, true);
  namespace d = hdr::digit;
  char line[128];
  char* p = put_text_n(line, hdr::kType.ptr(packet), 2);
  *p++ = at.sign == 0 ? ' ' : (at.sign < 0 ? '-' : '+');
  at.sign = 0;
  static constexpr struct {
    int digit, width;
    char after;
  } kTime[] = {{d::kYear, 2, ':'}, {d::kDay, 3, ':'},    {d::kHour, 2, ':'},
               {d::kMinute, 2, ':'}, {d::kSecond, 2, '.'}, {d::kMilli, 3, ' '}};
  // Header digits are never NUL: each field is copied as four of them (the line has room), and what
  // lies past its width is written over by what follows.
  for (const auto& t : kTime) {
    std::memcpy(p, h.at(t.digit), 4);
    p += t.width;
    *p++ = t.after;
  }
  p = put_hex(put_text(p, "U:"), hdr::kUnitId.value(packet), 4);
  if (has_extension(code)) {
    p = put_dec_min(put_text(put_text(put_text(p, " E:"), {h.at(d::kEvent), 4}), " D:"),
                    unsigned{hdr::kStream.value(packet)} + 1u, 1);
    if (code == kDT) {
      // Channels past 'Z' (damaged BCD) show as '?'.
      const unsigned c = unsigned{hdr::kChannel.value(packet)} + 1u;
      const char ch = c <= 9 ? static_cast<char>('0' + c) : (c <= 35 ? static_cast<char>('A' + c - 10) : '?');
      p = put_text(p, " C:");
      *p++ = ch;
      p = put_dec_min(put_text(p, " S:"), hdr::kSamples.value(packet), 4);
    } else {
      p = put_text(p, "           ");
    }
    p = put_hex(put_text(p, " F:"), hdr::kFormat.value(packet), 2);
  } else {
    p = put_text(p, "                           ");
  }
  p = put_text(put_text(put_text(p, " N:"), {h.at(d::kSequence), 4}), " B:");
  p = put_text(put_dec_min(p, at.Blk_cnt, 10), "\r\n");
  stream.write(line, static_cast<std::size_t>(p - line));
}

void log_block(OutFile& stream, const std::uint8_t* packet, int kind) {
  if (kind == 4) {
    // The text lies in bytes 24 to 1023 at most; a count above 1024 is bounded to the packet.
    unsigned n = hdr::kByteCount.value(packet);
    if (n > kPacketSize) n = kPacketSize;
    stream.write("     ");
    for (unsigned i = sh::kText; i < n; ++i) {
      stream.put(static_cast<char>(packet[i]));
      if (packet[i] == '\n') stream.write("     ");
    }
    // The line end looks at the count's last two bytes even where they fall before the text (bytes
    // 22 and 23 at the least); a count below the text start has nothing to look at.
    const bool counted = n >= sh::kText;
    if (!(counted && packet[n - 1] == '\n')) {
      if (!(counted && packet[n - 2] == '\r')) stream.put('\r');
      stream.put('\n');
    }
    stream.write("\r\n");
  } else if (kind == 0) {
    char line[72];
    for (unsigned off = 0; off < kPacketSize; off += 16) {
      hex_str(line, packet + off);
      stream.printf("     %03X   %s\r\n", off, line);
    }
    stream.write("\r\n");
  }
}

void log_steim_check(OutFile& stream, const std::uint8_t* packet, const Decoded& d) {
  const SteimCheck& c = d.check;
  stream.printf("     Read start 0x%08lX  stop 0x%08lX  samples %d\r\n", static_cast<unsigned long>(c.x0),
                static_cast<unsigned long>(c.xn), int{c.n_hdr});
  stream.printf("     Calc start 0x%08lX  stop 0x%08lX  samples %d\r\n", static_cast<unsigned long>(c.calc_start),
                static_cast<unsigned long>(c.calc_stop), static_cast<int>(d.count));
  log_block(stream, packet, 0);
}

void log_fd(OutFile&, const std::uint8_t*) {}

}  // namespace lm

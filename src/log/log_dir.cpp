// Dump of directory (DR) packets: the page's links, then each entry walked by its own length.
#include "log/log_packets.hpp"
#include "base/out_file.hpp"
#include "packet/dir_layout.hpp"
#include "time/time_str.hpp"

namespace lm {

namespace {

void log_dir_times(OutFile& s, const std::uint8_t* e) {
  static constexpr const char* kLabels[dir::entry::kTimes] = {
      "      Trigger time                : ", "      First sample time           : ",
      "      Detrigger time              : ", "      Last sample time            : ",
      "      Entry time                  : "};
  for (int k = 0; k < dir::entry::kTimes; ++k) {
    s.write(kLabels[k]);
    if (const std::uint32_t packed = dir::entry::time(k).value(e)) {
      char digits[16];
      secs_split(packed, digits);
      const TimeText t(digits);
      s.printf("%4.4s:%3.3s:%2.2s:%2.2s:%2.2s.%.3u", t.year(), t.day(), t.hour(), t.minute(), t.second(),
               unsigned{dir::entry::milli(k).value(e)});
    }
    s.write("\r\n");
  }
}

void log_dir_entry(OutFile& s, const std::uint8_t* e, unsigned long base) {
  namespace en = dir::entry;
  auto ul = [e](dir::Number n) { return static_cast<unsigned long>(n.value(e)); };
  s.printf("\r\n      Entry Number                : %lu\r\n", ul(en::kNumber));
  s.printf("      Entry Status                : %u\r\n", unsigned(ul(en::kStatus)));
  s.printf("      Entry Format                : %u\r\n", unsigned(ul(en::kFormat)));
  s.printf("      Entry Length                : %u\r\n", unsigned(ul(en::kLength)));
  s.printf("      Unit ID                     : %04lu\r\n", ul(en::kUnitId));
  s.printf("      Event Number                : %lu\r\n", ul(en::kEvent));
  s.printf("      Event Header Flag           : %u\r\n", unsigned(ul(en::kHeaderFlag)));
  s.printf("      Event Trailer Flag          : %u\r\n", unsigned(ul(en::kTrailerFlag)));
  s.printf("      Stream Number               : %lu\r\n", ul(en::kStream));
  s.printf("      Data Stream Name            : %8.8s\r\n", en::kStreamName.ptr(e));
  s.printf("      Trigger Type                : %4.4s\r\n", en::kTrigger.ptr(e));
  s.printf("      Data Format                 : %02lX\r\n", ul(en::kDataFormat));
  s.printf("      Data Location (Block)       : %010lu\r\n", base + ul(en::kDataLocation));
  s.printf("      Data Length (Blocks)        : %010lu\r\n", ul(en::kDataBlocks));
  s.printf("      Disk Errors (Blocks)        : %lu\r\n", ul(en::kDiskErrors));
  log_dir_times(s, e);
}

}  // namespace

void log_dr(OutFile& s, const std::uint8_t* p) {
  const unsigned flag = dir::kSectorFlag.value(p);
  const unsigned shift = flag != 0 ? 1 : 0;
  const unsigned long base = dir::kPrevLocation.value(p) >> shift;
  const unsigned count = dir::kEntryCount.value(p);
  s.printf("     Prev Dir Location (Block)    : %010lu\r\n", base);
  s.printf("     Next Dir Location (Block)    : %010lu\r\n", static_cast<unsigned long>(dir::kNextLocation.value(p) >> shift));
  s.printf("     Block/Sector Flag            : %u\r\n", flag);
  s.printf("     No of dir entries            : %u\r\n", count);
  s.printf("     Last Entry Number            : %lu\r\n", static_cast<unsigned long>(dir::kLastEntry.value(p)));
  // The packet bounds the walk: an entry whose fields would pass its end is not read, and an entry
  // of length 0 is shown once and ends the walk, as the next one would be the same.
  unsigned off = dir::kFirstEntry;
  for (unsigned i = 0; i < count && off + dir::entry::kSize <= kPacketSize; ++i) {
    log_dir_entry(s, p + off, base);
    const unsigned len = dir::entry::kLength.value(p + off);
    if (len == 0) break;
    off += len;
  }
}

}  // namespace lm

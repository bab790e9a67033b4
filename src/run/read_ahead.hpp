#pragma once
// The input, read a batch of packets at a time into a small ring. While the packet loop converts one
// batch, a helper thread decodes the DT packets of the batches read after it and takes their
// samples' statistics: the work that depends on the packet alone. Every read, write and message stays on the loop's thread, in the loop's order,
// so the output is the same byte for byte as without the helper, which is left out on a single
// processor and when no thread can be started.
#include <cstdint>
#include <cstdio>
#include <memory>
#include <thread>

#include "decode/decoders.hpp"
#include "output/asc_trace.hpp"
#include "packet/fields.hpp"

namespace lm {

inline constexpr std::uint16_t kBlkEnd = 29;

// A DT packet of a known format, decoded ahead of its turn.
struct PreparedDt {
  Decoded d;  // checked against the last sample of a channel still to come: end_check()
  PacketStats stats;  // of all d.count samples, when there are any
  std::uint32_t samples[kMaxSamples];
};

class ReadAhead {
 public:
  static constexpr std::size_t kBatch = 64;  // packets
  static constexpr std::size_t kSlots = 4;   // batches: one being converted, the others read ahead

  // `path` names the input in the read error.
  ReadAhead(std::FILE* in, const char* path);
  ~ReadAhead();
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;

  // The next packet into buffer: 0, or kBlkEnd when fewer than 1024 bytes were left (the bytes
  // there were are copied over the buffer's start, the packet is dropped). A read that stops short
  // and is not at the end of the file ends the run, unless an interrupt cut it short.
  std::uint16_t Blk_read(std::uint8_t* buffer);
  // The packet Blk_read gave last, decoded, or null when it is not a DT packet of a known format.
  PreparedDt* prepared();

 private:
  struct Batch;
  void fill(Batch& b);
  void prepare(Batch& b);
  void help();
  void wait_ready(Batch& b);

  std::FILE* in_;
  const char* path_;
  std::unique_ptr<Batch> batch_[kSlots];
  std::size_t cur_ = 0;
  bool last_full_ = false;  // the latest batch read was whole: there may be more
  std::size_t pos_ = 0;  // next packet of the current batch
  bool started_ = false;

  std::thread helper_;
};

}  // namespace lm

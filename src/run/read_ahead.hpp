#pragma once
// The input, read a batch of packets at a time into a small ring. While the packet loop converts one
// batch, a helper thread decodes the DT packets of the batches read after it and takes their
// samples' statistics: the work that depends on the packet alone. Every read, write and message
// stays on the loop's thread, in the loop's order, so the output is the same byte for byte as
// without the helper, which is left out on a single processor and when no thread can be started.
#include <cstdint>
#include <cstdio>
#include <memory>
#include <thread>

#include "decode/decoders.hpp"
#include "output/asc_trace.hpp"
#include "packet/fields.hpp"

namespace lm {

// A DT packet of a known format, decoded ahead of its turn.
struct PreparedDt {
  Decoded d;  // checked against the last sample of a channel still to come: end_check()
  PacketStats stats;  // of all d.count samples, when there are any
  const std::uint32_t* samples;  // d.count of them, in the batch's sample store
};

class ReadAhead {
 public:
  static constexpr std::size_t kBatch = 64;  // packets
  static constexpr std::size_t kSlots = 6;   // batches: one being converted, the others read ahead

  // `path` names the input in the read error.
  ReadAhead(std::FILE* in, const char* path);
  ~ReadAhead();
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;

  // The next packet, where it was read: valid until the next call. At the end of the input, null,
  // and `buffer` holds the last packet given with the bytes left over (fewer than 1024, the packet
  // that is dropped) copied over its start. A read that stops short and is not at the end of the
  // file ends the run, unless an interrupt cut it short.
  const std::uint8_t* Blk_read(std::uint8_t* buffer);
  // The packet Blk_read gave last, decoded, or null when it is not a DT packet of a known format.
  PreparedDt* prepared();

 private:
  struct Batch;
  void fill(Batch& b);
  void prepare(Batch& b);
  void help();
  void wait_ready(Batch& b);
  void tell_helper();

  std::FILE* in_;
  const char* path_;
  std::unique_ptr<Batch> batch_[kSlots];
  std::size_t cur_ = 0;
  bool last_full_ = false;  // the latest batch read was whole: there may be more
  std::size_t pos_ = 0;  // next packet of the current batch
  bool started_ = false;
  const std::uint8_t* last_ = nullptr;  // the packet given last
  // Batches queued that the helper has not been told of. It is told of kTellAfter at a time, or when
  // the loop is about to wait: waking a sleeping thread costs more than a batch's worth of waiting.
  static constexpr std::size_t kTellAfter = kSlots - 2;
  Batch* untold_[kSlots] = {};
  std::size_t n_untold_ = 0;

  std::thread helper_;
};

}  // namespace lm

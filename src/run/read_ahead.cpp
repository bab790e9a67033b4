#include "run/read_ahead.hpp"

#include <sched.h>
#include <signal.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <span>
#include <system_error>

#include "base/exit.hpp"
#include "packet/codes.hpp"
#include "run/interrupt.hpp"

namespace lm {

namespace {

enum class State : int { kIdle, kQueued, kReady, kStop };

// Waits for a state that `done` accepts, asleep: with the ring's batches read ahead, a thread
// that waits has nothing to do soon, and spinning for the other cost more processor time than it
// saved in wall time.
template <class Done>
State await(const std::atomic<State>& state, Done done) {
  for (;;) {
    const State s = state.load(std::memory_order_acquire);
    if (done(s)) return s;
    state.wait(s, std::memory_order_acquire);
  }
}

void set(std::atomic<State>& state, State s) {
  state.store(s, std::memory_order_release);
  state.notify_all();
}

}  // namespace

struct ReadAhead::Batch {
  std::atomic<State> state{State::kIdle};
  std::uint8_t packets[kBatch][kPacketSize];
  std::size_t bytes = 0;  // read into packets
  bool read_error = false;
  bool is_dt[kBatch] = {};  // a DT packet of a known format, prepared
  PreparedDt prepared[kBatch];
  // The packets' samples one after the other: the memory touched follows the samples there are,
  // not the most a packet could hold.
  std::uint32_t samples[kBatch * kMaxSamples];
};

ReadAhead::ReadAhead(std::FILE* in, const char* path) : in_(in), path_(path) {
  // Not value-initialised: only the parts in use are ever touched.
  for (auto& b : batch_) b.reset(new Batch);
  // On a single processor the two would only take turns, and waiting for each other would cost.
  cpu_set_t cpus;
  if (sched_getaffinity(0, sizeof cpus, &cpus) == 0 && CPU_COUNT(&cpus) < 2) return;
  // The helper takes no signals: an interrupt reaches the loop's thread, whose read it cuts short.
  sigset_t all, old;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &old);
  try {
    helper_ = std::thread([this] { help(); });
  } catch (const std::system_error&) {
    // No thread to be had: the batches are prepared in turn on this one.
  }
  pthread_sigmask(SIG_SETMASK, &old, nullptr);
}

ReadAhead::~ReadAhead() {
  if (!helper_.joinable()) return;
  tell_helper();
  // Once no batch is in the helper's hands it is waiting for the next one: it gets a stop instead.
  for (auto& b : batch_) await(b->state, [](State s) { return s != State::kQueued; });
  for (auto& b : batch_) set(b->state, State::kStop);
  helper_.join();
}

void ReadAhead::fill(Batch& b) {
  b.bytes = std::fread(b.packets, 1, kBatch * kPacketSize, in_);
  b.read_error = std::ferror(in_) != 0;
  last_full_ = b.bytes == kBatch * kPacketSize;
  if (!helper_.joinable()) {
    prepare(b);
    return;
  }
  b.state.store(State::kQueued, std::memory_order_release);
  untold_[n_untold_++] = &b;
  if (n_untold_ >= kTellAfter) tell_helper();
}

void ReadAhead::tell_helper() {
  for (std::size_t i = 0; i < n_untold_; ++i) untold_[i]->state.notify_all();
  n_untold_ = 0;
}

void ReadAhead::prepare(Batch& b) {
  // Each packet takes at most kMaxSamples: the store's rest always has room for the next one.
  std::uint32_t* store = b.samples;
  for (std::size_t i = 0; i < b.bytes / kPacketSize; ++i) {
    const std::uint8_t* packet = b.packets[i];
    const Decoder decode = code_set(packet) == kDT ? decoder_for(hdr::kFormat.value(packet)) : nullptr;
    b.is_dt[i] = decode != nullptr;
    if (!decode) continue;
    PreparedDt& p = b.prepared[i];
    std::int32_t any_last = 0;
    p.d = decode(packet, any_last, std::span<std::uint32_t>(store, b.samples + std::size(b.samples)));
    p.samples = store;
    store += std::min<std::size_t>(p.d.count, kMaxSamples);
    if (p.d.count > 0) p.stats = packet_stats(reinterpret_cast<const std::int32_t*>(p.samples), p.d.count);
  }
}

// The helper's loop: the batches in turn, each as soon as it is queued.
void ReadAhead::help() {
  for (std::size_t next = 0;; next = (next + 1) % kSlots) {
    Batch& b = *batch_[next];
    if (await(b.state, [](State s) { return s == State::kQueued || s == State::kStop; }) == State::kStop) return;
    prepare(b);
    set(b.state, State::kReady);
  }
}

void ReadAhead::wait_ready(Batch& b) {
  if (!helper_.joinable() || b.state.load(std::memory_order_acquire) == State::kReady) return;
  tell_helper();
  await(b.state, [](State s) { return s == State::kReady; });
}

const std::uint8_t* ReadAhead::Blk_read(std::uint8_t* buffer) {
  if (!started_) {
    started_ = true;
    for (std::size_t i = 0; i < kSlots && (i == 0 || last_full_); ++i) fill(*batch_[i]);
    wait_ready(*batch_[0]);
  }
  for (;;) {
    Batch& b = *batch_[cur_];
    if (pos_ < b.bytes / kPacketSize) return last_ = b.packets[pos_++];
    if (b.bytes < kBatch * kPacketSize) {
      // The batch of the last packet given is still whole: nothing is read after a short batch.
      if (last_) std::memcpy(buffer, last_, kPacketSize);
      std::memcpy(buffer, b.packets[pos_], b.bytes % kPacketSize);
      // A read cut short by an interrupt is the end of the input, not a read error.
      if (b.read_error && !interrupted()) shut_down(21, path_);
      return nullptr;
    }
    // This batch is done: it takes the next one to read, which the helper prepares while the loop
    // converts those before it. Nothing is read past a batch that came up short.
    if (last_full_) fill(b);
    cur_ = (cur_ + 1) % kSlots;
    pos_ = 0;
    wait_ready(*batch_[cur_]);
  }
}

PreparedDt* ReadAhead::prepared() {
  Batch& b = *batch_[cur_];
  return pos_ > 0 && b.is_dt[pos_ - 1] ? &b.prepared[pos_ - 1] : nullptr;
}

}  // namespace lm

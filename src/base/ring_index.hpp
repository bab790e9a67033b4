#pragma once
// Constant-time lookup beside a ring: key -> record. Keys are unique within a ring, so a lookup
// gives the record the ring walk would find, while the ring keeps its order and cursor rules.
// Open addressing with linear probing; the table doubles at half load, and an erase shifts the
// following entries back so that no tombstones pile up. An empty index holds no memory.
#include <cstdint>
#include <new>

namespace lm {

template <class T>
class RingIndex {
 public:
  RingIndex() = default;
  ~RingIndex() { delete[] slots_; }
  RingIndex(const RingIndex&) = delete;
  RingIndex& operator=(const RingIndex&) = delete;

  T* find(std::uint32_t key) const {
    if (!slots_) return nullptr;
    for (std::uint32_t i = home(key);; i = (i + 1) & mask_) {
      if (!slots_[i].rec) return nullptr;
      if (slots_[i].key == key) return slots_[i].rec;
    }
  }

  // Adds a key that is not in the index yet; false, with the index unchanged, when memory ran out.
  bool insert(std::uint32_t key, T* rec) {
    if ((size_ + 1) * 2 > capacity() && !grow()) return false;
    place(key, rec);
    ++size_;
    return true;
  }

  void erase(std::uint32_t key) {
    if (!slots_) return;
    std::uint32_t hole = home(key);
    while (slots_[hole].rec && slots_[hole].key != key) hole = (hole + 1) & mask_;
    if (!slots_[hole].rec) return;
    // Move back every later entry of the cluster whose home does not lie between the hole and it.
    for (std::uint32_t j = (hole + 1) & mask_; slots_[j].rec; j = (j + 1) & mask_) {
      const std::uint32_t h = home(slots_[j].key);
      const bool stays = hole < j ? (hole < h && h <= j) : (hole < h || h <= j);
      if (stays) continue;
      slots_[hole] = slots_[j];
      hole = j;
    }
    slots_[hole].rec = nullptr;
    --size_;
  }

  void clear() {
    delete[] slots_;
    slots_ = nullptr;
    mask_ = 0;
    size_ = 0;
  }

  std::uint32_t size() const { return size_; }

 private:
  struct Slot {
    T* rec = nullptr;
    std::uint32_t key = 0;
  };
  static constexpr std::uint32_t kFirstCapacity = 8;

  std::uint32_t capacity() const { return slots_ ? mask_ + 1 : 0; }
  std::uint32_t home(std::uint32_t key) const { return ((key * 0x9E3779B1u) >> 7) & mask_; }

  void place(std::uint32_t key, T* rec) {
    std::uint32_t i = home(key);
    while (slots_[i].rec) i = (i + 1) & mask_;
    slots_[i] = Slot{rec, key};
  }

  bool grow() {
    const std::uint32_t cap = slots_ ? capacity() * 2 : kFirstCapacity;
    Slot* fresh = new (std::nothrow) Slot[cap];
    if (!fresh) return false;
    Slot* old = slots_;
    const std::uint32_t old_cap = capacity();
    slots_ = fresh;
    mask_ = cap - 1;
    for (std::uint32_t i = 0; i < old_cap; ++i)
      if (old[i].rec) place(old[i].key, old[i].rec);
    delete[] old;
    return true;
  }

  Slot* slots_ = nullptr;
  std::uint32_t mask_ = 0;
  std::uint32_t size_ = 0;
};

}  // namespace lm

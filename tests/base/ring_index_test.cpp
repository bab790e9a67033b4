// The index beside the rings against a plain map, through growth, wrap-around and back-shifting
// erases: keys chosen so that many share a home slot.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <vector>

#include "base/ring_index.hpp"

namespace {

struct Rec {
  int id;
};

TEST(RingIndex, AgreesWithAMapThroughInsertsAndErases) {
  const struct {
    unsigned seed;
    std::vector<std::uint32_t> pool;  // keys to draw from; empty: 0 to range - 1
    std::uint32_t range;
    int steps;
  } cases[] = {
      {1, {}, 16, 2000},
      {2, {}, 200, 5000},
      {4, {}, 65536, 20000},
      // At most four keys stay in the first table of 8 slots: keys homed on its last slots (7, 14, 21;
      // 2, 9) and on its first (0, 5) make clusters that wrap round its end.
      {5, {7, 14, 21, 0}, 0, 3000},
      {6, {7, 14, 0, 5}, 0, 3000},
      {7, {2, 9, 7, 14}, 0, 3000},
  };
  for (const auto& c : cases) {
    std::mt19937 rng(c.seed);
    std::vector<std::uint32_t> keys = c.pool;
    for (std::uint32_t k = 0; k < c.range; ++k) keys.push_back(k);
    std::map<std::uint32_t, Rec*> want;
    std::vector<std::unique_ptr<Rec>> store;
    lm::RingIndex<Rec> index;
    for (int step = 0; step < c.steps; ++step) {
      const std::uint32_t key = keys[rng() % keys.size()];
      if (rng() % 3 != 0) {
        if (want.count(key)) continue;
        store.push_back(std::make_unique<Rec>(Rec{step}));
        ASSERT_TRUE(index.insert(key, store.back().get()));
        want[key] = store.back().get();
      } else {
        index.erase(key);
        want.erase(key);
      }
      if (step % 97 == 0 || keys.size() <= 200) {
        for (std::size_t i = 0; i < keys.size() && i < 400; ++i) {
          const auto it = want.find(keys[i]);
          ASSERT_EQ(index.find(keys[i]), it == want.end() ? nullptr : it->second)
              << c.seed << " step " << step << " key " << keys[i];
        }
      }
    }
    ASSERT_EQ(index.size(), want.size());
    for (const auto& [k, rec] : want) ASSERT_EQ(index.find(k), rec) << c.seed << " key " << k;
  }
}

}  // namespace

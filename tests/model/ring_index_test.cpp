// The index beside the rings against a plain map, through growth, wrap-around and back-shifting
// erases: keys chosen so that many share a home slot.
#include <gtest/gtest.h>

#include <map>
#include <random>

#include "model/ring_index.hpp"

namespace {

struct Rec {
  int id;
};

TEST(RingIndex, AgreesWithAMapThroughInsertsAndErases) {
  const struct {
    unsigned seed;
    std::uint32_t key_range;  // small ranges crowd the table
    int steps;
  } cases[] = {{1, 16, 2000}, {2, 200, 5000}, {3, 17000, 20000}, {4, 65536, 20000}};
  for (const auto& c : cases) {
    std::mt19937 rng(c.seed);
    std::map<std::uint32_t, Rec*> want;
    std::vector<std::unique_ptr<Rec>> store;
    lm::RingIndex<Rec> index;
    for (int step = 0; step < c.steps; ++step) {
      const std::uint32_t key = rng() % c.key_range;
      if (rng() % 3 != 0) {
        if (want.count(key)) continue;
        store.push_back(std::make_unique<Rec>(Rec{step}));
        ASSERT_TRUE(index.insert(key, store.back().get()));
        want[key] = store.back().get();
      } else {
        index.erase(key);
        want.erase(key);
      }
      if (step % 97 == 0 || c.key_range <= 200) {
        for (std::uint32_t k = 0; k < c.key_range && k < 400; ++k) {
          const auto it = want.find(k);
          ASSERT_EQ(index.find(k), it == want.end() ? nullptr : it->second) << c.seed << " step " << step << " key " << k;
        }
      }
    }
    ASSERT_EQ(index.size(), want.size());
    for (const auto& [k, rec] : want) ASSERT_EQ(index.find(k), rec) << c.seed << " key " << k;
  }
}

}  // namespace

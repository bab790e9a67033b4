// Pieces made in place in the file's buffer (compose and commit), or given to write() when the
// buffer has no room for them, must leave the file exactly as writing every piece would: at every
// fill of the buffer, including pieces that overflow it and pieces longer than it, in buffers of
// either size.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "base/out_file.hpp"
#include "support/e2e.hpp"

namespace {

// Ten files open at once: the first get large buffers, the later ones small, and each file must come
// out whole whatever its buffer's size.
TEST(OutFile, PiecesMadeInPlaceLeaveTheFileAsWritesWould) {
  constexpr int kFiles = 10;
  e2e::TempDir tmp;
  std::mt19937 rng(7);
  std::string paths[kFiles], want[kFiles];
  std::size_t in_place = 0, elsewhere = 0;
  {
    lm::OutFile f[kFiles];
    for (int i = 0; i < kFiles; ++i) {
      paths[i] = tmp.str() + "/pieces" + std::to_string(i);
      ASSERT_TRUE(f[i].open(paths[i].c_str(), tmp.str().size(), "wb"));
    }
    for (int k = 0; k < 400 * kFiles; ++k) {
      const int i = k % kFiles;
      // Mostly packet-sized pieces, now and then one as long as the largest buffer or longer.
      const std::size_t n = k % 500 >= 490 ? lm::OutFile::kCapacity + rng() % 4096 : 1 + rng() % 12000;
      const std::size_t most = n + rng() % 64;  // the bound a caller knows before making the piece
      std::string piece(n, '\0');
      for (char& c : piece) c = static_cast<char>('a' + rng() % 26);
      want[i] += piece;
      if (char* at = f[i].compose(most)) {
        std::memcpy(at, piece.data(), n);
        std::memset(at + n, '#', most - n);  // what a maker may leave past the piece's end
        f[i].commit(n);
        ++in_place;
      } else {
        f[i].write(piece.data(), n);
        ++elsewhere;
      }
    }
    for (lm::OutFile& file : f) file.close();
  }
  EXPECT_GT(in_place, 100u * kFiles);
  EXPECT_GT(elsewhere, 10u * kFiles);
  for (int i = 0; i < kFiles; ++i) EXPECT_EQ(e2e::read_file(paths[i]), want[i]) << paths[i];
}

}  // namespace

// Pieces made in place in the file's buffer (compose and commit), or given to write() when the
// buffer has no room for them, must leave the file exactly as writing every piece would: at every
// fill of the buffer, including pieces that overflow it and pieces longer than it.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "base/out_file.hpp"
#include "support/e2e.hpp"

namespace {

TEST(OutFile, PiecesMadeInPlaceLeaveTheFileAsWritesWould) {
  e2e::TempDir tmp;
  const std::string path = tmp.str() + "/pieces";
  std::mt19937 rng(7);
  std::string want;
  std::size_t in_place = 0, elsewhere = 0;
  {
    lm::OutFile f;
    ASSERT_TRUE(f.open(path.c_str(), tmp.str().size(), "wb"));
    for (int k = 0; k < 400; ++k) {
      // Mostly packet-sized pieces, now and then one as long as the buffer or longer.
      const std::size_t n = k % 50 == 49 ? lm::OutFile::kCapacity + rng() % 4096 : 1 + rng() % 12000;
      const std::size_t most = n + rng() % 64;  // the bound a caller knows before making the piece
      std::string piece(n, '\0');
      for (char& c : piece) c = static_cast<char>('a' + rng() % 26);
      want += piece;
      if (char* at = f.compose(most)) {
        std::memcpy(at, piece.data(), n);
        std::memset(at + n, '#', most - n);  // what a maker may leave past the piece's end
        f.commit(n);
        ++in_place;
      } else {
        f.write(piece.data(), n);
        ++elsewhere;
      }
    }
    f.close();
  }
  EXPECT_GT(in_place, 100u);
  EXPECT_GT(elsewhere, 10u);
  EXPECT_EQ(e2e::read_file(path), want);
}

}  // namespace

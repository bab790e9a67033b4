#include "model/records.hpp"

#include <cstring>

namespace lm {

Evt::Evt() {
  for (ChnInfo& b : chn_info) {
    std::memset(&b, ' ', sizeof b);
    for (const ChnColumn& c : chn_col::kAll) column_ptr(b, c)[16 * c.width] = '\0';
  }
}

std::string_view chn_entry(const Evt& e, const ChnColumn& col, std::uint16_t channel) {
  static constexpr char kBlank[8] = {' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};
  const unsigned block = channel >> 4;
  if (block > 1) return {kBlank, col.width};
  return {column_ptr(e.chn_info[block], col) + (channel & 15) * col.width, col.width};
}

}  // namespace lm

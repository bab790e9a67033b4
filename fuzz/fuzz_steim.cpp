// The Steim-1 and Steim-2 decoders over one arbitrary packet.
#include <cstdint>
#include <cstring>

#include "decode/decoders.hpp"
#include "model/records.hpp"
#include "run/globals.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  alignas(8) std::uint8_t packet[1024] = {};
  std::memcpy(packet, data, size < sizeof packet ? size : sizeof packet);
  lm::UNIT_T unit;  // its log is closed: nothing is written
  lm::CHNLST_T chn;
  chn.unit = &unit;
  static std::uint32_t buf[lm::kDataBufWords];
  lm::Buf_c0(&chn, packet, buf);
  lm::Buf_c2(&chn, packet, buf);
  return 0;
}

// The readable dumps of DR, DS and SC packets over one arbitrary packet, written to /dev/null.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "log/log_packets.hpp"
#include "base/out_file.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  alignas(8) std::uint8_t packet[1024] = {};
  std::memcpy(packet, data, size < sizeof packet ? size : sizeof packet);
  static lm::OutFile sink;
  if (!sink.is_open() && !sink.open("/dev/null", 5, "wb")) std::abort();
  lm::log_dr(sink, packet);
  lm::log_ds(sink, packet);
  lm::log_sc(sink, packet);
  return 0;
}

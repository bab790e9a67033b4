#include "qc/qcc.hpp"

#include "log/log_file.hpp"
#include "output/out_file.hpp"

namespace lm {

void Qcc_init(CHNLST_T* chn) {
  chn->sum = 0;
  chn->sq_sum = 0;
  chn->min = 1.797693e+308;
  chn->max = -1.797693e+308;
  chn->min_at = 0;
  chn->max_at = 0;
}

void Qcc_fhdr(OutFile& stream) {
  Log_fhdr(stream);
  stream.write("\r\n\r\n");
}

// The statistics blocks are not written yet.
void Qcc_store(UNIT_T*, Evt*, const std::uint8_t*) {}

}  // namespace lm

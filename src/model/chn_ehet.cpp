#include <string_view>

#include "base/number.hpp"
#include "model/channel.hpp"

namespace lm {
namespace {

// Volts of a full-scale code; a blank keeps the value in force.
double full_scale(char code, double keep) {
  switch (code) {
    case ' ': return keep;
    case '1': return 3.75;
    case '2': return 5.0;
    case '3': return 10.0;
    case '4': return 20.0;
    default: return 10.0;
  }
}

// A number from the first `width` characters of a column entry, so the conversion never runs into
// the next channel's entry; the value stays when there is none.
void read_entry(std::string_view entry, std::size_t width, double& value) {
  if (const auto v = lead_double(entry.substr(0, width))) value = *v;
}

}  // namespace

void Chn_ehet(CHNLST_T* chn) {
  const Evt& e = *chn->evt;
  const std::uint16_t n = chn->channel;

  std::string_view weight = chn_entry(e, chn_col::kTruWght, n);
  if (weight[0] == ' ') weight = chn_entry(e, chn_col::kBitWght, n);
  if (weight[0] != ' ') {
    read_entry(weight, 5, chn->tbw);
    // The metric prefix stands after the five characters of number and a blank ("1.589 uV").
    switch (weight[6]) {
      case 'n': chn->tbw /= 1000.0; [[fallthrough]];
      case 'u': chn->tbw /= 1000.0; [[fallthrough]];
      case 'm': chn->tbw /= 1000.0; break;
      default: break;
    }
  }

  const int gain = chn_entry(e, chn_col::kGain, n)[0] - '0';
  if (gain >= 0 && gain <= 15) chn->gain_ndx = static_cast<std::uint8_t>(gain);

  const int res = chn_entry(e, chn_col::kR, n)[0] - '0';
  if (res >= 1 && res <= 4) chn->bits = static_cast<std::uint8_t>(8 * res);

  chn->chn_fsa = full_scale(chn_entry(e, chn_col::kFSV, n)[0], chn->chn_fsa);

  const std::string_view seed = chn_entry(e, chn_col::kSEED, n);
  if (seed[0] != ' ') chn->band = seed[0];
  if (seed[1] != ' ') chn->type = seed[1];
  if (seed[2] != ' ') chn->axis = seed[2];

  chn->sns_fsa = full_scale(chn_entry(e, chn_col::kSFSV, n)[0], chn->sns_fsa);

  const std::string_view svpu = chn_entry(e, chn_col::kSVPU, n);
  if (svpu[0] != ' ') read_entry(svpu, 6, chn->vpu);
}

}  // namespace lm

#pragma once
#include "model/records.hpp"

namespace lm {

// The event header's channel information applied to the channel.
void Chn_ehet(CHNLST_T* chn);

}  // namespace lm

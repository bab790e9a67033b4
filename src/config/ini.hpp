#pragma once
#include "model/records.hpp"

namespace lm {

// The unit's values from its INI section.
void Unit_ini(UNIT_T* unit);
// The channel's values from its unit's INI section.
void Chn_ini(CHNLST_T* chn);

}  // namespace lm

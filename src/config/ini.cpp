#include "config/ini.hpp"

namespace lm {

// The INI reader is not built yet: units and channels keep their defaults.
void Unit_ini(UNIT_T*) {}
void Chn_ini(CHNLST_T*) {}

}  // namespace lm

#include "output/names.hpp"

namespace lm {

const char* Asc_evt_name(Evt* evt) { return evt->evt_file_name; }

}  // namespace lm

#include "output/gather.hpp"

namespace lm {

// Gathering is not built yet: events keep their trace files.
void Asc_merge(Evt*) {}
void Asc_fhdr_out(Evt*) {}

}  // namespace lm

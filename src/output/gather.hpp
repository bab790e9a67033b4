#pragma once
#include "model/records.hpp"

namespace lm {

// Joins the event's trace files into one gathered event file and deletes them.
void Asc_merge(Evt* evt);
// Names and opens the gathered event file into the event's fd_evt.
void Asc_fhdr_out(Evt* evt);

}  // namespace lm

#pragma once
#include <cstdint>

#include "model/records.hpp"
#include "model/settings.hpp"

namespace lm {

// Joins the event's trace files into one gathered event file and deletes them.
void Asc_merge(Evt* evt, const Settings& set, std::uint16_t& open_files);
// Names and opens the gathered event file into the event's fd_evt.
void Asc_fhdr_out(Evt* evt, const Settings& set);

}  // namespace lm

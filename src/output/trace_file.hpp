#pragma once
// Opening and closing a channel's trace file, with the count of trace files open.
#include <cstddef>
#include <cstdint>

#include "model/records.hpp"

namespace lm {

// Opens the channel's trace file when it is not open; returns file_open.
// `root`: length of the output directory's part of its name.
std::uint8_t Chn_file_open(CHNLST_T* chn, const char* mode, std::size_t root, std::uint16_t& open_files);
void Chn_file_close(CHNLST_T* chn, std::uint16_t& open_files);
// Diagnostic dump of a channel record on standard output, then waits for a key.
void Chn_show(CHNLST_T* chn);

}  // namespace lm

#pragma once
// Readable dumps of packet bodies in the unit logs.
#include <cstdint>

namespace lm {

class OutFile;

void log_eh_et(OutFile& stream, const std::uint8_t* packet);
void log_nh_nt(OutFile& stream, const std::uint8_t* packet);
void log_sc(OutFile& stream, const std::uint8_t* packet);
void log_ad(OutFile& stream, const std::uint8_t* packet);
void log_om(OutFile& stream, const std::uint8_t* packet);
void log_ds(OutFile& stream, const std::uint8_t* packet);
void log_cd(OutFile& stream, const std::uint8_t* packet);
void log_dr(OutFile& stream, const std::uint8_t* packet);

}  // namespace lm

#pragma once
#include <cstdint>

namespace lm {

// Closes the run's files, prints the message of the code and ends the run with the code as status.
[[noreturn]] void shut_down(std::uint8_t code, const char* text);
// Closes the input, the run statistics file and the run log (each only when open).
void fcloseall();
// Waits for the operator after a diagnostic dump.
std::uint16_t any_key();

}  // namespace lm

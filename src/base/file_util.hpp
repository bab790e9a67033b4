#pragma once
#include <cstdint>
#include <cstdio>

namespace lm {

// True when a file or directory exists at the path.
bool fexist(const char* path);
// Opens a stream, retrying for about five seconds; null when no attempt succeeded.
std::FILE* fopen_lm(const char* path, const char* mode);
// The retry time of fopen_lm, 5 seconds unless a harness that runs many conversions shortens it.
void set_open_retry_seconds(int seconds);
// Creates every directory of the path up to its last "/" (the part after it is a file name).
void Make_dir(const char* path);
// Reads a decimal number, optionally written as a fraction "a/ b"; length 0 means the whole text.
float stof(const char* text, std::uint16_t length);

}  // namespace lm

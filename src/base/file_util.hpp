#pragma once
#include <cstdint>
#include <cstddef>
#include <cstdio>
#include <string>

namespace lm {

// True when a file or directory exists at the path.
bool fexist(const char* path);
// Opens a stream, retrying for about five seconds; null when no attempt succeeded.
std::FILE* fopen_lm(const char* path, const char* mode);
// The retry time of fopen_lm, 5 seconds unless a harness that runs many conversions shortens it.
void set_open_retry_seconds(int seconds);

// Output below a directory the user named. The first `root` characters of `path` are that
// directory (none: the working directory), followed as given, links included: that is the user's
// choice. Below it no component may be a symbolic link, so that a link planted in the output tree
// never leads a write outside it: each directory is entered with O_NOFOLLOW | O_DIRECTORY and the
// file opened with O_NOFOLLOW.
// The file opened with open(2) flags (O_CLOEXEC added); -1 with errno set when refused or failed.
int open_below(const char* path, std::size_t root, int flags);
// The same as a stream for an fopen mode ("rb", "wb", "a+b", "r+b", "w+b"), retried as fopen_lm
// retries, except that a refused link is refused at once.
std::FILE* fopen_below(const char* path, std::size_t root, const char* mode);
// Creates every directory of the path below `root` up to its last "/" (the part after it is a file
// name); false when one of them is a link or not a directory, or cannot be made.
bool make_dirs_below(const char* path, std::size_t root);
// The directory of this program with its trailing "/": the invocation name's when it has a "/",
// else the executable's that the system ran; empty when neither tells.
std::string program_dir(const char* argv0);
// Reads a decimal number, optionally written as a fraction "a/ b"; length 0 means the whole text.
float stof(const char* text, std::uint16_t length);

}  // namespace lm

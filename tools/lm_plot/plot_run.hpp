#pragma once
// The command line of lm_plot and its run: files grouped into events, each event drawn into one picture.
#include <cstdio>
#include <string>
#include <vector>

namespace lmplot {

// The usage text, printed by --help and after a usage error.
extern const char* const kUsage;

// Exit statuses: 0 every file plotted, 1 some file failed, 2 usage error.
int run(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

}  // namespace lmplot

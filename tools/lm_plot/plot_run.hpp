#pragma once
// The command line of lm_plot and its run: files grouped into events, each event drawn into one picture.
#include <cstdio>
#include <string>
#include <vector>

namespace lmplot {

// Exit statuses: 0 every file plotted, 1 some file failed, 2 usage error.
int run(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

}  // namespace lmplot

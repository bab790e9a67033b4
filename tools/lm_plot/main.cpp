// lm_plot: quick-look pictures of the events that lm_asc wrote.
#include <cstdio>
#include <cstring>

#include "lm_plot/plot_run.hpp"
#include "lm_version.hpp"

int main(int argc, char** argv) {
  int st = -1;
  for (int i = 1; i < argc && st < 0; ++i) {
    if (std::strcmp(argv[i], "--help") == 0) st = std::fputs(lmplot::kUsage, stdout) < 0;
    else if (std::strcmp(argv[i], "--version") == 0) st = std::printf("lm_plot %s\n", LM_VERSION) < 0;
  }
  if (st < 0) st = lmplot::run(std::vector<std::string>(argv + 1, argv + argc), stdout, stderr);
  if (std::fflush(stdout) != 0) return std::perror("lm_plot: standard output"), 1;
  return st;
}

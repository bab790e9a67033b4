// lm_plot: quick-look pictures of the events that lm_asc wrote.
#include <cstdio>

#include "lm_plot/plot_run.hpp"

int main(int argc, char** argv) {
  const int st = lmplot::run(std::vector<std::string>(argv + 1, argv + argc), stdout, stderr);
  if (std::fflush(stdout) != 0) return std::perror("lm_plot: standard output"), 1;
  return st;
}

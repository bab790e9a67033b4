#include "run/cli.hpp"

int main(int argc, char** argv) { return lm::run_main(argc, argv); }

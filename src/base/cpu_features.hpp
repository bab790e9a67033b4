#pragma once
// A hot loop may keep a second copy compiled for 256-bit integer vectors (AVX2), chosen at run time:
// the program is built for the plain x86-64 that every such processor runs. The choice is made by
// a test, not by the loader's indirect functions, which run before the sanitizers' run times start.
#include <cstdlib>

#if defined(__x86_64__)
#define LM_WIDE_VECTORS 1
#define LM_TARGET_WIDE __attribute__((target("avx2")))
#else
#define LM_WIDE_VECTORS 0
#define LM_TARGET_WIDE
#endif

namespace lm {

// True when the processor runs the LM_TARGET_WIDE copies. LM_PLAIN_VECTORS=1 in the environment
// keeps to the plain copies, so that tests and comparisons reach them on any processor.
inline bool has_wide_vectors() {
#if LM_WIDE_VECTORS
  static const bool wide = __builtin_cpu_supports("avx2") && !std::getenv("LM_PLAIN_VECTORS");
  return wide;
#else
  return false;
#endif
}

}  // namespace lm

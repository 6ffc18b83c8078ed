#pragma once

#include <cstdlib>

/// How often a test tries: SAMPLEBENCH_REPEATS times where that is set, which takes as long as it
/// takes, and less often by itself.
inline int repeats(int usual) {
  const char* wanted = std::getenv("SAMPLEBENCH_REPEATS");
  return wanted ? std::atoi(wanted) : usual;
}

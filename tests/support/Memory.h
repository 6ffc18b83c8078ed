#pragma once

#include <cstddef>
#include <fstream>

#include <unistd.h>

/// What this process has in memory.
inline std::size_t residentBytes() {
  std::ifstream file("/proc/self/statm");
  std::size_t all = 0;
  std::size_t resident = 0;
  file >> all >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

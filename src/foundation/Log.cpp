#include "foundation/Log.h"

#include <iostream>
#include <mutex>

namespace tnv {

void logLine(std::string_view line) {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  std::cout << line << std::endl;
}

}  // namespace tnv

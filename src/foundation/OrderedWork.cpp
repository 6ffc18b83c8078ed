#include "foundation/OrderedWork.h"

#include <algorithm>

namespace tnv {

namespace {

/// Far beyond the cores of a machine; a careless number must not use up its threads.
constexpr std::size_t kMostWorkers = 256;

}  // namespace

std::size_t workersFor(int threads, std::size_t pieces) {
  const std::size_t asked =
      threads > 0 ? static_cast<std::size_t>(threads) : std::thread::hardware_concurrency();
  return std::min(std::clamp<std::size_t>(asked, 1, kMostWorkers), pieces);
}

}  // namespace tnv

#include "generation/Random.h"

#include <limits>

namespace tnv {

std::uint32_t drawUpTo(std::mt19937& twister, std::uint32_t largest) {
  constexpr std::uint32_t kMax = std::numeric_limits<std::uint32_t>::max();
  if (largest == 0) return 0;
  if (largest == kMax) return static_cast<std::uint32_t>(twister());
  const std::uint32_t count = largest + 1;
  // What lies behind the last whole multiple of `count` would favour small results.
  const bool divides = kMax % count == largest;
  auto raw = static_cast<std::uint32_t>(twister());
  while (!divides && raw / count >= kMax / count) {
    raw = static_cast<std::uint32_t>(twister());
  }
  return raw % count;
}

int drawBetween(std::mt19937& twister, int lowest, int highest) {
  const auto low = static_cast<std::uint32_t>(lowest);
  return static_cast<int>(low + drawUpTo(twister, static_cast<std::uint32_t>(highest) - low));
}

std::mt19937 randomlySeeded() {
  return std::mt19937(std::random_device()());
}

}  // namespace tnv

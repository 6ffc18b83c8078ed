#pragma once

#include <cstdint>
#include <random>
#include <utility>
#include <vector>

/// Draws that are the same on every platform for the same seed, which those of the standard's
/// distributions are not.
namespace tnv {

/// A uniform draw from 0 to `largest`, both included.
std::uint32_t drawUpTo(std::mt19937& twister, std::uint32_t largest);

/// A uniform draw from `lowest` to `highest`, both included. Bounds the wrong way round wrap around
/// the 32-bit range.
int drawBetween(std::mt19937& twister, int lowest, int highest);

/// A twister that starts differently at each call.
std::mt19937 randomlySeeded();

template <class T>
void shuffle(std::mt19937& twister, std::vector<T>& items) {
  for (std::size_t i = 1; i < items.size(); ++i) {
    const std::size_t j = drawUpTo(twister, static_cast<std::uint32_t>(i));
    if (j != i) std::swap(items[i], items[j]);
  }
}

}  // namespace tnv

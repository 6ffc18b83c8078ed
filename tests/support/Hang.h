#pragma once

#include <chrono>

/// What is tried here so often that it takes minutes where something hangs; all else is over sooner
/// even on a machine that does much else at the same time.
inline constexpr std::chrono::seconds kHang{60};

#pragma once

#include <chrono>

/// What hangs on hostile input does so for minutes at least; all else is over sooner even on a
/// machine that does much else at the same time.
inline constexpr std::chrono::seconds kHang{60};

#pragma once

#include <ctime>

/// What POSIX and Windows call by different names.
namespace tnv {

std::tm localTime(std::time_t time);

}  // namespace tnv

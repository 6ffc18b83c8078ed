#pragma once

#include <ctime>
#include <string>

/// What POSIX and Windows call by different names.
namespace tnv {

std::tm localTime(std::time_t time);

/// The user's documents directory, with a slash at the end. Empty if the system knows no such user.
std::string documentsDirectory();

}  // namespace tnv

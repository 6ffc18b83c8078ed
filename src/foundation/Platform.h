#pragma once

#include <ctime>
#include <string>
#include <vector>

/// What POSIX and Windows call by different names.
namespace tnv {

std::tm localTime(std::time_t time);

/// The user's documents directory, with a slash at the end. Empty if the system knows no such user.
std::string documentsDirectory();

#ifndef _WIN32
/// The same for an account with that home directory.
std::string documentsDirectoryOf(const std::string& home);
#endif

/// Whether this process has the rights to list the directory and to make files in it.
bool mayWriteTo(const std::string& directory);

/// Waits until the files' contents are on the disk. False if one may not be.
bool flushToDisk(const std::vector<std::string>& paths);

}  // namespace tnv

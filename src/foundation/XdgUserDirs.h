#pragma once

#include <string>

namespace tnv {

/// The documents directory that a desktop's `user-dirs.dirs` names for an account whose home is
/// `home`, with a slash at the end; empty if it names none.
std::string xdgDocumentsDirectory(const std::string& userDirs, const std::string& home);

}  // namespace tnv

#include "ClaimedDirectory.h"

#include "CommandError.h"

namespace fs = std::filesystem;

namespace {

/// Makes the directory and those above it that are not there; returns those, the highest first.
std::vector<fs::path> makeMissing(const fs::path& directory) {
  std::vector<fs::path> made;
  std::error_code error;
  fs::path path;
  for (const auto& part : fs::absolute(directory, error).lexically_normal()) {
    path /= part;
    // Another program may make it at the same time.
    if (!part.empty() && fs::create_directory(path, error)) made.push_back(path);
  }
  return made;
}

}  // namespace

ClaimedDirectory::ClaimedDirectory(const fs::path& directory, platform::DirectoryLock::Kind kind)
    : name(directory.string()),
      made(makeMissing(directory)),
      lock(std::make_unique<platform::DirectoryLock>(directory, kind)) {}

ClaimedDirectory::~ClaimedDirectory() {
  // Another program counts on them.
  if (!isOurs()) return;
  std::error_code error;
  if (!made.empty()) fs::remove(made.back(), error);
  // A file of the lock lies in the directory above.
  lock.reset();
  for (auto path = made.rbegin(); path != made.rend(); ++path)
    fs::remove(*path, error);
}

std::string busyText(const std::string& holder) {
  return (holder.empty() ? std::string() : " (" + holder + ")") +
         "; nothing was changed, try again when it is done";
}

void ClaimedDirectory::requireOurs() const {
  if (!isOurs()) throw CommandError("another command works in '" + name + "'" + busyText(holder()));
}

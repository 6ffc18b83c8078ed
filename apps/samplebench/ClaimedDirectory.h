#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Platform.h"

/// The end of the message that another program has a lock.
std::string busyText(const std::string& holder);

/// A directory that a command works in, kept for it and there while this lives, as far as there are
/// rights to make it: whether it will do is for others to tell. It goes again, and those made above
/// it, if nothing was put into it.
class ClaimedDirectory {
 public:
  ClaimedDirectory(const std::filesystem::path& directory, platform::DirectoryLock::Kind kind);
  ~ClaimedDirectory();
  ClaimedDirectory(const ClaimedDirectory&) = delete;
  ClaimedDirectory& operator=(const ClaimedDirectory&) = delete;

  /// False if another program has it.
  bool isOurs() const { return lock->isOurs(); }

  std::string holder() const { return lock->holder(); }

  /// Throws CommandError unless it is ours.
  void requireOurs() const;

 private:
  std::string name;
  std::vector<std::filesystem::path> made;
  std::unique_ptr<platform::DirectoryLock> lock;
};

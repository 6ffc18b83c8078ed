#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace tnv {

/// Replaces files that hold somebody's work. Each is written beside its place at once; `commit`
/// brings all of them to the disk in one pass, which takes hardly longer than for a single one, and
/// only then lets them take their places. So each is either the old or the new one, whole, whatever
/// ends the program or the machine.
class FileReplacements {
 public:
  using Ending = std::function<void(bool isReplaced)>;

  FileReplacements() = default;
  /// What was not committed leaves nothing behind.
  ~FileReplacements();
  FileReplacements(const FileReplacements&) = delete;
  FileReplacements& operator=(const FileReplacements&) = delete;

  /// False when the content could not be written; `ending` is not called then. It is called when
  /// the file has taken its place, or has failed to: by `commit`, or by a later call of this one,
  /// which places all that are waiting first if they are 10,000, or if one of them has the same
  /// target. Links and permissions are treated as by `replaceFile`.
  bool add(const std::string& path, std::string_view content, Ending ending = {});

  /// In the order of addition. False if one failed, since the last commit; its earlier file is
  /// untouched.
  bool commit();

 private:
  struct Waiting {
    std::string written;
    std::string target;
    Ending ending;
  };

  void placeAll();

  std::vector<Waiting> waiting;
  std::unordered_set<std::string> targets;
  bool allPlaced = true;
};

/// Replaces one such file.
bool replaceForGood(const std::string& path, std::string_view content);

}  // namespace tnv

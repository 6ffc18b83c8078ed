#pragma once

#include <string>
#include <vector>

/// A person who works with the tool: a name and the project opened last, in a settings file.
class TNVUser {
 public:
  /// Touches no file. `usersPath` ends in a slash.
  TNVUser(const std::string& name, const std::string& usersPath);

  /// Each answers whether there was, or was not yet, the file that it is about, with a log line if
  /// not. A file that cannot be written or deleted changes nothing about the answer.
  bool create() const;
  bool load();
  bool update() const;
  bool remove() const;

  /// The names of the users of a directory, in the order of the file system.
  static std::vector<std::string> readAvailableUsers(const std::string& usersPath);

  std::string settingsFile;
  std::string settingsPath;
  std::string usersPath;
  std::string name;
  std::string lastProject;

 private:
  bool _isPlace(const std::string& operation) const;
  void _writeSettings() const;
  bool _readSettings();

  /// A name that is no plain file name would lead out of the users' directory.
  bool isPlaceOfItsOwn;
};

#pragma once

#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"

class TNVUser;

/// A person who works with the tool: a name and the project opened last, kept in a file
/// `<name>.cfg` of the users' directory. The wrapper owns the user. A name that is empty or holds a
/// path is refused by all that touches a file. For use on the front end's thread.
class TNV_SAMPLEBENCH_API WTNVUser {
 public:
  /// `usersPath` ends in a slash. Touches no file.
  WTNVUser(const std::string& name, const std::string& usersPath);
  WTNVUser(const WTNVUser&) = delete;

  /// Copies the bare pointer, after which two wrappers own one user: not to be used.
  WTNVUser& operator=(const WTNVUser& other);
  ~WTNVUser();

  /// The user itself, borrowed.
  TNVUser* getNativeUser() const;

  std::string wGetUserName() const;
  std::string wGetLastProject() const;

  /// In memory only, until `wUpdate`.
  void wSetLastProject(const std::string& project);

  /// Makes the user's file. False, with a log line, if there is one. Where it cannot be written, as
  /// in a directory that is missing, the result is true all the same; a log line tells, and `wLoad`
  /// of a new object shows what is there.
  bool wCreate();

  /// Reads name and last project from the user's file. False, with a log line, without one.
  bool wLoad();

  /// Replaces the user's file. False, with a log line, without one. What cannot be written is
  /// handled as by `wCreate`; the earlier file stays then.
  bool wUpdate();

  /// Deletes the user's file. False, with a log line, without one.
  bool wRemove();

  /// The names of the users of a directory, as their files are called, in the order of the file
  /// system. Empty, with a log line, for a missing directory.
  static std::vector<std::string> wReadAvailableUsers(const std::string& usersPath);

 private:
  TNVUser* native;
};

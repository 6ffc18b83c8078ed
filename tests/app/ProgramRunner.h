#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

#include "support/TempDirectory.h"

using Words = std::vector<std::string>;

/// What a finished program left behind.
struct ProgramResult {
  int exitCode = -1;
  std::string out;
  std::string err;
};

/// A child process in a directory, with its outputs in files.
class RunningProgram {
 public:
  /// The superuser is refused nothing: as `nobody` the program runs without such rights.
  enum class User { same, nobody };

  RunningProgram(const std::vector<std::string>& command, const std::string& directory,
                 User user = User::same);

  /// Waits, half a minute at most, until standard error holds the text.
  bool waitForError(const std::string& text) const;

  void interrupt() const;
  void signal(int number) const;
  ProgramResult wait();

 private:
  TempDirectory outputs;
  pid_t child;
};

/// A workshop: a fresh directory in which the program runs, with pictures to work on.
class ProgramTest : public ::testing::Test {
 protected:
  ProgramResult run(const std::vector<std::string>& arguments) const;

  /// Runs it without the rights of a superuser.
  ProgramResult runAsNobody(const std::vector<std::string>& arguments) const;

  /// Runs it where nothing below the directory can be written to.
  ProgramResult runWithoutRights(const std::vector<std::string>& arguments) const;

  /// Runs the program, which must succeed, and returns its standard output.
  std::string succeed(const std::vector<std::string>& arguments) const;

  /// Runs the program, which must fail with that code and a message that holds the text.
  void fail(const std::vector<std::string>& arguments, const std::string& text,
            int exitCode = 1) const;

  /// The same, and nothing on disk is another afterwards.
  void failWholly(const Words& arguments, const std::string& text, int exitCode = 1) const;

  /// The dry run of a command, which must succeed and change nothing on disk; returns what it says.
  std::string dryRun(Words arguments) const;

  /// A project "parts" with the classes "screw" and "nut" and, in the set "day1", the pictures
  /// a.png and b.png of 128 by 64 pixels.
  void makeProject() const;

  /// The same, with a "nut" on a.png: 32 to 64 by 16 to 48 pixels.
  void makeMarkedProject() const;

  /// Everything below the directory: paths, and the contents of files.
  std::map<std::string, std::string> contents(const std::string& directory) const;

  /// The file of the record that a picture has in a set of the project "parts".
  std::string recordOf(const std::string& set, const std::string& picture) const;

  RunningProgram start(const std::vector<std::string>& arguments) const;

  TempDirectory place;
};

/// How often the text holds the other one.
std::size_t occurrences(const std::string& text, const std::string& wanted);

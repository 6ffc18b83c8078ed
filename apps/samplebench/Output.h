#pragma once

#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "ErrorLines.h"
#include "LogFilter.h"

/// Where the program writes. Data goes to standard output, all else to standard error, the
/// library's log too: the library writes that to `std::cout`, which is turned to standard error as
/// long as this object lives. There is one of it, made before the library is called.
class Output {
 public:
  Output();
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// No log, no notes, no progress from now on; errors still come.
  void setQuiet();
  bool isQuiet() const { return quiet; }

  /// Standard output.
  std::ostream& data() { return dataStream; }

  /// Standard error, for progress.
  ErrorLines& errorLines() { return errors; }

  /// Something that the user may want to know.
  void note(std::string_view text);

  /// Why the command fails.
  void error(std::string_view text);

 private:
  std::ostream dataStream;
  ErrorLines errors;
  LogFilter log;
  bool quiet = false;
};

using TableRow = std::vector<std::string>;

/// Writes the rows with their columns aligned, two blanks apart. Cells that are whole numbers stand
/// to the right.
void writeTable(std::ostream& stream, const std::vector<TableRow>& rows);

/// The texts with ", " between them.
std::string joined(const std::vector<std::string>& texts);

/// "1 picture", "2 pictures".
std::string counted(std::size_t count, const std::string& noun);

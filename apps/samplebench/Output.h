#pragma once

#include <json/value.h>

#include <concepts>
#include <iostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ErrorLines.h"
#include "LogFilter.h"

/// One entry of a table: what a person reads and what a program gets.
struct Cell {
  Cell(const char* cellText) : text(cellText), value(text) {}
  Cell(std::string cellText) : text(std::move(cellText)), value(text) {}
  Cell(std::integral auto number)
      : text(std::to_string(number)), value(static_cast<Json::LargestInt>(number)) {}
  Cell(double number, std::string cellText) : text(std::move(cellText)), value(number) {}

  std::string text;
  Json::Value value;
};

using TableRow = std::vector<Cell>;

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

  /// From now on standard output gets one JSON object at the end, instead of text on the way.
  void setJson();

  /// Nothing is to be written or deleted; commands ask before they do.
  void setDryRun();
  bool isDryRun() const { return dryRun; }

  /// What was done, or in a dry run what would be.
  std::string_view told(std::string_view done, std::string_view would) const {
    return dryRun ? would : done;
  }

  /// Standard output, for help.
  std::ostream& data() { return dataStream; }

  /// A line of the result for a person.
  void say(std::string_view line = "");

  /// A text of many lines that is the result, as it is.
  void text(const std::string& key, const std::string& content);

  /// A value of the result for a program.
  void fact(const std::string& key, const Json::Value& value);

  /// A table of the result for both: the JSON object gets a list under `key`, an object a row. The
  /// column names, as in `keyOf`, are its keys.
  void table(const std::string& key, const std::vector<std::string>& columns,
             const std::vector<TableRow>& rows);

  /// The table for a person alone.
  void showTable(const std::vector<std::string>& columns, const std::vector<TableRow>& rows);

  /// The same for named values, an object under `key`, without a line above.
  void properties(const std::string& key, const std::vector<std::pair<std::string, Cell>>& rows);

  /// The command found something wrong in what it looked at, which the exit code tells.
  void setFindings() { findings = true; }
  bool hasFindings() const { return findings; }

  /// Writes what is left to write. False if standard output did not take all.
  bool finish();

  /// Standard error, for progress.
  ErrorLines& errorLines() { return errors; }

  /// Something that the user may want to know.
  void note(std::string_view text);

  /// Why the library could not do what it was asked for: what it last said in its log, without the
  /// name of the function that said it.
  std::string cause() const;

  /// Why the command fails.
  void error(std::string_view text);

 private:
  std::ostream dataStream;
  ErrorLines errors;
  LogFilter log;
  bool quiet = false;
  bool json = false;
  bool dryRun = false;
  bool findings = false;
  Json::Value facts{Json::objectValue};
};

/// The text with `?` for each control character, which a terminal would obey: texts may come from
/// files and portals of others.
std::string printable(std::string_view text);

/// A heading as a key for programs: "largest side" is "largestSide".
std::string keyOf(const std::string& heading);

/// The table for a program: a list with an object for each row.
Json::Value listOf(const std::vector<std::string>& columns, const std::vector<TableRow>& rows);

/// Writes the rows with their columns aligned, two blanks apart. Cells that are numbers stand to
/// the right. Control characters are shown as in `printable`.
void writeTable(std::ostream& stream, const std::vector<TableRow>& rows);

/// The texts with ", " between them.
std::string joined(const std::vector<std::string>& texts);

/// "1 picture", "2 pictures"; with a plural of its own "2 boxes".
std::string counted(std::size_t count, const std::string& noun, const std::string& plural = "");

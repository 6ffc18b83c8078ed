#include "MarkList.h"

#include "CommandError.h"

namespace {

// What is longer is no mark, and may have no end at all.
constexpr std::size_t longestLine = std::size_t{1} << 20;

// Reads lines of a bounded length.
class Lines {
 public:
  explicit Lines(std::istream& source) : stream(source), buffer(longestLine + 1) {}

  bool next(std::string& line) {
    if (!stream.getline(buffer.data(), static_cast<std::streamsize>(buffer.size()))) return false;
    const auto count = static_cast<std::size_t>(stream.gcount());
    // The line feed counts, but is not kept.
    line.assign(buffer.data(), stream.eof() ? count : count - 1);
    return true;
  }

 private:
  std::istream& stream;
  std::vector<char> buffer;
};

std::vector<std::string> splitAtTabs(const std::string& line) {
  std::vector<std::string> fields;
  std::string::size_type begin = 0;
  for (auto tab = line.find('\t'); tab != std::string::npos; tab = line.find('\t', begin)) {
    fields.push_back(line.substr(begin, tab - begin));
    begin = tab + 1;
  }
  fields.push_back(line.substr(begin));
  return fields;
}

bool isPassedOver(const std::string& line) {
  return line.find_first_not_of(" \t") == std::string::npos || line.front() == '#';
}

MarkRequest parseLine(const std::string& line) {
  const auto fields = splitAtTabs(line);
  if (fields.size() != 4)
    throw CommandError(
        "expected 4 fields with tabs between them (picture, form, class, points), "
        "found " +
        std::to_string(fields.size()));
  return {"", fields[0], fields[1], fields[2], parsePoints(fields[3])};
}

}  // namespace

std::vector<MarkRequest> parseMarkList(std::istream& list, const std::string& fileName) {
  std::vector<MarkRequest> requests;
  std::string line;
  std::size_t number = 1;
  for (Lines lines(list); lines.next(line); ++number) {
    if (line.ends_with('\r')) line.pop_back();
    if (isPassedOver(line)) continue;
    const auto where = fileName + ":" + std::to_string(number) + ": ";
    try {
      requests.push_back(parseLine(line));
    } catch (const CommandError& error) {
      throw CommandError(where + error.what());
    }
    requests.back().where = where;
  }
  if (list.bad() || !list.eof())
    throw CommandError("the list '" + fileName + "' cannot be read to its end; see line " +
                       std::to_string(number) + ", which must not be longer than a mebibyte");
  return requests;
}

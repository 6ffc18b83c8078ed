#include "MarkList.h"

#include "CommandError.h"

namespace {

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
  for (std::size_t number = 1; std::getline(list, line); ++number) {
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
  return requests;
}

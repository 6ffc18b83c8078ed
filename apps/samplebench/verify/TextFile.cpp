#include "verify/TextFile.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr auto whiteSpace = " \t\r\n\v\f";

}  // namespace

TextFile readTextFile(const std::string& path) {
  TextFile file;
  file.path = path;
  std::error_code error;
  std::ifstream stream(path, std::ios::binary);
  if (!std::filesystem::is_regular_file(path, error) || !stream) return file;
  file.readable = true;
  for (std::string line; std::getline(stream, line);) {
    if (line.ends_with('\r')) {
      line.pop_back();
      file.hasCarriageReturns = true;
    }
    file.lines.push_back(line);
  }
  if (!file.lines.empty() && file.lines.front().starts_with(byteOrderMark)) {
    file.lines.front().erase(0, byteOrderMark.size());
    file.hasByteOrderMark = true;
  }
  return file;
}

void checkByteOrderMark(const TextFile& file, Findings& findings) {
  if (file.hasByteOrderMark)
    findings.push_back({file.path, 1, "byte-order-mark",
                        "the file starts with a byte order mark; save it as UTF-8 without"});
}

std::string trimmed(const std::string& text) {
  const auto begin = text.find_first_not_of(whiteSpace);
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(whiteSpace) - begin + 1);
}

std::vector<std::string> fieldsOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> fields;
  for (std::string field; stream >> field;)
    fields.push_back(field);
  return fields;
}

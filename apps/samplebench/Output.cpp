#include "Output.h"

#include <json/writer.h>

#include <algorithm>
#include <cctype>

namespace {

bool isContinuationByte(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::size_t displayWidth(const std::string& text) {
  const auto continuations = std::count_if(text.begin(), text.end(), isContinuationByte);
  return text.size() - static_cast<std::size_t>(continuations);
}

// From U+0080 to U+009F in UTF-8.
bool isUpperControl(std::string_view text, std::size_t i) {
  return i + 1 < text.size() && text[i] == '\xC2' && isContinuationByte(text[i + 1]) &&
         static_cast<unsigned char>(text[i + 1]) < 0xA0U;
}

bool isLowerControl(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return value < 0x20U || value == 0x7FU;
}

std::vector<TableRow> printableRows(std::vector<TableRow> rows) {
  for (auto& row : rows)
    for (auto& cell : row)
      cell.text = printable(cell.text);
  return rows;
}

bool isNumber(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789.") == std::string::npos;
}

std::vector<std::size_t> columnWidths(const std::vector<TableRow>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i)
      widths[i] = std::max(widths[i], displayWidth(row[i].text));
  }
  return widths;
}

std::string aligned(const std::string& cell, std::size_t width) {
  const std::string padding(width - displayWidth(cell), ' ');
  return isNumber(cell) ? padding + cell : cell + padding;
}

std::string rowText(const TableRow& row, const std::vector<std::size_t>& widths) {
  std::string line;
  for (std::size_t i = 0; i < row.size(); ++i)
    line += (i == 0 ? "" : "  ") + aligned(row[i].text, widths[i]);
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

}  // namespace

Output::Output() : dataStream(std::cout.rdbuf()), errors(std::cerr), log(errors) {
  std::cout.rdbuf(&log);
}

Output::~Output() {
  log.finish();
  std::cout.rdbuf(dataStream.rdbuf());
}

void Output::setQuiet() {
  quiet = true;
  log.silence();
}

void Output::setJson() {
  json = true;
}

void Output::setDryRun() {
  dryRun = true;
  fact("dryRun", true);
}

void Output::say(std::string_view line) {
  if (!json) dataStream << printable(line) << '\n';
}

void Output::text(const std::string& key, const std::string& content) {
  fact(key, content);
  if (!json) dataStream << content;
}

void Output::fact(const std::string& key, const Json::Value& value) {
  facts[key] = value;
}

void Output::table(const std::string& key, const std::vector<std::string>& columns,
                   const std::vector<TableRow>& rows) {
  fact(key, listOf(columns, rows));
  showTable(columns, rows);
}

void Output::showTable(const std::vector<std::string>& columns, const std::vector<TableRow>& rows) {
  if (json) return;
  std::vector<TableRow> lines{TableRow(columns.begin(), columns.end())};
  lines.insert(lines.end(), rows.begin(), rows.end());
  writeTable(dataStream, lines);
}

void Output::properties(const std::string& key,
                        const std::vector<std::pair<std::string, Cell>>& rows) {
  Json::Value entry(Json::objectValue);
  std::vector<TableRow> lines;
  for (const auto& [name, cell] : rows) {
    entry[keyOf(name)] = cell.value;
    lines.push_back({name, cell});
  }
  fact(key, entry);
  if (!json) writeTable(dataStream, lines);
}

bool Output::finish() {
  if (json) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    builder["emitUTF8"] = true;
    dataStream << Json::writeString(builder, facts) << '\n';
  }
  dataStream.flush();
  return static_cast<bool>(dataStream);
}

void Output::note(std::string_view text) {
  if (quiet) return;
  log.finish();
  errors.line(printable(text));
}

namespace {

// "TNVProject::load" or "readNames()".
bool isFunctionName(std::string_view text) {
  const auto isPart = [](unsigned char letter) {
    return std::isalnum(letter) != 0 ||
           std::string_view("_:()").find(static_cast<char>(letter)) != std::string_view::npos;
  };
  const auto isCapital = [](unsigned char letter) { return std::isupper(letter) != 0; };
  return text.size() > 1 && std::all_of(text.begin(), text.end(), isPart) &&
         std::any_of(text.begin() + 1, text.end(), isCapital);
}

}  // namespace

std::string Output::cause() const {
  auto line = log.newestLine();
  if (line.empty()) return "the library gives no reason";
  const auto colon = line.find(": ");
  if (colon != std::string::npos && isFunctionName(std::string_view(line).substr(0, colon)))
    line.erase(0, colon + 2);
  if (line.ends_with('!')) line.pop_back();
  return line;
}

void Output::error(std::string_view text) {
  log.finish();
  errors.line("samplebench: " + printable(text));
  fact("error", std::string(text));
}

std::string printable(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isUpper = isUpperControl(text, i);
    result += isUpper || isLowerControl(text[i]) ? '?' : text[i];
    if (isUpper) ++i;
  }
  return result;
}

std::string keyOf(const std::string& heading) {
  std::string key;
  bool beginsWord = false;
  for (const char letter : heading) {
    if (letter == ' ') {
      beginsWord = true;
    } else {
      key += beginsWord && letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A')
                                                          : letter;
      beginsWord = false;
    }
  }
  return key;
}

Json::Value listOf(const std::vector<std::string>& columns, const std::vector<TableRow>& rows) {
  Json::Value list(Json::arrayValue);
  for (const auto& row : rows) {
    Json::Value entry(Json::objectValue);
    for (std::size_t i = 0; i < row.size(); ++i)
      entry[keyOf(columns.at(i))] = row[i].value;
    list.append(entry);
  }
  return list;
}

void writeTable(std::ostream& stream, const std::vector<TableRow>& rows) {
  const auto lines = printableRows(rows);
  const auto widths = columnWidths(lines);
  for (const auto& row : lines)
    stream << rowText(row, widths) << '\n';
}

std::string joined(const std::vector<std::string>& texts) {
  std::string result;
  for (const auto& text : texts)
    result += (result.empty() ? "" : ", ") + text;
  return result;
}

std::string counted(std::size_t count, const std::string& noun, const std::string& plural) {
  return std::to_string(count) + " " + (count == 1 ? noun : plural.empty() ? noun + "s" : plural);
}

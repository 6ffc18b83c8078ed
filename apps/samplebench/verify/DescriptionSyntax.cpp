#include "verify/DescriptionSyntax.h"

#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "CommandError.h"

namespace {

/// Reads a description character by character and knows what is open.
class OpenThings {
 public:
  void take(const std::string& line, std::size_t number) {
    before = ' ';
    startsValue = true;
    tookUnread = false;
    for (const char each : line) {
      const char letter = each == '\t' ? ' ' : each;
      if (quote == 0 && letter == '#' && before == ' ') return;
      take(letter, number);
      before = letter;
    }
  }

  bool anyOpen() const { return !brackets.empty() || quote != 0; }

  /// Whether a value of the last line is an anchor, a reference, a tag or a block of lines.
  bool hasTakenUnread() const { return tookUnread; }

  /// The line of the outermost that is still open.
  std::optional<std::size_t> firstLine() const {
    if (!brackets.empty()) return brackets.front();
    return quote != 0 ? std::optional(quoteLine) : std::nullopt;
  }

 private:
  void take(char letter, std::size_t number) {
    if (quote != 0) return takeQuoted(letter);
    tookUnread = tookUnread ||
                 (startsValue && std::string_view("&*!|>").find(letter) != std::string_view::npos);
    const bool isDoubled = closedSingle && letter == '\'';
    closedSingle = false;
    if (isDoubled || (startsValue && (letter == '"' || letter == '\''))) {
      quote = letter;
      quoteLine = number;
    } else if ((startsValue || !brackets.empty()) && (letter == '[' || letter == '{')) {
      brackets.push_back(number);
    } else if (!brackets.empty() && (letter == ']' || letter == '}')) {
      brackets.pop_back();
    }
    if (letter == ' ') {
      startsValue = startsValue || before == ':' || before == '-';
    } else {
      startsValue =
          !brackets.empty() && std::string_view("[{,").find(letter) != std::string_view::npos;
    }
  }

  void takeQuoted(char letter) {
    if (isEscaped) {
      isEscaped = false;
    } else if (quote == '"' && letter == '\\') {
      isEscaped = true;
    } else if (letter == quote) {
      closedSingle = quote == '\'';
      quote = 0;
    }
  }

  std::vector<std::size_t> brackets;  ///< the lines of those that are open
  char quote = 0;                     ///< the one that is open, or 0
  bool isEscaped = false;             ///< the letter behind a backslash, in double quotes
  bool closedSingle = false;          ///< one that follows opens it again: two are one in the text
  std::size_t quoteLine = 0;
  char before = ' ';
  bool tookUnread = false;
  bool startsValue = true;  ///< nothing of a value was read yet, which may be in quotes
};

/// Whether the line ends in what begins a block of further lines, which is indented deeper.
bool beginsBlock(const std::string& line) {
  const auto text = trimmed(line);
  const auto sign = text.find_last_of("|>");
  if (sign == std::string::npos || sign < 2) return false;
  return text[sign - 1] == ' ' && (text[sign - 2] == ':' || text[sign - 2] == '-') &&
         text.find_first_not_of("+-0123456789", sign + 1) == std::string::npos;
}

/// The key of the line, without quotes; empty if it has none.
std::string keyOf(const std::string& line) {
  const auto text = trimmed(line);
  auto colon = text.find(':');
  while (colon != std::string::npos && colon + 1 < text.size() && text[colon + 1] != ' ')
    colon = text.find(':', colon + 1);
  if (colon == std::string::npos || text.front() == '#' || text.starts_with("- ")) return "";
  const auto key = trimmed(text.substr(0, colon));
  const bool isQuoted =
      key.size() > 1 && key.front() == key.back() && (key.front() == '"' || key.front() == '\'');
  return isQuoted ? key.substr(1, key.size() - 2) : key;
}

/// Whether what stands under the key is needed here. Under `<<` anything may.
bool isNeeded(const std::string& key) {
  static const std::set<std::string> keys{"names", "nc",    "path", "train",
                                          "val",   "valid", "test", "<<"};
  return keys.contains(key);
}

/// Reads a description line by line.
class SyntaxCheck {
 public:
  SyntaxCheck(const TextFile& text, Findings& list) : file(text), findings(list) {}

  void run() {
    for (std::size_t i = 0; i < file.lines.size(); ++i)
      take(file.lines[i], i + 1);
    if (const auto line = open.firstLine())
      findings.push_back({file.path, *line, "data-syntax",
                          "a bracket or quote is opened here and not closed; trainers refuse the "
                          "file"});
  }

 private:
  void take(const std::string& line, std::size_t number) {
    const auto indent = line.find_first_not_of(" \t");
    if (indent == std::string::npos) return;
    if (blockIndent && indent > *blockIndent) return;
    blockIndent.reset();
    if (line.find('\t') < indent)
      findings.push_back({file.path, number, "data-syntax",
                          "the line is indented by a tab, which YAML does not allow"});
    if (!open.anyOpen()) takeKey(line, indent, number);
    open.take(line, number);
    if (open.hasTakenUnread() && isNeeded(topKey)) refuse(number);
    if (!open.anyOpen() && beginsBlock(line)) blockIndent = indent;
  }

  /// Those at the beginning of a line and, of the names, the numbers.
  void takeKey(const std::string& line, std::size_t indent, std::size_t number) {
    const auto key = keyOf(line);
    if (indent == 0 && line.front() == '{') refuse(number);
    if (indent == 0 && !key.empty()) topKey = key;
    if (key.empty() || (indent > 0 && topKey != "names")) return;
    const auto [first, isNew] = lineOf.emplace(std::pair(indent > 0, key), number);
    if (!isNew)
      findings.push_back({file.path, number, "data-key",
                          "'" + key + "' is given twice, in line " + std::to_string(first->second) +
                              ", too; readers differ in which one counts"});
  }

  /// What would be found without what cannot be read would be wrong.
  [[noreturn]] void refuse(std::size_t number) const {
    throw CommandError("'" + file.path + "' is spelled in line " + std::to_string(number) +
                       " in a way of YAML that is not read here: anchors and references (& *), "
                       "tags (!), blocks of lines (| >), and all in braces; write the values out");
  }

  const TextFile& file;
  Findings& findings;
  OpenThings open;
  std::optional<std::size_t> blockIndent;  ///< of the line that began a block
  std::string topKey;                      ///< that the lines belong to
  std::map<std::pair<bool, std::string>, std::size_t> lineOf;
};

}  // namespace

void checkDescriptionSyntax(const TextFile& file, Findings& findings) {
  SyntaxCheck(file, findings).run();
}

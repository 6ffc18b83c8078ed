#include "verify/DescriptionSyntax.h"

#include <optional>
#include <string_view>

namespace {

/// Reads a description character by character and knows what is open.
class OpenThings {
 public:
  void take(const std::string& line, std::size_t number) {
    before = ' ';
    startsValue = true;
    for (const char each : line) {
      const char letter = each == '\t' ? ' ' : each;
      if (quote == 0 && letter == '#' && before == ' ') return;
      take(letter, number);
      before = letter;
    }
  }

  /// The line of the outermost that is still open.
  std::optional<std::size_t> firstLine() const {
    if (!brackets.empty()) return brackets.front();
    return quote != 0 ? std::optional(quoteLine) : std::nullopt;
  }

 private:
  void take(char letter, std::size_t number) {
    if (quote != 0) return takeQuoted(letter);
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
  bool startsValue = true;  ///< nothing of a value was read yet, which may be in quotes
};

}  // namespace

void checkDescriptionSyntax(const TextFile& file, Findings& findings) {
  OpenThings open;
  for (std::size_t i = 0; i < file.lines.size(); ++i) {
    const auto& line = file.lines[i];
    const auto text = line.find_first_not_of(" \t");
    if (text != std::string::npos && line.find('\t') < text)
      findings.push_back({file.path, i + 1, "data-syntax",
                          "the line is indented by a tab, which YAML does not allow"});
    open.take(line, i + 1);
  }
  if (const auto line = open.firstLine())
    findings.push_back({file.path, *line, "data-syntax",
                        "a bracket or quote is opened here and not closed; trainers refuse the "
                        "file"});
}

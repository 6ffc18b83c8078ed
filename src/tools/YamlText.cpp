#include "tools/YamlText.h"

#include <algorithm>
#include <charconv>

#include "tools/LabelFiles.h"

namespace tnv {

namespace {

/// Stands for what is no character.
constexpr unsigned long kReplacement = 0xFFFD;

bool isSurrogate(unsigned long code) {
  return code >= 0xD800 && code <= 0xDFFF;
}

void appendUtf8(std::string& text, unsigned long code) {
  if (isSurrogate(code) || code > 0x10FFFF) code = kReplacement;
  const auto append = [&](unsigned long byte) { text += static_cast<char>(byte); };
  const auto appendRest = [&](int bits) { append(0x80 | ((code >> bits) & 0x3F)); };
  if (code < 0x80) return append(code);
  if (code < 0x800) {
    append(0xC0 | (code >> 6));
  } else if (code < 0x10000) {
    append(0xE0 | (code >> 12));
    appendRest(6);
  } else {
    append(0xF0 | (code >> 18));
    appendRest(12);
    appendRest(6);
  }
  appendRest(0);
}

/// How many hexadecimal digits follow the letter behind a backslash; 0 for other letters.
std::size_t digitsBehind(char letter) {
  switch (letter) {
    case 'x':
      return 2;
    case 'u':
      return 4;
    case 'U':
      return 8;
    default:
      return 0;
  }
}

/// What a letter behind a backslash stands for; itself unless it is one of these.
char controlOf(char letter) {
  switch (letter) {
    case 'n':
      return '\n';
    case 't':
      return '\t';
    case 'r':
      return '\r';
    default:
      return letter;
  }
}

/// Where a value begins that is spelled by an anchor, a reference, a tag or as a block of lines.
constexpr std::string_view kUnreadSpellings = "&*!|>";

/// The number of the character that a letter and its digits stand for; nothing if they do not.
std::optional<unsigned long> codeAt(std::string_view text) {
  const std::size_t digits = digitsBehind(text.front());
  const std::string_view number = text.substr(1, digits);
  unsigned long code = 0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), code, 16);
  const bool isWhole = digits > 0 && number.size() == digits && result.ec == std::errc() &&
                       result.ptr == number.data() + number.size();
  return isWhole ? std::optional(code) : std::nullopt;
}

}  // namespace

bool YamlText::atEnd() {
  skipBlanks();
  return rest.empty();
}

bool YamlText::accept(char c) {
  skipBlanks();
  if (!rest.starts_with(c)) return false;
  rest.remove_prefix(1);
  return true;
}

std::string YamlText::scalar(std::string_view ends) {
  if (accept('\'')) return singleQuoted();
  if (accept('"')) return doubleQuoted();
  unread = unread || (!rest.empty() && kUnreadSpellings.find(rest.front()) != ends.npos);
  std::size_t size = 0;
  while (size < rest.size() && ends.find(rest[size]) == ends.npos && !isComment(size))
    ++size;
  const std::string text(trimmed(rest.substr(0, size)));
  rest.remove_prefix(size);
  return text;
}

void YamlText::skipBlanks() {
  for (std::size_t i = 0; i < rest.size();) {
    if (rest[i] == '#') {
      i = std::min(rest.find('\n', i), rest.size());
    } else if (std::string_view(" \t\r\n").find(rest[i]) != std::string_view::npos) {
      ++i;
    } else {
      rest.remove_prefix(i);
      return;
    }
  }
  rest = {};
}

bool YamlText::isComment(std::size_t place) const {
  return rest[place] == '#' && (place == 0 || rest[place - 1] == ' ' || rest[place - 1] == '\t');
}

std::string YamlText::singleQuoted() {
  std::string text;
  while (!rest.empty()) {
    const bool isQuote = rest.front() == '\'';
    if (isQuote && !rest.starts_with("''")) break;
    text += rest.front();
    rest.remove_prefix(isQuote ? 2 : 1);
  }
  rest.remove_prefix(std::min<std::size_t>(1, rest.size()));
  return text;
}

std::string YamlText::doubleQuoted() {
  std::string text;
  while (!rest.empty() && rest.front() != '"') {
    if (rest.front() == '\\' && rest.size() > 1) {
      rest.remove_prefix(1);
      appendEscaped(text);
    } else {
      text += rest.front();
      rest.remove_prefix(1);
    }
  }
  rest.remove_prefix(std::min<std::size_t>(1, rest.size()));
  return text;
}

void YamlText::appendEscaped(std::string& text) {
  const char letter = rest.front();
  if (auto code = codeAt(rest)) {
    rest.remove_prefix(1 + digitsBehind(letter));
    if (*code >= 0xD800 && *code < 0xDC00) code = joined(*code);
    return appendUtf8(text, *code);
  }
  text += controlOf(letter);
  rest.remove_prefix(1);
}

unsigned long YamlText::joined(unsigned long high) {
  if (!rest.starts_with("\\u")) return high;
  const auto low = codeAt(rest.substr(1));
  if (!low || *low < 0xDC00 || *low > 0xDFFF) return high;
  rest.remove_prefix(2 + digitsBehind('u'));
  return 0x10000 + ((high - 0xD800) << 10) + (*low - 0xDC00);
}

}  // namespace tnv

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tnv {

/// Reads the values of the few forms that names and paths have in YAML, from front to back.
class YamlText {
 public:
  explicit YamlText(std::string_view value) : rest(value) {}

  bool atEnd();

  /// Takes the letter, behind blanks and comments, if it comes next.
  bool accept(char c);

  /// A text with or without quotes. Without, it ends before one of `ends` or a comment.
  std::string scalar(std::string_view ends);

  /// Whether any text was spelled in a way that is not read: by an anchor, a reference, a tag or as
  /// a block of lines.
  bool isUnread() const { return unread; }

 private:
  /// White space and comments, which bring a list in brackets from line to line.
  void skipBlanks();

  bool isComment(std::size_t place) const;
  std::string singleQuoted();
  std::string doubleQuoted();
  void appendEscaped(std::string& text);

  /// Characters far from the front come as two halves where JSON was written.
  unsigned long joined(unsigned long high);

  std::string_view rest;
  bool unread = false;
};

}  // namespace tnv

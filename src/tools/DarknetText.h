#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "tools/LabelFiles.h"
#include "tools/LabelSet.h"

/// The texts of Darknet labels, a label a line.
namespace tnv::darknet {

/// Begins the log lines of reading.
constexpr std::string_view kReadWho = "readDarknetLabels";

/// Lies among texts of labels, and is none.
constexpr std::string_view kClassesFile = "classes.txt";

constexpr std::string_view kTextExtension = ".txt";

bool isText(const std::string& path);

/// Calls back with each line that is not blank, and its number.
template <class Callback>
void forEachLine(std::string_view text, const Callback& callback) {
  std::size_t number = 0;
  text = withoutByteOrderMark(text);
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    ++number;
    const std::string_view line = trimmed(text.substr(0, end));
    if (!line.empty()) callback(line, number);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

/// Takes the labels of the picture's text, or rejects them with their lines.
void readLabels(LabelSet& set, LabelledPicture& picture, bool clip);

/// Whether any line of the text is a label, which tells label texts from lists and notes.
bool holdsLabels(std::string_view text);

/// Whether a file has the name of class names, and is no text of a picture that is called so.
bool isClassesFile(const std::string& file);

/// Rejects the lines of a text that several pictures have the name of.
void rejectShared(LabelSet& set, const std::string& file);

/// The same for a text that no picture has the name of, if any of them is a label.
void rejectWithoutPicture(LabelSet& set, const std::string& file);

/// A picture that a list has and nobody else.
void rejectMissing(LabelSet& set, const LabelledPicture& picture);

}  // namespace tnv::darknet

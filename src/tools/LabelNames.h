#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tnv {

/// Classes with the number of each, in the order of the numbers.
struct NumberedNames {
  std::vector<std::string> names;
  std::vector<long long> numbers;
};

/// What a file that describes a set of Darknet labels tells.
struct LabelDescription {
  NumberedNames classes;
  std::vector<std::string> sources;  ///< directories and lists of pictures, as they are written
};

/// Whether the file is a `data.yaml`, or a Darknet data file, by its extension.
bool isYaml(const std::string& file);
bool isDarknetData(const std::string& file);

/// Reads what a `data.yaml` says under `names`, `path`, `train`, `val`, `valid` and `test`. The
/// names may be a list or a map of numbers, in brackets or on lines of their own, the places of
/// pictures a text or such a list, each quoted or not; all else is passed over. Anchors,
/// references, tags and blocks of lines are not read, nor is a text in braces: a log line tells so.
LabelDescription parseYaml(const std::string& text);

/// Reads class names from a file of names, one a line, a Darknet data file, which names such a
/// file, or a `data.yaml`. Nothing if there are none to be found.
std::optional<LabelDescription> readDescription(const std::string& file);

/// The classes of a file that was given by hand, as `readDescription` reads it. Nothing, with a log
/// line that starts with `who`, if there are none.
std::optional<NumberedNames> readGivenNames(const std::string& file, std::string_view who);

/// Tells that a file has no class names, in a log line that starts with `who`.
void logNoNamesIn(const std::string& file, std::string_view who);

/// What a `data.yaml` says under a key: the texts of a list or of a map of numbers, or a single
/// one. Places of pictures (`train`, `val`, `valid`, `test`) are absolute paths. Empty if the file
/// is none or does not have the key.
std::vector<std::string> readYamlTexts(const std::string& file, const std::string& key);

/// The text of a `data.yaml` for these classes; `pictures` is its `train` and `val`.
std::string yamlText(const std::vector<std::string>& names, const std::string& pictures);

}  // namespace tnv

#include "tools/LabelFormats.h"

#include <algorithm>

#include "foundation/Utf8.h"
#include "tools/LabelFiles.h"
#include "tools/LabelsCoco.h"
#include "tools/LabelsDarknet.h"
#include "tools/LabelsVoc.h"

namespace tnv {

namespace {

/// Readers take a backslash for a slash, as it is meant where sets come from other systems.
bool holdsAny(const std::string& name, std::string_view characters) {
  return name.find_first_of(characters) != name.npos || name.find('\\') != name.npos;
}

/// JSON is UTF-8.
bool keepsNameInCoco(const std::string& name) {
  return !holdsAny(name, "") && isUtf8(name);
}

/// XML makes a carriage return a line feed, and readers take the blanks at both ends off.
bool keepsNameInVoc(const std::string& name) {
  return !holdsAny(name, "\r") && trimmed(name).size() == name.size();
}

/// A list has a picture a line.
bool keepsNameInDarknet(const std::string& name) {
  return !holdsAny(name, "\r\n");
}

/// Texts lie beside the labels of other formats too, so that Darknet comes last.
constexpr LabelFormat kFormats[] = {
    {"COCO", isCocoLabels, isCocoLabels, readCocoLabels, writeCocoLabels, keepsNameInCoco, true},
    {"VOC", isVocLabels, isVocLabels, readVocLabels, writeVocLabels, keepsNameInVoc, false},
    {"Darknet", holdsDarknetLabels, isDarknetLabels, readDarknetLabels, writeDarknetLabels,
     keepsNameInDarknet, false},
};

}  // namespace

std::span<const LabelFormat> labelFormats() {
  return kFormats;
}

const LabelFormat* findLabelFormat(std::string_view name) {
  for (const LabelFormat& format : kFormats) {
    if (format.name == name) return &format;
  }
  return nullptr;
}

std::vector<const LabelFormat*> recogniseLabelFormats(const std::string& path) {
  std::vector<const LabelFormat*> found;
  for (const LabelFormat& format : kFormats) {
    if (format.holdsLabels(path)) found.push_back(&format);
  }
  if (!found.empty()) return found;
  for (const LabelFormat& format : kFormats) {
    if (format.isSet(path)) return {&format};
  }
  return {};
}

}  // namespace tnv

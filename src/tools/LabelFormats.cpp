#include "tools/LabelFormats.h"

#include <algorithm>

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

/// The bytes that follow the first one of a character; nothing for one that begins none.
std::optional<std::size_t> bytesBehind(unsigned char first) {
  if (first < 0x80) return 0;
  if (first >= 0xC2 && first < 0xE0) return 1;
  if (first >= 0xE0 && first < 0xF0) return 2;
  if (first >= 0xF0 && first < 0xF5) return 3;
  return std::nullopt;
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const auto behind = bytesBehind(static_cast<unsigned char>(text.front()));
    if (!behind || text.size() <= *behind) return false;
    const std::string_view rest = text.substr(1, *behind);
    const auto isRest = [](char byte) {
      return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
    };
    if (!std::all_of(rest.begin(), rest.end(), isRest)) return false;
    text.remove_prefix(1 + *behind);
  }
  return true;
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
    {"COCO", isCocoLabels, readCocoLabels, writeCocoLabels, keepsNameInCoco, true, true},
    {"VOC", isVocLabels, readVocLabels, writeVocLabels, keepsNameInVoc, true, false},
    {"Darknet", isDarknetLabels, readDarknetLabels, writeDarknetLabels, keepsNameInDarknet, false,
     false},
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

const LabelFormat* recogniseLabelFormat(const std::string& path) {
  for (const LabelFormat& format : kFormats) {
    if (format.recognise(path)) return &format;
  }
  return nullptr;
}

}  // namespace tnv

#include "tools/LabelFormats.h"

#include "tools/LabelsCoco.h"
#include "tools/LabelsDarknet.h"
#include "tools/LabelsVoc.h"

namespace tnv {

namespace {

/// Texts lie beside the labels of other formats too, so that Darknet comes last.
constexpr LabelFormat kFormats[] = {
    {"COCO", isCocoLabels, isCocoLabels, readCocoLabels, writeCocoLabels, true, true},
    {"VOC", isVocLabels, isVocLabels, readVocLabels, writeVocLabels, true, false},
    {"Darknet", holdsDarknetLabels, isDarknetLabels, readDarknetLabels, writeDarknetLabels, false,
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

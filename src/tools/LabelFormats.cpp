#include "tools/LabelFormats.h"

#include "tools/LabelsCoco.h"
#include "tools/LabelsDarknet.h"
#include "tools/LabelsVoc.h"

namespace tnv {

namespace {

/// Texts lie beside the labels of other formats too, so that Darknet comes last.
constexpr LabelFormat kFormats[] = {
    {"COCO", isCocoLabels, readCocoLabels, writeCocoLabels, true},
    {"VOC", isVocLabels, readVocLabels, writeVocLabels, true},
    {"Darknet", isDarknetLabels, readDarknetLabels, writeDarknetLabels, false},
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

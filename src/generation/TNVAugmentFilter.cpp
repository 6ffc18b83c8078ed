#include "generation/TNVAugmentFilter.h"

#include <algorithm>

#include "foundation/XmlStorage.h"

namespace {

// Persisted in task files.
const std::string kGensKey = "FilterAllowedGens";
const std::string kFormsKey = "FilterAllowedForms";

bool contains(const std::vector<std::string>& texts, const std::string& text) {
  return std::find(texts.begin(), texts.end(), text) != texts.end();
}

/// A list of one text comes back from a file as the text alone; the iterator takes both.
std::vector<std::string> readTexts(const cv::FileNode& node) {
  std::vector<std::string> texts;
  for (const cv::FileNode& text : node)
    texts.push_back(tnv::readText(text, ""));
  return texts;
}

void writeTexts(cv::FileStorage& storage, const std::string& key,
                const std::vector<std::string>& texts) {
  storage << key << "[";
  for (const std::string& text : texts)
    cv::write(storage, std::string(), text);
  storage << "]";
}

}  // namespace

std::string TNVAugmentFilter::getName() const {
  return "Filter";
}

TNVAugmentSample TNVAugmentFilter::process(const TNVAugmentSample& sample) const {
  // The mark of a special sample is lost on purpose.
  TNVAugmentSample result;
  result.image = sample.image;
  std::copy_if(sample.entries.begin(), sample.entries.end(), std::back_inserter(result.entries),
               [this](const TNVAugmentEntry& entry) {
                 return contains(allowedGens, entry.gen) && contains(allowedForms, entry.form);
               });
  return result;
}

void TNVAugmentFilter::write(cv::FileStorage& storage) const {
  writeTexts(storage, kGensKey, allowedGens);
  writeTexts(storage, kFormsKey, allowedForms);
}

void TNVAugmentFilter::read(const cv::FileNode& node) {
  allowedGens = readTexts(tnv::child(node, kGensKey));
  allowedForms = readTexts(tnv::child(node, kFormsKey));
}

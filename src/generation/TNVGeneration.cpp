#include "generation/TNVGeneration.h"

#include <algorithm>

#include "foundation/Log.h"
#include "foundation/Steps.h"
#include "foundation/TNVDirectory.h"
#include "foundation/TNVSettings.h"
#include "generation/TNVAugmentSample.h"
#include "generation/TNVKeyWordAndValue.h"

namespace {

/// No platform comes near; a damaged count must not keep the reader busy.
constexpr int kMostTemplates = 1000;

// Persisted in the project's settings.
const std::string kCountKey = "Generation.Tmp.Count";

std::string indexedKey(const char* field, int index) {
  return std::string("Generation.Tmp.") + field + "." + std::to_string(index);
}

std::string withoutBlanks(std::string text) {
  std::erase(text, ' ');
  return text;
}

/// Replacing such a keyword would never come to an end.
bool containsOwnKeyword(const TNVKeyWordAndValue& words, const std::string& key,
                        const std::string& value) {
  const auto found = std::find(words.keys.begin(), words.keys.end(), key);
  if (found == words.keys.end()) return false;
  const auto index = static_cast<std::size_t>(found - words.keys.begin());
  return value.find("###" + words.keywords[index] + "###") != value.npos;
}

void setValue(TNVKeyWordAndValue& words, const std::string& key, const std::string& value) {
  if (containsOwnKeyword(words, key, value)) {
    tnv::logLine("TNVGeneration::writeTemplate: The value of '" + key +
                 "' contains its own keyword!");
    return;
  }
  words.setValueForKey(key, value);
}

TNVGeneration::Template readTemplate(const TNVSettings& settings, int index) {
  TNVGeneration::Template record;
  record.path = settings.getString(indexedKey("Path", index), "");
  record.name = settings.getString(indexedKey("Name", index), "");
  record.savePath = settings.getString(indexedKey("SavePath", index), "");
  record.keywords = settings.getStringMap(indexedKey("Keywords", index), {});
  return record;
}

}  // namespace

void TNVGeneration::calculateVarValues() {
  vars.clear();
  vars["$TRAINSET_COUNT"] = std::to_string(trainSets.size());
  vars["$DNN_COUNT"] = std::to_string(dnnClasses.size());
  vars["$PLATFORM_PATH"] = platformPath;
  vars["$PLATFORM_NAME"] = name;
}

void TNVGeneration::saveSettings(TNVSettings* settings) {
  if (!settings) return;
  settings->setInt(kCountKey, static_cast<int>(templates.size()));
  int index = 0;
  for (const auto& [descriptor, record] : templates) {
    settings->setString(indexedKey("Descriptor", index), descriptor);
    settings->setString(indexedKey("Path", index), record.path);
    settings->setString(indexedKey("Name", index), record.name);
    settings->setString(indexedKey("SavePath", index), record.savePath);
    settings->setStringMap(indexedKey("Keywords", index), record.keywords);
    ++index;
  }
}

void TNVGeneration::loadSettings(TNVSettings* settings) {
  if (!settings) return;
  const int count = settings->getInt(kCountKey, 0);
  if (count == 0) return;
  templates.clear();
  for (int index = 0; index < std::min(count, kMostTemplates); ++index) {
    templates.emplace(settings->getString(indexedKey("Descriptor", index), ""),
                      readTemplate(*settings, index));
  }
}

void TNVGeneration::prepare(const TNVAugmentSample& sample, tnv::Steps& steps) {
  steps.add([this, sample] { process(sample); });
}

std::vector<std::string> TNVGeneration::getAvailableTemplateNames(
    const std::string& descriptor) const {
  const auto found = templates.find(descriptor);
  if (found == templates.end()) return {};
  std::vector<std::string> names;
  for (const TNVFileInfo& file :
       TNVDirectory::readFiles(platformPath + found->second.path, {"tmp"}, false)) {
    names.push_back(file.fileName);
  }
  return names;
}

std::map<std::string, std::string> TNVGeneration::getTemplateDataDefault(
    const std::string& descriptor, const std::string& templateName) {
  const auto found = templates.find(descriptor);
  if (found == templates.end()) return {};
  TNVKeyWordAndValue words;
  words.sourceFile = platformPath + found->second.path + templateName;
  const auto pairs = words.getAvailableKeysAndValues();
  std::map<std::string, std::string> defaults;
  for (std::size_t i = 0; i + 1 < pairs.size(); i += 2)
    defaults.emplace(pairs[i], pairs[i + 1]);
  found->second.defaults = defaults;
  return defaults;
}

void TNVGeneration::setTemplateData(const std::string& descriptor, const std::string& templateName,
                                    const std::map<std::string, std::string>& keywords,
                                    const std::string& savePath) {
  const auto found = templates.find(descriptor);
  if (found == templates.end()) return;
  found->second.name = templateName;
  found->second.keywords = keywords;
  found->second.savePath = savePath;
}

const TNVGeneration::Template& TNVGeneration::findTemplate(const std::string& descriptor) const {
  static const Template none;
  const auto found = templates.find(descriptor);
  return found == templates.end() ? none : found->second;
}

std::vector<std::string> TNVGeneration::getAvailableVars() const {
  std::vector<std::string> names;
  for (const auto& [variable, value] : vars)
    names.push_back(variable);
  return names;
}

std::string TNVGeneration::getValueForVar(const std::string& variable) const {
  const auto found = vars.find(variable);
  if (found != vars.end()) return found->second;
  tnv::logLine("TNVGeneration::getValueForVar: Key not found!");
  return {};
}

void TNVGeneration::writeTemplate(const std::string& descriptor) {
  const Template& record = findTemplate(descriptor);
  TNVKeyWordAndValue words;
  words.sourceFile = platformPath + record.path + record.name;
  words.targetFile = record.savePath;
  words.getAvailableKeys();
  calculateVarValues();
  for (const auto& [key, value] : record.keywords) {
    const auto variable = vars.find(withoutBlanks(value));
    setValue(words, key, variable == vars.end() ? value : variable->second);
  }
  words.replace();
}

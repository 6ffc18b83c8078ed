#include "TNV_SampleBenchNative/WTNVGeneration.h"

#include "generation/TNVGeneration.h"

WTNVGeneration::WTNVGeneration() : native(nullptr) {}
WTNVGeneration::WTNVGeneration(TNVGeneration* generation) : native(generation) {}
WTNVGeneration::WTNVGeneration(const WTNVGeneration& other) = default;
WTNVGeneration& WTNVGeneration::operator=(const WTNVGeneration& other) = default;

WTNVGeneration::~WTNVGeneration() {
  native = nullptr;
}

bool WTNVGeneration::isValid() const {
  return native != nullptr;
}

TNVGeneration* WTNVGeneration::getNativeGeneration() const {
  return native;
}

std::string WTNVGeneration::wGetName() const {
  return native->getName();
}

std::vector<std::string> WTNVGeneration::wGetAvailableTemplateNames(
    const std::string& descriptor) const {
  return native->getAvailableTemplateNames(descriptor);
}

std::map<std::string, std::string> WTNVGeneration::wGetTemplateDataDefault(
    const std::string& descriptor, const std::string& templateName) const {
  return native->getTemplateDataDefault(descriptor, templateName);
}

void WTNVGeneration::wSetTemplateData(const std::string& descriptor,
                                      const std::string& templateName,
                                      const std::map<std::string, std::string>& keywordsAndValues,
                                      const std::string& savePath) const {
  native->setTemplateData(descriptor, templateName, keywordsAndValues, savePath);
}

std::string WTNVGeneration::wGetTemplateName(const std::string& descriptor) const {
  return native->findTemplate(descriptor).name;
}

std::map<std::string, std::string> WTNVGeneration::wGetTemplateKaV(
    const std::string& descriptor) const {
  return native->findTemplate(descriptor).keywords;
}

std::string WTNVGeneration::wGetTemplateSavePath(const std::string& descriptor) const {
  return native->findTemplate(descriptor).savePath;
}

std::vector<std::string> WTNVGeneration::wGetAvailableVars() const {
  return native->getAvailableVars();
}

std::string WTNVGeneration::wGetValueForVar(const std::string& variable) const {
  return native->getValueForVar(variable);
}

void WTNVGeneration::wCalculateVarValues() const {
  native->calculateVarValues();
}

std::vector<std::string> WTNVGeneration::wValidateConfig() const {
  return native->validateConfig();
}

#include "TNV_SampleBenchNative/WTNVGenerationDarknet.h"

#include "foundation/TNVDirectory.h"
#include "generation/TNVGenerationDarknet.h"

WTNVGenerationDarknet::WTNVGenerationDarknet() : native(nullptr) {}

WTNVGenerationDarknet::WTNVGenerationDarknet(TNVGenerationDarknet* generation)
    : native(generation) {}

WTNVGenerationDarknet::WTNVGenerationDarknet(const WTNVGeneration& generation)
    : native(dynamic_cast<TNVGenerationDarknet*>(generation.getNativeGeneration())) {}

WTNVGenerationDarknet::WTNVGenerationDarknet(const WTNVGenerationDarknet& other) = default;

WTNVGenerationDarknet& WTNVGenerationDarknet::operator=(const WTNVGenerationDarknet& other) =
    default;

WTNVGenerationDarknet::~WTNVGenerationDarknet() {
  native = nullptr;
}

TNVGenerationDarknet* WTNVGenerationDarknet::getNativeGeneration() const {
  return native;
}

bool WTNVGenerationDarknet::isValid() const {
  return native != nullptr;
}

void WTNVGenerationDarknet::wSetSampleDirectory(const std::string& directory) const {
  native->sampleDirectory = TNVDirectory::normalizePath(directory);
}

std::string WTNVGenerationDarknet::wGetSampleDirectory() const {
  return native->sampleDirectory;
}

void WTNVGenerationDarknet::wSetDarknetDataDirectory(const std::string& directory) const {
  native->dataDirectory = TNVDirectory::normalizePath(directory);
}

std::string WTNVGenerationDarknet::wGetDarknetDataDirectory() const {
  return native->dataDirectory;
}

void WTNVGenerationDarknet::wSetTrainFileName(const std::string& name) const {
  native->trainFile = name;
}

std::string WTNVGenerationDarknet::wGetTrainFileName() const {
  return native->trainFile;
}

void WTNVGenerationDarknet::wSetTestFileName(const std::string& name) const {
  native->testFile = name;
}

std::string WTNVGenerationDarknet::wGetTestFileName() const {
  return native->testFile;
}

void WTNVGenerationDarknet::wSetTestRatio(double ratio) const {
  native->testRatio = ratio;
}

double WTNVGenerationDarknet::wGetTestRatio() const {
  return native->testRatio;
}

void WTNVGenerationDarknet::wSetUseSpecialTest(bool use) const {
  native->useSpecialTest = use;
}

bool WTNVGenerationDarknet::wGetUseSpecialTest() const {
  return native->useSpecialTest;
}

void WTNVGenerationDarknet::wSetAbsolutePathInFiles(bool absolute) const {
  native->absPathInFile = absolute;
}

bool WTNVGenerationDarknet::wGetAbsolutePathInFiles() const {
  return native->absPathInFile;
}

void WTNVGenerationDarknet::wSetWeights(const std::string& fileName) const {
  native->weights = fileName;
}

std::string WTNVGenerationDarknet::wGetWeights() const {
  return native->weights;
}

void WTNVGenerationDarknet::wSetWeightsCopy(bool copy) const {
  native->weightsCopy = copy;
}

bool WTNVGenerationDarknet::wGetWeightsCopy() const {
  return native->weightsCopy;
}

std::string WTNVGenerationDarknet::wGetWeightsDirectory() const {
  return native->getWeightsDirectory();
}

std::vector<std::string> WTNVGenerationDarknet::wGetAvailableWeights() const {
  return native->getAvailableWeights();
}

std::string WTNVGenerationDarknet::wGetWeightsDownloadAdress() const {
  return "https://" TNV_PORTAL_HOST "/interface.upload_portal.php";
}

std::string WTNVGenerationDarknet::wGetConfigDescriptor() const {
  return TNVGenerationDarknet::kConfigDescriptor;
}

std::string WTNVGenerationDarknet::wGetNetDescriptor() const {
  return TNVGenerationDarknet::kNetDescriptor;
}

#pragma once

#include <string>
#include <vector>

#include "generation/TNVGeneration.h"

/// Writes training sets for the Darknet platform: a JPEG picture and a label text per sample, the
/// lists of training and test pictures, the filled templates and the starting weights.
class TNVGenerationDarknet final : public TNVGeneration {
 public:
  struct SampleEntry {
    std::string imagePath;
    bool isTest;
  };

  // Persisted in the project's settings.
  static constexpr const char* kConfigDescriptor = "configs";
  static constexpr const char* kNetDescriptor = "nets";

  TNVGenerationDarknet();

  std::string getName() const override;
  void calculateVarValues() override;
  void saveSettings(TNVSettings* settings) override;
  void loadSettings(TNVSettings* settings) override;
  bool processBefore() override;
  bool process(const TNVAugmentSample& sample) override;
  bool processAfter() override;
  std::vector<std::string> validateConfig() const override;
  void prepare(const TNVAugmentSample& sample, tnv::Steps& steps) override;

  std::string getWeightsDirectory() const;
  std::vector<std::string> getAvailableWeights() const;

  std::string sampleDirectory = "./darknet/images/";
  std::string dataDirectory = "./darknet/";
  std::string trainFile = "train.txt";
  std::string testFile = "test.txt";
  bool absPathInFile = false;
  std::string weights;
  bool weightsCopy = true;
  double testRatio = 0.05;
  bool useSpecialTest = false;
  unsigned sampleCounter = 0;
  std::vector<SampleEntry> samples;

 private:
  std::string samplePath(unsigned number, const char* extension) const;
};

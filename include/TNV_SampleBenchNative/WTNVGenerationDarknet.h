#pragma once

#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"
#include "TNV_SampleBenchNative/WTNVGeneration.h"

class TNVGenerationDarknet;

/// Handle on the generator for the Darknet platform. It writes `img_N.jpg` and `img_N.txt` into the
/// sample directory, and the lists, the filled templates and the weights at the end of a run. Both
/// directories are deleted at the start of a run. The handle owns nothing; methods need one that is
/// not null. Setters change memory; the project's next full save writes them.
class TNV_SAMPLEBENCH_API WTNVGenerationDarknet {
 public:
  /// A null handle.
  WTNVGenerationDarknet();
  explicit WTNVGenerationDarknet(TNVGenerationDarknet* generation);

  /// The generator of the handle; null if that is of another kind.
  explicit WTNVGenerationDarknet(const WTNVGeneration& generation);
  WTNVGenerationDarknet(const WTNVGenerationDarknet& other);
  WTNVGenerationDarknet& operator=(const WTNVGenerationDarknet& other);
  ~WTNVGenerationDarknet();

  /// The generator itself, borrowed; null for a null handle.
  TNVGenerationDarknet* getNativeGeneration() const;

  /// Whether the handle is not null.
  bool isValid() const;

  /// Where pictures and label texts go.
  void wSetSampleDirectory(const std::string& directory) const;
  std::string wGetSampleDirectory() const;

  /// Where the lists and the weights go.
  void wSetDarknetDataDirectory(const std::string& directory) const;
  std::string wGetDarknetDataDirectory() const;

  /// Names of the two lists within the data directory.
  void wSetTrainFileName(const std::string& name) const;
  std::string wGetTrainFileName() const;
  void wSetTestFileName(const std::string& name) const;
  std::string wGetTestFileName() const;

  /// Share of the samples that the test list gets, 0 to 1.
  void wSetTestRatio(double ratio) const;
  double wGetTestRatio() const;

  /// Kept for front ends; the division of the samples does not consult it.
  void wSetUseSpecialTest(bool use) const;
  bool wGetUseSpecialTest() const;

  /// Whether the lists hold absolute paths.
  void wSetAbsolutePathInFiles(bool absolute) const;
  bool wGetAbsolutePathInFiles() const;

  /// File name of the starting weights within the weights directory; empty for none.
  void wSetWeights(const std::string& fileName) const;
  std::string wGetWeights() const;

  /// Whether a run copies the weights into the data directory.
  void wSetWeightsCopy(bool copy) const;
  bool wGetWeightsCopy() const;

  /// The directory of the weights files; it is created if it is missing.
  std::string wGetWeightsDirectory() const;

  /// File names of the weights that can be chosen, in the order of the file system.
  std::vector<std::string> wGetAvailableWeights() const;

  /// Address of the portal that offers weights.
  std::string wGetWeightsDownloadAdress() const;

  /// Descriptors of the two templates: the data description and the network.
  std::string wGetConfigDescriptor() const;
  std::string wGetNetDescriptor() const;

 private:
  TNVGenerationDarknet* native;
};

#pragma once

#include <map>
#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"

class TNVGeneration;

/// Handle on a project's generator: what turns marked pictures into the files that a training
/// platform expects. The project owns the generator; the handle dangles once the project chose
/// another one. A platform has named output templates (descriptors); each is filled from a template
/// file with keywords, `###NAME=VALUE###`, and written to a path. Methods other than `isValid` and
/// `getNativeGeneration` need a handle that is not null. For use on the thread that runs the
/// generation.
class TNV_SAMPLEBENCH_API WTNVGeneration {
 public:
  /// A null handle.
  WTNVGeneration();
  explicit WTNVGeneration(TNVGeneration* generation);
  WTNVGeneration(const WTNVGeneration& other);
  WTNVGeneration& operator=(const WTNVGeneration& other);
  ~WTNVGeneration();

  /// Whether the handle is not null.
  bool isValid() const;

  /// The generator itself, borrowed; null for a null handle.
  TNVGeneration* getNativeGeneration() const;

  /// Name of the platform.
  std::string wGetName() const;

  /// File names of the templates that can be chosen for the descriptor, in the order of the file
  /// system; empty for an unknown descriptor.
  std::vector<std::string> wGetAvailableTemplateNames(const std::string& descriptor) const;

  /// The keywords of a template file with the values that stand in it; a keyword without a value
  /// has the empty text and must be given one before a run. Empty for an unknown descriptor.
  std::map<std::string, std::string> wGetTemplateDataDefault(const std::string& descriptor,
                                                             const std::string& templateName) const;

  /// Chooses the template file, the keywords' values and the path of the filled file. A value that
  /// is, blanks aside, the name of a variable stands for the variable's value. An unknown
  /// descriptor is ignored.
  void wSetTemplateData(const std::string& descriptor, const std::string& templateName,
                        const std::map<std::string, std::string>& keywordsAndValues,
                        const std::string& savePath) const;

  /// What `wSetTemplateData` chose; empty for an unknown descriptor.
  std::string wGetTemplateName(const std::string& descriptor) const;
  std::map<std::string, std::string> wGetTemplateKaV(const std::string& descriptor) const;
  std::string wGetTemplateSavePath(const std::string& descriptor) const;

  /// Names of the variables, sorted. There are none before the first `wCalculateVarValues`.
  std::vector<std::string> wGetAvailableVars() const;

  /// The variable's value; empty, with a line in the log, for an unknown one.
  std::string wGetValueForVar(const std::string& variable) const;
  void wCalculateVarValues() const;

  /// One message for each setting that a run still needs; empty if all are there.
  std::vector<std::string> wValidateConfig() const;

 private:
  TNVGeneration* native;
};

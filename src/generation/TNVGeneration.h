#pragma once

#include <map>
#include <string>
#include <vector>

class TNVDNNClass;
class TNVSettings;
class TNVTrainSet;
struct TNVAugmentSample;

namespace tnv {
class Steps;
}

/// Base of all generators of training sets: the output templates with the user's keyword values,
/// the variables that can stand as values, and their persistence in the project's settings.
class TNVGeneration {
 public:
  struct Template {
    std::string path;  ///< directory of the template files, relative to `platformPath`
    std::string name;  ///< file name of the chosen template
    std::map<std::string, std::string> defaults;
    std::map<std::string, std::string> keywords;
    std::string savePath;
  };

  TNVGeneration(const TNVGeneration&) = delete;
  TNVGeneration& operator=(const TNVGeneration&) = delete;

  virtual std::string getName() const = 0;

  /// Rebuilds `vars`.
  virtual void calculateVarValues();
  virtual void saveSettings(TNVSettings* settings);
  virtual void loadSettings(TNVSettings* settings);
  virtual bool processBefore() = 0;
  virtual bool process(const TNVAugmentSample& sample) = 0;
  virtual bool processAfter() = 0;

  /// One message for each problem.
  virtual std::vector<std::string> validateConfig() const = 0;

  /// What `process` does, the part that takes long at once and the rest as steps: those of all
  /// samples have to follow each other on one thread, while this may be called on any.
  virtual void prepare(const TNVAugmentSample& sample, tnv::Steps& steps);

  std::vector<std::string> getAvailableTemplateNames(const std::string& descriptor) const;
  std::map<std::string, std::string> getTemplateDataDefault(const std::string& descriptor,
                                                            const std::string& templateName);
  void setTemplateData(const std::string& descriptor, const std::string& templateName,
                       const std::map<std::string, std::string>& keywords,
                       const std::string& savePath);

  /// The record of that descriptor, or an empty one.
  const Template& findTemplate(const std::string& descriptor) const;

  std::vector<std::string> getAvailableVars() const;
  std::string getValueForVar(const std::string& variable) const;

  /// Fills the chosen template of the descriptor and writes it to its save path.
  void writeTemplate(const std::string& descriptor);

  std::map<std::string, Template> templates;
  std::map<std::string, std::string> vars;
  std::string name = "none";
  std::vector<TNVDNNClass*> dnnClasses;
  std::vector<TNVTrainSet*> trainSets;
  std::string platformPath = "./";

  /// What a run reads besides `trainSets` and the platform's data and so must never delete.
  std::string projectDirectory;
  std::string augmentsPath;
  std::vector<TNVTrainSet*> runTrainSets;

 protected:
  TNVGeneration() = default;
  ~TNVGeneration() = default;
};

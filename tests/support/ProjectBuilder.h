#pragma once

#include <memory>
#include <string>
#include <vector>

#include "TNV_SampleBenchNative/WTNVProject.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"

/// A project in a fresh directory, made through the exported classes.
class ProjectBuilder {
 public:
  explicit ProjectBuilder(const std::string& name = "demo");

  WTNVProject& project() { return *current; }

  /// A new object on the same project, loaded from disk.
  WTNVProject& reopened();

  /// A new object on the same project, not loaded.
  WTNVProject& another();

  /// Writes a patterned picture and returns its path.
  std::string picture(const std::string& fileName, int width = 64, int height = 48);

  /// Writes pictures and adds them to a set.
  ProjectBuilder& withPictures(const std::vector<std::string>& fileNames,
                               const std::string& set = "set");
  ProjectBuilder& withClasses(const std::vector<std::string>& names);

  /// Generates for Darknet into `outputDirectory`, samples below its `images/`, by this task tree.
  ProjectBuilder& withDarknet(const std::string& taskTree);
  std::string outputDirectory() const { return temp / "out/"; }

  std::string projectDirectory() const { return temp / "projects/" + name + "/"; }
  std::string settingsPath() const { return projectDirectory() + name + ".cfg"; }

  TempDirectory temp;

 private:
  std::string name;
  std::unique_ptr<WTNVProject> current;
};

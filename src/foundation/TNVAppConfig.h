#pragma once

#include <functional>
#include <memory>
#include <string>

#include "foundation/TNVSettings.h"

/// Where projects, platforms, augmentations and users live, from a settings file that is read once
/// and never written.
class TNVAppConfig {
 public:
  /// `documents` gives the user's documents directory, with a slash at the end.
  explicit TNVAppConfig(const std::string& path,
                        std::function<std::string()> documents = defaultDocuments());

  /// Paths as the file has them, below the documents directory unless it says otherwise; empty
  /// without a file.
  std::string getProjectsPath() const;
  std::string getPlatformsPath() const;
  std::string getAugmentsPath() const;
  std::string getUsersPath() const;

  std::string configPath = "./app.cfg";
  std::unique_ptr<TNVSettings> settings;

 private:
  static std::function<std::string()> defaultDocuments();

  std::string pathOf(const std::string& key, const std::string& defaultValue) const;

  std::function<std::string()> documents;
};

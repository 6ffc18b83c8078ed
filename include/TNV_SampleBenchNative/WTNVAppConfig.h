#pragma once

#include <string>

#include "TNV_SampleBenchNative/Export.h"

class TNVAppConfig;

/// Where projects, platforms, augmentations and users live. There is one, made at the first call
/// and never released. It belongs to the front end's start-up: `getInstance` is not guarded against
/// two threads.
class TNV_SAMPLEBENCH_API WTNVAppConfig {
 public:
  /// The one instance, never null. The first call reads the settings file at `path`, with a log
  /// line if there is none; later calls ignore `path`.
  static WTNVAppConfig* getInstance(const std::string& path);
  WTNVAppConfig(const WTNVAppConfig&) = delete;
  WTNVAppConfig& operator=(const WTNVAppConfig&) = delete;

  /// Directories as the settings write them, which is to be with a slash at the end. What they
  /// leave out lies below the user's documents directory. Empty if there was no settings file.
  std::string wGetProjectsPath() const;
  std::string wGetPlatformsPath() const;
  std::string wGetAugmentsPath() const;
  std::string wGetUsersPath() const;

 private:
  explicit WTNVAppConfig(TNVAppConfig* config);
  ~WTNVAppConfig();

  TNVAppConfig* native;
};

#include "TNV_SampleBenchNative/WTNVAppConfig.h"

#include "foundation/TNVAppConfig.h"

WTNVAppConfig* WTNVAppConfig::getInstance(const std::string& path) {
  static WTNVAppConfig* const instance = new WTNVAppConfig(new TNVAppConfig(path));
  return instance;
}

WTNVAppConfig::WTNVAppConfig(TNVAppConfig* config) : native(config) {}

WTNVAppConfig::~WTNVAppConfig() = default;

std::string WTNVAppConfig::wGetProjectsPath() const {
  return native->getProjectsPath();
}

std::string WTNVAppConfig::wGetPlatformsPath() const {
  return native->getPlatformsPath();
}

std::string WTNVAppConfig::wGetAugmentsPath() const {
  return native->getAugmentsPath();
}

std::string WTNVAppConfig::wGetUsersPath() const {
  return native->getUsersPath();
}

#include "foundation/TNVAppConfig.h"

#include <utility>

#include "foundation/Log.h"
#include "foundation/Platform.h"
#include "foundation/TNVDirectory.h"

TNVAppConfig::TNVAppConfig(const std::string& path, std::function<std::string()> documentsOf)
    : documents(std::move(documentsOf)) {
  if (!TNVDirectory::exists(path)) {
    tnv::logLine("TNVAppConfig::TNVAppConfig: Could not load app config at '" + path + "'!");
    return;
  }
  settings = std::make_unique<TNVSettings>(path);
  settings->loadFile();
}

std::string TNVAppConfig::getProjectsPath() const {
  return pathOf("Basic.Projects.Path", "projects/");
}

std::string TNVAppConfig::getPlatformsPath() const {
  return pathOf("Basic.Platforms.Path", "platforms/");
}

std::string TNVAppConfig::getAugmentsPath() const {
  return pathOf("Basic.Augments.Path", "augments/");
}

std::string TNVAppConfig::getUsersPath() const {
  return pathOf("Basic.Users.Path", "users/");
}

std::function<std::string()> TNVAppConfig::defaultDocuments() {
  return tnv::documentsDirectory;
}

std::string TNVAppConfig::pathOf(const std::string& key, const std::string& defaultValue) const {
  if (!settings) return {};
  const std::string path = settings->getString(key, defaultValue);
  if (!settings->getBool("Basic.DocumentsPath.Use", true)) return path;
  return documents() + settings->getString("Basic.DocumentsPath.SubDir", "Annotation.Tessarine/") +
         path;
}

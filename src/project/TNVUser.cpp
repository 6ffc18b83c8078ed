#include "project/TNVUser.h"

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/TNVDirectory.h"
#include "foundation/TNVSettings.h"

namespace {

/// Keys of the user's file; persisted.
constexpr auto kName = "Basic.Name";
constexpr auto kLastProject = "Basic.LastProject";

}  // namespace

TNVUser::TNVUser(const std::string& userName, const std::string& directory)
    : settingsFile(userName + ".cfg"),
      settingsPath(directory + settingsFile),
      usersPath(directory),
      name(userName),
      isPlaceOfItsOwn(tnv::canNameFiles(userName)) {}

bool TNVUser::create() const {
  if (!_isPlace("create")) return false;
  if (TNVDirectory::exists(settingsPath)) {
    tnv::logLine("TNVUser::create: User already exists!");
    return false;
  }
  _writeSettings();
  return true;
}

bool TNVUser::load() {
  if (_isPlace("load") && _readSettings()) return true;
  tnv::logLine("TNVUser::load: Could not read settings!");
  return false;
}

bool TNVUser::update() const {
  if (!_isPlace("update")) return false;
  if (!TNVDirectory::exists(settingsPath)) {
    tnv::logLine("TNVUser::update: User does not exists!");
    return false;
  }
  _writeSettings();
  return true;
}

bool TNVUser::remove() const {
  if (!_isPlace("remove")) return false;
  if (!TNVDirectory::exists(settingsPath)) {
    tnv::logLine("TNVUser::remove: User does not exists!");
    return false;
  }
  tnv::removeFile(settingsPath);
  return true;
}

std::vector<std::string> TNVUser::readAvailableUsers(const std::string& usersPath) {
  std::vector<std::string> names;
  for (const TNVFileInfo& file : TNVDirectory::readFiles(usersPath, {"cfg"}, false))
    names.push_back(file.baseName);
  return names;
}

bool TNVUser::_isPlace(const std::string& operation) const {
  if (isPlaceOfItsOwn) return true;
  tnv::logLine("TNVUser::" + operation +
               ": User name must not be empty, a path or longer than 240 bytes!");
  return false;
}

void TNVUser::_writeSettings() const {
  TNVSettings settings(settingsPath);
  settings.setString(kName, name);
  settings.setString(kLastProject, lastProject);
  if (!settings.saveFile())
    tnv::logLine("TNVUser::_writeSettings: Could not write settings at '" + settingsPath + "'!");
}

bool TNVUser::_readSettings() {
  if (!TNVDirectory::exists(settingsPath)) {
    tnv::logLine("TNVUser::_readSettings: Could not find project at '" + settingsPath + "'!");
    return false;
  }
  TNVSettings settings(settingsPath);
  if (!settings.loadFile()) {
    // The words are those of a project, whose front ends know them.
    tnv::logLine("TNVProject::_readSettings: Could not read project at '" + settingsPath + "'");
    return false;
  }
  name = settings.getString(kName, "unknown");
  lastProject = settings.getString(kLastProject, "");
  return true;
}

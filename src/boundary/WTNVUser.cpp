#include "TNV_SampleBenchNative/WTNVUser.h"

#include "project/TNVUser.h"

WTNVUser::WTNVUser(const std::string& name, const std::string& usersPath)
    : native(new TNVUser(name, usersPath)) {}

WTNVUser& WTNVUser::operator=(const WTNVUser& other) = default;

WTNVUser::~WTNVUser() {
  delete native;
}

TNVUser* WTNVUser::getNativeUser() const {
  return native;
}

std::string WTNVUser::wGetUserName() const {
  return native->name;
}

std::string WTNVUser::wGetLastProject() const {
  return native->lastProject;
}

void WTNVUser::wSetLastProject(const std::string& project) {
  native->lastProject = project;
}

bool WTNVUser::wCreate() {
  return native->create();
}

bool WTNVUser::wLoad() {
  return native->load();
}

bool WTNVUser::wUpdate() {
  return native->update();
}

bool WTNVUser::wRemove() {
  return native->remove();
}

std::vector<std::string> WTNVUser::wReadAvailableUsers(const std::string& usersPath) {
  return TNVUser::readAvailableUsers(usersPath);
}

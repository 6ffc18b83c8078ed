#include "UserCommand.h"

#include <algorithm>
#include <filesystem>

#include "CommandError.h"
#include "ProjectAccess.h"
#include "TNV_SampleBenchNative/WTNVAppConfig.h"
#include "TNV_SampleBenchNative/WTNVUser.h"

namespace fs = std::filesystem;

namespace {

std::string usersDirectory(const UserOptions& options) {
  return (fs::path(options.users) / "").generic_string();
}

std::vector<std::string> userNames(const std::string& users) {
  std::error_code error;
  if (!fs::is_directory(users, error))
    throw CommandError("there is no directory '" + users +
                       "'; samplebench user create makes it with its first user");
  auto names = WTNVUser::wReadAvailableUsers(users);
  std::sort(names.begin(), names.end());
  return names;
}

void requireName(const std::string& name) {
  requireStorable("the name of a user", name);
  // What is a path, the library refuses for that.
  const bool isPath = name.find('/') != std::string::npos;
  if (!isPath && name.find('.') != std::string::npos)
    throw CommandError("user '" + name +
                       "' cannot be made; a name must not hold a dot, at which lists cut it");
}

void makeDirectory(const std::string& users) {
  std::error_code error;
  fs::create_directories(users, error);
  if (!fs::is_directory(users, error))
    throw CommandError("'" + users +
                       "' cannot be made a directory; see that no file is in the way and that the "
                       "place is yours");
}

void requireUser(const std::string& users, const std::string& name) {
  const auto names = userNames(users);
  if (std::find(names.begin(), names.end(), name) == names.end())
    throw CommandError("there is no user '" + name + "'; there are: " + joined(names));
}

}  // namespace

void runUserCreate(const UserOptions& options, Output& output) {
  const auto users = usersDirectory(options);
  requireName(options.name);
  makeDirectory(users);
  WTNVUser user(options.name, users);
  if (!user.wCreate() || !user.wLoad())
    throw CommandError("user '" + options.name +
                       "' cannot be made; choose a name that is free and no path");
  output.data() << "user '" << options.name << "' made in " << users << '\n';
}

void runUserList(const UserOptions& options, Output& output) {
  const auto users = usersDirectory(options);
  std::vector<TableRow> rows{{"user", "last project"}};
  for (const auto& name : userNames(users)) {
    WTNVUser user(name, users);
    rows.push_back({name, user.wLoad() ? user.wGetLastProject() : "cannot be read"});
  }
  writeTable(output.data(), rows);
}

void runUserSet(const UserOptions& options, Output& output) {
  const auto users = usersDirectory(options);
  requireUser(users, options.name);
  requireStorable("the name of a project", options.project);
  WTNVUser user(options.name, users);
  if (!user.wLoad()) throw CommandError("user '" + options.name + "' cannot be read");
  user.wSetLastProject(options.project);
  if (!user.wUpdate()) throw CommandError("user '" + options.name + "' cannot be written");
  output.data() << "user '" << options.name << "': last project '" << options.project << "'\n";
}

void runUserRemove(const UserOptions& options, Output& output) {
  const auto users = usersDirectory(options);
  requireUser(users, options.name);
  WTNVUser user(options.name, users);
  if (!user.wRemove() || fs::exists(users + options.name + ".cfg"))
    throw CommandError("user '" + options.name + "' cannot be removed");
  output.data() << "user '" << options.name << "' removed\n";
}

void runConfig(const std::string& file, Output& output) {
  if (!fs::is_regular_file(file))
    throw CommandError("the configuration '" + file + "' is no file; an empty one gives defaults");
  const auto* config = WTNVAppConfig::getInstance(file);
  writeTable(output.data(), {{"projects", config->wGetProjectsPath()},
                             {"platforms", config->wGetPlatformsPath()},
                             {"augmentations", config->wGetAugmentsPath()},
                             {"users", config->wGetUsersPath()}});
}

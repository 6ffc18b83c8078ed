#include "UserCommand.h"

#include <algorithm>
#include <filesystem>

#include "CommandError.h"
#include "CommandLine.h"
#include "ProjectAccess.h"
#include "TNV_SampleBenchNative/WTNVAppConfig.h"
#include "TNV_SampleBenchNative/WTNVUser.h"

namespace fs = std::filesystem;

namespace {

struct UserOptions {
  std::string users = "users/";
  std::string name;
  std::string project;
};

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

void runCreate(const UserOptions& options, Output& output) {
  const auto users = usersDirectory(options);
  requireName(options.name);
  makeDirectory(users);
  WTNVUser user(options.name, users);
  if (!user.wCreate() || !user.wLoad())
    throw CommandError("user '" + options.name +
                       "' cannot be made; choose a name that is free and no path");
  output.data() << "user '" << options.name << "' made in " << users << '\n';
}

void runList(const UserOptions& options, Output& output) {
  const auto users = usersDirectory(options);
  std::vector<TableRow> rows{{"user", "last project"}};
  for (const auto& name : userNames(users)) {
    WTNVUser user(name, users);
    rows.push_back({name, user.wLoad() ? user.wGetLastProject() : "cannot be read"});
  }
  writeTable(output.data(), rows);
}

void runSet(const UserOptions& options, Output& output) {
  const auto users = usersDirectory(options);
  requireUser(users, options.name);
  requireStorable("the name of a project", options.project);
  WTNVUser user(options.name, users);
  if (!user.wLoad()) throw CommandError("user '" + options.name + "' cannot be read");
  user.wSetLastProject(options.project);
  if (!user.wUpdate()) throw CommandError("user '" + options.name + "' cannot be written");
  output.data() << "user '" << options.name << "': last project '" << options.project << "'\n";
}

void runRemove(const UserOptions& options, Output& output) {
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

using UserRun = void (*)(const UserOptions&, Output&);

struct UserCommand {
  CLI::App* app;
  UserOptions* options;
};

UserCommand add(CLI::App& users, ProgramOptions& program, const CommandHelp& help, UserRun run) {
  const auto options = std::make_shared<UserOptions>();
  auto* command =
      addCommand(users, program, help, [options, run](Output& output) { run(*options, output); });
  command->add_option("--users", options->users, "where users lie")->capture_default_str();
  return {command, options.get()};
}

void addName(const UserCommand& command) {
  command.app->add_option("NAME", command.options->name, "name of the user")->required();
}

}  // namespace

void addUserCommands(CLI::App& app, ProgramOptions& program) {
  auto* users = addCommandGroup(
      app,
      {"user", "The people who work here, and the project each opened last.", "user create ann"});
  add(*users, program, {"list", "Lists the users.", "user list"}, runList);
  addName(add(*users, program, {"create", "Makes a user.", "user create ann"}, runCreate));
  const auto set =
      add(*users, program,
          {"set", "Remembers a project as the one opened last.", "user set ann parts"}, runSet);
  addName(set);
  set.app->add_option("PROJECT", set.options->project, "name of the project")->required();
  addName(add(*users, program, {"remove", "Removes a user.", "user remove ann"}, runRemove));
}

void addConfigCommand(CLI::App& app, ProgramOptions& program) {
  const auto file = std::make_shared<std::string>();
  addCommand(app, program,
             {"config",
              "Shows where a configuration file puts projects, platforms, augmentations and users.",
              "config app.cfg"},
             [file](Output& output) { runConfig(*file, output); })
      ->add_option("FILE", *file, "the configuration")
      ->required();
}

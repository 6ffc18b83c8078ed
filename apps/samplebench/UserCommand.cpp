#include "UserCommand.h"

#include <algorithm>
#include <filesystem>

#include "CommandError.h"
#include "CommandLine.h"
#include "OutputFile.h"
#include "Platform.h"
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

std::string fileOf(const std::string& users, const std::string& name) {
  return users + name + ".cfg";
}

// In bytes: the file called after it has endings, and file systems take 255.
constexpr std::size_t longestName = 200;

[[noreturn]] void refuseName(const std::string& name) {
  throw CommandError("user '" + name + "' cannot be made; choose a name that is free and no path");
}

void requireName(const std::string& users, const std::string& name) {
  requireStorable("the name of a user", name);
  if (name.empty() || name.find('/') != std::string::npos) refuseName(name);
  if (name.size() > longestName)
    throw CommandError("user '" + name + "' cannot be made; use a name of at most " +
                       std::to_string(longestName) + " bytes");
  if (name.find('.') != std::string::npos)
    throw CommandError("user '" + name +
                       "' cannot be made; a name must not hold a dot, at which lists cut it");
  std::error_code error;
  if (fs::exists(fileOf(users, name), error)) refuseName(name);
}

void make(const std::string& users, const std::string& name) {
  makeDirectory(users);
  const platform::InterruptCatcher catcher;
  WTNVUser user(name, users);
  if (!user.wCreate() || !user.wLoad()) refuseName(name);
}

void tell(const UserOptions& options, const std::string& users, Output& output) {
  output.fact("user", options.name);
  output.fact("users", users);
}

void requireUser(const std::string& users, const std::string& name) {
  const auto names = userNames(users);
  if (std::find(names.begin(), names.end(), name) != names.end()) return;
  throw CommandError("there is no user '" + name + "' in " + users +
                     (names.empty() ? ", nor any other; make one with: samplebench user create"
                                    : "; there are: " + joined(names)));
}

void runCreate(const UserOptions& options, Output& output) {
  const auto users = usersDirectory(options);
  requireName(users, options.name);
  requireDirectoryPlace(users);
  if (!output.isDryRun()) make(users, options.name);
  tell(options, users, output);
  output.say("user '" + options.name + "' " +
             std::string(output.told("made in ", "would be made in ")) + users);
}

void runList(const UserOptions& options, Output& output) {
  const auto users = usersDirectory(options);
  std::vector<TableRow> rows;
  for (const auto& name : userNames(users)) {
    WTNVUser user(name, users);
    rows.push_back({name, user.wLoad() ? user.wGetLastProject() : "cannot be read"});
  }
  output.table("users", {"user", "last project"}, rows);
}

// The library tells of a file that cannot be written in its log alone.
bool isStored(WTNVUser& user, const UserOptions& options, const std::string& users) {
  WTNVUser stored(options.name, users);
  return user.wUpdate() && stored.wLoad() && stored.wGetLastProject() == options.project;
}

void runSet(const UserOptions& options, Output& output) {
  const auto users = usersDirectory(options);
  requireUser(users, options.name);
  requireStorable("the name of a project", options.project);
  WTNVUser user(options.name, users);
  if (!user.wLoad()) throw CommandError("user '" + options.name + "' cannot be read");
  const platform::InterruptCatcher catcher;
  user.wSetLastProject(options.project);
  if (!output.isDryRun() && !isStored(user, options, users))
    throw CommandError("user '" + options.name + "' cannot be written: " + output.cause());
  tell(options, users, output);
  output.fact("project", options.project);
  output.say("user '" + options.name + "': last project " +
             std::string(output.told("'", "would be '")) + options.project + "'");
}

void runRemove(const UserOptions& options, Output& output) {
  const auto users = usersDirectory(options);
  requireUser(users, options.name);
  WTNVUser user(options.name, users);
  if (!output.isDryRun() && (!user.wRemove() || fs::exists(fileOf(users, options.name))))
    throw CommandError("user '" + options.name + "' cannot be removed; see that '" + users +
                       "' can be written to");
  tell(options, users, output);
  output.say("user '" + options.name + "' " +
             std::string(output.told("removed", "would be removed")));
}

void runConfig(const std::string& file, Output& output) {
  if (!fs::is_regular_file(file))
    throw CommandError("the configuration '" + file + "' is no file; an empty one gives defaults");
  const auto* config = WTNVAppConfig::getInstance(file);
  output.properties("places", {{"projects", config->wGetProjectsPath()},
                               {"platforms", config->wGetPlatformsPath()},
                               {"augmentations", config->wGetAugmentsPath()},
                               {"users", config->wGetUsersPath()}});
}

using UserRun = void (*)(const UserOptions&, Output&);

struct UserCommand {
  CLI::App* app;
  UserOptions* options;
};

using AddCommand = decltype(&addCommand);

UserCommand add(AddCommand addAny, CLI::App& users, ProgramOptions& program,
                const CommandHelp& help, UserRun run) {
  const auto options = std::make_shared<UserOptions>();
  auto* command =
      addAny(users, program, help, [options, run](Output& output) { run(*options, output); });
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
  add(addCommand, *users, program, {"list", "Lists the users.", "user list"}, runList);
  addName(add(addWritingCommand, *users, program, {"create", "Makes a user.", "user create ann"},
              runCreate));
  const auto set =
      add(addWritingCommand, *users, program,
          {"set", "Remembers a project as the one opened last; it needs not be there yet.",
           "user set ann parts"},
          runSet);
  addName(set);
  set.app->add_option("PROJECT", set.options->project, "name of the project")->required();
  addName(add(addWritingCommand, *users, program, {"remove", "Removes a user.", "user remove ann"},
              runRemove));
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

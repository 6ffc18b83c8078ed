#include "CommandLine.h"

#include "Numbers.h"

namespace {

CLI::App* described(CLI::App& parent, const CommandHelp& help) {
  auto* command = parent.add_subcommand(help.name, help.purpose);
  command->footer("Example:\n  samplebench " + help.example);
  return command;
}

}  // namespace

void addOutputFlags(CLI::App& app, ProgramOptions& program) {
  app.add_flag("--json", program.json, "the result as one JSON object, for programs");
  app.add_flag("--quiet", program.quiet, "only errors on standard error");
}

CLI::App* addCommand(CLI::App& parent, ProgramOptions& program, const CommandHelp& help,
                     CommandRun run) {
  auto* command = described(parent, help);
  command->callback([&program, run = std::move(run)] { program.run = run; });
  addOutputFlags(*command, program);
  return command;
}

CLI::App* addWritingCommand(CLI::App& parent, ProgramOptions& program, const CommandHelp& help,
                            CommandRun run) {
  auto* command = addCommand(parent, program, help, std::move(run));
  command->add_flag("--dry-run", program.dryRun, "say what would be done, and change nothing");
  return command;
}

CLI::App* addCommandGroup(CLI::App& parent, const CommandHelp& help) {
  auto* group = described(parent, help);
  group->footer(group->get_footer() + "\n\nEach of them understands --json and --quiet.");
  group->require_subcommand(1);
  return group;
}

void addProjectArgument(CLI::App& command, std::string& project) {
  command.add_option("PROJECT", project, "name of the project")->required();
}

CLI::Option* addPictureArgument(CLI::App& command, std::string& picture) {
  return command.add_option("PICTURE", picture, "path, or file name if there is only one")
      ->required();
}

CLI::Option* addSetOption(CLI::App& command, std::string& set) {
  return command.add_option("--set", set, "image set of the picture, if it is in several")
      ->check(notEmpty());
}

void addOutputFile(CLI::App& command, std::string& file, const std::string& example) {
  command.add_option("-o,--output", file, "file to write, like " + example)->required();
}

void addJobs(CLI::App& command, int& jobs) {
  constexpr int most = 256;
  command.add_option("--jobs", jobs, "threads that work on the pictures; 0 is one for each core")
      ->check(CLI::Range(0, most))
      ->capture_default_str();
}

CLI::Validator numberBetween(double least, double most) {
  const auto range = numberText(least) + " to " + numberText(most);
  return {[=](const std::string& text) {
            const auto number = parseNumber(text);
            const bool fits = number && *number >= least && *number <= most;
            return fits ? std::string() : "'" + text + "' is no number from " + range;
          },
          range};
}

CLI::Validator notEmpty() {
  return {[](const std::string& text) {
            return text.empty() ? std::string("the text is empty") : std::string();
          },
          ""};
}

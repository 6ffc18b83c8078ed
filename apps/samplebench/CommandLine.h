#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <map>
#include <string>

#include "ProjectAccess.h"

/// What a command does when it was chosen.
using CommandRun = std::function<void(Output&)>;

/// What every command understands, and the command that was chosen.
struct ProgramOptions {
  Locations locations;
  bool quiet = false;
  bool json = false;
  bool dryRun = false;
  CommandRun run;
  /// What options and arguments with a fixed set of values take, for shells to offer.
  std::map<const CLI::Option*, std::function<std::vector<std::string>()>> choices;
};

/// What the help says of a command.
struct CommandHelp {
  std::string name;
  std::string purpose;
  /// A call without the name of the program.
  std::string example;
};

/// How the result is told: --json and --quiet, which stand before a command or behind it.
void addOutputFlags(CLI::App& app, ProgramOptions& program);

/// A command that changes nothing on disk. It understands --json and --quiet; arguments and options
/// can be added.
CLI::App* addCommand(CLI::App& parent, ProgramOptions& program, const CommandHelp& help,
                     CommandRun run);

/// A command that writes or deletes something, and understands --dry-run, too.
CLI::App* addWritingCommand(CLI::App& parent, ProgramOptions& program, const CommandHelp& help,
                            CommandRun run);

/// A command that only holds others.
CLI::App* addCommandGroup(CLI::App& parent, const CommandHelp& help);

void addProjectArgument(CLI::App& command, std::string& project);
CLI::Option* addPictureArgument(CLI::App& command, std::string& picture);

/// The set that a picture is looked for in, for a picture that is in several.
CLI::Option* addSetOption(CLI::App& command, std::string& set);

/// The file that a command writes; `example` is what it may be called.
void addOutputFile(CLI::App& command, std::string& file, const std::string& example);

/// How many threads work on the pictures; what comes out is the same with any number.
void addJobs(CLI::App& command, int& jobs);

/// A number with a decimal point, both ends included.
CLI::Validator numberBetween(double least, double most);

CLI::Validator notEmpty();

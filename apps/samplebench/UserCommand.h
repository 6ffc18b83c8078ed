#pragma once

namespace CLI {
class App;
}
struct ProgramOptions;

/// The commands about the people who work with the tool.
void addUserCommands(CLI::App& app, ProgramOptions& program);

/// The command that shows where a configuration file puts projects, platforms, augmentations and
/// users.
void addConfigCommand(CLI::App& app, ProgramOptions& program);

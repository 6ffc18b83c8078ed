#pragma once

namespace CLI {
class App;
}
struct ProgramOptions;

/// The command that makes a project.
void addCreateCommand(CLI::App& app, ProgramOptions& program);

/// The command that shows classes, pictures with the number of their marks, and totals.
void addListCommand(CLI::App& app, ProgramOptions& program);

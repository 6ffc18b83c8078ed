#pragma once

namespace CLI {
class App;
}
struct ProgramOptions;

/// The command that says what of a project cannot be found or read any more.
void addCheckCommand(CLI::App& app, ProgramOptions& program);

#pragma once

namespace CLI {
class App;
}
struct ProgramOptions;

/// The commands that read labels of other programs, and write some for them.
void addLabelsCommands(CLI::App& app, ProgramOptions& program);

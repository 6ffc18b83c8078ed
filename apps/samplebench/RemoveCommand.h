#pragma once

namespace CLI {
class App;
}
struct ProgramOptions;

/// The commands that remove marks, pictures, image sets and projects. Picture files stay.
void addRemoveCommands(CLI::App& app, ProgramOptions& program);

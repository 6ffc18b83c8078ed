#pragma once

namespace CLI {
class App;
}
struct ProgramOptions;

/// The commands about a directory of weights and the portal that offers them.
void addWeightsCommands(CLI::App& app, ProgramOptions& program);

#pragma once

namespace CLI {
class App;
}
struct ProgramOptions;

/// The command that shows all that a trainer would stumble over in a set.
void addVerifyCommand(CLI::App& app, ProgramOptions& program);

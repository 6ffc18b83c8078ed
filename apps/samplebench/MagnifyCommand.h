#pragma once

namespace CLI {
class App;
}
struct ProgramOptions;

/// The command that writes the neighbourhood of a spot, enlarged, to a file.
void addMagnifyCommand(CLI::App& app, ProgramOptions& program);

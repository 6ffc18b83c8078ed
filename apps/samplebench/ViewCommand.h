#pragma once

namespace CLI {
class App;
}
struct ProgramOptions;

/// The command that writes a sample of a training set with the boxes of its label text, or a sheet
/// of the first samples, to a file.
void addViewCommand(CLI::App& app, ProgramOptions& program);

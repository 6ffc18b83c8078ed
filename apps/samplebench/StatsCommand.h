#pragma once

namespace CLI {
class App;
}
struct ProgramOptions;

/// The command that shows how many pictures, marks and boxes of which sizes there are.
void addStatsCommand(CLI::App& app, ProgramOptions& program);

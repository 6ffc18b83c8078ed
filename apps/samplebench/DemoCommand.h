#pragma once

namespace CLI {
class App;
}
struct ProgramOptions;

/// The command that walks the whole road in one directory: pictures, project, classes, marks, a
/// rendered picture, a training set, and reads that back.
void addDemoCommand(CLI::App& app, ProgramOptions& program);

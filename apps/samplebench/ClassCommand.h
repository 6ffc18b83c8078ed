#pragma once

#include <string>

#include "ProjectAccess.h"

namespace CLI {
class App;
}
struct ProgramOptions;

/// The commands that work on classes, across all marks of a project.
void addClassCommands(CLI::App& app, ProgramOptions& program);

/// Shows the classes of a project that is open.
void writeClasses(const WTNVProject& project, Output& output);

/// Adds a class, in memory only; without a colour it gets one that no other
/// has. Throws CommandError.
void addClass(WTNVProject& project, const std::string& name, const std::string& color);

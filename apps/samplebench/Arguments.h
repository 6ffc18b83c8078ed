#pragma once

#include "CommandError.h"
#include "Output.h"

namespace CLI {
class App;
}
struct ProgramOptions;

/// Sets up all commands with their options; `program` is filled when a command line is parsed.
void describeProgram(CLI::App& app, ProgramOptions& program);

/// Reads the command line and runs what it asks for. Errors become a message and an exit code.
int runProgram(int argc, const char* const* argv, Output& output);

#pragma once

#include "CommandError.h"
#include "Output.h"

/// Reads the command line and runs what it asks for. Errors become a message and an exit code.
int runProgram(int argc, const char* const* argv, Output& output);

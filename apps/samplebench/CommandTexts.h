#pragma once

#include <ostream>
#include <string>

#include "CommandLine.h"

// Texts made of the same description of the command line that the help is made of, so that they
// never tell anything else.

/// The manual page, in the language of man.
void writeManual(std::ostream& page, const CLI::App& app);

/// A script that completes commands, options and their values in a shell: bash, zsh or fish.
void writeCompletion(std::ostream& script, const CLI::App& app, const ProgramOptions& program,
                     const std::string& shell);

/// The commands that write these.
void addTextCommands(CLI::App& app, ProgramOptions& program);

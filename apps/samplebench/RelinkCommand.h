#pragma once

#include <string>

namespace CLI {
class App;
}
struct ProgramOptions;

/// Two directories of an option "OLD=NEW", both absolute.
struct Move {
  std::string from;
  std::string to;
};

/// Takes such an option apart. Names may hold the sign, too: it is taken where what follows is a
/// directory. Throws CommandError if there is no such place.
Move parseMove(const std::string& option);

/// The command for pictures, or whole projects, that were moved.
void addRelinkCommand(CLI::App& app, ProgramOptions& program);

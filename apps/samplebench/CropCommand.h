#pragma once

namespace CLI {
class App;
}
struct ProgramOptions;

/// The command that writes what lies under each mark of a picture to a file of its own, named after
/// the picture, or, where another picture of the project has that name, after the image set and the
/// picture. An earlier crop is replaced. A mark that cannot be cut out is a finding.
void addCropCommand(CLI::App& app, ProgramOptions& program);

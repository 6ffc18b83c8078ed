#pragma once

namespace CLI {
class App;
}
struct ProgramOptions;

/// The command that cuts all marks out, counts the cuts of each class, and writes a page of them if
/// wanted.
void addGalleryCommand(CLI::App& app, ProgramOptions& program);

#include "Arguments.h"

#include <algorithm>
#include <opencv2/core.hpp>

#include "CheckCommand.h"
#include "ClassCommand.h"
#include "CommandLine.h"
#include "CommandTexts.h"
#include "CropCommand.h"
#include "DemoCommand.h"
#include "GalleryCommand.h"
#include "GenerateCommand.h"
#include "ImportCommand.h"
#include "LabelsCommand.h"
#include "MagnifyCommand.h"
#include "MarkCommand.h"
#include "Platform.h"
#include "ProjectCommands.h"
#include "RelinkCommand.h"
#include "RemoveCommand.h"
#include "RenderCommand.h"
#include "StatsCommand.h"
#include "UserCommand.h"
#include "VerifyCommand.h"
#include "ViewCommand.h"
#include "WeightsCommand.h"

namespace {

constexpr auto description =
    "Prepares training data for object detectors: projects of marked pictures, and training sets "
    "made of them.";

constexpr auto footer =
    "A first walk:\n"
    "  samplebench create parts\n"
    "  samplebench class add parts screw nut\n"
    "  samplebench import parts day1 photos/\n"
    "  samplebench mark parts photo.jpg Rect 0.1,0.2 0.4,0.5 --class screw\n"
    "  samplebench render parts photo.jpg -o seen.png\n"
    "  samplebench generate parts --output set/\n"
    "or all of it at once: samplebench demo /tmp/demo\n\n"
    "Data goes to standard output, everything else to standard error.\n"
    "Exit codes: 0 done, 1 the command failed (the message says what to do), 2 wrong usage, "
    "3 done, and there are findings, 130 interrupted.";

// The library joins directories and names as they stand.
std::string withSlash(const std::string& directory) {
  return (std::filesystem::path(directory) / "").generic_string();
}

Locations withSlashes(const Locations& locations) {
  return {withSlash(locations.projects), withSlash(locations.platforms),
          withSlash(locations.augments)};
}

void addGlobals(CLI::App& app, ProgramOptions& program) {
  program.locations = {"projects/", defaultPlatforms(), defaultAugments()};
  app.add_option("--projects", program.locations.projects, "where projects lie")
      ->capture_default_str();
  app.add_option("--platforms", program.locations.platforms,
                 "templates (default: those that came with the program)");
  app.add_option("--augments", program.locations.augments,
                 "trees of tasks (default: those that came with the program)");
  addOutputFlags(app, program);
}

}  // namespace

void describeProgram(CLI::App& app, ProgramOptions& program) {
  app.name("samplebench");
  app.description(description);
  app.footer(footer);
  app.set_version_flag("--version", "samplebench " SAMPLEBENCH_VERSION,
                       "print the version and end");
  // Global options may stand behind the command.
  app.fallthrough();
  app.require_subcommand(1);
  addGlobals(app, program);
  addCreateCommand(app, program);
  addClassCommands(app, program);
  addImportCommand(app, program);
  addMarkCommand(app, program);
  addListCommand(app, program);
  addRemoveCommands(app, program);
  addRelinkCommand(app, program);
  addCheckCommand(app, program);
  addRenderCommand(app, program);
  addMagnifyCommand(app, program);
  addCropCommand(app, program);
  addGalleryCommand(app, program);
  addGenerateCommand(app, program);
  addViewCommand(app, program);
  addStatsCommand(app, program);
  addVerifyCommand(app, program);
  addWeightsCommands(app, program);
  addLabelsCommands(app, program);
  addUserCommands(app, program);
  addConfigCommand(app, program);
  addDemoCommand(app, program);
  addTextCommands(app, program);
}

namespace {

// The text of the system alone does not say what to do.
std::string textOf(const std::filesystem::filesystem_error& error) {
  // Of a walk through directories the standard library does not tell where it was.
  const auto place = error.path1().empty() ? "a directory" : "'" + error.path1().string() + "'";
  return place + ": " + error.code().message() +
         "; see that it is there and yours, and that there is space";
}

ExitCode fail(Output& output, const std::string& message, ExitCode code) {
  output.error(message);
  return code;
}

ExitCode runCommand(const ProgramOptions& program, Output& output) {
  try {
    program.run(output);
    return output.hasFindings() ? exitFindings : exitOk;
  } catch (const CommandError& error) {
    return fail(output, error.what(), error.exitCode());
  } catch (const cv::Exception& error) {
    // Without the place in the source that the whole text starts with.
    return fail(output,
                error.err + "; if it is about a file of the project, restore or remove that file",
                exitFailed);
  } catch (const std::filesystem::filesystem_error& error) {
    return fail(output, textOf(error), exitFailed);
  } catch (const std::exception& error) {
    return fail(output, error.what(), exitFailed);
  }
}

// Before the command line is understood.
bool asksForJson(int argc, const char* const* argv) {
  return std::any_of(argv, argv + argc,
                     [](const char* word) { return std::string_view(word) == "--json"; });
}

// A command line that cannot be understood, or one that asks for help.
ExitCode answer(const CLI::App& app, const CLI::ParseError& error, Output& output) {
  if (error.get_exit_code() == 0) {
    app.exit(error, output.data());
    return exitOk;
  }
  const auto unknown = app.remaining(true);
  const bool isUnknown =
      dynamic_cast<const CLI::RequiredError*>(&error) != nullptr && !unknown.empty();
  output.error((isUnknown ? "there is no '" + unknown.front() + "' here" : error.what()) +
               std::string("; --help lists what there is"));
  return exitUsage;
}

ExitCode finished(ExitCode code, Output& output) {
  if (output.finish()) return code;
  output.error("standard output cannot be written to; see that there is space");
  return exitFailed;
}

}  // namespace

int runProgram(int argc, const char* const* argv, Output& output) {
  platform::endAtInterrupt(exitInterrupted);
  CLI::App app;
  ProgramOptions program;
  describeProgram(app, program);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const auto code = answer(app, error, output);
    if (code != exitOk && asksForJson(argc, argv)) output.setJson();
    return finished(code, output);
  }
  program.locations = withSlashes(program.locations);
  // Records are found by their paths, from whatever directory the program is run in.
  program.locations.projects = absolutePath(program.locations.projects);
  if (program.quiet) output.setQuiet();
  if (program.json) output.setJson();
  if (program.dryRun) output.setDryRun();
  return finished(runCommand(program, output), output);
}

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "KeepTogether.h"
#include "ProjectAccess.h"
#include "TrainingSet.h"

namespace CLI {
class App;
}
struct ProgramOptions;

struct GenerateOptions {
  std::string project;
  std::string output;
  std::string augmentation = "default.xml";
  double testRatio = 0.05;
  /// Empty for none.
  std::string weights;
  std::string config = "data.tmp";
  /// Empty for the usual one.
  std::string net;
  /// Texts KEY=VALUE.
  std::vector<std::string> settings;
  bool relativePaths = false;
  /// Samples that must not be torn apart, see `parseGrouping`.
  std::string keepTogether = "none";
  /// Threads; 0 for one for each core.
  int jobs = 0;
  /// For the division into groups; without one that of an earlier set, or the best, is taken.
  std::optional<std::uint32_t> seed;
};

/// The command that writes a training set.
void addGenerateCommand(CLI::App& app, ProgramOptions& program);

/// Throws CommandError if Darknet could not read the path.
void requireOutputPath(const std::string& path);

/// Checks all, and sets the generation up, without changing anything on disk. Returns where the set
/// will lie. Throws CommandError.
TrainingSetPaths prepareSet(WTNVProject& project, const Locations& locations,
                            const GenerateOptions& options, Output& output);

struct GenerateResult {
  TrainingSetPaths paths;
  TrainingSetContent content;
  std::optional<GroupedDivision> division;
  /// Pictures that no sample came of, for they cannot be read.
  std::size_t leftOut = 0;
  /// Pictures whose files break off, so that their samples are grey from there on.
  std::vector<std::string> cut;
  /// Marks that are points, on pictures with samples.
  std::size_t points = 0;
};

/// Writes a training set of a project that is open. All is checked before anything is deleted.
/// Throws CommandError, with the exit code of an interrupt if the user stops the run, and if
/// another command writes to the same place.
GenerateResult generateSet(WTNVProject& project, const Locations& locations,
                           const GenerateOptions& options, Output& output);

/// Says where the parts of a training set lie.
void writePlaces(const TrainingSetPaths& paths, Output& output);

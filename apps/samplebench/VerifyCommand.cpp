#include "VerifyCommand.h"

#include <optional>

#include "CommandError.h"
#include "CommandLine.h"
#include "Progress.h"
#include "verify/FindingsOutput.h"
#include "verify/SetVerifier.h"

namespace {

struct VerifyOptions {
  /// Directory or data file of a training set.
  std::string set;
  /// Network file; empty for the one beside the set.
  std::string network;
};

// What there is no file for is not checked, which must not pass for sound.
void sayNotChecked(const SetLayout& layout, Output& output) {
  Json::Value notChecked(Json::arrayValue);
  if (layout.dataFile.empty() && layout.description.empty()) {
    notChecked.append("data file");
    output.note("there is no data file and no data.yaml: what they say was not checked");
  }
  if (layout.network.empty()) {
    notChecked.append("network");
    output.note(
        "no network file, or several: layers, and boxes too small for the input, were not "
        "checked; --net names one");
  }
  output.fact("notChecked", notChecked);
}

void runVerify(const VerifyOptions& options, Output& output) {
  Findings found;
  const auto layout = findSet(options.set, options.network, found);
  std::optional<Progress> progress;
  const auto verified = verifySet(
      layout, std::move(found),
      {[&](std::size_t count) { progress.emplace(count, output); }, [&] { progress->step(); }});
  progress->finish();
  sayNotChecked(layout, output);
  writeFindings(verified.findings, output);
  output.fact("pictures", static_cast<Json::UInt64>(verified.pictures));
  output.fact("labels", static_cast<Json::UInt64>(verified.labels));
  output.say(counted(verified.pictures, "picture") + ", " + counted(verified.labels, "label") +
             ", " + counted(verified.findings.size(), "finding"));
}

}  // namespace

void addVerifyCommand(CLI::App& app, ProgramOptions& program) {
  const auto options = std::make_shared<VerifyOptions>();
  auto* command = addCommand(
      app, program,
      {"verify",
       "Checks a training set as trainers of the Darknet family and their successors read it, and "
       "says file, line and rule of each finding. Exit code 3 if there are any.",
       "verify set/"},
      [options](Output& output) { runVerify(*options, output); });
  command->add_option("SET", options->set, "directory of the set, its data file or its data.yaml")
      ->required();
  command->add_option("--net", options->network, "network file (default: the one beside the set)");
}

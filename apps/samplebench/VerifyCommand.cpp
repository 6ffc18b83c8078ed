#include "VerifyCommand.h"

#include <map>
#include <optional>

#include "CommandError.h"
#include "CommandLine.h"
#include "Progress.h"
#include "verify/SetVerifier.h"

namespace {

struct VerifyOptions {
  /// Directory or data file of a training set.
  std::string set;
  /// Network file; empty for the one beside the set.
  std::string network;
};

std::string placeOf(const Finding& finding) {
  return finding.file + (finding.line > 0 ? ":" + std::to_string(finding.line) : "");
}

void writeFindings(const Findings& findings, Output& output) {
  Json::Value list(Json::arrayValue);
  for (const auto& [file, line, rule, text] : findings) {
    Json::Value entry;
    entry["file"] = file;
    entry["line"] = static_cast<Json::UInt64>(line);
    entry["rule"] = rule;
    entry["text"] = text;
    list.append(entry);
  }
  output.fact("findings", list);
  for (const auto& finding : findings)
    output.say(placeOf(finding) + ": " + finding.rule + ": " + finding.text);
}

void writeRules(const Findings& findings, Output& output) {
  std::map<std::string, std::size_t> counts;
  for (const auto& finding : findings)
    ++counts[finding.rule];
  std::vector<TableRow> rows;
  for (const auto& [rule, count] : counts)
    rows.push_back({count, rule});
  if (rows.empty()) return;
  output.say();
  output.table("rules", {"findings", "rule"}, rows);
  output.say();
}

void runVerify(const VerifyOptions& options, Output& output) {
  Findings found;
  const auto layout = findSet(options.set, options.network, found);
  std::optional<Progress> progress;
  const auto verified = verifySet(
      layout, std::move(found),
      {[&](std::size_t count) { progress.emplace(count, output); }, [&] { progress->step(); }});
  progress->finish();
  writeFindings(verified.findings, output);
  writeRules(verified.findings, output);
  output.fact("pictures", static_cast<Json::UInt64>(verified.pictures));
  output.fact("labels", static_cast<Json::UInt64>(verified.labels));
  output.say(counted(verified.pictures, "picture") + ", " + counted(verified.labels, "label") +
             ", " + counted(verified.findings.size(), "finding"));
  if (!verified.findings.empty()) output.setFindings();
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

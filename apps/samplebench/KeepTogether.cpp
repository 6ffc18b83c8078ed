#include "KeepTogether.h"

#include <filesystem>
#include <fstream>
#include <set>

#include "Numbers.h"
#include "OutputFile.h"
#include "Platform.h"

namespace {

constexpr std::string_view groupingKey = "keep-together=";
constexpr std::string_view seedKey = "seed=";

std::vector<std::string> linesOf(const std::string& file) {
  std::vector<std::string> lines;
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

void writeLines(const std::string& file, const std::vector<std::string>& lines) {
  writeWhole(file, [&](std::ostream& stream) {
    for (const auto& line : lines)
      stream << line << '\n';
  });
}

// Where the division of a set waits while the set is replaced: all in the set's directory goes.
std::string divisionBeside(const TrainingSetPaths& paths) {
  return platform::lockFileOf(paths.directory).replace_extension(".division").string();
}

// All samples in the order in which the library shuffled them: the test list is cut from the front.
std::vector<std::string> samplesOf(const TrainingSetPaths& paths) {
  auto samples = linesOf(paths.testList);
  const auto training = linesOf(paths.trainList);
  samples.insert(samples.end(), training.begin(), training.end());
  return samples;
}

std::vector<std::string> groupsOf(const std::vector<std::string>& samples,
                                  const SampleSources& sources, const Grouping& grouping) {
  const Grouper grouper(grouping);
  std::vector<std::string> groups;
  groups.reserve(samples.size());
  for (const auto& sample : samples)
    groups.push_back(grouper.groupOf(sources.pictureOf(sample)));
  return groups;
}

}  // namespace

double GroupedDivision::testShare() const {
  return training + test == 0 ? 0.0
                              : static_cast<double>(test) / static_cast<double>(training + test);
}

std::optional<std::uint32_t> earlierSeed(const TrainingSetPaths& paths, const Grouping& grouping) {
  auto lines = linesOf(paths.division);
  if (lines.empty()) lines = linesOf(divisionBeside(paths));
  if (lines.size() != 2 || lines[0] != std::string(groupingKey) + groupingText(grouping) ||
      !lines[1].starts_with(seedKey))
    return std::nullopt;
  return parseSeed(lines[1].substr(seedKey.size()));
}

KeptDivision::KeptDivision(const TrainingSetPaths& paths)
    : original(paths.division), copy(divisionBeside(paths)) {
  const auto lines = linesOf(original);
  if (!lines.empty()) writeLines(copy, lines);
}

KeptDivision::~KeptDivision() {
  std::error_code error;
  if (std::filesystem::exists(original, error)) drop();
}

void KeptDivision::drop() const {
  std::error_code error;
  std::filesystem::remove(copy, error);
}

GroupedDivision divideByGroups(const TrainingSetPaths& paths, const SampleSources& sources,
                               const Grouping& grouping, double testRatio,
                               std::optional<std::uint32_t> seed) {
  const auto samples = samplesOf(paths);
  const auto groups = groupsOf(samples, sources, grouping);
  GroupedDivision division;
  division.groups = std::set<std::string>(groups.begin(), groups.end()).size();
  division.seed = seed ? *seed : closestSeed(groups, testRatio);
  const auto isTest = testSamples(groups, testRatio, division.seed);
  std::vector<std::string> training;
  std::vector<std::string> test;
  for (std::size_t i = 0; i < samples.size(); ++i)
    (isTest[i] ? test : training).push_back(samples[i]);
  division.training = training.size();
  division.test = test.size();
  writeLines(paths.trainList, training);
  writeLines(paths.testList, test);
  writeLines(paths.division, {std::string(groupingKey) + groupingText(grouping),
                              std::string(seedKey) + std::to_string(division.seed)});
  return division;
}

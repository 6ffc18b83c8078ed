// Each workload of the library beside its twin, see Compare.h, and the quality of fits. With
// --smoke each runs just once; --report=DIRECTORY writes a document about the run.

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <regex>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>

#include <opencv2/core/utility.hpp>

#include "Compare.h"
#include "Report.h"

namespace {

/// Swallows the library's log, which would be timed too.
class NoBuffer : public std::streambuf {
 protected:
  int overflow(int character) override { return traits_type::not_eof(character); }
};

/// What stands behind the flag, of which nothing else is to know; nothing if it is not there.
std::optional<std::string> takeFlag(int& count, char** arguments, std::string_view flag) {
  char** const end = arguments + count;
  char** const place = std::find_if(
      arguments, end, [flag](std::string_view argument) { return argument.starts_with(flag); });
  if (place == end) return std::nullopt;
  const std::string value = *place + flag.size();
  std::copy(place + 1, end, place);
  --count;
  return value;
}

/// What is no workload can be chosen with --benchmark_filter all the same.
bool isChosen(const std::string& name) {
  const std::string filter = benchmark::GetBenchmarkFilter();
  return filter.empty() || std::regex_search(name, std::regex(filter));
}

}  // namespace

int main(int count, char** arguments) {
  Plan plan;
  plan.smoke = takeFlag(count, arguments, "--smoke").has_value();
  const auto report = takeFlag(count, arguments, "--report=");
  if (report && !std::filesystem::is_directory(*report)) {
    std::cerr << "benchmarks: there is no directory '" << *report << "' for the report\n";
    return 1;
  }
  benchmark::Initialize(&count, arguments);
  if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 1;
  // Otherwise "on one thread" would not be true of what OpenCV shares out by itself.
  cv::setNumThreads(1);
  addMemory(plan);
  addGenerations(plan);
  addGalleries(plan);
  addRenders(plan);
  addEditing(plan);
  addAssists(plan);
  addTemplates(plan);
  addImageSets(plan);
  addSaves(plan);
  addLabels(plan);
  addHashes(plan);
  std::ostream output(std::cout.rdbuf());
  NoBuffer nowhere;
  std::streambuf* const before = std::cout.rdbuf(&nowhere);
  Table table(output);
  int result = 0;
  try {
    benchmark::RunSpecifiedBenchmarks(&table);
    std::ostringstream fitQuality;
    if (isChosen("fit quality")) printFitQuality(plan, fitQuality);
    output << fitQuality.str();
    if (report) writeReport(*report, table, fitQuality.str());
  } catch (const std::exception& failure) {
    std::cerr << "benchmarks: " << failure.what() << '\n';
    result = 1;
  }
  std::cout.rdbuf(before);
  return result;
}

// Each workload of the library beside its twin, see Compare.h, and the quality of fits. With
// --smoke each runs just once.

#include <algorithm>
#include <exception>
#include <iostream>
#include <regex>
#include <streambuf>
#include <string>
#include <string_view>

#include "Compare.h"

namespace {

/// Swallows the library's log, which would be timed too.
class NoBuffer : public std::streambuf {
 protected:
  int overflow(int character) override { return traits_type::not_eof(character); }
};

bool takeFlag(int& count, char** arguments, std::string_view flag) {
  const auto isFlag = [flag](std::string_view argument) { return argument == flag; };
  char** const end = std::remove_if(arguments, arguments + count, isFlag);
  const bool found = end != arguments + count;
  count = static_cast<int>(end - arguments);
  return found;
}

/// What is no workload can be chosen with --benchmark_filter all the same.
bool isChosen(const std::string& name) {
  const std::string filter = benchmark::GetBenchmarkFilter();
  return filter.empty() || std::regex_search(name, std::regex(filter));
}

}  // namespace

int main(int count, char** arguments) {
  Plan plan;
  plan.smoke = takeFlag(count, arguments, "--smoke");
  benchmark::Initialize(&count, arguments);
  if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 1;
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
    if (isChosen("fit quality")) printFitQuality(plan, output);
  } catch (const std::exception& failure) {
    std::cerr << "benchmarks: " << failure.what() << '\n';
    result = 1;
  }
  std::cout.rdbuf(before);
  return result;
}

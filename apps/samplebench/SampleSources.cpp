#include "SampleSources.h"

#include <charconv>
#include <filesystem>
#include <fstream>

#include "CommandError.h"

namespace fs = std::filesystem;

namespace {

constexpr std::string_view prefix = "img_";

std::string sampleName(std::size_t number) {
  return std::string(prefix) + std::to_string(number) + ".jpg";
}

}  // namespace

SampleSources::SampleSources(std::string samplesDirectory)
    : directory(std::move(samplesDirectory)) {}

void SampleSources::add(const std::string& picture) {
  std::error_code error;
  while (fs::exists(directory + sampleName(sources.size()), error))
    sources.push_back(picture);
}

const std::string& SampleSources::pictureOf(const std::string& sample) const {
  const auto stem = fs::path(sample).stem().string();
  std::size_t number = sources.size();
  if (stem.starts_with(prefix))
    std::from_chars(stem.data() + prefix.size(), stem.data() + stem.size(), number);
  if (number >= sources.size())
    throw CommandError("the lists of the set name a sample that was not written: " + sample);
  return sources[number];
}

void SampleSources::write(const std::string& file) const {
  std::ofstream stream(file);
  for (std::size_t number = 0; number < sources.size(); ++number)
    stream << sampleName(number) << '\t' << sources[number] << '\n';
  stream.close();
  if (!stream) throw CommandError("'" + file + "' cannot be written; see that there is space");
}

std::vector<std::pair<std::string, std::string>> readSampleSources(const std::string& file) {
  std::vector<std::pair<std::string, std::string>> sources;
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    const auto tab = line.find('\t');
    if (tab != std::string::npos) sources.emplace_back(line.substr(0, tab), line.substr(tab + 1));
  }
  return sources;
}

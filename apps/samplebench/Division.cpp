#include "Division.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <limits>
#include <map>

#include <re2/re2.h>

#include "CommandError.h"

namespace {

constexpr auto noneText = "none";
constexpr auto sourceText = "source";
constexpr std::string_view patternStart = "group=";

constexpr std::uint32_t seedCandidates = 1000;

// FNV-1a over the name and the seed, stirred at the end so that near names end far apart. It is
// written out because the division of a set must be the same everywhere and for ever, which
// std::hash does not promise.
std::uint64_t hashOf(const std::string& text, std::uint32_t seed) {
  constexpr std::uint64_t prime = 1099511628211U;
  std::uint64_t hash = 14695981039346656037U;
  const auto add = [&](unsigned char byte) { hash = (hash ^ byte) * prime; };
  for (const char letter : text)
    add(static_cast<unsigned char>(letter));
  for (unsigned shift = 0; shift < 32; shift += 8)
    add(static_cast<unsigned char>(seed >> shift));
  hash ^= hash >> 32U;
  hash *= 0x9e3779b97f4a7c15U;
  hash ^= hash >> 29U;
  return hash;
}

std::map<std::string, std::size_t> sizesOf(const std::vector<std::string>& groups) {
  std::map<std::string, std::size_t> sizes;
  for (const auto& group : groups)
    ++sizes[group];
  return sizes;
}

}  // namespace

// A library whose time grows with the length of a name alone, whatever the expression.
struct Grouper::Pattern {
  explicit Pattern(const std::string& text) : expression(text, RE2::Quiet) {}

  bool search(const std::string& name, std::array<re2::StringPiece, 2>& found) const {
    const int parts =
        std::min(1 + expression.NumberOfCapturingGroups(), static_cast<int>(found.size()));
    return expression.Match(name, 0, name.size(), RE2::UNANCHORED, found.data(), parts);
  }

  RE2 expression;
};

Grouping parseGrouping(const std::string& text) {
  if (text == noneText) return {};
  if (text == sourceText) return {Grouping::Kind::source, ""};
  if (!text.starts_with(patternStart) || text.size() == patternStart.size())
    throw CommandError(
        "'" + text + "' keeps nothing together; choose from: none, source, group=REGEX", exitUsage);
  const Grouping grouping{Grouping::Kind::pattern, text.substr(patternStart.size())};
  const Grouper tried(grouping);
  return grouping;
}

std::string groupingText(const Grouping& grouping) {
  switch (grouping.kind) {
    case Grouping::Kind::source:
      return sourceText;
    case Grouping::Kind::pattern:
      return std::string(patternStart) + grouping.pattern;
    default:
      return noneText;
  }
}

Grouper::Grouper(const Grouping& grouping) {
  if (grouping.kind != Grouping::Kind::pattern) return;
  pattern = std::make_unique<Pattern>(grouping.pattern);
  if (!pattern->expression.ok())
    throw CommandError("'" + grouping.pattern + "' is no regular expression that can be used: " +
                           pattern->expression.error() +
                           "; references back and looking ahead or behind are not known",
                       exitUsage);
}

Grouper::~Grouper() = default;

std::string Grouper::groupOf(const std::string& picture) const {
  const auto name = std::filesystem::path(picture).filename().string();
  // All that was found, and the first group.
  std::array<re2::StringPiece, 2> found;
  if (!pattern || !pattern->search(name, found)) return name;
  return std::string(found[1].data() != nullptr ? found[1] : found[0]);
}

bool Grouper::finds(const std::string& picture) const {
  const auto name = std::filesystem::path(picture).filename().string();
  return !pattern || RE2::PartialMatch(name, pattern->expression);
}

bool isTestGroup(const std::string& group, double testRatio, std::uint32_t seed) {
  return std::ldexp(static_cast<double>(hashOf(group, seed) >> 11U), -53) < testRatio;
}

std::vector<bool> testSamples(const std::vector<std::string>& groups, double testRatio,
                              std::uint32_t seed) {
  std::vector<bool> result;
  result.reserve(groups.size());
  for (const auto& group : groups)
    result.push_back(isTestGroup(group, testRatio, seed));
  return result;
}

std::uint32_t closestSeed(const std::vector<std::string>& groups, double testRatio) {
  const auto sizes = sizesOf(groups);
  const double wanted = testRatio * static_cast<double>(groups.size());
  std::uint32_t closest = 0;
  double least = std::numeric_limits<double>::infinity();
  for (std::uint32_t seed = 0; seed < seedCandidates; ++seed) {
    double count = 0;
    for (const auto& [group, size] : sizes)
      if (isTestGroup(group, testRatio, seed)) count += static_cast<double>(size);
    const double off = std::abs(count - wanted);
    // All that can be told apart from here on is less than a sample.
    if (off < least) {
      least = off;
      closest = seed;
    }
    if (least < 0.5) break;
  }
  return closest;
}

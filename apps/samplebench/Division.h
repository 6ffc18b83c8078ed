#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// How the samples of a set are kept together when they are divided into training and test list.
/// Samples of one group all go into one list.
struct Grouping {
  enum class Kind {
    none,    ///< each sample for itself, as the library divides them
    source,  ///< all samples of one picture
    pattern  ///< all samples of the pictures whose file names have a part in common
  };
  Kind kind = Kind::none;

  /// Finds that part: its first group, or all that it matches. What it does not match stands alone.
  std::string pattern;
};

/// Reads "none", "source" or "group=REGEX"; throws CommandError for all else.
Grouping parseGrouping(const std::string& text);

/// As `parseGrouping` reads it.
std::string groupingText(const Grouping& grouping);

/// The group of a picture, by its file name alone, so that moved pictures keep theirs.
class Grouper {
 public:
  explicit Grouper(const Grouping& grouping);
  ~Grouper();
  Grouper(const Grouper&) = delete;
  Grouper& operator=(const Grouper&) = delete;

  std::string groupOf(const std::string& picture) const;

  /// Whether the pattern, if there is one, finds something in the picture's file name.
  bool finds(const std::string& picture) const;

 private:
  struct Pattern;
  std::unique_ptr<Pattern> pattern;
};

/// Whether a group belongs to the test list: by a number from 0 to 1 that the seed and the group's
/// name make, so that other groups have no say in it.
bool isTestGroup(const std::string& group, double testRatio, std::uint32_t seed);

/// Which samples go into the test list, given the group of each.
std::vector<bool> testSamples(const std::vector<std::string>& groups, double testRatio,
                              std::uint32_t seed);

/// The seed, of a fixed number of candidates, whose division comes closest to the ratio. With few
/// groups the first seed that comes along may leave the test list empty.
std::uint32_t closestSeed(const std::vector<std::string>& groups, double testRatio);

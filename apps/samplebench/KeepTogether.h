#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Division.h"
#include "SampleSources.h"
#include "TrainingSet.h"

/// What the division of a set by groups came to.
struct GroupedDivision {
  std::size_t groups = 0;
  std::size_t training = 0;
  std::size_t test = 0;
  std::uint32_t seed = 0;

  double testShare() const;
};

/// The seed that an earlier set in that place was divided with, if its samples were grouped alike;
/// also when a run that was to replace the set was cut off.
std::optional<std::uint32_t> earlierSeed(const TrainingSetPaths& paths, const Grouping& grouping);

/// Lays the division of the set that is about to be replaced beside its directory, where it stays
/// for the next run if this one is cut off when the set is gone.
class KeptDivision {
 public:
  explicit KeptDivision(const TrainingSetPaths& paths);
  ~KeptDivision();
  KeptDivision(const KeptDivision&) = delete;
  KeptDivision& operator=(const KeptDivision&) = delete;

  /// To be called when the new set is there.
  void drop() const;

 private:
  std::string original;
  std::string copy;
};

/// Divides the samples anew between the two lists of a set that was just written, and notes in the
/// set how. Without a seed the one is taken that comes closest to the ratio.
GroupedDivision divideByGroups(const TrainingSetPaths& paths, const SampleSources& sources,
                               const Grouping& grouping, double testRatio,
                               std::optional<std::uint32_t> seed);

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

/// The seed that an earlier set in that place was divided with, if its samples were grouped alike.
std::optional<std::uint32_t> earlierSeed(const TrainingSetPaths& paths, const Grouping& grouping);

/// Divides the samples anew between the two lists of a set that was just written, and notes in the
/// set how. Without a seed the one is taken that comes closest to the ratio.
GroupedDivision divideByGroups(const TrainingSetPaths& paths, const SampleSources& sources,
                               const Grouping& grouping, double testRatio,
                               std::optional<std::uint32_t> seed);

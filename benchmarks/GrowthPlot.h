#pragma once

#include <iosfwd>
#include <vector>

#include "Compare.h"

/// The rows of one workload, from its smallest size to its largest.
using Series = std::vector<Row>;

/// Writes an SVG picture with a field for each workload, in which time stands over size, of the
/// library and of its twin.
void writeGrowthPlot(std::ostream& output, const std::vector<Series>& all);

#pragma once

#include <string>
#include <vector>

#include "CommandError.h"
#include "Editor.h"
#include "Numbers.h"

enum class PointUnit { relative, pixels };

/// The form and the points to hand to the library for a mark of the form and through the points
/// that were asked for, for the two differ: see the definition.
struct Design {
  std::string form;
  std::vector<Point> points;
};
Design designFor(const std::string& form, const std::vector<Point>& points);

/// Throws CommandError with that code if a mark of that form through the points would have no
/// extent or, where they are in pixels, would be smaller than one.
void checkExtent(const std::string& form, const std::vector<Point>& points, PointUnit unit,
                 ExitCode code);

/// Adds a mark to the current picture; throws CommandError if none can be made from the points.
/// With `assist` it first snaps to the object under it. Returns false if the assist was asked for
/// and left the mark as it was given.
bool addDesigned(Editor& editor, const Design& design, const WTNVDNNClass& dnnClass, bool assist);

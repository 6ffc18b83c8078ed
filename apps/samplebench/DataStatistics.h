#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "HtmlPage.h"
#include "ProjectAccess.h"
#include "verify/SetVerifier.h"

/// The boxes of one class.
struct ClassStatistics {
  std::string name;
  std::size_t pictures = 0;  ///< that have at least one
  std::vector<PlacedBox> boxes;
};

/// What a project or a training set consists of.
struct DataStatistics {
  std::string title;
  std::size_t pictures = 0;
  /// Those whose size is unknown; their boxes do not count.
  std::vector<std::string> unreadablePictures;
  std::size_t withoutBoxes = 0;  ///< pictures
  std::size_t badLines = 0;      ///< of label texts, that are no labels
  std::size_t withoutClass = 0;  ///< marks of no class, labels of none that has a name
  std::vector<ClassStatistics> classes;
  std::map<std::pair<int, int>, std::size_t> pictureSizes;

  std::size_t boxCount() const;
};

std::vector<cv::Rect2d> plainBoxes(const ClassStatistics& dnnClass);

/// Columns for the sizes of boxes, and what stands in them: a side is the root of the area, in
/// pixels.
inline const std::vector<std::string> sideColumns{"smallest side", "median side", "largest side"};
TableRow sideCells(const std::vector<cv::Rect2d>& boxes);

/// To be called after each picture; the pictures have to be opened for their sizes.
using PictureStep = std::function<void()>;

DataStatistics projectStatistics(const WTNVProject& project,
                                 const std::vector<PictureRecord>& pictures,
                                 const PictureStep& step);

/// The pictures that a training set names, one path each.
std::vector<std::string> picturesOf(const SetLayout& layout);

DataStatistics setStatistics(const SetLayout& layout, const std::vector<std::string>& pictures,
                             const PictureStep& step);

/// Writes one page with the numbers, and plots for each class.
void writeStatisticsPage(std::ostream& page, const DataStatistics& statistics);

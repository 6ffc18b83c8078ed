#include "DataStatistics.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <set>

#include "GalleryStatistics.h"
#include "MarkBox.h"
#include "Numbers.h"
#include "PictureFile.h"
#include "TNV_SampleBenchNative/WTNVToolLabelExchange.h"
#include "verify/LabelPlaces.h"

namespace {

/// Collects boxes, picture by picture.
class Counter {
 public:
  explicit Counter(DataStatistics& target) : statistics(target) {}

  void beginPicture(const std::string& path, cv::Size pictureSize) {
    size = pictureSize;
    boxes = 0;
    seen.clear();
    ++statistics.pictures;
    if (size.empty()) {
      statistics.unreadablePictures.push_back(path);
    } else {
      ++statistics.pictureSizes[{size.width, size.height}];
    }
  }

  /// `dnnClass` is a place in the list of classes; one behind its end for none of them.
  void add(std::size_t dnnClass, const cv::Rect2d& box) {
    ++boxes;
    if (size.empty()) return;
    if (dnnClass >= statistics.classes.size()) {
      ++statistics.withoutClass;
      return;
    }
    auto& counted = statistics.classes[dnnClass];
    counted.boxes.push_back({box, size});
    if (seen.insert(dnnClass).second) ++counted.pictures;
  }

  void endPicture() {
    if (boxes == 0) ++statistics.withoutBoxes;
  }

 private:
  DataStatistics& statistics;
  cv::Size size;
  std::size_t boxes = 0;
  std::set<std::size_t> seen;
};

void addMark(Counter& counter, const WTNVMark& mark, const std::vector<WTNVDNNClass>& classes,
             cv::Size size) {
  const auto box = boxInPixels(mark, size);
  bool hasClass = false;
  for (std::size_t i = 0; i < classes.size(); ++i) {
    if (mark.wGetDNNClasses({classes[i]}).empty()) continue;
    counter.add(i, box);
    hasClass = true;
  }
  if (!hasClass) counter.add(classes.size(), box);
}

cv::Rect2d scaled(const cv::Rect2d& box, cv::Size size) {
  return {box.x * size.width, box.y * size.height, box.width * size.width,
          box.height * size.height};
}

/// Class names with the numbers that labels have for them.
struct ClassNames {
  std::vector<std::string> names;
  std::vector<int> numbers;
};

ClassNames namesOf(const SetLayout& layout) {
  ClassNames classes;
  if (!layout.description.empty()) {
    WTNVToolLabelExchange::wReadClassNames(layout.description, classes.names, classes.numbers);
  } else if (!layout.namesFile.empty()) {
    for (const auto& line : readTextFile(layout.namesFile).lines)
      classes.names.push_back(trimmed(line));
    classes.numbers.resize(classes.names.size());
    std::iota(classes.numbers.begin(), classes.numbers.end(), 0);
  }
  return classes;
}

void writeTotals(std::ostream& page, const DataStatistics& statistics) {
  page << "<table class=\"totals\">\n<thead><tr><th>Pictures</th><th>Unreadable</th><th>Without "
          "boxes</th><th>Boxes</th><th>Without class</th></tr></thead>\n<tbody><tr><td>"
       << statistics.pictures << "</td><td>" << statistics.unreadablePictures.size() << "</td><td>"
       << statistics.withoutBoxes << "</td><td>" << statistics.boxCount() << "</td><td>"
       << statistics.withoutClass << "</td></tr></tbody>\n</table>\n";
}

void writePictureSizes(std::ostream& page, const DataStatistics& statistics) {
  page << "<section>\n<h2>Sizes of pictures</h2>\n<table>\n<thead><tr><th>Pixels</th>"
          "<th>Pictures</th></tr></thead>\n<tbody>\n";
  for (const auto& [size, count] : statistics.pictureSizes)
    page << "<tr><td>" << size.first << " × " << size.second << "</td><td>" << count
         << "</td></tr>\n";
  page << "</tbody>\n</table>\n</section>\n";
}

void writeClassTable(std::ostream& page, const DataStatistics& statistics) {
  page << "<section>\n<h2>Classes</h2>\n<table>\n<thead><tr><th>Class</th><th>Boxes</th>"
          "<th>Pictures</th><th>Median side, px</th></tr></thead>\n<tbody>\n";
  for (const auto& dnnClass : statistics.classes)
    page << "<tr><td>" << htmlText(dnnClass.name) << "</td><td>" << dnnClass.boxes.size()
         << "</td><td>" << dnnClass.pictures << "</td><td>"
         << pageNumber(median(sidesOf(plainBoxes(dnnClass)))) << "</td></tr>\n";
  page << "</tbody>\n</table>\n</section>\n";
}

Cell pixels(double length) {
  return {std::round(length * 10) / 10, formatFixed(length, 1)};
}

}  // namespace

TableRow sideCells(const std::vector<cv::Rect2d>& boxes) {
  const auto sides = sidesOf(boxes);
  if (sides.empty()) return {pixels(0), pixels(0), pixels(0)};
  const auto [least, most] = std::minmax_element(sides.begin(), sides.end());
  return {pixels(*least), pixels(median(sides)), pixels(*most)};
}

std::vector<cv::Rect2d> plainBoxes(const ClassStatistics& dnnClass) {
  std::vector<cv::Rect2d> boxes;
  for (const auto& placed : dnnClass.boxes)
    boxes.push_back(placed.box);
  return boxes;
}

std::size_t DataStatistics::boxCount() const {
  return std::accumulate(
      classes.begin(), classes.end(), withoutClass,
      [](std::size_t sum, const auto& dnnClass) { return sum + dnnClass.boxes.size(); });
}

DataStatistics projectStatistics(const WTNVProject& project,
                                 const std::vector<PictureRecord>& pictures,
                                 const PictureStep& step) {
  DataStatistics statistics;
  statistics.title = "Project " + project.wGetProjectName();
  const auto classes = project.wGetDNNClasses();
  for (const auto& dnnClass : classes)
    statistics.classes.push_back({dnnClass.wGetName(), 0, {}});
  Counter counter(statistics);
  for (const auto& picture : pictures) {
    const auto size = pictureSize(picture.path);
    // Of a picture whose record cannot be read only that is known.
    counter.beginPicture(picture.path.empty() ? picture.trainSet.wGetDataPath() : picture.path,
                         size);
    for (const auto& mark : picture.trainSet.wGetMarks())
      addMark(counter, mark, classes, size);
    counter.endPicture();
    step();
  }
  return statistics;
}

std::vector<std::string> picturesOf(const SetLayout& layout) {
  auto pictures = layout.pictures;
  Findings ignored;
  pictures.insert(pictures.end(), layout.testPictures.begin(), layout.testPictures.end());
  for (const auto& list : layout.lists())
    for (const auto& entry : checkList(list, ignored))
      pictures.push_back(entry.picture);
  return pictures;
}

DataStatistics setStatistics(const SetLayout& layout, const std::vector<std::string>& pictures,
                             const PictureStep& step) {
  DataStatistics statistics;
  const auto classes = namesOf(layout);
  std::map<std::size_t, std::size_t> placesByNumber;
  for (std::size_t i = 0; i < classes.names.size(); ++i) {
    statistics.classes.push_back({classes.names[i], 0, {}});
    placesByNumber.emplace(static_cast<std::size_t>(classes.numbers[i]), i);
  }
  const auto placeOf = [&](std::size_t number) {
    const auto place = placesByNumber.find(number);
    return place == placesByNumber.end() ? classes.names.size() : place->second;
  };
  Findings ignored;
  LabelPlaces labels(ignored, false);
  Counter counter(statistics);
  for (const auto& picture : pictures) {
    const auto size = pictureSize(picture);
    counter.beginPicture(picture, size);
    for (const auto& line : readTextFile(labels.labelOf(picture)).lines) {
      if (const auto label = parseLabelLine(line)) {
        counter.add(placeOf(label->classNumber), scaled(label->box, size));
      } else if (!trimmed(line).empty()) {
        ++statistics.badLines;
      }
    }
    counter.endPicture();
    step();
  }
  return statistics;
}

void writeStatisticsPage(std::ostream& page, const DataStatistics& statistics) {
  writePageHead(page, statistics.title);
  writeTotals(page, statistics);
  writeClassTable(page, statistics);
  writePictureSizes(page, statistics);
  for (const auto& dnnClass : statistics.classes) {
    if (dnnClass.boxes.empty()) continue;
    page << "<section>\n<h2>" << htmlText(dnnClass.name) << " <small>"
         << counted(dnnClass.boxes.size(), "box", "boxes") << " on "
         << counted(dnnClass.pictures, "picture") << "</small></h2>\n<div class=\"plots\">\n";
    writeBoxPlots(page, dnnClass.boxes);
    page << "</div>\n</section>\n";
  }
  writePageEnd(page);
}

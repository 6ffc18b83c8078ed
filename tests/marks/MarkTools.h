#pragma once

#include <chrono>
#include <climits>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "editing/TNVType.h"
#include "foundation/XmlStorage.h"
#include "marks/TNVMark.h"
#include "project/TNVDNNClass.h"
#include "support/Pictures.h"

/// What the tests of all kinds of marks need.

inline const std::vector<double>& hostileNumbers() {
  static const std::vector<double> numbers{std::numeric_limits<double>::quiet_NaN(),
                                           std::numeric_limits<double>::infinity(),
                                           -std::numeric_limits<double>::infinity(),
                                           1e300,
                                           -1e300,
                                           1e4,
                                           1e5,
                                           1.4e6,
                                           1e7,
                                           -1e7,
                                           0.0,
                                           5e-324};
  return numbers;
}

/// Three classes with the unique indices 11, 12, 13.
class ThreeClasses {
 public:
  ThreeClasses() {
    add(11, "cat", 0, {10, 20, 30});
    add(12, "dog", 5, {100, 101, 102});
    add(13, "yak", 7, {41, 250, 0});
  }

  TNVMark::Classes list() const {
    TNVMark::Classes classes;
    for (const auto& owned : owner)
      classes.push_back(owned.get());
    return classes;
  }

 private:
  void add(int uniqueIdx, const std::string& name, int dnnId, const cv::Scalar& color) {
    owner.push_back(std::make_unique<TNVDNNClass>(uniqueIdx));
    owner.back()->name = name;
    owner.back()->dnnId = dnnId;
    owner.back()->color = color;
  }

  std::vector<std::unique_ptr<TNVDNNClass>> owner;
};

inline TNVTypeMarkStyleSet styleNamed(const std::string& name, bool filled = false) {
  TNVTypeMarkStyleSet style = TNVTypeMarkStyleSet().getByName(name);
  style.drawFilled = filled;
  return style;
}

inline TNVTypeDrawInfo infoOf(int value) {
  return TNVTypeDrawInfo().getTypes().at(static_cast<std::size_t>(value));
}

/// The document with the mark as its only one, under "Mark0".
inline std::string writtenXml(TNVMark& mark) {
  cv::FileStorage storage = tnv::newXml();
  storage << "Mark0"
          << "{";
  mark.write(storage);
  storage << "}";
  return storage.releaseAndGetString();
}

/// The mark of a document with the given content under "Mark0".
template <class Mark>
Mark markFromXml(const std::string& xml) {
  const cv::FileStorage storage(xml, cv::FileStorage::READ | cv::FileStorage::MEMORY);
  return Mark(storage["Mark0"]);
}

inline std::string xmlWithMark(const std::string& content) {
  return "<?xml version=\"1.0\"?>\n<opencv_storage>\n<Mark0>" + content +
         "</Mark0>\n</opencv_storage>\n";
}

/// What a filling does to the pixels within the outline, which are those of the mask.
inline void fillReference(cv::Mat& view, const std::vector<cv::Point>& contour,
                          const cv::Vec3b& colour) {
  cv::Mat mask(view.size(), CV_8UC1, cv::Scalar(0));
  cv::drawContours(mask, std::vector<std::vector<cv::Point>>{contour}, 0, cv::Scalar(255), -1, 8);
  for (int y = 0; y < view.rows; ++y) {
    for (int x = 0; x < view.cols; ++x) {
      if (mask.at<uchar>(y, x) == 0) continue;
      cv::Vec3b& pixel = view.at<cv::Vec3b>(y, x);
      for (int c = 0; c < 3; ++c) {
        pixel[c] = static_cast<uchar>(static_cast<uchar>(0.6 * pixel[c]) +
                                      static_cast<uchar>(0.4 * colour[c]));
      }
    }
  }
}

/// Eight pixels on and seven off along the edges between the four corners.
inline void frameReference(cv::Mat& view, const std::vector<cv::Point>& corners,
                           const cv::Vec3b& colour) {
  int position = 0;
  for (int i = 0; i < 4; ++i) {
    cv::LineIterator it(view, corners[static_cast<std::size_t>(i)],
                        corners[static_cast<std::size_t>((i + 1) % 4)], 8, false);
    for (int n = 0; n < it.count; ++n, ++it, ++position) {
      if (position % 15 < 8) view.at<cv::Vec3b>(it.pos()) = colour;
    }
  }
}

/// Draws the mark with each pair of hostile numbers, which `shape(a, b, variant)` puts into its
/// geometry in the variants 0, 1 and 2. A pair is drawn once in each variant; the other states take
/// turns with the pairs, so that each number meets all twelve, in either place.
template <class Shape>
void expectHostileGeometryIsDrawnInNoTime(TNVMark& mark, Shape shape) {
  const ThreeClasses classes;
  const int count = static_cast<int>(hostileNumbers().size());
  const auto start = std::chrono::steady_clock::now();
  for (int draw = 0; draw < count * count * 3; ++draw) {
    const int first = draw / 3 / count;
    const int second = draw / 3 % count;
    const int variant = draw % 3;
    const int state = (first + second) % 4 * 3 + variant;
    const double a = hostileNumbers().at(static_cast<std::size_t>(first));
    const double b = hostileNumbers().at(static_cast<std::size_t>(second));
    shape(a, b, variant);
    mark.designPoint = {a, b};
    mark.pois = {{a, b}, {0.5, a}};
    mark.poiSize = {b, a};
    mark.hovered = (state & 1) != 0;
    mark.selected = (state & 2) != 0;
    mark.poiVisible = (state & 2) != 0;
    mark.classIdx.assign(static_cast<std::size_t>(variant), 11);
    cv::Mat view = patternedPicture(100, 60);
    mark.draw(view, {1000, 600}, styleNamed(state < 6 ? "Colored" : "White", state % 2 == 0),
              infoOf(state % 6), classes.list(), (state & 4) != 0);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

/// Asks and changes a mark of such geometry in every way.
inline void useHostileMark(TNVMark& mark, double a, double b) {
  mark.poiSize = {b, a};
  mark.pois = {{a, b}};
  double distance = 0;
  mark.isMouseOver({0.5, a}, {640, 480}, &distance);
  mark.getRelSize({640, 480});
  mark.getPixelRect({640, 480});
  mark.getPOICountForSize({640, 480});
  EXPECT_LE(mark.getContour({640, 480}).size(), 65U);
  for (const std::string& mode : mark.getPOIModes())
    EXPECT_LE(mark.getPOIsGenerated(mode, {640, 480}, 9).size(), 10U);
  mark.update({b, a}, {a, b}, {}, {640, 480});
  mark.fitToPoints({{a, b}, {b, 0.5}}, {640, 480});
}

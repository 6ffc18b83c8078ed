#pragma once

#include <climits>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "editing/TNVType.h"
#include "foundation/XmlStorage.h"
#include "marks/TNVMark.h"
#include "project/TNVDNNClass.h"

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

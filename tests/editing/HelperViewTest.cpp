#include "editing/HelperView.h"

#include <functional>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "support/Pictures.h"

namespace {

const cv::Scalar kWhite(255, 255, 255);

tnv::HelperView viewWith(const std::string& mode, cv::Size window, double zoom = 1.0,
                         bool cross = false) {
  tnv::HelperView view;
  view.mode = view.mode.getByName(mode);
  view.windowWidth = window.width;
  view.windowHeight = window.height;
  view.zoom = zoom;
  view.showCross = cross;
  return view;
}

cv::Mat gray(const cv::Mat& picture) {
  cv::Mat result;
  cv::cvtColor(picture, result, cv::COLOR_BGR2GRAY);
  return result;
}

cv::Mat colour(const cv::Mat& picture) {
  cv::Mat result;
  cv::cvtColor(picture, result, cv::COLOR_GRAY2BGR);
  return result;
}

cv::Mat improvedByHand(const cv::Mat& picture) {
  cv::Mat result = gray(picture);
  cv::createCLAHE(4.0, {4, 4})->apply(result, result);
  return colour(result);
}

cv::Mat grayEdgesByHand(const cv::Mat& picture) {
  cv::Mat smooth;
  cv::GaussianBlur(picture, smooth, {3, 3}, 0, 0, 4);
  cv::Mat x;
  cv::Mat y;
  cv::Sobel(gray(smooth), x, CV_16S, 1, 0, 3, 1.0, 0.0, 4);
  cv::Sobel(gray(smooth), y, CV_16S, 0, 1, 3, 1.0, 0.0, 4);
  cv::convertScaleAbs(x, x, 1.0, 0.0);
  cv::convertScaleAbs(y, y, 1.0, 0.0);
  cv::Mat result;
  cv::addWeighted(x, 0.5, y, 0.5, 0.0, result);
  return result;
}

cv::Mat doubledByHand(cv::Mat edges) {
  for (int y = 0; y < edges.rows; ++y) {
    for (int x = 0; x < edges.cols; ++x) {
      uchar& value = edges.at<uchar>(y, x);
      value = 2 * value < 255 ? static_cast<uchar>(2 * value) : uchar{255};
    }
  }
  return edges;
}

struct Mode {
  const char* name;
  std::function<cv::Mat(const cv::Mat&)> filter;
};

const Mode kModes[] = {
    {"Normal", [](const cv::Mat& picture) { return picture.clone(); }},
    {"Gray", [](const cv::Mat& picture) { return colour(gray(picture)); }},
    {"Improve", improvedByHand},
    {"Edge", [](const cv::Mat& picture) { return colour(grayEdgesByHand(picture)); }},
    {"Edge x2",
     [](const cv::Mat& picture) { return colour(doubledByHand(grayEdgesByHand(picture))); }},
};

/// A picture in which an edge of each strength occurs.
cv::Mat steps() {
  cv::Mat picture(120, 160, CV_8UC3);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      const int value = x % 16 < 8 ? 0 : (y / 2 * 5) % 256;
      picture.at<cv::Vec3b>(y, x) = cv::Vec3b::all(static_cast<uchar>(value));
    }
  }
  return picture;
}

}  // namespace

TEST(HelperView, StartsWithItsDefaults) {
  const tnv::HelperView view;
  EXPECT_EQ("Normal", view.mode.name);
  EXPECT_EQ(1, view.mode.value);
  EXPECT_EQ(2.0, view.zoom);
  EXPECT_EQ(256, view.windowWidth);
  EXPECT_EQ(256, view.windowHeight);
  EXPECT_TRUE(view.showCross);
  EXPECT_TRUE(view.image.empty());
}

TEST(HelperView, ModesFilterTheWindow) {
  for (const cv::Mat& source : {patternedPicture(160, 120), steps()}) {
    // A window of 80 x 60 around 70, 50 starts at 30, 20; at zoom 2 it shows 40 x 30 from 50, 35.
    const cv::Mat plain = source({30, 20, 80, 60}).clone();
    cv::Mat enlarged;
    cv::resize(source({50, 35, 40, 30}), enlarged, {80, 60}, 0, 0, cv::INTER_LINEAR);
    for (const Mode& mode : kModes) {
      EXPECT_TRUE(
          samePixels(mode.filter(plain),
                     tnv::renderHelperView(source, {70, 50}, viewWith(mode.name, {80, 60}))))
          << mode.name;
      EXPECT_TRUE(
          samePixels(mode.filter(enlarged),
                     tnv::renderHelperView(source, {70, 50}, viewWith(mode.name, {80, 60}, 2.0))))
          << mode.name;
    }
  }
}

TEST(HelperView, EdgesAreDoubledAndHeldAt255) {
  const cv::Mat source = steps();
  const cv::Mat edges = tnv::renderHelperView(source, {80, 60}, viewWith("Edge", source.size()));
  const cv::Mat doubled =
      tnv::renderHelperView(source, {80, 60}, viewWith("Edge x2", source.size()));
  bool saw127 = false;
  bool saw128 = false;
  for (int y = 0; y < edges.rows; ++y) {
    for (int x = 0; x < edges.cols; ++x) {
      const int single = edges.at<cv::Vec3b>(y, x)[0];
      const int twice = doubled.at<cv::Vec3b>(y, x)[0];
      EXPECT_EQ(single < 128 ? 2 * single : 255, twice);
      saw127 = saw127 || single == 127;
      saw128 = saw128 || single == 128;
    }
  }
  EXPECT_TRUE(saw127 && saw128);
}

TEST(HelperView, ImproveSpreadsLowContrast) {
  cv::Mat source(64, 64, CV_8UC3);
  cv::RNG random(1);
  random.fill(source, cv::RNG::UNIFORM, 100, 110);
  const auto contrast = [&](const char* mode) {
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(tnv::renderHelperView(source, {32, 32}, viewWith(mode, {64, 64})), mean,
                   deviation);
    return deviation[0];
  };
  EXPECT_GT(contrast("Improve"), 2 * contrast("Gray"));
}

TEST(HelperView, CrossIsWhiteThroughTheMiddleInEachMode) {
  const cv::Mat source = patternedPicture(160, 120);
  for (const cv::Size window : {cv::Size(80, 60), cv::Size(81, 61)}) {
    for (const Mode& mode : kModes) {
      cv::Mat expected = tnv::renderHelperView(source, {70, 50}, viewWith(mode.name, window));
      cv::line(expected, {40, window.height}, {40, 0}, kWhite, 1, cv::LINE_AA);
      cv::line(expected, {window.width, 30}, {0, 30}, kWhite, 1, cv::LINE_AA);
      EXPECT_TRUE(samePixels(
          expected, tnv::renderHelperView(source, {70, 50}, viewWith(mode.name, window, 1, true))))
          << mode.name;
    }
  }
}

TEST(HelperView, LeavesTheSourceAsItIs) {
  const cv::Mat source = patternedPicture(64, 48);
  const cv::Mat before = source.clone();
  for (const Mode& mode : kModes)
    tnv::renderHelperView(source, {32, 24}, viewWith(mode.name, source.size(), 1.0, true));
  EXPECT_TRUE(samePixels(before, source));
}

TEST(HelperView, SmallestWindowIsNoFailure) {
  const cv::Mat source = patternedPicture(64, 48);
  for (const Mode& mode : kModes) {
    const cv::Mat seen =
        tnv::renderHelperView(source, {32, 24}, viewWith(mode.name, {1, 1}, 1.0, true));
    EXPECT_EQ(cv::Size(1, 1), seen.size()) << mode.name;
  }
}

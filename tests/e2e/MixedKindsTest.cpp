#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "TNV_SampleBenchNative/TNV_SampleBenchNative.h"
#include "support/LogCapture.h"
#include "support/ProjectBuilder.h"

namespace fs = std::filesystem;

namespace {

using Points = std::vector<std::vector<double>>;

struct Form {
  const char* name;
  Points points;
};

/// Points on the rim of a circle or oval, relative; the last one is repeated, for it counts as the
/// cursor.
Points rim(double halfWidth, double halfHeight, cv::Size picture) {
  Points points;
  for (int i = 0; i < 8; ++i) {
    const double angle = 0.3 + i * 3.141592653589793 / 4;
    points.push_back({0.5 + halfWidth * std::cos(angle) / picture.width,
                      0.45 + halfHeight * std::sin(angle) / picture.height});
  }
  points.push_back(points.back());
  return points;
}

std::vector<Form> formsOn(cv::Size picture) {
  const double radius = 0.2 * std::min(picture.width, picture.height);
  const Points path{{0.2, 0.7}, {0.3, 0.3}, {0.6, 0.55}, {0.7, 0.2}, {0.7, 0.2}};
  return {{"Rect", {{0.1, 0.2}, {0.35, 0.6}}},
          {"Rect Center", {{0.5, 0.5}, {0.6, 0.7}}},
          {"Point", {{0.4, 0.6}}},
          {"Image", {{0.1, 0.1}}},
          {"Circle", {{0.5, 0.5}, {0.6, 0.55}}},
          {"Circle Multiple", rim(radius, radius, picture)},
          {"Line", {{0.2, 0.8}, {0.7, 0.3}}},
          {"PolyLine", path},
          {"PolyLine Closed", path},
          {"Ellipse", {{0.5, 0.5}, {0.7, 0.4}, {0.45, 0.35}}},
          {"Ellipse Multiple", rim(1.4 * radius, radius, picture)}};
}

/// A box in pixels: left, upper, right, lower edge.
using Box = cv::Vec4d;

/// The pictures of the directory in SAMPLEBENCH_PICTURES, or else two that are drawn.
std::vector<std::string> picturesFor(ProjectBuilder& builder) {
  std::vector<std::string> pictures;
  if (const char* directory = std::getenv("SAMPLEBENCH_PICTURES")) {
    for (const auto& entry : fs::directory_iterator(directory))
      if (entry.path().extension() == ".jpg") pictures.push_back(entry.path().string());
    return pictures;
  }
  return {builder.picture("wide.png", 320, 200), builder.picture("high.png", 150, 260)};
}

constexpr auto kTree = R"(<?xml version="1.0"?>
<opencv_storage>
<TaskTree>
  <SubTasks>1</SubTasks>
  <Task_0><Name>Default</Name><Save>1</Save><SubTasks>0</SubTasks></Task_0>
</TaskTree>
</opencv_storage>
)";

class MixedKinds : public ::testing::Test {
 protected:
  MixedKinds() {
    builder.withClasses({"first"});
    const auto pictures = picturesFor(builder);
    builder.project().wAddImagesToImageSet(pictures, std::vector<bool>(pictures.size(), true),
                                           "set", false);
    markPictures();
    EXPECT_TRUE(builder.project().wUpdate(true));
  }

  void markPictures() {
    WTNVMainProcess process(&builder.project(), nullptr);
    WTNVHandlerMark marks = process.getHndMark();
    WTNVHandlerTrainSet trainSets = process.getHndTrainSet();
    for (WTNVTrainSet trainSet : builder.project().wGetTrainSets()) {
      cv::Size picture;
      trainSet.getImageSize(picture.width, picture.height);
      for (const Form& form : formsOn(picture)) {
        EXPECT_TRUE(marks.designMark(form.points, form.name, builder.project().wGetDNNClasses()))
            << form.name;
        EXPECT_TRUE(marks.addDesignedMark());
      }
      boxes.push_back(boxesOf(marks.getAllMarks(), picture));
      pictureSizes.push_back(picture);
      trainSets.wSetTrainSetForward(1);
    }
  }

  /// Of all marks but the one that is lost on reloading.
  static std::vector<Box> boxesOf(const std::vector<WTNVMark>& marks, cv::Size picture) {
    std::vector<Box> boxes;
    for (const WTNVMark& mark : marks) {
      cv::Point2d center;
      cv::Point2d size;
      mark.wGetRelCenter(center.x, center.y);
      mark.wGetRelSize(size.x, size.y, picture.width, picture.height);
      boxes.push_back(edges(center, size, picture));
    }
    return boxes;
  }

  static Box edges(cv::Point2d center, cv::Point2d size, cv::Size picture) {
    return {(center.x - size.x / 2) * picture.width, (center.y - size.y / 2) * picture.height,
            (center.x + size.x / 2) * picture.width, (center.y + size.y / 2) * picture.height};
  }

  bool generate() {
    builder.withDarknet(kTree);
    WTNVProject& project = builder.project();
    return project.getHndAugment().wProcess(project.wGetTrainSets(), project.wGetGeneration());
  }

  std::vector<Box> labelsOf(std::size_t sample) const {
    std::vector<Box> labels;
    std::istringstream text(
        readFile(builder.outputDirectory() + "images/img_" + std::to_string(sample) + ".txt"));
    text.imbue(std::locale::classic());
    int number = 0;
    cv::Point2d center;
    cv::Point2d size;
    while (text >> number >> center.x >> center.y >> size.x >> size.y)
      labels.push_back(edges(center, size, pictureSizes[sample]));
    return labels;
  }

  LogCapture log;
  ProjectBuilder builder;
  std::vector<std::vector<Box>> boxes;
  std::vector<cv::Size> pictureSizes;
};

/// No edge is further off than a pixel, and what the six digits of a label leave out.
void expectNear(const Box& expected, const Box& label, const std::string& what) {
  EXPECT_LE(cv::norm(expected, label, cv::NORM_INF), 1.01)
      << what << ": " << expected << " " << label;
}

TEST_F(MixedKinds, LabelsAreTheBoxesOfAllKindsOfMarks) {
  ASSERT_TRUE(generate());
  ASSERT_FALSE(boxes.empty());
  for (std::size_t sample = 0; sample < boxes.size(); ++sample) {
    const auto labels = labelsOf(sample);
    ASSERT_EQ(labels.size(), boxes[sample].size()) << sample;
    for (std::size_t i = 0; i < labels.size(); ++i)
      expectNear(boxes[sample][i], labels[i], formsOn({100, 100})[i].name);
  }
}

TEST_F(MixedKinds, AllButTheRectangleFromItsCentreComeBackAndAreLabelledAlike) {
  ASSERT_TRUE(generate());
  std::vector<std::vector<Box>> before;
  for (std::size_t sample = 0; sample < boxes.size(); ++sample)
    before.push_back(labelsOf(sample));
  builder.reopened();
  ASSERT_TRUE(generate());
  for (std::size_t sample = 0; sample < boxes.size(); ++sample) {
    auto expected = before[sample];
    expected.erase(expected.begin() + 1);
    EXPECT_EQ(labelsOf(sample), expected) << sample;
  }
}

}  // namespace

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "TNV_SampleBenchNative/WTNVToolDarknetViewer.h"
#include "foundation/TNVDirectory.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

class DarknetViewer : public testing::Test {
 protected:
  DarknetViewer() { viewer.wSetImageDirectory(temp.path()); }

  /// A sample of 80 by 60 pixels in a format without loss.
  void sample(const std::string& name, const std::string& labels) {
    writePicture(temp / (name + ".png"), 80, 60);
    temp.write(name + ".txt", labels);
  }

  cv::Mat selectedImage() const {
    unsigned char* data = nullptr;
    int width = -1;
    int height = -1;
    int channels = -1;
    viewer.wGetSelectedImage(&data, &width, &height, &channels);
    if (data == nullptr) {
      EXPECT_EQ(std::vector({width, height, channels}), std::vector({0, 0, 0}));
      return {};
    }
    EXPECT_EQ(channels, 3);
    return cv::Mat(height, width, CV_8UC3, data).clone();
  }

  /// The sample's picture with boxes drawn by hand.
  static cv::Mat withBoxes(const std::vector<cv::Rect>& boxes) {
    cv::Mat picture = patternedPicture(80, 60);
    for (const cv::Rect& box : boxes)
      cv::rectangle(picture, box, cv::Scalar(0, 0, 255, 0), 1, 16, 0);
    return picture;
  }

  void expectBoxes(const std::string& labels, const std::vector<cv::Rect>& boxes) {
    sample("a", labels);
    viewer.wReadImages();
    ASSERT_TRUE(viewer.wSelectImage("a"));
    EXPECT_TRUE(samePixels(withBoxes(boxes), selectedImage())) << labels;
  }

  TempDirectory temp;
  WTNVToolDarknetViewer viewer;
};

}  // namespace

TEST_F(DarknetViewer, APictureWithoutALabelTextIsLeftOut) {
  writePicture(temp / "img_0.jpg", 8, 8);
  temp.write("img_0.txt", "");
  writePicture(temp / "img_1.jpg", 8, 8);
  temp.write("alone.txt", "");
  const LogCapture log;
  EXPECT_THAT(viewer.wReadImages(), ElementsAre("img_0"));
  EXPECT_EQ(log.text(), "");
}

TEST_F(DarknetViewer, ASampleIsSelectedByItsWholeName) {
  for (const int number : {1, 10, 11}) {
    writePicture(temp / ("img_" + std::to_string(number) + ".png"), 8 + number, 8);
    temp.write("img_" + std::to_string(number) + ".txt", "");
  }
  viewer.wReadImages();
  for (const int number : {10, 1, 11}) {
    ASSERT_TRUE(viewer.wSelectImage("img_" + std::to_string(number)));
    EXPECT_EQ(selectedImage().cols, 8 + number);
  }
  const LogCapture log;
  EXPECT_FALSE(viewer.wSelectImage("img_"));
}

TEST_F(DarknetViewer, PicturesOfThreeTypesAreListedWithoutThoseBelow) {
  for (const char* name : {"a.jpg", "b.jpeg", "c.png", "d.bmp", "below/e.jpg"}) {
    temp.write(name, "");
    temp.write(std::string(name).substr(0, std::string(name).find('.')) + ".txt", "");
  }
  temp.write("e.txt", "");
  EXPECT_THAT(viewer.wReadImages(), UnorderedElementsAre("a", "b", "c"));
}

TEST_F(DarknetViewer, NamesGoUpToTheFirstDot) {
  writePicture(temp / "a.b.png", 8, 8);
  temp.write("a.txt", "");
  EXPECT_THAT(viewer.wReadImages(), ElementsAre("a"));
  ASSERT_TRUE(viewer.wSelectImage("a"));
  EXPECT_EQ(viewer.wGetSelectedImageFile(), "a.b.png");
  EXPECT_EQ(viewer.wGetSelectedDataFile(), "a.txt");
}

TEST_F(DarknetViewer, AnotherDirectoryCountsFromTheNextReadingOn) {
  sample("a", "");
  EXPECT_THAT(viewer.wReadImages(), ElementsAre("a"));
  temp.makeDirectory("empty");
  viewer.wSetImageDirectory(temp / "empty");
  EXPECT_FALSE(viewer.wSelectImage("a")) << "its file is looked for in the new directory";
  EXPECT_EQ(viewer.wGetSelectedImageFile(), "a.png");
  EXPECT_THAT(viewer.wReadImages(), IsEmpty());
}

TEST_F(DarknetViewer, SelectingBeforeReadingFindsNothing) {
  sample("a", "");
  const LogCapture log;
  EXPECT_FALSE(viewer.wSelectImage("a"));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVToolDarknetViewer::selectImage: Found no item with name!"));
  EXPECT_TRUE(selectedImage().empty());
  EXPECT_EQ(viewer.wGetSelectedImageFile(), "");
  EXPECT_EQ(viewer.wGetSelectedDataFile(), "");
}

TEST_F(DarknetViewer, AnUnknownNameLeavesTheSelection) {
  sample("a", "");
  viewer.wReadImages();
  ASSERT_TRUE(viewer.wSelectImage("a"));
  const LogCapture log;
  EXPECT_FALSE(viewer.wSelectImage("b"));
  EXPECT_EQ(viewer.wGetSelectedImageFile(), "a.png");
  EXPECT_TRUE(samePixels(withBoxes({}), selectedImage()));
}

TEST_F(DarknetViewer, AnUnreadablePictureLeavesItsNamesAndNoPicture) {
  sample("a", "");
  temp.write("b.png", "no picture");
  temp.write("b.txt", "");
  viewer.wReadImages();
  ASSERT_TRUE(viewer.wSelectImage("a"));
  const LogCapture log;
  EXPECT_FALSE(viewer.wSelectImage("b"));
  EXPECT_THAT(log.lines(), ElementsAre("TNVToolDarknetViewer::selectImage: Could not load image!"));
  EXPECT_TRUE(selectedImage().empty());
  EXPECT_EQ(viewer.wGetSelectedImageFile(), "b.png");
  EXPECT_EQ(viewer.wGetSelectedDataFile(), "b.txt");
}

TEST_F(DarknetViewer, WhateverCannotBeReadAsAPictureIsLoggedAndEmpty) {
  for (const std::string& path : unreadablePictures(temp)) {
    const std::string name = std::filesystem::path(path).stem();
    temp.write(name + ".txt", "0 0.5 0.5 0.25 0.25\n");
    viewer.wReadImages();
    const LogCapture log;
    EXPECT_FALSE(viewer.wSelectImage(name)) << path;
    EXPECT_EQ(log.lines().size(), 1U);
    EXPECT_TRUE(selectedImage().empty());
  }
}

TEST_F(DarknetViewer, ALabelTextBehindLinksInACircleCountsAsNone) {
  sample("a", "");
  writePicture(temp / "b.png", 8, 8);
  std::filesystem::create_symlink(temp / "b.txt", temp / "c.txt");
  std::filesystem::create_symlink(temp / "c.txt", temp / "b.txt");
  EXPECT_THAT(viewer.wReadImages(), ElementsAre("a"));
}

TEST_F(DarknetViewer, BoxesAreDrawnInRed) {
  // 20 x 15 around (40, 30); 8 x 6 around (12, 45).
  expectBoxes("0 0.5 0.5 0.25 0.25\n7 0.15 0.75 0.1 0.1\n", {{30, 22, 20, 15}, {8, 42, 8, 6}});
}

TEST_F(DarknetViewer, CoordinatesAreRoundedHalfToEven) {
  // Left edges at 2.5 and 7.5, upper edges at 22.5.
  expectBoxes("0 0.15625 0.5 0.25 0.25\n", {{2, 22, 20, 15}});
  expectBoxes("0 0.21875 0.5 0.25 0.25\n", {{8, 22, 20, 15}});
}

TEST_F(DarknetViewer, BlanksTabsAndCarriageReturnsBetweenFieldsDoNotMatter) {
  expectBoxes("0  0.5 0.5\t 0.25   0.25 \r\n", {{30, 22, 20, 15}});
}

TEST_F(DarknetViewer, WhiteSpaceWithinFieldsIsRemoved) {
  expectBoxes("0 0.\v5 0.5\f \v\f 0.25 0\t.25\n", {{30, 22, 20, 15}});
}

TEST_F(DarknetViewer, ATabAloneDoesNotPartFields) {
  expectBoxes("0\t0.5 0.5 0.25 0.25\n", {});
}

TEST_F(DarknetViewer, LinesOfAnotherNumberOfFieldsDrawNothing) {
  expectBoxes("0 0.5 0.5 0.25 0.25 1\n0 0.5 0.5 0.25\n\nword\n", {});
}

TEST_F(DarknetViewer, TextIsZeroAndTheClassIsNotLookedAt) {
  expectBoxes("screw 0.5 0.5 0.25 0.25\n", {{30, 22, 20, 15}});
  expectBoxes("0 x 0.5 0.25 0.25\n", {{-10, 22, 20, 15}});
  expectBoxes("0 0.5 0.5 0.25 x\n", {});
  expectBoxes("0 0.5a 0.5b 0.25c 0.25d\n", {{30, 22, 20, 15}});
}

TEST_F(DarknetViewer, ABoxOverTheEdgeIsClipped) {
  expectBoxes("0 0 0.5 0.5 0.5\n", {{-20, 15, 40, 30}});
}

TEST_F(DarknetViewer, HostileNumbersAreDrawnSomehow) {
  std::string labels;
  for (const char* a : {"nan", "inf", "-inf", "1e300", "-1e300", "1e7", "0"})
    for (const char* b : {"nan", "1e300", "-1e9", "0.5"})
      labels += std::string("0 ") + a + " " + b + " " + b + " " + a + "\n";
  sample("a", labels);
  viewer.wReadImages();
  EXPECT_TRUE(viewer.wSelectImage("a"));
  EXPECT_EQ(selectedImage().size(), cv::Size(80, 60));
}

TEST_F(DarknetViewer, BoxesDoNotAccumulateOverSelections) {
  expectBoxes("0 0.5 0.5 0.25 0.25\n", {{30, 22, 20, 15}});
  temp.write("a.txt", "0 0.15 0.75 0.1 0.1\n");
  ASSERT_TRUE(viewer.wSelectImage("a"));
  EXPECT_TRUE(samePixels(withBoxes({{8, 42, 8, 6}}), selectedImage()));
}

TEST_F(DarknetViewer, AMissingLabelTextCountsAsEmpty) {
  sample("a", "0 0.5 0.5 0.25 0.25\n");
  viewer.wReadImages();
  std::filesystem::remove(temp / "a.txt");
  EXPECT_TRUE(viewer.wSelectImage("a"));
  EXPECT_TRUE(samePixels(withBoxes({}), selectedImage()));
}

TEST_F(DarknetViewer, WidthsAndHeightsAreRoundedHalfToEven) {
  // 2.5 becomes 2 and 7.5 becomes 8 wide; 22.5 becomes 22 high.
  expectBoxes("0 0.5 0.5 0.03125 0.375\n", {{39, 19, 2, 22}});
  expectBoxes("0 0.5 0.5 0.09375 0.375\n", {{36, 19, 8, 22}});
}

TEST_F(DarknetViewer, OfTwoItemsOfOneNameTheFirstIsTaken) {
  writePicture(temp / "a.png", 80, 60);
  writePicture(temp / "a.jpg", 40, 30);
  temp.write("a.txt", "");
  EXPECT_THAT(viewer.wReadImages(), ElementsAre("a", "a"));
  const auto first = TNVDirectory::readFiles(temp.path() + "/", {"jpg", "png"}, false).front();
  ASSERT_TRUE(viewer.wSelectImage("a"));
  EXPECT_EQ(viewer.wGetSelectedImageFile(), first.fileName);
}

TEST_F(DarknetViewer, ASecondReadingReplacesTheFirst) {
  sample("a", "");
  viewer.wReadImages();
  std::filesystem::remove(temp / "a.png");
  EXPECT_THAT(viewer.wReadImages(), IsEmpty());
  const LogCapture log;
  EXPECT_FALSE(viewer.wSelectImage("a"));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVToolDarknetViewer::selectImage: Found no item with name!"));
}

TEST_F(DarknetViewer, BackslashesInTheDirectoryAreSlashes) {
  temp.makeDirectory("below");
  sample("below/a", "");
  viewer.wSetImageDirectory(temp.path() + "\\below");
  EXPECT_THAT(viewer.wReadImages(), ElementsAre("a"));
}

TEST_F(DarknetViewer, AGreyPictureIsShownInColour) {
  cv::imwrite(temp / "a.png", cv::Mat(60, 80, CV_8UC1, cv::Scalar(9)));
  temp.write("a.txt", "");
  viewer.wReadImages();
  ASSERT_TRUE(viewer.wSelectImage("a"));
  EXPECT_EQ(selectedImage().channels(), 3);
}

#include "marks/TNVMarkImage.h"

#include <gtest/gtest.h>

#include "foundation/FileReplacements.h"
#include "foundation/XmlStorage.h"
#include "support/TempDirectory.h"

TEST(TNVMarkImage, TakesOneConstructionPoint) {
  const TNVMarkImage mark;
  for (const bool variant : {false, true}) {
    EXPECT_EQ(mark.getMinConstructionPoints(variant), 1);
    EXPECT_EQ(mark.getMaxConstructionPoints(variant), 1);
  }
}

TEST(TNVMarkImage, HasNoVariantName) {
  EXPECT_EQ(TNVMarkImage().getTypeName(false), "Image");
  EXPECT_EQ(TNVMarkImage().getTypeName(true), "");
}

TEST(TNVMarkImage, StartsAsARectangleDoes) {
  const TNVMarkImage mark;
  EXPECT_EQ(mark.type, "Rect");
  EXPECT_EQ(mark.center, cv::Point2d(-1, -1));
  EXPECT_EQ(mark.size, cv::Point2d(-1, -1));
}

TEST(TNVMarkImage, BehavesAsARectangleOtherwise) {
  TNVMarkImage mark;
  mark.center = {0.5, 0.5};
  mark.size = {0.5, 0.25};
  EXPECT_EQ(mark.getPixelRect({64, 32}), cv::Rect(16, 12, 32, 8));
  EXPECT_TRUE(mark.isMouseOver({0.5, 0.5}, {64, 32}));
  EXPECT_EQ(mark.getPOIModes().size(), 4U);
}

TEST(TNVMarkImage, ComesBackAsWhatItWas) {
  const TempDirectory directory;
  TNVMarkImage mark;
  mark.center = {0.5, 0.5};
  mark.size = {0.9, 0.9};
  cv::FileStorage storage = tnv::newXml();
  storage << "Mark0"
          << "{";
  mark.write(storage);
  storage << "}";
  ASSERT_TRUE(tnv::replaceForGood(directory / "marks.xml", storage.releaseAndGetString()));
  const cv::FileStorage file = tnv::openXml(directory / "marks.xml");
  const TNVMarkImage read(file["Mark0"]);
  EXPECT_EQ(read.type, "Rect");
  EXPECT_EQ(read.center, mark.center);
  EXPECT_EQ(read.size, mark.size);
}

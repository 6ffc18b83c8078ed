#include "TNV_SampleBenchNative/WTNVToolLabelExchange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LogCapture.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"

using testing::IsEmpty;

TEST(WTNVToolLabelExchange, HoldsNothingBeforeItReads) {
  WTNVToolLabelExchange exchange;
  EXPECT_THAT(exchange.wGetClassNames(), IsEmpty());
  EXPECT_THAT(exchange.wGetImagePaths(), IsEmpty());
  EXPECT_THAT(exchange.wGetReasons(), IsEmpty());
  EXPECT_THAT(exchange.wGetRejections(), IsEmpty());
  EXPECT_EQ(exchange.wGetReadFormat(), "");
  EXPECT_EQ(exchange.wGetFound(), 0);
  EXPECT_EQ(exchange.wGetRejected(), 0);
  EXPECT_EQ(exchange.wGetCut(), 0);
  EXPECT_EQ(exchange.wAddMarks({}, {}), 0);
}

TEST(WTNVToolLabelExchange, ReadsAndWritesWithoutAProject) {
  const TempDirectory temp;
  temp.write("in/classes.txt", "screw\n");
  temp.write("in/a.jpg", "");
  temp.write("in/a.txt", "0 0.500000 0.5 0.25 0.50\n");
  WTNVToolLabelExchange exchange;
  ASSERT_TRUE(exchange.wSetFormat("Darknet"));
  ASSERT_TRUE(exchange.wRead(temp / "in"));
  ASSERT_TRUE(exchange.wWrite(temp / "out"));
  EXPECT_EQ(readFile(temp / "out/labels/a.txt"), "0 0.5 0.5 0.25 0.5\n");
}

TEST(WTNVToolLabelExchange, SettingsCountFromTheNextRead) {
  const TempDirectory temp;
  temp.write("a.jpg", "");
  temp.write("a.txt", "0 0.5 0.5 0.25 0.5\n");
  WTNVToolLabelExchange exchange;
  const LogCapture log;
  EXPECT_FALSE(exchange.wRead(temp.path()));
  exchange.wSetNames(temp.write("names", "screw\n"));
  ASSERT_TRUE(exchange.wRead(temp.path()));
  EXPECT_EQ(exchange.wGetFound(), 1);
  EXPECT_EQ(exchange.wGetRejected(), 0);
}

TEST(WTNVToolLabelExchange, SizesOfPicturesAreThoseInWhichTheyAreSeen) {
  const TempDirectory temp;
  int width = -1;
  int height = -1;
  EXPECT_TRUE(
      WTNVToolLabelExchange::wGetPictureSize(writePicture(temp / "a.jpg", 37, 21), width, height));
  EXPECT_EQ(cv::Size(width, height), cv::Size(37, 21));
  const std::string turned = temp.write("b.jpg", turnedJpeg(patternedPicture(37, 21), 6));
  EXPECT_TRUE(WTNVToolLabelExchange::wGetPictureSize(turned, width, height));
  EXPECT_EQ(cv::Size(width, height), cv::Size(21, 37));
  for (const std::string& path : unreadablePictures(temp)) {
    EXPECT_FALSE(WTNVToolLabelExchange::wGetPictureSize(path, width, height)) << path;
    EXPECT_EQ(cv::Size(width, height), cv::Size()) << path;
  }
}

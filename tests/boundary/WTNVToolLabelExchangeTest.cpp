#include "TNV_SampleBenchNative/WTNVToolLabelExchange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include <opencv2/imgcodecs.hpp>

#include "support/LogCapture.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"

using testing::ElementsAre;
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
  EXPECT_THAT(exchange.wGetPicturesLeftOut(), IsEmpty());
  EXPECT_FALSE(exchange.wTryWrite(""));
  EXPECT_EQ(exchange.wAddMarks({}, {}), 0);
}

TEST(WTNVToolLabelExchange, ReadsAndWritesWithoutAProject) {
  const TempDirectory temp;
  temp.write("in/classes.txt", "screw\n");
  temp.makeDirectory("in");
  cv::imwrite(temp / "in/a.jpg", cv::Mat(48, 64, CV_8UC3, cv::Scalar::all(0)));
  temp.write("in/a.txt", "0 0.500000 0.5 0.25 0.50\n");
  WTNVToolLabelExchange exchange;
  ASSERT_TRUE(exchange.wSetFormat("Darknet"));
  ASSERT_TRUE(exchange.wRead(temp / "in"));
  EXPECT_TRUE(exchange.wTryWrite(temp / "out"));
  EXPECT_FALSE(std::filesystem::exists(temp / "out"));
  ASSERT_TRUE(exchange.wWrite(temp / "out"));
  EXPECT_THAT(exchange.wGetPicturesLeftOut(), IsEmpty());
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

TEST(WTNVToolLabelExchange, TellsWhatADescriptionSays) {
  const TempDirectory temp;
  temp.makeDirectory("set/images");
  const auto file = temp.write("set/data.yaml",
                               "train: ../images\nval: [a.txt, /b]\ntest:\nnc: 2\n"
                               "names:\n  2: 'nut'\n  0: screw\n  99999999999: far\n");
  const auto texts = [&](const std::string& key) {
    return WTNVToolLabelExchange::wReadDescription(file, key);
  };
  EXPECT_THAT(texts("train"), ElementsAre(temp / "set/images")) << "a step up too many";
  EXPECT_THAT(texts("val"), ElementsAre(temp / "set/a.txt", "/b"));
  EXPECT_THAT(texts("test"), IsEmpty());
  EXPECT_THAT(texts("absent"), IsEmpty());
  EXPECT_THAT(texts(""), IsEmpty());
  EXPECT_THAT(texts("nc"), ElementsAre("2"));
  EXPECT_THAT(texts("names"), ElementsAre("screw", "nut", "far"));
  std::vector<std::string> names{"earlier"};
  std::vector<int> numbers{7};
  EXPECT_TRUE(WTNVToolLabelExchange::wReadClassNames(file, names, numbers));
  EXPECT_THAT(names, ElementsAre("screw", "nut", "far"));
  EXPECT_THAT(numbers, ElementsAre(0, 2, 2147483647));
}

TEST(WTNVToolLabelExchange, TellsNothingOfWhatIsNoDescription) {
  const TempDirectory temp;
  std::vector<std::string> names{"earlier"};
  std::vector<int> numbers{7};
  for (const auto& file : {temp / "absent.yaml", temp.path(), std::string(),
                           temp.write("empty.yaml", ""), temp.write("a.yaml", "names: []\n")}) {
    EXPECT_THAT(WTNVToolLabelExchange::wReadDescription(file, "names"), IsEmpty()) << file;
    EXPECT_FALSE(WTNVToolLabelExchange::wReadClassNames(file, names, numbers)) << file;
    EXPECT_THAT(names, IsEmpty());
    EXPECT_THAT(numbers, IsEmpty());
  }
  const auto plain = temp.write("plain.txt", "names: [a]\n");
  EXPECT_THAT(WTNVToolLabelExchange::wReadDescription(plain, "names"), IsEmpty());
}

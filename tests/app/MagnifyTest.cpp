#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "ProgramRunner.h"
#include "support/Pictures.h"

namespace {

class ProgramMagnify : public ProgramTest {
 protected:
  void SetUp() override { makeProject(); }

  cv::Mat magnify(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"magnify", "parts", "a.png", "-o", "spot.png"});
    succeed(arguments);
    return cv::imread(place / "spot.png");
  }
};

TEST_F(ProgramMagnify, AtOneToOneTheWindowIsAPieceOfThePicture) {
  const auto window = magnify({"--at", "0.5,0.5", "--zoom", "1", "--size", "32x16", "--no-cross"});
  EXPECT_TRUE(samePixels(patternedPicture(128, 64)(cv::Rect(48, 24, 32, 16)), window));
}

TEST_F(ProgramMagnify, BeyondTheCornerItIsBlack) {
  const auto window = magnify({"--at", "0,0", "--no-cross"});
  ASSERT_EQ(window.size(), cv::Size(256, 256));
  // The last row and column before the corner are blended with its pixels.
  EXPECT_EQ(cv::countNonZero(window(cv::Rect(0, 0, 127, 127)).clone().reshape(1)), 0);
  EXPECT_NE(cv::countNonZero(window(cv::Rect(128, 128, 128, 128)).clone().reshape(1)), 0);
}

TEST_F(ProgramMagnify, ShowsTheCrossUnlessTold) {
  const std::vector<std::string> plain{"--at", "0.5,0.5", "--size", "64x64", "--no-cross"};
  auto expected = magnify(plain);
  cv::line(expected, {32, 64}, {32, 0}, {255, 255, 255}, 1, cv::LINE_AA);
  cv::line(expected, {64, 32}, {0, 32}, {255, 255, 255}, 1, cv::LINE_AA);
  EXPECT_TRUE(samePixels(expected, magnify({"--at", "0.5,0.5", "--size", "64x64"})));
}

TEST_F(ProgramMagnify, AModeIsAFilterOnTheWindow) {
  const auto normal = magnify({"--at", "0.5,0.5", "--no-cross"});
  cv::Mat gray;
  cv::cvtColor(normal, gray, cv::COLOR_BGR2GRAY);
  cv::cvtColor(gray, gray, cv::COLOR_GRAY2BGR);
  EXPECT_TRUE(samePixels(gray, magnify({"--at", "0.5,0.5", "--no-cross", "--mode", "Gray"})));
}

TEST_F(ProgramMagnify, RefusesWhatWillNotDo) {
  struct Row {
    std::vector<std::string> arguments;
    std::string message;
    int exitCode;
  };
  const std::vector<Row> rows{
      {{"a.png", "-o", "x.png", "--at", "2,0"}, "lies outside the picture", 1},
      {{"a.png", "-o", "x.png", "--at", "0,0", "--mode", "Improved"}, "Edge x2", 1},
      {{"a.png", "-o", "x.png", "--at", "0,0", "--size", "0x5"}, "is no size", 1},
      {{"a.png", "-o", "x.png", "--at", "0,0", "--size", "9999x5"}, "use up to 4096x4096", 1},
      {{"a.png", "-o", "photos/b.png", "--at", "0,0"}, "is a picture of the project", 1},
      {{"z.png", "-o", "x.png", "--at", "0,0"}, "no picture 'z.png'", 1},
      {{"a.png", "-o", "x.png", "--at", "0,0", "--zoom", "0"}, "no number from", 2},
      {{"a.png", "-o", "x.png"}, "--at is required", 2}};
  for (auto [arguments, message, exitCode] : rows) {
    arguments.insert(arguments.begin(), {"magnify", "parts"});
    fail(arguments, message, exitCode);
  }
}

class ProgramCrop : public ProgramTest {
 protected:
  void SetUp() override { makeProject(); }
};

TEST_F(ProgramCrop, EachMarkWithAnAreaBecomesAFile) {
  succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
  succeed({"mark", "parts", "a.png", "Point", "0.5,0.5", "--class", "nut"});
  succeed({"mark", "parts", "a.png", "Rect", "0.5,0.5", "0.75,0.75", "--class", "nut"});
  const auto result = run({"crop", "parts", "a.png", "-o", "cut"});
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(result.out, "cut/a-1.png\ncut/a-3.png\n");
  EXPECT_NE(result.err.find("mark 2 (Point) has no area"), std::string::npos) << result.err;
  EXPECT_TRUE(samePixels(patternedPicture(128, 64)(cv::Rect(32, 16, 32, 32)),
                         cv::imread(place / "cut/a-1.png")));
  EXPECT_TRUE(samePixels(patternedPicture(128, 64)(cv::Rect(64, 32, 32, 16)),
                         cv::imread(place / "cut/a-3.png")));
}

TEST_F(ProgramCrop, RefusesWhatWillNotDo) {
  fail({"crop", "parts", "a.png", "-o", "cut"}, "has no marks to cut out");
  fail({"crop", "parts", "z.png", "-o", "cut"}, "no picture 'z.png'");
  fail({"crop", "parts", "a.png"}, "--output is required", 2);
  succeed({"mark", "parts", "a.png", "Rect", "0.25,0.25", "0.5,0.75", "--class", "nut"});
  place.write("file", "in the way");
  fail({"crop", "parts", "a.png", "-o", "file"}, "cannot be written");
}

}  // namespace

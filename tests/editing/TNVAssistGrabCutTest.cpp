#include "editing/TNVAssistGrabCut.h"

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marks/MarkTools.h"
#include "support/ObjectScene.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

using Points = TNVAssist::Points;
using Outline = std::vector<cv::Point>;

/// What a mark of a picture becomes when its neighbourhood is reduced; worked out by hand.
struct Row {
  const char* name;
  cv::Size image;
  cv::Rect2d rect;

  cv::Rect roi;
  cv::Point2d origin;
  int halvings;  ///< doublings if negative
  cv::Size small;
  double factor;
  cv::Rect box;
  Outline outline;
  int kernelSide;
};

const Row kRows[] = {
    // 160, 120, 320 x 240 pixels; 80, 60, 480 x 360 with the margin.
    {"inside",
     {640, 480},
     {0.25, 0.25, 0.5, 0.5},
     {80, 60, 480, 360},
     {80, 60},
     1,
     {128, 96},
     128.0 / 480,
     {21, 16, 85, 64},
     {{21, 16}, {107, 16}, {107, 80}, {21, 80}},
     21},
    // The margin of 40 and 30 pixels is cut off on two sides.
    {"top left corner",
     {640, 480},
     {0, 0, 0.25, 0.25},
     {0, 0, 200, 150},
     {0, 0},
     1,
     {128, 96},
     128.0 / 200,
     {0, 0, 102, 77},
     {{0, 0}, {102, 0}, {102, 77}, {0, 77}},
     25},
    // 480, 240, 128 x 240 pixels, of which the margin reaches 60 pixels over the lower edge.
    {"upright, cut below",
     {640, 480},
     {0.75, 0.5, 0.2, 0.5},
     {448, 180, 192, 300},
     {448, 180},
     1,
     {82, 128},
     128.0 / 300,
     {14, 26, 55, 102},
     {{14, 26}, {68, 26}, {68, 128}, {14, 128}},
     18},
    // 320, 240, 32 x 24 pixels.
    {"enlarged",
     {640, 480},
     {0.5, 0.5, 0.05, 0.05},
     {312, 234, 48, 36},
     {312, 234},
     -1,
     {128, 96},
     128.0 / 48,
     {21, 16, 85, 64},
     {{21, 16}, {107, 16}, {107, 80}, {21, 80}},
     21},
    {"halved twice",
     {1280, 960},
     {0.25, 0.25, 0.5, 0.5},
     {160, 120, 960, 720},
     {160, 120},
     2,
     {128, 96},
     128.0 / 960,
     {21, 16, 85, 64},
     {{21, 16}, {107, 16}, {107, 80}, {21, 80}},
     21},
    // 33.3, 33.3, 30 x 30 pixels; 25.8, 25.8, 45 x 45 with the margin.
    {"between pixels",
     {100, 100},
     {0.333, 0.333, 0.3, 0.3},
     {26, 26, 45, 45},
     {25.8, 25.8},
     -1,
     {128, 128},
     128.0 / 45,
     {21, 21, 85, 85},
     {{21, 21}, {107, 21}, {107, 107}, {21, 107}},
     28},
    // 160, 160.5, 160 x 162 pixels; 120, 120, 240 x 243: height goes before width.
    {"hardly upright",
     {1024, 1024},
     {160.0 / 1024, 160.5 / 1024, 160.0 / 1024, 162.0 / 1024},
     {120, 120, 240, 243},
     {120, 120},
     1,
     {126, 128},
     128.0 / 243,
     {21, 21, 84, 85},
     {{21, 21}, {105, 21}, {105, 107}, {21, 107}},
     28},
};

// 160, 240, 320 x 9 pixels, of which no third of a whole reduced pixel is left.
const Row kThin{"thin",
                {640, 480},
                {0.25, 0.5, 0.5, 0.01875},
                {80, 238, 480, 14},
                {80, 237.75},
                1,
                {128, 4},
                128.0 / 480,
                {21, 1, 85, 2},
                {{21, 1}, {107, 1}, {107, 3}, {21, 3}},
                0};

/// An object that fills about half of the box.
ObjectScene sceneFor(const Row& row) {
  const cv::Size2d box(row.rect.width * row.image.width, row.rect.height * row.image.height);
  const cv::Point2d topLeft(row.rect.x * row.image.width, row.rect.y * row.image.height);
  const cv::Point middle(topLeft + 0.5 * cv::Point2d(box));
  return objectScene(row.image, middle, cv::Size(box * 0.3), 5);
}

Points contourOf(const Row& row) {
  const double left = row.rect.x * row.image.width;
  const double top = row.rect.y * row.image.height;
  const double right = left + row.rect.width * row.image.width;
  const double bottom = top + row.rect.height * row.image.height;
  return {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
}

cv::Mat reducedPicture(const Row& row, const cv::Mat& image) {
  cv::Mat small = image(row.roi).clone();
  for (int i = 0; i < row.halvings; ++i)
    cv::pyrDown(small, small);
  for (int i = 0; i > row.halvings; --i)
    cv::pyrUp(small, small);
  cv::resize(small, small, row.small, 0, 0, cv::INTER_LINEAR);
  return small;
}

/// The pixels that are object in the reduced picture.
cv::Mat objectByHand(const Row& row, const cv::Mat& image, bool fromOutline) {
  const cv::Mat small = reducedPicture(row, image);
  cv::Mat mask(row.small, CV_8UC1, cv::Scalar(cv::GC_BGD));
  cv::Mat ground;
  cv::Mat object;
  if (fromOutline) {
    cv::Mat fill(row.small, CV_8UC1, cv::Scalar(0));
    cv::drawContours(fill, std::vector<Outline>{row.outline}, 0, 255, -1, 8);
    const int side = row.kernelSide == 0 ? 3 : row.kernelSide;
    cv::erode(fill, fill, cv::getStructuringElement(cv::MORPH_RECT, {side, side}));
    mask.setTo(cv::GC_PR_FGD, fill);
    cv::grabCut(small, mask, {}, ground, object, 5, cv::GC_INIT_WITH_MASK);
  } else {
    cv::grabCut(small, mask, row.box, ground, object, 3, cv::GC_INIT_WITH_RECT);
  }
  return mask == cv::GC_PR_FGD;
}

/// The widest outline, which is that of the largest region as long as one region is all but all.
Points resultByHand(const Row& row, const cv::Mat& image, bool fromOutline) {
  std::vector<Outline> outlines;
  cv::findContours(objectByHand(row, image, fromOutline), outlines, cv::RETR_EXTERNAL,
                   cv::CHAIN_APPROX_SIMPLE);
  if (outlines.empty()) return {};
  Outline widest = *std::max_element(
      outlines.begin(), outlines.end(),
      [](const auto& a, const auto& b) { return cv::contourArea(a) < cv::contourArea(b); });
  cv::approxPolyDP(widest, widest, 0.5, true);
  Points result;
  for (const cv::Point& point : widest) {
    result.emplace_back((point.x / row.factor + row.origin.x) / row.image.width,
                        (point.y / row.factor + row.origin.y) / row.image.height);
  }
  return result;
}

void expectNear(const Points& expected, const Points& actual, const char* name) {
  ASSERT_EQ(expected.size(), actual.size()) << name;
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_LT(cv::norm(expected[i] - actual[i]), 1e-9) << name << ", point " << i;
}

/// The library draws its first guess of the colours from the generator of the thread.
Points applied(const cv::Rect2d& rect, const cv::Mat& image, const Points& contour) {
  cv::setRNGSeed(1);
  return TNVAssistGrabCut().apply(rect, image, contour);
}

class NoAssist final : public TNVAssist {
 public:
  Points apply(const cv::Rect2d&, const cv::Mat&, const Points&) const override { return {}; }
};

/// A mask out of text: a region where there is no dot.
cv::Mat maskOf(const std::vector<std::string>& rows) {
  cv::Mat mask(static_cast<int>(rows.size()), static_cast<int>(rows.front().size()), CV_8UC1,
               cv::Scalar(0));
  for (int y = 0; y < mask.rows; ++y) {
    for (int x = 0; x < mask.cols; ++x) {
      const bool set = rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] != '.';
      mask.at<uchar>(y, x) = set ? 255 : 0;
    }
  }
  return mask;
}

Outline largest(const std::vector<std::string>& rows) {
  return tnv::largestRegionOutline(maskOf(rows));
}

}  // namespace

TEST(TNVAssist, NamesOfBaseAndGrabCut) {
  EXPECT_EQ("none", NoAssist().name);
  EXPECT_EQ("GrabCut", TNVAssistGrabCut().name);
}

TEST(LargestRegionOutline, NoRegionHasNone) {
  EXPECT_THAT(largest({"....", "...."}), IsEmpty());
}

TEST(LargestRegionOutline, MostPixelsWin) {
  EXPECT_THAT(
      largest({"###....",  //
               "###....",  //
               "....###",  //
               "....###",  //
               "....###"}),
      UnorderedElementsAre(cv::Point(4, 2), cv::Point(6, 2), cv::Point(6, 4), cv::Point(4, 4)));
}

TEST(LargestRegionOutline, LowerLabelWinsATie) {
  EXPECT_THAT(
      largest({"....###",  //
               "....###",  //
               ".......",  //
               "###....",  //
               "###...."}),
      UnorderedElementsAre(cv::Point(4, 0), cv::Point(6, 0), cv::Point(6, 1), cv::Point(4, 1)));
}

TEST(LargestRegionOutline, PixelsThatTouchAtACornerBelongTogether) {
  // Either block alone has fewer pixels than the one below.
  EXPECT_THAT(largest({"###......",  //
                       "###......",  //
                       "...###...",  //
                       "...###...",  //
                       ".........",  //
                       "####.....",  //
                       "####....."}),
              testing::Contains(cv::Point(5, 3)));
}

TEST(LargestRegionOutline, CountsPixelsAndNotTheEnclosedArea) {
  // The ring encloses more, the block has more pixels.
  EXPECT_THAT(largest({"#######......",  //
                       "#.....#.#####",  //
                       "#.....#.#####",  //
                       "#.....#.#####",  //
                       "#.....#.#####",  //
                       "#######.#####"}),
              testing::Contains(cv::Point(12, 1)));
}

TEST(LargestRegionOutline, OutlineOfAHoleIsNotTaken) {
  EXPECT_THAT(
      largest({"######",  //
               "######",  //
               "##..##",  //
               "##..##",  //
               "######",  //
               "######"}),
      UnorderedElementsAre(cv::Point(0, 0), cv::Point(5, 0), cv::Point(5, 5), cv::Point(0, 5)));
}

TEST(LargestRegionOutline, RegionThatEnclosesNoAreaHasNone) {
  EXPECT_THAT(largest({"......", "######", "......"}), IsEmpty());
  EXPECT_THAT(largest({"...", ".#.", "..."}), IsEmpty());
  EXPECT_THAT(largest({"#..", ".#.", "..#"}), IsEmpty());
}

TEST(LargestRegionOutline, LargestRegionWithoutAreaIsNotReplacedByASmaller) {
  EXPECT_THAT(largest({"##....", "##....", "......", "######"}), IsEmpty());
}

TEST(LargestRegionOutline, LeavesTheMaskAsItIs) {
  const cv::Mat mask = maskOf({"##..", "##..", "...#"});
  const cv::Mat before = mask.clone();
  tnv::largestRegionOutline(mask);
  EXPECT_EQ(0, cv::norm(before, mask, cv::NORM_INF));
}

TEST(TNVAssistGrabCut, OutlineStartsFromItsCoreWithFiveIterations) {
  for (const Row& row : kRows) {
    const ObjectScene scene = sceneFor(row);
    cv::setRNGSeed(1);
    const Points expected = resultByHand(row, scene.picture, true);
    ASSERT_GE(expected.size(), 2u) << row.name;
    expectNear(expected, applied(row.rect, scene.picture, contourOf(row)), row.name);
  }
}

namespace {

/// The outermost points found, in pixels of the reduced picture.
cv::Rect2d reducedBoxOf(const Points& found, cv::Size image, cv::Point2d origin, double factor) {
  cv::Point2d low(1e9, 1e9);
  cv::Point2d high(-1e9, -1e9);
  for (const cv::Point2d& point : found) {
    const cv::Point2d pixel(point.x * image.width, point.y * image.height);
    const cv::Point2d reduced = (pixel - origin) * factor;
    low = {std::min(low.x, reduced.x), std::min(low.y, reduced.y)};
    high = {std::max(high.x, reduced.x), std::max(high.y, reduced.y)};
  }
  return {low, high};
}

/// An object of one colour on ground of another.
cv::Mat plainScene(cv::Size image, const cv::Rect& object) {
  cv::Mat picture(image, CV_8UC3, cv::Scalar(20, 200, 20));
  cv::rectangle(picture, object, cv::Scalar(200, 20, 200), cv::FILLED);
  return picture;
}

}  // namespace

TEST(TNVAssistGrabCut, OutlineWithoutAKernelIsShrunkByThreeTimesThree) {
  // Of the 4 reduced rows the outline fills 1 to 3, of the columns 21 to 107. A kernel of three
  // takes the first row, the first and the last column; the last row stays, since nothing lies
  // below it. The object, which begins in the row and the column that go, would hold them.
  const cv::Mat picture = plainScene(kThin.image, {160, 242, 320, 60});
  const Points found = applied(kThin.rect, picture, contourOf(kThin));
  ASSERT_FALSE(found.empty());
  const cv::Rect2d reduced = reducedBoxOf(found, kThin.image, kThin.origin, kThin.factor);
  EXPECT_NEAR(21 + 1, reduced.x, 1e-3);
  EXPECT_NEAR(107 - 1, reduced.br().x, 1e-3);
  EXPECT_NEAR(1 + 1, reduced.y, 1e-3);
  EXPECT_NEAR(3, reduced.br().y, 1e-3);
}

TEST(TNVAssistGrabCut, CoreIsShrunkByAThirdRoundedDown) {
  // 160, 120, 320 x 235 pixels; 80, 61.25, 480 x 352.5 with the margin, of which 480 become 128.
  // The outline fills the columns 21 to 107 and the rows 16 to 78. The 235 pixels become 62.67, of
  // which 62 count, a third of which is 20: a kernel of 20 takes 10 before and 9 behind, one of 21
  // would take 10 on both sides.
  const cv::Size image(640, 480);
  const cv::Rect2d mark(160, 120, 320, 235);
  const cv::Rect2d rect(0.25, 0.25, 0.5, 235.0 / 480);
  // Just the core, columns 31 to 98 and rows 26 to 69, 3.75 pixels each.
  const cv::Mat picture = plainScene(image, {196, 158, 255, 165});
  const Points found =
      applied(rect, picture, {mark.tl(), {mark.br().x, mark.y}, mark.br(), {mark.x, mark.br().y}});
  ASSERT_FALSE(found.empty());
  const cv::Rect2d reduced = reducedBoxOf(found, image, {80, 61.25}, 128.0 / 480);
  EXPECT_NEAR(21 + 10, reduced.x, 1e-3);
  EXPECT_NEAR(107 - 9, reduced.br().x, 1e-3);
  EXPECT_NEAR(16 + 10, reduced.y, 1e-3);
  EXPECT_NEAR(78 - 9, reduced.br().y, 1e-3);
}

TEST(TNVAssistGrabCut, CoreOfAMarkLargerThanThePictureIsShrunkByAThirdOfTheMark) {
  // -800, -500, 1280 x 720 pixels, of which 480 x 220 lie on the picture. With the margin it is 640
  // x 400, of which 640 pixels become 128: 256 x 144 reduced ones, a third of 144 is 48.
  const Row row{"far over two edges",
                {640, 480},
                {-1.25, -500.0 / 480, 2, 1.5},
                {0, 0, 640, 400},
                {0, 0},
                2,
                {128, 80},
                0.2,
                {},
                {{-160, -100}, {96, -100}, {96, 44}, {-160, 44}},
                48};
  const ObjectScene scene = objectScene(row.image, {150, 60}, {130, 40}, 5);
  cv::setRNGSeed(1);
  const Points expected = resultByHand(row, scene.picture, true);
  ASSERT_GE(expected.size(), 2U);
  expectNear(expected, applied(row.rect, scene.picture, contourOf(row)), row.name);
}

TEST(TNVAssistGrabCut, WithoutAnOutlineTheBoxIsTakenWithThreeIterations) {
  for (const Row& row : kRows) {
    const ObjectScene scene = sceneFor(row);
    cv::setRNGSeed(1);
    const Points expected = resultByHand(row, scene.picture, false);
    ASSERT_GE(expected.size(), 2u) << row.name;
    expectNear(expected, applied(row.rect, scene.picture, {}), row.name);
  }
}

TEST(TNVAssistGrabCut, FewerThanFourPointsAreNothing) {
  // With the margin the box is the whole picture, which is neither enlarged nor reduced.
  const cv::Rect2d rect(1.0 / 6, 1.0 / 6, 2.0 / 3, 2.0 / 3);
  const auto resultFor = [&](const Outline& object) {
    cv::Mat picture(128, 128, CV_8UC3, cv::Scalar(20, 200, 20));
    cv::fillPoly(picture, std::vector<Outline>{object}, cv::Scalar(200, 20, 200));
    return applied(rect, picture, {});
  };
  EXPECT_THAT(resultFor({{40, 40}, {90, 40}, {90, 90}}), IsEmpty());
  EXPECT_THAT(resultFor({{40, 40}, {90, 40}, {90, 90}, {40, 90}}),
              UnorderedElementsAre(
                  cv::Point2d(40.0 / 128, 40.0 / 128), cv::Point2d(90.0 / 128, 40.0 / 128),
                  cv::Point2d(90.0 / 128, 90.0 / 128), cv::Point2d(40.0 / 128, 90.0 / 128)));
}

TEST(TNVAssistGrabCut, PointsOfOneStraightEdgeAreDropped) {
  // A corner that is off the straight line by less than half a pixel is no corner.
  const cv::Rect2d rect(1.0 / 6, 1.0 / 6, 2.0 / 3, 2.0 / 3);
  cv::Mat picture(128, 128, CV_8UC3, cv::Scalar(20, 200, 20));
  cv::fillPoly(picture, std::vector<Outline>{{{30, 40}, {98, 50}, {60, 100}}},
               cv::Scalar(200, 20, 200));
  cv::Mat mask;
  cv::inRange(picture, cv::Scalar(200, 20, 200), cv::Scalar(200, 20, 200), mask);
  const Outline whole = tnv::largestRegionOutline(mask);
  Outline simple;
  cv::approxPolyDP(whole, simple, 0.5, true);
  ASSERT_LT(simple.size(), whole.size());
  EXPECT_EQ(simple.size(), applied(rect, picture, {}).size());
}

TEST(TNVAssistGrabCut, TwoHalvesAtTheEdgeOfThePictureAreNoFailure) {
  // 71.5, 71.5, 40 x 40 pixels: the neighbourhood starts at 61.5 and is 39.5 wide and high, which
  // rounded one by one would reach to 102.
  constexpr double kSide = 101;
  const cv::Rect2d rect(71.5 / kSide, 71.5 / kSide, 40 / kSide, 40 / kSide);
  ASSERT_EQ(61.5, rect.x * kSide - 0.25 * (rect.width * kSide));
  const ObjectScene scene = objectScene({101, 101}, {86, 86}, {8, 8}, 3);
  EXPECT_FALSE(applied(rect, scene.picture, {}).empty());
}

TEST(TNVAssistGrabCut, ClippedToNothingThrows) {
  const cv::Mat picture(100, 100, CV_8UC3, cv::Scalar(1, 2, 3));
  for (const cv::Rect2d& rect :
       {cv::Rect2d(1.5, 0.2, 0.2, 0.2), cv::Rect2d(0.2, -1.0, 0.2, 0.2), cv::Rect2d(0.5, 0.5, 0, 0),
        cv::Rect2d(0.9, 0.9, -0.5, -0.5), cv::Rect2d(std::nan(""), 0.1, 0.5, 0.5)}) {
    EXPECT_THROW(applied(rect, picture, {}), cv::Exception) << rect;
    EXPECT_THROW(applied(rect, picture, {{20, 20}, {40, 20}, {40, 40}}), cv::Exception) << rect;
  }
  EXPECT_THROW(applied({0.2, 0.2, 0.5, 0.5}, cv::Mat(), {}), cv::Exception);
}

TEST(TNVAssistGrabCut, NothingToTellApartThrows) {
  const cv::Mat picture = objectScene({100, 100}, {50, 50}, {20, 20}, 3).picture;
  const Points whole{{0, 0}, {100, 0}, {100, 100}, {0, 100}};
  const Points line{{20, 50}, {80, 50}};
  EXPECT_THROW(applied({0, 0, 1, 1}, picture, whole), cv::Exception);
  EXPECT_THROW(applied({0, 0, 1, 1}, picture, {}), cv::Exception);
  EXPECT_THROW(applied({0.2, 0.2, 0.6, 0.6}, picture, line), cv::Exception);
}

TEST(TNVAssistGrabCut, HostileNumbersEndInAResultOrAnException) {
  const cv::Mat picture = objectScene({60, 40}, {30, 20}, {9, 9}, 3).picture;
  const auto tryTo = [&](const cv::Rect2d& rect, const Points& contour) {
    try {
      for (const cv::Point2d& point : applied(rect, picture, contour))
        EXPECT_TRUE(std::isfinite(point.x) && std::isfinite(point.y)) << rect;
    } catch (const cv::Exception&) {
    }
  };
  for (const double a : hostileNumbers()) {
    for (const double b : {a, 0.3, 1e3}) {
      const Points contour{{10, 10}, {a, 10}, {b, a}, {10, b}};
      for (const Points& outline : {Points(), contour}) {
        tryTo({a, 0.2, b, 0.5}, outline);
        tryTo({0.2, a, 0.5, b}, outline);
      }
      tryTo({0.2, 0.2, 0.5, 0.5}, contour);
    }
  }
}

namespace {

/// The box of the object, larger by a factor on each side, relative to the picture.
cv::Rect2d roughBox(const ObjectScene& scene, double factor) {
  const cv::Rect box = cv::boundingRect(scene.object);
  const cv::Size2d size(factor * box.width / scene.object.cols,
                        factor * box.height / scene.object.rows);
  const cv::Point2d centre((box.x + 0.5 * box.width) / scene.object.cols,
                           (box.y + 0.5 * box.height) / scene.object.rows);
  return {centre - cv::Point2d(size) * 0.5, size};
}

Points cornersOf(const cv::Rect2d& box, double width, double height) {
  return {{box.x * width, box.y * height},
          {box.br().x * width, box.y * height},
          {box.br().x * width, box.br().y * height},
          {box.x * width, box.br().y * height}};
}

}  // namespace

TEST(TNVAssistGrabCut, FindsObjectsThatTheMarkSurroundsLoosely) {
  constexpr int kWidth = 640;
  constexpr int kHeight = 480;
  for (unsigned seed = 1; seed <= 12; ++seed) {
    const ObjectScene scene = objectScene({kWidth, kHeight}, {300, 220}, {80, 60}, seed);
    const cv::Rect2d rough = roughBox(scene, 1.6);
    const double before =
        overlap(scene.object, areaWithin(cornersOf(rough, 1, 1), scene.object.size()));
    for (const bool withOutline : {true, false}) {
      const Points contour = withOutline ? cornersOf(rough, kWidth, kHeight) : Points();
      const Points found = applied(rough, scene.picture, contour);
      const double after = overlap(scene.object, areaWithin(found, scene.object.size()));
      EXPECT_LT(before, 0.4) << seed;
      EXPECT_GT(after, 0.9) << seed << (withOutline ? ", outline" : ", box");
    }
  }
}

TEST(TNVAssistGrabCut, OfAnOutlineOnlyTheCoreCanBecomeObject) {
  // The mark covers 160, 120, 320 x 240 pixels, the object 220, 140, 200 x 200 of them.
  const ObjectScene scene = objectScene({640, 480}, {320, 240}, {100, 100}, 2);
  const cv::Rect2d rect(0.25, 0.25, 0.5, 0.5);
  // A kernel of 21, a third of the 64 reduced pixels, takes 10 on each side, which are 37.5.
  const cv::Rect2d core(160 + 36, 120 + 36, 320 - 72, 240 - 72);
  const Points found = applied(rect, scene.picture, cornersOf(rect, 640, 480));
  ASSERT_FALSE(found.empty());
  for (const cv::Point2d& point : found)
    EXPECT_TRUE(core.contains({point.x * 640, point.y * 480})) << point;
}

TEST(TNVAssistGrabCut, WithoutAnOutlineTheWholeBoxCanBecomeObject) {
  const ObjectScene scene = objectScene({640, 480}, {320, 240}, {155, 115}, 2);
  const Points found = applied({0.25, 0.25, 0.5, 0.5}, scene.picture, {});
  EXPECT_GT(overlap(scene.object, areaWithin(found, {640, 480})), 0.8);
}

TEST(TNVAssistGrabCut, LeavesThePictureAsItIs) {
  const ObjectScene scene = objectScene({128, 128}, {64, 64}, {20, 20}, 2);
  const cv::Mat before = scene.picture.clone();
  applied({0.2, 0.2, 0.6, 0.6}, scene.picture, {{26, 26}, {102, 26}, {102, 102}, {26, 102}});
  EXPECT_EQ(0, cv::norm(before, scene.picture, cv::NORM_INF));
}

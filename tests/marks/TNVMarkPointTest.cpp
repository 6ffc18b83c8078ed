#include "marks/TNVMarkPoint.h"

#include <climits>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marks/PathTools.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

}  // namespace

TEST(TNVMarkPoint, DefaultMadePointStandsNowhere) {
  const TNVMarkPoint mark;
  EXPECT_EQ(mark.type, "Point");
  EXPECT_EQ(mark.center, cv::Point2d(-1, -1));
}

TEST(TNVMarkPoint, DesignedPointIsItsCentre) {
  const TNVMarkPoint mark(cv::Point2d(0.25, 0.75));
  EXPECT_EQ(mark.type, "Point");
  EXPECT_EQ(mark.center, cv::Point2d(0.25, 0.75));
}

TEST(TNVMarkPoint, AnswersOfTheKind) {
  TNVMarkPoint mark(cv::Point2d(0.25, 0.75));
  mark.poiSize = {0.125, 0.125};
  for (const bool variant : {false, true}) {
    EXPECT_EQ(mark.getMinConstructionPoints(variant), 1);
    EXPECT_EQ(mark.getMaxConstructionPoints(variant), 1);
  }
  EXPECT_EQ(mark.getTypeName(false), "Point");
  EXPECT_EQ(mark.getTypeName(true), "");
  EXPECT_EQ(mark.getRelSize({640, 480}), cv::Point2d(0, 0));
  EXPECT_THAT(mark.getContour({640, 480}), IsEmpty());
  EXPECT_THAT(mark.getPOIModes(), IsEmpty());
  EXPECT_EQ(mark.getPOICountForSize({640, 480}), 0);
  for (const char* mode : {"Divided", "Center", "nonsense", ""}) {
    EXPECT_FALSE(mark.getPOIModeSupportsValue(mode)) << mode;
    for (const int count : {INT_MIN, 0, 1, 7})
      EXPECT_THAT(mark.getPOIsGenerated(mode, {640, 480}, count), ElementsAre(mark.center)) << mode;
  }
}

TEST(TNVMarkPoint, CopyKeepsTheCentre) {
  TNVMarkPoint mark(cv::Point2d(0.25, 0.75));
  mark.classIdx = {4};
  const TNVMarkPoint copy(mark);
  EXPECT_EQ(copy.type, "Point");
  EXPECT_EQ(copy.center, mark.center);
  EXPECT_THAT(copy.classIdx, ElementsAre(4));
}

TEST(TNVMarkPoint, BoxIsFortySevenPixelsAroundThePixelOfThePoint) {
  EXPECT_EQ(TNVMarkPoint(cv::Point2d(0.5, 0.25)).getPixelRect({640, 480}),
            cv::Rect(297, 97, 47, 47));
  EXPECT_EQ(TNVMarkPoint(cv::Point2d(0, 1)).getPixelRect({640, 480}), cv::Rect(-23, 457, 47, 47));
  // 2.5 and 7.5 go to the even 2 and 8.
  EXPECT_EQ(TNVMarkPoint(cv::Point2d(0.25, 0.75)).getPixelRect({10, 10}),
            cv::Rect(-21, -15, 47, 47));
}

TEST(TNVMarkPoint, SizeIsIgnoredButRenewsTheTag) {
  TNVMarkPoint mark(cv::Point2d(0.25, 0.75));
  const int tag = mark.changeTag;
  mark.setRelSize({0.5, 0.5}, {0.25, 0.25}, {640, 480});
  EXPECT_NE(mark.changeTag, tag);
  EXPECT_EQ(mark.center, cv::Point2d(0.25, 0.75));
  EXPECT_EQ(mark.getRelSize({640, 480}), cv::Point2d(0, 0));
}

TEST(TNVMarkPoint, UpdateMovesThePointAndLosesThePois) {
  TNVMarkPoint mark(cv::Point2d(0.25, 0.75));
  mark.pois = {{0.25, 0.75}, {0.5, 0.5}};
  mark.update({0.5, 0.625}, {0.25, 0.25}, {}, {640, 480});
  EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.625));
  ASSERT_EQ(mark.pois.size(), 2U);
  for (const cv::Point2d& poi : mark.pois) {
    EXPECT_TRUE(std::isnan(poi.x));
    EXPECT_TRUE(std::isnan(poi.y));
  }
}

TEST(TNVMarkPoint, FitsToTheMiddleOfTheBox) {
  TNVMarkPoint mark(cv::Point2d(0.25, 0.75));
  mark.fitToPoints({{0.25, 0.5}, {0.5, 0.75}}, {640, 480});
  EXPECT_EQ(mark.center, cv::Point2d(0.375, 0.625));
}

TEST(TNVMarkPoint, CursorLessThanNineteenPixelsAwayHits) {
  const TNVMarkPoint mark(cv::Point2d(0.5, 0.5));
  struct Row {
    cv::Point2d pixel;
    double distance;
    bool over;
  };
  // The distance is told for a miss as well. On 512 by 256 pixels the point is at (256, 128).
  for (const Row& row :
       {Row{{256, 128}, 0, true}, Row{{274, 128}, 18, true}, Row{{274.99, 128}, 18.99, true},
        Row{{275, 128}, 19, false}, Row{{256, 109}, 19, false}, Row{{256, 110}, 18, true},
        Row{{265, 140}, 15, true}, Row{{286, 168}, 50, false}}) {
    const cv::Point2d cursor(row.pixel.x / 512, row.pixel.y / 256);
    double distance = -1;
    EXPECT_EQ(mark.isMouseOver(cursor, {512, 256}, &distance), row.over) << row.pixel;
    EXPECT_NEAR(distance, row.distance, 1e-9);
    EXPECT_EQ(mark.isMouseOver(cursor, {512, 256}), row.over) << row.pixel;
  }
}

TEST(TNVMarkPoint, FileHoldsTheBaseAlone) {
  TNVMarkPoint mark(cv::Point2d(0.1, 1.0 / 3.0));
  mark.classIdx = {2};
  const std::string xml = writtenXml(mark);
  EXPECT_THAT(xml, HasSubstr("2</ClassIdx></Mark0>\n"));
  const auto read = markFromXml<TNVMarkPoint>(xml);
  EXPECT_EQ(read.type, "Point");
  EXPECT_EQ(read.center, mark.center);
  EXPECT_EQ(read.classIdx, mark.classIdx);
}

namespace {

/// The point, and its ring of three tenths on the part of the view that it needs.
void drawPointReference(cv::Mat& view, cv::Point pixel, const cv::Rect& region,
                        const PenState& pen) {
  circleReference(view, pixel, pen.colour, pen.thickness);
  if (region.empty()) return;
  cv::Mat ringed = view(region).clone();
  cv::circle(ringed, pixel - region.tl(), 19, pen.colour, 1, cv::LINE_AA, 0);
  cv::addWeighted(view(region), 0.7, ringed, 0.3, 0.0, view(region));
}

struct TNVMarkPointOnView : ::testing::Test {
  /// At (90.4, 70.2) on the view.
  TNVMarkPoint mark{cv::Point2d(0.452, 0.585)};
  cv::Point pixel{90, 70};
  cv::Rect region{69, 49, 43, 43};
};

}  // namespace

TEST_F(TNVMarkPointOnView, EachStateHasItsPen) {
  for (const PenState& state : penStates()) {
    for (const bool designing : {false, true}) {
      for (const bool filled : {false, true}) {
        SCOPED_TRACE(nameOf(state, designing, filled));
        take(mark, state);
        mark.designPoint = {0.5, 0.125};
        cv::Mat expected = emptyView();
        // The frame of no size is the pixel itself.
        if (state.selected) expected.at<cv::Vec3b>(70, 90) = pixelOf(state.colour);
        drawPointReference(expected, pixel, region, state);
        const cv::Mat seen = viewWith(mark, styleNamed(state.style, filled), 0, designing);
        EXPECT_TRUE(samePixels(expected, seen));
      }
    }
  }
}

TEST_F(TNVMarkPointOnView, PoisLieUnderThePoint) {
  mark.poiVisible = true;
  mark.pois = {{0.45, 0.58}};
  mark.poiSize = {0.05, 0.1};
  for (const bool designing : {false, true}) {
    cv::Mat expected = emptyView();
    boxReference(expected, {{85, 64}}, {255, 255, 255});
    drawPointReference(expected, pixel, region, penStates().front());
    EXPECT_TRUE(samePixels(expected, viewWith(mark, styleNamed("White"), 0, designing)));
  }
}

TEST_F(TNVMarkPointOnView, LabelsAreTheClassesAlone) {
  mark.classIdx = {12, 11};
  const std::vector<std::string> labels{"", "0,5", "cat,dog", "", "", ""};
  for (std::size_t info = 0; info < labels.size(); ++info) {
    for (const bool designing : {false, true}) {
      cv::Mat expected = emptyView();
      drawPointReference(expected, pixel, region, penStates().front());
      textReference(expected, labels[info], {111, 70}, {255, 255, 255});
      const cv::Mat seen = viewWith(mark, styleNamed("White"), static_cast<int>(info), designing);
      EXPECT_TRUE(samePixels(expected, seen)) << info << designing;
    }
  }
}

TEST(TNVMarkPoint, LabelIsRoundedApartFromThePoint) {
  const ThreeClasses classes;
  TNVMarkPoint mark(cv::Point2d(33.5 / 128, 31.625 / 64));
  mark.classIdx = {12};
  cv::Mat seen = patternedPicture(128, 64);
  mark.draw(seen, {1280, 640}, styleNamed("White"), infoOf(1), classes.list(), false);
  cv::Mat expected = patternedPicture(128, 64);
  // 33.5 goes to 34, and 54.5 to 54.
  drawPointReference(expected, {34, 32}, {13, 11, 43, 43}, penStates().front());
  textReference(expected, "5", {54, 32}, {255, 255, 255});
  EXPECT_TRUE(samePixels(expected, seen));
}

TEST(TNVMarkPoint, RingStaysAroundThePointAtTheBorder) {
  struct Row {
    cv::Point2d centre;
    cv::Point pixel;
    cv::Rect region;
  };
  // On 200 by 120 pixels.
  for (const Row& row :
       {Row{{0, 0}, {0, 0}, {0, 0, 22, 22}}, Row{{1, 1}, {200, 120}, {179, 99, 21, 21}},
        Row{{0, 1}, {0, 120}, {0, 99, 22, 21}}, Row{{0.05, 0.95}, {10, 114}, {0, 93, 32, 27}},
        // Just outside, at the last pixel that has a ring, and further off.
        Row{{-0.05, 0.5}, {-10, 60}, {0, 39, 12, 43}},
        Row{{-0.105, 0.5}, {-21, 60}, {0, 39, 1, 43}}, Row{{1.1, 0.5}, {220, 60}, {199, 39, 1, 43}},
        Row{{-0.11, 0.5}, {-22, 60}, {}}, Row{{1.105, 0.5}, {221, 60}, {}},
        Row{{0.5, -3}, {100, -360}, {}}, Row{{0.5, 7}, {100, 840}, {}}}) {
    TNVMarkPoint mark(row.centre);
    cv::Mat expected = emptyView();
    drawPointReference(expected, row.pixel, row.region, penStates().front());
    EXPECT_TRUE(samePixels(expected, viewWith(mark, styleNamed("White"), 0, false))) << row.centre;
  }
}

TEST(TNVMarkPoint, PointOnASinglePixelIsDrawn) {
  const ThreeClasses classes;
  TNVMarkPoint mark(cv::Point2d(0.25, 0.25));
  cv::Mat seen = patternedPicture(1, 1);
  mark.draw(seen, {1, 1}, styleNamed("White"), infoOf(0), classes.list(), false);
  cv::Mat expected = patternedPicture(1, 1);
  drawPointReference(expected, {0, 0}, {0, 0, 1, 1}, penStates().front());
  EXPECT_TRUE(samePixels(expected, seen));
}

TEST(TNVMarkPoint, HostileGeometryIsDrawnAndAnswered) {
  const ThreeClasses classes;
  for (const double x : hostileNumbers()) {
    for (const double y : hostileNumbers()) {
      TNVMarkPoint mark(cv::Point2d(x, y));
      mark.poiSize = {y, x};
      mark.pois = {{x, y}};
      mark.poiVisible = true;
      for (int state = 0; state < 4; ++state) {
        mark.hovered = (state & 1) != 0;
        mark.selected = (state & 2) != 0;
        for (const cv::Size size : {cv::Size(50, 30), cv::Size(1, 1)}) {
          cv::Mat view = patternedPicture(size.width, size.height);
          mark.draw(view, size, styleNamed("Colored", true), infoOf(1), classes.list(), false);
        }
      }
      double distance = 0;
      mark.isMouseOver({0.5, x}, {640, 480}, &distance);
      EXPECT_EQ(mark.getPixelRect({640, 480}).size(), cv::Size(47, 47));
      EXPECT_EQ(mark.getPOICountForSize({640, 480}), 0);
      mark.fitToPoints({{x, y}, {y, 0.5}}, {640, 480});
      mark.update({y, x}, {x, y}, {}, {640, 480});
    }
  }
}

#include "marks/TNVMarkPolyLine.h"

#include <climits>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marks/PathTools.h"
#include "support/LogCapture.h"

namespace {

using Points = TNVMark::Points;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// Over three sides of a square that has an edge length of half the picture.
const Points kThreeSides{{0.25, 0.75}, {0.25, 0.25}, {0.75, 0.25}, {0.75, 0.75}};

}  // namespace

TEST(TNVMarkPolyLine, DefaultMadePathHasNoVertices) {
  const TNVMarkPolyLine mark;
  EXPECT_EQ(mark.type, "PolyLine");
  EXPECT_THAT(mark.polyPoints, IsEmpty());
  EXPECT_FALSE(mark.closed);
  EXPECT_EQ(mark.center, cv::Point2d(-1, -1));
  EXPECT_EQ(mark.getRelSize({640, 480}), cv::Point2d(0, 0));
}

TEST(TNVMarkPolyLine, TypeIsTheSameOpenOrClosed) {
  for (const bool closed : {false, true}) {
    const TNVMarkPolyLine mark(kThreeSides, closed);
    EXPECT_EQ(mark.type, "PolyLine");
    EXPECT_EQ(mark.closed, closed);
    EXPECT_EQ(mark.polyPoints, kThreeSides);
    EXPECT_EQ(mark.designPoint, cv::Point2d(-1, -1));
  }
}

TEST(TNVMarkPolyLine, CentreIsThatOfTheBoxInTenThousandths) {
  struct Row {
    Points vertices;
    cv::Point2d centre;
  };
  for (const Row& row : {Row{kThreeSides, {0.5, 0.5}},
                         // Not the mean: most of the vertices are left.
                         Row{{{0.1, 0.2}, {0.1, 0.3}, {0.1, 0.4}, {0.5, 0.2}}, {0.3, 0.3}},
                         // Units 1000 to 2001 are 1002 wide: 1000 + 501.
                         Row{{{0.1, 0.1}, {0.2001, 0.2001}}, {0.1501, 0.1501}},
                         // Rounded to 1234 and 1239, 6 wide; to 5000 and 5000, 1 wide.
                         Row{{{0.12344, 0.50004}, {0.12386, 0.49996}}, {0.1237, 0.5}},
                         Row{{{0.25, 0.75}}, {0.25, 0.75}},
                         Row{{{-0.1, -0.3}, {0.3, -0.1}}, {0.1, -0.2}}, Row{{}, {0, 0}}}) {
    expectPoints({row.centre}, {TNVMarkPolyLine(row.vertices, true).center});
  }
}

TEST(TNVMarkPolyLine, AnswersOfTheKind) {
  const TNVMarkPolyLine mark(kThreeSides, true);
  for (const bool variant : {false, true}) {
    EXPECT_EQ(mark.getMinConstructionPoints(variant), 3);
    EXPECT_EQ(mark.getMaxConstructionPoints(variant), 999);
  }
  EXPECT_EQ(mark.getTypeName(false), "PolyLine");
  EXPECT_EQ(mark.getTypeName(true), "PolyLine Closed");
  EXPECT_EQ(mark.getPixelRect({640, 480}), cv::Rect(0, 0, 0, 0));
  EXPECT_THAT(mark.getPOIModes(), ElementsAre("Endpoints", "Poly Points", "Divided"));
  EXPECT_TRUE(mark.getPOIModeSupportsValue("Divided"));
  for (const char* mode : {"Endpoints", "Poly Points", "divided", ""})
    EXPECT_FALSE(mark.getPOIModeSupportsValue(mode)) << mode;
}

TEST(TNVMarkPolyLine, CopyTakesVerticesAndClosing) {
  for (const bool closed : {false, true}) {
    TNVMarkPolyLine mark(kThreeSides, closed);
    mark.center = {0.25, 0.75};
    mark.classIdx = {4};
    const TNVMarkPolyLine copy(mark);
    EXPECT_EQ(copy.type, "PolyLine");
    EXPECT_EQ(copy.polyPoints, kThreeSides);
    EXPECT_EQ(copy.closed, closed);
    EXPECT_EQ(copy.center, mark.center);
    EXPECT_THAT(copy.classIdx, ElementsAre(4));
  }
}

TEST(TNVMarkPolyLine, SizeIsOnePixelLargerThanTheDifference) {
  EXPECT_EQ(TNVMarkPolyLine(kThreeSides, false).getRelSize({64, 32}),
            cv::Point2d(33.0 / 64, 17.0 / 32));
  // 10.4 and 20.6 round to 10 and 21.
  EXPECT_EQ(TNVMarkPolyLine({{0.104, 0.5}, {0.206, 0.5}, {0.15, 0.5}}, true).getRelSize({100, 100}),
            cv::Point2d(0.12, 0.01));
  EXPECT_EQ(TNVMarkPolyLine({{0.5, 0.5}}, true).getRelSize({64, 32}),
            cv::Point2d(1.0 / 64, 1.0 / 32));
}

TEST(TNVMarkPolyLine, ResizingStretchesAboutTheOldCentreAndMoves) {
  TNVMarkPolyLine mark({{0.2, 0.2}, {0.29, 0.39}, {0.25, 0.3}}, false);
  mark.center = {0.25, 0.3};
  const int tag = mark.changeTag;
  mark.setRelSize({0.5, 0.6}, {0.2, 0.1}, {100, 100});
  // The size before was 0.1 by 0.2: (0.2 - 0.25) 2 + 0.25 + 0.25 and (0.2 - 0.3) 0.5 + 0.3 + 0.3.
  expectPoints({{0.4, 0.55}, {0.58, 0.645}, {0.5, 0.6}}, mark.polyPoints);
  EXPECT_EQ(mark.center, cv::Point2d(0.25, 0.3));
  EXPECT_NE(mark.changeTag, tag);
}

TEST(TNVMarkPolyLine, UpdateMovesVerticesCentreAndPois) {
  TNVMarkPolyLine mark(kThreeSides, true);
  mark.pois = {{0.25, 0.25}};
  mark.update({0.375, 0.625}, mark.getRelSize({64, 64}), {}, {64, 64});
  expectPoints({{0.125, 0.875}, {0.125, 0.375}, {0.625, 0.375}, {0.625, 0.875}}, mark.polyPoints);
  EXPECT_EQ(mark.center, cv::Point2d(0.375, 0.625));
  expectPoints({{0.125, 0.375}}, mark.pois);
}

TEST(TNVMarkPolyLine, UprightPathIsResizedToFiniteVertices) {
  TNVMarkPolyLine mark({{0.5, 0.25}, {0.5, 0.5}, {0.5, 0.74}}, false);
  EXPECT_EQ(mark.getRelSize({100, 100}), cv::Point2d(0.01, 0.5));
  mark.update({0.5, 0.495}, {0.3, 0.25}, {}, {100, 100});
  // 50 pixels high, of which one half remains, about 0.495.
  expectPoints({{0.5, 0.3725}, {0.5, 0.4975}, {0.5, 0.6175}}, mark.polyPoints);
}

TEST(TNVMarkPolyLine, FittingTakesThePointsAndMovesNothingElse) {
  TNVMarkPolyLine mark(kThreeSides, true);
  mark.pois = {{0.25, 0.5}};
  const int tag = mark.changeTag;
  // A single point has no box to fit to, but is taken as well.
  for (const Points& points : {Points{{0.1, 0.2}, {0.9, 0.3}, {0.5, 0.8}}, Points{{0.3, 0.3}}}) {
    mark.fitToPoints(points, {640, 480});
    EXPECT_EQ(mark.polyPoints, points);
  }
  EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.5));
  EXPECT_THAT(mark.pois, ElementsAre(cv::Point2d(0.25, 0.5)));
  EXPECT_TRUE(mark.closed);
  TNVMarkPolyLine other(kThreeSides, true);
  other.changeTag = tag;
  other.fitToPoints({}, {640, 480});
  EXPECT_THAT(other.polyPoints, IsEmpty());
  EXPECT_NE(other.changeTag, tag);
}

TEST(TNVMarkPolyLine, ContourIsTheVerticesOfAClosedPath) {
  EXPECT_THAT(TNVMarkPolyLine(kThreeSides, false).getContour({64, 32}), IsEmpty());
  EXPECT_THAT(TNVMarkPolyLine(kThreeSides, true).getContour({64, 30}),
              ElementsAre(cv::Point2d(16, 22.5), cv::Point2d(16, 7.5), cv::Point2d(48, 7.5),
                          cv::Point2d(48, 22.5)));
  EXPECT_THAT(TNVMarkPolyLine({}, true).getContour({64, 30}), IsEmpty());
}

TEST(TNVMarkPolyLine, CursorInsideOrLessThanNineteenPixelsAwayHits) {
  struct Row {
    cv::Point2d pixel;
    bool over;
  };
  // On 512 by 512 pixels the square reaches from 128 to 384, its lower edge is missing.
  for (const bool closed : {false, true}) {
    const TNVMarkPolyLine mark(kThreeSides, closed);
    for (const Row& row : {Row{{256, 256}, true}, Row{{128, 256}, true}, Row{{110, 256}, true},
                           Row{{109, 256}, false}, Row{{402.9, 256}, true}, Row{{403, 256}, false},
                           Row{{256, 402}, true}, Row{{256, 403}, false},
                           // Beside a corner 18.4 and 19.8.
                           Row{{397, 397}, true}, Row{{398, 398}, false}}) {
      EXPECT_EQ(mark.isMouseOver(row.pixel / 512, {512, 512}), row.over) << row.pixel;
    }
  }
}

TEST(TNVMarkPolyLine, HitTellsTheDistanceToTheCentreAndAMissNone) {
  TNVMarkPolyLine mark(kThreeSides, false);
  mark.center = {0.25, 0.5};
  double distance = -5;
  // 30 right of and 40 above (128, 128).
  EXPECT_TRUE(mark.isMouseOver({158.0 / 512, 88.0 / 256}, {512, 256}, &distance));
  EXPECT_NEAR(distance, 50, 1e-9);
  distance = -5;
  EXPECT_FALSE(mark.isMouseOver({0.9375, 0.5}, {512, 256}, &distance));
  EXPECT_EQ(distance, -5);
}

TEST(TNVMarkPolyLine, LessThanTwoVerticesAreNeverHit) {
  double distance = -5;
  EXPECT_FALSE(TNVMarkPolyLine({}, true).isMouseOver({0, 0}, {64, 64}, &distance));
  EXPECT_FALSE(TNVMarkPolyLine({{0.5, 0.5}}, true).isMouseOver({0.5, 0.5}, {64, 64}, &distance));
  EXPECT_EQ(distance, -5);
  EXPECT_TRUE(TNVMarkPolyLine({{0.5, 0.5}, {0.5, 0.5}}, true).isMouseOver({0.5, 0.5}, {64, 64}));
}

TEST(TNVMarkPolyLine, PoisOfEachMode) {
  for (const bool closed : {false, true}) {
    const TNVMarkPolyLine mark(kThreeSides, closed);
    EXPECT_THAT(mark.getPOIsGenerated("Endpoints", {64, 64}, 7),
                ElementsAre(kThreeSides.front(), kThreeSides.back()));
    EXPECT_EQ(mark.getPOIsGenerated("Poly Points", {64, 64}, 7), kThreeSides);
    // None on the closing edge, closed or not.
    expectPoints(kThreeSides, mark.getPOIsGenerated("Divided", {64, 64}, 4));
    expectPoints({{0.25, 0.75}, {0.5, 0.25}, {0.75, 0.75}},
                 mark.getPOIsGenerated("Divided", {64, 64}, 3));
    // On a picture twice as wide as high, 16, 32 and 16 pixels, a point each 16.
    expectPoints({{0.25, 0.75}, {0.25, 0.25}, {0.5, 0.25}, {0.75, 0.25}, {0.75, 0.75}},
                 mark.getPOIsGenerated("Divided", {64, 32}, 5));
    for (const char* mode : {"endpoints", "Center", "Corners", ""})
      EXPECT_THAT(mark.getPOIsGenerated(mode, {64, 64}, 7), IsEmpty()) << mode;
  }
}

TEST(TNVMarkPolyLine, DividedNeedsACountOfTwo) {
  const LogCapture log;
  const TNVMarkPolyLine mark(kThreeSides, true);
  for (const int count : {1, 0, -1, INT_MIN})
    EXPECT_THAT(mark.getPOIsGenerated("Divided", {64, 64}, count), IsEmpty());
  EXPECT_EQ(log.text(), "");
}

TEST(TNVMarkPolyLine, PoisOfFewVertices) {
  const std::string refusal =
      "TNVContour::consistentDevidePointLine: Can not devide points, line has to less points < 2!";
  const cv::Point2d point(0.25, 0.5);
  const TNVMarkPolyLine none({}, true);
  const TNVMarkPolyLine single({point}, true);
  EXPECT_THAT(none.getPOIsGenerated("Endpoints", {64, 64}, 7), IsEmpty());
  EXPECT_THAT(none.getPOIsGenerated("Poly Points", {64, 64}, 7), IsEmpty());
  EXPECT_THAT(single.getPOIsGenerated("Endpoints", {64, 64}, 7), ElementsAre(point, point));
  EXPECT_THAT(single.getPOIsGenerated("Poly Points", {64, 64}, 7), ElementsAre(point));
  for (const TNVMarkPolyLine& mark : {none, single}) {
    const LogCapture log;
    EXPECT_THAT(mark.getPOIsGenerated("Divided", {64, 64}, 7), IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre(refusal));
  }
}

TEST(TNVMarkPolyLine, PoiCountIsTheOpenLengthByTheSmallerSide) {
  struct Row {
    cv::Point2d poiSize;
    int count;
  };
  // 16, 32 and 16 pixels on 64 by 32.
  for (const Row& row :
       {Row{{0.125, 0.125}, 16}, Row{{0.0625, 0.5}, 16}, Row{{1, 0.8}, 3}, Row{{0.2, 1}, 5},
        Row{{1, 0.5714285714285714}, 4}, Row{{0.4, 1}, 3}, Row{{0, 0.1}, 0}, Row{{0.1, 0}, 0}}) {
    for (const bool closed : {false, true}) {
      TNVMarkPolyLine mark(kThreeSides, closed);
      mark.poiSize = row.poiSize;
      EXPECT_EQ(mark.getPOICountForSize({64, 32}), row.count) << row.poiSize;
    }
  }
}

TEST(TNVMarkPolyLine, HalfAPoiCountsAsOne) {
  // 36 pixels by 8 is 4.5.
  TNVMarkPolyLine mark({{0.25, 0.5}, {0.75, 0.5}, {0.6875, 0.5}}, true);
  mark.poiSize = {1, 0.25};
  EXPECT_EQ(mark.getPOICountForSize({64, 32}), 5);
}

TEST(TNVMarkPolyLine, VerticesAreWrittenBehindTheBase) {
  for (const bool closed : {false, true}) {
    TNVMarkPolyLine mark({{0.5, 0.25}}, closed);
    const int tag = mark.changeTag;
    EXPECT_THAT(writtenXml(mark),
                HasSubstr("</ClassIdx>\n"
                          "  <PolyPoints>\n"
                          "    5.0000000000000000e-01 "
                          "2.5000000000000000e-01</PolyPoints>\n"
                          "  <Closed>" +
                          std::to_string(closed ? 1 : 0) + "</Closed></Mark0>\n"));
    EXPECT_NE(mark.changeTag, tag);
  }
}

TEST(TNVMarkPolyLine, ReadsBackBitForBit) {
  for (const bool closed : {false, true}) {
    for (const Points& vertices :
         {Points{}, Points{{0.1, 1.0 / 3.0}}, Points{{0.1, 0.3}, {0.7, 0.9}, {0.2, 0.6}}}) {
      TNVMarkPolyLine mark(vertices, closed);
      mark.classIdx = {2, 3};
      const auto read = markFromXml<TNVMarkPolyLine>(writtenXml(mark));
      EXPECT_EQ(read.type, "PolyLine");
      EXPECT_EQ(read.center, mark.center);
      EXPECT_EQ(read.polyPoints, vertices);
      EXPECT_EQ(read.closed, closed);
      EXPECT_EQ(read.classIdx, mark.classIdx);
    }
  }
}

TEST(TNVMarkPolyLine, AnyNumberButZeroCloses) {
  struct Row {
    std::string content;
    bool closed;
  };
  for (const Row& row : {Row{"", false}, Row{"<Closed>0</Closed>", false},
                         Row{"<Closed>1</Closed>", true}, Row{"<Closed>-7</Closed>", true}}) {
    const auto read = markFromXml<TNVMarkPolyLine>(xmlWithMark(row.content));
    EXPECT_EQ(read.closed, row.closed) << row.content;
    EXPECT_THAT(read.polyPoints, IsEmpty());
  }
}

TEST(TNVMarkPolyLine, HalfAVertexIsRefused) {
  EXPECT_THROW(markFromXml<TNVMarkPolyLine>(xmlWithMark("<PolyPoints>0.5 0.5 0.25</PolyPoints>")),
               cv::Exception);
}

namespace {

struct TNVMarkPolyLineOnView : ::testing::Test {
  std::vector<cv::Point> path() const {
    std::vector<cv::Point> walked = vertices;
    if (mark.closed) walked.push_back(vertices.front());
    return walked;
  }

  /// The path and its dots above what the view shows.
  void drawPathReference(cv::Mat& view, const PenState& pen, bool designing) const {
    circleReference(view, {85, 63}, pen.colour, pen.thickness);
    for (const cv::Point& vertex : vertices)
      circleReference(view, vertex, pen.colour, cv::FILLED);
    const int lineThickness = std::max(pen.thickness, 1);
    if (designing) {
      dashedReference(view, path(), pen.colour, 7, 3, lineThickness);
      return;
    }
    const std::vector<cv::Point> walked = path();
    for (std::size_t i = 1; i < walked.size(); ++i)
      lineReference(view, walked[i - 1], walked[i], pen.colour, lineThickness);
  }

  /// On the view (50, 30), (120, 36), (90.4, 96.66). The box is 0.25 to 0.6 by 0.25 to 0.8055.
  TNVMarkPolyLine mark{{{0.25, 0.25}, {0.6, 0.3}, {0.452, 0.8055}}, false};
  std::vector<cv::Point> vertices{{50, 30}, {120, 36}, {90, 97}};
};

}  // namespace

TEST_F(TNVMarkPolyLineOnView, EachStateHasItsPen) {
  for (const PenState& state : penStates()) {
    for (int row = 0; row < 8; ++row) {
      mark.closed = (row & 1) != 0;
      const bool designing = (row & 2) != 0;
      const bool filled = (row & 4) != 0;
      SCOPED_TRACE(nameOf(state, designing, filled) + (mark.closed ? ", closed" : ""));
      take(mark, state);
      cv::Mat expected = emptyView();
      if (filled && mark.closed) fillReference(expected, vertices, pixelOf(state.colour));
      // In the picture 351 by 334 pixels: from (49.9, 29.94) to (120.1, 96.74) on the view.
      if (state.selected) {
        frameReference(expected, {{49, 29}, {120, 29}, {120, 96}, {49, 96}}, pixelOf(state.colour));
      }
      drawPathReference(expected, state, designing);
      const cv::Mat seen = viewWith(mark, styleNamed(state.style, filled), 0, designing);
      EXPECT_TRUE(samePixels(expected, seen));
    }
  }
}

TEST_F(TNVMarkPolyLineOnView, PoisLieUnderThePath) {
  mark.poiVisible = true;
  mark.pois = {{0.25, 0.25}};
  mark.poiSize = {0.05, 0.1};
  for (const bool designing : {false, true}) {
    cv::Mat expected = emptyView();
    boxReference(expected, {{45, 24}}, {255, 255, 255});
    drawPathReference(expected, penStates().front(), designing);
    EXPECT_TRUE(samePixels(expected, viewWith(mark, styleNamed("White"), 0, designing)));
  }
}

TEST_F(TNVMarkPolyLineOnView, LabelOfEachInfoStandsAtTheCentre) {
  mark.classIdx = {12, 11};
  // 70.26 and 67.5 pixels on the view, 137.8 together; 688.8 in the picture; relative 0.354 and
  // 0.527. The closing edge does not count.
  const std::vector<std::string> labels{"", "0,5", "cat,dog", "688", "137", "0.88"};
  for (std::size_t info = 0; info < labels.size(); ++info) {
    for (int row = 0; row < 4; ++row) {
      mark.closed = (row & 1) != 0;
      const bool designing = (row & 2) != 0;
      cv::Mat expected = emptyView();
      drawPathReference(expected, penStates().front(), designing);
      textReference(expected, labels[info], {85, 63}, {255, 255, 255});
      const cv::Mat seen = viewWith(mark, styleNamed("White"), static_cast<int>(info), designing);
      EXPECT_TRUE(samePixels(expected, seen)) << labels[info];
    }
  }
}

TEST_F(TNVMarkPolyLineOnView, DottedLineLeadsToTheCursorWhileDesigning) {
  struct Row {
    cv::Point2d designPoint;
    bool drawn;
  };
  for (const Row& row : {Row{{0.75, 0.125}, true}, Row{{0.001, 0.125}, true}, Row{{0, 0.5}, false},
                         Row{{-1, -1}, false}}) {
    for (const bool closed : {false, true}) {
      mark.closed = closed;
      mark.designPoint = row.designPoint;
      cv::Mat designed = emptyView();
      drawPathReference(designed, penStates().front(), true);
      // 0.75 and 0.001 of 200, 0.125 of 120.
      const cv::Point cursor(row.designPoint.x > 0.5 ? 150 : 0, 15);
      if (row.drawn) dashedReference(designed, {{90, 97}, cursor}, {255, 255, 255}, 2, 7, 1);
      EXPECT_TRUE(samePixels(designed, viewWith(mark, styleNamed("White"), 0, true)));
      cv::Mat finished = emptyView();
      drawPathReference(finished, penStates().front(), false);
      EXPECT_TRUE(samePixels(finished, viewWith(mark, styleNamed("White"), 0, false)));
    }
  }
}

TEST_F(TNVMarkPolyLineOnView, SingleVertexDrawsTheFrameAlone) {
  mark.polyPoints = {{0.5, 0.5}};
  mark.center = {0.5, 0.5};
  mark.closed = true;
  mark.designPoint = {0.75, 0.125};
  for (const bool designing : {false, true}) {
    mark.selected = false;
    EXPECT_TRUE(samePixels(emptyView(), viewWith(mark, styleNamed("White"), 3, designing)));
    mark.selected = true;
    cv::Mat expected = emptyView();
    // One pixel of the picture: from 99.9 to 100.1 by 59.9 to 60.1.
    frameReference(expected, {{99, 59}, {100, 59}, {100, 60}, {99, 60}}, {0, 0, 255});
    EXPECT_TRUE(samePixels(expected, viewWith(mark, styleNamed("White"), 3, designing)));
  }
}

TEST_F(TNVMarkPolyLineOnView, PathWithoutVerticesDrawsNothing) {
  mark.polyPoints.clear();
  mark.closed = true;
  for (const bool designing : {false, true})
    EXPECT_TRUE(samePixels(emptyView(), viewWith(mark, styleNamed("White", true), 3, designing)));
}

TEST_F(TNVMarkPolyLineOnView, PreviewOfTwoVerticesIsClosedByTheSameEdgeAgain) {
  mark.polyPoints.pop_back();
  vertices.pop_back();
  mark.closed = true;
  for (const bool designing : {false, true}) {
    cv::Mat expected = emptyView();
    drawPathReference(expected, penStates().front(), designing);
    EXPECT_TRUE(samePixels(expected, viewWith(mark, styleNamed("White"), 0, designing)));
  }
}

namespace {

/// Runs every operation once in each state.
void useEverything(TNVMarkPolyLine mark, cv::Size viewSize) {
  const ThreeClasses classes;
  mark.hovered = true;
  for (int state = 0; state < 3; ++state) {
    mark.selected = state == 2;
    cv::Mat view = patternedPicture(viewSize.width, viewSize.height);
    mark.draw(view, {640, 480}, styleNamed("White", true), infoOf(3 + state), classes.list(),
              state == 1);
  }
  double distance = 0;
  mark.isMouseOver({0.5, 0.25}, {640, 480}, &distance);
  mark.getPOICountForSize({640, 480});
  mark.getContour({640, 480});
  for (const std::string& mode : mark.getPOIModes())
    EXPECT_LE(mark.getPOIsGenerated(mode, {640, 480}, 9).size(), mark.polyPoints.size() + 10);
  mark.update({0.5, 0.5}, {0.25, 0.25}, {}, {640, 480});
  mark.getRelSize({0, 0});
  mark.fitToPoints(mark.polyPoints, {640, 480});
}

}  // namespace

TEST(TNVMarkPolyLine, HostileVerticesAreDrawnAndAnswered) {
  const LogCapture log;
  for (const bool closed : {false, true}) {
    for (const double x : hostileNumbers()) {
      useEverything(TNVMarkPolyLine({{x, x}}, closed), {40, 30});
      for (const double y : hostileNumbers()) {
        TNVMarkPolyLine mark({{x, y}, {0.5, x}, {y, 0.25}, {0.5, 0.5}}, closed);
        mark.poiSize = {x, y};
        mark.designPoint = {x, y};
        useEverything(mark, {40, 30});
        useEverything(mark, {1, 1});
      }
    }
    useEverything(TNVMarkPolyLine({}, closed), {40, 30});
  }
}

TEST(TNVMarkPolyLine, AMillionVerticesAreDrawnAndAnswered) {
  std::mt19937 random(20250607);
  std::uniform_real_distribution<double> anywhere(-0.5, 1.5);
  Points vertices(1000000);
  for (cv::Point2d& vertex : vertices)
    vertex = {anywhere(random), anywhere(random)};
  const ThreeClasses classes;
  TNVMarkPolyLine mark(vertices, true);
  mark.hovered = true;
  for (const bool designing : {false, true}) {
    cv::Mat view = patternedPicture(40, 30);
    mark.draw(view, {640, 480}, styleNamed("White", true), infoOf(3), classes.list(), designing);
  }
  EXPECT_TRUE(mark.isMouseOver({0.5, 0.5}, {640, 480}));
  EXPECT_EQ(mark.getContour({640, 480}).size(), vertices.size());
  EXPECT_EQ(mark.getPOIsGenerated("Divided", {640, 480}, 50).size(), 50U);
  mark.update({0.5, 0.5}, {0.5, 0.5}, {}, {640, 480});
  EXPECT_NEAR(mark.getRelSize({640, 480}).x, 0.5, 0.01);
}

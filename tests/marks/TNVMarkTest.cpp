#include "marks/TNVMark.h"

#include <chrono>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marks/MarkTools.h"
#include "marks/TNVContour.h"
#include "support/Pictures.h"

namespace {

using Points = TNVMark::Points;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// The abstract base with a size and an outline that are set from outside.
class PlainMark : public TNVMark {
 public:
  PlainMark() = default;
  PlainMark(const PlainMark&) = default;
  explicit PlainMark(const cv::FileNode& node) : TNVMark(node) {}

  using TNVMark::classLabel;
  using TNVMark::drawLabel;

  void setRelSize(cv::Point2d newCentre, cv::Point2d newSize, cv::Size imageSize) override {
    centreSeen = center;
    newCentreSeen = newCentre;
    imageSizeSeen = imageSize;
    size = newSize;
  }
  cv::Point2d getRelSize(cv::Size imageSize) const override {
    sizesAsked.push_back(imageSize);
    return size;
  }
  int getMinConstructionPoints(bool /*variant*/) const override { return 0; }
  int getMaxConstructionPoints(bool /*variant*/) const override { return 0; }
  bool isMouseOver(cv::Point2d /*point*/, cv::Size /*size*/, double* /*distance*/) const override {
    return false;
  }
  std::string getTypeName(bool /*variant*/) const override { return "Plain"; }
  cv::Rect getPixelRect(cv::Size /*imageSize*/) const override { return {}; }
  Points getContour(cv::Size imageSize) const override {
    Points pixels;
    for (const cv::Point2d& point : outline)
      pixels.emplace_back(point.x * imageSize.width, point.y * imageSize.height);
    return pixels;
  }
  std::vector<std::string> getPOIModes() const override { return {}; }
  bool getPOIModeSupportsValue(const std::string& /*mode*/) const override { return false; }
  Points getPOIsGenerated(const std::string& /*mode*/, cv::Size /*imageSize*/,
                          int /*count*/) const override {
    return {};
  }
  int getPOICountForSize(cv::Size /*imageSize*/) const override { return 0; }

  cv::Point2d size{0.5, 0.25};
  Points outline;
  cv::Point2d centreSeen;
  cv::Point2d newCentreSeen;
  cv::Size imageSizeSeen;
  mutable std::vector<cv::Size> sizesAsked;
};

struct TNVMarkOnView : ::testing::Test {
  TNVMarkOnView() {
    mark.center = {0.5, 0.5};
    mark.poiSize = {0.1, 0.08};
    mark.pois = {{0.25, 0.25}, {0.99, 0.51}, {-0.5, 3}};
  }

  void drawAndCompare(const TNVTypeMarkStyleSet& style) {
    cv::Mat seen = patternedPicture(100, 60);
    mark.draw(seen, {1000, 600}, style, infoOf(0), classes.list(), false);
    EXPECT_TRUE(samePixels(expected, seen));
  }

  ThreeClasses classes;
  PlainMark mark;
  cv::Mat expected = patternedPicture(100, 60);
};

void expectUnset(const TNVMark& mark) {
  EXPECT_FALSE(mark.poiVisible);
  EXPECT_EQ(mark.designPoint, cv::Point2d(-1, -1));
  EXPECT_TRUE(mark.text.empty());
  EXPECT_GE(mark.changeTag, 1);
  EXPECT_LE(mark.changeTag, 10000);
}

}  // namespace

TEST(TNVMark, DefaultMadeMarkStandsNowhere) {
  const PlainMark mark;
  EXPECT_EQ(mark.uniqueId, -1);
  EXPECT_EQ(mark.type, "none");
  EXPECT_EQ(mark.center, cv::Point2d(-1, -1));
  EXPECT_THAT(mark.classIdx, IsEmpty());
  EXPECT_FALSE(mark.hovered);
  EXPECT_FALSE(mark.selected);
  EXPECT_THAT(mark.pois, IsEmpty());
  EXPECT_EQ(mark.poiSize, cv::Point2d(0, 0));
  expectUnset(mark);
}

TEST(TNVMark, CopyTakesAllButTheDesignAndTheVisiblePois) {
  PlainMark mark;
  mark.uniqueId = 9;
  mark.type = "Kind";
  mark.center = {0.25, 0.5};
  mark.classIdx = {3, 3, 1};
  mark.hovered = true;
  mark.selected = true;
  mark.pois = {{0.5, 0.75}};
  mark.poiSize = {0.125, 0.25};
  mark.poiVisible = true;
  mark.designPoint = {0.5, 0.5};
  mark.text = "words";
  const PlainMark copy(mark);
  EXPECT_EQ(copy.uniqueId, 9);
  EXPECT_EQ(copy.type, "Kind");
  EXPECT_EQ(copy.center, cv::Point2d(0.25, 0.5));
  EXPECT_THAT(copy.classIdx, ElementsAre(3, 3, 1));
  EXPECT_TRUE(copy.hovered);
  EXPECT_TRUE(copy.selected);
  EXPECT_THAT(copy.pois, ElementsAre(cv::Point2d(0.5, 0.75)));
  EXPECT_EQ(copy.poiSize, cv::Point2d(0.125, 0.25));
  expectUnset(copy);
}

TEST(TNVMark, RenewedChangeTagDiffersAndStaysInRange) {
  PlainMark mark;
  for (int i = 0; i < 2000; ++i) {
    const int before = mark.changeTag;
    const int after = mark.renewChangeTag();
    EXPECT_EQ(after, mark.changeTag);
    ASSERT_NE(after, before);
    ASSERT_GE(after, 1);
    ASSERT_LE(after, 10000);
  }
}

TEST(TNVMark, ChangeTagsSpreadOverTheRange) {
  PlainMark mark;
  std::vector<int> tenths(10);
  for (int i = 0; i < 2000; ++i)
    ++tenths[static_cast<std::size_t>((mark.renewChangeTag() - 1) / 1000)];
  // 200 expected; a fair draw misses these bounds by more than seven deviations.
  for (const int count : tenths) {
    EXPECT_GT(count, 100);
    EXPECT_LT(count, 300);
  }
}

TEST(TNVMark, StyleFollowsTheStateAndSelectionWins) {
  struct Row {
    bool hovered;
    bool selected;
    cv::Scalar colour;
    int thickness;
  };
  for (const Row& row :
       {Row{false, false, {255, 64, 64, 0}, 1}, Row{true, false, {255, 32, 32, 0}, 2},
        Row{false, true, {255, 255, 255, 0}, 1}, Row{true, true, {255, 255, 255, 0}, 1}}) {
    PlainMark mark;
    mark.hovered = row.hovered;
    mark.selected = row.selected;
    const MarkDrawStyle pen = mark.resolveDrawStyle(styleNamed("Blue"), {});
    EXPECT_EQ(pen.colour, row.colour);
    EXPECT_EQ(pen.thickness, row.thickness);
  }
}

TEST(TNVMark, SentinelTakesTheMeanColourOfTheClasses) {
  constexpr double none = INT_MIN;
  struct Row {
    std::vector<int> classIdx;
    cv::Scalar colour;
    int thickness;
  };
  const std::vector<Row> rows{
      {{}, {none, none, none, 0}, INT_MIN}, {{99}, {none, none, none, 0}, INT_MIN},
      {{11}, {10, 20, 30, 0}, 1},           {{99, 12, 98}, {100, 101, 102, 0}, 1},
      {{11, 12}, {55, 60, 66, 0}, 0},       // 110, 121, 132 by 2
      {{13, 11, 12}, {50, 123, 44, 0}, 0},  // 151, 371, 132 by 3
      {{11, 11, 12}, {40, 47, 54, 0}, 0}};  // 120, 141, 162 by 3
  const ThreeClasses classes;
  for (const Row& row : rows) {
    PlainMark mark;
    mark.classIdx = row.classIdx;
    const MarkDrawStyle pen = mark.resolveDrawStyle(styleNamed("Colored"), classes.list());
    EXPECT_EQ(pen.colour, row.colour);
    EXPECT_EQ(pen.thickness, row.thickness);
  }
}

TEST(TNVMark, SentinelReplacesTheThicknessOfEveryState) {
  TNVTypeMarkStyleSet style;
  style.colorNormal = style.colorHovered = style.colorSelected = cv::Scalar(-1, 0, 0, 0);
  style.thicknessNormal = style.thicknessHovered = style.thicknessSelected = 9;
  const ThreeClasses classes;
  PlainMark mark;
  mark.classIdx = {12};
  for (int state = 0; state < 4; ++state) {
    mark.hovered = (state & 1) != 0;
    mark.selected = (state & 2) != 0;
    const MarkDrawStyle pen = mark.resolveDrawStyle(style, classes.list());
    EXPECT_EQ(pen.thickness, 1);
    EXPECT_EQ(pen.colour, cv::Scalar(100, 101, 102, 0));
  }
}

TEST(TNVMark, OnlyExactlyMinusOneIsTheSentinel) {
  TNVTypeMarkStyleSet style;
  style.colorNormal = cv::Scalar(-1.0000001, 5, 6, 7);
  const MarkDrawStyle pen = PlainMark().resolveDrawStyle(style, {});
  EXPECT_EQ(pen.colour, style.colorNormal);
}

TEST(TNVMark, FirstClassOfAnIndexGivesTheColour) {
  TNVDNNClass first(4);
  first.color = cv::Scalar(1, 2, 3);
  TNVDNNClass second(4);
  PlainMark mark;
  mark.classIdx = {4};
  EXPECT_EQ(mark.resolveDrawStyle(styleNamed("Colored"), {&first, &second}).colour,
            cv::Scalar(1, 2, 3));
}

TEST(TNVMark, ClassTextsFollowTheClassList) {
  const ThreeClasses classes;
  struct Row {
    std::vector<int> classIdx;
    std::string ids;
    std::string names;
  };
  for (const Row& row :
       {Row{{}, "", ""}, Row{{99}, "", ""}, Row{{12}, "5", "dog"},
        Row{{13, 99, 11}, "0,7", "cat,yak"}, Row{{12, 11, 12}, "0,5,5", "cat,dog,dog"}}) {
    EXPECT_EQ(TNVMark::classIdText(classes.list(), row.classIdx), row.ids);
    EXPECT_EQ(TNVMark::classNameText(classes.list(), row.classIdx), row.names);
  }
  EXPECT_EQ(TNVMark::classIdText({}, {1}), "");
}

TEST(TNVMark, EmptyFirstNameLeavesNoComma) {
  TNVDNNClass unnamed(1);
  unnamed.name = "";
  TNVDNNClass named(2);
  named.name = "named";
  EXPECT_EQ(TNVMark::classNameText({&unnamed, &named}, {1, 2}), "named");
}

TEST(TNVMark, OnlyTwoInfosNameTheClasses) {
  const ThreeClasses classes;
  PlainMark mark;
  mark.classIdx = {12, 13};
  const std::vector<std::string> labels{"", "5,7", "dog,yak", "", "", ""};
  for (int info = 0; info < 6; ++info)
    EXPECT_EQ(mark.classLabel(infoOf(info), classes.list()),
              labels[static_cast<std::size_t>(info)]);
}

TEST(TNVMark, LabelsShareOneFont) {
  cv::Mat seen(40, 120, CV_8UC3, cv::Scalar());
  PlainMark::drawLabel(seen, "label", {5, 30}, {10, 200, 30});
  cv::Mat expected(40, 120, CV_8UC3, cv::Scalar());
  cv::putText(expected, "label", {5, 30}, 3, 0.4, {10, 200, 30}, 1, cv::LINE_AA, false);
  EXPECT_TRUE(samePixels(expected, seen));
}

TEST(TNVMark, UpdateShowsTheKindTheOldCentre) {
  PlainMark mark;
  mark.center = {0.25, 0.25};
  const int tag = mark.changeTag;
  mark.update({0.5, 0.75}, {0.125, 0.5}, {}, {640, 480});
  EXPECT_EQ(mark.centreSeen, cv::Point2d(0.25, 0.25));
  EXPECT_EQ(mark.newCentreSeen, cv::Point2d(0.5, 0.75));
  EXPECT_EQ(mark.imageSizeSeen, cv::Size(640, 480));
  EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.75));
  EXPECT_EQ(mark.size, cv::Point2d(0.125, 0.5));
  EXPECT_NE(mark.changeTag, tag);
}

TEST(TNVMark, UpdateTakesTheClassesInTheirOrder) {
  TNVDNNClass one(1);
  TNVDNNClass two(2);
  PlainMark mark;
  mark.classIdx = {7, 8, 9};
  mark.update({0, 0}, {1, 1}, {&two, &one, &two}, {640, 480});
  EXPECT_THAT(mark.classIdx, ElementsAre(2, 1, 2));
}

TEST(TNVMark, UpdateWithoutClassesKeepsThem) {
  PlainMark mark;
  mark.classIdx = {7, 8};
  mark.update({0, 0}, {1, 1}, {}, {640, 480});
  EXPECT_THAT(mark.classIdx, ElementsAre(7, 8));
}

TEST(TNVMark, UpdateDragsPoisFromTheNewCentre) {
  PlainMark mark;
  mark.center = {0.25, 0.25};
  mark.size = {0.25, 0.5};
  mark.pois = {{0.5, 0.25}, {0.125, 0.75}};
  mark.update({0.5, 0.375}, {0.5, 0.25}, {}, {640, 480});
  // Shift (0.25, 0.125), ratio (2, 0.5); x: (0.5 - 0.5) 2 + 0.5 + 0.25 = 0.75 and
  // (0.125 - 0.5) 2 + 0.75 = 0; y: (0.25 - 0.375) / 2 + 0.375 + 0.125 = 0.4375 and
  // (0.75 - 0.375) / 2 + 0.5 = 0.6875.
  EXPECT_THAT(mark.pois, ElementsAre(cv::Point2d(0.75, 0.4375), cv::Point2d(0, 0.6875)));
}

TEST(TNVMark, UpdateOfAMarkWithoutSizeLosesThePois) {
  PlainMark mark;
  mark.size = {0, 0};
  mark.pois = {{0.5, 0.25}};
  mark.update({0.5, 0.375}, {0, 0}, {}, {640, 480});
  EXPECT_TRUE(std::isnan(mark.pois[0].x));
  EXPECT_TRUE(std::isnan(mark.pois[0].y));
}

TEST(TNVMark, FittingTakesTheBoxOfThePoints) {
  PlainMark mark;
  mark.classIdx = {5};
  mark.fitToPoints({{0.25, 0.5}, {0.75, 0.625}, {0.5, 0.25}}, {640, 480});
  EXPECT_EQ(mark.center, cv::Point2d(0.5, 0.4375));
  EXPECT_EQ(mark.size, cv::Point2d(0.5, 0.375));
  EXPECT_EQ(mark.imageSizeSeen, cv::Size(640, 480));
  EXPECT_THAT(mark.classIdx, ElementsAre(5));
}

TEST(TNVMark, FittingToABoxWithoutAreaChangesNothing) {
  PlainMark mark;
  const int tag = mark.changeTag;
  mark.fitToPoints({{0.25, 0.5}, {0.75, 0.5}}, {640, 480});
  mark.fitToPoints({{0.25, 0.5}, {0.25, 0.75}}, {640, 480});
  EXPECT_EQ(mark.center, cv::Point2d(-1, -1));
  EXPECT_EQ(mark.size, cv::Point2d(0.5, 0.25));
  EXPECT_EQ(mark.changeTag, tag);
}

TEST(TNVMark, RoiImageIsTheBox) {
  const cv::Mat picture = patternedPicture(80, 60);
  PlainMark mark;
  mark.center = {0.5, 0.5};
  mark.size = {0.25, 0.5};
  EXPECT_TRUE(samePixels(picture(cv::Rect(30, 15, 20, 30)), mark.getROIImage(picture)));
}

TEST(TNVMark, RoiImageHalfOutsideIsBlackThere) {
  const cv::Mat picture = patternedPicture(80, 60);
  PlainMark mark;
  mark.center = {0, 1};
  mark.size = {0.5, 0.5};
  cv::Mat expected(30, 40, CV_8UC3, cv::Scalar());
  picture(cv::Rect(0, 45, 20, 15)).copyTo(expected(cv::Rect(20, 0, 20, 15)));
  EXPECT_TRUE(samePixels(expected, mark.getROIImage(picture)));
}

TEST(TNVMark, RoiImageOfHostileGeometryIsSmallOrRefused) {
  const cv::Mat picture = patternedPicture(80, 60);
  for (const double a : hostileNumbers()) {
    for (const double b : hostileNumbers()) {
      PlainMark mark;
      mark.center = {a, b};
      mark.size = {b, 0.5};
      try {
        EXPECT_LT(mark.getROIImage(picture).total(), std::size_t{1} << 27);
      } catch (const cv::Exception&) {
        SUCCEED();
      }
    }
  }
}

TEST(TNVMark, KeysAreWrittenInOrder) {
  PlainMark mark;
  mark.type = "Kind";
  mark.center = {0.5, 0.25};
  mark.pois = {{0.125, 0.5}, {1, -2}};
  mark.poiSize = {0.75, 0};
  mark.classIdx = {4, -1};
  EXPECT_THAT(writtenXml(mark),
              HasSubstr("<Mark0>\n"
                        "  <Type>Kind</Type>\n"
                        "  <Center>\n"
                        "    5.0000000000000000e-01 2.5000000000000000e-01</Center>\n"
                        "  <POIs>\n"
                        "    1.2500000000000000e-01 5.0000000000000000e-01 "
                        "1. -2.</POIs>\n"
                        "  <POISize>\n"
                        "    7.5000000000000000e-01 0.</POISize>\n"
                        "  <ClassIdx>\n"
                        "    4 -1</ClassIdx></Mark0>\n"));
}

TEST(TNVMark, WritingRenewsTheChangeTag) {
  PlainMark mark;
  const int tag = mark.changeTag;
  writtenXml(mark);
  EXPECT_NE(mark.changeTag, tag);
}

TEST(TNVMark, ReadsBackBitForBit) {
  PlainMark mark;
  mark.type = "Kind <&> \"quoted\"";
  mark.center = {1.0 / 3.0, std::nextafter(0.1, 1.0)};
  mark.pois = {{0.1, 0.2}, {1e-300, -1e300}, {2.0 / 3.0, 5e-324}};
  mark.poiSize = {1.0 / 7.0, 0.3};
  mark.classIdx = {INT_MAX, INT_MIN, 0, 7};
  mark.uniqueId = 3;
  mark.hovered = mark.selected = mark.poiVisible = true;
  const auto read = markFromXml<PlainMark>(writtenXml(mark));
  EXPECT_EQ(read.type, mark.type);
  EXPECT_EQ(read.center, mark.center);
  EXPECT_EQ(read.pois, mark.pois);
  EXPECT_EQ(read.poiSize, mark.poiSize);
  EXPECT_EQ(read.classIdx, mark.classIdx);
  EXPECT_EQ(read.uniqueId, -1);
  EXPECT_FALSE(read.hovered);
  EXPECT_FALSE(read.selected);
  expectUnset(read);
}

TEST(TNVMark, EmptyListsReadBackEmpty) {
  PlainMark mark;
  const auto read = markFromXml<PlainMark>(writtenXml(mark));
  EXPECT_EQ(read.type, "none");
  EXPECT_THAT(read.pois, IsEmpty());
  EXPECT_THAT(read.classIdx, IsEmpty());
}

TEST(TNVMark, AbsentKeysReadAsNothing) {
  for (const char* content : {"", "<Other>1</Other>"}) {
    const auto read = markFromXml<PlainMark>(xmlWithMark(content));
    EXPECT_EQ(read.type, "");
    EXPECT_EQ(read.center, cv::Point2d(0, 0));
    EXPECT_EQ(read.poiSize, cv::Point2d(0, 0));
    EXPECT_THAT(read.pois, IsEmpty());
    EXPECT_THAT(read.classIdx, IsEmpty());
  }
  EXPECT_EQ(PlainMark(cv::FileNode()).type, "");
}

TEST(TNVMark, PairOfAnotherLengthReadsAsZero) {
  for (const char* list : {"1.", "1. 2. 3.", ""}) {
    const auto read = markFromXml<PlainMark>(
        xmlWithMark("<Center>" + std::string(list) + "</Center><POISize>" + list + "</POISize>"));
    EXPECT_EQ(read.center, cv::Point2d(0, 0)) << list;
    EXPECT_EQ(read.poiSize, cv::Point2d(0, 0)) << list;
  }
}

TEST(TNVMark, OddPoiListIsRefusedByTheStorage) {
  try {
    markFromXml<PlainMark>(xmlWithMark("<POIs>1. 2. 3.</POIs>"));
    FAIL() << "was read";
  } catch (const cv::Exception& error) {
    EXPECT_THAT(error.what(), HasSubstr("(remaining % cn) == 0"));
  }
}

TEST_F(TNVMarkOnView, PlainMarkDrawsNothing) {
  drawAndCompare(styleNamed("White"));
}

TEST_F(TNVMarkOnView, FillingBlendsWithinTheOutline) {
  mark.outline = {{0.1, 0.1}, {0.8, 0.225}, {0.405, 0.9}};
  // 0.225 * 60 is 13.5 and 40.5 is a half as well: both go to the even neighbour.
  fillReference(expected, {{10, 6}, {80, 14}, {40, 54}}, {255, 255, 255});
  drawAndCompare(styleNamed("White", true));
}

TEST_F(TNVMarkOnView, FillingLeavesOutWhatLiesBetweenTheTeethOfAnOutline) {
  mark.outline = {{0.1, 0.1}, {0.9, 0.1}, {0.9, 0.9}, {0.6, 0.2},
                  {0.5, 0.9}, {0.4, 0.2}, {0.1, 0.9}};
  fillReference(expected, {{10, 6}, {90, 6}, {90, 54}, {60, 12}, {50, 54}, {40, 12}, {10, 54}},
                {255, 255, 255});
  drawAndCompare(styleNamed("White", true));
}

TEST_F(TNVMarkOnView, FillingOverTheEdgeIsClipped) {
  mark.outline = {{-0.5, -0.5}, {2, 0.2}, {0.4, 1.9}};
  fillReference(expected, {{-50, -30}, {200, 12}, {40, 114}}, {255, 64, 64});
  drawAndCompare(styleNamed("Blue", true));
}

TEST_F(TNVMarkOnView, FillingOutsideOfTheViewLeavesIt) {
  mark.outline = {{1.5, 1.5}, {2, 1.5}, {2, 2}};
  drawAndCompare(styleNamed("White", true));
  mark.outline.clear();
  drawAndCompare(styleNamed("White", true));
}

TEST_F(TNVMarkOnView, FillingTakesTheLowByteOfAChannel) {
  TNVTypeMarkStyleSet style = styleNamed("White", true);
  style.colorNormal = cv::Scalar(300.9, -2, 256, 0);
  mark.outline = {{0.1, 0.1}, {0.8, 0.1}, {0.8, 0.8}};
  fillReference(expected, {{10, 6}, {80, 6}, {80, 48}}, {44, 254, 0});
  drawAndCompare(style);
}

TEST_F(TNVMarkOnView, FillingWithoutAClassIsBlack) {
  mark.outline = {{0.1, 0.1}, {0.8, 0.1}, {0.8, 0.8}};
  fillReference(expected, {{10, 6}, {80, 6}, {80, 48}}, {0, 0, 0});
  drawAndCompare(styleNamed("Colored", true));
}

TEST_F(TNVMarkOnView, SelectedMarkHasADashedFrame) {
  mark.selected = true;
  mark.size = {0.57, 0.43};
  // (0.5 - 0.285) 100 = 21.5, (0.5 - 0.215) 60 = 17.1, 78.5, 42.9.
  frameReference(expected, {{21, 17}, {78, 17}, {78, 42}, {21, 42}}, {0, 0, 255});
  drawAndCompare(styleNamed("White"));
}

TEST_F(TNVMarkOnView, FrameAtTheBorderShowsItsVisiblePart) {
  mark.selected = true;
  mark.center = {0.1, 0.95};
  frameReference(expected, {{-15, 49}, {35, 49}, {35, 64}, {-15, 64}}, {0, 0, 255});
  drawAndCompare(styleNamed("White"));
}

TEST_F(TNVMarkOnView, FrameStaysOnePixelWide) {
  mark.selected = true;
  TNVTypeMarkStyleSet style = styleNamed("White");
  style.thicknessSelected = 9;
  mark.size = {0.57, 0.43};
  frameReference(expected, {{21, 17}, {78, 17}, {78, 42}, {21, 42}}, {0, 0, 255});
  drawAndCompare(style);
}

TEST_F(TNVMarkOnView, HoveredMarkHasNoFrame) {
  mark.hovered = true;
  drawAndCompare(styleNamed("White"));
}

TEST_F(TNVMarkOnView, VisiblePoisAreBoxes) {
  mark.poiVisible = true;
  mark.hovered = true;
  // Boxes of 10 by 4.8 pixels: 25 - 5, 15 - 2.4; 99 - 5, 30.6 - 2.4; -50 - 5, 180 - 2.4.
  for (const cv::Point& corner : {cv::Point(20, 13), cv::Point(94, 28), cv::Point(-55, 178)}) {
    cv::rectangle(expected, cv::Rect(corner, cv::Size(10, 5)), {0, 255, 0}, 2, cv::LINE_AA, 0);
  }
  drawAndCompare(styleNamed("White"));
}

TEST_F(TNVMarkOnView, PoisOfSeveralClassesAreDrawnWithThicknessZero) {
  mark.poiVisible = true;
  mark.pois.resize(1);
  mark.classIdx = {11, 12};
  cv::rectangle(expected, cv::Rect(20, 13, 10, 5), {55, 60, 66}, 0, cv::LINE_AA, 0);
  drawAndCompare(styleNamed("Colored"));
}

TEST_F(TNVMarkOnView, PoisWithoutAClassAreFilledBlack) {
  mark.poiVisible = true;
  mark.pois.resize(1);
  cv::rectangle(expected, cv::Rect(20, 13, 10, 5), {0, 0, 0}, cv::FILLED, cv::LINE_AA, 0);
  drawAndCompare(styleNamed("Colored"));
}

TEST_F(TNVMarkOnView, FrameLiesOverTheFillingAndUnderThePois) {
  mark.outline = {{0.1, 0.1}, {0.8, 0.1}, {0.8, 0.8}};
  mark.selected = true;
  mark.poiVisible = true;
  mark.size = {0.57, 0.43};
  mark.pois = {{0.25, 0.3}};
  fillReference(expected, {{10, 6}, {80, 6}, {80, 48}}, {255, 255, 255});
  frameReference(expected, {{21, 17}, {78, 17}, {78, 42}, {21, 42}}, {255, 255, 255});
  cv::rectangle(expected, cv::Rect(20, 16, 10, 5), {255, 255, 255}, 1, cv::LINE_AA, 0);
  drawAndCompare(styleNamed("Red", true));
}

TEST_F(TNVMarkOnView, HostileGeometryIsDrawnInNoTime) {
  const auto start = std::chrono::steady_clock::now();
  mark.selected = mark.poiVisible = true;
  for (const double a : hostileNumbers()) {
    for (const double b : hostileNumbers()) {
      mark.center = {a, b};
      mark.size = {b, a};
      mark.outline = {{a, 0.5}, {b, a}, {0.5, b}};
      mark.pois = {{a, b}, {0.5, a}};
      mark.poiSize = {b, a};
      cv::Mat view = patternedPicture(100, 60);
      mark.draw(view, {1000, 600}, styleNamed("Colored", true), infoOf(0), {}, false);
    }
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(TNVMarkOnView, PoiBoxesFarLargerThanTheViewAreDrawnInNoTime) {
  const auto start = std::chrono::steady_clock::now();
  mark.poiVisible = true;
  mark.pois.assign(200, {0.5, 0.5});
  mark.poiSize = {1.4e6, 1.4e6};
  cv::Mat view = patternedPicture(1000, 600);
  // Without a known class the boxes are filled.
  mark.draw(view, {1000, 600}, styleNamed("Colored"), infoOf(0), {}, false);
  EXPECT_TRUE(samePixels(cv::Mat(600, 1000, CV_8UC3, cv::Scalar()), view));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(TNVMarkOnView, EmptyViewIsLeftAlone) {
  mark.selected = mark.poiVisible = true;
  mark.outline = {{0.1, 0.1}, {0.8, 0.1}, {0.8, 0.8}};
  cv::Mat view(0, 0, CV_8UC3);
  mark.draw(view, {1000, 600}, styleNamed("White", true), infoOf(0), {}, false);
  EXPECT_TRUE(view.empty());
}

TEST(TNVMark, SelectionFrameAsksForTheSizeOnThePicture) {
  PlainMark plain;
  plain.center = {0.5, 0.5};
  plain.selected = true;
  cv::Mat canvas(50, 80, CV_8UC3, cv::Scalar());
  plain.draw(canvas, {800, 700}, TNVTypeMarkStyleSet(), TNVTypeDrawInfo(), {}, false);
  ASSERT_EQ(1u, plain.sizesAsked.size());
  EXPECT_EQ(cv::Size(800, 700), plain.sizesAsked[0]);
}

TEST(TNVMark, CropAsksForTheSizeOnItsPicture) {
  PlainMark plain;
  plain.center = {0.5, 0.5};
  plain.size = {0.5, 0.5};
  EXPECT_EQ(cv::Size(40, 25), plain.getROIImage(cv::Mat(50, 80, CV_8UC3, cv::Scalar())).size());
  ASSERT_EQ(1u, plain.sizesAsked.size());
  EXPECT_EQ(cv::Size(80, 50), plain.sizesAsked[0]);
}

#include "editing/MarkDesign.h"

#include <cmath>
#include <memory>
#include <stdexcept>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marks/TNVMarkCircle.h"
#include "marks/TNVMarkEllipse.h"
#include "marks/TNVMarkImage.h"
#include "marks/TNVMarkLine.h"
#include "marks/TNVMarkPoint.h"
#include "marks/TNVMarkPolyLine.h"
#include "marks/TNVMarkRect.h"
#include "support/LogCapture.h"
#include "support/OpenProject.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class MarkDesignTest : public testing::Test {
 protected:
  MarkDesignTest() {
    builder.withClasses({"a", "b"}).withPictures({"a.png", "b.png"});
    open = std::make_unique<OpenProject>(builder);
    wrapper = std::make_unique<WTNVHandlerMark>(&open->marks());
    CallCounter<0>::count = 0;
    CallCounter<1>::count = 0;
    wrapper->setCBMarkDesigned(CallCounter<0>::call);
    wrapper->setCBMarkAdded(CallCounter<1>::call);
  }
  ~MarkDesignTest() override { wrapper.reset(); }

  bool design(const std::vector<std::vector<double>>& points, const std::string& form,
              const std::vector<WTNVDNNClass>& classes = {}) {
    return wrapper->designMark(points, form, classes);
  }
  TNVTrainSet& current() { return open->current(); }
  std::vector<WTNVDNNClass> classes() { return builder.project().wGetDNNClasses(); }

  ProjectBuilder builder;
  std::unique_ptr<OpenProject> open;
  std::unique_ptr<WTNVHandlerMark> wrapper;
};

}  // namespace

TEST_F(MarkDesignTest, FormsAskForTheirNumberOfPoints) {
  struct Row {
    const char* form;
    int fewest;
    int most;
  };
  for (const Row& row : {Row{"Rect", 2, 2},
                         {"Rect Center", 2, 2},
                         {"Point", 1, 1},
                         {"Image", 1, 1},
                         {"Circle", 2, 2},
                         {"Circle Multiple", 3, 99},
                         {"Line", 2, 2},
                         {"PolyLine", 3, 999},
                         {"PolyLine Closed", 3, 999},
                         {"Ellipse", 3, 3},
                         {"Ellipse Multiple", 5, 99},
                         {"rect", 0, 0},
                         {"", 0, 0},
                         {"Spiral", 0, 0}}) {
    EXPECT_EQ(row.fewest, wrapper->getMarkMinConstructionPoints(row.form)) << row.form;
    EXPECT_EQ(row.most, wrapper->getMarkMaxConstructionPoints(row.form)) << row.form;
  }
}

TEST_F(MarkDesignTest, RectangleFromTwoCorners) {
  ASSERT_TRUE(design({{0.6, 0.7}, {0.2, 0.3}}, "Rect"));
  const TNVMark& mark = *current().designedMark;
  EXPECT_EQ("Rect", mark.type);
  EXPECT_DOUBLE_EQ(0.4, mark.center.x);
  EXPECT_DOUBLE_EQ(0.5, mark.center.y);
  EXPECT_DOUBLE_EQ(0.4, mark.getRelSize({1, 1}).x);
  EXPECT_EQ(1, CallCounter<0>::count);
  EXPECT_EQ(cv::Point2d(-1, -1), mark.designPoint);
}

TEST_F(MarkDesignTest, RectangleFromCentreAndCorner) {
  ASSERT_TRUE(design({{0.5, 0.5}, {0.6, 0.7}}, "Rect Center"));
  const TNVMark& mark = *current().designedMark;
  EXPECT_EQ("Rect Center", mark.type);
  EXPECT_EQ(cv::Point2d(0.5, 0.5), mark.center);
  EXPECT_NEAR(0.2, mark.getRelSize({1, 1}).x, 1e-12);
  EXPECT_NEAR(0.4, mark.getRelSize({1, 1}).y, 1e-12);
}

TEST_F(MarkDesignTest, WholeImageMarkDoesNotUseItsPoint) {
  ASSERT_TRUE(design({{0.1, 0.9}}, "Image"));
  const TNVMark& mark = *current().designedMark;
  EXPECT_NE(nullptr, dynamic_cast<const TNVMarkImage*>(&mark));
  EXPECT_EQ("Rect", mark.type);
  EXPECT_EQ(cv::Point2d(0.5, 0.5), mark.center);
  EXPECT_EQ(cv::Point2d(0.9, 0.9), mark.getRelSize({1, 1}));
  ASSERT_TRUE(wrapper->addDesignedMark());
  EXPECT_EQ("Rect", wrapper->getAllMarks().at(0).wGetType());
}

TEST_F(MarkDesignTest, TooFewPointsKeepTheDesignPoints) {
  ASSERT_TRUE(design({{0.1, 0.1}, {0.2, 0.2}}, "Rect"));
  const LogCapture log;
  EXPECT_FALSE(design({{0.3, 0.4}}, "Rect"));
  EXPECT_THAT(current().designPoints, ElementsAre(cv::Point2d(0.3, 0.4)));
  EXPECT_EQ(nullptr, current().designedMark);
  EXPECT_EQ(nullptr, open->marks().markDesigned);
  EXPECT_EQ(1, CallCounter<0>::count);
  EXPECT_EQ("", log.text());
}

TEST_F(MarkDesignTest, WrongNumbersOfPointsAndUnknownFormsBuildNothing) {
  const std::vector<double> point{0.1, 0.1};
  EXPECT_FALSE(design({point, point, point}, "Rect"));
  EXPECT_FALSE(design({point, point, point}, "Rect Center"));
  EXPECT_FALSE(design({point, point}, "Image"));
  EXPECT_FALSE(design({}, "Rect"));
  EXPECT_FALSE(design({point, point, point}, "Spiral"));
  EXPECT_FALSE(design({point, point}, "rect"));
}

TEST_F(MarkDesignTest, ElementThatIsNoPairIsAPointAtTheOrigin) {
  ASSERT_TRUE(design({{0.1, 0.2, 0.3}, {0.4, 0.6}}, "Rect"));
  EXPECT_THAT(current().designPoints, ElementsAre(cv::Point2d(0, 0), cv::Point2d(0.4, 0.6)));
  EXPECT_EQ(cv::Point2d(0.2, 0.3), current().designedMark->center);
}

TEST_F(MarkDesignTest, GivenClassesGoBeforeTheSelectedOnes) {
  ASSERT_TRUE(design({{0.1, 0.1}}, "Image"));
  EXPECT_THAT(current().designedMark->classIdx, ElementsAre(0));
  ASSERT_TRUE(design({{0.1, 0.1}}, "Image", {classes()[1], classes()[0]}));
  EXPECT_THAT(current().designedMark->classIdx, ElementsAre(1, 0));
}

TEST_F(MarkDesignTest, MarkWithoutAnyClass) {
  wrapper->wSetDNNClassSelected({});
  EXPECT_TRUE(design({{0.1, 0.1}}, "Image"));
  EXPECT_THAT(current().designedMark->classIdx, IsEmpty());
}

TEST_F(MarkDesignTest, AddingEndsTheDesign) {
  ASSERT_TRUE(design({{0.1, 0.1}, {0.2, 0.2}}, "Rect"));
  EXPECT_TRUE(wrapper->addDesignedMark());
  EXPECT_EQ(nullptr, current().designedMark);
  EXPECT_EQ(nullptr, open->marks().markDesigned);
  EXPECT_THAT(current().designPoints, IsEmpty());
  EXPECT_THAT(current().marks, SizeIs(1));
  EXPECT_EQ(0, current().marks[0]->uniqueId);
  EXPECT_EQ(1, CallCounter<1>::count);
  const LogCapture log;
  EXPECT_FALSE(wrapper->addDesignedMark());
  EXPECT_THAT(
      log.lines(),
      ElementsAre("TNVHandlerMark::addDesignedMark: Could not add mark, no mark designed!"));
  EXPECT_EQ(1, CallCounter<1>::count);
}

namespace {

/// What stood when an event was last called.
struct Standing {
  static void record() {
    previewed = trainSet->designedMark;
    owned = handler->markDesigned.get();
    points = trainSet->designPoints.size();
  }

  static inline const TNVHandlerMark* handler = nullptr;
  static inline const TNVTrainSet* trainSet = nullptr;
  static inline const TNVMark* previewed = nullptr;
  static inline const TNVMark* owned = nullptr;
  static inline std::size_t points = 0;
};

}  // namespace

TEST_F(MarkDesignTest, EventsComeWhenTheDesignStandsAndWhenItIsGone) {
  Standing::handler = &open->marks();
  Standing::trainSet = &current();
  wrapper->setCBMarkDesigned(Standing::record);
  wrapper->setCBMarkAdded(Standing::record);
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(design({{0.1, 0.1}, {0.2, 0.2}}, "Rect"));
    EXPECT_NE(nullptr, Standing::previewed);
    EXPECT_EQ(current().designedMark, Standing::previewed);
    EXPECT_EQ(Standing::previewed, Standing::owned);
    EXPECT_EQ(2U, Standing::points);
    ASSERT_TRUE(wrapper->addDesignedMark());
    EXPECT_EQ(nullptr, Standing::previewed);
    EXPECT_EQ(nullptr, Standing::owned);
    EXPECT_EQ(0U, Standing::points);
  }
}

TEST_F(MarkDesignTest, POISizeComesFromTheProject) {
  struct Row {
    int use;
    cv::Point2d size;
  };
  WTNVProject& project = builder.project();
  project.wSetPOIRelSize(0.3, 0.4);
  project.wSetPOIAbsSize(16, 24);
  // The pictures are 64 by 48 pixels.
  for (const Row& row : {Row{1, {0.3, 0.4}}, Row{2, {0.25, 0.5}}, Row{0, {0, 0}}, Row{3, {0, 0}}}) {
    project.wSetPOISizeUse(row.use);
    ASSERT_TRUE(design({{0.1, 0.1}}, "Image"));
    ASSERT_TRUE(wrapper->addDesignedMark());
    EXPECT_EQ(row.size, current().marks.back()->poiSize) << row.use;
  }
}

TEST_F(MarkDesignTest, MissingTrainSetProjectAndImageAreLogged) {
  TNVHandlerMark lonely;
  TNVTrainSet unreadable("missing.png", "");
  unreadable.loadImage();
  TNVTrainSet flat("missing.png", "");
  flat.imageWidth = 5;
  TNVTrainSet known("missing.png", "");
  known.imageWidth = 5;
  known.imageHeight = 5;
  const LogCapture log;
  EXPECT_FALSE(lonely.designMark({{0, 0}}, "Image", {}));
  lonely.trainSet = &unreadable;
  EXPECT_FALSE(lonely.designMark({{0, 0}}, "Image", {}));
  lonely.trainSet = &flat;
  EXPECT_FALSE(lonely.designMark({{0, 0}}, "Image", {}));
  lonely.trainSet = &known;
  EXPECT_FALSE(lonely.designMark({{0, 0}}, "Image", {}));
  lonely.markDesigned = std::make_unique<TNVMarkRect>();
  EXPECT_FALSE(lonely.addDesignedMark());
  lonely.trainSet = nullptr;
  EXPECT_FALSE(lonely.addDesignedMark());
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVHandlerMark::designMark: Current TrainSet is nullptr!",
                          "TNVHandlerMark::designMark: TrainSet has no image!",
                          "TNVHandlerMark::designMark: TrainSet has no image!",
                          "TNVHandlerMark::designMark: Current Project is nullptr!",
                          "TNVHandlerMark::addDesignedMark: Current Project is nullptr!",
                          "TNVHandlerMark::addDesignedMark: Current TrainSet is nullptr!"));
}

TEST_F(MarkDesignTest, DesignDoesNotOutliveItsHandlerInTheTrainSet) {
  ASSERT_TRUE(design({{0.1, 0.1}, {0.2, 0.2}}, "Rect"));
  TNVTrainSet& trainSet = current();
  wrapper.reset();
  open.reset();
  EXPECT_EQ(nullptr, trainSet.designedMark);
}

namespace {

/// Points of a circle of 16 pixels around (32, 24) on a picture of 64 by 48, relative.
std::vector<double> rimPoint(double degrees) {
  const double angle = degrees / 180 * 3.141592653589793;
  return {(32 + 16 * std::cos(angle)) / 64, (24 + 16 * std::sin(angle)) / 48};
}

template <class Kind>
const Kind& as(const TNVMark* mark) {
  const auto* kind = dynamic_cast<const Kind*>(mark);
  if (kind == nullptr) throw std::runtime_error("a mark of another kind");
  return *kind;
}

const cv::Point2d kNoPoint{-1, -1};

}  // namespace

TEST_F(MarkDesignTest, PointAndLineAreBuiltFromTheirPoints) {
  ASSERT_TRUE(design({{0.25, 0.75}}, "Point"));
  EXPECT_EQ(as<TNVMarkPoint>(current().designedMark).center, cv::Point2d(0.25, 0.75));
  ASSERT_TRUE(design({{0.25, 0.75}, {0.5, 0.25}}, "Line"));
  const auto& line = as<TNVMarkLine>(current().designedMark);
  EXPECT_EQ(line.pointA, cv::Point2d(0.25, 0.75));
  EXPECT_EQ(line.pointB, cv::Point2d(0.5, 0.25));
  EXPECT_EQ(line.center, cv::Point2d(0.375, 0.5));
}

TEST_F(MarkDesignTest, CircleFromCentreAndRim) {
  ASSERT_TRUE(design({{0.25, 0.75}, {0.5, 0.25}}, "Circle"));
  const auto& circle = as<TNVMarkCircle>(current().designedMark);
  EXPECT_EQ(circle.center, cv::Point2d(0.25, 0.75));
  EXPECT_THAT(circle.radius, ElementsAre(cv::Point2d(0.5, 0.25)));
  EXPECT_EQ(circle.designPoint, kNoPoint);
}

TEST_F(MarkDesignTest, ACircleThroughThreePointsUsesAllOfThem) {
  ASSERT_TRUE(design({rimPoint(0), rimPoint(90), rimPoint(200)}, "Circle Multiple"));
  const auto& circle = as<TNVMarkCircle>(current().designedMark);
  EXPECT_NEAR(circle.center.x, 0.5, 1e-4);
  EXPECT_NEAR(circle.center.y, 0.5, 1e-4);
  EXPECT_NEAR(circle.getRelSize({64, 48}).x, 0.5, 1e-4);
  EXPECT_EQ(circle.designPoint, kNoPoint);
}

TEST_F(MarkDesignTest, OfFourPointsOfACircleTheLastIsTheCursor) {
  ASSERT_TRUE(design({rimPoint(0), rimPoint(90), rimPoint(200), {0.9, 0.8}}, "Circle Multiple"));
  const auto& circle = as<TNVMarkCircle>(current().designedMark);
  EXPECT_NEAR(circle.center.x, 0.5, 1e-4);
  EXPECT_NEAR(circle.getRelSize({64, 48}).x, 0.5, 1e-4);
  EXPECT_EQ(circle.designPoint, cv::Point2d(0.9, 0.8));
}

TEST_F(MarkDesignTest, PolylinesKeepTheLastOfMoreThanTwoPointsForTheCursor) {
  for (const bool closed : {false, true}) {
    const std::string form = closed ? "PolyLine Closed" : "PolyLine";
    EXPECT_FALSE(design({{0.1, 0.2}}, form));
    ASSERT_TRUE(design({{0.1, 0.2}, {0.3, 0.4}}, form));
    const auto& preview = as<TNVMarkPolyLine>(current().designedMark);
    EXPECT_THAT(preview.polyPoints, ElementsAre(cv::Point2d(0.1, 0.2), cv::Point2d(0.3, 0.4)));
    EXPECT_EQ(preview.closed, closed);
    EXPECT_EQ(preview.designPoint, kNoPoint);
    ASSERT_TRUE(design({{0.1, 0.2}, {0.3, 0.4}, {0.9, 0.8}}, form));
    const auto& path = as<TNVMarkPolyLine>(current().designedMark);
    EXPECT_THAT(path.polyPoints, ElementsAre(cv::Point2d(0.1, 0.2), cv::Point2d(0.3, 0.4)));
    EXPECT_EQ(path.closed, closed);
    EXPECT_EQ(path.designPoint, cv::Point2d(0.9, 0.8));
  }
}

TEST_F(MarkDesignTest, AnEllipseIgnoresPointsBeyondTheThird) {
  for (const std::size_t count : {3U, 4U, 5U}) {
    const std::vector<std::vector<double>> points{
        {0.5, 0.5}, {0.75, 0.5}, {0.5, 0.25}, {0.9, 0.9}, {0.1, 0.9}};
    ASSERT_TRUE(design({points.begin(), points.begin() + static_cast<int>(count)}, "Ellipse"));
    const auto& ellipse = as<TNVMarkEllipse>(current().designedMark);
    EXPECT_EQ(ellipse.center, cv::Point2d(0.5, 0.5));
    EXPECT_EQ(ellipse.pointA, cv::Point2d(0.75, 0.5));
    EXPECT_EQ(ellipse.pointB, cv::Point2d(0.5, 0.25));
    EXPECT_EQ(ellipse.designPoint, kNoPoint);
  }
}

TEST_F(MarkDesignTest, AnEllipseThroughFivePointsUsesAllAndOfSixTheLastIsTheCursor) {
  std::vector<std::vector<double>> points;
  for (const double degrees : {0, 72, 144, 216, 288})
    points.push_back(rimPoint(degrees));
  ASSERT_TRUE(design(points, "Ellipse Multiple"));
  const auto& five = as<TNVMarkEllipse>(current().designedMark);
  EXPECT_EQ(five.designPoint, kNoPoint);
  // The accumulators have half the resolution of the picture.
  EXPECT_NEAR(five.center.x * 64, 32, 2);
  EXPECT_NEAR(five.center.y * 48, 24, 2);
  points.push_back({0.9, 0.8});
  ASSERT_TRUE(design(points, "Ellipse Multiple"));
  const auto& six = as<TNVMarkEllipse>(current().designedMark);
  EXPECT_EQ(six.designPoint, cv::Point2d(0.9, 0.8));
  EXPECT_NEAR(six.center.x * 64, 32, 2);
  EXPECT_NEAR(six.center.y * 48, 24, 2);
}

TEST_F(MarkDesignTest, TooFewAndTooManyPointsForEachForm) {
  struct Row {
    const char* form;
    std::vector<std::size_t> refused;
  };
  for (const auto& [form, refused] : {Row{"Point", {0, 2}},
                                      {"Image", {0, 2}},
                                      {"Circle", {0, 1, 3}},
                                      {"Circle Multiple", {0, 1, 2}},
                                      {"Line", {0, 1, 3}},
                                      {"PolyLine", {0, 1}},
                                      {"PolyLine Closed", {0, 1}},
                                      {"Ellipse", {0, 1, 2}},
                                      {"Ellipse Multiple", {0, 1, 2, 3, 4}}}) {
    for (const std::size_t count : refused) {
      EXPECT_FALSE(design(std::vector<std::vector<double>>(count, {0.5, 0.5}), form))
          << form << " " << count;
      EXPECT_THAT(current().designPoints, SizeIs(count));
    }
  }
}

TEST_F(MarkDesignTest, TheMostPointsOfAFormAreNotALimitOfTheDesign) {
  std::vector<std::vector<double>> points;
  for (int i = 0; i < 120; ++i)
    points.push_back(rimPoint(3.0 * i));
  EXPECT_TRUE(design(points, "Circle Multiple"));
  EXPECT_TRUE(design(points, "Ellipse Multiple"));
  EXPECT_TRUE(design(std::vector<std::vector<double>>(1200, {0.5, 0.5}), "PolyLine"));
}

TEST_F(MarkDesignTest, EachFormIsAddedAsItsKindAndComesBack) {
  struct Row {
    const char* form;
    const char* type;
    std::vector<std::vector<double>> points;
  };
  const std::vector<double> other{0.75, 0.625};
  const std::vector<std::vector<double>> rim{rimPoint(0), rimPoint(72), rimPoint(144),
                                             rimPoint(216), rimPoint(288)};
  const std::vector<Row> rows{{"Rect", "Rect", {{0.5, 0.5}, other}},
                              {"Point", "Point", {other}},
                              {"Image", "Rect", {other}},
                              {"Circle", "Circle", {{0.5, 0.5}, other}},
                              {"Circle Multiple", "Circle", rim},
                              {"Line", "Line", {{0.5, 0.5}, other}},
                              {"PolyLine", "PolyLine", rim},
                              {"PolyLine Closed", "PolyLine", rim},
                              {"Ellipse", "Ellipse", {{0.5, 0.5}, other, {0.25, 0.5}}},
                              {"Ellipse Multiple", "Ellipse", rim}};
  for (const Row& row : rows) {
    ASSERT_TRUE(design(row.points, row.form)) << row.form;
    ASSERT_TRUE(wrapper->addDesignedMark()) << row.form;
  }
  ASSERT_THAT(current().marks, SizeIs(rows.size()));
  ASSERT_TRUE(builder.project().wUpdate(true));
  TNVTrainSet back;
  back.dataPath = current().dataPath;
  back.load();
  ASSERT_THAT(back.marks, SizeIs(rows.size()));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const TNVMark& made = *current().marks[i];
    const TNVMark& read = *back.marks[i];
    EXPECT_EQ(made.getTypeName(false), rows[i].type);
    EXPECT_EQ(read.getTypeName(false), rows[i].type);
    EXPECT_EQ(read.type, rows[i].type);
    EXPECT_NEAR(cv::norm(read.center - made.center), 0, 1e-9) << rows[i].form;
    EXPECT_NEAR(cv::norm(read.getRelSize({64, 48}) - made.getRelSize({64, 48})), 0, 1e-9);
    EXPECT_EQ(read.getContour({64, 48}).size(), made.getContour({64, 48}).size());
  }
  EXPECT_FALSE(as<TNVMarkPolyLine>(back.marks[6].get()).closed);
  EXPECT_TRUE(as<TNVMarkPolyLine>(back.marks[7].get()).closed);
}

TEST_F(MarkDesignTest, ADesignThatIsRefusedForWantOfAPictureKeepsTheEarlierOne) {
  ASSERT_TRUE(design({{0.1, 0.1}, {0.2, 0.2}}, "Rect"));
  const TNVMark* earlier = open->marks().markDesigned.get();
  TNVTrainSet unreadable("missing.png", "");
  unreadable.setUnreadable();
  TNVTrainSet* const own = std::exchange(open->marks().trainSet, &unreadable);
  {
    const LogCapture log;
    EXPECT_FALSE(design({{0.3, 0.3}, {0.4, 0.4}}, "Rect"));
    open->marks().trainSet = nullptr;
    EXPECT_FALSE(design({{0.3, 0.3}, {0.4, 0.4}}, "Rect"));
    open->marks().trainSet = own;
    TNVProject* const project = std::exchange(open->marks().project, nullptr);
    EXPECT_FALSE(design({{0.3, 0.3}, {0.4, 0.4}}, "Rect"));
    open->marks().project = project;
  }
  EXPECT_EQ(open->marks().markDesigned.get(), earlier);
}

TEST_F(MarkDesignTest, AfterNavigationTheOldDesignIsAddedToTheNewTrainSet) {
  ASSERT_TRUE(design({{0.1, 0.1}, {0.2, 0.2}}, "Rect"));
  TNVTrainSet& first = current();
  open->trainSets().setTrainSetForward(1);
  ASSERT_NE(&first, &current());
  EXPECT_EQ(first.designedMark, nullptr);
  EXPECT_THAT(first.designPoints, IsEmpty());
  EXPECT_TRUE(wrapper->addDesignedMark());
  EXPECT_THAT(first.marks, IsEmpty());
  EXPECT_THAT(current().marks, SizeIs(1));
}

TEST_F(MarkDesignTest, AnAbsolutePoiSizeOnAnUnreadablePictureIsNone) {
  TNVProject& project = *builder.project().getNativeProject();
  project.poiAbsSize = {16, 3};
  project.poiSizeUse = 0;
  ASSERT_TRUE(design({{0.1, 0.1}, {0.2, 0.2}}, "Rect"));
  TNVTrainSet unreadable("missing.png", "");
  unreadable.setUnreadable();
  TNVTrainSet* const own = std::exchange(open->marks().trainSet, &unreadable);
  project.poiSizeUse = 2;
  EXPECT_TRUE(wrapper->addDesignedMark());
  open->marks().trainSet = own;
  EXPECT_EQ(unreadable.marks.at(0)->poiSize, cv::Point2d(0, 0));
}

TEST_F(MarkDesignTest, NullClassesAreLeftOut) {
  const WTNVDNNClass none;
  const WTNVDNNClass second = classes()[1];
  wrapper->wSetDNNClassSelected({none, second});
  EXPECT_EQ(wrapper->wGetDNNClassSelected().size(), 1U);
  ASSERT_TRUE(design({{0.1, 0.1}, {0.2, 0.2}}, "Rect", {none, classes()[0]}));
  EXPECT_THAT(current().designedMark->classIdx, ElementsAre(0));
  ASSERT_TRUE(design({{0.1, 0.1}, {0.2, 0.2}}, "Rect", {none}));
  EXPECT_THAT(current().designedMark->classIdx, ElementsAre(1)) << "as with an empty list";
  ASSERT_TRUE(wrapper->addDesignedMark());
  const WTNVMark mark = wrapper->getAllMarks().at(0);
  wrapper->updateMark(mark, 0.5, 0.5, 0.1, 0.1, {none}, 64, 48);
  EXPECT_THAT(mark.wGetClassIdx(), ElementsAre(1));
  EXPECT_FALSE(mark.wGetFirstDNNClass({none}).isValid());
  EXPECT_TRUE(mark.wGetFirstDNNClass({none, second}).isValid());
  EXPECT_EQ(mark.wGetDNNClasses({none, second}).size(), 1U);
  wrapper->setMarkSelected(mark, true);
  wrapper->updateSelectedMarks({none});
  EXPECT_THAT(mark.wGetClassIdx(), IsEmpty());
  WTNVHandlerImageView view(&open->view());
  view.wSetDrawOnlyDNNs({none});
  EXPECT_TRUE(view.wGetDrawOnlyDNNs().empty());
}

TEST_F(MarkDesignTest, APictureOutOfAllProportionIsNoImage) {
  // The header of a picture of 100,000 by 100,000 pixels.
  builder.temp.write("huge.ppm", "P6 100000 100000 255\n");
  TNVTrainSet huge(builder.temp / "huge.ppm", "");
  huge.loadImage();
  TNVTrainSet* const own = std::exchange(open->marks().trainSet, &huge);
  const LogCapture log;
  EXPECT_FALSE(design({{0.3, 0.3}, {0.4, 0.4}}, "Rect"));
  EXPECT_THAT(log.lines(), ElementsAre("TNVHandlerMark::designMark: TrainSet has no image!"));
  open->marks().trainSet = own;
}

TEST(MarkDesign, ClassesGoWithTheirProject) {
  auto builder = std::make_unique<ProjectBuilder>();
  builder->withClasses({"a"}).withPictures({"a.png"});
  OpenProject open(*builder);
  WTNVHandlerMark marks(&open.marks());
  WTNVHandlerImageView view(&open.view());
  view.wSetDrawOnlyDNNs(builder->project().wGetDNNClasses());
  ASSERT_EQ(marks.wGetDNNClassSelected().size(), 1U);
  builder.reset();
  EXPECT_TRUE(marks.wGetDNNClassSelected().empty());
  EXPECT_TRUE(view.wGetDrawOnlyDNNs().empty());
}

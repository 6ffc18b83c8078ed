#include "editing/MarkDesign.h"

#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marks/TNVMarkImage.h"
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
  for (const Row& row : {Row{"Rect", 2, 2}, Row{"Rect Center", 2, 2}, Row{"Image", 1, 1},
                         Row{"rect", 0, 0}, Row{"", 0, 0}, Row{"Spiral", 0, 0}}) {
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

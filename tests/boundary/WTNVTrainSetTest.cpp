#include "TNV_SampleBenchNative/WTNVTrainSet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "marks/TNVMarkRect.h"
#include "project/TNVDNNClass.h"
#include "project/TNVTrainSet.h"
#include "support/ProjectBuilder.h"
#include "support/TempDirectory.h"

namespace {

TNVMarkRect rectangleAt(double x) {
  return {{x, 0.25}, {x + 0.125, 0.5}, false};
}

}  // namespace

TEST(WTNVTrainSet, MarksComeInDrawingOrder) {
  TNVTrainSet trainSet("a.jpg", "/base/");
  const TNVMark* first = trainSet.addMark(rectangleAt(0.5));
  const TNVMark* second = trainSet.addMark(rectangleAt(0.25));
  const auto marks = WTNVTrainSet(&trainSet).wGetMarks();
  ASSERT_EQ(marks.size(), 2U);
  EXPECT_EQ(marks[0].getNativeMark(), first);
  EXPECT_EQ(marks[1].getNativeMark(), second);
}

TEST(WTNVTrainSet, MarksAreThereOnceTheDataWereRead) {
  const TempDirectory temp;
  TNVTrainSet written("a.jpg", "/base/");
  written.addMark(rectangleAt(0.5));
  ASSERT_TRUE(written.save(temp.path()));
  TNVTrainSet read;
  read.dataPath = written.dataPath;
  const WTNVTrainSet handle(&read);
  EXPECT_TRUE(handle.wGetMarks().empty());
  ASSERT_TRUE(handle.wLoadData());
  const auto marks = handle.wGetMarks();
  ASSERT_EQ(marks.size(), 1U);
  double x = 0;
  double y = 0;
  marks[0].wGetRelCenter(x, y);
  EXPECT_DOUBLE_EQ(x, 0.5625);
  EXPECT_DOUBLE_EQ(y, 0.375);
}

namespace {

/// Marks that carry those classes, each of them this much beside the one before.
void fill(TNVTrainSet& trainSet, const std::vector<std::vector<int>>& classes,
          double step = 0.0625) {
  double x = 0.25;
  for (const std::vector<int>& ofMark : classes) {
    TNVMarkRect mark = rectangleAt(x);
    mark.classIdx = ofMark;
    trainSet.addMark(mark);
    x += step;
  }
  trainSet.changed = false;
}

WTNVDNNClass classAt(int idx) {
  static std::map<int, TNVDNNClass> classes;
  return WTNVDNNClass(&classes.emplace(idx, idx).first->second);
}

std::vector<std::vector<int>> classesOf(const TNVTrainSet& trainSet) {
  std::vector<std::vector<int>> classes;
  for (const auto& mark : trainSet.marks)
    classes.push_back(mark->classIdx);
  return classes;
}

}  // namespace

TEST(WTNVTrainSet, AReplacedClassStandsOnceInEachMark) {
  TNVTrainSet trainSet("a.jpg", "/base/");
  fill(trainSet, {{3}, {4, 3}, {3, 5, 4}, {5}, {}});
  const int tag = trainSet.marks[0]->changeTag;
  const int untouched = trainSet.marks[3]->changeTag;
  EXPECT_EQ(WTNVTrainSet(&trainSet).wReplaceClass(classAt(3), classAt(4)), 3);
  EXPECT_THAT(classesOf(trainSet),
              testing::ElementsAre(std::vector{4}, std::vector{4}, std::vector{4, 5},
                                   std::vector{5}, std::vector<int>{}));
  EXPECT_TRUE(trainSet.changed);
  EXPECT_NE(trainSet.marks[0]->changeTag, tag);
  EXPECT_EQ(trainSet.marks[3]->changeTag, untouched);
}

TEST(WTNVTrainSet, OfMarksThatAReplacementMakesTheSameOneStays) {
  TNVTrainSet trainSet("a.jpg", "/base/");
  // In one place. The last two were the same before, which is not the replacement's doing.
  fill(trainSet, {{3}, {3, 5}, {4}, {5, 3}, {5, 4, 7}, {6}, {6}}, 0);
  TNVMarkRect elsewhere = rectangleAt(0.125);
  elsewhere.classIdx = {3};
  trainSet.addMark(elsewhere);
  const int untouched = trainSet.marks[2]->changeTag;
  EXPECT_EQ(WTNVTrainSet(&trainSet).wReplaceClass(classAt(3), classAt(4)), 4);
  EXPECT_THAT(classesOf(trainSet),
              testing::ElementsAre(std::vector{4, 5}, std::vector{4}, std::vector{5, 4, 7},
                                   std::vector{6}, std::vector{6}, std::vector{4}));
  EXPECT_EQ(trainSet.marks[1]->changeTag, untouched);
}

TEST(WTNVTrainSet, NothingToReplaceChangesNothing) {
  TNVTrainSet trainSet("a.jpg", "/base/");
  fill(trainSet, {{3}, {}});
  EXPECT_EQ(WTNVTrainSet(&trainSet).wReplaceClass(classAt(7), classAt(4)), 0);
  EXPECT_EQ(WTNVTrainSet(&trainSet).wReplaceClass(classAt(3), classAt(3)), 0);
  EXPECT_EQ(WTNVTrainSet(&trainSet).wRemoveClass(classAt(7)), 0);
  EXPECT_FALSE(trainSet.changed);
}

TEST(WTNVTrainSet, ARemovedClassTakesTheMarksAlongThatHaveNoOther) {
  TNVTrainSet trainSet("a.jpg", "/base/");
  fill(trainSet, {{3}, {4, 3}, {}, {5}, {3}});
  const WTNVMark first = WTNVTrainSet(&trainSet).wGetMarks().front();
  EXPECT_EQ(WTNVTrainSet(&trainSet).wRemoveClass(classAt(3)), 3);
  EXPECT_THAT(classesOf(trainSet),
              testing::ElementsAre(std::vector{4}, std::vector<int>{}, std::vector{5}));
  EXPECT_TRUE(trainSet.changed);
  EXPECT_EQ(first.wGetType(), "Rect") << "a removed mark stays readable";
}

TEST(WTNVTrainSet, WorkflowIsFoundAmongThoseOfTheProject) {
  ProjectBuilder builder;
  builder.withPictures({"a.png"});
  builder.project().wAddWorkflow("new", -1);
  const auto done = builder.project().wAddWorkflow("done", -1);
  const auto workflows = builder.project().wGetWorkflows();
  const WTNVTrainSet trainSet = builder.project().wGetTrainSets().front();
  EXPECT_FALSE(trainSet.wGetWorkflow(workflows).isValid());
  trainSet.getNativeTrainSet()->workflow = 1;
  ASSERT_TRUE(trainSet.wGetWorkflow(workflows).isValid());
  EXPECT_EQ(trainSet.wGetWorkflow(workflows).getNativeWorkflow(), done.getNativeWorkflow());
  EXPECT_FALSE(trainSet.wGetWorkflow({WTNVWorkflow()}).isValid());
  trainSet.getNativeTrainSet()->dataLoaded = false;
  EXPECT_FALSE(trainSet.wGetWorkflow(workflows).isValid());
}

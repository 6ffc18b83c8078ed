#include "TNV_SampleBenchNative/WTNVTrainSet.h"

#include <gtest/gtest.h>

#include "marks/TNVMarkRect.h"
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

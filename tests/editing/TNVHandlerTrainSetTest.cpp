#include "editing/TNVHandlerTrainSet.h"

#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TNV_SampleBenchNative/WTNVHandlerTrainSet.h"
#include "project/TNVWorkflow.h"
#include "support/LogCapture.h"
#include "support/OpenProject.h"

using testing::Contains;
using testing::ElementsAre;

namespace {

constexpr int kChanged = 20;
constexpr int kComment = 21;
constexpr int kSpecial = 22;
constexpr int kRemove = 23;
constexpr int kWorkflow = 24;
constexpr int kImageLoaded = 25;

class TNVHandlerTrainSetTest : public testing::Test {
 protected:
  /// Opens a project of that many pictures.
  void open(int pictures, bool cacheImages = false, int cacheCount = 10) {
    std::vector<std::string> names;
    for (int i = 0; i < pictures; ++i)
      names.push_back(std::to_string(i) + ".png");
    if (pictures > 0) builder.withPictures(names);
    builder.project().wSetCacheImages(cacheImages);
    builder.project().wSetCacheImagesCount(cacheCount);
    opened = std::make_unique<OpenProject>(builder);
    wrapper = std::make_unique<WTNVHandlerTrainSet>(&opened->trainSets());
    CallCounter<kChanged>::count = 0;
    CallCounter<kImageLoaded>::count = 0;
    wrapper->setCBTrainSetChanged(CallCounter<kChanged>::call);
    wrapper->setCBImageLoaded(CallCounter<kImageLoaded>::call);
  }

  TNVTrainSet& at(std::size_t i) { return *opened->trainSets().trainSets.at(i); }

  /// The train sets whose picture is in memory.
  std::vector<std::size_t> loaded() {
    std::vector<std::size_t> indices;
    for (std::size_t i = 0; i < opened->trainSets().trainSets.size(); ++i) {
      if (at(i).isImageLoaded()) indices.push_back(i);
    }
    return indices;
  }

  /// Queues the picture of a train set without waiting for it, and waits for the worker.
  void visit(std::size_t i) {
    opened->trainSets().idxCur = static_cast<int>(i);
    opened->trainSets().trainSetCurrent();
    ASSERT_TRUE(eventually([&] { return at(i).isImageLoaded(); }));
  }

  ProjectBuilder builder;
  std::unique_ptr<OpenProject> opened;
  std::unique_ptr<WTNVHandlerTrainSet> wrapper;
};

}  // namespace

TEST_F(TNVHandlerTrainSetTest, StepsAreHeldAtTheEndsOfTheList) {
  open(3);
  EXPECT_EQ(3u, wrapper->wGetTrainSetCount());
  EXPECT_EQ(0u, wrapper->wGetTrainSetCurIdx());
  EXPECT_EQ(&at(2), wrapper->wSetTrainSetForward(1000).getNativeTrainSet());
  EXPECT_EQ(2u, wrapper->wGetTrainSetCurIdx());
  EXPECT_EQ(1, CallCounter<kChanged>::count);
  EXPECT_EQ(&at(0), wrapper->wSetTrainSetBackward(1000).getNativeTrainSet());
  EXPECT_EQ(0u, wrapper->wGetTrainSetCurIdx());
  wrapper->wSetTrainSetBackward(1);
  EXPECT_EQ(0u, wrapper->wGetTrainSetCurIdx());
  EXPECT_EQ(3, CallCounter<kChanged>::count);
}

TEST_F(TNVHandlerTrainSetTest, StepsAreAddedIn32Bits) {
  open(3);
  wrapper->wSetTrainSetForward(1);
  wrapper->wSetTrainSetForward(4294967295u);
  EXPECT_EQ(0u, wrapper->wGetTrainSetCurIdx());
}

TEST_F(TNVHandlerTrainSetTest, StepOfZeroBindsAnew) {
  open(2);
  opened->view().getARImage();
  ASSERT_FALSE(opened->view().imgAR.empty());
  wrapper->wSetTrainSetForward(0);
  EXPECT_TRUE(opened->view().imgAR.empty());
  EXPECT_TRUE(opened->view().imgScaled.empty());
  EXPECT_EQ(0u, wrapper->wGetTrainSetCurIdx());
  EXPECT_EQ(1, CallCounter<kChanged>::count);
}

TEST_F(TNVHandlerTrainSetTest, CurrentAndLeftTrainSetsAreFlagged) {
  open(3);
  builder.project().wUpdate(true);
  EXPECT_TRUE(at(0).current && at(0).changed);
  EXPECT_FALSE(at(1).changed);
  wrapper->wSetTrainSetForward(1);
  EXPECT_TRUE(at(0).changed);
  EXPECT_FALSE(at(0).current);
  EXPECT_TRUE(at(1).current && at(1).changed);
  EXPECT_FALSE(at(2).changed);
}

TEST_F(TNVHandlerTrainSetTest, LeavingForgetsTheDesign) {
  open(2);
  ASSERT_TRUE(opened->marks().designMark({{0.1, 0.1}, {0.2, 0.2}}, "Rect", {}));
  const TNVMark* designed = opened->marks().markDesigned.get();
  wrapper->wSetTrainSetForward(1);
  EXPECT_EQ(nullptr, at(0).designedMark);
  EXPECT_THAT(at(0).designPoints, testing::IsEmpty());
  EXPECT_EQ(designed, opened->marks().markDesigned.get());
}

TEST_F(TNVHandlerTrainSetTest, DataAreReadOnArrival) {
  open(2);
  builder.project().wUpdate(true);
  wrapper.reset();
  opened.reset();
  builder.reopened();
  open(0);
  EXPECT_TRUE(at(0).dataLoaded);
  EXPECT_FALSE(at(1).dataLoaded);
  wrapper->wSetTrainSetForward(1);
  EXPECT_TRUE(at(1).dataLoaded);
}

TEST_F(TNVHandlerTrainSetTest, EmptyProjectAnswersWithNothing) {
  open(0);
  const LogCapture log;
  EXPECT_EQ(0u, wrapper->wGetTrainSetCount());
  EXPECT_EQ(nullptr, wrapper->wGetTrainSetCur().getNativeTrainSet());
  wrapper->wSetComment("x");
  EXPECT_EQ("", wrapper->wGetComment());
  wrapper->wSetUseSpecialTest(true);
  EXPECT_FALSE(wrapper->wGetUseSpecialTest());
  wrapper->wSetRemove(true);
  EXPECT_FALSE(wrapper->wGetRemove());
  wrapper->wSetWorkflow(WTNVWorkflow());
  EXPECT_FALSE(wrapper->wGetWorkflow({}).isValid());
  EXPECT_THAT(log.lines(),
              testing::Each("TNVMainProcess::trainSetCurrent: Project has no trainsets!"));
  EXPECT_EQ(9u, log.lines().size());
}

TEST_F(TNVHandlerTrainSetTest, FieldsOfTheCurrentTrainSetFireAlways) {
  open(1);
  CallCounter<kComment>::count = 0;
  CallCounter<kSpecial>::count = 0;
  CallCounter<kRemove>::count = 0;
  CallCounter<kWorkflow>::count = 0;
  wrapper->setCBCommentUpdated(CallCounter<kComment>::call);
  wrapper->setCBUseSpecialTestUpdated(CallCounter<kSpecial>::call);
  wrapper->setCBRemoveChanged(CallCounter<kRemove>::call);
  wrapper->setCBWorkflowChanged(CallCounter<kWorkflow>::call);
  for (int i = 0; i < 2; ++i) {
    wrapper->wSetComment("note");
    wrapper->wSetUseSpecialTest(true);
    wrapper->wSetRemove(true);
    wrapper->wSetWorkflow(WTNVWorkflow());
  }
  EXPECT_EQ("note", wrapper->wGetComment());
  EXPECT_TRUE(wrapper->wGetUseSpecialTest());
  EXPECT_TRUE(wrapper->wGetRemove());
  EXPECT_EQ(2, CallCounter<kComment>::count);
  EXPECT_EQ(2, CallCounter<kSpecial>::count);
  EXPECT_EQ(2, CallCounter<kRemove>::count);
  EXPECT_EQ(2, CallCounter<kWorkflow>::count);
}

TEST_F(TNVHandlerTrainSetTest, CommentThatIsTooLongIsRefused) {
  open(1);
  wrapper->wSetComment("short");
  CallCounter<kComment>::count = 0;
  wrapper->setCBCommentUpdated(CallCounter<kComment>::call);
  const LogCapture log;
  wrapper->wSetComment(std::string(4096, 'x'));
  EXPECT_EQ("short", wrapper->wGetComment());
  EXPECT_EQ(0, CallCounter<kComment>::count);
  EXPECT_EQ(1u, log.lines().size());
}

TEST_F(TNVHandlerTrainSetTest, WorkflowIsKeptByItsIndex) {
  open(1);
  const WTNVWorkflow first = builder.project().wAddWorkflow("open", 5);
  const WTNVWorkflow second = builder.project().wAddWorkflow("done", 6);
  wrapper->wSetWorkflow(second);
  EXPECT_EQ(6, at(0).workflow);
  EXPECT_EQ("done", wrapper->wGetWorkflow({WTNVWorkflow(), first, second}).wGetName());
  EXPECT_FALSE(wrapper->wGetWorkflow({first}).isValid());
  wrapper->wSetWorkflow(WTNVWorkflow());
  EXPECT_EQ(-1, at(0).workflow);
}

TEST_F(TNVHandlerTrainSetTest, ListThatBecameShorterEndsBeforeTheIndex) {
  open(3);
  wrapper->wSetTrainSetForward(2);
  opened->trainSets().trainSets.resize(2);
  EXPECT_EQ(&at(1), wrapper->wGetTrainSetCur().getNativeTrainSet());
  EXPECT_EQ(2u, wrapper->wGetTrainSetCurIdx());
  EXPECT_EQ(&at(1), wrapper->wSetTrainSetBackward(1).getNativeTrainSet());
  EXPECT_EQ(1u, wrapper->wGetTrainSetCurIdx());
}

TEST_F(TNVHandlerTrainSetTest, NewestTaskStandsAtTheFrontOnce) {
  TNVHandlerTrainSet handler;
  TNVTrainSet a("a.png", "");
  TNVTrainSet b("b.png", "");
  TNVTrainSet c("c.png", "");
  handler.trainSets = {&a, &b, &c};
  const auto resolve = [&](int index) {
    handler.idxCur = index;
    handler.trainSetCurrent();
  };
  resolve(0);
  resolve(0);
  EXPECT_THAT(handler.taskQueue, ElementsAre(&a));
  resolve(1);
  resolve(2);
  EXPECT_THAT(handler.taskQueue, ElementsAre(&c, &b, &a));
  resolve(0);
  EXPECT_THAT(handler.taskQueue, ElementsAre(&a, &c, &b));
  EXPECT_EQ(&a, handler.taskTarget);
  handler.taskTarget = nullptr;
  resolve(0);
  EXPECT_EQ(nullptr, handler.taskTarget.load());
}

TEST_F(TNVHandlerTrainSetTest, WorkerIsStartedOnce) {
  open(1);
  const LogCapture log;
  opened->trainSets().workerInit();
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVHandlerTrainSet::workerInit: Worker Thread is not null!"));
}

TEST_F(TNVHandlerTrainSetTest, WorkerEndsWithTheHandler) {
  open(1);
  wrapper.reset();
  const LogCapture log;
  opened.reset();
  EXPECT_THAT(log.lines(), ElementsAre("Worker destroyed"));
}

TEST_F(TNVHandlerTrainSetTest, WithTheCacheOffTenPicturesAreHeldAndNoEventComes) {
  open(12, false, 3);
  for (std::size_t i = 1; i < 12; ++i)
    visit(i);
  ASSERT_TRUE(eventually([&] { return loaded().size() == 10; }));
  EXPECT_THAT(loaded(), ElementsAre(2, 3, 4, 5, 6, 7, 8, 9, 10, 11));
  EXPECT_EQ(0, CallCounter<kImageLoaded>::count);
}

TEST_F(TNVHandlerTrainSetTest, WithTheCacheOnTheOldestPictureGoes) {
  open(4, true, 3);
  ASSERT_TRUE(eventually([&] { return at(0).isImageLoaded(); }));
  for (std::size_t i = 1; i < 4; ++i)
    visit(i);
  ASSERT_TRUE(eventually([&] { return loaded().size() == 3; }));
  EXPECT_THAT(loaded(), ElementsAre(1, 2, 3));
}

TEST_F(TNVHandlerTrainSetTest, WithTheCacheOnTheNewestPictureIsAnnounced) {
  open(2, true, 3);
  CallCounter<kImageLoaded>::count = 0;
  visit(1);
  EXPECT_TRUE(eventually([&] { return CallCounter<kImageLoaded>::count == 1; }));
  EXPECT_TRUE(opened->view().reloadImage);
}

TEST_F(TNVHandlerTrainSetTest, PictureInMemoryIsNotLoadedAgain) {
  open(2, true, 3);
  visit(0);
  at(1).loadImage();
  opened->trainSets().idxCur = 1;
  opened->trainSets().trainSetCurrent();
  ASSERT_TRUE(eventually([&] {
    const std::lock_guard lock(opened->trainSets().workerMutex);
    return opened->trainSets().taskQueue.empty();
  }));
  wrapper.reset();
  opened->trainSets().workerDestroy();
  EXPECT_THAT(opened->trainSets().loadedList, testing::Not(Contains(&at(1))));
}

TEST_F(TNVHandlerTrainSetTest, OnlyTheNewestPictureIsAnnounced) {
  open(3, true, 3);
  ASSERT_TRUE(eventually([&] { return at(0).isImageLoaded(); }));
  opened->trainSets().workerDestroy();
  CallCounter<kImageLoaded>::count = 0;
  // Both are queued before the worker runs again; the second is the newest.
  for (const int index : {1, 2}) {
    opened->trainSets().idxCur = index;
    opened->trainSets().trainSetCurrent();
  }
  opened->trainSets().workerInit();
  ASSERT_TRUE(eventually([&] { return at(1).isImageLoaded() && at(2).isImageLoaded(); }));
  opened->trainSets().workerDestroy();
  EXPECT_EQ(1, CallCounter<kImageLoaded>::count);
}

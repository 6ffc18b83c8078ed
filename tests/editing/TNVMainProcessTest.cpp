#include "editing/TNVMainProcess.h"

#include <filesystem>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marks/TNVMarkRect.h"
#include "support/LogCapture.h"
#include "support/OpenProject.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr int kOpened = 30;
constexpr int kClosed = 31;
constexpr int kSaved = 32;

}  // namespace

TEST(TNVMainProcess, WithoutAProjectItIsAnEmptyShell) {
  const LogCapture log;
  const TNVMainProcess process(nullptr);
  EXPECT_THAT(log.lines(), ElementsAre("TNVMainProcess::trainSetCount: Project is nullptr!"));
  EXPECT_EQ(nullptr, process.hndImageView);
  EXPECT_EQ(nullptr, process.hndMark);
  EXPECT_EQ(nullptr, process.hndTrainSet);
}

TEST(TNVMainProcess, OpeningBindsTheFirstTrainSet) {
  ProjectBuilder builder;
  builder.withClasses({"a"}).withPictures({"a.png", "b.png"});
  builder.project().wSetCacheRender(false);
  OpenProject open(builder);
  TNVTrainSet* first = builder.project().wGetTrainSets()[0].getNativeTrainSet();
  EXPECT_EQ(first, open.marks().trainSet);
  EXPECT_EQ(first, open.view().trainSet);
  EXPECT_EQ(cv::Size(64, 48), open.view().imgSource.size());
  EXPECT_FALSE(open.view().renderCache);
  EXPECT_TRUE(open.marks().cacheValidation);
  EXPECT_THAT(open.marks().dnnClassesSelected, SizeIs(1));
  EXPECT_EQ(builder.project().getNativeProject(), open.view().project);
  EXPECT_EQ(&open.process, builder.project().getNativeProject()->observer);
  EXPECT_TRUE(open.trainSets().enabled);
}

TEST(TNVMainProcess, NumberOfHeldPicturesComesFromTheProjectWithTheCacheOn) {
  ProjectBuilder builder;
  builder.project().wSetCacheImagesCount(3);
  EXPECT_EQ(10, OpenProject(builder).trainSets().maxLoaded);
  builder.project().wSetCacheImages(true);
  OpenProject open(builder);
  EXPECT_EQ(3, open.trainSets().maxLoaded);
  EXPECT_TRUE(open.trainSets().cacheImages);
}

TEST(TNVMainProcess, OpeningAndClosingAreAnnounced) {
  ProjectBuilder builder;
  builder.withPictures({"a.png"});
  TNVHandlerTrainSet another;
  WTNVHandlerTrainSet listener(&another);
  CallCounter<kOpened>::count = 0;
  CallCounter<kClosed>::count = 0;
  listener.setCBProjectOpened(CallCounter<kOpened>::call);
  listener.setCBProjectClosed(CallCounter<kClosed>::call);
  {
    const OpenProject open(builder);
    EXPECT_EQ(1, CallCounter<kOpened>::count);
    EXPECT_EQ(0, CallCounter<kClosed>::count);
  }
  EXPECT_EQ(1, CallCounter<kClosed>::count);
  EXPECT_EQ(nullptr, builder.project().getNativeProject()->observer);
}

TEST(TNVMainProcess, SavingIsAnnouncedAndRefillsTheList) {
  ProjectBuilder builder;
  builder.withPictures({"a.png"});
  OpenProject open(builder);
  WTNVHandlerTrainSet listener(&open.trainSets());
  CallCounter<kSaved>::count = 0;
  listener.setCBProjectSaved(CallCounter<kSaved>::call);
  builder.withPictures({"b.png"});
  EXPECT_EQ(1u, listener.wGetTrainSetCount());
  ASSERT_TRUE(builder.project().wUpdate(true));
  EXPECT_EQ(2u, listener.wGetTrainSetCount());
  EXPECT_EQ(1, CallCounter<kSaved>::count);
}

TEST(TNVMainProcess, LoadingRefillsTheListAndBindsAnew) {
  ProjectBuilder builder;
  builder.withPictures({"a.png"});
  ASSERT_TRUE(builder.project().wUpdate(true));
  OpenProject open(builder);
  const TNVTrainSet* before = open.view().trainSet;
  ASSERT_TRUE(builder.project().wLoad());
  EXPECT_NE(before, open.view().trainSet);
  EXPECT_EQ(builder.project().wGetTrainSets()[0].getNativeTrainSet(), open.view().trainSet);
  EXPECT_EQ(open.view().trainSet, open.marks().trainSet);
}

TEST(TNVMainProcess, FailedLoadingLeavesTheOldTrainSetReadable) {
  ProjectBuilder builder;
  builder.withPictures({"a.png"});
  OpenProject open(builder);
  std::filesystem::remove(builder.settingsPath());
  EXPECT_FALSE(builder.project().wLoad());
  EXPECT_FALSE(open.view().getARImage().empty());
  EXPECT_EQ(0u, open.marks().getMarkCount());
}

TEST(TNVMainProcess, RemovedTrainSetsStayReadableWhileOpen) {
  ProjectBuilder builder;
  builder.withPictures({"a.png", "b.png"});
  OpenProject open(builder);
  builder.project().wRemoveImagesFromImageSet({builder.temp / "pictures/a.png"}, "set");
  EXPECT_FALSE(open.view().getARImage().empty());
  ASSERT_TRUE(builder.project().wUpdate(true));
  EXPECT_EQ(builder.project().wGetTrainSets()[0].getNativeTrainSet(), open.view().trainSet);
}

TEST(TNVMainProcess, DesignOnARemovedTrainSetIsForgottenWithItsMark) {
  ProjectBuilder builder;
  builder.withPictures({"a.png", "b.png"});
  OpenProject open(builder);
  TNVTrainSet& removed = open.current();
  ASSERT_TRUE(open.marks().designMark({{0.1, 0.1}, {0.2, 0.2}}, "Rect", {}));
  builder.project().wRemoveImagesFromImageSet({removed.imagePath}, "set");
  ASSERT_TRUE(builder.project().wUpdate(true));
  ASSERT_TRUE(open.marks().designMark({{0.1, 0.1}, {0.2, 0.2}}, "Rect", {}));
  EXPECT_EQ(nullptr, removed.designedMark);
}

TEST(TNVMainProcess, RemovedClassesStayReadableWhileOpen) {
  ProjectBuilder builder;
  builder.withClasses({"a"}).withPictures({"a.png"});
  OpenProject open(builder);
  builder.project().wClearDNNClasses();
  ASSERT_TRUE(open.marks().designMark({{0.1, 0.1}, {0.2, 0.2}}, "Rect", {}));
  EXPECT_THAT(open.marks().markDesigned->classIdx, ElementsAre(0));
}

TEST(TNVMainProcess, ProjectThatGoesFirstLeavesAnEmptyMainProcess) {
  auto builder = std::make_unique<ProjectBuilder>();
  builder->withPictures({"a.png"});
  OpenProject open(*builder);
  ASSERT_TRUE(open.marks().designMark({{0.1, 0.1}, {0.2, 0.2}}, "Rect", {}));
  const LogCapture log;
  builder.reset();
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVMainProcess::trainSetCurrent: Project has no trainsets!",
                          "TNVMainProcess::trainSetCurrent: Project has no trainsets!"));
  EXPECT_EQ(0u, open.trainSets().trainSets.size());
  EXPECT_TRUE(open.view().getARImage().empty());
}

TEST(TNVMainProcess, EditedMarksReachTheDiskAndComeBack) {
  ProjectBuilder builder;
  builder.withClasses({"a"}).withPictures({"a.png", "b.png"});
  ASSERT_TRUE(builder.project().wUpdate(true));
  {
    OpenProject open(builder);
    open.trainSets().setTrainSetForward(1);
    ASSERT_TRUE(open.marks().designMark({{0.25, 0.25}, {0.5, 0.75}}, "Rect", {}));
    ASSERT_TRUE(open.marks().addDesignedMark());
    ASSERT_TRUE(builder.project().wUpdate(false));
  }
  builder.reopened();
  OpenProject open(builder);
  EXPECT_EQ(0u, open.marks().getMarkCount());
  open.trainSets().setTrainSetForward(1);
  ASSERT_EQ(1u, open.marks().getMarkCount());
  EXPECT_EQ(cv::Point2d(0.375, 0.5), open.marks().getAllMarks()[0]->center);
  EXPECT_THAT(open.marks().getAllMarks()[0]->classIdx, ElementsAre(0));
}

TEST(TNVMainProcess, DamagedTrainSetThrowsAndLeavesTheProjectAlone) {
  ProjectBuilder builder;
  builder.withPictures({"a.png"});
  ASSERT_TRUE(builder.project().wUpdate(true));
  const std::string file = builder.project().getNativeProject()->imageSets.at("set")[0]->dataPath;
  std::filesystem::resize_file(file, 100);
  builder.reopened();
  EXPECT_THROW(OpenProject open(builder), cv::Exception);
  EXPECT_EQ(nullptr, builder.project().getNativeProject()->observer);
  EXPECT_TRUE(builder.project().wLoad());
}

TEST(TNVMainProcess, LoadingIsNotAnnouncedAsSaving) {
  ProjectBuilder builder;
  builder.withPictures({"a.png"});
  ASSERT_TRUE(builder.project().wUpdate(true));
  OpenProject open(builder);
  WTNVHandlerTrainSet listener(&open.trainSets());
  CallCounter<kSaved>::count = 0;
  listener.setCBProjectSaved(CallCounter<kSaved>::call);
  ASSERT_TRUE(builder.project().wLoad());
  EXPECT_EQ(0, CallCounter<kSaved>::count);
}

TEST(TNVMainProcess, OlderOfTwoDoesNotDetachTheNewer) {
  ProjectBuilder builder;
  builder.withPictures({"a.png"});
  auto older = std::make_unique<OpenProject>(builder);
  OpenProject newer(builder);
  older.reset();
  EXPECT_EQ(&newer.process, builder.project().getNativeProject()->observer);
}

TEST(TNVMainProcess, WorkerLooksAtNothingAfterTheProjectIsGone) {
  auto builder = std::make_unique<ProjectBuilder>();
  builder->withPictures({"a.png"});
  OpenProject open(*builder);
  builder.reset();
  EXPECT_THAT(open.trainSets().taskQueue, IsEmpty());
  EXPECT_THAT(open.trainSets().loadedList, IsEmpty());
  EXPECT_EQ(nullptr, open.trainSets().taskTarget.load());
}

TEST(TNVMainProcess, PictureThatCannotBeDecodedCountsAsUnreadable) {
  ProjectBuilder builder;
  builder.withPictures({"a.png"});
  // The header of a portable pixmap of 3.6 thousand million pixels.
  builder.temp.write("pictures/a.png", "P6\n60000 60000\n255\n");
  OpenProject open(builder);
  EXPECT_TRUE(eventually([&] { return open.current().isImageLoaded(); }));
  EXPECT_TRUE(open.view().getARImage().empty());
}

TEST(TNVMainProcess, AnyCommentComesBack) {
  for (const std::string comment : {"{", "[1]", "}x", "]", "\\{a", "\"", "a\nb"}) {
    ProjectBuilder builder;
    builder.withPictures({"a.png"});
    ASSERT_TRUE(builder.project().wUpdate(true));
    {
      OpenProject open(builder);
      WTNVHandlerTrainSet(&open.trainSets()).wSetComment(comment);
      ASSERT_TRUE(builder.project().wUpdate(true));
    }
    builder.reopened();
    OpenProject open(builder);
    EXPECT_EQ(comment, WTNVHandlerTrainSet(&open.trainSets()).wGetComment());
  }
}

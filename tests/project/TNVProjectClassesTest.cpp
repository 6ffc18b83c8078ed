#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TNV_SampleBenchNative/WTNVProject.h"
#include "generation/TNVGenerationDarknet.h"
#include "generation/TNVHandlerAugment.h"
#include "project/TNVDNNClass.h"
#include "project/TNVProject.h"
#include "project/TNVWorkflow.h"
#include "support/LogCapture.h"
#include "support/ProjectBuilder.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class DNNClassesTest : public testing::Test {
 protected:
  std::vector<std::string> names() {
    std::vector<std::string> result;
    for (const auto& dnnClass : project().wGetDNNClasses())
      result.push_back(dnnClass.wGetName());
    return result;
  }

  int uniqueIdx(const WTNVDNNClass& dnnClass) { return dnnClass.getNativeDNNClass()->uniqueIdx; }
  WTNVProject& project() { return builder.project(); }
  bool rename(const WTNVDNNClass& dnnClass, const std::string& name) {
    return project().wUpdateDNNClass(dnnClass, name, 0, "", "", 0, 0, 0);
  }

  /// The project again, from a settings file with these lines.
  WTNVProject& loaded(const std::string& settings) {
    builder.temp.write("projects/demo/demo.cfg", settings);
    return builder.reopened();
  }

  ProjectBuilder builder;
};

using WorkflowsTest = DNNClassesTest;

}  // namespace

TEST_F(DNNClassesTest, IndicesCountFromZero) {
  const WTNVDNNClass first = project().wAddDNNClass("a", -1, -1);
  const WTNVDNNClass second = project().wAddDNNClass("b", -1, -1);
  EXPECT_EQ(0, uniqueIdx(first));
  EXPECT_EQ(0, first.wGetDNNId());
  EXPECT_EQ(1, uniqueIdx(second));
  EXPECT_EQ(1, second.wGetDNNId());
}

TEST_F(DNNClassesTest, IndexOfARemovedClassIsNotUsedAgain) {
  const WTNVDNNClass first = project().wAddDNNClass("a", -1, -1);
  project().wAddDNNClass("b", -1, 5);
  project().wRemoveDNNClass(first);
  const WTNVDNNClass third = project().wAddDNNClass("c", -1, -1);
  EXPECT_EQ(2, uniqueIdx(third));
  EXPECT_EQ(6, third.wGetDNNId());
}

TEST_F(DNNClassesTest, GivenIndicesAreTakenAndTheCounterStays) {
  const WTNVDNNClass given = project().wAddDNNClass("a", 9, 3);
  EXPECT_EQ(9, uniqueIdx(given));
  EXPECT_EQ(3, given.wGetDNNId());
  EXPECT_EQ(0, uniqueIdx(project().wAddDNNClass("b", -1, -1)));
}

TEST_F(DNNClassesTest, NewClassHasTheDefaultColourAndNoTexts) {
  const WTNVDNNClass added = project().wAddDNNClass("a", -1, -1);
  int red = 0;
  int green = 0;
  int blue = 0;
  added.wGetColor(&red, &green, &blue);
  EXPECT_THAT((std::vector{red, green, blue}), ElementsAre(157, 196, 35));
  EXPECT_EQ("", added.wGetSamplePath());
  EXPECT_EQ("", added.wGetComment());
}

TEST_F(DNNClassesTest, EmptyAndTakenNamesAreRefused) {
  project().wAddDNNClass("a", -1, -1);
  const LogCapture log;
  EXPECT_FALSE(project().wAddDNNClass("", -1, -1).isValid());
  EXPECT_FALSE(project().wAddDNNClass("a", -1, -1).isValid());
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVProject::addDNNClass: DNN Class name is empty!",
                          "TNVProject::addDNNClass: DNN Class with this name already exists!"));
  EXPECT_THAT(names(), ElementsAre("a"));
}

TEST_F(DNNClassesTest, UpdateStoresEverythingButTheIndex) {
  WTNVDNNClass dnnClass = project().wAddDNNClass("a", -1, -1);
  EXPECT_TRUE(project().wUpdateDNNClass(dnnClass, "b", 4, "x\\y.png", "note", 1, 2, 3));
  EXPECT_EQ("b", dnnClass.wGetName());
  EXPECT_EQ(4, dnnClass.wGetDNNId());
  EXPECT_EQ("x/y.png", dnnClass.wGetSamplePath());
  EXPECT_EQ("note", dnnClass.wGetComment());
  EXPECT_EQ(cv::Scalar(3, 2, 1, 0), dnnClass.getNativeDNNClass()->color);
  EXPECT_EQ(0, uniqueIdx(dnnClass));
}

TEST_F(DNNClassesTest, UpdateRefusesInTheOrderOfItsTests) {
  const WTNVDNNClass dnnClass = project().wAddDNNClass("a", -1, -1);
  project().wAddDNNClass("b", -1, -1);
  const LogCapture log;
  EXPECT_FALSE(rename(WTNVDNNClass(), ""));
  EXPECT_FALSE(rename(dnnClass, ""));
  EXPECT_FALSE(rename(dnnClass, "b"));
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVProject::updateDNNClass: DNNClass is nullptr!",
                          "TNVProject::updateDNNClass: DNN Class name is empty!",
                          "TNVProject::updateDNNClass: DNN class name does already exist!"));
  EXPECT_THAT(names(), ElementsAre("a", "b"));
}

TEST_F(DNNClassesTest, ClassCanBeRenamedToItsOwnName) {
  EXPECT_TRUE(rename(project().wAddDNNClass("a", -1, -1), "a"));
}

TEST_F(DNNClassesTest, NumbersNeedNotBeUnique) {
  EXPECT_TRUE(project().wAddDNNClass("a", -1, 3).isValid());
  EXPECT_TRUE(project().wAddDNNClass("b", -1, 3).isValid());
}

TEST_F(DNNClassesTest, RemovingANullHandleIsLogged) {
  const LogCapture log;
  project().wRemoveDNNClass(WTNVDNNClass());
  EXPECT_THAT(log.lines(), ElementsAre("TNVProject::removeDNNClass: DNNClass is nullptr!"));
}

TEST_F(DNNClassesTest, GeneratorAndAugmentationGetTheClasses) {
  project().wSetGeneration("Darknet");
  const TNVProject& native = *project().getNativeProject();
  const WTNVDNNClass first = project().wAddDNNClass("a", -1, -1);
  project().wAddDNNClass("b", -1, -1);
  EXPECT_EQ(2u, native.generation->dnnClasses.size());
  EXPECT_EQ(2u, native.hndAugment->dnnClasses.size());
  project().wRemoveDNNClass(first);
  EXPECT_EQ(1u, native.generation->dnnClasses.size());
  EXPECT_EQ(1u, native.hndAugment->dnnClasses.size());
  project().wClearDNNClasses();
  EXPECT_THAT(native.generation->dnnClasses, IsEmpty());
}

TEST_F(DNNClassesTest, ClearRemovesAll) {
  builder.withClasses({"a", "b"});
  project().wClearDNNClasses();
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_EQ(2, uniqueIdx(project().wAddDNNClass("c", -1, -1)));
}

TEST_F(DNNClassesTest, OrderUpExchangesWithThePredecessor) {
  builder.withClasses({"a", "b", "c"});
  project().wOrderUpDNNClass(project().wGetDNNClasses()[2]);
  EXPECT_THAT(names(), ElementsAre("a", "c", "b"));
}

TEST_F(DNNClassesTest, OrderUpOfTheFirstClassChangesNothing) {
  builder.withClasses({"a", "b"});
  project().wOrderUpDNNClass(project().wGetDNNClasses()[0]);
  TNVDNNClass stranger(0);
  project().wOrderUpDNNClass(WTNVDNNClass(&stranger));
  EXPECT_THAT(names(), ElementsAre("a", "b"));
}

TEST_F(DNNClassesTest, OrderUpOfANullHandleIsLogged) {
  const LogCapture log;
  project().wOrderUpDNNClass(WTNVDNNClass());
  EXPECT_THAT(log.lines(), ElementsAre("TNVProject::orderUpDNNClass: DNNClass is nullptr!"));
}

TEST_F(DNNClassesTest, OrderOfTheCopiesStaysUntilTheNextChange) {
  project().wSetGeneration("Darknet");
  builder.withClasses({"a", "b"});
  const auto& copy = project().getNativeProject()->generation->dnnClasses;
  project().wOrderUpDNNClass(project().wGetDNNClasses()[1]);
  EXPECT_EQ("a", copy[0]->name);
  project().wAddDNNClass("c", -1, -1);
  EXPECT_EQ("b", copy[0]->name);
}

TEST_F(DNNClassesTest, LargestNumber) {
  EXPECT_EQ(-1, project().wGetMaxDNNClassId());
  project().wAddDNNClass("a", -1, 7);
  project().wAddDNNClass("b", -1, 3);
  EXPECT_EQ(7, project().wGetMaxDNNClassId());
}

TEST_F(DNNClassesTest, LookupOfARemovedIndexGivesANullHandle) {
  builder.withClasses({"a", "b"});
  const auto classes = project().wGetDNNClasses();
  EXPECT_EQ("b", WTNVDNNClass::wGetDNNClassByIdx(classes, 1).wGetName());
  project().wRemoveDNNClass(classes[0]);
  EXPECT_FALSE(WTNVDNNClass::wGetDNNClassByIdx(project().wGetDNNClasses(), 0).isValid());
}

TEST_F(DNNClassesTest, ClassesComeBackInTheirOrder) {
  builder.withClasses({"a", "b"});
  const WTNVDNNClass second = project().wGetDNNClasses()[1];
  project().wUpdateDNNClass(second, "b", 9, "s.png", "note", 0, 0, 255);
  project().wOrderUpDNNClass(second);
  ASSERT_TRUE(project().wUpdate(true));
  EXPECT_THAT(readFile(builder.settingsPath()), HasSubstr("DNN.Colors = \"ff\",\"9dc423\"\n"));
  builder.reopened();
  EXPECT_THAT(names(), ElementsAre("b", "a"));
  const WTNVDNNClass back = project().wGetDNNClasses()[0];
  EXPECT_EQ(1, uniqueIdx(back));
  EXPECT_EQ(9, back.wGetDNNId());
  EXPECT_EQ("s.png", back.wGetSamplePath());
  EXPECT_EQ("note", back.wGetComment());
  EXPECT_EQ(cv::Scalar(255, 0, 0, 0), back.getNativeDNNClass()->color);
}

TEST_F(DNNClassesTest, NothingEscapesCommasAndEqualsSignsInComments) {
  builder.withClasses({"a", "b", "c"});
  const auto classes = project().wGetDNNClasses();
  project().wUpdateDNNClass(classes[0], "a", 0, "", "one, two", 0, 0, 0);
  project().wUpdateDNNClass(classes[1], "b", 1, "", "x=y", 0, 0, 0);
  project().wUpdateDNNClass(classes[2], "c", 2, "", "last", 0, 0, 0);
  ASSERT_TRUE(project().wUpdate(true));
  const auto back = builder.reopened().wGetDNNClasses();
  EXPECT_EQ("one", back[0].wGetComment());
  EXPECT_EQ(" two", back[1].wGetComment());
  EXPECT_EQ("xy", back[2].wGetComment());
}

TEST_F(DNNClassesTest, PositionsWithoutBothIndicesAreSkipped) {
  loaded("DNN.Names = \"a\",\"b\",\"c\"\nDNN.Idx = 4,5\nDNN.Ids = 8\nDNN.Idx.Unique = 6\n");
  EXPECT_THAT(names(), ElementsAre("a"));
  EXPECT_EQ(4, uniqueIdx(project().wGetDNNClasses()[0]));
  EXPECT_EQ(8, project().wGetDNNClasses()[0].wGetDNNId());
  EXPECT_EQ(6, project().getNativeProject()->dnnIdxUnique);
}

TEST_F(DNNClassesTest, DuplicateNamesInAFileAreSkipped) {
  loaded(
      "DNN.Names = \"a\",\"a\",\"b\"\nDNN.Idx = 0,1,2\nDNN.Ids = 0,1,2\n"
      "DNN.Comments = \"x\",\"y\",\"z\"\n");
  EXPECT_THAT(names(), ElementsAre("a", "b"));
  EXPECT_EQ("x", project().wGetDNNClasses()[0].wGetComment());
  EXPECT_EQ("z", project().wGetDNNClasses()[1].wGetComment());
}

TEST_F(DNNClassesTest, BackslashesOfSamplePathsAreTurnedOnLoading) {
  loaded("DNN.Names = \"a\"\nDNN.Idx = 0\nDNN.Ids = 0\nDNN.SamplePaths = \"x\\\\y.png\"\n");
  EXPECT_EQ("x/y.png", project().wGetDNNClasses()[0].wGetSamplePath());
}

TEST_F(WorkflowsTest, IndicesCountUpAndAreNotUsedAgain) {
  const WTNVWorkflow first = project().wAddWorkflow("open", -1);
  EXPECT_EQ(0, first.getNativeWorkflow()->uniqueIdx);
  project().wRemoveWorkflow(first);
  EXPECT_EQ(1, project().wAddWorkflow("done", -1).getNativeWorkflow()->uniqueIdx);
  EXPECT_EQ(9, project().wAddWorkflow("other", 9).getNativeWorkflow()->uniqueIdx);
  EXPECT_EQ(2, project().wAddWorkflow("last", -1).getNativeWorkflow()->uniqueIdx);
}

TEST_F(WorkflowsTest, EmptyAndTakenNamesAreRefused) {
  project().wAddWorkflow("open", -1);
  const LogCapture log;
  EXPECT_FALSE(project().wAddWorkflow("", -1).isValid());
  EXPECT_FALSE(project().wAddWorkflow("open", -1).isValid());
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVProject::addWorkflow: Workflow name is empty!",
                          "TNVProject::addWorkflow: Workflow with this name already exists!"));
}

TEST_F(WorkflowsTest, UpdateRefusesInTheOrderOfItsTests) {
  const WTNVWorkflow open = project().wAddWorkflow("open", -1);
  project().wAddWorkflow("done", -1);
  const LogCapture log;
  EXPECT_FALSE(project().wUpdateWorkflow(WTNVWorkflow(), "x"));
  EXPECT_FALSE(project().wUpdateWorkflow(open, ""));
  EXPECT_FALSE(project().wUpdateWorkflow(open, "done"));
  EXPECT_TRUE(project().wUpdateWorkflow(open, "open"));
  EXPECT_TRUE(project().wUpdateWorkflow(open, "new"));
  EXPECT_EQ("new", open.wGetName());
  EXPECT_THAT(log.lines(),
              ElementsAre("TNVProject::updateWorkflow: Workflow is nullptr!",
                          "TNVProject::updateWorkflow: Workflow name is empty!",
                          "TNVProject::updateWorkflow: Workflow name does already exist!"));
}

TEST_F(WorkflowsTest, RemovingWhatIsNotThereChangesNothing) {
  project().wAddWorkflow("open", -1);
  TNVWorkflow stranger(0);
  const LogCapture log;
  project().wRemoveWorkflow(WTNVWorkflow(&stranger));
  project().wRemoveWorkflow(WTNVWorkflow());
  EXPECT_THAT(log.lines(), ElementsAre("TNVProject::removeWorkflow: Workflow is nullptr!"));
  EXPECT_EQ(1u, project().wGetWorkflows().size());
  project().wClearWorkflows();
  EXPECT_THAT(project().wGetWorkflows(), IsEmpty());
}

TEST_F(WorkflowsTest, WorkflowsComeBack) {
  project().wAddWorkflow("open", -1);
  project().wAddWorkflow("done", 7);
  ASSERT_TRUE(project().wUpdate(true));
  const auto back = builder.reopened().wGetWorkflows();
  ASSERT_EQ(2u, back.size());
  EXPECT_EQ("open", back[0].wGetName());
  EXPECT_EQ(7, back[1].getNativeWorkflow()->uniqueIdx);
}

TEST_F(WorkflowsTest, NamesWithoutAnIndexAreSkipped) {
  loaded("Workflow.Names = \"a\",\"b\"\nWorkflow.Idx = 3\nWorkflow.Idx.Unique = 4\n");
  ASSERT_EQ(1u, project().wGetWorkflows().size());
  EXPECT_EQ(3, project().wGetWorkflows()[0].getNativeWorkflow()->uniqueIdx);
  EXPECT_EQ(4, project().getNativeProject()->workflowIdxUnique);
}

TEST_F(DNNClassesTest, ColoursAreHeldInAByteOnSaving) {
  const WTNVDNNClass dnnClass = project().wAddDNNClass("a", -1, -1);
  project().wUpdateDNNClass(dnnClass, "a", 0, "", "", -1, 40000, 7);
  ASSERT_TRUE(project().wUpdate(true));
  const WTNVDNNClass back = builder.reopened().wGetDNNClasses().at(0);
  EXPECT_EQ(cv::Scalar(7, 255, 0, 0), back.getNativeDNNClass()->color);
}

TEST_F(DNNClassesTest, IndexAtTheEndOfTheRangeStaysThere) {
  loaded("DNN.Idx.Unique = 2147483647\nWorkflow.Idx.Unique = 2147483647\n");
  project().wAddDNNClass("a", -1, 2147483647);
  EXPECT_EQ(2147483647, uniqueIdx(project().wAddDNNClass("b", -1, -1)));
  project().wAddWorkflow("a", -1);
  EXPECT_EQ(2147483647, project().wAddWorkflow("b", -1).getNativeWorkflow()->uniqueIdx);
}

TEST_F(DNNClassesTest, LoadingAgainDropsClassesAndWorkflowsThatAreGone) {
  loaded(
      "DNN.Names = \"a\"\nDNN.Idx = 0\nDNN.Ids = 0\n"
      "Workflow.Names = \"a\"\nWorkflow.Idx = 0\n");
  builder.temp.write("projects/demo/demo.cfg",
                     "DNN.Names = \"b\"\nDNN.Idx = 0\nDNN.Ids = 0\n"
                     "Workflow.Names = \"b\"\nWorkflow.Idx = 0\n");
  ASSERT_TRUE(project().wLoad());
  EXPECT_THAT(names(), ElementsAre("b"));
  ASSERT_EQ(1u, project().wGetWorkflows().size());
  EXPECT_EQ("b", project().wGetWorkflows()[0].wGetName());
}

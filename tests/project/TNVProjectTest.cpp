#include "project/TNVProject.h"

#include <filesystem>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TNV_SampleBenchNative/WTNVProject.h"
#include "foundation/TNVSettings.h"
#include "generation/TNVGenerationDarknet.h"
#include "generation/TNVHandlerAugment.h"
#include "support/LogCapture.h"
#include "support/ProjectBuilder.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

class RecordingObserver final : public TNVProjectMPObserver {
 public:
  void onProjectUpdated() override { events.emplace_back("updated"); }
  void onProjectLoaded() override { events.emplace_back("loaded"); }
  void onProjectClosed() override { events.emplace_back("closed"); }

  std::vector<std::string> events;
};

bool exists(const std::string& path) {
  return std::filesystem::exists(path);
}

/// A project with a settings file of that content, not loaded yet.
class WrittenProject : public ProjectBuilder {
 public:
  explicit WrittenProject(const std::string& settings) {
    temp.write("projects/demo/demo.cfg", settings);
    another();
  }
};

}  // namespace

TEST(TNVProject, ConstructorFillsItsFieldsAndTouchesNoFile) {
  const TempDirectory temp;
  const std::string projects = temp.makeDirectory("projects");
  const TNVProject project("demo", temp / "projects", temp / "platforms", "augments\\");
  EXPECT_EQ("demo", project.name);
  EXPECT_EQ("demo.cfg", project.settingsFile);
  EXPECT_EQ(projects + "demo/", project.projectDirectory);
  EXPECT_EQ(projects + "demo/demo.cfg", project.settingsPath);
  EXPECT_EQ(projects + "demo/validation/", project.validationDirectory);
  EXPECT_EQ(temp / "platforms", project.platformsPath);
  EXPECT_EQ("augments/", project.augmentsPath);
  EXPECT_EQ("augments/", project.hndAugment->augmentsPath);
  EXPECT_EQ("samples/", project.samplesDirectory);
  EXPECT_EQ("cache/", project.cacheDirectory);
  EXPECT_THAT(project.imageTypes, ElementsAre("jpg", "jpeg", "png"));
  EXPECT_THAT(project.imageLists, IsEmpty());
  EXPECT_THAT(project.imageSets, IsEmpty());
  EXPECT_THAT(project.dnnClasses, IsEmpty());
  EXPECT_THAT(project.workflows, IsEmpty());
  EXPECT_EQ(0, project.dnnIdxUnique);
  EXPECT_EQ(0, project.workflowIdxUnique);
  EXPECT_EQ(nullptr, project.observer);
  EXPECT_EQ(nullptr, project.generation);
  EXPECT_EQ(cv::Point2d(0.01, 0.01), project.poiRelSize);
  EXPECT_EQ(cv::Point2d(20.0, 20.0), project.poiAbsSize);
  EXPECT_EQ(1, project.poiSizeUse);
  EXPECT_FALSE(project.cacheImages);
  EXPECT_EQ(1024, project.cacheImagesMaxSize);
  EXPECT_EQ(10, project.cacheImagesCount);
  EXPECT_EQ(75, project.cacheImagesQuality);
  EXPECT_TRUE(project.cacheRender);
  EXPECT_TRUE(project.cacheValidation);
  EXPECT_THAT(std::filesystem::is_empty(projects), true);
}

TEST(TNVProject, CreateWritesAnEmptyProject) {
  ProjectBuilder builder;
  EXPECT_TRUE(exists(builder.settingsPath()));
  EXPECT_TRUE(builder.another().wLoad());
  EXPECT_EQ("demo", builder.project().wGetProjectName());
}

TEST(TNVProject, SecondCreateFails) {
  ProjectBuilder builder;
  const LogCapture log;
  EXPECT_FALSE(builder.project().wCreate());
  EXPECT_THAT(log.lines(), ElementsAre("TNVProject::create: Project already exists!"));
}

TEST(TNVProject, CreateWithAnEmptyNameWritesNothing) {
  const TempDirectory temp;
  WTNVProject project("", temp.path(), "", "");
  const LogCapture log;
  EXPECT_FALSE(project.wCreate());
  EXPECT_THAT(log.lines(), ElementsAre("TNVProject::create: Project name is empty!"));
  EXPECT_TRUE(std::filesystem::is_empty(temp.path()));
}

TEST(TNVProject, CreateTellsWhenTheDirectoryCannotBeMade) {
  const TempDirectory temp;
  temp.write("file", "");
  WTNVProject project("demo", temp / "file/", "", "");
  const LogCapture log;
  EXPECT_FALSE(project.wCreate());
  EXPECT_THAT(log.lines(), Contains("TNVProject::create: Can not create project directory!"));
}

TEST(TNVProject, NameThatIsAPathIsRefusedByEveryOperation) {
  const TempDirectory temp;
  temp.write("outside/outside.cfg", "Project.Name = \"outside\"");
  temp.write("cache/kept", "");
  temp.write("projects/cache/kept", "");
  const std::string tooLong(241, 'n');
  for (const std::string& name :
       {std::string("../outside"), std::string("a/b"), std::string("a\\b"), std::string(".."),
        std::string("."), std::string(), tooLong}) {
    WTNVProject project(name, temp / "projects/", "", "");
    const LogCapture log;
    EXPECT_FALSE(project.wCreate()) << name;
    EXPECT_FALSE(project.wLoad()) << name;
    EXPECT_FALSE(project.wUpdate(true)) << name;
    EXPECT_FALSE(project.wRemove()) << name;
    EXPECT_EQ(0, project.wClearImagesCache()) << name;
    const std::string refused =
        ": Project name must not be empty, a path or longer than 240 bytes!";
    EXPECT_THAT(
        log.lines(),
        ElementsAre(name.empty() ? "TNVProject::create: Project name is empty!"
                                 : "TNVProject::create" + refused,
                    "TNVProject::load" + refused, "TNVProject::update" + refused,
                    "TNVProject::remove" + refused, "TNVProject::clearImagesCache" + refused));
  }
  EXPECT_TRUE(exists(temp / "outside/outside.cfg"));
  EXPECT_TRUE(exists(temp / "cache/kept"));
  EXPECT_TRUE(exists(temp / "projects/cache/kept"));
}

TEST(TNVProject, LoadWithoutAFileFailsWithBothLines) {
  const TempDirectory temp;
  WTNVProject project("demo", temp.path(), "", "");
  const LogCapture log;
  EXPECT_FALSE(project.wLoad());
  EXPECT_THAT(log.lines(), ElementsAre("TNVProject::_readSettings: Could not find project at '" +
                                           temp.path() + "demo/demo.cfg'!",
                                       "TNVProject::load: Could not read settings!"));
}

TEST(TNVProject, UpdateWithoutASettingsFileFails) {
  ProjectBuilder builder;
  std::filesystem::remove(builder.settingsPath());
  const LogCapture log;
  EXPECT_FALSE(builder.project().wUpdate(false));
  EXPECT_THAT(log.lines(), ElementsAre("TNVProject::update: Project does not exists!"));
}

TEST(TNVProject, QuickUpdateLeavesTheSettingsAlone) {
  ProjectBuilder builder;
  const std::string before = readFile(builder.settingsPath());
  builder.project().wSetCacheImagesCount(77);
  EXPECT_TRUE(builder.project().wUpdate(false));
  EXPECT_EQ(before, readFile(builder.settingsPath()));
  EXPECT_TRUE(builder.project().wUpdate(true));
  EXPECT_THAT(readFile(builder.settingsPath()), testing::HasSubstr("Cache.Images.Cnt = 77\n"));
}

TEST(TNVProject, UpdateThatCannotWriteTheSettingsFails) {
  RecordingObserver observer;
  ProjectBuilder builder;
  builder.project().getNativeProject()->observer = &observer;
  // A directory where the new file is to be written beside the old one.
  builder.temp.write("projects/demo/demo.cfg.new/in the way", "");
  const std::string before = readFile(builder.settingsPath());
  const LogCapture log;
  EXPECT_FALSE(builder.project().wUpdate(true));
  EXPECT_THAT(log.lines(), Contains("TNVProject::_writeSettings: Could not write settings at '" +
                                    builder.settingsPath() + "'!"));
  EXPECT_EQ(before, readFile(builder.settingsPath()));
  EXPECT_THAT(observer.events, IsEmpty());
}

TEST(TNVProject, RemoveDeletesTheDirectoryAndKeepsTheObject) {
  ProjectBuilder builder;
  builder.withPictures({"a.png"});
  EXPECT_TRUE(builder.project().wRemove());
  EXPECT_FALSE(exists(builder.projectDirectory()));
  EXPECT_EQ(1, builder.project().wGetTrainSetCountFromImageSet("set"));
  const LogCapture log;
  EXPECT_FALSE(builder.project().wRemove());
  EXPECT_THAT(log.lines(), ElementsAre("TNVProject::remove: Project does not exists!"));
}

TEST(TNVProject, DestructionSavesNothing) {
  ProjectBuilder builder;
  builder.withClasses({"screw"});
  EXPECT_THAT(builder.reopened().wGetDNNClasses(), IsEmpty());
}

TEST(TNVProject, SettingsFileOfANewProject) {
  ProjectBuilder builder;
  EXPECT_EQ(
      "Augmentation.Selected = \"\"\n"
      "Cache.Images = NO\n"
      "Cache.Images.Cnt = 10\n"
      "Cache.Images.Quality = 75\n"
      "Cache.Images.Size = 1024\n"
      "Cache.Render = YES\n"
      "Cache.Validation = YES\n"
      "DNN.Colors = \n"
      "DNN.Comments = \n"
      "DNN.Ids = \n"
      "DNN.Idx = \n"
      "DNN.Idx.Unique = 0\n"
      "DNN.Names = \n"
      "DNN.SamplePaths = \n"
      "POI.Size.Abs = 20.000000,20.000000\n"
      "POI.Size.Rel = 0.010000,0.010000\n"
      "POI.Size.Use = 1\n"
      "Project.Name = \"demo\"\n"
      "Project.SamplesDirectory = \"samples/\"\n"
      "Source.Images.Filelists = \n"
      "Source.Images.Types = \"jpg\",\"jpeg\",\"png\"\n"
      "Workflow.Idx = \n"
      "Workflow.Idx.Unique = 0\n"
      "Workflow.Names = \n",
      readFile(builder.settingsPath()));
}

TEST(TNVProject, FullUpdateDropsKeysOfAnOlderFile) {
  WrittenProject builder("Old.Key = 1\nProject.Name = \"demo\"\n");
  ASSERT_TRUE(builder.project().wLoad());
  ASSERT_TRUE(builder.project().wUpdate(true));
  EXPECT_THAT(readFile(builder.settingsPath()), testing::Not(testing::HasSubstr("Old.Key")));
}

TEST(TNVProject, MissingKeysTakeTheDefaultsOfLoading) {
  WrittenProject builder("X = 1\n");
  ASSERT_TRUE(builder.project().wLoad());
  const TNVProject& project = *builder.project().getNativeProject();
  EXPECT_EQ("unknown", project.name);
  EXPECT_EQ("samples/", project.samplesDirectory);
  EXPECT_THAT(project.imageTypes, ElementsAre("jpg", "bmp", "jpeg", "png"));
  EXPECT_THAT(project.imageLists, IsEmpty());
  EXPECT_FALSE(project.cacheImages);
  EXPECT_EQ(10, project.cacheImagesCount);
  EXPECT_EQ(1024, project.cacheImagesMaxSize);
  EXPECT_EQ(75, project.cacheImagesQuality);
  EXPECT_TRUE(project.cacheRender);
  EXPECT_FALSE(project.cacheValidation);
  EXPECT_EQ(0, project.poiSizeUse);
  EXPECT_EQ(0, project.dnnIdxUnique);
  EXPECT_EQ(0, project.workflowIdxUnique);
  EXPECT_EQ("./default.xml", project.hndAugment->augmentation);
}

TEST(TNVProject, EveryKeyComesBack) {
  ProjectBuilder builder;
  WTNVProject& project = builder.project();
  project.wSetCacheImages(true);
  project.wSetCacheImagesCount(3);
  project.wSetCacheImagesMaxSize(200);
  project.wSetCacheImagesQuality(50);
  project.wSetCacheRender(false);
  project.wSetPOISizeUse(2);
  project.wAddDNNClass("screw", -1, 7);
  project.wAddWorkflow("open", -1);
  project.wSetGeneration("Darknet");
  project.getHndAugment().wSetAugmentation("tree.xml");
  ASSERT_TRUE(project.wUpdate(true));
  const WTNVProject& back = builder.reopened();
  EXPECT_TRUE(back.wGetCacheImages());
  EXPECT_EQ(3, back.wGetCacheImagesCount());
  EXPECT_EQ(200, back.wGetCacheImagesMaxSize());
  EXPECT_EQ(50, back.wGetCacheImagesQuality());
  EXPECT_FALSE(back.wGetCacheRender());
  EXPECT_EQ(2, back.wGetPOISizeUse());
  EXPECT_EQ(7, back.wGetDNNClasses().at(0).wGetDNNId());
  EXPECT_EQ("open", back.wGetWorkflows().at(0).wGetName());
  EXPECT_EQ("tree.xml", builder.project().getHndAugment().wGetAugmentation());
  EXPECT_THAT(readFile(builder.settingsPath()),
              testing::HasSubstr("Generation.Type = \"Darknet\"\n"));
  EXPECT_EQ(1, back.getNativeProject()->dnnIdxUnique);
  EXPECT_EQ(1, back.getNativeProject()->workflowIdxUnique);
}

TEST(TNVProject, NameInTheFileWinsAndThePathsStay) {
  WrittenProject builder("Project.Name = \"other\"\n");
  ASSERT_TRUE(builder.project().wLoad());
  EXPECT_EQ("other", builder.project().wGetProjectName());
  ASSERT_TRUE(builder.project().wUpdate(true));
  EXPECT_THAT(readFile(builder.settingsPath()), testing::HasSubstr("Project.Name = \"other\""));
}

TEST(TNVProject, WrittenPOISizesHaveNoEffectOnLoading) {
  for (const char* value : {"0.5,0.5", "", "0.5"}) {
    WrittenProject builder(std::string("POI.Size.Rel = ") + value + "\nPOI.Size.Abs = " + value);
    ASSERT_TRUE(builder.project().wLoad());
    double x = 0.0;
    double y = 0.0;
    builder.project().wGetPOIRelSize(&x, &y);
    EXPECT_EQ(0.01, x);
    EXPECT_EQ(0.01, y);
    builder.project().wGetPOIAbsSize(&x, &y);
    EXPECT_EQ(20.0, x);
    EXPECT_EQ(20.0, y);
  }
}

TEST(TNVProject, POISizesAreReadOnlyIntoTwoPlaces) {
  ProjectBuilder builder;
  builder.project().wSetPOIRelSize(0.1, 0.2);
  builder.project().wSetPOIAbsSize(3.0, 4.0);
  double x = -1.0;
  double y = -1.0;
  builder.project().wGetPOIRelSize(nullptr, &y);
  builder.project().wGetPOIRelSize(&x, nullptr);
  builder.project().wGetPOIAbsSize(nullptr, &y);
  builder.project().wGetPOIAbsSize(&x, nullptr);
  EXPECT_EQ(-1.0, x);
  EXPECT_EQ(-1.0, y);
  builder.project().wGetPOIRelSize(&x, &y);
  EXPECT_EQ(0.1, x);
  EXPECT_EQ(0.2, y);
  builder.project().wGetPOIAbsSize(&x, &y);
  EXPECT_EQ(3.0, x);
  EXPECT_EQ(4.0, y);
}

TEST(TNVProject, LoadedProjectAlwaysHasAGenerator) {
  WrittenProject builder("Project.Name = \"demo\"\n");
  EXPECT_FALSE(builder.project().wGetGeneration().isValid());
  ASSERT_TRUE(builder.project().wLoad());
  ASSERT_TRUE(builder.project().wGetGeneration().isValid());
  EXPECT_EQ("Darknet", builder.project().wGetGeneration().wGetName());
}

TEST(TNVProject, UnknownGeneratorNamesGiveTheFirst) {
  ProjectBuilder builder;
  builder.withClasses({"screw"}).withPictures({"a.png", "b.png"});
  const LogCapture log;
  builder.project().wSetGeneration("no such platform");
  EXPECT_THAT(log.lines(), ElementsAre("Set Trainsets 2"));
  const TNVGenerationDarknet& generation = *builder.project().getNativeProject()->generation;
  EXPECT_EQ(1u, generation.dnnClasses.size());
  EXPECT_EQ(2u, generation.trainSets.size());
  EXPECT_EQ(builder.temp / "platforms/", generation.platformPath);
  EXPECT_EQ(builder.projectDirectory(), generation.projectDirectory);
}

TEST(TNVProject, ChosenGeneratorKeepsItsSettings) {
  ProjectBuilder builder;
  builder.project().wSetGeneration("Darknet");
  TNVGeneration* before = builder.project().wGetGeneration().getNativeGeneration();
  const LogCapture log;
  builder.project().wSetGeneration("Darknet");
  EXPECT_EQ(before, builder.project().wGetGeneration().getNativeGeneration());
  EXPECT_EQ("", log.text());
}

TEST(TNVProject, GeneratorReadsItsKeysFromTheProjectsFile) {
  WrittenProject builder("Generation.Darknet.TestFile = \"held-out.txt\"\n");
  ASSERT_TRUE(builder.project().wLoad());
  EXPECT_EQ("held-out.txt", builder.project().getNativeProject()->generation->testFile);
}

TEST(TNVProject, AvailableGenerationsAreTheTable) {
  ProjectBuilder builder;
  EXPECT_THAT(builder.project().wGetAvailableGenerations(), ElementsAre("Darknet"));
}

TEST(TNVProject, LoadingTwiceDoublesNothing) {
  ProjectBuilder builder;
  builder.withClasses({"a", "b"}).withPictures({"a.png", "b.png"});
  builder.project().wAddWorkflow("open", -1);
  ASSERT_TRUE(builder.project().wUpdate(true));
  WTNVProject& project = builder.reopened();
  ASSERT_TRUE(project.wLoad());
  EXPECT_EQ(2u, project.wGetDNNClasses().size());
  EXPECT_EQ(1u, project.wGetWorkflows().size());
  EXPECT_EQ(2u, project.wGetTrainSets().size());
}

TEST(TNVProject, HandlersGetTheClassesOnLoading) {
  ProjectBuilder builder;
  builder.withClasses({"a", "b"});
  ASSERT_TRUE(builder.project().wUpdate(true));
  const TNVProject& project = *builder.reopened().getNativeProject();
  EXPECT_EQ(2u, project.hndAugment->dnnClasses.size());
  EXPECT_EQ(2u, project.generation->dnnClasses.size());
}

TEST(TNVProject, ObserverHearsOfLoadingUpdatingAndClosing) {
  RecordingObserver observer;
  ProjectBuilder builder;
  builder.project().getNativeProject()->observer = &observer;
  ASSERT_TRUE(builder.project().wLoad());
  ASSERT_TRUE(builder.project().wUpdate(false));
  ASSERT_TRUE(builder.project().wUpdate(true));
  builder.another();
  EXPECT_THAT(observer.events, ElementsAre("loaded", "updated", "updated", "closed"));
}

TEST(TNVProject, CreateTellsTheObserverNothing) {
  const TempDirectory temp;
  TNVProject project("demo", temp.path(), "", "");
  RecordingObserver observer;
  project.observer = &observer;
  ASSERT_TRUE(project.create());
  EXPECT_THAT(observer.events, IsEmpty());
  project.observer = nullptr;
}

TEST(TNVProject, AvailableProjectsHaveASettingsFileOfTheirName) {
  const TempDirectory temp;
  temp.write("projects/a/a.cfg", "");
  temp.write("projects/b/other.cfg", "");
  temp.write("projects/c.cfg", "");
  temp.write("projects/d/d.cfg", "");
  EXPECT_THAT(WTNVProject::wReadAvailableProjects(temp / "projects"),
              UnorderedElementsAre("a", "d"));
}

TEST(TNVProject, AvailableProjectsOfAMissingPathAreNone) {
  const TempDirectory temp;
  const LogCapture log;
  EXPECT_THAT(WTNVProject::wReadAvailableProjects(temp / "missing"), IsEmpty());
  EXPECT_THAT(log.lines(), ElementsAre("TNVDirectory::readDirectories: Path '" +
                                       (temp / "missing") + "' not found!"));
}

TEST(TNVProject, SamplesDirectoryLiesInTheProject) {
  ProjectBuilder builder;
  EXPECT_EQ(builder.projectDirectory() + "samples/", builder.project().wGetSamplesDirectoryPath());
}

TEST(TNVProject, ListThatCannotBeParsedThrowsAndNothingIsSavedOverIt) {
  ProjectBuilder builder;
  builder.withPictures({"a.png"}, "first").withPictures({"b.png"}, "second");
  ASSERT_TRUE(builder.project().wUpdate(true));
  builder.temp.write("projects/demo/first.xml", "<?xml version=\"1.0\"?>\n<opencv_storage>\n<Cou");
  WTNVProject& project = builder.another();
  EXPECT_THROW(project.wLoad(), cv::Exception);
  const LogCapture log;
  EXPECT_FALSE(project.wUpdate(true));
  EXPECT_THAT(
      log.lines(),
      ElementsAre("TNVProject::update: Project was not loaded completely, nothing is saved!"));
  EXPECT_TRUE(exists(builder.projectDirectory() + "is_second/"));
  EXPECT_TRUE(exists(builder.projectDirectory() + "second.xml"));
}

TEST(TNVProject, ColourThatIsNoNumberThrowsByName) {
  WrittenProject builder("DNN.Idx = 0\nDNN.Names = \"a\"\nDNN.Ids = 0\nDNN.Colors = \"xyz\"\n");
  EXPECT_THROW(builder.project().wLoad(), std::invalid_argument);
}

TEST(TNVProject, CreatingAfterAFailedLoadMakesAProjectThatCanBeSaved) {
  const TempDirectory temp;
  temp.makeDirectory("projects");
  WTNVProject project("demo", temp / "projects/", "", "");
  EXPECT_FALSE(project.wLoad());
  EXPECT_TRUE(project.wCreate());
  EXPECT_TRUE(project.wUpdate(true));
}

TEST(TNVProject, CreatingWritesTheImageSetsToo) {
  const TempDirectory temp;
  WTNVProject project("demo", temp.path(), "", "");
  project.wAddImagesToImageSet({"a.jpg"}, {true}, "set", false);
  ASSERT_TRUE(project.wCreate());
  EXPECT_TRUE(exists(temp / "demo/set.xml"));
}

TEST(TNVProject, FailedLoadDropsWhatWasInMemoryAndTellsNobody) {
  RecordingObserver observer;
  ProjectBuilder builder;
  builder.withPictures({"a.png"});
  ASSERT_TRUE(builder.project().wUpdate(true));
  const std::string settings = readFile(builder.settingsPath());
  std::filesystem::remove(builder.settingsPath());
  TNVProject& project = *builder.project().getNativeProject();
  project.observer = &observer;
  EXPECT_FALSE(project.load());
  EXPECT_THAT(project.imageSets, IsEmpty());
  EXPECT_THAT(project.imageLists, IsEmpty());
  EXPECT_THAT(observer.events, IsEmpty());
  builder.temp.write("projects/demo/demo.cfg", settings);
  EXPECT_FALSE(project.update(true));
  EXPECT_TRUE(exists(builder.projectDirectory() + "is_set/"));
}

TEST(TNVProject, SettingsThatLostTheirSetsDoNotDeleteThem) {
  for (const char* damaged : {"", "Project.Name = \"demo\"\n"}) {
    ProjectBuilder builder;
    builder.withPictures({"a.png"});
    ASSERT_TRUE(builder.project().wUpdate(true));
    builder.temp.write("projects/demo/demo.cfg", damaged);
    builder.reopened();
    const LogCapture log;
    EXPECT_TRUE(builder.project().wUpdate(true));
    EXPECT_THAT(log.lines(), Contains("TNVProject::_updateImageFiles(): Image sets on disk that "
                                      "the project does not know are kept!"));
    EXPECT_TRUE(exists(builder.projectDirectory() + "is_set/"));
    EXPECT_TRUE(exists(builder.projectDirectory() + "set.xml"));
  }
}

TEST(TNVProject, SavingWithoutLoadingDeletesNoSet) {
  ProjectBuilder builder;
  builder.withPictures({"a.png"});
  ASSERT_TRUE(builder.project().wUpdate(true));
  EXPECT_TRUE(builder.another().wUpdate(true));
  EXPECT_TRUE(exists(builder.projectDirectory() + "is_set/"));
}

TEST(TNVProject, CreatingWhereSetsLieDeletesNoSet) {
  ProjectBuilder builder;
  builder.withPictures({"a.png"});
  ASSERT_TRUE(builder.project().wUpdate(true));
  std::filesystem::remove(builder.settingsPath());
  EXPECT_TRUE(builder.another().wCreate());
  EXPECT_TRUE(exists(builder.projectDirectory() + "is_set/"));
}

TEST(TNVProject, BothPOISizesAreWritten) {
  ProjectBuilder builder;
  builder.project().wSetPOIRelSize(0.25, 0.5);
  builder.project().wSetPOIAbsSize(3.0, 4.0);
  ASSERT_TRUE(builder.project().wUpdate(true));
  EXPECT_THAT(readFile(builder.settingsPath()),
              testing::HasSubstr("POI.Size.Abs = 3.000000,4.000000\n"
                                 "POI.Size.Rel = 0.250000,0.500000\n"));
}

TEST(TNVProject, ClosingIsToldWhileEverythingIsThere) {
  class ClosingObserver final : public TNVProjectMPObserver {
   public:
    explicit ClosingObserver(const TNVProject& observed) : project(observed) {}
    void onProjectUpdated() override {}
    void onProjectLoaded() override {}
    void onProjectClosed() override { classes = project.dnnClasses.size(); }

    const TNVProject& project;
    std::size_t classes = 0;
  };
  auto project = std::make_unique<TNVProject>("demo", "", "", "");
  project->addDNNClass("a", -1, -1);
  ClosingObserver observer(*project);
  project->observer = &observer;
  project.reset();
  EXPECT_EQ(1u, observer.classes);
}

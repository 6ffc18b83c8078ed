#include "support/ProjectBuilder.h"

#include <gtest/gtest.h>

#include "TNV_SampleBenchNative/WTNVGeneration.h"
#include "TNV_SampleBenchNative/WTNVGenerationDarknet.h"
#include "TNV_SampleBenchNative/WTNVHandlerAugment.h"

ProjectBuilder::ProjectBuilder(const std::string& projectName) : name(projectName) {
  temp.makeDirectory("projects");
  temp.makeDirectory("platforms");
  temp.makeDirectory("augments");
  EXPECT_TRUE(another().wCreate());
}

WTNVProject& ProjectBuilder::another() {
  current = std::make_unique<WTNVProject>(name, temp / "projects/", temp / "platforms/",
                                          temp / "augments/");
  return *current;
}

WTNVProject& ProjectBuilder::reopened() {
  EXPECT_TRUE(another().wLoad());
  return *current;
}

std::string ProjectBuilder::picture(const std::string& fileName, int width, int height) {
  temp.makeDirectory("pictures");
  return writePicture(temp / "pictures/" + fileName, width, height);
}

ProjectBuilder& ProjectBuilder::withPictures(const std::vector<std::string>& fileNames,
                                             const std::string& set) {
  std::vector<std::string> paths;
  for (const std::string& fileName : fileNames)
    paths.push_back(picture(fileName));
  const std::vector<bool> use(paths.size(), true);
  EXPECT_EQ(static_cast<int>(paths.size()), project().wAddImagesToImageSet(paths, use, set, false));
  return *this;
}

ProjectBuilder& ProjectBuilder::withClasses(const std::vector<std::string>& names) {
  for (const std::string& className : names) {
    EXPECT_TRUE(project().wAddDNNClass(className, -1, -1).isValid());
  }
  return *this;
}

ProjectBuilder& ProjectBuilder::withDarknet(const std::string& taskTree) {
  temp.write("augments/tree.xml", taskTree);
  temp.write("platforms/darknet/configs/data.tmp", "classes = 1\n");
  temp.write("platforms/darknet/nets/net.tmp", "width = 416\n");
  project().wSetGeneration("Darknet");
  const WTNVGeneration generation = project().wGetGeneration();
  const WTNVGenerationDarknet darknet(generation);
  darknet.wSetSampleDirectory(outputDirectory() + "images/");
  darknet.wSetDarknetDataDirectory(outputDirectory());
  generation.wSetTemplateData("configs", "data.tmp", {}, outputDirectory() + "obj.data");
  generation.wSetTemplateData("nets", "net.tmp", {}, outputDirectory() + "net.cfg");
  project().getHndAugment().wSetAugmentation("tree.xml");
  return *this;
}

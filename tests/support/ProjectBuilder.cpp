#include "support/ProjectBuilder.h"

#include <gtest/gtest.h>

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

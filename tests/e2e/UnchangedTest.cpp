#include <filesystem>
#include <map>

#include <gtest/gtest.h>

#include "TNV_SampleBenchNative/TNV_SampleBenchNative.h"
#include "support/LogCapture.h"
#include "support/ProjectBuilder.h"

namespace fs = std::filesystem;

namespace {

using Points = std::vector<std::vector<double>>;

constexpr auto kTree = R"(<?xml version="1.0"?>
<opencv_storage>
<TaskTree><SubTasks>1</SubTasks>
<Task_0><Name>Default</Name><Save>1</Save><SubTasks>0</SubTasks></Task_0></TaskTree>
</opencv_storage>
)";

/// Marks whose numbers have no short decimal form, one of each kind.
void markAll(WTNVProject& project) {
  WTNVMainProcess process(&project, nullptr);
  auto marks = process.getHndMark();
  auto pictures = process.getHndTrainSet();
  const Points path{{1.0 / 3, 0.7}, {0.3, 1.0 / 7}, {0.6, 0.55}, {0.6, 0.55}};
  const std::map<std::string, Points> forms{{"Rect", {{0.1, 1.0 / 3}, {2.0 / 3, 0.6}}},
                                            {"Point", {{1.0 / 7, 0.6}}},
                                            {"Image", {{0.1, 0.1}}},
                                            {"Circle", {{0.5, 1.0 / 3}, {0.6, 0.55}}},
                                            {"Line", {{1.0 / 9, 0.8}, {0.7, 0.3}}},
                                            {"PolyLine", path},
                                            {"PolyLine Closed", path},
                                            {"Ellipse", {{0.5, 0.5}, {0.7, 0.4}, {1.0 / 3, 0.35}}}};
  for (unsigned i = 0; i < pictures.wGetTrainSetCount(); ++i) {
    for (const auto& [form, points] : forms) {
      EXPECT_TRUE(marks.designMark(points, form, project.wGetDNNClasses())) << form;
      EXPECT_TRUE(marks.addDesignedMark()) << form;
    }
    pictures.wSetComment("seen, \"twice\" & so");
    pictures.wSetTrainSetForward(1);
  }
}

std::map<std::string, std::string> filesOf(const ProjectBuilder& builder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(builder.projectDirectory()))
    if (entry.is_regular_file()) files[entry.path().string()] = readFile(entry.path().string());
  return files;
}

}  // namespace

TEST(Unchanged, ProjectIsSavedAsItWasHoweverOften) {
  const LogCapture log;
  ProjectBuilder builder;
  builder.withPictures({"0.png", "1.png"}, "day 1")
      .withPictures({"ü.png"}, "Tag 2 & 3")
      .withClasses({"nut", "screw & nut"})
      .withDarknet(kTree);
  builder.project().wAddWorkflow("to do", -1);
  markAll(builder.project());
  ASSERT_TRUE(builder.project().wUpdate(true));
  const auto files = filesOf(builder);
  // The settings, two lists and three records.
  ASSERT_EQ(files.size(), 6U);
  for (int round = 0; round < 3; ++round) {
    WTNVProject& project = builder.reopened();
    for (const WTNVTrainSet& record : project.wGetTrainSets()) {
      ASSERT_TRUE(record.wLoadData());
      ASSERT_EQ(record.wGetMarks().size(), 8U);
    }
    ASSERT_TRUE(project.wUpdate(round % 2 == 0));
    EXPECT_TRUE(filesOf(builder) == files) << round;
  }
}

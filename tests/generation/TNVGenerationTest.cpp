#include "generation/TNVGeneration.h"

#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TNV_SampleBenchNative/WTNVGeneration.h"
#include "foundation/TNVSettings.h"
#include "generation/TNVAugmentSample.h"
#include "support/LogCapture.h"
#include "support/TempDirectory.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

/// The least that a platform must be.
class PlainGeneration final : public TNVGeneration {
 public:
  std::string getName() const override { return "Plain"; }
  void calculateVarValues() override {
    TNVGeneration::calculateVarValues();
    vars["$OWN"] = "own";
  }
  bool processBefore() override { return true; }
  bool process(const TNVAugmentSample&) override { return true; }
  bool processAfter() override { return true; }
  std::vector<std::string> validateConfig() const override { return {"a problem"}; }
};

class TNVGenerationFixture : public ::testing::Test {
 protected:
  TNVGenerationFixture() {
    generation.platformPath = directory.path();
    generation.templates["one"].path = "one/";
    generation.templates["two"].path = "two/";
  }

  /// What writing the template of that content with those keywords gives.
  std::string filled(const std::string& content,
                     const std::map<std::string, std::string>& keywords) {
    directory.write("one/t.tmp", content);
    wrapper.wSetTemplateData("one", "t.tmp", keywords, directory / "filled.txt");
    generation.writeTemplate("one");
    return readFile(directory / "filled.txt");
  }

  TempDirectory directory;
  LogCapture log;
  PlainGeneration generation;
  WTNVGeneration wrapper{&generation};
};

TEST_F(TNVGenerationFixture, StartsWithTheToldValues) {
  const PlainGeneration fresh;
  EXPECT_THAT(fresh.templates, IsEmpty());
  EXPECT_THAT(fresh.vars, IsEmpty());
  EXPECT_EQ(fresh.name, "none");
  EXPECT_EQ(fresh.platformPath, "./");
}

TEST_F(TNVGenerationFixture, AHandleKnowsWhetherItIsNull) {
  const WTNVGeneration none;
  EXPECT_FALSE(none.isValid());
  EXPECT_EQ(none.getNativeGeneration(), nullptr);
  WTNVGeneration copy(wrapper);
  EXPECT_TRUE(copy.isValid());
  EXPECT_EQ(copy.getNativeGeneration(), &generation);
  copy = none;
  EXPECT_FALSE(copy.isValid());
  EXPECT_EQ(wrapper.wGetName(), "Plain");
  EXPECT_THAT(wrapper.wValidateConfig(), ElementsAre("a problem"));
}

TEST_F(TNVGenerationFixture, TemplateNamesAreTheFilesOfTheTypeTmp) {
  directory.write("one/a.tmp", "");
  directory.write("one/b.TMP", "");
  directory.write("one/c.cfg", "");
  directory.write("one/deep/d.tmp", "");
  EXPECT_THAT(wrapper.wGetAvailableTemplateNames("one"), UnorderedElementsAre("a.tmp", "b.TMP"));
  EXPECT_THAT(wrapper.wGetAvailableTemplateNames("none"), IsEmpty());
  EXPECT_EQ(log.text(), "");
}

TEST_F(TNVGenerationFixture, TemplateNamesOfAMissingDirectoryAreReportedAsMissing) {
  EXPECT_THAT(wrapper.wGetAvailableTemplateNames("two"), IsEmpty());
  EXPECT_EQ(log.text(),
            "TNVDirectory::readFiles: Path '" + directory.path() + "two/' not found!\n");
}

TEST_F(TNVGenerationFixture, DefaultsAreReadAndKept) {
  directory.write("one/t.tmp", "###B=1###\n###A###\n###B=2###\n");
  generation.templates["one"].name = "other";
  EXPECT_THAT(wrapper.wGetTemplateDataDefault("one", "t.tmp"),
              ElementsAre(Pair("A", ""), Pair("B", "1")));
  EXPECT_THAT(generation.templates["one"].defaults, ElementsAre(Pair("A", ""), Pair("B", "1")));
  EXPECT_EQ(wrapper.wGetTemplateName("one"), "other");
  EXPECT_THAT(wrapper.wGetTemplateDataDefault("one", "absent.tmp"), IsEmpty());
}

TEST_F(TNVGenerationFixture, AnUnknownDescriptorIsIgnored) {
  EXPECT_THAT(wrapper.wGetTemplateDataDefault("none", "t.tmp"), IsEmpty());
  wrapper.wSetTemplateData("none", "t.tmp", {{"A", "1"}}, "x");
  EXPECT_EQ(generation.templates.size(), 2u);
  EXPECT_EQ(wrapper.wGetTemplateName("none"), "");
  EXPECT_EQ(wrapper.wGetTemplateSavePath("none"), "");
  EXPECT_THAT(wrapper.wGetTemplateKaV("none"), IsEmpty());
}

TEST_F(TNVGenerationFixture, TemplateDataAreHandedBack) {
  wrapper.wSetTemplateData("two", "t.tmp", {{"A", "1"}}, "x/y.cfg");
  EXPECT_EQ(wrapper.wGetTemplateName("two"), "t.tmp");
  EXPECT_EQ(wrapper.wGetTemplateSavePath("two"), "x/y.cfg");
  EXPECT_THAT(wrapper.wGetTemplateKaV("two"), ElementsAre(Pair("A", "1")));
  EXPECT_EQ(wrapper.wGetTemplateName("one"), "");
}

TEST_F(TNVGenerationFixture, VariablesAreThereOnceTheyWereCalculated) {
  EXPECT_THAT(wrapper.wGetAvailableVars(), IsEmpty());
  EXPECT_EQ(wrapper.wGetValueForVar("$DNN_COUNT"), "");
  EXPECT_EQ(log.text(), "TNVGeneration::getValueForVar: Key not found!\n");
  generation.dnnClasses = {nullptr, nullptr, nullptr};
  generation.trainSets = {nullptr, nullptr};
  generation.name = "Plain";
  generation.vars["$STALE"] = "x";
  wrapper.wCalculateVarValues();
  EXPECT_THAT(wrapper.wGetAvailableVars(), ElementsAre("$DNN_COUNT", "$OWN", "$PLATFORM_NAME",
                                                       "$PLATFORM_PATH", "$TRAINSET_COUNT"));
  EXPECT_EQ(wrapper.wGetValueForVar("$DNN_COUNT"), "3");
  EXPECT_EQ(wrapper.wGetValueForVar("$TRAINSET_COUNT"), "2");
  EXPECT_EQ(wrapper.wGetValueForVar("$PLATFORM_NAME"), "Plain");
  EXPECT_EQ(wrapper.wGetValueForVar("$PLATFORM_PATH"), directory.path());
}

struct ValueRow {
  const char* given;
  const char* written;
};

class TNVGenerationValues : public TNVGenerationFixture,
                            public ::testing::WithParamInterface<ValueRow> {};

TEST_P(TNVGenerationValues, StandForVariablesOnlyAsAWhole) {
  generation.dnnClasses = {nullptr, nullptr};
  EXPECT_EQ(filled("v=###A###\n", {{"A", GetParam().given}}),
            std::string("v=") + GetParam().written + "\n");
}

INSTANTIATE_TEST_SUITE_P(Rows, TNVGenerationValues,
                         ::testing::Values(ValueRow{"7", "7"}, ValueRow{" a b ", " a b "},
                                           ValueRow{"$DNN_COUNT", "2"},
                                           ValueRow{"$ DNN_COUNT", "2"},
                                           ValueRow{"  $DNN_COUNT ", "2"},
                                           ValueRow{"\t$DNN_COUNT", "\t$DNN_COUNT"},
                                           ValueRow{"x$DNN_COUNT", "x$DNN_COUNT"},
                                           ValueRow{"$NOT_A_VARIABLE", "$NOT_A_VARIABLE"},
                                           ValueRow{"$dnn_count", "$dnn_count"},
                                           ValueRow{"$OWN", "own"}, ValueRow{"", ""}));

TEST_F(TNVGenerationFixture, KeywordsWithoutAValueKeepTheDefaultOfTheFile) {
  EXPECT_EQ(filled("###A=1### \n###B=2###\n", {{"B", "x"}}), "1 \nx\n");
}

TEST_F(TNVGenerationFixture, AKeywordThatTheTemplateDoesNotHoldIsReported) {
  EXPECT_EQ(filled("###A=1###\n", {{"Z", "x"}}), "1\n");
  EXPECT_EQ(log.text(), "setValueForKey: Z Element  Not Found\n");
}

TEST_F(TNVGenerationFixture, AMissingDefaultLeavesNoFile) {
  EXPECT_EQ(filled("###A###\n", {}), "");
  EXPECT_EQ(log.lines().size(), 2u);
  EXPECT_THAT(log.lines().back(), ::testing::EndsWith("Default Value wurde nicht gesetzt. "));
}

TEST_F(TNVGenerationFixture, AValueThatContainsItsOwnKeywordIsRefused) {
  EXPECT_EQ(filled("###A=1###\n", {{"A", "x###A=1###"}}), "1\n");
  EXPECT_EQ(log.text(),
            "TNVGeneration::writeTemplate: The value of 'A' contains its own keyword!\n");
}

TEST_F(TNVGenerationFixture, AnUnreadableTemplateGivesAnEmptyFile) {
  directory.write("filled.txt", "earlier");
  wrapper.wSetTemplateData("one", "absent.tmp", {}, directory / "filled.txt");
  generation.writeTemplate("one");
  EXPECT_EQ(readFile(directory / "filled.txt"), "");
}

TEST_F(TNVGenerationFixture, SettingsHaveTheToldKeys) {
  const std::string path = directory / "p.cfg";
  TNVSettings settings(path);
  wrapper.wSetTemplateData("two", "t.tmp", {{"A", "1"}, {"B", "$OWN"}}, "x.cfg");
  generation.saveSettings(&settings);
  settings.saveFile();
  EXPECT_EQ(readFile(path),
            "Generation.Tmp.Count = 2\n"
            "Generation.Tmp.Descriptor.0 = \"one\"\n"
            "Generation.Tmp.Descriptor.1 = \"two\"\n"
            "Generation.Tmp.Keywords.0 = \n"
            "Generation.Tmp.Keywords.1 = \"A\">\"1\",\"B\">\"$OWN\"\n"
            "Generation.Tmp.Name.0 = \"\"\n"
            "Generation.Tmp.Name.1 = \"t.tmp\"\n"
            "Generation.Tmp.Path.0 = \"one/\"\n"
            "Generation.Tmp.Path.1 = \"two/\"\n"
            "Generation.Tmp.SavePath.0 = \"\"\n"
            "Generation.Tmp.SavePath.1 = \"x.cfg\"\n");
}

TEST_F(TNVGenerationFixture, SettingsComeBackAllButTheDefaults) {
  directory.write("two/t.tmp", "###A=1###");
  wrapper.wGetTemplateDataDefault("two", "t.tmp");
  wrapper.wSetTemplateData("two", "t.tmp", {{"A", "1"}, {"B", "$OWN"}}, "x.cfg");
  TNVSettings settings(directory / "p.cfg");
  generation.saveSettings(&settings);
  settings.saveFile();
  TNVSettings read(directory / "p.cfg");
  read.loadFile();
  PlainGeneration other;
  other.templates["stale"].path = "stale/";
  other.loadSettings(&read);
  ASSERT_EQ(other.templates.size(), 2u);
  EXPECT_EQ(other.templates["one"].path, "one/");
  const auto& two = other.templates["two"];
  EXPECT_EQ(two.path, "two/");
  EXPECT_EQ(two.name, "t.tmp");
  EXPECT_EQ(two.savePath, "x.cfg");
  EXPECT_THAT(two.keywords, ElementsAre(Pair("A", "1"), Pair("B", "$OWN")));
  EXPECT_THAT(two.defaults, IsEmpty());
}

TEST_F(TNVGenerationFixture, ACountOfZeroOrNoneKeepsTheBuiltInTemplates) {
  TNVSettings settings(directory / "p.cfg");
  generation.loadSettings(&settings);
  EXPECT_EQ(generation.templates.size(), 2u);
  settings.setInt("Generation.Tmp.Count", 0);
  settings.setString("Generation.Tmp.Descriptor.0", "x");
  generation.loadSettings(&settings);
  EXPECT_EQ(generation.templates.size(), 2u);
  EXPECT_EQ(generation.templates.count("x"), 0u);
}

TEST_F(TNVGenerationFixture, ADamagedCountEndsSoon) {
  TNVSettings settings(directory / "p.cfg");
  settings.setInt("Generation.Tmp.Count", std::numeric_limits<int>::max());
  settings.setString("Generation.Tmp.Descriptor.1", "x");
  generation.loadSettings(&settings);
  EXPECT_EQ(generation.templates.size(), 2u);
  EXPECT_EQ(generation.templates.count("x"), 1u);
  EXPECT_EQ(generation.templates.count(""), 1u);
}

TEST_F(TNVGenerationFixture, NoSettingsAreNoFailure) {
  generation.saveSettings(nullptr);
  generation.loadSettings(nullptr);
  EXPECT_EQ(generation.templates.size(), 2u);
}

}  // namespace

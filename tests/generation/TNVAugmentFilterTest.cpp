#include "generation/TNVAugmentFilter.h"

#include "AugmentSupport.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Texts = std::vector<std::string>;

struct FilterRow {
  Texts gens;
  Texts forms;
  Texts kept;  // kind of each entry that stays
};

class TNVAugmentFilterRows : public ::testing::TestWithParam<FilterRow> {};

TEST_P(TNVAugmentFilterRows, KeepsWhatBothListsHold) {
  TNVAugmentFilter task;
  task.allowedGens = GetParam().gens;
  task.allowedForms = GetParam().forms;
  const TNVAugmentSample sample = makeSample(64, 48);
  const TNVAugmentSample result = task.process(sample);
  Texts kept;
  for (const TNVAugmentEntry& entry : result.entries)
    kept.push_back(entry.gen + " " + entry.form);
  EXPECT_EQ(kept, GetParam().kept);
  EXPECT_EQ(result.image.data, sample.image.data);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TNVAugmentFilterRows,
    ::testing::Values(FilterRow{{}, {}, {}},                                  //
                      FilterRow{{}, {"Rect", "Circle"}, {}},                  //
                      FilterRow{{"ROI", "POI"}, {}, {}},                      //
                      FilterRow{{"ROI"}, {"Rect", "Circle"}, {"ROI Rect"}},   //
                      FilterRow{{"POI", "ROI"}, {"Circle"}, {"POI Circle"}},  //
                      FilterRow{{"ROI"}, {"Circle"}, {}},                     //
                      FilterRow{{"roi", "poi"}, {"Rect", "Circle"}, {}},      //
                      FilterRow{{"POI", "ROI"}, {"Circle", "Rect"}, {"ROI Rect", "POI Circle"}}));

TEST(TNVAugmentFilter, LosesSpecial) {
  EXPECT_FALSE(TNVAugmentFilter().process(makeSample(8, 8)).special);
}

TEST(TNVAugmentFilter, ReadsLists) {
  TNVAugmentFilter task;
  EXPECT_EQ(task.getName(), "Filter");
  readTask(task,
           "<FilterAllowedGens>ROI POI</FilterAllowedGens>"
           "<FilterAllowedForms>\"Rect\" \"PolyLine\" \"Line\"</FilterAllowedForms>");
  EXPECT_THAT(task.allowedGens, ElementsAre("ROI", "POI"));
  EXPECT_THAT(task.allowedForms, ElementsAre("Rect", "PolyLine", "Line"));
}

TEST(TNVAugmentFilter, ReadsAListOfOne) {
  TNVAugmentFilter task;
  readTask(task, "<FilterAllowedGens>ROI</FilterAllowedGens>");
  EXPECT_THAT(task.allowedGens, ElementsAre("ROI"));
}

TEST(TNVAugmentFilter, AnAbsentKeyLeavesAnEmptyList) {
  TNVAugmentFilter task;
  task.allowedGens = {"ROI"};
  task.allowedForms = {"Rect"};
  readTask(task, "");
  EXPECT_THAT(task.allowedGens, IsEmpty());
  EXPECT_THAT(task.allowedForms, IsEmpty());
}

TEST(TNVAugmentFilter, WritesWhatItReads) {
  for (const Texts& texts : {Texts{}, Texts{"ROI"}, Texts{"ROI", "a b", "[", "<&>"}}) {
    TNVAugmentFilter task;
    TNVAugmentFilter copy;
    task.allowedGens = texts;
    task.allowedForms = {"Rect"};
    EXPECT_THAT(writtenKeys(task), ElementsAre("FilterAllowedGens", "FilterAllowedForms"));
    copyByFile(task, copy);
    EXPECT_EQ(copy.allowedGens, texts);
    EXPECT_THAT(copy.allowedForms, ElementsAre("Rect"));
  }
}

}  // namespace

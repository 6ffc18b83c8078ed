#include "generation/TNVAugmentDefault.h"

#include "AugmentSupport.h"

namespace {

TEST(TNVAugmentDefault, PassesTheSampleOnWithoutCopyingPixels) {
  const TNVAugmentSample sample = makeSample(64, 48);
  const TNVAugmentSample result = TNVAugmentDefault().process(sample);
  EXPECT_EQ(result.image.data, sample.image.data);
  ASSERT_EQ(result.entries.size(), 2u);
  expectPoints(result.entries[1].points, sample.entries[1].points, 0.0);
  EXPECT_EQ(result.entries[1].classIndex, 7);
  EXPECT_EQ(result.entries[1].gen, "POI");
  EXPECT_EQ(result.entries[1].form, "Circle");
}

TEST(TNVAugmentDefault, KeepsSpecialAsItIs) {
  TNVAugmentSample sample = makeSample(8, 8);
  EXPECT_TRUE(TNVAugmentDefault().process(sample).special);
  sample.special = false;
  EXPECT_FALSE(TNVAugmentDefault().process(sample).special);
}

TEST(TNVAugmentDefault, HasANameAndNoParameters) {
  TNVAugmentDefault task;
  EXPECT_EQ(task.getName(), "Default");
  EXPECT_TRUE(task.save);
  EXPECT_TRUE(writtenKeys(task).empty());
  readTask(task, "<Save>0</Save>");
  EXPECT_TRUE(task.save);
}

}  // namespace

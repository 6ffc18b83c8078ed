#include "TNV_SampleBenchNative/WTNVDNNClass.h"

#include <memory>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "project/TNVDNNClass.h"
#include "support/Pictures.h"
#include "support/TempDirectory.h"

namespace {

struct HandedOut {
  unsigned char* data;
  int width;
  int height;
  int channels;
};

/// What comes out of a handle whose outputs held something else before.
HandedOut sampleOf(const WTNVDNNClass& handle) {
  unsigned char before = 0;
  HandedOut out{&before, -7, -7, -7};
  handle.wGetSampleImage(&out.data, &out.width, &out.height, &out.channels);
  return out;
}

void expectNothing(const HandedOut& out) {
  EXPECT_EQ(out.data, nullptr);
  EXPECT_EQ(out.width, 0);
  EXPECT_EQ(out.height, 0);
  EXPECT_EQ(out.channels, 0);
}

void expectPicture(const HandedOut& out, const cv::Mat& picture) {
  ASSERT_NE(out.data, nullptr);
  EXPECT_EQ(out.channels, 3);
  EXPECT_TRUE(samePixels(picture, cv::Mat(out.height, out.width, CV_8UC3, out.data)));
}

}  // namespace

TEST(WTNVDNNClass, DefaultMadeHandleIsNull) {
  const WTNVDNNClass handle;
  EXPECT_FALSE(handle.isValid());
  EXPECT_EQ(handle.getNativeDNNClass(), nullptr);
  EXPECT_FALSE(WTNVDNNClass(nullptr).isValid());
}

TEST(WTNVDNNClass, CopyAndAssignmentTakeThePointerOnly) {
  TNVDNNClass dnnClass(3);
  const WTNVDNNClass handle(&dnnClass);
  const WTNVDNNClass copy(handle);
  WTNVDNNClass assigned;
  assigned = handle;
  EXPECT_TRUE(handle.isValid());
  EXPECT_EQ(handle.getNativeDNNClass(), &dnnClass);
  EXPECT_EQ(copy.getNativeDNNClass(), &dnnClass);
  EXPECT_EQ(assigned.getNativeDNNClass(), &dnnClass);
}

TEST(WTNVDNNClass, DestroyedHandleLeavesTheClassInPlace) {
  TNVDNNClass dnnClass(3);
  auto handle = std::make_unique<WTNVDNNClass>(&dnnClass);
  const WTNVDNNClass copy(*handle);
  handle.reset();
  dnnClass.name = "still here";
  EXPECT_EQ(copy.wGetName(), "still here");
}

TEST(WTNVDNNClass, EqualComparesUniqueIndices) {
  TNVDNNClass one(1);
  TNVDNNClass sameIndex(1);
  sameIndex.name = "other";
  TNVDNNClass two(2);
  two.name = one.name;
  EXPECT_TRUE(WTNVDNNClass(&one).equal(WTNVDNNClass(&sameIndex)));
  EXPECT_FALSE(WTNVDNNClass(&one).equal(WTNVDNNClass(&two)));
}

TEST(WTNVDNNClass, GettersGiveTheFields) {
  TNVDNNClass dnnClass(1);
  dnnClass.name = "cat";
  dnnClass.dnnId = 12;
  dnnClass.samplePath = "a/b.png";
  dnnClass.comment = "furry";
  const WTNVDNNClass handle(&dnnClass);
  EXPECT_EQ(handle.wGetName(), "cat");
  EXPECT_EQ(handle.wGetDNNId(), 12);
  EXPECT_EQ(handle.wGetSamplePath(), "a/b.png");
  EXPECT_EQ(handle.wGetComment(), "furry");
}

TEST(WTNVDNNClass, NewClassHasTheCommonColour) {
  TNVDNNClass dnnClass(1);
  int red = 0, green = 0, blue = 0;
  WTNVDNNClass(&dnnClass).wGetColor(&red, &green, &blue);
  EXPECT_EQ(red, 157);
  EXPECT_EQ(green, 196);
  EXPECT_EQ(blue, 35);
}

TEST(WTNVDNNClass, ColourIsTruncated) {
  TNVDNNClass dnnClass(1);
  dnnClass.color = cv::Scalar(10.9, -20.9, 300.5);
  int red = 0, green = 0, blue = 0;
  WTNVDNNClass(&dnnClass).wGetColor(&red, &green, &blue);
  EXPECT_EQ(red, 300);
  EXPECT_EQ(green, -20);
  EXPECT_EQ(blue, 10);
}

TEST(WTNVDNNClass, ColourNeedsAllThreePointers) {
  TNVDNNClass dnnClass(1);
  const WTNVDNNClass handle(&dnnClass);
  int first = -7, second = -7;
  handle.wGetColor(nullptr, &first, &second);
  handle.wGetColor(&first, nullptr, &second);
  handle.wGetColor(&first, &second, nullptr);
  EXPECT_EQ(first, -7);
  EXPECT_EQ(second, -7);
}

TEST(WTNVDNNClass, SampleImageWithoutPathIsEmpty) {
  TNVDNNClass dnnClass(1);
  dnnClass.sampleImage = patternedPicture(4, 3);
  expectNothing(sampleOf(WTNVDNNClass(&dnnClass)));
}

TEST(WTNVDNNClass, SampleImageThatIsMissingOrNoPictureIsEmpty) {
  const TempDirectory directory;
  TNVDNNClass dnnClass(1);
  for (const std::string& path : unreadablePictures(directory)) {
    dnnClass.samplePath = path;
    expectNothing(sampleOf(WTNVDNNClass(&dnnClass)));
  }
}

TEST(WTNVDNNClass, SampleImageIsHandedOutWithoutCopy) {
  const TempDirectory directory;
  TNVDNNClass dnnClass(1);
  dnnClass.samplePath = writePicture(directory / "sample.png", 13, 7);
  const HandedOut out = sampleOf(WTNVDNNClass(&dnnClass));
  EXPECT_EQ(out.width, 13);
  EXPECT_EQ(out.height, 7);
  expectPicture(out, patternedPicture(13, 7));
  EXPECT_EQ(out.data, dnnClass.sampleImage.data);
}

TEST(WTNVDNNClass, GreySampleImageComesWithThreeChannels) {
  const TempDirectory directory;
  TNVDNNClass dnnClass(1);
  dnnClass.samplePath = directory / "grey.png";
  cv::imwrite(dnnClass.samplePath, cv::Mat(5, 6, CV_8UC1, cv::Scalar(77)));
  expectPicture(sampleOf(WTNVDNNClass(&dnnClass)), cv::Mat(5, 6, CV_8UC3, cv::Scalar(77, 77, 77)));
}

TEST(WTNVDNNClass, SampleImageIsReadAnewEachTime) {
  const TempDirectory directory;
  TNVDNNClass dnnClass(1);
  const WTNVDNNClass handle(&dnnClass);
  dnnClass.samplePath = writePicture(directory / "sample.png", 13, 7);
  expectPicture(sampleOf(handle), patternedPicture(13, 7));
  writePicture(dnnClass.samplePath, 9, 11);
  expectPicture(sampleOf(handle), patternedPicture(9, 11));
  directory.write("sample.png", "no picture any more");
  expectNothing(sampleOf(handle));
}

TEST(WTNVDNNClass, ByIndexGivesTheFirstWithThatIndex) {
  TNVDNNClass a(4), b(7), c(7);
  const std::vector<WTNVDNNClass> classes{WTNVDNNClass(&a), WTNVDNNClass(&b), WTNVDNNClass(&c)};
  EXPECT_EQ(WTNVDNNClass::wGetDNNClassByIdx(classes, 7).getNativeDNNClass(), &b);
  EXPECT_EQ(WTNVDNNClass::wGetDNNClassByIdx(classes, 4).getNativeDNNClass(), &a);
}

TEST(WTNVDNNClass, ByUnknownIndexGivesANullHandle) {
  TNVDNNClass a(4);
  EXPECT_FALSE(WTNVDNNClass::wGetDNNClassByIdx({WTNVDNNClass(&a)}, 5).isValid());
  EXPECT_FALSE(WTNVDNNClass::wGetDNNClassByIdx({}, 4).isValid());
}

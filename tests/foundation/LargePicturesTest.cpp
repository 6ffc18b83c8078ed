#include "foundation/LargePictures.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

namespace {

const cv::Size kLarge(4096, 4096);

/// Where the pixels of a picture lie that is let go of at once.
const uchar* placeOfNew(cv::Size size, int type) {
  return tnv::newPicture(size, type).data;
}

}  // namespace

TEST(LargePictures, WhatNobodyHoldsComesBack) {
  const tnv::LargePictures kept;
  const uchar* const first = placeOfNew(kLarge, CV_8UC3);
  const cv::Mat second = tnv::newPicture(kLarge, CV_8UC3);
  EXPECT_EQ(first, second.data);
  EXPECT_EQ(kLarge, second.size());
  EXPECT_EQ(CV_8UC3, second.type());
  EXPECT_TRUE(second.isContinuous());
  EXPECT_FALSE(second.isSubmatrix());
}

TEST(LargePictures, WhatIsHeldIsNotTouched) {
  const tnv::LargePictures kept;
  cv::Mat held = tnv::newPicture(kLarge, CV_8UC3);
  const cv::Mat copy = held;
  held.release();
  const cv::Mat other = tnv::newPicture(kLarge, CV_8UC3);
  EXPECT_NE(copy.data, other.data);
  EXPECT_EQ(2, copy.u->refcount) << "the copy and the list";
}

TEST(LargePictures, AnotherShapeOfTheSameSizeTakesThePlace) {
  const tnv::LargePictures kept;
  const uchar* const first = placeOfNew({8192, 2048}, CV_8UC3);
  const cv::Mat turned = tnv::newPicture({2048, 8192}, CV_8UC3);
  EXPECT_EQ(first, turned.data);
  EXPECT_EQ(cv::Size(2048, 8192), turned.size());
}

TEST(LargePictures, PictureOutlivesThem) {
  cv::Mat picture;
  {
    const tnv::LargePictures kept;
    picture = tnv::newPicture(kLarge, CV_8UC3);
  }
  picture.setTo(cv::Scalar(1, 2, 3));
  EXPECT_EQ(1, picture.u->refcount);
  EXPECT_EQ(cv::Vec3b(1, 2, 3), picture.at<cv::Vec3b>(4095, 4095));
}

TEST(LargePictures, NestedOnesKeepUntilTheLast) {
  const tnv::LargePictures outer;
  const uchar* first = nullptr;
  {
    const tnv::LargePictures inner;
    first = placeOfNew(kLarge, CV_8UC3);
  }
  const cv::Mat second = tnv::newPicture(kLarge, CV_8UC3);
  EXPECT_EQ(first, second.data);
}

TEST(LargePictures, NothingIsKeptOfOthers) {
  const auto holders = [](cv::Size size, int type) {
    return tnv::newPicture(size, type).u->refcount;
  };
  EXPECT_EQ(1, holders(kLarge, CV_8UC3)) << "nobody keeps";
  const tnv::LargePictures kept;
  EXPECT_EQ(2, holders(kLarge, CV_8UC3));
  EXPECT_EQ(1, holders({4096, 2048}, CV_8UC3)) << "not large";
  EXPECT_EQ(1, holders(kLarge, CV_16UC3)) << "not of bytes";
  EXPECT_TRUE(tnv::newPicture({}, CV_8UC3).empty());
}

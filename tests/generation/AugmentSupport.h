#pragma once

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include "foundation/XmlStorage.h"
#include "generation/TNVAugment.h"
#include "support/Pictures.h"

/// A sample with a picture and two boxes, flagged as special.
inline TNVAugmentSample makeSample(int width, int height) {
  TNVAugmentSample sample;
  sample.image = patternedPicture(width, height);
  sample.entries = {{{{10, 5}, {30, 5}, {30, 15}, {10, 15}}, 3, "ROI", "Rect"},
                    {{{0, 0}, {4, 0}, {4, 2}, {0, 2}}, 7, "POI", "Circle"}};
  sample.special = true;
  return sample;
}

/// Reads a task's parameters from the body of its map.
inline void readTask(TNVAugment& task, const std::string& body) {
  const cv::FileStorage storage("<?xml version=\"1.0\"?>\n<opencv_storage>\n<Task><Name>x</Name>" +
                                    body + "</Task>\n</opencv_storage>\n",
                                cv::FileStorage::READ | cv::FileStorage::MEMORY);
  task.read(storage["Task"]);
}

/// What the task writes, as a document.
inline std::string written(const TNVAugment& task) {
  cv::FileStorage storage = tnv::newXml();
  storage << "Task"
          << "{";
  task.write(storage);
  storage << "}";
  return storage.releaseAndGetString();
}

/// Lets a task of the same kind read what the task writes.
inline void copyByFile(const TNVAugment& task, TNVAugment& copy) {
  const cv::FileStorage storage(written(task), cv::FileStorage::READ | cv::FileStorage::MEMORY);
  copy.read(storage["Task"]);
}

/// The names of the nodes that the task writes, in order.
inline std::vector<std::string> writtenKeys(const TNVAugment& task) {
  const cv::FileStorage storage(written(task), cv::FileStorage::READ | cv::FileStorage::MEMORY);
  std::vector<std::string> names;
  for (const cv::FileNode& node : storage["Task"])
    names.push_back(node.name());
  return names;
}

inline void expectPoints(const std::vector<cv::Point2d>& actual,
                         const std::vector<cv::Point2d>& expected, double tolerance) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_NEAR(actual[i].x, expected[i].x, tolerance) << "point " << i;
    EXPECT_NEAR(actual[i].y, expected[i].y, tolerance) << "point " << i;
  }
}

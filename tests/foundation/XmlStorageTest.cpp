#include "foundation/XmlStorage.h"

#include <locale>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/FileReplacements.h"
#include "support/TempDirectory.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

namespace {

class XmlStorageTest : public testing::Test {
 protected:
  /// The root of a document with that content between its outermost tags.
  cv::FileNode root(const std::string& content) {
    storage = tnv::openXml(temp.write("file.xml", "<?xml version=\"1.0\"?>\n<opencv_storage>\n" +
                                                      content + "\n</opencv_storage>"));
    return storage.root();
  }

  /// The root of a document that was just written.
  cv::FileNode rewritten(cv::FileStorage& written) {
    EXPECT_TRUE(tnv::replaceForGood(temp / "file.xml", written.releaseAndGetString()));
    storage = tnv::openXml(temp / "file.xml");
    return storage.root();
  }

  TempDirectory temp;
  cv::FileStorage storage;
};

}  // namespace

TEST_F(XmlStorageTest, MissingAndEmptyFilesAreNotOpen) {
  EXPECT_FALSE(tnv::openXml(temp / "missing.xml").isOpened());
  EXPECT_FALSE(tnv::openXml(temp.write("empty.xml", "")).isOpened());
}

TEST_F(XmlStorageTest, WhatIsNoXmlThrows) {
  for (const char* content :
       {"abc", "{\"a\": 1}", "%YAML:1.0\na: 1", "<?xml", "<?xml version=\"1.0\"?>"}) {
    EXPECT_THROW(tnv::openXml(temp.write("file.xml", content)), cv::Exception) << content;
  }
}

TEST_F(XmlStorageTest, EndlessNestingThrows) {
  std::string nested = "<?xml version=\"1.0\"?>\n<opencv_storage>";
  for (int i = 0; i < 100000; ++i)
    nested += "<a>";
  EXPECT_THROW(tnv::openXml(temp.write("file.xml", nested)), cv::Exception);
}

TEST_F(XmlStorageTest, AnyTextComesBack) {
  const std::string texts[] = {"",
                               "abc",
                               "123",
                               "1.5",
                               " lead",
                               "end ",
                               "a\nb\r\tc",
                               "<>&\"'",
                               "\"",
                               "\"\"",
                               "\"quoted\"",
                               "\"a\" and \"b\"",
                               "\"a<b&c\nd\"",
                               "'x'",
                               "-->",
                               "\xe4\xf6",
                               "\xc3\xa4",
                               ".Nan",
                               "true",
                               "&amp;",
                               "{",
                               "[",
                               "{:",
                               "{x",
                               "[1]",
                               "}",
                               "]",
                               "}x",
                               "\\{a",
                               "\\[",
                               "_",
                               "#",
                               std::string(4095, 'a')};
  for (const std::string& text : texts) {
    cv::FileStorage written = tnv::newXml();
    tnv::writeText(written, "Text", text);
    EXPECT_EQ(text, tnv::readText(tnv::child(rewritten(written), "Text"), "default"));
  }
}

TEST_F(XmlStorageTest, TextThatCouldNotBeReadBackIsNotWritten) {
  cv::FileStorage written = tnv::newXml();
  EXPECT_THROW(tnv::writeText(written, "Text", std::string(4096, 'a')), cv::Exception);
  written << "After" << 1;
  EXPECT_EQ(1, tnv::readInt(tnv::child(rewritten(written), "After"), 0));
}

TEST_F(XmlStorageTest, NumbersComeBackToTheLastBit) {
  const std::vector<cv::Point2d> points{{0.1, 1.0 / 3.0}, {-1e300, 5e-324}, {0.0, 1.0}};
  cv::FileStorage written = tnv::newXml();
  tnv::writePoints(written, "Points", points);
  tnv::writePoint(written, "Point", points[0]);
  tnv::writeInts(written, "Ints", {1, -2, 2147483647});
  tnv::writeSize(written, "Size", {4000, 3000});
  const cv::FileNode node = rewritten(written);
  EXPECT_EQ(points, tnv::readPoints(tnv::child(node, "Points")));
  EXPECT_EQ(points[0], tnv::readPoint(tnv::child(node, "Point")));
  EXPECT_THAT(tnv::readInts(tnv::child(node, "Ints")), ElementsAre(1, -2, 2147483647));
  EXPECT_EQ(cv::Size(4000, 3000), tnv::readSize(tnv::child(node, "Size")));
}

TEST_F(XmlStorageTest, PairsOfAnotherLengthAreZero) {
  const cv::FileNode node = root("<One>5</One><Three>1 2 3</Three><None></None>");
  for (const char* name : {"One", "Three", "None", "Absent"}) {
    EXPECT_EQ(cv::Point2d(), tnv::readPoint(tnv::child(node, name))) << name;
    EXPECT_EQ(cv::Size(), tnv::readSize(tnv::child(node, name))) << name;
  }
}

TEST_F(XmlStorageTest, EmptyListsComeBackEmpty) {
  cv::FileStorage written = tnv::newXml();
  tnv::writePoints(written, "Points", {});
  tnv::writeInts(written, "Ints", {});
  const cv::FileNode node = rewritten(written);
  EXPECT_THAT(tnv::readPoints(tnv::child(node, "Points")), IsEmpty());
  EXPECT_THAT(tnv::readInts(tnv::child(node, "Ints")), IsEmpty());
}

TEST_F(XmlStorageTest, DefaultsStandForAbsentNodes) {
  const cv::FileNode node = root("<A>1</A>");
  EXPECT_EQ("d", tnv::readText(tnv::child(node, "B"), "d"));
  EXPECT_EQ(7, tnv::readInt(tnv::child(node, "B"), 7));
  EXPECT_TRUE(tnv::child(tnv::child(node, "A"), "below a number").empty());
}

TEST_F(XmlStorageTest, NumberedChildrenAreThoseBelowTheCount) {
  const cv::FileNode node = root(
      "<id2>c</id2><id0>a</id0><id01>x</id01><idx>x</idx><id>x</id><id-1>x</id-1><id1x>x</id1x>"
      "<id00>x</id00><id99999999999>x</id99999999999><id3>d</id3>");
  const auto children = tnv::numberedChildren(node, "id", 3);
  ASSERT_THAT(children, SizeIs(2));
  EXPECT_EQ(0, children[0].first);
  EXPECT_EQ("a", children[0].second.string());
  EXPECT_EQ(2, children[1].first);
  EXPECT_EQ("c", children[1].second.string());
}

TEST_F(XmlStorageTest, CutAndDamagedFilesThrowOrRead) {
  const std::string whole =
      "<?xml version=\"1.0\"?>\n<opencv_storage>\n<Text>\"a &lt; b\"</Text>\n<Points>\n  1. 2. 3. "
      "4.</Points>\n<Mark0>\n  <Type>Rect</Type></Mark0>\n</opencv_storage>\n";
  const auto survives = [&](const std::string& content) {
    try {
      cv::FileStorage opened = tnv::openXml(temp.write("file.xml", content));
      if (opened.isOpened()) tnv::readText(tnv::child(opened.root(), "Text"), "");
    } catch (const cv::Exception&) {
    }
  };
  for (std::size_t length = 0; length < whole.size(); ++length)
    survives(whole.substr(0, length));
  std::mt19937 random(7);
  for (int round = 0; round < 500; ++round) {
    std::string damaged = whole;
    for (int i = 0; i < 3; ++i)
      damaged[random() % damaged.size()] = static_cast<char>(random());
    survives(damaged);
  }
}

namespace {

class CommaNumbers : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
};

}  // namespace

TEST_F(XmlStorageTest, FilesDoNotListenToTheLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale(), new CommaNumbers));
  cv::FileStorage written = tnv::newXml();
  tnv::writePoint(written, "Point", {0.25, 1234.5});
  const cv::Point2d back = tnv::readPoint(tnv::child(rewritten(written), "Point"));
  std::locale::global(before);
  EXPECT_EQ(cv::Point2d(0.25, 1234.5), back);
  EXPECT_THAT(readFile(temp / "file.xml"), testing::HasSubstr("1.2345000000000000e+03"));
}

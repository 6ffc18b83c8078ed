#include "tools/LabelsVoc.h"

#include <filesystem>
#include <random>

#include <opencv2/imgcodecs.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LogCapture.h"
#include "support/TempDirectory.h"
#include "tools/LabelTools.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string object(const std::string& name, const std::string& box) {
  return "<object><name>" + name + "</name><bndbox>" + box + "</bndbox></object>\n";
}

std::string corners(const std::string& left, const std::string& top, const std::string& right,
                    const std::string& bottom) {
  return "<xmin>" + left + "</xmin><ymin>" + top + "</ymin><xmax>" + right + "</xmax><ymax>" +
         bottom + "</ymax>";
}

/// Objects stand from line 3 on.
std::string fileWith(const std::string& objects, const std::string& picture = "a.jpg") {
  return "<annotation><filename>" + picture +
         "</filename>\n<size><width>200</width><height>100</height></size>\n" + objects +
         "</annotation>\n";
}

class LabelsVoc : public testing::Test {
 protected:
  void SetUp() override { temp.write("a.jpg", ""); }

  tnv::LabelSet read(const std::string& text, const tnv::LabelReading& reading = {}) const {
    const auto set = tnv::readVocLabels(temp.write("a.xml", text), reading);
    EXPECT_TRUE(set.has_value());
    return set.value_or(tnv::LabelSet());
  }

  TempDirectory temp;
};

}  // namespace

TEST_F(LabelsVoc, TheBaseIsThatOfTheFirstPixel) {
  tnv::LabelReading reading;
  const auto text = fileWith(object("screw", corners("21", "11", "70", "50")) +
                             object("screw", corners("1", "1", "200", "100")));
  const auto one = read(text, reading);
  ASSERT_EQ(one.accepted, 2U);
  EXPECT_LT(moved({0.1, 0.1, 0.25, 0.4}, one.pictures[0].labels[0].box, {200, 100}), 1e-9);
  EXPECT_LT(moved({0, 0, 1, 1}, one.pictures[0].labels[1].box, {200, 100}), 1e-9);
  EXPECT_EQ(one.pictures[0].labels[0].line, 3U);
  EXPECT_EQ(one.pictures[0].labels[1].line, 4U);
  EXPECT_EQ(one.pictures[0].size, cv::Size(200, 100));
  reading.base = 0;
  const auto zero = read(text, reading);
  EXPECT_LT(moved({21.0 / 200, 0.11, 49.0 / 200, 0.39}, zero.pictures[0].labels[0].box, {200, 100}),
            1e-9);
}

TEST_F(LabelsVoc, PartsOfAnObjectAreNoObjects) {
  const auto set = read(fileWith(
      "<object><name>person</name><bndbox>" + corners("21", "11", "70", "50") +
      "</bndbox><part><name>head</name><bndbox>" + corners("22.5", "12", "30", "20") +
      "</bndbox></part></object>\n" + object("nut", corners("22.5", "12", "30.25", "20"))));
  EXPECT_THAT(set.classNames, ElementsAre("person", "nut"));
  EXPECT_EQ(set.found(), 2U);
  EXPECT_LT(moved({21.5 / 200, 0.11, 8.75 / 200, 0.09}, set.pictures[0].labels[1].box, {200, 100}),
            1e-9);
}

TEST_F(LabelsVoc, ClassesComeInTheOrderOfAListAndThenAsTheyAreMet) {
  temp.write("classes.txt", "nut\nscrew\n");
  const auto text = fileWith(object("screw", corners("21", "11", "70", "50")) +
                             object("clip", corners("21", "11", "70", "50")));
  temp.write("a.xml", text);
  EXPECT_THAT(tnv::readVocLabels(temp.path(), {})->classNames, ElementsAre("nut", "screw", "clip"));
  tnv::LabelReading reading;
  reading.names = temp.write("other.names", "clip\n");
  EXPECT_THAT(tnv::readVocLabels(temp.path(), reading)->classNames, ElementsAre("clip", "screw"));
  reading.names = temp / "absent.names";
  LogCapture log;
  EXPECT_FALSE(tnv::readVocLabels(temp.path(), reading));
  EXPECT_THAT(log.text(), HasSubstr("readVocLabels: No class names in '"));
}

TEST_F(LabelsVoc, NamesAreReadFromEveryFileThatHasThem) {
  temp.write("a.xml", fileWith(object("screw", corners("21", "11", "70", "50"))));
  temp.write("list.names", "nut\n");
  tnv::LabelReading reading;
  for (const auto& [file, text] :
       {std::pair{"data.yaml", "names: [nut]\n"}, std::pair{"DATA.YML", "names:\n  0: nut\n"},
        std::pair{"obj.Data", "names = list.names\n"}}) {
    reading.names = temp.write(file, text);
    EXPECT_THAT(tnv::readVocLabels(temp.path(), reading)->classNames, ElementsAre("nut", "screw"))
        << file;
  }
}

TEST_F(LabelsVoc, ClassesOfASingleFileLieBesideItOrItsTree) {
  const auto text = fileWith(object("screw", corners("21", "11", "70", "50")));
  for (const auto& [file, names] :
       {std::pair{"one/c.xml", "one/classes.txt"},
        std::pair{"two/Annotations/c.xml", "two/classes.txt"},
        std::pair{"three/Annotations/day1/c.xml", "three/classes.txt"}}) {
    temp.write(names, "nut\nscrew\n");
    const std::string path = temp.write(file, text);
    EXPECT_THAT(tnv::readVocLabels(path, {})->classNames, ElementsAre("nut", "screw")) << file;
  }
}

TEST_F(LabelsVoc, FilesInADirectoryHideNoneBelow) {
  const auto text = [](const char* picture) {
    return fileWith(object("screw", corners("21", "11", "70", "50")), picture);
  };
  for (const char* picture : {"b.jpg", "c.jpg"})
    temp.write(picture, "");
  temp.write("task.xml", "<annotations/>");
  temp.write("a.xml", text("a.jpg"));
  temp.write("Annotations/b.xml", text("b.jpg"));
  temp.write("JPEGImages/b.jpg", "");
  temp.write("day1/c.xml", text("c.jpg"));
  temp.write("day1/c.jpg", "");
  LogCapture log;
  const auto set = tnv::readVocLabels(temp.path(), {});
  EXPECT_THAT(picturesIn(*set), ElementsAre("b.jpg: 1", "a.jpg: 1", "c.jpg: 1"));
  EXPECT_THAT(log.text(), HasSubstr("task.xml' has no labels, passed over"));
}

TEST_F(LabelsVoc, IsToldByTheOutermostElement) {
  for (const char* text : {"<annotation>", "<annotation/>",
                           "<?xml version=\"1.0\"?>\n<!-- <a> -->\n<annotation a='1'>",
                           "\xEF\xBB\xBF<!DOCTYPE annotation><annotation\n>"})
    EXPECT_TRUE(tnv::isVocLabels(temp.write("x.xml", text))) << text;
  for (const char* text : {"", "<annotations>", "<x><annotation/></x>", "<!-- <annotation> -->",
                           "<?annotation", "annotation", "<"})
    EXPECT_FALSE(tnv::isVocLabels(temp.write("x.xml", text))) << text;
}

TEST_F(LabelsVoc, SeveralDocumentsAreAnErrorInTheLineOfTheSecond) {
  const auto one = fileWith(object("screw", corners("21", "11", "70", "50")));
  const auto set = read(one + one);
  EXPECT_THAT(rejectionsIn(set), ElementsAre("a.xml:5: several documents in one file"));
  EXPECT_EQ(set.found(), 1U);
}

namespace {

/// ASCII and the characters up to U+00FF, in two or four bytes each.
std::string widened(const std::string& latin, std::size_t bytes, bool isBigEndian) {
  std::string text;
  for (const char c : latin) {
    std::string unit(bytes, '\0');
    unit[isBigEndian ? bytes - 1 : 0] = c;
    text += unit;
  }
  return text;
}

}  // namespace

TEST_F(LabelsVoc, LinesCountInEachEncoding) {
  // More characters than the rejected line has, each two bytes in UTF-8, stand before it.
  constexpr int count = 100;
  std::string inUtf8;
  for (int i = 0; i < count; ++i)
    inUtf8 += "\xC3\xBC";
  const std::string rest = "\n" +
                           object(std::string(count, '\xFC'), corners("21", "11", "70", "50")) +
                           object("nut", "") + "</annotation>";
  const std::string head =
      "<annotation><filename>a.jpg</filename><size><width>200</width><height>100</height></size>";
  const std::string texts[] = {
      "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>" + head + rest,
      widened("\xFF", 1, false) + "\xFE" + widened(head + rest, 2, false),
      "\xFE\xFF" + widened(head + rest, 2, true),
      std::string("\xFF\xFE\0\0", 4) + widened(head + rest, 4, false),
      std::string("\0\0\xFE\xFF", 4) + widened(head + rest, 4, true),
  };
  for (const std::string& text : texts) {
    const auto set = read(text);
    EXPECT_THAT(rejectionsIn(set), ElementsAre("a.xml:3: no box"));
    EXPECT_THAT(set.classNames, ElementsAre(inUtf8));
  }
  EXPECT_THAT(
      rejectionsIn(read("\xEF\xBB\xBF" + head + "\n" + object("nut", "") + "</annotation>")),
      ElementsAre("a.xml:2: no box"));
}

TEST_F(LabelsVoc, PicturesElsewhereMayBeDividedLikeTheFiles) {
  const auto text = fileWith(object("nut", corners("21", "11", "70", "50")), "c.jpg");
  for (const char* file : {"set/Annotations/day1/c.xml", "set/day1/c.xml"}) {
    const TempDirectory other;
    other.write(file, text);
    other.write("photos/day1/c.jpg", "");
    other.write("photos/d.jpg", "");
    tnv::LabelReading reading;
    reading.pictures = other / "photos";
    const auto set = tnv::readVocLabels(other / "set", reading);
    EXPECT_THAT(picturesIn(*set), ElementsAre("c.jpg: 1")) << file;
  }
}

namespace {

/// A file of a box in line 3, on a picture that it tells the whole path of.
std::string fileFrom(const std::string& path) {
  const std::string name = path.substr(path.find_last_of("/\\") + 1);
  std::string text = fileWith(object("nut", corners("1", "1", "9", "9")), name);
  return text.insert(text.find("</filename>") + 11, "<path>" + path + "</path>");
}

constexpr auto kOpen = ": several pictures have the name of the one found";

}  // namespace

TEST_F(LabelsVoc, PicturesOfOneNameAreToldApartByTheirDirectories) {
  tnv::LabelReading reading;
  reading.pictures = temp / "p";
  for (const char* picture : {"p/a.jpg", "p/train/a.jpg", "p/valid/a.jpg"})
    temp.write(picture, "");
  for (const std::string root : {"/gone/", "C:\\gone\\"}) {
    const std::string slash = root.substr(root.size() - 1);
    temp.write("flat/a.xml", fileFrom(root + "train" + slash + "a.jpg"));
    temp.write("flat/a_2.xml", fileFrom(root + "valid" + slash + "a.jpg"));
    const auto set = tnv::readVocLabels(temp / "flat", reading);
    EXPECT_THAT(rejectionsIn(*set), IsEmpty());
    EXPECT_THAT(pictures(*set, temp / "p"), ElementsAre("train/a.jpg: 1", "valid/a.jpg: 1"));
  }
}

TEST_F(LabelsVoc, APictureThatSeveralAreFoundAtByNameAloneIsRejected) {
  const std::string text = fileWith(object("nut", corners("1", "1", "9", "9")));
  tnv::LabelReading reading;
  reading.pictures = temp / "p";
  temp.write("p/a.jpg", "");
  temp.write("flat/a.xml", fileFrom("/gone/train/a.jpg"));
  temp.write("flat/a_2.xml", fileFrom("/gone/valid/a.jpg"));
  auto set = tnv::readVocLabels(temp / "flat", reading);
  EXPECT_THAT(rejectionsIn(*set),
              ElementsAre(std::string("a.xml:3") + kOpen, std::string("a_2.xml:3") + kOpen));
  EXPECT_THAT(set->pictures, IsEmpty());
  for (const char* split : {"train", "valid"})
    temp.write("set/Annotations/" + std::string(split) + "/" + split + ".xml", text);
  temp.write("set/JPEGImages/a.jpg", "");
  for (const auto& manner : {reading, tnv::LabelReading()}) {
    set = tnv::readVocLabels(temp / "set", manner);
    EXPECT_THAT(rejectionsIn(*set), ElementsAre(std::string("train.xml:3") + kOpen,
                                                std::string("valid.xml:3") + kOpen));
    EXPECT_EQ(set->found(), 2U);
  }
  // One that lies where it is told is none of them.
  const std::string elsewhere = temp.write("elsewhere/b.jpg", "");
  for (const char* split : {"train", "valid"})
    temp.write("again/Annotations/" + std::string(split) + "/b.xml", fileFrom(elsewhere));
  for (const auto& manner : {reading, tnv::LabelReading()})
    EXPECT_THAT(picturesIn(*tnv::readVocLabels(temp / "again", manner)),
                ElementsAre("b.jpg: 1", "b.jpg: 1"));
  temp.write("set/JPEGImages/valid/a.jpg", "");
  temp.write("set/Annotations/again.xml", text);
  set = tnv::readVocLabels(temp / "set", {});
  EXPECT_THAT(rejectionsIn(*set), ElementsAre(std::string("train.xml:3") + kOpen));
  EXPECT_THAT(pictures(*set, temp / "set/JPEGImages"), ElementsAre("a.jpg: 1", "valid/a.jpg: 1"));
}

TEST_F(LabelsVoc, FurtherBoxesOfAnObjectAreRejectedEach) {
  const std::string box = "<bndbox>" + corners("1", "1", "9", "9") + "</bndbox>\n";
  const auto set = read(fileWith("<object><name>nut</name>" + box + box + "<part>" + box +
                                 "</part>" + box + "</object>\n"));
  EXPECT_THAT(picturesIn(set), ElementsAre("a.jpg: 1"));
  EXPECT_THAT(rejectionsIn(set), ElementsAre("a.xml:4: the object has a box already",
                                             "a.xml:6: the object has a box already"));
}

TEST_F(LabelsVoc, ASizeThatIsMissingIsThatOfThePicture) {
  cv::imwrite(temp / "c.png", cv::Mat(100, 200, CV_8UC1, cv::Scalar(0)));
  const auto set = read("<annotation><filename>c.png</filename>" +
                        object("nut", corners("1", "1", "100", "25")) + "</annotation>");
  ASSERT_EQ(set.accepted, 1U);
  EXPECT_EQ(set.pictures[0].labels[0].box, cv::Rect2d(0, 0, 0.5, 0.25));
}

TEST_F(LabelsVoc, WhatCannotBeTakenIsRejectedWithItsLine) {
  const auto set = read(fileWith(object("", corners("21", "11", "70", "50")) +
                                 object("nut", corners("21", "x", "70", "50")) +
                                 object("nut", "<xmin>1</xmin>") + "<object/>\n" +
                                 object("nut", corners("71", "11", "70", "50")) +
                                 object("nut", corners("21", "11", "270", "50")) +
                                 object("nut", corners("nan", "11", "70", "50"))));
  EXPECT_THAT(rejectionsIn(set),
              ElementsAre("a.xml:3: class without a name", "a.xml:4: no box", "a.xml:5: no box",
                          "a.xml:6: class without a name", "a.xml:7: no width or no height",
                          "a.xml:8: reaches beyond the picture", "a.xml:9: not a finite number"));
  EXPECT_EQ(set.found(), 7U);
}

TEST_F(LabelsVoc, WithoutSizeOrPictureTheLabelsAreRejected) {
  const auto box = object("nut", corners("21", "11", "70", "50"));
  EXPECT_THAT(
      rejectionsIn(read("<annotation><filename>a.jpg</filename>\n" + box + "</annotation>")),
      ElementsAre("a.xml:2: size of the picture is unknown"));
  EXPECT_THAT(rejectionsIn(read(fileWith(box, "absent.jpg"))), ElementsAre("a.xml:3: no picture"));
  EXPECT_THAT(rejectionsIn(read(fileWith(box, "../a.jpg"))), ElementsAre("a.xml:3: no picture"));
  EXPECT_THAT(rejectionsIn(read(fileWith("", "absent.jpg"))), ElementsAre("a.xml:0: no picture"));
  EXPECT_THAT(picturesIn(read(fileWith(""))), ElementsAre("a.jpg: 0"));
}

TEST_F(LabelsVoc, PicturesAreFoundWhereSetsHaveThem) {
  struct Row {
    std::string file;
    std::string picture;
    std::string name;
  };
  for (const auto& [file, picture, name] :
       {Row{"Annotations/c.xml", "JPEGImages/c.jpg", "c.jpg"}, Row{"c.xml", "c.jpg", "c.jpg"},
        Row{"Annotations/c.xml", "images/c.jpg", "c"}, Row{"c.xml", "JPEGImages/c.jpg", ""},
        Row{"c.xml", "elsewhere/c.jpg", "c.jpg"}, Row{"c.XML", "c.jpg", "c.jpg"},
        Row{"Annotations/train/c.Xml", "JPEGImages/c.jpg", "c.jpg"},
        Row{"Annotations/train/day1/c.xml", "JPEGImages/train/day1/c.jpg", "c"},
        Row{"Annotations/train/c.xml", "images/train/c.jpg", "c.jpg"},
        Row{"train/c.xml", "train/c.jpg", "c.jpg"},
        Row{"kit/Annotations/c.xml", "kit/JPEGImages/c.jpg", "c.jpg"}}) {
    const TempDirectory other;
    other.write(picture, "");
    other.write(file, fileWith(object("nut", corners("21", "11", "70", "50")), name));
    tnv::LabelReading reading;
    if (picture.starts_with("elsewhere")) reading.pictures = other / "elsewhere";
    EXPECT_TRUE(tnv::isVocLabels(other.path()));
    const auto set = tnv::readVocLabels(other.path(), reading);
    ASSERT_TRUE(set) << picture;
    ASSERT_EQ(set->pictures.size(), 1U) << picture;
    EXPECT_EQ(set->pictures[0].path, other / picture);
  }
}

TEST_F(LabelsVoc, ADirectoryThatCannotBeReadIsRejectedAndALinkedOneRead) {
  namespace fs = std::filesystem;
  const TempDirectory set;
  const auto box = fileWith(object("nut", corners("21", "11", "70", "50")));
  set.write("Annotations/locked/b.xml", box);
  temp.write("linked/a.xml", box);
  fs::create_directory_symlink(temp / "linked", set / "Annotations/linked");
  fs::create_directory_symlink(temp / "linked", set / "Annotations/twice");
  set.write("JPEGImages/a.jpg", "");
  for (const std::string& path : {set.path(), temp.path()})
    fs::permissions(path, fs::perms::all);
  fs::permissions(set / "Annotations/locked", fs::perms::none);
  std::optional<tnv::LabelSet> found;
  {
    const WithoutRights withoutRights;
    found = tnv::readVocLabels(set.path(), {});
  }
  fs::permissions(set / "Annotations/locked", fs::perms::owner_all);
  ASSERT_TRUE(found);
  EXPECT_THAT(picturesIn(*found), ElementsAre("a.jpg: 1"));
  EXPECT_THAT(rejectionsIn(*found), ElementsAre("locked:0: directory cannot be read"));
}

TEST_F(LabelsVoc, OtherFilesArePassedOver) {
  temp.write("task.xml", "<tree/>");
  EXPECT_FALSE(tnv::isVocLabels(temp.path()));
  EXPECT_FALSE(tnv::isVocLabels(temp / "absent"));
  const auto set = tnv::readVocLabels(temp.path(), {});
  ASSERT_TRUE(set);
  EXPECT_EQ(set->found(), 0U);
  EXPECT_FALSE(tnv::readVocLabels(temp / "absent", {}));
}

TEST_F(LabelsVoc, ADamagedFileIsNeverMoreThanRejections) {
  const std::string whole = fileWith(object("nut", corners("21", "11", "70", "50")));
  for (std::size_t length = 0; length + 2 < whole.size(); ++length) {
    const auto set = read(whole.substr(0, length));
    EXPECT_THAT(rejectionsIn(set), ElementsAre("a.xml:0: file cannot be read")) << length;
  }
  std::mt19937 random(5);
  for (int round = 0; round < 300; ++round) {
    std::string damaged = whole;
    for (int i = 0; i < 3; ++i)
      damaged[random() % damaged.size()] = static_cast<char>(random() % 256);
    read(damaged);
  }
  std::string deep;
  for (int i = 0; i < 100000; ++i)
    deep += "<annotation>";
  read(deep);
}

TEST_F(LabelsVoc, WhatIsWrittenComesBack) {
  temp.write("b.jpg", "");
  for (const bool copy : {false, true}) {
    for (const int base : {0, 1}) {
      const TempDirectory target;
      tnv::LabelWriting writing;
      writing.copy = copy;
      writing.base = base;
      const auto before = sampleSet(temp / "a.jpg", temp / "b.jpg");
      ASSERT_TRUE(tnv::writeVocLabels(before, target.path(), writing));
      tnv::LabelReading reading;
      reading.base = base;
      const auto set = tnv::readVocLabels(target.path(), reading);
      ASSERT_TRUE(set);
      EXPECT_EQ(set->classNames, before.classNames);
      EXPECT_THAT(rejectionsIn(*set), IsEmpty());
      ASSERT_THAT(picturesIn(*set), ElementsAre("a.jpg: 2", "b.jpg: 1"));
      EXPECT_EQ(set->pictures[0].path, copy ? target / "JPEGImages/a.jpg" : temp / "a.jpg");
      for (std::size_t i = 0; i < 2; ++i) {
        for (std::size_t j = 0; j < set->pictures[i].labels.size(); ++j) {
          const auto& from = before.pictures[i].labels[j];
          const auto& to = set->pictures[i].labels[j];
          EXPECT_EQ(from.classPlace, to.classPlace);
          EXPECT_LT(moved(from.box, to.box, {640, 480}), 1e-5);
        }
      }
    }
  }
}

TEST_F(LabelsVoc, WhatIsWrittenIsWhatOthersRead) {
  const TempDirectory target;
  ASSERT_TRUE(tnv::writeVocLabels(sampleSet(temp / "a.jpg", temp / "b.jpg"), target.path(), {}));
  EXPECT_EQ(readFile(target / "Annotations/b.xml"),
            "<annotation>\n  <filename>b.jpg</filename>\n  <path>" + (temp / "b.jpg") +
                "</path>\n  <size>\n    <width>640</width>\n    <height>480</height>\n"
                "    <depth>3</depth>\n  </size>\n  <object>\n"
                "    <name>a &amp; \"b\" &lt;ü&gt;</name>\n    <difficult>0</difficult>\n"
                "    <bndbox>\n      <xmin>65</xmin>\n      <ymin>49</ymin>\n"
                "      <xmax>448</xmax>\n      <ymax>432</ymax>\n    </bndbox>\n  </object>\n"
                "</annotation>\n");
}

#include <cstdlib>
#include <filesystem>

#include <sys/stat.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "ContactSheet.h"
#include "ProgramRunner.h"
#include "support/Pictures.h"
#include "support/PortalServer.h"

namespace {

TEST(ContactSheet, PicturesAreFittedIntoTheMiddleOfTheirCell) {
  const cv::Mat white(10, 40, CV_8UC3, cv::Scalar::all(255));
  const auto cell = fitted(white, {20, 20});
  ASSERT_EQ(cell.size(), cv::Size(20, 20));
  cv::Mat expected(20, 20, CV_8UC3, cv::Scalar::all(240));
  expected(cv::Rect(0, 7, 20, 5)).setTo(cv::Scalar::all(255));
  EXPECT_TRUE(samePixels(expected, cell));
}

TEST(ContactSheet, CellsStandRowByRow) {
  std::vector<cv::Mat> cells;
  for (int i = 1; i <= 5; ++i)
    cells.emplace_back(2, 3, CV_8UC3, cv::Scalar::all(i));
  const auto sheet = contactSheet(cells, 3);
  ASSERT_EQ(sheet.size(), cv::Size(9, 4));
  EXPECT_EQ(sheet.at<cv::Vec3b>(0, 8)[0], 3);
  EXPECT_EQ(sheet.at<cv::Vec3b>(2, 0)[0], 4);
  EXPECT_EQ(sheet.at<cv::Vec3b>(3, 5)[0], 5);
  EXPECT_EQ(sheet.at<cv::Vec3b>(3, 6)[0], 240);
  EXPECT_EQ(contactSheet({cells[0]}, 3).size(), cv::Size(3, 2));
  EXPECT_TRUE(contactSheet({}, 3).empty());
}

class ProgramView : public ProgramTest {
 protected:
  void SetUp() override {
    place.makeDirectory("images");
    for (const char* name : {"img_2", "img_10", "img_1"}) {
      writePicture(place / ("images/" + std::string(name) + ".png"), 80, 60);
      place.write("images/" + std::string(name) + ".txt", "0 0.5 0.5 0.25 0.25\n");
    }
  }
};

TEST_F(ProgramView, ASampleIsWrittenWithItsBoxes) {
  succeed({"view", "images", "img_2", "-o", "seen.png"});
  auto expected = patternedPicture(80, 60);
  cv::rectangle(expected, cv::Rect(30, 22, 20, 15), cv::Scalar(0, 0, 255), 1, cv::LINE_AA);
  EXPECT_TRUE(samePixels(expected, cv::imread(place / "seen.png")));
}

TEST_F(ProgramView, WithoutANameTheFirstSamplesStandOnASheet) {
  EXPECT_EQ(succeed({"view", "images", "-o", "sheet.png"}), "wrote sheet.png (3 of 3 samples)\n");
  EXPECT_EQ(cv::imread(place / "sheet.png").size(), cv::Size(3 * 248, 208));
  EXPECT_EQ(succeed({"view", "images", "-o", "sheet.png", "--count", "2"}),
            "wrote sheet.png (2 of 3 samples)\n");
}

TEST_F(ProgramView, TheSheetHasBoldBoxesWithTheirClassesAndNamesOnLightGround) {
  std::filesystem::remove(place / "images/img_1.txt");
  std::filesystem::remove(place / "images/img_10.txt");
  place.write("images/img_2.txt", "12 0.5 0.5 0.25 0.25\n");
  succeed({"view", "images", "-o", "sheet.png"});
  auto sample = patternedPicture(80, 60);
  cv::rectangle(sample, cv::Rect(30, 22, 20, 15), cv::Scalar(0, 0, 255), 1, cv::LINE_AA);
  cv::resize(sample, sample, {240, 180}, 0, 0, cv::INTER_AREA);
  // From 90, 67.5 on, 60 by 45 pixels.
  const cv::Rect box(90, 68, 60, 45);
  cv::rectangle(sample, box, cv::Scalar(0, 0, 255), 2);
  const auto text = cv::getTextSize("12", cv::FONT_HERSHEY_SIMPLEX, 0.4, 1, nullptr);
  const cv::Point above = box.tl() - cv::Point(0, text.height + 4);
  cv::rectangle(sample, cv::Rect(above, text + cv::Size(4, 4)), cv::Scalar(0, 0, 255), cv::FILLED);
  cv::putText(sample, "12", above + cv::Point(2, text.height + 2), cv::FONT_HERSHEY_SIMPLEX, 0.4,
              cv::Scalar::all(255), 1, cv::LINE_AA);
  cv::Mat expected(208, 248, CV_8UC3, cv::Scalar::all(240));
  sample.copyTo(expected(cv::Rect(4, 4, 240, 180)));
  cv::Mat inner = expected(cv::Rect(4, 4, 240, 200));
  cv::putText(inner, "img_2", {0, 195}, cv::FONT_HERSHEY_SIMPLEX, 0.4, cv::Scalar::all(40), 1,
              cv::LINE_AA);
  EXPECT_TRUE(samePixels(expected, cv::imread(place / "sheet.png")));
}

TEST_F(ProgramView, ASetAndANameWithItsEndingWillDo) {
  std::filesystem::create_directories(place / "set");
  std::filesystem::rename(place / "images", place / "set/samples");
  EXPECT_EQ(succeed({"view", "set", "-o", "sheet.png"}), "wrote sheet.png (3 of 3 samples)\n");
  succeed({"view", "set", "img_2", "-o", "a.png"});
  EXPECT_NE(succeed({"view", "set/samples/", "img_2.png", "-o", "b.png"}).find("sample img_2"),
            std::string::npos);
  EXPECT_EQ(readFile(place / "a.png"), readFile(place / "b.png"));
  fail({"view", "set", "img_3.png", "-o", "b.png"}, "no sample 'img_3.png'");
  fail({"view", "set", "-o", "set/samples/img_1.png"}, "lies among the samples");
}

TEST_F(ProgramView, ASampleThatCannotBeReadLeavesItsCellBlank) {
  const auto whole =
      (succeed({"view", "images", "-o", "sheet.png"}), cv::imread(place / "sheet.png"));
  for (const auto& path : unreadablePictures(place)) {
    if (!std::filesystem::exists(path)) continue;
    std::filesystem::remove_all(place / "images/img_2.png");
    std::filesystem::rename(path, place / "images/img_2.png");
    const auto result = run({"view", "images", "-o", "sheet.png"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "wrote sheet.png (3 of 3 samples)\n");
    EXPECT_NE(result.err.find("sample 'img_2' cannot be read"), std::string::npos) << result.err;
    auto expected = whole.clone();
    // The name stays.
    expected(cv::Rect(248, 0, 248, 184)).setTo(cv::Scalar::all(240));
    EXPECT_TRUE(samePixels(expected, cv::imread(place / "sheet.png"))) << path;
    fail({"view", "images", "img_2", "-o", "x.png"}, "no sample 'img_2' that can be read");
  }
}

TEST_F(ProgramView, NeitherSamplesNorSpecialFilesAreWrittenOver) {
  std::filesystem::create_symlink("images/img_1.png", place / "link.png");
  ASSERT_EQ(mkfifo((place / "pipe.png").c_str(), 0600), 0);
  const auto before = contents("images");
  fail({"view", "images", "-o", "link.png"}, "lies among the samples");
  fail({"view", "images", "-o", "pipe.png"}, "cannot be written");
  EXPECT_EQ(contents("images"), before);
}

TEST_F(ProgramView, NothingOfAProjectIsWrittenOver) {
  makeProject();
  succeed({"generate", "parts", "--output", "set"});
  const auto before = contents("photos");
  fail({"view", "set/samples", "-o", "photos/a.png"}, "is a picture of the project");
  fail({"view", "set/samples", "-o", "projects/parts/x.png"}, "lies among the projects");
  EXPECT_EQ(contents("photos"), before);
}

TEST_F(ProgramView, RefusesWhatWillNotDo) {
  fail({"view", "absent", "-o", "x.png"}, "is no directory");
  fail({"view", ".", "-o", "x.png"}, "holds no pictures with a label text");
  fail({"view", "images", "img_9", "-o", "x.png"}, "no sample 'img_9'");
  fail({"view", "images", "-o", "images/img_1.png"}, "lies among the samples");
  fail({"view", "images", "-o", "x.nothing"}, "use .png or .jpg", 2);
  fail({"view", "images", "-o", "x.png", "--count", "0"}, "--count", 2);
}

class ProgramWeights : public ProgramTest {
 protected:
  ProgramWeights() { place.makeDirectory("weights"); }

  /// A file of a portal; the texts stand in the reply as they are.
  static std::string offered(const std::string& name, const std::string& size,
                             const std::string& link, const std::string& hash = md5OfHello) {
    return "{\"name\":\"" + name + "\",\"hash\":\"" + hash + "\",\"file_size\":\"" + size +
           "\",\"creation_date\":\"today\",\"download_link\":\"" + link + "\"}";
  }
  static std::string replyOf(const std::string& file) { return "{\"0\":" + file + "}"; }

  /// What the program says of a portal on disk with that reply.
  ProgramResult ofMirror(const std::string& reply, std::vector<std::string> arguments) const {
    place.write("mirror/list", reply);
    arguments.insert(arguments.begin(), "weights");
    arguments.insert(arguments.end(),
                     {"--address", "file://" + place / "mirror/list", "--directory", "weights"});
    return run(arguments);
  }

  static constexpr auto md5OfHello = "5d41402abc4b2a76b9719d911017c592";
};

TEST_F(ProgramWeights, AFileIsFetchedFromAPortal) {
  PortalServer server;
  // By the command md5sum of the bytes that the server has.
  place.write("served", servedContent());
  const auto command =
      "md5sum < " + place / "served" + " | cut -c 1-32 | tr -d '\n' > " + place / "md5";
  ASSERT_EQ(std::system(command.c_str()), 0);
  server.setReply(replyOf(offered("w.bin", std::to_string(servedContent().size()),
                                  server.address("/file"), readFile(place / "md5"))));
  const std::vector<std::string> where{"--address", server.listAddress(), "--directory", "weights"};
  const auto with = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), where.begin(), where.end());
    return arguments;
  };
  EXPECT_EQ(succeed(with({"weights", "list"})),
            "file   bytes  date   state\nw.bin  70000  today  not fetched\n");
  EXPECT_EQ(succeed(with({"weights", "get", "w.bin"})),
            "fetched weights/w.bin (70000 bytes, whole)\n");
  EXPECT_EQ(readFile(place / "weights/w.bin"), servedContent());
  EXPECT_EQ(succeed(with({"weights", "list"})),
            "file   bytes  date   state\nw.bin  70000  today  here and whole\n");
  EXPECT_EQ(server.requestCount(), 4U);
  server.stop();
  fail(with({"weights", "get", "w.bin"}), "cannot be reached");
}

TEST_F(ProgramWeights, AFailureOfTheNetworkIsWorthASecondTryAndOthersAreNot) {
  PortalServer server;
  server.stop();
  struct Row {
    std::string link;
    std::string message;
    bool again;
  };
  for (const Row& row : {Row{server.address("/file"), "could not be fetched", true},
                         {"HTTPS://localhost:1/w", "could not be fetched", true},
                         {"localhost:1/w", "could not be fetched", true},
                         {"file://" + place / "absent", "could not be fetched", false},
                         {"", "gives no link", false},
                         {"ftp://localhost/w", "none of http, https and file", false},
                         {"javascript:alert(1)//://x", "none of http, https and file", false}}) {
    const auto result = ofMirror(replyOf(offered("w.bin", "5", row.link)), {"get", "w.bin"});
    EXPECT_EQ(result.exitCode, 1) << row.link;
    EXPECT_NE(result.err.find(row.message), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find("again later") != std::string::npos, row.again) << result.err;
  }
}

TEST_F(ProgramWeights, WhatIsThereAlreadyIsNotFetchedAgain) {
  place.write("weights/w.bin", "hello");
  const auto reply = replyOf(offered("w.bin", "5", "file://" + place / "absent"));
  const auto result = ofMirror(reply, {"get", "w.bin"});
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(result.out, "weights/w.bin is there already and whole\n");
}

TEST_F(ProgramWeights, WhatIsNoFileInItsPlaceIsTold) {
  place.makeDirectory("weights/w.bin");
  const auto file = place.write("mirror/w.bin", "hello");
  const auto result = ofMirror(replyOf(offered("w.bin", "5", "file://" + file)), {"get", "w.bin"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.err.find("'weights/w.bin' is no file"), std::string::npos) << result.err;
}

TEST_F(ProgramWeights, AReplyThatIsNoListIsToldInWords) {
  struct Row {
    std::string reply;
    std::string message;
  };
  for (const Row& row :
       {Row{"[{}]", "no list of files: it is built in another way"},
        {"{\"0\":[]}", "no list of files: it is built in another way"},
        {replyOf(offered("w", "much", "")), "the size of a file is no number"},
        {replyOf(offered("w", "", "")), "the size of a file is no number"},
        {replyOf(offered("w", "9999999999", "")), "the size of a file is too large"}})
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"list"}, {"get", "w"}}) {
      const auto result = ofMirror(row.reply, command);
      EXPECT_EQ(result.exitCode, 1) << row.reply;
      EXPECT_NE(result.err.find(row.message), std::string::npos) << result.err;
      for (const auto* jargon : {"Json", "stoi", "std::"})
        EXPECT_EQ(result.err.find(jargon), std::string::npos) << result.err;
    }
}

TEST_F(ProgramWeights, ASizeBelowZeroShowsNoProgress) {
  const auto file = place.write("mirror/w.bin", "hello");
  const auto result = ofMirror(replyOf(offered("w.bin", "-5", "file://" + file)), {"get", "w.bin"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.err.find(" %"), std::string::npos) << result.err;
  EXPECT_NE(result.err.find("damaged: wrong size"), std::string::npos) << result.err;
}

TEST_F(ProgramWeights, WhatAPortalSaysCannotCommandATerminal) {
  const auto reply = replyOf(R"({"name":"w","hash":"","file_size":"1","creation_date":"\u001b[2J",)"
                             R"("download_link":"gopher://\u001b[2J"})");
  for (const std::vector<std::string>& command : {std::vector<std::string>{"list"}, {"get", "w"}}) {
    const auto result = ofMirror(reply, command);
    EXPECT_EQ((result.out + result.err).find('\x1b'), std::string::npos);
    EXPECT_NE((result.out + result.err).find("?[2J"), std::string::npos)
        << result.out << result.err;
  }
}

TEST_F(ProgramWeights, OneFileIsLookedUpWithoutLookingIntoTheOthers) {
  for (const auto* name : {"a", "b", "c"})
    place.write("weights/" + std::string(name), "hello");
  // The library counts the files that it looked into.
  const auto got = ofMirror(replyOf(offered("b", "5", "")), {"get", "b"});
  EXPECT_EQ(got.exitCode, 0) << got.err;
  EXPECT_NE(got.err.find("locals: 1\n"), std::string::npos) << got.err;
  const auto removed = run({"weights", "remove", "b", "--directory", "weights"});
  EXPECT_EQ(removed.exitCode, 0) << removed.err;
  EXPECT_NE(removed.err.find("locals: 1\n"), std::string::npos) << removed.err;
  EXPECT_EQ(contents("weights").size(), 2U);
  EXPECT_FALSE(std::filesystem::exists(place / "weights/b"));
}

TEST_F(ProgramWeights, ALinkIsRemovedAndNotWhatItLeadsTo) {
  place.write("elsewhere", "kept");
  std::filesystem::create_symlink(place / "elsewhere", place / "weights/link");
  std::filesystem::create_symlink("nowhere", place / "weights/dangling");
  place.makeDirectory("weights/below");
  for (const auto* name : {"link", "dangling"}) {
    succeed({"weights", "remove", name, "--directory", "weights"});
    EXPECT_FALSE(std::filesystem::is_symlink(place / "weights/" + name)) << name;
  }
  EXPECT_EQ(readFile(place / "elsewhere"), "kept");
  fail({"weights", "remove", "below", "--directory", "weights"}, "could not be removed");
  for (const auto* name : {"..", ".", ""})
    fail({"weights", "remove", name, "--directory", "weights"}, "there is no");
}

TEST_F(ProgramWeights, AnEmptyAddressIsWrongUsage) {
  fail({"weights", "list", "--address", "", "--directory", "weights"}, "--address", 2);
  fail({"weights", "get", "w", "--address", "", "--directory", "weights"}, "--address", 2);
}

TEST_F(ProgramWeights, WithoutAPortalTheDirectoryIsListed) {
  place.write("weights/own.bin", "hello");
  const auto result =
      run({"weights", "list", "--address", "http://localhost:1/list", "--directory", "weights"});
  EXPECT_EQ(result.exitCode, 1) << result.err;
  EXPECT_NE(result.out.find("own.bin"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("only here"), std::string::npos) << result.out;
  EXPECT_NE(result.err.find("cannot be reached or offers nothing"), std::string::npos);
}

TEST_F(ProgramWeights, AFileIsFetchedFromAMirrorOnDisk) {
  const auto file = place.write("mirror/small.bin", "hello");
  place.write("mirror/list",
              "{\"0\":{\"name\":\"small.bin\",\"hash\":\"5d41402abc4b2a76b9719d91"
              "1017c592\",\"file_size\":\"5\",\"creation_date\":\"today\","
              "\"download_link\":\"file://" +
                  file + "\"}}");
  const std::string address = "file://" + place / "mirror/list";
  const std::vector<std::string> where{"--address", address, "--directory", "weights"};
  const auto with = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), where.begin(), where.end());
    return arguments;
  };
  EXPECT_NE(succeed(with({"weights", "list"})).find("not fetched"), std::string::npos);
  succeed(with({"weights", "get", "small.bin"}));
  EXPECT_EQ(readFile(place / "weights/small.bin"), "hello");
  EXPECT_NE(succeed(with({"weights", "list"})).find("here and whole"), std::string::npos);
  place.write("weights/small.bin", "hallo");
  EXPECT_NE(succeed(with({"weights", "list"})).find("wrong content"), std::string::npos);
  fail(with({"weights", "get", "large.bin"}), "choose from: small.bin");
  // What the portal says and what it gives differ.
  place.write("mirror/small.bin", "hello!");
  fail(with({"weights", "get", "small.bin"}), "damaged: wrong size");
  std::filesystem::remove(place / "mirror/small.bin");
  fail(with({"weights", "get", "small.bin"}), "could not be fetched");
  place.write("mirror/list", "[{}]");
  fail(with({"weights", "list"}), "is no list of files");
}

TEST_F(ProgramWeights, ADirectoryAmongThemIsOne) {
  place.makeDirectory("weights/older");
  place.makeDirectory("weights/small.bin");
  const auto out = ofMirror(replyOf(offered("small.bin", "5", "file:///x")), {"list"}).out;
  EXPECT_EQ(occurrences(out, "a directory\n"), 2U) << out;
  EXPECT_EQ(out.find("damaged"), std::string::npos) << out;
}

TEST_F(ProgramWeights, FilesAreImportedAndRemoved) {
  place.write("from/w.bin", "hello");
  succeed({"weights", "import", "from/w.bin", "--directory", "weights"});
  EXPECT_EQ(readFile(place / "weights/w.bin"), "hello");
  fail({"weights", "import", "from/w.bin", "--directory", "weights"}, "is there already");
  fail({"weights", "import", "absent", "--directory", "weights"}, "is no file");
  fail({"weights", "import", "from/w.bin", "--directory", "absent"}, "is no directory");
  fail({"weights", "remove", "x.bin", "--directory", "weights"}, "there is no 'x.bin'");
  fail({"weights", "remove", "../from/w.bin", "--directory", "weights"}, "there is no");
  succeed({"weights", "remove", "w.bin", "--directory", "weights"});
  EXPECT_FALSE(std::filesystem::exists(place / "weights/w.bin"));
}

using ProgramUser = ProgramTest;

TEST_F(ProgramUser, UsersAreMadeListedChangedAndRemoved) {
  succeed({"user", "create", "bea"});
  succeed({"user", "create", "ann"});
  succeed({"user", "set", "ann", "parts"});
  EXPECT_EQ(succeed({"user", "list"}), "user  last project\nann   parts\nbea\n");
  fail({"user", "create", "ann"}, "cannot be made");
  fail({"user", "create", "../ann"}, "cannot be made");
  fail({"user", "set", "cay", "parts"}, "there are: ann, bea");
  fail({"user", "remove", "cay"}, "there are: ann, bea");
  succeed({"user", "remove", "ann"});
  EXPECT_EQ(succeed({"user", "list"}).find("ann"), std::string::npos);
  succeed({"user", "remove", "bea"});
  fail({"user", "remove", "bea"}, ", nor any other; make one with: samplebench user create");
}

TEST_F(ProgramUser, WhatTheFileCannotHoldIsRefused) {
  succeed({"user", "create", "ann"});
  for (const auto* text : {"a=b", "a\"b", "a\\b", "a\nb"}) {
    fail({"user", "set", "ann", text}, "must not hold =");
    fail({"user", "create", text}, "must not hold =");
  }
  fail({"user", "create", "a.b"}, "must not hold a dot");
  EXPECT_EQ(succeed({"user", "list"}), "user  last project\nann\n");
  succeed({"user", "set", "ann", "parts 2 // x"});
  EXPECT_EQ(succeed({"user", "list"}), "user  last project\nann   parts 2 // x\n");
}

TEST_F(ProgramUser, ADirectoryThatIsNoneIsToldInWords) {
  place.write("file", "mine");
  for (const auto* users : {"file", "absent"}) {
    const auto message = "there is no directory '" + std::string(users) + "/'";
    fail({"user", "list", "--users", users}, message);
    fail({"user", "set", "ann", "parts", "--users", users}, message);
    fail({"user", "remove", "ann", "--users", users}, message);
  }
  fail({"user", "create", "ann", "--users", "file"}, "'file/' cannot be made a directory");
  fail({"user", "create", "ann", "--users", "file/below"}, "cannot be made a directory");
  EXPECT_EQ(readFile(place / "file"), "mine");
}

TEST_F(ProgramUser, AConfigurationTellsWhereEverythingLives) {
  place.write("app.cfg", "Basic.DocumentsPath.Use = NO\nBasic.Users.Path = \"people/\"\n");
  EXPECT_EQ(succeed({"config", "app.cfg"}),
            "projects       projects/\nplatforms      platforms/\naugmentations  augments/\n"
            "users          people/\n");
  fail({"config", "absent.cfg"}, "is no file");
}

}  // namespace

#include "downloads/PortalReply.h"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

using testing::IsEmpty;
using testing::SizeIs;

namespace {

std::string member(const std::string& number, const std::string& name, const std::string& size) {
  return "\"" + number + "\":{\"name\":\"" + name + "\",\"hash\":\"h" + number +
         "\",\"file_size\":" + size + ",\"creation_date\":\"d" + number +
         "\",\"download_link\":\"l" + number + "\"}";
}

std::string messageOf(const std::string& reply) {
  try {
    tnv::filesOfReply(reply);
  } catch (const std::exception& error) {
    return error.what();
  }
  return "no exception";
}

}  // namespace

TEST(PortalReply, FilesComeInReverseWithAllTheirFields) {
  const auto files =
      tnv::filesOfReply("{" + member("0", "a", "\"17\"") + "," +
                        member("1", "b", "\"2147483647\"") + "," + member("2", "c", "\"0\"") + "}");
  ASSERT_THAT(files, SizeIs(3));
  EXPECT_EQ(files[0].fileName, "c");
  EXPECT_EQ(files[1].fileName, "b");
  EXPECT_EQ(files[2].fileName, "a");
  EXPECT_EQ(files[2].md5Hash, "h0");
  EXPECT_EQ(files[2].fileSize, 17);
  EXPECT_EQ(files[2].timeStamp, "d0");
  EXPECT_EQ(files[2].downloadAddress, "l0");
  EXPECT_FALSE(files[2].stateDownloadable || files[2].stateDownloaded ||
               files[2].stateFileSizeValid || files[2].stateMD5Valid);
  EXPECT_EQ(files[1].fileSize, 2147483647);
}

TEST(PortalReply, WhatNamesNoFilesGivesNone) {
  for (const char* reply : {"", "{}", "null", "[]", "3", "\"text\"", "<html>", "{", "\xff\xfe"})
    EXPECT_THAT(tnv::filesOfReply(reply), IsEmpty()) << reply;
}

TEST(PortalReply, ANumberStandsForItsText) {
  EXPECT_EQ(tnv::filesOfReply("{" + member("0", "a", "17") + "}").at(0).fileSize, 17);
  EXPECT_EQ(tnv::filesOfReply("{" + member("0", "a", "\" 12 kB\"") + "}").at(0).fileSize, 12);
}

TEST(PortalReply, AnArrayIsAFailureOfTheValueType) {
  EXPECT_THROW(tnv::filesOfReply("[" + std::string("{\"name\":\"a\"}") + "]"), Json::LogicError);
  EXPECT_THROW(tnv::filesOfReply("{\"0\":\"text\"}"), Json::LogicError);
  EXPECT_THROW(tnv::filesOfReply("{\"0\":{\"name\":[1],\"file_size\":\"1\"}}"), Json::LogicError);
}

TEST(PortalReply, ASizeThatIsNoNumberOrDoesNotFitIsAnExceptionWithKnownWords) {
  EXPECT_EQ(messageOf("{\"0\":{\"name\":\"a\"}}"), "invalid stoi argument");
  EXPECT_EQ(messageOf("{" + member("0", "a", "\"large\"") + "}"), "invalid stoi argument");
  EXPECT_EQ(messageOf("{" + member("0", "a", "\"\"") + "}"), "invalid stoi argument");
  EXPECT_EQ(messageOf("{" + member("1", "a", "\"5\"") + "}"), "invalid stoi argument")
      << "there is no member 0";
  EXPECT_EQ(messageOf("{" + member("0", "a", "\"2147483648\"") + "}"),
            "stoi argument out of range");
  EXPECT_THROW(tnv::filesOfReply("{\"0\":{}}"), std::invalid_argument);
  EXPECT_THROW(tnv::filesOfReply("{" + member("0", "a", "\"9999999999\"") + "}"),
               std::out_of_range);
}

TEST(PortalReply, OfACutReplyStandsWhatWasParsed) {
  const std::string whole =
      "{" + member("0", "a", "\"17\"") + "," + member("1", "b", "\"5\"") + "}";
  // Cut right behind the first member.
  const std::string cut = whole.substr(0, whole.find(",\"1\"") + 1);
  const auto files = tnv::filesOfReply(cut);
  ASSERT_THAT(files, SizeIs(1));
  EXPECT_EQ(files[0].fileName, "a");
}

TEST(PortalReply, EndlessNestingNamesNoFiles) {
  EXPECT_THAT(tnv::filesOfReply(std::string(1000000, '[')), IsEmpty());
  std::string nested;
  for (int i = 0; i < 100000; ++i)
    nested += "{\"0\":";
  EXPECT_THAT(tnv::filesOfReply(nested), IsEmpty());
}

TEST(PortalReply, ALineOfTheLogStaysALine) {
  EXPECT_EQ(tnv::printable("a\nb\r\x1b[1m\x7f\xc3\xa9"), "a?b??[1m?\xc3\xa9");
}

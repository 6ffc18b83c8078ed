#include "foundation/Utf8.h"

#include <gtest/gtest.h>

TEST(Utf8, IsToldFromOtherBytes) {
  for (const char* text : {"", "screw", "H\xC3\xBClse", "\xE2\x82\xAC", "\xF0\x9F\x94\xA9!",
                           "\xED\x9F\xBF", "\xEE\x80\x80", "\xF4\x8F\xBF\xBF"})
    EXPECT_TRUE(tnv::isUtf8(text)) << text;
  // Alone, cut, longer than needed, half a character, beyond the last.
  for (const char* text :
       {"H\xFClse", "\x80", "\xC3", "\xC3(", "\xE2\x82", "\xF0\x9F\x94", "\xC0\x80", "\xE0\x80\x80",
        "\xF0\x80\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF"})
    EXPECT_FALSE(tnv::isUtf8(text)) << text;
}

TEST(Utf8, ATextIsCutInFrontOfACharacter) {
  const std::string euros = "a\xE2\x82\xAC\xE2\x82\xAC";
  EXPECT_EQ(tnv::shortened(euros, 7), euros);
  for (const std::size_t most : {6U, 5U, 4U})
    EXPECT_EQ(tnv::shortened(euros, most), "a\xE2\x82\xAC") << most;
  for (const std::size_t most : {3U, 2U, 1U})
    EXPECT_EQ(tnv::shortened(euros, most), "a") << most;
  // Where no character begins it is cut all the same.
  EXPECT_EQ(tnv::shortened("\x80\x80\x80", 2), "\x80\x80");
}

#include "foundation/JsonText.h"

#include <memory>

#include <gtest/gtest.h>

#include "support/GlobalLocale.h"

namespace {

/// As in many countries: 1234567,89 with points between the thousands.
class CommaNumbers : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

struct Parsed {
  bool whole = false;
  Json::Value root;
  std::string errors;
};

Parsed parsed(const std::string& text) {
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  Parsed result;
  result.whole = tnv::parseJson(*reader, text, result.root, &result.errors);
  return result;
}

Parsed parsedWithCommas(const std::string& text) {
  const GlobalLocale commas(std::locale(std::locale::classic(), new CommaNumbers));
  return parsed(text);
}

/// The same values, and where they stand in the text.
void expectSame(const Json::Value& one, const Json::Value& other) {
  EXPECT_EQ(one.type(), other.type());
  EXPECT_EQ(one.getOffsetStart(), other.getOffsetStart()) << one;
  EXPECT_EQ(one.getOffsetLimit(), other.getOffsetLimit()) << one;
  if (!one.isArray() && !one.isObject()) {
    EXPECT_EQ(one, other);
    return;
  }
  ASSERT_EQ(one.size(), other.size());
  for (auto member = one.begin(), same = other.begin(); member != one.end(); ++member, ++same) {
    EXPECT_EQ(member.name(), same.name());
    expectSame(*member, *same);
  }
}

}  // namespace

TEST(JsonText, IsReadAlikeWhateverTheLocaleWritesNumbersWith) {
  for (const std::string text :
       {"[0.5, -0.25, 1e3, 2.5E-2, 12, -7, 0.0]",
        "{\"a\": 213.333333,\n \"b\": [1.5, {\"c\": 2.75}]}\n",
        "{\"1.5\": \"2.5 and \\\"3.5\\\" and \\\\\", \"x\": 4.5}",
        "[1.25, // says \"2.5\n 3.75, /* \"4.5 */ 5.5, true, null, \"e.E\"]", "{}", "[]"}) {
    const GlobalLocale points(std::locale::classic());
    const Parsed expected = parsed(text);
    EXPECT_TRUE(expected.whole) << text;
    const Parsed seen = parsedWithCommas(text);
    EXPECT_TRUE(seen.whole) << text << seen.errors;
    expectSame(expected.root, seen.root);
  }
}

TEST(JsonText, FractionsAreNumbersUnderDecimalCommas) {
  const Parsed seen = parsedWithCommas("[0.5, 1234.75, -1e-2]");
  ASSERT_TRUE(seen.whole);
  EXPECT_EQ(seen.root[0].asDouble(), 0.5);
  EXPECT_EQ(seen.root[1].asDouble(), 1234.75);
  EXPECT_EQ(seen.root[2].asDouble(), -0.01);
}

TEST(JsonText, WhatIsNoJsonIsRefusedWithItsLine) {
  for (const std::string text :
       {"[1.5,\n 2.5,\n", "{\"a\": 1.5,\n \"b\" 2}", "\"", "[1.5 \"", "/*", "[1.5 2.5]"}) {
    EXPECT_FALSE(parsedWithCommas(text).whole) << text;
  }
  EXPECT_NE(parsedWithCommas("[1.5,\n 2.5 3.5]").errors.find("Line 2"), std::string::npos);
}

#include "foundation/Numbers.h"

#include <clocale>
#include <limits>
#include <locale>
#include <stdexcept>

#include <gtest/gtest.h>

namespace {

constexpr int kSmallest = std::numeric_limits<int>::min();
constexpr int kLargest = std::numeric_limits<int>::max();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

}  // namespace

TEST(Numbers, RoundingTakesTiesToEven) {
  EXPECT_EQ(0, tnv::roundToInt(0.5));
  EXPECT_EQ(2, tnv::roundToInt(1.5));
  EXPECT_EQ(2, tnv::roundToInt(2.5));
  EXPECT_EQ(-2, tnv::roundToInt(-1.5));
  EXPECT_EQ(3, tnv::roundToInt(2.51));
}

TEST(Numbers, TruncationGoesTowardZero) {
  EXPECT_EQ(1, tnv::truncateToInt(1.99));
  EXPECT_EQ(-1, tnv::truncateToInt(-1.99));
}

TEST(Numbers, RoundingAwayTakesTiesFromZero) {
  EXPECT_EQ(3, tnv::roundHalfAwayToInt(2.5));
  EXPECT_EQ(-3, tnv::roundHalfAwayToInt(-2.5));
}

TEST(Numbers, ConversionsWithoutAResultGiveTheSmallestInteger) {
  for (const double value : {kNan, kInfinity, -kInfinity, 2147483648.0, -2147483649.0, 1e300}) {
    EXPECT_EQ(kSmallest, tnv::roundToInt(value)) << value;
    EXPECT_EQ(kSmallest, tnv::truncateToInt(value)) << value;
    EXPECT_EQ(kSmallest, tnv::roundHalfAwayToInt(value)) << value;
  }
}

TEST(Numbers, TheEndsOfTheRangeConvertToThemselves) {
  EXPECT_EQ(kLargest, tnv::roundToInt(2147483647.0));
  EXPECT_EQ(kSmallest, tnv::truncateToInt(-2147483648.0));
}

TEST(Numbers, SumsStayInTheRange) {
  EXPECT_EQ(kLargest, tnv::addSaturated(kLargest, 1));
  EXPECT_EQ(kSmallest, tnv::addSaturated(kSmallest, -1));
  EXPECT_EQ(kLargest, tnv::subtractSaturated(5, kSmallest));
  EXPECT_EQ(7, tnv::addSaturated(3, 4));
  EXPECT_EQ(-1, tnv::subtractSaturated(3, 4));
}

TEST(Numbers, FixedFormatHasSixDecimals) {
  EXPECT_EQ("0.050000", tnv::formatFixed(0.05));
  EXPECT_EQ("20.000000", tnv::formatFixed(20.0));
  EXPECT_EQ("-1.500000", tnv::formatFixed(-1.5));
}

TEST(Numbers, LargestValueFitsTheFixedFormat) {
  EXPECT_EQ(309u + 7u, tnv::formatFixed(std::numeric_limits<double>::max()).size());
}

TEST(Numbers, GeneralFormatIsThatOfATextStream) {
  EXPECT_EQ("0.33", tnv::formatGeneral(1.0 / 3.0, 2));
  EXPECT_EQ("0.333333", tnv::formatGeneral(1.0 / 3.0, 6));
  EXPECT_EQ("1e-05", tnv::formatGeneral(0.00001, 6));
  EXPECT_EQ("1", tnv::formatGeneral(1.0, 2));
  EXPECT_EQ("1.2e+02", tnv::formatGeneral(123.0, 2));
}

TEST(Numbers, IntegersAreReadAsFarAsTheyGo) {
  EXPECT_EQ(12, tnv::parseInt("12"));
  EXPECT_EQ(-12, tnv::parseInt("  -12abc"));
  EXPECT_EQ(7, tnv::parseInt("+7"));
  EXPECT_EQ(1, tnv::parseInt("1.9"));
  EXPECT_EQ(0, tnv::parseInt("abc"));
  EXPECT_EQ(0, tnv::parseInt(""));
  EXPECT_EQ(0, tnv::parseInt("+-5"));
}

TEST(Numbers, IntegersOutOfRangeAreHeldAtItsEnds) {
  EXPECT_EQ(kLargest, tnv::parseInt("99999999999"));
  EXPECT_EQ(kSmallest, tnv::parseInt("-99999999999"));
}

TEST(Numbers, RealsAreReadAsFarAsTheyGo) {
  EXPECT_DOUBLE_EQ(0.05, tnv::parseDouble("0.050000"));
  EXPECT_DOUBLE_EQ(-250.0, tnv::parseDouble(" -2.5e2x"));
  EXPECT_DOUBLE_EQ(0.5, tnv::parseDouble("+.5"));
  EXPECT_DOUBLE_EQ(0.0, tnv::parseDouble("x"));
  EXPECT_DOUBLE_EQ(0.0, tnv::parseDouble(""));
}

TEST(Numbers, RealsOutOfRangeBecomeInfiniteOrZero) {
  EXPECT_EQ(kInfinity, tnv::parseDouble("1e999"));
  EXPECT_EQ(-kInfinity, tnv::parseDouble("-1e999"));
  EXPECT_EQ(0.0, tnv::parseDouble("1e-999"));
}

TEST(Numbers, HexadecimalsThatAreNoneThrowByName) {
  EXPECT_EQ(0x9dc423, tnv::parseHexStrict("9dc423"));
  EXPECT_EQ(255, tnv::parseHexStrict("0xFF"));
  try {
    tnv::parseHexStrict("xyz");
    FAIL() << "must throw";
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ("invalid stoi argument", error.what());
  }
  try {
    tnv::parseHexStrict("fffffffff");
    FAIL() << "must throw";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ("stoi argument out of range", error.what());
  }
}

namespace {

/// Numbers with a comma and dots between thousands, as a front end may set them.
class CommaNumbers : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

}  // namespace

TEST(Numbers, NeitherFormatNorParserListensToTheLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale(), new CommaNumbers));
  EXPECT_EQ("1234.500000", tnv::formatFixed(1234.5));
  EXPECT_EQ("1234.5", tnv::formatGeneral(1234.5, 6));
  EXPECT_DOUBLE_EQ(1234.5, tnv::parseDouble("1234.5"));
  std::locale::global(before);
}

TEST(ParseDouble, NumbersBeyondTheRangeGoToTheirEnd) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(tnv::parseDouble("10.0e400"), infinity);
  EXPECT_EQ(tnv::parseDouble("-20.5e999"), -infinity);
  EXPECT_EQ(tnv::parseDouble("0.0000000000001e400"), infinity);
  EXPECT_EQ(tnv::parseDouble("10.0e-400"), 0.0);
  for (const std::string& tiny :
       {"." + std::string(400, '0') + "1", "000.000" + std::string(400, '0') + "1",
        "0." + std::string(400, '0') + "1", "0." + std::string(400, '0') + "1e5"})
    EXPECT_EQ(tnv::parseDouble(tiny), 0.0) << tiny;
  EXPECT_EQ(tnv::parseDouble("1" + std::string(400, '0') + ".5"), infinity);
  EXPECT_EQ(tnv::parseDouble("1" + std::string(400, '0') + "e-5x"), infinity);
  EXPECT_EQ(tnv::parseDouble("1" + std::string(400, '0') + "e-400"), 1.0);
  EXPECT_EQ(tnv::parseDouble("-1e400,5"), -infinity);
}

#include "generation/Random.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <set>

#include <gtest/gtest.h>

namespace {

constexpr int kSmallest = std::numeric_limits<int>::min();
constexpr int kLargest = std::numeric_limits<int>::max();

TEST(Random, OneValueToDrawFromTakesNothingFromTheSequence) {
  std::mt19937 twister(7);
  EXPECT_EQ(tnv::drawBetween(twister, 42, 42), 42);
  EXPECT_EQ(twister, std::mt19937(7));
}

TEST(Random, TheWholeRangeTakesTheRawOutput) {
  std::mt19937 twister(7);
  std::mt19937 same(7);
  const auto raw = static_cast<std::uint32_t>(same());
  EXPECT_EQ(tnv::drawBetween(twister, kSmallest, kLargest), static_cast<int>(raw + 0x80000000u));
}

TEST(Random, APowerOfTwoRejectsNothing) {
  std::mt19937 twister(7);
  std::mt19937 same(7);
  for (int i = 0; i < 1000; ++i)
    ASSERT_EQ(tnv::drawUpTo(twister, 0x7fffffffu), same() & 0x7fffffffu);
}

TEST(Random, RawOutputsBehindTheLastWholeMultipleAreDrawnAnew) {
  // With 3 * 2^30 values a quarter of the raw outputs has to go.
  constexpr std::uint32_t count = 3221225472u;
  std::mt19937 twister(7);
  std::mt19937 same(7);
  int rejected = 0;
  for (int i = 0; i < 1000; ++i) {
    auto raw = same();
    for (; raw >= count; raw = same())
      ++rejected;
    ASSERT_EQ(tnv::drawUpTo(twister, count - 1), raw);
  }
  EXPECT_GT(rejected, 200);
}

TEST(Random, BothBoundsAreDrawn) {
  std::mt19937 twister(7);
  std::set<int> seen;
  for (int i = 0; i < 200; ++i)
    seen.insert(tnv::drawBetween(twister, -1, 2));
  EXPECT_EQ(seen, (std::set<int>{-1, 0, 1, 2}));
}

TEST(Random, BoundsTheWrongWayRoundWrap) {
  // 10 to 9 is every value; 10 to 8 is every value but 9.
  std::mt19937 twister(7);
  std::mt19937 same(7);
  EXPECT_EQ(tnv::drawBetween(twister, 10, 9),
            static_cast<int>(10u + static_cast<std::uint32_t>(same())));
  for (int i = 0; i < 1000; ++i)
    ASSERT_NE(tnv::drawBetween(twister, 10, 8), 9);
}

TEST(Random, TwoSeedsDiffer) {
  auto first = tnv::randomlySeeded();
  auto second = tnv::randomlySeeded();
  EXPECT_FALSE(first == second && tnv::randomlySeeded() == first);
}

TEST(Random, ShuffleSwapsEachItemWithADrawnOneBeforeIt) {
  std::vector<int> items(50);
  std::iota(items.begin(), items.end(), 0);
  std::vector<int> expected = items;
  std::mt19937 same(5489);
  for (std::uint64_t i = 1; i < expected.size(); ++i) {
    const std::uint64_t limit = 4294967296u / (i + 1) * (i + 1);
    std::uint64_t raw = same();
    while (raw >= limit)
      raw = same();
    std::swap(expected[i], expected[raw % (i + 1)]);
  }
  std::mt19937 twister(5489);
  tnv::shuffle(twister, items);
  EXPECT_EQ(items, expected);
  EXPECT_FALSE(std::is_sorted(items.begin(), items.end()));
}

TEST(Random, ShufflingNothingOrOneItemDrawsNothing) {
  std::mt19937 twister(1);
  std::vector<int> none;
  std::vector<int> one{3};
  tnv::shuffle(twister, none);
  tnv::shuffle(twister, one);
  EXPECT_EQ(one, std::vector<int>{3});
  EXPECT_EQ(twister, std::mt19937(1));
}

}  // namespace

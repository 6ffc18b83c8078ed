#include "foundation/OrderedWork.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <numeric>
#include <set>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

namespace {

using ::testing::ElementsAre;

constexpr std::chrono::seconds kFarOff{30};

bool eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + kFarOff;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

std::vector<int> takeAll(tnv::OrderedWork<int>& work, int count) {
  std::vector<int> results;
  for (int i = 0; i < count; ++i)
    results.push_back(work.take());
  return results;
}

int asInt(std::size_t piece) {
  return static_cast<int>(piece);
}

/// Counts the results that are there or in the making.
class Living {
 public:
  std::shared_ptr<void> one() {
    const int now = ++count;
    int before = most;
    while (now > before && !most.compare_exchange_weak(before, now)) {
    }
    return {this, [this](void*) { --count; }};
  }

  std::atomic<int> count{0};
  std::atomic<int> most{0};
};

struct WorkersRow {
  int threads;
  std::size_t pieces;
  std::size_t workers;
};

class Workers : public ::testing::TestWithParam<WorkersRow> {};

TEST_P(Workers, AreSoMany) {
  EXPECT_EQ(tnv::workersFor(GetParam().threads, GetParam().pieces), GetParam().workers);
}

INSTANTIATE_TEST_SUITE_P(Rows, Workers,
                         ::testing::Values(WorkersRow{1, 100, 1}, WorkersRow{4, 100, 4},
                                           WorkersRow{4, 3, 3}, WorkersRow{4, 0, 0},
                                           WorkersRow{0, 1, 1}, WorkersRow{2147483647, 1000, 256},
                                           WorkersRow{2147483647, 5, 5}));

TEST(OrderedWork, BehindTheLastResultThereIsNone) {
  for (const int count : {0, 3}) {
    tnv::OrderedWork<int> work(static_cast<std::size_t>(count), 2, asInt);
    takeAll(work, count);
    EXPECT_THROW(work.take(), std::logic_error);
  }
}

TEST(OrderedWork, NoneOrLessTakesOneThreadForEachCore) {
  const std::size_t cores = std::max(std::thread::hardware_concurrency(), 1U);
  EXPECT_EQ(tnv::workersFor(0, 1000), std::min<std::size_t>(cores, 256));
  EXPECT_EQ(tnv::workersFor(-1, 1000), tnv::workersFor(0, 1000));
  EXPECT_EQ(tnv::workersFor(-2147483647 - 1, 1000), tnv::workersFor(0, 1000));
}

TEST(OrderedWork, ResultsComeInOrderThoughTheFirstIsMadeLast) {
  std::atomic<int> made{0};
  tnv::OrderedWork<int> work(4, 4, [&](std::size_t piece) {
    const bool inTime = piece > 0 || eventually([&] { return made == 3; });
    ++made;
    return inTime ? asInt(piece) : -1;
  });
  EXPECT_THAT(takeAll(work, 4), ElementsAre(0, 1, 2, 3));
}

TEST(OrderedWork, EachPieceIsMadeOnceOnOtherThreadsThanTheOneThatTakes) {
  for (const int threads : {1, 2, 3, 8}) {
    std::mutex mutex;
    std::vector<std::size_t> made;
    std::set<std::thread::id> makers;
    tnv::OrderedWork<int> work(100, threads, [&](std::size_t piece) {
      const std::lock_guard lock(mutex);
      made.push_back(piece);
      makers.insert(std::this_thread::get_id());
      return asInt(piece);
    });
    std::vector<int> expected(100);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(takeAll(work, 100), expected);
    EXPECT_EQ(std::set(made.begin(), made.end()).size(), 100U);
    EXPECT_EQ(made.size(), 100U);
    EXPECT_LE(makers.size(), static_cast<std::size_t>(threads));
    EXPECT_EQ(makers.count(std::this_thread::get_id()), 0U);
  }
}

TEST(OrderedWork, AllThreadsWorkAtTheSameTime) {
  constexpr int kThreads = 5;
  std::atomic<int> present{0};
  tnv::OrderedWork<bool> work(kThreads, kThreads, [&](std::size_t) {
    ++present;
    return eventually([&] { return present == kThreads; });
  });
  for (int i = 0; i < kThreads; ++i)
    EXPECT_TRUE(work.take());
}

TEST(OrderedWork, TwoResultsAThreadAreThereAndNoMore) {
  constexpr int kPieces = 60;
  for (const int threads : {1, 2, 4}) {
    Living living;
    std::atomic<int> begun{0};
    tnv::OrderedWork<std::shared_ptr<void>> work(kPieces, threads, [&](std::size_t) {
      ++begun;
      return living.one();
    });
    std::shared_ptr<void> held;
    EXPECT_TRUE(eventually([&] { return begun == 2 * threads; }));
    for (int taken = 0; taken < kPieces; ++taken) {
      held.reset();
      held = work.take();
      // What is held has its place until the holder comes back for more.
      const int ahead = std::min(taken + 2 * threads, kPieces);
      EXPECT_TRUE(eventually([&] { return begun == ahead; })) << begun << " for " << ahead;
    }
    EXPECT_EQ(living.most, 2 * threads);
  }
}

TEST(OrderedWork, WhatAPieceThrowsComesWhenItIsItsTurn) {
  tnv::OrderedWork<int> work(6, 3, [](std::size_t piece) {
    if (piece == 2) throw std::runtime_error("the third");
    return asInt(piece);
  });
  EXPECT_THAT(takeAll(work, 2), ElementsAre(0, 1));
  try {
    work.take();
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "the third");
  }
}

TEST(OrderedWork, TheEndWaitsForWhatIsBeingMadeAndBeginsNothing) {
  std::atomic<int> begun{0};
  std::atomic<int> made{0};
  {
    tnv::OrderedWork<int> work(1000, 2, [&](std::size_t piece) {
      ++begun;
      for (int i = 0; i < 1000; ++i)
        std::this_thread::yield();
      ++made;
      return asInt(piece);
    });
    work.take();
  }
  const int atTheEnd = begun;
  EXPECT_EQ(made, atTheEnd);
  // Nothing was taken beyond the first.
  EXPECT_LE(atTheEnd, 4);
  std::this_thread::yield();
  EXPECT_EQ(begun, atTheEnd);
}

TEST(OrderedWork, WithoutPiecesThereIsNothingToMake) {
  const tnv::OrderedWork<int> work(0, 4, [](std::size_t) -> int {
    ADD_FAILURE() << "a piece was made";
    return 0;
  });
}

TEST(OrderedWork, ThreadsThatCannotBeHadAreDoneWithout) {
  pthread_attr_t usual;
  ASSERT_EQ(pthread_getattr_default_np(&usual), 0);
  pthread_attr_t endless;
  pthread_attr_init(&endless);
  // A stack as large as all of the address space.
  ASSERT_EQ(pthread_attr_setstacksize(&endless, std::size_t{1} << 47), 0);
  ASSERT_EQ(pthread_setattr_default_np(&endless), 0);
  std::set<std::thread::id> makers;
  tnv::OrderedWork<int> work(3, 2, [&](std::size_t piece) {
    makers.insert(std::this_thread::get_id());
    return asInt(piece);
  });
  pthread_setattr_default_np(&usual);
  EXPECT_THAT(takeAll(work, 3), ElementsAre(0, 1, 2));
  EXPECT_THAT(makers, ElementsAre(std::this_thread::get_id()));
}

TEST(OrderedWork, RepeatsAreThingsNamedTwice) {
  int a = 0;
  int b = 0;
  int c = 0;
  EXPECT_FALSE(tnv::hasRepeats(std::vector<int*>{}));
  EXPECT_FALSE(tnv::hasRepeats(std::vector<int*>{&b, &a, &c}));
  EXPECT_TRUE(tnv::hasRepeats(std::vector<int*>{&b, &a, &c, &b}));
}

}  // namespace

#include "foundation/Steps.h"

#include <memory>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LogCapture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Work that leaves a step between two log lines.
void logAndAdd(tnv::Steps& steps) {
  tnv::logLine("before");
  steps.add([] { tnv::logLine("step"); });
  tnv::logLine("after");
}

}  // namespace

TEST(Steps, AtOnceAreDoneWhereTheyAreAdded) {
  const LogCapture log;
  tnv::StepsAtOnce steps;
  logAndAdd(steps);
  EXPECT_THAT(log.lines(), ElementsAre("before", "step", "after"));
}

TEST(Steps, ForLaterKeepTheOrderOfLinesAndStepsUntilTheReplay) {
  const LogCapture log;
  tnv::StepsForLater steps;
  EXPECT_TRUE(steps.record([&] { logAndAdd(steps); }));
  EXPECT_THAT(log.lines(), IsEmpty());
  steps.replay();
  EXPECT_THAT(log.lines(), ElementsAre("before", "step", "after"));
}

TEST(Steps, WhatTheWorkThrowsIsTheLastStep) {
  const LogCapture log;
  tnv::StepsForLater steps;
  EXPECT_FALSE(steps.record([&] {
    logAndAdd(steps);
    throw std::runtime_error("full");
  }));
  EXPECT_THROW(steps.replay(), std::runtime_error);
  EXPECT_THAT(log.lines(), ElementsAre("before", "step", "after"));
}

TEST(Steps, AStepThatThrowsEndsTheReplay) {
  const LogCapture log;
  tnv::StepsForLater steps;
  steps.add([] { tnv::logLine("first"); });
  steps.add([] { throw std::runtime_error("full"); });
  steps.add([] { tnv::logLine("third"); });
  EXPECT_THROW(steps.replay(), std::runtime_error);
  EXPECT_THAT(log.lines(), ElementsAre("first"));
}

TEST(Steps, EachGivesUpWhatItHoldsOnceItIsDone) {
  tnv::StepsForLater steps;
  auto held = std::make_shared<int>(1);
  const std::weak_ptr<int> watched = held;
  steps.add([held] {});
  steps.add([&] { EXPECT_TRUE(watched.expired()); });
  held.reset();
  EXPECT_FALSE(watched.expired());
  steps.replay();
}

TEST(Steps, AreReplayedOnAnotherThreadThanTheyWereRecordedOn) {
  const LogCapture log;
  tnv::StepsForLater steps;
  std::thread([&] { steps.record([&] { logAndAdd(steps); }); }).join();
  steps.replay();
  EXPECT_THAT(log.lines(), ElementsAre("before", "step", "after"));
}

TEST(DivertedLog, TakesTheLinesOfItsThreadWhileItLives) {
  const LogCapture log;
  std::vector<std::string> outer;
  std::vector<std::string> inner;
  const auto into = [](std::vector<std::string>& lines) {
    return [&lines](std::string_view line) { lines.emplace_back(line); };
  };
  {
    const tnv::DivertedLog first(into(outer));
    tnv::logLine("a");
    {
      const tnv::DivertedLog second(into(inner));
      tnv::logLine("b");
      std::thread([] { tnv::logLine("c"); }).join();
    }
    tnv::logLine("d");
  }
  tnv::logLine("e");
  EXPECT_THAT(outer, ElementsAre("a", "d"));
  EXPECT_THAT(inner, ElementsAre("b"));
  EXPECT_THAT(log.lines(), ElementsAre("c", "e"));
}

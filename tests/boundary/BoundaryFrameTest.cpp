#include <atomic>
#include <memory>
#include <thread>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TNV_SampleBenchNative/TNV_SampleBenchNative.h"
#include "boundary/TNVNotificator.h"
#include "editing/TNVHandlerMark.h"
#include "editing/TNVHandlerTrainSet.h"
#include "support/OpenProject.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<char> calls;
void callA() {
  calls.push_back('a');
}
void callB() {
  calls.push_back('b');
}

std::vector<char> takeCalls() {
  return std::exchange(calls, {});
}

std::size_t observerCount() {
  return TNVObserverList::instance().snapshot().size();
}

class BoundaryFrame : public testing::Test {
 protected:
  BoundaryFrame() { takeCalls(); }

  void fire() { handler.setAddInstantly(true); }

  TNVHandlerMark handler;
};

}  // namespace

TEST_F(BoundaryFrame, WrapperWithoutACallbackHearsInSilence) {
  const WTNVHandlerMark wrapper(&handler);
  EXPECT_NO_FATAL_FAILURE(fire());
  EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(BoundaryFrame, WrappersFireInTheOrderOfRegistration) {
  WTNVHandlerMark first(&handler);
  WTNVHandlerMark second(&handler);
  second.setCBAddInstantlyChanged(callB);
  first.setCBAddInstantlyChanged(callA);
  fire();
  EXPECT_THAT(takeCalls(), ElementsAre('a', 'b'));
}

TEST_F(BoundaryFrame, NullClearsACallback) {
  WTNVHandlerMark wrapper(&handler);
  wrapper.setCBAddInstantlyChanged(callA);
  wrapper.setCBAddInstantlyChanged(nullptr);
  fire();
  EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(BoundaryFrame, CopyHearsWithCallbacksOfItsOwn) {
  auto first = std::make_unique<WTNVHandlerMark>(&handler);
  first->setCBAddInstantlyChanged(callA);
  WTNVHandlerMark copy(*first);
  fire();
  EXPECT_THAT(takeCalls(), ElementsAre('a'));
  copy.setCBAddInstantlyChanged(callB);
  first.reset();
  fire();
  EXPECT_THAT(takeCalls(), ElementsAre('b'));
}

TEST_F(BoundaryFrame, AssignmentTakesCallbacksAndRegistersNothing) {
  TNVHandlerMark other;
  WTNVHandlerMark first(&handler);
  WTNVHandlerMark second(&other);
  first.setCBAddInstantlyChanged(callA);
  const std::size_t before = observerCount();
  second = first;
  EXPECT_EQ(before, observerCount());
  second.setAddInstantly(true);
  EXPECT_TRUE(handler.addInstantly);
  EXPECT_FALSE(other.addInstantly);
  EXPECT_THAT(takeCalls(), ElementsAre('a', 'a'));
}

TEST_F(BoundaryFrame, DestroyedWrapperHearsNothing) {
  const std::size_t before = observerCount();
  {
    WTNVHandlerMark wrapper(&handler);
    wrapper.setCBAddInstantlyChanged(callA);
    EXPECT_EQ(before + 1, observerCount());
  }
  EXPECT_EQ(before, observerCount());
  fire();
  EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(BoundaryFrame, EventsReachTheWrappersOfOtherHandlersOfTheClass) {
  TNVHandlerMark other;
  WTNVHandlerMark wrapper(&other);
  wrapper.setCBAddInstantlyChanged(callA);
  fire();
  EXPECT_THAT(takeCalls(), ElementsAre('a'));
}

TEST_F(BoundaryFrame, EventsReachAWrapperOfAnotherProject) {
  ProjectBuilder first("first");
  ProjectBuilder second("second");
  first.withPictures({"a.png"});
  second.withPictures({"b.png"});
  OpenProject openFirst(first);
  OpenProject openSecond(second);
  WTNVHandlerTrainSet ofSecond(&openSecond.trainSets());
  ofSecond.setCBTrainSetChanged(callA);
  openFirst.trainSets().setTrainSetForward(0);
  EXPECT_THAT(takeCalls(), ElementsAre('a'));
}

TEST_F(BoundaryFrame, HandlersOfOtherClassesDoNotReachEachOther) {
  TNVHandlerTrainSet trainSets;
  WTNVHandlerTrainSet wrapper(&trainSets);
  wrapper.setCBTrainSetChanged(callA);
  fire();
  EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(BoundaryFrame, DisabledHandlerReportsToNobody) {
  WTNVHandlerMark wrapper(&handler);
  wrapper.setCBAddInstantlyChanged(callA);
  handler.enabled = false;
  fire();
  EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(BoundaryFrame, AnObserverStandsInTheListOnce) {
  WTNVHandlerMark wrapper(&handler);
  const std::size_t before = observerCount();
  handler.addObserver(&wrapper);
  EXPECT_EQ(before, observerCount());
}

TEST_F(BoundaryFrame, UnregisteringAStrangerChangesNothing) {
  TNVObserver stranger;
  const WTNVHandlerMark wrapper(&handler);
  const auto before = TNVObserverList::instance().snapshot();
  handler.removeObserver(&stranger);
  EXPECT_EQ(before, TNVObserverList::instance().snapshot());
}

namespace {

std::unique_ptr<WTNVHandlerMark> leaving;
void leave() {
  leaving.reset();
}

}  // namespace

TEST_F(BoundaryFrame, WrapperMayGoInItsOwnCallbackAndInAnothers) {
  WTNVHandlerMark first(&handler);
  leaving = std::make_unique<WTNVHandlerMark>(&handler);
  leaving->setCBAddInstantlyChanged(callB);
  first.setCBAddInstantlyChanged(leave);
  fire();
  EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(BoundaryFrame, WrappersComeAndGoWhileAnotherThreadReports) {
  std::atomic<bool> stop{false};
  std::thread reporter([&] {
    TNVHandlerTrainSet trainSets;
    while (!stop)
      trainSets.notify(&TNVHandlerTrainSetObserver::onEventImageLoaded);
  });
  TNVHandlerTrainSet trainSets;
  static std::atomic<int> heard{0};
  for (int i = 0; i < 2000 || heard == 0; ++i) {
    WTNVHandlerTrainSet wrapper(&trainSets);
    wrapper.setCBImageLoaded([] { ++heard; });
  }
  stop = true;
  reporter.join();
  EXPECT_GT(heard, 0);
}

TEST_F(BoundaryFrame, UnregisteringKeepsTheOrderOfTheOthers) {
  auto first = std::make_unique<WTNVHandlerMark>(&handler);
  WTNVHandlerMark second(&handler);
  WTNVHandlerMark third(&handler);
  second.setCBAddInstantlyChanged(callA);
  third.setCBAddInstantlyChanged(callB);
  first.reset();
  fire();
  EXPECT_THAT(takeCalls(), ElementsAre('a', 'b'));
}

TEST_F(BoundaryFrame, MainProcessHandsOutObserversOfItsHandlers) {
  ProjectBuilder builder;
  builder.withClasses({"a"}).withPictures({"a.png"});
  const std::size_t before = observerCount();
  {
    WTNVMainProcess process(&builder.project(), nullptr);
    auto trainSets = process.getHndTrainSet();
    auto view = process.getHndImageView();
    auto first = process.getHndMark();
    auto second = process.getHndMark();
    EXPECT_EQ(before + 4, observerCount());
    first.setCBMarkDesigned(callA);
    second.setCBMarkDesigned(callB);
    EXPECT_TRUE(first.designMark({{0.1, 0.1}, {0.2, 0.2}}, "Rect", {}));
    EXPECT_THAT(takeCalls(), ElementsAre('a', 'b'));
    EXPECT_TRUE(second.addDesignedMark());
    EXPECT_EQ(1, trainSets.wGetTrainSetCur().getMarkCount());
    int width = 0;
    int height = 0;
    view.wGetARImageSize(width, height);
    EXPECT_EQ(64, width);
  }
  EXPECT_EQ(before, observerCount());
}

TEST_F(BoundaryFrame, OwningWrappersAreNotCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<WTNVProject>);
  EXPECT_TRUE(std::is_copy_assignable_v<WTNVProject>);
  EXPECT_TRUE(std::is_copy_assignable_v<WTNVMainProcess>);
}

namespace {

/// How a callback of a wrapper is set, and the event that calls it.
template <class Wrapper>
using Slot = std::pair<void (Wrapper::*)(void (*)()), void (Wrapper::*)()>;

/// Each event calls its own callback alone, and an assigned wrapper has the callbacks of the other.
template <class Wrapper>
void expectSlots(Wrapper& wrapper, Wrapper& other, const std::vector<Slot<Wrapper>>& slots) {
  const Wrapper silent(wrapper);
  for (const auto& set : slots) {
    (wrapper.*set.first)(callA);
    other = wrapper;
    for (const auto& event : slots) {
      (wrapper.*event.second)();
      EXPECT_EQ(takeCalls().size(), event == set ? 1U : 0U);
      (other.*event.second)();
      EXPECT_EQ(takeCalls().size(), event == set ? 1U : 0U);
    }
    other = silent;
    (other.*set.second)();
    EXPECT_THAT(takeCalls(), IsEmpty());
    (wrapper.*set.first)(nullptr);
  }
}

}  // namespace

TEST_F(BoundaryFrame, EveryEventOfAnInterfaceHasItsSlot) {
  ProjectBuilder builder;
  builder.withPictures({"a.png"});
  OpenProject open(builder);
  {
    using W = WTNVHandlerMark;
    W first(&handler);
    W second(&handler);
    expectSlots<W>(first, second,
                   {{&W::setCBMarkAdded, &W::onEventMarkAdded},
                    {&W::setCBMarkDesigned, &W::onEventMarkDesigned},
                    {&W::setCBDNNClassChanged, &W::onEventDNNClassChanged},
                    {&W::setCBAddInstantlyChanged, &W::onEventAddInstantlyChanged},
                    {&W::setCBMarkFormChanged, &W::onEventMarkFormChanged},
                    {&W::setCBMarkModeChanged, &W::onEventMarkModeChanged},
                    {&W::setCBMarkMouseOver, &W::onEventMarkMouseOver},
                    {&W::setCBMarkStateHovered, &W::onEventMarkStateHovered},
                    {&W::setCBMarkStateSelected, &W::onEventMarkStateSelected},
                    {&W::setCBMarkStatePOIVisible, &W::onEventMarkStatePOIVisible},
                    {&W::setCBMarkUpdated, &W::onEventMarkUpdated},
                    {&W::setCBMarkRemoved, &W::onEventMarkRemoved},
                    {&W::setCBPOIPointsUpdated, &W::onEventPOIPointsUpdated},
                    {&W::setCBPOISizeUpdated, &W::onEventPOISizeUpdated},
                    {&W::setCBAssistChanged, &W::onEventAssistChanged}});
  }
  {
    using W = WTNVHandlerImageView;
    W first(&open.view());
    W second(&open.view());
    expectSlots<W>(first, second,
                   {{&W::setCBCrossPositionChanged, &W::onEventCrossPositionChanged},
                    {&W::setCBHelperZoomLevelChanged, &W::onEventHelperZoomLevelChanged},
                    {&W::setCBHelperModeChanged, &W::onEventHelperModeChanged},
                    {&W::setCBHelperWndSizeChanged, &W::onEventHelperWndSizeChanged},
                    {&W::setCBHelperShowCrossChanged, &W::onEventHelperShowCrossChanged},
                    {&W::setCBMarkStyleChanged, &W::onEventMarkStyleChanged},
                    {&W::setCBMarkDrawInfoChanged, &W::onEventMarkDrawInfoChanged},
                    {&W::setCBCrossStyleChanged, &W::onEventCrossStyleChanged},
                    {&W::setCBZoomLevelChanged, &W::onEventZoomLevelChanged},
                    {&W::setCBDrawMarkFilledChanged, &W::onEventDrawMarkFilledChanged},
                    {&W::setCBDrawOnlyDNNsChanged, &W::onEventDrawOnlyDNNsChanged}});
  }
  {
    using W = WTNVHandlerTrainSet;
    W first(&open.trainSets());
    W second(&open.trainSets());
    expectSlots<W>(first, second,
                   {{&W::setCBTrainSetChanged, &W::onEventTrainSetChanged},
                    {&W::setCBCommentUpdated, &W::onEventCommentUpdated},
                    {&W::setCBUseSpecialTestUpdated, &W::onEventUseSpecialTestUpdated},
                    {&W::setCBProjectOpened, &W::onEventProjectOpened},
                    {&W::setCBProjectClosed, &W::onEventProjectClosed},
                    {&W::setCBProjectSaved, &W::onEventProjectSaved},
                    {&W::setCBImageLoaded, &W::onEventImageLoaded},
                    {&W::setCBRemoveChanged, &W::onEventRemoveChanged},
                    {&W::setCBWorkflowChanged, &W::onEventWorkflowChanged}});
  }
  {
    using W = WTNVHandlerAugment;
    W first = builder.project().getHndAugment();
    W second = builder.project().getHndAugment();
    expectSlots<W>(first, second,
                   {{&W::setCBGenerationStarted, &W::onEventGenerationStarted},
                    {&W::setCBGenerationUpdate, &W::onEventGenerationUpdate},
                    {&W::setCBGenerationFinished, &W::onEventGenerationFinished}});
  }
  {
    using W = WTNVHandlerValidation;
    W first = builder.project().getHndValidation();
    W second = builder.project().getHndValidation();
    expectSlots<W>(first, second,
                   {{&W::setCBValidGenStarted, &W::onEventValidGenStarted},
                    {&W::setCBValidGenUpdate, &W::onEventValidGenUpdate},
                    {&W::setCBValidGenFinished, &W::onEventValidGenFinished}});
  }
  {
    using W = WTNVHandlerDownload;
    W first = builder.project().getHndDownload();
    W second = builder.project().getHndDownload();
    expectSlots<W>(first, second,
                   {{&W::setCBDownloadStarted, &W::onEventDownloadStarted},
                    {&W::setCBDownloadUpdate, &W::onEventDownloadUpdate},
                    {&W::setCBDownloadFinished, &W::onEventDownloadFinished}});
  }
}

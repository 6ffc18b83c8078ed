#include "editing/TNVHandlerMark.h"

#include <cmath>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marks/TNVMarkRect.h"
#include "support/LogCapture.h"
#include "support/OpenProject.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr int kMouseOver = 10;
constexpr int kHovered = 11;
constexpr int kSelected = 12;
constexpr int kPOIVisible = 13;
constexpr int kUpdated = 14;
constexpr int kRemoved = 15;
constexpr int kPOIPoints = 16;
constexpr int kPOISize = 17;
constexpr int kClass = 18;
constexpr int kOther = 19;

template <int Tag>
int taken() {
  return CallCounter<Tag>::count.exchange(0);
}

class TNVHandlerMarkTest : public testing::Test {
 protected:
  TNVHandlerMarkTest() : wrapper(&handler), trainSet("a.png", "") {
    trainSet.imageWidth = 200;
    trainSet.imageHeight = 100;
    handler.trainSet = &trainSet;
    wrapper.setCBMarkMouseOver(CallCounter<kMouseOver>::call);
    wrapper.setCBMarkStateHovered(CallCounter<kHovered>::call);
    wrapper.setCBMarkStateSelected(CallCounter<kSelected>::call);
    wrapper.setCBMarkStatePOIVisible(CallCounter<kPOIVisible>::call);
    wrapper.setCBMarkUpdated(CallCounter<kUpdated>::call);
    wrapper.setCBMarkRemoved(CallCounter<kRemoved>::call);
    wrapper.setCBPOIPointsUpdated(CallCounter<kPOIPoints>::call);
    wrapper.setCBPOISizeUpdated(CallCounter<kPOISize>::call);
    taken<kMouseOver>();
    taken<kHovered>();
    taken<kSelected>();
    taken<kPOIVisible>();
    taken<kUpdated>();
    taken<kRemoved>();
    taken<kPOIPoints>();
    taken<kPOISize>();
    taken<kClass>();
    taken<kOther>();
  }

  /// A box around a point, 0.2 wide and high.
  WTNVMark box(double x, double y) {
    return WTNVMark(trainSet.addMark(TNVMarkRect({x - 0.1, y - 0.1}, {x + 0.1, y + 0.1}, false)));
  }

  static int tag(const WTNVMark& mark) { return mark.getNativeMark()->changeTag; }

  TNVHandlerMark handler;
  WTNVHandlerMark wrapper;
  TNVTrainSet trainSet;
};

}  // namespace

TEST_F(TNVHandlerMarkTest, MarksComeInTheirOrder) {
  const WTNVMark a = box(0.2, 0.2);
  const WTNVMark b = box(0.6, 0.6);
  EXPECT_EQ(2u, wrapper.getMarkCount());
  ASSERT_THAT(wrapper.getAllMarks(), SizeIs(2));
  EXPECT_EQ(a.getNativeMark(), wrapper.getAllMarks()[0].getNativeMark());
  EXPECT_EQ(b.getNativeMark(), wrapper.getMarkWithUniqueId(1).getNativeMark());
  EXPECT_FALSE(wrapper.getMarkWithUniqueId(7).valid());
}

TEST_F(TNVHandlerMarkTest, NearestCentreUnderTheCursorWins) {
  box(0.50, 0.5);
  const WTNVMark nearer = box(0.52, 0.5);
  EXPECT_EQ(nearer.getNativeMark(), wrapper.getMarkMouseOver(0.52, 0.5).getNativeMark());
  EXPECT_EQ(1, taken<kMouseOver>());
}

TEST_F(TNVHandlerMarkTest, EarlierOfTwoAtOneDistanceWins) {
  const WTNVMark first = box(0.5, 0.5);
  box(0.5, 0.5);
  EXPECT_EQ(first.getNativeMark(), wrapper.getMarkMouseOver(0.5, 0.5).getNativeMark());
}

TEST_F(TNVHandlerMarkTest, NoMarkUnderTheCursorFiresNothing) {
  box(0.2, 0.2);
  EXPECT_FALSE(wrapper.getMarkMouseOver(0.9, 0.9).valid());
  EXPECT_EQ(0, taken<kMouseOver>());
}

TEST_F(TNVHandlerMarkTest, MouseOverTouchesNoFlag) {
  const WTNVMark mark = box(0.5, 0.5);
  const int before = tag(mark);
  wrapper.getMarkMouseOver(0.5, 0.5);
  EXPECT_FALSE(mark.wGetIsHovered());
  EXPECT_FALSE(mark.wGetIsSelected());
  EXPECT_EQ(before, tag(mark));
}

TEST_F(TNVHandlerMarkTest, HoverFiresOnARealChangeAlone) {
  const WTNVMark mark = box(0.5, 0.5);
  int before = tag(mark);
  wrapper.wSetMarkHovered(mark, true);
  EXPECT_TRUE(mark.wGetIsHovered());
  EXPECT_NE(before, tag(mark));
  EXPECT_EQ(1, taken<kHovered>());
  before = tag(mark);
  wrapper.wSetMarkHovered(mark, true);
  wrapper.wSetMarkHovered(WTNVMark(), true);
  EXPECT_EQ(before, tag(mark));
  EXPECT_EQ(0, taken<kHovered>());
}

TEST_F(TNVHandlerMarkTest, HoverOfOneAloneClearsTheOthers) {
  const WTNVMark a = box(0.2, 0.2);
  const WTNVMark b = box(0.6, 0.6);
  const WTNVMark c = box(0.8, 0.8);
  wrapper.wSetMarkHoveredOnly(a);
  EXPECT_EQ(1, taken<kHovered>());
  const int untouched = tag(c);
  wrapper.wSetMarkHoveredOnly(b);
  EXPECT_FALSE(a.wGetIsHovered());
  EXPECT_TRUE(b.wGetIsHovered());
  EXPECT_EQ(untouched, tag(c));
  EXPECT_EQ(1, taken<kHovered>());
  wrapper.wSetMarkHoveredOnly(b);
  EXPECT_EQ(0, taken<kHovered>());
  wrapper.wSetMarkHoveredOnly(WTNVMark());
  EXPECT_EQ(0, wrapper.wGetMarksHoveredCnt());
  EXPECT_EQ(1, taken<kHovered>());
}

TEST_F(TNVHandlerMarkTest, HoverOfManyTakesAnEmptyListForAll) {
  const WTNVMark a = box(0.2, 0.2);
  const WTNVMark b = box(0.6, 0.6);
  wrapper.wSetAllMarksHovered(true, {b});
  EXPECT_EQ(1, wrapper.wGetMarksHoveredCnt());
  EXPECT_EQ(b.getNativeMark(), wrapper.wGetMarksHovered().at(0).getNativeMark());
  const int before = tag(b);
  wrapper.wSetAllMarksHovered(true, {});
  EXPECT_TRUE(a.wGetIsHovered() && b.wGetIsHovered());
  EXPECT_EQ(before, tag(b));
  EXPECT_EQ(2, taken<kHovered>());
  wrapper.wSetAllMarksHovered(true, {});
  EXPECT_EQ(0, taken<kHovered>());
}

TEST_F(TNVHandlerMarkTest, SelectionFiresAlways) {
  const WTNVMark mark = box(0.5, 0.5);
  wrapper.setMarkSelected(mark, true);
  const int before = tag(mark);
  wrapper.setMarkSelected(mark, true);
  EXPECT_NE(before, tag(mark));
  EXPECT_EQ(2, taken<kSelected>());
  wrapper.setMarkSelected(WTNVMark(), true);
  EXPECT_EQ(0, taken<kSelected>());
}

TEST_F(TNVHandlerMarkTest, SelectionOfManyFiresOnceEvenWithoutChange) {
  const WTNVMark a = box(0.2, 0.2);
  const WTNVMark b = box(0.6, 0.6);
  wrapper.setAllMarksSelected(true, {b});
  EXPECT_FALSE(a.wGetIsSelected());
  EXPECT_EQ(1, wrapper.getMarksSelectedCnt());
  EXPECT_EQ(b.getNativeMark(), wrapper.getMarksSelected().at(0).getNativeMark());
  wrapper.setAllMarksSelected(false, {});
  EXPECT_EQ(0, wrapper.getMarksSelectedCnt());
  const int before = tag(a);
  wrapper.setAllMarksSelected(false, {});
  EXPECT_NE(before, tag(a));
  EXPECT_EQ(3, taken<kSelected>());
}

TEST_F(TNVHandlerMarkTest, POIVisibilityFiresOnceEvenWithoutChange) {
  const WTNVMark a = box(0.2, 0.2);
  const WTNVMark b = box(0.6, 0.6);
  wrapper.setAllMarksPOIVisible(true, {a});
  EXPECT_TRUE(a.getNativeMark()->poiVisible);
  EXPECT_FALSE(b.getNativeMark()->poiVisible);
  const int before = tag(a);
  wrapper.setAllMarksPOIVisible(true, {});
  EXPECT_TRUE(b.getNativeMark()->poiVisible);
  EXPECT_NE(before, tag(a));
  EXPECT_EQ(2, taken<kPOIVisible>());
}

TEST_F(TNVHandlerMarkTest, UpdateMovesResizesAndAssignsClasses) {
  TNVDNNClass first(4);
  TNVDNNClass second(2);
  const WTNVMark mark = box(0.5, 0.5);
  wrapper.updateMark(mark, 0.3, 0.4, 0.1, 0.2, {WTNVDNNClass(&first), WTNVDNNClass(&second)}, 200,
                     100);
  EXPECT_EQ(cv::Point2d(0.3, 0.4), mark.getNativeMark()->center);
  EXPECT_EQ(cv::Point2d(0.1, 0.2), mark.getNativeMark()->getRelSize({200, 100}));
  EXPECT_THAT(mark.wGetClassIdx(), ElementsAre(4, 2));
  EXPECT_EQ(1, taken<kUpdated>());
  wrapper.updateMark(WTNVMark(), 0.3, 0.4, 0.1, 0.2, {}, 200, 100);
  EXPECT_EQ(0, taken<kUpdated>());
}

TEST_F(TNVHandlerMarkTest, ClassesOfSelectedMarksAreReplacedWithoutANewTag) {
  TNVDNNClass dnnClass(4);
  const WTNVMark a = box(0.2, 0.2);
  const WTNVMark b = box(0.6, 0.6);
  wrapper.setMarkSelected(a, true);
  const int before = tag(a);
  wrapper.updateSelectedMarks({WTNVDNNClass(&dnnClass)});
  EXPECT_THAT(a.wGetClassIdx(), ElementsAre(4));
  EXPECT_THAT(b.wGetClassIdx(), IsEmpty());
  wrapper.updateSelectedMarks({});
  EXPECT_THAT(a.wGetClassIdx(), IsEmpty());
  EXPECT_EQ(before, tag(a));
  wrapper.setAllMarksSelected(false, {});
  wrapper.updateSelectedMarks({});
  EXPECT_EQ(3, taken<kUpdated>());
}

TEST_F(TNVHandlerMarkTest, SelectedMarksAreRemovedAndStayReadable) {
  const WTNVMark a = box(0.2, 0.2);
  const WTNVMark b = box(0.6, 0.6);
  wrapper.setMarkSelected(a, true);
  wrapper.removeSelectedMarks();
  ASSERT_EQ(1u, wrapper.getMarkCount());
  EXPECT_EQ(b.getNativeMark(), wrapper.getAllMarks()[0].getNativeMark());
  EXPECT_EQ("Rect", a.wGetType());
  EXPECT_EQ(1, taken<kRemoved>());
  wrapper.removeSelectedMarks();
  EXPECT_EQ(1, taken<kRemoved>());
}

TEST_F(TNVHandlerMarkTest, RemovalOfOneMarkFiresNothing) {
  const WTNVMark mark = box(0.2, 0.2);
  wrapper.removeMark(mark);
  EXPECT_EQ(0u, wrapper.getMarkCount());
  EXPECT_EQ("Rect", mark.wGetType());
  const LogCapture log;
  wrapper.removeMark(mark);
  wrapper.removeMark(WTNVMark());
  EXPECT_THAT(log.lines(), ElementsAre("TNVTrainSet::removeMark: Mark not found!"));
  EXPECT_EQ(0, taken<kRemoved>());
}

TEST_F(TNVHandlerMarkTest, POIPointsKeepTheirPlaces) {
  const WTNVMark mark = box(0.5, 0.5);
  const int before = tag(mark);
  wrapper.wSetPOIPoints(mark, {{0.1, 0.2}, {0.3, 0.4, 0.5}, {}, {0.6, 0.7}});
  EXPECT_THAT(mark.getNativeMark()->pois, ElementsAre(cv::Point2d(0.1, 0.2), cv::Point2d(0, 0),
                                                      cv::Point2d(0, 0), cv::Point2d(0.6, 0.7)));
  EXPECT_NE(before, tag(mark));
  EXPECT_EQ(1, taken<kPOIPoints>());
  wrapper.wSetPOIPoints(WTNVMark(), {});
  EXPECT_EQ(0, taken<kPOIPoints>());
}

TEST_F(TNVHandlerMarkTest, POISizeOfTwoValuesNeedsNoTrainSet) {
  const WTNVMark mark = box(0.5, 0.5);
  handler.trainSet = nullptr;
  const int before = tag(mark);
  wrapper.wSetPOISize(mark, 0.1, 0.3);
  EXPECT_EQ(cv::Point2d(0.1, 0.3), mark.getNativeMark()->poiSize);
  EXPECT_NE(before, tag(mark));
  EXPECT_EQ(1, taken<kPOISize>());
  wrapper.wSetPOISize(WTNVMark(), 0.1, 0.3);
  EXPECT_EQ(0, taken<kPOISize>());
}

TEST_F(TNVHandlerMarkTest, POISizeOfOneValueIsSquareInPixels) {
  const WTNVMark mark = box(0.5, 0.5);
  wrapper.wSetPOISize(mark, 0.1);
  EXPECT_EQ(cv::Point2d(0.1, 0.2), mark.getNativeMark()->poiSize);
  EXPECT_EQ(1, taken<kPOISize>());
  wrapper.wSetPOISize(WTNVMark(), 0.1);
  EXPECT_EQ(0, taken<kPOISize>());
}

TEST_F(TNVHandlerMarkTest, UnknownImageSizeIsReadFromTheImage) {
  TempDirectory temp;
  TNVTrainSet other(writePicture(temp / "a.png", 50, 100), "");
  other.loadImage();
  TNVMark* mark = other.addMark(TNVMarkRect({0, 0}, {1, 1}, false));
  handler.trainSet = &other;
  wrapper.wSetPOISize(WTNVMark(mark), 0.2);
  EXPECT_EQ(cv::Point2d(0.2, 0.1), mark->poiSize);
  EXPECT_EQ(50, other.imageWidth);
  EXPECT_EQ(100, other.imageHeight);
}

TEST_F(TNVHandlerMarkTest, WithoutATrainSetEveryCallSaysSo) {
  handler.trainSet = nullptr;
  const WTNVMark mark;
  const LogCapture log;
  EXPECT_EQ(0u, wrapper.getMarkCount());
  EXPECT_THAT(wrapper.getAllMarks(), IsEmpty());
  EXPECT_FALSE(wrapper.getMarkMouseOver(0.5, 0.5).valid());
  wrapper.wSetMarkHoveredOnly(mark);
  wrapper.wSetAllMarksHovered(true, {});
  EXPECT_EQ(-1, wrapper.wGetMarksHoveredCnt());
  EXPECT_THAT(wrapper.wGetMarksHovered(), IsEmpty());
  wrapper.setAllMarksSelected(true, {});
  EXPECT_EQ(-1, wrapper.getMarksSelectedCnt());
  EXPECT_THAT(wrapper.getMarksSelected(), IsEmpty());
  wrapper.setAllMarksPOIVisible(true, {});
  wrapper.updateSelectedMarks({});
  wrapper.removeSelectedMarks();
  wrapper.removeMark(mark);
  wrapper.wSetPOISize(mark, 0.1);
  std::vector<std::string> expected;
  for (const char* operation :
       {"getMarkCount", "getAllMarks", "getMarkMouseOver", "setMarkHoveredOnly",
        "setAllMarksHovered", "getMarksHoveredCnt", "getMarksHovered", "setAllMarksSelected",
        "getMarksSelectedCnt", "getMarksSelected", "setAllMarksPOIVisible", "updateSelectedMarks",
        "removeSelectedMarks", "removeMark"}) {
    expected.push_back(std::string("TNVHandlerMark::") + operation +
                       ": Current Train Set is nullptr!");
  }
  expected.emplace_back("TNVHandlerMark::setPOISize: TrainSet is nullptr!");
  EXPECT_EQ(expected, log.lines());
  EXPECT_EQ(0, taken<kSelected>() + taken<kPOIVisible>() + taken<kUpdated>() + taken<kRemoved>());
}

TEST_F(TNVHandlerMarkTest, FirstClassOfTheProjectIsSelected) {
  ProjectBuilder builder;
  builder.withClasses({"a", "b"});
  wrapper.setCBDNNClassChanged(CallCounter<kClass>::call);
  handler.setProject(builder.project().getNativeProject());
  ASSERT_THAT(wrapper.wGetDNNClassSelected(), SizeIs(1));
  EXPECT_EQ("a", wrapper.wGetDNNClassSelected()[0].wGetName());
  EXPECT_EQ(1, taken<kClass>());
  wrapper.wSetDNNClassSelected(builder.project().wGetDNNClasses());
  EXPECT_THAT(wrapper.wGetDNNClassSelected(), SizeIs(2));
  EXPECT_EQ(1, taken<kClass>());
}

TEST_F(TNVHandlerMarkTest, ProjectWithoutClassesSelectsNone) {
  ProjectBuilder builder;
  wrapper.setCBDNNClassChanged(CallCounter<kClass>::call);
  handler.setProject(builder.project().getNativeProject());
  EXPECT_THAT(wrapper.wGetDNNClassSelected(), IsEmpty());
  EXPECT_EQ(0, taken<kClass>());
}

TEST_F(TNVHandlerMarkTest, SelectingClassesNeedsAProject) {
  TNVDNNClass dnnClass(0);
  const LogCapture log;
  wrapper.wSetDNNClassSelected({WTNVDNNClass(&dnnClass)});
  EXPECT_THAT(log.lines(), ElementsAre("TNVHandlerMark::setDNNClass: Project is not set!"));
  EXPECT_THAT(wrapper.wGetDNNClassSelected(), IsEmpty());
}

TEST_F(TNVHandlerMarkTest, ChoicesStartAtTheirDefaultsAndFireAlways) {
  EXPECT_EQ("Rect", wrapper.getMarkForm());
  EXPECT_EQ("Create", wrapper.wGetMarkMode());
  EXPECT_EQ("GrabCut", wrapper.wGetAssist());
  EXPECT_FALSE(wrapper.getAddInstantly());
  wrapper.setCBMarkFormChanged(CallCounter<kOther>::call);
  wrapper.setCBMarkModeChanged(CallCounter<kOther>::call);
  wrapper.setCBAssistChanged(CallCounter<kOther>::call);
  wrapper.setCBAddInstantlyChanged(CallCounter<kOther>::call);
  wrapper.setMarkForm("Image");
  wrapper.wSetMarkMode("Edit");
  wrapper.wSetAssist("None");
  wrapper.setAddInstantly(true);
  EXPECT_EQ("Image", wrapper.getMarkForm());
  EXPECT_EQ("Edit", wrapper.wGetMarkMode());
  EXPECT_EQ("None", wrapper.wGetAssist());
  EXPECT_TRUE(wrapper.getAddInstantly());
  wrapper.setMarkForm("no such form");
  wrapper.wSetMarkMode("no such mode");
  wrapper.wSetAssist("no such assist");
  wrapper.setAddInstantly(true);
  EXPECT_EQ("Rect", wrapper.getMarkForm());
  EXPECT_EQ("Create", wrapper.wGetMarkMode());
  EXPECT_EQ("None", wrapper.wGetAssist());
  EXPECT_EQ(8, taken<kOther>());
}

TEST_F(TNVHandlerMarkTest, AvailableChoicesAreTheTables) {
  EXPECT_THAT(wrapper.getAvailableMarkForms(), SizeIs(11));
  EXPECT_THAT(wrapper.wGetAvailableMarkModes(), ElementsAre("Create", "Edit", "POI"));
  EXPECT_THAT(wrapper.wGetAvailableAssists(), ElementsAre("None", "GrabCut"));
}

TEST_F(TNVHandlerMarkTest, EmptyHandlesInAListAreIgnored) {
  const WTNVMark mark = box(0.5, 0.5);
  wrapper.wSetAllMarksHovered(true, {WTNVMark()});
  wrapper.setAllMarksSelected(true, {WTNVMark()});
  wrapper.setAllMarksPOIVisible(true, {WTNVMark()});
  EXPECT_FALSE(mark.wGetIsHovered() || mark.wGetIsSelected() || mark.getNativeMark()->poiVisible);
  wrapper.setAllMarksSelected(true, {WTNVMark(), mark});
  EXPECT_TRUE(mark.wGetIsSelected());
}

TEST_F(TNVHandlerMarkTest, POISizeStaysWithoutAnImage) {
  TNVTrainSet unreadable("missing.png", "");
  unreadable.loadImage();
  handler.trainSet = &unreadable;
  const WTNVMark mark = box(0.5, 0.5);
  wrapper.wSetPOISize(mark, 0.1);
  EXPECT_EQ(cv::Point2d(0, 0), mark.getNativeMark()->poiSize);
}

#include "editing/TNVType.h"

#include <gtest/gtest.h>

namespace {

using Names = std::vector<std::string>;

struct ValueRow {
  const char* name;
  int value;
};

template <class Table>
void expectNames(const Names& names) {
  EXPECT_EQ(Table().getNames(), names);
  for (const std::string& name : names)
    EXPECT_EQ(Table().getByName(name).name, name);
}

template <class Table>
void expectValues(const std::vector<ValueRow>& rows) {
  const auto types = Table().getTypes();
  ASSERT_EQ(types.size(), rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(types[i].name, rows[i].name);
    EXPECT_EQ(types[i].value, rows[i].value);
    EXPECT_EQ(Table().getByName(rows[i].name).value, rows[i].value);
  }
}

template <class Table>
void expectFirstRowFor(const std::string& unknown) {
  const Table row = Table().getByName(unknown);
  EXPECT_EQ(row.name, Table().getTypes().front().name) << "for '" << unknown << "'";
}

template <class Table>
class TNVTypeOfAnyTable : public ::testing::Test {};

using AllTables =
    ::testing::Types<TNVTypeMarkForm, TNVTypeAssist, TNVTypeGeneration, TNVTypeMarkMode,
                     TNVTypeDrawInfo, TNVTypeHelperMode, TNVTypeCrossStyle, TNVTypeMarkStyleSet>;
TYPED_TEST_SUITE(TNVTypeOfAnyTable, AllTables);

}  // namespace

TYPED_TEST(TNVTypeOfAnyTable, UnknownNameGivesTheFirstRow) {
  const std::string first = TypeParam().getTypes().front().name;
  for (const std::string& unknown :
       {std::string("default"), std::string(), std::string("nothing of the kind"), first + " ",
        " " + first, first + std::string(1, '\0'), first.substr(1)}) {
    expectFirstRowFor<TypeParam>(unknown);
  }
}

TYPED_TEST(TNVTypeOfAnyTable, NameInTheWrongCaseGivesTheFirstRow) {
  std::string lower = TypeParam().getTypes().back().name;
  for (char& c : lower)
    c = static_cast<char>(std::tolower(c));
  expectFirstRowFor<TypeParam>(lower);
}

TYPED_TEST(TNVTypeOfAnyTable, LookUpDoesNotDependOnTheRowThatIsAsked) {
  for (const TypeParam& row : TypeParam().getTypes()) {
    EXPECT_EQ(row.getByName(TypeParam().getTypes().back().name).name,
              TypeParam().getTypes().back().name);
    EXPECT_EQ(row.getNames(), TypeParam().getNames());
  }
}

TYPED_TEST(TNVTypeOfAnyTable, ListsOfRowsAreIndependent) {
  auto changed = TypeParam().getTypes();
  const auto other = TypeParam().getTypes();
  const std::string first = other.front().name;
  changed.front().name = "changed";
  changed.pop_back();
  EXPECT_EQ(other.front().name, first);
  EXPECT_EQ(TypeParam().getTypes().front().name, first);
  EXPECT_EQ(TypeParam().getTypes().size(), other.size());
}

TYPED_TEST(TNVTypeOfAnyTable, DefaultIsNeverARowsName) {
  EXPECT_NE(TypeParam().name, "default");
  for (const std::string& name : TypeParam().getNames())
    EXPECT_NE(name, "default");
}

TYPED_TEST(TNVTypeOfAnyTable, DefaultMadeObjectIsARowOfTheTable) {
  EXPECT_EQ(TypeParam().getByName(TypeParam().name).name, TypeParam().name);
}

TEST(TNVTypeMarkForm, RowsInOrder) {
  expectNames<TNVTypeMarkForm>({"Rect", "Rect Center", "Point", "Image", "Circle",
                                "Circle Multiple", "Line", "PolyLine", "PolyLine Closed", "Ellipse",
                                "Ellipse Multiple"});
}

TEST(TNVTypeMarkForm, StartsAsRect) {
  EXPECT_EQ(TNVTypeMarkForm().name, "Rect");
}

TEST(TNVTypeMarkForm, LowerCaseNameIsRect) {
  EXPECT_EQ(TNVTypeMarkForm().getByName("rect").name, "Rect");
  EXPECT_EQ(TNVTypeMarkForm().getByName("circle").name, "Rect");
}

TEST(TNVTypeAssist, RowsInOrder) {
  expectNames<TNVTypeAssist>({"None", "GrabCut"});
}

TEST(TNVTypeAssist, StartsAsGrabCutThoughNoneIsFirst) {
  EXPECT_EQ(TNVTypeAssist().name, "GrabCut");
  EXPECT_EQ(TNVTypeAssist().getByName("?").name, "None");
}

TEST(TNVTypeGeneration, DarknetIsTheOnlyRow) {
  expectNames<TNVTypeGeneration>({"Darknet"});
  EXPECT_EQ(TNVTypeGeneration().name, "Darknet");
}

TEST(TNVTypeMarkMode, RowsInOrder) {
  expectNames<TNVTypeMarkMode>({"Create", "Edit", "POI"});
  expectValues<TNVTypeMarkMode>({{"Create", 1}, {"Edit", 2}, {"POI", 3}});
}

TEST(TNVTypeMarkMode, StartsAsCreate) {
  EXPECT_EQ(TNVTypeMarkMode().name, "Create");
  EXPECT_EQ(TNVTypeMarkMode().value, 1);
}

TEST(TNVTypeDrawInfo, RowsInOrder) {
  expectNames<TNVTypeDrawInfo>(
      {"None", "DNN Class ID", "DNN Class Name", "Pixel", "Pixel Relative", "Relative"});
  expectValues<TNVTypeDrawInfo>({{"None", 0},
                                 {"DNN Class ID", 1},
                                 {"DNN Class Name", 2},
                                 {"Pixel", 3},
                                 {"Pixel Relative", 4},
                                 {"Relative", 5}});
}

TEST(TNVTypeDrawInfo, StartsAsClassIdThoughNoneIsFirst) {
  EXPECT_EQ(TNVTypeDrawInfo().name, "DNN Class ID");
  EXPECT_EQ(TNVTypeDrawInfo().value, 1);
  EXPECT_EQ(TNVTypeDrawInfo().getByName("?").value, 0);
}

TEST(TNVTypeHelperMode, RowsInOrder) {
  expectNames<TNVTypeHelperMode>({"Normal", "Gray", "Improve", "Edge", "Edge x2"});
  expectValues<TNVTypeHelperMode>(
      {{"Normal", 1}, {"Gray", 2}, {"Improve", 3}, {"Edge", 4}, {"Edge x2", 5}});
}

TEST(TNVTypeHelperMode, StartsAsNormal) {
  EXPECT_EQ(TNVTypeHelperMode().name, "Normal");
  EXPECT_EQ(TNVTypeHelperMode().value, 1);
}

TEST(TNVTypeHelperMode, ImprovedIsNoRow) {
  EXPECT_EQ(TNVTypeHelperMode().getByName("Improved").name, "Normal");
  EXPECT_EQ(TNVTypeHelperMode().getByName("Improved").value, 1);
}

TEST(TNVTypeCrossStyle, RowsInOrder) {
  struct Row {
    const char* name;
    cv::Scalar color;
    int thickness;
    int shape;
  };
  const std::vector<Row> rows{{"White Cross", {255, 255, 255, 0}, 1, 1},
                              {"White Circle", {255, 255, 255, 0}, 1, 2},
                              {"Black Cross", {0, 0, 0, 0}, 1, 1},
                              {"Black Circle", {0, 0, 0, 0}, 1, 2}};
  expectNames<TNVTypeCrossStyle>({"White Cross", "White Circle", "Black Cross", "Black Circle"});
  for (const Row& row : rows) {
    const TNVTypeCrossStyle style = TNVTypeCrossStyle().getByName(row.name);
    EXPECT_EQ(style.color, row.color) << row.name;
    EXPECT_EQ(style.thickness, row.thickness) << row.name;
    EXPECT_EQ(style.shape, row.shape) << row.name;
  }
}

TEST(TNVTypeCrossStyle, StartsAsWhiteCross) {
  const TNVTypeCrossStyle style;
  EXPECT_EQ(style.name, "White Cross");
  EXPECT_EQ(style.color, cv::Scalar(255, 255, 255, 0));
  EXPECT_EQ(style.thickness, 1);
  EXPECT_EQ(style.shape, 1);
}

namespace {

struct StyleRow {
  const char* name;
  cv::Scalar normal;
  cv::Scalar hovered;
  cv::Scalar selected;
  cv::Scalar spare;
};

void expectStyle(const TNVTypeMarkStyleSet& style, const StyleRow& row) {
  SCOPED_TRACE(row.name);
  EXPECT_EQ(style.name, row.name);
  EXPECT_EQ(style.colorNormal, row.normal);
  EXPECT_EQ(style.thicknessNormal, 1);
  EXPECT_EQ(style.colorHovered, row.hovered);
  EXPECT_EQ(style.thicknessHovered, 2);
  EXPECT_EQ(style.colorSelected, row.selected);
  EXPECT_EQ(style.thicknessSelected, 1);
  EXPECT_EQ(style.colorSpare, row.spare);
  EXPECT_EQ(style.thicknessSpare, 1);
  EXPECT_FALSE(style.drawFilled);
}

}  // namespace

TEST(TNVTypeMarkStyleSet, RowsInOrder) {
  const std::vector<StyleRow> rows{
      {"Colored", {-1, -1, -1, 0}, {0, 255, 0, 0}, {0, 0, 255, 0}, {-1, -1, -1, 0}},
      {"White", {255, 255, 255, 0}, {0, 255, 0, 0}, {0, 0, 255, 0}, {0, 0, 255, 0}},
      {"Black", {0, 0, 0, 0}, {0, 255, 0, 0}, {0, 0, 255, 0}, {0, 0, 255, 0}},
      {"Blue", {255, 64, 64, 0}, {255, 32, 32, 0}, {255, 255, 255, 0}, {255, 255, 255, 0}},
      {"Red", {64, 64, 255, 0}, {32, 32, 255, 0}, {255, 255, 255, 0}, {255, 255, 255, 0}}};
  expectNames<TNVTypeMarkStyleSet>({"Colored", "White", "Black", "Blue", "Red"});
  for (const StyleRow& row : rows)
    expectStyle(TNVTypeMarkStyleSet().getByName(row.name), row);
}

TEST(TNVTypeMarkStyleSet, StartsAsWhiteThoughColoredIsFirst) {
  expectStyle(TNVTypeMarkStyleSet(),
              {"White", {255, 255, 255, 0}, {0, 255, 0, 0}, {0, 0, 255, 0}, {0, 0, 255, 0}});
  EXPECT_EQ(TNVTypeMarkStyleSet().getByName("Purple").name, "Colored");
}

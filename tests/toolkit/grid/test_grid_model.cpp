// The value rules of grid cells, without a display.
#include <gtest/gtest.h>

#include <string>

#include "toolkit/grid/grid_model.h"

namespace {

GridModel model_of(std::initializer_list<int> types, int rows) {
  GridModel m;
  for (int t : types) {
    GridColumn c;
    c.cellType = t;
    m.columns.push_back(c);
  }
  m.maxRows = rows;
  yyGridModelResize(m, rows);
  return m;
}

TEST(GridModel, ResizeKeepsSurvivorsAndGrowsEmpty) {
  GridModel m = model_of({grid_type::kString, grid_type::kReal}, 5);
  yyGridModelStore(m.columns[0], 1, "kept", 0.0);
  yyGridModelStore(m.columns[1], 1, "2.5", 0.0);
  yyGridModelStore(m.columns[0], 4, "dropped", 0.0);
  yyGridModelStore(m.columns[1], 4, "9", 0.0);
  yyGridModelResize(m, 2);
  EXPECT_EQ(yyGridModelText(m.columns[0], 1), "kept");
  EXPECT_DOUBLE_EQ(m.columns[1].numbers[1], 2.5);
  yyGridModelResize(m, 5);
  EXPECT_EQ(yyGridModelText(m.columns[0], 4), "");
  EXPECT_EQ(yyGridModelText(m.columns[1], 4), "");
  EXPECT_EQ(m.columns[1].cellFlags[4], 0u);
}

TEST(GridModel, TextIntoNumericCells) {
  GridModel m = model_of({grid_type::kInteger, grid_type::kReal, grid_type::kDouble}, 2);
  for (GridColumn& c : m.columns) {
    yyGridModelStore(c, 0, "12", 0.0);
    ASSERT_TRUE(c.cellFlags[0] & grid_cell::kHasValue);
    // Not a number: the cell loses its value and reads back empty.
    yyGridModelStore(c, 0, "abc", 0.0);
    EXPECT_FALSE(c.cellFlags[0] & grid_cell::kHasValue);
    EXPECT_EQ(yyGridModelText(c, 0), "");
    double v = 1;
    bool defined = true;
    yyGridModelNumber(c, 0, v, defined);
    EXPECT_FALSE(defined);
  }
  // A number given with the text wins over the text.
  yyGridModelStore(m.columns[2], 1, "ignored", 0.125);
  EXPECT_DOUBLE_EQ(m.columns[2].numbers[1], 0.125);
  EXPECT_TRUE(m.columns[2].cellFlags[1] & grid_cell::kHadNumber);
}

TEST(GridModel, ValuesOfEveryTypeGoRoundTrip) {
  GridModel m = model_of({grid_type::kString, grid_type::kInteger, grid_type::kReal, grid_type::kDouble,
                          grid_type::kCheckbox, grid_type::kCombo},
                         1);
  m.columns[5].options = {"alpha", "beta", "gamma"};
  yyGridModelStore(m.columns[0], 0, "1 0 0 0 -1 0 0 0 -1", 0.0);
  yyGridModelStoreNumber(m.columns[1], 0, -42);
  yyGridModelStoreNumber(m.columns[2], 0, 1.5);
  yyGridModelStoreNumber(m.columns[3], 0, 2.25);
  yyGridModelStoreNumber(m.columns[4], 0, 1);
  yyGridModelStoreNumber(m.columns[5], 0, 3);
  EXPECT_EQ(yyGridModelText(m.columns[0], 0), "1 0 0 0 -1 0 0 0 -1");
  EXPECT_EQ(yyGridModelText(m.columns[1], 0), "-42");
  double v = 0;
  bool defined = false;
  for (int c = 1; c <= 3; ++c) {
    yyGridModelNumber(m.columns[c], 0, v, defined);
    EXPECT_TRUE(defined);
  }
  yyGridModelNumber(m.columns[2], 0, v, defined);
  EXPECT_DOUBLE_EQ(v, 1.5);
  yyGridModelNumber(m.columns[3], 0, v, defined);
  EXPECT_DOUBLE_EQ(v, 2.25);
  EXPECT_EQ(yyGridModelText(m.columns[4], 0), "1");
  EXPECT_EQ(yyGridModelText(m.columns[5], 0), "3");
  EXPECT_EQ(yyGridClipText(m, 0, 0, 5, 0), "1 0 0 0 -1 0 0 0 -1\t-42\t1.5000\t2.2500\tYes\tgamma\n");
  // Option 1 and an unchecked box hold no value, but still read as themselves.
  yyGridModelStoreNumber(m.columns[4], 0, 0);
  yyGridModelStoreNumber(m.columns[5], 0, 1);
  EXPECT_FALSE(m.columns[4].cellFlags[0] & grid_cell::kHasValue);
  EXPECT_FALSE(m.columns[5].cellFlags[0] & grid_cell::kHasValue);
  EXPECT_EQ(yyGridClipText(m, 4, 0, 5, 0), "No\talpha\n");
}

TEST(GridModel, PasteFollowsTheColumnRules) {
  GridModel m = model_of({grid_type::kInteger, grid_type::kReal, grid_type::kCombo, grid_type::kCheckbox}, 3);
  m.columns[1].minimum = 0;
  m.columns[1].maximum = 10;
  m.columns[2].options = {"alpha", "beta"};
  int lc = -1, lr = -1;
  ASSERT_TRUE(yyGridModelPaste(m, 0, 0, "1.5\t2d0\tbeta\tYes\n1E3\t11\tdelta\tno\n", lc, lr));
  EXPECT_EQ(lc, 3);
  EXPECT_EQ(lr, 1);
  EXPECT_DOUBLE_EQ(m.columns[0].numbers[0], 1.0);          // "." ends an integer
  EXPECT_DOUBLE_EQ(m.columns[1].numbers[0], 2.0);          // D exponent read as E
  EXPECT_DOUBLE_EQ(m.columns[2].numbers[0], 2.0);
  EXPECT_TRUE(m.columns[3].cellFlags[0] & grid_cell::kHasValue);
  EXPECT_FALSE(m.columns[0].cellFlags[1] & grid_cell::kHasValue);  // exponent in an integer
  EXPECT_FALSE(m.columns[1].cellFlags[1] & grid_cell::kHasValue);  // out of range
  EXPECT_EQ(yyGridModelText(m.columns[2], 1), "1");                // no such option
  EXPECT_FALSE(m.columns[3].cellFlags[1] & grid_cell::kHasValue);
  EXPECT_TRUE(m.modified && m.changed);
}

TEST(GridModel, PasteStopsAtTheEdgesAndSparesReadOnlyCells) {
  GridModel m = model_of({grid_type::kString, grid_type::kString}, 3);
  std::string block;
  for (int r = 0; r < 1000; ++r) block += "a" + std::to_string(r) + "\tb" + std::to_string(r) + "\tc\n";
  m.columns[1].cellFlags[2] |= grid_cell::kReadOnly;
  int lc = -1, lr = -1;
  ASSERT_TRUE(yyGridModelPaste(m, 0, 1, block, lc, lr));
  EXPECT_EQ(m.rows, 3);
  EXPECT_EQ(yyGridModelText(m.columns[0], 0), "");
  EXPECT_EQ(yyGridModelText(m.columns[0], 1), "a0");
  EXPECT_EQ(yyGridModelText(m.columns[1], 1), "b0");
  EXPECT_EQ(yyGridModelText(m.columns[0], 2), "a1");
  EXPECT_EQ(yyGridModelText(m.columns[1], 2), "");
  EXPECT_EQ(lr, 2);
  int rows = 0, columns = 0;
  yyGridClipCount(block, rows, columns);
  EXPECT_EQ(rows, 1000);
  EXPECT_EQ(columns, 3);
}

TEST(GridModel, LongItemsAreCutToWhatTheCellTakes) {
  GridModel m = model_of({grid_type::kString}, 2);
  m.columns[0].charLimit = 5;
  int lc = 0, lr = 0;
  ASSERT_TRUE(yyGridModelPaste(m, 0, 0, "abcdefgh\r\n" + std::string(40000, 'x'), lc, lr));
  EXPECT_EQ(yyGridModelText(m.columns[0], 0), "abcde");
  m.columns[0].charLimit = 0;
  ASSERT_TRUE(yyGridModelPaste(m, 0, 1, std::string(40000, 'y'), lc, lr));
  EXPECT_EQ(m.columns[0].strings[1].size(), kGridPasteItem);
  int rows = 0, columns = 0;
  yyGridClipCount("a\tb", rows, columns);
  EXPECT_EQ(rows, 1);
  EXPECT_EQ(columns, 2);
  yyGridClipCount("a\nb\tc\td\n", rows, columns);  // the last LF starts no row
  EXPECT_EQ(rows, 2);
  EXPECT_EQ(columns, 3);
}

}  // namespace

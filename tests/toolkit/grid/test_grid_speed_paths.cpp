// The fast paths of the grid against the general ones they stand in for:
// numbers written by the one-pass formatter must be the text the general
// formatter gives, byte for byte; the key sort must order as the padded
// comparison does, keep equal keys in place and put empty cells last; a save
// in pieces must be the whole text.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "toolkit/base/zelvy_data.h"
#include "toolkit/grid/grid_commands.h"
#include "toolkit/grid/grid_csv.h"
#include "toolkit/grid/grid_model.h"

namespace {

GridColumn column(int type, std::string format = {}) {
  GridColumn c;
  c.cellType = type;
  c.format = std::move(format);
  return c;
}

GridModel model_of(std::vector<GridColumn> columns, int rows) {
  GridModel m;
  m.columns = std::move(columns);
  m.maxRows = rows;
  yyGridModelResize(m, rows);
  return m;
}

// What the general formatter writes, the way the save cuts it.
std::string general(const GridColumn& c, double v) {
  return yyGridNumberText(c, c.cellType == grid_type::kReal ? static_cast<float>(v) : v).substr(0, 50);
}

std::string fast(const GridFastFormat& f, const GridColumn& c, double v) {
  if (c.cellType == grid_type::kReal) v = static_cast<float>(v);
  char buf[kGridNumberWidth + 8];
  std::size_t n = 0;
  if (!yyGridFastNumber(f, v, buf, n)) return general(c, v);
  return std::string(buf, n);
}

}  // namespace

TEST(GridFastNumbers, WriteWhatTheGeneralFormatterWrites) {
  const std::vector<std::string> formats = {"(G15.5E2)", "(G24.15E3)", "(G12.4)", "(F10.4)", "(F5.2)", "(F4.1)",
                                            "(E12.4)",   "(E10.3E3)",  "(E9.2)",  "(G8.3E1)", "(F20.10)", "(G10.1)"};
  std::vector<double> values = {0.0,     -0.0,    0.5,      -0.5,     0.05,     -0.05,   1.0,     -1.0,
                                9.99995, 99999.5, 9999.95,  0.099995, 1e-5,     1e-300,  5e-324,  1e99,
                                1e100,   -1e100,  1e300,    123456789.0, 0.1,   2.5,     -2.5,    1e15,
                                -999.0,  1234.5678, 0.00012345, 999999.9, 1e-99, 1e-100, 3.0e38, -3.0e38};
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> mantissa(-10.0, 10.0);
  std::uniform_int_distribution<int> exponent(-12, 12);
  for (int i = 0; i < 3000; ++i) values.push_back(mantissa(random) * std::pow(10.0, exponent(random)));
  for (int i = 0; i < 500; ++i) values.push_back(std::round(mantissa(random) * 1e4) / 1e4);
  int checked = 0;
  for (const std::string& format : formats) {
    const GridFastFormat f = yyGridFastFormat(format);
    ASSERT_NE(f.kind, 0) << format;
    for (int type : {grid_type::kReal, grid_type::kDouble}) {
      const GridColumn c = column(type, format);
      for (double v : values) {
        ASSERT_EQ(fast(f, c, v), general(c, v)) << format << " " << v << " type " << type;
        ++checked;
      }
    }
  }
  EXPECT_GT(checked, 80000);
  // Forms it doesn't know are left to the general formatter.
  for (const char* other : {"(2F10.4)", "(1X,F8.2)", "(f10.4)", "(I5)", "(G15.5E2", "F10.4", "(F60.4)", "(F10.0)"})
    EXPECT_EQ(yyGridFastFormat(other).kind, 0) << other;
  // Numbers that are no numbers are said by the general one.
  char buf[64];
  std::size_t n = 0;
  EXPECT_FALSE(yyGridFastNumber(yyGridFastFormat("(F10.4)"), std::numeric_limits<double>::infinity(), buf, n));
  EXPECT_FALSE(yyGridFastNumber(yyGridFastFormat("(G15.5E2)"), std::nan(""), buf, n));
}

TEST(GridFastNumbers, SavedFilesMatchTheGeneralPathAndComeInWholeRows) {
  GridModel m = model_of({column(grid_type::kString), column(grid_type::kInteger), column(grid_type::kReal),
                          column(grid_type::kDouble, "(F12.5)"), column(grid_type::kDouble)},
                         30000);
  std::mt19937 random(11);
  for (int r = 0; r < m.rows; ++r) {
    if (r % 9) yyGridModelStore(m.columns[0], r, "name \"" + std::to_string(r) + "\", x", 0.0);
    if (r % 5) yyGridModelStoreNumber(m.columns[1], r, static_cast<int>(random() % 2001) - 1000);
    if (r % 7) yyGridModelStoreNumber(m.columns[2], r, static_cast<float>((random() % 200000) / 7.0 - 9000));
    yyGridModelStoreNumber(m.columns[3], r, (static_cast<double>(random() % 20000000) - 1e7) / 300.0);
    if (r % 3) yyGridModelStoreNumber(m.columns[4], r, std::ldexp(static_cast<double>(random()), -(r % 60)));
  }
  GridSaveOptions o;
  o.undefinedValues = true;
  const std::string whole = yyGridModelSaveText(m, 0, 4, 0, m.rows - 1, o);
  // The same text, line by line, from the general formatter.
  std::string expected;
  for (int r = 0; r < m.rows; ++r) {
    const GridColumn* c = m.columns.data();
    const bool has[5] = {!c[0].strings[r].empty(), (c[1].cellFlags[r] & grid_cell::kHasValue) != 0,
                         (c[2].cellFlags[r] & grid_cell::kHasValue) != 0, true,
                         (c[4].cellFlags[r] & grid_cell::kHasValue) != 0};
    expected += "\"" + yyexpandquotes(c[0].strings[r]) + "\",";
    expected += (has[1] ? std::to_string(static_cast<int>(c[1].numbers[r])) : "-999") + ",";
    expected += general(c[2], has[2] ? c[2].numbers[r] : o.realUndefined) + ",";
    expected += general(c[3], c[3].numbers[r]) + ",";
    expected += general(c[4], has[4] ? c[4].numbers[r] : o.doubleUndefined) + "\n";
  }
  ASSERT_EQ(whole, expected);

  std::vector<std::string> pieces;
  EXPECT_TRUE(yyGridModelSaveChunks(m, 0, 4, 0, m.rows - 1, o, [&](std::string_view p) {
    pieces.emplace_back(p);
    return true;
  }));
  ASSERT_GT(pieces.size(), 1u);
  std::string joined;
  for (const std::string& p : pieces) {
    EXPECT_EQ(p.back(), '\n');
    joined += p;
  }
  EXPECT_EQ(joined, whole);
  // A sink that refuses stops the save at once.
  int calls = 0;
  EXPECT_FALSE(yyGridModelSaveChunks(m, 0, 4, 0, m.rows - 1, o, [&](std::string_view) { return ++calls < 0; }));
  EXPECT_EQ(calls, 1);

  // With a decimal comma the general formatter writes every number.
  auto& d = zelvy_data::data();
  const int decimal = d.idecimal;
  const char comma = d.cdecimal;
  d.idecimal = 1;
  d.cdecimal = ',';
  const std::string withComma = yyGridModelSaveText(m, 3, 3, 0, 0, GridSaveOptions{});
  d.idecimal = decimal;
  d.cdecimal = comma;
  EXPECT_NE(withComma.find(','), std::string::npos) << withComma;
}

TEST(GridKeySort, KeysOrderAndEmptiesGoLast) {
  GridModel m = model_of({column(grid_type::kString), column(grid_type::kInteger), column(grid_type::kReal),
                          column(grid_type::kCheckbox), column(grid_type::kCombo)},
                         4);
  GridColumn& s = m.columns[0];
  yyGridModelStore(s, 0, "abc", 0.0);
  EXPECT_EQ(yygridgetany(s, 0, grid_sort::kIgnoreCase).text, "ABC");
  EXPECT_EQ(yygridgetany(s, 0, 0).text, "abc");
  EXPECT_EQ(yygridgetany(s, 1, 0).text, "\xFF");
  EXPECT_EQ(yygridgetany(s, 1, grid_sort::kDescending).text, " ");
  EXPECT_EQ(yygridgetany(m.columns[1], 1, 0).number, 2147483647.0);
  EXPECT_EQ(yygridgetany(m.columns[1], 1, grid_sort::kDescending).number, -2147483647.0);
  EXPECT_EQ(yygridgetany(m.columns[2], 1, 0).number, std::numeric_limits<float>::max());
  EXPECT_EQ(yygridgetany(m.columns[4], 1, 0).number, 1.0);  // a combo without a choice is option 1
  yyGridModelStoreNumber(m.columns[3], 2, 1.0);
  EXPECT_EQ(yygridgetany(m.columns[3], 2, 0).number, 1.0);
  EXPECT_EQ(yygridgetany(m.columns[3], 1, 0).number, 0.0);

  // Texts past the sixteen bytes that most comparisons look at, blanks padding
  // the shorter, a tab below a blank; equal keys keep their rows' order.
  const std::vector<std::string_view> keys = {"abcdefghijklmnop2", "abcdefghijklmnop", "abcdefghijklmnop\t",
                                              "abcdefghijklmnop1", "ab", "ab  ", "\xFF", "abcdefghijklmnop"};
  std::vector<int> order;
  yygridsort_(order, keys, 10, false);
  EXPECT_EQ(order, (std::vector<int>{14, 15, 12, 11, 17, 13, 10, 16}));
  yygridsort_(order, keys, 0, true);
  EXPECT_EQ(order, (std::vector<int>{6, 0, 3, 1, 7, 2, 4, 5}));
  const std::vector<double> numbers = {3.0, -1.0, 3.0, 2147483647.0, -0.0, 0.0, -5.5};
  yygridsort_(order, numbers, 0, false);
  EXPECT_EQ(order, (std::vector<int>{6, 1, 4, 5, 0, 2, 3}));
  yygridsort_(order, numbers, 0, true);
  EXPECT_EQ(order, (std::vector<int>{3, 0, 2, 4, 5, 1, 6}));
}

TEST(GridKeySort, LargeSortsAgreeWithARowByRowSortAndSwapsMoveEverything) {
  // Random names with long common beginnings, some empty, sorted both ways,
  // folded and not, against a plain stable sort of the rows.
  constexpr int kRows = 5000;
  GridModel m = model_of({column(grid_type::kString), column(grid_type::kDouble)}, kRows);
  std::mt19937 random(3);
  for (int r = 0; r < kRows; ++r) {
    std::string name = (random() % 3 ? "reflection number " : "refl ") + std::to_string(random() % 300);
    if (random() % 2) name[0] = 'R';
    if (random() % 11 == 0) name.clear();
    yyGridModelStore(m.columns[0], r, name, 0.0);
    yyGridModelStoreNumber(m.columns[1], r, r);
  }
  for (int options : {0, grid_sort::kDescending, grid_sort::kIgnoreCase, grid_sort::kDescending | grid_sort::kIgnoreCase}) {
    GridModel sorted = m;
    yyGridModelSort(sorted, 0, options, 0, kRows - 1);
    std::vector<int> rows(kRows);
    for (int r = 0; r < kRows; ++r) rows[r] = r;
    auto key = [&](int r) {
      std::string k = m.columns[0].strings[r];
      if (options & grid_sort::kIgnoreCase)
        for (char& ch : k) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
      return k;
    };
    std::stable_sort(rows.begin(), rows.end(), [&](int a, int b) {
      const std::string ka = key(a), kb = key(b);
      if (ka.empty() || kb.empty()) return !ka.empty() && kb.empty();
      return (options & grid_sort::kDescending) ? ka > kb : ka < kb;
    });
    for (int r = 0; r < kRows; ++r) {
      ASSERT_EQ(sorted.columns[1].numbers[r], rows[r]) << "options " << options << " row " << r;
      ASSERT_EQ(sorted.columns[0].strings[r], m.columns[0].strings[rows[r]]);
    }
  }

  GridModel s = model_of({column(grid_type::kString), column(grid_type::kInteger)}, 3);
  yyGridModelStore(s.columns[0], 0, "first", 0.0);
  yyGridModelStoreNumber(s.columns[1], 0, 7);
  s.columns[1].cellFlags[2] |= grid_cell::kReadOnly;
  s.rowLabels[0] = "one";
  s.rowLabels[2] = "three";
  yyGridModelSwapRows(s, 0, 2, false);
  EXPECT_EQ(s.columns[0].strings[2], "first");
  EXPECT_EQ(s.columns[1].numbers[2], 7);
  EXPECT_TRUE(s.columns[1].cellFlags[0] & grid_cell::kReadOnly);
  EXPECT_EQ(s.rowLabels[0], "one");
  yyGridModelSwapRows(s, 0, 2, true);
  EXPECT_EQ(s.columns[0].strings[0], "first");
  EXPECT_EQ(s.rowLabels[0], "three");
  EXPECT_TRUE(s.modified && s.changed);
}

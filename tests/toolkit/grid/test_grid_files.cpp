// Grid files, sorting, finding and moving rows on the grid's values, without
// a display. The files are read back by Python's csv module as an outside
// judge of the format.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "toolkit/grid/grid_commands.h"
#include "toolkit/grid/grid_csv.h"
#include "toolkit/grid/grid_model.h"

namespace fs = std::filesystem;

namespace {

using Rows = std::vector<std::vector<std::string>>;

// Name, count, value, note: the shape of most grids of these tests.
GridModel sheet(int rows) {
  GridModel m;
  for (int type : {grid_type::kString, grid_type::kInteger, grid_type::kDouble, grid_type::kString}) {
    GridColumn c;
    c.cellType = type;
    c.format = type == grid_type::kDouble ? "(F12.4)" : "";
    m.columns.push_back(c);
  }
  m.maxRows = 200000;
  yyGridModelResize(m, rows);
  return m;
}

void put(GridModel& m, int row, std::vector<std::string> cells) {
  for (std::size_t c = 0; c < cells.size(); ++c) yyGridModelStore(m.columns[c], row, cells[c], 0.0);
}

std::string text(const GridModel& m, int column, int row) {
  return yyGridModelText(m.columns[static_cast<std::size_t>(column)], row);
}

Rows cells(const GridModel& m) {
  Rows out;
  for (int r = 0; r < m.rows; ++r) {
    out.emplace_back();
    for (int c = 0; c < m.columnCount(); ++c) out.back().push_back(text(m, c, r));
  }
  return out;
}

class GridFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    dir = fs::temp_directory_path() / ("grid_files_" + std::to_string(::getpid()));
    fs::create_directories(dir);
  }
  void TearDown() override { fs::remove_all(dir); }

  fs::path write(const std::string& name, const std::string& data) {
    const fs::path p = dir / name;
    std::ofstream(p, std::ios::binary) << data;
    return p;
  }
  static std::string read(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
  }
  // Runs a Python script with the file as argv[1]; its rows come back as
  // printed by `dump` (cells split by US, rows ended by RS).
  Rows python(const std::string& body, const fs::path& file) {
    const fs::path script = write("judge.py", "import csv, sys\n"
                                              "def dump(rows):\n"
                                              "    for row in rows:\n"
                                              "        sys.stdout.buffer.write('\\x1f'.join(row).encode('utf-8') + b'\\x1e')\n" +
                                                  body);
    FILE* p = popen(("/usr/bin/python3 " + script.string() + " " + file.string()).c_str(), "r");
    EXPECT_NE(p, nullptr);
    std::string out;
    char buf[65536];
    for (std::size_t n; p && (n = fread(buf, 1, sizeof buf, p)) > 0;) out.append(buf, n);
    EXPECT_EQ(pclose(p), 0);
    Rows rows;
    std::size_t start = 0;
    for (std::size_t end; (end = out.find('\x1e', start)) != std::string::npos; start = end + 1) {
      rows.emplace_back();
      const std::string line = out.substr(start, end - start);
      std::size_t s = 0;
      for (std::size_t e; (e = line.find('\x1f', s)) != std::string::npos; s = e + 1) rows.back().push_back(line.substr(s, e - s));
      rows.back().push_back(line.substr(s));
    }
    return rows;
  }

  fs::path dir;
};

const std::vector<std::vector<std::string>> kTricky = {
    {"plain", "1", "2.5", "note"},
    {"say \"hi\"", "-42", "", "a, b, c"},
    {"two\nlines", "", "1e3", "\"\""},
    {"", "7", "-0.125", ""},
    {"Å ängström — 日本", "2147483647", "3.14159", "tab\there"},
};

TEST_F(GridFiles, CsvRoundTripsAndPythonReadsWhatWeWrite) {
  GridModel m = sheet(static_cast<int>(kTricky.size()));
  for (std::size_t r = 0; r < kTricky.size(); ++r) put(m, static_cast<int>(r), kTricky[r]);
  const std::string saved = yyGridModelSaveText(m, 0, 3, 0, m.rows - 1, GridSaveOptions{});
  const fs::path file = write("tricky.csv", saved);
  EXPECT_EQ(python("dump(csv.reader(open(sys.argv[1], newline='', encoding='utf-8')))\n", file), cells(m));

  GridModel back = sheet(1);
  GridLoadOptions o;
  o.grow = true;
  EXPECT_EQ(yyGridModelLoad(back, read(file), o).error, 0);
  EXPECT_EQ(cells(back), cells(m));
  EXPECT_EQ(yyGridModelSaveText(back, 0, 3, 0, back.rows - 1, GridSaveOptions{}), saved);
  // Empty cells: an empty quoted string and nothing at all for a number.
  EXPECT_NE(saved.find("\"\",7,-0.1250,\"\"\n"), std::string::npos);
}

TEST_F(GridFiles, TsvHasNoQuotesAndPythonAgrees) {
  GridModel m = sheet(static_cast<int>(kTricky.size()));
  for (std::size_t r = 0; r < kTricky.size(); ++r) put(m, static_cast<int>(r), kTricky[r]);
  GridSaveOptions so;
  so.separator = yyGridFileSeparator("x.TSV");
  ASSERT_EQ(so.separator, '\t');
  const fs::path file = write("tricky.tsv", yyGridModelSaveText(m, 0, 3, 0, m.rows - 1, so));
  // A tab or line end inside a cell can't stand in the file: it went out as a blank.
  Rows expected = cells(m);
  for (auto& row : expected)
    for (auto& cell : row)
      for (char& ch : cell)
        if (ch == '\t' || ch == '\n') ch = ' ';
  EXPECT_EQ(python("dump(csv.reader(open(sys.argv[1], newline='', encoding='utf-8'), delimiter='\\t', "
                   "quoting=csv.QUOTE_NONE))\n",
                   file),
            expected);
  GridModel back = sheet(static_cast<int>(kTricky.size()));
  GridLoadOptions o;
  o.separator = '\t';
  EXPECT_EQ(yyGridModelLoad(back, read(file), o).error, 0);
  EXPECT_EQ(cells(back), expected);
  EXPECT_EQ(text(back, 3, 2), "\"\"");  // quotes are plain text here
}

TEST_F(GridFiles, LoadsWhatPythonWrites) {
  const fs::path file = dir / "python.csv";
  const Rows written = python(
      "rows = [['x,y', '1', '0.5', 'He said \"no\"'], ['multi\\nline\\r\\nend', '-3', '2', ''],\n"
      "        ['\\u00e9t\\u00e9', '', '', '\"'], ['', '0', '1e-2', 'last']]\n"
      "with open(sys.argv[1], 'w', newline='', encoding='utf-8') as f:\n"
      "    csv.writer(f).writerows(rows)\n"
      "dump(rows)\n",
      file);
  GridModel m = sheet(2);
  GridLoadOptions o;
  o.grow = true;
  ASSERT_EQ(yyGridModelLoad(m, read(file), o).error, 0);
  ASSERT_EQ(m.rows, 4);
  for (int r = 0; r < 4; ++r) {
    EXPECT_EQ(text(m, 0, r), written[static_cast<std::size_t>(r)][0]) << r;
    EXPECT_EQ(text(m, 3, r), written[static_cast<std::size_t>(r)][3]) << r;
  }
  EXPECT_EQ(text(m, 1, 1), "-3");
  EXPECT_EQ(text(m, 2, 3), "0.0100");
  EXPECT_EQ(text(m, 1, 2), "");
}

TEST_F(GridFiles, RaggedFilesClearWhatTheyDontReach) {
  GridModel m = sheet(4);
  for (int r = 0; r < 4; ++r) put(m, r, {"old", "9", "9", "old"});
  const auto r = yyGridModelLoad(m, "a,1,2.5,x,extra,more\nb\n\nc,2\r\n", GridLoadOptions{});
  EXPECT_EQ(r.error, 0);
  EXPECT_EQ(cells(m), (Rows{{"a", "1", "2.5000", "x"}, {"b", "", "", ""}, {"", "", "", ""}, {"c", "2", "", ""}}));
  // Fewer lines than rows: the rest is emptied, the row count stays.
  put(m, 3, {"old", "9", "9", "old"});
  EXPECT_EQ(yyGridModelLoad(m, "only\n", GridLoadOptions{}).error, 0);
  EXPECT_EQ(m.rows, 4);
  EXPECT_EQ(text(m, 0, 3), "");
}

TEST_F(GridFiles, BadCellsAreReportedAndTheLoadGoesOn) {
  GridModel m = sheet(3);
  m.columns[1].minimum = 0;
  m.columns[1].maximum = 100;
  auto r = yyGridModelLoad(m, "a,abc,1\nb,500,2\nc,5,3\n", GridLoadOptions{});
  EXPECT_EQ(r.error, 12);  // the first failure wins
  EXPECT_EQ(text(m, 1, 0), "");
  EXPECT_EQ(text(m, 1, 1), "");  // out of range: not stored
  EXPECT_EQ(text(m, 1, 2), "5");
  EXPECT_EQ(text(m, 0, 2), "c");
  EXPECT_EQ(yyGridModelLoad(m, "a,500\n", GridLoadOptions{}).error, 1009);
  EXPECT_EQ(yyGridModelLoad(m, "a,99999999999\n", GridLoadOptions{}).error, 4);

  // More lines than rows: 1054 without grow, and with it only up to the limit.
  EXPECT_EQ(yyGridModelLoad(m, "1\n2\n3\n4\n", GridLoadOptions{}).error, 1054);
  GridLoadOptions grow;
  grow.grow = true;
  m.maxRows = 5;
  EXPECT_EQ(yyGridModelLoad(m, "1\n2\n3\n4\n", grow).error, 0);
  EXPECT_EQ(m.rows, 4);
  EXPECT_EQ(yyGridModelLoad(m, "1\n2\n3\n4\n5\n6\n", grow).error, 1054);
  EXPECT_EQ(m.rows, 5);
}

TEST_F(GridFiles, LabelsCheckBoxesAndCombos) {
  GridModel m;
  GridColumn check, combo;
  check.cellType = grid_type::kCheckbox;
  combo.cellType = grid_type::kCombo;
  combo.options = {"alpha", "beta", "gamma"};
  m.columns = {check, combo};
  m.maxRows = 10;
  yyGridModelResize(m, 3);
  GridLoadOptions o;
  o.labels = o.columnLabelBar = o.rowLabelBar = true;
  const auto r = yyGridModelLoad(m, "corner,On,Kind\nr1,yes,beta\nr2,No,delta\nr3,YES,\n", o);
  EXPECT_EQ(r.error, 1055);
  EXPECT_TRUE(r.labelsChanged);
  EXPECT_EQ(m.columns[1].label, "Kind");
  EXPECT_EQ(m.rowLabels[1], "r2");
  EXPECT_EQ(cells(m), (Rows{{"1", "2"}, {"0", "1"}, {"1", "1"}}));
  GridSaveOptions so;
  so.labels = so.columnLabelBar = so.rowLabelBar = true;
  EXPECT_EQ(yyGridModelSaveText(m, 0, 1, 0, 2, so),
            "\"\",\"On\",\"Kind\"\n\"r1\",Yes,\"beta\"\n\"r2\",No,\"alpha\"\n\"r3\",Yes,\"alpha\"\n");
}

TEST_F(GridFiles, QuotesAndTheUndefinedValues) {
  EXPECT_EQ(yycompressquotes("\"a\"\"b\""), "a\"b");
  EXPECT_EQ(yyexpandquotes("a\"b"), "a\"\"b");
  GridModel m = sheet(1);
  ASSERT_EQ(yyGridModelLoad(m, "\"a\"\"b\",,,\"x  \"\n", GridLoadOptions{}).error, 0);
  EXPECT_EQ(text(m, 0, 0), "a\"b");
  EXPECT_EQ(text(m, 3, 0), "x");  // trailing blanks go
  GridSaveOptions so;
  EXPECT_EQ(yyGridModelSaveText(m, 0, 3, 0, 0, so), "\"a\"\"b\",,,\"x\"\n");
  so.undefinedValues = true;
  so.noQuotes = true;
  EXPECT_EQ(yyGridModelSaveText(m, 0, 3, 0, 0, so), "a\"b,-999,-999.0000,x\n");
  GridLoadOptions keep;
  keep.keepBlanks = true;
  yyGridModelLoad(m, "a,,,\"x  \"\n", keep);
  EXPECT_EQ(text(m, 3, 0), "x  ");
}

TEST_F(GridFiles, HundredThousandRowsRoundTrip) {
  constexpr int kRows = 100000;
  GridModel m = sheet(kRows);
  for (int r = 0; r < kRows; ++r)
    put(m, r, {"row " + std::to_string(r), std::to_string(r * 7 - 5000), std::to_string(r) + ".25",
               r % 10 ? "n\"" + std::to_string(r % 97) : ""});
  const std::string saved = yyGridModelSaveText(m, 0, 3, 0, kRows - 1, GridSaveOptions{});
  const fs::path file = write("big.csv", saved);
  const Rows counted = python("rows = list(csv.reader(open(sys.argv[1], newline='')))\n"
                              "dump([[str(len(rows)), str(sum(len(r) for r in rows)), rows[-1][0], rows[12345][3]]])\n",
                              file);
  EXPECT_EQ(counted, (Rows{{"100000", "400000", "row 99999", "n\"26"}}));
  GridModel back = sheet(1);
  GridLoadOptions o;
  o.grow = true;
  ASSERT_EQ(yyGridModelLoad(back, read(file), o).error, 0);
  EXPECT_EQ(back.rows, kRows);
  EXPECT_EQ(yyGridModelSaveText(back, 0, 3, 0, kRows - 1, GridSaveOptions{}), saved);
}

// ---- Sorting and finding ---------------------------------------------------------------

TEST(GridSort, EmptiesStayLastAndStringsCompareAsPadded) {
  GridModel m = sheet(6);
  put(m, 0, {"beta", "3"});
  put(m, 1, {"", ""});
  put(m, 2, {"Alpha", "10"});
  put(m, 3, {"ab", "-1"});
  put(m, 4, {"ab!", "3"});
  put(m, 5, {"alpha", ""});
  m.rowLabels = {"r0", "r1", "r2", "r3", "r4", "r5"};
  auto column = [&](int c) {
    std::vector<std::string> v;
    for (int r = 0; r < m.rows; ++r) v.push_back(text(m, c, r));
    return v;
  };
  yyGridModelSort(m, 0, 0, 0, 5);
  EXPECT_EQ(column(0), (std::vector<std::string>{"Alpha", "ab", "ab!", "alpha", "beta", ""}));
  EXPECT_EQ(column(1), (std::vector<std::string>{"10", "-1", "3", "", "3", ""}));  // rows moved whole
  EXPECT_EQ(m.rowLabels[0], "r0");  // labels stay without the option
  yyGridModelSort(m, 0, grid_sort::kDescending | grid_sort::kIgnoreCase | grid_sort::kMoveLabels, 0, 5);
  // Alpha and alpha tie when case is ignored, and keep their order.
  EXPECT_EQ(column(0), (std::vector<std::string>{"beta", "Alpha", "alpha", "ab!", "ab", ""}));
  EXPECT_EQ(m.rowLabels[0], "r4");
  yyGridModelSort(m, 1, 0, 0, 5);
  EXPECT_EQ(column(1), (std::vector<std::string>{"-1", "3", "3", "10", "", ""}));
  yyGridModelSort(m, 1, grid_sort::kDescending, 0, 5);
  EXPECT_EQ(column(1), (std::vector<std::string>{"10", "3", "3", "-1", "", ""}));
  // A part of the rows only.
  yyGridModelSort(m, 1, 0, 1, 3);
  EXPECT_EQ(column(1), (std::vector<std::string>{"10", "-1", "3", "3", "", ""}));
}

TEST(GridFind, OrderStartAndOptions) {
  GridModel m = sheet(3);
  put(m, 0, {"apple", "1", "", "pear"});
  put(m, 1, {"Pear", "12", "", ""});
  put(m, 2, {"fig", "112", "", "apple pie"});
  int c = 0, r = 0;
  // Column by column: the second column's hit is found after all of the first.
  ASSERT_TRUE(yyGridModelFind(m, "pear", 0, 0, 3, 0, 2, c, r));
  EXPECT_EQ(std::make_pair(c, r), std::make_pair(3, 0));
  ASSERT_TRUE(yyGridModelFind(m, "pear", grid_find::kIgnoreCase, 0, 3, 0, 2, c, r));
  EXPECT_EQ(std::make_pair(c, r), std::make_pair(0, 1));
  ASSERT_TRUE(yyGridModelFind(m, "pear", grid_find::kIgnoreCase | grid_find::kByRows, 0, 3, 0, 2, c, r));
  EXPECT_EQ(std::make_pair(c, r), std::make_pair(3, 0));
  // Numbers only with their option.
  EXPECT_FALSE(yyGridModelFind(m, "12", 0, 0, 3, 0, 2, c, r));
  ASSERT_TRUE(yyGridModelFind(m, "12", grid_find::kNumbersToo, 0, 3, 0, 2, c, r));
  EXPECT_EQ(std::make_pair(c, r), std::make_pair(1, 1));
  // From the current cell on: the next hit, then nothing past the last cell.
  c = 0, r = 0;
  ASSERT_TRUE(yyGridModelFind(m, "apple", grid_find::kFromCurrent, 0, 3, 0, 2, c, r));
  EXPECT_EQ(std::make_pair(c, r), std::make_pair(3, 2));
  EXPECT_FALSE(yyGridModelFind(m, "apple", grid_find::kFromCurrent, 0, 3, 0, 2, c, r));
}

// ---- Moving rows -------------------------------------------------------------------------------

TEST(GridRows, DeleteAndInsertKeepValuesExactly) {
  GridModel m = sheet(5);
  for (int r = 0; r < 5; ++r) put(m, r, {"r" + std::to_string(r), std::to_string(r), "0.123456789", ""});
  m.columns[1].cellFlags[4] |= grid_cell::kReadOnly;
  m.rowLabels = {"a", "b", "c", "d", "e"};
  // A count past the end deletes to the end; without shrink the rows stay, emptied.
  yyGridModelDeleteRows(m, 3, 10, false, true);
  EXPECT_EQ(m.rows, 5);
  EXPECT_EQ(text(m, 0, 2), "r2");
  EXPECT_EQ(text(m, 0, 3), "");
  EXPECT_EQ(m.rowLabels[3], "");
  EXPECT_TRUE(m.columns[1].cellFlags[4] & grid_cell::kReadOnly);  // the place keeps its state
  yyGridModelDeleteRows(m, 0, 1, true, true);
  EXPECT_EQ(m.rows, 4);
  EXPECT_EQ(text(m, 0, 0), "r1");
  EXPECT_EQ(m.rowLabels[0], "b");
  EXPECT_DOUBLE_EQ(m.columns[2].numbers[0], 0.123456789);  // no trip through the format
  // Insert with grow at the limit: the last row falls off.
  m.maxRows = 4;
  yyGridModelInsertRows(m, 1, 1, true, false);
  EXPECT_EQ(m.rows, 4);
  EXPECT_EQ(text(m, 0, 0), "r1");
  EXPECT_EQ(text(m, 0, 1), "");
  EXPECT_EQ(text(m, 0, 2), "r2");
  EXPECT_EQ(m.rowLabels[1], "c");  // labels stay without the option
  m.maxRows = 10;
  yyGridModelInsertRows(m, 0, 2, true, true);
  EXPECT_EQ(m.rows, 6);
  EXPECT_EQ(text(m, 0, 2), "r1");
  EXPECT_EQ(m.rowLabels[2], "b");
}

}  // namespace

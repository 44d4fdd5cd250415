// Text files printed through the PostScript hardcopy driver on a grid of
// columns by lines: pages, breaks, page ranges, carriage control, and the
// job file read back from the rendered page.
#include "tests/toolkit/editor/print_readback.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/graphics/graphics.h"

#include <gtest/gtest.h>

namespace {

using namespace print_readback;

class TextFilePrint : public ::testing::Test {
 protected:
  void SetUp() override {
    IGrInit("H");
    IGrHardcopySelect(1, zelv_graphics::kDriverPostScript);
    WInfoError(1);
  }
  // Prints `text` as a file and returns the document.
  std::string print(const std::string& text, const std::string& name = "text") {
    const auto in = scratch(name + ".txt"), out = scratch(name + ".ps");
    std::ofstream(in, std::ios::binary) << text;
    IGrHardcopyTextFile(in.string(), out.string(), "title");
    return read_file(out);
  }
  static void option(int number, int value) { IGrHardcopyOptions(number, value); }
};

// The texts drawn, unescaped, in order.
std::vector<std::string> drawn(const std::string& doc) {
  std::vector<std::string> out;
  for (const auto& l : lines_of(doc))
    if (l.size() >= 6 && l.front() == '(' && l.ends_with(") lsh")) out.push_back(l.substr(1, l.size() - 6));
  return out;
}

// Ten sections of 1000 lines, each after the first opened by a form feed;
// every line 7 in 100 holds tabs, every line 50 in 100 is 250 characters long.
std::string ten_thousand_lines() {
  std::string t;
  for (int i = 1; i <= 10000; ++i) {
    if (i > 1 && i % 1000 == 1) t += '\f';
    if (i % 100 == 50) {
      std::string l = "L" + std::to_string(i) + ":";
      while (l.size() < 250) l += static_cast<char>('a' + l.size() % 26);
      t += l;
    } else if (i % 100 == 7) {
      t += "t" + std::to_string(i) + "\tx\ty";
    } else {
      t += "line " + std::to_string(i);
    }
    t += '\n';
  }
  return t;
}

TEST_F(TextFilePrint, TenThousandLinesBreakIntoTheirPages) {
  // With wrap: a section is 1000 lines plus three more for each of its ten
  // long lines, 1030 on pages of 60: 18 pages. The form feed of the next
  // section comes on a page part-filled, so it ends it.
  option(106, 1);
  const std::string wrapped = print(ten_thousand_lines(), "wrapped");
  EXPECT_EQ(count_prefix(lines_of(wrapped), "gsave showpage grestore"), 180);
  const auto w = drawn(wrapped);
  EXPECT_EQ(w.size(), 10300u);
  // The long line 50 in pieces of 80 columns, one under the other.
  const auto at = std::find_if(w.begin(), w.end(), [](const std::string& s) { return s.rfind("L50:", 0) == 0; });
  ASSERT_NE(at, w.end());
  std::string l50 = "L50:";
  while (l50.size() < 250) l50 += static_cast<char>('a' + l50.size() % 26);
  EXPECT_EQ(*at, l50.substr(0, 80));
  EXPECT_EQ(*(at + 1), l50.substr(80, 80));
  EXPECT_EQ(*(at + 3), l50.substr(240));
  EXPECT_EQ(*(at + 4), "line 51");
  // Tabs go to the next multiple of 8.
  EXPECT_NE(std::find(w.begin(), w.end(), "t7      x       y"), w.end());

  // Without wrap the long lines are cut: 1000 lines, 17 pages a section.
  option(106, 0);
  const std::string cut = print(ten_thousand_lines(), "cut");
  EXPECT_EQ(count_prefix(lines_of(cut), "gsave showpage grestore"), 170);
  EXPECT_EQ(drawn(cut).size(), 10000u);
}

TEST_F(TextFilePrint, PageRangeAndCarriageControl) {
  std::string t;
  for (int i = 1; i <= 150; ++i) t += "row " + std::to_string(i) + "\n";
  option(103, 2);
  option(104, 2);
  const std::string second = print(t, "range");
  EXPECT_EQ(count_prefix(lines_of(second), "gsave showpage grestore"), 1);
  const auto d = drawn(second);
  ASSERT_EQ(d.size(), 60u);
  EXPECT_EQ(d.front(), "row 61");
  EXPECT_EQ(d.back(), "row 120");

  option(103, 1);
  option(104, 999999);
  option(107, 1);
  const auto cc = lines_of(print(" first\n+over\n0double\n1new page\n", "cc"));
  EXPECT_EQ(count_prefix(cc, "gsave showpage grestore"), 2);
  // The "+" line is drawn where the line before it stands.
  std::vector<std::string> moves;
  for (size_t i = 1; i < cc.size(); ++i)
    if (cc[i].front() == '(' && cc[i].ends_with(") lsh")) moves.push_back(cc[i - 1]);
  ASSERT_EQ(moves.size(), 4u);
  EXPECT_EQ(moves[0], moves[1]);
  EXPECT_NE(moves[1], moves[2]);

  option(107, 0);
  // Refused values leave the option as it stood.
  option(101, 0);
  option(105, 5);
  EXPECT_EQ(zelvy_data::data().itxopt[0], 80);
  EXPECT_EQ(zelvy_data::data().itxopt[4], 1);
}

TEST_F(TextFilePrint, JobFileReadBackFromTheRenderedPage) {
  // As the main window's Print does it.
  option(5, 2);
  option(101, 85);
  const std::string job = read_file(fs::path(ZELV_SOURCE_DIR) / "examples/silicon/si.omb");
  print(job, "job");
  const auto pages = render(scratch("job.ps"), 300);
  ASSERT_EQ(pages.size(), 1u);
  EXPECT_GE(recognised(job, ocr(pages[0])), 0.85);
}

TEST_F(TextFilePrint, MissingFileRaisesErrorOne) {
  IGrHardcopyTextFile(scratch("absent.txt").string(), scratch("absent.ps").string());
  EXPECT_EQ(WInfoError(1), 1);
  EXPECT_NE(zelvy_data::data().istat, 0);
}

}  // namespace

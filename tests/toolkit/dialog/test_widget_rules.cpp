// The arithmetic of the small widgets, without a display: tab expansion of
// list items, the tab strip's rows, the progress bar's fill, trackbar ticks.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "toolkit/dialog/list_fields.h"
#include "toolkit/dialog/small_widgets.h"

namespace {

// Every character 5 pixels wide, a blank too.
constexpr int kChar = 5;
int measure(std::string_view s) { return static_cast<int>(s.size()) * kChar; }

std::string expand(std::string_view text, std::vector<int> stops, int defaultTab = 40) {
  return yyDialogStrTabsProc(text, stops, defaultTab, kChar, measure);
}

TEST(ListTabs, BlanksReachTheNextStop) {
  // One stop of 40: a first column of 100 pixels puts the next at 120.
  const std::string text(20, 'x');
  EXPECT_EQ(expand(text + "\tB", {40}), text + std::string(4, ' ') + "B");
  // Several stops: the first not below the position, then default steps past the last.
  EXPECT_EQ(expand("ab\tc\td\te", {30, 50}), "ab    c   d       e");
  // No stops: the default tab width.
  EXPECT_EQ(expand("abc\tx", {}), "abc" + std::string(5, ' ') + "x");
  // A column that ends on a stop, and a tab at the end, still give a blank.
  EXPECT_EQ(expand("abcdefgh\tx", {40}), "abcdefgh x");
  EXPECT_EQ(expand("ab\t", {40}), "ab      ");
  EXPECT_EQ(yyDialogStrTabsCount("a\tb\tc"), 2);
  EXPECT_EQ(expand("plain", {40}), "plain");
}

TEST(TabStrip, RowsWrapAndStretchToTheEdge) {
  std::vector<TabPlace> tabs(5, TabPlace{0, 70, 0});
  // One row is never stretched, and a strip that doesn't wrap stays one row.
  std::vector<TabPlace> one(tabs.begin(), tabs.begin() + 2);
  EXPECT_EQ(yyTabWidgetLayout(one, 200, true, 0, false), 1);
  EXPECT_EQ(one[1].x + one[1].width, 140);
  std::vector<TabPlace> single = tabs;
  EXPECT_EQ(yyTabWidgetLayout(single, 200, false, 0, false), 1);
  EXPECT_EQ(single[4].x, 280);

  // Two rows of alignment 0 end exactly at the usable width.
  EXPECT_EQ(yyTabWidgetLayout(tabs, 230, true, 0, false), 2);
  EXPECT_EQ(tabs[2].row, 0);
  EXPECT_EQ(tabs[3].row, 1);
  EXPECT_EQ(tabs[3].x, 0);
  EXPECT_EQ(tabs[2].x + tabs[2].width, 230);
  EXPECT_EQ(tabs[4].x + tabs[4].width, 230);
  // 20 pixels over three tabs: 6 each, and the two left over to the first two.
  EXPECT_EQ(tabs[0].width, 77);
  EXPECT_EQ(tabs[2].width, 76);
  EXPECT_EQ(tabs[3].width, 115);
  for (std::size_t i = 1; i < 3; ++i) EXPECT_EQ(tabs[i].x, tabs[i - 1].x + tabs[i - 1].width);

  // Other alignments keep their widths; buttons have gaps between them.
  std::vector<TabPlace> kept(5, TabPlace{0, 70, 0});
  yyTabWidgetLayout(kept, 203, true, 2, true);
  EXPECT_EQ(kept[1].x, 72);
  EXPECT_EQ(kept[4].width, 70);
}

TEST(TabStrip, TabWidths) {
  EXPECT_EQ(yyTabWidgetSize(100, 1, false, 90, 40), 90);   // fixed width
  EXPECT_EQ(yyTabWidgetSize(100, 0, false, 90, 40), 112);  // text and margin
  EXPECT_EQ(yyTabWidgetSize(100, 2, true, 90, 40), 130);   // buttons have wider margins
  EXPECT_EQ(yyTabWidgetSize(10, 0, false, 90, 40), 40);    // at least the minimum
}

TEST(ProgressAndTrackbar, FillAndTicks) {
  // The frame takes two pixels each side.
  EXPECT_EQ(yyProgressFilledWidth(104, 0, 0, 1000), 0);
  EXPECT_EQ(yyProgressFilledWidth(104, 500, 0, 1000), 50);
  EXPECT_EQ(yyProgressFilledWidth(104, 1000, 0, 1000), 100);
  EXPECT_EQ(yyProgressFilledWidth(104, 5000, 0, 1000), 100);  // clamped: a full bar
  EXPECT_EQ(yyProgressFilledWidth(104, 7, 5, 10), 40);
  EXPECT_EQ(yyProgressFilledWidth(104, 7, 5, 5), 0);
  EXPECT_EQ(yyTrackbarTickCount(0, 100, 10), 11);
  EXPECT_EQ(yyTrackbarTickCount(0, 95, 10), 10);
  EXPECT_EQ(yyTrackbarTickCount(0, 100, 0), 0);
}

}  // namespace

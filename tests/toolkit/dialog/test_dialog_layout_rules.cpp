// The display-free rules behind resizable dialogs and typed text: which
// edges of a field follow the anchor, where a field goes for a new size,
// whether it stays inside, and what of an insertion a text field takes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/field_styles.h"

namespace {

using namespace anchor_edge;

struct Field {
  DialogRect rect;
  int type = zelvy_dialog::kLabel;
  std::uint32_t style = 0;
};

std::vector<std::uint32_t> edges(const std::vector<Field>& fields, int anchor, std::uint32_t layout = 0) {
  std::vector<DialogRect> rects;
  std::vector<int> types;
  std::vector<std::uint32_t> styles;
  for (const Field& f : fields) {
    rects.push_back(f.rect);
    types.push_back(f.type);
    styles.push_back(f.style);
  }
  return yyDialogEdgeFlags(rects, types, styles, anchor, layout);
}

const DialogRect kAnchor{10, 10, 100, 50};  // right 110, bottom 60

TEST(AnchorEdges, FieldsBesideAndBelowMoveFramesAroundGrowOthersStay) {
  const auto e = edges({{kAnchor},
                        {{4, 2, 112, 66}},     // frame around the anchor
                        {{150, 10, 40, 14}},   // right of it
                        {{10, 72, 100, 10}},   // below it
                        {{150, 72, 40, 12}},   // right and below
                        {{10, 0, 60, 8}},      // above it
                        {{60, 20, 120, 10}}},  // overlapping its right edge
                       0);
  EXPECT_EQ(e, (std::vector<std::uint32_t>{kRight | kBottom, kRight | kBottom, kMoveX, kMoveY, kMoveX | kMoveY, 0, 0}));
}

TEST(AnchorEdges, AFieldInsideAFrameMovesWithTheFrame) {
  // The check box lies lower than the anchor's bottom, but inside a group
  // beside the anchor: it goes across with the group, not down.
  const auto e = edges({{kAnchor}, {{120, 5, 60, 80}, zelvy_dialog::kGroup}, {{125, 70, 40, 10}}}, 0);
  EXPECT_EQ(e[1], kMoveX);
  EXPECT_EQ(e[2], kMoveX);
  // A frame that also holds the anchor doesn't carry what is in it.
  const auto f = edges({{kAnchor}, {{0, 0, 200, 100}, zelvy_dialog::kGroup}, {{20, 70, 40, 10}}}, 0);
  EXPECT_EQ(f[1], kRight | kBottom);
  EXPECT_EQ(f[2], kMoveY);
}

TEST(AnchorEdges, TheEdgeFollowingLayoutStretchesFieldsEndingWithTheAnchor) {
  const std::vector<Field> fields{{kAnchor},
                                  {{10, 70, 100, 10}},  // same left and right: stretches
                                  {{40, 85, 70, 10}},   // same right only: moves
                                  {{150, 10, 40, 14}},  // beyond: moves as ever
                                  {{40, 72, 70, 6}}};   // inside the stretching one: stays put across
  EXPECT_EQ(edges(fields, 0, kLayoutFollowEdge),
            (std::vector<std::uint32_t>{kRight | kBottom, kRight | kMoveY, kMoveX | kMoveY, kMoveX, kMoveY}));
  EXPECT_EQ(edges(fields, 0), (std::vector<std::uint32_t>{kRight | kBottom, kMoveY, kMoveY, kMoveX, kMoveY}));
}

TEST(AnchorEdges, LinesNeverThickenOnlyMoveOrLengthen) {
  using namespace zelvy_dialog::field_style;
  // A frame level with the anchor stretches down with it; a horizontal line
  // inside would thicken, and is kept thin. A vertical one lengthens.
  const auto e = edges({{kAnchor},
                        {{115, 10, 60, 50}, zelvy_dialog::kGroup},
                        {{120, 10, 50, 2}, zelvy_dialog::kPicture, kPictureLineHorizontal},
                        {{120, 10, 2, 50}, zelvy_dialog::kPicture, kPictureLineVertical}},
                       0, kLayoutFollowEdge);
  EXPECT_EQ(e[1], kMoveX | kBottom);
  EXPECT_EQ(e[2], kMoveX);
  EXPECT_EQ(e[3], kMoveX | kBottom);
  EXPECT_EQ(edges({{kAnchor}, {{20, 20, 2, 10}}}, 5), (std::vector<std::uint32_t>{0, 0})) << "no anchor, no edges";
}

TEST(AnchorRect, EdgesTakeTheChangeFromThePresentLayout) {
  const DialogRect r{150, 10, 40, 14};
  const int rightGap = 10, bottomGap = 76;  // in a dialog of 200 x 100
  EXPECT_EQ(yyDialogAnchorRect(r, kMoveX, rightGap, bottomGap, 260, 100), (DialogRect{210, 10, 40, 14}));
  EXPECT_EQ(yyDialogAnchorRect(r, kRight | kBottom, rightGap, bottomGap, 230, 120), (DialogRect{150, 10, 70, 34}));
  EXPECT_EQ(yyDialogAnchorRect(r, kMoveX | kMoveY, rightGap, bottomGap, 200, 100), r);
  // Shrinking past the field's own size leaves one pixel, never less.
  EXPECT_EQ(yyDialogAnchorRect(r, kRight, rightGap, bottomGap, 100, 100), (DialogRect{150, 10, 1, 14}));
}

TEST(FieldInRect, InsideAcrossTheEdgeOrOutside) {
  EXPECT_EQ(yyDialogFieldInRect({0, 0, 200, 100}, 200, 100), 1);
  EXPECT_EQ(yyDialogFieldInRect({150, 10, 60, 10}, 200, 100), 2);
  EXPECT_EQ(yyDialogFieldInRect({200, 10, 10, 10}, 200, 100), 0) << "touching the edge from outside";
  EXPECT_EQ(yyDialogFieldInRect({10, 95, 10, 10}, 200, 100), 2);
  EXPECT_EQ(yyDialogFieldInRect({-20, 10, 20, 10}, 200, 100), 0);
}

// Seven pixels a byte: a stand-in for the font.
int seven(std::string_view s) { return static_cast<int>(s.size()) * 7; }

TEST(StringLimit, CharactersCountWholeAndTheReplacedRangeIsFree) {
  EXPECT_EQ(yyDialogStringLimit("abcdef", 8, 0, "xy", "z", seven), "abcde");
  EXPECT_EQ(yyDialogStringLimit("abc", 3, 0, "xyz", "", seven), "") << "full: the change is refused";
  EXPECT_EQ(yyDialogStringLimit("abc", 0, 0, "xyz", "", seven), "abc") << "0: no limit";
  // Two-byte letters count once and are never cut in half.
  EXPECT_EQ(yyDialogStringLimit("\xC3\xA9\xC3\xA9\xC3\xA9", 4, 0, "a", "", seven), "\xC3\xA9\xC3\xA9\xC3\xA9");
  EXPECT_EQ(yyDialogStringLimit("\xC3\xA9\xC3\xA9\xC3\xA9", 3, 0, "a", "", seven), "\xC3\xA9\xC3\xA9");
}

TEST(StringLimit, ThePixelLimitShortensTheInsertionUntilTheLineFits) {
  // 70 pixels hold ten bytes: "ab" + insertion + "c".
  EXPECT_EQ(yyDialogStringLimit("12345678", 0, 70, "ab", "c", seven), "1234567");
  EXPECT_EQ(yyDialogStringLimit("12", 0, 70, "abcdefghi", "j", seven), "");
  EXPECT_EQ(yyDialogStringLimit("12345678", 5, 70, "ab", "c", seven), "12") << "both limits";
}

TEST(StrCase, FoldsOnlyAsciiLetters) {
  std::string t = "Mo\xC3\xA9 k=1e5";
  yyDialogStrCase(1, t);
  EXPECT_EQ(t, "MO\xC3\xA9 K=1E5");
  yyDialogStrCase(2, t);
  EXPECT_EQ(t, "mo\xC3\xA9 k=1e5");
  yyDialogStrCase(3, t);
  EXPECT_EQ(t, "mo\xC3\xA9 k=1e5");
}

}  // namespace

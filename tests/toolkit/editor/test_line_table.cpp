// The line table on its own: counting, incremental changes against a full
// rebuild, word wrap, and the text as loaded files give it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "toolkit/editor/editor_private.h"

namespace {

std::vector<int> table(const EditRecord& r) { return {r.LineStarts.begin(), r.LineStarts.begin() + r.LineCount}; }

EditRecord built(const std::string& text, std::uint32_t flags = 0, int wrap = 1) {
  EditRecord r;
  r.Flags = flags;
  r.WrapWidth = wrap;
  yyEditBuildLineStarts(EditPieces{{text, {}, {}}}, r, nullptr);
  return r;
}

// Applies the replacement of [from, to) by `block` as the widget's verify
// callback would, widened to whole lines, and returns the new text.
std::string change(EditRecord& r, const std::string& text, int from, int to, const std::string& block) {
  int start = from;
  while (start > 0 && text[static_cast<std::size_t>(start - 1)] != '\n') --start;
  int end = to;
  while (end < static_cast<int>(text.size()) && text[static_cast<std::size_t>(end)] != '\n') ++end;
  EditChange ch;
  ch.start = start;
  ch.end = end;
  ch.startpos = from;
  ch.endpos = to;
  const std::string old = text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
  ch.oldtext = old;
  ch.block = block;
  yyEditApplyChange(ch, r, nullptr);
  return text.substr(0, static_cast<std::size_t>(from)) + block + text.substr(static_cast<std::size_t>(to));
}

TEST(EditLineTable, CountsLinesAsTheStartsFound) {
  EXPECT_EQ(table(built("")), (std::vector<int>{0}));
  EXPECT_EQ(table(built("a")), (std::vector<int>{0}));
  EXPECT_EQ(table(built("a\n")), (std::vector<int>{0, 2}));  // a last line end opens an empty line
  EXPECT_EQ(table(built("ab\n\ncd")), (std::vector<int>{0, 3, 4}));
  const EditRecord r = built("a\n");
  EXPECT_EQ(yyEditConvertPos(1, 2, r), 1);   // the caret behind the line end stands in line 2
  EXPECT_EQ(yyEditConvertPos(2, 0, r), 0);
  EXPECT_EQ(yyEditConvertPos(2, 2, r), -1);  // outside the table
  EXPECT_EQ(r.LineCapacity() % 10, 0);
  EXPECT_GT(r.LineCapacity(), r.LineCount);
}

TEST(EditLineTable, PositionsCountCharactersNotBytes) {
  const EditRecord r = built("\xc3\x85ngstr\xc3\xb6m\nx");  // 9 characters, 11 bytes on the first line
  EXPECT_EQ(table(r), (std::vector<int>{0, 9}));
}

TEST(EditLineTable, ChangesMatchAFullRebuild) {
  std::string text = "first\nsecond line\nthird\nfourth\nfifth\n";
  EditRecord r = built(text);
  struct Step {
    int from, to;
    std::string block;
  };
  const std::vector<Step> steps = {
      {8, 8, "\n"},              // a line end in the middle of a line
      {2, 20, "X"},              // a range over three lines shrinks to one
      {0, 0, "new\nlines\n"},    // at the very start
      {static_cast<int>(text.size()) - 1, static_cast<int>(text.size()) - 1, "tail"},
      {3, 3, ""},                // an empty change
  };
  for (const Step& s : steps) {
    const int to = std::min(s.to, static_cast<int>(text.size()));
    const int from = std::min(s.from, to);
    const int before = r.LineCount;
    text = change(r, text, from, to, s.block);
    EXPECT_EQ(table(r), table(built(text))) << "after replacing " << from << ".." << to;
    if (s.block == "\n") {
      EXPECT_EQ(r.LineCount, before + 1);
    }
  }
  // Three lines replaced by a short text: two fewer lines, later starts moved by the difference.
  std::string t = "aa\nbb\ncc\ndd\nee\n";
  EditRecord q = built(t);
  t = change(q, t, 1, 7, "Z");
  EXPECT_EQ(table(q), (std::vector<int>{0, 4, 7, 10}));
}

TEST(EditLineTable, ATextEndingWithoutALineEndStaysCorrectAtTheEnd) {
  std::string text = "one\ntwo";
  EditRecord r = built(text);
  text = change(r, text, 7, 7, "\nthree");
  EXPECT_EQ(table(r), (std::vector<int>{0, 4, 8}));
  text = change(r, text, 3, 8, "");  // join the first line with the last
  EXPECT_EQ(table(r), table(built(text)));
}

int fixed_width(EditRecord&, std::string_view) { return 10; }

TEST(EditLineTable, WordWrapBreaksAtBlanksAndLongWordsAtTheMargin) {
  EditRecord r;
  r.Flags = edit_flag::kWordWrap;
  r.WrapWidth = 50;  // five characters
  const std::string text = "ab cd efghijkl\nx";
  yyEditBuildLineStarts(EditPieces{{text, {}, {}}}, r, fixed_width);
  // "ab cd" fits, the blank goes with it; the long word breaks at five.
  EXPECT_EQ(table(r), (std::vector<int>{0, 6, 11, 15}));
  r.WrapWidth = 1;  // narrower than any character: one a line, but always onward
  yyEditBuildLineStarts(EditPieces{{"abc", {}, {}}}, r, fixed_width);
  EXPECT_EQ(table(r), (std::vector<int>{0, 1, 2}));
  // A wider window gives fewer lines.
  r.WrapWidth = 1000;
  yyEditBuildLineStarts(EditPieces{{text, {}, {}}}, r, fixed_width);
  EXPECT_EQ(r.LineCount, 2);
}

TEST(EditLineTable, GetLineReadsAcrossThePieces) {
  EditRecord r;
  const EditPieces p{{"ab", "c\nd", "e\n"}};
  EXPECT_EQ(yyEditGetLine(0, p, r, nullptr), 4);
  EXPECT_EQ(yyEditGetLine(4, p, r, nullptr), 7);
  EXPECT_EQ(yyEditGetLine(7, p, r, nullptr), -1);
  EXPECT_EQ(yyEditCountLines(p, r, nullptr), 3);
}

TEST(EditText, LoadedBytesBecomeWidgetText) {
  EXPECT_EQ(yyEditTextForWidget("a\r\nb\r\n"), "a\nb\n");
  EXPECT_EQ(yyEditTextForWidget(std::string("ab\0cd", 5)), "ab");
  EXPECT_EQ(yyEditTextForWidget("\xc3\x85 ok"), "\xc3\x85 ok");    // UTF-8 passes
  EXPECT_EQ(yyEditTextForWidget("\xc5 alone"), "\xc3\x85 alone");  // ISO 8859-1 is read as such
  EXPECT_EQ(yyEditTextForWidget("\xe2\x82"), "\xc3\xa2\xc2\x82");  // a cut sequence byte by byte
  EXPECT_EQ(yyEditTextForWidget("\xed\xa0\x80"), "\xc3\xad\xc2\xa0\xc2\x80");  // no surrogates
  EXPECT_TRUE(yyEditTextIsPlain("h k l\n1 2 3\n"));
  for (const char* odd : {"a\r\n", "\xc3\x85", "\x80"}) EXPECT_FALSE(yyEditTextIsPlain(odd)) << odd;
  EXPECT_FALSE(yyEditTextIsPlain(std::string("a\0b", 3)));
}

}  // namespace

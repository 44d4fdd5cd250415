// The message box's rules that need no display: which answers stand in which
// places, what Escape and the defaults pick, the word-wrap, and what an answer
// amounts to.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "toolkit/comdlg/message_box.h"
#include "toolkit/dialog/dialog_private.h"

namespace {

// Labels of the shown places, left to right, with the default in brackets.
std::string shown(int set, int def) {
  const MessageBoxLayout l = yyComDlgLayout(set, def);
  std::string out;
  for (int p = 0; p < 3; ++p) {
    const int a = l.places[static_cast<std::size_t>(p)];
    if (a == 0) continue;
    if (!out.empty()) out += ' ';
    const std::string label(yyComDlgLabel(a));
    out += p == l.defaultPlace ? "[" + label + "]" : label;
  }
  return out;
}

// Every character is 10 pixels wide.
int tens(std::string_view s) { return static_cast<int>(s.size()) * 10; }

}  // namespace

TEST(MessageBoxRules, ButtonSetsAndTheirDefaults) {
  EXPECT_EQ(shown(0, 1), "[OK]");
  EXPECT_EQ(shown(0, 3), "[OK]");
  EXPECT_EQ(shown(1, 1), "[OK] Cancel");
  EXPECT_EQ(shown(1, 3), "OK [Cancel]");  // any default but 1 is the second
  EXPECT_EQ(shown(2, 2), "Retry [Cancel]");
  EXPECT_EQ(shown(3, 1), "[Yes] No");
  EXPECT_EQ(shown(3, 0), "Yes [No]");
  EXPECT_EQ(shown(4, 2), "Yes [No] Cancel");
  EXPECT_EQ(shown(4, 7), "Yes No [Cancel]");
  // Set 5 counts its defaults Retry, Abort, Ignore over buttons Abort, Retry, Ignore.
  EXPECT_EQ(shown(5, 1), "Abort [Retry] Ignore");
  EXPECT_EQ(shown(5, 2), "[Abort] Retry Ignore");
  EXPECT_EQ(shown(5, 3), "Abort Retry [Ignore]");
  EXPECT_EQ(shown(9, 1), "[OK]");
  // Set 3 leaves the middle place empty: No stands in the third.
  EXPECT_EQ(yyComDlgLayout(3, 1).places, (std::array<int, 3>{kAnswerYes, 0, kAnswerNo}));
}

TEST(MessageBoxRules, EscapeAnswers) {
  const int expected[] = {kAnswerOk, kAnswerCancel, kAnswerCancel, kAnswerNo, kAnswerCancel, kAnswerIgnore};
  for (int set = 0; set < 6; ++set) EXPECT_EQ(yyComDlgLayout(set, 1).escape, expected[set]) << set;
}

TEST(MessageBoxRules, AnswerClasses) {
  // 1 for OK, Retry, Yes; 0 for Cancel, Ignore; 2 for Abort, No.
  const int classes[] = {0, 1, 0, 2, 1, 0, 1, 2};
  for (int a = 0; a <= 7; ++a) EXPECT_EQ(yyComDlgResultClass(a), classes[a]) << a;
}

TEST(MessageBoxRules, WordWrap) {
  // Carriage returns end lines; a line over 100 pixels breaks at its last blank.
  EXPECT_EQ(yyComDlgStrConvert("one\rtwo", 100, tens), "one\ntwo");
  EXPECT_EQ(yyComDlgStrConvert("aaaa bbbb cccc", 100, tens), "aaaa bbbb\ncccc");
  EXPECT_EQ(yyComDlgStrConvert("aaaa\rbbbb cccc dd", 100, tens), "aaaa\nbbbb cccc\ndd");
  // No blank, no break; a long word keeps a line of its own.
  EXPECT_EQ(yyComDlgStrConvert(std::string(40, 'x'), 100, tens), std::string(40, 'x'));
  EXPECT_EQ(yyComDlgStrConvert("ab " + std::string(20, 'x') + " cd", 100, tens),
            "ab\n" + std::string(20, 'x') + "\ncd");

  // A long text: every line within the limit, nothing lost but the breaks.
  std::string text;
  for (int i = 0; text.size() < 2000; ++i) text += "word" + std::to_string(i % 97) + ' ';
  const std::string out = yyComDlgStrConvert(text, 300, tens);
  std::string back = out;
  for (char& c : back)
    if (c == '\n') c = ' ';
  EXPECT_EQ(back, text);
  std::istringstream lines(out);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) EXPECT_LE(tens(line), 300) << line;
  EXPECT_GT(count, 60);
}

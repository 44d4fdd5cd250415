// The message box's word-wrap, which needs no display.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "toolkit/comdlg/message_box.h"

namespace {

// Every character is 10 pixels wide.
int tens(std::string_view s) { return static_cast<int>(s.size()) * 10; }

}  // namespace

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

// The scans over loaded text that look at several bytes at once, held against
// a reading byte by byte: every offset of the byte that matters, so that it
// falls on each place of a word and in the tail behind the last whole word.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "toolkit/editor/editor_private.h"

namespace {

constexpr std::size_t kLongest = 40;  // five words and a tail

int count_characters(const std::string& s) {
  int n = 0;
  for (const char c : s) n += (static_cast<unsigned char>(c) & 0xC0) != 0x80 ? 1 : 0;
  return n;
}

std::string without_returns(std::string s) {
  std::erase(s, '\r');
  return s;
}

TEST(EditTextScan, EachKindOfByteIsFoundWhereverItStands) {
  for (std::size_t size = 1; size <= kLongest; ++size) {
    for (std::size_t at = 0; at < size; ++at) {
      std::string s(size, 'a');
      EXPECT_TRUE(yyEditTextIsAscii(s));
      EXPECT_TRUE(yyEditTextIsPlain(s));
      for (const char odd : {'\r', '\0', '\x80', '\xff'}) {
        s[at] = odd;
        EXPECT_FALSE(yyEditTextIsPlain(s)) << size << " " << at << " " << int(odd);
        EXPECT_EQ(yyEditTextIsAscii(s), odd == '\r' || odd == '\0') << size << " " << at;
        s[at] = 'a';
      }
      // Line ends of two bytes lose their first, wherever it falls.
      s[at] = '\r';
      EXPECT_EQ(yyEditTextForWidget(s), without_returns(s)) << size << " " << at;
    }
  }
  EXPECT_TRUE(yyEditTextIsPlain(""));
  EXPECT_EQ(yyEditTextForWidget(""), "");
}

TEST(EditTextScan, CharactersAndLineStartsCountLettersOfManyBytes) {
  // Letters of two, three and four bytes, and a byte 0x80 + 0x40 that starts
  // one, at every place; the counts and the table agree with a plain count.
  const std::vector<std::string> letters = {"\xc3\x85", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "\xc0"};
  for (const std::string& letter : letters) {
    for (std::size_t at = 0; at < kLongest; ++at) {
      std::string s(kLongest, 'b');
      s.replace(at, 1, letter);
      s[kLongest / 2] = '\n';
      EXPECT_EQ(yyEditCharCount(s), count_characters(s)) << at;
      EditRecord r;
      yyEditBuildLineStarts(EditPieces{{s, {}, {}}}, r, nullptr);
      ASSERT_EQ(r.LineCount, 2);
      EXPECT_EQ(r.LineStarts[1], count_characters(s.substr(0, s.find('\n') + 1))) << at;
    }
  }
}

TEST(EditTextScan, TheTableIsSizedAsForItsCount) {
  // Many lines, more than a first guess from the size holds: the table's
  // capacity is still the next multiple of ten above the count.
  std::string many;
  for (int i = 0; i < 100'000; ++i) many += "\n";
  EditRecord r;
  yyEditBuildLineStarts(EditPieces{{many, {}, {}}}, r, nullptr);
  EXPECT_EQ(r.LineCount, 100'001);
  EXPECT_EQ(r.LineCapacity(), 100'010);
  EXPECT_EQ(r.LineStarts[100'000], 100'000);
  // And the starts gathered across three pieces match those of the joined text.
  EditRecord joined, split;
  const std::string a = "ab\ncd", b = "\xc3\x85\n\n", c = "e\nf";
  yyEditBuildLineStarts(EditPieces{{a + b + c, {}, {}}}, joined, nullptr);
  yyEditBuildLineStarts(EditPieces{{a, b, c}}, split, nullptr);
  EXPECT_EQ(std::vector<int>(split.LineStarts.begin(), split.LineStarts.begin() + split.LineCount),
            std::vector<int>(joined.LineStarts.begin(), joined.LineStarts.begin() + joined.LineCount));
  EXPECT_EQ(split.LineCount, 5);
}

}  // namespace

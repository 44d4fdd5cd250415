// The editor's search on plain text: direction, overlapping matches, case,
// whole words, the ends of the text, and Replace All over the unchanged text.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "toolkit/editor/editor_private.h"

namespace {

constexpr std::uint32_t kExact = 0, kNoCase = edit_find::kIgnoreCase, kWord = edit_find::kWholeWord;

std::optional<std::size_t> down(std::string_view text, std::string_view what, long from, std::uint32_t flags = kExact) {
  return yyEditSearch(text, what, from, false, flags);
}
std::optional<std::size_t> up(std::string_view text, std::string_view what, long from, std::uint32_t flags = kExact) {
  return yyEditSearch(text, what, from, true, flags);
}

TEST(EditSearch, StepsThroughOverlappingMatchesBothWays) {
  // Find Next starts one behind the start of the last match: a run of four
  // finds "aa" at 0, 1 and 2, then stops.
  EXPECT_EQ(down("aaaa", "aa", 0), 0u);
  EXPECT_EQ(down("aaaa", "aa", 1), 1u);
  EXPECT_EQ(down("aaaa", "aa", 2), 2u);
  EXPECT_EQ(down("aaaa", "aa", 3), std::nullopt);
  // Upwards the walk starts a find text's length before the start.
  EXPECT_EQ(up("ab ab ab", "ab", 8), 6u);
  EXPECT_EQ(up("ab ab ab", "ab", 7), 3u);
  EXPECT_EQ(up("ab ab ab", "ab", 1), std::nullopt);
  // Nothing to find, and texts shorter than the find text.
  EXPECT_EQ(down("abc", "", 0), std::nullopt);
  EXPECT_EQ(down("ab", "abc", 0), std::nullopt);
  EXPECT_EQ(down("abc", "c", 5), std::nullopt);
  EXPECT_EQ(up("abc", "a", 100), 0u);
}

TEST(EditSearch, CaseIsIgnoredOnlyWhenAsked) {
  EXPECT_EQ(down("One TWO two", "two", 0, kNoCase), 4u);
  EXPECT_EQ(down("One TWO two", "two", 0), 8u);
  EXPECT_EQ(down("One TWO two", "TWO", 5), std::nullopt);
  EXPECT_EQ(up("tWo One TWO two", "Two", 8, kNoCase), 0u);
  // Letters only fold: digits and punctuation match as they are.
  EXPECT_EQ(down("x1=Y2", "Y2", 0, kNoCase), 3u);
  EXPECT_EQ(down("x1=y2", "X1=Y", 0, kNoCase), 0u);
}

TEST(EditSearch, WholeWordsEndAtAnythingButAsciiLettersAndDigits) {
  const std::string text = "concatenate cat1 cat_1 (cat, Caté";
  EXPECT_EQ(down(text, "cat", 0, kWord), 17u);  // an underscore ends the word
  EXPECT_EQ(down(text, "cat", 18, kWord), 24u);  // before a comma
  EXPECT_EQ(down(text, "Cat", 25, kWord), 29u);  // a byte above 127 ends it too
  EXPECT_EQ(down(text, "cat", 0, kWord | kNoCase), 17u);
  // At the very start and end of the text.
  EXPECT_EQ(down("cat", "cat", 0, kWord), 0u);
  EXPECT_EQ(up("a cat", "cat", 5, kWord), 2u);
  EXPECT_EQ(down("cats", "cat", 0, kWord), std::nullopt);
}

TEST(EditSearch, ReplaceEveryWalksTheUnchangedText) {
  std::size_t first = 0, last = 0;
  int count = 0;
  // A letter replaced by itself twice: the walk doesn't see its own output.
  EXPECT_EQ(yyEditReplaceEvery("a-a-a", "a", "aa", kExact, first, last, count), "aa-aa-aa");
  EXPECT_EQ(count, 3);
  EXPECT_EQ(first, 0u);
  EXPECT_EQ(last, 5u);
  // The stretch from the first match to the end of the last one.
  EXPECT_EQ(yyEditReplaceEvery("xx ab yy AB zz", "ab", "C", kNoCase, first, last, count), "xx C yy C zz");
  EXPECT_EQ(count, 2);
  EXPECT_EQ(first, 3u);
  EXPECT_EQ(last, 11u);
  // Matches don't overlap, and no match leaves nothing to change.
  EXPECT_EQ(yyEditReplaceEvery("aaaa", "aa", "b", kExact, first, last, count), "bb");
  EXPECT_EQ(yyEditReplaceEvery("abc", "x", "y", kExact, first, last, count), "");
  EXPECT_EQ(count, 0);
  EXPECT_EQ(yyEditReplaceEvery("cat concat cat", "cat", "dog", kWord, first, last, count), "dog concat dog");
}

}  // namespace

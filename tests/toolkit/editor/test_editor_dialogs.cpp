// The editor's dialogs from the user's hand: Open and Save As through the
// file selector, the save question, Find and Replace in a large file, the stop
// at the end of the text, Goto Line in a million lines, and the search options.
#include "tests/toolkit/editor/editor_fixture.h"

#include <algorithm>

namespace {

constexpr int kFind = 32103, kReplace = 32104, kGoto = 32120;
constexpr int kFindText = 1020, kReplaceText = 1002, kMatchCase = 1021, kWholeWord = 1006, kReplaceAll = 1507;

std::size_t count_of(const std::string& text, const std::string& word) {
  std::size_t n = 0;
  for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++n;
  return n;
}

TEST_F(EditorWindow, SaveAsAndOpenGoThroughTheSelectorAndTheQuestionIsAnswered) {
  write(dir / "a.txt", "first\n");
  write(dir / "c.txt", "other file\n");
  open((dir / "a.txt").string());
  WindowSelect(handle);
  WEditPutText("changed\n");

  // Save As under a new name: the filter's extension is added to it.
  click_text();
  choose_in_selector((dir / "b copy").string());
  xdotool("key F12");
  EXPECT_EQ(read(dir / "b copy.txt"), "changed\n");
  EXPECT_EQ(read(dir / "a.txt"), "first\n");
  EXPECT_EQ(record().FileName, (dir / "b copy.txt").string());
  EXPECT_EQ(WInfoEditor(handle, 1), 1);

  // Open with nothing unsaved asks nothing.
  click_text();
  choose_in_selector((dir / "c.txt").string());
  xdotool("key ctrl+o");
  EXPECT_EQ(text(), "other file\n");
  EXPECT_EQ(record().FileName, (dir / "c.txt").string());
  EXPECT_TRUE(box_titles.empty());

  // With changes: Cancel keeps everything; Yes saves before the selector.
  WindowSelect(handle);
  WEditPutText("edited\n");
  click_text();
  answer_box("Escape");
  xdotool("key ctrl+o");
  ASSERT_EQ(box_titles.size(), 1u);
  EXPECT_EQ(text(), "edited\n");
  EXPECT_EQ(read(dir / "c.txt"), "other file\n");

  answer_box("Return");
  choose_in_selector((dir / "a.txt").string());
  xdotool("key ctrl+o");
  EXPECT_EQ(box_titles.size(), 2u);
  EXPECT_EQ(read(dir / "c.txt"), "edited\n");
  EXPECT_EQ(text(), "first\n");
}

TEST_F(EditorWindow, FindAndReplaceAllInTenMegabytes) {
  std::string big;
  big.reserve(10'600'000);
  const std::string line = "    1   2   3     12.500     0.010  reflection alpha\n";
  while (big.size() < 10'000'000) big += line;
  const std::size_t lines = big.size() / line.size();
  big += "the needle at the end\n";
  write(dir / "big.txt", big);
  open((dir / "big.txt").string());
  click_text();

  // Find: the dialog stays up across searches; Find Next lands on the match.
  xdotool("key ctrl+f");
  ASSERT_TRUE(dialog_shown(kFind));
  click_field(kFind, kFindText);
  xdotool("type --delay 10 needle");
  auto t0 = std::chrono::steady_clock::now();
  xdotool("key Return");
  RecordProperty("find_seconds", std::to_string(std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count()));
  const long at = static_cast<long>(big.find("needle"));
  EXPECT_EQ(selection(), std::make_pair(at, at + 6));
  EXPECT_TRUE(dialog_shown(kFind));
  EXPECT_EQ(record().FindString, "needle");

  // Nothing behind it: the message, and the match stays selected.
  answer_box("Return");
  xdotool("key Return");
  ASSERT_EQ(box_titles.size(), 1u);
  EXPECT_EQ(box_titles[0], "Find");
  EXPECT_EQ(yyEditLastMessage().text, "End of text reached");
  EXPECT_EQ(selection(), std::make_pair(at, at + 6));
  xdotool("key Escape");
  EXPECT_FALSE(dialog_shown(kFind));

  // Replace All of every line's word, then the same message.
  click_text();
  xdotool("key ctrl+h");
  ASSERT_TRUE(dialog_shown(kReplace));
  click_field(kReplace, kFindText);
  EXPECT_EQ(record().FindString, "needle");  // offered again; typed over
  xdotool("key End shift+Home BackSpace");
  xdotool("type --delay 10 alpha");
  click_field(kReplace, kReplaceText);
  xdotool("type --delay 10 'omega beta'");
  answer_box("Return");
  t0 = std::chrono::steady_clock::now();
  click_field(kReplace, kReplaceAll);
  RecordProperty("replace_all_seconds", std::to_string(std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count()));
  EXPECT_EQ(box_titles.size(), 2u);
  EXPECT_EQ(record().ReplaceString, "omega beta");
  const std::string after = text();
  EXPECT_EQ(count_of(after, "alpha"), 0u);
  EXPECT_EQ(count_of(after, "omega beta"), lines);
  EXPECT_EQ(after.size(), big.size() + lines * 5);
  EXPECT_EQ(WInfoEditor(handle, 1), 0);  // unsaved
  // The line table followed the change.
  WindowSelect(handle);
  EXPECT_EQ(WEditPos(2, static_cast<int>(lines) + 1), static_cast<int>(after.find("the needle")) + 1);
  click_field(kReplace, 2);  // Cancel
  EXPECT_FALSE(dialog_shown(kReplace));
}

TEST_F(EditorWindow, GotoLineReachesTheMillionthLine) {
  std::string big;
  big.reserve(30'000'000);
  for (int i = 1; i <= 1'000'000; ++i) big += "line " + std::to_string(i) + " of the listing\n";
  write(dir / "million.txt", big);
  open((dir / "million.txt").string());
  click_text();
  std::string range;
  when([] { return dialog_shown(kGoto); },
       [&] {
         WDialogGetString(1003, range);
         focus_dialog(kGoto);
         xdotool_now("key --clearmodifiers End shift+Home BackSpace");
         xdotool_now("type --delay 10 1000000");
         xdotool_now("key Return");
       });
  xdotool("key ctrl+g");
  EXPECT_EQ(range, "(1-1000001)");  // the empty line behind the last line end counts
  EXPECT_FALSE(dialog_shown(kGoto));
  EXPECT_EQ(yyWindowStatusBarText(handle, 1), "Line:1000000  Col:1");
  EXPECT_EQ(record().GotoLine, 1'000'000);
  // Near the end the last page shows; elsewhere the line comes up at the top.
  EXPECT_LE(WInfoEditor(handle, 9), 1'000'000);
  when([] { return dialog_shown(kGoto); },
       [&] {
         WDialogSelect(kGoto);
         int offered = 0;
         WDialogGetInteger(1002, offered);
         EXPECT_EQ(offered, 1'000'000);  // the last line asked for
         focus_dialog(kGoto);
         xdotool_now("key --clearmodifiers End shift+Home BackSpace");
         xdotool_now("type --delay 10 500000");
         xdotool_now("key Return");
       });
  click_text();
  xdotool("key ctrl+g");
  EXPECT_EQ(WInfoEditor(handle, 9), 500'000);
}

TEST_F(EditorWindow, TheFindDialogsOptionsDecideWhatMatches) {
  write(dir / "cats.txt", "Concatenate cat1 CAT cat_1 Cat, cat\n");
  open((dir / "cats.txt").string());
  click_text();
  xdotool("key ctrl+f");
  ASSERT_TRUE(dialog_shown(kFind));
  click_field(kFind, kFindText);
  xdotool("type --delay 10 cat");
  // Without case: the first letters c-a-t, inside Concatenate.
  xdotool("key Return");
  EXPECT_EQ(selection(), std::make_pair(3L, 6L));
  // Whole words and case: small cats standing free; an underscore ends a word.
  click_field(kFind, kWholeWord);
  click_field(kFind, kMatchCase);
  click_field(kFind, 1);
  EXPECT_EQ(selection(), std::make_pair(21L, 24L));
  EXPECT_EQ(record().FindFlags, 0x10u);
  click_field(kFind, 1);
  EXPECT_EQ(selection(), std::make_pair(32L, 35L));
  click_field(kFind, 2);
  // Find Previous with the stored search, case ignored again: CAT is a word.
  int error = 0;
  WindowSelect(handle);
  yyeditfindflags(0x12, error);
  click_text();
  xdotool("key End shift+F3");
  EXPECT_EQ(selection(), std::make_pair(32L, 35L));
  xdotool("key shift+F3");
  EXPECT_EQ(selection(), std::make_pair(27L, 30L));
  xdotool("key shift+F3");
  EXPECT_EQ(selection(), std::make_pair(21L, 24L));
  xdotool("key shift+F3");
  EXPECT_EQ(selection(), std::make_pair(17L, 20L));
  answer_box("Return");
  xdotool("key shift+F3");  // cat1 and Concatenate aren't words
  EXPECT_EQ(box_titles.size(), 1u);
  EXPECT_EQ(selection(), std::make_pair(17L, 20L));
}

TEST_F(EditorWindow, ReplaceTakesTheSelectionOnlyWhenItIsTheFindText) {
  write(dir / "r.txt", "one two one TWO\n");
  open((dir / "r.txt").string());
  WindowSelect(handle);
  int error = 0;
  yyeditfindstring(1, error, "two");
  yyeditfindstring(2, error, "2");
  yyeditfindflags(0x2, error);
  click_text();
  xdotool("key ctrl+h");
  ASSERT_TRUE(dialog_shown(kReplace));
  WDialogSelect(kReplace);
  std::string shown;
  WDialogGetString(kReplaceText, shown);
  EXPECT_EQ(shown, "2");
  yyeditselection(0, 3);  // "one" is selected: nothing replaced, on to "two"
  click_field(kReplace, 1506);
  EXPECT_EQ(text(), "one two one TWO\n");
  EXPECT_EQ(selection(), std::make_pair(4L, 7L));
  click_field(kReplace, 1506);  // replaced; on to TWO, shifted by the shorter text
  EXPECT_EQ(text(), "one 2 one TWO\n");
  EXPECT_EQ(selection(), std::make_pair(10L, 13L));
  answer_box("Return");
  click_field(kReplace, 1506);  // TWO matches without case; then the end
  EXPECT_EQ(text(), "one 2 one 2\n");
  EXPECT_EQ(box_titles.size(), 1u);
  click_field(kReplace, 2);
}

}  // namespace

// The file selector on a real X server, driven by pointer and keyboard.
#include "tests/toolkit/comdlg/selector_driver.h"

#include <chrono>

namespace {

using namespace std::string_literals;

std::string padded_name(const fs::path& p) { return padded(p.string(), 1024); }

TEST_F(SelectorTest, DoubleClickOnANameConfirmsThatPath) {
  touch("a.omb");
  touch("b.omb");
  touch("notes.txt");
  fs::create_directory(dir_ / "sub");
  std::vector<std::string> shown;
  step([&] { shown = options(); });
  step([&] { click_option(option_of("b.omb"), 2); });
  std::string name = padded_name(dir_ / "x.omb");
  run(kOmbFilter, 0, name);
  EXPECT_EQ(shown, (std::vector<std::string>{"[sub]", "a.omb", "b.omb"}));
  EXPECT_EQ(WInfoDialog(4), 1);
  EXPECT_EQ(WInfoDialog(15), 1);
  EXPECT_EQ(trimmed(name), (dir_ / "b.omb").string());
  EXPECT_EQ(fs::current_path(), start_) << "the process's directory comes back";
}

TEST_F(SelectorTest, TypedDirectoriesWildcardsAndPaths) {
  touch("a.omb");
  touch("read me.txt");
  fs::create_directory(dir_ / "sub");
  touch("sub/inner.omb");
  std::string dirShown, comboText;
  std::vector<std::string> inSub, txtOnly;
  step([&] { type_name("sub"); });
  step([&] {
    dirShown = text(kDirField);
    inSub = options();
  });
  step([&] { type_name("../*.txt"); });
  step([&] {
    txtOnly = options();
    int idx = 0;
    WDialogGetMenu(kCombo, idx, comboText);
  });
  step([&] { type_name((dir_ / "sub" / "inner.omb").string()); });
  std::string name = padded_name(dir_ / "");
  int index = 1;
  run(kOmbFilter, kSelectKeepDirectory, name, &index);
  EXPECT_EQ(dirShown, (dir_ / "sub").string());
  EXPECT_EQ(inSub, (std::vector<std::string>{"inner.omb"}));
  EXPECT_EQ(txtOnly, (std::vector<std::string>{"[sub]", "read me.txt"}));
  EXPECT_EQ(trimmed(comboText), "Text files (*.txt)");
  EXPECT_EQ(index, 2) << "the typed pattern chose the filter";
  EXPECT_EQ(trimmed(name), (dir_ / "sub" / "inner.omb").string());
  EXPECT_EQ(fs::current_path(), dir_) << "flag 8 stays where the dialog ended";
}

TEST_F(SelectorTest, SortOrdersAndHiddenFiles) {
  using namespace std::chrono_literals;
  touch("b.txt", 300);
  touch("c.dat", 100);
  touch("a.zip", 200);
  touch(".hidden");
  fs::create_directory(dir_ / "zdir");
  fs::create_directory(dir_ / "adir");
  const auto now = fs::file_time_type::clock::now();
  fs::last_write_time(dir_ / "c.dat", now - 300s);
  fs::last_write_time(dir_ / "a.zip", now - 200s);
  fs::last_write_time(dir_ / "b.txt", now - 100s);
  std::vector<std::vector<std::string>> seen;
  auto look = [&] { seen.push_back(options()); };
  step(look);
  for (int item : {32110, 32112, 32111, 32109}) {
    step([&, item] { menu(item); });
    step(look);
  }
  step([&] { menu(32112); });  // reverse off again
  step([&] { menu(32108); });
  step([&] { menu(32106); });
  step(look);
  step([&] { click_field(2); });
  std::string name = padded_name(dir_ / "");
  run("", 0, name);
  using V = std::vector<std::string>;
  ASSERT_EQ(seen.size(), 6u);
  EXPECT_EQ(seen[0], (V{"[adir]", "[zdir]", "a.zip", "b.txt", "c.dat"}));
  EXPECT_EQ(seen[1], (V{"[adir]", "[zdir]", "c.dat", "a.zip", "b.txt"})) << "size";
  EXPECT_EQ(seen[2], (V{"[zdir]", "[adir]", "b.txt", "a.zip", "c.dat"})) << "size, reversed";
  EXPECT_EQ(seen[3], (V{"[zdir]", "[adir]", "a.zip", "b.txt", "c.dat"})) << "extension, reversed";
  EXPECT_EQ(seen[4], (V{"[adir]", "[zdir]", "b.txt", "a.zip", "c.dat"})) << "date, reversed: newest first";
  EXPECT_EQ(seen[5], (V{"[adir]", "[zdir]", ".hidden", "a.zip", "b.txt", "c.dat"}));
}

TEST_F(SelectorTest, NewDirectoryRenameAndDeleteFromTheShortcutMenu) {
  touch("old.omb");
  std::string deleteQuestion, renameOffered;
  auto type_in_small_dialog = [&](const std::string& text) {
    auto& ds = zelvy_dialog::state();
    XSetInputFocus(xdisplay(), XtWindow(ds.wDialogInfo[ds.iDlgCur].shell), RevertToParent, CurrentTime);
    xdotool("key --clearmodifiers End shift+Home BackSpace");
    xdotool("type --delay 15 '" + text + "'");
    xdotool("key Return");
  };
  step([&] { click_field(32119); });  // the tool row's menu button
  step([&] { choose(32105); });  // New directory
  step([&] { type_in_small_dialog("made dir"); }, 400);
  step([&] { click_option(option_of("old.omb"), 1, 3); });
  step([&] { choose(32102); });
  step([&] {
    WDialogGetString(1007, renameOffered);
    type_in_small_dialog("new name.omb");
  }, 400);
  step([&] { click_option(option_of("[made dir]"), 1, 3); });
  step([&] { choose(32103); }, 400);
  step([&] {
    deleteQuestion = box_text();
    answer(true);
  }, 400);
  step([&] { click_field(2); });
  std::string start = padded_name(dir_ / "");
  run(kOmbFilter, 0, start);
  EXPECT_EQ(trimmed(renameOffered), "old.omb");
  EXPECT_EQ(deleteQuestion, "Delete directory 'made dir' and its contents ?");
  EXPECT_FALSE(fs::exists(dir_ / "made dir"));
  EXPECT_FALSE(fs::exists(dir_ / "old.omb"));
  EXPECT_TRUE(fs::exists(dir_ / "new name.omb"));
}

TEST_F(SelectorTest, SavingOverAnExistingFileAsksFirst) {
  touch("job.omb");
  std::string first, stillOpen;
  step([&] { type_name("job"); });  // the filter's extension is appended
  step([&] {
    first = box_text();
    answer(false);
  }, 400);
  step([&] { stillOpen = text(kName); });
  step([&] { xdotool("key Return"); });
  step([&] { answer(true); }, 400);
  std::string name = padded_name(dir_ / "");
  run(kOmbFilter, kSelectSave | kSelectPrompt | kSelectAppendExtension, name);
  EXPECT_EQ(first, (dir_ / "job.omb").string() + " already existsDo you want to replace it?");
  EXPECT_EQ(stillOpen, "job");
  EXPECT_EQ(WInfoDialog(4), 1);
  EXPECT_EQ(trimmed(name), (dir_ / "job.omb").string());
}

TEST_F(SelectorTest, OpeningAMissingFilePromptsAndCancelLeavesTheName) {
  std::string ask, notFound;
  step([&] { type_name("missing.omb"); });
  step([&] {
    ask = box_text();
    answer(false);
  }, 400);
  step([&] { click_field(2); });
  std::string name = padded_name(dir_ / "");
  const std::string before = name;
  run(kOmbFilter, kSelectPrompt, name);
  EXPECT_EQ(ask, (dir_ / "missing.omb").string() + " does not exist.Do you want to create it?");
  EXPECT_NE(WInfoDialog(4), 1) << "cancelled";
  EXPECT_EQ(WInfoDialog(15), 2);
  EXPECT_EQ(name, before) << "untouched by Cancel";

  step([&] { type_name("missing.omb"); });
  step([&] {
    notFound = box_text();
    answer(true);
  }, 400);
  step([&] { click_field(2); });
  run(kOmbFilter, kSelectMustExist, name);
  EXPECT_EQ(notFound, (dir_ / "missing.omb").string() + "File not found.");
  EXPECT_NE(WInfoDialog(4), 1);
}

TEST_F(SelectorTest, HistoryUpBackAndForward) {
  fs::create_directories(dir_ / "one" / "two");
  std::vector<std::string> dirs;
  auto look = [&] { dirs.push_back(text(kDirField)); };
  step([&] { click_field(32104); });  // up
  step(look);
  step([&] { click_field(32120); });  // back
  step(look);
  step([&] { click_field(32121); });  // forward
  step(look);
  step([&] { click_field(2); });
  std::string name = padded_name(dir_ / "one" / "");
  run(kOmbFilter, 0, name);
  EXPECT_EQ(dirs, (std::vector<std::string>{dir_.string(), (dir_ / "one").string(), dir_.string()}));
}

TEST_F(SelectorTest, OddNamesShowAndAreChosenExactly) {
  const std::string newline = "two\nlines.omb";
  touch("with blank.omb");
  touch("ünïcødé.omb");
  touch(newline);
  std::vector<std::string> shown;
  step([&] { shown = options(); });
  step([&] { click_option(option_of("two\xE2\x90\x8Alines.omb"), 2); });
  std::string name = padded_name(dir_ / "");
  run(kOmbFilter, 0, name);
  EXPECT_EQ(shown, (std::vector<std::string>{"two\xE2\x90\x8Alines.omb", "with blank.omb", "ünïcødé.omb"}));
  EXPECT_EQ(trimmed(name), (dir_ / newline).string());
}

TEST_F(SelectorTest, SeveralFilesComeBackAfterTheDirectory) {
  touch("a.omb");
  touch("b.omb");
  touch("c.omb");
  std::string field;
  // Apart by more than the double-click time, which would press OK.
  step([&] { click_option(1); }, 700);
  step([&] { add_option(3); }, 700);
  step([&] { field = text(kName); });
  step([&] { click_field(1); });
  std::string name = padded_name(dir_ / "");
  run(kOmbFilter, kSelectMultiple, name);
  EXPECT_EQ(field, "\"a.omb\"\"c.omb\"");
  EXPECT_EQ(trimmed(name), dir_.string() + "\0a.omb\0c.omb"s);
}

TEST_F(SelectorTest, TenThousandFilesOpenQuickly) {
  for (int i = 0; i < 10000; ++i) {
    char n[32];
    std::snprintf(n, sizeof n, "f%05d.dat", i);
    std::ofstream(dir_ / n);
  }
  const auto t0 = std::chrono::steady_clock::now();
  double seconds = 0;
  std::size_t count = 0;
  step([&] {
    seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    count = options().size();
  }, 0);
  step([&] { type_name("f09999.dat"); });
  std::string name = padded_name(dir_ / "");
  run("Data (*.dat)|*.dat|", 0, name);
  EXPECT_EQ(count, 10000u);
  EXPECT_LT(seconds, 3.0) << "dialog shown and filled, plus the script's first delays";
  EXPECT_EQ(trimmed(name), (dir_ / "f09999.dat").string());
}

TEST_F(SelectorTest, LooksRight) {
  touch("si.omb");
  touch("quartz.omb");
  fs::create_directory(dir_ / "data");
  step([&] {
    const fs::path shots = fs::path(ZELV_BINARY_DIR) / "shots";
    fs::create_directories(shots);
    auto& ds = zelvy_dialog::state();
    const std::string window = std::to_string(XtWindow(ds.wDialogInfo[ds.iDlgCur].shell));
    EXPECT_EQ(std::system(("import -window " + window + " '" + (shots / "file-selector.png").string() + "'").c_str()), 0);
  }, 100);
  step([&] { click_field(2); });
  std::string name = padded_name(dir_ / "si.omb");
  run(kOmbFilter, 0, name);
}

}  // namespace

// Buffers of a multi-buffer editor, its command line with the history, and
// the editor's toolbar, on the X server of the fixture.
#include "tests/toolkit/editor/editor_fixture.h"

#include "toolkit/kernel/editor_attach.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/toolbar_private.h"

namespace {

constexpr int kMulti = 0x4000, kPlainLine = 0x8, kHistoryLine = 0x10, kNoToolbar = 0x20;

class EditorBuffers : public EditorWindow {
 protected:
  // A file of the test directory with its text.
  std::string file(const std::string& name, const std::string& text) {
    write(dir / name, text);
    return (dir / name).string();
  }
  void load(const std::string& path) {
    WindowSelect(handle);
    WEditFile(path);
    settle();
  }
  // The View item of a buffer as the menu shows it, with its mnemonic's
  // letter, and a star when it is checked.
  std::string view_item(int buffer) {
    MenuRecord* m = zelvy_menu::state().pwRootMenuSub[handle].get();
    const int i = m ? m->find(edit_id::kView + buffer) : -1;
    if (i < 0) return "(none)";
    return m->ItemText[i] + " [" + m->ItemText[i].substr(m->ItemMnemonic[i], 1) + "]" +
           ((m->ItemFlags[i] & kMenuChecked) ? " *" : "");
  }
  // Messages the loop hands the program until nothing more comes.
  std::vector<std::pair<int, int>> drain() {
    std::vector<std::pair<int, int>> got;
    int type = 0;
    MessageRecord m;
    for (int i = 0; i < 500; ++i) {
      XSync(xdisplay(), False);
      WMessagePeek(type, m);
      if (type == -1) {
        XSync(xdisplay(), False);
        WMessagePeek(type, m);
        if (type == -1) break;
      }
      if (type > 0) got.emplace_back(type, m.Win);
    }
    return got;
  }
  // A click; `settle` false leaves the messages it makes to the caller.
  void click(Widget w, bool settle = true) {
    Dimension wd = 0, ht = 0;
    XtVaGetValues(w, XtNwidth, &wd, XtNheight, &ht, nullptr);
    int x = 0, y = 0;
    Window child = 0;
    XTranslateCoordinates(xdisplay(), XtWindow(w), DefaultRootWindow(xdisplay()), wd / 2, ht / 2, &x, &y, &child);
    const std::string args = "mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1";
    if (settle) xdotool(args);
    else xdotool_now(args);
  }
  ToolbarRecord* toolbar() { return zelvy_toolbar::state().pwToolbar[handle][kToolbarTop].get(); }
  Widget button(int id) {
    ToolbarRecord* bar = toolbar();
    for (int i = 0; bar && i < bar->ButtonCount(); ++i)
      if (bar->ButtonIds[i] == id) return bar->ButtonWidgets[i];
    return nullptr;
  }
  void shot(const std::string& name) {
    const fs::path shots = fs::path(ZELV_BINARY_DIR) / "shots";
    fs::create_directories(shots);
    XRaiseWindow(xdisplay(), zelvy_win::state().wShell[handle]);
    settle();
    EXPECT_EQ(std::system(("import -window root " + (shots / name).string()).c_str()), 0);
  }
};

TEST_F(EditorBuffers, SwitchingBuffersKeepsEachOnesTextSelectionAndState) {
  const std::string a = file("a.txt", "alpha one\nalpha two\n"), b = file("b.txt", "beta\n");
  open(a, kMulti);
  EXPECT_EQ(view_item(1), "1 " + a + " [1] *");
  load(b);
  EXPECT_EQ(record().BufferCount, 2);
  EXPECT_EQ(record().CurrentBuffer, 2);
  EXPECT_EQ(text(), "beta\n");
  EXPECT_EQ(view_item(1), "1 " + a + " [1]");
  EXPECT_EQ(view_item(2), "2 " + b + " [2] *");
  // Buffer 1 answers from the store.
  EXPECT_EQ(WInfoEditor(handle, 2, 1), 20);
  EXPECT_EQ(WInfoEditor(handle, 1, 1), 1);
  EXPECT_EQ(WInfoEditor(handle, 2, 3), 0);  // no such buffer

  // An edit and a selection in buffer 2, a bookmark in buffer 1.
  WindowSelect(handle);
  WEditPutTextPart("new ", 1);
  yyeditselection(4, 8);
  EXPECT_EQ(WInfoEditor(handle, 1), 0);
  int error = -1;
  yyeditselectbuffer(1, error);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(text(), "alpha one\nalpha two\n");
  EXPECT_EQ(WInfoEditor(handle, 1), 1);  // the switch is no edit
  EXPECT_EQ(*zelvy_win::state().WinInfo[handle].Title, "Ombrel Text Editor - [" + a + "]");
  EXPECT_EQ(WInfoEditor(handle, 1, 2), 0);
  EXPECT_EQ(WInfoEditor(handle, 4, 2), 5);
  EXPECT_EQ(WInfoEditor(handle, 5, 2), 8);
  int saved = -1;
  yyeditgetsave(handle, 2, saved);
  EXPECT_EQ(saved, 0);
  std::string name;
  yyeditgetbuffername(handle, 2, name);
  EXPECT_EQ(name, b);
  WEditSetPos(12);
  WindowSelect(handle);
  MessageRecord m;
  m.Win = handle;
  m.Value1 = edit_id::kSetBookmark;
  int type = MenuSelect;
  yyEditorHooks().process_message(type, m);
  EXPECT_EQ(record().Bookmark[0], 11);

  yyeditselectbuffer(2, error);
  EXPECT_EQ(text(), "new beta\n");
  EXPECT_EQ(selection(), std::make_pair(4L, 8L));
  EXPECT_EQ(WInfoEditor(handle, 1), 0);  // still unsaved
  EXPECT_EQ(WInfoEditor(handle, 3), 1);
  EXPECT_EQ(record().FileName, b);
  EXPECT_EQ(record().Bookmark[0], 11);  // the text going in again moved no bookmark
  // Save writes the buffer on show to its own file.
  yyeditsave(0);
  EXPECT_EQ(read(b), "new beta\n");
  EXPECT_EQ(read(a), "alpha one\nalpha two\n");

  // Swapping a buffer with itself changes nothing; opening a file that a
  // buffer holds shows that buffer and loads nothing.
  yyeditswap(handle, 2, 2);
  EXPECT_EQ(text(), "new beta\n");
  write(dir / "a.txt", "changed on disk\n");
  load(a);
  EXPECT_EQ(record().BufferCount, 2);
  EXPECT_EQ(record().CurrentBuffer, 1);
  EXPECT_EQ(text(), "alpha one\nalpha two\n");
}

TEST_F(EditorBuffers, AClosedModalEditorStillAnswersForItsBuffers) {
  const std::string a = file("a.txt", "alpha\n"), b = file("b.txt", "be\n");
  WindowOpenChild(handle, kOmbrelView, 40, 40, 700, 480, 0, {}, 0, "Modal");
  ASSERT_GT(handle, 0);
  // Inside the editor's own loop: a second file, then Exit.
  when([this] { return yyEditRecordOf(handle) != nullptr; },
       [this, b] {
         WindowSelect(handle);
         WEditFile(b);
         MessageRecord m;
         m.Win = handle;
         m.Value1 = edit_id::kExit;
         int type = MenuSelect;
         yyEditorHooks().process_message(type, m);
       });
  WEditFile(a, 1, 0, kMulti | kHistoryLine, kMonoFont);
  EXPECT_FALSE(yywindowexists(handle));
  EXPECT_EQ(zelvy_data::data().ierr, 1033);  // a modal editor has no command line
  EXPECT_EQ(WInfoEditor(-1, 7), 2);
  EXPECT_EQ(WInfoEditor(-1, 6), 2);
  EXPECT_EQ(WInfoEditor(-1, 2), 3);
  EXPECT_EQ(WInfoEditor(-1, 2, 1), 6);
  EXPECT_EQ(WInfoEditor(-1, 2, 3), 0);
}

TEST_F(EditorBuffers, ExitAsksForEveryChangedBufferAndACancelKeepsThemAll) {
  const std::string a = file("a.txt", "A\n"), b = file("b.txt", "B\n"), c = file("c.txt", "C\n");
  open(a, kMulti);
  load(b);
  load(c);
  WindowSelect(handle);
  WEditPutText("B2\n");  // into c.txt's buffer, the third
  int error = 0;
  yyeditselectbuffer(2, error);
  WEditPutText("B1\n");
  yyeditselectbuffer(1, error);
  WEditPutText("A1\n");
  // Yes for the buffer on show; once that box is answered, Cancel for the next changed one.
  when([] { return viewable(yyComDlgBoxWidget() ? XtParent(yyComDlgBoxWidget()) : nullptr); },
       [this] {
         box_titles.emplace_back("first");
         XSetInputFocus(xdisplay(), XtWindow(XtParent(yyComDlgBoxWidget())), RevertToParent, CurrentTime);
         xdotool_now("key Return");
         answer_box("Escape");
       });
  MessageRecord m;
  m.Win = handle;
  m.Value1 = edit_id::kExit;
  int type = MenuSelect;
  yyEditorHooks().process_message(type, m);
  EXPECT_EQ(type, 0);  // nothing closes
  EXPECT_EQ(box_titles.size(), 2u);
  EXPECT_EQ(record().CurrentBuffer, 1);
  EXPECT_EQ(text(), "A1\n");
  EXPECT_EQ(read(a), "A1\n");
  EXPECT_EQ(read(b), "B\n");
  EXPECT_EQ(WInfoEditor(handle, 1, 2), 0);
  EXPECT_EQ(WInfoEditor(handle, 1, 3), 0);
}

TEST_F(EditorBuffers, AnotherFontKeepsTheTextAndItsPlace) {
  open(file("a.txt", "alpha\nbeta\n"));
  WindowSelect(handle);
  Dimension w0 = 0, h0 = 0;
  XtVaGetValues(XtParent(record().Text), XmNwidth, &w0, XmNheight, &h0, nullptr);
  int error = -1;
  yyeditfont(9, -1, error);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(WInfoEditor(handle, 11), 9);
  EXPECT_EQ(WInfoEditor(handle, 12), 0);
  yyeditfont(-1, 16, error);
  EXPECT_EQ(WInfoEditor(handle, 11), 9);
  Dimension w1 = 0, h1 = 0;
  XtVaGetValues(XtParent(record().Text), XmNwidth, &w1, XmNheight, &h1, nullptr);
  EXPECT_EQ(w0, w1);
  EXPECT_EQ(h0, h1);
  EXPECT_EQ(text(), "alpha\nbeta\n");
  EXPECT_EQ(WEditPos(2, 2), 7);
  yyeditfont(99, -1, error);
  EXPECT_EQ(error, 1116);
  EXPECT_EQ(WInfoEditor(handle, 11), 3);
  WindowSelect(0);
  yyeditfont(4, -1, error);
  EXPECT_EQ(error, 1028);
}

TEST_F(EditorBuffers, ThirtyFiveBuffersAndNoMore) {
  open(file("f1.txt", "1\n"), kMulti);
  for (int i = 2; i <= kEditMaxBuffers; ++i) load(file("f" + std::to_string(i) + ".txt", std::to_string(i) + "\n"));
  EXPECT_EQ(record().BufferCount, kEditMaxBuffers);
  EXPECT_EQ(view_item(9).substr(0, 2), "9 ");
  EXPECT_EQ(view_item(10).substr(0, 2), "A ");
  EXPECT_EQ(view_item(35), "Z " + (dir / "f35.txt").string() + " [Z] *");
  zelvy_data::data().ierr = 0;
  load(file("f36.txt", "36\n"));
  EXPECT_EQ(zelvy_data::data().ierr, 1068);
  EXPECT_EQ(record().BufferCount, kEditMaxBuffers);
  EXPECT_EQ(text(), "35\n");
  // New at the limit is refused and the message dropped.
  MessageRecord m;
  m.Win = handle;
  m.Value1 = edit_id::kNew;
  int type = MenuSelect;
  yyEditorHooks().process_message(type, m);
  EXPECT_EQ(type, 0);

  // Buffer numbers outside the editor's, and editors without buffers.
  int error = 0;
  WindowSelect(handle);
  yyeditselectbuffer(36, error);
  EXPECT_EQ(error, 1067);
  yyeditselectbuffer(0, error);
  EXPECT_EQ(error, 1067);
  zelvy_data::data().ierr = 0;
  yyeditstorebuffer(handle, kEditMaxBuffers + 1);
  EXPECT_EQ(zelvy_data::data().ierr, 1067);
  zelvy_data::data().ierr = 0;
  yyeditstorebuffer(0, 1);  // the root window is no editor
  EXPECT_EQ(zelvy_data::data().ierr, 1028);
  yyeditselectbuffer(7, error);
  EXPECT_EQ(text(), "7\n");
}

TEST_F(EditorBuffers, ClosingABufferMovesTheLaterOnesDown) {
  const std::string a = file("a.txt", "A\n"), b = file("b.txt", "B\n"), c = file("c.txt", "C\n");
  open(a, kMulti);
  load(b);
  load(c);
  int error = 0;
  WindowSelect(handle);
  yyeditselectbuffer(2, error);
  record().FilterIndex[2] = 2;  // the third buffer's file type follows it down
  yyeditclose(0);
  settle();
  EXPECT_EQ(record().BufferCount, 2);
  EXPECT_EQ(record().CurrentBuffer, 2);
  EXPECT_EQ(text(), "C\n");
  EXPECT_EQ(record().FileName, c);
  EXPECT_EQ(record().FilterIndex[1], 2);
  EXPECT_EQ(view_item(2), "2 " + c + " [2] *");
  EXPECT_EQ(view_item(3), "(none)");

  // The last buffer of the list closes onto the one before.
  yyeditclose(0);
  EXPECT_EQ(record().BufferCount, 1);
  EXPECT_EQ(text(), "A\n");
  // The very last is not removed: it empties and is untitled.
  yyeditclose(1);
  EXPECT_EQ(record().BufferCount, 1);
  EXPECT_EQ(text(), "");
  EXPECT_EQ(view_item(1), "1 Untitled [1] *");
  // A file now goes into that empty buffer instead of beside it.
  load(b);
  EXPECT_EQ(record().BufferCount, 1);
  EXPECT_EQ(view_item(1), "1 " + b + " [1] *");
}

TEST_F(EditorBuffers, HistoryKeepsTheNewestFirstUpToItsLimit) {
  open(file("a.txt", "A\n"), kHistoryLine);
  int error = -1;
  WindowSelect(handle);
  yyeditcheckhistory(error);
  EXPECT_EQ(error, 0);
  yyeditputhistory(0, "first");
  yyeditputhistory(0, "second");
  yyeditputhistory(5, "last");  // past the end: appended
  std::string item;
  std::vector<std::string> items;
  for (int i = 0; i < 3; ++i) {
    yyeditgethistory(i, item);
    items.push_back(item);
  }
  EXPECT_EQ(items, (std::vector<std::string>{"second", "first", "last"}));
  EXPECT_EQ(WInfoEditor(handle, 10), 3);
  for (int i = 0; i < kEditHistoryLimit + 5; ++i) yyeditputhistory(0, "cmd " + std::to_string(i));
  EXPECT_EQ(WInfoEditor(handle, 10), kEditHistoryLimit);
  yyeditgethistory(0, item);
  EXPECT_EQ(item, "cmd " + std::to_string(kEditHistoryLimit + 4));
  yyeditgethistory(kEditHistoryLimit - 1, item);
  EXPECT_EQ(item, "cmd 5");  // the oldest ones went
  yyeditclearhistory(error);
  EXPECT_EQ(WInfoEditor(handle, 10), 0);

  // The command line's text and the prompt in front of it.
  yyeditputcommand(error, "scale 2");
  std::string line;
  yyeditgetcommand(error, line);
  EXPECT_EQ(line, "scale 2");
  yyeditgetcommand(error, line, 5);
  EXPECT_EQ(error, 1023);
  EXPECT_EQ(line, "scale");
  yyeditprompt(error, "Command:");
  EXPECT_EQ(error, 0);
  ASSERT_NE(record().PromptLabel, nullptr);
  settle();
  Position px = 0, cx = 0;
  XtVaGetValues(record().PromptLabel, XmNx, &px, nullptr);
  XtVaGetValues(record().CommandWidget, XmNx, &cx, nullptr);
  EXPECT_LT(px, cx);
  yyeditprompt(error, "");
  EXPECT_EQ(record().PromptLabel, nullptr);
}

TEST_F(EditorBuffers, EditorsWithoutAHistoryALineOrBuffersSaySo) {
  open(file("a.txt", "A\n"), kPlainLine);
  int error = 0;
  WindowSelect(handle);
  yyeditcheckhistory(error);
  EXPECT_EQ(error, 1092);
  yyeditclearhistory(error);
  EXPECT_EQ(error, 1092);
  yyeditputcommand(error, "x");
  EXPECT_EQ(error, 0);
  yyeditselectbuffer(1, error);  // one buffer only: no store to choose from
  EXPECT_EQ(error, 1067);
  WindowCloseChild(handle);
  open(file("b.txt", "B\n"));
  WindowSelect(handle);
  yyeditprompt(error, "p");
  EXPECT_EQ(error, 1032);
  std::string line;
  yyeditgetcommand(error, line);
  EXPECT_EQ(error, 1032);
  WindowSelect(0);
  yyeditcheckhistory(error);
  EXPECT_EQ(error, 1028);
}

TEST_F(EditorBuffers, ATypedCommandReachesTheProgramAndItsHistory) {
  open(file("a.txt", "A\n"), kHistoryLine);
  // The line lies under the text, the text keeps the rest of the window.
  Position ty = 0, cy = 0;
  Dimension th = 0;
  XtVaGetValues(XtParent(record().Text), XmNy, &ty, XmNheight, &th, nullptr);
  XtVaGetValues(record().CommandWidget, XmNy, &cy, nullptr);
  EXPECT_EQ(ty + static_cast<int>(th), cy);

  click(record().CommandText);
  xdotool("type --delay 20 'run 3'");
  XSync(xdisplay(), False);
  xdotool_now("key Return");
  auto got = drain();
  EXPECT_NE(std::find(got.begin(), got.end(), std::make_pair(static_cast<int>(EditorCommand), handle)), got.end());
  int error = 0;
  std::string line;
  WindowSelect(handle);
  yyeditgetcommand(error, line);
  EXPECT_EQ(line, "run 3");
  EXPECT_EQ(WInfoEditor(handle, 10), 1);
  // The same line again stays one item; the Go button sends as Return does.
  click(record().GoButton, false);
  got = drain();
  EXPECT_NE(std::find(got.begin(), got.end(), std::make_pair(static_cast<int>(EditorCommand), handle)), got.end());
  EXPECT_EQ(WInfoEditor(handle, 10), 1);
  // The line is selected: typing replaces it; Escape clears it.
  click(record().CommandText);
  xdotool("key End shift+Home");
  xdotool("type --delay 20 'stop'");
  xdotool("key Return");
  yyeditgetcommand(error, line);
  EXPECT_EQ(line, "stop");
  std::string newest;
  yyeditgethistory(0, newest);
  EXPECT_EQ(newest, "stop");
  xdotool("key Escape");
  yyeditgetcommand(error, line);
  EXPECT_EQ(line, "");
  EXPECT_EQ(text(), "A\n");  // nothing of it went into the text
  // Shift+Tab takes the keyboard to the text and back, in the window that
  // has the keyboard as a window manager would give it.
  XSetInputFocus(xdisplay(), XtWindow(zelvy_win::state().wtShell[handle]), RevertToParent, CurrentTime);
  xdotool("key shift+Tab");
  xdotool("type --delay 20 'x'");
  EXPECT_EQ(text(), "xA\n");
  xdotool("key shift+Tab");
  xdotool("type --delay 20 'y'");
  yyeditgetcommand(error, line);
  EXPECT_EQ(line, "y");
  shot("editor_command_line.png");
}

TEST_F(EditorBuffers, TheToolbarFollowsTheMenuAndDoesItsCommands) {
  open(file("a.txt", "alpha\n"), kMulti);
  ASSERT_NE(toolbar(), nullptr);
  EXPECT_EQ(toolbar()->ButtonIds, (std::vector<int>{edit_id::kNew, edit_id::kOpen, edit_id::kSave, edit_id::kPrint,
                                                    edit_id::kFind, 0, edit_id::kCut, edit_id::kCopy,
                                                    edit_id::kPaste}));
  // Cut and Copy are grey while nothing is selected, as their items are.
  EXPECT_EQ(yyMenuToolbarButtonState(handle, edit_id::kCut) & 2, 2);
  EXPECT_FALSE(XtIsSensitive(button(edit_id::kCopy)));
  WindowSelect(handle);
  yyeditselection(0, 5);
  yyEditGreyItems(record());
  EXPECT_EQ(yyMenuToolbarButtonState(handle, edit_id::kCut) & 2, 0);
  EXPECT_TRUE(XtIsSensitive(button(edit_id::kCopy)));
  shot("editor_toolbar.png");

  // New from the toolbar opens a second buffer, as the menu's New does.
  click(button(edit_id::kNew));
  EXPECT_EQ(record().BufferCount, 2);
  EXPECT_EQ(text(), "");
  EXPECT_EQ(view_item(2), "2 Untitled [2] *");
  EXPECT_EQ(toolbar()->ButtonTexts[0], std::optional<std::string>("New"));
  WindowCloseChild(handle);
  open(file("b.txt", "beta\n"), kNoToolbar);
  EXPECT_EQ(toolbar(), nullptr);
}



}  // namespace

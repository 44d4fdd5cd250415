// Editor windows on the X server: viewing, editing and saving files, the
// failures a user meets, awkward files, a file of a million lines, and the
// close box reaching the application's loop.
#include "tests/toolkit/editor/editor_fixture.h"

namespace {

const char* const kOut =
    "  OMBREL  stand-in report\n"
    "  Title : Silicon, room temperature\n"
    "  Cell  :   5.4309   5.4309   5.4309  90.000  90.000  90.000\n"
    "  Space group  F d -3 m\n"
    "  Wavelength   0.71073\n"
    "  Reflections read      1234   rejected     5\n";

TEST_F(EditorWindow, ShowsAResultFileWithPositionAndTitle) {
  write(dir / "si.out", kOut);
  open((dir / "si.out").string());
  EXPECT_EQ(text(), kOut);
  EXPECT_EQ(zelvy_win::state().WinInfo[handle].Kind, 1);
  EXPECT_EQ(*zelvy_win::state().WinInfo[handle].Title, "Ombrel Text Editor - [" + (dir / "si.out").string() + "]");
  EXPECT_EQ(yyWindowStatusBarText(handle, 1), "Line:1  Col:1");
  EXPECT_EQ(WInfoEditor(handle, 1), 1);  // nothing unsaved
  EXPECT_EQ(WInfoEditor(handle, 2), static_cast<int>(std::string(kOut).size()));
  const std::string out = kOut;
  const int third = static_cast<int>(out.find('\n', out.find('\n') + 1)) + 2;
  EXPECT_EQ(WEditPos(2, 3), third);
  EXPECT_EQ(WEditPos(1, third - 1), 2);
  EXPECT_EQ(WEditPos(2, 8), 0);  // beyond the last (empty) line

  WEditSetPos(3, 2);  // line 3
  settle();
  EXPECT_EQ(WInfoEditor(handle, 15), 3);
  EXPECT_EQ(yyWindowStatusBarText(handle, 1), "Line:3  Col:1");

  // The picture a user gets.
  const fs::path shots = fs::path(ZELV_BINARY_DIR) / "shots";
  fs::create_directories(shots);
  XRaiseWindow(xdisplay(), zelvy_win::state().wShell[handle]);
  settle();
  EXPECT_EQ(std::system(("import -window root " + (shots / "editor.png").string()).c_str()), 0);
}

TEST_F(EditorWindow, TypedTextIsSavedWithALastLineEndAndTheTableFollows) {
  write(dir / "job.txt", "alpha\nbeta");
  open((dir / "job.txt").string(), 0x80);  // modified mark in the title
  click_text();
  WindowSelect(handle);
  WEditSetPos(3);  // between "al" and "pha"
  xdotool("type --delay 30 'X'");
  xdotool("key Return");
  EXPECT_EQ(text(), "alX\npha\nbeta");
  EXPECT_EQ(WInfoEditor(handle, 1), 0);
  EXPECT_EQ(WInfoEditor(handle, 3), 1);
  EXPECT_NE(zelvy_win::state().WinInfo[handle].Title->find(" *]"), std::string::npos);
  // The table after the keystrokes is the one a fresh count gives.
  EXPECT_EQ(WEditPos(2, 2), 5);
  EXPECT_EQ(WEditPos(2, 3), 9);
  EXPECT_EQ(record().LineCount, 3);

  xdotool("key ctrl+s");  // the editor's own accelerator
  EXPECT_EQ(read(dir / "job.txt"), "alX\npha\nbeta\n");
  EXPECT_EQ(text(), "alX\npha\nbeta");  // the text keeps its form
  EXPECT_EQ(WInfoEditor(handle, 1), 1);
  EXPECT_EQ(WInfoEditor(handle, 3), 1);  // changed since load stays
  EXPECT_EQ(zelvy_win::state().WinInfo[handle].Title->find(" *]"), std::string::npos);

  // Text put in by the program goes through the same table.
  WEditPutTextPart("one\r\ntwo\n", 5, 8);  // replaces "pha\n"
  EXPECT_EQ(text(), "alX\none\ntwo\nbeta");
  EXPECT_EQ(WEditPos(2, 4), 13);
  WEditPutText("x\r\ny");
  EXPECT_EQ(text(), "x\ny");
  EXPECT_EQ(WEditPos(2, 2), 3);
}

TEST_F(EditorWindow, ASaveThatFailsSaysSoAndLeavesTheOldFile) {
  write(dir / "keep.out", "old\n");
  open((dir / "keep.out").string());
  WindowSelect(handle);
  WEditPutText("new text\n");
  const int before = messages();
  // The directory can't take the file any more (the owner of the test may
  // write anywhere, so the file is replaced by something no file opens onto).
  fs::rename(dir / "keep.out", dir / "kept.out");
  fs::create_directory(dir / "keep.out");
  answer_box("Return");
  yyeditsave(0);
  EXPECT_EQ(messages(), before + 1);
  EXPECT_EQ(yyEditLastMessage().title, "Open Error");
  EXPECT_EQ(yyEditLastMessage().text, (dir / "keep.out").string() + "\nCould not open file to write.");
  EXPECT_EQ(read(dir / "kept.out"), "old\n");
  EXPECT_EQ(WInfoEditor(handle, 1), 0);  // still unsaved

  if (::geteuid() != 0) {
    fs::remove(dir / "keep.out");
    fs::rename(dir / "kept.out", dir / "keep.out");
    fs::permissions(dir, fs::perms::owner_read | fs::perms::owner_exec);
    fs::permissions(dir / "keep.out", fs::perms::owner_read);
    answer_box("Return");
    yyeditsave(0);
    EXPECT_EQ(messages(), before + 2);
    EXPECT_EQ(read(dir / "keep.out"), "old\n");
  }
  // A device that takes nothing.
  WindowCloseChild(handle);
  answer_box("Return");
  open("/dev/full");
  EXPECT_EQ(yyEditLastMessage().text, "/dev/full\nFile is not of a regular type.");
  WindowSelect(handle);
  WEditPutText("x");
  answer_box("Return");
  yyeditsave(0);
  EXPECT_EQ(yyEditLastMessage().title, "Write Error");
  EXPECT_EQ(yyEditLastMessage().text, "/dev/full\nFailed to write entire file.");
}

TEST_F(EditorWindow, MissingFilesAndDirectoriesAreReported) {
  const int before = messages();
  answer_box("Return");
  open((dir / "none.out").string());
  EXPECT_EQ(messages(), before + 1);
  EXPECT_EQ(yyEditLastMessage().title, "Open Error");
  EXPECT_EQ(yyEditLastMessage().text,
            (dir / "none.out").string() + "\nFile not found.\nPlease verify the correct file name was given");
  EXPECT_EQ(text(), "");  // an open, empty editor
  EXPECT_EQ(WInfoEditor(handle, 2), 0);

  WindowSelect(handle);
  answer_box("Return");
  WEditFile(dir.string());
  EXPECT_EQ(yyEditLastMessage().text, dir.string() + "\nFile is not of a regular type.");
  WindowCloseChild(handle);

  // Quietly: no message, and the name stays for a later save.
  open((dir / "quiet.txt").string(), 0x1000000);
  EXPECT_EQ(messages(), before + 2);
  WindowSelect(handle);
  WEditPutText("made");
  yyeditsave(0);
  EXPECT_EQ(read(dir / "quiet.txt"), "made\n");
}

TEST_F(EditorWindow, AwkwardFilesShowWhatTheyHold) {
  // Windows line ends, UTF-8, a line longer than any screen, ISO 8859-1.
  std::string longline(200000, 'x');
  write(dir / "mixed.txt", "h k l\r\n\xc3\x85ngstr\xc3\xb6m\r\n" + longline + "\nend \xc5\n");
  open((dir / "mixed.txt").string());
  const std::string t = text();
  EXPECT_EQ(t, "h k l\n\xc3\x85ngstr\xc3\xb6m\n" + longline + "\nend \xc3\x85\n");
  EXPECT_EQ(WEditPos(2, 3), 16);
  EXPECT_EQ(WEditPos(2, 4), 16 + 200001);
  WindowSelect(handle);
  WEditSetPos(4, 2);
  EXPECT_EQ(WInfoEditor(handle, 4), 16 + 200001);

  // A binary file stops at its first NUL; before it, bytes stand for themselves.
  WindowCloseChild(handle);
  std::string bin = "\x7f" "ELF\x02\x01\x01";
  bin += std::string(1, '\0') + "more";
  write(dir / "a.bin", bin);
  open((dir / "a.bin").string());
  EXPECT_EQ(text(), "\x7f" "ELF\x02\x01\x01");
  EXPECT_EQ(WInfoEditor(handle, 2), 7);
}

TEST_F(EditorWindow, AMillionLinesOpenAtOnceAndStayNavigable) {
  std::string big;
  big.reserve(52'000'000);
  char line[64];
  for (int i = 1; i <= 1'000'000; ++i) {
    std::snprintf(line, sizeof line, "%8d %4d %4d %4d %12.3f %10.3f  reflection\n", i, i % 40 - 20, i % 30 - 15,
                  i % 20 - 10, i * 0.5, i * 0.01);
    big += line;
  }
  write(dir / "big.int", big);
  const auto t0 = std::chrono::steady_clock::now();
  open((dir / "big.int").string());
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  EXPECT_LT(seconds, 20.0);  // a generous bound: sanitizers slow this down many times
  RecordProperty("open_seconds", std::to_string(seconds));
  EXPECT_EQ(record().LineCount, 1'000'001);  // the table is whole at once
  // The widget shows the first page and takes the rest later; asking for the
  // text in any way brings all of it.
  EXPECT_LT(XmTextGetLastPosition(record().Text), 1'000'000);
  EXPECT_EQ(WInfoEditor(handle, 2), static_cast<int>(big.size()));
  EXPECT_EQ(XmTextGetLastPosition(record().Text), static_cast<XmTextPosition>(big.size()));
  WindowSelect(handle);
  const int last = static_cast<int>(big.rfind('\n', big.size() - 2)) + 1;
  EXPECT_EQ(WEditPos(2, 1'000'000), last + 1);
  WEditSetPos(999'999, 2);
  settle();
  EXPECT_EQ(yyWindowStatusBarText(handle, 1), "Line:999999  Col:1");
  // An edit near the top moves the million starts behind it.
  WEditPutTextPart("\n", 1);
  EXPECT_EQ(record().LineCount, 1'000'002);
  EXPECT_EQ(WEditPos(2, 1'000'001), last + 2);
}

// What a window manager sends when the user closes the window.
void close_box(Window shell) {
  XEvent ev{};
  ev.xclient.type = ClientMessage;
  ev.xclient.window = shell;
  ev.xclient.message_type = XInternAtom(xdisplay(), "WM_PROTOCOLS", False);
  ev.xclient.format = 32;
  ev.xclient.data.l[0] = static_cast<long>(XInternAtom(xdisplay(), "WM_DELETE_WINDOW", False));
  ev.xclient.data.l[1] = CurrentTime;
  XSendEvent(xdisplay(), shell, False, NoEventMask, &ev);
  XFlush(xdisplay());
}

TEST_F(EditorWindow, TheCloseBoxEndsTheApplicationsLoop) {
  write(dir / "si.out", kOut);
  open((dir / "si.out").string());
  close_box(zelvy_win::state().wShell[handle]);
  int type = 0;
  MessageRecord m;
  do WMessage(type, m);
  while (type != CloseRequest);
  EXPECT_EQ(m.Win, handle);
  EXPECT_EQ(m.Value1, 0);
  WindowCloseChild(handle);
  EXPECT_EQ(yyEditRecordOf(handle), nullptr);
}

// Runs the loop until a close request or until nothing more comes.
bool close_requested(int handle) {
  int type = 0;
  MessageRecord m;
  for (int i = 0; i < 200; ++i) {
    XSync(xdisplay(), False);
    WMessagePeek(type, m);
    if (type == CloseRequest && m.Win == handle) return true;
    if (type == -1) {
      XSync(xdisplay(), False);
      WMessagePeek(type, m);
      if (type == -1) return false;
    }
  }
  return false;
}

TEST_F(EditorWindow, ClosingWithUnsavedChangesAsksFirst) {
  write(dir / "job.txt", "a\n");
  open((dir / "job.txt").string());
  WindowSelect(handle);
  WEditPutText("b\n");
  answer_box("Escape");
  close_box(zelvy_win::state().wShell[handle]);
  EXPECT_FALSE(close_requested(handle));  // cancelled: nothing closes
  ASSERT_EQ(box_titles.size(), 1u);
  EXPECT_EQ(box_titles[0], "Ombrel Text Editor");  // the box drops trailing blanks
  EXPECT_EQ(read(dir / "job.txt"), "a\n");

  answer_box("Return");  // Yes, the first button
  close_box(zelvy_win::state().wShell[handle]);
  EXPECT_TRUE(close_requested(handle));
  EXPECT_EQ(read(dir / "job.txt"), "b\n");  // Yes saved first
  WindowCloseChild(handle);

  // A viewer has nothing to save and never asks.
  open((dir / "job.txt").string(), 0x4);
  WindowSelect(handle);
  WEditPutText("c\n");
  close_box(zelvy_win::state().wShell[handle]);
  EXPECT_TRUE(close_requested(handle));
}

TEST_F(EditorWindow, WrappedLinesFollowTheWidth) {
  std::string words;
  for (int i = 0; i < 60; ++i) words += "reflection ";
  write(dir / "wrap.txt", words + "\nend\n");
  open((dir / "wrap.txt").string(), 0x1);
  const int narrow = record().LineCount;
  EXPECT_GT(narrow, 3);  // one text line takes several display lines
  WindowSelect(handle);
  EXPECT_EQ(WEditPos(2, 2) - 1, static_cast<int>(record().LineStarts[1]));
  // Each display line but the last of the long one ends in a blank.
  std::string t = text();
  for (int i = 1; i + 2 < narrow; ++i) EXPECT_EQ(t[static_cast<std::size_t>(record().LineStarts[static_cast<std::size_t>(i)] - 1)], ' ');
  yywindowsizepos(-999999, -999999, 1200, 480, 1);
  settle();
  EXPECT_LT(record().LineCount, narrow);
  EXPECT_GE(record().LineCount, 3);
}

}  // namespace

// The support library's scroll window: lines gather in a read-only editor
// of its own, which closes on request and opens again at the next line.
TEST_F(EditorWindow, TheScrollWindowGathersLinesInAnEditor) {
  namespace msg = lorx_io_messages;
  msg::write_scroll_text("first line   ");
  msg::write_scroll_text("second line");
  ASSERT_TRUE(msg::wscroll);
  const int console = msg::win_console;
  ASSERT_GT(console, 0);
  EXPECT_EQ(zelvy_win::state().WinInfo[console].Kind, 1);
  settle();
  WindowSelect(console);
  std::string t;
  WEditGetText(t);
  EXPECT_NE(t.find("first line\n"), std::string::npos) << t;
  EXPECT_NE(t.find("second line\n"), std::string::npos) << t;
  EXPECT_LT(t.find("first line"), t.find("second line"));
  msg::close_scroll_window();
  EXPECT_FALSE(msg::wscroll);
  EXPECT_FALSE(yywindowexists(console));
  msg::write_scroll_text("again");
  EXPECT_TRUE(msg::wscroll);
  msg::close_scroll_window();
}

namespace {

// A large plain file is held a byte a character; the first letter outside
// ASCII, typed or put by the program, makes room for any letter and keeps
// the text, the caret and the line table.
TEST_F(EditorWindow, ALargePlainFileTakesLettersOfAnyKind) {
  std::string big;
  for (int i = 0; i < 40'000; ++i) big += "reflection " + std::to_string(i) + " 1.000 2.000 3.000\n";
  write(dir / "plain.int", big);
  open((dir / "plain.int").string());
  ASSERT_TRUE(record().Narrow);
  click_text();
  xdotool("key End");
  // As the widget's own input puts a typed or pasted letter (xdotool can't type
  // this one on the test server).
  XmTextInsert(record().Text, XmTextGetInsertionPosition(record().Text), const_cast<char*>("ö"));
  settle();
  EXPECT_FALSE(record().Narrow);
  std::string expected = big;
  expected.insert(big.find('\n'), "ö");
  EXPECT_TRUE(text() == expected);  // not printed: 1.4 MB
  EXPECT_EQ(WInfoEditor(handle, 1), 0);
  EXPECT_EQ(yyWindowStatusBarText(handle, 1), "Line:1  Col:32");
  EXPECT_EQ(WEditPos(2, 40'000), static_cast<int>(yyEditCharCount(expected.substr(0, expected.rfind("reflection 39999")))) + 1);

  // The program's own change does the same, at once.
  WindowCloseChild(handle);
  open((dir / "plain.int").string());
  ASSERT_TRUE(record().Narrow);
  WindowSelect(handle);
  WEditPutTextPart("Å", 1);
  EXPECT_FALSE(record().Narrow);
  EXPECT_TRUE(text() == "Å" + big);
}

}  // namespace

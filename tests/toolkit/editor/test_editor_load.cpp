// Loading files into the viewer: line ends of either kind, a last line
// without its end, an empty file, and files large enough to go into the
// widget by pieces, with the line table whole at once.
#include "tests/toolkit/editor/editor_fixture.h"

#include <algorithm>

namespace {

constexpr int kMegabyte = 1 << 20;

TEST_F(EditorWindow, SmallFilesKeepTheirLinesWhateverTheirEnds) {
  // Line ends of two bytes become one; a tab stays a tab.
  write(dir / "crlf.out", "h\tk l\r\n1 2 3\r\n");
  open((dir / "crlf.out").string());
  EXPECT_EQ(text(), "h\tk l\n1 2 3\n");
  EXPECT_EQ(WInfoEditor(handle, 2), 12);
  EXPECT_EQ(record().LineCount, 3);
  EXPECT_EQ(WEditPos(2, 2), 7);
  EXPECT_EQ(WInfoEditor(handle, 3), 0);  // loading is no change, to the text or the file
  EXPECT_EQ(read(dir / "crlf.out"), "h\tk l\r\n1 2 3\r\n");
  WindowCloseChild(handle);

  // The last line has no end: it is a line all the same, and nothing is added.
  write(dir / "open.out", "first\nlast");
  open((dir / "open.out").string());
  EXPECT_EQ(text(), "first\nlast");
  EXPECT_EQ(record().LineCount, 2);
  EXPECT_EQ(WEditPos(1, 10), 2);
  EXPECT_EQ(WEditPos(2, 3), 0);
  WindowCloseChild(handle);

  // An empty file: one empty line, its name in the title, no message.
  const int before = messages();
  write(dir / "empty.out", "");
  open((dir / "empty.out").string());
  EXPECT_EQ(messages(), before);
  EXPECT_EQ(text(), "");
  EXPECT_EQ(record().LineCount, 1);
  EXPECT_EQ(WEditPos(2, 1), 1);
  EXPECT_EQ(WEditPos(2, 2), 0);
  EXPECT_NE(zelvy_win::state().WinInfo[handle].Title.value_or("").find("empty.out"), std::string::npos);
}

TEST_F(EditorWindow, LargeFilesArriveWholeWithTheirTable) {
  // One line of ten megabytes, then a short one without its end.
  const std::string line(10 * kMegabyte, 'x');
  write(dir / "wide.out", line + "\nend");
  open((dir / "wide.out").string());
  EXPECT_EQ(record().LineCount, 2);
  EXPECT_EQ(WEditPos(2, 2), 10 * kMegabyte + 2);
  EXPECT_TRUE(text() == line + "\nend");  // not printed: 10 MB
  WindowCloseChild(handle);

  // Line ends of two bytes through a file of some megabytes: every one goes,
  // wherever it falls among the bytes read eight at a time.
  std::string crlf, lf;
  for (int i = 0; lf.size() < 3u * kMegabyte; ++i) {
    const std::string body = std::to_string(i) + std::string(static_cast<std::size_t>(i % 13), ' ') + "refl";
    crlf += body + "\r\n";
    lf += body + "\n";
  }
  write(dir / "dos.out", crlf);
  open((dir / "dos.out").string());
  EXPECT_TRUE(text() == lf);
  const int lines = static_cast<int>(std::count(lf.begin(), lf.end(), '\n')) + 1;
  EXPECT_EQ(record().LineCount, lines);
  EXPECT_EQ(WEditPos(2, lines - 1), static_cast<int>(lf.rfind('\n', lf.size() - 2)) + 2);
  WindowCloseChild(handle);

  // A letter outside ASCII deep in a large file: positions behind it count
  // characters, not bytes, and bytes that are no UTF-8 stand for themselves.
  std::string mixed(2 * kMegabyte, 'a');
  for (std::size_t i = 63; i < mixed.size(); i += 64) mixed[i] = '\n';
  const std::size_t letter = mixed.size() / 2;
  mixed.replace(letter, 1, "\xc3\x85");  // one character of two bytes
  mixed += "\xb0\n";                     // a degree sign as ISO 8859-1 writes it
  write(dir / "mixed.out", mixed);
  open((dir / "mixed.out").string());
  const std::string shown = text();
  EXPECT_EQ(shown.substr(shown.size() - 3), "\xc2\xb0\n");
  const int last = static_cast<int>(std::count(mixed.begin(), mixed.end(), '\n'));
  // The last line starts one character before its byte offset: the letter took two bytes.
  EXPECT_EQ(WEditPos(2, last), static_cast<int>(mixed.rfind('\n', mixed.size() - 2)) + 1);
  EXPECT_EQ(WEditPos(2, 2), 65);
}

}  // namespace

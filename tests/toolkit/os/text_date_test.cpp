// Text routines and date texts.
#include <string>

#include "tests/toolkit/os/os_test_support.h"
#include "toolkit/os/datetime.h"
#include "toolkit/os/fixed_text.h"
#include "toolkit/os/text.h"

namespace {

using OsTextTest = OsTest;
using OsDateTest = OsTest;

TEST_F(OsTextTest, LocatesCharactersAndWords) {
  EXPECT_EQ(ilocatechar("   x"), 4);
  EXPECT_EQ(ilocatechar(std::string("\0 y", 3)), 3);
  EXPECT_EQ(ilocatechar("    "), 0);
  int first = -1, last = -1;
  ilocatestring("  abc def", first, last);
  EXPECT_EQ(first, 3);
  EXPECT_EQ(last, 5);
  ilocatestring("word", first, last);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(last, 4);
  ilocatestring(std::string("ab\0cd", 5), first, last);
  EXPECT_EQ(last, 2);
  ilocatestring("   ", first, last);
  EXPECT_EQ(first, 0);
  EXPECT_EQ(last, 0);
}

TEST_F(OsTextTest, ChangesCaseOfLettersOnly) {
  std::string s = "aZ9_\xe9q";
  iuppercase(s);
  EXPECT_EQ(s, "AZ9_\xe9Q");
  ilowercase(s);
  EXPECT_EQ(s, "az9_\xe9q");
}

TEST_F(OsTextTest, JustifiesInsideTheField) {
  std::string s = "  ab    ";
  ijustifystring(s, "L");
  EXPECT_EQ(s, "ab      ");
  ijustifystring(s, "right");  // the letter may stand anywhere
  EXPECT_EQ(s, "      ab");
  ijustifystring(s, "c");
  EXPECT_EQ(s, "   ab   ");
  s = " abc    ";  // five free columns: two in front
  ijustifystring(s, "");
  EXPECT_EQ(s, "  abc   ");
  s = "full";
  ijustifystring(s, "R");
  EXPECT_EQ(s, "full");
  s = "    ";
  ijustifystring(s, "R");
  EXPECT_EQ(s, "    ");
}

TEST_F(OsTextTest, FileExtension) {
  auto ext = [](std::string_view path, std::optional<int> letter_case = {}) {
    std::string e;
    wfileextension(path, e, letter_case);
    return e;
  };
  EXPECT_EQ(ext("/a.b/c"), "");
  EXPECT_EQ(ext("x."), "");
  EXPECT_EQ(ext("a.TXT"), "txt");
  EXPECT_EQ(ext("dir/a.tar.Gz  ", 0), "Gz");
  EXPECT_EQ(ext("a.txt", 2), "TXT");
  EXPECT_EQ(ext("a.TXT", 7), "txt");  // out of range: lowered
  std::string e = padded("", 5);
  wfileextension("a.omb", e);
  EXPECT_EQ(e, "omb  ");
}

TEST_F(OsDateTest, DateTexts) {
  std::string t;
  wdatetostring(t, 2026, 11, 19);
  EXPECT_EQ(t, "19/11/2026");
  wdatetostring(t = "", 2026, 3, 5, 8);
  EXPECT_EQ(t, "5/3/2026");
  wdatetostring(t = "", 2026, 3, 5, 4);
  EXPECT_EQ(t, "05/03/26");
  wdatetostring(t = "", 2026, 3, 5, 0x20, "-");
  EXPECT_EQ(t, "03-05-2026");
  wdatetostring(t = "", 2026, 3, 5, 0x60, "-");  // year first wins
  EXPECT_EQ(t, "2026-03-05");
  // Names from the locale; the tests run in the C locale.
  wdatetostring(t = "", 2026, 11, 19, 1, " ");
  EXPECT_EQ(t, "19 Nov 2026");
  wdatetostring(t = "", 2026, 11, 19, 2 | 0x20, " ");
  EXPECT_EQ(t, "November 19 2026");
  wdatetostring(t = "", 2026, 11, 19, 3, " ");  // abbreviated wins
  EXPECT_EQ(t, "19 Nov 2026");
  t = padded("", 12);
  wdatetostring(t, 2026, 11, 19);
  EXPECT_EQ(t, "19/11/2026  ");
  EXPECT_EQ(error(), 0);
  wdatetostring(t = "", 2026, 13, 1);
  EXPECT_EQ(t, "");
  EXPECT_EQ(error(), 1127);
}

TEST_F(OsDateTest, DayNamesAndTime) {
  EXPECT_EQ(yydatedayname(1), "Monday");
  EXPECT_EQ(yydatedayname(7), "Sunday");
  EXPECT_EQ(yydatedayname(3, 1), "Wed");
  EXPECT_EQ(yydatedayname(0), "");
  std::string t;
  WTimeToString(t, 9, 5, 0);
  EXPECT_EQ(t, "09:05:00");
  EXPECT_EQ(yyjulianday(2000, 1, 1), 2451545);
  EXPECT_EQ(yyjulianday(2024, 3, 1) - yyjulianday(2024, 2, 28), 2);  // leap year
}

}  // namespace

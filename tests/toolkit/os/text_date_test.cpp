// Text routines and date texts.
#include <string>
#include <tuple>
#include <utility>

#include "tests/toolkit/os/os_test_support.h"
#include "toolkit/os/datetime.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/text.h"

namespace {

using OsTextTest = OsTest;
using OsDateTest = OsTest;

TEST_F(OsTextTest, LocatesCharactersAndWords) {
  EXPECT_EQ(ilocatechar("   x"), 4);
  EXPECT_EQ(ilocatechar(std::string("\0 y", 3)), 3);
  EXPECT_EQ(ilocatechar("    "), 0);
  for (auto [text, want] : {std::pair<std::string, std::pair<int, int>>{"  abc def", {3, 5}}, {"word", {1, 4}},
                            {{"ab\0cd", 5}, {1, 2}}, {"   ", {0, 0}}}) {
    int first = -1, last = -1;
    ilocatestring(text, first, last);
    EXPECT_EQ(std::pair(first, last), want) << text;
  }
}

TEST_F(OsTextTest, ChangesCaseOfLettersOnly) {
  std::string s = "aZ9_\xe9q";
  iuppercase(s);
  EXPECT_EQ(s, "AZ9_\xe9Q");
  ilowercase(s);
  EXPECT_EQ(s, "az9_\xe9q");
}

TEST_F(OsTextTest, JustifiesInsideTheField) {
  // The letter may stand anywhere; centring puts the odd free column behind.
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"  ab    ", "L", "ab      "}, {"ab      ", "right", "      ab"}, {"      ab", "c", "   ab   "},
      {" abc    ", "", "  abc   "},  {"full", "R", "full"},             {"    ", "R", "    "}};
  for (auto [text, how, want] : cases) {
    std::string s = text;
    ijustifystring(s, how);
    EXPECT_EQ(s, want) << '"' << text << "\" " << how;
  }
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
  // {month, day, flags, separator, text}; 0x60: year first wins; 3: abbreviated wins.
  // Names come from the locale; the tests run in the C locale.
  const std::tuple<int, int, int, const char*, const char*> cases[] = {
      {3, 5, 8, "/", "5/3/2026"},          {3, 5, 4, "/", "05/03/26"},          {3, 5, 0x20, "-", "03-05-2026"},
      {3, 5, 0x60, "-", "2026-03-05"},     {11, 19, 1, " ", "19 Nov 2026"},     {11, 19, 2 | 0x20, " ", "November 19 2026"},
      {11, 19, 3, " ", "19 Nov 2026"}};
  for (auto [month, day, flags, sep, want] : cases) {
    wdatetostring(t = "", 2026, month, day, flags, sep);
    EXPECT_EQ(t, want) << flags;
  }
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

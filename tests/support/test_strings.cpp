#include <gtest/gtest.h>

#include <unistd.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/lorx_string_utilities.h"

namespace lsu = lorx_string_utilities;

namespace {
const std::string kNotANumber = "The variable cannot be computed as a number in GETNUM ";
const std::string kDigitLimits = "Limits of digit variable exceeded in GETNUM";
}  // namespace

TEST(LorxStringsGetnum, WhatCountsAsANumber) {
  struct Case {
    const char* text;
    int count;
    const std::string* message;  // null: no error
    float r0;
    int i0;
  };
  const Case cases[] = {
      {"      ", 0, nullptr, 0, 0},
      {"5.431 5.431 5.431 90 90 90", 6, nullptr, 5.431f, 5},
      {"5.431,5.431", 0, &kNotANumber, 0, 0},  // the comma belongs to the word
      {"+1.0", 0, &kNotANumber, 0, 0},
      {"1E+3", 0, &kNotANumber, 0, 0},
      {"1 2 x 4", 2, &kNotANumber, 1, 1},
      {"2E3", 1, nullptr, 2000, 2},  // integer part of the mantissa only
      {"1e3", 1, nullptr, 1000, 1},
      {"1E-3", 1, nullptr, 1.0f * (1.0f / 1000.0f), 1},
      {"1E", 1, nullptr, 1, 1},
      {"-2.5E-1", 1, nullptr, -0.25f, -2},
      {"- .", 2, nullptr, 0, 0},
      {"1.2.3", 1, nullptr, 1.23f, 1},
      {"-.5", 1, nullptr, -0.5f, 0},
      {"1-2", 0, &kDigitLimits, 0, 0},
      {"7 1E2-", 1, &kDigitLimits, 7, 7},
      {"1E3.5", 0, &kDigitLimits, 0, 0},
  };
  for (const Case& c : cases) {
    std::array<float, 9> r;
    std::array<int, 9> i;
    r.fill(-1);
    i.fill(-1);
    int n = -1;
    lsu::getnum(c.text, r, i, n);
    EXPECT_EQ(n, c.count) << c.text;
    EXPECT_EQ(lsu::err_string, c.message != nullptr) << c.text;
    EXPECT_EQ(lsu::err_string_mess, c.message ? *c.message : "") << c.text;
    EXPECT_FLOAT_EQ(r[0], c.r0) << c.text;
    EXPECT_EQ(i[0], c.i0) << c.text;
    EXPECT_EQ(r[8], 0.0f) << c.text;  // elements without a number are zeroed
  }
}

TEST(LorxStringsGetnum, CountsBeyondShortArraysAndLeavesTheTextAlone) {
  std::array<float, 3> r{};
  std::array<int, 3> i{};
  int n = 0;
  const std::string text = "1 2 3 4 5 6 7 8 9 10 11 12";
  lsu::getnum(text, r, i, n);
  EXPECT_EQ(n, 12);
  EXPECT_EQ(r, (std::array<float, 3>{1, 2, 3}));
  EXPECT_EQ(text, "1 2 3 4 5 6 7 8 9 10 11 12");
  lsu::getnum("1 2", {}, {}, n);
  EXPECT_EQ(n, 2);
}

TEST(LorxStringsCutst, WordsAndWidths) {
  struct Case {
    std::string text, word;  // the word output arrives with its declared width
    const char *want_word, *want_text;
    int rest, wl;
  };
  const Case cases[] = {
      {std::string(10, ' '), "xxxxx", "     ", "          ", 0, 0},
      {"ab", "", "ab", "  ", 0, 2},
      {"   one,\ttwo   three   ", "", "one,\ttwo", "three                 ", 5, 8},  // only blanks separate words
      {"abcdef gh", "   ", "abc", "gh       ", 2, 3},  // a narrow word output is cut to its width
  };
  for (Case c : cases) {
    int rest = -1, wl = -1;
    lsu::cutst(c.text, &rest, &c.word, &wl);
    EXPECT_EQ(c.word, c.want_word);
    EXPECT_EQ(c.text, c.want_text) << c.want_word;
    EXPECT_EQ(rest, c.rest) << c.want_word;
    EXPECT_EQ(wl, c.wl) << c.want_word;
  }
}

TEST(LorxStringsGetword, QuotesAndLimits) {
  std::array<std::string, 4> w;
  int n = 0;
  lsu::getword(R"(open "a b"  c)", w, n);
  EXPECT_EQ(n, 3);
  EXPECT_EQ(w, (std::array<std::string, 4>{"open", "a b", "c", ""}));
  lsu::getword(R"(x "" y)", w, n);
  EXPECT_EQ(n, 1);  // an empty pair of quotes ends the scan
  lsu::getword(R"(x "open)", w, n);
  EXPECT_EQ(lsu::err_string_mess, "Non balanced quotes!");
  std::array<std::string, 2> two;
  lsu::getword("a b c", two, n);
  EXPECT_EQ(lsu::err_string_mess, "Dimension of DIRE exceeded");
  EXPECT_EQ(two[1], "b");
}

TEST(LorxStringsGetnumStd, ValuesAndUncertainties) {
  std::array<float, 5> v{}, u{};
  int n = 0;
  lsu::getnum_std("1.234(5) 7 2(1)  ! comment 9", v, u, n);
  EXPECT_EQ(n, 3);
  EXPECT_FALSE(lsu::err_string);
  EXPECT_EQ(v, (std::array<float, 5>{1.234f, 7.0f, 2.0f, 0, 0}));
  EXPECT_EQ(u, (std::array<float, 5>{0.005f, 0.0f, 1.0f, 0, 0}));
  lsu::getnum_std("5.0(12) # 4", v, u, n);
  EXPECT_EQ(n, 1);
  EXPECT_FLOAT_EQ(u[0], 1.2f);

  const std::pair<const char*, const char*> bad[] = {
      {"   ", "Blank line"},
      {"1.2(3", "Wrong format using Standard values"},
      {"1.2)3(", "Wrong format using Standard values"},
      {"1 a", "Bad format"},
      {"1.2(x)", "Bad format"},
      {"(3)", "Bad format"}};
  for (auto [text, message] : bad) {
    lsu::getnum_std(text, v, u, n);
    EXPECT_EQ(lsu::err_string_mess, message) << text;
  }
}

TEST(LorxStringsSetnumStd, IsTheInverseOfGetnumStd) {
  struct Case { float value, sigma; const char* text; };
  for (const Case& c : {Case{1.234f, 0.005f, " 1.234(5)"}, Case{-2.5f, 0.3f, "-2.5(3)"},
                        Case{12.0f, 1.5f, " 12.0(15)"}, Case{250.0f, 20.0f, " 250(20)"},
                        Case{0.5f, 0.02f, " 0.50(2)"}}) {
    std::string text;
    lsu::setnum_std(c.value, c.sigma, text);
    EXPECT_EQ(text, c.text);
    std::array<float, 1> v{}, u{};
    int n = 0;
    lsu::getnum_std(text, v, u, n);
    ASSERT_EQ(n, 1) << text;
    EXPECT_FLOAT_EQ(v[0], c.value);
    EXPECT_NEAR(u[0], c.sigma, 0.5f * c.sigma) << text;
  }
  std::string text;
  lsu::setnum_std(3.25f, 0.0f, text);
  EXPECT_EQ(text, " 3.25000");
  text = std::string(10, ' ');  // too narrow: the value gives up its last digit
  lsu::setnum_std(1.23456f, 0.00002f, text);
  EXPECT_EQ(text, " 1.2345(2)");

  text = std::string(8, '#');
  lsu::setnum_std(1.0f, -1.0f, text);
  EXPECT_EQ(text, std::string(8, ' '));
  EXPECT_EQ(lsu::err_string_mess, "A negative standard deviation was passed on SetNum_Std procedure!");
}

TEST(LorxStringsRformat, FixedExponentAndSpecialValues) {
  const std::tuple<float, int, const char*> cases[] = {
      {1.5f, 8, " 1.50000"},       {-1.5f, 8, " -1.5000"},         {0.0f, 8, "0.000000"},
      {9999998.0f, 8, "9999998."}, {123456789.0f, 8, "0.12E+09"},  {-123456789.0f, 8, "-0.1E+09"},
      {std::nanf(""), 6, "   NaN"}, {-INFINITY, 6, "   Inf"}};
  for (auto [value, w, expected] : cases) {
    const std::string r = lsu::rformat(value, w);
    EXPECT_EQ(r.size(), 40u);
    EXPECT_EQ(r, expected + std::string(static_cast<std::size_t>(40 - w), ' ')) << value;
  }
}

TEST(LorxStringsHelpers, SearchReplaceAndPaths) {
  EXPECT_EQ(lsu::u_case("cell \xe9t\xc3\xa9 1a"), "CELL \xe9T\xc3\xa9 1A");
  EXPECT_EQ(lsu::string_count("aaaa ab", "aa  "), 2);  // trimmed, without overlaps

  std::array<int, 4> pos{};
  int n = 0;
  lsu::get_separator_pos(R"(a,"b,c",d,   )", ',', pos, n);
  EXPECT_EQ(n, 3);
  EXPECT_EQ(pos[1], 8);  // the comma inside quotes is passed over

  std::string text = "a=b, c=d          ";
  std::string warning;
  lsu::sstring_replace(text, "=", " := ", warning);
  EXPECT_EQ(text, "a := b, c := d    ");
  EXPECT_TRUE(warning.empty());
  std::string big = std::string(1100, 'x') + "|y";
  lsu::sstring_replace(big, "|", "-", warning);
  EXPECT_EQ(big.substr(0, 1027), std::string(1024, 'x') + "-y ");
  EXPECT_NE(warning.find("splitted_string 1100"), std::string::npos);

  std::string ext;
  lsu::get_extension("/home/u/job.omb  ", ext);
  EXPECT_EQ(ext, ".omb");
}

TEST(LorxStringsReadKey, ScansLinesForKeywords) {
  const std::vector<std::string> lines{"! cell 9 9 9", "# cell 8 8 8", "   ", "  Title  My Job",
                                       "supercell 1 2 3", "CELL 4.0 5.0 6.0", "spgr P 1",
                                       "wave 1.5406(2) 0.1"};
  using Hit = std::pair<std::string, int>;  // the text behind the key and the line
  std::string text;
  int first = 1;
  lsu::read_key_str(lines, first, 99, "cell", text, '#');
  EXPECT_EQ(Hit(text, first), Hit("1 2 3", 5));  // a hit anywhere in the line
  first = 1;
  text = std::string(6, '?');
  lsu::read_key_str(lines, first, 4, "spgr", text);  // beyond the last line
  EXPECT_EQ(Hit(text, first), Hit("      ", 1));

  std::array<float, 3> r{}, u{};
  std::array<int, 3> i{};
  int n = 0;
  first = 6;
  text.clear();
  lsu::read_key_strval(lines, first, 99, "CELL", text, r, i, &n);
  EXPECT_EQ(n, 3);
  EXPECT_FLOAT_EQ(r[2], 6.0f);

  first = 1;
  text.clear();
  lsu::read_key_value(lines, first, 99, "spgr", r, i, n, {}, &text);
  EXPECT_TRUE(lsu::err_string);
  EXPECT_EQ(Hit(text, first), Hit("P 1", 1));  // numbers were required

  lsu::read_key_valuestd(lines, first, 99, "wave", r, u, n);
  EXPECT_EQ(std::pair(first, n), std::pair(8, 2));
  EXPECT_FLOAT_EQ(u[0], 0.0002f);
}

TEST(LorxStringsFiles, NumberAndReadLines) {
  const auto path = std::filesystem::temp_directory_path() /
                    ("lorx_strings_" + std::to_string(::getpid()) + ".txt");
  std::ofstream(path) << "title x\n  cell 1 2 3\n\n   end of data\nafter\nlast";
  int n = -1;
  lsu::number_lines(path.string(), n);
  EXPECT_EQ(n, 6);  // the last line has no line feed and still counts
  lsu::number_lines(path.string(), n, "END");
  EXPECT_EQ(n, 3);

  std::vector<std::string> lines;
  lsu::reading_lines(path.string(), 2, lines);
  EXPECT_EQ(lines, (std::vector<std::string>{"title x", "  cell 1 2 3"}));
  lsu::reading_lines(path.string(), 50, lines);
  EXPECT_EQ(lines.size(), 6u);

  std::filesystem::remove(path);
  lsu::number_lines(path.string(), n);
  EXPECT_EQ(n, 0);
  lsu::reading_lines(path.string(), 2, lines);
  EXPECT_EQ(lsu::err_string_mess, "The file " + path.string() + " does not exist ");
}

TEST(LorxStringsLogunit, HandsOutFreeUnitsUntilNoneIsLeft) {
  std::vector<int> taken;
  for (int u = 0; u != -1; taken.push_back(u)) lsu::get_logunit(u);
  EXPECT_EQ(taken.front(), 7);
  EXPECT_EQ(taken.size(), 500u - 7u + 1u);  // the -1 at the end included
  lsu::free_logunit(9);
  int u = 0;
  lsu::get_logunit(u);
  EXPECT_EQ(u, 9);
  for (int t : taken) lsu::free_logunit(t);
}

#include "support/format_reading.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace lsu = lorx_string_utilities;

namespace {

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// A readable stream holding `content`.
File stream_of(const std::string& content) {
  File f(std::tmpfile());
  std::fputs(content.c_str(), f.get());
  std::rewind(f.get());
  return f;
}

struct Scan {
  std::string format;
  int ierr;
  std::string line;
};

// findfmt on a line given directly, as a caller with a 40-character format field would.
Scan scan(std::string line, const std::string& tpl) {
  lsu::init_findfmt();
  std::string format(40, ' ');
  lsu::findfmt(nullptr, line, tpl, format, nullptr, false);
  return {std::string(trimmed(format)), lsu::ierr_fmt, line};
}

std::vector<std::string> messages() {
  std::vector<std::string> r;
  for (int i = 0; i < lsu::mess_findfmt.nlines; ++i) r.push_back(lsu::mess_findfmt.txt[i].str());
  return r;
}

}  // namespace

TEST(Findfmt, BuildsFormatsThatFitTheLine) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"  12 3.5  abc", "IF3", "(i4,f4.0,tr2,a3)"}, {"  12 3.5  abc", "if3", "(i4,f4.0,tr2,a3)"},
      // Fields the line does not reach read blank.
      {"12", "IFI", "(i2,f1.0,i1)"}, {"7", "I3B", "(i1,tr1,a3,tr1,a11)"},
      {"1 2 3 4", "II", "(i1,i2)"},  // text behind the template's last field is ignored
      // Signs start a new number; exponents keep theirs.
      {"1.5-2.5", "FF", "(f3.0,f4.0)"}, {"-3-4", "II", "(i2,i2)"}, {" 1.5E-3  2", "FI", "(f7.0,i3)"},
      {"12E3", "I", "(i4)"}, {"1E 5", "FI", "(f2.0,i2)"},
      // Text fields take at most their width, and never a blank.
      {"Fe1  0.25", "AF", "(a3,f6.0)"}, {"O1 x", "21", "(a2,tr1,a1)"}, {"abcdefghijklmn", "E", "(a14)"}};
  for (auto [line, tpl, format] : cases) {
    const Scan s = scan(line, tpl);
    EXPECT_EQ(s.format, format) << line << " / " << tpl;
    EXPECT_EQ(s.ierr, 0) << line << " / " << tpl;
  }
}

TEST(Findfmt, TabsSeparateFields) {
  Scan s = scan("12\t3.5", "IF");
  EXPECT_EQ(s.format, "(i2,f4.0)");
  EXPECT_EQ(s.line, "12 3.5");  // the separating tab became a blank
  EXPECT_EQ(scan("1\t2", "II").format, "(i1,i2)");
  s = scan("12\tab", "I2");
  EXPECT_EQ(s.format, "(i2,tr1,a2)");
  EXPECT_EQ(s.line, "12\tab");  // text fields skip the tab without touching it
  EXPECT_EQ(scan("ab \tcd", "22").ierr, 8);
  EXPECT_EQ(scan("-\t5", "I").ierr, 12);
}

TEST(Findfmt, FaultsCarryACaretUnderTheCharacter) {
  EXPECT_EQ(scan("3.5", "I").ierr, 3);
  EXPECT_EQ(messages(), (std::vector<std::string>{
                            " FindFMT: integer field found real !", " '3.5'", " --^",
                            " => Please check your input file at line:      1 !"}));
  // "abcdefg": the caret under the "f".
  for (auto [line, tpl, ierr, caret] : {std::tuple{"1,2", "II", 7, " --^"}, {"abcdefg", "5I", 10, " ------^"},
                                        {"x", "F", 7, "   ^----"}}) {
    EXPECT_EQ(scan(line, tpl).ierr, ierr) << line;
    EXPECT_EQ(messages()[2], caret) << line;
  }

  const std::tuple<const char*, const char*, int, const char*> cases[] = {
      {"1.2.3", "F", 4, " FindFMT: begged dot, sign or 'e' character !"},
      {"1EE", "F", 4, " FindFMT: begged dot, sign or 'e' character !"},
      {"1E+-2", "F", 4, " FindFMT: begged dot, sign or 'e' character !"},
      {"+ 5", "F", 12, " FindFMT: incomplete number !"},
      {"5 - 3", "II", 12, " FindFMT: incomplete number !"},
      {"e5", "I", 5, " FindFMT: invalid character in an integer field !"},
      {"E5", "F", 11, " FindFMT: incomplete E or D format !"},
      {"1-E", "FF", 11, " FindFMT: incomplete E or D format !"},
      {"1 2", "IGI", 6, " FindFMT: invalid field in format descriptor !"},
      {"1 2", "I0", 6, " FindFMT: invalid field in format descriptor !"},
      {"1 2", "I2", 0, nullptr},
  };
  for (auto [line, tpl, ierr, message] : cases) {
    lsu::init_findfmt(41);
    scan(line, tpl);
    EXPECT_EQ(lsu::ierr_fmt, ierr) << line << " / " << tpl;
    if (message) {
      ASSERT_GE(lsu::mess_findfmt.nlines, 3) << line;
      EXPECT_EQ(messages()[0], message) << line;
    }
  }
}

TEST(Findfmt, EmptyTemplateLineAndFormatLimits) {
  // A blank template reads nothing, whatever the unit.
  File in = stream_of("1 2\n");
  lsu::init_findfmt();
  std::string line(20, ' ');
  std::string format(20, ' ');
  lsu::findfmt(in.get(), line, "   ", format);
  EXPECT_EQ(lsu::ierr_fmt, 1);
  EXPECT_EQ(messages().at(0), " FindFMT: empty format descriptor (0 field) !");
  EXPECT_EQ(std::ftell(in.get()), 0L);

  // A blank line with a numeric first field: code 8 and no messages.
  EXPECT_EQ(scan(std::string(10, ' '), "IF").ierr, 8);
  EXPECT_EQ(lsu::mess_findfmt.nlines, 0);

  // The format text's own width bounds what can be built.
  lsu::init_findfmt();
  std::string narrow(8, ' ');
  std::string data = "12 3.5 abc";
  lsu::findfmt(nullptr, data, "IF3", narrow);
  EXPECT_EQ(lsu::ierr_fmt, 9);
  EXPECT_EQ(messages().at(0), " FindFMT: format string length exceeded !");

  // A long line is shown without quotes and the caret still lands under the fault.
  const std::string long_line = "1 2 x" + std::string(130, ' ') + "y";
  scan(long_line, "III");
  EXPECT_EQ(lsu::ierr_fmt, 7);
  EXPECT_EQ(messages()[1], " 1 2 x");
  EXPECT_EQ(messages()[2], " ----^");
}

TEST(Findfmt, ReadsDataLinesFromAUnit) {
  File in = stream_of("! title\n\n   # remark\n  1 2 # three\n4 5 #six\n");
  File echo(std::tmpfile());
  lsu::init_findfmt(10);
  std::string line(30, ' ');
  std::string format(30, ' ');
  lsu::findfmt(in.get(), line, "II", format, echo.get(), true);
  EXPECT_EQ(lsu::ierr_fmt, 0);
  EXPECT_EQ(trimmed(format), "(i1,i2)");
  EXPECT_EQ(trimmed(line), "1 2");  // left-adjusted and cut at the comment
  EXPECT_EQ(line.size(), 30u);
  EXPECT_EQ(lsu::line_nb, 14);      // three skipped lines and the data line

  // A template ending in a text field keeps the "#" part.
  lsu::findfmt(in.get(), line, "II4", format, echo.get(), true);
  EXPECT_EQ(trimmed(format), "(i1,i2,tr1,a4)");
  EXPECT_EQ(lsu::line_nb, 15);

  std::rewind(echo.get());
  char buf[200] = {};
  const std::size_t got = std::fread(buf, 1, sizeof buf - 1, echo.get());
  EXPECT_EQ(std::string(buf, got), "! title\n\n# remark\n1 2\n4 5 #six\n");

  // End of file is not fatal; the message names the unit.
  lsu::findfmt(in.get(), line, "II", format);
  EXPECT_EQ(lsu::ierr_fmt, -1);
  ASSERT_EQ(lsu::mess_findfmt.nlines, 1);
  char expected[80];
  std::snprintf(expected, sizeof expected, " => Non FATAL End of file !,  logical unit: %4d",
                fileno(in.get()));
  EXPECT_EQ(messages()[0], expected);

  // A read fault reports its status.
  File dir(std::fopen(ZELV_SOURCE_DIR, "r"));
  ASSERT_TRUE(dir);
  lsu::findfmt(dir.get(), line, "II", format);
  EXPECT_EQ(lsu::ierr_fmt, -100 - EISDIR);
  EXPECT_EQ(messages().at(0), " FindFMT: data line, system read error nber:" + std::to_string(EISDIR));

  // Without the comment request the "#" is data, and a fault.
  File in2 = stream_of("1 2 # three\n");
  lsu::findfmt(in2.get(), line, "III", format);
  EXPECT_EQ(lsu::ierr_fmt, 7);
}

TEST(NumcolFromNumfmt, CountsEveryColumnOfTheRecord) {
  int n = -1;
  lsu::err_string = false;
  lsu::numcol_from_numfmt("(3F10.4, 2X, I5)", n);
  EXPECT_EQ(n, 37);
  lsu::numcol_from_numfmt("  (g15.5e2)", n);
  EXPECT_EQ(n, 15);
  lsu::numcol_from_numfmt("(2I4,F8.3,E12.4)", n);
  EXPECT_EQ(n, 28);
  EXPECT_FALSE(lsu::err_string);
  lsu::numcol_from_numfmt("(A5)", n);
  EXPECT_EQ(n, 0);
  EXPECT_TRUE(lsu::err_string);
  EXPECT_EQ(lsu::err_string_mess, "Illegal format string passed to subroutine:  NumCol_from_NumFmt");
}

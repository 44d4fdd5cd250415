// The editor's printed document: its frame, its pages and line breaks, what
// Ghostscript and OCR make of it, and where Print sends it.
#include "tests/toolkit/editor/print_readback.h"
#include "toolkit/editor/editor_print.h"
#include "toolkit/kernel/comdlg_attach.h"

#include <gtest/gtest.h>

namespace {

using namespace print_readback;

std::string print(std::string_view text, const zelvy_data::PageSetup& page = {}, EditPrintFont font = {},
                  bool wrap = false, const std::string& name = "doc.ps") {
  const auto path = scratch(name);
  std::FILE* f = std::fopen(path.c_str(), "wb");
  EXPECT_TRUE(yyeditprintps(f, text, page, font, wrap));
  std::fclose(f);
  return read_file(path);
}

// The "(text) sh" lines of a document, unescaped text only.
std::vector<std::string> shown(const std::string& doc) {
  std::vector<std::string> out;
  for (const auto& l : lines_of(doc))
    if (l.size() >= 5 && l.front() == '(' && l.ends_with(") sh")) out.push_back(l.substr(1, l.size() - 5));
  return out;
}
// The Y of every "m" line of the text, in order.
std::vector<std::string> text_y(const std::string& doc) {
  std::vector<std::string> out;
  for (const auto& l : lines_of(doc))
    if (l.rfind("28 ", 0) == 0 && l.ends_with(" m")) out.push_back(l.substr(3, l.size() - 5));
  return out;
}

std::string numbered_lines(int n) {
  std::string t;
  for (int i = 1; i <= n; ++i) t += "line " + std::to_string(i) + "\n";
  return t;
}

TEST(EditorPrintDocument, FrameOfAnEmptyAndALandscapeDocument) {
  const std::string empty = print("");
  const auto l = lines_of(empty);
  ASSERT_GE(l.size(), 30u);
  EXPECT_EQ(l[1], "%%Title: Untitled");
  EXPECT_EQ(l[4], "%%DocumentMedia: A4    595    842 0 () ()");
  EXPECT_EQ(l[10], "<< /PageSize [   595    842] /Orientation 0 >> setpagedevice");
  EXPECT_EQ(l[19], "  28   43 m");
  EXPECT_EQ(l[21], " 567  799 l");
  EXPECT_EQ(l[26], "/Cour-1 ff      10.0 sf");
  EXPECT_EQ(l[27], "/#copies   1 def");
  EXPECT_TRUE(empty.ends_with("%%EOF\ninitgraphics\n\x04"));
  EXPECT_EQ(text_y(empty).size(), 0u);
  EXPECT_EQ(render(scratch("doc.ps")).size(), 1u);

  zelvy_data::PageSetup land;
  land.Orientation = 1;
  land.Paper = 9;  // Letter, 612 x 792
  land.Width = 700;
  land.Height = 540;
  const auto t = lines_of(print("x\n", land, {kPrintTimes, 12}, false, "land.ps"));
  EXPECT_EQ(t[3], "%%Orientation: Landscape");
  EXPECT_EQ(t[4], "%%DocumentMedia: Letter    612    792 0 () ()");
  EXPECT_EQ(t[18], " 612 0 translate");
  EXPECT_EQ(t[19], "90 rotate");
  // The page is 612 high once turned: top 612 - 43.
  EXPECT_EQ(t[25], " 728  569 l");
  EXPECT_EQ(t[30], "/Time-1 ff      12.0 sf");
  EXPECT_EQ(render(scratch("land.ps")).size(), 1u);
  EXPECT_EQ(yydocumentmediawh("B5 (JIS)", 516, 729), "%%DocumentMedia: B5__JIS    516    729 0 () ()");
}

TEST(EditorPrintDocument, SpecialCharactersAndLineEnds) {
  EXPECT_EQ(shown(print("a\\b(c)d\n")), std::vector<std::string>{"a\\\\b\\(c\\)d"});
  // A last line without its line end prints; a final line end adds nothing.
  EXPECT_EQ(shown(print("one\ntwo")).size(), 2u);
  EXPECT_EQ(shown(print("one\ntwo\n")).size(), 2u);
  EXPECT_EQ(shown(print("\xe9t\xe9\n"))[0], "\xe9t\xe9");
}

TEST(EditorPrintPages, LinesFillPagesFromOneLineBelowTheTop) {
  // Courier 10 on A4 with the default margins: 64 lines of 11.75 points.
  const std::string doc = print(numbered_lines(130));
  const auto l = lines_of(doc);
  EXPECT_EQ(count_prefix(l, "%%Page: "), 3);
  const auto y = text_y(doc);
  ASSERT_EQ(y.size(), 130u);
  EXPECT_EQ(y[0], "787.25");
  EXPECT_EQ(y[63], "47.00");
  EXPECT_EQ(y[64], "787.25");
  EXPECT_EQ(y[128], "787.25");
  EXPECT_EQ(shown(doc)[128], "line 129");
  EXPECT_EQ(render(scratch("doc.ps")).size(), 3u);
}

TEST(EditorPrintPages, BlankLineAtTheFootOpensThePageWithoutTakingALine) {
  const std::string doc = print(numbered_lines(64) + "\nnext\n");
  EXPECT_EQ(count_prefix(lines_of(doc), "%%Page: "), 2);
  const auto y = text_y(doc);
  ASSERT_EQ(y.size(), 65u);
  EXPECT_EQ(y[64], "787.25");
}

TEST(EditorPrintWrap, BreaksAtBlanksOrAtTheOverflowingCharacter) {
  // Courier 10: 6 points a character, 89 of them in 539 points.
  const std::string word(200, 'w');
  EXPECT_EQ(shown(print(word + "\n", {}, {}, true)),
            (std::vector<std::string>{std::string(89, 'w'), std::string(89, 'w'), std::string(22, 'w')}));
  // The line ends at the last blank, blank included; the blanks behind the
  // break vanish.
  const std::string line = std::string(80, 'a') + "    " + std::string(20, 'b') + " c";
  EXPECT_EQ(shown(print(line + "\n", {}, {}, true)),
            (std::vector<std::string>{std::string(80, 'a') + "    ", std::string(20, 'b') + " c"}));
  // Without wrap the clip cuts a long line: it stays one.
  EXPECT_EQ(shown(print(word + "\n")).size(), 1u);
  // Proportional widths: Helvetica's "i" is narrow, so more fit than Courier.
  const std::string is(200, 'i');
  EXPECT_EQ(shown(print(is + "\n", {}, {kPrintHelvetica, 10}, true)).size(), 1u);
  EXPECT_FLOAT_EQ(yyeditprintratio(kPrintHelvetica, 'A'), 1.21559f);
  EXPECT_FLOAT_EQ(yyeditprintratio(kPrintTimes, ' '), 0.48436f);
  EXPECT_FLOAT_EQ(yyeditprintratio(kPrintTimes, 128), 0.968723f);
  EXPECT_FLOAT_EQ(yyeditprintratio(kPrintCourier, 'W'), 1.0f);
}

TEST(EditorPrintReadback, GhostscriptRendersAndOcrReadsTheText) {
  const std::string text =
      "Silicon standard crystal measured with copper radiation\n"
      "The cell edge is five point four three one angstrom\n"
      "Reflections were collected at room temperature\n"
      "\n"
      "Twin laws: none; propagation vector zero\n";
  std::string many;
  for (int i = 0; i < 20; ++i) many += text;
  print(many, {}, {kPrintCourier, 12}, true, "ocr.ps");
  const auto pages = render(scratch("ocr.ps"), 200);
  ASSERT_EQ(pages.size(), 2u);
  EXPECT_GE(recognised(text, ocr(pages[0])), 0.9);
  print(text, {}, {kPrintTimes, 14}, true, "ocr_times.ps");
  const auto times = render(scratch("ocr_times.ps"), 200);
  ASSERT_EQ(times.size(), 1u);
  EXPECT_GE(recognised(text, ocr(times[0])), 0.9);
}

// Boxes answered by the test: the last text shown, and a fixed answer.
std::string g_lastbox;
int g_answer = 7;

class EditorPrintUser : public ::testing::Test {
 protected:
  void SetUp() override {
    ComdlgHooks h;
    h.message_box = [](int, int, int, std::string_view text, std::string_view) {
      g_lastbox = std::string(text);
      return g_answer;
    };
    h.page_setup = [](zelvy_data::PageSetup&, std::string_view) { return 1; };
    yyAttachComdlg(h);
    g_lastbox.clear();
    zelvy_data::data().psedit[0] = {};
  }
  void TearDown() override { yyAttachComdlg({}); }
};

TEST_F(EditorPrintUser, FileDestinationAsksBeforeReplacing) {
  auto& page = zelvy_data::data().psedit[0];
  page.Destination = 0;
  page.File = scratch("user.ps").string();
  fs::remove(page.File);
  EXPECT_EQ(yyeditprintuser("hello\n", {}, false), kPrinted);
  EXPECT_TRUE(read_file(page.File).starts_with("%!PS"));
  g_answer = 7;  // No
  EXPECT_EQ(yyeditprintuser("other\n", {}, false), kPrintDeclined);
  EXPECT_NE(g_lastbox.find("already exists."), std::string::npos);
  EXPECT_NE(read_file(page.File).find("(hello) sh"), std::string::npos);
  g_answer = 6;  // Yes
  EXPECT_EQ(yyeditprintuser("other\n", {}, false), kPrinted);
  EXPECT_NE(read_file(page.File).find("(other) sh"), std::string::npos);
  page.File = scratch("").string();
  EXPECT_EQ(yyeditprintuser("x\n", {}, false), kPrintNotOpened);
  EXPECT_NE(g_lastbox.find("Choose a different name."), std::string::npos);
}

TEST_F(EditorPrintUser, PrintCommandGetsTheDocumentAndItsFileGoes) {
  auto& page = zelvy_data::data().psedit[0];
  const auto copy = scratch("via_command.ps");
  fs::remove(copy);
  // The command is given the temporary file's name behind a blank.
  page.Command = "sh -c 'cp \"$0\" " + copy.string() + "'";
  zelvy_data::data().ctmpfile[1] = scratch("spool.dmp").string();
  EXPECT_EQ(yyeditprintuser("through the spooler\n", {}, false, "Job"), kPrinted);
  EXPECT_NE(read_file(copy).find("%%Title: Job"), std::string::npos);
  EXPECT_NE(read_file(copy).find("(through the spooler) sh"), std::string::npos);
  EXPECT_FALSE(fs::exists(scratch("spool.dmp")));
  // A page dialog answered otherwise ends the command with its answer.
  ComdlgHooks h;
  h.page_setup = [](zelvy_data::PageSetup&, std::string_view) { return 2; };
  yyAttachComdlg(h);
  fs::remove(copy);
  EXPECT_EQ(yyeditprintuser("x\n", {}, false), 2);
  EXPECT_FALSE(fs::exists(copy));
}

}  // namespace

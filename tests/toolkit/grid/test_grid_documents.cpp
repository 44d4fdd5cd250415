// The documents a grid leaves the screen as, made from tables built here:
// the HTML read back by a validating checker, the PostScript read and drawn
// by an interpreter and the drawing read by character recognition.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "toolkit/base/zelvy_data.h"
#include "toolkit/grid/grid_model.h"
#include "toolkit/grid/grid_output.h"

namespace fs = std::filesystem;

namespace {

std::string read(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

int run(const std::string& command) { return WEXITSTATUS(std::system(command.c_str())); }

std::string output_of(const std::string& command) {
  std::string out;
  if (FILE* p = popen(command.c_str(), "r")) {
    char b[4096];
    std::size_t n = 0;
    while ((n = std::fread(b, 1, sizeof b, p)) > 0) out.append(b, n);
    pclose(p);
  }
  return out;
}

int count(const std::string& hay, const std::string& needle) {
  int n = 0;
  for (std::size_t at = hay.find(needle); at != std::string::npos; at = hay.find(needle, at + 1)) ++n;
  return n;
}

// Three columns: a left-aligned name, a right-aligned number, a check box.
GridTable sample() {
  GridTable t;
  t.columnLabels = t.rowLabelBar = true;
  t.columns = {{"Name", grid_type::kString, 0, 14}, {"Value", grid_type::kDouble, 2, 10},
               {"On", grid_type::kCheckbox, 1, 4}};
  t.rowLabels = {"1", "2", "3"};
  t.rows = {{{"Quartz", false, -1, -1}, {"12.50", false, -1, -1}, {"", true, -1, -1}},
            {{"Fe<sub>2</sub>O<sub>3</sub> &amp; more", false, 0x0000FF, 0x00FFFF}, {"", false, -1, -1}, {"", false, -1, -1}},
            {{"Å (ångström)", false, -1, -1}, {"7", false, -1, -1}, {"", true, -1, -1}}};
  t.lineColour = 0x102030;
  return t;
}

std::string joined(const std::vector<std::string>& lines) {
  std::string s;
  for (const auto& l : lines) s += l + '\n';
  return s;
}

class Documents : public ::testing::Test {
 protected:
  void SetUp() override {
    dir = fs::temp_directory_path() / ("grid_documents_" + std::to_string(::getpid()));
    fs::create_directories(dir);
  }
  void TearDown() override { fs::remove_all(dir); }
  // What the checker reports; empty when the document is valid HTML 4.01.
  // Its advice on summaries for speech output is no fault of the markup.
  std::string tidy(const std::string& html) {
    const fs::path p = dir / "t.htm";
    std::ofstream(p) << html;
    return output_of("tidy -q -e -utf8 '" + p.string() + "' 2>&1 | grep -v 'lacks \"summary\" attribute'");
  }
  fs::path ps(const GridTable& t, const GridPrintOptions& o, const zelvy_data::PageSetup& page,
              const std::string& name = "t.ps") {
    const fs::path p = dir / name;
    std::FILE* f = std::fopen(p.c_str(), "wb");
    EXPECT_NE(f, nullptr);
    EXPECT_TRUE(yyGridPostScript(f, t, o, page, "Table"));
    std::fclose(f);
    return p;
  }
  fs::path dir;
};

TEST_F(Documents, HtmlDocumentIsValidAndCarriesTextAlignmentAndColours) {
  const std::string html = joined(yyGridHtmlLines(sample(), grid_html::kCentre, "Minerals &amp; more", 2, 0xEEDDCC));
  EXPECT_EQ(tidy(html), "");
  EXPECT_NE(html.find("<title>Minerals &amp; more</title>"), std::string::npos);
  EXPECT_NE(html.find("<h2>Minerals &amp; more</h2>"), std::string::npos);
  EXPECT_NE(html.find("body {background-color:#ccddee;}"), std::string::npos);
  EXPECT_NE(html.find("border-width:2px; border-color:#302010; padding: 5px; margin-left:auto; margin-right:auto; "
                      "border-collapse: collapse;}"),
            std::string::npos);
  // Texts go out as written, so a cell may carry markup of its own; colours background first, each as rrggbb.
  EXPECT_NE(html.find("<td class=\"cl\" style=\"background-color:#ffff00;color:#ff0000;\">Fe<sub>2</sub>O<sub>3</sub> &amp; more</td>"),
            std::string::npos);
  EXPECT_NE(html.find("<td class=\"cr\">12.50</td>"), std::string::npos);
  EXPECT_NE(html.find("<td class=\"cc\">&bull;</td>"), std::string::npos);
  EXPECT_NE(html.find("<td class=\"cr\">&nbsp;</td>"), std::string::npos);
  EXPECT_NE(html.find("Å (ångström)"), std::string::npos);
  EXPECT_NE(html.find("<tr>\n<td></td>\n<th>Name</th>"), std::string::npos);
}

TEST_F(Documents, HtmlFragmentHasInlineStylesAndNoFrame) {
  const auto lines = yyGridHtmlLines(sample(), grid_html::kFragment | grid_html::kCheckTick | grid_html::kCheckYesNo,
                                     " ", 1, std::nullopt);
  const std::string html = joined(lines);
  EXPECT_EQ(html.find("<html>"), std::string::npos);
  EXPECT_EQ(html.find("<h2>"), std::string::npos);  // a blank title
  EXPECT_EQ(lines.front(), "<table border=1 cellpadding=5 style=\"border-collapse: collapse;\">");
  EXPECT_NE(html.find("<td style=\"text-align:right;\">12.50</td>"), std::string::npos);
  EXPECT_NE(html.find("<td style=\"text-align:left;background-color:#ffff00;color:#ff0000;\">"), std::string::npos);
  EXPECT_NE(html.find("<td style=\"text-align:left; font-weight: bold;\">2</td>"), std::string::npos);
  // The tick wins over Y and N.
  EXPECT_EQ(count(html, "&#10003;"), 2);
  EXPECT_EQ(html.find(">Y<"), std::string::npos);
  // Set inside a page of its own, the piece checks clean.
  EXPECT_EQ(tidy("<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\" \"http://www.w3.org/TR/html4/strict.dtd\">\n"
                 "<html><head><title>t</title></head><body>\n" + html + "</body></html>\n"),
            "");
}

TEST_F(Documents, HtmlOptionsForCheckBoxesAndColours) {
  const std::string yn = joined(yyGridHtmlLines(sample(), grid_html::kCheckYesNo | grid_html::kNoColours, {}, -3, {}));
  EXPECT_NE(yn.find("<td class=\"cc\">Y</td>"), std::string::npos);
  EXPECT_NE(yn.find("<td class=\"cc\">N</td>"), std::string::npos);
  EXPECT_EQ(yn.find("background-color:#ffff00"), std::string::npos);
  EXPECT_NE(yn.find("border-width:0px; border-color:#000000;"), std::string::npos);
  EXPECT_EQ(yn.find("<title>"), std::string::npos);
  GridTable bare = sample();
  bare.columnLabels = bare.rowLabelBar = false;
  const std::string b = joined(yyGridHtmlLines(bare, 0, "Bare", 0, {}));
  EXPECT_EQ(b.find("<th"), std::string::npos);
  EXPECT_EQ(b.find("class=\"rl\">"), std::string::npos);
  EXPECT_EQ(tidy(b), "");
}

TEST_F(Documents, PostScriptIsReadDrawnAndLegible) {
  GridTable t = sample();
  t.rows[0][0].text = "Quartz (alpha)";
  GridPrintOptions o;
  o.scale = 200;
  o.colour = o.colourBackground = true;
  zelvy_data::PageSetup page;
  const fs::path p = ps(t, o, page);
  const std::string text = read(p);
  EXPECT_EQ(text.rfind("%!PS-Adobe-3.0\n%%Title: Table\n%%Creator: Zelvane PostScript driver\n", 0), 0u);
  EXPECT_NE(text.find("(Quartz \\(alpha\\)) lsh"), std::string::npos);
  EXPECT_NE(text.find("(\\305 \\(\\345ngstr\\366m\\)) lsh"), std::string::npos);  // UTF-8 in, Latin-1 out
  EXPECT_NE(text.find("/Helvetica ff 16.0 sf"), std::string::npos);
  EXPECT_NE(text.find("/Symbol ff 16.0 sf"), std::string::npos);
  EXPECT_NE(text.find(") rsh"), std::string::npos);
  EXPECT_NE(text.find("1. 0. 0. g"), std::string::npos);  // the red text of row 2
  EXPECT_EQ(text.back(), '\x04');
  const fs::path png = dir / "t.png";
  ASSERT_EQ(run("gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=pnggray -r150 -sOutputFile='" + png.string() + "' '" +
                p.string() + "' >/dev/null 2>&1"),
            0);
  const std::string ocr = output_of("tesseract '" + png.string() + "' - 2>/dev/null");
  EXPECT_NE(ocr.find("Quartz"), std::string::npos) << ocr;
  EXPECT_NE(ocr.find("12.50"), std::string::npos) << ocr;
}

TEST_F(Documents, PagesFollowRowsColumnsAndLabels) {
  GridTable t = sample();
  zelvy_data::PageSetup page;
  GridPrintOptions o;
  o.rowLines = false;
  // Wide enough for the labels and the first two columns only: the third
  // goes to a page of its own, with the row labels again.
  page.Width = 100;
  std::string text = read(ps(t, o, page));
  EXPECT_EQ(count(text, "%%Page: "), 2);
  EXPECT_EQ(count(text, "(2) lsh"), 2);
  EXPECT_NE(text.find("/#copies 1 def"), std::string::npos);
  ASSERT_EQ(run("gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=nullpage '" + (dir / "t.ps").string() + "' >/dev/null 2>&1"),
            0);

  // Rows 1.5 font sizes high: two thirds as many to the page.
  page = zelvy_data::PageSetup{};
  page.Height = 8 * 12;
  t.rows.resize(60, t.rows[0]);
  t.rowLabels.resize(60, "r");
  o.rowLines = false;
  const int plain = count(read(ps(t, o, page, "a.ps")), "%%Page: ");
  o.rowLines = true;
  const int tall = count(read(ps(t, o, page, "b.ps")), "%%Page: ");
  // 11 rows a page (12 less the labels), then 12; with lines 7, then 8.
  EXPECT_EQ(plain, 1 + (60 - 11 + 11) / 12);
  EXPECT_EQ(tall, 1 + (60 - 7 + 7) / 8);

  // Landscape turns the page and swaps the paper's sides.
  page.Orientation = 1;
  text = read(ps(t, o, page, "c.ps"));
  EXPECT_NE(text.find("%%Orientation: Landscape"), std::string::npos);
  EXPECT_NE(text.find("%%BeginPageSetup\n595 0. translate\n90. rotate\n%%EndPageSetup"), std::string::npos);
}

TEST(GridPrintOptionsItems, ClampAndTurn) {
  using namespace grid_print_item;
  int v = 0;
  yygridprintoptions_(kScale, 5, kGridPrintDialog);
  yyinfogridprint_(kScale, v, kGridPrintDialog);
  EXPECT_EQ(v, 10);
  yygridprintoptions_(kScale, 500, kGridPrintDialog);
  yyinfogridprint_(kScale, v, kGridPrintDialog);
  EXPECT_EQ(v, 400);
  yygridprintoptions_(kColour, 2, kGridPrintWindow);
  yyinfogridprint_(kColour, v, kGridPrintWindow);
  EXPECT_EQ(v, 2);
  yyinfogridprint_(kColour, v, kGridPrintDialog);
  EXPECT_EQ(v, 0);
  yygridprintoptions_(kCopies, -4, kGridPrintDialog);
  yyinfogridprint_(kCopies, v, kGridPrintDialog);
  EXPECT_EQ(v, 1);
  yygridprintoptions_(kPaper, 99, kGridPrintDialog);
  yyinfogridprint_(kPaper, v, kGridPrintDialog);
  EXPECT_EQ(v, 5);

  // A4 portrait with margins 10, 20, 30, 40 turned a quarter to landscape.
  yygridprintoptions_(kLeftMargin, 10, kGridPrintDialog);
  yygridprintoptions_(kTopMargin, 20, kGridPrintDialog);
  yygridprintoptions_(kRightMargin, 30, kGridPrintDialog);
  yygridprintoptions_(kBottomMargin, 40, kGridPrintDialog);
  int w = 0, h = 0;
  yyinfogridprint_(kWidth, w, kGridPrintDialog);
  yyinfogridprint_(kHeight, h, kGridPrintDialog);
  EXPECT_EQ(w, 595 - 40);
  EXPECT_EQ(h, 842 - 60);
  yygridprintoptions_(kOrientation, 3, kGridPrintDialog);
  yyinfogridprint_(kWidth, v, kGridPrintDialog);
  EXPECT_EQ(v, h);
  int left = 0, top = 0;
  yyinfogridprint_(kLeftMargin, left, kGridPrintDialog);
  yyinfogridprint_(kTopMargin, top, kGridPrintDialog);
  EXPECT_EQ(left, 40);
  EXPECT_EQ(top, 10);
  yygridprintoptions_(kOrientation, 2, kGridPrintDialog);
  yyinfogridprint_(kLeftMargin, left, kGridPrintDialog);
  EXPECT_EQ(left, 10);
  yyinfogridprint_(kOrientation, v, kGridPrintDialog);
  EXPECT_EQ(v, 0);
}

}  // namespace

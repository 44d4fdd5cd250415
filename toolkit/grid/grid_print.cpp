// A grid printed as a PostScript table of its own: rows go down the page in
// blocks, columns that don't fit go on to further pages with the row labels
// repeated, and every cell is clipped to its box so that a long text can't
// run into its neighbour.
#include "toolkit/grid/grid_output.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>

#include "toolkit/base/error.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/grid/grid_window_private.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/os/command.h"

namespace {

namespace fs = std::filesystem;
std::size_t at(int i) { return static_cast<std::size_t>(i); }

constexpr int kScaleMin = 10, kScaleMax = 400;
constexpr float kDefaultFontSize = 8.0f;
constexpr int kWhite = 0xFFFFFF;
// Where a print command's prefix ends and its suffix starts in a file argument.
constexpr std::string_view kCommandMark = " @ ";

std::array<GridPrintOptions, 2>& options_table() {
  static std::array<GridPrintOptions, 2> table{};
  return table;
}
std::size_t entry_of(int entry) { return entry == kGridPrintWindow ? 1 : 0; }

// The paper as printed: landscape turns it.
void paper_in(const zelvy_data::PageSetup& r, int& width, int& height) {
  const auto& p = zelvy_data::paper_size(r.Paper);
  width = r.Orientation == 1 ? p.height : p.width;
  height = r.Orientation == 1 ? p.width : p.height;
}

// Direction 1: margins from the printed area; 2: the area from the margins.
void recompute(zelvy_data::PageSetup& r, int direction) {
  int pw = 0, ph = 0;
  paper_in(r, pw, ph);
  if (direction == 1) {
    r.LeftMargin = std::max(r.XOffset, 0);
    r.TopMargin = std::max(r.YOffset, 0);
    r.RightMargin = std::max(pw - r.LeftMargin - r.Width, 0);
    r.BottomMargin = std::max(ph - r.TopMargin - r.Height, 0);
  } else {
    r.Width = pw - r.LeftMargin - r.RightMargin;
    r.Height = ph - r.TopMargin - r.BottomMargin;
    r.XOffset = r.LeftMargin;
    r.YOffset = r.TopMargin;
  }
}

// Widths in thousandths of an em of the printable ASCII characters in the
// sans-serif printer font, from its published metrics.
constexpr std::array<short, 95> kSansWidths{
    278, 278, 355, 556, 556, 889, 667, 222, 333, 333, 389, 584, 278, 584, 278, 278, 556, 556, 556, 556,
    556, 556, 556, 556, 556, 556, 278, 278, 584, 584, 584, 556, 1015, 667, 667, 722, 722, 667, 611, 778,
    722, 278, 500, 667, 556, 833, 722, 778, 667, 778, 722, 667, 611, 722, 667, 944, 667, 667, 611, 278,
    278, 278, 469, 556, 222, 556, 556, 500, 556, 556, 278, 556, 556, 222, 222, 500, 222, 833, 556, 556,
    556, 556, 333, 500, 278, 556, 500, 722, 500, 500, 500, 334, 260, 334, 584};
constexpr int kAverageWidth = 556;

// Fixed two decimals, left-justified; ".00" keeps one zero.
std::string fixed2(float v) {
  char b[32];
  std::snprintf(b, sizeof b, "%.2f", static_cast<double>(v));
  std::string s(b);
  if (s == "-0.00") s = "0.00";
  if (s.size() >= 3 && s.compare(s.size() - 3, 3, ".00") == 0) s.pop_back();
  return s;
}

}  // namespace

// ---- Options ---------------------------------------------------------------------------------

GridPrintOptions& yyGridPrintOptions(int entry) { return options_table()[entry_of(entry)]; }

void yygridprintoptions_(int item, int value, int entry) {
  using namespace grid_print_item;
  GridPrintOptions& o = yyGridPrintOptions(entry);
  zelvy_data::PageSetup& p = zelvy_data::data().psgrid[entry_of(entry)];
  switch (item) {
    case kWidth: p.Width = value; recompute(p, 1); break;
    case kHeight: p.Height = value; recompute(p, 1); break;
    case kXOffset: p.XOffset = value; recompute(p, 1); break;
    case kYOffset: p.YOffset = value; recompute(p, 1); break;
    case kOrientation: {
      if (value < 0 || value > 3) break;
      const int landscape = value % 2;
      if (value >= 2 && (landscape == 1) == (p.Width < p.Height)) {
        // The printed area follows the paper round: a quarter turn.
        std::swap(p.Width, p.Height);
        const int left = p.LeftMargin, top = p.TopMargin, right = p.RightMargin, bottom = p.BottomMargin;
        if (landscape) {
          p.LeftMargin = bottom, p.TopMargin = left, p.RightMargin = top, p.BottomMargin = right;
        } else {
          p.LeftMargin = top, p.TopMargin = right, p.RightMargin = bottom, p.BottomMargin = left;
        }
        p.XOffset = p.LeftMargin;
        p.YOffset = p.TopMargin;
      }
      p.Orientation = landscape;
      break;
    }
    case kRowLines: o.rowLines = value != 0; break;
    case kColumnLines: o.columnLines = value != 0; break;
    case kLabelsEachPage: o.labelsEachPage = value != 0; break;
    case kColour:
      o.colour = value >= 1;
      o.colourBackground = value >= 2;
      break;
    case kScale: o.scale = std::clamp(value, kScaleMin, kScaleMax); break;
    case kPaper:
      if (value >= 1 && value <= zelvy_data::kPaperCount) {
        p.Paper = value;
        recompute(p, 2);
      }
      break;
    case kLeftMargin: p.LeftMargin = value; recompute(p, 2); break;
    case kTopMargin: p.TopMargin = value; recompute(p, 2); break;
    case kRightMargin: p.RightMargin = value; recompute(p, 2); break;
    case kBottomMargin: p.BottomMargin = value; recompute(p, 2); break;
    case kCopies: p.Copies = std::max(value, 1); break;
    default: break;
  }
}

void yyinfogridprint_(int item, int& value, int entry) {
  using namespace grid_print_item;
  const GridPrintOptions& o = yyGridPrintOptions(entry);
  const zelvy_data::PageSetup& p = zelvy_data::data().psgrid[entry_of(entry)];
  switch (item) {
    case kWidth: value = p.Width; break;
    case kHeight: value = p.Height; break;
    case kXOffset: value = p.XOffset; break;
    case kYOffset: value = p.YOffset; break;
    case kOrientation: value = p.Orientation; break;
    case kRowLines: value = o.rowLines; break;
    case kColumnLines: value = o.columnLines; break;
    case kLabelsEachPage: value = o.labelsEachPage; break;
    case kColour: value = o.colourBackground ? 2 : o.colour ? 1 : 0; break;
    case kScale: value = o.scale; break;
    case kPaper: value = p.Paper; break;
    case kLeftMargin: value = p.LeftMargin; break;
    case kTopMargin: value = p.TopMargin; break;
    case kRightMargin: value = p.RightMargin; break;
    case kBottomMargin: value = p.BottomMargin; break;
    case kCopies: value = p.Copies; break;
    default: value = 0; break;
  }
}

int yygridpagesetup_(int, int entry) {
  return yyComdlgPageSetup(zelvy_data::data().psgrid[entry_of(entry)], "Page Setup");
}

// ---- The document's pieces ------------------------------------------------------------------

// The media comment of a paper and the page size request that goes with it.
std::string yydocumentmedia(const zelvy_data::PaperSize& paper, std::string& setpage) {
  std::string name;
  for (const char c : std::string_view(paper.name)) name.push_back(c == '(' || c == ' ' ? '_' : c == ')' ? ' ' : c);
  while (!name.empty() && name.back() == ' ') name.pop_back();
  char size[32];
  std::snprintf(size, sizeof size, "%6d %6d", paper.width, paper.height);
  setpage = std::string("<< /PageSize [") + size + "] /Orientation 0 >> setpagedevice";
  return "%%DocumentMedia: " + name + ' ' + size + " 0 () ()";
}

// The printer font of a dialog font index, and its size in points (0: none given).
void yyinfodialogfieldfont(int fontIndex, std::string& name, int& size) {
  static constexpr std::array<const char*, 13> kNames{
      "Helvetica",   "Helvetica-Bold", "Helvetica-Oblique", "Helvetica-BoldOblique", "Times-Roman",
      "Times-Bold",  "Times-Italic",   "Times-BoldItalic",  "Courier",               "Courier-Bold",
      "Courier-Oblique", "Courier-BoldOblique", "Symbol"};
  name = kNames[fontIndex >= 0 && at(fontIndex) < kNames.size() ? at(fontIndex) : 0];
  int family = -1;
  size = 0;
  if (fontIndex > 0) yyrcfontlist(fontIndex, family, size);
  size = std::max(size, 0);
}

// "x y op" with y measured from the top of the page.
std::string yygridprintxy(float x, float y, float pageHeight, std::string_view op) {
  return fixed2(x) + ' ' + fixed2(pageHeight - y) + ' ' + std::string(op);
}

// Text width in points in the sans-serif printer font of size `size`.
float yygridprintlen(std::string_view text, float size) {
  long total = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c >= 32 && c <= 126) total += kSansWidths[c - 32];
    else if ((c & 0xC0) != 0x80) total += kAverageWidth;  // one character of several bytes
  }
  return static_cast<float>(total) * size / 1000.0f;
}

// The colour operator for red, green and blue of 0..255.
std::string yygridprintcolour(int red, int green, int blue) {
  auto part = [](int v) {
    char b[16];
    std::snprintf(b, sizeof b, "%.3f", std::clamp(v, 0, 255) / 255.0);
    std::string s(b);
    while (s.back() == '0') s.pop_back();
    return s;
  };
  return part(red) + ' ' + part(green) + ' ' + part(blue) + " g";
}

namespace {

// The cells hold UTF-8; the printer font is re-encoded to ISO Latin-1, and a
// character beyond it prints as "?". Bytes above 127 go out as octal escapes
// so that the file stays plain ASCII.
std::string latin1_escaped(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    unsigned code = c;
    if (c >= 0x80) {
      const int extra = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : c >= 0xC0 ? 1 : 0;
      code = extra == 0 ? '?' : c & (0x3F >> extra);
      for (int k = 0; k < extra && i + 1 < text.size(); ++k)
        code = (code << 6) | (static_cast<unsigned char>(text[++i]) & 0x3F);
      if (code > 0xFF || code < 0xA0) code = '?';
    }
    if (code == '(' || code == ')' || code == '\\') out.push_back('\\');
    if (code < 0x80) {
      out.push_back(static_cast<char>(code));
    } else {
      char b[8];
      std::snprintf(b, sizeof b, "\\%03o", code);
      out += b;
    }
  }
  return out;
}

}  // namespace

// Text at (x, y) from the top of its line, 0 left, 1 centred on x, 2 ending at x.
std::string yygridprinttext_(float x, float y, float size, float pageHeight, std::string_view text, int align) {
  std::string out = yygridprintxy(x, y + 0.75f * size, pageHeight, "m") + "\n(" + latin1_escaped(text);
  out += align == 2 ? ") rsh" : align == 1 ? ") csh" : ") lsh";
  return out;
}

namespace {

std::string colour_of(int packedColour) {
  return yygridprintcolour(packedColour & 0xFF, (packedColour >> 8) & 0xFF, (packedColour >> 16) & 0xFF);
}

class TablePrinter {
 public:
  TablePrinter(std::FILE* out, const GridTable& t, const GridPrintOptions& o, const zelvy_data::PageSetup& page)
      : out_(out), t_(t), o_(o), page_(page) {
    int pw = 0, ph = 0;
    paper_in(page, pw, ph);
    pageHeight_ = static_cast<float>(ph);
    int size = 0;
    yyinfodialogfieldfont(t.fontIndex, fontName_, size);
    const float base = size > 0 ? static_cast<float>(size) : kDefaultFontSize;
    F_ = base * static_cast<float>(std::clamp(o.scale, kScaleMin, kScaleMax)) / 100.0f;
    H_ = F_ / 2;
    R_ = o.rowLines ? 1.5f * F_ : F_;
    labelH_ = 1.5f * F_;
    left_ = static_cast<float>(page.LeftMargin);
    right_ = static_cast<float>(page.Width + page.LeftMargin);
    top_ = static_cast<float>(page.TopMargin);
  }

  void line(std::string_view s) {
    if (!ok_) return;
    ok_ = std::fwrite(s.data(), 1, s.size(), out_) == s.size() && std::fputc('\n', out_) != EOF;
  }
  bool ok() const { return ok_; }
  const std::string& fontName() const { return fontName_; }
  std::string fontLine() const { return "/" + fontName_ + " ff " + fixed2(F_) + " sf"; }

  void body() {
    line("%%Page: 1 1");
    line("newpath");
    line("0.0 0.0 0.0 g");
    line(fontLine());
    const int rows = static_cast<int>(t_.rows.size());
    const int perPage = static_cast<int>(static_cast<float>(page_.Height) / R_) - (t_.columnLabels ? 1 : 0);
    int first = 0;
    bool firstBlock = true;
    while (first < rows) {
      int n = perPage + (!firstBlock && t_.columnLabels && !o_.labelsEachPage ? 1 : 0);
      n = std::clamp(n, 1, rows - first);
      block(first, n, t_.columnLabels && (firstBlock || o_.labelsEachPage));
      first += n;
      firstBlock = false;
      line("/#copies 1 def");
      line("gsave showpage grestore");
      if (first < rows) newPage();
    }
  }

 private:
  void newPage() {
    ++page_no_;
    line("%%Page: " + std::to_string(page_no_) + ' ' + std::to_string(page_no_));
    line("0.0 0.0 0.0 g");
    line(fontLine());
  }
  void segment(float x1, float y1, float x2, float y2) {
    line(yygridprintxy(x1, y1, pageHeight_, "m"));
    line(yygridprintxy(x2, y2, pageHeight_, "l s"));
  }
  void box(float x1, float y1, float x2, float y2) {
    line(yygridprintxy(x1, y1, pageHeight_, "m"));
    line(yygridprintxy(x2, y1, pageHeight_, "l"));
    line(yygridprintxy(x2, y2, pageHeight_, "l"));
    line(yygridprintxy(x1, y2, pageHeight_, "l"));
  }

  // The row label column of a block; returns its width.
  float yygridprintrowlabels(int first, int n, bool labels) {
    if (!t_.rowLabelBar) return 0;
    float w = 0.25f * F_ * static_cast<float>(t_.rowLabelChars);
    for (const std::string& s : t_.rowLabels) w = std::max(w, yygridprintlen(s, F_) + H_);
    const float yRows = top_ + (labels ? labelH_ : 0);
    if (labels && !t_.cornerLabel.empty())
      line(yygridprinttext_(left_ + H_, top_ + 0.25f * F_, F_, pageHeight_, t_.cornerLabel, 0));
    for (int i = 0; i < n; ++i)
      line(yygridprinttext_(left_ + H_, yRows + static_cast<float>(i) * R_ + (R_ - F_) / 2, F_, pageHeight_,
                            label(first + i), 0));
    segment(left_ + w, top_, left_ + w, bottom(labels, n));
    return w;
  }
  std::string_view label(int row) const {
    return at(row) < t_.rowLabels.size() ? std::string_view(t_.rowLabels[at(row)]) : std::string_view();
  }
  float bottom(bool labels, int n) const {
    return top_ + (labels ? labelH_ : 0) + static_cast<float>(n) * R_ + (o_.rowLines ? 0 : 0.5f * F_);
  }
  // The frame of a page: its top and bottom, the lines between rows, its two edges.
  void frame(float x, bool labels, int n) {
    const float yb = bottom(labels, n);
    segment(left_, top_, x, top_);
    if (labels) segment(left_, top_ + labelH_, x, top_ + labelH_);
    if (o_.rowLines) {
      for (int i = 1; i < n; ++i) {
        const float y = top_ + (labels ? labelH_ : 0) + static_cast<float>(i) * R_;
        segment(left_, y, x, y);
      }
    }
    segment(left_, yb, x, yb);
    segment(left_, top_, left_, yb);
    segment(x, top_, x, yb);
  }

  void block(int first, int n, bool labels) {
    const float yRows = top_ + (labels ? labelH_ : 0);
    float x = left_ + yygridprintrowlabels(first, n, labels);
    bool firstOnPage = true;
    for (std::size_t c = 0; c < t_.columns.size(); ++c) {
      const GridTableColumn& col = t_.columns[c];
      const bool check = col.cellType == grid_type::kCheckbox;
      float w = static_cast<float>(col.widthChars) * H_;
      if (labels) w = std::max(w, yygridprintlen(col.label, F_) + H_);
      if (!check)
        for (int i = 0; i < n; ++i) w = std::max(w, yygridprintlen(t_.rows[at(first + i)][c].text, F_) + H_);
      if (firstOnPage) {
        w = std::min(w, right_ - x);
      } else if (x + w > right_) {
        frame(x, labels, n);
        line("/#copies " + std::to_string(std::max(page_.Copies, 1)) + " def");
        line("gsave showpage grestore");
        newPage();
        x = left_ + yygridprintrowlabels(first, n, labels);
        w = std::min(w, right_ - x);
      }
      firstOnPage = false;
      if (labels) {
        line(yygridprintcolour(0, 0, 0));
        line(yygridprinttext_(x + w / 2, top_ + 0.25f * F_, F_, pageHeight_, col.label, 1));
      }
      const float tx = col.align == 2 ? x + w - H_ : col.align == 1 ? x + w / 2 : x + H_;
      if (check) line("/Symbol ff " + fixed2(F_) + " sf");
      for (int i = 0; i < n; ++i) {
        const GridTableCell& cell = t_.rows[at(first + i)][c];
        float y1 = yRows + static_cast<float>(i) * R_, y2 = y1 + R_;
        if (!o_.rowLines && i == 0) y1 -= 0.25f * F_;
        if (!o_.rowLines && i == n - 1) y2 += 0.25f * F_;
        if (o_.colourBackground && cell.background >= 0 && cell.background != kWhite) {
          line(colour_of(cell.background));
          box(x, y1, x + w, y2);
          line("cf");
        }
        const bool own = o_.colour && cell.foreground >= 0;
        line(own ? colour_of(cell.foreground) : yygridprintcolour(0, 0, 0));
        box(x, y1, x + w, y2);
        line("clip newpath");
        const float ty = yRows + static_cast<float>(i) * R_ + (R_ - F_) / 2;
        if (check) {
          // A clear box prints a dash; a set one is left blank.
          if (!cell.set) {
            const char* op = col.align == 2 ? ") rsh" : col.align == 1 ? ") csh" : ") lsh";
            line(yygridprintxy(tx, ty + 0.75f * F_, pageHeight_, "m") + "\n(-" + op);
          }
        } else if (!cell.text.empty()) {
          line(yygridprinttext_(tx, ty, F_, pageHeight_, cell.text, col.align));
        }
        line("initclip");
      }
      line(yygridprintcolour(0, 0, 0));
      if (check) line(fontLine());
      if (o_.columnLines) segment(x + w, top_, x + w, bottom(labels, n));
      x += w;
    }
    frame(x, labels, n);
  }

  std::FILE* out_;
  const GridTable& t_;
  const GridPrintOptions& o_;
  const zelvy_data::PageSetup& page_;
  std::string fontName_;
  float pageHeight_ = 0, F_ = 0, H_ = 0, R_ = 0, labelH_ = 0, left_ = 0, right_ = 0, top_ = 0;
  int page_no_ = 1;
  bool ok_ = true;
};

std::string temporary_print_file() {
  const auto& d = zelvy_data::data();
  if (!d.ctmpfile[1].empty()) return d.ctmpfile[1];
  return (fs::temp_directory_path() / ("zelvgrid" + std::to_string(::getpid()) + ".ps")).string();
}

}  // namespace

bool yyGridPostScript(std::FILE* out, const GridTable& table, const GridPrintOptions& options,
                      const zelvy_data::PageSetup& page, std::optional<std::string_view> title) {
  TablePrinter p(out, table, options, page);
  const auto& paper = zelvy_data::paper_size(page.Paper);
  const bool landscape = page.Orientation == 1;
  p.line("%!PS-Adobe-3.0");
  if (title) p.line("%%Title: " + std::string(*title));
  p.line("%%Creator: Zelvane PostScript driver");
  p.line(landscape ? "%%Orientation: Landscape" : "%%Orientation: Portrait");
  std::string setpage;
  p.line(yydocumentmedia(paper, setpage));
  p.line("%%EndComments");
  p.line("/l {lineto} def/m {moveto} def/g {setrgbcolor} def/s {stroke} def");
  p.line("/cf {closepath fill} def/ff {findfont} def/sf {scalefont setfont} def/lsh {show} def");
  p.line("/rsh {dup stringwidth pop 0 exch sub 0 rmoveto show} def");
  p.line("/csh {dup stringwidth pop 2 div 0 exch sub 0 rmoveto show} def");
  p.line("%%EndProlog");
  p.line("%%BeginSetup");
  p.line(setpage);
  // The font takes ISO Latin-1 under its own name, for the accented letters of the cells.
  const std::string font = "/" + p.fontName();
  p.line(font + " findfont dup length dict begin {1 index /FID ne {def} {pop pop} ifelse} forall");
  p.line("/Encoding ISOLatin1Encoding def currentdict end " + font + " exch definefont pop");
  p.line("%%EndSetup");
  p.line("2 setlinecap");
  p.line("0 setlinewidth");
  if (landscape) {
    p.line("%%BeginPageSetup");
    p.line(std::to_string(paper.width) + " 0. translate");
    p.line("90. rotate");
    p.line("%%EndPageSetup");
  }
  p.body();
  p.line("%%EOF");
  p.line("initgraphics");
  if (p.ok() && std::fputc('\x04', out) == EOF) return false;
  return p.ok();
}

void yygridprint_(int window, int fieldid, int& ok, int firstRow, int lastRow, int firstColumn, int lastColumn,
                  int entry, std::optional<std::string_view> file, std::optional<std::string_view> title) {
  ok = 0;
  const bool inWindow = entry == kGridPrintWindow;
  const char* routine = inWindow ? "WGridEdit" : "WGridPrint";
  int error = 0;
  Widget grid = fieldid == 0 ? yyGridWindowGridOf(window) : yyGridFind(fieldid, error);
  if (!grid) return yyerror(error ? error : 1006, routine);
  const GridModel& m = yyGridPart(grid).st->model;
  auto span = [](int a, int b, int count, int& lo, int& hi) {
    lo = a >= 1 && a <= count ? a - 1 : 0;
    hi = b >= 1 && b <= count ? b - 1 : count - 1;
  };
  int c1 = 0, c2 = 0, r1 = 0, r2 = 0;
  span(firstColumn, lastColumn, m.columnCount(), c1, c2);
  span(firstRow, lastRow, m.rows, r1, r2);
  if (c1 > c2 || r1 > r2) return;
  GridTable table = yyGridTableOf(grid, c1, r1, c2, r2);

  std::optional<std::string> heading;
  if (title) {
    heading = std::string(*title);
  } else if (inWindow) {
    const GridWindowData* w = yyGridWindowData(window);
    heading = w && !w->fileName.empty() ? w->fileName : std::string("Untitled");
  }
  const zelvy_data::PageSetup& page = zelvy_data::data().psgrid[entry_of(entry)];
  std::string name, command;
  if (!file) {
    if (page.Destination == 1) {
      name = temporary_print_file();
      command = page.Command + ' ' + name;
    } else {
      name = page.File;
    }
  } else if (const auto mark = file->find(kCommandMark); mark != std::string_view::npos) {
    name = temporary_print_file();
    command = std::string(file->substr(0, mark)) + ' ' + name + ' ' +
              std::string(file->substr(mark + kCommandMark.size()));
  } else {
    name = std::string(*file);
  }

  std::FILE* out = std::fopen(name.c_str(), "wb");
  if (!out) return;
  const bool written = yyGridPostScript(out, table, yyGridPrintOptions(entry), page,
                                        heading ? std::optional<std::string_view>(*heading) : std::nullopt);
  const bool closed = std::fclose(out) == 0;
  if (!written || !closed) return yyerror(grid_html::kWriteError, routine);
  ok = 1;
  if (command.empty()) return;
  const int code = yyoscommandprint(command, routine);
  if (code != 0) {
    // No printer, or no such command: the document stays where the user can take it from.
    constexpr int kNotFound = 127;
    const std::string what = command.substr(0, command.find(' '));
    const std::string why = code == kNotFound ? " was not found" : " failed (exit code " + std::to_string(code) + ")";
    yyComdlgAsk(0, 1, 1, "The print command \"" + what + "\"" + why + ".\rThe document was kept in " + name + ".",
                "Print");
    return;
  }
  std::error_code ec;
  fs::remove(name, ec);
}

void yygridwinprint_(int window, int firstColumn, int firstRow, int lastColumn, int lastRow) {
  if (!yyGridWindowData(window)) return;
  zelvy_data::PageSetup& page = zelvy_data::data().psgrid[entry_of(kGridPrintWindow)];
  constexpr int kPrint = 1;
  if (yyComdlgGridPrint(yyGridPrintOptions(kGridPrintWindow), page) != kPrint) return;
  std::error_code ec;
  if (page.Destination != 1 && fs::exists(page.File, ec)) {
    constexpr int kYesNo = 3, kWarning = 3, kSecond = 2, kYes = 6;
    if (yyComdlgAsk(kYesNo, kWarning, kSecond, page.File + " already exists.\r\rDo you want to replace it?",
                    "Overwrite?") != kYes)
      return;
  }
  int ok = 0;
  yygridprint_(window, 0, ok, firstRow, lastRow, firstColumn, lastColumn, kGridPrintWindow);
  if (!ok) yyComdlgAsk(0, 1, 1, "Error opening file", "File Error");
}

// The editor's text printed as a PostScript document of its own: the fonts
// are the printer's, re-encoded to ISO Latin-1; word wrap is worked out here
// from the fonts' published character widths.
#include "toolkit/editor/editor_print.h"

#include "toolkit/base/error.h"
#include "toolkit/kernel/comdlg_attach.h"
#include "toolkit/os/command.h"

#include <unistd.h>

#include <array>
#include <charconv>
#include <cstring>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

constexpr int kAsciiFirst = 32, kAsciiLast = 126, kUpperFirst = 161, kUpperLast = 255;
constexpr int kEuroPlace = 128;
constexpr int kTableSize = 95;
constexpr float kLineGap = 1.75f;
constexpr std::size_t kFlushAt = 1 << 20;

// Widths in thousandths of an em of the characters 32..126 and 161..255 in
// ISO Latin-1, from the fonts' published metrics.
constexpr std::array<short, kTableSize> kTimes7{
    250, 333, 408, 500, 500, 833, 778, 333, 333, 333, 500, 564, 250, 564, 250, 278, 500, 500, 500, 500,
    500, 500, 500, 500, 500, 500, 278, 278, 564, 564, 564, 444, 921, 722, 667, 667, 722, 611, 556, 722,
    722, 333, 389, 722, 611, 889, 722, 722, 556, 722, 667, 556, 611, 722, 722, 944, 722, 722, 611, 333,
    278, 333, 469, 500, 333, 444, 500, 444, 500, 444, 333, 500, 500, 278, 278, 500, 278, 778, 500, 500,
    500, 500, 333, 389, 278, 500, 500, 722, 500, 500, 444, 480, 200, 480, 541};
constexpr std::array<short, kTableSize> kTimes8{
    333, 500, 500, 500, 500, 200, 500, 333, 760, 276, 500, 564, 333, 760, 333, 400, 564, 300, 300, 333,
    500, 453, 250, 333, 300, 310, 500, 750, 750, 750, 444, 722, 722, 722, 722, 722, 722, 889, 667, 611,
    611, 611, 611, 333, 333, 333, 333, 722, 722, 722, 722, 722, 722, 722, 564, 722, 722, 722, 722, 722,
    722, 556, 500, 444, 444, 444, 444, 444, 444, 667, 444, 444, 444, 444, 444, 278, 278, 278, 278, 500,
    500, 500, 500, 500, 500, 500, 564, 500, 500, 500, 500, 500, 500, 500, 500};
constexpr std::array<short, kTableSize> kHelv7{
    278, 278, 355, 556, 556, 889, 667, 222, 333, 333, 389, 584, 278, 584, 278, 278, 556, 556, 556, 556,
    556, 556, 556, 556, 556, 556, 278, 278, 584, 584, 584, 556, 1015, 667, 667, 722, 722, 667, 611, 778,
    722, 278, 500, 667, 556, 833, 722, 778, 667, 778, 722, 667, 611, 722, 667, 944, 667, 667, 611, 278,
    278, 278, 469, 556, 222, 556, 556, 500, 556, 556, 278, 556, 556, 222, 222, 500, 222, 833, 556, 556,
    556, 556, 333, 500, 278, 556, 500, 722, 500, 500, 500, 334, 260, 334, 584};
constexpr std::array<short, kTableSize> kHelv8{
    333, 556, 556, 556, 556, 260, 556, 333, 737, 370, 556, 584, 333, 737, 333, 400, 584, 333, 333, 333,
    556, 537, 278, 333, 333, 365, 556, 834, 834, 834, 611, 667, 667, 667, 667, 667, 667, 1000, 722, 667,
    667, 667, 667, 278, 278, 278, 278, 722, 722, 778, 778, 778, 778, 778, 584, 778, 722, 722, 722, 722,
    667, 667, 611, 556, 556, 556, 556, 556, 556, 889, 500, 556, 556, 556, 556, 278, 278, 278, 278, 556,
    556, 556, 556, 556, 556, 556, 584, 611, 556, 556, 556, 556, 500, 556, 500};

struct Family {
  const char* prolog;  // its first five characters name the re-encoded font
  float average;       // em
  float euro;          // ratio of character 128
};
constexpr Family kTimes{"/Times-Roman ff ", 0.516143f, 0.968723f};
constexpr Family kHelvetica{"/Helvetica ff   ", 0.548429f, 1.01198f};
constexpr Family kCourier{"/Courier ff     ", 0.6f, 1.0f};

const Family& family(int number) {
  return number == kPrintTimes ? kTimes : number == kPrintHelvetica ? kHelvetica : kCourier;
}

// Ratio tables of the two proportional families; a few rows are pinned to
// the values the character counts of existing documents were made with.
struct RatioTable {
  std::array<float, 256> ratio{};
};
RatioTable make_table(const std::array<short, kTableSize>& low, const std::array<short, kTableSize>& high,
                      const Family& f) {
  RatioTable t;
  t.ratio.fill(1.0f);
  for (int i = 0; i < kTableSize; ++i) {
    t.ratio[static_cast<std::size_t>(kAsciiFirst + i)] = static_cast<float>(low[static_cast<std::size_t>(i)]) / (f.average * 1000.0f);
    t.ratio[static_cast<std::size_t>(kUpperFirst + i)] = static_cast<float>(high[static_cast<std::size_t>(i)]) / (f.average * 1000.0f);
  }
  t.ratio[kEuroPlace] = f.euro;
  return t;
}
const RatioTable& times_table() {
  static const RatioTable t = [] {
    RatioTable r = make_table(kTimes7, kTimes8, kTimes);
    r.ratio[' '] = 0.48436f; r.ratio['!'] = 0.64582f; r.ratio['A'] = 1.39819f; r.ratio['a'] = 0.86216f;
    return r;
  }();
  return t;
}
const RatioTable& helvetica_table() {
  static const RatioTable t = [] {
    RatioTable r = make_table(kHelv7, kHelv8, kHelvetica);
    r.ratio[' '] = 0.50751f; r.ratio['!'] = 0.50751f; r.ratio['A'] = 1.21559f; r.ratio['a'] = 1.01198f;
    return r;
  }();
  return t;
}

// Buffered output: one write per megabyte keeps a large document cheap.
class Sink {
 public:
  explicit Sink(std::FILE* f) : file_(f) { buf_.reserve(kFlushAt + 4096); }
  void put(std::string_view s) {
    buf_.append(s);
    if (buf_.size() >= kFlushAt) flush();
  }
  void line(std::string_view s) {
    buf_.append(s);
    buf_.push_back('\n');
    if (buf_.size() >= kFlushAt) flush();
  }
  bool flush() {
    if (!buf_.empty() && std::fwrite(buf_.data(), 1, buf_.size(), file_) != buf_.size()) ok_ = false;
    buf_.clear();
    return ok_;
  }
  std::string& raw() { return buf_; }

 private:
  std::FILE* file_;
  std::string buf_;
  bool ok_ = true;
};

// Right-justified integer in `width` columns, asterisks when it doesn't fit.
std::string int_field(long value, int width) {
  char b[24];
  const auto r = std::to_chars(b, b + sizeof b, value);
  const auto n = static_cast<int>(r.ptr - b);
  if (n > width) return std::string(static_cast<std::size_t>(width), '*');
  return std::string(static_cast<std::size_t>(width - n), ' ') + std::string(b, r.ptr);
}

// Appends a value with two decimals, without leading blanks.
void append_fixed2(std::string& out, float value) {
  char b[32];
  const auto r = std::to_chars(b, b + sizeof b, value, std::chars_format::fixed, 2);
  out.append(b, r.ptr);
}

// The page's geometry in the orientation printed.
struct Frame {
  int left = 0, right = 0, top = 0, bottom = 0, pageheight = 0;
};
Frame frame_of(const zelvy_data::PageSetup& page) {
  const auto& paper = zelvy_data::paper_size(page.Paper);
  Frame f;
  f.pageheight = page.Orientation == 1 ? paper.width : paper.height;
  f.left = page.LeftMargin;
  f.right = f.left + page.Width;
  f.top = f.pageheight - page.TopMargin;
  f.bottom = f.top - page.Height;
  return f;
}

class Printer {
 public:
  Printer(Sink& sink, const zelvy_data::PageSetup& page, const EditPrintFont& font, bool wrap)
      : sink_(sink), frame_(frame_of(page)), wrap_(wrap), usable_(static_cast<float>(page.Width)) {
    const Family& f = family(font.family);
    table_ = font.family == kPrintTimes ? &times_table() : font.family == kPrintHelvetica ? &helvetica_table() : nullptr;
    lineheight_ = font.size + kLineGap;
    charwidth_ = f.average * font.size;
    left_ = std::to_string(frame_.left) + ' ';
    y_ = static_cast<float>(frame_.top);
  }

  void text(std::string_view t) {
    std::size_t pos = 0;
    while (pos < t.size()) {
      const std::size_t end = t.find('\n', pos);
      const std::string_view line = t.substr(pos, end == std::string_view::npos ? t.size() - pos : end - pos);
      if (line.empty()) {
        y_ -= lineheight_;
        if (y_ < static_cast<float>(frame_.bottom)) {
          page_break();
          y_ = static_cast<float>(frame_.top);
        }
      } else {
        print_line(line);
      }
      if (end == std::string_view::npos) break;
      pos = end + 1;
    }
  }

 private:
  float width_of(unsigned char c) const {
    return (table_ ? table_->ratio[c] : 1.0f) * charwidth_;
  }

  void print_line(std::string_view line) {
    if (!wrap_) {
      output(line);
      return;
    }
    const std::size_t n = line.size();
    float x = 0, xblank = 0;
    std::size_t start = 0;
    std::size_t lastblank = std::string_view::npos;
    bool any = false;
    for (std::size_t i = 0; i < n; ++i) {
      const auto c = static_cast<unsigned char>(line[i]);
      float w = width_of(c);
      if (x + w > usable_) {
        if (lastblank != std::string_view::npos && lastblank >= start && lastblank != i) {
          output(line.substr(start, lastblank + 1 - start));
          x -= xblank;
          start = lastblank + 1;
        } else {
          output(line.substr(start, i - start));
          x = 0;
          if (c == ' ') w = 0;
          start = i;
        }
        any = true;
        while (start < n && line[start] == ' ') ++start;
        lastblank = std::string_view::npos;
        if (start > i) w = 0;  // this blank was dropped at the break
      }
      x += w;
      if (c == ' ' && start <= i) {
        lastblank = i;
        xblank = x;
      }
    }
    if (start < n || !any) output(line.substr(start));
  }

  void output(std::string_view piece) {
    y_ -= lineheight_;
    if (y_ < static_cast<float>(frame_.bottom)) {
      page_break();
      y_ = static_cast<float>(frame_.top) - lineheight_;
    }
    std::string& out = sink_.raw();
    out.append(left_);
    append_fixed2(out, y_);
    out.append(" m\n(");
    std::size_t from = 0;
    for (std::size_t i = 0; i < piece.size(); ++i) {
      const char c = piece[i];
      if (c == '\\' || c == '(' || c == ')') {
        out.append(piece.substr(from, i - from));
        out.push_back('\\');
        from = i;
      }
    }
    out.append(piece.substr(from));
    out.append(") sh\n");
    sink_.put({});
  }

  void page_break() {
    ++pageno_;
    sink_.line("/#copies 1 def");
    sink_.line("gsave showpage grestore");
    sink_.line("%%Page: " + std::to_string(pageno_) + ' ' + std::to_string(pageno_));
  }

  Sink& sink_;
  Frame frame_;
  bool wrap_;
  float usable_;
  const RatioTable* table_ = nullptr;
  float lineheight_ = 0, charwidth_ = 0, y_ = 0;
  std::string left_;
  int pageno_ = 1;
};

// A file or directory of that name is in the way: ask, or tell.
int check_destination(const std::string& name) {
  std::error_code ec;
  if (fs::is_directory(name, ec)) {
    constexpr int kOkOnly = 0, kWarning = 3;
    yyComdlgAsk(kOkOnly, kWarning, 1,
                "A directory with the following name already exists:\r" + name + "\r\rChoose a different name.",
                "Directory exists");
    return kPrintNotOpened;
  }
  if (fs::exists(name, ec)) {
    constexpr int kYesNo = 3, kWarning = 3, kSecond = 2, kNo = 7;
    if (yyComdlgAsk(kYesNo, kWarning, kSecond, name + " already exists.\r\rDo you want to replace it?",
                    "File exists") == kNo)
      return kPrintDeclined;
  }
  return kPrinted;
}

std::string temporary_print_file() {
  const auto& d = zelvy_data::data();
  if (!d.ctmpfile[1].empty()) return d.ctmpfile[1];
  return (fs::temp_directory_path() / ("zelvprint" + std::to_string(::getpid()) + ".dmp")).string();
}

}  // namespace

EditPrintFont yyeditprintfont(int fonttype, int fontsize) {
  const float own = fontsize > 0 ? static_cast<float>(fontsize) : 12.0f;
  switch (fonttype) {
    case 0: return {kPrintHelvetica, 10};
    case 1: case 7: return {kPrintCourier, 10};
    case 2: return {kPrintTimes, own};
    case 3: return {kPrintHelvetica, own};
    case 4: case 5: return {kPrintCourier, own};
    case 6: return {kPrintCourier, 9};
    case 8: return {kPrintCourier, 11};
    case 9: return {kPrintCourier, 13};
    case 10: return {kPrintCourier, 14};
    case 11: case 12: return {kPrintHelvetica, 8};
    case 13: return {kPrintCourier, 12};
    default: return {kPrintCourier, 10};
  }
}

float yyeditprintratio(int familynumber, unsigned char c) {
  if (familynumber == kPrintTimes) return times_table().ratio[c];
  if (familynumber == kPrintHelvetica) return helvetica_table().ratio[c];
  return 1.0f;
}

std::string yydocumentmediawh(std::string_view name, int width, int height, std::string* setpage) {
  std::string n;
  for (const char c : name) n.push_back(c == '(' || c == ' ' ? '_' : c == ')' ? ' ' : c);
  while (!n.empty() && n.back() == ' ') n.pop_back();
  if (setpage)
    *setpage = "<< /PageSize [" + int_field(width, 6) + ' ' + int_field(height, 6) + "] /Orientation 0 >> setpagedevice";
  return "%%DocumentMedia: " + n + ' ' + int_field(width, 6) + ' ' + int_field(height, 6) + " 0 () ()";
}

bool yyeditprintps(std::FILE* out, std::string_view text, const zelvy_data::PageSetup& page,
                   const EditPrintFont& font, bool wrap, std::optional<std::string_view> title) {
  Sink s(out);
  const Frame f = frame_of(page);
  const auto& paper = zelvy_data::paper_size(page.Paper);
  const Family& fam = family(font.family);
  const std::string_view prolog(fam.prolog);
  const std::string_view shortname = prolog.substr(0, 5);
  const bool landscape = page.Orientation == 1;

  s.line("%!PS-Adobe-3.0");
  s.line("%%Title: " + std::string(title.value_or("Untitled")));
  s.line("%%Creator: Zelvane PostScript driver");
  s.line(landscape ? "%%Orientation: Landscape" : "%%Orientation: Portrait");
  std::string setpage;
  s.line(yydocumentmediawh(paper.name, paper.width, paper.height, &setpage));
  s.line("%%EndComments");
  s.line("/l {lineto} def/m {moveto} def/g {setrgbcolor} def");
  s.line("/ff {findfont} def/sf {scalefont setfont} def/sh {show} def");
  s.line("%%EndProlog");
  s.line("%%BeginSetup");
  s.line(setpage);
  s.line("%%EndSetup");
  std::string p(prolog);
  while (!p.empty() && p.back() == ' ') p.pop_back();
  s.line(p);
  s.line("dup length dict begin");
  s.line("{1 index /FID ne {def} {pop pop} ifelse} forall");
  s.line("/Encoding ISOLatin1Encoding def");
  s.line("currentdict end " + std::string(shortname) + "-1 exch definefont pop");
  if (landscape) {
    s.line("%%BeginPageSetup");
    s.line(int_field(paper.width, 4) + " 0 translate");
    s.line("90 rotate");
    s.line("%%EndPageSetup");
  }
  s.line("%%Page: 1 1");
  s.line("initclip");
  const auto corner = [&](int x, int y, const char* op) {
    s.line(int_field(x, 4) + ' ' + int_field(y, 4) + ' ' + op);
  };
  corner(f.left, f.bottom, "m");
  corner(f.right, f.bottom, "l");
  corner(f.right, f.top, "l");
  corner(f.left, f.top, "l");
  s.line("clip");
  s.line("newpath");
  s.line("0.0 0.0 0.0 g");
  char size[16];
  std::snprintf(size, sizeof size, "%8.1f", static_cast<double>(font.size));
  s.line(std::string(shortname) + "-1 ff  " + size + " sf");

  Printer printer(s, page, font, wrap);
  printer.text(text);

  s.line("/#copies " + int_field(page.Copies, 3) + " def");
  s.line("gsave showpage grestore");
  s.line("%%EOF");
  s.line("initgraphics");
  s.put("\x04");
  return s.flush();
}

int yyeditprintuser(std::string_view text, const EditPrintFont& font, bool wrap, std::optional<std::string_view> title,
                    bool askpage) {
  auto& d = zelvy_data::data();
  if (askpage) {
    const int answer = yyComdlgPageSetup(d.psedit[0], "Page Setup");
    constexpr int kOk = 1;
    if (answer != kOk) return answer;
  }
  const zelvy_data::PageSetup& page = d.psedit[0];
  const bool bycommand = page.Destination == 1;
  const std::string name = bycommand ? temporary_print_file() : page.File;
  if (!bycommand) {
    const int check = check_destination(name);
    if (check == kPrintDeclined) return check;
  }
  std::FILE* out = std::fopen(name.c_str(), "wb");
  if (!out) return kPrintNotOpened;
  const bool written = yyeditprintps(out, text, page, font, wrap, title);
  const bool closed = std::fclose(out) == 0;
  if (!written || !closed) {
    constexpr int kErrorWrite = 2;
    yyerror(kErrorWrite, "WEditFile");
  }
  if (bycommand) {
    const int code = yyoscommandprint(page.Command + " " + name, "WEditFile");
    if (code != 0) {
      // No printer, or no such command: the document stays where the user
      // can take it from.
      constexpr int kNotFound = 127;
      const std::string why = code == kNotFound ? " was not found" : " failed (exit code " + std::to_string(code) + ")";
      yyComdlgAsk(0, 1, 1, "The print command \"" + page.Command + "\"" + why + ".\rThe document was kept in " + name + ".",
                  "Print");
      return kPrintNotOpened;
    }
    std::error_code ec;
    fs::remove(name, ec);
  }
  return kPrinted;
}

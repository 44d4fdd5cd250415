// A text file printed through the selected hardcopy driver as graphics text,
// on a grid of so many columns by so many lines; and the value rules of the
// hardcopy options.
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"
#include "toolkit/kernel/comdlg_attach.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>

using zelvy_graph::state;

namespace {

enum TextOption : int {
  kColumns = 101, kLines, kFirstPage, kLastPage, kFontStyle, kWrap, kCarriageControl, kTabStep, kUserFont,
  kOpenClose,
};
constexpr int kMaxLine = 255;
constexpr char kFormFeed = 12;
constexpr char kReturn = 13;

int text_option(int option) {
  return zelvy_data::data().itxopt[static_cast<std::size_t>(option - zelvy_data::kTextOptionBase)];
}

// Text style by option 105: normal, italic, bold, bold italic.
int style_of(int fontstyle) {
  constexpr int kStyles[] = {0, 2, 1, 3};
  return kStyles[std::clamp(fontstyle, 1, 4) - 1];
}

// Replaces the extension of a default file name.
void set_extension(std::string& name, const char* ext) {
  const auto dot = name.rfind('.');
  name = (dot == std::string::npos ? name : name.substr(0, dot)) + ext;
}

// Walks the lines of the file onto pages; the drawing is done by the caller's
// graphics state.
class TextPages {
 public:
  TextPages()
      : columns_(text_option(kColumns)), lines_(text_option(kLines)), first_(text_option(kFirstPage)),
        last_(text_option(kLastPage)), wrap_(text_option(kWrap) != 0), cc_(text_option(kCarriageControl) != 0),
        tab_(text_option(kTabStep)) {}

  bool done() const { return page_ > last_; }

  void line(std::string raw) {
    int advance = 1;
    bool newpage = false;
    if (cc_) {
      const char c = raw.empty() ? ' ' : raw[0];
      if (!raw.empty()) raw.erase(0, 1);
      advance = c == '0' ? 2 : c == '+' ? 0 : 1;
      newpage = c == '1';
    } else {
      if (!raw.empty() && raw.back() == kReturn) raw.back() = ' ';
      if (!raw.empty() && raw[0] == kFormFeed) {
        newpage = true;
        raw.erase(0, 1);
      }
    }
    const std::string text = expand_tabs(raw);
    // A page already empty isn't finished again: a page eject at its top
    // would otherwise print a blank sheet.
    if ((newpage || (advance == 2 && lineno_ == lines_ - 1)) && lineno_ > 0) {
      finish_page();
      if (done()) return;
      advance = 1;
    } else if (newpage) {
      advance = 1;
    }
    std::size_t at = 0;
    do {
      draw(text.substr(at, static_cast<std::size_t>(columns_)), advance);
      if (done()) return;
      at += static_cast<std::size_t>(columns_);
      advance = 1;
    } while (wrap_ && at < text.size());
  }

 private:
  std::string expand_tabs(const std::string& raw) const {
    std::string out;
    for (const char c : raw) {
      if (out.size() >= kMaxLine) break;
      if (c == '\t') {
        const std::size_t next = (out.size() / static_cast<std::size_t>(tab_) + 1) * static_cast<std::size_t>(tab_);
        out.append(std::min<std::size_t>(next, kMaxLine) - out.size(), ' ');
      } else {
        out.push_back(c);
      }
    }
    return out;
  }

  void draw(const std::string& piece, int advance) {
    lineno_ += advance;
    if (page_ >= first_ && !piece.empty()) {
      const float y = 1.0f - static_cast<float>(lineno_) / static_cast<float>(lines_ + 1);
      WGrTextString(0.0f, y, piece);
    }
    if (lineno_ >= lines_) finish_page();
  }

  void finish_page() {
    if (page_ >= first_) IGrEndPage();
    ++page_;
    lineno_ = 0;
  }

  int columns_, lines_, first_, last_;
  bool wrap_, cc_;
  int tab_;
  int page_ = 1, lineno_ = 0;
};

// The options dialog of the common dialogs edits the selected driver's
// settings through these; they are left there as soon as the graphics are
// linked into a program.
constexpr int kOptImageFormat = 26;
bool options_get(HardcopyOptionsEntry& e) {
  const auto& s = state();
  if (s.ihcdrv == 0) return false;
  const auto& o = s.ihcopt;
  e.driver = s.ihcdrv;
  e.file = s.cdeffile[2];
  e.format = o[kOptImageFormat];
  e.copies = std::max(o[zelv_graphics::kOptCopies], 1);
  e.linewidth = std::max(o[zelv_graphics::kOptLineWidth], 1);
  e.colour = o[zelv_graphics::kOptColourHandling];
  e.monochrome = o[zelv_graphics::kOptMonochrome] != 0;
  e.encapsulated = o[zelv_graphics::kOptEncapsulated] != 0;
  return true;
}
void options_set(const HardcopyOptionsEntry& e) {
  constexpr int kOptCopiesIn = 8;
  state().cdeffile[2] = e.file;
  IGrHardcopyOptions(kOptImageFormat, e.format);
  IGrHardcopyOptions(kOptCopiesIn, e.copies);
  IGrHardcopyOptions(zelv_graphics::kOptLineWidth, e.linewidth);
  IGrHardcopyOptions(zelv_graphics::kOptColourHandling, e.colour);
  IGrHardcopyOptions(zelv_graphics::kOptMonochrome, e.monochrome ? 1 : 0);
  IGrHardcopyOptions(zelv_graphics::kOptEncapsulated, e.encapsulated ? 1 : 0);
  // The file chosen stands, whatever the encapsulation did to the default.
  state().cdeffile[2] = e.file;
}
const bool kAttached = [] {
  yyAttachHardcopy({options_get, options_set});
  return true;
}();

}  // namespace

bool yyhcoptrule(int option, int& value) {
  auto& s = state();
  auto& o = s.ihcopt;
  const auto in = [&](int lo, int hi) { return value >= lo && value <= hi; };
  if (option >= zelvy_data::kTextOptionBase && option < zelvy_data::kTextOptionBase + zelvy_data::kTextOptions) {
    bool ok = true;
    switch (option) {
      case kColumns: case kLines: case kFirstPage: case kLastPage: case kTabStep: ok = value > 0; break;
      case kFontStyle: ok = in(1, 4); break;
      default: break;
    }
    if (ok) zelvy_data::data().itxopt[static_cast<std::size_t>(option - zelvy_data::kTextOptionBase)] = value;
    return false;
  }
  constexpr int kCopies = 8, kPenSetting = 12, kBitsPerPixel = 23, kImageFormat = 26, kJpegQuality = 31,
                kDpi = 32, kPaper = 33, kToggle = 39, kSmallRange = 21, kDriverImage = 6;
  switch (option) {
    case zelv_graphics::kOptPageWidth: case zelv_graphics::kOptPageHeight: case kDpi: return value > 0;
    case zelv_graphics::kOptOrientation:
      if (!in(0, 3)) return false;
      if (value >= 2 && ((value == 2) == (o[1] > o[2]))) std::swap(o[1], o[2]);
      value &= 1;
      return true;
    case zelv_graphics::kOptColourHandling: case zelv_graphics::kOptJoin: case zelv_graphics::kOptCap:
      return in(0, 2);
    case kCopies:
      o[zelv_graphics::kOptCopies] = std::max(value, 1);
      return false;
    case zelv_graphics::kOptLineWidth: return value >= 1;
    case kPenSetting: return value >= 100;
    case zelv_graphics::kOptPathLimit: return in(10, 255);
    case kSmallRange: return in(1, 127);
    case zelv_graphics::kOptEncapsulated:
      if (s.ihcdrv == zelv_graphics::kDriverPostScript) {
        set_extension(s.cdeffile[2], value != 0 ? ".eps" : ".ps");
        if (value != 0) s.ihcdrvflags &= ~1;
        else s.ihcdrvflags |= 1;
      }
      return true;
    case kBitsPerPixel:
      return s.ihcdrv != kDriverImage || value == 1 || value == 4 || value == 8 || value == 24;
    case kImageFormat: return in(0, 5);
    case kJpegQuality: return in(1, 100);
    case kPaper: return in(1, zelvy_data::kPaperCount);
    case kToggle: return in(0, 1);
    default: return true;
  }
}

void IGrHardcopyTextFile(std::string_view filename, std::string_view outputfile, std::string_view title) {
  constexpr const char* kName = "IGrHardcopyTextFile";
  constexpr int kErrorOpen = 1, kErrorRead = 2;
  auto& d = zelvy_data::data();
  auto& s = state();
  std::FILE* in = std::fopen(std::string(filename).c_str(), "rb");
  if (!in) {
    const int status = errno;
    yyerror(kErrorOpen, kName);
    d.istat = status;
    d.ioetype = 1;
  }

  // What the caller had: screen, text attributes, area, units, rotation.
  const int screen = s.igscrn;
  s.igscrn = 0;
  const int typ = s.ichtyp, prop = s.ichprop, fam = s.ichfam, styl = s.ichstyl, ali = s.ichali;
  const float reqx = s.chsizxreq, reqy = s.chsizyreq, rot = s.chrotar;
  const float ax1 = s.xgamin, ay1 = s.ygamin, ax2 = s.xgamax, ay2 = s.ygamax;
  const float ux1 = s.xmin, uy1 = s.ymin, ux2 = s.xmax, uy2 = s.ymax;
  const int urot = s.igurot;

  const int openclose = text_option(kOpenClose);
  if ((openclose & 1) != 0) IGrHardcopy(outputfile, title);

  IGrCharAlign(0);
  IGrCharType(0);
  IGrCharSpacing(0);
  // The user font is not kept by this toolkit: the fixed family serves.
  IGrCharFont(1, style_of(text_option(kFontStyle)));
  IGrCharRotate(0);
  IGrUnitsRotate(0);
  IGrArea(0, 0, 1, 1);
  IGrUnits(0, 0, 1, 1);
  IGrCharSize(1.0f / static_cast<float>(text_option(kColumns)), 1.0f / static_cast<float>(text_option(kLines)));

  if (in) {
    TextPages pages;
    std::string line;
    bool truncated = false;
    for (int c; !pages.done() && (c = getc(in)) != EOF;) {
      if (c == '\n') {
        pages.line(std::move(line));
        line.clear();
        truncated = false;
      } else if (!truncated) {
        line.push_back(static_cast<char>(c));
        truncated = line.size() >= kMaxLine;
      }
    }
    if (!line.empty() && !pages.done()) pages.line(std::move(line));
    if (std::ferror(in)) {
      yyerror(kErrorRead, kName);
      d.ioetype = 1;
    }
    std::fclose(in);
  }

  if ((openclose & 2) != 0) IGrHardcopy("S");
  IGrCharType(typ);
  IGrCharSpacing(prop);
  IGrCharFont(fam, styl);
  IGrCharAlign(ali);
  IGrCharSize(reqx, reqy);
  IGrCharRotate(rot);
  IGrArea(ax1, ay1, ax2, ay2);
  IGrUnits(ux1, uy1, ux2, uy2);
  IGrUnitsRotate(urot);
  s.igscrn = screen;
}

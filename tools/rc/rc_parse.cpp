// Reading resource scripts.
//
// A script is a sequence of blocks; '#' starts a comment. Words, numbers
// (decimal, 0x hexadecimal, reals where a range asks for them) and quoted
// texts with the escapes \t \b \n \" \\ are the tokens. The blocks:
//
//   menu ID [NAME] { item ID [NAME] "Te&xt" [greyed] [checked]
//                    popup ID [NAME] "Text" { ... }
//                    separator }                "&" marks the mnemonic, "&&" is "&"
//   toolbar ID [NAME] button W H { ID ... separator ... }
//   strings { ID "text" ... }
//   font INDEX family F size S
//   dialog ID [NAME] { size W H [style N] [layout N] [font N] [anchor FIELD] [title "t"]
//               field ID [NAME] TYPE X Y W H [style N] [style2 N] [flags N] [text "t"]
//                     [checked] [length N] [range MIN MAX] [key "c"]
//                     [colour R G B R G B] [font N] [options { "a" ... }]
//                     [select N (from 1, 0 none)]
//                     [grid COLUMNS ROWS TEMPLATE LABELWIDTH [labels { "r1" ... }]] }
//   palette { "c" rrggbb | "c" transparent ... }   one character per colour
//   pixmap NAME W H { "row" ... }                  one character per pixel
//   image ID [NAME] bitmap|icon|cursor W H [hotspot X Y] { NAME [x2] ... }
//                                                  pixmaps side by side, optionally scaled
//
// A NAME after an identifier is a C++ identifier that the generated header
// gives that identifier. Where a keyword follows (a field or image type,
// 'button'), two words in a row are a name and the keyword, so a name may
// even spell a keyword: "field 3 label label ..." names a label "label".
#include "tools/rc/rc.h"

#include <cctype>
#include <charconv>
#include <cstdlib>

namespace zelvrc {
namespace {

enum class Tok { Word, Number, Text, Open, Close, End };

struct Token {
  Tok kind = Tok::End;
  std::string text;
  int line = 0;
};

std::vector<Token> tokenize(const std::string& src, const std::string& file) {
  std::vector<Token> out;
  int line = 1;
  std::size_t i = 0;
  auto fail = [&](const std::string& m) { throw ScriptError({file, line}, m); };
  while (i < src.size()) {
    char c = src[i];
    if (c == '\n') { ++line; ++i; continue; }
    if (std::isspace(static_cast<unsigned char>(c))) { ++i; continue; }
    if (c == '#') {
      while (i < src.size() && src[i] != '\n') ++i;
      continue;
    }
    if (c == '{' || c == '}') {
      out.push_back({c == '{' ? Tok::Open : Tok::Close, std::string(1, c), line});
      ++i;
      continue;
    }
    if (c == '"') {
      std::string s;
      ++i;
      for (;;) {
        if (i >= src.size() || src[i] == '\n') fail("unterminated text");
        char d = src[i++];
        if (d == '"') break;
        if (d == '\\') {
          if (i >= src.size()) fail("unterminated text");
          char e = src[i++];
          switch (e) {
            case 't': s += '\t'; break;
            case 'b': s += '\b'; break;
            case 'n': s += '\n'; break;
            case '"': s += '"'; break;
            case '\\': s += '\\'; break;
            default: fail(std::string("unknown escape \\") + e);
          }
        } else {
          s += d;
        }
      }
      out.push_back({Tok::Text, s, line});
      continue;
    }
    std::size_t start = i;
    while (i < src.size() && !std::isspace(static_cast<unsigned char>(src[i])) && src[i] != '{' &&
           src[i] != '}' && src[i] != '"' && src[i] != '#')
      ++i;
    std::string w = src.substr(start, i - start);
    bool number = std::isdigit(static_cast<unsigned char>(w[0])) ||
                  ((w[0] == '-' || w[0] == '+' || w[0] == '.') && w.size() > 1);
    out.push_back({number ? Tok::Number : Tok::Word, w, line});
  }
  out.push_back({Tok::End, "end of file", line});
  return out;
}

const std::map<std::string, int>& field_types() {
  static const std::map<std::string, int> types{
      {"label", 1},    {"picture", 2}, {"group", 3},     {"string", 4},    {"integer", 5},   {"real", 6},
      {"double", 7},   {"button", 8},  {"checkbox", 9},  {"radio", 10},    {"combo", 11},    {"list", 12},
      {"tab", 13},     {"progress", 14}, {"grid", 15},   {"trackbar", 16}, {"treeview", 17}};
  return types;
}

class Parser {
 public:
  Parser(Script& s, const std::string& text, const std::string& file)
      : script_(s), file_(file), toks_(tokenize(text, file)) {}

  void run() {
    while (peek().kind != Tok::End) {
      std::string kw = word("a block keyword");
      if (kw == "menu") menu();
      else if (kw == "dialog") dialog();
      else if (kw == "toolbar") toolbar();
      else if (kw == "strings") strings();
      else if (kw == "font") font();
      else if (kw == "palette") palette();
      else if (kw == "pixmap") pixmap();
      else if (kw == "image") image();
      else fail_prev("unknown block '" + kw + "'");
    }
  }

 private:
  Script& script_;
  std::string file_;
  std::vector<Token> toks_;
  std::size_t pos_ = 0;
  std::map<char, Rgba> palette_;

  const Token& peek() const { return toks_[pos_]; }
  Where here() const { return {file_, peek().line}; }
  Where prev() const { return {file_, toks_[pos_ == 0 ? 0 : pos_ - 1].line}; }
  [[noreturn]] void fail(const std::string& m) const { throw ScriptError(here(), m); }
  [[noreturn]] void fail_prev(const std::string& m) const { throw ScriptError(prev(), m); }

  std::string describe(const Token& t) const {
    switch (t.kind) {
      case Tok::Text: return "text \"" + t.text + "\"";
      case Tok::End: return "end of file";
      default: return "'" + t.text + "'";
    }
  }
  std::string word(const char* what) {
    if (peek().kind != Tok::Word) fail(std::string("expected ") + what + ", found " + describe(peek()));
    return toks_[pos_++].text;
  }
  bool accept(const char* w) {
    if (peek().kind == Tok::Word && peek().text == w) { ++pos_; return true; }
    return false;
  }
  void open() {
    if (peek().kind != Tok::Open) fail("expected '{', found " + describe(peek()));
    ++pos_;
  }
  bool close() {
    if (peek().kind == Tok::Close) { ++pos_; return true; }
    if (peek().kind == Tok::End) fail("missing '}' before end of file");
    return false;
  }
  std::string text() {
    if (peek().kind != Tok::Text) fail("expected a quoted text, found " + describe(peek()));
    return toks_[pos_++].text;
  }
  long long integer(const char* what) {
    const Token& t = peek();
    if (t.kind != Tok::Number) fail(std::string("expected ") + what + ", found " + describe(t));
    std::string s = t.text;
    bool neg = false;
    std::size_t k = 0;
    if (s[0] == '-' || s[0] == '+') { neg = s[0] == '-'; k = 1; }
    int base = 10;
    if (s.size() > k + 2 && s[k] == '0' && (s[k + 1] == 'x' || s[k + 1] == 'X')) { base = 16; k += 2; }
    long long v = 0;
    auto [p, ec] = std::from_chars(s.data() + k, s.data() + s.size(), v, base);
    if (ec != std::errc() || p != s.data() + s.size()) fail(std::string("bad number for ") + what + ": " + s);
    ++pos_;
    return neg ? -v : v;
  }
  int int32(const char* what) {
    long long v = integer(what);
    if (v < INT32_MIN || v > INT32_MAX) fail_prev(std::string(what) + " out of range");
    return static_cast<int>(v);
  }
  std::uint32_t word32(const char* what) {
    long long v = integer(what);
    if (v < 0 || v > 0xffffffffLL) fail_prev(std::string(what) + " must fit in 32 bits");
    return static_cast<std::uint32_t>(v);
  }
  double real(const char* what) {
    const Token& t = peek();
    if (t.kind != Tok::Number) fail(std::string("expected ") + what + ", found " + describe(t));
    char* end = nullptr;
    double v = std::strtod(t.text.c_str(), &end);
    if (*end != '\0') fail(std::string("bad number for ") + what + ": " + t.text);
    ++pos_;
    return v;
  }
  int positive(const char* what) {
    int v = int32(what);
    if (v < 1) fail_prev(std::string(what) + " must be at least 1");
    return v;
  }
  int identifier(const char* what) {
    int v = int32(what);
    if (v == 0 || v == -999) fail_prev(std::string(what) + " may not be " + std::to_string(v));
    return v;
  }

  // The optional name after an identifier. With `keyword_follows`, a lone word
  // is the keyword itself and only a word followed by another is a name.
  std::string optional_name(bool keyword_follows) {
    const Token& t = peek();
    bool named = false;
    if (t.kind == Tok::Word) {
      named = !keyword_follows || toks_[pos_ + 1].kind == Tok::Word;
    } else if (t.kind == Tok::Number) {
      // "2nd_file" reads as a number; where a name may stand it is a bad name.
      for (char c : t.text)
        if (std::isalpha(static_cast<unsigned char>(c)) || c == '_') named = true;
    }
    if (!named) return {};
    if (!valid_name(t.text))
      fail("malformed name '" + t.text + "': a name is a C++ identifier, not a keyword");
    return toks_[pos_++].text;
  }

  // Strips the mnemonic mark: "&x" marks x, "&&" stands for one "&".
  void menu_text(MenuNode& n, const std::string& raw) {
    for (std::size_t i = 0; i < raw.size(); ++i) {
      if (raw[i] == '&') {
        if (i + 1 < raw.size() && raw[i + 1] == '&') {
          n.text += '&';
          ++i;
          continue;
        }
        if (i + 1 >= raw.size()) fail_prev("'&' at the end of a menu text marks nothing");
        if (n.mnemonic >= 0) fail_prev("menu text with two mnemonic marks");
        n.mnemonic = static_cast<int>(n.text.size());
        continue;
      }
      n.text += raw[i];
    }
  }

  void item_states(MenuNode& n) {
    for (;;) {
      if (accept("greyed")) n.flags |= 2;
      else if (accept("checked")) n.flags |= 4;
      else return;
    }
  }

  std::vector<MenuNode> menu_items() {
    std::vector<MenuNode> items;
    open();
    while (!close()) {
      MenuNode n;
      n.at = here();
      std::string kw = word("'item', 'popup' or 'separator'");
      if (kw == "separator") {
        n.flags = 1;
      } else if (kw == "item" || kw == "popup") {
        n.id = identifier("item identifier");
        n.name = optional_name(false);
        menu_text(n, text());
        item_states(n);
        if (kw == "popup") {
          n.flags |= 65536;
          n.children = menu_items();
          if (n.children.empty()) fail_prev("a popup needs at least one item");
        }
      } else {
        fail_prev("unknown menu entry '" + kw + "'");
      }
      items.push_back(std::move(n));
    }
    return items;
  }

  void menu() {
    Menu m;
    m.at = prev();
    m.id = identifier("menu identifier");
    m.name = optional_name(false);
    m.items = menu_items();
    if (m.items.empty()) fail_prev("a menu needs at least one item");
    script_.menus.push_back(std::move(m));
  }

  std::vector<std::string> text_list() {
    std::vector<std::string> v;
    open();
    while (!close()) v.push_back(text());
    return v;
  }

  void field_attributes(Field& f) {
    for (;;) {
      const Token& t = peek();
      if (t.kind != Tok::Word || t.text == "field") return;
      std::string kw = word("a field attribute");
      if (kw == "style") f.style = word32("style");
      else if (kw == "style2") f.style2 = word32("second style");
      else if (kw == "flags") f.extra = word32("third word");
      else if (kw == "text") f.text = text();
      else if (kw == "checked") f.checked = true;
      else if (kw == "length") f.length = positive("length");
      else if (kw == "range") {
        double lo = real("minimum");
        double hi = real("maximum");
        f.range = std::array<double, 2>{lo, hi};
      } else if (kw == "key") {
        std::string k = text();
        if (k.size() != 1) fail_prev("a key is one character");
        f.key = static_cast<unsigned char>(k[0]);
      } else if (kw == "colour") {
        std::array<int, 6> c{};
        for (int& v : c) {
          v = int32("colour value");
          if (v < 0 || v > 256) fail_prev("colour values are 0 to 255, or 256 for the default");
        }
        f.colour = c;
      } else if (kw == "font") {
        f.font = int32("font index");
        if (f.font < 0) fail_prev("font index must not be negative");
      } else if (kw == "options") {
        f.options = text_list();
      } else if (kw == "select") {
        // Counted from 1; 0 selects nothing.
        f.selected = int32("selected option") - 1;
        if (f.selected < -1) fail_prev("selected option must not be negative");
      } else if (kw == "grid") {
        GridDef g;
        g.columns = positive("columns");
        g.rows = positive("rows");
        g.template_dialog = int32("template dialog");
        g.label_width = int32("row label width");
        if (accept("labels")) g.labels = text_list();
        f.grid = std::move(g);
      } else {
        fail_prev("unknown field attribute '" + kw + "'");
      }
    }
  }

  void dialog() {
    Dialog d;
    d.at = prev();
    d.id = identifier("dialog identifier");
    d.name = optional_name(false);
    bool sized = false;
    open();
    for (;;) {
      if (close()) break;
      std::string kw = word("a dialog attribute or 'field'");
      if (kw == "size") {
        d.width = positive("width");
        d.height = positive("height");
        sized = true;
      } else if (kw == "style") d.style = word32("style");
      else if (kw == "layout") d.layout = word32("layout flags");
      else if (kw == "font") d.font = int32("font index");
      else if (kw == "anchor") d.anchor = int32("anchor field");
      else if (kw == "title") d.title = text();
      else if (kw == "field") {
        Field f;
        f.at = prev();
        f.id = int32("field identifier");
        f.name = optional_name(true);
        std::string type = word("a field type");
        auto it = field_types().find(type);
        if (it == field_types().end()) fail_prev("unknown field type '" + type + "'");
        f.type = it->second;
        f.x = int32("x");
        f.y = int32("y");
        f.w = int32("width");
        f.h = int32("height");
        field_attributes(f);
        d.fields.push_back(std::move(f));
      } else {
        fail_prev("unknown dialog attribute '" + kw + "'");
      }
    }
    if (!sized) throw ScriptError(d.at, "dialog " + std::to_string(d.id) + " has no size");
    script_.dialogs.push_back(std::move(d));
  }

  void toolbar() {
    Toolbar t;
    t.at = prev();
    t.id = identifier("toolbar identifier");
    t.name = optional_name(true);
    if (!accept("button")) fail("expected 'button' and the button size");
    t.button_w = positive("button width");
    t.button_h = positive("button height");
    open();
    while (!close()) {
      if (accept("separator")) t.ids.push_back(0);
      else t.ids.push_back(identifier("button identifier"));
    }
    if (t.ids.empty()) fail_prev("a toolbar needs at least one button");
    script_.toolbars.push_back(std::move(t));
  }

  void strings() {
    open();
    while (!close()) {
      StringEntry s;
      s.at = here();
      s.id = identifier("string identifier");
      s.text = text();
      if (s.text.find('\0') != std::string::npos) fail_prev("a string may not hold a NUL");
      script_.strings.push_back(std::move(s));
    }
  }

  void font() {
    FontEntry f;
    f.at = prev();
    f.index = positive("font index");
    if (!accept("family")) fail("expected 'family'");
    f.family = int32("family");
    if (!accept("size")) fail("expected 'size'");
    f.size = positive("size");
    script_.fonts.push_back(f);
  }

  static int hex_digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
  }

  // Entries: "c" rrggbb, or "c" transparent. Transparent pixels carry the
  // key colour 192, 192, 192 so that toolbar strips drop them too.
  void palette() {
    open();
    while (!close()) {
      std::string key = text();
      if (key.size() != 1) fail_prev("a palette key is one character");
      Rgba c;
      if (accept("transparent")) {
        c = {192, 192, 192, 255};
      } else {
        const Token& t = peek();
        std::string hex = t.kind == Tok::Number || t.kind == Tok::Word ? t.text : "";
        if (hex.size() != 6) fail("expected a colour rrggbb or 'transparent', found " + describe(t));
        int v[6];
        for (int k = 0; k < 6; ++k)
          if ((v[k] = hex_digit(hex[k])) < 0) fail("bad colour '" + hex + "'");
        ++pos_;
        c = {static_cast<std::uint8_t>(v[0] * 16 + v[1]), static_cast<std::uint8_t>(v[2] * 16 + v[3]),
             static_cast<std::uint8_t>(v[4] * 16 + v[5]), 0};
      }
      palette_[key[0]] = c;
    }
  }

  void pixmap() {
    Pixmap p;
    p.at = prev();
    std::string name = word("pixmap name");
    p.w = positive("width");
    p.h = positive("height");
    open();
    int rows = 0;
    while (!close()) {
      std::string row = text();
      if (static_cast<int>(row.size()) != p.w)
        fail_prev("pixmap '" + name + "' row " + std::to_string(rows + 1) + " has " + std::to_string(row.size()) +
                  " pixels, not " + std::to_string(p.w));
      for (char c : row) {
        auto it = palette_.find(c);
        if (it == palette_.end()) fail_prev(std::string("colour '") + c + "' is not in the palette");
        p.pixels.push_back(it->second);
      }
      ++rows;
    }
    if (rows != p.h)
      fail_prev("pixmap '" + name + "' has " + std::to_string(rows) + " rows, not " + std::to_string(p.h));
    if (!script_.pixmaps.emplace(name, std::move(p)).second) fail_prev("pixmap '" + name + "' defined twice");
  }

  // image ID TYPE W H [hotspot X Y] { name [x2] ... }: the named pixmaps side by
  // side, each optionally scaled up by a whole factor.
  void image() {
    Image im;
    im.at = prev();
    im.id = int32("image identifier");
    if (im.id == 0 || im.id == -999) fail_prev("image identifier may not be " + std::to_string(im.id));
    im.name = optional_name(true);
    std::string type = word("'bitmap', 'icon' or 'cursor'");
    if (type == "bitmap") im.type = 1;
    else if (type == "icon") im.type = 2;
    else if (type == "cursor") im.type = 3;
    else fail_prev("unknown image type '" + type + "'");
    im.w = positive("width");
    im.h = positive("height");
    if (accept("hotspot")) {
      im.hotx = int32("hot spot x");
      im.hoty = int32("hot spot y");
    }
    im.pixels.assign(static_cast<std::size_t>(im.w) * im.h, Rgba{192, 192, 192, 255});
    int x0 = 0;
    open();
    while (!close()) {
      Where at = here();
      std::string name = word("pixmap name");
      int scale = 1;
      if (peek().kind == Tok::Word && peek().text.size() == 2 && peek().text[0] == 'x' &&
          std::isdigit(static_cast<unsigned char>(peek().text[1]))) {
        scale = peek().text[1] - '0';
        ++pos_;
        if (scale < 1) fail_prev("scale must be at least 1");
      }
      auto it = script_.pixmaps.find(name);
      if (it == script_.pixmaps.end()) throw ScriptError(at, "unknown pixmap '" + name + "'");
      const Pixmap& p = it->second;
      if (p.h * scale != im.h)
        throw ScriptError(at, "pixmap '" + name + "' is " + std::to_string(p.h * scale) + " high, the image " +
                                  std::to_string(im.h));
      if (x0 + p.w * scale > im.w) throw ScriptError(at, "pixmaps are wider than the image");
      for (int y = 0; y < im.h; ++y)
        for (int x = 0; x < p.w * scale; ++x)
          im.pixels[static_cast<std::size_t>(y) * im.w + x0 + x] =
              p.pixels[static_cast<std::size_t>(y / scale) * p.w + x / scale];
      x0 += p.w * scale;
    }
    if (x0 != im.w)
      fail_prev("pixmaps fill " + std::to_string(x0) + " of the image's " + std::to_string(im.w) + " columns");
    script_.images.push_back(std::move(im));
  }
};

}  // namespace

void parse_script(Script& into, const std::string& text, const std::string& file_name) {
  Parser(into, text, file_name).run();
}

}  // namespace zelvrc

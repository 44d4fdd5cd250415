// Laying out the tables and writing them as C++.
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>
#include <sstream>

#include "tools/rc/rc.h"

namespace zelvrc {
namespace {

std::int32_t pos1(const std::string& pool) { return static_cast<std::int32_t>(pool.size()) + 1; }

// Appends a text to a NUL-terminated pool and returns its position. An empty
// text takes no room, so that its position equals the next one.
std::int32_t pool_add(std::string& pool, const std::string& text) {
  std::int32_t p = pos1(pool);
  if (!text.empty()) {
    pool += text;
    pool += '\0';
  }
  return p;
}

void check_text(const Where& at, const std::string& text) {
  if (text.find('\0') != std::string::npos) throw ScriptError(at, "a text may not hold a NUL");
}

// One menu's items in pre-order; next and child indices are within the menu.
void flatten_menu(const std::vector<MenuNode>& level, Tables& t, std::int32_t menu_first) {
  std::vector<std::size_t> slots;
  for (const MenuNode& n : level) {
    check_text(n.at, n.text);
    std::size_t slot = t.items.size();
    slots.push_back(slot);
    t.items.insert(t.items.end(), {n.id, n.flags, -1, -1, pool_add(t.menu_text, n.text), n.mnemonic});
    if (!n.children.empty()) {
      t.items[slot + 3] = static_cast<std::int32_t>(t.items.size() / 6) - menu_first;
      flatten_menu(n.children, t, menu_first);
    }
  }
  for (std::size_t k = 0; k + 1 < slots.size(); ++k)
    t.items[slots[k] + 2] = static_cast<std::int32_t>(slots[k + 1] / 6) - menu_first;
}

template <class T>
void unique_ids(const std::vector<T>& v, const char* kind) {
  std::map<int, const T*> seen;
  for (const T& e : v) {
    auto [it, fresh] = seen.emplace(e.id, &e);
    if (!fresh)
      throw ScriptError(e.at, std::string(kind) + " " + std::to_string(e.id) + " already defined at " +
                                  it->second->at.file + ":" + std::to_string(it->second->at.line));
  }
}

std::int32_t entry(const std::vector<std::int32_t>& table, int words) {
  return static_cast<std::int32_t>(table.size()) / words + 1;
}

void compress_image(const Image& im, Tables& t) {
  std::vector<unsigned char> raw;
  raw.reserve(im.pixels.size() * 4);
  for (const Rgba& p : im.pixels) raw.insert(raw.end(), {p.r, p.g, p.b, p.t});
  uLongf len = compressBound(static_cast<uLong>(raw.size()));
  std::vector<unsigned char> z(len);
  if (compress2(z.data(), &len, raw.data(), static_cast<uLong>(raw.size()), Z_BEST_COMPRESSION) != Z_OK)
    throw ScriptError(im.at, "image could not be compressed");
  z.resize(len);
  std::int32_t first = static_cast<std::int32_t>(t.ipixel.size()) + 1;
  // Bytes go into the words in little-endian order, so that the words read as
  // bytes give the stream back on the hosts we build for.
  for (std::size_t k = 0; k < z.size(); k += 4) {
    std::uint32_t w = 0;
    for (std::size_t b = 0; b < 4 && k + b < z.size(); ++b) w |= static_cast<std::uint32_t>(z[k + b]) << (8 * b);
    t.ipixel.push_back(static_cast<std::int32_t>(w));
  }
  t.images.insert(t.images.end(),
                  {im.id, im.type, im.w, im.h, im.hotx, im.hoty, first, static_cast<std::int32_t>(z.size())});
}

void build_dialog(const Dialog& d, const Script& s, Tables& t) {
  check_text(d.at, d.title);
  std::set<int> ids;
  for (const Field& f : d.fields) {
    if (!ids.insert(f.id).second)
      throw ScriptError(f.at, "field " + std::to_string(f.id) + " twice in dialog " + std::to_string(d.id));
  }
  if (d.anchor != 0 && !ids.count(d.anchor))
    throw ScriptError(d.at, "anchor field " + std::to_string(d.anchor) + " is not in the dialog");
  int fonts = static_cast<int>(s.fonts.size());
  if (d.font < 0 || d.font > fonts) throw ScriptError(d.at, "font index " + std::to_string(d.font) + " not defined");

  t.dialog.insert(t.dialog.end(),
                  {d.id, entry(t.field, 10), d.width, d.height, static_cast<std::int32_t>(d.style),
                   static_cast<std::int32_t>(d.layout), d.font, d.anchor, pool_add(t.titles, d.title),
                   entry(t.icheck, 1), entry(t.length, 2), static_cast<std::int32_t>(t.range.size()) + 1,
                   entry(t.key, 2), entry(t.colour, 7), 1, entry(t.menu, 3), 1, 1, entry(t.grid, 6), 1, 1,
                   entry(t.font, 2)});
  for (const Field& f : d.fields) {
    check_text(f.at, f.text);
    t.field.insert(t.field.end(), {f.id, f.type, f.x, f.y, f.w, f.h, static_cast<std::int32_t>(f.style),
                                   static_cast<std::int32_t>(f.style2), static_cast<std::int32_t>(f.extra),
                                   pool_add(t.content, f.text)});
    if (f.checked) {
      if (f.type != 9 && f.type != 10) throw ScriptError(f.at, "only check boxes and radio buttons start checked");
      t.icheck.push_back(f.id);
    }
    if (f.length > 0) t.length.insert(t.length.end(), {f.id, f.length});
    if (f.range) t.range.push_back({f.id, (*f.range)[0], (*f.range)[1]});
    if (f.key) t.key.insert(t.key.end(), {f.id, f.key});
    if (f.colour) {
      t.colour.push_back(f.id);
      t.colour.insert(t.colour.end(), f.colour->begin(), f.colour->end());
    }
    if (f.options || f.selected >= 0) {
      if (f.type != 11 && f.type != 12) throw ScriptError(f.at, "only combo and list fields have options");
      std::size_t n = f.options ? f.options->size() : 0;
      if (f.selected >= static_cast<int>(n))
        throw ScriptError(f.at, "selected option " + std::to_string(f.selected + 1) + " of " + std::to_string(n));
      t.menu.insert(t.menu.end(), {f.id, f.selected, static_cast<std::int32_t>(t.ioptpos.size()) + 1});
      if (f.options)
        for (const std::string& o : *f.options) {
          check_text(f.at, o);
          t.ioptpos.push_back(pool_add(t.field_options, o));
        }
    }
    if (f.grid) {
      if (f.type != 15) throw ScriptError(f.at, "grid attribute on a field that isn't a grid");
      const GridDef& g = *f.grid;
      if (static_cast<int>(g.labels.size()) > g.rows)
        throw ScriptError(f.at, "more row labels than rows");
      if (g.template_dialog != 0) {
        auto tpl = std::find_if(s.dialogs.begin(), s.dialogs.end(),
                                [&](const Dialog& x) { return x.id == g.template_dialog; });
        if (tpl == s.dialogs.end())
          throw ScriptError(f.at, "cell template dialog " + std::to_string(g.template_dialog) + " not defined");
        if (static_cast<int>(tpl->fields.size()) != g.columns)
          throw ScriptError(f.at, "the cell template has " + std::to_string(tpl->fields.size()) +
                                      " fields for " + std::to_string(g.columns) + " columns");
      }
      t.grid.insert(t.grid.end(), {f.id, g.columns, g.rows, g.template_dialog, g.label_width,
                                   static_cast<std::int32_t>(t.ilabpos.size()) + 1});
      for (int r = 0; r < g.rows; ++r) {
        const std::string none;
        const std::string& l = r < static_cast<int>(g.labels.size()) ? g.labels[r] : none;
        check_text(f.at, l);
        t.ilabpos.push_back(pool_add(t.labels, l));
      }
    } else if (f.type == 15) {
      throw ScriptError(f.at, "a grid field needs its 'grid' attribute");
    }
    if (f.font >= 0) {
      if (f.font > fonts) throw ScriptError(f.at, "font index " + std::to_string(f.font) + " not defined");
      t.font.insert(t.font.end(), {f.id, f.font});
    }
  }
}

}  // namespace

Tables build_tables(const Script& s) {
  Tables t;
  unique_ids(s.menus, "menu");
  unique_ids(s.dialogs, "dialog");
  unique_ids(s.toolbars, "toolbar");
  unique_ids(s.strings, "string");
  check_names(s);

  for (const Menu& m : s.menus) {
    std::int32_t first = static_cast<std::int32_t>(t.items.size() / 6);
    t.menus.insert(t.menus.end(), {m.id, first + 1});
    flatten_menu(m.items, t, first);
  }
  t.menus.insert(t.menus.end(), {-999, static_cast<std::int32_t>(t.items.size() / 6) + 1});
  t.items.insert(t.items.end(), {0, 0, -1, -1, pos1(t.menu_text), -1});
  t.n_menus = static_cast<int>(s.menus.size());

  for (const Dialog& d : s.dialogs) build_dialog(d, s, t);
  t.dialog.insert(t.dialog.end(),
                  {-999, entry(t.field, 10), 0, 0, 0, 0, 0, 0, pos1(t.titles), entry(t.icheck, 1),
                   entry(t.length, 2), static_cast<std::int32_t>(t.range.size()) + 1, entry(t.key, 2),
                   entry(t.colour, 7), 1, entry(t.menu, 3), 1, 1, entry(t.grid, 6), 1, 1, entry(t.font, 2)});
  t.field.insert(t.field.end(), {0, 0, 0, 0, 0, 0, 0, 0, 0, pos1(t.content)});
  t.icheck.push_back(0);
  t.length.insert(t.length.end(), {0, 0});
  t.range.push_back({0, 1.0, -1.0});
  t.key.insert(t.key.end(), {0, 0});
  t.colour.insert(t.colour.end(), {0, 256, 256, 256, 256, 256, 256});
  t.menu.insert(t.menu.end(), {0, -1, static_cast<std::int32_t>(t.ioptpos.size()) + 1});
  t.ioptpos.push_back(pos1(t.field_options));
  t.grid.insert(t.grid.end(), {0, -1, -1, -1, -1, static_cast<std::int32_t>(t.ilabpos.size()) + 1});
  t.ilabpos.push_back(pos1(t.labels));
  t.font.insert(t.font.end(), {0, 0});
  t.n_dialogs = static_cast<int>(s.dialogs.size());

  // Fonts are numbered 1..n without gaps.
  std::map<int, const FontEntry*> fonts;
  for (const FontEntry& f : s.fonts)
    if (!fonts.emplace(f.index, &f).second)
      throw ScriptError(f.at, "font " + std::to_string(f.index) + " defined twice");
  int expect = 1;
  for (auto& [index, f] : fonts) {
    if (index != expect) throw ScriptError(f->at, "font indices must run from 1 without gaps");
    t.xfont.insert(t.xfont.end(), {f->family, f->size});
    ++expect;
  }
  t.n_fonts = static_cast<int>(fonts.size());

  std::set<std::pair<int, int>> image_keys;
  for (const Image& im : s.images) {
    if (!image_keys.emplace(im.id, im.type).second)
      throw ScriptError(im.at, "image " + std::to_string(im.id) + " of this type already defined");
    compress_image(im, t);
  }
  t.images.insert(t.images.end(), {-999, 0, 0, 0, -1, -1, static_cast<std::int32_t>(t.ipixel.size()) + 1, 0});
  t.n_images = static_cast<int>(s.images.size());

  for (const Toolbar& tb : s.toolbars) {
    auto strip = std::find_if(s.images.begin(), s.images.end(),
                              [&](const Image& im) { return im.id == tb.id && im.type == 1; });
    if (strip != s.images.end()) {
      int buttons = static_cast<int>(std::count_if(tb.ids.begin(), tb.ids.end(), [](int id) { return id != 0; }));
      if (strip->w != buttons * tb.button_w || strip->h != tb.button_h)
        throw ScriptError(tb.at, "strip image is " + std::to_string(strip->w) + " by " + std::to_string(strip->h) +
                                     " for " + std::to_string(buttons) + " buttons of " +
                                     std::to_string(tb.button_w) + " by " + std::to_string(tb.button_h));
    }
    t.toolbars.insert(t.toolbars.end(),
                      {tb.id, static_cast<std::int32_t>(t.ibutton.size()) + 1, tb.button_w, tb.button_h});
    t.ibutton.insert(t.ibutton.end(), tb.ids.begin(), tb.ids.end());
  }
  t.toolbars.insert(t.toolbars.end(), {-999, static_cast<std::int32_t>(t.ibutton.size()) + 1, 0, 0});
  t.n_toolbars = static_cast<int>(s.toolbars.size());

  for (const StringEntry& e : s.strings) {
    t.slist.insert(t.slist.end(), {e.id, pos1(t.cstring)});
    t.cstring += e.text;
  }
  t.slist.insert(t.slist.end(), {-1, pos1(t.cstring)});
  t.n_strings = static_cast<int>(s.strings.size());
  return t;
}

namespace {

void emit_words(std::ostringstream& o, const char* name, const std::vector<std::int32_t>& v, int per_line) {
  o << "const std::int32_t " << name << "[] = {";
  for (std::size_t k = 0; k < v.size(); ++k) {
    o << (k % per_line == 0 ? "\n    " : " ") << v[k] << ',';
  }
  o << "\n};\n";
}

void emit_pool(std::ostringstream& o, const char* name, const std::string& pool) {
  o << "const char " << name << "[] =";
  if (pool.empty()) o << " \"\"";
  for (std::size_t k = 0; k < pool.size(); k += 48) {
    o << "\n    \"";
    for (std::size_t j = k; j < std::min(pool.size(), k + 48); ++j) {
      unsigned char c = static_cast<unsigned char>(pool[j]);
      if (c >= 0x20 && c < 0x7f && c != '"' && c != '\\' && c != '?') {
        o << c;
      } else {
        char buf[8];
        std::snprintf(buf, sizeof buf, "\\%03o", c);
        o << buf;
      }
    }
    o << '"';
  }
  o << ";\n";
}

}  // namespace

std::string emit_source(const Tables& t, const std::vector<std::string>& inputs, const std::string& accessor) {
  std::ostringstream o;
  o << "// Generated by zelvrc from";
  for (const std::string& in : inputs) o << ' ' << in;
  o << ". Edit the scripts, not this file.\n"
       "#include <cstdint>\n\n"
       "#include \"toolkit/kernel/resource_tables.h\"\n\n"
       "namespace {\n\n"
       "using zelv_rc::RangeEntry;\n\n";
  emit_words(o, "MENUS", t.menus, 2);
  emit_words(o, "ITEMS", t.items, 6);
  emit_pool(o, "MENU_COPTIONS", t.menu_text);
  emit_words(o, "DIALOG", t.dialog, 22);
  emit_words(o, "FIELD", t.field, 10);
  emit_pool(o, "CONTENT", t.content);
  emit_pool(o, "CTITLES", t.titles);
  emit_words(o, "ICHECK", t.icheck, 10);
  emit_words(o, "LENGTH", t.length, 2);
  o << "const RangeEntry RANGE[] = {\n";
  for (const RangeEntry& r : t.range) {
    char buf[128];
    std::snprintf(buf, sizeof buf, "    {%d, %.17g, %.17g},\n", r.field, r.minimum, r.maximum);
    o << buf;
  }
  o << "};\n";
  emit_words(o, "KEY", t.key, 2);
  emit_words(o, "COLOUR", t.colour, 7);
  emit_words(o, "MENU", t.menu, 3);
  emit_words(o, "IOPTPOS", t.ioptpos, 10);
  emit_pool(o, "FIELD_COPTIONS", t.field_options);
  emit_words(o, "GRID", t.grid, 6);
  emit_words(o, "ILABPOS", t.ilabpos, 10);
  emit_pool(o, "CLABELS", t.labels);
  emit_words(o, "FONT", t.font, 2);
  std::vector<std::int32_t> xfont = t.xfont;
  if (xfont.empty()) xfont = {0, 0};  // an array may not be empty
  emit_words(o, "XFONT", xfont, 2);
  emit_words(o, "IMAGES", t.images, 8);
  std::vector<std::int32_t> ipixel = t.ipixel;
  if (ipixel.empty()) ipixel = {0};
  emit_words(o, "IPIXEL", ipixel, 8);
  emit_words(o, "TOOLBARS", t.toolbars, 4);
  std::vector<std::int32_t> ibutton = t.ibutton;
  if (ibutton.empty()) ibutton = {0};
  emit_words(o, "IBUTTON", ibutton, 12);
  emit_words(o, "SLIST", t.slist, 2);
  emit_pool(o, "CSTRING", t.cstring);
  o << "\n}  // namespace\n\n"
    << "const zelv_rc::ResourceTables& " << accessor << "() {\n"
    << "  static const zelv_rc::ResourceTables tables{\n"
    << "      " << t.n_menus << ", " << t.n_dialogs << ", " << t.n_images << ", " << t.n_toolbars << ", "
    << t.n_strings << ", " << t.n_fonts << ",\n"
    << "      MENUS, ITEMS, MENU_COPTIONS, DIALOG, FIELD, CONTENT, CTITLES, ICHECK, LENGTH, RANGE, KEY,\n"
    << "      COLOUR, MENU, IOPTPOS, FIELD_COPTIONS, GRID, ILABPOS, CLABELS, FONT, XFONT, IMAGES, IPIXEL,\n"
    << "      TOOLBARS, IBUTTON, SLIST, CSTRING};\n"
    << "  return tables;\n"
    << "}\n";
  return o.str();
}

}  // namespace zelvrc

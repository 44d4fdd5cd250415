// zelvrc: the resource compiler. Reads resource scripts (menus, dialogs,
// toolbars, strings, fonts, pixel-map images) and writes the constant tables
// that the yyrc* routines read.
#pragma once

#include "toolkit/kernel/resource_tables.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace zelvrc {

// Where a construct was written, for messages.
struct Where {
  std::string file;
  int line = 0;
};

// A malformed script or inconsistent tables; what() holds "file:line: message".
class ScriptError : public std::runtime_error {
 public:
  ScriptError(const Where& at, const std::string& message)
      : std::runtime_error(at.file + ":" + std::to_string(at.line) + ": error: " + message) {}
};

struct MenuNode {
  Where at;
  int id = 0;
  std::string name;              // empty: no named identifier
  std::int32_t flags = 0;        // 1 separator, 65536 opens a sub-menu, plus state bits
  std::string text;              // without the mnemonic mark
  int mnemonic = -1;             // offset of the mnemonic letter in text
  std::vector<MenuNode> children;
};

struct Menu {
  Where at;
  int id = 0;
  std::string name;
  std::vector<MenuNode> items;
};

struct GridDef {
  int columns = 0, rows = 0, template_dialog = 0, label_width = 0;
  std::vector<std::string> labels;  // missing rows have no label
};

struct Field {
  Where at;
  std::string name;
  int id = 0, type = 0, x = 0, y = 0, w = 0, h = 0;
  std::uint32_t style = 0, style2 = 0, extra = 0;
  std::string text;
  bool checked = false;
  int length = 0;
  std::optional<std::array<double, 2>> range;
  int key = 0;
  std::optional<std::array<int, 6>> colour;
  int font = -1;  // -1: no entry, the dialog's default applies
  std::optional<std::vector<std::string>> options;
  int selected = -1;  // from 0, -1 none
  std::optional<GridDef> grid;
};

struct Dialog {
  Where at;
  std::string name;  // also the namespace of its fields' names
  int id = 0, width = 0, height = 0;
  std::uint32_t style = 0, layout = 0;
  int font = 0, anchor = 0;
  std::string title;
  std::vector<Field> fields;
};

struct Rgba {
  std::uint8_t r = 0, g = 0, b = 0, t = 0;  // t: 0 opaque, 255 transparent
};

struct Pixmap {
  Where at;
  int w = 0, h = 0;
  std::vector<Rgba> pixels;  // row by row
};

struct Image {
  Where at;
  std::string name;
  int id = 0, type = 0, w = 0, h = 0, hotx = -1, hoty = -1;
  std::vector<Rgba> pixels;
};

struct Toolbar {
  Where at;
  std::string name;
  int id = 0, button_w = 0, button_h = 0;
  std::vector<int> ids;  // 0 for a separator
};

struct StringEntry {
  Where at;
  int id = 0;
  std::string text;
};

struct FontEntry {
  Where at;
  int index = 0, family = 0, size = 0;
};

// Everything read from all scripts of one compilation.
struct Script {
  std::vector<Menu> menus;
  std::vector<Dialog> dialogs;
  std::vector<Image> images;
  std::vector<Toolbar> toolbars;
  std::vector<StringEntry> strings;
  std::vector<FontEntry> fonts;
  std::map<std::string, Pixmap> pixmaps;
};

// Reads one script into `into`. Throws ScriptError.
void parse_script(Script& into, const std::string& text, const std::string& file_name);

using zelv_rc::RangeEntry;  // one layout for the compiler and the walker

// The constant tables, exactly as they are emitted. Positions are 1-based;
// every table ends with its closing record.
struct Tables {
  std::vector<std::int32_t> menus, items;  // MENUS pairs, ITEMS 6 words
  std::string menu_text;                  // menu COPTIONS
  std::vector<std::int32_t> dialog, field;  // 22 and 10 words
  std::string content, titles;
  std::vector<std::int32_t> icheck, length, key, colour, menu, ioptpos, grid, ilabpos, font;
  std::vector<RangeEntry> range;
  std::string field_options, labels;
  std::vector<std::int32_t> xfont;  // pairs from font index 1
  std::vector<std::int32_t> images, ipixel;
  std::vector<std::int32_t> toolbars, ibutton;  // toolbars: id, first, button w, h
  std::vector<std::int32_t> slist;
  std::string cstring;
  int n_menus = 0, n_dialogs = 0, n_images = 0, n_toolbars = 0, n_strings = 0, n_fonts = 0;
};

// Checks the script as a whole and lays out the tables. Throws ScriptError.
Tables build_tables(const Script& script);

// Whether `name` may stand in the generated header: a C++ identifier that is
// neither a keyword nor reserved to the implementation.
bool valid_name(const std::string& name);

// Checks that no name is used twice in one scope of the header: dialogs, each
// dialog's fields, menus with their items, toolbars, images. Throws ScriptError.
void check_names(const Script& script);

// The C++ header of named identifiers, inside namespace `scope`:
//   dialog::NAME, then one namespace per named dialog with its fields' names,
//   menu::NAME for menus and menu items alike, toolbar::NAME, image::NAME.
std::string emit_ids(const Script& script, const std::vector<std::string>& inputs, const std::string& scope);

// The C++ source that defines the tables, reached through a routine named
// `accessor` that returns them as a zelv_rc::ResourceTables.
std::string emit_source(const Tables& tables, const std::vector<std::string>& inputs,
                        const std::string& accessor = "resource_tables");

}  // namespace zelvrc

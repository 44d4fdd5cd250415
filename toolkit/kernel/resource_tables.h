// The layout of the constant resource tables: what the resource compiler
// emits and what the yyrc* routines walk. The application hands its tables to
// the toolkit with yyrcinstall; the toolkit never knows how many there are.
//
// Counts and positions are 1-based; every table is followed by a closing
// record, so the end of entry n is the start of entry n + 1. Text pools hold
// NUL-terminated texts back to back (CSTRING without NULs); an entry without
// text takes no room, its position equals the next one.
#pragma once

#include <cstdint>

namespace zelv_rc {

struct RangeEntry {
  std::int32_t field;
  double minimum, maximum;
};

struct ResourceTables {
  int N_MENUS, N_DIALOGS, N_IMAGES, N_TOOLBARS, N_STRINGS, N_FONTS;

  // Menus. MENUS: pairs (menu id, first item), closed by id -999.
  // ITEMS: id, flags, next sibling, first child (both from 0 within the menu,
  // -1 none), text position in MENU_COPTIONS, mnemonic offset.
  const std::int32_t* MENUS;
  const std::int32_t* ITEMS;
  const char* MENU_COPTIONS;

  // Dialogs. DIALOG: 22 words per dialog, closed by id -999. FIELD: 10 words
  // per field, closed by one record whose text position ends CONTENT.
  const std::int32_t* DIALOG;
  const std::int32_t* FIELD;
  const char* CONTENT;
  const char* CTITLES;

  // Per-field tables, sliced per dialog by DIALOG words 9 to 21.
  const std::int32_t* ICHECK;  // field
  const std::int32_t* LENGTH;  // field, length
  const RangeEntry* RANGE;
  const std::int32_t* KEY;     // field, character code
  const std::int32_t* COLOUR;  // field, fg r g b, bg r g b
  const std::int32_t* MENU;    // field, selected from 0, first in IOPTPOS
  const std::int32_t* IOPTPOS;
  const char* FIELD_COPTIONS;
  const std::int32_t* GRID;    // field, columns, rows, template, label width, first in ILABPOS
  const std::int32_t* ILABPOS;
  const char* CLABELS;
  const std::int32_t* FONT;    // field, font index

  // Fonts: pairs (family, size) for font indices 1..N_FONTS.
  const std::int32_t* XFONT;

  // Images: id, type, width, height, hot x, hot y, position in IPIXEL, bytes.
  // IPIXEL holds the zlib streams, four bytes to a word, low byte first.
  const std::int32_t* IMAGES;
  const std::int32_t* IPIXEL;

  // Toolbars: id, first entry in IBUTTON, button width, button height; closed
  // by id -999. IBUTTON: item identifiers, 0 for a separator.
  const std::int32_t* TOOLBARS;
  const std::int32_t* IBUTTON;

  // Strings: SLIST pairs (id, position in CSTRING), closed by id -1.
  const std::int32_t* SLIST;
  const char* CSTRING;
};

}  // namespace zelv_rc

// The constant resource tables, defined by the source that zelvrc generates
// from the resource scripts. Only the yyrc* routines read them.
//
// Counts and positions are 1-based; every table is followed by a closing
// record, so the end of entry n is the start of entry n + 1. Text pools hold
// NUL-terminated texts back to back (CSTRING without NULs); an entry without
// text takes no room, its position equals the next one.
#pragma once

#include <cstdint>

namespace zelvres {

struct RangeEntry {
  std::int32_t field;
  double minimum, maximum;
};

extern const int N_MENUS, N_DIALOGS, N_IMAGES, N_TOOLBARS, N_STRINGS, N_FONTS;

// Menus. MENUS: pairs (menu id, first item), closed by id -999.
// ITEMS: id, flags, next sibling, first child (both from 0 within the menu,
// -1 none), text position in MENU_COPTIONS, mnemonic offset.
extern const std::int32_t MENUS[], ITEMS[];
extern const char MENU_COPTIONS[];

// Dialogs. DIALOG: 22 words per dialog, closed by id -999. FIELD: 10 words
// per field, closed by one record whose text position ends CONTENT.
extern const std::int32_t DIALOG[], FIELD[];
extern const char CONTENT[], CTITLES[];

// Per-field tables, sliced per dialog by DIALOG words 9 to 21.
extern const std::int32_t ICHECK[];  // field
extern const std::int32_t LENGTH[];  // field, length
extern const RangeEntry RANGE[];
extern const std::int32_t KEY[];     // field, character code
extern const std::int32_t COLOUR[];  // field, fg r g b, bg r g b
extern const std::int32_t MENU[];    // field, selected from 0, first in IOPTPOS
extern const std::int32_t IOPTPOS[];
extern const char FIELD_COPTIONS[];
extern const std::int32_t GRID[];    // field, columns, rows, template, label width, first in ILABPOS
extern const std::int32_t ILABPOS[];
extern const char CLABELS[];
extern const std::int32_t FONT[];    // field, font index

// Fonts: pairs (family, size) for font indices 1..N_FONTS.
extern const std::int32_t XFONT[];

// Images: id, type, width, height, hot x, hot y, position in IPIXEL, bytes.
// IPIXEL holds the zlib streams, four bytes to a word, low byte first.
extern const std::int32_t IMAGES[], IPIXEL[];

// Toolbars: id, first entry in IBUTTON, button width, button height; closed
// by id -999. IBUTTON: item identifiers, 0 for a separator.
extern const std::int32_t TOOLBARS[], IBUTTON[];

// Strings: SLIST pairs (id, position in CSTRING), closed by id -1.
extern const std::int32_t SLIST[];
extern const char CSTRING[];

}  // namespace zelvres

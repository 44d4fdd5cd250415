// yyrc*: the only way into the compiled-in resource tables.
//
// Check first, load after: a check routine answers how large a resource is,
// the caller allocates, and the load routine fills what the caller allocated.
// Arrays are filled as far as the caller's span reaches. An identifier that
// isn't in the tables is an ordinary answer (-1 in the size results); turning
// that into an error (1002 menu or toolbar, 1007 dialog, 1015 image) is the
// caller's business, and the *get helpers at the end do it as a status.
//
// Text offsets are counted from 0 from the start of the part of the pool the
// load routine hands out, and are -1 for an entry without text; every text in
// such a part ends in a NUL. Text results in std::string follow the
// convention of toolkit/base/fixed_text.h: blank-padded to the size the string
// has on entry, or unbounded when it arrives empty.
//
// The tables are read-only; the routines keep only which tables are installed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "toolkit/kernel/resource_tables.h"

// Hands the application's tables to the toolkit; until then every resource is
// absent. The tables must outlive every toolkit call.
void yyrcinstall(const zelv_rc::ResourceTables& tables);

// Menus: item count and bytes of the menu's texts; -1, -1 when absent.
void yyrcmenucheck(int menu_id, int& item_count, int& text_bytes);
// Items in menu order: identifier (0 separator), flags (1 separator, 65536
// opens a sub-menu), next sibling and first child (from 0 within the menu, -1
// none), text offset, mnemonic offset in the text (-1 none); and the texts.
void yyrcmenuload(int menu_id, std::span<int> ids, std::span<int> flags, std::span<int> next,
                  std::span<int> child, std::span<int> text_pos, std::span<int> mnemonic, std::span<char> text);

// Accelerator tables: this system has none, the count is always -1.
void yyrcaccelcheck(int table_id, int& count);
void yyrcaccelload(int table_id, std::span<int> ids, std::span<int> keysyms, std::span<int> modifiers);

// Status bar prompts of a menu: none here, always -1, -1.
void yyrchelpcheck(int menu_id, int& count, int& text_bytes);
void yyrchelpload(int menu_id, std::span<int> ids, std::span<int> text_pos, std::span<char> text);

// Fonts: indices 1..count; index 0 is the default font and has no entry.
void yyrcfontcount(int& count);
// Family and size of a font index; -1, -1 for an index without entry.
void yyrcfontlist(int font_index, int& family, int& size);

// Dialogs: field count and title length; -1, -1 when absent.
void yyrcdialogcheck_(int dialog_id, int& field_count, int& title_length);
void yyrcdialogcheck(int dialog_id, int& field_count, int& title_length);
// Size in dialog units, style, layout flags, anchor field (0 not resizable),
// font index, bytes of the dialog's field texts, and the title.
void yyrcdialogload(int dialog_id, int& width, int& height, std::uint32_t& style, std::uint32_t& layout,
                    int& anchor_field, int& font_index, int& text_bytes, std::string& title);
// The field records in resource order and the dialog's field texts; a field
// without text has offset -1.
void yyrcfieldload_(int dialog_id, std::span<int> ids, std::span<int> types, std::span<int> x, std::span<int> y,
                   std::span<int> width, std::span<int> height, std::span<std::uint32_t> style,
                   std::span<std::uint32_t> style2, std::span<std::uint32_t> extra, std::span<int> text_pos,
                   std::span<char> text);

// Per-field lookups; a field without entry gets the stated default.
void yyrcfieldcheckbox(int dialog_id, int field_id, int& checked);       // 1 starts checked, else 0
void yyrcfieldlength(int dialog_id, int field_id, int& length);          // 0 none
void yyrcfieldrange(int dialog_id, int field_id, double& minimum, double& maximum);  // 1.0, -1.0 none
void yyrcfieldshortcut(int dialog_id, int field_id, int& character);     // 0 none
// Foreground red, green, blue, then background; 256 is the default.
void yyrcfieldcolour(int dialog_id, int field_id, std::array<int, 6>& colours);
void yyrcfieldtrackbar(int dialog_id, int field_id, std::array<int, 6>& values);  // all 0: none here
// Options of a combo or list: count and bytes; -1, 0 when none.
void yyrcfieldmenucheck(int dialog_id, int field_id, int& option_count, int& text_bytes);
// Selected option from 0 (-1 none), offsets and texts of the options.
void yyrcfieldmenuload(int dialog_id, int field_id, int& selected, std::span<int> text_pos, std::span<char> text);
void yyrcfieldprogressbar(int dialog_id, int field_id, int& position, int& minimum, int& maximum);  // 0, 0, 0
// Tab pages: none here, -1, 0.
void yyrcfieldtabcheck(int dialog_id, int field_id, int& page_count, int& text_bytes);
void yyrcfieldtabload(int dialog_id, int field_id, int& selected, std::span<int> page_ids, std::span<int> text_pos,
                      std::span<char> text);
// Grid: columns, rows, cell template dialog, row label width, label bytes;
// -1, -1, -1, -1, 0 when none.
void yyrcfieldgridcheck(int dialog_id, int field_id, int& columns, int& rows, int& template_dialog,
                        int& label_width, int& label_bytes);
// One label offset per row (-1 for a blank label) and the labels.
void yyrcfieldgridload(int dialog_id, int field_id, std::span<int> text_pos, std::span<char> text);
void yyrcfieldtreeview(int dialog_id, int field_id, int& menu_id, int& selected);  // -1, -1: none here
void yyrcfieldformatcheck(int dialog_id, int field_id, int& length);             // 0: none here
void yyrcfieldformatload(int dialog_id, int field_id, std::string& format);
// The field's font index; the dialog's default when the field has no entry.
void yyrcfieldfont_(int dialog_id, int field_id, int& font_index);
void yyrcfieldfont(int dialog_id, int field_id, int& font_index);

// Images: identifier and type must both match; -1 in all results when not.
void yyrcimagecheck(int image_id, int type, int& width, int& height, int& hot_x, int& hot_y, int& data_bytes);
// The zlib stream: width * height * 4 bytes of red, green, blue and
// transparency (0 opaque, 255 transparent) once inflated; null when absent.
void yyrcimageload(int image_id, int type, const std::uint8_t*& data);

// Toolbars: button count (separators included) and the size of one button's
// image; -1, -1, -1 when absent.
void yyrctoolbarcheck(int toolbar_id, int& button_count, int& button_width, int& button_height);
void yyrctoolbarload(int toolbar_id, std::span<int> ids);  // 0 for a separator

// Strings: length plus one, -1 when absent; the text, with a NUL behind it
// when the caller's width leaves room for one.
void yyrcstringcheck(int string_id, int& length_plus_one);
void yyrcstringload(int string_id, std::string& text);

// Whole resources in one step, for callers that don't allocate by hand.
// Status 0, or the error code for the missing kind.
struct RcMenu {
  std::vector<int> ids, flags, next, child, text_pos, mnemonic;
  std::vector<char> text;
  std::string item_text(std::size_t item) const;  // empty for an item without text
};
void yyrcmenuget(int menu_id, RcMenu& menu, int& status);  // 1002

struct RcField {
  int id = 0, type = 0, x = 0, y = 0, width = 0, height = 0;
  std::uint32_t style = 0, style2 = 0, extra = 0;
  std::string text;
};
struct RcDialog {
  int width = 0, height = 0, anchor_field = 0, font_index = 0;
  std::uint32_t style = 0, layout = 0;
  std::string title;
  std::vector<RcField> fields;
};
void yyrcdialogget(int dialog_id, RcDialog& dialog, int& status);  // 1007

// The inflated pixels, four bytes each as above; 1015 when the image is
// absent or its data doesn't inflate to its size.
void yyrcimagepixels(int image_id, int type, int& width, int& height, std::vector<std::uint8_t>& rgba,
                     int& status);

// Identifiers and button size of a toolbar; 1002 when absent.
void yyrctoolbarget(int toolbar_id, std::vector<int>& ids, int& button_width, int& button_height, int& status);

// Options of combo and list fields: filling, selecting and reading them.
// A combo keeps its options and its selected option itself.
#include <Xm/List.h>
#include <Xm/Text.h>

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/combo_private.h"
#include "toolkit/dialog/list_fields_private.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/base/fixed_text.h"

// The dialog engine's state.
static zelvy_dialog::State& ds = zelvy_dialog::state();

using namespace zelvy_dialog;

namespace {

// The list that holds a list field's options.
Widget option_list(const FieldRecord& f) { return f.type == kList ? f.widget : nullptr; }

// 1..3 the combo kinds, 4 a list of one selection, 5 and 6 lists of many.
int menu_type(const FieldRecord& f) {
  if (f.type == kCombo) {
    const std::uint32_t kind = f.style & field_style::kComboKindMask;
    return static_cast<int>(kind == 0 ? field_style::kComboDropDown : kind);
  }
  if (f.type == kList) return (f.style & field_style::kListMultiple) ? 5 : (f.style & field_style::kListExtended) ? 6 : 4;
  return 0;
}

int option_count(Widget list) {
  int n = 0;
  if (list) XtVaGetValues(list, XmNitemCount, &n, nullptr);
  return n;
}

int option_count(const FieldRecord& f) {
  int n = 0;
  if (f.type == kCombo) XtVaGetValues(f.widget, XmNcomboItemCount, &n, nullptr);
  else n = option_count(option_list(f));
  return n;
}

int combo_selected(const FieldRecord& f) {
  int option = 0;
  XtVaGetValues(f.widget, XmNitemSelect, &option, nullptr);
  return option;
}

std::string option_text(Widget list, int option) {
  XmStringTable items = nullptr;
  int n = 0;
  XtVaGetValues(list, XmNitems, &items, XmNitemCount, &n, nullptr);
  if (option < 1 || option > n || !items) return {};
  char* text = static_cast<char*>(XmStringUnparse(items[option - 1], nullptr, XmCHARSET_TEXT, XmCHARSET_TEXT,
                                                   nullptr, 0, XmOUTPUT_ALL));
  std::string out = text ? text : "";
  XtFree(text);
  return out;
}

// Keeps a position in view, moving the list as little as possible.
void list_scroll(Widget list, int position) {
  int top = 1, visible = 1;
  XtVaGetValues(list, XmNtopItemPosition, &top, XmNvisibleItemCount, &visible, nullptr);
  if (position < top) XmListSetPos(list, position);
  else if (position >= top + visible) XmListSetPos(list, std::max(1, position - visible + 1));
}

// The options of a combo, all at once; none selected, the text empty.
void put_combo_options(FieldRecord& f, std::span<const std::string> options) {
  std::vector<XmString> items;
  for (const std::string& o : options) items.push_back(yyDialogXmString(trimmed(o)));
  // No options: one empty string stands for them.
  XmString none = items.empty() ? yyDialogXmString("") : nullptr;
  XtVaSetValues(f.widget, XmNcomboItemCount, static_cast<int>(items.size()), XmNcomboItems,
                none ? &none : items.data(), nullptr);
  for (XmString s : items) XmStringFree(s);
  if (none) XmStringFree(none);
  f.data.storedBytes.clear();
  f.data.storedShown.clear();
}

// Selects an option by program; 1011 outside the options.
int put_option(FieldRecord& f, int option) {
  if (option < 1 || option > option_count(f)) return 1011;
  if (f.type == kCombo) {
    // Set afresh, so that the text follows even when the option is the same.
    XtVaSetValues(f.widget, XmNitemSelect, 0, nullptr);
    XtVaSetValues(f.widget, XmNitemSelect, option, nullptr);
    f.data.storedBytes.clear();
    f.data.storedShown.clear();
    return 0;
  }
  Widget list = option_list(f);
  XmListDeselectAllItems(list);
  XmListSelectPos(list, option, False);
  list_scroll(list, option);
  return 0;
}

FieldRecord* menu_field(int fieldid, const char* routine, bool many) {
  FieldRecord* f = yyDialogCurrentField(fieldid, routine);
  if (!f) return nullptr;
  const int type = menu_type(*f);
  if (type == 0 || (type >= 5) != many) {
    yyerror(1006, routine);
    return nullptr;
  }
  return f;
}

}  // namespace

void WDialogPutMenu(int fieldid, std::span<const std::string> options, int count, int option,
                    std::optional<std::string_view> text) {
  FieldRecord* f = menu_field(fieldid, "WDialogPutMenu", false);
  if (!f) return;
  const int n = std::clamp<int>(count, 0, static_cast<int>(options.size()));
  if (f->type == kCombo) {
    put_combo_options(*f, options.first(static_cast<std::size_t>(n)));
  } else {
    Widget list = option_list(*f);
    XmListDeselectAllItems(list);
    XmListDeleteAllItems(list);
    for (int k = 0; k < n; ++k) {
      XmString s = yyDialogListXmString(*f, trimmed(options[static_cast<std::size_t>(k)]));
      XmListAddItemUnselected(list, s, 0);
      XmStringFree(s);
    }
  }
  const int type = menu_type(*f);
  if (option == 0 && (type == 1 || type == 2) && text) {
    yyDialogPutText(*f, trimmed(*text), 0.0, {}, false);
    return;
  }
  if (const int err = put_option(*f, option)) yyerror(err, "WDialogPutMenu");
}

void WDialogPutOption(int fieldid, int option) {
  FieldRecord* f = menu_field(fieldid, "WDialogPutOption", false);
  if (!f) return;
  if (const int err = put_option(*f, option)) yyerror(err, "WDialogPutOption");
}

void WDialogGetMenu(int fieldid, int& option, std::string& text) {
  FieldRecord* f = menu_field(fieldid, "WDialogGetMenu", false);
  if (!f) {
    option = zelvy_data::data().iundef;
    return;
  }
  Widget list = option_list(*f);
  std::string value;
  if (f->type == kCombo) {
    value = yyDialogGetText(*f);
    if (value.empty()) {
      option = zelvy_data::data().iundef;
      assign_out(text, "");
      return yyerror(1010, "WDialogGetMenu");
    }
    // Free text in a drop-down keeps the option last selected.
    option = combo_selected(*f);
  } else {
    int* positions = nullptr;
    int n = 0;
    if (!XmListGetSelectedPos(list, &positions, &n) || n == 0) {
      option = zelvy_data::data().iundef;
      assign_out(text, "");
      return yyerror(1010, "WDialogGetMenu");
    }
    option = positions[0];
    XtFree(reinterpret_cast<char*>(positions));
    value = option_text(list, option);
  }
  assign_out(text, value);
}

void WDialogGetMenu(int fieldid, int& option) {
  std::string unused;
  WDialogGetMenu(fieldid, option, unused);
}

int yydialoggetmenuoptioncount(int fieldid) {
  if (zelvy_data::data().icurdialog == 0 || ds.iDlgCur < 0) return 0;
  const int fi = yyDialogFindField(fieldid, ds.iDlgCur);
  if (fi < 0) return 0;
  return option_count(ds.wDialogInfo[static_cast<std::size_t>(ds.iDlgCur)].fields[static_cast<std::size_t>(fi)]);
}

int yydialoggetmenutype(const FieldRecord& f) { return menu_type(f); }

int yyDialogPutOptionX(FieldRecord& f, int option) { return put_option(f, option); }

void yyDialogClearMenu(FieldRecord& f) {
  if (f.type == kCombo) return put_combo_options(f, {});
  Widget list = option_list(f);
  if (!list) return;
  XmListDeselectAllItems(list);
  XmListDeleteAllItems(list);
}

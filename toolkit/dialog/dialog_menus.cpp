// Options of combo and list fields: filling, selecting and reading them.
// A combo keeps its options in its inner list, which is what is read here.
#include <Xm/ComboBox.h>
#include <Xm/List.h>
#include <Xm/Text.h>

#include <algorithm>
#include <span>
#include <string>

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/base/fixed_text.h"

// The dialog engine's state.
static zelvy_dialog::State& ds = zelvy_dialog::state();

using namespace zelvy_dialog;

namespace {

// The list that holds the options: the field itself or a combo's inner list.
Widget option_list(const FieldRecord& f) {
  if (f.type == kList) return f.widget;
  if (f.type == kCombo) return XtNameToWidget(f.widget, "*List");
  return nullptr;
}

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

void set_combo_text(FieldRecord& f, const std::string& text) {
  ds.bNumericIgnoreChange = true;
  XmTextSetString(f.valueWidget, const_cast<char*>(text.c_str()));
  ds.bNumericIgnoreChange = false;
}

// Selects an option by program; 1011 outside the options.
int put_option(FieldRecord& f, int option) {
  Widget list = option_list(f);
  if (option < 1 || option > option_count(list)) return 1011;
  XmListDeselectAllItems(list);
  XmListSelectPos(list, option, False);
  list_scroll(list, option);
  if (f.type == kCombo) {
    set_combo_text(f, option_text(list, option));
    f.itemSelect = option;
  }
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
  Widget list = option_list(*f);
  XmListDeselectAllItems(list);
  XmListDeleteAllItems(list);
  const int n = std::min<int>(count, static_cast<int>(options.size()));
  for (int k = 0; k < n; ++k) {
    XmString s = yyDialogXmString(trimmed(options[static_cast<std::size_t>(k)]));
    XmListAddItemUnselected(list, s, 0);
    XmStringFree(s);
  }
  if (f->type == kCombo) {
    XmComboBoxUpdate(f->widget);
    f->itemSelect = 0;
    set_combo_text(*f, "");
  }
  const int type = menu_type(*f);
  if (option == 0 && (type == 1 || type == 2) && text) {
    set_combo_text(*f, std::string(trimmed(*text)));
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
    // The text names its option; free text in a drop-down keeps the last one.
    XmString s = yyDialogXmString(value);
    const int pos = XmListItemPos(list, s);
    XmStringFree(s);
    if (pos > 0) f->itemSelect = pos;
    option = f->itemSelect;
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
  return option_count(option_list(ds.wDialogInfo[static_cast<std::size_t>(ds.iDlgCur)].fields[static_cast<std::size_t>(fi)]));
}

int yydialoggetmenutype(const FieldRecord& f) { return menu_type(f); }

int yyDialogPutOptionX(FieldRecord& f, int option) { return put_option(f, option); }

void yyDialogClearMenu(FieldRecord& f) {
  Widget list = option_list(f);
  if (!list) return;
  XmListDeselectAllItems(list);
  XmListDeleteAllItems(list);
  if (f.type == kCombo) {
    XmComboBoxUpdate(f.widget);
    f.itemSelect = 0;
    set_combo_text(f, "");
  }
}

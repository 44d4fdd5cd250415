// Options of combo and list fields by position, lists of many selections,
// and the tab stops that line up the columns of a list.
#include "toolkit/dialog/list_fields.h"

#include <Xm/List.h>
#include <Xm/Text.h>

#include <algorithm>
#include <map>
#include <vector>

#include "toolkit/base/error.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/combo_private.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/list_fields_private.h"

using namespace zelvy_dialog;

namespace {

constexpr int kTypeMany = 5, kTypeRange = 6;

// Compound strings being gathered for one field, added all at once.
struct MenuStrings {
  std::vector<XmString> menuXmStrings;
  FieldRecord* pMenuField = nullptr;
} staging;

// Tab stops of lists in pixels, by list widget, dropped with the widget.
std::map<Widget, std::vector<int>>& tab_stops() {
  static std::map<Widget, std::vector<int>> stops;
  return stops;
}

void forget_stops_cb(Widget w, XtPointer, XtPointer) { tab_stops().erase(w); }

FieldRecord* current_field(int fieldid, int& error) {
  error = 0;
  State& ds = zelvy_dialog::state();
  if (zelvy_data::data().icurdialog == 0 || ds.iDlgCur < 0 || ds.wDialogInfo[ds.iDlgCur].identifier == -1) {
    error = 1005;
    return nullptr;
  }
  FieldRecord* f = yyDialogGetField(fieldid, ds.iDlgCur);
  if (!f) error = 1006;
  return f;
}

FieldRecord* menu_field(int fieldid, int& error) {
  FieldRecord* f = current_field(fieldid, error);
  if (f && f->type != kCombo && f->type != kList) {
    error = 1006;
    return nullptr;
  }
  return f;
}

FieldRecord* menu_field(int fieldid) {
  int error = 0;
  return menu_field(fieldid, error);
}

int count_of(const FieldRecord& f) {
  int n = 0;
  XtVaGetValues(f.widget, f.type == kCombo ? XmNcomboItemCount : XmNitemCount, &n, nullptr);
  return n;
}

std::string unparse(XmString s) {
  char* t = static_cast<char*>(XmStringUnparse(s, nullptr, XmCHARSET_TEXT, XmCHARSET_TEXT, nullptr, 0, XmOUTPUT_ALL));
  std::string out = t ? t : "";
  XtFree(t);
  return out;
}

std::string list_item(Widget list, int position) {
  XmStringTable items = nullptr;
  int n = 0;
  XtVaGetValues(list, XmNitems, &items, XmNitemCount, &n, nullptr);
  if (position < 1 || position > n || !items) return {};
  return unparse(items[position - 1]);
}

// A list of range selection takes single additions only as a list of many.
template <typename Work>
void with_many_policy(Widget list, Work work) {
  unsigned char policy = XmBROWSE_SELECT;
  XtVaGetValues(list, XmNselectionPolicy, &policy, nullptr);
  if (policy == XmEXTENDED_SELECT) XtVaSetValues(list, XmNselectionPolicy, XmMULTIPLE_SELECT, nullptr);
  work();
  if (policy == XmEXTENDED_SELECT) XtVaSetValues(list, XmNselectionPolicy, XmEXTENDED_SELECT, nullptr);
}

void set_state(Widget list, int option, int state) {
  if (state == 1 && !XmListPosSelected(list, option)) XmListSelectPos(list, option, False);
  else if (state == 0 && XmListPosSelected(list, option)) XmListDeselectPos(list, option);
}

}  // namespace

// ---- Tab expansion ---------------------------------------------------------

int yyDialogStrTabsCount(std::string_view text) { return static_cast<int>(std::count(text.begin(), text.end(), '\t')); }

std::string yyDialogStrTabsProc(std::string_view text, std::span<const int> stops, int defaultTabWidth, int spaceWidth,
                                const std::function<int(std::string_view)>& measure) {
  const int tabWidth = std::max(1, defaultTabWidth), space = std::max(1, spaceWidth);
  std::string out;
  int position = 0, stop = 0;
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\t') continue;
    const std::string_view column = text.substr(start, i - start);
    out += column;
    position += measure(column);
    if (stops.empty()) {
      while (stop < position) stop += tabWidth;
    } else if (stops.size() == 1) {
      const int step = std::max(1, stops[0]);
      while (stop < position) stop += step;
    } else if (stops.back() < position) {
      stop = std::max(stop, stops.back());
      while (stop < position) stop += tabWidth;
    } else {
      for (int s : stops)
        if (s >= position) {
          stop = std::max(stop, s);
          break;
        }
    }
    const int blanks = std::max(1, (stop - position) / space);
    out.append(static_cast<std::size_t>(blanks), ' ');
    position += blanks * space;
    start = i + 1;
  }
  out += text.substr(start);
  return out;
}

XmString yyDialogListXmString(const FieldRecord& f, std::string_view text) {
  if (f.type != kList || !(f.style & field_style::kListTabStops) || yyDialogStrTabsCount(text) == 0)
    return yyDialogXmString(text);
  const DialogFontMetrics& fm = yyDialogFontMetrics(f.fontIndex);
  const auto it = tab_stops().find(f.widget);
  const std::vector<int> none;
  const std::string expanded =
      yyDialogStrTabsProc(text, it == tab_stops().end() ? none : it->second, fm.defaultTabWidth, fm.spaceWidth,
                          [&f](std::string_view s) { return yyDialogTextWidth(f.fontIndex, s); });
  return yyDialogXmString(expanded);
}

void yyDialogListScroll(Widget list, int position) {
  int top = 1, visible = 1;
  XtVaGetValues(list, XmNtopItemPosition, &top, XmNvisibleItemCount, &visible, nullptr);
  if (position < top) XmListSetPos(list, position);
  else if (position >= top + visible) XmListSetPos(list, std::max(1, position - visible + 1));
}

void yyDialogPutMenu(FieldRecord& f, std::string_view text, int position) {
  XmString s = yyDialogListXmString(f, text);
  if (f.type == kCombo) yyComboWidgetListAddItemX(f.widget, s, position);
  else XmListAddItemUnselected(f.widget, s, position);
  XmStringFree(s);
}

void yystrctof(std::string_view text, std::string& out) { assign_out(out, text); }

// ---- The C layer -----------------------------------------------------------

void yydialoggetmenutype_(int fieldid, int& type, int& error) {
  type = 0;
  FieldRecord* f = menu_field(fieldid, error);
  if (f) type = yydialoggetmenutype(*f);
}

void yydialogputmenustringsbegin_(int fieldid, int count) {
  for (XmString s : staging.menuXmStrings) XmStringFree(s);
  staging.menuXmStrings.assign(static_cast<std::size_t>(std::max(0, count)), nullptr);
  staging.pMenuField = menu_field(fieldid);
}

void yydialogputmenustringsadd_(int index, int, std::string_view text) {
  if (!staging.pMenuField || index < 0 || index >= static_cast<int>(staging.menuXmStrings.size())) return;
  XmString& slot = staging.menuXmStrings[static_cast<std::size_t>(index)];
  if (slot) XmStringFree(slot);
  slot = yyDialogListXmString(*staging.pMenuField, trimmed(text));
}

void yydialogputmenustringsend_(int count, int type) {
  std::vector<XmString> items;
  for (int i = 0; i < std::min<int>(count, static_cast<int>(staging.menuXmStrings.size())); ++i)
    if (XmString s = staging.menuXmStrings[static_cast<std::size_t>(i)]) items.push_back(s);
  if (FieldRecord* f = staging.pMenuField; f && !items.empty()) {
    if (type <= 3) yyComboWidgetListAddItemsX(f->widget, items);
    else XmListAddItems(f->widget, items.data(), static_cast<int>(items.size()), 0);
  }
  for (XmString s : staging.menuXmStrings) XmStringFree(s);
  staging.menuXmStrings.clear();
  staging.pMenuField = nullptr;
}

void yydialogputmenustring_(int, int fieldid, std::string_view text) {
  if (FieldRecord* f = menu_field(fieldid)) yyDialogPutMenu(*f, trimmed(text), 0);
}

void yydialogputmenuitem_(int, int fieldid, int position, std::string_view text) {
  FieldRecord* f = menu_field(fieldid);
  if (!f || position < 1 || position > count_of(*f)) return;
  if (f->type == kCombo) {
    int selected = 0;
    XtVaGetValues(f->widget, XmNitemSelect, &selected, nullptr);
    yyComboWidgetTextClearX(f->widget, position);
    yyDialogPutMenu(*f, trimmed(text), position);
    yyComboWidgetListDeleteItemX(f->widget, position + 1);
    // The option keeps its number, whatever the insertion did to it.
    reinterpret_cast<ComboWidget>(f->widget)->combo.itemSelect = selected;
    return;
  }
  const bool selected = XmListPosSelected(f->widget, position);
  yyDialogPutMenu(*f, trimmed(text), position);
  XmListDeletePos(f->widget, position + 1);
  if (selected) with_many_policy(f->widget, [&] { XmListSelectPos(f->widget, position, False); });
}

void yydialoginsertmenuitem_(int, int fieldid, int position, std::string_view text) {
  if (FieldRecord* f = menu_field(fieldid)) yyDialogPutMenu(*f, trimmed(text), std::max(0, position));
}

void yydialogdeletemenuitem_(int, int fieldid, int position) {
  FieldRecord* f = menu_field(fieldid);
  if (!f || position < 1 || position > count_of(*f)) return;
  if (f->type == kCombo) yyComboWidgetListDeleteItemX(f->widget, position);
  else XmListDeletePos(f->widget, position);
}

void yydialoggetmenuitem_(int position, int fieldid, int type, std::string& text) {
  FieldRecord* f = menu_field(fieldid);
  std::string value;
  if (f && f->type == kCombo) value = (position == 0 && type == 3) ? yyDialogGetText(*f) : yyComboWidgetItemTextX(f->widget, position);
  else if (f) value = list_item(f->widget, position);
  yystrctof(value, text);
}

void yydialoggetmenuoptioncount_(int fieldid, int, int& count) {
  FieldRecord* f = menu_field(fieldid);
  count = f ? count_of(*f) : 0;
}

void yydialoggetmenuoptionstate_(int fieldid, int option, int& state) {
  FieldRecord* f = menu_field(fieldid);
  state = (f && f->type == kList && option >= 1 && option <= count_of(*f) && XmListPosSelected(f->widget, option)) ? 1 : 0;
}

void yydialogputoption_(int, int fieldid, int option, int& error) {
  FieldRecord* f = menu_field(fieldid, error);
  if (f) error = yyDialogPutOptionX(*f, option);
}

void yydialogputoptionstate_(int fieldid, int option, int state) { yydialogputoptionstates_(fieldid, option, option, state); }

void yydialogputoptionstates_(int fieldid, int first, int last, int state) {
  FieldRecord* f = menu_field(fieldid);
  if (!f || f->type != kList || (state != 0 && state != 1)) return;
  const int n = count_of(*f);
  with_many_policy(f->widget, [&] {
    for (int k = std::max(1, first); k <= std::min(n, last); ++k) set_state(f->widget, k, state);
  });
}

void yydialogputoptionstateend_(int fieldid) {
  FieldRecord* f = menu_field(fieldid);
  if (!f || f->type != kList) return;
  int* positions = nullptr;
  int n = 0;
  if (XmListGetSelectedPos(f->widget, &positions, &n) && n > 0) {
    yyDialogListScroll(f->widget, *std::min_element(positions, positions + n));
    XtFree(reinterpret_cast<char*>(positions));
  }
}

void yydialogputmenucombo_(int fieldid, std::string_view text) {
  FieldRecord* f = menu_field(fieldid);
  if (f && f->type == kCombo && f->valueWidget) XmTextSetString(f->valueWidget, std::string(text).data());
}

void yydialoggetmenucombo_(int fieldid, int& option, std::string& text, int& error) {
  option = zelvy_data::data().iundef;
  FieldRecord* f = menu_field(fieldid, error);
  if (f && f->type != kCombo) error = 1006;
  if (error) return;
  const std::string value = yyDialogGetText(*f);
  if (value.empty()) {
    error = 1010;
    yystrctof("", text);
    return;
  }
  XtVaGetValues(f->widget, XmNitemSelect, &option, nullptr);
  yystrctof(value, text);
}

void yydialoggetmenulist_(int fieldid, int& option, std::string& text, int& error) {
  option = zelvy_data::data().iundef;
  FieldRecord* f = menu_field(fieldid, error);
  if (f && f->type != kList) error = 1006;
  if (error) return;
  int* positions = nullptr;
  int n = 0;
  if (!XmListGetSelectedPos(f->widget, &positions, &n) || n == 0) {
    error = 1010;
    yystrctof("", text);
    return;
  }
  option = *std::min_element(positions, positions + n);
  XtFree(reinterpret_cast<char*>(positions));
  yystrctof(list_item(f->widget, option), text);
}

namespace {
Widget top_list(const FieldRecord& f) {
  if (f.type == kList) return f.widget;
  ComboWidget c = reinterpret_cast<ComboWidget>(f.widget);
  return c->combo.listWidget;
}
}  // namespace

void yydialoggetmenutop_(int fieldid, int& position, int& error) {
  position = 0;
  FieldRecord* f = menu_field(fieldid, error);
  if (!f) return;
  if (Widget list = top_list(*f)) XtVaGetValues(list, XmNtopItemPosition, &position, nullptr);
}

void yydialogsetmenutop_(int fieldid, int position, int& error) {
  FieldRecord* f = menu_field(fieldid, error);
  if (!f) return;
  Widget list = top_list(*f);
  if (list && position >= 1) XmListSetPos(list, std::min(position, std::max(1, count_of(*f))));
}

void yydialogtabstops_(int fieldid, std::span<const int> stops, int& error) {
  FieldRecord* f = current_field(fieldid, error);
  if (f && f->type != kList) error = 1006;
  if (error) return;
  const DialogFontMetrics& fm = yyDialogFontMetrics(f->fontIndex);
  std::vector<int> pixels;
  for (int s : stops) {
    int px = 0, py = 0;
    yyDialogUnitsToPixels(fm, s, 0, px, py);
    pixels.push_back(px);
  }
  if (!tab_stops().count(f->widget)) XtAddCallback(f->widget, XmNdestroyCallback, forget_stops_cb, nullptr);
  tab_stops()[f->widget] = std::move(pixels);
}

// ---- Lists of many selections ---------------------------------------------

void WDialogPutMenu(int fieldid, std::span<const std::string> options, int count, std::span<const int> states) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogPutMenu");
  if (!f) return;
  const int type = yydialoggetmenutype(*f);
  if (type != kTypeMany && type != kTypeRange) return yyerror(1006, "WDialogPutMenu");
  const int n = std::clamp<int>(count, 0, static_cast<int>(options.size()));
  XmListDeselectAllItems(f->widget);
  XmListDeleteAllItems(f->widget);
  yydialogputmenustringsbegin_(fieldid, n);
  for (int k = 0; k < n; ++k) yydialogputmenustringsadd_(k, type, options[static_cast<std::size_t>(k)]);
  yydialogputmenustringsend_(n, type);
  for (int k = 0; k < std::min<int>(n, static_cast<int>(states.size())); ++k)
    yydialogputoptionstate_(fieldid, k + 1, states[static_cast<std::size_t>(k)]);
  yydialogputoptionstateend_(fieldid);
}

void WDialogGetMenu(int fieldid, std::span<int> states) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogGetMenu");
  if (!f) return;
  const int type = yydialoggetmenutype(*f);
  if (type != kTypeMany && type != kTypeRange) return yyerror(1006, "WDialogGetMenu");
  for (std::size_t k = 0; k < states.size(); ++k) {
    const int option = static_cast<int>(k) + 1;
    states[k] = option <= count_of(*f) && XmListPosSelected(f->widget, option) ? 1 : 0;
  }
}

#include "tools/zelvdemo/demo_form.h"

#include <array>
#include <utility>
#include <string>
#include <vector>

#include "tools/zelvdemo/zelvdemo_ids.h"
#include "toolkit/comdlg/message_box.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/list_fields.h"
#include "toolkit/dialog/small_widgets.h"
#include "toolkit/dialog/tree_view.h"
#include "toolkit/grid/grid.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"

const zelv_rc::ResourceTables& zelvdemo_resource_tables();

namespace {

namespace form = zelvdemo_ids::demo;
namespace ids = zelvdemo_ids;

// Columns of the tab-expanded list, in dialog units.
constexpr std::array<int, 2> kColumnStops{24, 48};
bool rowsOpen = false;  // the dialog of tabs in rows is loaded
constexpr int kTrackMin = 0, kTrackMax = 100, kTrackTicks = 10, kTrackPage = 10;

void fill_columns() {
  int error = 0;
  yydialogtabstops_(form::columns, kColumnStops, error);
  const std::vector<std::string> rows{"h\tk\tl", "1\t0\t0", "1\t1\t0", "1\t1\t1", "2\t0\t0", "2\t2\t0", "3\t1\t1"};
  WDialogPutMenu(form::columns, rows, static_cast<int>(rows.size()), std::vector<int>{0, 1, 0, 1});
}

}  // namespace

void zelvdemo_start() {
  yyrcinstall(zelvdemo_resource_tables());
  yyDialogAttach();
  yyGridAttach();
  yyComdlgAttach();
  WInitialise("");
}

void zelvdemo_open() {
  WindowOpen(0, 0, 0, {}, {}, {}, {}, ids::dialog::demo, "Zelvane widgets");
  WDialogSelect(ids::dialog::demo);
  int error = 0;
  yydialogaddtabpage_(form::pages, ids::dialog::page_cell, "Cell", error);
  yydialogaddtabpage_(form::pages, ids::dialog::page_options, "Options", error);
  yydialogaddtabpage_(form::pages, ids::dialog::page_notes, "Notes", error);
  yydialogtreeviewmenu_(form::tree, ids::menu::tree_items, -1, error);
  yydialograngetrackbar_(form::track, kTrackMin, kTrackMax, kTrackTicks, error);
  yydialogtrackbarstep_(form::track, 1, kTrackPage, error);
  yydialogputtrackbar_(form::track, kTrackMax / 2, error);
  yydialograngeprogressbar_(form::progress, 0, 1000, error);
  yydialogputprogress_(form::progress, 250, 0, error);
  fill_columns();
}

void zelvdemo_open_rows() {
  if (rowsOpen) {
    WDialogSelect(ids::dialog::rows);
    return WDialogShow(-1, -1, {}, 2);
  }
  rowsOpen = true;
  WDialogLoad(ids::dialog::rows);
  int error = 0;
  const std::array<std::pair<int, const char*>, 5> pages{{{ids::dialog::row_page_one, "Alpha"},
                                                          {ids::dialog::row_page_two, "Beta"},
                                                          {ids::dialog::row_page_three, "Gamma"},
                                                          {ids::dialog::row_page_four, "Delta"},
                                                          {ids::dialog::row_page_five, "Epsilon"}}};
  for (const auto& [page, label] : pages) yydialogaddtabpage_(zelvdemo_ids::rows::row_pages, page, label, error);
  WDialogShow(-1, -1, {}, 2);
}

void zelvdemo_close() {
  if (rowsOpen) {
    WDialogSelect(ids::dialog::rows);
    WDialogUnload();
    rowsOpen = false;
  }
  WDialogSelect(ids::dialog::demo);
  WDialogUnload();
  WindowClose();
}

std::string zelvdemo_describe(int type, const MessageRecord& m) {
  WDialogSelect(ids::dialog::demo);
  int error = 0;
  if (type == TabChanged) return "Page " + std::to_string(m.Value1) + " -> " + std::to_string(m.Value2);
  if (type == PushButton) return "Button " + std::to_string(m.Value1);
  if (type == ContextClick)
    return "Right click on field " + std::to_string(m.Value4) + ", item " + std::to_string(m.Value1) +
           ", modifiers " + std::to_string(m.Value2);
  if (type != FieldChanged) return {};
  const int field = m.Value2;
  switch (field) {
    case form::single: case form::choice: {
      int option = 0;
      std::string text;
      WDialogGetMenu(field, option, text);
      return "Option " + std::to_string(option) + " \"" + text + "\"";
    }
    case form::many: case form::columns: {
      std::array<int, 8> states{};
      WDialogGetMenu(field, states);
      std::string s = "Selected:";
      for (std::size_t i = 0; i < states.size(); ++i)
        if (states[i]) s += " " + std::to_string(i + 1);
      return s;
    }
    case form::track: {
      int value = 0;
      yydialoggettrackbar_(field, value, error);
      return "Trackbar " + std::to_string(value);
    }
    case form::tree: {
      int item = 0;
      std::string text;
      yydialoggettreeview_(field, item, true, error, text);
      const char* what = m.Value3 == 3 ? "opened" : m.Value3 == 4 ? "closed" : "selected";
      return std::string("Tree ") + what + " " + std::to_string(m.Value4) + ", selection " + text;
    }
    default: return "Field " + std::to_string(field) + " changed";
  }
}

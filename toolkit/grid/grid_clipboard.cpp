// Cut, copy, paste and delete of a grid's cells through the text clipboard.
#include <X11/Intrinsic.h>

#include <algorithm>
#include <string>

#include "toolkit/grid/grid_private.h"
#include "toolkit/kernel/clipboard_private.h"
#include "toolkit/kernel/comdlg_attach.h"

namespace {

// Other programs see the cells as text; the label tells the item is a grid's.
constexpr const char* kItemLabel = "ZelvGrid";

Time event_time(Widget w) { return XtLastTimestampProcessed(XtDisplay(w)); }

std::size_t at(int i) { return static_cast<std::size_t>(i); }

}  // namespace

bool yyGridClipboardPut(Widget w, std::string_view text) {
  return yyClipboardPutString(text, event_time(w), kItemLabel, w) == 0;
}

bool yyGridClipboardGet(Widget w, std::string& text) { return yyClipboardGetText(text, w); }

bool yyGridCanCut(Widget grid) {
  GridPart& g = yyGridPart(grid);
  const GridState& s = *g.st;
  if (g.readOnly) return false;
  if (!s.selectionOn) return s.model.inside(g.icol, g.irow) &&
                              !(s.model.columns[at(g.icol)].cellFlags[at(g.irow)] & grid_cell::kReadOnly);
  for (int c = s.selC1; c <= s.selC2; ++c)
    for (int r = s.selR1; r <= s.selR2; ++r)
      if (s.model.columns[at(c)].cellFlags[at(r)] & grid_cell::kReadOnly) return false;
  return true;
}

bool yyGridCanPaste(Widget grid) {
  GridPart& g = yyGridPart(grid);
  const GridState& s = *g.st;
  if (g.readOnly) return false;
  std::string text;
  if (!yyGridClipboardGet(grid, text) || text.empty()) return false;
  int rows = 0, columns = 0;
  yyGridClipCount(text, rows, columns);
  const int c1 = s.selectionOn ? s.selC1 : g.icol, r1 = s.selectionOn ? s.selR1 : g.irow;
  const int c2 = std::min(c1 + columns, s.model.columnCount()) - 1, r2 = std::min(r1 + rows, s.model.rows) - 1;
  for (int c = c1; c <= c2; ++c)
    for (int r = r1; r <= r2; ++r)
      if (s.model.columns[at(c)].cellFlags[at(r)] & grid_cell::kReadOnly) return false;
  return true;
}

bool yyGridWidgetSelCellCopyX(Widget grid) {
  const GridState& s = *yyGridPart(grid).st;
  if (!s.selectionOn) return false;
  const std::string text = yyGridClipText(s.model, s.selC1, s.selR1, s.selC2, s.selR2);
  if (!yyGridClipboardPut(grid, text)) {
    constexpr int kOkOnly = 0, kErrorIcon = 3, kFirstButton = 1;
    yyComdlgAsk(kOkOnly, kErrorIcon, kFirstButton,
                "Either the clipboard is in use by another application or there is insufficient memory available "
                "for the amount of data being copied",
                "Clipboard error");
    return false;
  }
  return true;
}

bool yyGridWidgetSelCellDelX(Widget grid, bool check) {
  GridPart& g = yyGridPart(grid);
  GridState& s = *g.st;
  if (!s.selectionOn) return false;
  if (check && !yyGridCanCut(grid)) return false;
  const int c1 = s.selC1, r1 = s.selR1, c2 = s.selC2, r2 = s.selR2;
  yyGridWidgetSelectX(grid, false, 0, 0, 0, 0);
  s.redrawOff = true;
  for (int c = c1; c <= c2; ++c)
    for (int r = r1; r <= r2; ++r) yyGridWidgetClearCellX(grid, c, r);
  s.redrawOff = false;
  yyGridWidgetUpdateViewportData(grid, true);
  s.model.modified = s.model.changed = true;
  yyGridReportClip(grid, c1, r1, c2, r2);
  return true;
}

bool yyGridWidgetSelCellCutX(Widget grid) {
  if (!yyGridCanCut(grid)) return false;
  if (!yyGridWidgetSelCellCopyX(grid)) return false;
  return yyGridWidgetSelCellDelX(grid, false);
}

bool yyGridWidgetSelCellPasteX(Widget grid) {
  GridPart& g = yyGridPart(grid);
  GridState& s = *g.st;
  if (g.readOnly) return false;
  std::string text;
  if (!yyGridClipboardGet(grid, text) || text.empty()) return false;
  const int c1 = s.selectionOn ? s.selC1 : g.icol, r1 = s.selectionOn ? s.selR1 : g.irow;
  if (s.selectionOn) yyGridWidgetSelectX(grid, false, 0, 0, 0, 0);
  int lastC = c1, lastR = r1;
  if (!yyGridModelPaste(s.model, c1, r1, text, lastC, lastR)) return false;
  yyGridWidgetUpdateViewportData(grid, true);
  yyGridReportClip(grid, c1, r1, lastC, lastR);
  return true;
}

// The grid's print dialog.
#include "toolkit/comdlg/grid_print_dialog.h"

#include <algorithm>

#include "toolkit/comdlg/page_setup.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/kernel/message.h"

namespace {

constexpr int kDialog = 32112;
constexpr int kPrint = 1, kCancel = 2;
constexpr int kRowLines = 1002, kColumnLines = 1003, kLabelsFirst = 1005, kLabelsAll = 1006, kNoColour = 1008,
              kColour = 1009, kColourBackground = 1010, kPrinter = 1011, kScale = 1012, kPageSetup = 1014;
constexpr int kScaleMin = 10, kScaleMax = 400;
constexpr int kButtonsOk = 0, kIconError = 1;

void put(const GridPrintOptions& o) {
  WDialogPutCheckBox(kRowLines, o.rowLines ? 1 : 0);
  WDialogPutCheckBox(kColumnLines, o.columnLines ? 1 : 0);
  WDialogPutRadioButton(o.labelsEachPage ? kLabelsAll : kLabelsFirst);
  WDialogPutRadioButton(o.colourBackground ? kColourBackground : o.colour ? kColour : kNoColour);
  WDialogPutString(kPrinter, "PostScript");
  WDialogRangeInteger(kScale, kScaleMin, kScaleMax);
  WDialogPutInteger(kScale, std::clamp(o.scale, kScaleMin, kScaleMax));
}

void get(GridPrintOptions& o) {
  int v = 0;
  WDialogGetCheckBox(kRowLines, v);
  o.rowLines = v != 0;
  WDialogGetCheckBox(kColumnLines, v);
  o.columnLines = v != 0;
  v = 1;
  WDialogGetRadioButton(kLabelsFirst, v);
  o.labelsEachPage = v == 2;
  v = 1;
  WDialogGetRadioButton(kNoColour, v);
  o.colour = v >= 2;
  o.colourBackground = v == 3;
  v = o.scale;
  WDialogGetInteger(kScale, v);
  o.scale = std::clamp(v, kScaleMin, kScaleMax);
}

}  // namespace

void yycomdlggridprint_(int showMode, GridPrintOptions& options, zelvy_data::PageSetup& page, int& ok) {
  ok = 0;
  auto& zd = zelvy_data::data();
  const int previous = zd.icurdialog;
  const int keptError = zd.ierr;
  zd.ierr = 0;
  WDialogLoad(kDialog);
  if (zd.ierr != 0 || zd.icurdialog != kDialog) {
    zd.ierr = keptError;
    yyComdlgAsk(kButtonsOk, kIconError, 1, "Unable to load grid print dialog", "Error");
    return;
  }
  put(options);
  // The page setup edits a copy, so that Cancel here leaves the record alone.
  zelvy_data::PageSetup edited = page;
  // Its buttons are answered here, so the dialog runs semi-modeless under
  // this loop whatever the mode; the mode only says where it was asked from.
  constexpr int kSemiModeless = 3;
  (void)showMode;
  wdialogshowcommon(kRowLines, kSemiModeless, 0);
  int type = 0;
  MessageRecord m;
  int result = 0;
  while (result == 0) {
    WMessage(type, m);
    if (m.Win != kDialog) continue;
    WDialogSelect(kDialog);
    if (type == CloseRequest) {
      result = kCancel;
    } else if (type == PushButton) {
      if (m.Value1 == kPrint || m.Value1 == kCancel) {
        result = m.Value1;
      } else if (m.Value1 == kPageSetup) {
        yycomdlgpagesetupps(edited, "Page Setup");
        WDialogSelect(kDialog);
      }
    }
  }
  if (result == kPrint) {
    get(options);
    page = edited;
    ok = 1;
  }
  WDialogUnload();
  if (previous != 0) {
    WDialogSelect(previous);
    zd.ierr = keptError;
  }
}

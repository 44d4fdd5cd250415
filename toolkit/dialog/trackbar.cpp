// Trackbar fields: a Motif scale with tick marks laid along it, and the
// routines that read, set and range it.
#include <Xm/Scale.h>
#include <Xm/Separator.h>

#include <algorithm>
#include <array>
#include <map>
#include <vector>

#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/small_widgets_private.h"
#include "toolkit/kernel/resources.h"

using namespace zelvy_dialog;

namespace {

constexpr int kDefaultSpacing = 10;
// Tick lengths in dialog units: the two ends stand out.
constexpr int kEndTickUnits = 3, kTickUnits = 2, kTickThicknessUnits = 1;

struct TrackbarData {
  int tickCount = 0;
  int tickSpacing = kDefaultSpacing;
  std::vector<Widget> ticks;
};

std::map<Widget, TrackbarData>& trackbars() {
  static std::map<Widget, TrackbarData> data;
  return data;
}

void forget_cb(Widget w, XtPointer, XtPointer) { trackbars().erase(w); }

FieldRecord* trackbar_field(int fieldid, int& error) {
  error = 0;
  State& ds = zelvy_dialog::state();
  if (ds.iDlgCur < 0 || ds.wDialogInfo[ds.iDlgCur].identifier == -1) {
    error = 1005;
    return nullptr;
  }
  FieldRecord* f = yyDialogGetField(fieldid, ds.iDlgCur);
  if (!f || f->type != kTrackbar) {
    error = 1006;
    return nullptr;
  }
  return f;
}

void range_of(const FieldRecord& f, int& lo, int& hi) { XtVaGetValues(f.widget, XmNminimum, &lo, XmNmaximum, &hi, nullptr); }

}  // namespace

int yyTrackbarTickCount(int minimum, int maximum, int spacing) {
  if (spacing <= 0 || maximum < minimum) return 0;
  return (maximum - minimum) / spacing + 1;
}

void yyDialogRangeTrackbar(FieldRecord& f, int minimum, int maximum, int tickSpacing) {
  if (!(f.style & field_style::kTrackbarTicks)) return;
  TrackbarData& t = trackbars()[f.widget];
  if (tickSpacing > 0) t.tickSpacing = tickSpacing;
  for (Widget w : t.ticks) XtDestroyWidget(w);
  t.ticks.clear();
  t.tickCount = yyTrackbarTickCount(minimum, maximum, t.tickSpacing);
  const bool vertical = f.style & field_style::kTrackbarVertical;
  const DialogFontMetrics& fm = yyDialogFontMetrics(f.fontIndex);
  int thick = 1, unused = 0, longTick = 1, shortTick = 1;
  yyDialogUnitsToPixels(fm, kTickThicknessUnits, kTickThicknessUnits, thick, unused);
  yyDialogUnitsToPixels(fm, kEndTickUnits, kEndTickUnits, vertical ? longTick : unused, vertical ? unused : longTick);
  yyDialogUnitsToPixels(fm, kTickUnits, kTickUnits, vertical ? shortTick : unused, vertical ? unused : shortTick);
  for (int i = 0; i < t.tickCount; ++i) {
    const int length = (i == 0 || i == t.tickCount - 1) ? longTick : shortTick;
    // A horizontal scale has upright ticks, a vertical one flat ticks.
    Widget sep = XtVaCreateManagedWidget("sep", xmSeparatorWidgetClass, f.widget, XmNorientation,
                                         vertical ? XmHORIZONTAL : XmVERTICAL, XmNseparatorType, XmSINGLE_LINE,
                                         XmNmargin, 0, XtNwidth, std::max(1, vertical ? length : thick), XtNheight,
                                         std::max(1, vertical ? thick : length), nullptr);
    t.ticks.push_back(sep);
  }
}

void yyDialogTrackbarCreate(DialogRecord& d, FieldRecord& f) {
  std::array<int, 6> tb{};
  // A record of zeros is a range of 0 to 1.
  int value = 0, lo = 0, hi = 1, spacing = kDefaultSpacing;
  yyrcfieldtrackbar(d.resourceId, f.identifier, tb);
  if (tb[1] < tb[2]) {
    lo = tb[1];
    hi = tb[2];
  }
  value = std::clamp(tb[0], lo, hi);
  if (tb[3] > 0) spacing = tb[3];
  f.capabilities = field_capability::kTrackbar;
  const bool vertical = f.style & field_style::kTrackbarVertical;
  f.widget = XtVaCreateWidget("ZelvField", xmScaleWidgetClass, d.widget, XtNx, f.x, XtNy, f.y, XtNwidth,
                              std::max(1, f.width), XtNheight, std::max(1, f.height), XmNorientation,
                              vertical ? XmVERTICAL : XmHORIZONTAL, XmNprocessingDirection,
                              vertical ? XmMAX_ON_BOTTOM : XmMAX_ON_RIGHT, XmNminimum, lo, XmNmaximum, hi, XmNvalue,
                              value, XmNshowValue, False, XtNbackground, yyDialogScheme(3), XmNhighlightThickness, 0,
                              nullptr);
  trackbars()[f.widget] = TrackbarData{};
  XtAddCallback(f.widget, XmNdestroyCallback, forget_cb, nullptr);
  yyDialogRangeTrackbar(f, lo, hi, spacing);
  XtAddCallback(f.widget, XmNdragCallback, yyDialogFieldChangedStateCB, nullptr);
  XtAddCallback(f.widget, XmNvalueChangedCallback, yyDialogFieldChangedStateCB, nullptr);
}

void yydialogputtrackbar_(int fieldid, int value, int& error) {
  FieldRecord* f = trackbar_field(fieldid, error);
  if (!f) return;
  int lo = 0, hi = 0;
  range_of(*f, lo, hi);
  XmScaleSetValue(f->widget, std::clamp(value, lo, hi));
}

void yydialoggettrackbar_(int fieldid, int& value, int& error) {
  value = 0;
  if (FieldRecord* f = trackbar_field(fieldid, error)) XmScaleGetValue(f->widget, &value);
}

void yydialograngetrackbar_(int fieldid, int minimum, int maximum, int tickSpacing, int& error) {
  FieldRecord* f = trackbar_field(fieldid, error);
  if (!f || minimum >= maximum) return;
  int value = 0;
  XmScaleGetValue(f->widget, &value);
  XtVaSetValues(f->widget, XmNminimum, minimum, XmNmaximum, maximum, XmNvalue, std::clamp(value, minimum, maximum),
                nullptr);
  yyDialogRangeTrackbar(*f, minimum, maximum, tickSpacing);
}

void yydialogtrackbarstep_(int fieldid, int, int pageStep, int& error) {
  FieldRecord* f = trackbar_field(fieldid, error);
  if (f && pageStep > 0) XtVaSetValues(f->widget, XmNscaleMultiple, pageStep, nullptr);
}

void yyinfodialogfieldtrackrange_(int fieldid, int& minimum, int& maximum, int& error) {
  minimum = maximum = 0;
  if (FieldRecord* f = trackbar_field(fieldid, error)) range_of(*f, minimum, maximum);
}

int yyDialogTrackbarTickCount(int fieldid) {
  int error = 0;
  FieldRecord* f = trackbar_field(fieldid, error);
  if (!f) return 0;
  const auto it = trackbars().find(f->widget);
  return it == trackbars().end() ? 0 : static_cast<int>(it->second.ticks.size());
}

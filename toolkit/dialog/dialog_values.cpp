// Field values by identifier on the current dialog: texts, numbers with
// their range and undefined values, check boxes and radio groups.
#include <Xm/List.h>
#include <Xm/Text.h>
#include <Xm/ToggleB.h>

#include <string>

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/format.h"

// The dialog engine's state.
static zelvy_dialog::State& ds = zelvy_dialog::state();

using namespace zelvy_dialog;

namespace {

bool numeric(const FieldRecord& f) { return f.type >= kInteger && f.type <= kDouble; }

std::string_view trim_right(std::string_view t) {
  while (!t.empty() && (t.back() == ' ' || t.back() == '\0')) t.remove_suffix(1);
  return t;
}

std::string trim_both(std::string s) {
  s.assign(trim_right(s));
  const std::size_t lead = s.find_first_not_of(' ');
  return lead == std::string::npos ? std::string{} : s.substr(lead);
}

// Stores a program number: refused outside the range, else shown as text.
void put_numeric(FieldRecord& f, const std::string& text, double number, std::string_view format,
                 const char* routine) {
  if (yyDialogNumericOutOfRange(f.data.minimum, f.data.maximum, number)) return yyerror(1009, routine);
  yyDialogPutText(f, text, number, format, false);
}

void get_numeric(int fieldid, double& value, int& error, const char* routine) {
  error = 0;
  FieldRecord* f = yyDialogCurrentField(fieldid, routine);
  if (!f) {
    error = -1;
    return;
  }
  if (!numeric(*f)) {
    yyerror(1006, routine);
    error = -1;
    return;
  }
  error = yyDialogNumericValue(f->data, yyDialogGetText(*f), value);
  if (error) yyerror(error, routine);
}

bool toggle(const FieldRecord& f) { return f.type == kCheckbox || f.type == kRadio; }

}  // namespace

void WDialogPutString(int fieldid, std::optional<std::string_view> text) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogPutString");
  if (!f) return;
  yyDialogPutText(*f, trim_right(text.value_or(std::string_view{})), 0.0, {}, false);
}

void WDialogGetString(int fieldid, std::string& text) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogGetString");
  if (!f || f->textKind == 0) {
    if (f) yyerror(1006, "WDialogGetString");
    assign_out(text, "");
    return;
  }
  const std::string value = yyDialogGetText(*f);
  // A fixed-width variable is filled up to a whole character, never into one.
  if (!text.empty() && value.size() > text.size() && yyIsUtf8(value))
    assign_out(text, std::string_view(value).substr(0, yyUtf8Cut(value, text.size())));
  else
    assign_out(text, value);
}

void WDialogGetStringLength(int fieldid, int& length) {
  length = 0;
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogGetStringLength");
  if (!f) return;
  if (f->textKind == 0) return yyerror(1006, "WDialogGetStringLength");
  const std::string value = yyDialogGetText(*f);
  length = static_cast<int>(yyIsUtf8(value) ? yyUtf8Length(value) : value.size());
}

void WDialogPutInteger(int fieldid, int value) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogPutInteger");
  if (!f) return;
  if (!numeric(*f)) return yyerror(1006, "WDialogPutInteger");
  std::string text(12, ' ');
  yyint2st(value, text);
  put_numeric(*f, trim_both(text), value, {}, "WDialogPutInteger");
}

void WDialogPutReal(int fieldid, float value, std::string_view format) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogPutReal");
  if (!f) return;
  if (!numeric(*f)) return yyerror(1006, "WDialogPutReal");
  std::string fmt(trim_right(format));
  if (fmt.find_first_not_of(' ') == std::string::npos) fmt = f->data.format;
  if (fmt.empty()) fmt = ds.cNumDefFormat;
  std::string text(100, ' ');
  yyrea2st(value, text, fmt);
  put_numeric(*f, trim_both(text), value, trim_right(format), "WDialogPutReal");
}

void WDialogGetInteger(int fieldid, int& value) {
  double v = 0;
  int err = 0;
  get_numeric(fieldid, v, err, "WDialogGetInteger");
  value = err ? zelvy_data::data().iundef : static_cast<int>(v);
}

void WDialogGetReal(int fieldid, float& value) {
  double v = 0;
  int err = 0;
  get_numeric(fieldid, v, err, "WDialogGetReal");
  value = err ? zelvy_data::data().rundef : static_cast<float>(v);
}

void WDialogPutCheckBox(int fieldid, int state) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogPutCheckBox");
  if (!f) return;
  if (f->type != 9) return yyerror(1006, "WDialogPutCheckBox");
  XmToggleButtonSetState(f->widget, state == 1 ? True : False, False);
}

void WDialogGetCheckBox(int fieldid, int& state) {
  state = 0;
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogGetCheckBox");
  if (!f) return;
  if (!toggle(*f)) return yyerror(1006, "WDialogGetCheckBox");
  state = XmToggleButtonGetState(f->widget) ? 1 : 0;
}

void WDialogPutRadioButton(int fieldid) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogPutRadioButton");
  if (!f) return;
  if (f->type != 10) return yyerror(1006, "WDialogPutRadioButton");
  for (FieldRecord& g : ds.wDialogInfo[ds.iDlgCur].fields)
    if (g.type == 10 && g.radioGroup == f->radioGroup) XmToggleButtonSetState(g.widget, &g == f, False);
}

void WDialogGetRadioButton(int fieldid, int& position) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogGetRadioButton");
  if (!f) {
    position = zelvy_data::data().iundef;
    return;
  }
  if (f->type != 10) {
    position = zelvy_data::data().iundef;
    return yyerror(1006, "WDialogGetRadioButton");
  }
  // The position counts from the group's first button in table order.
  const auto& fields = ds.wDialogInfo[ds.iDlgCur].fields;
  int first = -1;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const FieldRecord& g = fields[i];
    if (g.type != 10 || g.radioGroup != f->radioGroup) continue;
    if (first < 0) first = static_cast<int>(i);
    if (XmToggleButtonGetState(g.widget)) {
      position = static_cast<int>(i) - first + 1;
      return;
    }
  }
  position = zelvy_data::data().iundef;
  yyerror(1010, "WDialogGetRadioButton");
}

void WDialogClearField(int fieldid) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogClearField");
  if (!f) return;
  switch (f->type) {
    case 9: XmToggleButtonSetState(f->widget, False, False); break;
    case 10:
      for (FieldRecord& g : ds.wDialogInfo[ds.iDlgCur].fields)
        if (g.type == 10 && g.radioGroup == f->radioGroup) XmToggleButtonSetState(g.widget, False, False);
      break;
    case 11: case 12: yyDialogClearMenu(*f); break;
    case 4: case 5: case 6: case 7: yyDialogPutText(*f, "", 0.0, {}, true); break;
    case 1: case 3: case 8: yyDialogPutText(*f, "", 0.0, {}, true); break;
    default: break;
  }
}

void WDialogRangeInteger(int fieldid, std::optional<int> minimum, std::optional<int> maximum) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogRangeInteger");
  if (!f) return;
  if (!numeric(*f)) return yyerror(1006, "WDialogRangeInteger");
  double lo = 1000.0, hi = -1000.0;
  if (minimum || maximum) {
    lo = minimum ? *minimum : -2147483647.0;
    hi = maximum ? *maximum : 2147483647.0;
  }
  f->data.minimum = lo;
  f->data.maximum = hi;
}

void wdialograngeoptions(int option, int value) {
  if (option == 4) ds.bRangeClear = value != 0;
}

void yydialogfieldoptions(int fieldid, int option, int value, int& error) {
  error = 0;
  if (zelvy_data::data().icurdialog == 0 || ds.iDlgCur < 0) {
    error = 1005;
    return;
  }
  const int fi = yyDialogFindField(fieldid, ds.iDlgCur);
  if (fi < 0) {
    error = 1006;
    return;
  }
  FieldRecord& f = ds.wDialogInfo[ds.iDlgCur].fields[static_cast<std::size_t>(fi)];
  const bool on = value != 0;
  switch (option) {
    case 3:
      if (f.type == kString || numeric(f) || f.type == kCombo || f.type == kGrid) f.reportEveryChange = on;
      else error = 1006;
      break;
    case 4:
      if (numeric(f) || f.type == kGrid) f.allowClear = on;
      else error = 1006;
      break;
    case 5:
      if (f.type == kList || f.type == kTreeview || f.type == kGrid || f.type == kTab ||
          (f.type == kCombo && (f.style & field_style::kComboKindMask) == field_style::kComboSimple))
        f.extraFlags = on ? (f.extraFlags | field_extra::kRightSelects) : (f.extraFlags & ~field_extra::kRightSelects);
      else error = 1006;
      break;
    default:
      if (f.type != kGrid) error = 1006;  // the grid's own options come with the grid
      break;
  }
}

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
bool toggle(const FieldRecord& f) { return f.type == kCheckbox || f.type == kRadio; }

std::string_view trim_right(std::string_view t) {
  while (!t.empty() && (t.back() == ' ' || t.back() == '\0')) t.remove_suffix(1);
  return t;
}

std::string trim_both(std::string s) {
  s.assign(trim_right(s));
  const std::size_t lead = s.find_first_not_of(' ');
  return lead == std::string::npos ? std::string{} : s.substr(lead);
}

// The current dialog's field, or 1005 / 1006 in `error`.
FieldRecord* current_field(int fieldid, int& error) {
  error = 0;
  if (zelvy_data::data().icurdialog == 0 || ds.iDlgCur < 0 || ds.wDialogInfo[ds.iDlgCur].identifier == -1) {
    error = 1005;
    return nullptr;
  }
  FieldRecord* f = yyDialogGetField(fieldid, ds.iDlgCur);
  if (!f) error = 1006;
  return f;
}

// Radio buttons of one group, in table order.
template <typename Visit>
void radio_group(const FieldRecord& f, Visit visit) {
  auto& fields = ds.wDialogInfo[ds.iDlgCur].fields;
  for (std::size_t i = 0; i < fields.size(); ++i)
    if (fields[i].type == kRadio && fields[i].radioGroup == f.radioGroup) visit(i, fields[i]);
}

void report(int error, const char* routine) {
  if (error) yyerror(error, routine);
}

}  // namespace

// ---- The C layer -----------------------------------------------------------

void yyDialogRange(FieldRecord& f, double minimum, double maximum) {
  f.data.minimum = minimum;
  f.data.maximum = maximum;
}

void yydialogputstring_(int fieldid, std::string_view text, int& error) {
  FieldRecord* f = current_field(fieldid, error);
  if (f) yyDialogPutString(*f, 0.0, text, {}, false);
}

void yydialoggetstring_(int fieldid, std::string& text, int& error) {
  FieldRecord* f = current_field(fieldid, error);
  if (f && f->textKind == 0) error = 1006;
  if (error) {
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

void yydialoggetstringlength_(int fieldid, int& length, int& error) {
  length = 0;
  FieldRecord* f = current_field(fieldid, error);
  if (f && f->textKind == 0) error = 1006;
  if (error) return;
  const std::string value = yyDialogGetText(*f);
  length = static_cast<int>(yyIsUtf8(value) ? yyUtf8Length(value) : value.size());
}

void yydialograngecheck_(int fieldid, double number, int& error) {
  FieldRecord* f = current_field(fieldid, error);
  if (f && !numeric(*f)) error = 1006;
  if (!error && yyDialogNumericOutOfRange(f->data.minimum, f->data.maximum, number)) error = 1009;
}

void yydialogputnumeric_(int fieldid, std::string_view text, double number, std::string_view format, int& error) {
  yydialograngecheck_(fieldid, number, error);
  if (error) return;  // the field keeps what it had
  yyDialogPutString(*current_field(fieldid, error), number, text, format, false);
}

void yydialoggetnumeric_(int fieldid, double& value, int& error) {
  FieldRecord* f = current_field(fieldid, error);
  if (f && !numeric(*f)) error = 1006;
  if (error) return;
  error = yyDialogNumericValue(f->data, yyDialogGetText(*f), value);
}

void yydialoggetformat_(int fieldid, std::string& format, int& error) {
  FieldRecord* f = current_field(fieldid, error);
  if (f && !numeric(*f)) error = 1006;
  format = error ? std::string{} : f->data.format;
}

void yydialogputcheckbox_(int fieldid, int state, int& error) {
  FieldRecord* f = current_field(fieldid, error);
  if (f && f->type != kCheckbox) error = 1006;
  if (error) return;
  XmToggleButtonSetState(f->widget, state == 1 ? True : False, False);
}

void yydialoggetcheckbox_(int fieldid, int& state, int& error) {
  state = 0;
  FieldRecord* f = current_field(fieldid, error);
  if (f && !toggle(*f)) error = 1006;
  if (error) return;
  state = XmToggleButtonGetState(f->widget) ? 1 : 0;
}

void yydialogputradiobutton_(int fieldid, int& error) {
  FieldRecord* f = current_field(fieldid, error);
  if (f && f->type != kRadio) error = 1006;
  if (error) return;
  radio_group(*f, [f](std::size_t, FieldRecord& g) { XmToggleButtonSetState(g.widget, &g == f, False); });
}

void yydialoggetradiobutton_(int fieldid, int& position, int& error) {
  position = zelvy_data::data().iundef;
  FieldRecord* f = current_field(fieldid, error);
  if (f && f->type != kRadio) error = 1006;
  if (error) return;
  // The position counts from the group's first button in table order.
  long first = -1, set = -1;
  radio_group(*f, [&](std::size_t i, FieldRecord& g) {
    if (first < 0) first = static_cast<long>(i);
    if (set < 0 && XmToggleButtonGetState(g.widget)) set = static_cast<long>(i);
  });
  if (set < 0) error = 1010;
  else position = static_cast<int>(set - first + 1);
}

void yydialogclearfield_(int fieldid, int& error) {
  FieldRecord* f = current_field(fieldid, error);
  if (!error) yyDialogField(2, ds.wDialogInfo[ds.iDlgCur], *f);
}

void yydialograngenumeric_(int fieldid, double minimum, double maximum, int& error) {
  FieldRecord* f = current_field(fieldid, error);
  if (f && !numeric(*f)) error = 1006;
  if (!error) yyDialogRange(*f, minimum, maximum);
}

// ---- Public routines -------------------------------------------------------

void WDialogPutString(int fieldid, std::optional<std::string_view> text) {
  int err = 0;
  yydialogputstring_(fieldid, trim_right(text.value_or(std::string_view{})), err);
  report(err, "WDialogPutString");
}

void WDialogGetString(int fieldid, std::string& text) {
  int err = 0;
  yydialoggetstring_(fieldid, text, err);
  report(err, "WDialogGetString");
}

void WDialogGetStringLength(int fieldid, int& length) {
  int err = 0;
  yydialoggetstringlength_(fieldid, length, err);
  report(err, "WDialogGetStringLength");
}

void WDialogPutInteger(int fieldid, int value) {
  std::string text(12, ' ');
  yyint2st(value, text);
  int err = 0;
  yydialogputnumeric_(fieldid, trim_both(text), value, {}, err);
  report(err, "WDialogPutInteger");
}

void WDialogPutReal(int fieldid, float value, std::string_view format) {
  int err = 0;
  std::string fmt(trim_right(format));
  if (fmt.find_first_not_of(' ') == std::string::npos) yydialoggetformat_(fieldid, fmt, err);
  if (err) return report(err, "WDialogPutReal");
  if (fmt.empty()) fmt = ds.cNumDefFormat;
  std::string text(100, ' ');
  yyrea2st(value, text, fmt);
  yydialogputnumeric_(fieldid, trim_both(text), value, trim_right(format), err);
  report(err, "WDialogPutReal");
}

void WDialogGetInteger(int fieldid, int& value) {
  double v = 0;
  int err = 0;
  yydialoggetnumeric_(fieldid, v, err);
  value = err ? zelvy_data::data().iundef : static_cast<int>(v);
  report(err, "WDialogGetInteger");
}

void WDialogGetReal(int fieldid, float& value) {
  double v = 0;
  int err = 0;
  yydialoggetnumeric_(fieldid, v, err);
  value = err ? zelvy_data::data().rundef : static_cast<float>(v);
  report(err, "WDialogGetReal");
}

void WDialogPutCheckBox(int fieldid, int state) {
  int err = 0;
  yydialogputcheckbox_(fieldid, state, err);
  report(err, "WDialogPutCheckBox");
}

void WDialogGetCheckBox(int fieldid, int& state) {
  int err = 0;
  yydialoggetcheckbox_(fieldid, state, err);
  report(err, "WDialogGetCheckBox");
}

void WDialogPutRadioButton(int fieldid) {
  int err = 0;
  yydialogputradiobutton_(fieldid, err);
  report(err, "WDialogPutRadioButton");
}

void WDialogGetRadioButton(int fieldid, int& position) {
  int err = 0;
  yydialoggetradiobutton_(fieldid, position, err);
  report(err, "WDialogGetRadioButton");
}

void WDialogClearField(int fieldid) {
  int err = 0;
  yydialogclearfield_(fieldid, err);
  report(err, "WDialogClearField");
}

void WDialogRangeInteger(int fieldid, std::optional<int> minimum, std::optional<int> maximum) {
  // Both bounds absent switch the range off.
  double lo = 1000.0, hi = -1000.0;
  if (minimum || maximum) {
    lo = minimum ? *minimum : -2147483647.0;
    hi = maximum ? *maximum : 2147483647.0;
  }
  int err = 0;
  yydialograngenumeric_(fieldid, lo, hi, err);
  report(err, "WDialogRangeInteger");
}

void wdialograngeoptions(int option, int value) {
  if (option == 4) ds.bRangeClear = value != 0;
}

void yydialogfieldoptions_(int fieldid, int option, int value, int& error) {
  FieldRecord* fp = current_field(fieldid, error);
  if (error) return;
  FieldRecord& f = *fp;
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

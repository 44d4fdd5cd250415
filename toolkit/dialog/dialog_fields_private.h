// Field types and the pieces shared by the field sources of the dialog engine.
#pragma once

#include <Xm/Xm.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/kernel/display_private.h"

namespace zelvy_dialog {

inline Pixel yyDialogScheme(int i) { return zelvy_x::state().wSchemeCol[static_cast<std::size_t>(i)].pixel; }

inline bool yyDialogIsNumeric(const FieldRecord& f) { return f.type >= kInteger && f.type <= kDouble; }
inline bool yyDialogIsText(const FieldRecord& f) { return f.type == kString || yyDialogIsNumeric(f); }
inline bool yyDialogPushLike(const FieldRecord& f) {
  return (f.type == kCheckbox || f.type == kRadio) && (f.style & field_style::kPushLike);
}

}  // namespace zelvy_dialog

// Label strings in the widgets' encoding.
XmString yyDialogXmString(std::string_view text);
void yyDialogSetLabel(Widget w, std::string_view text);
int yyDialogTextWidth(int fontIndex, std::string_view text);
// Label text wrapped to the field's width unless its style forbids it.
std::string yyDialogLabelText(const FieldRecord& f, std::string_view text);
// Puts a label field's text, wrapped, at the top of the label.
void yyDialogLabelSetText(const FieldRecord& f, std::string_view text);

// Creates the widgets of one field by its type (no common tail); the text
// and numeric types, also for the grid's cells.
void yyDialogString(DialogRecord& d, FieldRecord& f);
void yyDialogInteger(DialogRecord& d, FieldRecord& f);
void yyDialogReal(DialogRecord& d, FieldRecord& f);
void yyDialogDouble(DialogRecord& d, FieldRecord& f);
void yyDialogFieldCreateType(DialogRecord& d, FieldRecord& f);

// Widget callbacks that turn user actions into the engine's messages.
void yyDialogFieldChangedStateCB(Widget w, XtPointer data, XtPointer call);
void yyDialogFieldChangedFocusEH(Widget w, XtPointer data, XEvent* event, Boolean* cont);
void yyDialogStringCB(Widget w, XtPointer data, XtPointer call);
void yyDialogButtonCB(Widget w, XtPointer data, XtPointer call);

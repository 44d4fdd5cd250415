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

// The type routines of the engine's own field types (see yyDialogField).
void yyDialogLabel(int operation, DialogRecord& d, FieldRecord& f);
void yyDialogPicture(int operation, DialogRecord& d, FieldRecord& f);
void yyDialogGroup(int operation, DialogRecord& d, FieldRecord& f);
void yyDialogButton(int operation, DialogRecord& d, FieldRecord& f);
void yyDialogCheckbox(int operation, DialogRecord& d, FieldRecord& f);
void yyDialogRadio(int operation, DialogRecord& d, FieldRecord& f);
void yyDialogList(int operation, DialogRecord& d, FieldRecord& f);
void yyDialogTab(int operation, DialogRecord& d, FieldRecord& f);
void yyDialogProgress(int operation, DialogRecord& d, FieldRecord& f);
void yyDialogTrackbar(int operation, DialogRecord& d, FieldRecord& f);
void yyDialogTreeview(int operation, DialogRecord& d, FieldRecord& f);


// Creates the widgets of one field by its type (no common tail); the text
// and numeric types, also for the grid's cells.
void yyDialogString(DialogRecord& d, FieldRecord& f);
void yyDialogInteger(DialogRecord& d, FieldRecord& f);
void yyDialogReal(DialogRecord& d, FieldRecord& f);
void yyDialogDouble(DialogRecord& d, FieldRecord& f);
void yyDialogFieldCreateType(DialogRecord& d, FieldRecord& f);
// (Re)loads the image resource of a field, on its picture background.
void yyDialogInitImage(FieldRecord& f);
// Font of a field (its own with Xft, else the toolkit's), and the argument
// that gives it to a widget.
int yyDialogFontCreate(const DialogRecord& d, const FieldRecord& f);
void yyDialogFont(Arg* args, Cardinal& n, int fontIndex);
// The flat look of an edge: that shadow thickness, in the dark shadow colour.
void yyDialogBorderStyle(Widget w, int thickness);
void yyDialogDestroyFieldCB(Widget w, XtPointer data, XtPointer call);

// Widget callbacks that turn user actions into the engine's messages.
void yyDialogFieldChangedStateCB(Widget w, XtPointer data, XtPointer call);
void yyDialogFieldChangedFocusEH(Widget w, XtPointer data, XEvent* event, Boolean* cont);
void yyDialogStringCB(Widget w, XtPointer data, XtPointer call);
void yyDialogButtonCB(Widget w, XtPointer data, XtPointer call);

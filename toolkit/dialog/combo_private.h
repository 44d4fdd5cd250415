// The toolkit's combo widget: a text line with a list of options, the list
// either always below the text (simple) or in a pop-up under it (drop-down,
// drop-down list). Class, instance record, resource names and the routines
// the dialog engine and the grid call on it.
#pragma once

#include <X11/Intrinsic.h>
#include <Xm/ManagerP.h>
#include <Xm/Xm.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

// Forms of the widget (comboType).
inline constexpr int kComboTypeSimple = 1, kComboTypeDropDown = 2, kComboTypeDropDownList = 3;
// caseConv: options and typed text folded to upper or lower case.
inline constexpr int kComboCaseUpper = 1, kComboCaseLower = 2;

// Resource names of the class beside the usual Motif ones it also takes
// (scrollBarDisplayPolicy, cursorPositionVisible, valueChangedCallback,
// highlightThickness, marginWidth, marginHeight).
inline constexpr char XmNcomboType[] = "comboType";
inline constexpr char XmNcomboDropSize[] = "comboDropSize";
inline constexpr char XmNcomboItemCount[] = "comboItemCount";
inline constexpr char XmNcomboItems[] = "comboItems";
inline constexpr char XmNtextHeight[] = "textHeight";
inline constexpr char XmNcaseConv[] = "caseConv";
inline constexpr char XmNtextWidget[] = "textWidget";
inline constexpr char XmNlengthCharacter[] = "lengthCharacter";
inline constexpr char XmNautoHScroll[] = "autoHScroll";
inline constexpr char XmNtextPixelUnused[] = "textPixelUnused";
inline constexpr char XmNitemSelect[] = "itemSelect";
inline constexpr char XmNshadowThick[] = "shadowThick";

struct ComboClassPart {
  XtPointer extension;
};

struct ComboClassRec {
  CoreClassPart core_class;
  CompositeClassPart composite_class;
  ConstraintClassPart constraint_class;
  XmManagerClassPart manager_class;
  ComboClassPart combo_class;
};

struct ComboPart {
  // Resources.
  int comboType;
  int comboDropSize;
  int comboItemCount;
  XmStringTable comboItems;
  int textHeight;
  unsigned char scrollBarDisplayPolicy;
  int caseConv;
  Boolean cursorPositionVisible;
  Widget textWidget;
  int lengthCharacter;
  Boolean autoHScroll;
  int textPixelUnused;
  int itemSelect;
  XtCallbackList valueChangedCallback;
  short shadowThick;
  short highlightThickness;
  short marginWidth, marginHeight;
  int xftFont;
  // Private.
  int textPixelHeight;
  int buttonSize;
  int textWidth;
  int usableWidth;
  Widget listWidget;
  Widget buttonWidget;
  Widget pullShell;
  int dropped;
  int textGuard;
  char* firstLetters;  // drop-down list: one lower-case byte per option
};

struct ComboRec {
  CorePart core;
  CompositePart composite;
  ConstraintPart constraint;
  XmManagerPart manager;
  ComboPart combo;
};

using ComboWidget = ComboRec*;

extern ComboClassRec comboClassRec;
extern WidgetClass comboWidgetClass;

// Shared by all combos: true while an opening list is lined up with its
// text (field changes stay silent), and the focus moves the dialog engine is
// to ignore after a list closed.
extern bool bInComboDropdown;
extern int iPopDown;

// Options: add at a position (0 the end), add a whole table at the end,
// delete, test a position's text; a deleted or replaced option that is the
// selected one empties the text first (TextClear).
void yyComboWidgetListAddItemX(Widget w, XmString item, int position);
void yyComboWidgetListAddItemsX(Widget w, std::span<const XmString> items);
void yyComboWidgetListDeleteItemX(Widget w, int position);
int yyComboWidgetListMatchItemX(Widget w, XmString item, int position);
void yyComboWidgetTextClearX(Widget w, int position);
// Places the widget; the height given beyond the text's becomes the list's.
void yyComboWidgetConfigureWidgetX(Widget w, int x, int y, int width, int height);
// Closes an open list.
void yyComboWidgetDeactivateComboX(Widget w);
// 1 opens the list, -1 closes it, 0 toggles.
void yyComboWidgetPopUpDown(Widget w, int request);
// The text of an option, from 1; empty outside the options.
std::string yyComboWidgetItemTextX(Widget w, int position);

// Option matching on lower-case options. Kind 1: the option equal to the
// text, ignoring case, searched from the first. Kind 2: the next option after
// `index` (wrapping round) whose first letter is the text's first character.
// Returns the option from 0, -1 for none.
int yyComboWidgetMatchOption(int kind, std::span<const std::string> lowerOptions, int index, std::string_view text);
// Folds ASCII letters of UTF-8 text (other bytes stay) by caseConv.
std::string yyComboWidgetFold(std::string_view text, int caseConv);

// The combo as dialog field type 11. Operations on a field: destroy, create,
// clear (options and text). A grid creates its combo cells through
// yyDialogComboIn in its own widget, with the cell capability already in the
// field's capabilities; the list opens in a shell of its own, so no parent
// clips it.
struct DialogRecord;
struct FieldRecord;
inline constexpr int kFieldDestroy = 0, kFieldCreate = 1, kFieldClear = 2;
void yyDialogCombo(int operation, DialogRecord& d, FieldRecord& f);
void yyDialogComboIn(Widget parent, DialogRecord& d, FieldRecord& f);

// The context menu of text: Cut, Copy, Paste, Delete and Select All, for the
// text fields of dialogs, the text cells of grids and texts outside dialogs.
// It is one of the toolkit's own floating menus; its choice comes back
// through the loop.
#include <X11/IntrinsicP.h>
#include <Xm/CutPaste.h>
#include <Xm/Text.h>

#include <array>
#include <string>

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/kernel/clipboard_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/menu.h"
#include "toolkit/kernel/menu_private.h"

namespace {

enum TextMenuItem { kCut = 32132, kCopy = 32133, kPaste = 32134, kDelete = 32135, kSelectAll = 32136 };
constexpr int kDialogText = 1, kGridCell = 2, kEditorText = 3;

// The text the open menu acts on; a widget that goes meanwhile clears it.
struct TextMenuState {
  Widget widget = nullptr;
  int owner = 0;
};
TextMenuState& menu_state() {
  static TextMenuState s;
  return s;
}

void forget(Widget, XtPointer, XtPointer) { menu_state().widget = nullptr; }

// Whether the clipboard holds text, or is busy and so may.
bool clipboard_has_text(Widget w) {
  if (!XtIsRealized(w)) return false;
  unsigned long length = 0;
  const int status = XmClipboardInquireLength(XtDisplay(w), XtWindow(w), const_cast<char*>("STRING"), &length);
  return (status == XmClipboardSuccess && length > 0) || status == XmClipboardLocked;
}

MenuDescriptor item(const char* text, int mnemonic, int id, bool enabled) {
  MenuDescriptor d;
  d.text = text;
  d.mnemonic = mnemonic;
  d.id = id;
  d.flags = enabled ? 0 : kMenuGreyed;
  return d;
}

}  // namespace

void yyDialogSelectAll(Widget text) {
  if (!text || !XmIsText(text)) return;
  // Selecting scrolls to the insertion point; the view stays where it was.
  const XmTextPosition top = XmTextGetTopCharacter(text);
  XmTextDisableRedisplay(text);
  XmTextSetSelection(text, 0, XmTextGetLastPosition(text), XtLastTimestampProcessed(XtDisplay(text)));
  XmTextSetTopCharacter(text, top);
  XmTextEnableRedisplay(text);
}

namespace {

// One menu for the three owners; only who gets the choice differs.
void show_text_menu(Widget text, int x, int y, int owner) {
  yyMenuDeactivate();
  if (!text || !XmIsText(text)) return;
  XmTextPosition left = 0, right = 0;
  const bool selection = XmTextGetSelectionPosition(text, &left, &right) && left < right;
  // A drop-down list combo's text is not editable either.
  const bool readOnly = !XmTextGetEditable(text);
  const std::array<MenuDescriptor, 6> items = {
      item("Cut", 2, kCut, !readOnly && selection),
      item("Copy", 0, kCopy, selection),
      item("Paste", 0, kPaste, !readOnly && clipboard_has_text(text)),
      item("Delete", 0, kDelete, !readOnly && selection),
      item("", -1, 0, true),
      item("Select All", 7, kSelectAll, true),
  };
  TextMenuState& s = menu_state();
  if (s.widget) XtRemoveCallback(s.widget, XtNdestroyCallback, forget, nullptr);
  s.widget = text;
  s.owner = owner;
  XtAddCallback(text, XtNdestroyCallback, forget, nullptr);
  auto menu = yyMenuLoadDynamicMenu(items);
  menu->TextMenu = owner;
  menu->Owner = -1;
  zelvy_menu::state().iFloatMenu = false;
  zelvy_menu::state().pwFloatMenu = std::move(menu);
  MenuRecord& m = *zelvy_menu::state().pwFloatMenu;
  yyMenuCreateItems(m, kMenuKindFloating, -1);
  // No window: the text keeps the keyboard, the menu takes no grab.
  yyMenuFloating(x, y, -1, m);
}

}  // namespace

void yyDialogTextMenu(Widget text, int x, int y) { show_text_menu(text, x, y, kDialogText); }

void yyGridTextMenu(Widget cell, int x, int y) { show_text_menu(cell, x, y, kGridCell); }

void yyEditTextMenu(Widget text, int x, int y) { show_text_menu(text, x, y, kEditorText); }

void yyDialogProcessTextMenu(int owner, int chosen) {
  TextMenuState& s = menu_state();
  Widget w = s.widget;
  if (!w || owner != s.owner || w->core.being_destroyed) return;
  XtRemoveCallback(w, XtNdestroyCallback, forget, nullptr);
  s.widget = nullptr;
  const Time time = XtLastTimestampProcessed(XtDisplay(w));
  switch (chosen) {
    case kCut: yyXmTextCut(w, time); break;
    case kCopy: yyXmTextCopy(w, time); break;
    case kPaste: yyXmTextPaste(w); break;
    case kDelete: XmTextRemove(w); break;
    case kSelectAll: yyDialogSelectAll(w); break;
    default: break;
  }
  // The text keeps the keyboard it had when the menu opened.
  XmProcessTraversal(w, XmTRAVERSE_CURRENT);
}

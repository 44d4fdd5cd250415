// Tree view fields inside the engine.
#pragma once

#include <X11/Intrinsic.h>

#include "toolkit/dialog/dialog_private.h"

void yyDialogTreeviewCreate(DialogRecord& d, FieldRecord& f);
// Clearing: every item goes, nothing stays selected.
void yyDialogTreeviewClear(FieldRecord& f);
// The first item of that identifier in depth order, a node before its children.
Widget yyDialogTreeviewFind(FieldRecord& f, int identifier);
// The item under a point of the container.
Widget yyDialogTreeviewFindXY(FieldRecord& f, int x, int y);
// An item and its subtree; with selection care, a selected item inside it
// hands the selection to the next sibling, else the parent, else the previous.
void yyDialogTreeviewDelete(FieldRecord& f, Widget item, bool withSelection);
bool yyDialogTreeviewCheckSel(Widget item, Widget selected);
// An item's identifier (0 for none); the selected item; selecting one,
// scrolled into view, as a context click does.
int yyDialogTreeviewItemId(Widget item);
Widget yyDialogTreeviewSelected(FieldRecord& f);
void yyDialogTreeviewSelect(FieldRecord& f, Widget item);
void yyDialogTreeviewColour(Widget item, Pixel colour);
void yyDialogTreeviewInit2(FieldRecord& f, const void* rows, int row, Widget parent, int selected);
void yyDialogTreeviewDeleteCB(Widget item, XtPointer data, XtPointer call);
void yyDialogTreeviewSelectCB(Widget container, XtPointer data, XtPointer call);
void yyDialogTreeviewExpandCB(Widget container, XtPointer data, XtPointer call);
void yyDialogTreeviewScrollCB(Widget scrolled, XtPointer data, XtPointer call);

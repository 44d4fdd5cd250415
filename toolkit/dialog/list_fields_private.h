// List fields inside the engine: the compound string of one option (tabs
// expanded for lists that ask for it) and scrolling a position into view.
#pragma once

#include <Xm/Xm.h>

#include <string_view>

#include "toolkit/dialog/dialog_private.h"

XmString yyDialogListXmString(const FieldRecord& f, std::string_view text);
void yyDialogListScroll(Widget list, int position);
// Adds an option at a position (0 the end) of a combo or list.
void yyDialogPutMenu(FieldRecord& f, std::string_view text, int position);

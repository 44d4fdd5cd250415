// The grid's print dialog: the table's lines, labels, colours and scale, with
// the page setup a button away.
#pragma once

#include "toolkit/base/zelvy_data.h"
#include "toolkit/kernel/comdlg_attach.h"

// Shows the dialog on the options and page record, holding the program's
// other windows while it is up; `ok` 1 when the user chose Print, the options then updated.
// A dialog missing from the resources says so and gives `ok` 0.
void yycomdlggridprint_(int showMode, GridPrintOptions& options, zelvy_data::PageSetup& page, int& ok);

// The demonstration dialog: the window that carries it, the parts filled in
// by program, and a line of text for each message it raises. Shared by the
// demonstration program and the display tests that drive it.
#pragma once

#include <string>

#include "toolkit/kernel/message.h"

// Installs the tables and starts the toolkit; once per process.
void zelvdemo_start();
// Opens the root window with the dialog, fills it and makes it current.
void zelvdemo_open();
// Opens the dialog with a strip of tabs in rows, modeless, and makes it current.
void zelvdemo_open_rows();
// Closes the window and the dialog.
void zelvdemo_close();
// What a message means, read back through the public routines.
std::string zelvdemo_describe(int type, const MessageRecord& m);

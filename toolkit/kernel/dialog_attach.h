// Where the dialog engine, a layer above the kernel, joins the windows. The
// program attaches it once before the first window opens (yyDialogAttach in
// the dialog engine does that); until then windows carry no dialog.
#pragma once

struct DialogEngineHooks {
  void (*init)() = nullptr;      // the display is open and a root window is opening
  void (*shutdown)() = nullptr;  // the root window is closing: every dialog goes
  // The size in pixels of a resource dialog that a window is to carry, and
  // whether it may be resized; then showing it in the window's client.
  void (*pixels)(int dialogid, int& width, int& height, bool& resizable) = nullptr;
  void (*combine)(int dialogid, int handle) = nullptr;
};

void yyAttachDialogEngine(const DialogEngineHooks& hooks);

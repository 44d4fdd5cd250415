// Where the dialog engine, a layer above the kernel, joins the windows. The
// program attaches it once before the first window opens (yyDialogAttach in
// the dialog engine does that); until then windows carry no dialog.
#pragma once

#include <cstdint>

// Bits of a dialog's style word that decide whether a window can carry it: a
// child dialog embedded in a window, with neither title bar nor close box.
namespace dialog_style {
constexpr std::uint32_t kChild = 0x40000000;
constexpr std::uint32_t kEmbedded = 0x400;
constexpr std::uint32_t kTitleBar = 0xC00000;
constexpr std::uint32_t kCloseBox = 0x80000;
constexpr bool can_be_carried(std::uint32_t style) {
  return (style & kChild) && (style & kEmbedded) && !(style & kTitleBar) && !(style & kCloseBox);
}
}  // namespace dialog_style

struct DialogEngineHooks {
  void (*init)() = nullptr;      // the display is open and a root window is opening
  void (*shutdown)() = nullptr;  // the root window is closing: every dialog goes
  // The size in pixels of a resource dialog that a window is to carry, and
  // whether it may be resized; then showing it in the window's client.
  void (*pixels)(int dialogid, int& width, int& height, bool& resizable) = nullptr;
  void (*combine)(int dialogid, int handle) = nullptr;
  // A modal level starts (1) or ends (0): the dialogs the program draws on
  // keep their picture meanwhile; false when a picture could not be kept.
  bool (*freeze)(int on) = nullptr;
};

void yyAttachDialogEngine(const DialogEngineHooks& hooks);

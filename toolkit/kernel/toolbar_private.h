// Toolbars, the toolkit's side: the toolbar records of the windows and the
// routines the window layout and the widgets call.
#pragma once

#include "toolkit/base/check.h"

#include <X11/Intrinsic.h>

#include <array>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/base/zelvy_data.h"
#include "toolkit/kernel/toolbar.h"

inline constexpr Pixmap kNoPixmap = 2;
inline constexpr int kToolbarDynamic = -1;

struct ToolbarRecord {
  int ToolbarId = 0;  // kToolbarDynamic for one the toolkit built
  Widget Bar = nullptr;
  int ButtonWidth = 0, ButtonHeight = 0;
  int Thickness = 0;
  int Window = -1;
  int Slot = 0;
  std::vector<int> ButtonIds;  // 0 a separator
  std::vector<Widget> ButtonWidgets;
  std::vector<Pixmap> ButtonPixmaps, GreyPixmaps;
  std::vector<int> ButtonStates;
  std::vector<std::optional<std::string>> ButtonTexts;
  std::vector<int> ImageIndex;  // place of a button's image in the strip, -1 none
  Widget LastButton = nullptr;
  int ButtonCount() const { return static_cast<int>(ButtonIds.size()); }
};

namespace zelvy_toolbar {
constexpr int kSlots = zelvy_data::kMaxWindow + 1;
struct State {
  zelv::Slots<std::array<std::unique_ptr<ToolbarRecord>, kToolbarSlots>, kSlots> pwToolbar;
  // Run-time tooltips by window: item identifier and text.
  zelv::Slots<std::vector<std::pair<int, std::string>>, kSlots> pTooltip;
};
State& state();
}  // namespace zelvy_toolbar

// Places a bar; sizes below 1 become 1. Realises and manages it on first use.
void yyMenuToolbarResize(int x, int y, int width, int height, ToolbarRecord& bar);
// Destroys a toolbar with its buttons and pixmaps and clears its slot.
void yyMenuToolbarDestroy(std::unique_ptr<ToolbarRecord>& bar);
// A record for a resource toolbar (a subset when `ids` is not empty) and its
// image strip (kNoPixmap none, else the caller's); null and error 1002 when
// the resources lack it.
std::unique_ptr<ToolbarRecord> yyMenuToolbarLoad(int toolbarid, std::span<const int> ids, Pixmap& strip,
                                                 int& stripheight, int& error);
// The bar and button widgets of a loaded record in a window's frame, with
// the images of `strip` (kNoPixmap none), which is freed afterwards.
void yyMenuToolbarCreateItems(ToolbarRecord& bar, Pixmap strip, int stripheight);
// Sets a slot to a toolbar of the resources without re-laying the window
// out; the window's opening uses it.
void yyMenuToolbarCreate(int toolbarid, int window, int slot, std::span<const int> ids, int& error);
// The button at a position of a strip, of the button's size; a strip lower
// than the button leaves the rest in the background.
Pixmap yyMenuGetButtonImage(Pixmap strip, int index, int width, int height, int stripheight);
void yyMenuSetToolbarItem(ToolbarRecord& bar, int index, int state);
// Lays a window's bars out inside the rectangle left after menu and status
// bar, which comes back shrunk to what the client gets.
void yyMenuToolbarLayout(int window, int& x, int& y, int& width, int& height);
// All toolbars of a closing window and its run-time tooltips.
void yyMenuToolbarWindowClosed(int window);
void yyMenuTooltipsDelRuntime(int window);
// The record that owns a button or bar widget, and the button's position (-1 the bar).
ToolbarRecord* yyMenuToolbarOf(Widget w, int& index);
// The same by X window, for the message loop (context clicks on a toolbar).
ToolbarRecord* yyMenuToolbarOfWindow(Window xwin, int& index);

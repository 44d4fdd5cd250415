// Status bar: parts along the bottom edge of a window, drawn by the toolkit.
#pragma once

#include "toolkit/kernel/statusbar.h"

#include <X11/Xft/Xft.h>
#include <X11/Xlib.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct StatusBarRecord {
  Window BarWindow = 0;
  int PartCount = 0;
  std::vector<Window> PartWindows;
  std::vector<int> PartWidths;  // pixels; -1 for the part that takes the rest
  std::vector<int> PartStyles;  // 0 none, 1 sunken, 2 raised
  std::vector<int> PartAlign;   // 0 left, 1 centred, 2 right
  int StretchPart = -1;
  int FixedWidth = 0;
  std::vector<std::optional<std::string>> PartTexts;
  Window PromptWindow = 0;
  int DisplayMode = 1;  // 1 parts, 2 prompt
  std::string PromptText;  // a copy: the menu that set it may change its texts
  int StartOffset = 0;
};

namespace zelvy_sbar {
struct State {
  XftFont* xftSBarFont = nullptr;
  XFontStruct* coreSBarFont = nullptr;  // when client-side fonts are off
  int iSBarHeight = 0;
  int iSBarYText = 0;
  std::vector<std::unique_ptr<StatusBarRecord>> psbarInfo;  // by window handle
  // Drawing resources, made at stage 2 of the first bar.
  GC sbarGC = nullptr;
  XftDraw* sbarDraw = nullptr;
  XftColor sbarColour{};
  bool stage2 = false;
};

// The one instance, defined in statusbar.cpp.
State& state();
}  // namespace zelvy_sbar

// Stage 1: font and height, before the first frame size; stage 2: drawing resources.
void yyWindowStatusBarInit(int stage);
void yyWindowStatusBarCreate(int handle);
void yyWindowStatusBarDraw(int handle);
// Draws the part that owns an X window (or the whole bar); false when no bar owns it.
bool yyWindowStatusBarExpose(int handle, Window xwin);
void yyWindowStatusBarPrompt(int handle, bool show, std::string_view text);
void yyWindowStatusBarSwitch(int direction, int handle);
void yyWindowStatusBarShutdown(int handle);
// Follows a new frame size.
void yyWindowStatusBarResize(int handle);
// The part (from 1) whose window holds a screen position, 0 when none.
int yyWindowStatusBarPartAt(int handle, int rootx, int rooty);
// True when an X window is the bar or one of its parts or its prompt.
bool yyWindowStatusBarOwns(int handle, Window xwin);
// The text of a part (from 1), empty when none.
std::string yyWindowStatusBarText(int handle, int part);

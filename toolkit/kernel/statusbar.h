// The status bar of a window: parts, their widths and styles, and texts.
#pragma once

#include <optional>
#include <span>
#include <string_view>

// Rebuilds the selected window's status bar with `count` parts.
void WindowStatusBarParts(int count, std::span<const int> widths, std::span<const int> styles = {},
                          std::optional<int> flags = {});
// Writes a text into a part (from 1) of a window's status bar.
void WindowOutStatusBar(int part, std::string_view text, std::optional<int> window = {});

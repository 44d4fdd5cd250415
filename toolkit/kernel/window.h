// Windows: the root window, child windows, selection, units, status bar.
#pragma once

#include <optional>
#include <span>
#include <string_view>

// Opens the root window. Toolbar identifiers: top, left, right, bottom, 0 for none.
void WindowOpen(std::optional<int> flags = {}, std::optional<int> x = {}, std::optional<int> y = {},
                std::optional<int> width = {}, std::optional<int> height = {},
                std::optional<int> menuid = {}, std::span<const int> toolbarids = {},
                std::optional<int> dialogid = {}, std::string_view title = {},
                std::optional<int> colourcount = {}, std::optional<int> colour = {});
// Closes the root window and everything in it.
void WindowClose();
// Rebuilds the selected window's status bar with `count` parts.
void WindowStatusBarParts(int count, std::span<const int> widths, std::span<const int> styles = {},
                          std::optional<int> flags = {});
// Writes a text into a part (from 1) of a window's status bar.
void WindowOutStatusBar(int part, std::string_view text, std::optional<int> window = {});

// Windows: the root window, child windows, selection, units.
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
// Opens a child window; its handle (1..50) comes back in `handle`, -1 on failure.
// With flag 16 (inside the parent) position and size are window units of the parent.
void WindowOpenChild(int& handle, std::optional<int> flags = {}, std::optional<int> x = {},
                     std::optional<int> y = {}, std::optional<int> width = {},
                     std::optional<int> height = {}, std::optional<int> menuid = {},
                     std::span<const int> toolbarids = {}, std::optional<int> dialogid = {},
                     std::string_view title = {}, std::optional<int> parent = {},
                     std::optional<int> colour = {});
// Closes the root window and everything in it.
void WindowClose();
void WindowCloseChild(int handle);
// Makes a window the selected one; units convert by its size from then on.
void WindowSelect(int handle);
// 1, 2 client size; 3 flags; 4 selected handle; 5, 6 position; 9 shown (1) or hidden (3); ...
int WInfoWindow(int item);
// Window units run from 0 to 9999 over the selected window's client area.
void WindowUnitsToPixels(int unitx, int unity, int& pixelx, int& pixely);
void WindowUnitsFromPixels(int pixelx, int pixely, int& unitx, int& unity);

// Internal: one axis of the unit conversion, for a client extent of `size` pixels.
int yyunitstopixels(int unit, int size);
int yyunitsfrompixels(int pixel, int size);
// Client-area pixels of window `handle` to screen coordinates, in place;
// false (and x, y untouched) without such a window.
bool yyWindowGetPos(int handle, int& x, int& y);
// Keeps a rectangle on the screen.
void yyWindowPositionOnScreen(int width, int height, int& x, int& y);

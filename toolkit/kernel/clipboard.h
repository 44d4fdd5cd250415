// The clipboard: text, bitmaps and CGM pictures shared with other programs.
// A clipboard that another program holds locked is asked again.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

// What the clipboard holds (item 1 of yyinfoclipboard).
inline constexpr int kClipEmpty = 0, kClipText = 1, kClipBitmap = 2, kClipCgm = 6, kClipUnknown = -1;
// Status codes: the clipboard could not be used; the text was cut to the buffer.
inline constexpr int kClipError = 1094, kClipTruncated = 1023;

// Item 1 the format code of the contents; 2 the size in bytes of text or
// CGM data; 3, 4 width and height of a bitmap or CGM picture. Value stays as
// it was when item 1 cannot be asked.
void yyinfoclipboard(int item, int& value);
// Puts the first length - 1 bytes of a text (length counts a terminator).
void yyclipboardputstring(int& status, std::string_view text, int length);
// Reads the text into the buffer, with no terminator; length is what came.
void yyclipboardgetstring(int& length, int& status, std::span<char> buffer);
// Bitmaps by the handle of their X pixmap, which must outlive the clipboard's use of it.
void yyclipboardputbitmap(std::uint64_t pixmap, int& status);
// Copies the clipboard's bitmap to the top left of that pixmap.
void yyclipboardgetbitmap(std::uint64_t pixmap, int& status);
// A bitmap from pixels 0xBBGGRR, row by row, and back.
void yyclipboardputbitmapdata(int width, int height, std::span<const std::int32_t> pixels, int& status);
void yyclipboardgetbitmapdata(std::vector<std::int32_t>& pixels, int& status);
// A CGM picture of a width and height.
void yyclipboardputcgm(int length, int width, int height, int& status, std::span<const std::uint8_t> data);
void yyclipboardgetcgm(std::vector<std::uint8_t>& data, int& length, int& width, int& height, int& status);
// 0 lets text widgets use their own clipboard routines, any other value this layer.
void yyclipboardmethod(int method);

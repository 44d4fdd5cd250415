// The image coders behind the image driver and IGrLoadImageData. No X here.
#pragma once

#include "toolkit/graphics/raster_page.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zelvy_graph {

// A decoded picture: RGB integers, first row first, 255 - alpha in the high
// byte when asked for.
struct Picture {
  int width = 0, height = 0;
  std::vector<int> pixels;
};

// The status of a coder: 0 done; 1 the file couldn't be opened or created,
// 2 a short or bad file or a failing write, 27 a kind not handled,
// 1044 zlib, 1120 JPEG. `status` carries errno or the library's code.
struct ImageResult {
  int error = 0;
  int status = 0;
};

}  // namespace zelvy_graph

// Writers of a raster page, top row of the picture first in the file.
zelvy_graph::ImageResult yypng1(const zelvy_graph::RasterPage& page, const std::string& file);
zelvy_graph::ImageResult yybmp1(const zelvy_graph::RasterPage& page, const std::string& file, bool compress);
zelvy_graph::ImageResult yypcx1(const zelvy_graph::RasterPage& page, const std::string& file);
zelvy_graph::ImageResult yyjpeg1(const zelvy_graph::RasterPage& page, const std::string& file, int quality);

// Decoders of a whole file's bytes; `info` takes the IGrFileInfo values.
zelvy_graph::ImageResult yygrloadimagedata(std::span<const uint8_t> bytes, int type, bool alpha,
                                           zelvy_graph::Picture& picture);
// IGrFileInfo on bytes already read.
void yygrfileinfo(std::span<const uint8_t> bytes, std::array<int, 13>& info, int items);

// The PNG kinds the loader takes (colour type, depth, methods, interlace).
bool yypngchecksubtype(int ctype, int depth, int compression, int filter, int interlace);
// Restamps a BMP's file and image sizes from its length on the disk.
zelvy_graph::ImageResult yybmp2(const std::string& file, int palette);
// The screen target and pictures, in the target's pixels with Y downward.
// An area saved as a file of type 1 BMP, 2 PCX, 15 PNG, 19 JPEG (0, the
// clipboard, answers 1094); error 1 with errno when the file can't be made,
// 2 when a write fails.
void yysaveimage(int type, int x1, int y1, int x2, int y2, int quality, int dpi, int& error, int& status,
                 const std::string& file);
// The area can't be read straight from the window.
bool yyImageUsePixmap(int x1, int y1, int x2, int y2);
// Colours (first row first) into the area, turned by 0, 90, 180 or 270
// degrees; stretched over it with `scale`, by the first pixel of each source
// range (mode 1 to 3) or their mean (0, 4).
void yyloadimage(int type, int width, int height, int x1, int y1, int x2, int y2, bool scale, int mode, int rotation,
                 const std::vector<int>& data, int& error);
// A picture file into the area; a load failure goes back to the caller
// alone, the error state stands as it was.
void yyloadimagetodrawable(const std::string& file, int rotation, int x1, int y1, int x2, int y2, int& width,
                           int& height, bool scale, int mode, int& error, int& status);
// CRC-32 over a PNG chunk's type and data, continuing from `crc` (start 0).
uint32_t yyPNGcrc(uint32_t crc, std::span<const uint8_t> bytes);
// Undoes the PNG row filters in place: rows of `rowbytes` + 1 bytes, the
// first the filter type; `distance` bytes a pixel. False on a bad filter.
bool yyPNGfilter(std::span<uint8_t> data, size_t rowbytes, size_t rows, size_t distance);

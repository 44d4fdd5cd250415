// Image files: recognising image and plot files by their contents, loading
// BMP, icon, cursor, PCX, PNG and JPEG pictures into arrays of colours, and the
// zlib wrappers the PNG coder and the resource images share.
#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace zelv_graphics {
// File types, the first value of IGrFileInfo.
constexpr int kFileUnreadable = -1, kFileUnknown = 0, kFileBmp = 1, kFilePcx = 2, kFileMetafile = 3,
              kFileHpgl = 4, kFileHpgl2 = 5, kFileCgm = 6, kFilePostScript = 10, kFilePcl = 11,
              kFileEscp = 12, kFileEscpRaster = 13, kFileDxf = 14, kFilePng = 15, kFileSvg = 16,
              kFileIcon = 17, kFileCursor = 18, kFileJpeg = 19, kFile3dPlot = 20;
constexpr int kFileInfoItems = 13;
// Load option: keep the file's transparency in the high byte (255 - alpha).
constexpr int kImageKeepAlpha = 1;
}  // namespace zelv_graphics

// Fills info[0] with the file's type and, for `items` above 1, up to 13
// values: 2, 3 width and height, 4 colours, 5 sub-type, 6 bits per pixel,
// 7 compression, alpha or image count, 8, 9 hot spot, 10, 11 dots per inch,
// 12 icon compression, 13 bitmap header size (1-based item numbers).
void IGrFileInfo(std::string_view filename, std::span<int> info, int items = 1);

// Loads a picture into width x height RGB integers, first row first; the high
// byte holds 255 - alpha with kImageKeepAlpha, and is 0 otherwise. The info
// values come back as IGrFileInfo gives them. Failure leaves data empty and
// sets the error state (27 for a type not loaded here, 2 a short or bad file).
void IGrLoadImageData(std::string_view filename, std::vector<int>& data, int options = 0,
                      std::span<int> info = {});

// zlib's compress and uncompress: the length written, 0 on failure (error
// 1044 with the library's code as the status).
int WCompress(std::span<const unsigned char> in, std::span<unsigned char> out);
int WUnCompress(std::span<const unsigned char> in, std::span<unsigned char> out);

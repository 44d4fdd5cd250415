// JPEG through libjpeg: header values, loading and saving by scanline. The
// library's fatal errors jump back here instead of ending the program; the
// frames they unwind are the library's own and hold nothing to destroy.
#include "toolkit/graphics/image_files.h"
#include "toolkit/graphics/graphics_private.h"
#include "toolkit/graphics/image_private.h"

#include <csetjmp>
#include <cstdio>
// jpeglib.h wants FILE and size_t declared before it.
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <functional>
#include <memory>

namespace zg = zelvy_graph;

namespace {

constexpr int kErrorOpen = 1, kErrorWrite = 2, kErrorFormat = 27, kErrorJpeg = 1120;
constexpr size_t kMaxPixels = size_t{1} << 28;

struct JpegError {
  jpeg_error_mgr mgr;
  std::jmp_buf jump;
  int code = 0;  // the library's message code
  char text[JMSG_LENGTH_MAX] = {};
};

[[noreturn]] void yyJpegExitHandler(j_common_ptr info) {
  auto* e = reinterpret_cast<JpegError*>(info->err);
  e->code = e->mgr.msg_code;
  (*info->err->format_message)(info, e->text);
  std::longjmp(e->jump, 1);
}

// Warnings (a damaged stream the library gets over) are only noted.
void yyJpegErrorHandler(j_common_ptr info, int level) {
  auto* e = reinterpret_cast<JpegError*>(info->err);
  if (level >= 0) return;
  ++e->mgr.num_warnings;
  if (e->code == 0) e->code = e->mgr.msg_code;
}

void install(JpegError& e, jpeg_common_struct& common) {
  common.err = jpeg_std_error(&e.mgr);
  e.mgr.error_exit = yyJpegExitHandler;
  e.mgr.emit_message = yyJpegErrorHandler;
}

}  // namespace

bool yyjpegfileinfo(std::span<const uint8_t> bytes, std::array<int, 13>& info) {
  jpeg_decompress_struct cinfo{};
  JpegError err;
  install(err, *reinterpret_cast<jpeg_common_struct*>(&cinfo));
  if (setjmp(err.jump)) {
    jpeg_destroy_decompress(&cinfo);
    return false;
  }
  jpeg_create_decompress(&cinfo);
  jpeg_mem_src(&cinfo, bytes.data(), static_cast<unsigned long>(bytes.size()));
  jpeg_read_header(&cinfo, TRUE);
  info[4] = cinfo.saw_JFIF_marker ? 1 : 2;
  info[1] = static_cast<int>(cinfo.image_width);
  info[2] = static_cast<int>(cinfo.image_height);
  const int n = cinfo.num_components;
  info[3] = n >= 4 ? 0 : 1 << (8 * n);
  info[5] = 8 * n;
  if (cinfo.density_unit == 1) {
    info[9] = cinfo.X_density;
    info[10] = cinfo.Y_density;
  } else if (cinfo.density_unit == 2) {
    info[9] = static_cast<int>(cinfo.X_density * 2.54);
    info[10] = static_cast<int>(cinfo.Y_density * 2.54);
  } else {
    info[9] = info[10] = 0;
  }
  jpeg_destroy_decompress(&cinfo);
  return true;
}

namespace {

// A picture being loaded, line by line.
struct JpegLoad {
  jpeg_decompress_struct cinfo{};
  JpegError err;
  JSAMPARRAY line = nullptr;
  bool created = false;
  JpegLoad() = default;
  JpegLoad(const JpegLoad&) = delete;
  JpegLoad& operator=(const JpegLoad&) = delete;
  ~JpegLoad() {
    if (created) jpeg_destroy_decompress(&cinfo);
  }
};

}  // namespace

// Reads the header and starts the decompression: output size and components
// come back in the object.
zg::ImageResult yyJpegLoadOpen(JpegLoad& j, std::span<const uint8_t> bytes) {
  install(j.err, *reinterpret_cast<jpeg_common_struct*>(&j.cinfo));
  if (setjmp(j.err.jump)) return {kErrorJpeg, j.err.code};
  jpeg_create_decompress(&j.cinfo);
  j.created = true;
  jpeg_mem_src(&j.cinfo, bytes.data(), static_cast<unsigned long>(bytes.size()));
  jpeg_read_header(&j.cinfo, TRUE);
  j.cinfo.do_fancy_upsampling = FALSE;
  j.cinfo.do_block_smoothing = FALSE;
  // Ink separations aren't pictures of light: not loaded here.
  if (j.cinfo.jpeg_color_space == JCS_CMYK || j.cinfo.jpeg_color_space == JCS_YCCK) return {kErrorFormat, 0};
  jpeg_start_decompress(&j.cinfo);
  const size_t w = j.cinfo.output_width, h = j.cinfo.output_height;
  const int n = j.cinfo.output_components;
  if (w == 0 || h == 0 || w * h > kMaxPixels || (n != 1 && n != 3)) return {kErrorWrite, 0};
  j.line = (*j.cinfo.mem->alloc_sarray)(reinterpret_cast<j_common_ptr>(&j.cinfo), JPOOL_IMAGE,
                                         static_cast<JDIMENSION>(w * static_cast<size_t>(n)), 1);
  return {};
}

zg::ImageResult yyjpegloaddata(std::span<const uint8_t> bytes, zg::Picture& picture) {
  JpegLoad j;
  if (const auto r = yyJpegLoadOpen(j, bytes); r.error) return r;
  if (setjmp(j.err.jump)) {
    picture = {};
    return {kErrorJpeg, j.err.code};
  }
  const size_t w = j.cinfo.output_width, h = j.cinfo.output_height;
  const int n = j.cinfo.output_components;
  picture.width = static_cast<int>(w);
  picture.height = static_cast<int>(h);
  picture.pixels.assign(w * h, 0);
  while (j.cinfo.output_scanline < j.cinfo.output_height) {
    const size_t y = j.cinfo.output_scanline;
    if (jpeg_read_scanlines(&j.cinfo, j.line, 1) != 1) break;
    int* out = picture.pixels.data() + y * w;
    const JSAMPLE* p = j.line[0];
    if (n == 3)
      for (size_t x = 0; x < w; ++x, p += 3) out[x] = p[0] | p[1] << 8 | p[2] << 16;
    else
      for (size_t x = 0; x < w; ++x) out[x] = p[x] * 0x010101;
  }
  // A stream that ran dry is padded by the library with a warning: that is a
  // truncated file all the same.
  if (j.err.mgr.num_warnings > 0) {
    picture = {};
    return {kErrorJpeg, j.err.code};
  }
  jpeg_finish_decompress(&j.cinfo);
  return {};
}

namespace {

// A picture being saved, line by line.
struct JpegSave {
  jpeg_compress_struct cinfo{};
  JpegError err;
  std::unique_ptr<std::FILE, zg::FileCloser> file;
  JSAMPARRAY line = nullptr;
  bool created = false;
  JpegSave() = default;
  JpegSave(const JpegSave&) = delete;
  JpegSave& operator=(const JpegSave&) = delete;
  ~JpegSave() {
    if (created) jpeg_destroy_compress(&cinfo);
  }
};

}  // namespace

zg::ImageResult yyJpegSaveOpen(JpegSave& j, const std::string& file, int width, int height, int quality, int dpi) {
  j.file.reset(std::fopen(file.c_str(), "wb"));
  if (!j.file) return {kErrorOpen, errno};
  install(j.err, *reinterpret_cast<jpeg_common_struct*>(&j.cinfo));
  if (setjmp(j.err.jump)) return {kErrorJpeg, j.err.code};
  jpeg_create_compress(&j.cinfo);
  j.created = true;
  jpeg_stdio_dest(&j.cinfo, j.file.get());
  j.cinfo.image_width = static_cast<JDIMENSION>(width);
  j.cinfo.image_height = static_cast<JDIMENSION>(height);
  j.cinfo.input_components = 3;
  j.cinfo.in_color_space = JCS_RGB;
  jpeg_set_defaults(&j.cinfo);
  j.cinfo.density_unit = 1;
  j.cinfo.X_density = j.cinfo.Y_density = static_cast<UINT16>(dpi);
  jpeg_set_quality(&j.cinfo, std::clamp(quality, 1, 100), TRUE);
  jpeg_start_compress(&j.cinfo, TRUE);
  j.line = (*j.cinfo.mem->alloc_sarray)(reinterpret_cast<j_common_ptr>(&j.cinfo), JPOOL_IMAGE,
                                         static_cast<JDIMENSION>(3 * width), 1);
  return {};
}

// The line buffer the next line is put in before yyJpegSaveLine writes it.
JSAMPLE* yyJpegSaveBuffer(JpegSave& j) { return j.line[0]; }

zg::ImageResult yyJpegSaveLine(JpegSave& j) {
  if (setjmp(j.err.jump)) return {kErrorJpeg, j.err.code};
  jpeg_write_scanlines(&j.cinfo, j.line, 1);
  return {};
}

zg::ImageResult yyJpegSaveClose(JpegSave& j) {
  if (setjmp(j.err.jump)) return {kErrorJpeg, j.err.code};
  jpeg_finish_compress(&j.cinfo);
  jpeg_destroy_compress(&j.cinfo);
  j.created = false;
  const bool failed = std::fflush(j.file.get()) != 0 || std::ferror(j.file.get());
  const int err = errno;
  if (std::fclose(j.file.release()) != 0 && !failed) return {3, errno};
  return failed ? zg::ImageResult{kErrorWrite, err} : zg::ImageResult{};
}

// Rows from `row`, which fills the line buffer with red, green, blue bytes
// for a row of the picture, top first.
zg::ImageResult yyjpegsavedata(const std::string& file, int width, int height, int quality, int dpi,
                               const std::function<void(int, JSAMPLE*)>& row) {
  JpegSave j;
  if (const auto r = yyJpegSaveOpen(j, file, width, height, quality, dpi); r.error) return r;
  for (int y = 0; y < height; ++y) {
    row(y, yyJpegSaveBuffer(j));
    if (const auto r = yyJpegSaveLine(j); r.error) return r;
  }
  return yyJpegSaveClose(j);
}

zg::ImageResult yyjpeg1(const zg::RasterPage& page, const std::string& file, int quality) {
  const int w = page.nrxpix, h = page.nrypix;
  return yyjpegsavedata(file, w, h, quality, page.dpi, [&](int y, JSAMPLE* out) {
    const int py = h - 1 - y;
    if (page.nbitpx == 24) {
      const uint32_t* src = page.irbuff.data() + static_cast<size_t>(py) * static_cast<size_t>(page.lenrrow);
      for (int x = 0; x < w; ++x, out += 3) {
        out[0] = static_cast<JSAMPLE>(src[x]);
        out[1] = static_cast<JSAMPLE>(src[x] >> 8);
        out[2] = static_cast<JSAMPLE>(src[x] >> 16);
      }
      return;
    }
    for (int x = 0; x < w; ++x, out += 3) {
      const int c = page.rgb(x, py);
      out[0] = static_cast<JSAMPLE>(c);
      out[1] = static_cast<JSAMPLE>(c >> 8);
      out[2] = static_cast<JSAMPLE>(c >> 16);
    }
  });
}

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

constexpr int kErrorOpen = 1, kErrorWrite = 2, kErrorJpeg = 1120;

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

zg::ImageResult yyjpegloaddata(std::span<const uint8_t> bytes, zg::Picture& picture) {
  jpeg_decompress_struct cinfo{};
  JpegError err;
  install(err, *reinterpret_cast<jpeg_common_struct*>(&cinfo));
  if (setjmp(err.jump)) {
    jpeg_destroy_decompress(&cinfo);
    picture = {};
    return {kErrorJpeg, err.code};
  }
  jpeg_create_decompress(&cinfo);
  jpeg_mem_src(&cinfo, bytes.data(), static_cast<unsigned long>(bytes.size()));
  jpeg_read_header(&cinfo, TRUE);
  cinfo.do_fancy_upsampling = FALSE;
  cinfo.do_block_smoothing = FALSE;
  if (cinfo.jpeg_color_space == JCS_CMYK || cinfo.jpeg_color_space == JCS_YCCK) {
    jpeg_destroy_decompress(&cinfo);
    return {27, 0};
  }
  jpeg_start_decompress(&cinfo);
  const size_t w = cinfo.output_width, h = cinfo.output_height;
  const int n = cinfo.output_components;
  if (w == 0 || h == 0 || w * h > (size_t{1} << 28) || (n != 1 && n != 3)) {
    jpeg_destroy_decompress(&cinfo);
    return {kErrorWrite, 0};
  }
  picture.width = static_cast<int>(w);
  picture.height = static_cast<int>(h);
  picture.pixels.assign(w * h, 0);
  JSAMPARRAY line = (*cinfo.mem->alloc_sarray)(reinterpret_cast<j_common_ptr>(&cinfo), JPOOL_IMAGE,
                                                static_cast<JDIMENSION>(w * static_cast<size_t>(n)), 1);
  while (cinfo.output_scanline < cinfo.output_height) {
    const size_t y = cinfo.output_scanline;
    if (jpeg_read_scanlines(&cinfo, line, 1) != 1) break;
    int* out = picture.pixels.data() + y * w;
    const JSAMPLE* p = line[0];
    if (n == 3)
      for (size_t x = 0; x < w; ++x, p += 3) out[x] = p[0] | p[1] << 8 | p[2] << 16;
    else
      for (size_t x = 0; x < w; ++x) out[x] = p[x] * 0x010101;
  }
  // A stream that ran dry is padded by the library with a warning: that is a
  // truncated file all the same.
  const bool damaged = err.mgr.num_warnings > 0;
  jpeg_finish_decompress(&cinfo);
  jpeg_destroy_decompress(&cinfo);
  if (damaged) {
    picture = {};
    return {kErrorJpeg, err.code};
  }
  return {};
}

// Rows of `rgb` integers, `reverse` taking the last first (a raster page keeps
// its bottom row first).
zg::ImageResult yyjpegsavedata(const std::string& file, int width, int height, int quality, int dpi,
                               const std::function<void(int, JSAMPLE*)>& row) {
  std::unique_ptr<std::FILE, zg::FileCloser> f(std::fopen(file.c_str(), "wb"));
  if (!f) return {kErrorOpen, errno};
  jpeg_compress_struct cinfo{};
  JpegError err;
  install(err, *reinterpret_cast<jpeg_common_struct*>(&cinfo));
  if (setjmp(err.jump)) {
    jpeg_destroy_compress(&cinfo);
    return {kErrorJpeg, err.code};
  }
  jpeg_create_compress(&cinfo);
  jpeg_stdio_dest(&cinfo, f.get());
  cinfo.image_width = static_cast<JDIMENSION>(width);
  cinfo.image_height = static_cast<JDIMENSION>(height);
  cinfo.input_components = 3;
  cinfo.in_color_space = JCS_RGB;
  jpeg_set_defaults(&cinfo);
  cinfo.density_unit = 1;
  cinfo.X_density = cinfo.Y_density = static_cast<UINT16>(dpi);
  jpeg_set_quality(&cinfo, std::clamp(quality, 1, 100), TRUE);
  jpeg_start_compress(&cinfo, TRUE);
  JSAMPARRAY line = (*cinfo.mem->alloc_sarray)(reinterpret_cast<j_common_ptr>(&cinfo), JPOOL_IMAGE,
                                                static_cast<JDIMENSION>(3 * width), 1);
  while (cinfo.next_scanline < cinfo.image_height) {
    row(static_cast<int>(cinfo.next_scanline), line[0]);
    jpeg_write_scanlines(&cinfo, line, 1);
  }
  jpeg_finish_compress(&cinfo);
  jpeg_destroy_compress(&cinfo);
  if (std::fflush(f.get()) != 0 || std::ferror(f.get())) return {kErrorWrite, errno};
  return {};
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

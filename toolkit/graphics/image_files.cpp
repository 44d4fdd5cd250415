// Image files: type recognition, the loaders, and the public entry points.
#include "toolkit/graphics/image_files.h"

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/graphics/graphics_private.h"
#include "toolkit/graphics/image_private.h"

#include <zlib.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>

namespace zg = zelvy_graph;
using namespace zelv_graphics;

namespace {

constexpr int kErrorOpen = 1, kErrorRead = 2, kErrorFormat = 27, kErrorZlib = 1044;
constexpr size_t kMinBytes = 4;
constexpr size_t kTextWindow = 128;
constexpr double kInchMetres = 0.0254;

uint32_t le16(std::span<const uint8_t> b, size_t at) {
  return at + 2 <= b.size() ? static_cast<uint32_t>(b[at] | b[at + 1] << 8) : 0;
}
uint32_t le32(std::span<const uint8_t> b, size_t at) {
  return at + 4 <= b.size() ? static_cast<uint32_t>(b[at] | b[at + 1] << 8 | b[at + 2] << 16) | uint32_t{b[at + 3]} << 24
                            : 0;
}
uint32_t be32(std::span<const uint8_t> b, size_t at) {
  return at + 4 <= b.size() ? uint32_t{b[at]} << 24 | static_cast<uint32_t>(b[at + 1] << 16 | b[at + 2] << 8 | b[at + 3])
                            : 0;
}
bool starts(std::span<const uint8_t> b, size_t at, std::string_view text) {
  return at + text.size() <= b.size() && std::memcmp(b.data() + at, text.data(), text.size()) == 0;
}

bool read_file(std::string_view name, std::vector<uint8_t>& out, int& err) {
  std::unique_ptr<std::FILE, zg::FileCloser> f(std::fopen(std::string(name).c_str(), "rb"));
  if (!f) {
    err = errno;
    return false;
  }
  out.clear();
  uint8_t chunk[1 << 16];
  for (size_t n; (n = std::fread(chunk, 1, sizeof chunk, f.get())) > 0;) out.insert(out.end(), chunk, chunk + n);
  return true;
}

int dpi_of(uint32_t per_metre) { return static_cast<int>(per_metre * kInchMetres + 0.5); }

// The text from the first non-blank byte.
std::string_view lead_text(std::span<const uint8_t> b) {
  size_t i = 0;
  while (i < b.size() && (b[i] == ' ' || b[i] == '\t' || b[i] == '\r' || b[i] == '\n')) ++i;
  return {reinterpret_cast<const char*>(b.data()) + i, b.size() - i};
}

std::string lower_window(std::span<const uint8_t> b, size_t n) {
  std::string s(reinterpret_cast<const char*>(b.data()), std::min(n, b.size()));
  for (auto& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

bool is_dxf(std::string_view t) {
  auto line_end = [](char c) { return c == '\r' || c == '\n'; };
  if (t.size() > 1 && t[0] == '0' && line_end(t[1]))
    return t.substr(0, 20).find("SECTION") != std::string_view::npos;
  if (!(t.size() > 3 && t.substr(0, 3) == "999" && line_end(t[3]))) return false;
  // Comment pairs, then a code 0 with SECTION.
  std::vector<std::string> lines;
  size_t at = 0;
  while (at < t.size() && lines.size() < 200) {
    size_t e = t.find_first_of("\r\n", at);
    if (e == std::string_view::npos) e = t.size();
    std::string l(t.substr(at, e - at));
    while (!l.empty() && l.front() == ' ') l.erase(l.begin());
    while (!l.empty() && l.back() == ' ') l.pop_back();
    lines.push_back(l);
    at = e + 1;
    if (at < t.size() && t[at - 1] == '\r' && t[at] == '\n') ++at;
  }
  for (size_t i = 0; i + 1 < lines.size(); i += 2) {
    if (lines[i] == "999") continue;
    return lines[i] == "0" && lines[i + 1] == "SECTION";
  }
  return false;
}

int file_type(std::span<const uint8_t> b) {
  if (b.size() < kMinBytes) return kFileUnreadable;
  const std::string_view t = lead_text(b);
  if (t.substr(0, 2) == "IN") return kFileHpgl;
  if (t.substr(0, 4) == "\x1b%0B") return kFileHpgl2;
  if (t.substr(0, 4) == "%!PS") return kFilePostScript;
  if (is_dxf(t)) return kFileDxf;
  {
    const std::string w = lower_window(b, kTextWindow);
    if (w.starts_with("<?xml ") && w.find("<!doctype svg") != std::string::npos) return kFileSvg;
  }
  if (b[0] == 10 && b.size() > 2 && b[2] == 1) return kFilePcx;
  if (starts(b, 0, "BM") && le32(b, 6) == 0) {
    const uint32_t hs = le32(b, 14);
    if (hs > 39 || hs == 12) return kFileBmp;
  }
  if ((b.size() >= 6 && b[0] == 1 && b[1] == 0 && b[2] == 9 && b[3] == 0 && b[4] == 0 && b[5] == 3) ||
      le32(b, 0) == 0x9AC6CDD7u || starts(b, 40, " EMF"))
    return kFileMetafile;
  if (b[0] == 0 && b[1] > 15 && b[2] < 32) return kFileCgm;
  if (starts(b, 0, "\x1b" "E") || starts(b, 0, "\x1b&a")) return kFilePcl;
  if (starts(b, 0, "\x1b@")) return kFileEscp;
  if (starts(b, 0, "\x1bU\x01")) return kFileEscpRaster;
  if (starts(b, 0, "\x89PNG\r\n\x1a\n")) return kFilePng;
  if (b[0] == 0 && b[1] == 0 && b[2] == 1 && b[3] == 0) return kFileIcon;
  if (b[0] == 0 && b[1] == 0 && b[2] == 2 && b[3] == 0) return kFileCursor;
  if ((starts(b, 6, "JFIF") || starts(b, 6, "Exif")) && b.size() > 10 && b[10] == 0) return kFileJpeg;
  if (starts(b, 0, "Z3D")) return kFile3dPlot;
  return kFileUnknown;
}

int colours_of(int bits) { return bits > 31 ? 0 : bits >= 24 ? 1 << 24 : 1 << bits; }

void bitmap_header_info(std::span<const uint8_t> b, size_t at, std::array<int, 13>& info, bool icon) {
  const uint32_t hs = le32(b, at);
  info[12] = static_cast<int>(hs);
  int bits;
  if (hs < 40) {
    info[1] = static_cast<int>(le16(b, at + 4));
    info[2] = static_cast<int>(le16(b, at + 6));
    bits = static_cast<int>(le16(b, at + 10));
  } else {
    info[1] = static_cast<int>(le32(b, at + 4));
    info[2] = std::abs(static_cast<int32_t>(le32(b, at + 8)));
    bits = static_cast<int>(le16(b, at + 14));
    const int comp = static_cast<int>(le32(b, at + 16));
    info[icon ? 11 : 6] = comp;
    info[4] = comp == 0 || comp == 3 ? 0 : 1;
    info[9] = dpi_of(le32(b, at + 24));
    info[10] = dpi_of(le32(b, at + 28));
  }
  info[5] = bits;
  info[3] = colours_of(bits == 32 ? 24 : bits);
}

}  // namespace

bool yyjpegfileinfo(std::span<const uint8_t> bytes, std::array<int, 13>& info);

void yygrfileinfo(std::span<const uint8_t> b, std::array<int, 13>& info, int items) {
  info.fill(-1);
  info[0] = file_type(b);
  if (items <= 1 || info[0] <= 0) return;
  switch (info[0]) {
    case kFileBmp:
      bitmap_header_info(b, 14, info, false);
      break;
    case kFilePcx:
      info[1] = static_cast<int>(le16(b, 8)) - static_cast<int>(le16(b, 4)) + 1;
      info[2] = static_cast<int>(le16(b, 10)) - static_cast<int>(le16(b, 6)) + 1;
      info[5] = b[3] * (b.size() > 65 ? b[65] : 0);
      info[3] = colours_of(info[5]);
      info[4] = b[1];
      info[9] = static_cast<int>(le16(b, 12));
      info[10] = static_cast<int>(le16(b, 14));
      break;
    case kFilePng: {
      info[1] = static_cast<int>(be32(b, 16));
      info[2] = static_cast<int>(be32(b, 20));
      const int ctype = b.size() > 25 ? b[25] : -1, depth = b.size() > 24 ? b[24] : 0;
      if (ctype == 2 || ctype == 6) {
        info[3] = 1 << 24;
        info[5] = 24;
        if (ctype == 6) info[6] = 1;
      } else if (ctype == 3) {
        info[5] = depth;
        info[3] = 1 << std::min(depth, 16);
      }
      info[4] = b.size() > 28 ? b[28] : -1;
      if (items >= 10) {
        for (size_t at = 8; at + 8 <= b.size();) {
          const uint32_t len = be32(b, at);
          if (starts(b, at + 4, "IDAT") || starts(b, at + 4, "IEND")) break;
          if (starts(b, at + 4, "pHYs") && len >= 9 && at + 17 <= b.size() && b[at + 16] == 1) {
            info[9] = dpi_of(be32(b, at + 8));
            info[10] = dpi_of(be32(b, at + 12));
          }
          if (len > b.size()) break;
          at += 12 + len;
        }
      }
      break;
    }
    case kFileIcon:
    case kFileCursor: {
      info[1] = b.size() > 6 && b[6] ? b[6] : 256;
      info[2] = b.size() > 7 && b[7] ? b[7] : 256;
      info[6] = static_cast<int>(le16(b, 4));
      if (info[0] == kFileCursor) {
        info[7] = static_cast<int>(le16(b, 10)) + 1;
        info[8] = static_cast<int>(le16(b, 12)) + 1;
      }
      const size_t at = le32(b, 18);
      if (starts(b, at, "\x89PNG")) {
        info[5] = 32;
        info[3] = 1 << 24;
      } else if (at + 40 <= b.size()) {
        const int w = info[1], h = info[2], n = info[6];
        bitmap_header_info(b, at, info, true);
        info[1] = w;
        info[2] = h;
        info[6] = n;
      }
      break;
    }
    case kFileJpeg:
      yyjpegfileinfo(b, info);
      break;
    case kFilePostScript: {
      const std::string_view t(reinterpret_cast<const char*>(b.data()), b.size());
      const size_t e = t.find_first_of("\r\n");
      info[3] = 0;
      if (e != std::string_view::npos) {
        size_t s2 = e + 1;
        if (s2 < t.size() && t[e] == '\r' && t[s2] == '\n') ++s2;
        const std::string_view line = t.substr(s2, t.find_first_of("\r\n", s2) - s2);
        int x1, y1, x2, y2;
        if (line.starts_with("%%BoundingBox:") &&
            std::sscanf(std::string(line.substr(14)).c_str(), "%d %d %d %d", &x1, &y1, &x2, &y2) == 4) {
          info[3] = 1;
          info[1] = x2;
          info[2] = y2;
        }
      }
      break;
    }
    case kFileSvg: {
      const std::string t = lower_window(b, b.size());
      const size_t at = t.find("<svg ");
      if (at == std::string::npos) break;
      auto attribute = [&](const char* name) {
        const size_t p = t.find(name, at);
        if (p == std::string::npos) return -1;
        return std::atoi(t.c_str() + p + std::strlen(name));
      };
      info[1] = attribute(" width=\"");
      info[2] = attribute(" height=\"");
      break;
    }
    case kFileCgm:
      info[1] = 1000;
      info[2] = 1000;
      break;
    case kFilePcl: {
      const std::string raw(reinterpret_cast<const char*>(b.data()), std::min(b.size(), kTextWindow));
      info[3] = raw.find("s3u1A") != std::string::npos || raw.find("s-3u1A") != std::string::npos ? 8 : 2;
      const size_t p = raw.find("\x1b*t");
      if (p != std::string::npos) info[4] = std::atoi(raw.c_str() + p + 3);
      break;
    }
    case kFileEscp:
    case kFileEscpRaster: {
      const std::string raw(reinterpret_cast<const char*>(b.data()), std::min(b.size(), kTextWindow));
      info[3] = raw.find(std::string("\x1br\x04", 3)) != std::string::npos ? 8 : 0;
      const size_t p = raw.find(std::string("\x1b(U\x01\x00", 5));
      if (info[0] == kFileEscp && p != std::string::npos && p + 5 < raw.size() && raw[p + 5] != 0)
        info[4] = 3600 / static_cast<unsigned char>(raw[p + 5]);
      break;
    }
    case kFile3dPlot:
      info[3] = b[3];
      break;
    default:
      break;
  }
}

void IGrFileInfo(std::string_view filename, std::span<int> info, int items) {
  if (info.empty()) return;
  items = std::min({items, static_cast<int>(info.size()), kFileInfoItems});
  std::vector<uint8_t> bytes;
  int err = 0;
  std::array<int, 13> values{};
  if (!read_file(filename, bytes, err)) bytes.clear();
  yygrfileinfo(bytes, values, items);
  if (values[0] == kFileUnreadable) {
    info[0] = kFileUnreadable;
    return;
  }
  // A CGM's colours and aspect come from its header.
  if (values[0] == kFileCgm && items > 1) {
    int colours = 0;
    float aspect = 1;
    if (yyinfocgm(std::string(filename), colours, aspect) && aspect > 0) {
      values[3] = colours;
      values[2] = static_cast<int>(1000.0f / aspect);
    }
  }
  for (int i = 0; i < std::max(items, 1); ++i) info[static_cast<size_t>(i)] = values[static_cast<size_t>(i)];
}

void IGrLoadImageData(std::string_view filename, std::vector<int>& data, int options, std::span<int> info) {
  constexpr const char* kRoutine = "IGrLoadImageData";
  data.clear();
  std::vector<uint8_t> bytes;
  int err = 0;
  if (!read_file(filename, bytes, err)) {
    zelvy_data::data().istat = err;
    zelvy_data::data().ioetype = 1;
    yyerror(kErrorOpen, kRoutine);
    return;
  }
  std::array<int, 13> values{};
  yygrfileinfo(bytes, values, kFileInfoItems);
  for (size_t i = 0; i < info.size() && i < values.size(); ++i) info[i] = values[i];
  const int type = values[0];
  if (type != kFileBmp && type != kFileIcon && type != kFileCursor && type != kFilePcx && type != kFilePng &&
      type != kFileJpeg) {
    yyerror(kErrorFormat, kRoutine);
    return;
  }
  zg::Picture picture;
  const auto result = yygrloadimagedata(bytes, type, (options & kImageKeepAlpha) != 0, picture);
  if (result.error != 0) {
    zelvy_data::data().iapierr = result.status;
    yyerror(result.error, kRoutine);
    return;
  }
  data = std::move(picture.pixels);
  if (info.size() > 2) {
    info[1] = picture.width;
    info[2] = picture.height;
  }
}

int WCompress(std::span<const unsigned char> in, std::span<unsigned char> out) {
  uLongf n = out.size();
  const int rc = compress(out.data(), &n, in.data(), in.size());
  if (rc != Z_OK) {
    zelvy_data::data().iapierr = rc;
    yyerror(kErrorZlib, "WCompress");
    return 0;
  }
  return static_cast<int>(n);
}

int WUnCompress(std::span<const unsigned char> in, std::span<unsigned char> out) {
  uLongf n = out.size();
  const int rc = uncompress(out.data(), &n, in.data(), in.size());
  if (rc != Z_OK) {
    zelvy_data::data().iapierr = rc;
    yyerror(kErrorZlib, "WUnCompress");
    return 0;
  }
  return static_cast<int>(n);
}

// Draws one test chart of the graphics layer: line types and widths, markers,
// arcs, every fill style, gradients, device text, the 256 palette colours, an
// image.
//
//   grchart [--device-text-angles 0] [--ps|--eps|--svg|--hpgl|--hpgl2|--cgm|--dxf|--png|--replay-svg FILE]...
//           [--screen SECONDS]
//
// "--device-text-angles 0" draws the turned device texts upright, for readers
// that take no turned text.
// Files are written with the screen path off, on a 640 by 480 page for EPS,
// SVG and the PNG page, so that they can be compared pixel for pixel.
#include "toolkit/graphics/graphics.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

bool g_upright_device_text = false;

using namespace zelv_graphics;

constexpr float kWidth = 160, kHeight = 120;
constexpr int kChartWidth = 640, kChartHeight = 480;
constexpr int kRed = 0x0000FF, kGreen = 0x00FF00, kBlue = 0xFF0000, kYellow = 0x00FFFF, kWhite = 0xFFFFFF;

void label(float x, float y, std::string_view text) {
  IGrColourModel(1);
  IGrColourN(kPaletteBlack);
  IGrCharSize(0.006f, 0.0132f);
  IGrCharFont(2, 0);
  IGrCharAlign(0);
  IGrCharRotate(0);
  IGrCharOut(x, y, text);
}

void marker(int kind, float x, float y, float r) {
  switch (kind) {
    case 0:
      IGrJoin(x - r, y, x + r, y);
      IGrJoin(x, y - r, x, y + r);
      break;
    case 1:
      IGrJoin(x - r, y - r, x + r, y + r);
      IGrJoin(x - r, y + r, x + r, y - r);
      break;
    case 2:
      IGrFillPattern(kFillOutline);
      IGrCircle(x, y, r);
      break;
    case 3: {
      const std::array<float, 3> tx{x - r, x + r, x}, ty{y - r, y - r, y + r};
      IGrFillPattern(kFillSolid);
      IGrPolygonComplex(tx, ty);
      break;
    }
    default:
      IGrFillPattern(kFillSolid);
      IGrRectangle(x - r, y - r, x + r, y + r);
      IGrPoint(x, y);
  }
}

void lines() {
  label(4, 117, "Line types 0-7");
  for (int t = 0; t < 8; ++t) {
    IGrLineType(t);
    IGrJoin(4, 113 - 2.2f * static_cast<float>(t), 44, 113 - 2.2f * static_cast<float>(t));
  }
  IGrLineType(0);
  label(50, 117, "Widths");
  for (int w = 1; w <= 4; ++w) {
    IGrLineWidth(w, 5 * w * w);
    IGrJoin(50, 114 - 4.0f * static_cast<float>(w - 1), 80, 114 - 4.0f * static_cast<float>(w - 1));
  }
  IGrLineWidth(1, 5);
  // A polyline across the section, partly outside the area so that it is clipped.
  std::vector<float> px, py;
  for (int i = 0; i <= 60; ++i) {
    px.push_back(4 + static_cast<float>(i) * 0.7f);
    py.push_back(96 + 3 * std::sin(static_cast<float>(i) * 0.4f));
  }
  IGrColourN(kBlue);
  IGrColourModel(0);
  IGrColourN(kBlue);
  IGrPolyLine(px, py);
  IGrColourModel(1);
}

void markers_and_arcs() {
  label(86, 117, "Markers");
  for (int k = 0; k < 5; ++k) {
    IGrColourN(16 + 32 * k);
    for (int j = 0; j < 3; ++j) marker(k, 88 + 6 * static_cast<float>(k), 112 - 5 * static_cast<float>(j), 1.2f + 0.4f * static_cast<float>(j));
  }
  label(120, 117, "Arcs and pies");
  IGrColourN(kPaletteBlack);
  IGrArc(126, 106, 6, 0, 270);
  IGrFillPattern(kFillOutline);
  IGrPie(140, 106, 6, 30, 120);
  IGrColourN(100);
  IGrFillPattern(kFillSolid);
  IGrPie(152, 106, 6, 45, 315);
  IGrColourN(20);
  IGrFillPattern(kFillHalfTone);
  IGrPie(152, 96, 5, 0, 90);
}

void fills() {
  label(4, 88, "Fill styles: outline, hatch 1-4, cross-hatch, half-tone, solid; even-odd polygons");
  struct Cell {
    int style, density, angle, colour;
  };
  static constexpr std::array<Cell, 10> kCells = {{{kFillOutline, 1, 1, kPaletteBlack},
                                                   {kFillHatch, 1, 1, 150},
                                                   {kFillHatch, 2, 2, 150},
                                                   {kFillHatch, 2, 3, 24},
                                                   {kFillHatch, 3, 4, 24},
                                                   {kFillCrossHatch, 1, 1, 88},
                                                   {kFillCrossHatch, 2, 3, 88},
                                                   {kFillHalfTone, 1, 1, 176},
                                                   {kFillSolid, 1, 1, 176},
                                                   {kFillSolid, 1, 1, 60}}};
  for (size_t i = 0; i < kCells.size(); ++i) {
    const auto& c = kCells[i];
    IGrColourN(c.colour);
    IGrFillPattern(c.style, c.density, c.angle);
    const float x = 4 + 11 * static_cast<float>(i);
    IGrRectangle(x, 72, x + 9, 84);
  }
  // A star that crosses itself: its core stays empty by the even-odd rule.
  std::vector<float> sx, sy;
  for (int k = 0; k < 5; ++k) {
    const double a = M_PI / 2 + k * 4 * M_PI / 5;
    sx.push_back(124 + 8 * static_cast<float>(std::cos(a)));
    sy.push_back(78 + 8 * static_cast<float>(std::sin(a)));
  }
  IGrColourN(40);
  IGrFillPattern(kFillSolid);
  IGrPolygonComplex(sx, sy);
  // A square with a square hole, as one outline.
  const std::array<float, 10> hx{136, 154, 154, 136, 136, 141, 141, 149, 149, 141};
  const std::array<float, 10> hy{70, 70, 86, 86, 70, 75, 81, 81, 75, 75};
  IGrColourN(120);
  IGrPolygonComplex(hx, hy);
  IGrColourN(kPaletteBlack);
  IGrFillPattern(kFillHatch, 2, 1);
  std::array<float, 6> tx{4, 24, 14, 0, 0, 0}, ty{52, 52, 68, 0, 0, 0};
  IGrPolygonComplex(std::span<const float>(tx.data(), 3), std::span<const float>(ty.data(), 3));
  IGrFillPattern(kFillCrossHatch, 1, 1);
  IGrCircle(34, 60, 7);
  IGrFillPattern(kFillSolid);
  IGrColourN(210);
  IGrCircle(52, 60, 7, 0.6f);
}

void gradients() {
  label(64, 68, "Gradients: smooth and stepped");
  const std::array<float, 3> tx{64, 84, 74}, ty{44, 44, 64};
  const std::array<int, 3> tc{kRed, kGreen, kBlue};
  IGrGradient(tx, ty, tc);
  const std::array<float, 4> qx{88, 108, 108, 88}, qy{44, 44, 64, 64};
  const std::array<int, 4> qc{kYellow, kYellow, kBlue, kBlue};
  IGrGradient(qx, qy, qc, 8);
  const std::array<float, 5> px{112, 122, 120, 114, 110}, py{44, 46, 58, 64, 54};
  const std::array<int, 5> pc{kWhite, kRed, kRed, kGreen, kBlue};
  IGrGradient(px, py, pc);
}

void texts() {
  IGrColourN(kPaletteBlack);
  label(126, 68, "Device text");
  const std::array<float, 4> sizes{0.005f, 0.007f, 0.009f, 0.012f};
  const std::array<int, 3> families{1, 2, 3};
  for (size_t i = 0; i < sizes.size(); ++i) {
    IGrCharSize(sizes[i], sizes[i] * 1.65f * kChartWidth / kChartHeight);
    IGrCharFont(families[i % 3], static_cast<int>(i % 4));
    IGrCharOut(126, 62 - 4.5f * static_cast<float>(i), "Zelvane 42");
  }
  IGrCharSize(0.007f, 0.007f * 1.65f * kChartWidth / kChartHeight);
  IGrCharFont(2, 0);
  IGrColourN(150);
  for (int a : {30, 90}) {
    IGrCharRotate(g_upright_device_text ? 0.0f : static_cast<float>(a));
    IGrCharOut(150 + static_cast<float>(a) / 15, 44, "angle");
  }
  IGrCharRotate(0);
  IGrCharAlign(1);
  IGrCharOut(70, 38, "centred (a&b<c)");
  IGrCharAlign(2);
  IGrCharOut(158, 38, "right");
  IGrCharAlign(0);
}

// Software text, the same on every path: strokes at several sizes and
// angles, filled outlines, proportional and stacked text.
void software_texts() {
  label(80, 36, "Software text: strokes, outlines, sizes, angles");
  IGrColourN(kPaletteBlack);
  IGrCharType(1);
  IGrCharFont(2, 0);
  WGrVFontStandard();
  const std::array<float, 3> sizes{0.006f, 0.009f, 0.013f};
  for (size_t i = 0; i < sizes.size(); ++i) {
    IGrCharSize(sizes[i], sizes[i] * 2.0f * kChartWidth / kChartHeight);
    IGrCharOut(80, 31 - 5.5f * static_cast<float>(i), i == 0 ? "ABCDEFGHIJKLMNOPQRSTUVWXYZ 0123456789" : "Stroke 42 Ag!");
  }
  IGrCharSize(0.005f, 0.010f * kChartWidth / kChartHeight);
  IGrCharOut(80, 15, "abcdefghijklmnopqrstuvwxyz ()[]{}<>=+-*/%$#@&?");
  IGrCharSize(0.007f, 0.014f * kChartWidth / kChartHeight);
  IGrColourN(100);
  for (int a : {0, 30, 60, 90}) {
    IGrCharRotate(static_cast<float>(a));
    IGrCharOut(134, 3, "    " + std::to_string(a));
  }
  IGrCharRotate(0);
  IGrColourN(kPaletteBlack);
  IGrCharSpacing(1);
  WGrOFontSwiss();
  IGrCharSize(0.010f, 0.022f * kChartWidth / kChartHeight);
  IGrCharOut(80, 10, "Outline, Wide");
  IGrCharFont(3, 1);
  WGrOFontRoman();
  IGrCharAlign(2);
  IGrCharOut(128, 4, "Bold right");
  IGrCharAlign(0);
  IGrCharSpacing(0);
  IGrCharFont(2, 2);
  WGrVFontStandard();
  IGrCharSize(0.006f, 0.012f * kChartWidth / kChartHeight);
  IGrCharOut(80, 4, "italic");
  IGrCharFont(2, 0);
  IGrCharDirection(1);
  IGrCharOut(156, 32, "DOWN");
  IGrCharDirection(0);
  IGrCharType(0);
}

// An image of 8 by 6 pixels: a red-to-blue ramp across, green growing down,
// and a white corner, so that a turned or mirrored image shows.
void image() {
  label(46, 52.5f, "Image 8x6");
  constexpr int kW = 8, kH = 6;
  std::vector<int> pixels;
  for (int y = 0; y < kH; ++y)
    for (int x = 0; x < kW; ++x) {
      const int r = 255 - x * 255 / (kW - 1), g = y * 255 / (kH - 1), b = x * 255 / (kW - 1);
      pixels.push_back(x == 0 && y == 0 ? kWhite : r | (g << 8) | (b << 16));
    }
  IGrImagePut(46, 41, 60, 50, kW, kH, pixels);
}

void palette() {
  label(4, 40, "Palette 0-255");
  IGrColourModel(1);
  IGrFillPattern(kFillSolid);
  for (int i = 0; i < 256; ++i) {
    const float x = 4 + 4.5f * static_cast<float>(i % 16), y = 34 - 2.0f * static_cast<float>(i / 16);
    IGrColourN(i);
    IGrRectangle(x, y - 1.8f, x + 4.2f, y);
  }
}

void chart() {
  IGrUnits(0, 0, kWidth, kHeight);
  IGrColourModel(1);
  IGrLineType(0);
  IGrColourN(kPaletteBlack);
  IGrBorder();
  lines();
  markers_and_arcs();
  fills();
  gradients();
  texts();
  palette();
  software_texts();
  image();
}

void to_file(int driver, std::string_view file, bool encapsulated) {
  IGrInit("H");
  IGrHardcopySelect(1, driver);
  if (encapsulated) {
    IGrHardcopyOptions(kOptOrientation, 0);
    if (driver == kDriverPostScript) IGrHardcopyOptions(kOptEncapsulated, 1);
    IGrHardcopyOptions(kOptPageWidth, kChartWidth);
    IGrHardcopyOptions(kOptPageHeight, kChartHeight);
  }
  IGrHardcopy(file, "Zelvane graphics test chart");
  chart();
  IGrHardcopy("S");
}

// The chart drawn in memory by the raster device and written as a picture,
// a pixel a point like the EPS page.
void to_picture(std::string_view file) {
  constexpr int kDriverImage = 6, kOptBits = 23, kOptFormat = 26, kOptDpi = 32, kPng = 3;
  IGrInit("H");
  IGrHardcopySelect(1, kDriverImage);
  IGrHardcopyOptions(kOptPageWidth, kChartWidth);
  IGrHardcopyOptions(kOptPageHeight, kChartHeight);
  IGrHardcopyOptions(kOptBits, 24);
  IGrHardcopyOptions(kOptFormat, kPng);
  IGrHardcopyOptions(kOptDpi, 72);
  IGrHardcopy(file);
  chart();
  IGrHardcopy("S");
}

// The chart kept in a memory metafile, then replayed onto an SVG file.
void replayed(std::string_view file) {
  constexpr int kMetafile = 1;
  IGrInit("H");
  IGrSelect(4, kMetafile);
  chart();
  IGrInit("H");
  IGrHardcopySelect(1, kDriverSvg);
  IGrHardcopy(file);
  IGrReplay(kMetafile);
  IGrHardcopy("S");
}

}  // namespace

int main(int argc, char** argv) {
  int seconds = -1;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string_view opt = argv[i], val = argv[i + 1];
    if (opt == "--device-text-angles") {
      g_upright_device_text = val == "0";
      continue;
    }
    if (opt == "--ps") to_file(kDriverPostScript, val, false);
    else if (opt == "--eps") to_file(kDriverPostScript, val, true);
    else if (opt == "--svg") to_file(kDriverSvg, val, false);
    else if (opt == "--hpgl") to_file(kDriverHpgl, val, false);
    else if (opt == "--hpgl2") to_file(kDriverHpgl2, val, false);
    else if (opt == "--cgm") to_file(kDriverCgm, val, false);
    else if (opt == "--dxf") to_file(kDriverDxf, val, false);
    else if (opt == "--replay-svg") replayed(val);
    else if (opt == "--png") to_picture(val);
    else if (opt == "--screen") seconds = std::atoi(argv[i + 1]);
    else {
      std::fprintf(stderr, "usage: grchart [--device-text-angles 0] [--ps|--eps|--svg|--hpgl|--hpgl2|--cgm|--dxf|--png|--replay-svg FILE]... [--screen SECONDS]\n");
      return 2;
    }
  }
  if (seconds < 0) return 0;
  WInitialise();
  WindowOpen(std::nullopt, 0, 0, kChartWidth, kChartHeight, std::nullopt, {}, std::nullopt, "Graphics test chart");
  IGrInit();
  constexpr int kTimer = 1;
  if (seconds > 0) WMessageTimer(seconds * 1000, kTimer);
  for (;;) {
    int type = 0;
    MessageRecord m;
    WMessage(type, m);
    if (type == ExposeMessage || type == Resize) {
      IGrSelect(1, 0);
      IGrAreaClear();
      chart();
      IGrEndPage();
    }
    if (type == CloseRequest || (type == TimerExpired && m.Value1 == kTimer)) break;
  }
  WindowClose();
  return 0;
}

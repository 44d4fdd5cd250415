// Device text: size, family, alignment and angle, and the text operation on
// both paths.
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"

#include <algorithm>
#include <cmath>

using zelvy_graph::state;
namespace zg = zelvy_graph;

namespace {
constexpr float kDefaultWidth = 0.0133333f, kDefaultHeight = 0.0333333f;
constexpr double kRadian = 0.017453292519943295;
constexpr size_t kMaxText = 1024;
}  // namespace

void yygrtextvectors() {
  auto& s = state();
  const double a = s.chrota * kRadian;
  const float h = s.ypxlen * s.chsizy;
  s.sinhgt = h * static_cast<float>(std::sin(a));
  s.coshgt = h * static_cast<float>(std::cos(a));
}

void IGrCharSize(float width, float height) {
  auto& s = state();
  s.chsizx = width > 0 ? width : kDefaultWidth;
  s.chsizy = height > 0 ? height : kDefaultHeight;
  yygrtextvectors();
  yygdrv(zg::OpFont);
  yyhdrv(zg::OpFont);
}

void IGrCharFont(int family, int style) {
  auto& s = state();
  s.ichfam = std::clamp(family, 0, 4);
  s.ichfam2 = s.ichfam != 0 ? s.ichfam : (s.ichprop == 0 ? 1 : 2);
  s.ichstyl = std::clamp(style, 0, 3);
  yygdrv(zg::OpFont);
  yyhdrv(zg::OpFont);
}

void IGrCharAlign(int alignment) { state().ichali = std::clamp(alignment, 0, 2); }

void IGrCharRotate(float degrees) {
  auto& s = state();
  const float r = std::fmod(degrees + static_cast<float>((static_cast<int>(std::abs(degrees)) / 360 + 1) * 360), 360.0f);
  s.chrota = std::fmod(static_cast<float>(s.igurot) + r, 360.0f);
  yygrtextvectors();
  yygdrv(zg::OpTextRotate);
  yyhdrv(zg::OpTextRotate);
}

// The point is the left end of the text's middle line; alignment moves the
// text along its direction from there.
void IGrCharOut(float x, float y, std::string_view text) {
  auto& s = state();
  float rx, ry;
  yye2i(x, y, rx, ry);
  IGrMoveTo(x, y);
  if (text.empty() || !yygrinbox(rx, ry)) return;
  s.cgrstr.assign(text.substr(0, kMaxText));
  const float length = static_cast<float>(s.cgrstr.size()) * s.chsizx * s.xpxlen;
  const double a = s.chrota * kRadian;
  const float dx = length * static_cast<float>(std::cos(a)), dy = length * static_cast<float>(std::sin(a));
  // Alignment moves the start back along the direction; the drivers get that
  // start and the end, and anchor the text where the alignment says.
  const float back = static_cast<float>(s.ichali) * 0.5f;
  s.grx = {rx - back * dx, 0, rx - back * dx + dx};
  s.gry = {ry - back * dy, 0, ry - back * dy + dy};
  s.igrx = {static_cast<int>(s.cgrstr.size()), 3};
  s.igry = {yytrunc(ry), 0};
  yygdrv(zg::OpText);
  yyhdrv(zg::OpText);
}

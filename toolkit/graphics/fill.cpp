// Filled shapes: device fills where a path fills by itself, scan lines and
// hatches through the line output where it does not, and gradients by triangles.
#include "toolkit/base/error.h"
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"
#include "toolkit/graphics/raster_private.h"

#include <algorithm>
#include <array>
#include <cmath>

using zelvy_graph::state;
namespace zg = zelvy_graph;

namespace {

constexpr int kErrorFill = 49;
constexpr int kErrorEmpty = 22;
constexpr int kMaxActive = 98;
constexpr int kPathScreen = 1, kPathHardcopy = 2;
constexpr int kEllipseVertices = 96;
constexpr int kOpenArcDensity = 3;  // style 0 above density 2: an arc without its radii
constexpr double kRadian = 0.017453292;

struct Edge {
  float slope, ylow, yhigh, xhigh;
};

// Runs one path of a fill with the other path switched off.
template <typename F>
void on_path(int path, F&& body) {
  auto& s = state();
  const int scrn = s.igscrn, hcpy = s.ighcpy;
  if (path == kPathScreen) {
    if (scrn <= 0) return;
    s.ighcpy = 0;
  } else {
    if (hcpy <= 0) return;
    s.igscrn = 0;
  }
  body();
  s.igscrn = scrn;
  s.ighcpy = hcpy;
}

// A half-tone made of lines: the fill colour and the background in turn.
void yy2col(int row, int colour, int model) {
  auto& s = state();
  s.icmodel = 0;
  s.ichnalgl = row % 2 ? s.ibackcol : (model == 1 && colour >= 0 && colour < zg::kPaletteSize
                                                ? s.irgb256[static_cast<size_t>(colour)]
                                                : colour & 0xFFFFFF);
  yygdrv(zg::OpColour);
}

// Scan lines across the polygon in the work arrays; rows, or columns with `columns`.
bool scan_fill(int path, bool columns) {
  auto& s = state();
  const size_t n = s.xwork.size();
  const auto& px = columns ? s.ywork : s.xwork;
  const auto& py = columns ? s.xwork : s.ywork;
  float ystep = 1, xstep = 1, inset = 0;
  int xi = 1, yi = 1;
  bool diagonal = false;
  yygrfillstepsize(path, s.ifdens, xstep, ystep, xi, yi, inset, diagonal);
  float step = columns ? xstep : ystep;
  if (path == kPathScreen) step = static_cast<float>(columns ? xi : yi);
  if (s.ifstyl >= 3) step = path == kPathScreen ? 1.0f : std::max(s.yhstep, 1.0f);
  float lo = *std::min_element(py.begin(), py.end()), hi = *std::max_element(py.begin(), py.end());
  const float xlo = *std::min_element(px.begin(), px.end()), xhi = *std::max_element(px.begin(), px.end());
  auto emit = [&](float a, float b, float line) {
    if (columns) yylini(line, a, line, b);
    else yylini(a, line, b, line);
  };
  std::vector<Edge> edges;
  edges.reserve(n);
  for (size_t i = 0; i < n; ++i) {
    const size_t j = (i + 1) % n;
    if (py[i] == py[j]) continue;
    const bool iup = py[i] > py[j];
    const float xu = iup ? px[i] : px[j], yu = iup ? py[i] : py[j];
    const float xl = iup ? px[j] : px[i], yl = iup ? py[j] : py[i];
    edges.push_back({(xu - xl) / (yu - yl), yl, yu, xu});
  }
  if (edges.empty()) {
    emit(xlo, xhi, lo);
    return true;
  }
  std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.ylow < b.ylow; });
  float line = lo;
  if (path == kPathScreen) line = lo >= 0 ? std::floor(lo) + 0.5f : std::ceil(lo) - 0.5f;
  // Rows outside the clip box would be cut away: skip them, keeping the phase.
  const float boxlo = columns ? s.xminpx : s.yminpx, boxhi = columns ? s.xmaxpx : s.ymaxpx;
  if (line < boxlo) line += std::floor((boxlo - line) / step) * step;
  hi = std::min(hi, boxhi + step);
  std::vector<const Edge*> active;
  std::vector<float> xs;
  size_t next = 0;
  const int colour = s.ichnalgl, model = s.icmodel;
  const bool twocolour = s.ifstyl == zelv_graphics::kFillHalfTone && s.ifmeth[static_cast<size_t>(path - 1)] == 2;
  int row = 0;
  bool ok = true;
  for (; line <= hi; line += step, ++row) {
    while (next < edges.size() && edges[next].ylow <= line) active.push_back(&edges[next++]);
    std::erase_if(active, [line](const Edge* e) { return !(e->yhigh > line); });
    if (static_cast<int>(active.size()) > kMaxActive) {
      yyerror(kErrorFill, "YYGrPolygonComplex");
      ok = false;
      break;
    }
    xs.clear();
    for (const Edge* e : active) xs.push_back(e->xhigh + (line - e->yhigh) * e->slope);
    std::sort(xs.begin(), xs.end());
    if (twocolour) yy2col(row, colour, model);
    for (size_t k = 0; k + 1 < xs.size(); k += 2) emit(xs[k], xs[k + 1], line);
  }
  if (twocolour) {
    s.ichnalgl = colour;
    s.icmodel = model;
    yygdrv(zg::OpColour);
  }
  return ok;
}

// Crossings in order along a hatch line: few by exchange, many by a sort.
void yysortverts(std::vector<std::pair<float, float>>& hits) {
  constexpr size_t kExchangeLimit = 7;
  if (hits.size() >= kExchangeLimit) {
    std::sort(hits.begin(), hits.end());
    return;
  }
  for (size_t i = 0; i + 1 < hits.size(); ++i)
    for (size_t j = i + 1; j < hits.size(); ++j)
      if (hits[j] < hits[i]) std::swap(hits[i], hits[j]);
}

// Diagonal hatch lines, aligned to multiples of the step so that neighbouring
// shapes line up.
void yygrpolygonhatch(int path) {
  auto& s = state();
  float xstep = 2, ystep = 2, inset = 0;
  int sx = 2, sy = 2;
  bool diagonal = false;
  yygrfillstepsize(path, s.ifdens, xstep, ystep, sx, sy, inset, diagonal);
  const auto& px = s.xwork;
  const auto& py = s.ywork;
  const size_t n = px.size();
  const float x0 = std::floor(*std::min_element(px.begin(), px.end()) / static_cast<float>(sx)) * static_cast<float>(sx);
  const float x1 = std::ceil(*std::max_element(px.begin(), px.end()) / static_cast<float>(sx)) * static_cast<float>(sx);
  const float y0 = std::floor(*std::min_element(py.begin(), py.end()) / static_cast<float>(sy)) * static_cast<float>(sy);
  const float y1 = std::ceil(*std::max_element(py.begin(), py.end()) / static_cast<float>(sy)) * static_cast<float>(sy);
  const int directions = s.ifstyl == zelv_graphics::kFillCrossHatch ? 2 : 1;
  std::vector<std::pair<float, float>> hits;
  for (int d = 0; d < directions; ++d) {
    const bool rising = (s.ifangl == 1) != (d == 1);
    // Lines of slope +-(sy/sx)*(box height/box width) would not line up; keep the
    // step's own slope and walk its offset over the box.
    const float w = x1 - x0, h = y1 - y0;
    const float slope = static_cast<float>(sy) / static_cast<float>(sx);
    // Only the lines that can cross the clip box are drawn.
    const double step = sy, cx0 = s.xminpx - x0, cx1 = s.xmaxpx - x0;
    double klo, khi;
    if (rising) {
      klo = (y1 + cx0 * slope - s.ymaxpx) / step;
      khi = (y1 + cx1 * slope - s.yminpx) / step;
    } else {
      klo = (s.yminpx - y0 + cx0 * slope) / step;
      khi = (s.ymaxpx - y0 + cx1 * slope) / step;
    }
    const double count = (static_cast<double>(w) * slope + h) / step + 2;
    const int first = static_cast<int>(std::clamp(std::floor(klo), 0.0, count));
    const int last = static_cast<int>(std::clamp(std::ceil(khi), 0.0, count));
    for (int k = first; k <= last; ++k) {
      float ax, ay, bx, by;
      if (rising) {  // y = y1 - k*sy + (x - x0)*slope, lower left to upper right
        ax = x0; ay = y1 - static_cast<float>(k * sy);
        bx = x1; by = ay + w * slope;
      } else {
        ax = x0; ay = y0 + static_cast<float>(k * sy);
        bx = x1; by = ay - w * slope;
      }
      hits.clear();
      for (size_t i = 0; i < n; ++i) {
        const size_t j = (i + 1) % n;
        float cx, cy;
        int status = 0;
        IGrIntersectLine(ax, ay, bx, by, px[i], py[i], px[j], py[j], cx, cy, status);
        if (status == 5) hits.emplace_back(cx, cy);
      }
      yysortverts(hits);
      for (size_t m = 0; m + 1 < hits.size(); m += 2)
        yylini(hits[m].first, hits[m].second, hits[m + 1].first, hits[m + 1].second);
    }
  }
}

void yygrpolygonoutline(int count, bool closed) {
  auto& s = state();
  if (s.ifbord == 0) return;
  const size_t n = std::min(static_cast<size_t>(std::max(count, 0)), s.xwork.size());
  for (size_t i = 0; i + 1 < n; ++i) yylini(s.xwork[i], s.ywork[i], s.xwork[i + 1], s.ywork[i + 1]);
  if (closed && n > 2) yylini(s.xwork[n - 1], s.ywork[n - 1], s.xwork[0], s.ywork[0]);
}

// The border of a rectangle in raster coordinates.
void yyrect(float x1, float y1, float x2, float y2) {
  yylini(x1, y1, x2, y1);
  yylini(x2, y1, x2, y2);
  yylini(x2, y2, x1, y2);
  yylini(x1, y2, x1, y1);
}

// The screen's device fill: the half-tone (odd operation) in the mean of the
// previous and the present colour.
void yyfact(int op) {
  auto& s = state();
  if (s.igscrn <= 0) return;
  if (op % 2 == 0) {
    yygdrv(op);
    return;
  }
  const int colour = s.ichnalgl, model = s.icmodel, current = yycolourrgb(colour), prev = s.iprevcol;
  int mean = 0;
  for (int sh : {0, 8, 16}) mean |= ((((current >> sh) & 0xFF) + ((prev >> sh) & 0xFF)) / 2) << sh;
  s.icmodel = 0;
  s.ichnalgl = mean;
  yygdrv(zg::OpColour);
  yygdrv(op);
  s.icmodel = model;
  s.ichnalgl = colour;
  yygdrv(zg::OpColour);
}

// The common body of polygon and rectangle fills; `deviceop` is the half-tone
// operation of the shape (9 rectangle, 15 polygon).
void fill_shape(int deviceop) {
  auto& s = state();
  const int style = s.ifstyl;
  if (style >= 3) {
    if (s.ifmeth[0] == 0) yyfact(deviceop + style - 3);
    if (s.ifmeth[0] == 0 && s.ighcpy <= 0) return;
  }
  const auto savedx = s.xwork, savedy = s.ywork;
  const auto grx = s.grx, gry = s.gry;
  const auto igrx = s.igrx, igry = s.igry;
  const int igpar2 = s.igpar2;
  s.igpar1 = 1;
  yyhdrv(deviceop);
  // A driver that can't fill this shape answers -1 and gets the scan lines.
  const bool declined = s.ighcpy > 0 && s.igpar1 == -1;
  for (int path : {kPathScreen, kPathHardcopy}) {
    const bool device = style >= 3 && s.ifmeth[static_cast<size_t>(path - 1)] == 0 &&
                        !(declined && path == kPathHardcopy);
    if (device) continue;
    on_path(path, [&] {
      s.xwork = savedx;
      s.ywork = savedy;
      if (style < 3 && deviceop == zg::OpRectHalf) {
        if (s.ifbord != 0) yyrect(s.xwork[0], s.ywork[0], s.xwork[2], s.ywork[2]);
      } else if (style < 3) {
        yygrpolygonoutline(static_cast<int>(s.xwork.size()), true);
      }
      if (style == 0) return;
      if (style < 3 && (s.ifangl == 1 || s.ifangl == 2)) {
        yygrpolygonhatch(path);
      } else if (style == 1 && s.ifangl == 4) {
        scan_fill(path, true);
      } else if (scan_fill(path, false) && style == 2) {
        scan_fill(path, true);
      }
    });
  }
  s.xwork = savedx;
  s.ywork = savedy;
  s.grx = grx; s.gry = gry; s.igrx = igrx; s.igry = igry; s.igpar2 = igpar2;
  s.igpar1 = -1;
  yyhdrv(deviceop);
}

// Writes one row of gradient pixels, as equal-coloured runs, to both paths.
void gradient_run(int x1, int x2, int y, int rgb) {
  auto& s = state();
  if (s.igscrn > 0) yygapispan(x1, x2, y, rgb);
  if (s.ighcpy <= 0 || yyvra7(x1, x2, y, rgb)) return;
  const int colour = s.ichnalgl, model = s.icmodel, style = s.ifstyl, prev = s.iprevcol;
  s.icmodel = 0;
  s.ichnalgl = rgb;
  s.ifstyl = zelv_graphics::kFillSolid;
  xxhcif(zg::OpColour);
  s.grx[0] = static_cast<float>(x1);
  s.gry[0] = static_cast<float>(y);
  s.grx[1] = static_cast<float>(x2 + 1);
  s.gry[1] = static_cast<float>(y + 1);
  s.igrx = {x1, x2 + 1};
  s.igry = {y, y + 1};
  s.igpar1 = 1;
  xxhcif(zg::OpRectHalf);
  if (s.igpar1 == -1) {
    // A driver without fills takes the run as a line.
    s.grx[1] = static_cast<float>(x2);
    s.gry[1] = static_cast<float>(y);
    xxhcif(zg::OpLine);
  }
  s.igpar1 = -1;
  xxhcif(zg::OpRectHalf);
  s.icmodel = model;
  s.ichnalgl = colour;
  s.ifstyl = style;
  s.iprevcol = prev;
  xxhcif(zg::OpColour);
}

int mix(int a, int b, float t) {
  int out = 0;
  for (int shift : {0, 8, 16}) {
    const float ca = static_cast<float>((a >> shift) & 0xFF), cb = static_cast<float>((b >> shift) & 0xFF);
    out |= (static_cast<int>(ca + (cb - ca) * t + 0.5f) & 0xFF) << shift;
  }
  return out;
}

// Bands of a stepped gradient: each component falls to one of `steps` levels
// spread over the range its vertices span.
struct Bands {
  int steps = 0;
  std::array<int, 3> lo{255, 255, 255}, hi{0, 0, 0};
  int apply(int rgb) const {
    if (steps < 2) return rgb;
    int out = 0;
    for (size_t k = 0; k < 3; ++k) {
      const int shift = static_cast<int>(8 * k), v = (rgb >> shift) & 0xFF, span = hi[k] - lo[k];
      int q = lo[k];
      if (span > 0) {
        const int level = static_cast<int>(std::lround(static_cast<double>(v - lo[k]) / span * (steps - 1)));
        q = lo[k] + static_cast<int>(std::lround(static_cast<double>(level) * span / (steps - 1)));
      }
      out |= std::clamp(q, 0, 255) << shift;
    }
    return out;
  }
};

void yygradienttriangle(const int* idx, const Bands& bands) {
  const auto& s = state();
  const auto& X = s.ishadex;
  const auto& Y = s.ishadey;
  const auto& C = s.ishadec;
  int ylo = std::min({Y[static_cast<size_t>(idx[0])], Y[static_cast<size_t>(idx[1])], Y[static_cast<size_t>(idx[2])]});
  int yhi = std::max({Y[static_cast<size_t>(idx[0])], Y[static_cast<size_t>(idx[1])], Y[static_cast<size_t>(idx[2])]});
  ylo = std::max(ylo, s.iymnpx);
  yhi = std::min(yhi, s.iymxpx);
  for (int y = ylo; y <= yhi; ++y) {
    int xa = 0, xb = 0, ca = 0, cb = 0;
    bool any = false;
    for (int e = 0; e < 3; ++e) {
      const auto i = static_cast<size_t>(idx[e]), j = static_cast<size_t>(idx[(e + 1) % 3]);
      if (Y[i] == Y[j] || y < std::min(Y[i], Y[j]) || y > std::max(Y[i], Y[j])) continue;
      const float t = static_cast<float>(y - Y[j]) / static_cast<float>(Y[i] - Y[j]);
      const int x = yytrunc(static_cast<float>(X[j]) * (1 - t) + static_cast<float>(X[i]) * t + 0.5f);
      const int c = mix(C[j], C[i], t);
      if (!any || x < xa) { xa = x; ca = c; }
      if (!any || x > xb) { xb = x; cb = c; }
      any = true;
    }
    if (!any) continue;
    const int lo = std::max(xa, s.ixmnpx), hi = std::min(xb, s.ixmxpx);
    int runstart = lo, runcolour = -1;
    for (int x = lo; x <= hi; ++x) {
      const float t = xb > xa ? static_cast<float>(x - xa) / static_cast<float>(xb - xa) : 0.0f;
      const int c = bands.apply(mix(ca, cb, t));
      if (c != runcolour) {
        if (runcolour >= 0) gradient_run(runstart, x - 1, y, runcolour);
        runstart = x;
        runcolour = c;
      }
    }
    if (runcolour >= 0) gradient_run(runstart, hi, y, runcolour);
  }
}

void map_points(const float* x, const float* y, int count, int raster, std::vector<float>& rx, std::vector<float>& ry) {
  rx.assign(x, x + count);
  ry.assign(y, y + count);
  if (raster == 0)
    for (size_t i = 0; i < rx.size(); ++i) yye2i(x[i], y[i], rx[i], ry[i]);
}

bool outside_clip(const std::vector<float>& rx, const std::vector<float>& ry) {
  const auto& s = state();
  const auto [xlo, xhi] = std::minmax_element(rx.begin(), rx.end());
  const auto [ylo, yhi] = std::minmax_element(ry.begin(), ry.end());
  return *xhi < s.xminp2 || *xlo > s.xmaxp2 || *yhi < s.yminp2 || *ylo > s.ymaxp2;
}

}  // namespace

void yygrfillstepsize(int path, int density, float& xstep, float& ystep, int& xint, int& yint, float& inset,
                      bool& diagonal) {
  const auto& s = state();
  const int d = std::clamp(density, 1, 20);
  const int ydiv = 10 * (1 << (d - 1)) + 20, xdiv = 10 * (1 << d) + 10;
  inset = (path == kPathScreen && s.modepl != 0) ? 1.0f : 0.0f;
  diagonal = path == kPathHardcopy && s.ifstyl < 3;
  if (path == kPathScreen) {
    if (s.ifstyl < 3) {
      yint = std::max(s.nygraf / ydiv, 2);
      xint = std::max(s.nxgraf / xdiv, 2);
    } else {
      yint = (s.ifstyl == 3 && s.ifmeth[0] == 2) ? 2 : 1;
      xint = yint;
    }
    ystep = static_cast<float>(yint);
    xstep = static_cast<float>(xint);
    return;
  }
  if (s.ifstyl < 3) {
    ystep = s.yngraf / static_cast<float>(ydiv);
    xstep = s.xngraf / static_cast<float>(xdiv);
  } else {
    ystep = xstep = s.yhstep;
  }
  yint = std::max(static_cast<int>(ystep), 1);
  xint = std::max(static_cast<int>(xstep), 1);
}

void IGrIntersectLine(float x1, float y1, float x2, float y2, float x3, float y3, float x4, float y4, float& x,
                      float& y, int& status) {
  const double a = x2 - x1, b = y1 - y2, c = static_cast<double>(x1) * y2 - static_cast<double>(y1) * x2;
  const double d = x4 - x3, e = y3 - y4, f = static_cast<double>(x3) * y4 - static_cast<double>(y3) * x4;
  const double den = e * a - b * d;
  if (std::abs(den) <= (std::abs(e * a) + std::abs(b * d)) / 2000000.0) {
    x = y = 0;
    // On one line when the second segment's start lies on the first line.
    const double off = b * x3 + a * y3 + c;
    const double scale = std::max({std::abs(a), std::abs(b), 1e-30});
    status = std::abs(off) / scale <= 1e-6 * (std::abs(x3) + std::abs(y3) + 1) ? 0 : 1;
    return;
  }
  // Lines b*X + a*Y + c = 0 and e*X + d*Y + f = 0.
  const double cx = (d * c - a * f) / den;
  const double cy = (b * f - e * c) / den;
  x = static_cast<float>(cx);
  y = static_cast<float>(cy);
  const double big = std::max({std::abs(x1), std::abs(y1), std::abs(x2), std::abs(y2), std::abs(x3), std::abs(y3),
                               std::abs(x4), std::abs(y4)});
  const double tol = big / 10000000.0;
  auto on = [&](double p1x, double p1y, double p2x, double p2y) {
    return cx >= std::min(p1x, p2x) - tol && cx <= std::max(p1x, p2x) + tol && cy >= std::min(p1y, p2y) - tol &&
           cy <= std::max(p1y, p2y) + tol;
  };
  const bool first = on(x1, y1, x2, y2), second = on(x3, y3, x4, y4);
  status = first && second ? 5 : second ? 4 : first ? 3 : 2;
}

void yygrpolygoncomplex(const float* x, const float* y, int count, int raster) {
  auto& s = state();
  if (count < 2) return;
  std::vector<float> rx, ry;
  map_points(x, y, count, raster, rx, ry);
  if (raster == 0) IGrMoveTo(x[0], y[0]);
  if (rx.size() > 2 && rx.back() == rx.front() && ry.back() == ry.front()) {
    rx.pop_back();
    ry.pop_back();
  }
  if (outside_clip(rx, ry)) return;
  const auto [xlo, xhi] = std::minmax_element(rx.begin(), rx.end());
  const auto [ylo, yhi] = std::minmax_element(ry.begin(), ry.end());
  s.igrx = {yytrunc(*xlo), yytrunc(*xhi)};
  s.igry = {yytrunc(*ylo), yytrunc(*yhi)};
  s.grx[0] = rx[0];
  s.gry[0] = ry[0];
  s.igpar2 = static_cast<int>(rx.size());
  s.xwork = std::move(rx);
  s.ywork = std::move(ry);
  fill_shape(zg::OpPolyHalf);
}

void yygrrectangle(float x1, float y1, float x2, float y2, bool report) {
  auto& s = state();
  if (x1 == x2 || y1 == y2) {
    if (report) yyerror(kErrorEmpty, s.cerrsub);
    return;
  }
  float ax, ay, bx, by;
  yye2i(x1, y1, ax, ay);
  yye2i(x2, y2, bx, by);
  if (ax > bx) std::swap(ax, bx);
  if (ay > by) std::swap(ay, by);
  if (bx < s.xminp2 || ax > s.xmaxp2 || by < s.yminp2 || ay > s.ymaxp2) return;
  s.grx[0] = ax; s.gry[0] = ay; s.grx[1] = bx; s.gry[1] = by;
  s.igrx = {std::max(yytrunc(ax), s.ixmnpx), std::min(yytrunc(bx), s.ixmxpx)};
  s.igry = {std::max(yytrunc(ay), s.iymnpx), std::min(yytrunc(by), s.iymxpx)};
  s.xwork = {ax, bx, bx, ax};
  s.ywork = {ay, ay, by, by};
  s.igpar2 = 4;
  fill_shape(zg::OpRectHalf);
}

void yygradientfill(int /*iymin*/, int /*iymax*/, int /*ixmin*/, int /*ixmax*/, int steps) {
  auto& s = state();
  // Consecutive vertices on one position become one, with the mean colour.
  std::vector<int> gx, gy, gc;
  for (int i = 0; i < s.nshvert;) {
    int j = i, r = 0, g = 0, b = 0;
    while (j < s.nshvert && s.ishadex[static_cast<size_t>(j)] == s.ishadex[static_cast<size_t>(i)] &&
           s.ishadey[static_cast<size_t>(j)] == s.ishadey[static_cast<size_t>(i)]) {
      const int c = s.ishadec[static_cast<size_t>(j)];
      r += c & 0xFF; g += (c >> 8) & 0xFF; b += (c >> 16) & 0xFF;
      ++j;
    }
    const int k = j - i;
    gx.push_back(s.ishadex[static_cast<size_t>(i)]);
    gy.push_back(s.ishadey[static_cast<size_t>(i)]);
    gc.push_back((r / k) | ((g / k) << 8) | ((b / k) << 16));
    i = j;
  }
  s.ishadex = gx;
  s.ishadey = gy;
  s.ishadec = gc;
  s.nshvert = static_cast<int>(gx.size());
  std::vector<int> tri;
  if (s.nshvert == 3) {
    tri = {0, 1, 2};
  } else {
    std::vector<float> fx(gx.begin(), gx.end()), fy(gy.begin(), gy.end());
    yypolygondecompose(fx, fy, tri);
  }
  Bands bands;
  bands.steps = steps;
  for (int c : gc)
    for (size_t k = 0; k < 3; ++k) {
      const int v = (c >> (8 * k)) & 0xFF;
      bands.lo[k] = std::min(bands.lo[k], v);
      bands.hi[k] = std::max(bands.hi[k], v);
    }
  for (size_t t = 0; t + 2 < tri.size(); t += 3) yygradienttriangle(&tri[t], bands);
}

void yypolygondecompose(const std::vector<float>& x, const std::vector<float>& y, std::vector<int>& triangles) {
  triangles.clear();
  const int n = static_cast<int>(x.size());
  if (n < 3) return;
  std::vector<int> ring(static_cast<size_t>(n));
  // Start at the vertex of largest X, which is convex whatever the winding.
  const int start = static_cast<int>(std::max_element(x.begin(), x.end()) - x.begin());
  for (int i = 0; i < n; ++i) ring[static_cast<size_t>(i)] = (start + i) % n;
  auto cross = [&](int a, int b, int c) {
    const auto A = static_cast<size_t>(a), B = static_cast<size_t>(b), C = static_cast<size_t>(c);
    return (x[B] - x[A]) * (y[C] - y[A]) - (y[B] - y[A]) * (x[C] - x[A]);
  };
  const float winding = cross(ring[static_cast<size_t>(n - 1)], ring[0], ring[1]) >= 0 ? 1.0f : -1.0f;
  size_t guard = 0;
  while (ring.size() > 3 && guard < ring.size() * ring.size() + 10) {
    bool clipped = false;
    for (size_t i = 0; i < ring.size(); ++i, ++guard) {
      const int a = ring[(i + ring.size() - 1) % ring.size()], b = ring[i], c = ring[(i + 1) % ring.size()];
      if (cross(a, b, c) * winding <= 0) continue;
      bool empty = true;
      for (int p : ring) {
        if (p == a || p == b || p == c) continue;
        if (cross(a, b, p) * winding > 0 && cross(b, c, p) * winding > 0 && cross(c, a, p) * winding > 0) {
          empty = false;
          break;
        }
      }
      if (!empty) continue;
      triangles.insert(triangles.end(), {a, b, c});
      ring.erase(ring.begin() + static_cast<std::ptrdiff_t>(i));
      clipped = true;
      break;
    }
    if (!clipped) break;
  }
  if (ring.size() == 3) triangles.insert(triangles.end(), {ring[0], ring[1], ring[2]});
}

// ---- Public shapes --------------------------------------------------------

void IGrPolygonComplex(std::span<const float> x, std::span<const float> y) {
  yygrpolygoncomplex(x.data(), y.data(), static_cast<int>(std::min(x.size(), y.size())), 0);
}

void IGrRectangle(float x1, float y1, float x2, float y2) {
  state().cerrsub = "IGrRectangle";
  yygrrectangle(x1, y1, x2, y2, true);
}

void IGrCircle(float x, float y, float radius, float ratio) {
  auto& s = state();
  float cx, cy, ex, ey;
  yye2i(x, y, cx, cy);
  yye2i(x + radius, y, ex, ey);
  const float r = std::hypot(ex - cx, ey - cy);
  if (s.ifstyl == zelv_graphics::kFillHatch || s.ifstyl == zelv_graphics::kFillCrossHatch) {
    // Hatches are cut from the outline as a polygon.
    std::vector<float> px(kEllipseVertices), py(kEllipseVertices);
    for (int i = 0; i < kEllipseVertices; ++i) {
      const double a = 2 * M_PI * i / kEllipseVertices;
      px[static_cast<size_t>(i)] = cx + r * static_cast<float>(std::cos(a));
      py[static_cast<size_t>(i)] = cy + r * ratio * static_cast<float>(std::sin(a));
    }
    yygrpolygoncomplex(px.data(), py.data(), kEllipseVertices, 1);
    return;
  }
  if (cx + r < s.xminp2 || cx - r > s.xmaxp2 || cy + r * ratio < s.yminp2 || cy - r * ratio > s.ymaxp2) return;
  s.grx = {cx, r, ratio * s.xgalen / s.ygalen};
  s.gry = {cy, r * ratio, 0};
  s.igrx = {yytrunc(cx), yytrunc(r)};
  s.igry = {yytrunc(cy), yytrunc(r * ratio)};
  if (s.ifstyl >= 3) yyfact(zg::OpEllipseHalf + s.ifstyl - 3);
  else yygdrv(zg::OpCircle);
  s.igpar1 = 1;
  yyhdrv(zg::OpEllipseHalf);
  s.igpar1 = -1;
  yyhdrv(zg::OpEllipseHalf);
}

namespace {
void pie(float x, float y, float radius, float startdeg, float enddeg, bool filled) {
  auto& s = state();
  float cx, cy, ex, ey;
  yye2i(x, y, cx, cy);
  yye2i(x + radius, y, ex, ey);
  const float r = std::hypot(ex - cx, ey - cy);
  if (enddeg < startdeg) enddeg += 360.0f * std::ceil((startdeg - enddeg) / 360.0f);
  s.grx = {cx, r, static_cast<float>(startdeg * kRadian)};
  s.gry = {cy, r, static_cast<float>(enddeg * kRadian)};
  s.igrx = {yytrunc(cx), yytrunc(r)};
  s.igry = {yytrunc(cy), yytrunc(r)};
  if (!filled || s.ifstyl < 3) {
    // An open arc, or a pie's outline through its centre: both are operation
    // 34, told apart by style and density.
    const int style = s.ifstyl, density = s.ifdens;
    s.ifstyl = filled ? style : 0;
    s.ifdens = filled ? 1 : kOpenArcDensity;
    yygdrv(zg::OpArc);
    yyhdrv(zg::OpArc);
    s.ifstyl = style;
    s.ifdens = density;
    return;
  }
  yyfact(zg::OpPieHalf + s.ifstyl - 3);
  s.igpar1 = 1;
  yyhdrv(zg::OpPieHalf);
  s.igpar1 = -1;
  yyhdrv(zg::OpPieHalf);
}
}  // namespace

void IGrPie(float x, float y, float radius, float startdeg, float enddeg) { pie(x, y, radius, startdeg, enddeg, true); }
void IGrArc(float x, float y, float radius, float startdeg, float enddeg) { pie(x, y, radius, startdeg, enddeg, false); }

void IGrGradient(std::span<const float> x, std::span<const float> y, std::span<const int> rgb, int steps) {
  auto& s = state();
  const size_t n = std::min({x.size(), y.size(), rgb.size()});
  s.ishadex.resize(n);
  s.ishadey.resize(n);
  s.ishadec.assign(rgb.begin(), rgb.begin() + static_cast<std::ptrdiff_t>(n));
  for (size_t i = 0; i < n; ++i) {
    float rx, ry;
    yye2i(x[i], y[i], rx, ry);
    // Far-off vertices are held where the scan arithmetic cannot overflow.
    constexpr float kFar = 1.0e6f;
    s.ishadex[i] = yytrunc(std::clamp(rx, -kFar, kFar));
    s.ishadey[i] = yytrunc(std::clamp(ry, -kFar, kFar));
  }
  s.nshvert = static_cast<int>(n);
  yygradientfill(s.iymnpx, s.iymxpx, s.ixmnpx, s.ixmxpx, steps);
}

// For drivers without ellipses, pies or arcs of their own: the shape of the
// present arguments as a polygon or polyline, on the hardcopy path alone.
void yygrhcshape(int op) {
  auto& s = state();
  const auto grx = s.grx, gry = s.gry;
  const auto igrx = s.igrx, igry = s.igry;
  const auto xwork = s.xwork, ywork = s.ywork;
  const int igpar1 = s.igpar1, igpar2 = s.igpar2, screen = s.igscrn;
  std::vector<float> px, py;
  const float cx = grx[0], cy = gry[0];
  bool open = false;
  if (op == zg::OpEllipseHalf) {
    for (int i = 0; i <= kEllipseVertices; ++i) {
      const double a = 2 * M_PI * i / kEllipseVertices;
      px.push_back(cx + grx[1] * static_cast<float>(std::cos(a)));
      py.push_back(cy + gry[1] * static_cast<float>(std::sin(a)));
    }
  } else {
    const float a0 = grx[2], a1 = gry[2], r = grx[1];
    open = op == zg::OpArc && s.ifstyl == 0 && s.ifdens >= kOpenArcDensity;
    const int n = std::max(2, static_cast<int>(std::ceil((a1 - a0) / (2 * M_PI) * kEllipseVertices)));
    if (!open) {
      px.push_back(cx);
      py.push_back(cy);
    }
    for (int i = 0; i <= n; ++i) {
      const float a = a0 + (a1 - a0) * static_cast<float>(i) / static_cast<float>(n);
      px.push_back(cx + r * std::cos(a));
      py.push_back(cy + r * std::sin(a));
    }
    if (!open) {
      px.push_back(cx);
      py.push_back(cy);
    }
  }
  s.igscrn = 0;
  if (open || (op == zg::OpArc) || (op == zg::OpEllipseHalf && s.ifstyl == 0))
    yygrpolyline(px.data(), py.data(), static_cast<int>(px.size()), 1);
  else
    yygrpolygoncomplex(px.data(), py.data(), static_cast<int>(px.size()), 1);
  s.igscrn = screen;
  s.grx = grx; s.gry = gry; s.igrx = igrx; s.igry = igry;
  s.xwork = xwork; s.ywork = ywork;
  s.igpar1 = igpar1; s.igpar2 = igpar2;
}

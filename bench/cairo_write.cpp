// The benchmark scene drawn by Cairo onto its PostScript and SVG surfaces: the
// same segments and polygons, the same page, pen and colours as our drivers
// get, so that the two writers can be timed side by side.
#include "graphics_scene.h"

#include <cairo-ps.h>
#include <cairo-svg.h>
#include <cairo.h>

#include <array>
#include <chrono>

namespace bench_graphics {

namespace {

// Our drivers paint a path every 255 elements; Cairo strokes as often, so
// that neither holds the whole drawing in one path.
constexpr int kPathLimit = 255;
constexpr double kLineWidth = 0.5;  // points: our default hardcopy width

void draw(cairo_t* cr, const Scene& scene, double width, double height) {
  // Our pages count Y upwards; Cairo's downwards.
  cairo_translate(cr, 0, height);
  cairo_scale(cr, 1, -1);
  cairo_set_line_width(cr, kLineWidth);
  cairo_set_source_rgb(cr, 0, 0, 0);
  int elements = 0;
  for (size_t i = 0; i < scene.segments.size(); i += 4) {
    cairo_move_to(cr, scene.segments[i] * width, scene.segments[i + 1] * height);
    cairo_line_to(cr, scene.segments[i + 2] * width, scene.segments[i + 3] * height);
    if (++elements == kPathLimit) {
      cairo_stroke(cr);
      elements = 0;
    }
  }
  if (elements > 0) cairo_stroke(cr);
  cairo_set_fill_rule(cr, CAIRO_FILL_RULE_EVEN_ODD);
  for (int p = 0; p < kPolygons; ++p) {
    const int rgb = scene.rgb[static_cast<size_t>(p)];
    cairo_set_source_rgb(cr, (rgb & 0xFF) / 255.0, ((rgb >> 8) & 0xFF) / 255.0, ((rgb >> 16) & 0xFF) / 255.0);
    for (int k = 0; k < kPolygonVertices; ++k) {
      const size_t at = static_cast<size_t>(2 * (p * kPolygonVertices + k));
      const double x = scene.polygons[at] * width, y = scene.polygons[at + 1] * height;
      if (k == 0) cairo_move_to(cr, x, y);
      else cairo_line_to(cr, x, y);
    }
    cairo_close_path(cr);
    cairo_fill(cr);
  }
}

}  // namespace

double cairo_write(Format format, const std::string& file, const Scene& scene) {
  const auto start = std::chrono::steady_clock::now();
  cairo_surface_t* surface = format == Format::PostScript
                                 ? cairo_ps_surface_create(file.c_str(), kPageWidth, kPageHeight)
                                 : cairo_svg_surface_create(file.c_str(), kPageWidth, kPageHeight);
  cairo_t* cr = cairo_create(surface);
  draw(cr, scene, kPageWidth, kPageHeight);
  cairo_show_page(cr);
  cairo_destroy(cr);
  cairo_surface_finish(surface);
  cairo_surface_destroy(surface);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace bench_graphics

// The drawing of the graphics writing benchmark: one million short line
// segments and 10,000 filled hexagons in colours of their own, in fractions
// of a 640 by 480 point page.
#pragma once

#include <string>
#include <vector>

namespace bench_graphics {

constexpr int kSegments = 1000000;
constexpr int kPolygons = 10000;
constexpr int kPolygonVertices = 6;
constexpr int kPageWidth = 640, kPageHeight = 480;

struct Scene {
  std::vector<float> segments;  // x1 y1 x2 y2 ...
  std::vector<float> polygons;  // x y pairs
  std::vector<int> rgb;         // a colour a polygon, red in the low byte
};

enum class Format { PostScript, Svg };

// Writes the scene by Cairo and returns the seconds it took.
double cairo_write(Format format, const std::string& file, const Scene& scene);

}  // namespace bench_graphics

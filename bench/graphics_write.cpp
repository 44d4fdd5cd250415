// Writing speed of the PostScript and SVG drivers: one million line segments
// and 10,000 filled polygons per file. The two drivers run in turn, pass by
// pass, and the medians are reported.
//
//   bench_graphics_write [PASSES] [DIRECTORY]
#include "toolkit/graphics/graphics.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kSegments = 1000000;
constexpr int kPolygons = 10000;
constexpr int kPolygonVertices = 6;

struct Scene {
  std::vector<float> segments;  // x1 y1 x2 y2 ...
  std::vector<float> polygons;  // x y pairs
  std::vector<int> colours;
};

Scene make_scene() {
  Scene s;
  std::mt19937 random(1);
  std::uniform_real_distribution<float> unit(0.01f, 0.99f), offset(-0.02f, 0.02f);
  std::uniform_int_distribution<int> colour(0, 255);
  s.segments.reserve(4 * kSegments);
  for (int i = 0; i < kSegments; ++i) {
    const float x = unit(random), y = unit(random);
    s.segments.insert(s.segments.end(), {x, y, x + offset(random), y + offset(random)});
  }
  for (int i = 0; i < kPolygons; ++i) {
    const float x = unit(random), y = unit(random);
    for (int k = 0; k < kPolygonVertices; ++k) s.polygons.insert(s.polygons.end(), {x + offset(random), y + offset(random)});
    s.colours.push_back(colour(random));
  }
  return s;
}

double write(int driver, const std::string& file, const Scene& scene) {
  const auto start = std::chrono::steady_clock::now();
  IGrInit("H");
  IGrHardcopySelect(1, driver);
  IGrHardcopy(file);
  for (size_t i = 0; i < scene.segments.size(); i += 4)
    IGrJoin(scene.segments[i], scene.segments[i + 1], scene.segments[i + 2], scene.segments[i + 3]);
  IGrFillPattern(zelv_graphics::kFillSolid);
  std::array<float, kPolygonVertices> x{}, y{};
  for (int p = 0; p < kPolygons; ++p) {
    for (int k = 0; k < kPolygonVertices; ++k) {
      x[static_cast<size_t>(k)] = scene.polygons[static_cast<size_t>(2 * (p * kPolygonVertices + k))];
      y[static_cast<size_t>(k)] = scene.polygons[static_cast<size_t>(2 * (p * kPolygonVertices + k) + 1)];
    }
    IGrColourN(scene.colours[static_cast<size_t>(p)]);
    IGrPolygonComplex(x, y);
  }
  IGrHardcopy("S");
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  const int passes = argc > 1 ? std::max(std::atoi(argv[1]), 1) : 5;
  const std::filesystem::path dir = argc > 2 ? argv[2] : std::filesystem::temp_directory_path();
  const Scene scene = make_scene();
  const std::string ps = (dir / "bench_graphics.ps").string(), svg = (dir / "bench_graphics.svg").string();
  std::vector<double> tps, tsvg;
  for (int i = 0; i < passes; ++i) {
    // Alternate the order so that neither driver always runs on a warm cache.
    if (i % 2 == 0) {
      tps.push_back(write(zelv_graphics::kDriverPostScript, ps, scene));
      tsvg.push_back(write(zelv_graphics::kDriverSvg, svg, scene));
    } else {
      tsvg.push_back(write(zelv_graphics::kDriverSvg, svg, scene));
      tps.push_back(write(zelv_graphics::kDriverPostScript, ps, scene));
    }
  }
  std::printf("%d segments + %d polygons, %d passes\n", kSegments, kPolygons, passes);
  std::printf("PostScript: median %.3f s, %ju bytes\n", median(tps),
              static_cast<uintmax_t>(std::filesystem::file_size(ps)));
  std::printf("SVG:        median %.3f s, %ju bytes\n", median(tsvg),
              static_cast<uintmax_t>(std::filesystem::file_size(svg)));
  std::filesystem::remove(ps);
  std::filesystem::remove(svg);
  return 0;
}

// Writing speed and file size of the PostScript and SVG drivers: one million
// line segments and 10,000 filled polygons per file, beside Cairo writing the
// same drawing to the same formats in the same run when it is built in.
//
// Each pass writes all four files; the order turns round from pass to pass so
// that no writer always follows the same one. Reported: the median and the
// range of each writer's times, and the median and range of our time over
// Cairo's within a pass.
//
//   bench_graphics_write [PASSES] [DIRECTORY]
#include "graphics_scene.h"

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

using namespace bench_graphics;

Scene make_scene() {
  Scene s;
  std::mt19937 random(1);
  std::uniform_real_distribution<float> unit(0.01f, 0.99f), offset(-0.02f, 0.02f);
  std::uniform_int_distribution<int> colour(0, 0xFFFFFF);
  s.segments.reserve(4 * kSegments);
  for (int i = 0; i < kSegments; ++i) {
    const float x = unit(random), y = unit(random);
    s.segments.insert(s.segments.end(), {x, y, x + offset(random), y + offset(random)});
  }
  for (int i = 0; i < kPolygons; ++i) {
    const float x = unit(random), y = unit(random);
    for (int k = 0; k < kPolygonVertices; ++k) s.polygons.insert(s.polygons.end(), {x + offset(random), y + offset(random)});
    s.rgb.push_back(colour(random));
  }
  return s;
}

double our_write(Format format, const std::string& file, const Scene& scene) {
  const auto start = std::chrono::steady_clock::now();
  IGrInit("H");
  if (format == Format::PostScript) {
    IGrHardcopySelect(1, zelv_graphics::kDriverPostScript);
    IGrHardcopyOptions(zelv_graphics::kOptOrientation, 0);
  } else {
    IGrHardcopySelect(1, zelv_graphics::kDriverSvg);
  }
  IGrHardcopyOptions(zelv_graphics::kOptPageWidth, kPageWidth);
  IGrHardcopyOptions(zelv_graphics::kOptPageHeight, kPageHeight);
  IGrHardcopy(file);
  for (size_t i = 0; i < scene.segments.size(); i += 4)
    IGrJoin(scene.segments[i], scene.segments[i + 1], scene.segments[i + 2], scene.segments[i + 3]);
  IGrFillPattern(zelv_graphics::kFillSolid);
  IGrColourModel(0);
  std::array<float, kPolygonVertices> x{}, y{};
  for (int p = 0; p < kPolygons; ++p) {
    for (int k = 0; k < kPolygonVertices; ++k) {
      x[static_cast<size_t>(k)] = scene.polygons[static_cast<size_t>(2 * (p * kPolygonVertices + k))];
      y[static_cast<size_t>(k)] = scene.polygons[static_cast<size_t>(2 * (p * kPolygonVertices + k) + 1)];
    }
    IGrColourN(scene.rgb[static_cast<size_t>(p)]);
    IGrPolygonComplex(x, y);
  }
  IGrHardcopy("S");
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

struct Spread {
  double median, low, high;
};
Spread spread(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return {v[v.size() / 2], v.front(), v.back()};
}

struct Writer {
  const char* name;
  Format format;
  bool ours;
  std::string file;
  std::vector<double> times;
};

}  // namespace

int main(int argc, char** argv) {
  const int passes = argc > 1 ? std::max(std::atoi(argv[1]), 1) : 5;
  const std::filesystem::path dir = argc > 2 ? argv[2] : std::filesystem::temp_directory_path();
  const Scene scene = make_scene();
  std::vector<Writer> writers = {
      {"ours  PostScript", Format::PostScript, true, (dir / "bench_graphics_ours.ps").string(), {}},
      {"ours  SVG", Format::Svg, true, (dir / "bench_graphics_ours.svg").string(), {}},
  };
#ifdef ZELV_BENCH_CAIRO
  writers.push_back({"Cairo PostScript", Format::PostScript, false, (dir / "bench_graphics_cairo.ps").string(), {}});
  writers.push_back({"Cairo SVG", Format::Svg, false, (dir / "bench_graphics_cairo.svg").string(), {}});
  // Pairs by format, so each of ours runs next to its Cairo twin.
  std::swap(writers[1], writers[2]);
#endif
  std::vector<size_t> order(writers.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  for (int pass = 0; pass < passes; ++pass) {
    for (size_t i : order) {
      auto& w = writers[i];
      w.times.push_back(w.ours ? our_write(w.format, w.file, scene) :
#ifdef ZELV_BENCH_CAIRO
                               cairo_write(w.format, w.file, scene)
#else
                               0.0
#endif
      );
    }
    std::reverse(order.begin(), order.end());
  }
  std::printf("%d segments + %d polygons on a %d by %d page, %d passes, order turned each pass\n", kSegments,
              kPolygons, kPageWidth, kPageHeight, passes);
  std::printf("%-17s %9s %9s %9s %12s\n", "writer", "median s", "min s", "max s", "bytes");
  for (const auto& w : writers) {
    const auto t = spread(w.times);
    std::printf("%-17s %9.3f %9.3f %9.3f %12ju\n", w.name, t.median, t.low, t.high,
                static_cast<uintmax_t>(std::filesystem::file_size(w.file)));
  }
#ifdef ZELV_BENCH_CAIRO
  for (size_t i = 0; i + 1 < writers.size(); i += 2) {
    std::vector<double> ratio;
    for (size_t k = 0; k < writers[i].times.size(); ++k) ratio.push_back(writers[i].times[k] / writers[i + 1].times[k]);
    const auto r = spread(ratio);
    const double size = static_cast<double>(std::filesystem::file_size(writers[i].file)) /
                        static_cast<double>(std::filesystem::file_size(writers[i + 1].file));
    std::printf("%s: our time / Cairo's, paired by pass: median %.2f (%.2f to %.2f); our size / Cairo's %.2f\n",
                writers[i].format == Format::PostScript ? "PostScript" : "SVG", r.median, r.low, r.high, size);
  }
#else
  std::printf("Cairo was not found when this was built: the comparison with it is skipped\n");
#endif
  for (const auto& w : writers) std::filesystem::remove(w.file);
  return 0;
}

// Writing and reading a 4096 x 4096 picture as PNG and JPEG, here and by the
// stock `convert` on the same picture in the same run. Each pass runs every
// step once, ours and theirs in turn; medians, lowest and highest are
// reported, with the file sizes.
//
//   bench_image_codec [PASSES] [DIRECTORY]
#include "toolkit/graphics/image_files.h"
#include "toolkit/graphics/image_private.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace zg = zelvy_graph;
namespace fs = std::filesystem;

namespace {

constexpr int kSide = 4096;
constexpr int kQuality = 90;

// A picture with smooth shades, edges and fine detail, like a rendered chart
// with a photograph in it.
zg::RasterPage make_picture() {
  zg::RasterPage page;
  page.allocate(kSide, kSide, 24);
  uint32_t noise = 12345;
  for (int y = 0; y < kSide; ++y)
    for (int x = 0; x < kSide; ++x) {
      noise = noise * 1103515245u + 12345u;
      const int r = (x / 16) & 0xFF, g = (y / 16) & 0xFF;
      const int b = static_cast<int>(128 + 100 * std::sin(x * 0.01) * std::cos(y * 0.013)) + static_cast<int>((noise >> 28) & 7);
      const bool grid = x % 256 < 2 || y % 256 < 2;
      page.set(x, y, grid ? 0u : static_cast<uint32_t>(r | g << 8 | std::clamp(b, 0, 255) << 16));
    }
  return page;
}

void write_ppm(const zg::RasterPage& page, const fs::path& p) {
  std::ofstream out(p, std::ios::binary);
  out << "P6\n" << kSide << " " << kSide << "\n255\n";
  std::vector<char> row(3 * kSide);
  for (int y = kSide - 1; y >= 0; --y) {
    for (int x = 0; x < kSide; ++x) {
      const uint32_t c = page.get(x, y);
      row[3 * static_cast<size_t>(x)] = static_cast<char>(c);
      row[3 * static_cast<size_t>(x) + 1] = static_cast<char>(c >> 8);
      row[3 * static_cast<size_t>(x) + 2] = static_cast<char>(c >> 16);
    }
    out.write(row.data(), static_cast<std::streamsize>(row.size()));
  }
}

template <typename F>
double seconds(F&& f) {
  const auto start = std::chrono::steady_clock::now();
  f();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void shell(const std::string& command) {
  if (std::system(command.c_str()) != 0) {
    std::fprintf(stderr, "failed: %s\n", command.c_str());
    std::exit(1);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int passes = argc > 1 ? std::max(std::atoi(argv[1]), 1) : 5;
  const fs::path dir = argc > 2 ? fs::path(argv[2]) : fs::temp_directory_path() / "zelv_bench_images";
  fs::create_directories(dir);
  const auto page = make_picture();
  const auto ppm = dir / "picture.ppm";
  write_ppm(page, ppm);
  const std::string q = std::to_string(kQuality);
  std::map<std::string, std::vector<double>> times;
  std::vector<int> data;
  for (int pass = 0; pass < passes; ++pass) {
    // Alternate who goes first, so that neither always meets a warm cache.
    const bool ours_first = pass % 2 == 0;
    for (const std::string kind : {"png", "jpg"}) {
      const auto mine = dir / ("ours." + kind), theirs = dir / ("theirs." + kind);
      auto our_write = [&] {
        times["write " + kind + " here"].push_back(seconds([&] {
          const auto r = kind == "png" ? yypng1(page, mine.string()) : yyjpeg1(page, mine.string(), kQuality);
          if (r.error) std::exit(1);
        }));
      };
      auto their_write = [&] {
        times["write " + kind + " convert"].push_back(
            // PNG at its own default compression; JPEG at our quality.
            seconds([&] { shell("convert " + ppm.string() + (kind == "jpg" ? " -quality " + q : std::string()) + " " + theirs.string()); }));
      };
      auto our_read = [&] {
        times["read " + kind + " here"].push_back(seconds([&] {
          IGrLoadImageData(mine.string(), data);
          if (data.size() != static_cast<size_t>(kSide) * kSide) std::exit(1);
        }));
      };
      auto their_read = [&] {
        times["read " + kind + " convert"].push_back(
            seconds([&] { shell("convert " + mine.string() + " -depth 8 rgba:/dev/null"); }));
      };
      if (ours_first) { our_write(); their_write(); our_read(); their_read(); }
      else { their_write(); our_write(); their_read(); our_read(); }
    }
  }
  std::printf("%d x %d picture, %d passes, JPEG quality %d\n", kSide, kSide, passes, kQuality);
  std::printf("%-22s %9s %9s %9s\n", "step", "median s", "min s", "max s");
  for (auto& [name, t] : times) {
    std::sort(t.begin(), t.end());
    std::printf("%-22s %9.3f %9.3f %9.3f\n", name.c_str(), t[t.size() / 2], t.front(), t.back());
  }
  for (const auto* f : {"ours.png", "theirs.png", "ours.jpg", "theirs.jpg"})
    std::printf("%-12s %10ju bytes\n", f, static_cast<uintmax_t>(fs::file_size(dir / f)));
  return 0;
}

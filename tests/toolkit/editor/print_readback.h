// Reading printed PostScript back: its lines, its pages, Ghostscript's
// verdict, and the text on the rendered pages by OCR.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace print_readback {

namespace fs = std::filesystem;

inline fs::path scratch_dir() { return fs::temp_directory_path() / ("zelv_print_" + std::to_string(::getpid())); }

// The scratch directory goes with the test program.
struct ScratchCleanup {
  ~ScratchCleanup() {
    std::error_code ec;
    fs::remove_all(scratch_dir(), ec);
  }
};
inline const ScratchCleanup scratch_cleanup;

inline fs::path scratch(const std::string& name) {
  fs::create_directories(scratch_dir());
  return scratch_dir() / name;
}

inline std::string read_file(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

inline std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string l; std::getline(in, l);) out.push_back(l);
  return out;
}

inline int count_prefix(const std::vector<std::string>& lines, const std::string& prefix) {
  return static_cast<int>(std::count_if(lines.begin(), lines.end(),
                                        [&](const std::string& l) { return l.rfind(prefix, 0) == 0; }));
}

// Ghostscript renders every page without an error; the pages come back as
// PNG files, in order.
inline std::vector<fs::path> render(const fs::path& ps, int dpi = 150) {
  const fs::path dir = ps.parent_path() / (ps.stem().string() + "_pages");
  fs::remove_all(dir);
  fs::create_directories(dir);
  const std::string cmd = "gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=pnggray -r" + std::to_string(dpi) +
                          " -sOutputFile='" + (dir / "p%04d.png").string() + "' '" + ps.string() +
                          "' > '" + (dir / "gs.log").string() + "' 2>&1";
  const int rc = std::system(cmd.c_str());
  EXPECT_EQ(rc, 0) << read_file(dir / "gs.log");
  EXPECT_EQ(read_file(dir / "gs.log").find("Error"), std::string::npos) << read_file(dir / "gs.log");
  std::vector<fs::path> pages;
  for (const auto& e : fs::directory_iterator(dir))
    if (e.path().extension() == ".png") pages.push_back(e.path());
  std::sort(pages.begin(), pages.end());
  return pages;
}

inline std::string ocr(const fs::path& png) {
  const fs::path out = png.parent_path() / (png.stem().string() + "_ocr");
  const std::string cmd = "tesseract '" + png.string() + "' '" + out.string() + "' --psm 6 > /dev/null 2>&1";
  EXPECT_EQ(std::system(cmd.c_str()), 0);
  return read_file(out.string() + ".txt");
}

// Words of letters and digits, lower case.
inline std::vector<std::string> words(const std::string& text) {
  std::vector<std::string> out;
  std::string w;
  for (const char c : text) {
    if (std::isalnum(static_cast<unsigned char>(c))) {
      w.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
    } else if (!w.empty()) {
      out.push_back(w);
      w.clear();
    }
  }
  if (!w.empty()) out.push_back(w);
  return out;
}

// The share of the source's words (of three letters or more) that OCR read.
inline double recognised(const std::string& source, const std::string& read) {
  const auto seen = words(read);
  const std::multiset<std::string> got(seen.begin(), seen.end());
  int total = 0, found = 0;
  for (const auto& w : words(source)) {
    if (w.size() < 3) continue;
    ++total;
    if (got.count(w)) ++found;
  }
  return total == 0 ? 1.0 : static_cast<double>(found) / total;
}

}  // namespace print_readback

// Shared set-up of the graphics tests: a fresh state with the screen path off,
// and a hardcopy written to a temporary file and read back.
#pragma once

#include "toolkit/base/error.h"
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

class GraphicsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    IGrInit("H");
    WInfoError(1);
  }
  void TearDown() override {
    IGrHardcopy("S");
    std::error_code ec;
    std::filesystem::remove(path_, ec);
  }
  zelvy_graph::State& gs() { return zelvy_graph::state(); }

  // Opens a hardcopy on the driver; EPS portrait at the given page size for PostScript.
  void open(int driver, bool eps = true, int width = 640, int height = 480) {
    IGrHardcopySelect(1, driver);
    for (const auto& [option, value] : options_) IGrHardcopyOptions(option, value);
    if (driver == zelv_graphics::kDriverPostScript && eps) {
      IGrHardcopyOptions(zelv_graphics::kOptOrientation, 0);
      IGrHardcopyOptions(zelv_graphics::kOptEncapsulated, 1);
    }
    IGrHardcopyOptions(zelv_graphics::kOptPageWidth, width);
    IGrHardcopyOptions(zelv_graphics::kOptPageHeight, height);
    path_ = (std::filesystem::temp_directory_path() /
             ("zelv_graphics_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "_" +
              ::testing::UnitTest::GetInstance()->current_test_info()->name()))
                .string();
    IGrHardcopy(path_);
  }
  // Closes the hardcopy and returns the file's lines.
  std::vector<std::string> close() {
    IGrHardcopy("S");
    std::ifstream in(path_);
    std::vector<std::string> lines;
    for (std::string l; std::getline(in, l);) lines.push_back(l);
    return lines;
  }
  // Lines written after the set-up, up to the end of the file.
  static std::vector<std::string> after(const std::vector<std::string>& lines, const std::string& marker) {
    for (size_t i = 0; i < lines.size(); ++i)
      if (lines[i] == marker) return {lines.begin() + static_cast<std::ptrdiff_t>(i + 1), lines.end()};
    return {};
  }
  static int count(const std::vector<std::string>& lines, const std::string& text) {
    int n = 0;
    for (const auto& l : lines)
      if (l.find(text) != std::string::npos) ++n;
    return n;
  }

  std::string path_;
  std::vector<std::pair<int, int>> options_;  // set on the driver before it opens
};

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "support/lorx_io_messages.h"

namespace lim = lorx_io_messages;

namespace {

std::vector<std::string> boxes;  // "buttons icon default [title] text"

void record_box(int buttons, int icon, int def, std::string_view text, std::string_view title) {
  boxes.push_back(std::to_string(buttons) + " " + std::to_string(icon) + " " + std::to_string(def) +
                  " [" + std::string(title) + "] " + std::string(text));
}

// What a message routine writes to an output file.
template <typename F>
std::string file_lines(F write) {
  std::FILE* f = std::tmpfile();
  write(f);
  std::rewind(f);
  std::string all;
  for (int c; (c = std::fgetc(f)) != EOF;) all += static_cast<char>(c);
  std::fclose(f);
  return all;
}

class LorxMessages : public ::testing::Test {
 protected:
  void SetUp() override {
    boxes.clear();
    lim::message_box_hook = record_box;
  }
  void TearDown() override { lim::message_box_hook = nullptr; }
};

}  // namespace

TEST_F(LorxMessages, BoxesCarryTheirButtonsIconsAndTitles) {
  lim::error_message("bad cell   ");
  lim::warning_message("careful");
  lim::info_message("done");
  lim::question_message("Save?", "Job");
  lim::stop_message("Stop?");
  lim::question_message("?", std::string(100, 'T'));
  const std::vector<std::string> expected{
      "0 3 1 [Error Message] bad cell", "0 3 1 [Warning Message] careful",
      "0 4 1 [Information Message] done", "3 2 1 [Job] Save?", "3 1 1 [] Stop?",
      "3 2 1 [" + std::string(80, 'T') + "] ?"};
  EXPECT_EQ(boxes, expected);
}

TEST_F(LorxMessages, FileLines) {
  EXPECT_EQ(file_lines([](std::FILE* f) { lim::info_message("cell read  ", f); }),
            "  \n  cell read\n  \n");
  EXPECT_EQ(file_lines([](std::FILE* f) { lim::warning_message("odd cell", f); }),
            " ****\n **** WARNING: odd cell\n ****\n");
  EXPECT_EQ(file_lines([](std::FILE* f) { lim::error_message("no cell", f, "read_job  ", false); }),
            " ****\n **** ERROR: no cell\n ****\n  \n **** Subroutine: read_job\n");
  EXPECT_EQ(boxes.size(), 3u);  // the box comes with the file lines
}

TEST_F(LorxMessages, FatalErrorStopsOnlyWithAFile) {
  lim::error_message("no unit", nullptr, "r", true);  // returns: the file's writer stops
  EXPECT_EQ(boxes.size(), 1u);
  EXPECT_EXIT(
      {
        lim::message_box_hook = nullptr;
        lim::error_message("fatal", std::tmpfile(), "r", true);
      },
      ::testing::ExitedWithCode(EXIT_FAILURE), "Error Message: fatal");
}

namespace {

std::vector<std::string> screen;  // the calls the scroll window made
int editor_line_count = 0;

void install_fake_windows() {
  screen.clear();
  editor_line_count = 0;
  auto& h = lim::scroll_hooks;
  h.screen_height = [] { return 901; };
  h.open_child = [](int height, std::string_view title) {
    screen.push_back("open " + std::to_string(height) + " " + std::string(title));
    return 3;
  };
  h.edit_file = [](int w, int flags, int font) {
    screen.push_back("edit " + std::to_string(w) + " " + std::to_string(flags) + " " +
                     std::to_string(font));
  };
  h.select = [](int w) { screen.push_back("select " + std::to_string(w)); };
  h.editor_lines = [](int) { return editor_line_count; };
  h.put_text_part = [](std::string_view text, int start) {
    screen.push_back("put " + std::to_string(start) + " [" + std::string(text) + "]");
    ++editor_line_count;
  };
  h.close_child = [](int w) { screen.push_back("close " + std::to_string(w)); };
}

}  // namespace

TEST(LorxScrollWindow, OpensOnceWritesLinesAndCloses) {
  install_fake_windows();
  lim::write_scroll_text("first   ");
  lim::write_scroll_text("second", 1);  // the type only matters when opening
  EXPECT_TRUE(lim::wscroll);
  EXPECT_EQ(lim::win_console, 3);
  lim::close_scroll_window();
  lim::close_scroll_window();  // a closed window isn't closed again
  EXPECT_FALSE(lim::wscroll);
  EXPECT_EQ(lim::win_console, -1);
  const std::vector<std::string> expected{
      "open 451 Info Window", "edit 3 8388652 4", "select 3", "put 1 [first\n ]", "select 0",
      "select 3",             "put 2 [second\n ]", "select 0", "close 3"};
  EXPECT_EQ(screen, expected);

  screen.clear();
  lim::write_scroll_text("x", 1);
  lim::close_scroll_window();
  lim::write_scroll_text("x", 2);  // a window without an editor
  lim::close_scroll_window();
  EXPECT_EQ(screen[1], "edit 3 8388644 4");
  EXPECT_EQ(screen[6], "open 451 Info Window");
  EXPECT_EQ(screen[7], "select 3");
  lim::scroll_hooks = {};
}

TEST(LorxScrollWindow, WithoutWindowsOrBoxesTextGoesToStandardError) {
  lim::scroll_hooks = {};
  lim::message_box_hook = nullptr;
  ::testing::internal::CaptureStderr();
  lim::write_scroll_text("running  ");
  lim::info_message("plain");
  lim::question_message("q");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "running\nInformation Message: plain\nq\n");
  EXPECT_FALSE(lim::wscroll);
}

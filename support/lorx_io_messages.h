// lorx_io_messages: how the support library tells the user something.
// Each routine shows a modal message box; with an open output file named, the
// message is repeated there.
#pragma once

#include <cstdio>
#include <optional>
#include <string_view>

namespace lorx_io_messages {

inline int win_console = -1;  // handle of the scroll window, -1 when closed
inline bool wscroll = false;

// The modal box. The message-box layer installs it when it comes up; until
// then the title and text go to standard error. Arguments: button set, icon,
// default button, text, title.
using MessageBoxFn = void (*)(int buttons, int icon, int default_button, std::string_view text,
                              std::string_view title);
inline MessageBoxFn message_box_hook = nullptr;

// The window and editor calls behind the scroll window, installed by the
// toolkit once child windows and editors exist. While any is missing the
// scroll window is standard error.
struct ScrollWindowHooks {
  int (*screen_height)() = nullptr;                                  // screen height in pixels
  int (*open_child)(int height, std::string_view title) = nullptr;   // new handle, -1 on failure
  void (*edit_file)(int window, int flags, int font_type) = nullptr; // editor on no file
  void (*select)(int window) = nullptr;                              // make a window current
  int (*editor_lines)(int window) = nullptr;                         // line count of its editor
  void (*put_text_part)(std::string_view text, int start) = nullptr; // insert before start
  void (*close_child)(int window) = nullptr;
};
inline ScrollWindowHooks scroll_hooks;

void error_message(std::string_view text, std::FILE* unit = nullptr,
                   std::string_view routine = {}, std::optional<bool> fatal = {});
void warning_message(std::string_view text, std::FILE* unit = nullptr);
void info_message(std::string_view text, std::FILE* unit = nullptr);
void question_message(std::string_view text, std::string_view title = {});
void stop_message(std::string_view text, std::string_view title = {});
// Type 0 or absent: a viewer with a command line; 1: a viewer alone; any
// other type: the window without an editor.
void write_scroll_text(std::string_view text, std::optional<int> type = {});
void close_scroll_window();

}  // namespace lorx_io_messages

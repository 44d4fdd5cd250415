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

void error_message(std::string_view text, std::FILE* unit = nullptr,
                   std::string_view routine = {}, std::optional<bool> fatal = {});
void warning_message(std::string_view text, std::FILE* unit = nullptr);
void info_message(std::string_view text, std::FILE* unit = nullptr);
void question_message(std::string_view text, std::string_view title = {});
void stop_message(std::string_view text, std::string_view title = {});
void write_scroll_text(std::string_view text, std::optional<int> type = {});
void close_scroll_window();

}  // namespace lorx_io_messages

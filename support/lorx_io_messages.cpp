// Message boxes of the support library and the scroll window.
#include "support/lorx_io_messages.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

#include "toolkit/base/fixed_text.h"

namespace lorx_io_messages {

namespace {

// Button sets and icons as the message box numbers them.
constexpr int kButtonsOk = 0, kButtonsYesNo = 3;
constexpr int kIconError = 1, kIconQuestion = 2, kIconWarning = 3, kIconInformation = 4;
constexpr std::size_t kTitleWidth = 80;

// Scroll window editor: no menu, no toolbar, read-only; with or without a
// command line under the text.
constexpr int kScrollWithCommandLine = 0x80002C;
constexpr int kScrollPlain = 0x800024;
constexpr int kScrollFontType = 4;

void to_stderr(std::string_view a, std::string_view b = {}) {
  std::string l(a);
  l += b;
  l += '\n';
  std::fwrite(l.data(), 1, l.size(), stderr);
}

void box(int buttons, int icon, std::string_view text, std::string_view title) {
  const std::string_view t = trimmed(title.substr(0, std::min(title.size(), kTitleWidth)));
  const std::string_view m = trimmed(text);
  if (message_box_hook) {
    message_box_hook(buttons, icon, 1, m, t);
    return;
  }
  if (t.empty()) to_stderr(m);
  else to_stderr(std::string(t) + ": ", m);
}

// One line of an output file, with the blank in front that every line has.
void line(std::FILE* unit, std::string_view a, std::string_view b = {}) {
  std::string l = " ";
  l += a;
  l += b;
  l += '\n';
  std::fwrite(l.data(), 1, l.size(), unit);
}

bool scroll_window_available() {
  const ScrollWindowHooks& h = scroll_hooks;
  return h.screen_height && h.open_child && h.edit_file && h.select && h.editor_lines &&
         h.put_text_part && h.close_child;
}

}  // namespace

void error_message(std::string_view text, std::FILE* unit, std::string_view routine,
                   std::optional<bool> fatal) {
  box(kButtonsOk, kIconWarning, text, "Error Message");
  if (!unit) return;  // the stop belongs to whoever writes the file
  line(unit, "****");
  line(unit, "**** ERROR: ", trimmed(text));
  line(unit, "****");
  line(unit, " ");
  if (!routine.empty()) line(unit, "**** Subroutine: ", trimmed(routine));
  if (fatal.value_or(false)) {
    std::fputs("\n", unit);
    line(unit, "**** The Program Will Stop Here.");
    std::fflush(unit);
    std::exit(EXIT_FAILURE);
  }
}

void warning_message(std::string_view text, std::FILE* unit) {
  box(kButtonsOk, kIconWarning, text, "Warning Message");
  if (!unit) return;
  line(unit, "****");
  line(unit, "**** WARNING: ", trimmed(text));
  line(unit, "****");
}

void info_message(std::string_view text, std::FILE* unit) {
  box(kButtonsOk, kIconInformation, text, "Information Message");
  if (!unit) return;
  line(unit, " ");
  line(unit, " ", trimmed(text));
  line(unit, " ");
}

void question_message(std::string_view text, std::string_view title) {
  box(kButtonsYesNo, kIconQuestion, text, title);
}

void stop_message(std::string_view text, std::string_view title) {
  box(kButtonsYesNo, kIconError, text, title);
}

void write_scroll_text(std::string_view text, std::optional<int> type) {
  const std::string_view t = trimmed(text);
  if (!scroll_window_available()) {
    to_stderr(t);
    return;
  }
  const ScrollWindowHooks& h = scroll_hooks;
  if (!wscroll) {
    const int height = static_cast<int>(std::lround(h.screen_height() / 2.0));
    const int handle = h.open_child(height, "Info Window");
    if (handle < 0) {
      to_stderr(t);
      return;
    }
    win_console = handle;
    const int kind = type.value_or(0);
    if (kind == 0) h.edit_file(win_console, kScrollWithCommandLine, kScrollFontType);
    else if (kind == 1) h.edit_file(win_console, kScrollPlain, kScrollFontType);
    wscroll = true;
  }
  h.select(win_console);
  const int at = h.editor_lines(win_console) + 1;
  std::string piece(t);
  piece += "\n ";
  h.put_text_part(piece, at);
  h.select(0);
}

void close_scroll_window() {
  if (wscroll && scroll_hooks.close_child) scroll_hooks.close_child(win_console);
  wscroll = false;
  win_console = -1;
}

}  // namespace lorx_io_messages

// Files of the editor: loading, saving, the backup, the save prompt, the
// file selector for Open and Save As, and the boxes a failure shows.
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <Xm/Text.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <optional>
#include <memory>
#include <string>

#include "toolkit/editor/editor.h"
#include "toolkit/editor/editor_private.h"
#include "toolkit/kernel/comdlg_attach.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/os/command.h"

namespace {

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// Boxes of the common dialogs: button sets and the icon the editor uses.
constexpr int kButtonsOk = 0, kButtonsYesNoCancel = 4, kIconWarning = 3;
constexpr int kAnswerYes = 6, kAnswerNo = 7;
constexpr std::size_t kNameRoom = 1024;  // longest path the selector hands back

void show_error(std::string_view path, std::string_view text, std::string_view title) {
  yyEditMessage(title, std::string(path) + std::string(text));
}

// Room for a file of `size` bytes, not yet touched. A result file of tens of
// megabytes costs more in page faults than in reading: the whole pages inside
// the room are offered to the kernel as large pages.
void make_room(std::string& bytes, std::size_t size) {
  constexpr std::uintptr_t kLargePage = 2u << 20;
  bytes.reserve(size);
  const auto from = reinterpret_cast<std::uintptr_t>(bytes.data());
  const std::uintptr_t first = (from + kLargePage - 1) & ~(kLargePage - 1);
  const std::uintptr_t last = (from + size) & ~(kLargePage - 1);
  if (last > first) ::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
  bytes.resize(size);
}

}  // namespace

EditLastMessage& yyEditLastMessage() {
  static EditLastMessage m;
  return m;
}

void yyEditMessage(std::string_view title, std::string_view text, int icon) {
  EditLastMessage& last = yyEditLastMessage();
  last.title = title;
  last.text = text;
  ++last.count;
  if (!xdisplay()) return;
  yyComdlgAsk(kButtonsOk, icon, 1, text, title);
}

int yyEditQuestion(std::string_view title, std::string_view text) {
  if (!xdisplay()) return 3;
  switch (yyComdlgAsk(kButtonsYesNoCancel, kIconWarning, 1, text, title)) {
    case kAnswerYes: return 1;
    case kAnswerNo: return 2;
    default: return 3;
  }
}

std::string yyEditFullPathname(std::string_view name) {
  if (!name.empty() && name.front() == '/') return std::string(name);
  std::string dir;
  if (char* cwd = ::getcwd(nullptr, 0)) {
    dir = cwd;
    std::free(cwd);
  }
  if (dir != "/") dir += "/";
  return dir + std::string(name);
}

namespace {

void yyeditbackup(const std::string& path) {
  struct stat st{};
  if (::stat(path.c_str(), &st) != 0) return;
  // Quoted for the shell: a path may hold blanks or quotes.
  auto quoted = [](const std::string& p) {
    std::string q = "'";
    for (char c : p) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
  };
  CommandStatus status;
  yyoscommand("cp " + quoted(path) + " " + quoted(path + ".bak"), kCmdWait, -1, status);
}

bool write_file(const std::string& path, EditRecord& r) {
  if (r.Flags & edit_flag::kBackup) yyeditbackup(path);
  File f(std::fopen(path.c_str(), "w"));
  if (!f) {
    show_error(path, "\nCould not open file to write.", "Open Error");
    return false;
  }
  yyEditFinishLoad(r, true);
  char* text = XmTextGetString(r.Text);
  const std::string_view t = text ? text : "";
  bool ok = std::fwrite(t.data(), 1, t.size(), f.get()) == t.size();
  // A saved file always ends with a line end; the text in memory keeps its form.
  if (ok && (t.empty() || t.back() != '\n')) ok = std::fputc('\n', f.get()) != EOF;
  XtFree(text);
  if (std::fflush(f.get()) != 0) ok = false;
  if (!ok) show_error(path, "\nFailed to write entire file.", "Write Error");
  return ok;
}

bool read_file(const std::string& path, EditRecord& r, bool quiet) {
  const bool silent = quiet && (r.Flags & edit_flag::kQuietMissing);
  struct stat st{};
  if (::stat(path.c_str(), &st) != 0) {
    if (!silent)
      show_error(path, "\nFile not found.\nPlease verify the correct file name was given", "Open Error");
    return false;
  }
  if (!S_ISREG(st.st_mode)) {
    show_error(path, "\nFile is not of a regular type.", "Open Error");
    return false;
  }
  File f(std::fopen(path.c_str(), "r"));
  if (!f) {
    if (!silent) show_error(path, "\nCould not open file.", "Open Error");
    return false;
  }
  std::string bytes;
  try {
    make_room(bytes, static_cast<std::size_t>(st.st_size));
  } catch (const std::bad_alloc&) {
    show_error(path, "\nFile too large - not enough memory.", "Allocation Error");
    return false;
  }
  const std::size_t got = std::fread(bytes.data(), 1, bytes.size(), f.get());
  if (got != bytes.size()) {
    show_error(path, "\nFailed to read entire file.", "Read Error");
    bytes.resize(got);
  }
  f.reset();
  yyEditReplaceAll(r, yyEditTextIsPlain(bytes) ? std::move(bytes) : yyEditTextForWidget(bytes));
  r.Bookmark[static_cast<std::size_t>(r.CurrentBuffer - 1)] = -1;
  r.Changed = 0;
  return true;
}

}  // namespace

bool yyEditLoadSave(std::string_view name, bool write, EditRecord& r, bool quiet) {
  if (name.empty()) return false;
  const std::string path = yyEditFullPathname(name);
  r.FileName = path;
  const bool ok = write ? write_file(path, r) : read_file(path, r, quiet);
  if (!ok) {
    yyEditTitle(r);
    return false;
  }
  r.SelectionState = 0;
  r.Dirty = 0;
  yyEditTitle(r);
  return true;
}

namespace {

// The file selector, started on the present file and the buffer's file type.
std::optional<std::string> choose_file(std::string_view title, int flags, EditRecord& r) {
  int& index = r.FilterIndex[static_cast<std::size_t>(r.CurrentBuffer - 1)];
  // The selector hands its choice back in a text of the size it is given.
  std::string start = r.FileName;
  if (start.size() < kNameRoom) start.resize(kNameRoom, ' ');
  std::optional<std::string> name = yyComdlgChooseFile(r.FileFilter, flags, start, title, &index);
  if (!name) return std::nullopt;
  while (!name->empty() && (name->back() == ' ' || name->back() == '\0')) name->pop_back();
  if (name->empty()) return std::nullopt;
  return name;
}

}  // namespace

bool yyEditFileSave(EditRecord& r, bool saveas) {
  if (saveas || r.FileName.empty()) {
    const std::optional<std::string> name = choose_file("Save As", 35, r);
    if (!name) return false;
    return yyEditLoadSave(*name, true, r, false);
  }
  return yyEditLoadSave(r.FileName, true, r, false);
}

bool yyEditCheckSave(EditRecord& r) {
  if ((r.Flags & (edit_flag::kNeverPrompt | edit_flag::kViewer | edit_flag::kNoSave)) || !r.Dirty) return true;
  std::string text = "Save changes";
  if (!r.FileName.empty() && !(r.Flags & edit_flag::kNoNameInTitle)) text += " to " + r.FileName;
  text += "?";
  switch (yyEditQuestion(r.BaseTitle + " ", text)) {
    case 1: return yyEditFileSave(r, false);
    case 2: return true;
    default: return false;
  }
}

void yyEditFileNew(EditRecord& r) {
  yyEditReplaceAll(r, std::string());
  r.Dirty = r.Changed = 0;
  r.SelectionState = 0;
  r.Bookmark[static_cast<std::size_t>(r.CurrentBuffer - 1)] = -1;
  r.FileName.clear();
  yyEditTitle(r);
}

bool yyEditFileOpen(EditRecord& r) {
  if (!yyEditCheckSave(r)) return false;
  const std::optional<std::string> name = choose_file("Open", 162, r);
  if (!name) return false;
  if (!yyEditLoadSave(*name, false, r, false)) {
    r.FileName.clear();
    yyEditTitle(r);
    return false;
  }
  return true;
}

// The buffers of a multi-buffer editor: the store of those not on show, the
// View menu that lists them all, and the commands that add, show and close
// them. Only one buffer's text lives in the text widget at a time.
#include <Xm/Text.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>

#include "toolkit/base/error.h"
#include "toolkit/editor/editor.h"
#include "toolkit/editor/editor_private.h"
#include "toolkit/kernel/comdlg_attach.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/menu.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/window_private.h"

namespace {

constexpr int kOpenSelectorFlags = 162;
constexpr std::size_t kNameRoom = 1024;  // longest path the selector hands back

zelv::Slots<EditInfo, zelvy_win::kSlots>& infos() {
  static zelv::Slots<EditInfo, zelvy_win::kSlots> table;
  return table;
}

// The entry of a buffer in a window's store; null (error under `routine`) when
// the window is no editor or has no such entry.
EditBuffer* entry(int window, int buffer, const char* routine) {
  if (!yyEditRecordOf(window)) {
    yyerror(1028, routine);
    return nullptr;
  }
  EditInfo* info = yyEditInfoOf(window);
  if (!info || buffer < 1 || buffer > static_cast<int>(info->Buffers.size())) {
    yyerror(1067, routine);
    return nullptr;
  }
  return &info->Buffers[static_cast<std::size_t>(buffer - 1)];
}

Time now() { return XtLastTimestampProcessed(xdisplay()); }

// The View menu items are changed through the menu routines, which act on
// the menu of the window the menu layer has selected.
template <class F>
void on_menu(int h, F f) {
  auto& ms = zelvy_menu::state();
  if (!ms.pwRootMenuSub[static_cast<std::size_t>(h)]) return;
  const int win = ms.iWinMenu;
  const bool floating = ms.iFloatMenu;
  ms.iWinMenu = h;
  ms.iFloatMenu = false;
  f();
  ms.iWinMenu = win;
  ms.iFloatMenu = floating;
}

int view_id(int buffer) { return edit_id::kFirstBuffer + buffer - 1; }

void check_view(EditRecord& r, int buffer, bool on) {
  MenuRecord* m = zelvy_menu::state().pwRootMenuSub[static_cast<std::size_t>(r.Window_)].get();
  const int i = m ? m->find(view_id(buffer)) : -1;
  if (i < 0) return;
  auto& fl = m->ItemFlags[static_cast<std::size_t>(i)];
  const std::uint32_t before = fl;
  fl = on ? (fl | kMenuChecked) : (fl & ~kMenuChecked);
  if (fl != before && m->Created) menu_detail::yyMenuDrawItem(*m, i);
}

void name_view(EditRecord& r, int buffer, std::string_view name) {
  on_menu(r.Window_, [&] { WMenuSetString(view_id(buffer), yyEditViewCaption(buffer, name)); });
}

std::string name_of(EditRecord& r, int buffer) {
  if (buffer == r.CurrentBuffer) return r.FileName;
  const EditInfo* info = yyEditInfoOf(r.Window_);
  return info ? info->Buffers[static_cast<std::size_t>(buffer - 1)].Name : std::string();
}

// The buffer that holds this file, 0 none.
int buffer_with(EditRecord& r, std::string_view filename) {
  const std::string full = yyEditFullPathname(filename);
  for (int b = 1; b <= r.BufferCount; ++b)
    if (name_of(r, b) == full) return b;
  return 0;
}

// One buffer, no file, no text, no edit: a file goes into it rather than beside it.
bool untouched(EditRecord& r) {
  return r.BufferCount == 1 && r.FileName.empty() && !r.Dirty && XmTextGetLastPosition(r.Text) == 0;
}

// Parks the buffer on show and puts a new empty one behind the others.
void add_buffer(EditRecord& r) {
  const int old = r.CurrentBuffer;
  check_view(r, old, false);
  yyeditstorebuffer(r.Window_, old);
  const int b = ++r.BufferCount;
  r.CurrentBuffer = b;
  r.FilterIndex[static_cast<std::size_t>(b - 1)] = r.FilterIndex[static_cast<std::size_t>(old - 1)];
  yyEditFileNew(r);
  on_menu(r.Window_, [&] { WMenuItemInsert(view_id(b - 1), 0, view_id(b), yyEditViewCaption(b, "")); });
  check_view(r, b, true);
  yyEditGreyItems(r);
}

// Drops the buffer on show, which is the last one, and shows `back` again.
void drop_last(EditRecord& r, int back) {
  const int b = r.BufferCount;
  on_menu(r.Window_, [&] { WMenuItemDelete(view_id(b)); });
  yyeditclosebuffer(r.Window_, b);
  r.BufferCount = b - 1;
  r.CurrentBuffer = back;
  yyeditretrievebuffer(r.Window_, back);
  check_view(r, back, true);
  yyEditGreyItems(r);
}

}  // namespace

// ---- The store --------------------------------------------------------------------

EditInfo* yyEditInfoOf(int window) {
  if (window < 0 || window >= zelvy_win::kSlots) return nullptr;
  return &infos()[static_cast<std::size_t>(window)];
}

void yyEditInfoCreate(int window, bool multi) {
  EditInfo* info = yyEditInfoOf(window);
  if (!info) return;
  *info = EditInfo{};
  if (multi) {
    info->Capacity = kEditMaxBuffers;
    info->Buffers.assign(kEditMaxBuffers, EditBuffer{});
  }
}

char yyEditPosToCharacter(const EditPieces& text, std::size_t offset) { return text.at(offset); }

void yyeditstorebuffer(int window, int buffer) {
  EditBuffer* b = entry(window, buffer, "yyeditstorebuffer");
  if (!b) return;
  EditRecord& r = *yyEditRecordOf(window);
  yyEditFinishLoad(r, true);
  b->Text = std::string();
  b->HasText = false;
  b->TextLength = WInfoEditor(window, 2);
  b->SelectionStart = WInfoEditor(window, 4);
  b->SelectionEnd = WInfoEditor(window, 5);
  b->Saved = WInfoEditor(window, 1);
  b->ChangedFlag = WInfoEditor(window, 3);
  b->TopLine = WInfoEditor(window, 9) - 1;
  b->BottomLine = WInfoEditor(window, 16);
  b->TotalLines = WInfoEditor(window, 14);
  b->GotoLine = r.GotoLine;
  char* all = XmTextGetString(r.Text);
  b->Text = all ? all : "";
  XtFree(all);
  b->HasText = true;
  b->Length = yyEditCharCount(b->Text);
  b->Name = r.FileName;
  b->HasName = !r.FileName.empty();
}

void yyeditretrievebuffer(int window, int buffer) {
  EditBuffer* b = entry(window, buffer, "yyeditretrievebuffer");
  if (!b) return;
  EditRecord& r = *yyEditRecordOf(window);
  // The switch is no edit: the text goes in as a load does.
  yyEditReplaceAll(r, b->HasText ? std::move(b->Text) : std::string());
  yyEditFinishLoad(r, true);
  b->Text = std::string();
  b->HasText = false;
  const XmTextPosition last = XmTextGetLastPosition(r.Text);
  const XmTextPosition from = std::clamp<XmTextPosition>(b->SelectionStart - 1, 0, last);
  const XmTextPosition to = std::clamp<XmTextPosition>(b->SelectionEnd, 0, last);
  XmTextClearSelection(r.Text, now());
  if (to > from) XmTextSetSelection(r.Text, from, to, now());
  else XmTextSetInsertionPosition(r.Text, to);
  const int top = yyEditConvertPos(2, std::clamp(b->TopLine, 0, r.LineCount - 1), r);
  XmTextSetTopCharacter(r.Text, std::max(0, top));
  r.Dirty = b->Saved ? 0 : 1;
  r.Changed = b->ChangedFlag == 1 ? 1 : 0;
  r.GotoLine = b->GotoLine;
  r.FileName = b->HasName ? b->Name : std::string();
  yyEditTitle(r);
  yyEditUpdateStatusBar(r);
}

void yyeditswap(int window, int from, int to) {
  if (from == to) return;
  yyeditstorebuffer(window, from);
  yyeditretrievebuffer(window, to);
}

void yyeditstorebuffername(int window, int buffer, std::string_view name) {
  EditBuffer* b = entry(window, buffer, "yyeditstorebuffername");
  if (!b) return;
  while (!name.empty() && name.back() == ' ') name.remove_suffix(1);
  b->Name = std::string(name);
  b->HasName = !name.empty();
}

void yyeditgetbuffername(int window, int buffer, std::string& name) {
  name.clear();
  if (EditBuffer* b = entry(window, buffer, "yyeditgetbuffername"); b && b->HasName) name = b->Name;
}

void yyeditgetsave(int window, int buffer, int& saved) {
  saved = 1;
  if (EditBuffer* b = entry(window, buffer, "yyeditgetsave")) saved = b->Saved;
}

void yyeditclosebuffer(int window, int buffer) {
  if (!entry(window, buffer, "yyeditclosebuffer")) return;
  auto& bufs = yyEditInfoOf(window)->Buffers;
  bufs.erase(bufs.begin() + (buffer - 1));
  bufs.emplace_back();
}

void yyeditcleanup(int window) {
  EditInfo* info = yyEditInfoOf(window);
  if (!info || info->Capacity < 2) return;
  info->Buffers = std::vector<EditBuffer>();
  info->Capacity = 0;
}

bool yyEditParkedInfo(int window, int buffer, int code, int& value) {
  const EditInfo* info = yyEditInfoOf(window);
  if (!info || buffer < 1 || buffer > static_cast<int>(info->Buffers.size())) return false;
  const EditBuffer& b = info->Buffers[static_cast<std::size_t>(buffer - 1)];
  switch (code) {
    case 1: value = b.Saved; return true;
    case 2: value = b.Length; return true;
    case 3: value = b.ChangedFlag; return true;
    case 4: value = b.SelectionStart; return true;
    case 5: value = b.SelectionEnd; return true;
    case 9: value = b.TopLine + 1; return true;
    case 14: value = b.TotalLines; return true;
    case 15: value = 0; return true;
    case 16: value = b.BottomLine; return true;
    default: return false;
  }
}

// ---- Commands -------------------------------------------------------------------

std::string yyEditViewCaption(int buffer, std::string_view name) {
  char head[16];
  if (buffer <= 9) std::snprintf(head, sizeof head, "&%1d ", buffer);
  else std::snprintf(head, sizeof head, "&%c ", buffer + 55);
  return head + (name.empty() ? std::string("Untitled") : std::string(name));
}

bool yyEditShowBuffer(EditRecord& r, int buffer) {
  if (buffer < 1 || buffer > r.BufferCount) return false;
  if (buffer != r.CurrentBuffer) {
    check_view(r, r.CurrentBuffer, false);
    yyeditswap(r.Window_, r.CurrentBuffer, buffer);
    r.CurrentBuffer = buffer;
  }
  check_view(r, buffer, true);
  yyEditGreyItems(r);
  return true;
}

bool yyEditBufferNew(EditRecord& r) {
  if (r.BufferCount >= kEditMaxBuffers) return false;
  add_buffer(r);
  return true;
}

void yyEditBufferLoad(EditRecord& r, std::string_view filename) {
  if (const int b = filename.empty() ? 0 : buffer_with(r, filename)) {
    yyEditShowBuffer(r, b);
    return;
  }
  if (!untouched(r)) {
    if (r.BufferCount >= kEditMaxBuffers) {
      yyerror(1068, "WEditFile");
      return;
    }
    add_buffer(r);
  }
  // A failed load leaves the new buffer empty.
  if (!filename.empty()) yyEditLoadSave(filename, false, r, (r.Flags & edit_flag::kQuietMissing) != 0);
  name_view(r, r.CurrentBuffer, r.FileName);
}

bool yyEditBufferOpen(EditRecord& r, int& shown) {
  shown = 0;
  const bool reuse = untouched(r);
  if (!reuse && r.BufferCount >= kEditMaxBuffers) return false;
  int& index = r.FilterIndex[static_cast<std::size_t>(r.CurrentBuffer - 1)];
  std::string start = r.FileName;
  if (start.size() < kNameRoom) start.resize(kNameRoom, ' ');
  std::optional<std::string> name = yyComdlgChooseFile(r.FileFilter, kOpenSelectorFlags, start, "Open", &index);
  while (name && !name->empty() && (name->back() == ' ' || name->back() == '\0')) name->pop_back();
  if (!name || name->empty()) return false;
  if (const int b = buffer_with(r, *name)) {
    yyEditShowBuffer(r, b);
    shown = b;
    return true;
  }
  const int back = r.CurrentBuffer;
  if (!reuse) add_buffer(r);
  if (!yyEditLoadSave(*name, false, r, false)) {
    if (reuse) {
      r.FileName.clear();
      yyEditTitle(r);
    } else {
      drop_last(r, back);
    }
    return false;
  }
  name_view(r, r.CurrentBuffer, r.FileName);
  return true;
}

bool yyEditCloseBuffer(EditRecord& r, bool force) {
  if (!force && !yyEditCheckSave(r)) return false;
  const int c = r.CurrentBuffer;
  if (r.BufferCount <= 1) {
    yyEditFileNew(r);
    name_view(r, 1, "");
    return true;
  }
  yyeditclosebuffer(r.Window_, c);
  for (int b = c; b < r.BufferCount; ++b) {
    const EditInfo* info = yyEditInfoOf(r.Window_);
    name_view(r, b, info->Buffers[static_cast<std::size_t>(b - 1)].Name);
    r.FilterIndex[static_cast<std::size_t>(b - 1)] = r.FilterIndex[static_cast<std::size_t>(b)];
    r.Bookmark[static_cast<std::size_t>(b - 1)] = r.Bookmark[static_cast<std::size_t>(b)];
  }
  on_menu(r.Window_, [&] { WMenuItemDelete(view_id(r.BufferCount)); });
  r.FilterIndex[static_cast<std::size_t>(r.BufferCount - 1)] = 1;
  r.Bookmark[static_cast<std::size_t>(r.BufferCount - 1)] = -1;
  --r.BufferCount;
  r.CurrentBuffer = std::min(c, r.BufferCount);
  yyeditretrievebuffer(r.Window_, r.CurrentBuffer);
  check_view(r, r.CurrentBuffer, true);
  yyEditGreyItems(r);
  return true;
}

bool yyEditCheckSaveAll(EditRecord& r) {
  const int shown = r.CurrentBuffer;
  const EditInfo* info = yyEditInfoOf(r.Window_);
  for (int b = 1; b <= r.BufferCount; ++b) {
    if (b == r.CurrentBuffer || !info || info->Buffers[static_cast<std::size_t>(b - 1)].Saved) continue;
    yyEditShowBuffer(r, b);
    if (!yyEditCheckSave(r)) {
      yyEditShowBuffer(r, shown);
      return false;
    }
  }
  return true;
}

void yyeditselectbuffer(int buffer, int& error) {
  error = 0;
  EditRecord* r = yyEditCurrent(nullptr);
  if (!r) {
    error = 1028;
    return;
  }
  if (!(r->Flags & edit_flag::kMultiBuffer) || !yyEditShowBuffer(*r, buffer)) error = 1067;
}

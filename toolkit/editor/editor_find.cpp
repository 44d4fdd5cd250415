// The Search menu of the editor: the modeless Find and Replace dialogs, Find
// Next and Find Previous, Replace All, and the modal Goto Line dialog.
// A search walks a private copy of the text byte by byte and stops at the
// end of the text in its direction; it never wraps round.
#include <strings.h>

#include <X11/keysym.h>
#include <Xm/Protocols.h>
#include <Xm/Text.h>
#include <Xm/ToggleB.h>

#include <algorithm>
#include <cctype>
#include <clocale>
#include <cstring>
#include <string>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/editor/editor.h"
#include "toolkit/editor/editor_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

namespace {

constexpr int kFindDialog = 32103, kReplaceDialog = 32104, kGotoDialog = 32120;
// Fields of the search dialogs.
constexpr int kFindNextButton = 1, kCancelButton = 2, kReplaceButton = 1506, kReplaceAllButton = 1507;
constexpr int kFindText = 1020, kReplaceText = 1002, kWholeWord = 1006, kMatchCase = 1021;
constexpr int kUp = 1003, kDown = 1004;
// Fields of Goto Line.
constexpr int kLineNumber = 1002, kLineRange = 1003, kOkButton = 1;
constexpr std::size_t kMaxFindText = 1023;
constexpr int kIconInformation = 4;
// Lines between the top of the window and a match that had to be scrolled to.
constexpr int kHitMargin = 6;
constexpr std::size_t kPlainLocaleFrom = 1 << 16;

bool is_word_char(char c) {
  const unsigned char u = static_cast<unsigned char>(c);
  return (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z') || (u >= '0' && u <= '9');
}

bool matches_at(std::string_view text, std::string_view what, std::size_t at, bool ignorecase) {
  if (at + what.size() > text.size()) return false;
  return ignorecase ? ::strncasecmp(text.data() + at, what.data(), what.size()) == 0
                    : std::memcmp(text.data() + at, what.data(), what.size()) == 0;
}

bool whole_word_at(std::string_view text, std::size_t at, std::size_t length) {
  if (at > 0 && is_word_char(text[at - 1])) return false;
  return at + length >= text.size() || !is_word_char(text[at + length]);
}

// Saves the current dialog and puts it back, so that the editor's own dialog
// work leaves the caller's choice alone.
class KeepCurrentDialog {
 public:
  KeepCurrentDialog() : index_(zelvy_dialog::state().iDlgCur), id_(zelvy_data::data().icurdialog) {}
  ~KeepCurrentDialog() {
    auto& ds = zelvy_dialog::state();
    if (id_ != 0 && index_ >= 0 && ds.wDialogInfo[index_].identifier == id_) {
      ds.iDlgCur = index_;
      zelvy_data::data().icurdialog = id_;
    } else {
      ds.iDlgCur = -1;
      zelvy_data::data().icurdialog = 0;
    }
  }
  KeepCurrentDialog(const KeepCurrentDialog&) = delete;
  KeepCurrentDialog& operator=(const KeepCurrentDialog&) = delete;

 private:
  int index_, id_;
};

XtPointer as_client(int h) { return reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(h)); }
int as_handle(XtPointer p) { return static_cast<int>(reinterpret_cast<std::intptr_t>(p)); }

Time now() { return XtLastTimestampProcessed(xdisplay()); }

DialogRecord* search_dialog(EditRecord& r) {
  if (r.FindDialog < 0 || r.FindDialogId == 0) return nullptr;
  DialogRecord& d = zelvy_dialog::state().wDialogInfo[r.FindDialog];
  return d.identifier == r.FindDialogId && d.widget ? &d : nullptr;
}

FieldRecord* field_of(DialogRecord& d, int id) {
  for (FieldRecord& f : d.fields)
    if (f.identifier == id) return &f;
  return nullptr;
}

// The whole text as the search sees it: a private copy, in UTF-8.
std::string whole_text(Widget w) {
  char* all = XmTextGetString(w);
  std::string t = all ? all : "";
  XtFree(all);
  return t;
}

// Character positions of the widget against byte offsets of the copy; both
// are the same for a text of single-byte characters.
struct Positions {
  std::string_view text;
  bool plain;
  std::size_t byte(long chars) const {
    if (chars <= 0) return 0;
    return plain ? std::min(text.size(), static_cast<std::size_t>(chars)) : yyEditByteOffset(text, static_cast<int>(chars));
  }
  long chars(std::size_t byte) const {
    return plain ? static_cast<long>(byte) : yyEditCharCount(text.substr(0, std::min(byte, text.size())));
  }
};

Positions positions_of(std::string_view text, Widget w) {
  return {text, static_cast<std::size_t>(XmTextGetLastPosition(w)) == text.size()};
}

void end_of_text() { yyEditMessage("Find ", "End of text reached", kIconInformation); }

// Replaces a stretch of the widget's text; a large block of plain ASCII goes
// in under the C locale, where the widget converts it many times faster.
void replace_in_widget(Widget w, long from, long to, const std::string& block) {
  const bool ascii = block.size() > kPlainLocaleFrom &&
                     std::all_of(block.begin(), block.end(), [](char c) { return (static_cast<unsigned char>(c) & 0x80) == 0; });
  std::string saved;
  if (ascii) {
    if (const char* cur = std::setlocale(LC_CTYPE, nullptr)) saved = cur;
    std::setlocale(LC_CTYPE, "C");
  }
  XmTextReplace(w, from, to, const_cast<char*>(block.c_str()));
  if (!saved.empty()) std::setlocale(LC_CTYPE, saved.c_str());
}

// Shows a hit: selects it with the caret behind it; a hit that had to be
// scrolled to lands some lines inside the window, not on its edge.
void show_hit(EditRecord& r, long left, long right) {
  Widget t = r.Text;
  const XmTextPosition top = XmTextGetTopCharacter(t);
  XmTextClearSelection(t, now());
  XmTextSetSelection(t, left, right, now());
  XmTextSetInsertionPosition(t, right);
  XmTextShowPosition(t, right);
  const XmTextPosition newtop = XmTextGetTopCharacter(t);
  if (newtop != top) {
    const int line = yyEditConvertPos(1, static_cast<int>(newtop), r) + kHitMargin;
    if (line >= 0 && line < r.LineCount) XmTextSetTopCharacter(t, r.LineStarts[static_cast<std::size_t>(line)]);
    XmTextSetInsertionPosition(t, right);
    XmTextShowPosition(t, right);
  }
}

// ---- The search dialogs' callbacks ----------------------------------------

void yyEditDialogUnload(EditRecord& r);

EditRecord* record_of(XtPointer client) { return yyEditRecordOf(as_handle(client)); }

void finish_dialog(EditRecord& r) {
  yyEditDialogUnload(r);
  if (r.Text) XmProcessTraversal(r.Text, XmTRAVERSE_CURRENT);
}

void yyEditDialogCB(Widget w, XtPointer client, XtPointer) {
  EditRecord* r = record_of(client);
  if (!r) return;
  DialogRecord* d = search_dialog(*r);
  if (!d) return;
  FieldRecord* f = nullptr;
  for (FieldRecord& g : d->fields)
    if (g.widget == w || g.valueWidget == w) f = &g;
  if (!f) return;
  switch (f->identifier) {
    case kFindText: {
      const bool empty = whole_text(w).empty();
      KeepCurrentDialog keep;
      WDialogSelect(r->FindDialogId);
      for (int id : {kFindNextButton, kReplaceButton, kReplaceAllButton})
        if (field_of(*d, id)) WDialogFieldState(id, empty ? 0 : 1);
      break;
    }
    case kFindNextButton: yyEditFindReplace(2, *r); break;
    case kReplaceButton: yyEditFindReplace(0, *r); break;
    case kReplaceAllButton: yyEditFindReplace(1, *r); break;
    case kCancelButton: finish_dialog(*r); break;
    default: break;
  }
}

void yyEditDialogCloseCB(Widget, XtPointer client, XtPointer) {
  if (EditRecord* r = record_of(client)) finish_dialog(*r);
}

// Escape anywhere in the dialog closes it; seen before the dialog engine's own handling.
void yyEditKeyTrans(Widget, XtPointer client, XEvent* ev, Boolean* cont) {
  if (ev->type != KeyPress || XLookupKeysym(&ev->xkey, 0) != XK_Escape) return;
  EditRecord* r = record_of(client);
  if (!r || !search_dialog(*r)) return;
  *cont = False;
  finish_dialog(*r);
}

void connect(DialogRecord& d, EditRecord& r) {
  const XtPointer client = as_client(r.Window_);
  // The dialog talks to the editor alone: the application hears nothing of it.
  d.messageMode = 0;
  for (int id : {kFindNextButton, kCancelButton, kReplaceButton, kReplaceAllButton})
    if (FieldRecord* f = field_of(d, id)) XtAddCallback(f->widget, XmNactivateCallback, yyEditDialogCB, client);
  if (FieldRecord* f = field_of(d, kFindText))
    XtAddCallback(f->valueWidget ? f->valueWidget : f->widget, XmNvalueChangedCallback, yyEditDialogCB, client);
  if (d.shell) {
    Atom del = XmInternAtom(xdisplay(), const_cast<char*>("WM_DELETE_WINDOW"), False);
    XmAddWMProtocolCallback(d.shell, del, yyEditDialogCloseCB, client);
  }
  XtInsertEventHandler(d.widget, KeyPressMask, False, yyEditKeyTrans, client, XtListHead);
  for (FieldRecord& f : d.fields)
    for (Widget w : {f.widget, f.valueWidget})
      if (w) XtInsertEventHandler(w, KeyPressMask, False, yyEditKeyTrans, client, XtListHead);
}

void disconnect(DialogRecord& d, EditRecord& r) {
  const XtPointer client = as_client(r.Window_);
  for (int id : {kFindNextButton, kCancelButton, kReplaceButton, kReplaceAllButton})
    if (FieldRecord* f = field_of(d, id)) XtRemoveCallback(f->widget, XmNactivateCallback, yyEditDialogCB, client);
  if (FieldRecord* f = field_of(d, kFindText))
    XtRemoveCallback(f->valueWidget ? f->valueWidget : f->widget, XmNvalueChangedCallback, yyEditDialogCB, client);
  if (d.shell) {
    Atom del = XmInternAtom(xdisplay(), const_cast<char*>("WM_DELETE_WINDOW"), False);
    XmRemoveWMProtocolCallback(d.shell, del, yyEditDialogCloseCB, client);
  }
  XtRemoveEventHandler(d.widget, KeyPressMask, False, yyEditKeyTrans, client);
  for (FieldRecord& f : d.fields)
    for (Widget w : {f.widget, f.valueWidget})
      if (w) XtRemoveEventHandler(w, KeyPressMask, False, yyEditKeyTrans, client);
}

void yyEditDialogUnload(EditRecord& r) {
  if (DialogRecord* d = search_dialog(r)) {
    KeepCurrentDialog keep;
    disconnect(*d, r);
    WDialogSelect(r.FindDialogId);
    WDialogUnload();
  }
  r.FindDialogId = 0;
  r.FindDialog = -1;
  r.FindWindow = 0;
}

// Fills a freshly loaded search dialog from the stored search.
void yyEditFindInitDlg(EditRecord& r, int resid) {
  const bool have = !r.FindString.empty();
  if (have) WDialogPutString(kFindText, r.FindString);
  WDialogFieldState(kFindNextButton, have ? 1 : 0);
  WDialogPutCheckBox(kWholeWord, (r.FindFlags & edit_find::kWholeWord) ? 1 : 0);
  WDialogPutCheckBox(kMatchCase, (r.FindFlags & edit_find::kIgnoreCase) ? 0 : 1);
  if (resid == kFindDialog) {
    WDialogPutRadioButton((r.FindFlags & edit_find::kUp) ? kUp : kDown);
  } else {
    WDialogFieldState(kReplaceButton, have ? 1 : 0);
    WDialogFieldState(kReplaceAllButton, have ? 1 : 0);
    if (have) WDialogPutString(kReplaceText, r.ReplaceString);
  }
}

// Loads a search dialog over the editor's shell and makes it current; false
// when the resource can't be loaded.
bool yyEditDialogLoad(EditRecord& r, int resid) {
  WDialogLoad(resid, resid, r.Window_);
  return zelvy_data::data().icurdialog == resid && zelvy_dialog::state().iDlgCur >= 0;
}

void open_dialog(EditRecord& r, int resid) {
  KeepCurrentDialog keep;
  yyEditDialogUnload(r);
  if (!yyEditDialogLoad(r, resid)) {
    yyerror(1007, "WEditFile");
    return;
  }
  const int index = zelvy_dialog::state().iDlgCur;
  DialogRecord& d = zelvy_dialog::state().wDialogInfo[index];
  r.FindDialogId = resid;
  r.FindDialog = index;
  yyEditFindInitDlg(r, resid);
  connect(d, r);
  wdialogshowcommon(kFindText, 2, r.Window_);
  if (d.shell && XtIsRealized(d.shell)) r.FindWindow = XtWindow(d.shell);
}

// The search as the dialog on show has it; without a dialog the stored values stand.
void read_dialog(EditRecord& r) {
  DialogRecord* d = search_dialog(r);
  if (!d) return;
  KeepCurrentDialog keep;
  WDialogSelect(r.FindDialogId);
  std::uint32_t flags = 0;
  int state = 0;
  if (field_of(*d, kMatchCase)) {
    WDialogGetCheckBox(kMatchCase, state);
    if (!state) flags |= edit_find::kIgnoreCase;
  }
  if (FieldRecord* up = field_of(*d, kUp); up && XmToggleButtonGetState(up->widget)) flags |= edit_find::kUp;
  if (field_of(*d, kWholeWord)) {
    WDialogGetCheckBox(kWholeWord, state);
    if (state) flags |= edit_find::kWholeWord;
  }
  r.FindFlags = flags;
  // An empty receiver takes the whole text, unpadded.
  std::string text;
  WDialogGetString(kFindText, text);
  int error = 0;
  yyeditfindstring(1, error, text);
  if (field_of(*d, kReplaceText)) {
    std::string with;
    WDialogGetString(kReplaceText, with);
    yyeditfindstring(2, error, with);
  }
}

}  // namespace

// ---- The search itself ---------------------------------------------------------

std::optional<std::size_t> yyEditSearch(std::string_view text, std::string_view what, long start, bool up,
                                        std::uint32_t flags) {
  if (what.empty() || what.size() > text.size()) return std::nullopt;
  const bool ignorecase = flags & edit_find::kIgnoreCase, word = flags & edit_find::kWholeWord;
  const long last = static_cast<long>(text.size() - what.size());  // the last place a match fits
  auto passes = [&](std::size_t at) { return !word || whole_word_at(text, at, what.size()); };
  if (up) {
    for (long at = std::min(start - static_cast<long>(what.size()), last); at >= 0; --at)
      if (matches_at(text, what, static_cast<std::size_t>(at), ignorecase) && passes(static_cast<std::size_t>(at)))
        return static_cast<std::size_t>(at);
    return std::nullopt;
  }
  std::size_t at = static_cast<std::size_t>(std::max(0L, start));
  if (!ignorecase) {
    // Exact matches: the library's search, which is many times faster than a byte-by-byte walk.
    while (at <= static_cast<std::size_t>(last)) {
      const std::size_t hit = text.find(what, at);
      if (hit == std::string_view::npos) return std::nullopt;
      if (passes(hit)) return hit;
      at = hit + 1;
    }
    return std::nullopt;
  }
  // Without case: a walk that compares the rest where the first byte fits in either case.
  const unsigned char first = static_cast<unsigned char>(what[0]);
  const unsigned char lower = static_cast<unsigned char>(std::tolower(first)),
                      upper = static_cast<unsigned char>(std::toupper(first));
  const std::size_t end = static_cast<std::size_t>(last) + 1;
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  for (; at < end; ++at)
    if ((bytes[at] == lower || bytes[at] == upper) && matches_at(text, what, at, true) && passes(at)) return at;
  return std::nullopt;
}

std::string yyEditReplaceEvery(std::string_view text, std::string_view what, std::string_view with,
                               std::uint32_t flags, std::size_t& first, std::size_t& last, int& count) {
  std::string out;
  count = 0;
  first = last = 0;
  std::size_t at = 0, copied = 0;
  while (const std::optional<std::size_t> hit = yyEditSearch(text, what, static_cast<long>(at), false, flags)) {
    if (count == 0) {
      first = *hit;
      out.reserve(text.size() + (with.size() > what.size() ? (with.size() - what.size()) * 1024 : 0));
    }
    out.append(text.substr(copied, *hit - copied));
    out.append(with);
    copied = at = *hit + what.size();
    last = at;
    ++count;
  }
  if (count) out.append(text.substr(copied));
  return out;
}

bool yyEditFindNext(long start, long& left, long& right, std::string_view text, int mode, EditRecord& r) {
  bool up = false;
  if (mode == 2) up = (r.FindFlags & edit_find::kUp) && r.FindDialogId != kReplaceDialog;
  else if (mode == 3) up = !(r.FindFlags & edit_find::kUp);
  const std::optional<std::size_t> hit = yyEditSearch(text, r.FindString, start, up, r.FindFlags);
  if (!hit) {
    end_of_text();
    return false;
  }
  left = static_cast<long>(*hit);
  right = left + static_cast<long>(r.FindString.size());
  return true;
}

void yyEditFindReplace(int mode, EditRecord& r) {
  if (!r.Text) return;
  read_dialog(r);
  if (r.FindString.empty()) return;
  yyEditFinishLoad(r, true);
  if (mode <= 1) yyEditWiden(r, r.ReplaceString);  // before the widget is taken: it may be made anew
  Widget t = r.Text;
  const std::string text = whole_text(t);
  const Positions pos = positions_of(text, t);
  // The search starts one character inside the selection, so that matches
  // that overlap it are found too.
  bool up = false;
  if (mode == 2) up = (r.FindFlags & edit_find::kUp) && r.FindDialogId != kReplaceDialog;
  else if (mode == 3) up = !(r.FindFlags & edit_find::kUp);
  XmTextPosition sl = 0, sr = 0;
  long start = 0;
  const bool selected = XmTextGetSelectionPosition(t, &sl, &sr);
  if (!selected) start = XmTextGetInsertionPosition(t);
  else if (up) start = sr > sl ? sr - 1 : sr;
  else start = sr > sl ? sl + 1 : sl;
  long left = 0, right = 0;
  if (mode == 1) {
    std::size_t first = 0, last = 0;
    int count = 0;
    const std::string out = yyEditReplaceEvery(text, r.FindString, r.ReplaceString, r.FindFlags, first, last, count);
    if (count > 0) {
      // One change of the widget from the first match to the end of the last,
      // not one per match: the line tables then move once.
      const std::size_t tail = text.size() - last;
      const std::string block = out.substr(first, out.size() - tail - first);
      r.Replacing = true;
      XmTextDisableRedisplay(t);
      replace_in_widget(t, pos.chars(first), pos.chars(last), block);
      XmTextEnableRedisplay(t);
      r.Replacing = false;
      yyEditBuildLineStarts(EditPieces{{out, {}, {}}}, r, yyEditWidth);
      yyEditChanged(r);
    }
    end_of_text();
    return;
  }
  if (mode == 2 || mode == 3) {
    if (yyEditFindNext(static_cast<long>(pos.byte(start)), left, right, text, mode, r))
      show_hit(r, pos.chars(static_cast<std::size_t>(left)), pos.chars(static_cast<std::size_t>(right)));
    return;
  }
  // Replace: the selection when it is the find text, then on to the next match.
  long offset = 0;
  if (selected && sr > sl) {
    const std::size_t bl = pos.byte(sl), br = pos.byte(sr);
    const std::string_view sel = std::string_view(text).substr(bl, br - bl);
    const bool same = sel.size() == r.FindString.size() &&
                      ((r.FindFlags & edit_find::kIgnoreCase)
                           ? ::strncasecmp(sel.data(), r.FindString.data(), sel.size()) == 0
                           : sel == r.FindString);
    if (same) {
      XmTextReplace(t, sl, sr, const_cast<char*>(r.ReplaceString.c_str()));
      offset = yyEditCharCount(r.ReplaceString) - (sr - sl);
    }
  }
  if (yyEditFindNext(static_cast<long>(pos.byte(start)), left, right, text, mode, r))
    show_hit(r, pos.chars(static_cast<std::size_t>(left)) + offset, pos.chars(static_cast<std::size_t>(right)) + offset);
}

void yyEditSearchFindReplace(int id, EditRecord& r) {
  switch (id) {
    case edit_id::kFind: open_dialog(r, kFindDialog); break;
    case edit_id::kReplace:
      if (!(r.Flags & edit_flag::kViewer)) open_dialog(r, kReplaceDialog);
      break;
    case edit_id::kFindNext: yyEditFindReplace(2, r); break;
    case edit_id::kFindPrevious: yyEditFindReplace(3, r); break;
    default: break;
  }
}

void yyEditSearchShutdown(EditRecord& r) { yyEditDialogUnload(r); }

void yyeditfindstring(int which, int& error, std::string_view text) {
  error = 0;
  EditRecord* r = yyEditRecordOf(zelvy_win::state().iWinCur);
  if (!r) {
    error = 1028;
    return;
  }
  std::string& target = which == 1 ? r->FindString : r->ReplaceString;
  target = std::string(text.substr(0, std::min(text.size(), kMaxFindText)));
  if (which == 1) yyEditGreyItems(*r);
}

void yyeditfindflags(int flags, int& error) {
  error = 0;
  EditRecord* r = yyEditRecordOf(zelvy_win::state().iWinCur);
  if (!r) {
    error = 1028;
    return;
  }
  r->FindFlags = static_cast<std::uint32_t>(flags);
}

void yyeditgotoline(int window) {
  EditRecord* r = yyEditRecordOf(window);
  if (!r) return;
  const int before = zelvy_win::state().iWinCur;
  if (before != window) WindowSelect(window);
  KeepCurrentDialog keep;
  const int held = zelvy_data::data().ierr;
  WDialogLoad(kGotoDialog, kGotoDialog, window);
  if (zelvy_data::data().icurdialog != kGotoDialog) {
    zelvy_data::data().ierr = held;  // a failed load leaves the caller's error state alone
    if (before != window && yywindowexists(before)) WindowSelect(before);
    return;
  }
  const int total = std::max(1, WInfoEditor(window, 14));
  WDialogRangeInteger(kLineNumber, 1, total);
  WDialogPutString(kLineRange, "(1-" + std::to_string(total) + ")");
  WDialogPutInteger(kLineNumber, std::clamp(r->GotoLine, 1, total));
  wdialogshowcommon(kLineNumber, 1, window);
  if (zelvy_dialog::state().iModalButton == kOkButton) {
    int line = r->GotoLine;
    WDialogGetInteger(kLineNumber, line);
    r->GotoLine = line;
    WindowSelect(window);
    // To the end first, so that the line comes up at the top of the window.
    WEditSetPos(WInfoEditor(window, 2));
    WEditSetPos(line, 2);
  }
  if (zelvy_data::data().icurdialog == kGotoDialog) WDialogUnload();
  zelvy_data::data().ierr = held;
  if (yywindowexists(before)) WindowSelect(before);
}

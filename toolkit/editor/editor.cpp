// Editor windows: the text widget in a window's client area, its menu,
// status bar and title, the messages it takes before the application, and
// the routines that read and write the text.
#include "toolkit/editor/editor.h"
#include "support/lorx_io_messages.h"

#include <sys/stat.h>

#include <X11/Xft/Xft.h>
#include <X11/IntrinsicP.h>
#include <X11/keysym.h>
#include <Xm/Text.h>

#include <algorithm>
#include <cstdint>
#include <clocale>
#include <cstdio>
#include <memory>
#include <vector>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/editor/editor_print.h"
#include "toolkit/editor/editor_private.h"
#include "toolkit/kernel/clipboard_private.h"
#include "toolkit/kernel/display.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/editor_attach.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/statusbar.h"
#include "toolkit/kernel/statusbar_private.h"
#include "toolkit/kernel/toolbar.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

namespace zelvy_edit {
// The editor records by window handle, and what is left of the last modal editor.
struct State {
  zelv::Slots<std::unique_ptr<EditRecord>, zelvy_win::kSlots> records;
  std::array<int, 12> modalInfo{};  // answers to codes 1, 2, 14, 3, 4, 5, 6, 7, 9, 16, 11, 12
  std::uint32_t modalFlags = 0;
  int modalCommandItems = 0;
};
State& state() {
  static State s;
  return s;
}
}  // namespace zelvy_edit

namespace {

auto& es = zelvy_edit::state();

constexpr int kDefaultFontSize = 12;
constexpr std::array<int, 5> kStatusWidths = {140, 40, 40, 40, -1};
constexpr int kStatusPixels = 1;
constexpr int kPartPosition = 1, kPartInsert = 4;
constexpr std::size_t kPlainLocaleFrom = 1 << 16;  // below this the conversion costs nothing worth saving
// A text above kStreamFrom bytes goes in as a first page of kFirstChunk bytes,
// then pieces of kLaterChunk.
constexpr std::size_t kStreamFrom = 1 << 20, kFirstChunk = 1 << 16, kLaterChunk = 4 << 20;
// From this size a plain ASCII text is held a byte a character.
constexpr std::size_t kNarrowFrom = 1 << 20;

XtPointer as_client(int h) { return reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(h)); }
void widen_and_retype(XtPointer client, XtIntervalId*);
int as_handle(XtPointer p) { return static_cast<int>(reinterpret_cast<std::intptr_t>(p)); }

// Advance width of a character in the editor's font, for word wrap; ASCII widths are cached.
int char_width(EditRecord& r, std::string_view ch) {
  const unsigned char c = static_cast<unsigned char>(ch[0]);
  if (c < 128 && r.AsciiWidth[c] > 0) return r.AsciiWidth[c];
  int w = 8;
  if (r.WrapFont && xdisplay()) {
    XGlyphInfo gi{};
    XftTextExtentsUtf8(xdisplay(), r.WrapFont, reinterpret_cast<const FcChar8*>(ch.data()),
                       static_cast<int>(ch.size()), &gi);
    w = gi.xOff;
  } else if (r.FontStruct) {
    w = XTextWidth(r.FontStruct, ch.data(), 1);
  }
  if (c == '\t') w *= 8;
  if (c < 128) r.AsciiWidth[c] = static_cast<short>(std::max(1, w));
  return std::max(1, w);
}

// ---- Fonts ------------------------------------------------------------------

struct FontChoice {
  std::string xftName;
  int size = kDefaultFontSize;
  std::vector<std::string> core;
};

std::vector<std::string> core_list(std::initializer_list<const char*> patterns, int size) {
  std::vector<std::string> out;
  char buf[256];
  const std::string points = std::to_string(size * 10);
  for (const char* p : patterns) {
    std::snprintf(buf, sizeof buf, p, "medium", "r", "*", points.c_str(), "*");
    out.emplace_back(buf);
  }
  return out;
}

FontChoice font_choice(int type, int size, std::string_view name) {
  const int pts = size > 0 ? size : kDefaultFontSize;
  switch (type) {
    case 2:
      return {"Liberation Serif", pts,
              core_list({"-monotype-times new roman-%s-%s-normal--%s-%s-*-*-p-%s-iso8859-1",
                         "-urw-nimbus roman no9 l-%s-%s-normal--%s-%s-*-*-p-%s-iso8859-1",
                         "-adobe-times-%s-%s-normal--%s-%s-*-*-p-%s-iso8859-1"},
                        pts)};
    case 4:
      return {"Nimbus Mono L", pts,
              core_list({"-ibm-courier-%s-%s-normal--%s-%s-*-*-m-%s-iso8859-1",
                         "-monotype-courier new-%s-%s-normal--%s-%s-*-*-m-%s-iso8859-1",
                         "-urw-nimbus mono l-%s-%s-normal--%s-%s-*-*-m-%s-iso8859-1",
                         "-unknown-freemono-%s-%s-normal--%s-%s-*-*-m-%s-iso8859-1",
                         "-adobe-courier-%s-%s-normal--%s-%s-*-*-m-%s-iso8859-1"},
                        pts)};
    case 5: return {std::string(name), pts, {}};
    case 6: return {"Liberation Mono", 9, {"6x13", "-misc-fixed-medium-r-semicondensed--13-120-*-*-c-60-iso8859-1"}};
    case 7: return {"Liberation Mono", 10, {"7x13", "-misc-fixed-medium-r-normal--13-120-*-*-c-70-iso8859-1"}};
    case 8: case 13:
      return {"Liberation Mono", type == 13 ? 12 : 11,
              {"8x13", "-misc-fixed-medium-r-normal--13-120-*-*-c-80-iso8859-1"}};
    case 9: return {"Liberation Mono", 13, {"9x15", "-misc-fixed-medium-r-normal--15-140-*-*-c-90-iso8859-1"}};
    case 10: return {"Liberation Mono", 14, {"10x20", "-misc-fixed-medium-r-normal--20-200-*-*-c-100-iso8859-1"}};
    default:
      return {"Liberation Sans", pts,
              core_list({"-monotype-arial-%s-%s-normal--%s-%s-*-*-p-%s-iso8859-1",
                         "-urw-nimbus sans l-%s-%s-normal--%s-%s-*-*-p-%s-iso8859-1",
                         "-adobe-helvetica-%s-%s-normal--%s-%s-*-*-p-%s-iso8859-1"},
                        pts)};
  }
}

// The render table of the text: Xft when the toolkit runs with it, else the
// first core font of the list that loads, else the last resort.
XmRenderTable yyEditCreateFont(EditRecord& r, std::string_view fontname) {
  const FontChoice f = font_choice(r.FontType, r.FontSize, fontname);
  Arg a[4];
  int n = 0;
  std::string corename;
  r.UsesXft = zelvy_x::state().bXft && !(r.Flags & edit_flag::kCoreFont) && !f.xftName.empty();
  if (r.UsesXft) {
    XtSetArg(a[n], XmNfontName, const_cast<char*>(f.xftName.c_str())); ++n;
    XtSetArg(a[n], XmNfontSize, f.size); ++n;
    XtSetArg(a[n], XmNfontType, XmFONT_IS_XFT); ++n;
    if (r.Flags & edit_flag::kWordWrap) {
      r.WrapFont = XftFontOpen(xdisplay(), zelvy_x::state().iScreen, XFT_FAMILY, XftTypeString,
                               f.xftName.c_str(), XFT_SIZE, XftTypeDouble,
                               static_cast<double>(f.size), nullptr);
    }
  } else {
    for (const std::string& name : f.core)
      if ((r.FontStruct = XLoadQueryFont(xdisplay(), name.c_str()))) {
        corename = name;
        break;
      }
    if (!r.FontStruct) {
      for (const char* last : {"6x13", "-*-*-medium-r-*--*-*-*-*-m-*-iso8859-1"})
        if ((r.FontStruct = XLoadQueryFont(xdisplay(), last))) {
          corename = last;
          break;
        }
      yyerror(1115, "WEditFile");
    }
    if (!r.FontStruct) return nullptr;
    XtSetArg(a[n], XmNfont, r.FontStruct); ++n;
    XtSetArg(a[n], XmNfontType, XmFONT_IS_FONT); ++n;
  }
  XmRendition rend = XmRenditionCreate(zelvy_x::state().rootWidget, const_cast<char*>(XmFONTLIST_DEFAULT_TAG), a, n);
  XmRenderTable table = XmRenderTableAddRenditions(nullptr, &rend, 1, XmMERGE_REPLACE);
  XmRenditionFree(rend);
  return table;
}

// ---- Menu ---------------------------------------------------------------------

std::vector<MenuDescriptor> menu_items(std::uint32_t f) {
  using namespace edit_flag;
  using namespace edit_id;
  const bool viewer = f & kViewer;
  const bool can_new = !(f & kNoNewOpen) && !viewer, can_save = !(f & kNoSave) && !viewer;
  const bool can_saveas = !(f & kNoSaveAs) && !(f & kNoSave);
  const bool can_close = (f & kMultiBuffer) && !(f & kNoClose);
  const bool print = !(f & kNoPrint);
  constexpr int ctrl = 4, shift = 1;
  auto head = [](const char* t, const char* tip, int id) {
    return MenuDescriptor{true, t, 0, tip, id, kMenuHasSub, 0, 0, 0};
  };
  auto item = [](bool inc, std::string t, int mn, const char* tip, int id, int mods = 0, int k = 0, int k2 = 0) {
    return MenuDescriptor{inc, std::move(t), mn, tip, id, 0, mods, k, k2};
  };
  auto sep = [](bool inc) { return MenuDescriptor{inc, "", -1, "", 0, kMenuSeparator, 0, 0, 0}; };
  return {
      head("File", "Commands to load, save and print files", kFile),
      item(can_new, "New\bCtrl+N", 0, "Create a new document", kNew, ctrl, 'n', 'N'),
      item(!(f & kNoNewOpen), "Open\bCtrl+O", 0, "Open an existing document", kOpen, ctrl, 'o', 'O'),
      item(can_close && !viewer && can_save, "Close", 0, "Close current document; prompts to save changes", kClose),
      item(can_close && (viewer || !can_save), "Close", 0, "Close current document", kClose),
      sep(can_close && (can_save || can_saveas)),
      item(can_save, "Save\bCtrl+S", 0, "Save current document", kSave, ctrl, 's', 'S'),
      item(can_saveas, "Save As\bF12", 5, "Save current document with a new name", kSaveAs, 0, XK_F12),
      sep(can_new || !(f & kNoNewOpen) || can_save || can_saveas),
      item(print, "Print\bCtrl+P", 0, "Print current document", kPrint, ctrl, 'p', 'P'),
      item(print, "Print Selection\bCtrl+Shift+P", 4, "Print selected text", kPrintSelection, ctrl + shift, 'p', 'P'),
      sep(print),
      item(can_save && !viewer, "Exit", 1, "Close the editor; prompts to save changes", kExit),
      item(viewer, "Exit", 1, "Close the browser", kExit),
      item(!can_save && !viewer, "Exit", 1, "Close the editor", kExit),
      head("Edit", "Commands for editing text", kEdit),
      // Ctrl+X, C, V and A stay with the text widget: no accelerator.
      item(!viewer, "Cut\bCtrl+X", 2, "Cut selected text and place it on clipboard", kCut),
      item(true, "Copy\bCtrl+C", 0, "Copy selected text and place it on clipboard", kCopy),
      item(!viewer, "Paste\bCtrl+V", 0, "Insert clipboard contents", kPaste),
      item(!viewer, "Delete\bDel", 0, "Delete selected text", kDelete),
      sep(true),
      item(true, "Select All\bCtrl+A", 7, "Select entire document", kSelectAll),
      head("Search", "Commands to locate and replace text", kSearch),
      item(true, "Find\bCtrl+F", 0, "Find specified text", kFind, ctrl, 'f', 'F'),
      item(true, "Find Next\bF3", 5, "Repeat last search", kFindNext, 0, XK_F3, XK_KP_F3),
      item(true, "Find Previous\bShift+F3", 5, "Repeat last search in opposite direction", kFindPrevious, shift, XK_F3, XK_KP_F3),
      item(!viewer, "Replace\bCtrl+H", 0, "Replace specific text with different text", kReplace, ctrl, 'h', 'H'),
      sep(true),
      item(true, "Set Bookmark\bShift+F2", 0, "Bookmark current cursor position", kSetBookmark, shift, XK_F2, XK_KP_F2),
      item(true, "Goto Bookmark\bF2", 5, "Move to previously bookmarked position", kGotoBookmark, 0, XK_F2, XK_KP_F2),
      item(true, "Goto Line\bCtrl+G", 5, "Move to specified line", kGotoLine, ctrl, 'g', 'G'),
      MenuDescriptor{(f & kMultiBuffer) != 0, "View", 0, "Commands to switch between files", kView, kMenuHasSub, 0, 0, 0},
      MenuDescriptor{(f & kMultiBuffer) != 0, "1 Untitled", 0, "", kFirstBuffer, kMenuChecked, 0, 0, 0},
  };
}

// Items greyed while their condition fails.
void grey_items(EditRecord& r) {
  const int h = r.Window_;
  XmTextPosition a = 0, b = 0;
  const bool sel = r.Text && XmTextGetSelectionPosition(r.Text, &a, &b) && a != b;
  r.SelectionState = sel ? 1 : 0;
  MenuRecord* m = zelvy_menu::state().pwRootMenuSub[h].get();
  auto set = [&](int id, bool on) {
    // The toolbar's button shows what the item shows.
    const int button = yyMenuToolbarButtonState(h, id);
    if (button >= 0) {
      const int want = on ? (button & ~static_cast<int>(kMenuGreyed)) : (button | static_cast<int>(kMenuGreyed));
      if (want != button) yyMenuSetToolbarIdent(h, id, want);
    }
    const int i = m ? m->find(id) : -1;
    if (i < 0) return;
    const std::uint32_t before = m->ItemFlags[static_cast<std::size_t>(i)];
    auto& fl = m->ItemFlags[static_cast<std::size_t>(i)];
    fl = on ? (fl & ~kMenuGreyed) : (fl | kMenuGreyed);
    if (fl != before && m->Created) menu_detail::yyMenuDrawItem(*m, i);
  };
  for (int id : {edit_id::kPrintSelection, edit_id::kCut, edit_id::kCopy, edit_id::kDelete}) set(id, sel);
  set(edit_id::kFindNext, !r.FindString.empty());
  set(edit_id::kFindPrevious, !r.FindString.empty());
  set(edit_id::kGotoBookmark, r.Bookmark[static_cast<std::size_t>(r.CurrentBuffer - 1)] >= 0);
}

void build_menu(EditRecord& r) {
  if (r.Flags & edit_flag::kNoMenu) return;
  const std::vector<MenuDescriptor> items = menu_items(r.Flags);
  yyMenuInstall(r.Window_, yyMenuLoadDynamicMenu(items));
  zelvy_menu::state().pwAccelTable[static_cast<std::size_t>(r.Window_)] = yyMenuLoadDynamicAccel(items);
  grey_items(r);
}

// ---- Line table against the widget ------------------------------------------

std::string substring(Widget w, XmTextPosition start, XmTextPosition end) {
  if (end <= start) return {};
  const int chars = static_cast<int>(end - start);
  std::string buf(static_cast<std::size_t>(chars) * MB_LEN_MAX + 1, '\0');
  if (XmTextGetSubstring(w, start, chars, static_cast<int>(buf.size()), buf.data()) != XmCOPY_SUCCEEDED)
    return {};
  buf.resize(std::char_traits<char>::length(buf.c_str()));
  return buf;
}

bool line_end_before(Widget w, int pos) { return pos <= 0 || substring(w, pos - 1, pos) == "\n"; }

// A change widened to whole text lines: from the start of the line that holds
// its start to the end (before its line end) of the line that holds its end.
void yyEditLineStartEnd(EditRecord& r, int changestart, int changeend, int& start, int& end) {
  const int last = static_cast<int>(XmTextGetLastPosition(r.Text));
  int line = yyEditConvertPos(1, changestart, r);
  while (line > 0 && !line_end_before(r.Text, r.LineStarts[static_cast<std::size_t>(line)])) --line;
  start = r.LineStarts[static_cast<std::size_t>(line)];
  int next = yyEditConvertPos(1, changeend, r) + 1;
  while (next < r.LineCount && !line_end_before(r.Text, r.LineStarts[static_cast<std::size_t>(next)])) ++next;
  end = next < r.LineCount ? r.LineStarts[static_cast<std::size_t>(next)] - 1 : last;
}

void yyEditUpdateLineInfo(EditRecord& r, const XmTextVerifyCallbackStruct& cb) {
  int start = 0, end = 0;
  yyEditLineStartEnd(r, static_cast<int>(cb.startPos), static_cast<int>(cb.endPos), start, end);
  const std::string old = substring(r.Text, start, end);
  EditChange ch;
  ch.start = start;
  ch.end = end;
  ch.startpos = static_cast<int>(cb.startPos);
  ch.endpos = static_cast<int>(cb.endPos);
  ch.oldtext = old;
  ch.block = cb.text && cb.text->ptr ? std::string_view(cb.text->ptr, static_cast<std::size_t>(cb.text->length))
                                     : std::string_view{};
  yyEditApplyChange(ch, r, char_width);
}

void rebuild_line_table(EditRecord& r) {
  char* all = XmTextGetString(r.Text);
  yyEditBuildLineStarts(EditPieces{{all ? std::string_view(all) : std::string_view{}, {}, {}}}, r, char_width);
  XtFree(all);
}

// The window has a new size: with word wrap the lines follow the width.
void yyEditResize(EditRecord& r) {
  if (r.CommandWidget) {
    Dimension cw = 0, ch = 0;
    XtVaGetValues(zelvy_win::state().wtClient[static_cast<std::size_t>(r.Window_)], XmNwidth, &cw, XmNheight, &ch,
                  nullptr);
    yyEditCommandLayout(r, cw, ch);
  }
  if (r.Flags & edit_flag::kWordWrap) {
    yyEditFinishLoad(r, true);
    Dimension w = 0, margin = 0;
    XtVaGetValues(r.Text, XmNwidth, &w, XmNmarginWidth, &margin, nullptr);
    r.WrapWidth = std::max(1, static_cast<int>(w) - 2 * margin - 8);
    rebuild_line_table(r);
  }
  yyEditUpdateStatusBar(r);
}

// ---- Callbacks --------------------------------------------------------------

void yyEditTextCB(Widget w, XtPointer client, XtPointer call) {
  EditRecord* r = yyEditRecordOf(as_handle(client));
  if (!r) return;
  const auto* any = static_cast<XmAnyCallbackStruct*>(call);
  switch (any->reason) {
    case XmCR_MOVING_INSERT_CURSOR: {
      grey_items(*r);
      if (w == r->Text) {
        const auto* cb = static_cast<XmTextVerifyCallbackStruct*>(call);
        const int line = yyEditConvertPos(1, static_cast<int>(cb->newInsert), *r);
        const int col = static_cast<int>(cb->newInsert) - r->LineStarts[static_cast<std::size_t>(line)];
        char buf[64];
        std::snprintf(buf, sizeof buf, "Line:%d  Col:%d", line + 1, col + 1);
        if (r->HasStatusBar) WindowOutStatusBar(kPartPosition, buf, r->Window_);
      }
      break;
    }
    case XmCR_MODIFYING_TEXT_VALUE: {
      if (w != r->Text || r->Replacing) break;
      auto* cb = static_cast<XmTextVerifyCallbackStruct*>(call);
      if (!cb->doit) break;
      if (r->Narrow && cb->text && cb->text->ptr &&
          !yyEditTextIsAscii({cb->text->ptr, static_cast<std::size_t>(cb->text->length)})) {
        cb->doit = False;
        r->Retype.assign(cb->text->ptr, static_cast<std::size_t>(cb->text->length));
        r->RetypeFrom = cb->startPos;
        r->RetypeTo = cb->endPos;
        XtAppAddTimeOut(zelvy_x::state().ixContext, 0, widen_and_retype, client);
        break;
      }
      yyEditUpdateLineInfo(*r, *cb);
      auto& mark = r->Bookmark[static_cast<std::size_t>(r->CurrentBuffer - 1)];
      const long long growth = (cb->text ? yyEditCharCount({cb->text->ptr, static_cast<std::size_t>(cb->text->length)}) : 0) -
                               (cb->endPos - cb->startPos);
      if (mark >= 0 && cb->startPos <= mark) mark = std::max<long long>(0, mark + growth);
      break;
    }
    case XmCR_VALUE_CHANGED:
      if (w != r->Text || r->Replacing) break;
      yyEditChanged(*r);
      break;
    case XmCR_FOCUS:
      XtVaSetValues(w, XmNcursorPositionVisible, True, nullptr);
      r->FocusWidget = w;
      break;
    case XmCR_LOSING_FOCUS: XtVaSetValues(w, XmNcursorPositionVisible, False, nullptr); break;
    default: break;
  }
}

// Keys in the text before the widget sees them: Insert toggles between
// inserting and overtyping, and the status bar follows.
void yyEditProcessEvent(Widget, XtPointer client, XEvent* ev, Boolean*) {
  EditRecord* r = yyEditRecordOf(as_handle(client));
  if (!r || ev->type != KeyPress || (ev->xkey.state & (ShiftMask | ControlMask))) return;
  const KeySym ks = XLookupKeysym(&ev->xkey, 0);
  if (ks != XK_Insert && ks != XK_KP_Insert) return;
  r->InsertState = r->InsertState ? 0 : 1;
  if (r->HasStatusBar && !(r->Flags & edit_flag::kViewer))
    WindowOutStatusBar(kPartInsert, r->InsertState ? "\tINS" : "\tOVR", r->Window_);
}

// ---- Messages before the application ----------------------------------------

void yyEditFileExit(EditRecord& r, int& type, MessageRecord& m) {
  if (!yyEditCheckSave(r) || ((r.Flags & edit_flag::kMultiBuffer) && !yyEditCheckSaveAll(r))) {
    type = 0;
    return;
  }
  if (r.Mode == 1) {
    const int h = r.Window_;
    es.modalInfo = {WInfoEditor(h, 1), WInfoEditor(h, 2), WInfoEditor(h, 14), WInfoEditor(h, 3),
                    WInfoEditor(h, 4), WInfoEditor(h, 5), WInfoEditor(h, 6), WInfoEditor(h, 7),
                    WInfoEditor(h, 9), WInfoEditor(h, 16), WInfoEditor(h, 11), WInfoEditor(h, 12)};
    es.modalFlags = r.Flags;
    es.modalCommandItems = yyEditHistoryCount(r);
    type = 0;
    yyMsgModalEnd();
    WindowCloseChild(h);
    return;
  }
  type = CloseRequest;
  m = MessageRecord{};
  m.Win = r.Window_;
}

Time now() { return XtLastTimestampProcessed(xdisplay()); }

void yyEditProcessMessage(int& type, MessageRecord& m) {
  EditRecord* r = yyEditRecordOf(m.Win);
  if (!r) return;
  switch (type) {
    case ExposeMessage: type = 0; return;
    case Resize: type = 0; return;  // the window layer has had the editor follow
    case CloseRequest: yyEditFileExit(*r, type, m); return;
    case MenuSelect: yyEditFinishLoad(*r, true); break;
    default: return;
  }
  Widget t = r->Text;
  const bool multi = r->Flags & edit_flag::kMultiBuffer;
  switch (m.Value1) {
    case edit_id::kNew:
      if (multi ? !yyEditBufferNew(*r) : !yyEditCheckSave(*r)) type = 0;
      else if (!multi) yyEditFileNew(*r);
      break;
    case edit_id::kOpen:
      if (multi) {
        int shown = 0;
        if (!yyEditBufferOpen(*r, shown)) type = 0;
        else if (shown) m.Value1 = edit_id::kFirstBuffer + shown - 1;
      } else if (!yyEditFileOpen(*r)) {
        type = 0;
      }
      break;
    case edit_id::kClose:
      if (multi && !yyEditCloseBuffer(*r, false)) type = 0;
      break;
    case edit_id::kSave:
    case edit_id::kSaveAs:
      if (!yyEditFileSave(*r, m.Value1 == edit_id::kSaveAs)) type = 0;
      break;
    case edit_id::kExit: yyEditFileExit(*r, type, m); break;
    case edit_id::kShowCaret: type = 0; break;
    case edit_id::kCut: yyXmTextCut(t, now()); type = 0; break;
    case edit_id::kCopy: yyXmTextCopy(t, now()); type = 0; break;
    case edit_id::kPaste: yyXmTextPaste(t); type = 0; break;
    case edit_id::kPrint:
    case edit_id::kPrintSelection:
      if (!yyEditFilePrint(*r, m.Value1 == edit_id::kPrintSelection)) type = 0;
      break;
    case edit_id::kDelete: XmTextRemove(t); type = 0; break;
    case edit_id::kSelectAll:
      XmTextSetSelection(t, 0, XmTextGetLastPosition(t), now());
      grey_items(*r);
      type = 0;
      break;
    case edit_id::kSetBookmark:
      r->Bookmark[static_cast<std::size_t>(r->CurrentBuffer - 1)] = XmTextGetInsertionPosition(t);
      grey_items(*r);
      break;
    case edit_id::kGotoBookmark: {
      const auto mark = r->Bookmark[static_cast<std::size_t>(r->CurrentBuffer - 1)];
      if (mark >= 0) {
        XmTextSetInsertionPosition(t, static_cast<XmTextPosition>(mark));
        XmTextShowPosition(t, static_cast<XmTextPosition>(mark));
      }
      break;
    }
    case edit_id::kFind: case edit_id::kFindNext: case edit_id::kFindPrevious: case edit_id::kReplace:
      yyEditSearchFindReplace(m.Value1, *r);
      type = 0;
      break;
    case edit_id::kGotoLine:
      yyeditgotoline(r->Window_);
      type = 0;
      break;
    default:
      if (multi && m.Value1 >= edit_id::kFirstBuffer && m.Value1 <= edit_id::kLastBuffer)
        yyEditShowBuffer(*r, m.Value1 - edit_id::kView);
      break;
  }
  // The menu took the focus: the caret comes back.
  if (m.Value1 >= edit_id::kEdit && m.Value1 < edit_id::kSearch) XmProcessTraversal(t, XmTRAVERSE_CURRENT);
}

void yyEditShutdown(int h) {
  EditRecord* r = yyEditRecordOf(h);
  if (!r) return;
  if (r->Mode == 3) yyMsgSemiModelessStack(-1, 1, h);
  yyEditSearchShutdown(*r);
  yyEditFinishLoad(*r, false);
  yyEditCommandDestroy(*r);
  r->Toolbar = nullptr;  // the window's toolbars go with the window
  // The buffers of a modal editor stay readable after it closed.
  if (r->Mode == 1 && yyEditInfoOf(h)->Capacity > 1) *yyEditInfoOf(0) = *yyEditInfoOf(h);
  yyeditcleanup(h);
  if (r->Text) {
    XtRemoveAllCallbacks(r->Text, XmNmodifyVerifyCallback);
    XtRemoveAllCallbacks(r->Text, XmNmotionVerifyCallback);
    XtRemoveAllCallbacks(r->Text, XmNvalueChangedCallback);
    XtRemoveAllCallbacks(r->Text, XmNfocusCallback);
    XtRemoveAllCallbacks(r->Text, XmNlosingFocusCallback);
  }
  if (r->WrapFont) XftFontClose(xdisplay(), r->WrapFont);
  if (r->RenderTable) XmRenderTableFree(r->RenderTable);
  if (r->FontStruct) XFreeFont(xdisplay(), r->FontStruct);
  auto& w = zelvy_win::state().WinInfo[h];
  w.KindData = nullptr;
  w.Content = nullptr;
  es.records[static_cast<std::size_t>(h)].reset();
}

int mode_of(std::optional<int> mode, const WindowRecord& w) {
  int m = mode.value_or(2);
  if (m < 1 || m > 3) m = 2;
  if ((w.Flags & 16) && m != 2) {
    yyerror(1024, "WEditFile");
    m = 2;
  }
  return m;
}

int font_type_of(std::optional<int> type, bool named) {
  if (named) return 5;
  const int t = type.value_or(3);
  if (t == 0) return 3;
  if (t == 1) return 7;
  if ((t >= 2 && t <= 4) || (t >= 6 && t <= 13)) return t;
  yyerror(1116, "WEditFile");
  return 3;
}

// Puts a piece of text into the widget, replacing all (append false) or at
// its end. The widget converts text character by character in the UTF-8
// locale, which dominates the opening of a large file; plain ASCII converts
// the same way in the C locale, many times faster, and the locale is back at once.
void set_chunk(Widget w, std::string_view piece, bool append) {
  const bool ascii = yyEditTextIsAscii(piece);
  std::string saved;
  if (ascii && piece.size() > kPlainLocaleFrom) {
    if (const char* now = std::setlocale(LC_CTYPE, nullptr)) saved = now;
    std::setlocale(LC_CTYPE, "C");
  }
  std::string z(piece);
  if (append) XmTextInsert(w, XmTextGetLastPosition(w), z.data());
  else XmTextSetString(w, z.data());
  if (!saved.empty()) std::setlocale(LC_CTYPE, saved.c_str());
}

// One more piece of a large text, while the program waits for input.
Boolean load_more(XtPointer client) {
  EditRecord* r = yyEditRecordOf(as_handle(client));
  if (!r) return True;
  const std::size_t left = r->Pending.size() - r->PendingFrom;
  std::size_t n = std::min(left, kLaterChunk);
  if (n < left) {
    const std::size_t cut = r->Pending.find('\n', r->PendingFrom + n);
    n = (cut == std::string::npos ? r->Pending.size() : cut + 1) - r->PendingFrom;
  }
  r->Replacing = true;
  const XmTextPosition caret = XmTextGetInsertionPosition(r->Text);
  set_chunk(r->Text, std::string_view(r->Pending).substr(r->PendingFrom, n), true);
  XmTextSetInsertionPosition(r->Text, caret);
  r->Replacing = false;
  r->PendingFrom += n;
  if (r->PendingFrom < r->Pending.size()) return False;
  r->LoadProc = 0;
  r->Pending = std::string();
  r->PendingFrom = 0;
  return True;
}

// The scrolled text widget of an editor. A narrow one keeps a byte per
// character and takes plain ASCII without conversion; a wide one keeps a
// character of any kind in four bytes. The widget sets its width by the
// locale it is made under, so a narrow one is made under the C locale.
void make_text_widget(EditRecord& r, bool narrow) {
  const int h = r.Window_;
  const auto& ad = zelvy_x::state().appData;
  const bool wrap = r.Flags & edit_flag::kWordWrap;
  Arg a[12];
  int n = 0;
  XtSetArg(a[n], XmNeditMode, XmMULTI_LINE_EDIT); ++n;
  XtSetArg(a[n], XmNscrollVertical, True); ++n;
  XtSetArg(a[n], XmNwordWrap, wrap ? True : False); ++n;
  XtSetArg(a[n], XmNscrollHorizontal, wrap ? False : True); ++n;
  XtSetArg(a[n], XmNeditable, (r.Flags & edit_flag::kViewer) ? False : True); ++n;
  XtSetArg(a[n], XmNcursorPositionVisible, False); ++n;
  XtSetArg(a[n], XmNforeground, ad.editForeColor); ++n;
  XtSetArg(a[n], XmNbackground, ad.editBackColor); ++n;
  if (r.RenderTable) {
    XtSetArg(a[n], XmNrenderTable, r.RenderTable); ++n;
  }
  std::string saved;
  if (narrow) {
    if (const char* cur = std::setlocale(LC_CTYPE, nullptr)) saved = cur;
    std::setlocale(LC_CTYPE, "C");
  }
  r.Text = XmCreateScrolledText(zelvy_win::state().wtClient[h], const_cast<char*>("TextEdit"), a, n);
  if (!saved.empty()) std::setlocale(LC_CTYPE, saved.c_str());
  r.Narrow = narrow;
  yyStyleScrollbar(r.Text, 3);
  yyStyleScrollbar(r.Text, 4);
  for (const char* cb : {XmNmotionVerifyCallback, XmNvalueChangedCallback, XmNmodifyVerifyCallback,
                         XmNfocusCallback, XmNlosingFocusCallback})
    XtAddCallback(r.Text, cb, yyEditTextCB, as_client(h));
  XtAddEventHandler(r.Text, KeyPressMask, False, yyEditProcessEvent, as_client(h));
  XtManageChild(r.Text);
  r.FocusWidget = r.Text;
  zelvy_win::state().WinInfo[h].Content = XtParent(r.Text);
}

// Puts a widget of the other width in place of the editor's, holding `text`,
// with the caret and the top line where they were.
void remake_text_widget(EditRecord& r, bool narrow, const std::string& text) {
  Widget old = r.Text;
  const XmTextPosition caret = XmTextGetInsertionPosition(old), top = XmTextGetTopCharacter(old);
  const bool focused = r.FocusWidget == old;
  for (const char* cb : {XmNmotionVerifyCallback, XmNvalueChangedCallback, XmNmodifyVerifyCallback,
                         XmNfocusCallback, XmNlosingFocusCallback})
    XtRemoveAllCallbacks(old, cb);
  XtRemoveEventHandler(old, KeyPressMask, False, yyEditProcessEvent, as_client(r.Window_));
  XtDestroyWidget(XtParent(old));
  make_text_widget(r, narrow);
  r.Replacing = true;
  XmTextDisableRedisplay(r.Text);
  set_chunk(r.Text, text, false);
  const XmTextPosition last = XmTextGetLastPosition(r.Text);
  XmTextSetInsertionPosition(r.Text, std::min(caret, last));
  XmTextSetTopCharacter(r.Text, std::min(top, last));
  XmTextEnableRedisplay(r.Text);
  r.Replacing = false;
  yyWindowResize(r.Window_);
  if (focused) XmProcessTraversal(r.Text, XmTRAVERSE_CURRENT);
}

// A typed or pasted text that a narrow widget can't hold: the widget is made
// wide first, then the change is made again, outside the callback that refused it.
void widen_and_retype(XtPointer client, XtIntervalId*) {
  EditRecord* r = yyEditRecordOf(as_handle(client));
  if (!r || r->Retype.empty()) return;
  const std::string text = std::move(r->Retype);
  r->Retype.clear();
  yyEditWiden(*r, text);
  XmTextReplace(r->Text, r->RetypeFrom, r->RetypeTo, const_cast<char*>(text.c_str()));
  XmTextSetInsertionPosition(r->Text, r->RetypeFrom + yyEditCharCount(text));
}

// Makes the current window an editor; null when it can't be one.
EditRecord* create_editor(int h, int mode, std::uint32_t flags, int fonttype, int fontsize,
                          std::string_view filter, int filterindex, std::string_view fontname) {
  auto& ws = zelvy_win::state();
  WindowRecord& w = ws.WinInfo[h];
  auto rec = std::make_unique<EditRecord>();
  EditRecord& r = *rec;
  r.Window_ = h;
  r.Mode = mode;
  r.Flags = flags;
  r.FontType = fonttype;
  r.FontSize = fontsize;
  r.BaseTitle = w.Title.value_or("");
  const auto& bars = zelvy_sbar::state().psbarInfo;
  r.HasStatusBar = static_cast<std::size_t>(h) < bars.size() && bars[static_cast<std::size_t>(h)] ? 1 : 0;
  r.FileFilter = filter.empty() ? "Text Files (*.txt)|*.txt|All Files (*)|*|" : std::string(filter);
  r.FilterIndex.fill(1);
  r.FilterIndex[0] = filterindex;
  r.Bookmark.fill(-1);
  yyEditLineStartsMem(0, 0, r);
  yyEditLineStartsMem(1, 1, r);
  yyEditLineStartsMem(2, 0, r);
  yyEditLineStartsMem(1, 1, r);
  r.LineStarts[0] = 0;
  r.LineCount = 1;

  r.RenderTable = yyEditCreateFont(r, fontname);  // kept for a widget made again
  make_text_widget(r, false);

  es.records[static_cast<std::size_t>(h)] = std::move(rec);
  w.Kind = 1;
  w.KindData = &r;
  yyEditInfoCreate(h, (flags & edit_flag::kMultiBuffer) != 0);
  yyEditCommandCreate(r);
  // A modal editor shows no toolbar of the window's own, only its own.
  if (mode == 1)
    for (int slot = 0; slot < kToolbarSlots; ++slot) {
      int cw = 0, ch = 0, error = 0;
      if (yyMenuToolbarThickness(h, slot) > 0) yymenutoolbar(0, h, slot, cw, ch, {}, error);
    }
  yyEditToolbarCreate(r);
  build_menu(r);
  if (r.HasStatusBar) {
    const std::array<int, 5> styles = {1, 1, 1, 1, 0};
    WindowStatusBarParts(static_cast<int>(kStatusWidths.size()), kStatusWidths, styles, kStatusPixels);
    if (!(flags & edit_flag::kViewer)) {
      r.InsertState = 1;
      WindowOutStatusBar(kPartInsert, "\tINS", h);
    }
  }
  yyWindowResize(h);
  if (zelvy_menu::state().pwRootMenuSub[h]) yyMenuDrawRoot(h);
  return &r;
}

}  // namespace

// ---- Shared with the other sources ----------------------------------------------

EditRecord* yyEditRecordOf(int h) {
  if (h < 0 || h >= zelvy_win::kSlots) return nullptr;
  return es.records[static_cast<std::size_t>(h)].get();
}

void yyEditChanged(EditRecord& r) {
  r.Dirty = r.Changed = 1;
  yyEditTitle(r);
  if (r.Mode != 1) yyMsgSend(EditorChanged, -1, -1, -1, -1, -1, -1, r.Window_, 0);
}

void yyEditGreyItems(EditRecord& r) { grey_items(r); }

int yyEditWidth(EditRecord& r, std::string_view ch) { return char_width(r, ch); }

EditRecord* yyEditCurrent(const char* routine) {
  EditRecord* r = yyEditRecordOf(zelvy_win::state().iWinCur);
  if (!r && routine) yyerror(1028, routine);
  if (r) yyEditFinishLoad(*r, true);  // whoever asks sees the whole text
  return r;
}

void yyEditTitle(EditRecord& r) {
  std::string t = r.BaseTitle;
  if (!r.FileName.empty() && !(r.Flags & edit_flag::kNoNameInTitle) &&
      t.size() + r.FileName.size() + 5 < 1024) {
    t += " - [" + r.FileName;
    if ((r.Flags & edit_flag::kDirtyMark) && r.Dirty) t += " *";
    t += "]";
  }
  const int h = r.Window_;
  auto& ws = zelvy_win::state();
  if (ws.WinInfo[h].Title == t) return;
  ws.WinInfo[h].Title = t;
  if (ws.wShell[h]) {
    XStoreName(xdisplay(), ws.wShell[h], t.c_str());
    XSetIconName(xdisplay(), ws.wShell[h], t.c_str());
  }
}

void yyEditUpdateStatusBar(EditRecord& r) {
  if (!r.HasStatusBar || !r.Text) return;
  const int pos = static_cast<int>(XmTextGetInsertionPosition(r.Text));
  const int line = yyEditConvertPos(1, pos, r);
  char buf[64] = "";
  if (line >= 0 && line < r.LineCount)
    std::snprintf(buf, sizeof buf, "Line:%d  Col:%d", line + 1, pos - r.LineStarts[static_cast<std::size_t>(line)] + 1);
  WindowOutStatusBar(kPartPosition, buf, r.Window_);
}

void yyEditReplaceAll(EditRecord& r, std::string text) {
  yyEditFinishLoad(r, false);
  // A large plain text goes into a narrow widget: a quarter of the memory,
  // and nothing to convert.
  const bool narrow = text.size() >= kNarrowFrom && yyEditTextIsAscii(text);
  if (narrow != r.Narrow) remake_text_widget(r, narrow, std::string());
  yyEditBuildLineStarts(EditPieces{{text, {}, {}}}, r, char_width);
  r.Replacing = true;
  XmTextDisableRedisplay(r.Text);
  if (text.size() > kStreamFrom) {
    // A large text shows its first page at once; the rest follows while the
    // program waits for input, or as soon as anything asks for the text.
    const std::size_t cut = text.find('\n', kFirstChunk);
    r.PendingFrom = cut == std::string::npos ? text.size() : cut + 1;
    r.Pending = std::move(text);
    set_chunk(r.Text, std::string_view(r.Pending).substr(0, r.PendingFrom), false);
    r.LoadProc = XtAppAddWorkProc(zelvy_x::state().ixContext, load_more, as_client(r.Window_));
  } else {
    set_chunk(r.Text, text, false);
  }
  XmTextSetInsertionPosition(r.Text, 0);
  XmTextShowPosition(r.Text, 0);
  XmTextEnableRedisplay(r.Text);
  r.Replacing = false;
  yyEditUpdateStatusBar(r);
}

void yyEditWiden(EditRecord& r, std::string_view incoming) {
  if (!r.Narrow || yyEditTextIsAscii(incoming)) return;
  yyEditFinishLoad(r, true);
  char* all = XmTextGetString(r.Text);
  const std::string text = all ? all : "";
  XtFree(all);
  remake_text_widget(r, false, text);
}

void yyEditFinishLoad(EditRecord& r, bool append) {
  if (r.LoadProc) XtRemoveWorkProc(r.LoadProc);
  r.LoadProc = 0;
  if (append && r.PendingFrom < r.Pending.size()) {
    r.Replacing = true;
    set_chunk(r.Text, std::string_view(r.Pending).substr(r.PendingFrom), true);
    r.Replacing = false;
  }
  r.Pending = std::string();
  r.PendingFrom = 0;
}

// ---- Public routines ----------------------------------------------------------------

void yyEditAttach() {
  yyAttachEditor({yyEditProcessMessage, yyEditShutdown, [](int h) {
                    if (EditRecord* r = yyEditRecordOf(h)) yyEditResize(*r);
                  }});
  // The support library's scroll window is a read-only editor in a child
  // window of its own.
  lorx_io_messages::ScrollWindowHooks& h = lorx_io_messages::scroll_hooks;
  h.screen_height = [] { return WInfoScreen(2); };
  h.open_child = [](int height, std::string_view title) {
    int handle = -1;
    WindowOpenChild(handle, {}, {}, {}, {}, height, {}, {}, {}, title);
    return handle;
  };
  h.edit_file = [](int window, int flags, int fontType) {
    WindowSelect(window);
    WEditFile("", {}, 0, flags, fontType);
  };
  h.select = [](int window) { WindowSelect(window); };
  h.editor_lines = [](int window) { return WInfoEditor(window, 2); };
  h.put_text_part = [](std::string_view text, int start) { WEditPutTextPart(text, start); };
  h.close_child = [](int window) { WindowCloseChild(window); };
}

void WEditFile(std::string_view filename, std::optional<int> mode, std::optional<int> menuid,
               std::optional<int> flags, std::optional<int> fonttype, std::optional<int> fontsize,
               std::optional<std::string_view> filter, std::optional<int> filterindex,
               std::optional<int> menuowner, std::optional<std::string_view> fontname) {
  yyeditfile(filename, mode, menuid, flags, fonttype, fontsize, filter, filterindex, menuowner, fontname);
}

void yyeditfile(std::string_view filename, std::optional<int> mode, std::optional<int> menuid,
                std::optional<int> flags, std::optional<int> fonttype, std::optional<int> fontsize,
                std::optional<std::string_view> filter, std::optional<int> filterindex,
                std::optional<int>, std::optional<std::string_view> fontname) {
  auto& ws = zelvy_win::state();
  const int h = ws.iWinCur;
  if (h < 1 || !yywindowexists(h) || !xdisplay()) {
    yyerror(1022, "WEditFile");
    return;
  }
  std::uint32_t f = static_cast<std::uint32_t>(flags.value_or(0));
  if (f & (edit_flag::kHistory | edit_flag::kCommandAbove)) f |= edit_flag::kCommandLine;
  while (!filename.empty() && filename.back() == ' ') filename.remove_suffix(1);
  EditRecord* r = yyEditRecordOf(h);
  if (!r) {
    if (ws.WinInfo[h].Kind != 0) {
      yyerror(1038, "WEditFile");
      return;
    }
    struct stat st{};
    if (!filename.empty() && (f & edit_flag::kMustExist) && ::stat(yyEditFullPathname(filename).c_str(), &st) != 0) {
      yyerror(1, "WEditFile");
      return;
    }
    const int m = mode_of(mode, ws.WinInfo[h]);
    r = create_editor(h, m, f, font_type_of(fonttype, fontname.has_value()), std::max(0, fontsize.value_or(0)),
                      filter.value_or(""), filterindex.value_or(1), fontname.value_or(""));
    // Menu merging joins here once the menus offer it; a user menu is not merged yet.
    (void)menuid;
    yyEditTitle(*r);
    if (!filename.empty()) yyEditLoadSave(filename, false, *r, (f & edit_flag::kQuietMissing) != 0);
    if ((f & edit_flag::kMultiBuffer) && !r->FileName.empty()) {
      const int menu = zelvy_menu::state().iWinMenu;
      zelvy_menu::state().iWinMenu = h;
      WMenuSetString(edit_id::kFirstBuffer, yyEditViewCaption(1, r->FileName));
      zelvy_menu::state().iWinMenu = menu;
    }
    // With a command line the keyboard goes to the line, where commands are typed.
    XmProcessTraversal(r->CommandText ? r->CommandText : r->Text, XmTRAVERSE_CURRENT);
    ws.WinInfo[h].Mode = m;
    if (m == 3) yyMsgSemiModelessStack(1, 1, h);
    if (m == 1) {
      yyMsgModalLoop(h);
      if (yywindowexists(0)) WindowSelect(0);
    }
    return;
  }
  if (r->Flags & edit_flag::kMultiBuffer) {
    yyEditBufferLoad(*r, filename);
    return;
  }
  if (yyEditCheckSave(*r)) {
    if (filename.empty()) yyEditFileNew(*r);
    else yyEditLoadSave(filename, false, *r, (r->Flags & edit_flag::kQuietMissing) != 0);
  }
}

void WEditGetText(std::string& text, std::optional<int> count) {
  EditRecord* r = yyEditCurrent("WEditGetText");
  if (!r) return;
  char* all = XmTextGetString(r->Text);
  text = all ? all : "";
  XtFree(all);
  if (count && static_cast<int>(text.size()) > *count) {
    text.resize(static_cast<std::size_t>(std::max(0, *count)));
    yyerror(1023, "WEditGetText");
  }
}

void WEditGetTextPart(std::string& text, int start) {
  EditRecord* r = yyEditCurrent("WEditGetTextPart");
  if (!r) return;
  const XmTextPosition last = XmTextGetLastPosition(r->Text);
  const XmTextPosition from = std::max(0, start - 1);
  const XmTextPosition to = std::min<XmTextPosition>(last, from + static_cast<XmTextPosition>(text.size()));
  text = from >= last ? std::string{} : substring(r->Text, from, to);
}

void WEditPutText(std::string_view text) {
  EditRecord* r = yyEditCurrent("WEditPutText");
  if (!r) return;
  std::string t;
  t.reserve(text.size());
  for (char c : text)
    if (c != '\r') t.push_back(c);
  yyEditWiden(*r, t);
  XmTextSetString(r->Text, t.data());
}

void WEditPutTextPart(std::string_view text, int start, std::optional<int> end) {
  EditRecord* r = yyEditCurrent("WEditPutTextPart");
  if (!r) return;
  const XmTextPosition last = XmTextGetLastPosition(r->Text);
  const XmTextPosition from = std::min<XmTextPosition>(std::max(1, start) - 1, last);
  const XmTextPosition to = end ? std::clamp<XmTextPosition>(*end, from, last) : from;
  const XmTextPosition caret = XmTextGetInsertionPosition(r->Text);
  std::string t;
  t.reserve(text.size());
  for (char c : text)
    if (c != '\r') t.push_back(c);
  yyEditWiden(*r, t);
  if (!(t.empty() && to == from)) XmTextReplace(r->Text, from, to, t.data());
  const XmTextPosition after = from + yyEditCharCount(t);
  XmTextSetInsertionPosition(r->Text, after);
  if (caret > from) XmTextSetTopCharacter(r->Text, from);
  XmTextShowPosition(r->Text, after);
}

int WEditPos(int direction, int value) {
  EditRecord* r = yyEditCurrent("WEditPos");
  if (!r) return 0;
  if (direction == 1) return yyEditConvertPos(1, value - 1, *r) + 1;
  if (direction == 2) return yyEditConvertPos(2, value - 1, *r) + 1;
  return 0;
}

void WEditSetPos(int value, std::optional<int> flags) {
  EditRecord* r = yyEditCurrent("WEditSetPos");
  if (!r) return;
  const int f = flags.value_or(0);
  XmTextPosition a = 0, b = 0;
  if (!XmTextGetSelectionPosition(r->Text, &a, &b)) a = XmTextGetInsertionPosition(r->Text);
  long long pos;
  if (f & 2) {
    const int base = (f & 1) ? yyEditConvertPos(1, static_cast<int>(a), *r) : -1;
    const int line = std::clamp(base + value, 0, r->LineCount - 1);
    pos = yyEditConvertPos(2, line, *r);
  } else {
    pos = (f & 1) ? a + value : value - 1;
  }
  const XmTextPosition last = XmTextGetLastPosition(r->Text);
  const XmTextPosition p = std::clamp<XmTextPosition>(static_cast<XmTextPosition>(pos), 0, last);
  const XmTextPosition top = XmTextGetTopCharacter(r->Text);
  XmTextClearSelection(r->Text, now());
  XmTextSetInsertionPosition(r->Text, p);
  XmTextShowPosition(r->Text, p);
  if (p < top || (f & 32)) XmTextSetTopCharacter(r->Text, p);
}

int WInfoEditor(int window, int code, std::optional<int> buffer) {
  if (window == -1) {
    static constexpr int kCodes[12] = {1, 2, 14, 3, 4, 5, 6, 7, 9, 16, 11, 12};
    const int current = es.modalInfo[6];
    int parked = 0;
    if (buffer && *buffer != current) {
      if (*buffer < 1 || *buffer > es.modalInfo[7]) return 0;
      if (yyEditParkedInfo(0, *buffer, code, parked)) return parked;
    }
    for (int i = 0; i < 12; ++i)
      if (kCodes[i] == code) return es.modalInfo[static_cast<std::size_t>(i)];
    if (code == 17) return static_cast<int>(es.modalFlags);
    if (code == 10) return es.modalCommandItems;
    return code == 18 ? 1 : 0;
  }
  EditRecord* r = yyEditRecordOf(window);
  if (!r || !yywindowexists(window)) return 0;
  yyEditFinishLoad(*r, true);
  const int b = buffer.value_or(r->CurrentBuffer);
  if (b < 1 || b > r->BufferCount) return 0;
  if (int parked = 0; b != r->CurrentBuffer && yyEditParkedInfo(window, b, code, parked)) return parked;
  Widget t = r->Text;
  XmTextPosition a = 0, e = 0;
  const bool sel = XmTextGetSelectionPosition(t, &a, &e) && a != e;
  const XmTextPosition caret = XmTextGetInsertionPosition(t);
  switch (code) {
    case 1: return r->Dirty ? 0 : 1;
    case 2: return static_cast<int>(XmTextGetLastPosition(t));
    case 3: return r->Changed ? 1 : 0;
    case 4: return static_cast<int>((sel ? a : caret) + 1);
    case 5: return static_cast<int>(sel ? e : caret);
    case 6: return r->CurrentBuffer;
    case 7: return r->BufferCount;
    case 9: return yyEditConvertPos(1, static_cast<int>(XmTextGetTopCharacter(t)), *r) + 1;
    case 10: return yyEditHistoryCount(*r);
    case 11: return r->FontType;
    case 12: return r->FontSize;
    case 13: return static_cast<int>(r->FindFlags);
    case 14: {
      int total = 0;
      XtVaGetValues(t, XmNtotalLines, &total, nullptr);
      return total;
    }
    case 15: return sel ? 0 : yyEditConvertPos(1, static_cast<int>(caret), *r) + 1;
    case 16: {
      Dimension w = 0, hgt = 0;
      XtVaGetValues(t, XmNwidth, &w, XmNheight, &hgt, nullptr);
      return yyEditConvertPos(1, static_cast<int>(XmTextXYToPos(t, static_cast<Position>(w - 1), static_cast<Position>(hgt - 1))), *r);
    }
    case 17: return static_cast<int>(r->Flags);
    case 18: return 1;
    default: return 0;
  }
}

void yyeditsave(int saveas) {
  if (EditRecord* r = yyEditCurrent("yyeditsave")) yyEditFileSave(*r, saveas == 1);
}

void yyeditclose(int force) {
  EditRecord* r = yyEditCurrent("yyeditclose");
  if (!r) return;
  if (r->Flags & edit_flag::kMultiBuffer) yyEditCloseBuffer(*r, force == 1);
  else if (force == 1 || yyEditCheckSave(*r)) yyEditFileNew(*r);
}

void yyeditfont(int type, int size, int& error, std::optional<std::string_view> fontname) {
  error = 0;
  EditRecord* r = yyEditCurrent(nullptr);
  if (!r) {
    error = 1028;
    return;
  }
  if (fontname) {
    r->FontType = 5;
  } else if (type != -1) {
    const int before = zelvy_data::data().ierr;
    const int t = font_type_of(type, false);
    if (zelvy_data::data().ierr != before) error = 1116;
    r->FontType = t;
  }
  if (size != -1) r->FontSize = std::max(0, size);
  if (r->WrapFont) XftFontClose(xdisplay(), r->WrapFont);
  if (r->FontStruct) XFreeFont(xdisplay(), r->FontStruct);
  r->WrapFont = nullptr;
  r->FontStruct = nullptr;
  r->AsciiWidth.fill(0);
  XmRenderTable old = r->RenderTable;
  r->RenderTable = yyEditCreateFont(*r, fontname.value_or(""));
  // The widget keeps its place in the window; only the letters change.
  Widget frame = XtParent(r->Text);
  Dimension w = 0, h = 0;
  Position x = 0, y = 0;
  XtVaGetValues(frame, XmNx, &x, XmNy, &y, XmNwidth, &w, XmNheight, &h, nullptr);
  if (r->RenderTable) XtVaSetValues(r->Text, XmNrenderTable, r->RenderTable, nullptr);
  if (old) XmRenderTableFree(old);
  XtConfigureWidget(frame, x, y, w, h, 0);
  rebuild_line_table(*r);
  yyEditUpdateStatusBar(*r);
  XmTextShowPosition(r->Text, XmTextGetInsertionPosition(r->Text));
}

bool yyEditFilePrint(EditRecord& r, bool selection) {
  // The program prints for itself: the message goes on to it.
  if (r.Flags & edit_flag::kHostPrint) return true;
  yyEditFinishLoad(r, true);
  std::string text;
  if (selection) {
    XmTextPosition from = 0, to = 0;
    if (XmTextGetSelectionPosition(r.Text, &from, &to)) text = substring(r.Text, from, to);
  } else {
    char* all = XmTextGetString(r.Text);
    text = all ? all : "";
    XtFree(all);
  }
  const std::string title = r.FileName.empty() ? std::string("Untitled") : r.FileName;
  return yyeditprintuser(text, yyeditprintfont(r.FontType, r.FontSize), (r.Flags & edit_flag::kWordWrap) != 0,
                         title) == kPrinted;
}

XtCallbackProc yyEditTextCallback() { return yyEditTextCB; }

void yyeditselection(int start, int end) {
  if (EditRecord* r = yyEditCurrent("yyeditselection")) XmTextSetSelection(r->Text, start, end, now());
}

void yyeditsettop(int line) {
  EditRecord* r = yyEditCurrent("yyeditsettop");
  if (!r) return;
  const int pos = yyEditConvertPos(2, std::clamp(line, 0, r->LineCount - 1), *r);
  XmTextSetTopCharacter(r->Text, std::max(0, pos));
}

void yyeditsetpos(int position) { WEditSetPos(position + 1); }

void yyeditsetflags(int saved, int changed) {
  EditRecord* r = yyEditCurrent("yyeditsetflags");
  if (!r) return;
  r->Dirty = saved ? 0 : 1;
  r->Changed = changed == 1 ? 1 : 0;
  if (r->Flags & edit_flag::kDirtyMark) yyEditTitle(*r);
}

int yyinfoeditorstring(int window, int code, std::string& text) {
  text.clear();
  const EditRecord* r = window == -1 ? nullptr : yyEditRecordOf(window);
  if (!r) return 0;
  switch (code) {
    case 1: text = r->FindString; return static_cast<int>(text.size());
    case 2: text = r->ReplaceString; return static_cast<int>(text.size());
    case 3: text = r->FileName; break;
    case 4: text = zelvy_win::state().WinInfo[window].Title.value_or(""); break;
    default: break;
  }
  return 0;
}

void yyeditsetbackup(int on) {
  EditRecord* r = yyEditCurrent("yyeditsetbackup");
  if (!r) return;
  if (on) r->Flags |= edit_flag::kBackup;
  else r->Flags &= ~edit_flag::kBackup;
}

void yyeditfilterindex(int index, int& error) {
  error = 0;
  EditRecord* r = yyEditCurrent(nullptr);
  if (!r) {
    error = 1028;
    return;
  }
  r->FilterIndex[static_cast<std::size_t>(r->CurrentBuffer - 1)] = index;
}

void yyEditFocus(Widget w, int how) {
  if ((how & 1) && XtIsRealized(w)) XSetInputFocus(xdisplay(), XtWindow(w), RevertToParent, CurrentTime);
  if (how & 2) XmProcessTraversal(w, XmTRAVERSE_CURRENT);
}

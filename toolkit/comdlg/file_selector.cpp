// The file selector: choosing a file to open or a name to save under.
//
// The dialog is an ordinary resource dialog driven by the ordinary message
// loop; everything a call needs lives in one record for the time of the call.
// The process's directory follows the dialog while it runs, so the listing and
// every relative operation act on what the user sees.

#include "toolkit/comdlg/file_selector.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/base/error.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/comdlg/file_selector_private.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/menu.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"
#include "toolkit/os/command.h"
#include "toolkit/os/datetime.h"
#include "toolkit/os/files.h"

namespace {

// Resource identifiers of the selector and its small dialogs.
constexpr int kDialogSingle = 32110, kDialogMultiple = 32111;
constexpr int kDialogNewDirectory = 32116, kDialogProperties = 32117, kDialogRename = 32123;
constexpr int kMenuHistory = 32124, kMenuShortcut = 32125;

// Fields.
constexpr int kOk = 1, kCancel = 2;
constexpr int kDirectoryText = 1001, kNameText = 1007, kFilterCombo = 1009, kTypeLabel = 1021;
constexpr int kListSingle = 1101, kListMultiple = 1102;
constexpr int kNewDirectoryText = 1001;
constexpr int kPropSize = 1002, kPropDate = 1003, kPropOwner = 1004, kPropGroup = 1005, kPropOther = 1006;
constexpr int kButtonUp = 32104, kButtonHome = 32105, kButtonNewDirectory = 32113, kButtonProperties = 32114;
constexpr int kButtonMenu = 32119, kButtonBack = 32120, kButtonForward = 32121;

// Menu items.
constexpr int kHistoryFirst = 32001, kHistoryLast = 32021;
constexpr int kItemSelect = 32101, kItemRename = 32102, kItemDelete = 32103, kItemProperties = 32104;
constexpr int kItemNewDirectory = 32105, kItemHidden = 32106, kItemOrder = 32107;
constexpr int kItemByName = 32108, kItemByDate = 32109, kItemBySize = 32110, kItemByExtension = 32111;
constexpr int kItemReverse = 32112, kItemRefresh = 32113;

// Dialog show modes.
constexpr int kSemiModeless = 3;

// Where a context click came from (Value3).
constexpr int kClickOnButton = 8, kClickOnList = 12;

// Field states and message-box look.
constexpr int kDisabled = 0, kEnabled = 1, kHidden = 3;
constexpr int kBoxOk = 0, kBoxYesNo = 3, kIconQuestion = 2, kIconWarning = 3;
constexpr int kAnswerYes = 6;
constexpr int kResultOk = 1, kResultCancel = 2;

constexpr int kErrTooSmall = 1023, kErrNoDialog = 1007, kErrFailed = 1004;
constexpr std::size_t kPathMax = 1024;
constexpr int kSortBits = kDirSortName | kDirSortDate | kDirSortSize | kDirSortExtension;

struct Call {
  int flags = 0;
  bool save = false, multi = false;
  int dialogId = 0, listId = 0, previousDialog = 0;
  bool loadedHere = false;
  std::string cdirold, title;
  SelectorFilter filter;
  int filterIndex = 1;
  std::vector<std::string> names;  // directories as "[name]", then files
  int dirCount = 0;
  int options = 0;
  std::vector<std::string> history;
  int historyPos = 0, historyCount = 0;
  bool back = false, forward = false, okShowsOpen = false, historyBack = true;
  std::size_t limit = 0;  // 0: no limit on the result
  // The name last put into the name field from the list, as shown and as it is.
  std::string putShown, putReal;
  int result = 0, error = 0;
  std::string resultText;
  bool done = false;
};

std::string cwd() {
  std::string dir;
  yyosdirname(dir, 4096);
  return dir;
}

bool is_dir_entry(const Call& c, int index) { return index >= 1 && index <= c.dirCount; }

// A directory entry without its brackets.
std::string bare(const Call& c, int index) {
  const std::string& n = c.names[static_cast<std::size_t>(index - 1)];
  if (is_dir_entry(c, index) && n.size() >= 2) return n.substr(1, n.size() - 2);
  return n;
}

std::vector<int> selected(const Call& c) {
  std::vector<int> sel = yyselectfile_listselection(c.listId);
  std::erase_if(sel, [&](int i) { return i < 1 || i > static_cast<int>(c.names.size()); });
  return sel;
}

void select_selector(const Call& c) { WDialogSelect(c.dialogId); }

void set_ok_text(Call& c, bool open) {
  if (open == c.okShowsOpen) return;
  c.okShowsOpen = open;
  WDialogPutString(kOk, open ? "&Open" : "&Save");
}

void put_name(Call& c, const std::string& real) {
  c.putReal = real;
  c.putShown = yyselectfile_shownname(real);
  WDialogPutString(kNameText, c.putShown);
}

// The name field's text; the real name when it still shows the one put there.
std::string typed_name(const Call& c) {
  std::string s;
  WDialogGetString(kNameText, s);
  std::string t(left_trimmed(trimmed(s)));
  if (!c.putShown.empty() && t == trimmed(c.putShown)) return c.putReal;
  return t;
}

void yyselectfile_filelist(Call& c, std::string_view pattern) {
  auto& zd = zelvy_data::data();
  const int keepDirInfo = zd.idirinfo;
  const int keepDebug = zd.idbug, keepErr = zd.ierr;
  zd.idbug = 0;
  zd.idirinfo = 3;
  int total = 0;
  IOsDirCount("", "", total, c.options);
  total = std::max(total, 0);
  c.names.assign(static_cast<std::size_t>(total), std::string());
  zd.idirinfo = 2;
  int dirFlags = c.options;
  if (dirFlags & (kDirSortSize | kDirSortExtension)) dirFlags |= kDirSortName;
  int dirs = total;
  IOsDirInfo("", "", std::span(c.names), dirs, {}, {}, dirFlags);
  dirs = std::clamp(dirs, 0, total);
  for (int i = 0; i < dirs; ++i) c.names[static_cast<std::size_t>(i)] = "[" + c.names[static_cast<std::size_t>(i)] + "]";
  c.dirCount = dirs;
  WDialogFieldState(kButtonUp, 1 - WInfoSystem(9));
  zd.idirinfo = 1;
  std::string pat(pattern);
  std::replace(pat.begin(), pat.end(), ';', ' ');
  int files = total - dirs;
  if (files > 0) IOsDirInfo("", pat, std::span(c.names).subspan(static_cast<std::size_t>(dirs)), files, {}, {}, c.options);
  files = std::clamp(files, 0, total - dirs);
  c.names.resize(static_cast<std::size_t>(dirs + files));
  zd.idirinfo = keepDirInfo;
  zd.idbug = keepDebug;
  zd.ierr = keepErr;

  std::vector<std::string> shown;
  shown.reserve(c.names.size());
  for (const std::string& n : c.names) shown.push_back(yyselectfile_shownname(n));
  auto& xs = zelvy_x::state();
  const int keepEncoding = xs.iDialogEncoding;
  xs.iDialogEncoding = 1;  // file names are UTF-8
  WDialogFieldState(c.listId, kHidden);
  yyselectfile_putlist(c.listId, shown);
  WDialogFieldState(c.listId, kEnabled);
  WDialogPutString(kDirectoryText, cwd());
  xs.iDialogEncoding = keepEncoding;
  if (!(c.flags & kSelectNoProperties)) WDialogFieldState(kButtonProperties, kDisabled);
  if (c.save) {
    c.okShowsOpen = true;
    set_ok_text(c, false);
  }
}

std::string current_pattern(const Call& c) {
  const auto& p = c.filter.patterns;
  if (c.filterIndex < 1 || c.filterIndex > static_cast<int>(p.size())) return "*";
  const std::string& s = p[static_cast<std::size_t>(c.filterIndex - 1)];
  return is_blank(s) ? "*" : s;
}

void refresh(Call& c) { yyselectfile_filelist(c, current_pattern(c)); }

void yyselectfile_dirchange(Call& c, int delta, std::string_view path = {}, int* status = nullptr) {
  const int size = static_cast<int>(c.history.size());
  if (delta == 0) {
    if (!path.empty()) {
      if (c.historyPos > 0 && path == c.history[static_cast<std::size_t>(c.historyPos - 1)]) return;
      const int err = yyosdirchange(path);
      if (status) *status = err;
      if (err != 0) return;
    }
    if (c.historyPos < size) {
      ++c.historyPos;
      c.historyCount = c.historyPos;
    } else {
      std::rotate(c.history.begin(), c.history.begin() + 1, c.history.end());
    }
    c.history[static_cast<std::size_t>(c.historyPos - 1)] = cwd();
  } else {
    const int pos = std::clamp(c.historyPos + delta, 1, std::max(1, c.historyCount));
    if (c.historyCount > 0) {
      c.historyPos = pos;
      const int err = yyosdirchange(c.history[static_cast<std::size_t>(pos - 1)]);
      if (status) *status = err;
    }
  }
  c.back = c.historyPos > 1;
  c.forward = c.historyPos < c.historyCount;
  WDialogFieldState(kButtonBack, c.back ? kEnabled : kDisabled);
  WDialogFieldState(kButtonForward, c.forward ? kEnabled : kDisabled);
}

void yyselectfile_errormsg(const Call& c, std::string_view text) {
  std::string msg(text);
  msg += yyoserrorstr(zelvy_data::data().iapierr).substr(0, 300);
  yyselectfile_prompt(kBoxOk, kIconWarning, 1, msg, "Failed");
  select_selector(c);
}

// Shows a dialog over another (the selector), at the common dialogs' offset
// from it, with the focus in `focus`; the dialog shown is left selected.
void yydialogshow(int dialogid, int over, int focus, int mode) {
  const auto& pos = zelvy_comdlg::data().wcomdlgpos;
  WDialogSelect(over);
  const int px = WInfoDialog(16) + pos[0], py = WInfoDialog(17) + pos[1];
  WDialogSelect(dialogid);
  const auto& zd = zelvy_data::data();
  WDialogShow(yyunitsfrompixels(px, zd.iscwid), yyunitsfrompixels(py, zd.ischgt), focus, mode);
}

// Runs one of the small dialogs until a button, and gives the button.
int run_small(Call& c, int resid, int focus, const auto& fill, std::string* text, int textField) {
  WDialogLoad(resid);
  const bool loaded = zelvy_dialog::state().bdlgloaded == 0;
  if (zelvy_data::data().icurdialog != resid) {
    select_selector(c);
    return 0;
  }
  fill();
  if (focus != kOk) yyselectfile_returnhook(focus);
  yydialogshow(resid, c.dialogId, focus, kSemiModeless);
  int type = 0, button = 0;
  MessageRecord m;
  for (;;) {
    WMessage(type, m);
    if (type == PushButton && m.Win == resid) {
      button = m.Value1;
      break;
    }
  }
  WDialogSelect(resid);
  if (button == kOk && text) WDialogGetString(textField, *text);
  WDialogHide();
  if (loaded) WDialogUnload();
  select_selector(c);
  return button;
}

int first_selected(const Call& c) {
  const auto sel = selected(c);
  return sel.empty() ? 0 : sel.front();
}

void rename_entry(Call& c) {
  const int i = first_selected(c);
  if (i == 0) return;
  const std::string old = bare(c, i);
  std::string renamed;
  const int b = run_small(c, kDialogRename, kNameText, [&] { WDialogPutString(kNameText, old); }, &renamed, kNameText);
  if (b != kOk) return;
  const std::string to(trimmed(renamed));
  if (to.empty()) return;
  if (const int err = yyosrenamefile(old, to); err != 0) {
    zelvy_data::data().iapierr = err;
    yyselectfile_errormsg(c, "");
    return;
  }
  refresh(c);
}

void new_directory(Call& c) {
  std::string name;
  const int b = run_small(c, kDialogNewDirectory, kNewDirectoryText, [] {}, &name, kNewDirectoryText);
  if (b != kOk || is_blank(name)) return;
  if (const int err = yyosdirmake(trimmed(name)); err != 0) {
    zelvy_data::data().iapierr = err;
    yyselectfile_errormsg(c, "");
    return;
  }
  refresh(c);
}

void delete_entries(Call& c) {
  const auto sel = selected(c);
  if (sel.empty()) return;
  std::string ask;
  if (sel.size() == 1) {
    const int i = sel.front();
    ask = is_dir_entry(c, i) ? "Delete directory '" + bare(c, i) + "' and its contents ?"
                             : "Delete '" + bare(c, i) + "' ?";
  } else {
    ask = "Delete " + std::to_string(sel.size()) + " items ?";
  }
  const int answer = yyselectfile_prompt(kBoxYesNo, kIconQuestion, 2, ask, "Confirm");
  select_selector(c);
  if (answer != kAnswerYes) return;
  auto& zd = zelvy_data::data();
  for (int i : sel) {
    const std::string name = bare(c, i);
    int err = 0;
    if (is_dir_entry(c, i)) {
      const int keepErr = zd.ierr, keepApi = zd.iapierr;
      zd.ierr = 0;
      iosdeletetree(name);
      if (zd.ierr == 13) err = zd.iapierr;
      else if (zd.ierr != 0) err = zd.iapierr ? zd.iapierr : 1;
      zd.ierr = keepErr;
      if (err == 0) zd.iapierr = keepApi;
    } else {
      err = yyosdeletefile(name);
    }
    if (err != 0) {
      zd.iapierr = err;
      yyselectfile_errormsg(c, name + "\r");
    }
  }
  refresh(c);
}

std::string rwx(int bits) {
  return std::string(1, (bits & 4) ? 'r' : '-') + ((bits & 2) ? 'w' : '-') + ((bits & 1) ? 'x' : '-');
}

void yyselectfile_properties(Call& c) {
  const int i = first_selected(c);
  if (i == 0) return;
  const std::string name = bare(c, i);
  const bool dir = is_dir_entry(c, i);
  run_small(c, kDialogProperties, kOk, [&] {
    std::array<int, kFileInfoCount> v{};
    yyosfileinfo(name, v);
    auto& xs = zelvy_x::state();
    const int keep = xs.iDialogEncoding;
    xs.iDialogEncoding = 1;
    WDialogPutString(kNameText, yyselectfile_shownname(name));
    WDialogPutString(kPropSize, dir ? std::string("-") : std::to_string(v[8]) + " kB");
    xs.iDialogEncoding = keep;
    std::string date, time;
    WDateToString(date, v[1], v[2], v[3], zelvy_comdlg::data().icdopt[1]);
    WTimeToString(time, v[4], v[5], v[6]);
    WDialogPutString(kPropDate, std::string(trimmed(date)) + " " + std::string(trimmed(time)));
    WDialogPutString(kPropOwner, rwx(v[7] >> 6));
    WDialogPutString(kPropGroup, rwx(v[7] >> 3));
    WDialogPutString(kPropOther, rwx(v[7]));
  }, nullptr, 0);
}

void yyselectfile_shortcut(Call& c, int x, int y) {
  const std::size_t n = selected(c).size();
  WMenuFloatLoad(kMenuShortcut);
  // Item states outlive a floating menu: every one is set afresh.
  WMenuSetState(kItemSelect, 1, n > 0 ? 1 : 0);
  WMenuSetState(kItemDelete, 1, n > 0 ? 1 : 0);
  WMenuSetState(kItemRename, 1, n == 1 ? 1 : 0);
  if (!(c.flags & kSelectNoProperties)) {
    WDialogFieldState(kButtonProperties, n == 1 ? kEnabled : kDisabled);
    WMenuSetState(kItemProperties, 1, n == 1 ? 1 : 0);
  } else {
    WMenuItemDelete(kItemProperties);
  }
  if (c.flags & kSelectNoNewDirectory) WMenuItemDelete(kItemNewDirectory);
  WMenuSetState(kItemHidden, 2, (c.options & kDirHidden) ? 1 : 0);
  if (c.flags & kSelectNoOrderMenu) {
    for (int item : {kItemByName, kItemByDate, kItemBySize, kItemByExtension, kItemReverse}) WMenuItemDelete(item);
    WMenuItemDelete(kItemOrder);
  } else {
    const int order = c.options & kSortBits;
    const int current = order == kDirSortDate ? kItemByDate : order == kDirSortSize ? kItemBySize
                        : order == kDirSortExtension ? kItemByExtension : kItemByName;
    for (int item : {kItemByName, kItemByDate, kItemBySize, kItemByExtension}) WMenuSetState(item, 2, item == current ? 1 : 0);
    WMenuSetState(kItemReverse, 2, (c.options & kDirReverse) ? 1 : 0);
  }
  WMenuFloatShow(x, y, 3);
}

void history_menu(Call& c, bool back, int x, int y) {
  if (back ? !c.back : !c.forward) return;
  WMenuFloatLoad(kMenuHistory);
  // Back: the entry before the current one first, then older ones; forward:
  // the entries after it in rising order.
  const int count = back ? c.historyPos - 1 : c.historyCount - c.historyPos;
  for (int k = 1; k <= count; ++k) {
    const int idx = back ? c.historyPos - k : c.historyPos + k;
    const std::string& text = c.history[static_cast<std::size_t>(idx - 1)];
    if (k == 1) WMenuSetString(kHistoryFirst, text);
    else WMenuItemInsert(kHistoryFirst + k - 2, 2, kHistoryFirst + k - 1, text);
  }
  c.historyBack = back;
  WMenuFloatShow(x, y, 3);
}

bool path_too_long(const Call& c, std::size_t n) { return c.limit != 0 && n > c.limit; }

void end_with(Call& c, int result, int error = 0) {
  c.result = result;
  c.error = error;
  c.done = true;
}

std::string dir_of(std::string_view path) {
  const auto p = path.rfind('/');
  if (p == std::string_view::npos) return ".";
  return p == 0 ? std::string("/") : std::string(path.substr(0, p));
}

// Checks one file of the result; false keeps the dialog open. `path` may get
// the filter's extension.
bool check_file(Call& c, std::string& path) {
  const bool mustExist = !c.save && (c.flags & kSelectMustExist);
  if (!(c.flags & kSelectNoPathCheck) || mustExist) {
    if (!iosdirexists(dir_of(path))) {
      yyselectfile_prompt(kBoxOk, kIconWarning, 1, path + "\rPath does not exist.", c.title);
      return false;
    }
  }
  if (c.flags & kSelectAppendExtension) {
    std::string pat = current_pattern(c);
    pat = pat.substr(0, pat.find(';'));
    const bool plain = pat.size() > 2 && pat.starts_with("*.") && pat.find_first_of("?*", 2) == std::string::npos;
    if (plain && !iosfileexists(path) && !iosdirexists(path)) {
      const std::string base = path.substr(path.rfind('/') + 1);
      const auto dot = base.rfind('.');
      const bool known = dot != std::string::npos && yyselectfile_matchfilter(c.filter.patterns, "*" + base.substr(dot)) > 0;
      if (!known) path += pat.substr(1);
    }
  }
  const bool exists = iosfileexists(path);
  if (c.save && (c.flags & kSelectPrompt) && exists) {
    const int a = yyselectfile_prompt(kBoxYesNo, kIconWarning, 2, path + " already exists\r\rDo you want to replace it?", c.title);
    return a == kAnswerYes;
  }
  if (!c.save && (c.flags & (kSelectPrompt | kSelectMustExist)) && !exists) {
    if (c.flags & kSelectMustExist) {
      yyselectfile_prompt(kBoxOk, kIconWarning, 1, path + "\rFile not found.", c.title);
      return false;
    }
    const int a = yyselectfile_prompt(kBoxYesNo, kIconQuestion, 2, path + " does not exist.\r\rDo you want to create it?", c.title);
    return a == kAnswerYes;
  }
  return true;
}

void enter_directory(Call& c, int index) {
  yyselectfile_dirchange(c, 0, bare(c, index));
  refresh(c);
}

void ok(Call& c, int focusField) {
  std::vector<std::string> files;
  bool haveName = false;
  auto sel = (focusField == c.listId) ? selected(c) : std::vector<int>{};
  if (!sel.empty()) {
    std::vector<int> fileIdx;
    for (int i : sel)
      if (!is_dir_entry(c, i)) fileIdx.push_back(i);
    if (fileIdx.empty()) {
      enter_directory(c, sel.front());
      return;
    }
    for (int i : fileIdx) files.push_back(bare(c, i));
    haveName = true;
  }
  if (!haveName) {
    const std::string text = typed_name(c);
    if (text.empty()) return;
    // Typed text that names a directory is entered; a failed change is silent.
    int status = 0;
    if (iospathtype(text) == kPathDirectory) {
      yyselectfile_dirchange(c, 0, text, &status);
      if (status == 0) {
        refresh(c);
        WDialogPutString(kNameText, "");
        c.putShown.clear();
        return;
      }
    }
    if (text.find_first_of("?*") != std::string::npos) {
      std::string dir = text, name;
      yycomdlgsplitpath(dir, name);
      if (!is_blank(dir)) yyselectfile_dirchange(c, 0, trimmed(dir));
      yyselectfile_filelist(c, name);
      if (const int idx = yyselectfile_matchfilter(c.filter.patterns, name); idx > 0) {
        c.filterIndex = idx;
        WDialogPutOption(kFilterCombo, idx);
      }
      return;
    }
    if (c.multi && text.find('"') != std::string::npos) {
      std::string cur;
      bool inside = false;
      for (char ch : text) {
        if (ch == '"') {
          if (inside) files.push_back(cur);
          cur.clear();
          inside = !inside;
        } else if (inside) {
          cur += ch;
        }
      }
    } else {
      files.push_back(text);
    }
  }
  if (files.empty()) return;
  const std::string dir = cwd();
  auto full = [&](const std::string& n) {
    if (n.starts_with('/')) return n;
    return dir.ends_with('/') ? dir + n : dir + "/" + n;
  };
  std::vector<std::string> paths;
  for (const std::string& n : files) paths.push_back(full(n));
  for (std::string& p : paths) {
    const std::size_t before = p.size();
    if (path_too_long(c, p.size())) return end_with(c, kResultCancel, kErrTooSmall);
    if (!check_file(c, p)) {
      select_selector(c);
      return;
    }
    select_selector(c);
    if (path_too_long(c, p.size()) && p.size() != before) return end_with(c, kResultCancel, kErrTooSmall);
  }
  std::string out;
  if (paths.size() == 1) {
    out = paths.front();
  } else {
    out = dir;
    for (const std::string& p : paths) {
      out += '\0';
      out += p.starts_with(dir + "/") ? p.substr(dir.size() + (dir.ends_with('/') ? 0 : 1)) : p;
    }
  }
  if (path_too_long(c, out.size())) return end_with(c, kResultCancel, kErrTooSmall);
  c.resultText = out;
  end_with(c, kResultOk);
}

void field_changed(Call& c, const MessageRecord& m) {
  if (m.Value1 != m.Value2) return;
  if (m.Value1 == c.listId) {
    const auto sel = selected(c);
    std::vector<int> fileIdx;
    for (int i : sel)
      if (!is_dir_entry(c, i)) fileIdx.push_back(i);
    if (fileIdx.size() == 1) {
      put_name(c, bare(c, fileIdx.front()));
    } else if (fileIdx.size() > 1) {
      std::string quoted;
      for (int i : fileIdx) quoted += "\"" + yyselectfile_shownname(bare(c, i)) + "\"";
      c.putShown.clear();
      WDialogPutString(kNameText, quoted);
    }
    if (!(c.flags & kSelectNoProperties)) WDialogFieldState(kButtonProperties, sel.size() == 1 ? kEnabled : kDisabled);
  } else if (m.Value1 == kFilterCombo) {
    int idx = 0;
    WDialogGetMenu(kFilterCombo, idx);
    zelvy_data::data().ierr = 0;
    if (idx >= 1 && idx != c.filterIndex) {
      c.filterIndex = idx;
      refresh(c);
    }
  }
  if (c.save) {
    const auto sel = m.Value1 == c.listId ? selected(c) : std::vector<int>{};
    set_ok_text(c, !sel.empty() && is_dir_entry(c, sel.front()));
  }
}

void menu_select(Call& c, int item) {
  if (item >= kHistoryFirst && item <= kHistoryLast) {
    const int steps = item - kHistoryFirst + 1;
    yyselectfile_dirchange(c, c.historyBack ? -steps : steps);
    refresh(c);
    return;
  }
  auto set_order = [&](int bit) {
    const int next = (c.options & ~kSortBits) | bit;
    if (next == c.options) return;
    c.options = next;
    refresh(c);
  };
  MessageRecord m;
  switch (item) {
    case kItemSelect:
      m.Value1 = kOk;
      m.Value2 = c.listId;
      m.Win = c.dialogId;
      WMessagePush(PushButton, m);
      break;
    case kItemRename: rename_entry(c); break;
    case kItemDelete: delete_entries(c); break;
    case kItemProperties: yyselectfile_properties(c); break;
    case kItemNewDirectory:
      m.Value1 = kButtonNewDirectory;
      m.Win = c.dialogId;
      WMessagePush(PushButton, m);
      break;
    case kItemHidden: c.options ^= kDirHidden; refresh(c); break;
    case kItemByName: set_order(kDirSortName); break;
    case kItemByDate: set_order(kDirSortDate); break;
    case kItemBySize: set_order(kDirSortSize); break;
    case kItemByExtension: set_order(kDirSortExtension); break;
    case kItemReverse: c.options ^= kDirReverse; refresh(c); break;
    case kItemRefresh: refresh(c); break;
    default: break;
  }
}

void push_button(Call& c, const MessageRecord& m) {
  switch (m.Value1) {
    case kOk: ok(c, m.Value2); break;
    case kCancel: end_with(c, kResultCancel); break;
    case kButtonUp: yyselectfile_dirchange(c, 0, ".."); refresh(c); break;
    case kButtonHome: {
      std::string home;
      WInfoFilename(14, home);
      if (!is_blank(home)) {
        yyselectfile_dirchange(c, 0, trimmed(home));
        refresh(c);
      }
      break;
    }
    case kButtonBack: yyselectfile_dirchange(c, -1); refresh(c); break;
    case kButtonForward: yyselectfile_dirchange(c, 1); refresh(c); break;
    case kButtonNewDirectory: new_directory(c); break;
    case kButtonProperties: yyselectfile_properties(c); break;
    case kButtonMenu: {
      const int x = WInfoDialog(16) + winfodialogfield(kButtonMenu, 1) + winfodialogfield(kButtonMenu, 3) / 2;
      const int y = WInfoDialog(17) + winfodialogfield(kButtonMenu, 2) + winfodialogfield(kButtonMenu, 4) / 2;
      yyselectfile_shortcut(c, x, y);
      break;
    }
    default: break;
  }
}

void context_click(Call& c, const MessageRecord& m) {
  if (m.Value3 == kClickOnList && m.Value4 == c.listId) {
    if (m.Value1 > c.dirCount && m.Value1 <= static_cast<int>(c.names.size())) put_name(c, bare(c, m.Value1));
    yyselectfile_shortcut(c, m.X, m.Y);
  } else if (m.Value3 == kClickOnButton && (m.Value4 == kButtonBack || m.Value4 == kButtonForward)) {
    history_menu(c, m.Value4 == kButtonBack, m.X, m.Y);
  }
}

// The dialog itself; the result and its text in `c`.
void yyselectfile(Call& c, const std::string& startDir, const std::string& startName, std::string_view filterText) {
  auto& zd = zelvy_data::data();
  zd.ierr = 0;
  c.previousDialog = zd.icurdialog;
  c.dialogId = c.multi ? kDialogMultiple : kDialogSingle;
  c.listId = c.multi ? kListMultiple : kListSingle;
  const int keepDebug = zd.idbug;
  zd.idbug = 0;
  WDialogLoad(c.dialogId);
  zd.idbug = keepDebug;
  if (zd.ierr != 0 || zd.icurdialog != c.dialogId) {
    c.error = zd.ierr == kErrNoDialog ? kErrNoDialog : kErrFailed;
    zelvy_comdlg::data().icderr = 0;
    c.result = kResultCancel;
    return;
  }
  c.loadedHere = zelvy_dialog::state().bdlgloaded == 0;
  c.cdirold = cwd();
  c.filter = yyselectfile_parsefilter(filterText);
  if (c.filter.patterns.size() == 1 && filterText.size() <= 1) c.filterIndex = 1;
  c.filterIndex = std::clamp(c.filterIndex, 1, static_cast<int>(c.filter.patterns.size()));
  c.options = zelvy_comdlg::data().icdopt[0] | kDirNoDots;
  c.history.assign(static_cast<std::size_t>(std::clamp(zelvy_comdlg::data().icdopt[2], 2, 20)), std::string());
  yyselectfile_dirchange(c, 0, startDir);
  WDialogTitle(c.title);
  if (c.save) {
    WDialogPutString(kTypeLabel, "Save as &type");
  } else {
    WDialogPutString(kOk, "&Open");
    WDialogPutString(kTypeLabel, "Files of &type");
  }
  if (!startName.empty()) put_name(c, startName);
  refresh(c);
  WDialogPutMenu(kFilterCombo, c.filter.descriptions, static_cast<int>(c.filter.descriptions.size()), c.filterIndex);
  if (c.flags & kSelectNoNewDirectory) WDialogFieldState(kButtonNewDirectory, kHidden);
  else WDialogTooltip(kButtonNewDirectory, "New directory");
  if (c.flags & kSelectNoProperties) WDialogFieldState(kButtonProperties, kHidden);
  else WDialogTooltip(kButtonProperties, "File/directory properties");
  yyselectfile_listhooks(c.listId);
  yyselectfile_returnhook(kNameText);
  const int keepChanged = WInfoMessage(FieldChanged), keepContext = WInfoMessage(ContextClick);
  WMessageEnable(FieldChanged, 1);
  WMessageEnable(ContextClick, 1);
  wdialogshowcommon(kNameText, 3, 0);

  int type = 0;
  MessageRecord m;
  while (!c.done) {
    WMessage(type, m);
    if (type == MenuSelect) {
      menu_select(c, m.Value1);
      continue;
    }
    if (m.Win != c.dialogId) continue;
    switch (type) {
      case FieldChanged: field_changed(c, m); break;
      case PushButton: push_button(c, m); break;
      case ContextClick: context_click(c, m); break;
      case CloseRequest: end_with(c, kResultCancel); break;
      default: break;
    }
    if (!c.done) select_selector(c);
  }

  WDialogSelect(c.dialogId);
  if (c.loadedHere) WDialogUnload();
  else WDialogHide();
  if (c.previousDialog != 0) WDialogSelect(c.previousDialog);
  else zd.icurdialog = 0;
  WMessageEnable(FieldChanged, keepChanged);
  WMessageEnable(ContextClick, keepContext);
  if (!((c.flags & kSelectKeepDirectory) && c.result == kResultOk)) yyosdirchange(c.cdirold);
}

}  // namespace

void yycomdlgsplitpath(std::string& path, std::string& name) {
  std::string p(left_trimmed(trimmed(path)));
  name.clear();
  if (p.ends_with("..")) {
    path = p;
    return;
  }
  const auto sep = p.rfind('/');
  if (sep == std::string::npos) {
    name = p;
    path.clear();
    return;
  }
  name = p.substr(sep + 1);
  path = sep == 0 ? std::string("/") : p.substr(0, sep);
}

SelectorFilter yyselectfile_parsefilter(std::string_view filter) {
  SelectorFilter f;
  std::string_view t = trimmed(filter);
  if (t.size() > 1000) t = t.substr(0, 1000);
  if (t.size() <= 1) {
    f.descriptions.emplace_back(" ");
    f.patterns.emplace_back("*");
    return f;
  }
  const char sep = t.back();
  std::size_t pos = 0;
  for (;;) {
    const auto a = t.find(sep, pos);
    if (a == std::string_view::npos) break;
    f.descriptions.emplace_back(t.substr(pos, a - pos));
    const auto b = t.find(sep, a + 1);
    if (b == std::string_view::npos) {
      // A description without a pattern lists everything.
      f.patterns.emplace_back("*");
      break;
    }
    f.patterns.emplace_back(t.substr(a + 1, b - a - 1));
    pos = b + 1;
  }
  if (f.descriptions.empty()) {
    f.descriptions.emplace_back(" ");
    f.patterns.emplace_back("*");
  }
  return f;
}

int yyselectfile_matchfilter(const std::vector<std::string>& patterns, std::string_view text) {
  for (std::size_t i = 0; i < patterns.size(); ++i) {
    std::string_view p = patterns[i];
    for (;;) {
      const auto semi = p.find(';');
      if (trimmed(p.substr(0, semi)) == text) return static_cast<int>(i + 1);
      if (semi == std::string_view::npos) break;
      p.remove_prefix(semi + 1);
    }
  }
  return 0;
}

std::string yyselectfile_shownname(std::string_view name) {
  std::string s;
  s.reserve(name.size());
  for (char ch : name) {
    const auto u = static_cast<unsigned char>(ch);
    if (u < 0x20 || u == 0x7f) s += "\xE2\x90" + std::string(1, static_cast<char>(0x80 + (u == 0x7f ? 0x21 : u)));
    else s += ch;
  }
  return s;
}

// Prepares the texts for the dialog and hands its result back.
void yyfileselector(std::string_view filter, std::optional<int> flags, std::string& filename,
                    std::optional<std::string_view> title, int* filterindex) {
  Call c;
  c.flags = flags.value_or(0);
  c.save = c.flags & kSelectSave;
  if (c.save) c.flags &= ~kSelectMultiple;
  c.multi = c.flags & kSelectMultiple;
  c.filterIndex = filterindex ? *filterindex : 1;
  c.limit = filename.empty() ? 0 : (filename.size() > 2 ? filename.size() - 2 : 1);
  std::string dir(filename), name;
  yycomdlgsplitpath(dir, name);
  if (is_blank(dir)) dir.clear();
  const std::string_view t = title ? trimmed(title->substr(0, 256)) : std::string_view{};
  c.title = t.empty() ? "Select File" : std::string(t);

  yyselectfile(c, dir, name, filter);

  zelvy_comdlg::data().icdlgbut = c.result;
  if (c.result != kResultOk) {
    if (c.error > 0) {
      if (c.error == kErrFailed) zelvy_comdlg::data().icderr = 0;
      yyerror(c.error, "WSelectFile");
    }
    return;
  }
  if (filterindex) *filterindex = c.filterIndex;
  assign_out(filename, c.resultText);
}

void WSelectFile(std::string_view filter, std::optional<int> flags, std::string& filename,
                 std::optional<std::string_view> title, int* filterindex) {
  yyfileselector(filter, flags, filename, title, filterindex);
}

void wcomdlgpos(int x, int y) {
  zelvy_comdlg::data().wcomdlgpos = {x, y};
}

void WInfoFilename(int item, std::string& text) {
  auto& zd = zelvy_data::data();
  std::string v;
  auto env = [](const char* name) {
    std::string s;
    return yyosvariable(name, s) == 0 ? s : std::string();
  };
  auto home = [&] {
    std::string h = env("HOME");
    if (h.empty()) yyosgethomedir(h);
    return h;
  };
  switch (item) {
    case 1: case 2: case 3: v = zd.cdeffile[static_cast<std::size_t>(item - 1)]; break;
    case 5: v = zd.cdefdir[0]; break;
    case 7: v = zd.cdefdir[1]; break;
    case 10: v = "/tmp/"; break;
    case 11: {
      long long n = std::llabs(static_cast<long long>(yysystime()));
      for (;;) {
        std::string digits = std::to_string(n % 10000000000LL);
        digits.insert(0, 10 - digits.size(), '0');
        const std::string candidate = "xx" + digits + ".tmp";
        if (!IOsFileExists(candidate)) {
          v = "/tmp/" + candidate;
          break;
        }
        ++n;
      }
      break;
    }
    case 12: case 13: v = zd.cbrowser[static_cast<std::size_t>(item - 12)]; break;
    case 14: v = home(); break;
    case 15: yyosregistryfile(v); break;
    case 16: {
      v = env("XDG_CONFIG_HOME");
      if (v.empty()) {
        v = home() + "/.config";
        if (!iosdirexists(v)) {
          IOsDirMake(v);
          IOsCommand("chmod 700 '" + v + "'", kCmdWait, -1);
        }
      }
      break;
    }
    default: break;
  }
  if (!text.empty() && v.size() > text.size()) yyerror(kErrTooSmall, "WInfoFilename");
  assign_out(text, v);
}

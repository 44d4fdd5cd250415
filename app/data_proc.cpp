// The main message loop and the menu commands of the program.
#include "app/data_proc.h"
#include "app/job_file.h"

#include "app/data_init.h"
#include "app/data_param.h"
#include "app/form.h"
#include "app/resources/gombrel_ids.h"
#include "support/lorx_io_messages.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/comdlg/file_selector.h"
#include "toolkit/comdlg/help.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/editor/editor.h"
#include "toolkit/graphics/graphics.h"
#include "toolkit/kernel/display.h"
#include "toolkit/kernel/menu.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/statusbar.h"
#include "toolkit/kernel/window.h"
#include "toolkit/os/command.h"
#include "toolkit/os/files.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace data_proc {

using namespace data_param;
namespace fs = std::filesystem;

namespace {

namespace ids = gombrel_ids;

void set_job_items(int value) {
  WMenuSetState(ids::menu::file_save, 1, value);
  WMenuSetState(ids::menu::file_print, 1, value);
  WMenuSetState(ids::menu::run, 1, value);
}

constexpr std::string_view kJobFilter = "Ombrel Input Files (*.omb) |*.omb|";
constexpr std::string_view kReflectionFilter = "Reflection Files (*.hkl) |*.hkl|*.int|";
// Selector flags: 42 opens, 43 saves; both ask where the Part of the name
// needs it and leave the process in the chosen directory.
constexpr int kOpenFlags = 42;
constexpr int kSaveFlags = 43;
constexpr int kConfirmed = 1;
constexpr int kWaitFlags = 2;
constexpr int kBusyCursor = 1, kNormalCursor = 0;
// The editor of the views: semi-modeless, default options, font type 4.
constexpr int kEditorMode = 3, kEditorFont = 4;
constexpr int kEditorWindowFlags = 39;
// The field of the reflection file, and its Browse button.
constexpr int kBrowseButton = ids::main_form::browse_reflection_file;
constexpr int kHelpKey = 9;

// The answer of the last common dialog.
bool confirmed() { return winfodialog(4) == kConfirmed; }

// The path the selector gave, split into the job's directory, file and
// name; the status bar shows the directory and the name.
void split_path(std::string_view path) {
  const auto p = path.rfind(var_sep[0]);
  if (p == std::string_view::npos) return;
  working_dir = path.substr(0, p);
  WindowOutStatusBar(2, working_dir.trim());
  // The job's files are named relative to its directory, wherever the
  // selector ended.
  IOsDirChange(working_dir.trim());
  file_inp = trimmed(path.substr(p + 1));
  codefile = data_init::job_name(file_inp.trim());
  WindowOutStatusBar(4, codefile.trim());
}

// The job's results are named from the job: a job written by this program
// names them after its file name, as the reduction code will.
std::string results_name() {
  if (!file_out.blank()) return std::string(file_out.trim());
  return std::string(codefile.trim());
}

// A job file is text: a zero byte in its first block means something else was
// chosen (a picture, a program, a reflection file in a binary format).
bool holds_binary_data(const std::string& path) {
  struct Closer {
    void operator()(std::FILE* f) const { std::fclose(f); }
  };
  const std::unique_ptr<std::FILE, Closer> f(std::fopen(path.c_str(), "rb"));
  if (!f) return false;  // the reader says why it can't be opened
  char block[65536];
  const std::size_t n = std::fread(block, 1, sizeof block, f.get());
  return std::string_view(block, n).find('\0') != std::string_view::npos;
}

void open_job() {
  data_init::init_variables();
  std::string path(255, ' ');
  WSelectFile(kJobFilter, kOpenFlags, path, "Open Ombrel Files");
  if (!confirmed()) return;
  // Refused before anything of the job shown changes, as if Open had been
  // cancelled: reading it would give an empty job under its name.
  if (const std::string chosen(trimmed(path)); holds_binary_data(chosen)) {
    lorx_io_messages::error_message("The file " + chosen + " is not a job file: it holds binary data.");
    return;
  }
  split_path(trimmed(path));
  read_ombrel_file();
  if (exit_code == 0) {
    write_dialog_info();
    set_job_items(1);
  } else {
    set_job_items(0);
  }
}

// Save: the form is read and checked first; a bad field has shown its message
// and stops the command. The job name in the form proposes the file name.
void save() {
  read_dialog_info();
  if (exit_code != 0) return;
  if (!codefile.blank()) file_inp = std::string(codefile.trim()) + ".omb";
  std::string path = padded(file_inp.trim(), 256);
  WSelectFile(kJobFilter, kSaveFlags, path, "Save Ombrel Files");
  if (!confirmed()) return;
  split_path(trimmed(path));
  // The results the reduction code writes carry the name of the file just
  // saved, and the views look for them under it.
  file_out = codefile.view();
  write_ombrel_file();
}

// Whether the shell finds a program of that name on its search path, as it
// will when the job is run.
bool on_search_path(std::string_view program) {
  int status = -1;
  IOsCommand("command -v " + std::string(program), kCmdWait | kCmdDiscardOutput | kCmdDiscardErrors, {}, nullptr,
             &status);
  return status == 0;
}

// The stand-in reduction code installed with the program lives off the search
// path (<prefix>/libexec/gombrel/ombrel beside <prefix>/bin/gombrel), so that
// it never shadows a real one; it is taken only when there is no real one.
std::string installed_stand_in() {
  std::error_code ec;
  const fs::path self = fs::read_symlink("/proc/self/exe", ec);
  if (ec) return {};
  const fs::path stand_in = self.parent_path().parent_path() / "libexec" / "gombrel" / "ombrel";
  if (::access(stand_in.c_str(), X_OK) != 0) return {};
  std::string quoted = "'";
  for (const char c : stand_in.string()) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

// Where the printed job goes: beside the job, or in the temporary directory
// when the job's directory can't be written.
std::string printed_job_path(const std::string& job) {
  const fs::path p = fs::absolute(job);
  const fs::path dir = p.parent_path();
  const fs::path where = ::access(dir.c_str(), W_OK) == 0 ? dir : fs::temp_directory_path();
  return (where / (p.filename().string() + ".ps")).string();
}

// Print: the job file as last saved, as text through the PostScript driver,
// then the print command on the document. Once printed the document goes; a
// command that is missing or fails leaves it, and the message says where.
void print_job() {
  if (file_inp.blank()) return;
  const std::string job(file_inp.trim());
  constexpr int kPortrait = 2, kOptColumns = 101, kColumns = 85;
  IGrHardcopySelect(1, zelv_graphics::kDriverPostScript);
  IGrHardcopyOptions(zelv_graphics::kOptOrientation, kPortrait);
  IGrHardcopyOptions(kOptColumns, kColumns);
  const std::string document = printed_job_path(job);
  WInfoError(1);
  IGrHardcopyTextFile(job, document, fs::path(job).filename().string());
  if (WInfoError(1) != 0) {
    lorx_io_messages::error_message("The job file " + job + " could not be printed: it could not be read, or " +
                                    document + " could not be written.");
    return;
  }
  std::string command(trimmed(zelvy_data::data().psedit[0].Command));
  if (command.empty()) command = "lpr";
  const std::string program = command.substr(0, command.find(' '));
  if (!on_search_path(program)) {
    lorx_io_messages::info_message("The print command \"" + program +
                                   "\" was not found on the search path (PATH).\rThe job file was printed to the "
                                   "PostScript file\r" + document);
    return;
  }
  std::string quoted = "'";
  for (const char c : document) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  quoted += "'";
  // A printer that doesn't answer must not hold the program for ever.
  constexpr int kPrintTimeout = 30;
  int code = -1;
  WCursorShape(kBusyCursor);
  IOsCommand(command + " " + quoted, kCmdWait | kCmdKillOnTimeout | kCmdDiscardOutput | kCmdDiscardErrors,
             kPrintTimeout, nullptr, &code);
  WCursorShape(kNormalCursor);
  if (WInfoError(1) != 0 || code != 0) {
    lorx_io_messages::error_message("The print command \"" + command + "\" failed" +
                                    (code > 0 ? " (exit code " + std::to_string(code) + ")" : std::string()) +
                                    ".\rThe job file was printed to the PostScript file\r" + document);
    return;
  }
  std::error_code ec;
  fs::remove(document, ec);
  WindowOutStatusBar(1, "Printed " + job);
}

void run() {
  if (codefile.blank()) {
    lorx_io_messages::info_message("The input file passed to Ombrel program was empty!");
    return;
  }
  std::string program = "ombrel";
  if (!on_search_path(program)) program = installed_stand_in();
  if (program.empty()) {
    lorx_io_messages::error_message(
        "The reduction program \"ombrel\" was not found on the search path (PATH); the job was not run.");
    return;
  }
  WCursorShape(kBusyCursor);
  IOsCommand(program + "  " + std::string(codefile.trim()), kWaitFlags);
  WCursorShape(kNormalCursor);
  view_file_with_editor("out", results_name() + ".out");
}

constexpr int kHelpViewerFailed = 1030;

void manual(std::size_t limit) {
  if (tarnhold_suite.blank()) return;
  const std::string sep(var_sep.view());
  std::string path = std::string(tarnhold_suite.trim()) + sep +
                     (var_system.trim() == "WIND" ? "Help" + sep + "ombrel.chm" : "Html" + sep + "ombrel.html");
  if (path.size() > limit) path.resize(limit);
  WInfoError(1);  // only the launcher's own failure counts below
  WHelpFile(path);
  const int error = WInfoError(1);
  if (error == 0) return;
  std::string reason;
  WInfoErrorMessage(error, reason);
  lorx_io_messages::info_message("The manual " + path + " could not be shown: " + std::string(trimmed(reason)) +
                                 (error == kHelpViewerFailed ? " (is the viewer the initialisation file names installed?)" : ""));
}

void browse() {
  std::string path(256, ' ');
  WSelectFile(kReflectionFilter, kOpenFlags, path, "Select Reflections Files");
  if (!confirmed()) return;
  WDialogPutString(ids::main_form::reflection_file, trimmed(path));
  WMenuSetState(ids::menu::file_save, 1, 1);
  WMenuSetState(ids::menu::run, 1, 1);
  // The selector left the process in the reflections' directory; the job,
  // its results and Run stay in the job's.
  if (!working_dir.blank()) IOsDirChange(working_dir.trim());
}

void evento_pushbutton() {
  switch (mensaje.Value1) {
    case kBrowseButton: browse(); break;
    case kHelpKey: manual(256); break;
    default: break;
  }
}

void about() {
  WDialogLoad(ids::dialog::about);
  WDialogPutString(ids::about::version, "Version: July - 2010");
  WDialogShow(-1, -1, 0, 1);
  // The box is gone once OK was pressed; the form must be the current dialog
  // again for every later command.
  WDialogUnload();
  WDialogSelect(ids::dialog::main_form);
}

void evento_menu() {
  switch (mensaje.Value1) {
    case ids::menu::file_new:
      data_init::init_variables();
      set_job_items(0);
      write_dialog_info();
      break;
    case ids::menu::file_open:
      open_job();
      break;
    case ids::menu::file_save:
      save();
      break;
    case ids::menu::file_print:
      print_job();
      break;
    case ids::menu::run:
      run();
      break;
    case ids::menu::view_output:
      view_file_with_editor("", results_name() + ".out");
      break;
    case ids::menu::view_input:
      view_file_with_editor("", std::string(codefile.trim()) + ".omb");
      break;
    case ids::menu::view_intensities:
      view_file_with_editor("", results_name() + ".int");
      break;
    case ids::menu::view_rejected:
      view_file_with_editor("", results_name() + ".rej");
      break;
    case ids::menu::help_manual:
      manual(255);
      break;
    case ids::menu::file_exit:
      exit_code = -1;
      break;
    case ids::menu::help_about:
      about();
      break;
    default:
      break;
  }
}

}  // namespace

void view_file_with_editor(std::string_view extension, std::optional<std::string_view> file) {
  std::string name = file ? std::string(*file)
                          : std::string(codefile.trim()) + "." + std::string(trimmed(extension));
  if (name.size() > 80) name.resize(80);
  name = std::string(trimmed(name));
  if (!IOsFileExists(name)) {
    lorx_io_messages::info_message("The file " + name + " does not exist!");
    return;
  }
  int handle = 0;
  WindowOpenChild(handle, kEditorWindowFlags, {}, {}, {}, {}, {}, {}, {}, "Ombrel Text Editor");
  WEditFile(name, kEditorMode, 0, 0, kEditorFont);
  // Everything for the main form waits until the editor is closed.
  do {
    WMessage(evento, mensaje);
  } while (evento != CloseRequest);
  WindowCloseChild(handle);
}

void main_procedure() {
  WMessageEnable(FieldChanged, 1);
  exit_code = 0;
  set_job_items(0);

  if (!file_inp.blank()) {
    read_ombrel_file();
    if (exit_code < 0) return;  // the message has been shown; the program closes
    write_dialog_info();
    set_job_items(1);
  }
  write_dialog_info();

  for (;;) {
    WMessage(evento, mensaje);
    switch (evento) {
      case MenuSelect:
        evento_menu();
        if (exit_code == -1) return;
        exit_code = 0;
        break;
      case FieldChanged:
        evento_fieldchanged();
        break;
      case PushButton:
        evento_pushbutton();
        break;
      case CloseRequest:
        return;
      default:
        break;
    }
  }
}

}  // namespace data_proc

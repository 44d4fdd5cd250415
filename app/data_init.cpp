// Start-up of the program: platform settings, the command line, the main window.
#include "app/data_init.h"

#include <span>
#include <string>

#include "app/data_param.h"
#include "app/resources/gombrel_ids.h"
#include "app/resources/gombrel_resources.h"
#include "toolkit/comdlg/message_box.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/editor/editor.h"
#include "toolkit/grid/grid.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/statusbar.h"
#include "toolkit/kernel/window.h"
#include "toolkit/os/datetime.h"
#include "toolkit/os/files.h"

namespace data_init {

using namespace data_param;

void load_settings() {
  var_system = WInfoSystem(1) == 6 ? "WIND" : "UNIX";
  var_sep = std::string(1, static_cast<char>(WInfoSystem(6)));
}

void line_arguments() {
  codefile = "";
  file_inp = "";
  working_dir = "";
  std::string dir;
  IOsDirName(dir);
  actual_dir = dir;

  if (WInfoSystem(2) > 0) {
    std::string arg;
    iosargument(1, arg);
    file_inp = arg;
  }

  // A directory in the argument becomes the process's directory, so that from
  // here on the job file is a bare name relative to it.
  const std::string inp(file_inp.trim());
  const auto sep = inp.rfind(var_sep[0]);
  if (sep != std::string::npos) {
    working_dir = inp.substr(0, sep + 1);
    file_inp = inp.substr(sep + 1);
  }
  if (working_dir.blank()) {
    working_dir = actual_dir.view();
  } else {
    IOsDirChange(working_dir.trim());
  }

  if (!file_inp.blank()) codefile = job_name(file_inp.trim());  // cut at 40 by the field
}

std::string job_name(std::string_view file) { return std::string(file.substr(0, file.find('.'))); }

void main_window() {
  yyrcinstall(gombrel_resource_tables());
  yyDialogAttach();
  yyGridAttach();
  yyComdlgAttach();
  yyEditAttach();
  WInitialise("");
  const int toolbars[4] = {gombrel_ids::toolbar::main, 0, 0, 0};
  WindowOpen(35, 15, 15, std::nullopt, std::nullopt, gombrel_ids::menu::main, toolbars, gombrel_ids::dialog::main_form,
             "GUI Ombrel Program");

  const int widths[6] = {1000, 5500, 650, 1400, 420, -1};
  const int styles[6] = {0, 1, 0, 1, 0, 1};
  WindowStatusBarParts(6, widths, styles);
  WindowOutStatusBar(1, "Work Directory:");
  WindowOutStatusBar(2, working_dir.trim());
  WindowOutStatusBar(3, "Code File:");
  WindowOutStatusBar(4, codefile.trim());
  WindowOutStatusBar(5, "Date:");
  int year = 0, month = 0, day = 0;
  iosdate(year, month, day);
  std::string date(20, ' ');
  wdatetostring(date, year, month, day);
  WindowOutStatusBar(6, trimmed(date));

  std::string suite(tarnhold_suite.width(), ' ');
  IOsVariable("TARNHOLD", suite);
  tarnhold_suite = suite;
}

void init_variables() {
  file_inp = "";
  codefile = "";
  file_dat = "";
  file_out = "";
  title = "";
  spgr = "";
  cel = {};
  ang = {};
  cell_given = false;
  wavel = 0;
  wave_given = false;
  hkl_type = 0;
  transhkl = {};
  transf_ind = false;
  friedel = true;
  scal_fact = 0;
  scale_given = false;
  powder = false;
  epsg = 0;
  eps_given = false;
  kv = {};
  prop = false;
  domain = false;
  warning = 0;

  twinned = false;
  twin_name = "";
  itwin = 0;
  nmat = 0;
  for (auto& m : twin) m = {};
  tr = {};
  itransf = false;
  ubm = {};
  iubm = false;
  machine = "";
  twin_spg = "";
  ispg = false;
}

}  // namespace data_init

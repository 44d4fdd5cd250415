// The main message loop and the menu commands of the program.
#include "app/data_proc.h"
#include "app/job_file.h"

#include "app/data_init.h"
#include "app/data_param.h"
#include "app/form.h"
#include "app/resources/gombrel_ids.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/kernel/menu.h"
#include "toolkit/kernel/message.h"

namespace data_proc {

using namespace data_param;

namespace {

namespace ids = gombrel_ids;

void set_job_items(int value) {
  WMenuSetState(ids::menu::file_save, 1, value);
  WMenuSetState(ids::menu::file_print, 1, value);
  WMenuSetState(ids::menu::run, 1, value);
}

// The push buttons of the form come with the remaining commands.
void evento_pushbutton() {}

// Save: the form is read and checked first; a bad field has shown its message
// and stops the command. The job name in the form names the file until the
// file selector lets the user choose another.
void save() {
  read_dialog_info();
  if (exit_code != 0) return;
  if (!codefile.blank()) file_inp = std::string(codefile.trim()) + ".omb";
  if (file_inp.blank()) return;
  write_ombrel_file();
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
    case ids::menu::file_save:
      save();
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

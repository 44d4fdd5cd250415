// The main message loop and the menu commands of the program.
#include "app/data_proc.h"

#include "app/data_init.h"
#include "app/data_param.h"
#include "toolkit/kernel/menu.h"
#include "toolkit/kernel/message.h"

namespace data_proc {

using namespace data_param;

namespace {

constexpr int kMenuNew = 40002;
constexpr int kMenuSave = 40005;
constexpr int kMenuPrint = 40006;
constexpr int kMenuExit = 40007;
constexpr int kMenuRun = 40008;

void set_job_items(int value) {
  WMenuSetState(kMenuSave, 1, value);
  WMenuSetState(kMenuPrint, 1, value);
  WMenuSetState(kMenuRun, 1, value);
}

// The form and the remaining commands come with the dialog engine; until then
// the form has nothing to show and only New and Exit act.
void write_dialog_info() {}
void evento_fieldchanged() {}
void evento_pushbutton() {}

void evento_menu() {
  switch (mensaje.Value1) {
    case kMenuNew:
      data_init::init_variables();
      set_job_items(0);
      write_dialog_info();
      break;
    case kMenuExit:
      exit_code = -1;
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

// The main message loop and the menu commands of the program.
#include "app/data_proc.h"

#include "app/data_init.h"
#include "app/data_param.h"
#include "app/form.h"
#include "toolkit/dialog/dialog.h"
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

constexpr int kMenuAbout = 40011;
constexpr int kMainForm = 102;
constexpr int kAboutDialog = 104;

// Keeping the form consistent while the user types, and the push buttons of the
// form, come with the remaining commands.
void evento_fieldchanged() {}
void evento_pushbutton() {}

void about() {
  WDialogLoad(kAboutDialog);
  WDialogPutString(1047, "Version: July - 2010");
  WDialogShow(-1, -1, 0, 1);
  // The box is gone once OK was pressed; the form must be the current dialog
  // again for every later command.
  WDialogUnload();
  WDialogSelect(kMainForm);
}

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
    case kMenuAbout:
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

// zelvdemo: every kind of dialog field in one window, to try by hand. The
// bottom line tells what each action reported; Step moves the progress bar,
// Close ends the program.
#include <iostream>

#include "tools/zelvdemo/demo_form.h"
#include "tools/zelvdemo/zelvdemo_ids.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/small_widgets.h"

int main() {
  namespace form = zelvdemo_ids::demo;
  zelvdemo_start();
  zelvdemo_open();
  for (int type : {FieldChanged, TabChanged, PushButton, ContextClick}) WMessageEnable(type, 1);
  constexpr int kStep = 100, kFull = 1000;
  for (;;) {
    int type = 0;
    MessageRecord m;
    WMessage(type, m);
    if (type == CloseRequest || (type == PushButton && m.Value1 == form::close && m.Win == zelvdemo_ids::dialog::demo))
      break;
    if (type == PushButton && m.Value1 == form::step && m.Win == zelvdemo_ids::dialog::demo) {
      int value = 0, error = 0;
      yydialoggetprogressbar_(form::progress, value, error);
      yydialogputprogress_(form::progress, value >= kFull ? 0 : value + kStep, 0, error);
    }
    if (type == PushButton && m.Value1 == form::rows && m.Win == zelvdemo_ids::dialog::demo) zelvdemo_open_rows();
    if (type == PushButton && m.Win == zelvdemo_ids::dialog::rows) {
      // Its close box only hides the dialog of rows.
      WDialogSelect(zelvdemo_ids::dialog::rows);
      WDialogHide();
      continue;
    }
    const std::string line = zelvdemo_describe(type, m);
    if (line.empty()) continue;
    std::cout << line << '\n';
    WDialogPutString(form::status, line);
  }
  zelvdemo_close();
  return 0;
}

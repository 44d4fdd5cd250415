// The main form in the root window, for the display tests of the dialog
// engine: the program's resources, the engine attached, the form opened
// afresh for every test and closed after it.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>

#include "app/resources/gombrel_ids.h"
#include "app/resources/gombrel_resources.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"

inline constexpr int kForm = gombrel_ids::dialog::main_form;

class MainFormTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(gombrel_resource_tables());
    yyDialogAttach();
    WInitialise();
    yyDialogEngineInit();
  }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    // The root window carries the form as its content.
    WindowOpen(0, 0, 0, {}, {}, {}, {}, kForm);
    WDialogSelect(kForm);
    ASSERT_EQ(zelvy_data::data().icurdialog, kForm);
    settle();
    zelvy_data::data().ierr = 0;
  }
  void TearDown() override {
    yywindowdialogclose(0);
    WindowClose();
    zelvy_data::data().ierr = 0;
  }

  // Lets the server and the widgets catch up, dropping what arrives.
  static void settle() {
    XSync(xdisplay(), False);
    int type = 0;
    MessageRecord m;
    for (int i = 0; i < 200; ++i) {
      WMessagePeek(type, m);
      if (type == -1) {
        XSync(xdisplay(), False);
        WMessagePeek(type, m);
        if (type == -1) break;
      }
    }
  }

  static FieldRecord& field(int id) {
    auto& d = zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur];
    return d.fields[static_cast<std::size_t>(yyDialogFindField(id, zelvy_dialog::state().iDlgCur))];
  }
};

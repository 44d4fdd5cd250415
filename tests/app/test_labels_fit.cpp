// Every text the program shows is whole with the default fonts: the labels,
// buttons, boxes and frame titles of every dialog of the resources, and the
// status bar's captions of the main window. Each window is also kept as a
// picture in build/shots/ to be looked at.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/Xft/Xft.h>
#include <Xm/Label.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "app/data_init.h"
#include "app/resources/gombrel_ids.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/statusbar_private.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

namespace {

namespace dlg = gombrel_ids::dialog;

void settle() {
  for (int i = 0; i < 50; ++i) {
    XSync(xdisplay(), False);
    int type = 0;
    MessageRecord m;
    do WMessagePeek(type, m);
    while (type != -1);
  }
}

void shoot(Window w, const std::string& name) {
  const std::string dir = ZELV_BINARY_DIR "/shots";
  const std::string cmd = "mkdir -p '" + dir + "' && import -window " + std::to_string(w) + " '" + dir + "/" +
                          name + ".png' 2>/dev/null";
  EXPECT_EQ(std::system(cmd.c_str()), 0) << name;
}

// The labels under a widget (buttons, boxes and frame titles are labels too)
// whose text needs more room than they have, with what they need.
void clipped(Widget w, std::vector<std::string>& out) {
  if (!XtIsManaged(w) && XtParent(w) && !XtIsShell(XtParent(w))) return;
  if (XmIsLabel(w)) {
    XtWidgetGeometry want{};
    XtQueryGeometry(w, nullptr, &want);
    Dimension width = 0, height = 0;
    XtVaGetValues(w, XtNwidth, &width, XtNheight, &height, nullptr);
    if (want.width > width || want.height > height) {
      XmString s = nullptr;
      XtVaGetValues(w, XmNlabelString, &s, nullptr);
      char* text = s ? static_cast<char*>(XmStringUnparse(s, nullptr, XmCHARSET_TEXT, XmCHARSET_TEXT, nullptr, 0,
                                                           XmOUTPUT_ALL))
                     : nullptr;
      out.push_back("'" + std::string(text ? text : "") + "' needs " + std::to_string(want.width) + "x" +
                    std::to_string(want.height) + ", has " + std::to_string(width) + "x" + std::to_string(height));
      XtFree(text);
      XmStringFree(s);
    }
  }
  if (!XtIsComposite(w)) return;
  WidgetList kids = nullptr;
  Cardinal n = 0;
  XtVaGetValues(w, XtNchildren, &kids, XtNnumChildren, &n, nullptr);
  for (Cardinal i = 0; i < n; ++i) clipped(kids[i], out);
}

class LabelsFit : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    data_init::main_window();
    settle();
  }
  static void TearDownTestSuite() { WindowClose(); }
};

TEST_F(LabelsFit, TheMainWindowShowsItsFormAndStatusBarWhole) {
  const auto& win = zelvy_win::state();
  std::vector<std::string> cut;
  clipped(win.wtShell[0], cut);
  EXPECT_TRUE(cut.empty()) << ::testing::PrintToString(cut);

  const StatusBarRecord& bar = *zelvy_sbar::state().psbarInfo[0];
  const ZelvAppData& a = zelvy_x::state().appData;
  XftFont* font = yyXftOpen(a.xftNameStatus, a.xftSizeStatus > 0 ? a.xftSizeStatus : 8);
  ASSERT_NE(font, nullptr);
  // A caption starts 5 pixels in; the sunken edge takes the last 3.
  constexpr int kLead = 5, kEdge = 3;
  for (int part : {0, 2, 4}) {
    ASSERT_TRUE(bar.PartTexts[part].has_value());
    const std::string& text = *bar.PartTexts[part];
    XGlyphInfo ext{};
    XftTextExtentsUtf8(xdisplay(), font, reinterpret_cast<const FcChar8*>(text.data()),
                       static_cast<int>(text.size()), &ext);
    EXPECT_LE(kLead + ext.xOff, bar.PartWidths[part] - kEdge) << text;
  }
  XftFontClose(xdisplay(), font);
  shoot(win.wShell[0], "main_window");
}

TEST_F(LabelsFit, EveryDialogShowsItsTextsWhole) {
  for (int id : {dlg::matrix_column, dlg::about, dlg::selector_open, dlg::selector_save, dlg::selector_new_directory,
                 dlg::selector_rename, dlg::selector_properties, dlg::find, dlg::replace, dlg::goto_line}) {
    WDialogLoad(id);
    ASSERT_EQ(WInfoError(1), 0) << id;
    WDialogShow(10, 10, 0, 2);
    settle();
    const DialogRecord& d = zelvy_dialog::state().wDialogInfo[yyDialogFind(id)];
    std::vector<std::string> cut;
    clipped(d.shell, cut);
    EXPECT_TRUE(cut.empty()) << "dialog " << id << ": " << ::testing::PrintToString(cut);
    shoot(XtWindow(d.shell), "dialog_" + std::to_string(id));
    WDialogUnload();
  }
}

}  // namespace

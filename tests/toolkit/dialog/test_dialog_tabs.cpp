// A tab field with two page dialogs: the first page added is in view, a
// page button changes the page unless a field doesn't validate; the pages
// follow the field's visibility and a page's title is its label.
#include <gtest/gtest.h>

#include <X11/IntrinsicP.h>
#include <Xm/Xm.h>

#include <string>

#include "tests/toolkit/dialog/generated/anchored_ids.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"

const zelv_rc::ResourceTables& anchored_resource_tables();

namespace {

namespace ids = anchored_ids;

class TabField : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(anchored_resource_tables());
    yyDialogAttach();
    WInitialise();
    yyDialogInit();
  }
  void TearDown() override {
    WDialogSelect(ids::dialog::tabbed);
    WDialogUnload();
    WindowClose();
    zelvy_data::data().ierr = 0;
  }

  // Lets the server and the widgets catch up.
  static void settle() {
    for (int i = 0; i < 300; ++i) {
      XSync(xdisplay(), False);
      int type = 0;
      MessageRecord m;
      WMessagePeek(type, m);
      if (type == -1 && !XPending(xdisplay())) break;
    }
  }

  // A press of a page's tab, as the strip's action takes it.
  static void press(Widget button) {
    XEvent ev{};
    ev.type = ButtonPress;
    XtCallActionProc(button, "yyTabWidgetButtonAT", &ev, const_cast<String*>(&kPress), 1);
  }
  static constexpr const char* kPress = "d";

  static DialogRecord& dialog(int id) { return zelvy_dialog::state().wDialogInfo[yyDialogFind(id)]; }
};

TEST_F(TabField, PagesAreChosenByTheirButtonsAndFollowTheField) {
  WindowOpen(0, 0, 0, 300, 200);
  WDialogLoad(ids::dialog::tabbed);
  WDialogShow(10, 10);
  settle();
  FieldRecord& tab = dialog(ids::dialog::tabbed).fields[0];
  ASSERT_EQ(tab.type, zelvy_dialog::kTab);
  for (int page : {ids::dialog::page_one, ids::dialog::page_two}) {
    int error = 0;
    yyDialogLoad(page, page, true, 1, tab.valueWidget, 2, error);
    ASSERT_EQ(error, 0);
  }
  WDialogSelect(ids::dialog::tabbed);
  Widget one = dialog(ids::dialog::page_one).widget, two = dialog(ids::dialog::page_two).widget;
  yyTabWidgetAddDataX(tab, one, ids::dialog::page_one, "First");
  yyTabWidgetAddDataX(tab, two, ids::dialog::page_two, "");
  ASSERT_EQ(tab.tabs.size(), 2u);
  EXPECT_EQ(tab.tabs[1].label, " ");  // an empty label keeps its button
  EXPECT_EQ(tab.selectedPage, ids::dialog::page_one);
  EXPECT_TRUE(XtIsManaged(one));
  EXPECT_FALSE(XtIsManaged(two));
  settle();

  press(tab.tabs[1].button);
  EXPECT_EQ(tab.selectedPage, ids::dialog::page_two);
  EXPECT_TRUE(XtIsManaged(two));
  EXPECT_FALSE(XtIsManaged(one));

  // A field that doesn't validate keeps the page in view.
  zelvy_dialog::state().bInvalidField = true;
  press(tab.tabs[0].button);
  zelvy_dialog::state().bInvalidField = false;
  EXPECT_EQ(tab.selectedPage, ids::dialog::page_two);
  EXPECT_TRUE(XtIsManaged(two));

  WDialogFieldState(40, 3);
  EXPECT_FALSE(XtIsManaged(two));
  WDialogFieldState(40, 1);
  EXPECT_TRUE(XtIsManaged(two));

  WDialogSelect(ids::dialog::page_two);
  WDialogTitle("Second");
  EXPECT_EQ(tab.tabs[1].label, "Second");
}

}  // namespace

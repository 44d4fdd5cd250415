// The menu engine without a display: the item tree, keyboard navigation,
// mnemonics, accelerators, bar layout, pop-up placement and item states.
#include <gtest/gtest.h>

#include <X11/keysym.h>

#include <climits>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "app/resources/gombrel_resources.h"
#include "toolkit/kernel/resources.h"

namespace {

// The program's own tables, the ones these tests read.
[[maybe_unused]] const bool kTablesInstalled = (yyrcinstall(gombrel_resource_tables()), true);



// A menu by hand: each entry is an item at a depth (0 the top level).
struct Entry {
  int depth;
  int id;
  std::string text;  // with "&" marks; empty for a separator
};

std::unique_ptr<MenuRecord> make_menu(const std::vector<Entry>& entries) {
  auto m = std::make_unique<MenuRecord>();
  const int n = static_cast<int>(entries.size());
  m->ItemIds.assign(n, 0);
  m->ItemFlags.assign(n, 0);
  m->ItemNext.assign(n, -1);
  m->ItemChild.assign(n, -1);
  m->ItemText.assign(n, "");
  m->ItemMnemonic.assign(n, -1);
  std::vector<int> last(8, -1);  // last item seen at each depth
  for (int i = 0; i < n; ++i) {
    const Entry& e = entries[i];
    m->ItemIds[i] = e.id;
    std::string t = e.text;
    if (e.id == 0) m->ItemFlags[i] = kMenuSeparator;
    else m->ItemMnemonic[i] = yyMenuItemTextProc(t);
    m->ItemText[i] = t;
    if (last[e.depth] >= 0) m->ItemNext[last[e.depth]] = i;
    if (e.depth > 0 && m->ItemChild[last[e.depth - 1]] < 0) m->ItemChild[last[e.depth - 1]] = i;
    last[e.depth] = i;
    for (int d = e.depth + 1; d < 8; ++d) last[d] = -1;
  }
  yyMenuBuildPopups(*m);
  return m;
}

// One key of a walk and what it leaves: the identifier chosen (0 none), the
// current item (kClosed: the menu closed, kAny: not looked at) and the
// identifiers of the parents of the open pop-ups, oldest first.
constexpr int kClosed = -1, kAny = INT_MIN;
struct Step {
  unsigned long keysym;
  unsigned state;
  int chosen, current;
  std::vector<int> parents;
};

class MenuLogic : public ::testing::Test {
 protected:
  void SetUp() override { reset(); }
  void TearDown() override { reset(); }
  static void reset() {
    yyMenuWindowClosed(0);
    zelvy_menu::state().itemstates.clear();
    zelvy_menu::state().iWinMenu = 0;
    zelvy_menu::state().iFloatMenu = false;
    zelvy_data::data().ierr = 0;
  }

  // The application's main menu as the bar of window 0.
  MenuRecord& main_menu() {
    int status = -1;
    yymenu(30001, 0, status);
    EXPECT_EQ(status, 0);
    return *zelvy_menu::state().pwRootMenuSub[0];
  }
  MenuRecord& install(std::unique_ptr<MenuRecord> m) {
    yyMenuInstall(0, std::move(m));
    return *zelvy_menu::state().pwRootMenuSub[0];
  }

  // A key to window 0's menu; the identifier chosen, 0 for none.
  int key(unsigned long keysym, unsigned state = 0) {
    int type = 0, v1 = 0, v2 = 0;
    taken = yyMenuProcessKey(keysym, state, 0, type, v1, v2);
    if (type == 0) return 0;
    EXPECT_EQ(type, MenuSelect);
    EXPECT_EQ(v2, -1);
    return v1;
  }
  void walk(const std::vector<Step>& steps) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
      const Step& s = steps[i];
      SCOPED_TRACE(testing::Message() << "step " << i << ", keysym 0x" << std::hex << s.keysym);
      EXPECT_EQ(key(s.keysym, s.state), s.chosen);
      if (s.current == kClosed) {
        EXPECT_FALSE(yyMenuIsOpen());
        EXPECT_EQ(zelvy_menu::state().iCurMenuItem, -1);
        continue;
      }
      ASSERT_TRUE(yyMenuIsOpen());
      if (s.current != kAny) {
        EXPECT_EQ(zelvy_menu::state().iCurMenuItem >= 0 ? zelvy_menu::state().pwActiveMenu->ItemIds[zelvy_menu::state().iCurMenuItem] : -1, s.current);
      }
      std::vector<int> parents;
      for (int p : zelvy_menu::state().pwActiveMenu->OpenPopups) parents.push_back(zelvy_menu::state().pwActiveMenu->ItemIds[zelvy_menu::state().pwActiveMenu->PopupParentItem[p]]);
      EXPECT_EQ(parents, s.parents);
    }
  }
  // The identifiers along a chain of siblings.
  static std::vector<int> ids_from(const MenuRecord& m, int first) {
    std::vector<int> ids;
    for (int i = first; i >= 0; i = m.ItemNext[i]) ids.push_back(m.ItemIds[i]);
    return ids;
  }
  bool taken = false;
};

TEST_F(MenuLogic, MainMenuTreeFromResources) {
  const MenuRecord& m = main_menu();
  ASSERT_EQ(m.PopupCount, 4);
  EXPECT_EQ(ids_from(m, m.PopupFirstItem[0]), (std::vector<int>{40001, 40008, 40009, 40004}));
  const int file = m.find(40001), run = m.find(40008);
  EXPECT_EQ(m.ItemText[file], "File");
  EXPECT_EQ(m.PopupKind[0], kPopupBar);
  EXPECT_EQ(m.PopupKind[m.ItemSubPopup[file]], kPopupDrop);
  EXPECT_FALSE(m.has_sub(run));
  EXPECT_TRUE(m.selectable(run));
  EXPECT_EQ(ids_from(m, m.ItemChild[file]), (std::vector<int>{40002, 40003, 40005, 0, 40006, 0, 40007}));

  int status = 0;
  yymenu(39999, 0, status);
  EXPECT_EQ(status, 1002);
  EXPECT_NE(zelvy_menu::state().pwRootMenuSub[0], nullptr);  // an unknown menu leaves the old one
}

TEST_F(MenuLogic, TextMarks) {
  // Marks after the tab belong to the accelerator text; the last mark wins.
  const std::tuple<std::string, int, std::string> cases[] = {
      {"&File", 0, "File"},          {"Save &As\tCtrl+&S", 5, "Save As\tCtrl+&S"},
      {"Fish && &Chips", 7, "Fish & Chips"}, {"A&&B", -1, "A&B"},
      {"&a&b", 1, "ab"}};
  for (const auto& [in, mnemonic, out] : cases) {
    std::string t = in;
    EXPECT_EQ(yyMenuItemTextProc(t), mnemonic) << in;
    EXPECT_EQ(t, out);
  }
}

TEST_F(MenuLogic, MnemonicSearch) {
  MenuRecord& m = install(make_menu({{0, 1, "&Edit"}, {1, 11, "&Cut"}, {1, 12, "Cop&y"}, {1, 0, ""},
                                     {1, 13, "Paste"}, {1, 14, "Print"}, {1, 15, "Clear"}}));
  const int popup = m.ItemSubPopup[0];
  int count = 0;
  // A marked letter is found before first letters of unmarked items.
  EXPECT_EQ(m.ItemIds[yyMenuKeyToItem(m, popup, -1, 'c', count)], 11);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(m.ItemIds[yyMenuKeyToItem(m, popup, -1, 'Y', count)], 12);
  // Unmarked items by their first letter; two of them alternate from the current one.
  const int first = yyMenuKeyToItem(m, popup, -1, 'p', count);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(m.ItemIds[first], 13);
  EXPECT_EQ(m.ItemIds[yyMenuKeyToItem(m, popup, first, 'p', count)], 14);
  EXPECT_EQ(m.ItemIds[yyMenuKeyToItem(m, popup, m.find(14), 'p', count)], 13);
  EXPECT_EQ(yyMenuKeyToItem(m, popup, -1, 'z', count), -1);
  EXPECT_EQ(count, 0);
}

TEST_F(MenuLogic, KeyboardWalkOverTheBar) {
  main_menu();
  EXPECT_FALSE(yyMenuIsOpen());
  EXPECT_EQ(key(XK_Down), 0);
  EXPECT_FALSE(taken);  // no menu open: ordinary keys go on
  walk({{XK_F10, 0, 0, 40001, {}},  // F10 drops nothing down
        {XK_Right, 0, 0, 40008, {}}, {XK_Right, 0, 0, 40009, {}}, {XK_Down, 0, 0, 40012, {40009}},
        {XK_Up, 0, 0, 40014, {40009}},     // wraps to the last
        {XK_Right, 0, 0, 40004, {40004}},  // no sub-menu: on to the next top item, dropped down
        {XK_Down, 0, 0, 40010, {40004}},
        {XK_Down, 0, 0, 40011, {40004}},   // the separator is skipped
        {XK_Left, 0, 0, 40009, {40009}},   // first level: previous top item, dropped down
        {'a', 0, 0, 40009, {40009}}});     // any other key is taken without effect
  EXPECT_TRUE(taken);
  walk({{XK_Escape, 0, 0, kClosed, {}}});
}

TEST_F(MenuLogic, ChoosingItems) {
  main_menu();
  walk({{XK_F10, 0, 0, 40001, {}}, {XK_Right, 0, 0, 40008, {}},
        {XK_Return, 0, 40008, kClosed, {}},  // Run acts from the bar
        {'f', Mod1Mask, 0, kAny, {40001}},   // Alt+F drops File down
        {XK_Up, 0, 0, 40007, {40001}},       // automatic opening is on: to the last item
        {XK_Return, 0, 40007, kClosed, {}},
        {'r', Mod1Mask, 40008, kClosed, {}},  // a single plain top item is chosen at once
        {'f', Mod1Mask, 0, kAny, {40001}}, {'o', 0, 40003, kClosed, {}},  // a letter alone in the pop-up chooses
        // Two items with the same letter: the letter moves between them and chooses neither.
        {'v', Mod1Mask, 0, kAny, {40009}}, {'i', 0, 0, 40013, {40009}}, {'i', 0, 0, 40015, {40009}},
        {'i', 0, 0, 40013, {40009}}, {XK_Escape, 0, 0, kClosed, {}}});
}

TEST_F(MenuLogic, GreyedItemsAreSeenButNotChosen) {
  main_menu();
  WMenuSetState(40005, 1, 0);
  WMenuSetState(40004, 1, 0);
  walk({{'f', Mod1Mask, 0, kAny, {40001}}, {XK_Down, 0, 0, kAny, {40001}}, {XK_Down, 0, 0, kAny, {40001}},
        {XK_Down, 0, 0, 40005, {40001}},  // highlighted all the same
        {XK_Return, 0, 0, 40005, {40001}}, {'s', 0, 0, 40005, {40001}},
        {XK_Left, 0, 0, 40004, {}},  // to Help, which is greyed: it doesn't drop down
        {XK_Escape, 0, 0, kClosed, {}},
        {'h', Mod1Mask, 0, kAny, {}},  // nor does it by its mnemonic
        {XK_Escape, 0, 0, kClosed, {}}});
}

TEST_F(MenuLogic, CascadesOpenAndCloseOneLevel) {
  MenuRecord& m = install(make_menu({{0, 1, "&Edit"}, {1, 11, "&Find"}, {1, 12, "&More"}, {2, 21, "&One"},
                                     {2, 22, "&Two"}, {1, 13, "&Last"}, {0, 2, "&Tools"}, {1, 31, "&Hammer"}}));
  EXPECT_EQ(m.PopupKind[m.ItemSubPopup[m.find(12)]], kPopupCascade);
  EXPECT_TRUE(m.ItemFlags[m.find(12)] & kMenuHasSub);
  walk({{'e', Mod1Mask, 0, kAny, {1}}, {XK_Down, 0, 0, kAny, {1}}, {XK_Down, 0, 0, 12, {1}},
        {XK_Right, 0, 0, 21, {1, 12}},
        {XK_Left, 0, 0, 12, {1}},  // one level back
        {'m', 0, 0, 21, {1, 12}},  // a letter opens a sub-menu and goes to its first item
        {'t', 0, 22, kClosed, {}},
        {'e', Mod1Mask, 0, kAny, {1}}, {XK_Down, 0, 0, kAny, {1}}, {XK_Down, 0, 0, kAny, {1}},
        {XK_Return, 0, 0, kAny, {1, 12}},
        {XK_Escape, 0, 0, kClosed, {}}});  // the whole menu, not one level
  EXPECT_TRUE(m.OpenPopups.empty());
}

TEST_F(MenuLogic, Accelerators) {
  main_menu();
  AccelTable& t = zelvy_menu::state().pwAccelTable[0];
  t.keysyms = {XK_S, XK_Tab, XK_F5};
  t.ids = {40005, 40003, 40008};
  t.modifiers = {4, 1, 0};
  int type = 0, v1 = 0, v2 = 0;
  EXPECT_TRUE(yyMenuProcessAccel(XK_s, ControlMask, 0, type, v1, v2));
  EXPECT_EQ(std::tuple(type, v1, v2), std::tuple(MenuSelect, 40005, -1));
  EXPECT_FALSE(yyMenuProcessAccel(XK_s, ControlMask | ShiftMask, 0, type, v1, v2));  // modifiers match exactly
  EXPECT_TRUE(yyMenuProcessAccel(XK_ISO_Left_Tab, ShiftMask, 0, type, v1, v2));  // the left Tab is Shift+Tab
  EXPECT_EQ(v1, 40003);
  WMenuSetState(40005, 1, 0);
  EXPECT_TRUE(yyMenuProcessAccel(XK_s, ControlMask, 0, type, v1, v2));
  EXPECT_EQ(type, 0);  // a greyed item's accelerator gives nothing
  key(XK_F10);
  EXPECT_FALSE(yyMenuProcessAccel(XK_F5, 0, 0, type, v1, v2));  // nothing while a menu is open
  key(XK_Escape);
}

TEST_F(MenuLogic, ItemStates) {
  // Without a menu: unknown items are enabled and unchecked, and each state is kept apart.
  EXPECT_EQ(std::pair(WMenuGetState(40005, 1), WMenuGetState(40005, 2)), std::pair(1, 0));
  WMenuSetState(40005, 1, 0);
  WMenuSetState(40005, 2, 1);
  EXPECT_EQ(std::pair(WMenuGetState(40005, 1), WMenuGetState(40005, 2)), std::pair(0, 1));
  WMenuSetState(40005, 1, 1);
  EXPECT_EQ(std::pair(WMenuGetState(40005, 1), WMenuGetState(40005, 2)), std::pair(1, 1));
  EXPECT_EQ(WInfoError(1), 0);
  WMenuSetState(40005, 3, 1);
  EXPECT_EQ(WInfoError(1), 1126);

  main_menu();
  WMenuSetState(40005, 3, 1);
  EXPECT_EQ(WInfoError(1), 1126);
  WMenuSetState(40005, 1, 2);
  EXPECT_EQ(WInfoError(1), 1126);
  WMenuSetState(40006, 2, 1);
  WMenuSetState(40006, 2, 1);  // already so: no error
  EXPECT_EQ(zelvy_data::data().ierr, 0);
  EXPECT_EQ(std::pair(WMenuGetState(40006, 2), WMenuGetState(40006, 1)), std::pair(1, 1));
  const MenuRecord& m = *zelvy_menu::state().pwRootMenuSub[0];
  EXPECT_EQ(m.ItemFlags[m.find(40006)] & (kMenuChecked | kMenuGreyed), kMenuChecked);
  WMenuSetState(40006, 1, 0);
  EXPECT_EQ(WMenuGetState(40006, 1), 0);
  WMenuSetState(40006, 1, 1);
  EXPECT_EQ(WMenuGetState(40006, 1), 1);
  // An identifier that only a toolbar has keeps its state.
  WMenuSetState(45000, 1, 0);
  EXPECT_EQ(zelvy_data::data().ierr, 0);
  EXPECT_EQ(WMenuGetState(45000, 1), 0);

  // States set before a menu exists hold once it is loaded.
  yyMenuWindowClosed(0);
  WMenuSetState(40012, 1, 0);
  const MenuRecord& again = main_menu();
  EXPECT_TRUE(again.greyed(again.find(40012)));
}

TEST_F(MenuLogic, InsertDeleteAndTexts) {
  MenuRecord& m = main_menu();
  WMenuItemInsert(40002, 1, 40100, "&Template");  // in front of the first item of File
  const int file = m.find(40001);
  EXPECT_EQ(m.ItemIds[m.PopupFirstItem[m.ItemSubPopup[file]]], 40100);
  EXPECT_EQ(m.ItemMnemonic[m.find(40100)], 0);
  WMenuItemInsert(40007, 1, 0, "");  // a separator in front of Exit
  EXPECT_EQ(ids_from(m, m.ItemChild[file]), (std::vector<int>{40100, 40002, 40003, 40005, 0, 40006, 0, 0, 40007}));
  EXPECT_EQ(m.ItemIds[yyMenuStep(m, m.find(40007), -1)], 40006);
  WMenuItemInsert(40008, 2, 40101, "Stop");  // behind Run, on the bar
  EXPECT_EQ(m.ItemIds[m.ItemNext[m.find(40008)]], 40101);
  EXPECT_EQ(m.ItemPopup[m.find(40101)], 0);

  WMenuItemDelete(40001);  // has children
  EXPECT_EQ(WInfoError(1), 1001);
  WMenuItemDelete(40100);
  EXPECT_EQ(WInfoError(1), 0);
  EXPECT_EQ(m.find(40100), -1);
  EXPECT_EQ(m.ItemIds[m.ItemChild[file]], 40002);
  WMenuItemDelete(40100);
  EXPECT_EQ(WInfoError(1), 1001);
  WMenuItemInsert(40002, 2, 40102, "Again");  // reuses the freed slot
  EXPECT_EQ(m.ItemIds[m.ItemNext[m.find(40002)]], 40102);

  WMenuSetString(40003, "&Open...\tCtrl+O");
  const int open = m.find(40003);
  EXPECT_EQ(m.ItemText[open], "Open...\tCtrl+O");
  EXPECT_EQ(m.ItemMnemonic[open], 0);
  WMenuSetString(49999, "x");
  EXPECT_EQ(zelvy_data::data().ierr, 1001);
}

TEST_F(MenuLogic, BarWrapsIntoRows) {
  MenuRecord& m = main_menu();
  ASSERT_GT(yyMenuRowHeight(), 0);
  for (int i = 0; i < m.ItemCount(); ++i)
    if (m.ItemPopup[i] == 0) m.ItemWidth[i] = 50;
  EXPECT_EQ(yyMenuResize(m, 400), 1);
  EXPECT_EQ(yyMenuResize(m, 120), 2);
  EXPECT_EQ(std::pair(m.ItemX[m.find(40009)], m.ItemY[m.find(40009)]), std::pair(0, zelvy_menu::state().iMenuHeight));
  EXPECT_EQ(yyMenuResize(m, 10), 4);  // a first item in its row always stays
  EXPECT_EQ(m.BarRows, 4);
}

TEST_F(MenuLogic, PopupPlacement) {
  int dir = 1, x = 0, y = 0;
  // A drop-down below its item, shifted left to stay on the screen.
  yyMenuGetPos(950, 0, 40, 20, 100, 200, kPopupDrop, 1000, 800, dir, x, y);
  EXPECT_EQ(std::pair(x, y), std::pair(900, 19));
  // No room below: above the item.
  yyMenuGetPos(10, 700, 40, 20, 100, 200, kPopupDrop, 1000, 800, dir, x, y);
  EXPECT_EQ(y, 500);
  // A cascade that doesn't fit to the right goes left, and the direction sticks.
  yyMenuGetPos(850, 100, 100, 20, 120, 200, kPopupCascade, 1000, 800, dir, x, y);
  EXPECT_EQ(std::tuple(dir, x, y), std::tuple(-1, 850 - 120 - 3, 97));
  yyMenuGetPos(300, 100, 100, 20, 120, 200, kPopupCascade, 1000, 800, dir, x, y);
  EXPECT_EQ(std::pair(dir, x), std::pair(-1, 177));
  // Room on neither side: back to the right, at 0 when even that fails.
  yyMenuGetPos(50, 100, 100, 20, 900, 200, kPopupCascade, 1000, 800, dir, x, y);
  EXPECT_EQ(std::pair(dir, x), std::pair(1, 0));
  // Too tall for either side: at the bottom of the screen, never above 0.
  yyMenuGetPos(10, 300, 40, 20, 100, 900, kPopupDrop, 1000, 800, dir, x, y);
  EXPECT_EQ(y, 0);
}

TEST_F(MenuLogic, DynamicMenusFollowTheOrderOfTheirRecords) {
  const std::vector<MenuDescriptor> d = {
      {true, "Undo", 0, "Takes back the last change", 101, 0, 4, XK_Z, 0},
      {true, "Edit", 0, "", 102, kMenuHasSub, 0, 0, 0},
      {true, "Cut", 2, "", 103, 0, 4, XK_X, XK_Delete},
      {false, "Hidden", -1, "", 104, 0, 0, 0, 0},
      {true, "", -1, "", 0, 0, 0, 0, 0},
      {true, "Copy", 0, "", 105, kMenuGreyed, 4, XK_C, 0},
      {true, "Search", 0, "", 106, kMenuHasSub, 0, 0, 0},
      {true, "Find", 0, "", 107, 0, 0, XK_F3, 0},
  };
  auto m = yyMenuLoadDynamicMenu(d);
  EXPECT_EQ(ids_from(*m, m->PopupFirstItem[0]), (std::vector<int>{101, 102, 106}));
  EXPECT_EQ(ids_from(*m, m->ItemChild[m->find(102)]), (std::vector<int>{103, 0, 105}));
  EXPECT_EQ(m->find(104), -1);
  EXPECT_TRUE(m->greyed(m->find(105)));
  EXPECT_EQ(m->Prompts.at(101), "Takes back the last change");

  const AccelTable t = yyMenuLoadDynamicAccel(d);
  EXPECT_EQ(yyMenuMatchAccel(t, XK_z, 4), 101);
  EXPECT_EQ(yyMenuMatchAccel(t, XK_Delete, 4), 103);  // the second keysym
  EXPECT_EQ(yyMenuMatchAccel(t, XK_F3, 0), 107);
  EXPECT_EQ(yyMenuMatchAccel(t, XK_F3, 1), 0);
}

TEST_F(MenuLogic, MergedMenusHoldTheItemsAndAcceleratorsOfBoth) {
  const std::vector<MenuDescriptor> window = {
      {true, "File", 0, "", 201, kMenuHasSub, 0, 0, 0},
      {true, "Save", 0, "Keeps the job", 202, 0, 4, XK_S, 0},
      {true, "Close", 0, "", 203, 0, 4, XK_W, 0},
      {true, "Help", 0, "", 204, kMenuHasSub, 0, 0, 0},
      {true, "About", 0, "", 205, 0, 0, XK_F1, 0},
  };
  const std::vector<MenuDescriptor> grid = {
      {true, "Edit", 0, "", 301, kMenuHasSub, 0, 0, 0},
      {true, "Copy", 0, "Copies the cells", 302, kMenuGreyed, 4, XK_C, 0},
      {true, "Keep", 0, "", 202, 0, 4, XK_K, 0},  // the window's Save: left out
      {true, "Rows", 0, "", 303, kMenuHasSub, 0, 0, 0},
      {true, "Insert", 0, "", 304, 0, 4, XK_S, 0},  // Ctrl+S is the window's
      {true, "Delete", 0, "", 305, 0, 0, XK_Delete, 0},
  };
  const auto a = yyMenuLoadDynamicMenu(window), b = yyMenuLoadDynamicMenu(grid);
  const auto m = yyMenuMergeMenus(*a, *b);
  EXPECT_EQ(ids_from(*m, m->PopupFirstItem[0]), (std::vector<int>{201, 204, 301, 303}));
  EXPECT_EQ(ids_from(*m, m->ItemChild[m->find(201)]), (std::vector<int>{202, 203}));
  EXPECT_EQ(ids_from(*m, m->ItemChild[m->find(301)]), (std::vector<int>{302}));
  EXPECT_EQ(ids_from(*m, m->ItemChild[m->find(303)]), (std::vector<int>{304, 305}));
  EXPECT_EQ(m->PopupCount, 5);
  EXPECT_TRUE(m->greyed(m->find(302)));
  EXPECT_EQ(m->ItemText[static_cast<std::size_t>(m->find(304))], "Insert");
  EXPECT_EQ(m->Prompts.at(202), "Keeps the job");
  EXPECT_EQ(m->Prompts.at(302), "Copies the cells");
  // Neither source changed.
  EXPECT_EQ(a->ItemCount(), 5);
  EXPECT_EQ(b->ItemCount(), 6);

  const AccelTable t = yyMenuMergeAccel(yyMenuLoadDynamicAccel(window), yyMenuLoadDynamicAccel(grid));
  EXPECT_EQ(yyMenuMatchAccel(t, XK_s, 4), 202);
  EXPECT_EQ(yyMenuMatchAccel(t, XK_w, 4), 203);
  EXPECT_EQ(yyMenuMatchAccel(t, XK_c, 4), 302);
  EXPECT_EQ(yyMenuMatchAccel(t, XK_Delete, 0), 305);
  EXPECT_EQ(yyMenuMatchAccel(t, XK_F1, 0), 205);

  // With nothing on one side the merge is a copy of the other.
  const auto empty = std::make_unique<MenuRecord>();
  EXPECT_EQ(ids_from(*yyMenuMergeMenus(*empty, *b), 0), (std::vector<int>{301, 303}));
}

TEST_F(MenuLogic, ItemArraysGrowWithFreeSlots) {
  auto m = make_menu({{0, 10, "&One"}, {0, 11, "&Two"}});
  yyMenuReAlloc(*m, 5);
  EXPECT_EQ(m->ItemCount(), 5);
  EXPECT_FALSE(m->live(3));
  EXPECT_EQ(ids_from(*m, m->PopupFirstItem[0]), (std::vector<int>{10, 11}));
  yyMenuReAlloc(*m, 2);  // never shrinks
  EXPECT_EQ(m->ItemCount(), 5);
}

}  // namespace

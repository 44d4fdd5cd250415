// What the user sees of the main form, checked on pixels read back from the
// server at known places: text level inside its box and with its label, the
// window's background around the form, open combo lists, disabled texts.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <Xm/Xm.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "app/resources/gombrel_resources.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

#include "tests/toolkit/dialog/form_fixture.h"

namespace {


// A window's pixels, read once; coordinates are the window's own.
class Shot {
 public:
  explicit Shot(Window w) {
    XWindowAttributes at{};
    XGetWindowAttributes(xdisplay(), w, &at);
    width_ = at.width;
    height_ = at.height;
    image_ = XGetImage(xdisplay(), w, 0, 0, static_cast<unsigned>(width_), static_cast<unsigned>(height_), AllPlanes,
                       ZPixmap);
  }
  ~Shot() {
    if (image_) XDestroyImage(image_);
  }
  Shot(const Shot&) = delete;
  Shot& operator=(const Shot&) = delete;

  int width() const { return width_; }
  int height() const { return height_; }
  unsigned long pixel(int x, int y) const { return XGetPixel(image_, x, y); }
  // Red + green + blue of a pixel of a 24-bit visual.
  int brightness(int x, int y) const {
    const unsigned long p = pixel(x, y);
    return static_cast<int>((p >> 16 & 255) + (p >> 8 & 255) + (p & 255));
  }
  // Rows of the rectangle holding a pixel darker than `limit`.
  std::vector<int> dark_rows(int x0, int y0, int x1, int y1, int limit) const {
    std::vector<int> rows;
    for (int y = std::max(0, y0); y < std::min(height_, y1); ++y)
      for (int x = std::max(0, x0); x < std::min(width_, x1); ++x)
        if (brightness(x, y) < limit) {
          rows.push_back(y);
          break;
        }
    return rows;
  }
  // Bands of consecutive dark rows: the lines of text, top and bottom.
  std::vector<std::pair<int, int>> bands(int x0, int y0, int x1, int y1, int limit) const {
    std::vector<std::pair<int, int>> out;
    for (int y : dark_rows(x0, y0, x1, y1, limit)) {
      if (!out.empty() && out.back().second == y - 1) out.back().second = y;
      else out.emplace_back(y, y);
    }
    return out;
  }

 private:
  XImage* image_ = nullptr;
  int width_ = 0, height_ = 0;
};

// Text is drawn dark on light backgrounds; borders are dark grey.
constexpr int kTextLimit = 300;

class DialogLook : public MainFormTest {
 protected:
  // The widgets draw in several passes: settle until none is left.
  static void settle() {
    for (int round = 0; round < 3; ++round) MainFormTest::settle();
  }

  static Window client() { return zelvy_win::state().wClient[0]; }

  // A field's rectangle in the client window.
  static void place(int id, int& x, int& y, int& w, int& h) {
    Window child = 0;
    Widget wid = field(id).widget;
    XTranslateCoordinates(xdisplay(), XtWindow(wid), client(), 0, 0, &x, &y, &child);
    w = field(id).width;
    h = field(id).height;
  }
  static void click_at_root(Window from, int x, int y) {
    int rx = 0, ry = 0;
    Window child = 0;
    XTranslateCoordinates(xdisplay(), from, DefaultRootWindow(xdisplay()), x, y, &rx, &ry, &child);
    XSync(xdisplay(), False);
    ASSERT_EQ(std::system(("xdotool mousemove " + std::to_string(rx) + " " + std::to_string(ry) + " click 1").c_str()), 0);
    settle();
  }
  static bool viewable(Widget w) {
    if (!w || !XtIsRealized(w)) return false;
    XWindowAttributes at{};
    XGetWindowAttributes(xdisplay(), XtWindow(w), &at);
    return at.map_state == IsViewable;
  }
  // Opens a combo's list by its arrow; returns the list widget, shown.
  static Widget open_list(int id) {
    int x = 0, y = 0, w = 0, h = 0;
    place(id, x, y, w, h);
    click_at_root(client(), x + w - 6, y + h / 2);
    for (int i = 0; i < 20; ++i) {
      Widget list = XtNameToWidget(field(id).widget, "*ComboList");
      if (viewable(list)) return list;
      settle();
    }
    return nullptr;
  }
  static void close_list(int id) {
    int x = 0, y = 0, w = 0, h = 0;
    place(id, x, y, w, h);
    click_at_root(client(), x + w - 6, y + h / 2);
  }
  // The darkest pixel inside a field, away from its edges and its arrows.
  static unsigned long darkest(const Shot& shot, int id) {
    int x = 0, y = 0, w = 0, h = 0;
    place(id, x, y, w, h);
    int best = 3 * 255;
    unsigned long colour = 0;
    for (int yy = y + 2; yy < y + h - 2; ++yy)
      for (int xx = x + 3; xx < x + w - 20; ++xx)
        if (shot.brightness(xx, yy) < best) {
          best = shot.brightness(xx, yy);
          colour = shot.pixel(xx, yy);
        }
    return colour;
  }
};

// Every single-line text sits in the middle of its box and level with the
// label beside it. Capital letters only, so the rows are the capital band.
TEST_F(DialogLook, TextSitsInTheMiddleOfItsBoxLevelWithItsLabel) {
  struct Pair {
    int label, field;
  };
  // Text fields of 12, 13 and 14 units, numbers, two combos, a spinner.
  const Pair pairs[] = {{1001, 1002}, {1005, 1006}, {1007, 1008}, {1015, 1016}, {1013, 1014}, {1029, 1030},
                        {1031, 1032}, {1035, 1037}, {1044, 1045}, {1026, 1027}};
  for (const Pair& p : pairs) {
    WDialogPutString(p.label, "HEH");
    if (field(p.field).type == 5) WDialogPutInteger(p.field, 11);
    else WDialogPutString(p.field, "HEH");
  }
  settle();
  const Shot shot(client());
  for (const Pair& p : pairs) {
    SCOPED_TRACE(p.field);
    int x = 0, y = 0, w = 0, h = 0;
    place(p.field, x, y, w, h);
    // Inside the border, clear of arrows at the right.
    const auto text = shot.bands(x + 3, y + 2, x + w - 30, y + h - 2, kTextLimit);
    ASSERT_EQ(text.size(), 1u);
    const double middle = y + (h - 1) / 2.0;
    EXPECT_NEAR((text[0].first + text[0].second) / 2.0, middle, 1.0) << "box " << y << ".." << y + h - 1;
    int lx = 0, ly = 0, lw = 0, lh = 0;
    place(p.label, lx, ly, lw, lh);
    const auto label = shot.bands(lx, ly, lx + lw, ly + lh, kTextLimit);
    ASSERT_EQ(label.size(), 1u);
    // Labels stand one or two dialog units lower or higher in the resource.
    EXPECT_NEAR(label[0].first, text[0].first, 3);
    EXPECT_EQ(label[0].second - label[0].first, text[0].second - text[0].first);
  }
}

// Made larger than its form, the window shows the form's background around it.
TEST_F(DialogLook, EnlargedWindowHasTheFormBackgroundAroundTheForm) {
  const int fw = WInfoDialog(12), fh = WInfoDialog(13);
  const std::string shell = std::to_string(zelvy_win::state().wShell[0]);
  ASSERT_EQ(std::system(("xdotool windowsize " + shell + " " + std::to_string(fw + 200) + " " +
                         std::to_string(fh + 200)).c_str()), 0);
  settle();
  const Shot shot(client());
  ASSERT_GT(shot.width(), fw + 100);
  ASSERT_GT(shot.height(), fh + 100);
  const unsigned long background = zelvy_x::state().wSchemeCol[3].pixel;
  EXPECT_EQ(shot.pixel(fw + 50, fh / 2), background);
  EXPECT_EQ(shot.pixel(fw / 2, fh + 50), background);
  EXPECT_EQ(shot.pixel(fw + 50, fh + 50), background);
}

// The twin-type list ends below its third entry, with no empty rows under it.
TEST_F(DialogLook, OpenTwinTypeListIsNoTallerThanItsEntries) {
  Widget types = open_list(1030);
  ASSERT_NE(types, nullptr);
  {
    const Shot shot(XtWindow(types));
    const auto lines = shot.bands(0, 0, shot.width(), shot.height(), kTextLimit);
    ASSERT_EQ(lines.size(), 3u);
    const int pitch = lines[1].first - lines[0].first;
    EXPECT_LT(shot.height() - lines[2].second, pitch) << "empty rows under the last entry";
  }
  close_list(1030);
}

// The open format list shows the underscores of its entries ("HKL_T=0"):
// below the baseline of the first entry there is a stroke as wide as a letter,
// not only the tails of commas and parentheses.
TEST_F(DialogLook, OpenFormatListShowsUnderscores) {
  Widget formats = open_list(1014);
  ASSERT_NE(formats, nullptr);
  {
    const Shot shot(XtWindow(formats));
    const auto lines = shot.bands(0, 0, shot.width() - 20, shot.height(), kTextLimit);
    ASSERT_GE(lines.size(), 2u);
    const auto [top, bottom] = lines[0];
    auto dark = [&](int x, int y) { return shot.brightness(x, y) < kTextLimit; };
    // The baseline: the last row where the letters' stems still stand.
    std::vector<int> count(static_cast<std::size_t>(bottom - top + 1));
    for (int y = top; y <= bottom; ++y)
      for (int x = 0; x < shot.width() - 20; ++x) count[static_cast<std::size_t>(y - top)] += dark(x, y);
    const int most = *std::max_element(count.begin(), count.end());
    int baseline = top;
    for (int y = top; y <= bottom; ++y)
      if (count[static_cast<std::size_t>(y - top)] * 10 >= most * 4) baseline = y;
    int longest = 0;
    for (int y = baseline + 1; y <= bottom; ++y)
      for (int x = 0, run = 0; x < shot.width() - 20; ++x) {
        run = dark(x, y) ? run + 1 : 0;
        longest = std::max(longest, run);
      }
    EXPECT_GE(longest, 5) << "no underscore below the baseline at " << baseline;
  }
  close_list(1014);
}

// Disabled labels and disabled field texts are drawn alike: the same flat
// colour, the disabled-text colour of the scheme; enabled again, as before.
TEST_F(DialogLook, DisabledTextsLookAlike) {
  WDialogPutString(1035, "HEH");
  WDialogPutString(1032, "HEH");
  WDialogPutInteger(1037, 11);
  for (int id : {1035, 1032, 1037, 1031}) WDialogFieldState(id, 0);
  settle();
  const Shot shot(client());
  const XColor& disabled = zelvy_x::state().wSchemeCol[10];
  auto near = [](unsigned long p, const XColor& c) {
    const int r = static_cast<int>(p >> 16 & 255), g = static_cast<int>(p >> 8 & 255), b = static_cast<int>(p & 255);
    return std::abs(r - (c.red >> 8)) <= 2 && std::abs(g - (c.green >> 8)) <= 2 && std::abs(b - (c.blue >> 8)) <= 2;
  };
  for (int id : {1035, 1032, 1037}) EXPECT_TRUE(near(darkest(shot, id), disabled)) << id << " " << std::hex << darkest(shot, id);

  // Enabled again, the text is the normal text colour and the box its own again.
  for (int id : {1035, 1032, 1037, 1031}) WDialogFieldState(id, 1);
  settle();
  const Shot again(client());
  const XColor& text = zelvy_x::state().wSchemeCol[14];
  const unsigned long colour = darkest(again, 1032);
  int x = 0, y = 0, w = 0, h = 0;
  place(1032, x, y, w, h);
  // Antialiased strokes come within a few steps of the text colour.
  const int r = static_cast<int>(colour >> 16 & 255), g = static_cast<int>(colour >> 8 & 255), b = static_cast<int>(colour & 255);
  EXPECT_LE(std::abs(r - (text.red >> 8)) + std::abs(g - (text.green >> 8)) + std::abs(b - (text.blue >> 8)), 24)
      << std::hex << colour;
  EXPECT_FALSE(near(again.pixel(x, y + h / 2), disabled)) << "the box's edge keeps the disabled colour";
}

}  // namespace

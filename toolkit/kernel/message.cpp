// The message loop: X events become messages, filtered, queued one deep,
// with modal and semi-modeless blocking and timers.
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/message_private.h"

#include <X11/Xatom.h>
#include <X11/keysym.h>

#include <array>
#include <string>
#include <cstdint>
#include <list>
#include <map>
#include <utility>
#include <vector>

#include "toolkit/base/check.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/editor_attach.h"
#include "toolkit/kernel/statusbar_private.h"
#include "toolkit/kernel/toolbar_private.h"
#include "toolkit/kernel/tooltip_private.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/window_private.h"

namespace {

struct Pending {
  int type = 0;
  MessageRecord rec;
};

struct Timer {
  int interval = 0, id = 0, repeat = 0;
  XtIntervalId xid = 0;
};

constexpr std::array<int, 18> iMessageDefault = {1, 1, 1, 1, 0, 0, 1, 1, 1, 0, 0, 0, 1, 1, 0, 0, 0, 0};
constexpr int kModalDepth = 10;

}  // namespace

namespace zelvy_messages {

// The message loop's state: the filter, the one-deep queues, the modal and
// semi-modeless stacks, the timers.
struct State {
  int itypesaved = 0;
  MessageRecord valuesaved;
  std::array<int, 18> iMessageEnabled = iMessageDefault;
  std::array<int, 18> savedFilter = iMessageDefault;
  Pending ZelvMessage, ZelvMessage2;
  int iInWMessage = 0;
  int iFocusCount = 0;
  bool bModalMessageLoop = false;
  // Modal stack: the level's X window and widget (a dialog's shell), and the
  // window that owns it (-1 none); the windows each level froze.
  zelv::Slots<Window, kModalDepth> wModal{};
  zelv::Slots<Widget, kModalDepth> wtModal{};
  zelv::Slots<int, kModalDepth> iModal{};
  int nModal = 0;
  int nModalOverflow = 0;  // pushes beyond the depth, popped without effect
  LoopHooks hooks;
  int nSemi = 0, iObjCur = -1, iObjCurType = 0;
  std::map<int, std::pair<int, int>> dialogSaved;  // semi-modeless predecessors kept for dialogs
  bool iTimerEnabled = true;
  int lastButton = 0;
  Time lastPress = 0;
  Atom aZelvMessage = 0;
  std::list<Timer> pTimerInfo1;
};

State& state() {
  static State s;
  return s;
}

}  // namespace zelvy_messages

// This module's state.
static zelvy_messages::State& mq = zelvy_messages::state();

namespace {

constexpr int kTagFieldChanged = 10, kTagTimer = 13;

bool enabled(int type) { return type >= 1 && type <= 18 && mq.iMessageEnabled[type - 1] != 0; }

Atom message_atom() {
  if (!mq.aZelvMessage && xdisplay()) mq.aZelvMessage = XInternAtom(xdisplay(), "_ZELV_MESSAGE", False);
  return mq.aZelvMessage;
}

// Sends the toolkit's own client message to the root window, through the
// server, so that it takes its turn with the other events.
void post_to_root(long tag, long v1 = 0, long v2 = 0, long v3 = 0, long v4 = 0) {
  XEvent ev{};
  ev.xclient.type = ClientMessage;
  ev.xclient.window = zelvy_win::state().wWindow[0];
  ev.xclient.message_type = message_atom();
  ev.xclient.format = 32;
  ev.xclient.data.l[0] = tag;
  ev.xclient.data.l[1] = v1;
  ev.xclient.data.l[2] = v2;
  ev.xclient.data.l[3] = v3;
  ev.xclient.data.l[4] = v4;
  XSendEvent(xdisplay(), zelvy_win::state().wWindow[0], False, 0, &ev);
  XFlush(xdisplay());
}

void noop_handler(Widget, XtPointer, XEvent*, Boolean*) {}

int window_type(Window xwin, int& h) { return yyMsgWindowType(xwin, h); }

// True when the X window belongs to the widget tree below `top`.
bool in_tree(Window xwin, Widget top) {
  if (!top || !xdisplay()) return false;
  for (Widget w = XtWindowToWidget(xdisplay(), xwin); w; w = XtParent(w))
    if (w == top) return true;
  return false;
}

// The window that owns an X window: the window itself, or the toolkit window
// whose widget tree holds it.
int owner_of(Window xwin) {
  int h = yyGetWindowIndex(0, xwin);
  if (h >= 0 || !xdisplay()) return h;
  for (Widget w = XtWindowToWidget(xdisplay(), xwin); w; w = XtParent(w))
    for (int c = 0; c <= zelvy_win::state().iWinMax; ++c)
      if (zelvy_win::state().wtShell[c] == w) return c;
  return -1;
}

// Modal levels and semi-modeless objects let through only the events of their own windows.
bool yyMsgBlockEvent(const XEvent& ev) {
  if (mq.nModal == 0 && mq.nSemi == 0) return false;
  switch (ev.type) {
    case KeyPress: case KeyRelease: case ButtonPress: case ButtonRelease: case MotionNotify:
    case EnterNotify: case LeaveNotify: case FocusIn: case FocusOut: break;
    default: return false;
  }
  if (mq.nModal > 0) {
    const int top = mq.nModal - 1;
    if (in_tree(ev.xany.window, mq.wtModal[top])) return false;
    for (int h = 0; h <= zelvy_win::state().iWinMax; ++h)
      if (zelvy_win::state().wWindow[h] && zelvy_win::state().WinInfo[h].Freeze.cover == ev.xany.window) return true;
    const int h = owner_of(ev.xany.window);
    if (h < 0) return false;
    return h != mq.iModal[top];
  }
  const int h = owner_of(ev.xany.window);
  if (h < 0) return false;
  return !(mq.iObjCurType == 1 && h == mq.iObjCur);
}

void yyMsgResizeControl() {
  for (int h = 0; h <= zelvy_win::state().iWinMax; ++h) {
    if (!zelvy_win::state().wWindow[h]) continue;
    bool locked = false;
    if (mq.nModal > 0) locked = h != mq.iModal[mq.nModal - 1];
    else if (mq.nSemi > 0) locked = !(mq.iObjCurType == 1 && h == mq.iObjCur);
    zelvy_win::state().WinInfo[h].Locked = locked ? 1 : 0;
    yyWindowSizeHints(h);
  }
}

// Takes every queued Expose of the window into the event's rectangle.
void yyMsgCompressExposeEvents(Window w, XEvent& ev) {
  int x1 = ev.xexpose.x, y1 = ev.xexpose.y;
  int x2 = x1 + ev.xexpose.width, y2 = y1 + ev.xexpose.height;
  XEvent more;
  while (XCheckTypedWindowEvent(xdisplay(), w, Expose, &more)) {
    x1 = std::min(x1, more.xexpose.x);
    y1 = std::min(y1, more.xexpose.y);
    x2 = std::max(x2, more.xexpose.x + more.xexpose.width);
    y2 = std::max(y2, more.xexpose.y + more.xexpose.height);
  }
  ev.xexpose.x = x1;
  ev.xexpose.y = y1;
  ev.xexpose.width = x2 - x1;
  ev.xexpose.height = y2 - y1;
  ev.xexpose.count = 0;
}

int as_time(Time t) { return static_cast<int>(t & 0x7fffffffUL); }

void key_event(XEvent& ev) {
  char buf[21] = {};
  KeySym ks = 0;
  const int n = XLookupString(&ev.xkey, buf, 20, &ks, nullptr);
  if (ks == XK_Tab || ks == XK_KP_Tab || ks == XK_ISO_Left_Tab || ks == 0x1000FF74 || ks == 0x1000FF75)
    ks = XLookupKeysym(&ev.xkey, 0);
  const int h = owner_of(ev.xkey.window);
  if (h < 0) return;
  // Menus, accelerators and dialogs see keys first once they exist.
  const int kind = zelvy_win::state().WinInfo[h].Kind;
  if (kind != 0 && kind != 2) return;
  if (ev.xkey.window != zelvy_win::state().wClient[h] && ev.xkey.window != zelvy_win::state().wShell[h]) return;
  const KeyMessage km = yyMsgProcessKey(ks, ev.xkey.state & ControlMask, ev.xkey.state & ShiftMask,
                                        std::string_view(buf, n > 0 ? n : 0));
  if (!km.made) return;
  int x = ev.xkey.x, y = ev.xkey.y;
  if (ev.xkey.window == zelvy_win::state().wShell[h]) y -= zelvy_win::state().WinInfo[h].ClientY;
  yyMsgSend(KeyDown, km.value1, km.value2, 0, km.value4, x, y, h, as_time(ev.xkey.time));
}

void button_event(XEvent& ev) {
  const bool press = ev.type == ButtonPress;
  int h = -1;
  int code = window_type(ev.xbutton.window, h);
  int x = ev.xbutton.x, y = ev.xbutton.y;
  if (code == 1 && zelvy_win::state().WinInfo[h].Kind == 0) {
    y -= zelvy_win::state().WinInfo[h].ClientY;
    if (y >= 0) code = 2;
  }
  const unsigned button = ev.xbutton.button;
  if (code == 3) {
    if (!press && button == 3) {
      const int part = yyWindowStatusBarPartAt(h, ev.xbutton.x_root, ev.xbutton.y_root);
      yyMsgSend(ContextClick, -1, yyMsgModifierState(ev.xbutton.state), kContextStatusBar, part, ev.xbutton.x_root,
                ev.xbutton.y_root, h, as_time(ev.xbutton.time));
    }
    return;
  }
  if (code == 10) {
    // A right click on a toolbar names the button under it, 0 for the bar.
    if (!press && button == 3) {
      int index = -1;
      if (const ToolbarRecord* bar = yyMenuToolbarOfWindow(ev.xbutton.window, index)) {
        yyTooltipDestroy();
        const int item = index >= 0 ? bar->ButtonIds[static_cast<std::size_t>(index)] : 0;
        yyMsgSend(ContextClick, item, yyMsgModifierState(ev.xbutton.state), kContextToolbar, bar->ToolbarId,
                  ev.xbutton.x_root, ev.xbutton.y_root, h, as_time(ev.xbutton.time));
      }
    }
    return;
  }
  if ((code == 11 || code == 12) && press) {
    // A pane's title bar, or a dialog in a window: the focus goes to that window.
    if (code == 11) XSetInputFocus(xdisplay(), zelvy_win::state().wClient[h], RevertToParent, ev.xbutton.time);
    yyWindowFocusSub(h);
    return;
  }
  if (code != 2) return;
  if (press) {
    XSetInputFocus(xdisplay(), zelvy_win::state().wClient[h], RevertToParent, ev.xbutton.time);
    yyWindowFocusSub(h);
  }
  const int mods = yyMsgMouseModifiers(ev.xbutton.state);
  if (press) {
    const bool dbl = enabled(MouseDoubleClick) && static_cast<int>(button) == mq.lastButton &&
                     ev.xbutton.time - mq.lastPress < static_cast<Time>(zelvy_x::state().iMultiClickTime);
    mq.lastButton = static_cast<int>(button);
    mq.lastPress = ev.xbutton.time;
    const int type = dbl ? MouseDoubleClick : MouseDown;
    if (enabled(type))
      yyMsgSend(type, static_cast<int>(button), mods, 0, 0, x, y, h, as_time(ev.xbutton.time));
  } else if (enabled(MouseUp)) {
    yyMsgSend(MouseUp, static_cast<int>(button), mods, 0, 0, x, y, h, as_time(ev.xbutton.time));
  }
}

void motion_event(XEvent& ev) {
  int h = -1;
  int code = window_type(ev.xmotion.window, h);
  int y = ev.xmotion.y;
  if (code == 1 && zelvy_win::state().WinInfo[h].Kind == 0) {
    y -= zelvy_win::state().WinInfo[h].ClientY;
    if (y >= 0) code = 2;
  }
  if (code == 2 && enabled(MouseMove))
    yyMsgSend(MouseMove, 0, yyMsgMouseModifiers(ev.xmotion.state), 0, 0, ev.xmotion.x, y, h,
              as_time(ev.xmotion.time));
}

// True for the last Expose of a series on the window that the argument points to.
Bool ends_expose_series(Display*, XEvent* ev, XPointer window) {
  return ev->type == Expose && ev->xexpose.window == *reinterpret_cast<Window*>(window) &&
         ev->xexpose.count == 0;
}

// The server sends the rectangles of one exposure back to back, the last with
// count 0: waiting for that one gathers the series without a round trip, and
// reading what has already arrived picks up later exposures of the window too.
void gather_exposures(XEvent& ev) {
  if (ev.xexpose.count > 0) {
    XEvent last;
    XPeekIfEvent(xdisplay(), &last, ends_expose_series, reinterpret_cast<XPointer>(&ev.xexpose.window));
  }
  XEventsQueued(xdisplay(), QueuedAfterReading);
}

// Returns true when the event has been dealt with and needs no widget.
bool expose_event(XEvent& ev) {
  gather_exposures(ev);
  int h = -1;
  const int code = window_type(ev.xexpose.window, h);
  if (code == 2) {
    yyMsgCompressExposeEvents(ev.xexpose.window, ev);
    if (zelvy_win::state().WinInfo[h].Kind != 5)
      yyMsgSend(ExposeMessage, ev.xexpose.width, ev.xexpose.height, 0, 0, ev.xexpose.x, ev.xexpose.y, h, 0);
    return false;
  }
  if (code == 3) {
    yyWindowStatusBarExpose(h, ev.xexpose.window);
    XEvent more;
    while (XCheckTypedWindowEvent(xdisplay(), ev.xexpose.window, Expose, &more)) {}
    return true;
  }
  return false;
}

bool configure_event(XEvent& ev) {
  int h = -1;
  const int code = window_type(ev.xconfigure.window, h);
  if (code != 1 && code != 8) return false;
  XSync(xdisplay(), False);
  XEvent more;
  while (XCheckTypedWindowEvent(xdisplay(), ev.xconfigure.window, ConfigureNotify, &more)) ev = more;
  XtDispatchEvent(&ev);  // the shell follows its new size and resizes the frame
  WindowRecord& r = zelvy_win::state().WinInfo[h];
  if (code == 8 || code == 1) {
    r.FrameWidth = ev.xconfigure.width;
    r.FrameHeight = ev.xconfigure.height;
  }
  const int oldw = r.ClientWidth, oldh = r.ClientHeight;
  yyWindowResize(h);
  if (r.Kind != 2 && r.Kind != 5 && (r.ClientWidth != oldw || r.ClientHeight != oldh)) {
    yyMsgSend(Resize, r.ClientWidth, r.ClientHeight, 0, 0, ev.xconfigure.x, ev.xconfigure.y, h, 0);
    XClearWindow(xdisplay(), zelvy_win::state().wClient[h]);
  }
  return true;
}

bool client_message(XEvent& ev) {
  if (ev.xclient.message_type != message_atom() || ev.xclient.format != 32) return false;
  const long* l = ev.xclient.data.l;
  if (l[0] == kTagFieldChanged) {
    yyMsgSend(FieldChanged, static_cast<int>(l[1]), static_cast<int>(l[1]), 1, -1,
              static_cast<int>(l[2]), static_cast<int>(l[3]), static_cast<int>(l[4]), 0);
  } else if (l[0] == kTagTimer && mq.iTimerEnabled && ev.xclient.window == zelvy_win::state().wWindow[0]) {
    yyMsgSend(TimerExpired, static_cast<int>(l[1]), 0, 0, 0, 0, 0, 0, 0);
  }
  return true;
}

// The toolkit's own look at an event; true when no widget needs it.
bool yyMsgProcessEvent(XEvent& ev) {
  switch (ev.type) {
    case KeyPress: key_event(ev); return false;
    case ButtonPress:
    case ButtonRelease: button_event(ev); return false;
    case MotionNotify: motion_event(ev); return false;
    case Expose: return expose_event(ev);
    case ConfigureNotify: return configure_event(ev);
    case ClientMessage: return client_message(ev);
    case MappingNotify: XRefreshKeyboardMapping(&ev.xmapping); return false;
    default: return false;
  }
}

}  // namespace

int yyMsgModifierState(unsigned state) { return ((state & ControlMask) ? 1 : 0) + ((state & ShiftMask) ? 2 : 0); }

int yyMsgPendingType() { return mq.ZelvMessage.type; }

bool yyMsgTakeFocusCount() {
  if (mq.iFocusCount <= 0) return false;
  --mq.iFocusCount;
  return true;
}

// Control 1, Shift 2, held buttons 4, 8 and 16, as a mouse message carries them.
int yyMsgMouseModifiers(unsigned state) {
  return yyMsgModifierState(state) + ((state & Button1Mask) ? 4 : 0) + ((state & Button2Mask) ? 8 : 0) +
         ((state & Button3Mask) ? 16 : 0);
}

int yyMsgProcessMessage(XEvent& ev) {
  // Menus and accelerators see every event first.
  MenuMessage made;
  if (yyMenuProcessEvent(ev, made)) {
    if (made.type == MenuSelect && made.value2 != -1) {
      // A text menu's choice stays inside the toolkit.
      if (mq.hooks.textMenu) mq.hooks.textMenu(made.value2, made.value1);
      return mq.ZelvMessage.type;
    }
    if (made.type != 0) yyMsgSend(made.type, made.value1, made.value2, 0, 0, made.x, made.y, made.win, made.time);
    return mq.ZelvMessage.type;
  }
  if (yyMsgProcessEvent(ev)) return mq.ZelvMessage.type;
  if (mq.hooks.editEvent && mq.hooks.editEvent(ev)) return mq.ZelvMessage.type;
  if (mq.hooks.viewerEvent && mq.hooks.viewerEvent(ev)) return mq.ZelvMessage.type;
  if (mq.hooks.dialogEvent && mq.hooks.dialogEvent(ev)) return mq.ZelvMessage.type;
  XtDispatchEvent(&ev);
  return mq.ZelvMessage.type;
}

namespace {

EditorHooks& editor_hooks() {
  static EditorHooks hooks;
  return hooks;
}

// One X event through the toolkit.
int yyMsgInterpret() {
  XEvent ev;
  XtAppNextEvent(zelvy_x::state().ixContext, &ev);
  if (yyMsgBlockEvent(ev)) return 0;
  if (ev.type == KeyPress) {
    // Keypad Enter acts as Return, down to the keycode that widgets see.
    if (zelvy_x::state().iKCKPEnter && ev.xkey.keycode == static_cast<unsigned>(zelvy_x::state().iKCKPEnter))
      ev.xkey.keycode = zelvy_x::state().iKCReturn;
    if (zelvy_x::state().AltKeySym == XK_Mode_switch && (ev.xkey.state & 8192))
      ev.xkey.state = (ev.xkey.state & ~8192u) | zelvy_x::state().AltMask;
  }
  yyMsgProcessMessage(ev);
  // An editor or grid window sees a message made for it before anyone else.
  Pending& m = mq.ZelvMessage;
  const int w = m.rec.Win;
  if (m.type != 0 && m.type != TimerExpired && w >= 1 && w <= zelvy_win::state().iWinMax && yywindowexists(w)) {
    const int kind = zelvy_win::state().WinInfo[w].Kind;
    if (kind == 1 && mq.hooks.editMessage) {
      // A message the editor raises while handling one it swallowed takes
      // that one's place.
      Pending seen = std::exchange(m, Pending{});
      mq.hooks.editMessage(seen.type, seen.rec);
      if (seen.type != 0) m = seen;
    }
    else if (kind == 4 && mq.hooks.gridMessage) mq.hooks.gridMessage(m.type, m.rec);
  }
  return mq.ZelvMessage.type;
}

void yymessageunits(int type, MessageRecord& r) {
  r.X = r.PixelX;
  r.Y = r.PixelY;
  const int h = r.Win;
  const bool known = yywindowexists(h) && r.Value3 != 1;
  const int w = known ? zelvy_win::state().WinInfo[h].ClientWidth : 0, ht = known ? zelvy_win::state().WinInfo[h].ClientHeight : 0;
  switch (type) {
    case KeyDown: case MouseDown: case MouseUp: case MouseMove: case MouseDoubleClick:
      r.GX = static_cast<float>(r.PixelX) + 0.5f;
      r.GY = static_cast<float>(ht - r.PixelY - 1) + 0.5f;
      if (r.Value3 != 1) {
        r.X = yyunitsfrompixels(r.PixelX, w);
        r.Y = yyunitsfrompixels(r.PixelY, ht);
      }
      break;
    case ExposeMessage:
      r.PixelWidth = r.Value1;
      r.PixelHeight = r.Value2;
      r.GX = static_cast<float>(r.PixelX);
      r.GY = static_cast<float>(ht - r.PixelY);
      r.GWidth = static_cast<float>(r.Value1);
      r.GHeight = static_cast<float>(r.Value2);
      r.X = yyunitsfrompixels(r.PixelX, w);
      r.Y = yyunitsfrompixels(r.PixelY, ht);
      r.Value1 = yyunitsfrompixels(r.PixelX + r.PixelWidth, w) - r.X;
      r.Value2 = yyunitsfrompixels(r.PixelY + r.PixelHeight, ht) - r.Y;
      break;
    case Resize:
      r.PixelWidth = r.Value1;
      r.PixelHeight = r.Value2;
      if (h == zelvy_win::state().iWinCur) {
        zelvy_data::data().iwinwid = r.Value1;
        zelvy_data::data().iwinhgt = r.Value2;
      }
      break;
    default: break;
  }
}

void take(Pending& p, int& type, MessageRecord& rec) {
  type = p.type;
  rec = p.rec;
  p = Pending{};
}

void timer_fired(XtPointer data, XtIntervalId*) {
  const int id = static_cast<int>(reinterpret_cast<std::intptr_t>(data));
  for (auto it = mq.pTimerInfo1.begin(); it != mq.pTimerInfo1.end(); ++it) {
    if (it->id != id) continue;
    if (it->repeat == 1) it->xid = XtAppAddTimeOut(zelvy_x::state().ixContext, it->interval, timer_fired, data);
    else mq.pTimerInfo1.erase(it);
    break;
  }
  if (!zelvy_win::state().wWindow[0]) return;
  post_to_root(kTagTimer, id);
}

}  // namespace

void yyAttachEditor(const EditorHooks& hooks) {
  editor_hooks() = hooks;
  LoopHooks loop;
  loop.editMessage = hooks.process_message;
  yyAttachLoopHooks(loop);
}
const EditorHooks& yyEditorHooks() { return editor_hooks(); }

KeyMessage yyMsgProcessKey(unsigned long ks, bool ctrl, bool shift, std::string_view chars) {
  KeyMessage m;
  if (ks == XK_Mode_switch || ks == XK_Num_Lock || ks == XK_ISO_Level3_Shift || ks == XK_Scroll_Lock ||
      (ks >= XK_Shift_L && ks <= XK_Hyper_R) || ks == 0)
    return m;
  m.made = true;
  m.value2 = (ctrl ? 1 : 0) + (shift ? 2 : 0);
  const bool letter = (ks >= XK_a && ks <= XK_z) || (ks >= XK_A && ks <= XK_Z);
  if (letter && chars.size() == 1) {
    const int upper = static_cast<int>(ks >= XK_a ? ks - XK_a + 'A' : ks);
    if (static_cast<unsigned char>(chars[0]) == upper - 64) {
      m.value1 = upper - 64;
      m.value4 = upper;
      return m;
    }
  }
  const int offset = ctrl ? 40 : shift ? 20 : 0;
  int base = static_cast<int>(ks);
  enum { Plain, Arrow, Function, TabKey } rule = Plain;
  switch (ks) {
    case XK_BackSpace: base = 8; break;
    case XK_Tab: base = 9; rule = TabKey; break;
    case XK_KP_Tab: base = 9; break;
    case XK_Return: case XK_KP_Enter: base = 13; break;
    case XK_Escape: base = 27; break;
    case XK_KP_Space: base = 32; break;
    case XK_KP_Equal: base = 61; break;
    case XK_Delete: case XK_KP_Delete: base = 127; break;
    case XK_EuroSign: base = 128; break;
    case XK_Up: case XK_KP_Up: base = 258; rule = Arrow; break;
    case XK_Down: case XK_KP_Down: base = 259; rule = Arrow; break;
    case XK_Right: case XK_KP_Right: base = 260; rule = Arrow; break;
    case XK_Left: case XK_KP_Left: base = 261; rule = Arrow; break;
    case XK_Prior: case XK_KP_Prior: base = 262; break;
    case XK_Next: case XK_KP_Next: base = 263; break;
    case XK_Home: case XK_Find: case XK_KP_Home: base = 270; break;
    case XK_End: case XK_Select: case XK_KP_End: base = 271; break;
    case XK_Insert: case XK_KP_Insert: case 0x1000FF72: base = 272; break;
    case 0x1000FF00: case 0x1000FF73: base = 273; break;
    case XK_ISO_Left_Tab: case 0x1000FF74: case 0x1000FF75: base = 274; break;
    case XK_Menu: base = 275; break;
    case XK_KP_Subtract: base = 290; break;
    case XK_KP_Decimal: base = 291; break;
    case XK_KP_Add: case XK_KP_Separator: base = 292; break;
    case XK_KP_Divide: base = 293; break;
    case XK_KP_Multiply: base = 294; break;
    case XK_Print: base = 300; break;
    case XK_Help: base = 315; rule = Function; break;
    default:
      if (ks >= XK_KP_0 && ks <= XK_KP_9) base = 280 + static_cast<int>(ks - XK_KP_0);
      else if (ks >= XK_F1 && ks <= XK_F20) { base = 301 + static_cast<int>(ks - XK_F1); rule = Function; }
      else if (ks >= XK_KP_F1 && ks <= XK_KP_F4) { base = 301 + static_cast<int>(ks - XK_KP_F1); rule = Function; }
      break;
  }
  m.value4 = base;
  switch (rule) {
    case Plain: m.value1 = base; break;
    case Arrow: m.value1 = base + offset / 5; break;
    case Function: m.value1 = base + offset; break;
    case TabKey: m.value1 = (shift && !ctrl) ? 274 : 9; break;
  }
  return m;
}

void yyMsgSend(int type, int value1, int value2, int value3, int value4, int x, int y, int win,
               int time) {
  Pending m;
  m.type = type;
  m.rec.Win = win;
  m.rec.Value1 = value1;
  m.rec.Value2 = value2;
  m.rec.Value3 = value3;
  m.rec.Value4 = value4;
  m.rec.PixelX = m.rec.X = x;
  m.rec.PixelY = m.rec.Y = y;
  m.rec.Time = time;
  if (mq.ZelvMessage.type != 0 && enabled(mq.ZelvMessage.type) && mq.iInWMessage != 0) mq.ZelvMessage2 = m;
  else mq.ZelvMessage = m;
}

void WMessage(int& type, MessageRecord& record) {
  using namespace zelvy_messages;
  if (mq.itypesaved != 0) {
    type = std::exchange(mq.itypesaved, 0);
    record = mq.valuesaved;
    return;
  }
  if (!xdisplay() || !zelvy_x::state().ixContext) {
    // Without a display nothing can ever arrive; the caller's loop ends on this.
    type = CloseRequest;
    record = MessageRecord{};
    return;
  }
  mq.iInWMessage = 1;
  mq.iFocusCount = 2;
  int t = 0;
  MessageRecord rec;
  if (mq.ZelvMessage2.type != 0) {
    take(mq.ZelvMessage2, t, rec);
  } else {
    do {
      mq.ZelvMessage = Pending{};
      t = yyMsgInterpret();
      if (t != 0) take(mq.ZelvMessage, t, rec);
      if (yyMenuIsOpen()) t = 0;
      if (t >= 1 && t <= 18 && !enabled(t)) t = 0;
    } while (t == 0);
  }
  mq.iInWMessage = 0;
  yymessageunits(t, rec);
  type = t;
  record = rec;
}

void WMessagePeek(int& type, MessageRecord& record) {
  using namespace zelvy_messages;
  if (mq.itypesaved != 0) {
    type = std::exchange(mq.itypesaved, 0);
    record = mq.valuesaved;
    return;
  }
  type = -1;
  if (!xdisplay() || !zelvy_x::state().ixContext) return;
  mq.iInWMessage = 2;
  mq.iFocusCount = 2;
  int t = 0;
  MessageRecord rec;
  if (mq.ZelvMessage2.type != 0) {
    take(mq.ZelvMessage2, t, rec);
  } else {
    while (t == 0) {
      const XtInputMask pending = XtAppPending(zelvy_x::state().ixContext);
      if (!pending) break;
      if (!(pending & XtIMXEvent)) {
        XtAppProcessEvent(zelvy_x::state().ixContext, pending & ~XtIMXEvent);  // timers first
        continue;
      }
      mq.ZelvMessage = Pending{};
      t = yyMsgInterpret();
      if (t != 0) take(mq.ZelvMessage, t, rec);
      if (yyMenuIsOpen()) t = 0;
      if (t >= 1 && t <= 18 && !enabled(t)) t = 0;
    }
  }
  mq.iInWMessage = 0;
  if (t == 0) return;
  yymessageunits(t, rec);
  type = t;
  record = rec;
}

void WMessageEnable(int type, int enable) {
  if (type < 1 || type > 18) return;
  mq.iMessageEnabled[type - 1] = enable ? 1 : 0;
  if (type == TimerExpired) mq.iTimerEnabled = enable != 0;
  if (type == KeyDown || type == MouseMove || type == ExposeMessage)
    for (int h = 0; h <= zelvy_win::state().iWinMax; ++h) yyMsgApplyMasks(h);
}

int WInfoMessage(int type) { return enabled(type) ? 1 : 0; }

void WMessagePush(int type, const MessageRecord& record) {
  mq.itypesaved = type;
  mq.valuesaved = record;
}

void WMessageTimer(int milliseconds, int identifier, int repeat) {
  auto it = mq.pTimerInfo1.begin();
  while (it != mq.pTimerInfo1.end() && it->id != identifier) ++it;
  if (milliseconds <= 0) {
    if (it != mq.pTimerInfo1.end()) {
      XtRemoveTimeOut(it->xid);
      mq.pTimerInfo1.erase(it);
    }
    return;
  }
  if (!zelvy_x::state().ixContext) return;
  const XtPointer data = reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(identifier));
  if (it != mq.pTimerInfo1.end()) {
    XtRemoveTimeOut(it->xid);
    it->interval = milliseconds;
  } else {
    mq.pTimerInfo1.push_back(Timer{milliseconds, identifier, repeat, 0});
    it = std::prev(mq.pTimerInfo1.end());
  }
  it->xid = XtAppAddTimeOut(zelvy_x::state().ixContext, static_cast<unsigned long>(milliseconds), timer_fired, data);
}

void yyMsgResetFilter() {
  mq.savedFilter = mq.iMessageEnabled;
  mq.iMessageEnabled = iMessageDefault;
  mq.iTimerEnabled = true;
}

void yyMsgRestoreFilter() {
  mq.iMessageEnabled = mq.savedFilter;
  mq.iTimerEnabled = enabled(TimerExpired);
}

void yyMsgApplyMasks(int h) {
  if (!yywindowexists(h) || !zelvy_win::state().wtClient[h]) return;
  EventMask mask = StructureNotifyMask | ButtonPressMask | ButtonReleaseMask | PropertyChangeMask;
  if (enabled(KeyDown)) mask |= KeyPressMask;
  if (enabled(MouseMove)) mask |= PointerMotionMask;
  if (enabled(ExposeMessage)) mask |= ExposureMask;
  // Through an (empty) Xt handler, so that Xt selects the union of our mask
  // and the widgets' own; the events themselves are read before Xt sees them.
  XtRemoveEventHandler(zelvy_win::state().wtClient[h], XtAllEvents, True, noop_handler, nullptr);
  XtAddEventHandler(zelvy_win::state().wtClient[h], mask, False, noop_handler, nullptr);
}

void yyMsgPostFieldChanged(int field, int x, int y, int win) {
  if (!xdisplay() || !zelvy_win::state().wWindow[0]) return;
  post_to_root(kTagFieldChanged, field, x, y, win);
}

namespace {

void push_level(Widget level, int owner) {
  if (mq.nModal >= kModalDepth) {
    ++mq.nModalOverflow;
    return;
  }
  const auto n = static_cast<std::size_t>(mq.nModal);
  mq.wtModal[n] = level;
  mq.wModal[n] = level && XtIsRealized(level) ? XtWindow(level) : 0;
  mq.iModal[n] = owner;
  // Every other window keeps its picture and takes no input; the same owner
  // is spared when the level ends, so the counts come back exactly.
  int error = 0;
  yygetwindowbitmap_(1, owner, error);
  if (error) yyerror(error, "yygetwindowbitmap_");
  ++mq.nModal;
  yyMsgClearEvents();
  yyMsgResizeControl();
}

void pop_level() {
  if (mq.nModalOverflow > 0) {
    --mq.nModalOverflow;
    return;
  }
  if (mq.nModal == 0) return;
  --mq.nModal;
  const auto n = static_cast<std::size_t>(mq.nModal);
  int error = 0;
  yygetwindowbitmap_(0, mq.iModal[n], error);
  mq.wtModal[n] = nullptr;
  mq.wModal[n] = 0;
  mq.iModal[n] = -1;
  yyMsgResizeControl();
}

}  // namespace

void yymessagemodal(int direction, Widget level) {
  if (!xdisplay()) return;
  if (direction == 1) push_level(level, -1);
  else pop_level();
}

int yyMsgModalDepth() { return mq.nModal + mq.nModalOverflow; }

void yyMsgClearEvents() {
  Display* dpy = xdisplay();
  if (!dpy) return;
  XSync(dpy, False);
  XEvent ev;
  while (XCheckMaskEvent(dpy, KeyPressMask | KeyReleaseMask | ButtonPressMask | ButtonReleaseMask |
                                   PointerMotionMask | ButtonMotionMask, &ev)) {}
}

int yyMsgWindowType(Window xwin, int& h) {
  h = -1;
  if (!xwin) return -1;
  const auto& ws = zelvy_win::state();
  if ((h = yyGetWindowIndex(1, xwin)) >= 0) return 1;
  if ((h = yyGetWindowIndex(2, xwin)) >= 0) return 2;
  if ((h = yyGetWindowIndex(3, xwin)) >= 0) return 3;
  int code = -1, index = -1;
  if (yyMenuFind(xwin, code, index)) {
    h = -1;
    return code;
  }
  if ((h = yyGetWindowIndex(8, xwin)) >= 0) return 8;
  for (int k = 0; k <= ws.iWinMax; ++k) {
    const Widget label = ws.wWindow[k] ? ws.WinInfo[k].TitleLabel : nullptr;
    if (label && XtIsRealized(label) && XtWindow(label) == xwin) {
      h = k;
      return 11;
    }
  }
  int button = -1;
  if (const ToolbarRecord* bar = yyMenuToolbarOfWindow(xwin, button)) {
    h = bar->Window;
    return 10;
  }
  for (int k = 0; k <= ws.iWinMax; ++k)
    if (ws.wWindow[k] && ws.WinInfo[k].Kind == 3 && in_tree(xwin, ws.wtClient[k])) {
      h = k;
      return 12;
    }
  h = -1;
  return -1;
}

int yyMsgWindowType(Window xwin) {
  int h = -1;
  return yyMsgWindowType(xwin, h);
}

void yyAttachLoopHooks(const LoopHooks& hooks) {
  // Each subsystem attaches its own hooks and leaves the others' alone.
  auto take = [](auto& mine, auto theirs) {
    if (theirs) mine = theirs;
  };
  take(mq.hooks.dialogEvent, hooks.dialogEvent);
  take(mq.hooks.editEvent, hooks.editEvent);
  take(mq.hooks.viewerEvent, hooks.viewerEvent);
  take(mq.hooks.editMessage, hooks.editMessage);
  take(mq.hooks.gridMessage, hooks.gridMessage);
  take(mq.hooks.textMenu, hooks.textMenu);
}

void yyMsgModalLoop(int win, unsigned long levelWindow) {
  if (mq.nModal >= kModalDepth || !xdisplay()) return;
  // A caller that froze the other windows before showing its shell (so that
  // their pictures were taken without it) has pushed this level already.
  Widget level = levelWindow ? XtWindowToWidget(xdisplay(), levelWindow) : nullptr;
  const bool pushed = level && mq.nModal > 0 && mq.wtModal[static_cast<std::size_t>(mq.nModal - 1)] == level;
  if (!pushed) push_level(level, win);
  mq.ZelvMessage = Pending{};
  mq.bModalMessageLoop = true;
  while (mq.bModalMessageLoop) {
    yyMsgInterpret();
    mq.ZelvMessage = Pending{};
  }
  if (!pushed) pop_level();
  if (mq.nModal > 0) mq.bModalMessageLoop = true;
}

void yyMsgModalEnd() {
  mq.bModalMessageLoop = false;
  // The loop waits for X events: one that means nothing wakes it when the
  // level is ended from a timer rather than from an event's callback.
  if (!xdisplay() || !zelvy_win::state().wWindow[0]) return;
  post_to_root(0);
}

void yyMsgSemiModelessStack(int direction, int kind, int handle) {
  auto saved_slot = [&](int k, int hd) -> std::pair<int, int>* {
    if (k == 1) {
      if (!yywindowexists(hd)) return nullptr;
      static std::pair<int, int> tmp;
      tmp = {zelvy_win::state().WinInfo[hd].SavedObject, zelvy_win::state().WinInfo[hd].SavedObjectKind};
      return &tmp;
    }
    return &mq.dialogSaved[hd];
  };
  auto store = [&](int k, int hd, std::pair<int, int> v) {
    if (k == 1 && yywindowexists(hd)) {
      zelvy_win::state().WinInfo[hd].SavedObject = v.first;
      zelvy_win::state().WinInfo[hd].SavedObjectKind = v.second;
    } else if (k == 2) {
      mq.dialogSaved[hd] = v;
    }
  };
  if (direction == 1) {
    ++mq.nSemi;
    store(kind, handle, {mq.iObjCur, mq.iObjCurType});
    mq.iObjCur = handle;
    mq.iObjCurType = kind;
  } else {
    if (mq.nSemi == 0) return;
    --mq.nSemi;
    std::pair<int, int> prev{-1, 0};
    if (auto* p = saved_slot(kind, handle)) prev = *p;
    store(kind, handle, {0, 0});
    if (kind == 2) mq.dialogSaved.erase(handle);
    if (mq.iObjCur == handle && mq.iObjCurType == kind) {
      mq.iObjCur = prev.first;
      mq.iObjCurType = prev.second;
    } else {
      // Keep the chain whole: whoever stored the popped object takes its predecessor.
      bool done = false;
      for (int h = 0; h <= zelvy_win::state().iWinMax && !done; ++h)
        if (zelvy_win::state().wWindow[h] && zelvy_win::state().WinInfo[h].Mode == 3 && zelvy_win::state().WinInfo[h].SavedObject == handle &&
            zelvy_win::state().WinInfo[h].SavedObjectKind == kind) {
          store(1, h, prev);
          done = true;
        }
      for (auto& [d, v] : mq.dialogSaved)
        if (!done && v.first == handle && v.second == kind) {
          v = prev;
          done = true;
        }
    }
  }
  yyMsgResizeControl();
}

namespace {
struct CommandWait {
  std::string savedText;
  int shownSeconds = -1;
};
CommandWait command_wait;
constexpr int kWaitPart = 1;
}  // namespace

// While the program waits for a command it started: its windows repaint,
// what the user types or clicks is dropped, and the main window's status bar
// counts the seconds.
void yyMsgCommandWait(int elapsed_ms) {
  Display* dpy = xdisplay();
  if (!dpy) return;
  const bool bar = zelvy_win::state().wWindow[0] != 0;
  if (elapsed_ms == 0) {
    command_wait = {};
    if (bar) command_wait.savedText = yyWindowStatusBarText(0, kWaitPart);
  }
  while (XPending(dpy)) {
    XEvent ev;
    XNextEvent(dpy, &ev);
    switch (ev.type) {
      case KeyPress: case KeyRelease: case ButtonPress: case ButtonRelease: case MotionNotify:
        break;
      default:
        if (!XFilterEvent(&ev, None)) yyMsgProcessMessage(ev);
        // The next wait for a message clears what events raised before it:
        // a close request that came meanwhile is kept for it instead.
        if (mq.ZelvMessage.type == CloseRequest && mq.itypesaved == 0) {
          mq.itypesaved = CloseRequest;
          mq.valuesaved = mq.ZelvMessage.rec;
        }
        mq.ZelvMessage = Pending{};
        break;
    }
  }
  if (elapsed_ms < 0) {
    if (bar) WindowOutStatusBar(kWaitPart, command_wait.savedText, 0);
  } else if (bar && elapsed_ms / 1000 != command_wait.shownSeconds) {
    command_wait.shownSeconds = elapsed_ms / 1000;
    WindowOutStatusBar(kWaitPart, "Running: " + std::to_string(command_wait.shownSeconds) + " s", 0);
  }
  XFlush(dpy);
}

// Field creation by type: each type becomes its widgets with the styles of
// its resource record, in its simplest working form for the composite kinds.
#include <Xm/Container.h>
#include <Xm/DrawingA.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/List.h>
#include <Xm/PushB.h>
#include <Xm/Scale.h>
#include <Xm/ScrolledW.h>
#include <Xm/Separator.h>
#include <Xm/Text.h>
#include <Xm/ToggleB.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "toolkit/kernel/resources.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/spin_private.h"
#include "toolkit/dialog/combo_private.h"
#include "toolkit/dialog/grid_attach.h"
#include "toolkit/dialog/list_fields_private.h"
#include "toolkit/dialog/small_widgets_private.h"
#include "toolkit/dialog/tree_view_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/base/format.h"

using namespace zelvy_dialog;

namespace {

// Characters a text field takes when its resource gives no length: the
// longest text of the form, a reflection file's path, fits.
constexpr int kDefaultFieldLength = 256;
// A combo's closed height in dialog units, and the frame of its text.
constexpr int kComboTextUnits = 14;
constexpr int kComboShadow = 1;

// The options a field has in the resource tables, each handed to `add` in
// order; the resource's selected option is then put into the field.
template <typename Add>
void load_options(const DialogRecord& d, FieldRecord& f, Add add) {
  int count = -1, bytes = 0;
  yyrcfieldmenucheck(d.resourceId, f.identifier, count, bytes);
  if (count <= 0) return;
  std::vector<int> pos(static_cast<std::size_t>(count));
  std::vector<char> text(static_cast<std::size_t>(std::max(bytes, 1)));
  int selected = -1;
  yyrcfieldmenuload(d.resourceId, f.identifier, selected, pos, text);
  for (int p : pos) {
    XmString s = yyDialogListXmString(f, p >= 0 ? &text[static_cast<std::size_t>(p)] : "");
    add(s);
    XmStringFree(s);
  }
  if (selected >= 0) yyDialogPutOptionX(f, selected + 1);
}

struct Args {
  Arg a[24];
  Cardinal n = 0;
  template <typename T>
  Args& add(const char* name, T value) {
    XtSetArg(a[n], const_cast<char*>(name), (XtArgVal)(value));
    ++n;
    return *this;
  }
};

Args& base_args(Args& args, const FieldRecord& f, bool font = true) {
  args.add(XtNx, f.x).add(XtNy, f.y).add(XtNwidth, std::max(1, f.width)).add(XtNheight, std::max(1, f.height));
  if (font) yyDialogFont(args.a, args.n, f.fontIndex);
  return args;
}

// Labels, pictures and grids sit in a frame that draws their border styles.
Widget border_widget(Widget parent, const FieldRecord& f, bool ignoreBorder = false) {
  const bool border = !ignoreBorder && ((f.style & (field_style::kBorder | field_style::kSunken)) ||
                                        (f.extendedStyle & field_style2::kEdges));
  Args args;
  base_args(args, f, false);
  args.add(XmNshadowThickness, border ? 1 : 0).add(XmNshadowType, (f.style & field_style::kSunken) ? static_cast<int>(XmSHADOW_IN) : static_cast<int>(XmSHADOW_ETCHED_IN));
  args.add(XmNmarginWidth, 0).add(XmNmarginHeight, 0).add(XtNbackground, yyDialogScheme(3));
  Widget w = XtCreateWidget("ZelvField", xmFrameWidgetClass, parent, args.a, args.n);
  if (border) yyDialogBorderStyle(w, 1);
  return w;
}

unsigned char label_alignment(std::uint32_t style) {
  switch (style & field_style::kLabelKindMask) {
    case field_style::kLabelCentred: return XmALIGNMENT_CENTER;
    case field_style::kLabelRight: return XmALIGNMENT_END;
    default: return XmALIGNMENT_BEGINNING;
  }
}

void label_create(DialogRecord& d, FieldRecord& f) {
  f.textKind = 1;
  f.capabilities = field_capability::kLabel | ((f.style & field_style::kLabelNoMnemonic) ? 0 : field_capability::kMnemonic);
  f.widget = border_widget(d.widget, f);
  char mnemonic = 0;
  f.text = yyDialogStrGetMnemonic(f.text, mnemonic);
  Args args;
  args.add(XmNrecomputeSize, False).add(XmNalignment, label_alignment(f.style)).add(XmNmarginWidth, 0);
  args.add(XmNmarginHeight, 0).add(XtNbackground, yyDialogScheme(3)).add(XmNtraversalOn, False);
  yyDialogFont(args.a, args.n, f.fontIndex);
  // Multi-line labels start at the top, as typed text does.
  f.valueWidget = XtCreateManagedWidget("Label", xmLabelWidgetClass, f.widget, args.a, args.n);
  XtVaSetValues(f.valueWidget, XmNchildType, XmFRAME_WORKAREA_CHILD, nullptr);
  if (mnemonic && (f.capabilities & field_capability::kMnemonic))
    XtVaSetValues(f.valueWidget, XmNmnemonic, XStringToKeysym(std::string(1, mnemonic).c_str()), nullptr);
  yyDialogLabelSetText(f, f.text);
}

// With `greyed` the image fades two thirds of the way into the background, as
// a disabled button shows it.
Pixmap image_pixmap(int imageId, int type, Pixel background, int& w, int& h, bool greyed = false) {
  std::vector<std::uint8_t> rgba;
  int status = 0;
  yyrcimagepixels(imageId, type, w, h, rgba, status);
  if (status != 0 || w <= 0 || h <= 0) return 2;
  Display* dpy = xdisplay();
  const int depth = zelvy_x::state().iDispDepth > 0 ? zelvy_x::state().iDispDepth : DefaultDepth(dpy, zelvy_x::state().iScreen);
  Pixmap pm = XCreatePixmap(dpy, RootWindow(dpy, zelvy_x::state().iScreen), static_cast<unsigned>(w),
                            static_cast<unsigned>(h), static_cast<unsigned>(depth));
  GC gc = XCreateGC(dpy, pm, 0, nullptr);
  XSetForeground(dpy, gc, background);
  XFillRectangle(dpy, pm, gc, 0, 0, static_cast<unsigned>(w), static_cast<unsigned>(h));
  XColor bg{};
  bg.pixel = background;
  if (greyed) XQueryColor(dpy, DefaultColormap(dpy, zelvy_x::state().iScreen), &bg);
  auto fade = [&](std::uint8_t c, unsigned short b) {
    return greyed ? static_cast<std::uint8_t>((c + 2 * (b >> 8)) / 3) : c;
  };
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const std::uint8_t* p = &rgba[static_cast<std::size_t>((y * w + x) * 4)];
      if (p[3] >= 128) continue;
      XSetForeground(dpy, gc, yyAllocPixel(fade(p[0], bg.red), fade(p[1], bg.green), fade(p[2], bg.blue)));
      XDrawPoint(dpy, pm, gc, x, y);
    }
  XFreeGC(dpy, gc);
  return pm;
}

void picture_create(DialogRecord& d, FieldRecord& f) {
  using namespace field_style;
  const std::uint32_t kind = f.style & kPictureKindMask;
  f.capabilities = field_capability::kPicture;
  const bool line = kind == kPictureLineHorizontal || kind == kPictureLineVertical;
  if (kind == kPictureLineHorizontal) f.height = 2;
  else if (kind == kPictureLineVertical) f.width = 2;
  f.widget = border_widget(d.widget, f, line);
  if (kind == kPictureFrameDark || kind == kPictureFrameGrey || kind == kPictureFrameWhite || kind == kPictureEtchedFrame ||
      line) {
    f.capabilities |= field_capability::kPictureNoLabel;
    Args args;
    if (line) {
      args.add(XmNseparatorType, XmSHADOW_ETCHED_IN).add(XmNorientation, kind == kPictureLineHorizontal ? XmHORIZONTAL : XmVERTICAL);
      f.valueWidget = XtCreateManagedWidget("Picture", xmSeparatorWidgetClass, f.widget, args.a, args.n);
    } else {
      const int col = kind == kPictureFrameDark ? 9 : kind == kPictureFrameGrey ? 4 : kind == kPictureFrameWhite ? 8 : -1;
      args.add(XmNshadowType, XmSHADOW_ETCHED_IN).add(XmNshadowThickness, 1).add(XtNbackground, yyDialogScheme(3));
      if (col >= 0)
        args.add(XmNtopShadowColor, yyDialogScheme(col)).add(XmNbottomShadowColor, yyDialogScheme(col)).add(XtNforeground, yyDialogScheme(col));
      f.valueWidget = XtCreateManagedWidget("Picture", xmFrameWidgetClass, f.widget, args.a, args.n);
    }
    return;
  }
  if (!(f.style & kPictureKeepSize)) f.capabilities |= field_capability::kPictureRecomputes;
  Pixel bg = yyDialogScheme(3);
  if (kind == kPictureFillDark) bg = yyDialogScheme(9);
  else if (kind == kPictureFillGrey) bg = yyDialogScheme(4);
  else if (kind == kPictureFillWhite) bg = yyDialogScheme(8);
  Args args;
  args.add(XmNrecomputeSize, False).add(XmNmarginWidth, 0).add(XmNmarginHeight, 0).add(XtNbackground, bg);
  args.add(XmNlabelString, nullptr).add(XmNtraversalOn, False);
  f.valueWidget = XtCreateManagedWidget("Picture", xmLabelWidgetClass, f.widget, args.a, args.n);
  yyDialogSetLabel(f.valueWidget, "");
  f.pictureBackground = yyDialogScheme(3);
  if (kind == kPictureIcon || kind == kPictureBitmap) {
    f.imageResourceId = f.identifier;
    f.imageWidget = f.valueWidget;
    yyDialogInitImage(f);
  }
}

}  // namespace

void yyDialogInitImage(FieldRecord& f) {
  if (!f.imageResourceId || !f.imageWidget) return;
  const std::uint32_t kind = f.style & field_style::kPictureKindMask;
  int w = 0, h = 0;
  const Pixmap image = image_pixmap(f.imageResourceId, kind == field_style::kPictureBitmap ? 1 : 2,
                                    f.pictureBackground, w, h);
  if (image == 2) return;
  XtVaSetValues(f.imageWidget, XmNlabelType, XmPIXMAP, XmNlabelPixmap, image, nullptr);
  if (f.image != 2) XFreePixmap(xdisplay(), f.image);
  f.image = image;
}

namespace {

void group_create(DialogRecord& d, FieldRecord& f) {
  f.textKind = 3;
  f.capabilities = field_capability::kGroup;
  Args args;
  base_args(args, f, false);
  args.add(XmNshadowType, XmSHADOW_ETCHED_IN).add(XtNbackground, yyDialogScheme(3)).add(XmNmarginWidth, 0).add(XmNmarginHeight, 0);
  if (f.style & field_style::kGroupFlat)
    args.add(XmNtopShadowColor, yyDialogScheme(9)).add(XmNbottomShadowColor, yyDialogScheme(9)).add(XmNshadowThickness, 1);
  f.widget = XtCreateWidget("ZelvField", xmFrameWidgetClass, d.widget, args.a, args.n);
  yyDialogBorderStyle(f.widget, 1);
  const std::uint32_t align = f.style & field_style::kAlignMask;
  Args t;
  t.add(XmNchildType, XmFRAME_TITLE_CHILD).add(XmNchildVerticalAlignment, XmALIGNMENT_CENTER);
  t.add(XmNchildHorizontalAlignment,
        align == field_style::kAlignRight    ? XmALIGNMENT_END
        : align == field_style::kAlignCentred ? XmALIGNMENT_CENTER
                                              : XmALIGNMENT_BEGINNING);
  t.add(XtNbackground, yyDialogScheme(3)).add(XmNtraversalOn, False).add(XmNmarginHeight, 0);
  yyDialogFont(t.a, t.n, f.fontIndex);
  f.valueWidget = XtCreateWidget("Title", xmLabelWidgetClass, f.widget, t.a, t.n);
  char mnemonic = 0;
  f.text = yyDialogStrGetMnemonic(f.text, mnemonic);
  yyDialogSetLabel(f.valueWidget, f.text);
  if (!f.text.empty()) XtManageChild(f.valueWidget);
}

void add_text_callbacks(Widget text) {
  XtAddCallback(text, XmNmodifyVerifyCallback, yyDialogStringCB, nullptr);
  XtAddCallback(text, XmNvalueChangedCallback, yyDialogStringCB, nullptr);
}

// The top and bottom margin that puts one line of the field's font in the
// middle of a text area `inner` pixels high.
int centred_margin(const FieldRecord& f, int inner) {
  const int line = static_cast<int>(yyDialogFontMetrics(f.fontIndex).charHeight / 1.07f);
  return std::max(0, (inner - line) / 2);
}

// What every text widget of a field starts with: no cursor until it has the
// focus, a one-pixel side margin.
Args& yyDialogXmTextProps1(Args& args, int marginHeight) {
  return args.add(XmNmarginHeight, marginHeight).add(XmNmarginWidth, 1).add(XmNcursorPositionVisible, False);
}

Args& text_args(Args& args, const FieldRecord& f) {
  const bool edge = (f.style & field_style::kBorder) || (f.extendedStyle & field_style2::kEdges);
  // The line sits in the middle of a field taller than one line.
  const int shadow = (edge || !zelvy_x::state().bFlatStyle) ? 1 : 0;
  const int margin = (f.type == kString && (f.style & field_style::kMultiLine)) ? 0 : centred_margin(f, f.height - 2 * shadow);
  yyDialogXmTextProps1(args, margin);
  args.add(XtNbackground, yyDialogScheme(15)).add(XtNforeground, yyDialogScheme(14));
  if (zelvy_x::state().bFlatStyle) {
    args.add(XmNshadowThickness, edge ? 1 : 0);
    if (edge) args.add(XmNtopShadowColor, yyDialogScheme(9)).add(XmNbottomShadowColor, yyDialogScheme(9));
  }
  args.add(XmNhighlightThickness, 0);
  return args;
}

// Text and numeric fields; a number with the spinner flag is a spinner.
void create_text(DialogRecord& d, FieldRecord& f) {
  f.textKind = 2;
  f.capabilities = field_capability::kText;
  TextFieldData& t = f.data;
  t = TextFieldData{};
  const bool numeric = yyDialogIsNumeric(f);
  const bool multi = !numeric && (f.style & field_style::kMultiLine);
  if (numeric) {
    t.kind = f.type - kInteger + 3;
    double lo = 1.0, hi = -1.0;
    yyrcfieldrange(d.resourceId, f.identifier, lo, hi);
    t.minimum = lo;
    t.maximum = hi;
  } else {
    if (f.style & field_style::kUpperCase) t.kind = 1;
    else if (f.style & field_style::kLowerCase) t.kind = 2;
    if (f.style & field_style::kWantsReturn) f.capabilities |= field_capability::kReturnToWidget;
  }
  const bool autoScroll = f.style & field_style::kAutoScroll;
  int length = 0;
  yyrcfieldlength(d.resourceId, f.identifier, length);
  // Fields scroll sideways, so only the character count bounds a text.
  t.charLimit = length > 0 ? length : kDefaultFieldLength;
  t.pixelLimit = 0;
  const bool spinner = numeric && (f.extraFlags & field_extra::kSpinner);
  Args args;
  text_args(args, f);
  if (yyDialogRenderTable(f.fontIndex)) args.add(XmNrenderTable, yyDialogRenderTable(f.fontIndex));
  if (spinner) {
    f.capabilities |= field_capability::kSpinner;
    WidgetClass spinClass = f.type == kInteger ? integerspinWidgetClass
                            : f.type == kReal  ? realspinWidgetClass
                                               : doublespinWidgetClass;
    Args outer;
    base_args(outer, f, false);
    outer.add(XtNxftFont, f.fontIndex).add(XtNbackground, yyDialogScheme(17));
    f.widget = XtCreateWidget("ZelvField", spinClass, d.widget, outer.a, outer.n);
    f.valueWidget = yySpinWidgetText(f.widget);
    XtSetValues(f.valueWidget, args.a, args.n);
    yySpinWidgetSetRange(f.widget, t.minimum, t.maximum);
    Widget up = nullptr, down = nullptr;
    yySpinWidgetButtons(f.widget, up, down);
    f.parts = {up, down};
  } else if (multi) {
    f.capabilities |= field_capability::kScrolledText;
    args.add(XmNeditMode, XmMULTI_LINE_EDIT).add(XmNwordWrap, autoScroll ? False : True);
    args.add(XmNscrollVertical, (f.style & field_style::kVerticalScrollBar) ? True : False);
    args.add(XmNscrollHorizontal, (f.style & field_style::kHorizontalScrollBar) ? True : False);
    Widget sw = XtVaCreateWidget("ZelvScroll", xmScrolledWindowWidgetClass, d.widget, XtNx, f.x, XtNy, f.y, XtNwidth,
                                 std::max(1, f.width), XtNheight, std::max(1, f.height), XmNscrollingPolicy,
                                 XmAPPLICATION_DEFINED, XmNvisualPolicy, XmVARIABLE, XmNspacing, 1,
                                 XmNscrollBarDisplayPolicy, XmSTATIC, XtNbackground, yyDialogScheme(3), nullptr);
    f.widget = XtCreateManagedWidget("ZelvField", xmTextWidgetClass, sw, args.a, args.n);
    f.outerWidget = sw;
    f.valueWidget = f.widget;
  } else {
    base_args(args, f, false);
    args.add(XmNeditMode, XmSINGLE_LINE_EDIT);
    f.widget = XtCreateWidget("ZelvField", xmTextWidgetClass, d.widget, args.a, args.n);
    f.valueWidget = f.widget;
  }
  add_text_callbacks(f.valueWidget);
  std::string initial = f.text;
  if (t.kind == 1) std::transform(initial.begin(), initial.end(), initial.begin(), ::toupper);
  if (t.kind == 2) std::transform(initial.begin(), initial.end(), initial.begin(), ::tolower);
  if ((f.style & field_style::kPassword) && !numeric) initial.clear();
  double v = 0;
  int good = 0;
  if (numeric && !initial.empty()) yyst2dblcheck_(v, good, initial);
  yyDialogPutText(f, initial, v, {}, true);
  if (numeric && initial.empty()) t.defined = t.valid = false;
}

void free_pixmap_cb(Widget, XtPointer pixmap, XtPointer) {
  if (xdisplay()) XFreePixmap(xdisplay(), static_cast<Pixmap>(reinterpret_cast<std::uintptr_t>(pixmap)));
}

void button_create(DialogRecord& d, FieldRecord& f) {
  f.textKind = 1;
  f.capabilities = field_capability::kButton;
  char mnemonic = 0;
  f.text = yyDialogStrGetMnemonic(f.text, mnemonic);
  const std::uint32_t align = f.style & field_style::kAlignMask;
  Args args;
  base_args(args, f);
  args.add(XmNrecomputeSize, False)
      .add(XmNalignment, align == field_style::kAlignLeft    ? XmALIGNMENT_BEGINNING
                         : align == field_style::kAlignRight ? XmALIGNMENT_END
                                                             : XmALIGNMENT_CENTER);
  args.add(XtNbackground, yyDialogScheme(17)).add(XtNforeground, yyDialogScheme(0)).add(XmNfillOnArm, False);
  args.add(XmNhighlightThickness, 1).add(XmNshadowThickness, zelvy_x::state().bFlatStyle ? 1 : 2).add(XmNmarginHeight, 0);
  if (zelvy_x::state().bFlatStyle) args.add(XmNtopShadowColor, yyDialogScheme(9)).add(XmNbottomShadowColor, yyDialogScheme(9));
  if (f.style & field_style::kButtonFlat) args.add(XmNfillOnArm, True).add(XmNshadowThickness, 0).add(XtNborderWidth, 1);
  f.widget = XtCreateWidget("ZelvField", xmPushButtonWidgetClass, d.widget, args.a, args.n);
  yyDialogSetLabel(f.widget, f.text);
  if (mnemonic) XtVaSetValues(f.widget, XmNmnemonic, XStringToKeysym(std::string(1, mnemonic).c_str()), nullptr);
  if (f.style & field_style::kDefaultButton) d.defaultButton = static_cast<int>(&f - d.fields.data());
  // An image button shows the image of its own identifier.
  if (f.style & (field_style::kButtonIcon | field_style::kButtonBitmap)) {
    int w = 0, h = 0;
    f.image = image_pixmap(f.identifier, (f.style & field_style::kButtonIcon) ? 2 : 1, yyDialogScheme(17), w, h);
    if (f.image != 2) {
      f.imageResourceId = f.identifier;
      f.imageWidget = f.widget;
      const Pixmap greyed = image_pixmap(f.identifier, (f.style & field_style::kButtonIcon) ? 2 : 1, yyDialogScheme(17), w, h, true);
      XtVaSetValues(f.widget, XmNlabelType, XmPIXMAP, XmNlabelPixmap, f.image, XmNlabelInsensitivePixmap, greyed, nullptr);
      if (greyed != 2) XtAddCallback(f.widget, XmNdestroyCallback, free_pixmap_cb, reinterpret_cast<XtPointer>(greyed));
    }
  }
  XtAddCallback(f.widget, XmNactivateCallback, yyDialogButtonCB, nullptr);
  // A button that shows a picture tells its text in a tooltip instead.
  if ((f.style & (field_style::kButtonIcon | field_style::kButtonBitmap)) && !f.text.empty()) {
    f.tooltip = f.text;
    XtAddEventHandler(f.widget, EnterWindowMask | LeaveWindowMask, False, yyDialogTooltipEH, nullptr);
    f.tooltipHandler = true;
  }
}

void toggle_create(DialogRecord& d, FieldRecord& f) {
  f.textKind = 1;
  f.capabilities = field_capability::kToggle | (yyDialogPushLike(f) ? 0 : field_capability::kForegroundSettable);
  char mnemonic = 0;
  f.text = yyDialogStrGetMnemonic(f.text, mnemonic);
  const std::uint32_t align = f.style & field_style::kAlignMask;
  unsigned char a = yyDialogPushLike(f) ? XmALIGNMENT_CENTER : XmALIGNMENT_BEGINNING;
  if (align == field_style::kAlignLeft) a = XmALIGNMENT_BEGINNING;
  else if (align == field_style::kAlignRight) a = XmALIGNMENT_END;
  else if (align == field_style::kAlignCentred) a = XmALIGNMENT_CENTER;
  Args args;
  base_args(args, f);
  args.add(XmNrecomputeSize, False).add(XmNalignment, a).add(XtNbackground, yyDialogScheme(3)).add(XmNmarginHeight, 0);
  args.add(XmNhighlightThickness, 1).add(XmNmarginWidth, 0);
  if (yyDialogPushLike(f)) {
    args.add(XmNindicatorOn, XmINDICATOR_NONE).add(XmNfillOnSelect, True).add(XmNshadowThickness, zelvy_x::state().bFlatStyle ? 0 : 2);
  } else {
    args.add(XmNindicatorOn, XmINDICATOR_CHECK_BOX).add(XmNunselectColor, yyDialogScheme(8));
    args.add(XmNselectColor, f.type == kRadio ? yyDialogScheme(16) : yyDialogScheme(8));
    if (f.type == kCheckbox) args.add(XmNenableToggleVisual, True);
    if (zelvy_x::state().bFlatStyle)
      args.add(XmNdetailShadowThickness, f.type == kRadio ? 2 : 1).add(XmNtopShadowColor, yyDialogScheme(9)).add(XmNbottomShadowColor, yyDialogScheme(9));
  }
  if (f.type == kRadio) args.add(XmNindicatorType, XmONE_OF_MANY_ROUND).add(XmNindicatorOn, yyDialogPushLike(f) ? XmINDICATOR_NONE : XmINDICATOR_FILL);
  f.widget = XtCreateWidget("ZelvField", xmToggleButtonWidgetClass, d.widget, args.a, args.n);
  yyDialogSetLabel(f.widget, f.text);
  int checked = 0;
  if (f.type == kCheckbox) yyrcfieldcheckbox(d.resourceId, f.identifier, checked);
  XmToggleButtonSetState(f.widget, checked == 1 ? True : False, False);
  if (mnemonic) XtVaSetValues(f.widget, XmNmnemonic, XStringToKeysym(std::string(1, mnemonic).c_str()), nullptr);
}

}  // namespace

// Type 11: the toolkit's combo widget. The field keeps a closed combo's
// height; what the resource gives beyond it is the height of the open list.
void yyDialogComboIn(Widget parent, DialogRecord& d, FieldRecord& f) {
  using namespace field_style;
  const bool cell = f.capabilities & field_capability::kGridCell;
  f.textKind = 0;
  f.capabilities = field_capability::kCombo | (cell ? field_capability::kGridCell : 0);
  std::uint32_t type = f.style & kComboKindMask;
  if (type == 0) type = kComboDropDown;
  const DialogFontMetrics& fm = yyDialogFontMetrics(f.fontIndex);
  int drop = -1;
  if (type != kComboSimple) {
    drop = f.height - fm.controlHeight + (zelvy_x::state().bXft ? 6 : 0);
    f.height = fm.controlHeight;
  }
  const int shadow = cell ? 0 : kComboShadow;
  int length = 0;
  yyrcfieldlength(d.resourceId, f.identifier, length);
  Args args;
  args.add(XtNx, f.x).add(XtNy, f.y).add(XtNwidth, std::max(1, f.width - 1)).add(XtNheight, std::max(1, f.height - 1));
  args.add(XmNcomboType, static_cast<int>(type)).add(XmNcomboDropSize, drop).add(XmNtextHeight, kComboTextUnits);
  args.add(XmNtextPixelUnused, zelvy_dialog::state().iFixedTextOffset);
  args.add(XmNcaseConv, (f.style & kComboUpperCase) ? kComboCaseUpper : (f.style & kComboLowerCase) ? kComboCaseLower : 0);
  args.add(XmNautoHScroll, (f.style & kComboAutoScroll) ? True : False);
  args.add(XmNscrollBarDisplayPolicy,
           (f.style & kComboKeepScrollBar) == kComboKeepScrollBar ? static_cast<int>(XmSTATIC) : static_cast<int>(XmAS_NEEDED));
  args.add(XmNlengthCharacter, length).add(XmNxftFont, f.fontIndex);
  args.add(XmNshadowThick, shadow).add(XmNhighlightThickness, 0).add(XmNmarginWidth, 1);
  args.add(XmNmarginHeight, centred_margin(f, fm.controlHeight - 1 - 2 * shadow));
  args.add(XmNcursorPositionVisible, False).add(XtNbackground, yyDialogScheme(3));
  if (cell) args.add(XmNshadowThickness, 0).add(XtNborderWidth, 0);
  f.widget = XtCreateWidget("ZelvField", comboWidgetClass, parent, args.a, args.n);
  XtVaGetValues(f.widget, XmNtextWidget, &f.valueWidget, nullptr);
  f.textKind = 2;
  f.data = TextFieldData{};
  if (type != kComboDropDownList) {
    f.capabilities |= field_capability::kCursorWhenFocused;
    XtAddCallback(f.valueWidget, XmNvalueChangedCallback, yyDialogStringCB, nullptr);
  }
  // The options of the resource in one go, and its selected one.
  int count = -1, bytes = 0;
  yyrcfieldmenucheck(d.resourceId, f.identifier, count, bytes);
  if (count > 0) {
    std::vector<int> pos(static_cast<std::size_t>(count));
    std::vector<char> text(static_cast<std::size_t>(std::max(bytes, 1)));
    int selected = -1;
    yyrcfieldmenuload(d.resourceId, f.identifier, selected, pos, text);
    std::vector<XmString> items;
    for (int p : pos) items.push_back(yyDialogXmString(p >= 0 ? &text[static_cast<std::size_t>(p)] : ""));
    XtVaSetValues(f.widget, XmNcomboItemCount, count, XmNcomboItems, items.data(), nullptr);
    for (XmString s : items) XmStringFree(s);
    if (selected >= 0) XtVaSetValues(f.widget, XmNitemSelect, selected + 1, nullptr);
  }
  XtAddCallback(f.widget, XmNvalueChangedCallback, yyDialogFieldChangedStateCB, nullptr);
}

void yyDialogCombo(int operation, DialogRecord& d, FieldRecord& f) {
  if (operation == kFieldCreate) yyDialogComboIn(d.widget, d, f);
  else if (operation == kFieldClear) yyDialogClearMenu(f);
}

namespace {

void list_create(DialogRecord& d, FieldRecord& f) {
  f.capabilities = field_capability::kList;
  Widget sw = XtVaCreateWidget("ZelvScroll", xmScrolledWindowWidgetClass, d.widget, XtNx, f.x, XtNy, f.y, XtNwidth,
                               std::max(1, f.width), XtNheight, std::max(1, f.height), XmNscrollingPolicy,
                               XmAPPLICATION_DEFINED, XmNvisualPolicy, XmVARIABLE, XmNscrollBarDisplayPolicy,
                               XmSTATIC, XtNbackground, yyDialogScheme(3), nullptr);
  Args args;
  args.add(XmNscrollBarDisplayPolicy, (f.style & field_style::kListKeepScrollBar) == field_style::kListKeepScrollBar
                                          ? static_cast<int>(XmSTATIC) : static_cast<int>(XmAS_NEEDED));
  args.add(XmNselectionPolicy, (f.style & field_style::kListMultiple)   ? XmMULTIPLE_SELECT
                               : (f.style & field_style::kListExtended) ? XmEXTENDED_SELECT
                                                                         : XmBROWSE_SELECT);
  if (f.style & field_style::kListExtended) args.add(XmNautomaticSelection, XmAUTO_SELECT);
  args.add(XmNlistSizePolicy, XmCONSTANT).add(XtNbackground, yyDialogScheme(15)).add(XmNhighlightThickness, 0);
  yyDialogFont(args.a, args.n, f.fontIndex);
  f.widget = XtCreateManagedWidget("ZelvField", xmListWidgetClass, sw, args.a, args.n);
  f.outerWidget = sw;
  load_options(d, f, [&f](XmString s) { XmListAddItemUnselected(f.widget, s, 0); });
  if (!(f.extraFlags & field_extra::kNoDoubleClick)) XtAddCallback(f.widget, XmNdefaultActionCallback, yyDialogDblClickCB, nullptr);
  if (f.style & field_style::kListNotify) {
    XtAddCallback(f.widget, XmNbrowseSelectionCallback, yyDialogFieldChangedStateCB, nullptr);
    XtAddCallback(f.widget, XmNmultipleSelectionCallback, yyDialogFieldChangedStateCB, nullptr);
    XtAddCallback(f.widget, XmNextendedSelectionCallback, yyDialogFieldChangedStateCB, nullptr);
  }
}

// A grid field is the grid layer's to build; without it, an empty frame.
GridFieldHooks gridHooks;

void create_grid(DialogRecord& d, FieldRecord& f) {
  if (gridHooks.create) return gridHooks.create(d, f);
  f.capabilities = field_capability::kGrid;
  f.widget = border_widget(d.widget, f);
}

}  // namespace

void yyDialogTreeviewFixState(FieldRecord& f) {
  if (f.type != kTreeview || !f.widget) return;
  // The container lays out the hidden children of an item only when its
  // outline state changes; so each parent is toggled away and back.
  WidgetList items = nullptr;
  const int count = XmContainerGetItemChildren(f.widget, nullptr, &items);
  std::vector<Widget> todo(items, items + std::max(0, count));
  XtFree(reinterpret_cast<char*>(items));
  while (!todo.empty()) {
    Widget item = todo.back();
    todo.pop_back();
    WidgetList kids = nullptr;
    const int n = XmContainerGetItemChildren(f.widget, item, &kids);
    if (n <= 0) continue;
    todo.insert(todo.end(), kids, kids + n);
    XtFree(reinterpret_cast<char*>(kids));
    unsigned char state = XmCOLLAPSED;
    XtVaGetValues(item, XmNoutlineState, &state, nullptr);
    XtVaSetValues(item, XmNoutlineState, state == XmEXPANDED ? XmCOLLAPSED : XmEXPANDED, nullptr);
    XtVaSetValues(item, XmNoutlineState, state, nullptr);
  }
}

void yyDialogString(DialogRecord& d, FieldRecord& f) { create_text(d, f); }
void yyDialogInteger(DialogRecord& d, FieldRecord& f) { create_text(d, f); }
void yyDialogReal(DialogRecord& d, FieldRecord& f) { create_text(d, f); }
void yyDialogDouble(DialogRecord& d, FieldRecord& f) { create_text(d, f); }

void yyAttachGridField(const GridFieldHooks& hooks) { gridHooks = hooks; }

bool yyDialogGridFocus(FieldRecord& f) {
  if (f.type != kGrid || !gridHooks.focus) return false;
  gridHooks.focus(f);
  return true;
}

namespace {

// What the types share beyond creation: clearing (2) and the states (3..6).
void common_operation(int operation, DialogRecord& d, FieldRecord& f) {
  if (operation >= 3 && operation <= 6) {
    yyDialogFieldStateX(operation - 3, d, f);
    // A grid following the scheme shows the state in its cells too.
    if (f.type == kGrid && gridHooks.colour && f.defaultBackground && operation <= 5) gridHooks.colour(f, operation - 3);
    return;
  }
  if (operation != 2) return;
  switch (f.type) {
    case kLabel: case kGroup: case kButton: case kString: case kInteger: case kReal: case kDouble:
      yyDialogPutString(f, 0.0, "", {}, true);
      break;
    case kCheckbox: XmToggleButtonSetState(f.widget, False, False); break;
    case kRadio:
      for (FieldRecord& g : d.fields)
        if (g.type == kRadio && g.radioGroup == f.radioGroup) XmToggleButtonSetState(g.widget, False, False);
      break;
    case kCombo: case kList: yyDialogClearMenu(f); break;
    case kProgress: {
      int lo = 0;
      XtVaGetValues(f.widget, XtNbarMin, &lo, nullptr);
      XtVaSetValues(f.widget, XtNbarPos, lo, nullptr);
      break;
    }
    case kTreeview: yyDialogTreeviewClear(f); break;
    default: break;
  }
}

}  // namespace

// One routine per type: 1 creates its widgets, the others as for all types.
void yyDialogLabel(int operation, DialogRecord& d, FieldRecord& f) {
  if (operation == 1) label_create(d, f);
  else common_operation(operation, d, f);
}

void yyDialogPicture(int operation, DialogRecord& d, FieldRecord& f) {
  if (operation == 1) picture_create(d, f);
  else common_operation(operation, d, f);
}

void yyDialogGroup(int operation, DialogRecord& d, FieldRecord& f) {
  if (operation == 1) group_create(d, f);
  else common_operation(operation, d, f);
}

void yyDialogButton(int operation, DialogRecord& d, FieldRecord& f) {
  if (operation == 1) button_create(d, f);
  else common_operation(operation, d, f);
}

void yyDialogCheckbox(int operation, DialogRecord& d, FieldRecord& f) {
  if (operation == 1) toggle_create(d, f);
  else common_operation(operation, d, f);
}

void yyDialogRadio(int operation, DialogRecord& d, FieldRecord& f) {
  if (operation == 1) toggle_create(d, f);
  else common_operation(operation, d, f);
}

void yyDialogList(int operation, DialogRecord& d, FieldRecord& f) {
  if (operation == 1) list_create(d, f);
  else common_operation(operation, d, f);
}

void yyDialogTab(int operation, DialogRecord& d, FieldRecord& f) {
  if (operation == 1) {
    yyTabWidgetInitialize(d, f);
    yyDialogTabPages(d, f);
  }
  else common_operation(operation, d, f);
}

void yyDialogProgress(int operation, DialogRecord& d, FieldRecord& f) {
  if (operation == 1) yyDialogProgressCreate(d, f);
  else common_operation(operation, d, f);
}

void yyDialogTrackbar(int operation, DialogRecord& d, FieldRecord& f) {
  if (operation == 1) yyDialogTrackbarCreate(d, f);
  else common_operation(operation, d, f);
}

void yyDialogTreeview(int operation, DialogRecord& d, FieldRecord& f) {
  if (operation == 1) yyDialogTreeviewCreate(d, f);
  else common_operation(operation, d, f);
}

void yyDialogFieldCreateType(DialogRecord& d, FieldRecord& f) {
  switch (f.type) {
    case kLabel: yyDialogLabel(1, d, f); break;
    case kPicture: yyDialogPicture(1, d, f); break;
    case kGroup: yyDialogGroup(1, d, f); break;
    case kString: yyDialogString(d, f); break;
    case kInteger: yyDialogInteger(d, f); break;
    case kReal: yyDialogReal(d, f); break;
    case kDouble: yyDialogDouble(d, f); break;
    case kButton: yyDialogButton(1, d, f); break;
    case kCheckbox: yyDialogCheckbox(1, d, f); break;
    case kRadio: yyDialogRadio(1, d, f); break;
    case kCombo: yyDialogCombo(kFieldCreate, d, f); break;
    case kList: yyDialogList(1, d, f); break;
    case kTab: yyDialogTab(1, d, f); break;
    case kProgress: yyDialogProgress(1, d, f); break;
    case kGrid: create_grid(d, f); break;
    case kTrackbar: yyDialogTrackbar(1, d, f); break;
    case kTreeview: yyDialogTreeview(1, d, f); break;
    default: break;
  }
}

void yyDialogField(int operation, DialogRecord& d, FieldRecord& f) {
  if (operation == 1) {
    yyDialogFieldCreateType(d, f);
    yyDialogFieldProps(1, d, f);
    return;
  }
  if (operation == 0) yyDialogFieldProps(0, d, f);
  switch (f.type) {
    case kLabel: yyDialogLabel(operation, d, f); break;
    case kPicture: yyDialogPicture(operation, d, f); break;
    case kGroup: yyDialogGroup(operation, d, f); break;
    case kButton: yyDialogButton(operation, d, f); break;
    case kCheckbox: yyDialogCheckbox(operation, d, f); break;
    case kRadio: yyDialogRadio(operation, d, f); break;
    case kList: yyDialogList(operation, d, f); break;
    case kTab: yyDialogTab(operation, d, f); break;
    case kProgress: yyDialogProgress(operation, d, f); break;
    case kTrackbar: yyDialogTrackbar(operation, d, f); break;
    case kTreeview: yyDialogTreeview(operation, d, f); break;
    default: common_operation(operation, d, f); break;
  }
}

int yyDialogFontCreate(const DialogRecord& d, const FieldRecord& f) {
  if (!zelvy_x::state().bXft) return 0;
  int font = d.fontIndex;
  yyrcfieldfont_(d.resourceId, f.identifier, font);
  return font >= 0 && font < static_cast<int>(zelvy_dialog::state().DlgFontInfo.size()) ? font : 0;
}

void yyDialogFont(Arg* args, Cardinal& n, int fontIndex) {
  if (XmRenderTable rt = yyDialogRenderTable(fontIndex)) {
    XtSetArg(args[n], XmNrenderTable, rt);
    ++n;
  }
}

void yyDialogBorderStyle(Widget w, int thickness) {
  if (!zelvy_x::state().bFlatStyle || !w) return;
  XtVaSetValues(w, XmNshadowThickness, thickness, nullptr);
  if (thickness > 0) XtVaSetValues(w, XmNtopShadowColor, yyDialogScheme(9), XmNbottomShadowColor, yyDialogScheme(9), nullptr);
}

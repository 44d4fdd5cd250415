// Field creation by type: each type becomes its widgets with the styles of
// its resource record, in its simplest working form for the composite kinds.
#include <Xm/ArrowB.h>
#include <Xm/ComboBox.h>
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
#include "toolkit/kernel/display_private.h"
#include "toolkit/base/format.h"

using namespace zelvy_dialog;

namespace {

// Characters a text field takes when its resource gives no length: the
// longest text of the form, a reflection file's path, fits.
constexpr int kDefaultFieldLength = 256;
// Rows a combo's list shows before it scrolls.
constexpr int kComboRows = 10;
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
    XmString s = yyDialogXmString(p >= 0 ? &text[static_cast<std::size_t>(p)] : "");
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
  if (font && yyDialogRenderTable(f.fontIndex)) args.add(XmNrenderTable, yyDialogRenderTable(f.fontIndex));
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
  if (border && zelvy_x::state().bFlatStyle)
    args.add(XmNtopShadowColor, yyDialogScheme(9)).add(XmNbottomShadowColor, yyDialogScheme(9));
  return XtCreateWidget("ZelvField", xmFrameWidgetClass, parent, args.a, args.n);
}

unsigned char label_alignment(std::uint32_t style) {
  switch (style & field_style::kLabelKindMask) {
    case field_style::kLabelCentred: return XmALIGNMENT_CENTER;
    case field_style::kLabelRight: return XmALIGNMENT_END;
    default: return XmALIGNMENT_BEGINNING;
  }
}

void create_label(DialogRecord& d, FieldRecord& f) {
  f.textKind = 1;
  f.capabilities = field_capability::kLabel | ((f.style & field_style::kLabelNoMnemonic) ? 0 : field_capability::kMnemonic);
  f.widget = border_widget(d.widget, f);
  char mnemonic = 0;
  f.text = yyDialogStrGetMnemonic(f.text, mnemonic);
  Args args;
  args.add(XmNrecomputeSize, False).add(XmNalignment, label_alignment(f.style)).add(XmNmarginWidth, 0);
  args.add(XmNmarginHeight, 0).add(XtNbackground, yyDialogScheme(3)).add(XmNtraversalOn, False);
  if (yyDialogRenderTable(f.fontIndex)) args.add(XmNrenderTable, yyDialogRenderTable(f.fontIndex));
  // Multi-line labels start at the top, as typed text does.
  f.valueWidget = XtCreateManagedWidget("Label", xmLabelWidgetClass, f.widget, args.a, args.n);
  XtVaSetValues(f.valueWidget, XmNchildType, XmFRAME_WORKAREA_CHILD, nullptr);
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

void create_picture(DialogRecord& d, FieldRecord& f) {
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
  if (kind == kPictureIcon || kind == kPictureBitmap) {
    int w = 0, h = 0;
    f.image = image_pixmap(f.identifier, kind == kPictureIcon ? 2 : 1, yyDialogScheme(3), w, h);
    if (f.image != 2) {
      f.imageResourceId = f.identifier;
      f.imageWidget = f.valueWidget;
      XtVaSetValues(f.valueWidget, XmNlabelType, XmPIXMAP, XmNlabelPixmap, f.image, nullptr);
    }
  }
}

void create_group(DialogRecord& d, FieldRecord& f) {
  f.textKind = 3;
  f.capabilities = field_capability::kGroup;
  Args args;
  base_args(args, f, false);
  args.add(XmNshadowType, XmSHADOW_ETCHED_IN).add(XtNbackground, yyDialogScheme(3)).add(XmNmarginWidth, 0).add(XmNmarginHeight, 0);
  if ((f.style & field_style::kGroupFlat) || zelvy_x::state().bFlatStyle)
    args.add(XmNtopShadowColor, yyDialogScheme(9)).add(XmNbottomShadowColor, yyDialogScheme(9)).add(XmNshadowThickness, 1);
  f.widget = XtCreateWidget("ZelvField", xmFrameWidgetClass, d.widget, args.a, args.n);
  const std::uint32_t align = f.style & field_style::kAlignMask;
  Args t;
  t.add(XmNchildType, XmFRAME_TITLE_CHILD).add(XmNchildVerticalAlignment, XmALIGNMENT_CENTER);
  t.add(XmNchildHorizontalAlignment,
        align == field_style::kAlignRight    ? XmALIGNMENT_END
        : align == field_style::kAlignCentred ? XmALIGNMENT_CENTER
                                              : XmALIGNMENT_BEGINNING);
  t.add(XtNbackground, yyDialogScheme(3)).add(XmNtraversalOn, False).add(XmNmarginHeight, 0);
  if (yyDialogRenderTable(f.fontIndex)) t.add(XmNrenderTable, yyDialogRenderTable(f.fontIndex));
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

Args& text_args(Args& args, const FieldRecord& f) {
  const bool edge = (f.style & field_style::kBorder) || (f.extendedStyle & field_style2::kEdges);
  // The line sits in the middle of a field taller than one line.
  const int shadow = (edge || !zelvy_x::state().bFlatStyle) ? 1 : 0;
  const int margin = (f.type == kString && (f.style & field_style::kMultiLine)) ? 0 : centred_margin(f, f.height - 2 * shadow);
  args.add(XmNmarginHeight, margin).add(XmNmarginWidth, 1).add(XmNcursorPositionVisible, False);
  args.add(XtNbackground, yyDialogScheme(15)).add(XtNforeground, yyDialogScheme(14));
  if (zelvy_x::state().bFlatStyle) {
    args.add(XmNshadowThickness, edge ? 1 : 0);
    if (edge) args.add(XmNtopShadowColor, yyDialogScheme(9)).add(XmNbottomShadowColor, yyDialogScheme(9));
  }
  args.add(XmNhighlightThickness, 0);
  return args;
}

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
    const int arrow = std::min(f.height, 14);
    Args outer;
    base_args(outer, f, false);
    outer.add(XmNmarginWidth, 0).add(XmNmarginHeight, 0).add(XmNresizePolicy, XmRESIZE_NONE).add(XtNbackground, yyDialogScheme(3));
    f.widget = XtCreateWidget("ZelvField", xmDrawingAreaWidgetClass, d.widget, outer.a, outer.n);
    args.add(XtNx, 0).add(XtNy, 0).add(XtNwidth, std::max(1, f.width - arrow)).add(XtNheight, f.height);
    args.add(XmNeditMode, XmSINGLE_LINE_EDIT);
    f.valueWidget = XtCreateManagedWidget("Text", xmTextWidgetClass, f.widget, args.a, args.n);
    for (int k = 0; k < 2; ++k) {
      Widget a = XtVaCreateManagedWidget(k == 0 ? "Up" : "Down", xmArrowButtonWidgetClass, f.widget, XtNx,
                                         f.width - arrow, XtNy, k * f.height / 2, XtNwidth, arrow, XtNheight,
                                         std::max(1, f.height / 2), XmNarrowDirection,
                                         k == 0 ? XmARROW_UP : XmARROW_DOWN, XmNtraversalOn, False,
                                         XmNhighlightThickness, 0, XmNshadowThickness, 1, XtNbackground, yyDialogScheme(17), nullptr);
      XtAddCallback(a, XmNactivateCallback, yyDialogSpinCB, k == 0 ? reinterpret_cast<XtPointer>(1) : nullptr);
      f.parts.push_back(a);
    }
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
  if (numeric && !initial.empty()) yyst2dblcheck(v, good, initial);
  yyDialogPutText(f, initial, v, {}, true);
  if (numeric && initial.empty()) t.defined = t.valid = false;
}

void free_pixmap_cb(Widget, XtPointer pixmap, XtPointer) {
  if (xdisplay()) XFreePixmap(xdisplay(), static_cast<Pixmap>(reinterpret_cast<std::uintptr_t>(pixmap)));
}

void create_button(DialogRecord& d, FieldRecord& f) {
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
  // An image button shows the image of its own identifier; its text becomes the tooltip.
  if (f.style & (field_style::kButtonIcon | field_style::kButtonBitmap)) {
    int w = 0, h = 0;
    f.image = image_pixmap(f.identifier, (f.style & field_style::kButtonIcon) ? 2 : 1, yyDialogScheme(17), w, h);
    if (f.image != 2) {
      f.imageResourceId = f.identifier;
      f.imageWidget = f.widget;
      f.tooltip = f.text;
      const Pixmap greyed = image_pixmap(f.identifier, (f.style & field_style::kButtonIcon) ? 2 : 1, yyDialogScheme(17), w, h, true);
      XtVaSetValues(f.widget, XmNlabelType, XmPIXMAP, XmNlabelPixmap, f.image, XmNlabelInsensitivePixmap, greyed, nullptr);
      if (greyed != 2) XtAddCallback(f.widget, XmNdestroyCallback, free_pixmap_cb, reinterpret_cast<XtPointer>(greyed));
    }
  }
  XtAddCallback(f.widget, XmNactivateCallback, yyDialogButtonCB, nullptr);
}

void create_toggle(DialogRecord& d, FieldRecord& f) {
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

void create_combo(DialogRecord& d, FieldRecord& f) {
  f.textKind = 0;
  f.capabilities = field_capability::kCombo;
  const std::uint32_t type = f.style & field_style::kComboKindMask;
  const DialogFontMetrics& fm = yyDialogFontMetrics(f.fontIndex);
  if (type != field_style::kComboSimple) f.height = fm.controlHeight;
  Args args;
  base_args(args, f);
  args.add(XmNcomboBoxType, type == field_style::kComboSimple         ? XmCOMBO_BOX
                            : type == field_style::kComboDropDownList ? XmDROP_DOWN_LIST
                                                                      : XmDROP_DOWN_COMBO_BOX);
  args.add(XmNmarginHeight, 0).add(XmNmarginWidth, 0).add(XmNhighlightThickness, 0).add(XtNbackground, yyDialogScheme(3));
  args.add(XmNshadowThickness, kComboShadow).add(XmNarrowSize, std::max(8, f.height - 4));
  if (zelvy_x::state().bFlatStyle) args.add(XmNtopShadowColor, yyDialogScheme(9)).add(XmNbottomShadowColor, yyDialogScheme(9));
  // The dialog's font, also in the drop-down list, whose rows must hold its descenders.
  if (yyDialogRenderTable(f.fontIndex)) args.add(XmNrenderTable, yyDialogRenderTable(f.fontIndex));
  f.widget = XtCreateWidget("ZelvField", xmComboBoxWidgetClass, d.widget, args.a, args.n);
  f.valueWidget = XtNameToWidget(f.widget, "*Text");
  if (!f.valueWidget) f.valueWidget = f.widget;
  else
    XtVaSetValues(f.valueWidget, XtNbackground, yyDialogScheme(15), XmNshadowThickness, 0, XmNcursorPositionVisible, False,
                  XmNmarginHeight, centred_margin(f, fm.controlHeight - 2 * kComboShadow), nullptr);
  f.textKind = 2;
  f.data = TextFieldData{};
  if (f.style & field_style::kComboUpperCase) f.data.kind = 1;
  else if (f.style & field_style::kComboLowerCase) f.data.kind = 2;
  if (type != field_style::kComboDropDownList) f.capabilities |= field_capability::kCursorWhenFocused;
  int items = 0;
  load_options(d, f, [&f, &items](XmString s) {
    XmComboBoxAddItem(f.widget, s, 0, False);
    ++items;
  });
  // A short list drops no taller than its entries.
  if (items > 0) XtVaSetValues(f.widget, XmNvisibleItemCount, std::min(items, kComboRows), nullptr);
  // Each row paints its background over the row above it: a pixel between rows
  // keeps the underscores of the row above ("HKL_T=0") in sight.
  if (Widget list = XtNameToWidget(f.widget, "*List")) XtVaSetValues(list, XmNlistSpacing, 2, nullptr);
  XtAddCallback(f.widget, XmNselectionCallback, yyDialogFieldChangedStateCB, nullptr);
  if (f.valueWidget != f.widget && type != field_style::kComboDropDownList) add_text_callbacks(f.valueWidget);
}

void create_list(DialogRecord& d, FieldRecord& f) {
  f.capabilities = field_capability::kList;
  Widget sw = XtVaCreateWidget("ZelvScroll", xmScrolledWindowWidgetClass, d.widget, XtNx, f.x, XtNy, f.y, XtNwidth,
                               std::max(1, f.width), XtNheight, std::max(1, f.height), XmNscrollingPolicy,
                               XmAPPLICATION_DEFINED, XmNvisualPolicy, XmVARIABLE, XmNscrollBarDisplayPolicy,
                               XmAS_NEEDED, XtNbackground, yyDialogScheme(3), nullptr);
  Args args;
  args.add(XmNselectionPolicy, (f.style & field_style::kListMultiple)   ? XmMULTIPLE_SELECT
                               : (f.style & field_style::kListExtended) ? XmEXTENDED_SELECT
                                                                         : XmBROWSE_SELECT);
  args.add(XmNlistSizePolicy, XmCONSTANT).add(XtNbackground, yyDialogScheme(15)).add(XmNhighlightThickness, 0);
  if (yyDialogRenderTable(f.fontIndex)) args.add(XmNrenderTable, yyDialogRenderTable(f.fontIndex));
  f.widget = XtCreateManagedWidget("ZelvField", xmListWidgetClass, sw, args.a, args.n);
  f.outerWidget = sw;
  load_options(d, f, [&f](XmString s) { XmListAddItemUnselected(f.widget, s, 0); });
  if (f.style & field_style::kListNotify) {
    XtAddCallback(f.widget, XmNbrowseSelectionCallback, yyDialogFieldChangedStateCB, nullptr);
    XtAddCallback(f.widget, XmNmultipleSelectionCallback, yyDialogFieldChangedStateCB, nullptr);
    XtAddCallback(f.widget, XmNextendedSelectionCallback, yyDialogFieldChangedStateCB, nullptr);
  }
}

void create_frame_like(DialogRecord& d, FieldRecord& f, std::uint32_t caps) {
  f.capabilities = caps;
  f.widget = border_widget(d.widget, f);
  XtVaSetValues(f.widget, XmNshadowThickness, 1, nullptr);
  f.valueWidget = XtVaCreateManagedWidget("Page", xmDrawingAreaWidgetClass, f.widget, XtNbackground, yyDialogScheme(3),
                                          XmNmarginWidth, 0, XmNmarginHeight, 0, XmNresizePolicy, XmRESIZE_NONE,
                                          nullptr);
}

void create_scale(DialogRecord& d, FieldRecord& f, bool progress) {
  std::array<int, 6> tb{};
  int value = 0, lo = 0, hi = 1;
  if (progress) {
    yyrcfieldprogressbar(d.resourceId, f.identifier, value, lo, hi);
  } else {
    yyrcfieldtrackbar(d.resourceId, f.identifier, tb);
    if (tb[0] || tb[1] || tb[2]) {
      value = tb[0];
      lo = tb[1];
      hi = tb[2];
    }
  }
  if (hi <= lo) hi = lo + 1;
  value = std::clamp(value, lo, hi);
  f.capabilities = progress ? field_capability::kProgress : field_capability::kTrackbar;
  const bool vertical = !progress && (f.style & field_style::kTrackbarVertical);
  Args args;
  base_args(args, f);
  args.add(XmNorientation, vertical ? XmVERTICAL : XmHORIZONTAL);
  args.add(XmNprocessingDirection, vertical ? XmMAX_ON_BOTTOM : XmMAX_ON_RIGHT);
  args.add(XmNminimum, lo).add(XmNmaximum, hi).add(XmNvalue, value).add(XmNshowValue, False);
  args.add(XtNbackground, yyDialogScheme(3)).add(XmNhighlightThickness, 0);
  if (progress) args.add(XmNeditable, False).add(XmNsliderVisual, XmTROUGH_COLOR).add(XmNtraversalOn, False);
  f.widget = XtCreateWidget("ZelvField", xmScaleWidgetClass, d.widget, args.a, args.n);
  if (!progress) XtAddCallback(f.widget, XmNvalueChangedCallback, yyDialogFieldChangedStateCB, nullptr);
}

// The grid's simple form: its column titles from the template dialog, its row
// labels, and one editable cell per visible row.
void create_grid(DialogRecord& d, FieldRecord& f) {
  f.capabilities = field_capability::kGrid;
  f.widget = border_widget(d.widget, f);
  XtVaSetValues(f.widget, XmNshadowThickness, 1, XmNshadowType, XmSHADOW_IN, nullptr);
  Widget area = XtVaCreateManagedWidget("Grid", xmDrawingAreaWidgetClass, f.widget, XtNbackground, yyDialogScheme(15),
                                        XmNmarginWidth, 0, XmNmarginHeight, 0, XmNresizePolicy, XmRESIZE_NONE,
                                        nullptr);
  f.valueWidget = area;
  int columns = -1, rows = -1, tmpl = -1, labelWidth = -1, bytes = 0;
  yyrcfieldgridcheck(d.resourceId, f.identifier, columns, rows, tmpl, labelWidth, bytes);
  if (columns <= 0 || rows <= 0) return;
  std::vector<int> pos(static_cast<std::size_t>(rows));
  std::vector<char> labels(static_cast<std::size_t>(std::max(bytes, 1)));
  yyrcfieldgridload(d.resourceId, f.identifier, pos, labels);
  RcDialog cells;
  int status = 0;
  if (tmpl > 0) yyrcdialogget(tmpl, cells, status);
  const DialogFontMetrics& fm = yyDialogFontMetrics(d.fontIndex);
  int lw = 0, rowh = 0, unused = 0;
  yyDialogUnitsToPixels(fm, std::max(0, labelWidth), 0, lw, unused);
  rowh = fm.charHeight + 6;
  int x = lw;
  XmRenderTable rt = yyDialogRenderTable(f.fontIndex);
  auto label = [&](const char* name, std::string_view text, int lx, int ly, int w, int h, unsigned char align) {
    Widget l = XtVaCreateManagedWidget(name, xmLabelWidgetClass, area, XtNx, lx, XtNy, ly, XtNwidth, std::max(1, w),
                                       XtNheight, h, XmNrecomputeSize, False, XmNalignment, align, XtNbackground,
                                       yyDialogScheme(17), XmNtraversalOn, False, XtNborderWidth, 0, nullptr);
    if (rt) XtVaSetValues(l, XmNrenderTable, rt, nullptr);
    yyDialogSetLabel(l, text);
    f.parts.push_back(l);
  };
  const int areaw = f.width - 2;
  label("Corner", "", 0, 0, lw, rowh, XmALIGNMENT_CENTER);
  for (int c = 0; c < columns && status == 0 && c < static_cast<int>(cells.fields.size()); ++c) {
    int cw = 0;
    yyDialogUnitsToPixels(fm, cells.fields[static_cast<std::size_t>(c)].width, 0, cw, unused);
    label("ColumnLabel", cells.fields[static_cast<std::size_t>(c)].text, x + 1, 0, std::min(cw, areaw - x - 1), rowh,
          XmALIGNMENT_CENTER);
    x += cw + 1;
  }
  for (int r = 0; (r + 1) * (rowh + 1) < f.height && r < rows; ++r) {
    const int p = pos[static_cast<std::size_t>(r)];
    label("RowLabel", p >= 0 ? &labels[static_cast<std::size_t>(p)] : "", 0, (r + 1) * (rowh + 1), lw, rowh,
          XmALIGNMENT_BEGINNING);
  }
}

void create_treeview(DialogRecord& d, FieldRecord& f) {
  f.capabilities = field_capability::kTreeview;
  Widget sw = XtVaCreateWidget("ZelvScroll", xmScrolledWindowWidgetClass, d.widget, XtNx, f.x, XtNy, f.y, XtNwidth,
                               std::max(1, f.width), XtNheight, std::max(1, f.height), XmNscrollingPolicy,
                               XmAUTOMATIC, XtNbackground, yyDialogScheme(3), nullptr);
  f.widget = XtVaCreateManagedWidget("ZelvField", xmContainerWidgetClass, sw, XmNlayoutType, XmOUTLINE,
                                     XtNbackground, yyDialogScheme(15), nullptr);
  f.outerWidget = sw;
}

}  // namespace

void yyDialogFieldCreateType(DialogRecord& d, FieldRecord& f) {
  switch (f.type) {
    case kLabel: create_label(d, f); break;
    case kPicture: create_picture(d, f); break;
    case kGroup: create_group(d, f); break;
    case kString: case kInteger: case kReal: case kDouble: create_text(d, f); break;
    case kButton: create_button(d, f); break;
    case kCheckbox: case kRadio: create_toggle(d, f); break;
    case kCombo: create_combo(d, f); break;
    case kList: create_list(d, f); break;
    case kTab: create_frame_like(d, f, field_capability::kTab); break;
    case kProgress: create_scale(d, f, true); break;
    case kGrid: create_grid(d, f); break;
    case kTrackbar: create_scale(d, f, false); break;
    case kTreeview: create_treeview(d, f); break;
    default: break;
  }
}

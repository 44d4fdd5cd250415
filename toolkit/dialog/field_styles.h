// The bits of a field's resource words, the run-time state bits the engine
// keeps in a field's style, and the capability bits a field type declares at
// creation for the common code. A dialog's own style bits stand in the
// kernel's dialog_attach.h. Free of X, so the rules and their tests use it too.
#pragma once

#include <cstdint>

namespace zelvy_dialog {

// Field type codes, as the resource tables and the field queries give them.
enum FieldType {
  kLabel = 1, kPicture, kGroup, kString, kInteger, kReal, kDouble, kButton, kCheckbox, kRadio,
  kCombo, kList, kTab, kProgress, kGrid, kTrackbar, kTreeview
};

// The first style word of a field. Bits mean different things by type, so the
// names carry the type they belong to unless all types share them.
namespace field_style {
// All types.
inline constexpr std::uint32_t kTabStop = 0x10000;
inline constexpr std::uint32_t kGroupStart = 0x20000;  // ends mnemonic search, starts a radio group
inline constexpr std::uint32_t kBorder = 0x800000;

// Run-time state, kept up to date by the state routines.
inline constexpr std::uint32_t kReadOnly = 0x800;
inline constexpr std::uint32_t kDisabled = 0x8000000;
inline constexpr std::uint32_t kVisible = 0x10000000;

// Label: the low bits are a kind, not a set of flags.
inline constexpr std::uint32_t kLabelKindMask = 0x7F;
inline constexpr std::uint32_t kLabelCentred = 1, kLabelRight = 2, kLabelNoWrap = 11;
inline constexpr std::uint32_t kLabelNoMnemonic = 0x80;
// Label, picture, grid: the border widget's sunken edge.
inline constexpr std::uint32_t kSunken = 0x1000;

// Picture: the low bits are its kind.
inline constexpr std::uint32_t kPictureKindMask = 0x7F;
inline constexpr std::uint32_t kPictureIcon = 3;
inline constexpr std::uint32_t kPictureFillDark = 4, kPictureFillGrey = 5, kPictureFillWhite = 6;
inline constexpr std::uint32_t kPictureFrameDark = 7, kPictureFrameGrey = 8, kPictureFrameWhite = 9;
inline constexpr std::uint32_t kPictureBitmap = 14;
inline constexpr std::uint32_t kPictureLineHorizontal = 16, kPictureLineVertical = 17;
inline constexpr std::uint32_t kPictureEtchedFrame = 18;
inline constexpr std::uint32_t kPictureKeepSize = 0x200;

// Group, button, check box and radio: the alignment of title or text.
inline constexpr std::uint32_t kAlignMask = 0x300;
inline constexpr std::uint32_t kAlignLeft = 0x100, kAlignRight = 0x200, kAlignCentred = 0x300;
inline constexpr std::uint32_t kGroupFlat = 0x8000;

// String (auto-scroll also numeric).
inline constexpr std::uint32_t kMultiLine = 0x4;
inline constexpr std::uint32_t kUpperCase = 0x8;
inline constexpr std::uint32_t kLowerCase = 0x10;
inline constexpr std::uint32_t kPassword = 0x20;
inline constexpr std::uint32_t kAutoScroll = 0x80;
inline constexpr std::uint32_t kWantsReturn = 0x1000;
inline constexpr std::uint32_t kHorizontalScrollBar = 0x100000;
inline constexpr std::uint32_t kVerticalScrollBar = 0x200000;

// Push button.
inline constexpr std::uint32_t kDefaultButton = 0x1;
inline constexpr std::uint32_t kButtonIcon = 0x40, kButtonBitmap = 0x80;
inline constexpr std::uint32_t kButtonFlat = 0x8000;

// Check box and radio.
inline constexpr std::uint32_t kPushLike = 0x1000;

// Combo: the low bits are its kind; 0 counts as a drop-down.
inline constexpr std::uint32_t kComboKindMask = 0x3;
inline constexpr std::uint32_t kComboSimple = 1, kComboDropDown = 2, kComboDropDownList = 3;
inline constexpr std::uint32_t kComboAutoScroll = 0x40;
inline constexpr std::uint32_t kComboKeepScrollBar = 0x800 | kVerticalScrollBar;
inline constexpr std::uint32_t kComboUpperCase = 0x2000, kComboLowerCase = 0x4000;

// List.
inline constexpr std::uint32_t kListNotify = 0x1;
inline constexpr std::uint32_t kListMultiple = 0x8;
inline constexpr std::uint32_t kListTabStops = 0x80;
inline constexpr std::uint32_t kListExtended = 0x800;
inline constexpr std::uint32_t kListKeepScrollBar = 0x1000 | kVerticalScrollBar;

// Tab.
inline constexpr std::uint32_t kTabButtons = 0x100, kTabMultiLine = 0x200;
inline constexpr std::uint32_t kTabAlignment1 = 0x400, kTabAlignment2 = 0x800;
inline constexpr std::uint32_t kTabFocus1 = 0x1000, kTabFocus2 = 0x8000;

// Grid (scroll bars as for strings).
inline constexpr std::uint32_t kGridReadOnlyColour = 0x10, kGridReportClipboard = 0x40;
inline constexpr std::uint32_t kGridColumnLabels = 0x200, kGridRowLabels = 0x400, kGridReadOnly = 0x800;
inline constexpr std::uint32_t kGridWantsReturn = 0x1000, kGridWantsTab = 0x4000, kGridRowWrap = 0x8000;

// Trackbar.
inline constexpr std::uint32_t kTrackbarTicks = 0x1;
inline constexpr std::uint32_t kTrackbarVertical = 0x2;
}  // namespace field_style

// The second style word of a field: the edges of the border widget.
namespace field_style2 {
inline constexpr std::uint32_t kModalFrame = 0x1;
inline constexpr std::uint32_t kClientEdge = 0x200;
inline constexpr std::uint32_t kStaticEdge = 0x20000;
inline constexpr std::uint32_t kEdges = kModalFrame | kClientEdge | kStaticEdge;
}  // namespace field_style2

// The third word of a field.
namespace field_extra {
inline constexpr std::uint32_t kNoDoubleClick = 0x1;  // list, treeview
inline constexpr std::uint32_t kTreeToggleOnSelect = 0x2;  // treeview: selecting a branch opens or closes it
inline constexpr std::uint32_t kTabContextSelects = 0x8;   // tab: a context click selects the tab too
inline constexpr std::uint32_t kRightSelects = 0x8;   // the right button selects too
inline constexpr std::uint32_t kSpinner = 0x8000;     // numeric fields
}  // namespace field_extra

// What a field type can do, declared at creation and read by the common code.
namespace field_capability {
inline constexpr std::uint32_t kMnemonic = 0x1;
inline constexpr std::uint32_t kTakesFocus = 0x2;  // focus handler and Tab translations
inline constexpr std::uint32_t kMnemonicActivates = 0x4;
inline constexpr std::uint32_t kTabReach = 0x8;
inline constexpr std::uint32_t kValueChangedCallback = 0x10;
inline constexpr std::uint32_t kReadOnlyState = 0x20;
inline constexpr std::uint32_t kCanDisable = 0x40;
inline constexpr std::uint32_t kGeometryNotOnMain = 0x80;
inline constexpr std::uint32_t kBackgroundFollowsState = 0x100;
inline constexpr std::uint32_t kGeometryOnParent = 0x200;  // with kGeometryNotOnMain
inline constexpr std::uint32_t kSpinner = 0x800;
inline constexpr std::uint32_t kCursorWhenFocused = 0x1000;
inline constexpr std::uint32_t kShowsImage = 0x2000;
inline constexpr std::uint32_t kPictureNoLabel = 0x4000;
inline constexpr std::uint32_t kForegroundSettable = 0x8000;
inline constexpr std::uint32_t kBackgroundSettable = 0x10000;
inline constexpr std::uint32_t kReturnToWidget = 0x20000;
inline constexpr std::uint32_t kPictureRecomputes = 0x40000;
inline constexpr std::uint32_t kMouseEvents = 0x80000;
inline constexpr std::uint32_t kGridCell = 0x100000;

inline constexpr std::uint32_t kColours = kForegroundSettable | kBackgroundSettable;

// The words each type starts from at creation.
inline constexpr std::uint32_t kLabel = kMouseEvents | kColours | kCanDisable;
inline constexpr std::uint32_t kPicture = kMouseEvents | kShowsImage;
inline constexpr std::uint32_t kGroup = kColours | kShowsImage | kCanDisable | kMnemonic;
inline constexpr std::uint32_t kText = kColours | kCursorWhenFocused | kBackgroundFollowsState | kCanDisable |
                                       kReadOnlyState | kTabReach | kTakesFocus;
inline constexpr std::uint32_t kScrolledText = kGeometryNotOnMain | kGeometryOnParent;
inline constexpr std::uint32_t kButton = kShowsImage | kCanDisable | kTabReach | kMnemonicActivates |
                                         kTakesFocus | kMnemonic;
inline constexpr std::uint32_t kToggle = kButton | kValueChangedCallback;
inline constexpr std::uint32_t kCombo = kColours | kBackgroundFollowsState | kCanDisable | kValueChangedCallback |
                                        kTabReach | kTakesFocus;
inline constexpr std::uint32_t kList = kColours | kGeometryOnParent | kBackgroundFollowsState |
                                       kGeometryNotOnMain | kCanDisable | kTabReach | kTakesFocus;
inline constexpr std::uint32_t kTab = kCanDisable | kTabReach;
inline constexpr std::uint32_t kProgress = 0;
inline constexpr std::uint32_t kGrid = kColours | kCanDisable | kReadOnlyState | kTabReach;
inline constexpr std::uint32_t kTrackbar = kBackgroundSettable | kCanDisable | kValueChangedCallback | kTabReach |
                                           kTakesFocus;
inline constexpr std::uint32_t kTreeview = kBackgroundFollowsState | kCanDisable | kTabReach | kTakesFocus;

// The record's capability words are part of its contract: naming them changes no value.
static_assert(kLabel == 0x98040);
static_assert(kPicture == 0x82000);
static_assert(kGroup == 0x1A041);
static_assert(kText == 0x1916A);
static_assert(kScrolledText == 0x280);
static_assert(kButton == 0x204F);
static_assert(kToggle == 0x205F);
static_assert(kCombo == 0x1815A);
static_assert(kList == 0x183CA);
static_assert(kTab == 0x48);
static_assert(kGrid == 0x18068);
static_assert(kTrackbar == 0x1005A);
static_assert(kTreeview == 0x14A);
}  // namespace field_capability

}  // namespace zelvy_dialog

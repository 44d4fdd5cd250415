// The options dialog of the selected hardcopy driver, reached from the page
// setup dialog: output file, image format, copies, line width and colours,
// with only the fields the driver uses enabled.
#include "toolkit/comdlg/page_setup.h"

#include "toolkit/comdlg/file_selector.h"
#include "toolkit/comdlg/message_box.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/kernel/message.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <vector>

namespace {

constexpr int kDialog = 1702;
enum Field : int {
  kOk = 1, kCancel = 2, kFile = 1002, kBrowse = 1003, kFormat = 1005, kCopies = 1007, kLineWidth = 1009,
  kAsDrawn = 1011, kInverted = 1012, kSwapped = 1013, kMonochrome = 1014, kEncapsulated = 1015,
};
constexpr int kDisabled = 0, kEnabled = 1;
constexpr int kDriverPostScript = 2, kDriverSvg = 3, kDriverImage = 6, kDriverDxf = 8, kDriverCgm = 9;

constexpr std::array<const char*, 6> kFormatNames{"PCX", "BMP", "BMP compressed", "PNG", "JPEG", "PNG with alpha"};
constexpr std::array<const char*, 6> kFormatExtensions{".pcx", ".bmp", ".bmp", ".png", ".jpg", ".png"};

std::string lower(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

}  // namespace

std::string_view yyhcfilter(int driver, std::string_view& title) {
  switch (driver) {
    case kDriverSvg: title = "SVG file"; return "Scalable Vector Graphics file|*.svg|";
    case kDriverImage:
      title = "BMP/PCX/PNG bit image file";
      return "Windows bitmap (*.bmp)|*.bmp|PC Paintbrush (*.pcx)|*.pcx|Portable network graphics (*.png)|*.png|"
             "JPEG/JFIF (*.jpg,*.jpeg)|*.jpg;*.jpeg|";
    case kDriverDxf: title = "DXF file"; return "AutoCAD DXF file|*.dxf|";
    case kDriverCgm: title = "CGM file"; return "Computer Graphics Metafile|*.cgm|";
    default: title = "Output file"; return "All files|*|";
  }
}

int yyhcformatfromname(std::string_view name) {
  const auto dot = name.rfind('.');
  if (dot == std::string_view::npos) return -1;
  const std::string ext = lower(name.substr(dot + 1));
  if (ext == "pcx") return 0;
  if (ext == "bmp") return 1;
  if (ext == "png") return 3;
  if (ext == "jpg" || ext == "jpeg") return 4;
  return -1;
}

std::string yyhcnamewithformat(std::string_view name, int format) {
  const auto dot = name.rfind('.');
  const auto slash = name.rfind('/');
  const std::string_view stem =
      dot == std::string_view::npos || (slash != std::string_view::npos && dot < slash) ? name : name.substr(0, dot);
  return std::string(stem) + kFormatExtensions[static_cast<std::size_t>(std::clamp(format, 0, 5))];
}

int yycomdlghcoptions() {
  HardcopyOptionsEntry e;
  const auto& hooks = yyHardcopyHooks();
  if (!hooks.get || !hooks.get(e) || e.driver == 0) return kAnswerCancel;
  auto& zd = zelvy_data::data();
  const int previous = zd.icurdialog;
  WDialogLoad(kDialog);
  if (zd.icurdialog != kDialog) return kAnswerCancel;

  WDialogPutString(kFile, e.file);
  const std::vector<std::string> formats(kFormatNames.begin(), kFormatNames.end());
  WDialogPutMenu(kFormat, formats, static_cast<int>(formats.size()), std::clamp(e.format, 0, 5) + 1);
  WDialogPutInteger(kCopies, e.copies);
  WDialogPutInteger(kLineWidth, e.linewidth);
  WDialogPutRadioButton(e.colour == 1 ? kInverted : e.colour == 2 ? kSwapped : kAsDrawn);
  WDialogPutCheckBox(kMonochrome, e.monochrome ? 1 : 0);
  WDialogPutCheckBox(kEncapsulated, e.encapsulated ? 1 : 0);
  const bool ps = e.driver == kDriverPostScript;
  WDialogFieldState(kFormat, e.driver == kDriverImage ? kEnabled : kDisabled);
  WDialogFieldState(kEncapsulated, ps ? kEnabled : kDisabled);
  WDialogFieldState(kCopies, ps ? kEnabled : kDisabled);
  for (int f : {kAsDrawn, kInverted, kSwapped}) WDialogFieldState(f, ps ? kEnabled : kDisabled);
  const bool lines = e.driver != kDriverImage;
  WDialogFieldState(kLineWidth, lines ? kEnabled : kDisabled);

  const int keepChanged = WInfoMessage(FieldChanged);
  WMessageEnable(FieldChanged, 1);
  wdialogshowcommon(kFile, 3, 0);
  int result = 0, type = 0;
  MessageRecord m;
  while (result == 0) {
    WMessage(type, m);
    if (m.Win != kDialog) continue;
    WDialogSelect(kDialog);
    if (type == CloseRequest) {
      result = kAnswerCancel;
    } else if (type == FieldChanged && m.Value2 == kFormat && e.driver == kDriverImage) {
      // The file's extension follows the format.
      int option = 1;
      std::string name;
      WDialogGetMenu(kFormat, option);
      WDialogGetString(kFile, name);
      name.erase(name.find_last_not_of(' ') + 1);
      if (!name.empty()) WDialogPutString(kFile, yyhcnamewithformat(name, option - 1));
    } else if (type == PushButton) {
      if (m.Value1 == kCancel) {
        result = kAnswerCancel;
      } else if (m.Value1 == kBrowse) {
        std::string_view title;
        const std::string_view filter = yyhcfilter(e.driver, title);
        std::string name;
        WDialogGetString(kFile, name);
        WSelectFile(filter, 2, name, title);
        WDialogSelect(kDialog);
        if (zelvy_comdlg::data().icdlgbut == kAnswerOk) {
          WDialogPutString(kFile, name);
          // The format follows the chosen file's extension.
          if (const int f = yyhcformatfromname(name); f >= 0 && e.driver == kDriverImage) WDialogPutOption(kFormat, f + 1);
        }
      } else if (m.Value1 == kOk) {
        int option = 1, position = 1, state = 0;
        WDialogGetString(kFile, e.file);
        e.file.erase(e.file.find_last_not_of(' ') + 1);
        WDialogGetMenu(kFormat, option);
        e.format = option - 1;
        WDialogGetInteger(kCopies, e.copies);
        WDialogGetInteger(kLineWidth, e.linewidth);
        WDialogGetRadioButton(kAsDrawn, position);
        e.colour = std::clamp(position - 1, 0, 2);
        WDialogGetCheckBox(kMonochrome, state);
        e.monochrome = state != 0;
        WDialogGetCheckBox(kEncapsulated, state);
        e.encapsulated = state != 0;
        if (hooks.set) hooks.set(e);
        result = kAnswerOk;
      }
    }
  }
  WDialogSelect(kDialog);
  WDialogUnload();
  WMessageEnable(FieldChanged, keepChanged);
  if (previous != 0) WDialogSelect(previous);
  else zd.icurdialog = 0;
  return result;
}

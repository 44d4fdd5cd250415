// The toolkit's error state: recording, the code table and the reports.
#include "toolkit/base/error.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "toolkit/base/check.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/zelvy_data.h"

namespace {

struct CodeText {
  int code;
  const char* text;
};

constexpr CodeText kCodes[] = {
    {1, "Error opening file or device"},
    {2, "Error reading/writing file or device"},
    {3, "Error closing file or device"},
    {4, "Number too large in string to numeric conversion"},
    {10, "No substring found"},
    {11, "More than one decimal point in number"},
    {12, "Invalid character detected"},
    {13, "Operating system error"},
    {16, "Graphics unit range is invalid"},
    {18, "Numeric to string conversion error"},
    {20, "Circle/ellipse radius <=0, height ratio<=0 or arc angle=0"},
    {21, "Length of axis-parallel side of a parallelogram is =<0"},
    {22, "Width/height=0 for a rectangle/triangle/parallelogram"},
    {23, "No program name specified to IOsExecute"},
    {25, "Too many bytes in char set during conversion from ASCII"},
    {27, "Image file format not supported"},
    {28, "Borders cross in simple polygon definition"},
    {34, "Requested page size too large for raster image buffer"},
    {39, "Failed to select requested colour"},
    {40, "Number of files matched by IOsDirInfo exceeds array size"},
    {42, "Unknown colour name/number specified to IGrColour/IGrColourN"},
    {43, "Contour heights must increase monotonically"},
    {44, "Invalid X and/or Y range in IGrArea/IGrViewport/IGrReplayArea"},
    {46, "No graphics hardcopy driver currently selected"},
    {49, "Fill too complex in IGrPolygonComplex"},
    {54, "Mismatched driver/device in hardcopy options file"},
    {55, "Source and target file names same in copy command"},
    {58, "Min value greater than max value in IPgHighLow"},
    {63, "Windows printer not available"},
    {64, "Bit image transfer failed in IGrPrintImage"},
    {66, "Invalid character code in WGrTextWidth"},
    {1001, "Invalid menu item"},
    {1002, "Menu or toolbar not present in resource"},
    {1003, "Invalid window handle"},
    {1004, "Common dialog function call failed"},
    {1005, "No dialog currently selected"},
    {1006, "Invalid field identifier or field type mismatch"},
    {1007, "Dialog not present in resource"},
    {1008, "Unable to select specified dialog"},
    {1009, "Attempt to store an out of range dialog field value"},
    {1010, "Field value undefined"},
    {1011, "Option number out of range or invalid item ID"},
    {1012, "Invalid tab number specified"},
    {1013, "Invalid range specified for progress bar"},
    {1014, "Invalid dialog mode"},
    {1015, "Invalid resource image identifier"},
    {1016, "Unable to display window/dialog, parent window hidden"},
    {1017, "Cell co-ordinates out of range"},
    {1018, "Grid size limits exceeded"},
    {1019, "Invalid target drawing surface"},
    {1020, "Memory bitmap creation failed"},
    {1021, "Invalid memory bitmap handle"},
    {1022, "Only child windows can be converted into editors or viewers"},
    {1023, "Variable too small to receive text"},
    {1024, "Invalid editor mode"},
    {1025, "Editor cannot have menu in InsideParent child window"},
    {1026, "User menu not supported with modal editor or grid window"},
    {1027, "General problem initializing editor"},
    {1028, "Current window is not a text editor"},
    {1029, "Invalid range specified for trackbar"},
    {1030, "General help viewer error"},
    {1031, "Not a valid help file extension"},
    {1032, "Editor does not have a command line"},
    {1033, "Editor cannot have command line in InsideParent child window"},
    {1034, "External process timed out before completion"},
    {1035, "Failed to enable OpenGL graphics"},
    {1036, "Cannot destroy memory bitmap while in use by bitmap viewer"},
    {1037, "Specified memory bitmap is already in use"},
    {1038, "Window already converted to a different type"},
    {1039, "Invalid bitmap viewer mode"},
    {1040, "General problem initializing bitmap viewer"},
    {1041, "X server modal dialog/window pixmap resources are low"},
    {1042, "X server modal dialog/window pixmap resources are exhausted"},
    {1043, "Invalid bitmap bitwise mode"},
    {1044, "Zlib compression/decompression error"},
    {1045, "Specified dialog has wrong style to be combined with a window"},
    {1046, "Parent window is combined with a dialog"},
    {1047, "Current dialog is combined with a window"},
    {1048, "Item identifier already exists in treeview field"},
    {1049, "Treeview item is not a branch"},
    {1050, "Invalid pre-defined registry key"},
    {1051, "Grid window cannot have menu in InsideParent child window"},
    {1052, "Invalid grid window mode"},
    {1053, "General problem initializing grid window"},
    {1054, "Data file contains more rows or columns than grid field"},
    {1055, "Unable to match value from file with menu cell option"},
    {1056, "Parent window is converted to a special type"},
    {1057, "Cannot convert window when InsideParent windows exist"},
    {1058, "No name specified for user-defined font"},
    {1059, "Memory metafile creation failed"},
    {1060, "Invalid memory metafile handle"},
    {1061, "Unsupported metafile format"},
    {1062, "CGM memory metafile full"},
    {1063, "Cannot save image when drawable is a metafile"},
    {1064, "Cannot print image when drawable is a metafile"},
    {1065, "Bitmap operation on memory metafile not allowed"},
    {1066, "Bitmap put/get operation failed"},
    {1067, "Invalid editor buffer"},
    {1068, "No more editor buffers available"},
    {1069, "Cannot hide or unload a sub-dialog"},
    {1070, "Cannot set format in non-RTF editor window"},
    {1071, "Graphical input not allowed in memory bitmap/metafile"},
    {1072, "API error during bit image save"},
    {1073, "3D model vertex limit exceeded. Increase MAXVERTEX."},
    {1074, "3D model facet limit exceeded. Increase MAXFACET."},
    {1075, "3D model material number invalid"},
    {1076, "3D model workspace full. Increase MAXWORK."},
    {1077, "3D model internal error: Workspace empty."},
    {1078, "Unsupported 3D model file format"},
    {1079, "Insufficient space to add data from 3D model file"},
    {1080, "Unable to add one or more materials from a 3D model file"},
    {1081, "HTML Help support DLL (ZELVAX/ZELVAX64) not found"},
    {1082, "MAPI32.DLL not found. Unable to send email"},
    {1083, "Error invoking email program"},
    {1084, "Error encoding email attachments"},
    {1085, "At least one email recipient must be specified"},
    {1086, "Unsupported or invalid sound file"},
    {1087, "Too many dialogs"},
    {1088, "Dialog creation failed"},
    {1089, "Facet polygon too large in 3D model"},
    {1090, "Invalid memory bitmap rotation angle"},
    {1091, "Dialog is already loaded"},
    {1092, "Editor does not have a command history"},
    {1093, "Unable to locate home directory"},
    {1094, "Error accessing the clipboard"},
    {1095, "Clipboard data type mismatch"},
    {1096, "Current window is not a special purpose window"},
    {1097, "Current drawable cannot display a cursor"},
    {1098, "ODBC interface not initialised"},
    {1099, "Specified database record does not exist"},
    {1100, "Invalid database handle"},
    {1101, "Too many parts in 3D model"},
    {1102, "3D model part number invalid"},
    {1103, "3D model vertex number invalid. Not in current part."},
    {1104, "Part definitions not contiguous in 3D DXF file"},
    {1105, "3D model facet number invalid"},
    {1106, "SQL statement execution failed"},
    {1107, "Invalid memory bitmap stretch mode"},
    {1108, "Fetching a rowset failed in ODBC interface"},
    {1109, "Image size too large"},
    {1110, "Database value(s) undefined"},
    {1111, "Grid column type mismatch"},
    {1112, "Badly formed 3D model facet"},
    {1113, "Invalid number of grid rows"},
    {1114, "Error in call to ALSA sound api"},
    {1115, "Editor font not found"},
    {1116, "Invalid editor font number"},
    {1117, "Dialog is not resizable"},
    {1118, "Editor line number out of range"},
    {1119, "Invalid palette size"},
    {1120, "JPEG library compression/decompression error"},
    {1121, "Too many windows"},
    {1122, "Window creation failed"},
    {1123, "Too many memory bitmaps"},
    {1124, "Too many memory metafiles"},
    {1125, "Error in call to MCI multimedia api"},
    {1126, "Invalid menu property type or state"},
    {1127, "Invalid day or month number"},
    {1128, "3D model polyline limit exceeded. Increase MAXLINE."},
    {1129, "Badly formed 3D model polyline"},
    {1130, "3D model line number invalid"},
    {1131, "Invalid memory icon handle"},
    {1132, "Too many memory icons"},
    {1133, "Invalid memory icon size"},
    {1134, "Invalid memory bitmap size"},
    {1135, "Invalid memory metafile size"},
    {1136, "Bad block length in Z3D file"},
    {1137, "Too many BLOCK sections in a DXF file"},
    {1138, "3D model material undefined"},
    {1139, "Invalid record in STL file"},
    {1140, "Editor is not multi-buffer"},
};

const char* code_text(int code) {
  auto it = std::lower_bound(std::begin(kCodes), std::end(kCodes), code,
                             [](const CodeText& c, int v) { return c.code < v; });
  return (it != std::end(kCodes) && it->code == code) ? it->text : "";
}

std::string zlib_text(int status) {
  switch (status) {
    case 2: return "need dictionary";
    case 1: return "stream end";
    case -1: return "file error";
    case -2: return "stream error";
    case -3: return "data error";
    case -4: return "insufficient memory";
    case -5: return "buffer error";
    case -6: return "incompatible version";
    default: return "";
  }
}

std::string opengl_text(int status) {
  switch (status) {
    case 1: return "OpenGL not supported on current display";
    case 2: return "Failed to find suitable OpenGL visual";
    case 3: return "Failed to create OpenGL rendering context";
    case 4: return "Failed to attach GLX context to target drawable";
    case 10: return "Failed to create color buffer pixmap";
    case 11: return "Failed to create GLX rendering pixmap";
    case 21: return "Failed to create target OpenGL field";
    default: return "";
  }
}

std::string cut_at_nul(std::string s) {
  auto nul = s.find('\0');
  if (nul != std::string::npos) s.resize(nul);
  return s;
}

// Category text, or nullopt-like "leave as it was" signalled by the flag.
std::string category_text(int code, int category, bool& known) {
  known = true;
  switch (category) {
    case 1: return code_text(code);
    case 2:
    case 6: {
      if (code == 0) return "";
      std::string s = std::strerror(code);
      if (s.size() > 512) s.resize(512);
      return cut_at_nul(s);
    }
    case 3: return zlib_text(code);
    case 4: return opengl_text(code);
    case 5: {
      std::string st = zelvy_data::data().sqlstate;
      st.resize(5, ' ');
      return cut_at_nul(st + " " + zelvy_data::data().sqlmessage);
    }
    case 7: return cut_at_nul(zelvy_data::data().soundmessage);
    case 8: return cut_at_nul(zelvy_data::data().jpegmessage);
    case 9: return "";
    default: known = false; return "";
  }
}

// Category of the detail that follows the text of some codes, 0 for none.
int detail_category(int code) {
  switch (code) {
    case 1: case 2: case 13: case 1072: case 1084: return 2;
    case 1044: return 3;
    case 1035: return 4;
    case 1106: case 1108: return 5;
    case 1083: return 6;
    case 1114: return 7;
    case 1120: return 8;
    case 1125: return 9;
    default: return 0;
  }
}

struct FileCloser {
  void operator()(std::FILE* f) const { if (f) std::fclose(f); }
};
std::unique_ptr<std::FILE, FileCloser> debug_file;

void yyDebug(const std::string& line) {
  if (!debug_file) {
    for (const char* name : {"debug", "debug.txt", "debug.dat"}) {
      debug_file.reset(std::fopen(name, "w"));
      if (debug_file) break;
    }
  }
  if (!debug_file) return;
  std::fprintf(debug_file.get(), "%s\n", line.c_str());
  std::fflush(debug_file.get());
}

// Where reports at debug levels 3 and 4 go while those layers are up.
struct Sinks {
  ErrorStatusSink status = nullptr;
  ErrorBoxSink box = nullptr;
};
Sinks& sinks() {
  static Sinks s;
  return s;
}

}  // namespace

namespace zelvy_data {
Data& data() {
  static Data d;
  return d;
}
}  // namespace zelvy_data

namespace zelvy_comdlg {
Data& data() {
  static Data d;
  return d;
}
}  // namespace zelvy_comdlg

void yySetErrorStatusSink(ErrorStatusSink sink) { sinks().status = sink; }
void yySetErrorBoxSink(ErrorBoxSink sink) { sinks().box = sink; }

void yyseterror(int code) { zelvy_data::data().ierr = code; }

std::string yyerrortext(int code, std::string_view routine) {
  const auto& d = zelvy_data::data();
  std::string text;
  bool internal = routine.size() >= 2 &&
                  ((routine.substr(0, 2) == "YY" || routine.substr(0, 2) == "yy" ||
                    routine.substr(0, 2) == "XX" || routine.substr(0, 2) == "xx"));
  text = internal ? "Internal routine:" : "Routine:";
  text += trimmed(routine);
  char num[16];
  std::snprintf(num, sizeof num, "%4d", code);
  std::string codefield = num;
  if (codefield.size() > 4) codefield = std::string(4, '*');
  text += " Error=" + codefield + ":";
  text += code_text(code);
  // Codes 1 and 2 carry the system's text only when a direct system call failed.
  const int cat = (code == 1 || code == 2) && d.ioetype != 2 ? 0 : detail_category(code);
  if (cat != 0 && text.size() < 298) {
    const int status = code <= 2 ? d.istat : d.iapierr;
    bool known = false;
    text += ": " + category_text(status, cat, known);
  }
  if (text.size() > 300) text.resize(300);
  return text;
}

void yyerror(int code, std::string_view routine) {
  auto& d = zelvy_data::data();
  yyseterror(code);
  if (d.idbug < 1) return;
  const int saved_err = d.ierr, level = d.idbug;
  d.idbug = 0;  // an error inside the report is not reported again
  std::string text = yyerrortext(code, routine);
  switch (level) {
    case 1:
      std::printf("%s\n", text.c_str());
      std::fflush(stdout);
      break;
    case 2:
      yyDebug(text);
      break;
    case 3:
      if (sinks().status) sinks().status(text);
      else std::printf("%s\n", text.c_str());
      break;
    default:
      if (sinks().box) {
        if (sinks().box(text)) std::exit(0);  // Cancel in the "Library Error" box
      } else {
        std::printf("%s\n", text.c_str());
        std::fflush(stdout);
      }
      break;
  }
  d.ierr = saved_err;
  d.idbug = level;
}

int WInfoError(int item) {
  auto& d = zelvy_data::data();
  auto take = [](int& v) { return std::exchange(v, 0); };
  switch (item) {
    case 1: return take(d.ierr);
    case 2: return take(d.istat);
    case 3: return take(d.iapierr);
    case 4: return d.idbug;
    case 5: return d.ioetype;
    case 6: return take(zelvy_comdlg::data().icderr);
    default: return 0;
  }
}

void WInfoErrorMessage(int code, std::string& text, int category) {
  bool known = false;
  std::string s = category_text(code, category, known);
  if (!known) return;
  assign_out(text, s);
}

void IDebugLevel(int level) {
  if (level >= 0 && level <= 4) zelvy_data::data().idbug = level;
}

void zelv_check_failed(const char* condition, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: check failed: %s\n", file, line, condition);
  std::fflush(stderr);
  std::abort();
}

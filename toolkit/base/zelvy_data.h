// zelvy_data and zelvy_comdlg: the toolkit's module records, one instance each
// per process, reached through their accessors. Plain data, no X: every layer
// of the toolkit reads them, from the error state up to the windows.
#pragma once

#include "toolkit/base/check.h"

#include <array>
#include <cstddef>
#include <string>

namespace zelvy_data {

// Printed text output: the area on the paper and where the document goes.
// All sizes in points.
struct PageSetup {
  int Width = 539, Height = 756;   // the printed area
  int XOffset = 28, YOffset = 43;  // from the paper's left and top
  int LeftMargin = 28, TopMargin = 43, RightMargin = 28, BottomMargin = 43;
  int Orientation = 0;             // 0 portrait, 1 landscape
  int Paper = 5;                   // 1-based row of kPaperSizes
  int Copies = 1;
  int Destination = 1;             // 1 the print command, otherwise the file
  std::string Command = "lpr";
  std::string File = "untitled.ps";
};

struct PaperSize {
  int width, height;  // portrait, in points
  const char* name;
};
constexpr int kPaperCount = 22;
constexpr std::array<PaperSize, kPaperCount> kPaperSizes{{
    {2384, 3370, "A0"}, {1684, 2384, "A1"}, {1190, 1684, "A2"}, {842, 1190, "A3"},
    {595, 842, "A4"}, {420, 595, "A5"}, {522, 756, "Executive"}, {612, 1008, "Legal"},
    {612, 792, "Letter"}, {792, 1224, "Tabloid"}, {2837, 4010, "B0"}, {2002, 2837, "B1"},
    {1418, 2002, "B2"}, {1001, 1418, "B3"}, {708, 1001, "B4"}, {499, 708, "B5"},
    {2920, 4127, "B0 (JIS)"}, {2064, 2920, "B1 (JIS)"}, {1460, 2064, "B2 (JIS)"},
    {1032, 1460, "B3 (JIS)"}, {729, 1032, "B4 (JIS)"}, {516, 729, "B5 (JIS)"},
}};
// The row of a 1-based paper index; A4 for an index out of the table.
constexpr const PaperSize& paper_size(int index) {
  constexpr int kA4 = 5;
  return kPaperSizes[static_cast<std::size_t>((index >= 1 && index <= kPaperCount ? index : kA4) - 1)];
}

// Text printing options (101..110 of IGrHardcopyOptions), 0-based here.
constexpr int kTextOptionBase = 101;
constexpr int kTextOptions = 10;
constexpr std::array<int, kTextOptions> kTextOptionDefaults{80, 60, 1, 999999, 1, 0, 0, 8, 0, 3};

constexpr int kMaxWindow = 50;  // child handles run from 1 to 50, 0 is the root window
constexpr int kMaxDialog = 100; // dialogs loaded at one time

struct Data {
  // Error state.
  int ierr = 0;     // last error code, 0 when none
  int istat = 0;    // run-time status that goes with codes 1 and 2
  int iapierr = 0;  // operating-system or library status for codes above 2
  int idbug = 0;    // debug level 0..4
  int ioetype = 0;  // 1 run-time file i/o failed, 2 a direct system call failed
  // Stored texts of the last SQL, sound-library and JPEG-library failures,
  // shown as detail of their error codes.
  std::string sqlstate, sqlmessage, soundmessage, jpegmessage;

  // Start-up and window state shared across the toolkit.
  bool brootopen = false;
  int iwinhandle = 0;
  int icurdialog = 0;
  int iscwid = 0, ischgt = 0, iscwidmm = 0, ischgtmm = 0;
  int isccol = 0;  // -1: the display could not be opened

  std::array<std::string, 2> cdefdir{};  // charsets, base directory
  std::array<std::string, 3> cdeffile{"", "", "standard.chr"};
  std::array<std::string, 2> cbrowser{"firefox", "evince"};  // HTML, PDF viewers
  std::array<int, 3> ireqhw{0, 0, 0};
  std::array<int, 3> lfn{40, 41, 42};
  char cdirsep = '/';
  int idecimal = 0;
  char cdecimal = ' ';
  char cjusnum = 'R';
  char ctagchr = ' ';
  int idirinfo = 1;
  int icmodeldef = 1;
  float asprat = 1.32f;
  std::array<int, 2> imgopt{80, 75};
  int iundef = -999, iundefdb = -999;
  float rundef = -999.0f, rundefdb = -999.0f;
  double dundef = -999.0, dundefdb = -999.0;
  int idefpapersize = 5;
  int maxbitmap = 0, maxicon = 0, maxmeta = 0;

  zelv::Slots<int, kMaxWindow + 1> iwflags = [] {
    zelv::Slots<int, kMaxWindow + 1> a{};
    a.fill(-1);
    return a;
  }();
  int iwinwid = 0, iwinhgt = 0;  // client size of the selected window, for unit conversion
  bool bbell = false;
  std::array<std::string, 2> ctmpfile{};  // plot and dump file names in /tmp
  bool bversionline = false;              // the initialisation file held a version line
  bool bdoneinit = false;                 // WInitialise has run

  // Page setup of the editor's and the grid's printed text; the second entry
  // of each is the copy the page setup dialog edits.
  std::array<PageSetup, 2> psedit{}, psgrid{};
  std::array<int, kTextOptions> itxopt = kTextOptionDefaults;
};

Data& data();

}  // namespace zelvy_data

namespace zelvy_comdlg {

struct Data {
  int icderr = 0;
  int icdlgbut = 0;  // the last common dialog's result: 1 OK, 2 Cancel, 3 Abort, 4 Retry, 5 Ignore, 6 Yes, 7 No
  std::array<int, 3> icdopt{8, 25, 10};
  std::array<int, 2> wcomdlgpos{20, 20};  // default position of the common dialogs
};

Data& data();

}  // namespace zelvy_comdlg

// zelvy_data: the toolkit's one global state, and its error state.
//
// Every toolkit routine that fails records its error with yyerror under its own
// public name and returns normally; callers poll WInfoError. The texts of the
// error codes are those of WInfoErrorMessage category 1.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace zelvy_data {

// Error state.
inline int ierr = 0;     // last error code, 0 when none
inline int istat = 0;    // run-time status that goes with codes 1 and 2
inline int iapierr = 0;  // operating-system or library status for codes above 2
inline int idbug = 0;    // debug level 0..4
inline int ioetype = 0;  // 1 run-time file i/o failed, 2 a direct system call failed

// Start-up and window state shared across the toolkit.
inline bool brootopen = false;
inline int iwinhandle = 0;
inline int icurdialog = 0;
inline int iscwid = 0, ischgt = 0, iscwidmm = 0, ischgtmm = 0;
inline int isccol = 0;  // -1: the display could not be opened

inline std::array<std::string, 2> cdefdir{};                    // charsets, base directory
inline std::array<std::string, 3> cdeffile{"", "", "standard.chr"};
inline std::array<std::string, 2> cbrowser{"firefox", "evince"};  // HTML, PDF viewers
inline std::array<int, 3> ireqhw{0, 0, 0};
inline std::array<int, 3> lfn{40, 41, 42};
inline char cdirsep = '/';
inline int idecimal = 0;
inline char cdecimal = ' ';
inline char cjusnum = 'R';
inline char ctagchr = ' ';
inline int idirinfo = 1;
inline int icmodeldef = 1;
inline float asprat = 1.32f;
inline std::array<int, 2> imgopt{80, 75};
inline int iundef = -999, iundefdb = -999;
inline float rundef = -999.0f, rundefdb = -999.0f;
inline double dundef = -999.0, dundefdb = -999.0;
inline int idefpapersize = 5;
inline int maxbitmap = 0, maxicon = 0, maxmeta = 0;

// Delivery of error reports at debug levels 3 (status bar) and 4 (a modal box).
// The window and message-box layers install these when they come up; until then
// the report is printed instead. The box sink returns true when the user chose
// Cancel, which ends the program.
inline void (*status_bar_sink)(std::string_view text) = nullptr;
inline bool (*error_box_sink)(std::string_view text) = nullptr;

}  // namespace zelvy_data

namespace zelvy_comdlg {
inline int icderr = 0;
inline std::array<int, 3> icdopt{8, 25, 10};
inline std::array<int, 2> wcomdlgpos{20, 20};  // default position of the common dialogs
}  // namespace zelvy_comdlg

// Records Code in ierr and, with a debug level above 0, reports it in the form
// "Routine:WDialogLoad Error=1007:Dialog not present in resource".
void yyerror(int code, std::string_view routine);
// Stores Code in ierr and does nothing else.
void yyseterror(int code);
// The report text yyerror would deliver for this code and routine.
std::string yyerrortext(int code, std::string_view routine);

// Returns an item of the error state; items 1, 2, 3 and 6 are cleared by reading.
int WInfoError(int item);
// The text of an error code in a category (1 toolkit table, 2/6 system error
// text, 3 zlib, 4 OpenGL, 5 SQL, 7 sound, 8 JPEG, 9 blank). Other categories
// leave the text as it was. The result is blank-padded to text's size on entry,
// or unpadded when text is empty on entry.
void WInfoErrorMessage(int code, std::string& text, int category = 1);
// Sets the debug level; a level outside 0..4 is ignored.
void IDebugLevel(int level);

// Stored texts of the last SQL, sound-library and JPEG-library failures, shown
// as detail of their error codes.
namespace zelvy_data {
inline std::string sqlstate, sqlmessage, soundmessage, jpegmessage;
}

// Window and start-up state that the rest of the toolkit reads.
namespace zelvy_data {
constexpr int kMaxWindow = 50;          // child handles run from 1 to 50, 0 is the root window
constexpr int kMaxDialog = 100;         // dialogs loaded at one time
inline std::array<int, kMaxWindow + 1> iwflags = [] {
  std::array<int, kMaxWindow + 1> a{};
  a.fill(-1);
  return a;
}();
inline int iwinwid = 0, iwinhgt = 0;    // client size of the selected window, for unit conversion
inline bool bbell = false;
inline std::array<std::string, 2> ctmpfile{};  // plot and dump file names in /tmp
inline bool bversionline = false;       // the initialisation file held a version line
}  // namespace zelvy_data

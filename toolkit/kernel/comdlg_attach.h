// Where the common dialogs are reached by their neighbours in the same layer
// (the editor and the grid window): those may not include the common dialogs,
// so the common dialogs leave their entry points here when the program
// attaches them (yyComdlgAttach). Until then the calls below answer as if the
// user had cancelled, and a box answers with its escape button.
#pragma once

#include "toolkit/base/zelvy_data.h"

#include <optional>
#include <string>
#include <string_view>

// What a grid prints with, one record each for dialog grids and grid windows.
struct GridPrintOptions {
  int scale = 100;  // per cent of the field's font size, 10 to 400
  bool rowLines = true, columnLines = true, labelsEachPage = false, colour = false, colourBackground = false;
};

struct ComdlgHooks {
  // The file selector: true and `filename` set when the user chose a file.
  bool (*select_file)(std::string_view filter, int flags, std::string& filename, std::string_view title,
                      int* filterindex) = nullptr;
  // A message box; returns the answer (1 OK, 2 Cancel, 6 Yes, 7 No, ...).
  int (*message_box)(int buttonSet, int icon, int defaultButton, std::string_view text,
                     std::string_view title) = nullptr;
  // The page setup dialog on a record; returns the answer (1 OK).
  int (*page_setup)(zelvy_data::PageSetup& record, std::string_view title) = nullptr;
  // The grid's print dialog on its options and page record; returns 1 to print.
  int (*grid_print)(GridPrintOptions& options, zelvy_data::PageSetup& page) = nullptr;
};

void yyAttachComdlg(const ComdlgHooks& hooks);
const ComdlgHooks& yyComdlgHooks();

// The calls the neighbours make. Unattached: no file (nullopt), and the
// answer 2 (Cancel) for a box.
std::optional<std::string> yyComdlgChooseFile(std::string_view filter, int flags, std::string_view start,
                                              std::string_view title, int* filterindex = nullptr);
int yyComdlgAsk(int buttonSet, int icon, int defaultButton, std::string_view text, std::string_view title);
// Unattached: 2 (Cancel), the record untouched.
int yyComdlgPageSetup(zelvy_data::PageSetup& record, std::string_view title);
// Unattached: 2 (Cancel), nothing touched.
int yyComdlgGridPrint(GridPrintOptions& options, zelvy_data::PageSetup& page);

// The selected hardcopy driver's settings as the options dialog edits them.
struct HardcopyOptionsEntry {
  int driver = 0;          // 0: none selected
  std::string file;        // output file
  int format = 0;          // image files: 0 PCX, 1 BMP, 2 BMP compressed, 3 PNG, 4 JPEG, 5 PNG with alpha
  int copies = 1;
  int linewidth = 5;
  int colour = 0;          // 0 as drawn, 1 inverted, 2 black and white swapped
  bool monochrome = false;
  bool encapsulated = false;
};
// Where the common dialogs reach the graphics beside them: the graphics
// leave these when they are linked. Unattached: no driver.
struct HardcopyHooks {
  bool (*get)(HardcopyOptionsEntry& entry) = nullptr;
  void (*set)(const HardcopyOptionsEntry& entry) = nullptr;
};
void yyAttachHardcopy(const HardcopyHooks& hooks);
const HardcopyHooks& yyHardcopyHooks();

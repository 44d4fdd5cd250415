// Page setup: the paper, orientation, margins, copies and destination of
// printed text, kept in a PageSetup record (the editor's and the grid's are
// in zelvy_data), and the dialog that edits one.
#pragma once

#include "toolkit/base/zelvy_data.h"
#include "toolkit/kernel/comdlg_attach.h"

#include <array>
#include <string>
#include <string_view>

// Margin units of the dialog.
enum PageUnit : int { kUnitPoints = 0, kUnitInches, kUnitCm, kUnitMm, kUnitCount };
// Points in one unit; the unit's name as the dialog shows it.
float yypageunitpoints(int unit);
std::string_view yypageunitname(int unit);

// Direction 1: margins from the printed area and its offsets (none below 0);
// 2: area and offsets from the margins. The paper is turned in landscape.
void yymarginsps(zelvy_data::PageSetup& record, int direction);

// What the dialog's fields hold when the user confirms; margins in `unit`,
// left, top, right, bottom.
struct PageSetupEntry {
  int paper = 5;
  int orientation = 0;
  int unit = kUnitPoints;
  std::array<float, 4> margins{};
  int copies = 1;
  int destination = 1;
  std::string command, file;
};

// The record from a confirmed entry; false with the message and its title
// when the entry can't be taken (margins overlapping the paper, a missing
// command or file name), the record untouched.
bool yypagesetupaccept(const PageSetupEntry& entry, zelvy_data::PageSetup& record, std::string& message,
                       std::string& title);
// The entry the dialog starts from.
PageSetupEntry yypagesetupentry(const zelvy_data::PageSetup& record, int unit);

// How far each margin (left, top, right, bottom) may go, in a unit of
// `multiplier` points, with the other margins as they stand: from 0 up to
// what leaves one point of printed area beside the opposite margin (taken in
// whole points, as a confirmed entry is).
struct MarginLimits {
  std::array<float, 4> lower{}, upper{};
};
MarginLimits yycomdlgpagesetupscale(int paper, int orientation, const std::array<float, 4>& margins,
                                    float multiplier);
// Which margin fields of an entry stay enabled: those that can still grow,
// and those already past their limit, so that they can be brought back. Two
// opposite margins reach their limits together, when one point of printed
// area is left between them.
std::array<bool, 4> yycomdlgpagesetupscalestate(const PageSetupEntry& entry);

// The page setup dialog on a record; 1 when the user confirmed (the record
// updated), 2 when cancelled. The caller's current dialog is put back.
int yycomdlgpagesetupps(zelvy_data::PageSetup& record, std::string_view title = {});

// The preview of a record in a picture field of the current dialog, and its
// pixmap given back when the dialog goes.
void yycomdlgpagesetuppreview(int field, const zelvy_data::PageSetup& page);
void yycomdlgpagesetuppreviewfree();

// A margin field's label up to "(" followed by the unit's name in brackets.
void yycomdlgunits(int field, int unit);

// The hardcopy options dialog on the selected driver (through the graphics'
// attachment); 1 when confirmed and applied, 2 otherwise.
int yycomdlghcoptions();
// The file selector's filter and title for a driver's output.
std::string_view yyhcfilter(int driver, std::string_view& title);
// Image format by a file name's extension (-1: none of them), and a name with
// the extension of a format.
int yyhcformatfromname(std::string_view name);
std::string yyhcnamewithformat(std::string_view name, int format);

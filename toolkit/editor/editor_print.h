// The editor's Print: one self-contained PostScript document written straight
// from the text, with PostScript's own fonts, lines broken by a table of
// character widths, sent to a file or through the print command.
#pragma once

#include "toolkit/base/zelvy_data.h"

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

// Printed font families.
enum EditPrintFamily : int { kPrintTimes = 2, kPrintHelvetica = 3, kPrintCourier = 4 };

struct EditPrintFont {
  int family = kPrintCourier;
  float size = 10.0f;  // points
};

// The printed font of an editor font type (0..13) and size (0: the default).
EditPrintFont yyeditprintfont(int fonttype, int fontsize);

// Advance of a character as a multiple of the family's average width.
float yyeditprintratio(int family, unsigned char c);

// The media comment and the page size request for a paper given in points.
std::string yydocumentmediawh(std::string_view name, int width, int height, std::string* setpage = nullptr);

// Writes the document for `text` to `out`. Without `wrap` a long line stays
// one line and the clip cuts it at the right margin. The title defaults to
// "Untitled". False when a write failed.
bool yyeditprintps(std::FILE* out, std::string_view text, const zelvy_data::PageSetup& page,
                   const EditPrintFont& font, bool wrap, std::optional<std::string_view> title = {});

// Print results.
enum EditPrintResult : int { kPrintNotOpened = 0, kPrinted = 1, kPrintDeclined = 2 };

// The whole Print command on `text`: with `askpage` the page setup dialog on
// the editor's record first (a result other than OK is handed back as it
// stands); then the file (asking before replacing one) or the print command
// on a temporary file, which is deleted afterwards.
int yyeditprintuser(std::string_view text, const EditPrintFont& font, bool wrap,
                    std::optional<std::string_view> title = {}, bool askpage = true);

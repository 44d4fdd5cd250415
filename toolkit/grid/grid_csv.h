// Grid files as text: comma- and tab-separated values read into and written
// from a grid's values, apart from any widget or file, so the rules and their
// tests need no display. Rows and columns count from 0 here.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "toolkit/grid/grid_model.h"

// TAB for a name ending in ".tsv" (any case), otherwise comma.
char yyGridFileSeparator(std::string_view filename);

// "a"b" -> "a""b": a double quote inside a quoted field is written twice.
std::string yyexpandquotes(std::string_view text);
// The reverse on a field as read: outer quotes cut, doubled quotes halved.
std::string yycompressquotes(std::string_view text);

// Splits a file's text into fields. A field ends at the separator or at LF;
// with a comma separator, a separator or LF inside an odd number of double
// quotes belongs to the field. `field` gets the raw field (quotes still on,
// a trailing CR dropped) and whether an LF ended it. The text after the last
// LF, if any, is one more line.
template <typename Field>
void yyGridSplitFields(std::string_view text, char separator, Field&& field) {
  constexpr char kQuote = '"';
  const bool quotes = separator == ',';
  const char* p = text.data();
  const char* const end = p + text.size();
  const char* start = p;
  bool open = false;  // inside an odd number of quotes
  auto emit = [&](const char* stop, bool eol) {
    std::string_view f(start, static_cast<std::size_t>(stop - start));
    if (!f.empty() && f.back() == '\r') f.remove_suffix(1);
    field(f, eol);
  };
  for (; p < end; ++p) {
    const char ch = *p;
    if (quotes && ch == kQuote) {
      open = !open;
    } else if (!open && (ch == separator || ch == '\n')) {
      emit(p, ch == '\n');
      start = p + 1;
    }
  }
  if (start < end) emit(end, true);
}

struct GridLoadOptions {
  char separator = ',';
  bool grow = false;        // rows may rise to the grid's limit
  bool labels = false;      // the first line and column are labels, as far as the grid shows them
  bool keepBlanks = false;  // string cells keep their trailing blanks
  bool columnLabelBar = false, rowLabelBar = false;
};

// What a load met. `error` is the first failure among the cells (4, 11, 12
// for numbers that aren't, 1009 out of range, 1055 no such combo option), or
// 1054 when the file has more rows than the grid may take; the load stops at
// 1054 only. `labelsChanged` tells the widget that label texts were written.
struct GridLoadResult {
  int error = 0;
  bool labelsChanged = false;
};

// Loads a file's text into the grid's values: the cells the lines don't reach
// and the rows after the last line are emptied.
GridLoadResult yyGridModelLoad(GridModel& m, std::string_view text, const GridLoadOptions& options);

struct GridSaveOptions {
  char separator = ',';
  bool noQuotes = false;       // strings written bare
  bool labels = false;         // a line of column labels and each row's label first
  bool undefinedValues = false;  // empty numeric cells as the undefined values
  bool columnLabelBar = false, rowLabelBar = false;
  int integerUndefined = -999;
  double realUndefined = -999.0, doubleUndefined = -999.0;
};

// A column's number format read once for writing many numbers: the one-item
// forms (Fw.d), (Ew.d[Ee]) and (Gw.d[Ee]); `kind` 0 for any other.
struct GridFastFormat {
  char kind = 0;
  int width = 0, decimals = 0, exponent = 0;
};
GridFastFormat yyGridFastFormat(std::string_view format);
// The number as the column's format writes it (as yyGridNumberText does),
// into `out` of at least kGridNumberWidth bytes; false when this form can't
// say, and the general formatter must.
bool yyGridFastNumber(const GridFastFormat& format, double value, char* out, std::size_t& length);

// The text of a rectangle of the grid (inclusive bounds) as the file holds it.
std::string yyGridModelSaveText(const GridModel& m, int c1, int c2, int r1, int r2, const GridSaveOptions& options);
// The same text handed to `sink` in pieces of whole rows; stops at the first
// piece the sink refuses, and then returns false.
bool yyGridModelSaveChunks(const GridModel& m, int c1, int c2, int r1, int r2, const GridSaveOptions& options,
                           const std::function<bool(std::string_view)>& sink);

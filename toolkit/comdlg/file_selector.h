// The file selector: the toolkit's own dialog for choosing a file to open or a
// name to save under, run as a nested loop inside one call, and the toolkit's
// well-known paths. The answer is read with WInfoDialog(4) (1 confirmed) or
// WInfoDialog(15) (1 OK, 2 Cancel).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Flags of WSelectFile.
enum SelectFileFlags : int {
  kSelectSave = 1,            // save dialog; without it the dialog opens a file
  kSelectPrompt = 2,          // ask before replacing, or before going on with a missing file
  kSelectNoPathCheck = 4,     // don't check that the file's directory exists
  kSelectKeepDirectory = 8,   // after OK stay in the directory the dialog ended in
  kSelectMultiple = 0x10,     // several files; cleared in a save dialog
  kSelectAppendExtension = 0x20,
  kSelectMustExist = 0x80,    // open: existing files only, directory always checked
  kSelectNoNewDirectory = 0x100,
  kSelectNoProperties = 0x200,
  kSelectNoOrderMenu = 0x400,
  kSelectModalLevel = 0x40000000,
};

// `filter` pairs a description with a pattern, each closed by the separator,
// which is the filter's last character: "Ombrel Input Files (*.omb) |*.omb|".
// `filename` is the starting path on entry and the chosen path after OK; with
// kSelectMultiple the directory, a zero byte, each name followed by a zero
// byte. After Cancel it is untouched. `filterindex` counts from 1.
void WSelectFile(std::string_view filter, std::optional<int> flags, std::string& filename,
                 std::optional<std::string_view> title = {}, int* filterindex = nullptr);

// Sets the position of the common dialogs relative to their reference window.
void wcomdlgpos(int x, int y);

// A well-known path: 10 the temporary directory, 11 a new temporary file
// name, 14 the home directory, 16 the configuration directory (made when
// missing), ... Unknown items give blank.
void WInfoFilename(int item, std::string& text);

// ---------------------------------------------------------------------------
// Internal, shared with the tests.

// Splits a path into directory and name: "/a/b.omb" gives "/a" and "b.omb";
// "/" stays "/"; a path ending in ".." is all directory.
void yycomdlgsplitpath(std::string& path, std::string& name);

// The descriptions and patterns of a filter; a filter of one character or
// fewer is one entry with a blank description and the pattern "*".
struct SelectorFilter {
  std::vector<std::string> descriptions, patterns;
};
SelectorFilter yyselectfile_parsefilter(std::string_view filter);

// The index (from 1) of the first filter one of whose ";"-separated patterns
// equals `text` exactly, 0 for none.
int yyselectfile_matchfilter(const std::vector<std::string>& patterns, std::string_view text);

// The text a list shows for a name: control characters such as a newline
// become visible marks, so that every entry stays on one row.
std::string yyselectfile_shownname(std::string_view name);

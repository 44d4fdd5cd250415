// Toolkit start-up and system queries.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// Brings the toolkit up once: display, zelvy.ini, environment. A second call does nothing.
void WInitialise(std::string_view inifile = {}, std::optional<int> flags = {},
                 std::optional<int> fontsize = {});
// System facts: 2 the number of command-line arguments, 6 the separator code, ...
int WInfoSystem(int item);
// The toolkit's version text.
void WInfoVersion(std::string& text);

// Internal to the toolkit.

// Puts a keysym database into XKEYSYMDB unless it already names one.
void yyxkeysymdb();
// Separator, decimal state and the base directory (cdefdir[1]) from ZELVY / ZELVIDE.
void yywinitialise();
// The initialisation file to read: ZELVINIT, ./zelvy.ini, then the base directory's.
std::string yyinifilename();
// Reads an initialisation file into the toolkit state; false when it can't be opened.
bool yyinireadfile(const std::string& path);
// Applies one line of an initialisation file.
void yyinireadline(std::string line);
// The plot and dump file names in /tmp.
void yytmpprn();
// Default paper size from the locale variables: 9 for the North American ones, else 5.
int yydefpapersize();
// The toolkit's own system queries: those of WInfoSystem, and beyond them
// kInfoDefaultPaper, the paper the locale prints on (a row of the paper table).
constexpr int kInfoDefaultPaper = 101;
int yyinfosystem(int code);
// Measurement system: 1 imperial, 2 metric.
int yymeasurement();

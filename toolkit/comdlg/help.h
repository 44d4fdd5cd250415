// The manual and other help documents, shown by an external viewer.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// Shows a help document in the viewer the initialisation file names for its
// kind: BROWSER for HTML pages and web addresses, PDFREAD for PDF files. The
// viewer runs as a process of its own; the call returns as soon as it lives.
// Topic above 0 goes behind an HTML address as "#topic". A blank name does
// nothing. Errors under "WHelpFile": 1 no such file (here or beside the
// program), 1031 a kind without a viewer, 1030 the viewer didn't start.
void WHelpFile(std::string_view filename, std::optional<int> topic = {}, std::optional<int> option = {});

// Internal to the toolkit.

// The kinds of help document, told from the name.
enum class HelpKind { CompiledTopic, OldHelp, Compiled, WebAddress, Html, Pdf, Unknown };
// The kind, and in `file` the name of the file it lies in (the web address
// itself, the path behind "file://", the compiled file of a topic reference).
HelpKind yyhelpkind(std::string_view name, std::string& file);
// The address handed to the HTML viewer: blanks become "%20", a topic above
// 0 is added behind "#".
std::string yyhelpaddress(std::string_view fullpath, bool web, int topic);
// Starts `program` with the one argument; 0 once it is seen alive, 1030 when
// it can't be started or ends at once.
int yyhelpfileany(std::string_view program, std::string_view argument);

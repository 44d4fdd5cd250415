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

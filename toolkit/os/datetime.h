// Today's date and date texts.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// Today in local time.
void iosdate(int& year, int& month, int& day);

// Date text, day/month/year by default. Flags: 1 abbreviated month name, 2 full
// month name, 4 two-digit year, 8 no leading zeros, 0x20 month first, 0x40 year
// first. A day outside 1-31 or month outside 1-12 gives a blank text and error
// 1127. Names come from the locale.
void wdatetostring(std::string& text, int year, int month, int day, std::optional<int> flags = {},
                   std::string_view separator = "/");
inline void WDateToString(std::string& text, int year, int month, int day, std::optional<int> flags = {},
                          std::string_view separator = "/") {
  wdatetostring(text, year, month, day, flags, separator);
}

// Time text "hh:mm:ss".
void WTimeToString(std::string& text, int hour, int minute, int second);

// Locale name of a weekday, 1 Monday to 7 Sunday; `abbreviated` 0 gives the full
// name. Blank for a day outside 1-7.
std::string yydatedayname(int day, int abbreviated = 0);

// Day number counted continuously over months and years (for ordering dates).
int yyjulianday(int year, int month, int day);

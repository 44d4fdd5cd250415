#include "toolkit/os/datetime.h"

#include <langinfo.h>

#include <ctime>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/base/fixed_text.h"

namespace {

std::string two_digits(int v, bool leading_zero) {
  std::string s = std::to_string(v);
  if (leading_zero && s.size() < 2) s.insert(0, 1, '0');
  return s;
}

}  // namespace

void iosdate(int& year, int& month, int& day) {
  const std::time_t now = std::time(nullptr);
  std::tm tm{};
  localtime_r(&now, &tm);
  year = tm.tm_year + 1900;
  month = tm.tm_mon + 1;
  day = tm.tm_mday;
}

void wdatetostring(std::string& text, int year, int month, int day, std::optional<int> flags,
                   std::string_view separator) {
  if (month < 1 || month > 12 || day < 1 || day > 31) {
    assign_out(text, "");
    yyerror(1127, "WDateToString");
    return;
  }
  const int f = flags.value_or(0);
  const bool zeros = (f & 8) == 0;
  std::string m;
  if (f & 1) m = nl_langinfo(static_cast<nl_item>(ABMON_1 + month - 1));
  else if (f & 2) m = nl_langinfo(static_cast<nl_item>(MON_1 + month - 1));
  else m = two_digits(month, zeros);
  const std::string d = two_digits(day, zeros);
  std::string y;
  if (f & 4) {
    y = two_digits(((year % 100) + 100) % 100, true);
  } else {
    y = std::to_string(year);
    if (y.size() < 4) y.insert(0, 4 - y.size(), ' ');
    else if (y.size() > 4) y = "****";  // four columns, as any number that doesn't fit
  }
  const std::string sep(separator);
  std::string result;
  if (f & 0x40) result = y + sep + m + sep + d;
  else if (f & 0x20) result = m + sep + d + sep + y;
  else result = d + sep + m + sep + y;
  assign_out(text, result);
}

void WTimeToString(std::string& text, int hour, int minute, int second) {
  assign_out(text, two_digits(hour, true) + ":" + two_digits(minute, true) + ":" + two_digits(second, true));
}

std::string yydatedayname(int day, int abbreviated) {
  if (day < 1 || day > 7) return {};
  const int index = day % 7;  // the locale counts from Sunday
  const nl_item item = static_cast<nl_item>((abbreviated == 0 ? DAY_1 : ABDAY_1) + index);
  return nl_langinfo(item);
}

int yyjulianday(int year, int month, int day) {
  // Days from a fixed epoch in the proleptic Gregorian calendar.
  const int a = (14 - month) / 12;
  const int y = year + 4800 - a;
  const int m = month + 12 * a - 3;
  return day + (153 * m + 2) / 5 + 365 * y + y / 4 - y / 100 + y / 400 - 32045;
}

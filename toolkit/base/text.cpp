#include "toolkit/base/text.h"

#include "toolkit/base/fixed_text.h"

namespace {

bool is_separator(char c) { return c == ' ' || c == '\0'; }

char lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }
char upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

}  // namespace

int ilocatechar(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i)
    if (!is_separator(text[i])) return static_cast<int>(i) + 1;
  return 0;
}

void ilocatestring(std::string_view text, int& first, int& last) {
  first = ilocatechar(text);
  last = first;
  if (first == 0) return;
  while (static_cast<std::size_t>(last) < text.size() && !is_separator(text[last])) ++last;
}

std::string yyStrDeAmpersand(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '&' && i + 1 < text.size() && text[i + 1] != '&') continue;
    out += text[i];
    if (text[i] == '&' && i + 1 < text.size()) out += text[++i];  // the pair is copied whole
  }
  return out;
}

void ilowercase(std::string& text) {
  for (char& c : text) c = lower(c);
}

void iuppercase(std::string& text) {
  for (char& c : text) c = upper(c);
}

void ijustifystring(std::string& text, std::string_view side) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string::npos) return;
  const auto last = text.find_last_not_of(' ');
  const std::size_t len = last - first + 1, free = text.size() - len;
  if (free == 0) return;
  std::size_t margin = free / 2;
  if (side.find_first_of("Ll") != std::string_view::npos) margin = 0;
  else if (side.find_first_of("Rr") != std::string_view::npos) margin = free;
  std::string moved(text.size(), ' ');
  moved.replace(margin, len, text, first, len);
  text = std::move(moved);
}

void wfileextension(std::string_view path, std::string& extension, std::optional<int> letter_case) {
  const std::string_view p = trimmed(path);
  const auto dot = p.rfind('.');
  const auto sep = p.rfind('/');
  std::string ext;
  if (dot != std::string_view::npos && (sep == std::string_view::npos || dot > sep) && dot + 1 < p.size())
    ext = p.substr(dot + 1);
  const int c = letter_case.value_or(1);
  if (c == 2) iuppercase(ext);
  else if (c != 0) ilowercase(ext);
  assign_out(extension, ext);
}

// Character-set files: a software font kept on disk instead of in the
// program, found in the character-set directory, and taken only when whole.
//
// The file is text, one keyword a line, then the glyph data:
//
//   ZCHR 1
//   cell XSPACE YSPACE          size of a character cell
//   grid XGRID YGRID            width and height of the glyph grid
//   set 7|8                     7: no upper half
//   flags F                     1 strokes (else outlines), 2 a glyph at 127's place
//   spacing 0|1                 fixed pitch or proportional
//   loc7 96 numbers             1-based starts of characters 33 to 127, then the end
//   loc8 96 numbers             the same for 161 to 255
//   data N                      N characters of glyph data follow, on any
//                               number of lines, line ends not counted
//
// Lines beginning with "#" before the data are comments.
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"

#include <fstream>
#include <sstream>

namespace {

constexpr std::string_view kMagic = "ZCHR 1";
constexpr size_t kMaxData = 17000;
constexpr int kErrorTooLong = 25;
constexpr size_t kMaxLine = 4096;  // a line longer than this is not ours

bool read_locations(std::istringstream& in, std::array<int, 96>& loc, size_t datalength) {
  int previous = 1;
  for (auto& v : loc) {
    if (!(in >> v)) return false;
    if (v < previous || static_cast<size_t>(v) > datalength + 1) return false;
    previous = v;
    v -= 1;  // kept from 0
  }
  std::string extra;
  return !(in >> extra);
}

}  // namespace

std::string yygrchrpath(std::string_view name) {
  if (name.empty()) return {};
  const std::string given(name);
  if (given.find('/') != std::string::npos) {
    std::ifstream probe(given);
    return probe ? given : std::string();
  }
  const auto& dir = zelvy_data::data().cdefdir[0];
  if (dir.empty()) return {};
  std::string path = dir;
  if (path.back() != '/') path += '/';
  path += given;
  std::ifstream probe(path);
  return probe ? path : std::string();
}

bool yygrchrload(std::string_view name, ChrFont& font, std::string_view routine) {
  const std::string path = yygrchrpath(name);
  if (path.empty()) return false;
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  ChrFont f;
  bool cell = false, grid = false, set = false, flags = false, spacing = false, loc7 = false, loc8 = false;
  std::string line;
  std::getline(in, line);
  if (!line.empty() && line.back() == '\r') line.pop_back();
  if (line != kMagic) return false;
  std::string loc7text, loc8text;
  size_t length = 0;
  bool data = false;
  while (!data && std::getline(in, line)) {
    if (line.size() > kMaxLine) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    std::istringstream words(line);
    std::string key;
    words >> key;
    if (key == "cell") cell = static_cast<bool>(words >> f.xspace >> f.yspace) && f.xspace > 0 && f.yspace > 0;
    else if (key == "grid") grid = static_cast<bool>(words >> f.xgrid >> f.ygrid) && f.xgrid > 0 && f.ygrid > 0;
    else if (key == "set") set = static_cast<bool>(words >> f.set) && (f.set == 7 || f.set == 8);
    else if (key == "flags") flags = static_cast<bool>(words >> f.flags) && f.flags >= 0 && f.flags <= 3;
    else if (key == "spacing") spacing = static_cast<bool>(words >> f.spacing) && (f.spacing == 0 || f.spacing == 1);
    else if (key == "loc7") loc7 = static_cast<bool>(std::getline(words, loc7text));
    else if (key == "loc8") loc8 = static_cast<bool>(std::getline(words, loc8text));
    else if (key == "data") {
      long long n = -1;
      if (!(words >> n) || n < 0) return false;
      if (static_cast<unsigned long long>(n) > kMaxData) {
        yyerror(kErrorTooLong, routine);
        return false;
      }
      length = static_cast<size_t>(n);
      data = true;
    } else {
      return false;
    }
  }
  if (!(data && cell && grid && set && flags && spacing && loc7 && loc8)) return false;
  while (f.data.size() < length && std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (f.data.size() + line.size() > length) return false;
    f.data += line;
  }
  if (f.data.size() != length) return false;
  std::istringstream l7(loc7text), l8(loc8text);
  if (!read_locations(l7, f.loc7, length) || !read_locations(l8, f.loc8, length)) return false;
  f.name.assign(name.substr(name.find_last_of('/') == std::string_view::npos ? 0 : name.find_last_of('/') + 1));
  font = std::move(f);
  return true;
}

bool yygrchrfont(std::string_view name, std::string_view routine) {
  ChrFont f;
  if (!yygrchrload(name, f, routine)) return false;
  yychsfont(f.xspace, f.yspace, f.xgrid, f.ygrid, f.set, f.flags, f.spacing, 0, f.name, f.data, f.loc7, f.loc8);
  return true;
}

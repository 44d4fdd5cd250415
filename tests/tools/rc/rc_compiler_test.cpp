// The resource compiler: layout of the tables it builds from small scripts,
// its error messages, and the executable's behaviour in a build.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tools/rc/rc.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

zelvrc::Tables compile(const std::string& text) {
  zelvrc::Script s;
  zelvrc::parse_script(s, text, "t.zrc");
  return zelvrc::build_tables(s);
}

std::string error_of(const std::string& text) {
  try {
    compile(text);
  } catch (const zelvrc::ScriptError& e) {
    return e.what();
  }
  return "no error";
}

std::vector<std::int32_t> record(const std::vector<std::int32_t>& table, int words, int n) {
  return {table.begin() + words * n, table.begin() + words * (n + 1)};
}

// The given words of a record.
std::vector<std::int32_t> words(const std::vector<std::int32_t>& rec, std::initializer_list<int> at) {
  std::vector<std::int32_t> out;
  for (int i : at) out.push_back(rec[i]);
  return out;
}

TEST(RcMenus, TreeIndicesFlagsAndTextPool) {
  auto t = compile(R"(
    menu 10 {
      popup 1 "&File" {
        item 2 "Open\tCtrl+O"
        separator
        item 3 "Save && &quit" checked
      }
      item 4 "Run" greyed
    }
    menu 20 { item 5 "x" }
  )");
  EXPECT_EQ(t.n_menus, 2);
  // Pairs are 1-based into ITEMS; the closing pair ends the last menu.
  EXPECT_THAT(t.menus, ElementsAre(10, 1, 20, 6, -999, 7));
  // Pre-order; next and child count from 0 within the menu.
  EXPECT_THAT(record(t.items, 6, 0), ElementsAre(1, 65536, 4, 1, 1, 0));
  EXPECT_THAT(record(t.items, 6, 1), ElementsAre(2, 0, 2, -1, 6, -1));
  EXPECT_THAT(record(t.items, 6, 2), ElementsAre(0, 1, 3, -1, 18, -1));
  EXPECT_THAT(record(t.items, 6, 3), ElementsAre(3, 4, -1, -1, 18, 7));
  EXPECT_THAT(record(t.items, 6, 4), ElementsAre(4, 2, -1, -1, 30, -1));
  EXPECT_THAT(record(t.items, 6, 5), ElementsAre(5, 0, -1, -1, 34, -1));
  // The closing item's position ends the pool; a separator takes no room.
  EXPECT_EQ(record(t.items, 6, 6)[4], static_cast<int>(t.menu_text.size()) + 1);
  EXPECT_EQ(t.menu_text, std::string("File\0Open\tCtrl+O\0Save & quit\0Run\0x\0", 35));
}

TEST(RcDialogs, SlicesClosingRecordsAndFieldTables) {
  auto t = compile(R"(
    font 1 family 1 size 12
    dialog 7 {
      size 100 50
      style 0x80c80084
      title "One"
      field 11 label 1 2 3 4 style 0x50020000 text "A"
      field 12 string 5 6 7 8 length 99 key "n"
      field 13 checkbox 0 0 9 9 text "C" checked colour 0 0 255 256 256 256
      field 14 combo 0 0 50 60 options { "x" "" "yz" } select 3
    }
    dialog 8 {
      size 10 10
      anchor 22
      field 21 integer 0 0 1 1 flags 0x8000 text "0" range 0 24
      field 22 grid 0 0 9 9 grid 1 4 9 60 labels { "R1" "" "R3" }
      field 23 label 0 0 1 1 font 1
    }
    dialog 9 { size 1000 16 field 31 string 0 0 414 14 }
  )");
  ASSERT_EQ(t.n_dialogs, 3);
  auto d7 = record(t.dialog, 22, 0), d8 = record(t.dialog, 22, 1), end = record(t.dialog, 22, 3);
  EXPECT_THAT(std::vector<int>(d7.begin(), d7.begin() + 10),
              ElementsAre(7, 1, 100, 50, static_cast<std::int32_t>(0x80c80084u), 0, 0, 0, 1, 1));
  // The closing record: word 1 one past the last field, each table's end.
  EXPECT_THAT(words(end, {0, 1, 8}), ElementsAre(-999, 9, static_cast<int>(t.titles.size()) + 1));
  EXPECT_EQ(t.titles, std::string("One\0", 4));
  // Slices: dialog 7 owns ICHECK 1, LENGTH 1, KEY 1, COLOUR 1, MENU 1 and no
  // range; dialog 8 begins after them.
  EXPECT_THAT(words(d8, {1, 7, 9, 10, 11, 15, 18, 21}), ElementsAre(5, 22, 2, 2, 1, 2, 1, 1));
  EXPECT_THAT(words(end, {11, 18, 21}), ElementsAre(2, 2, 2));

  // A field without text has the next field's position; the closing field
  // record ends CONTENT.
  EXPECT_THAT(words(t.field, {9, 19, 29, 89}), ElementsAre(1, 3, 3, static_cast<int>(t.content.size()) + 1));
  EXPECT_EQ(record(t.field, 10, 4)[8], 0x8000);

  EXPECT_THAT(t.icheck, ElementsAre(13, 0));
  EXPECT_THAT(t.length, ElementsAre(12, 99, 0, 0));
  EXPECT_THAT(t.key, ElementsAre(12, 'n', 0, 0));
  EXPECT_THAT(record(t.colour, 7, 0), ElementsAre(13, 0, 0, 255, 256, 256, 256));
  ASSERT_EQ(t.range.size(), 2u);
  EXPECT_EQ(std::pair(t.range[0].field, t.range[0].maximum), std::pair(21, 24.0));
  // Options: selection counted from 0 in the table, the empty option takes no room.
  EXPECT_THAT(record(t.menu, 3, 0), ElementsAre(14, 2, 1));
  EXPECT_THAT(record(t.menu, 3, 1), ElementsAre(0, -1, 4));
  EXPECT_THAT(t.ioptpos, ElementsAre(1, 3, 3, 6));
  EXPECT_EQ(t.field_options, std::string("x\0yz\0", 5));
  // One label position per row, blank rows included.
  EXPECT_THAT(record(t.grid, 6, 0), ElementsAre(22, 1, 4, 9, 60, 1));
  EXPECT_THAT(t.ilabpos, ElementsAre(1, 4, 4, 7, 7));
  EXPECT_THAT(t.font, ElementsAre(23, 1, 0, 0));
  EXPECT_THAT(t.xfont, ElementsAre(1, 12));
}

TEST(RcTables, StringsToolbarsAndEmptyTables) {
  auto empty = compile("");
  EXPECT_THAT(empty.menus, ElementsAre(-999, 1));
  EXPECT_THAT(empty.slist, ElementsAre(-1, 1));
  EXPECT_EQ(empty.dialog.size(), 22u);

  auto t = compile(R"(
    strings { 5 "Tip" 6 "" 7 "Q" }
    toolbar 3 button 16 16 { 5 separator 7 }
  )");
  // Strings carry no NULs; each ends where the next begins.
  EXPECT_THAT(t.slist, ElementsAre(5, 1, 6, 4, 7, 4, -1, 5));
  EXPECT_EQ(t.cstring, "TipQ");
  EXPECT_THAT(t.toolbars, ElementsAre(3, 1, 16, 16, -999, 4, 0, 0));
  EXPECT_THAT(t.ibutton, ElementsAre(5, 0, 7));
}

TEST(RcImages, PixelMapsCompressToRgbaStreams) {
  auto t = compile(R"(
    palette { "." transparent "r" ff0000 "b" 0000FF }
    pixmap a 2 2 { "r." ".b" }
    pixmap s 1 1 { "b" }
    image 5 bitmap 4 2 { a s x2 }
    image -1 icon 2 2 hotspot 1 0 { a }
  )");
  ASSERT_EQ(t.n_images, 2);
  auto im = record(t.images, 8, 0), ic = record(t.images, 8, 1);
  EXPECT_THAT(words(im, {0, 1, 2, 3, 4, 5, 6}), ElementsAre(5, 1, 4, 2, -1, -1, 1));
  EXPECT_THAT(words(ic, {0, 1, 2, 3, 4, 5}), ElementsAre(-1, 2, 2, 2, 1, 0));
  EXPECT_EQ(ic[6], 1 + (im[7] + 3) / 4);  // streams are word-aligned
  EXPECT_EQ(record(t.images, 8, 2)[6], static_cast<int>(t.ipixel.size()) + 1);

  std::vector<unsigned char> z(im[7]);
  for (int k = 0; k < im[7]; ++k) z[k] = static_cast<unsigned char>(t.ipixel[k / 4] >> (8 * (k % 4)));
  std::vector<unsigned char> px(4 * 2 * 4);
  uLongf n = px.size();
  ASSERT_EQ(uncompress(px.data(), &n, z.data(), z.size()), Z_OK);
  ASSERT_EQ(n, px.size());
  auto at = [&](int x, int y) {
    auto p = px.begin() + 4 * (y * 4 + x);
    return std::vector<int>(p, p + 4);
  };
  EXPECT_THAT(at(0, 0), ElementsAre(255, 0, 0, 0));
  EXPECT_THAT(at(1, 0), ElementsAre(192, 192, 192, 255));  // transparent, in the key colour
  EXPECT_THAT(at(1, 1), ElementsAre(0, 0, 255, 0));
  for (int y = 0; y < 2; ++y)  // the scaled tile fills its 2 by 2 block
    for (int x = 2; x < 4; ++x) EXPECT_THAT(at(x, y), ElementsAre(0, 0, 255, 0));
}

struct BadScript {
  const char* text;
  const char* message;
};

TEST(RcErrors, MalformedScriptsNameFileAndLine) {
  const BadScript cases[] = {
      {"menu 1 {\n  item 2 \"x\n}", "t.zrc:2: error: unterminated text"},
      {"\n\nwidget 3 {}", "t.zrc:3: error: unknown block 'widget'"},
      {"menu 1 {\n item \"x\" }", "t.zrc:2: error: expected item identifier"},
      {"menu 1 {\n  item 2 \"a&\" }", "t.zrc:2: error: '&' at the end"},
      {"menu 1 {\n  popup 2 \"P\" {\n  }\n}", "t.zrc:3: error: a popup needs at least one item"},
      {"dialog 1 {\n size 1 1\n field 2 knob 0 0 1 1 }", "t.zrc:3: error: unknown field type 'knob'"},
      {"dialog 1 {\n field 2 label 0 0 1 1\n}", "t.zrc:1: error: dialog 1 has no size"},
      {"dialog 1 { size 1 1 anchor 5\n field 2 label 0 0 1 1 }", "t.zrc:1: error: anchor field 5"},
      {"dialog 1 { size 1 1 }\n\ndialog 1 { size 2 2 }", "t.zrc:3: error: dialog 1 already defined at t.zrc:1"},
      {"dialog 1 { size 1 1\n field 2 label 0 0 1 1\n field 2 label 0 0 1 1 }", "t.zrc:3: error: field 2 twice"},
      {"dialog 1 { size 1 1\n field 2 label 0 0 1 1 checked }", "t.zrc:2: error: only check boxes"},
      {"dialog 1 { size 1 1\n field 2 combo 0 0 1 1 options { \"a\" } select 2 }", "t.zrc:2: error: selected option 2"},
      {"dialog 1 { size 1 1\n field 2 list 0 0 1 1 options { \"a\" } select -1 }", "t.zrc:2: error: selected option must"},
      {"dialog 1 { size 1 1\n field 2 grid 0 0 1 1 grid 2 5 9 0 }", "t.zrc:2: error: cell template dialog 9"},
      {"dialog 9 { size 1 1 field 1 string 0 0 1 1 }\ndialog 1 { size 1 1\n field 2 grid 0 0 1 1 grid 2 5 9 0 }",
       "t.zrc:3: error: the cell template has 1 fields for 2 columns"},
      {"dialog 1 { size 1 1\n field 2 label 0 0 1 1 font 1 }", "t.zrc:2: error: font index 1 not defined"},
      {"font 2 family 1 size 12", "t.zrc:1: error: font indices must run from 1"},
      {"dialog 1 { size 1 1 style 0x1ffffffff }", "t.zrc:1: error: style must fit in 32 bits"},
      {"palette { \"a\" 12345 }", "t.zrc:1: error: expected a colour rrggbb"},
      {"palette { \"a\" 000000 }\npixmap p 2 1 {\n \"aa\"\n \"a\" }", "t.zrc:4: error: pixmap 'p' row 2 has 1 pixels"},
      {"palette { \"a\" 000000 }\npixmap p 1 1 {\n \"b\" }", "t.zrc:3: error: colour 'b' is not in the palette"},
      {"palette { \"a\" 000000 }\npixmap p 1 1 { \"a\" }\nimage 4 icon 2 1 {\n p }",
       "t.zrc:4: error: pixmaps fill 1 of the image's 2 columns"},
      {"image 4 icon 1 1 {\n q }", "t.zrc:2: error: unknown pixmap 'q'"},
      {"palette { \"a\" 000000 }\npixmap p 1 1 { \"a\" }\nimage 4 bitmap 2 1 { p p }\n"
       "toolbar 4 button 1 1 { 1 separator 2 3 }",
       "t.zrc:4: error: strip image is 2 by 1 for 3 buttons of 1 by 1"},
      {"menu 1 { item 2 \"x\" }\nstrings { 3 \"a\" }\nmenu 1 { item 2 \"y\" }", "t.zrc:3: error: menu 1 already"},
      {"dialog 1 {", "t.zrc:1: error: missing '}' before end of file"},
  };
  for (const BadScript& c : cases) EXPECT_THAT(error_of(c.text), HasSubstr(c.message)) << c.text;
}

// Names give identifiers to the header and change nothing in the tables.
TEST(RcNames, HeaderDeclaresEveryNameInItsScope) {
  const char* named = R"(
    menu 30 main {
      popup 1 file "&File" { item 2 file_open "Open" separator item 3 "Save" }
      item 4 run "Run"
    }
    toolbar 30 main button 16 16 { 2 separator 4 }
    dialog 7 form {
      size 100 50
      field 11 label label 1 2 3 4 text "A"
      field 12 string 5 6 7 8
      field 13 code_file string 0 0 9 9
    }
    dialog 8 about { size 10 10 field 13 code_file label 0 0 1 1 }
    dialog 9 { size 10 10 }
    palette { "a" 000000 }
    pixmap p 1 1 { "a" }
    image -1 program_icon icon 1 1 { p }
    image 5 icon 1 1 { p }
  )";
  zelvrc::Script s;
  zelvrc::parse_script(s, named, "t.zrc");
  const std::string ids = zelvrc::emit_ids(s, {"t.zrc"}, "app_ids");
  EXPECT_EQ(ids.substr(ids.find("namespace app_ids {")),
            "namespace app_ids {\n\n"
            "namespace dialog {\nconstexpr int form = 7;\nconstexpr int about = 8;\n}  // namespace dialog\n\n"
            "namespace form {\nconstexpr int label = 11;\nconstexpr int code_file = 13;\n}  // namespace form\n\n"
            "namespace about {\nconstexpr int code_file = 13;\n}  // namespace about\n\n"
            "namespace menu {\nconstexpr int main = 30;\nconstexpr int file = 1;\nconstexpr int file_open = 2;\n"
            "constexpr int run = 4;\n}  // namespace menu\n\n"
            "namespace toolbar {\nconstexpr int main = 30;\n}  // namespace toolbar\n\n"
            "namespace image {\nconstexpr int program_icon = -1;\n}  // namespace image\n\n"
            "}  // namespace app_ids\n");
  EXPECT_THAT(ids, HasSubstr("#pragma once"));
  EXPECT_EQ(s.dialogs[0].fields[0].type, 1);  // "label label": a name, then the type

  // The same script without its names lays out the same tables.
  std::string plain = named;
  for (const char* name : {" main", " file", " file_open", " run", " form", " about", " code_file",
                           " program_icon"})
    for (std::size_t at; (at = plain.find(std::string(name) + ' ')) != std::string::npos;)
      plain.erase(at, std::string(name).size());
  plain.replace(plain.find("label label"), 11, "label");
  EXPECT_EQ(zelvrc::emit_source(compile(plain), {"t.zrc"}), zelvrc::emit_source(zelvrc::build_tables(s), {"t.zrc"}));
}

TEST(RcNames, DuplicateAndMalformedNamesNameFileAndLine) {
  const BadScript cases[] = {
      {"dialog 1 d { size 1 1\n field 2 a label 0 0 1 1\n field 3 a label 0 0 1 1 }",
       "t.zrc:3: error: name 'a' already used in dialog 1 at t.zrc:2"},
      {"dialog 1 d { size 1 1 }\ndialog 2 d { size 1 1 }", "t.zrc:2: error: name 'd' already used in the dialogs at t.zrc:1"},
      {"menu 1 m { item 2 go \"a\" }\nmenu 3 {\n popup 4 p \"b\" { item 5 go \"c\" } }",
       "t.zrc:3: error: name 'go' already used in the menus at t.zrc:1"},
      {"menu 1 run { item 2 \"a\" }\nmenu 3 {\n item 4 run \"b\" }", "t.zrc:3: error: name 'run' already used in the menus"},
      {"palette { \"a\" 000000 }\npixmap p 1 1 { \"a\" }\nimage 1 i icon 1 1 { p }\nimage 2 i bitmap 1 1 { p }",
       "t.zrc:4: error: name 'i' already used in the images at t.zrc:3"},
      {"toolbar 1 t button 1 1 { 2 }\ntoolbar 3 t button 1 1 { 4 }", "t.zrc:2: error: name 't' already used in the toolbars"},
      {"dialog 1 menu { size 1 1 }", "t.zrc:1: error: a dialog may not be named 'menu'"},
      {"dialog 1 { size 1 1\n field 2 a label 0 0 1 1 }", "t.zrc:2: error: field 'a' is named in dialog 1, which has no name"},
      {"dialog 1 {\n size 1 1\n field 2 code-file string 0 0 1 1 }", "t.zrc:3: error: malformed name 'code-file'"},
      {"dialog 1 {\n size 1 1\n field 2 2nd string 0 0 1 1 }", "t.zrc:3: error: malformed name '2nd'"},
      {"menu 1 {\n item 2 new \"New\" }", "t.zrc:2: error: malformed name 'new'"},
      {"\ndialog 1 __d { size 1 1 }", "t.zrc:2: error: malformed name '__d'"},
      {"toolbar 1 _T button 1 1 { 2 }", "t.zrc:1: error: malformed name '_T'"},
      {"image 1 x.y icon 1 1 { p }", "t.zrc:1: error: malformed name 'x.y'"},
  };
  for (const BadScript& c : cases) EXPECT_THAT(error_of(c.text), HasSubstr(c.message)) << c.text;
}

// The executable as the build runs it: tables and header on success; on
// failure the message, a non-zero status and no output left behind.
TEST(RcExecutable, WritesTablesOrFailsTheBuild) {
  namespace fs = std::filesystem;
  fs::path dir = fs::path(ZELV_BINARY_DIR) / "rc_executable_test";
  fs::create_directories(dir);
  auto write = [&](const char* name, const char* text) {
    std::ofstream(dir / name) << text;
    return (dir / name).string();
  };
  std::string good = write("good.zrc", "menu 5 bar { item 6 go \"Go\" }\nstrings { 6 \"tip\" }\n");
  std::string bad = write("bad.zrc", "menu 5 {\n  item 6 \"Go\"\n  item x \"Stop\"\n}\n");
  std::string out = (dir / "tables.cpp").string();
  std::string ids = (dir / "ids.h").string();
  std::string log = (dir / "log.txt").string();
  fs::remove(out);
  fs::remove(ids);

  std::string run = std::string(ZELVRC_EXE) + " -o " + out + " -i " + ids + " -s test_ids ";
  ASSERT_EQ(std::system((run + good + " > " + log + " 2>&1").c_str()), 0);
  auto slurp = [](const std::string& path) {
    std::stringstream s;
    s << std::ifstream(path).rdbuf();
    return s.str();
  };
  EXPECT_THAT(slurp(out), HasSubstr("const std::int32_t MENUS[] = {\n    5, 1,\n    -999, 2,"));
  EXPECT_THAT(slurp(out), HasSubstr("\"Go\\000\""));
  EXPECT_THAT(slurp(ids), HasSubstr("namespace test_ids {"));
  EXPECT_THAT(slurp(ids), HasSubstr("namespace menu {\nconstexpr int bar = 5;\nconstexpr int go = 6;\n}"));
  EXPECT_NE(std::system((run + bad + " > " + log + " 2>&1").c_str()), 0);
  EXPECT_THAT(slurp(log), HasSubstr("bad.zrc:3: error: expected item identifier, found 'x'"));
  EXPECT_FALSE(fs::exists(out));
  EXPECT_FALSE(fs::exists(ids));
}

}  // namespace

// The compiled-in tables through the yyrc* routines: every kind checked and
// loaded, compared with the application's and the toolkit's resources.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <tuple>
#include <vector>

#include "toolkit/kernel/resources.h"
#include "app/resources/gombrel_resources.h"

namespace {

// The program's own tables, the ones these tests read.
[[maybe_unused]] const bool kTablesInstalled = (yyrcinstall(gombrel_resource_tables()), true);

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

RcDialog dialog(int id) {
  RcDialog d;
  int status = -1;
  yyrcdialogget(id, d, status);
  EXPECT_EQ(status, 0) << "dialog " << id;
  return d;
}

const RcField* field(const RcDialog& d, int id) {
  for (const RcField& f : d.fields)
    if (f.id == id) return &f;
  ADD_FAILURE() << "no field " << id;
  static const RcField none;
  return &none;
}

// Width, height, style, anchor field and font index.
std::vector<long long> header(const RcDialog& d) { return {d.width, d.height, d.style, d.anchor_field, d.font_index}; }

std::vector<long long> record_of(const RcField* f) {
  return {f->type, f->x, f->y, f->width, f->height, f->style, f->extra};
}

std::vector<std::string> options(int dialog_id, int field_id, int& selected) {
  int count = 0, bytes = 0;
  yyrcfieldmenucheck(dialog_id, field_id, count, bytes);
  std::vector<int> pos(std::max(count, 0));
  std::vector<char> text(bytes);
  yyrcfieldmenuload(dialog_id, field_id, selected, pos, text);
  std::vector<std::string> out;
  for (int p : pos) out.push_back(p < 0 ? "" : std::string(text.data() + p));
  return out;
}

TEST(ResourceMenus, MainMenuTreeAndTexts) {
  int count = 0, bytes = 0;
  yyrcmenucheck(30001, count, bytes);
  EXPECT_EQ(count, 18);
  RcMenu m;
  int status = -1;
  yyrcmenuget(30001, m, status);
  ASSERT_EQ(status, 0);
  ASSERT_EQ(static_cast<int>(m.text.size()), bytes);

  // The bar: File, Run, View, Help, linked from item 0.
  std::vector<int> bar;
  for (int i = 0; i >= 0; i = m.next[i]) bar.push_back(m.ids[i]);
  EXPECT_THAT(bar, ElementsAre(40001, 40008, 40009, 40004));
  // A popup's flag; Run acts from the bar itself; a separator has flag 1 and no text.
  EXPECT_THAT((std::vector<int>{m.flags[0], m.flags[8], m.child[8], m.flags[4], m.text_pos[4]}),
              ElementsAre(65536, 0, -1, 1, -1));

  auto children = [&](int item) {
    std::vector<std::pair<int, std::string>> v;
    for (int i = m.child[item]; i >= 0; i = m.next[i]) v.emplace_back(m.ids[i], m.item_text(i));
    return v;
  };
  using P = std::pair<int, std::string>;
  EXPECT_THAT(children(0), ElementsAre(P{40002, "New"}, P{40003, "Open"}, P{40005, "Save"}, P{0, ""},
                                       P{40006, "Print"}, P{0, ""}, P{40007, "Exit"}));
  EXPECT_THAT(children(9), ElementsAre(P{40012, "Output File *.out"}, P{40013, "Input file *.omb"},
                                       P{40015, "Intensity File *.int"}, P{40014, "Rejected reflections *.rej"}));
  EXPECT_THAT(children(14), ElementsAre(P{40010, "Manual"}, P{0, ""}, P{40011, "About ..."}));
  for (int i = 0; i < count; ++i) EXPECT_EQ(m.mnemonic[i], -1) << "item " << i;
}

TEST(ResourceMenus, FileSelectorMenus) {
  RcMenu m;
  int status = -1;
  yyrcmenuget(32125, m, status);
  ASSERT_EQ(status, 0);
  std::vector<int> top;
  for (int i = 0; i >= 0; i = m.next[i]) top.push_back(m.ids[i]);
  EXPECT_THAT(top, ElementsAre(32101, 32102, 32103, 32104, 0, 32105, 32106, 32107, 32113));
  EXPECT_EQ(m.item_text(6), "Show hidden");
  EXPECT_EQ(m.mnemonic[6], 5);
  EXPECT_EQ(m.flags[7], 65536);
  std::vector<std::pair<int, int>> order;
  for (int i = m.child[7]; i >= 0; i = m.next[i]) order.emplace_back(m.ids[i], m.mnemonic[i]);
  using P = std::pair<int, int>;
  EXPECT_THAT(order, ElementsAre(P{32108, 1}, P{32109, 2}, P{32110, 2}, P{32111, 1}, P{0, -1}, P{32112, 2}));
  EXPECT_EQ(m.item_text(m.child[7] + 3), "Extension");
  EXPECT_EQ(m.mnemonic[14], 1);  // Refresh

  yyrcmenuget(32124, m, status);
  ASSERT_EQ(status, 0);
  EXPECT_THAT(m.ids, ElementsAre(32001));
  EXPECT_EQ(m.item_text(0), "-");
}

TEST(ResourceMenus, ShortSpansAreFilledOnlyAsFarAsTheyReach) {
  std::vector<int> ids(2, 7), other(2);
  std::vector<char> text(3, 'z');
  yyrcmenuload(30001, ids, other, other, other, other, other, text);
  EXPECT_THAT(ids, ElementsAre(40001, 40002));
  EXPECT_EQ(std::string(text.data(), 3), "Fil");
}

TEST(ResourceDialogs, MainFormRecordAndFieldOrder) {
  int count = 0, title_length = 0;
  yyrcdialogcheck(102, count, title_length);
  EXPECT_EQ(count, 44);
  EXPECT_EQ(title_length, 0);
  RcDialog d = dialog(102);
  EXPECT_THAT(header(d), ElementsAre(383, 351, 0x40000404, 0, 0));
  EXPECT_EQ(d.title, "");

  std::vector<int> ids;
  for (const RcField& f : d.fields) ids.push_back(f.id);
  EXPECT_THAT(ids, ElementsAreArray({1001, 1004, 1002, 1006, 1008, 1016, 1011, 1014, 1019, 1017, 1045,
                                     1024, 1021, 1022, 1025, 1027, 1034, 1030, 1032, 1037, 1038, 1042,
                                     1043, 1005, 1007, 1009, 1010, 1012, 1013, 1015, 1018, 1020, 1023,
                                     1003, 1028, 1036, 1026, 1029, 1031, 1033, 1035, 1040, 1041, 1044}));

  auto rec = [&](int id) { return record_of(field(d, id)); };
  EXPECT_THAT(rec(1001), ElementsAre(1, 12, 46, 18, 10, 0x50020000, 0));
  EXPECT_THAT(rec(1016), ElementsAre(6, 233, 77, 66, 12, 0x50830006, 0));
  EXPECT_THAT(rec(1014), ElementsAre(11, 38, 130, 276, 100, 0x50230242, 0));
  EXPECT_THAT(rec(1030), ElementsAre(11, 40, 241, 68, 43, 0x50230202, 0));
  EXPECT_THAT(rec(1017), ElementsAre(9, 12, 165, 88, 14, 0x50030003, 0));
  EXPECT_THAT(rec(1037), ElementsAre(5, 320, 242, 28, 14, 0x50830006, 0x8000));
  EXPECT_THAT(rec(1038), ElementsAre(15, 12, 261, 320, 51, 0x50a30600, 0));
  EXPECT_THAT(rec(1009), ElementsAre(3, 6, 97, 358, 82, 0x50020107, 0));
  EXPECT_THAT(rec(1012), ElementsAre(8, 318, 112, 40, 14, 0x50030000, 0));
  EXPECT_THAT(rec(1041), ElementsAre(1, 13, 329, 50, 16, 0x50000001, 0));
  EXPECT_THAT(rec(1044), ElementsAre(1, 259, 165, 43, 10, 0x50020000, 0));
  EXPECT_EQ(field(d, 1024)->text, "Create Output File for Powder Pattern Simulation in Tarnhold");
  EXPECT_EQ(field(d, 1041)->text, "UB-Matrix Transformation:");
  // Initial values the form shows before the job is written into it.
  EXPECT_EQ(field(d, 1037)->text, "0");
  EXPECT_EQ(field(d, 1045)->text, "1.0000");
}

TEST(ResourceDialogs, FieldTextOffsetsAndPool) {
  int count = 0, title_length = 0, w, h, anchor, font, bytes = 0;
  std::uint32_t style, layout;
  std::string title;
  yyrcdialogcheck(102, count, title_length);
  yyrcdialogload(102, w, h, style, layout, anchor, font, bytes, title);
  std::vector<int> ids(count), type(count), x(count), y(count), wd(count), ht(count), pos(count);
  std::vector<std::uint32_t> s1(count), s2(count), s3(count);
  std::vector<char> text(bytes);
  yyrcfieldload(102, ids, type, x, y, wd, ht, s1, s2, s3, pos, text);
  // "Title:" comes first, at offset 0; a field of length 0 comes as -1.
  EXPECT_THAT((std::vector<int>{pos[0], pos[1], pos[2]}), ElementsAre(0, -1, -1));
  EXPECT_EQ(std::string(text.data()), "Title:");
  EXPECT_EQ(text.back(), '\0');
  EXPECT_EQ(std::string(text.data() + pos[43]), "Scale Factor:");
}

TEST(ResourceDialogs, MainFormLookups) {
  for (auto [id, checked] : {std::pair{1017, 1}, {1024, 0}, {1022, 0}, {1025, 0}}) {
    int v = -1;
    yyrcfieldcheckbox(102, id, v);
    EXPECT_EQ(v, checked) << id;
  }
  double lo = 0, hi = 0;
  yyrcfieldrange(102, 1037, lo, hi);
  EXPECT_EQ(std::pair(lo, hi), std::pair(0.0, 24.0));
  yyrcfieldrange(102, 1016, lo, hi);  // no range: maximum below minimum
  EXPECT_EQ(std::pair(lo, hi), std::pair(1.0, -1.0));

  int selected = 5;
  auto formats = options(102, 1014, selected);
  EXPECT_EQ(selected, -1);
  ASSERT_EQ(formats.size(), 11u);
  EXPECT_EQ(formats[0], "h, k, l, F^2, sigma(F^2) (Shelx Format, HKL_T=0)");
  EXPECT_EQ(formats[7], "h, k, l, F^2, Sigma(F^2), Code,  Lambda, 2Theta, Absorpt, Tbar (SXD-ISIS, HKL_T=7)");
  EXPECT_EQ(formats[10], "h,k,l,F^2,Sigma(F^2),domain_code (HKLF5 Shelx) , HKL_T=10");
  EXPECT_THAT(options(102, 1030, selected), ElementsAre("Type 1", "Type 2", "Type 3"));
  EXPECT_EQ(selected, -1);
  int n = 0, bytes = 0;
  yyrcfieldmenucheck(102, 1011, n, bytes);  // a string has no options
  EXPECT_EQ(std::pair(n, bytes), std::pair(-1, 0));

  int cols, rows, tpl, width, label_bytes;
  yyrcfieldgridcheck(102, 1038, cols, rows, tpl, width, label_bytes);
  EXPECT_THAT((std::vector<int>{cols, rows, tpl, width}), ElementsAre(1, 100, 101, 60));
  std::vector<int> pos(rows);
  std::vector<char> labels(label_bytes);
  yyrcfieldgridload(102, 1038, pos, labels);
  EXPECT_EQ(std::string(labels.data() + pos[0]), "Domain 1");
  EXPECT_EQ(std::string(labels.data() + pos[4]), "Domain 5");
  EXPECT_EQ(std::pair(pos[5], pos[99]), std::pair(-1, -1));
  yyrcfieldgridcheck(102, 1037, cols, rows, tpl, width, label_bytes);
  EXPECT_THAT((std::vector<int>{cols, rows, tpl, width, label_bytes}), ElementsAre(-1, -1, -1, -1, 0));
}

TEST(ResourceDialogs, ColumnAndAboutDialogs) {
  RcDialog c = dialog(101);
  EXPECT_THAT(header(c), ElementsAre(1000, 16, 4, 0, 0));
  ASSERT_EQ(c.fields.size(), 1u);
  EXPECT_EQ(c.fields[0].id, 1039);
  EXPECT_THAT(record_of(&c.fields[0]), ElementsAre(4, ::testing::_, ::testing::_, 414, ::testing::_, 0x50810000, 0));
  EXPECT_EQ(c.fields[0].text, "Matrix");
  int length = 0;
  yyrcfieldlength(101, 1039, length);
  EXPECT_EQ(length, 150);

  RcDialog a = dialog(104);
  EXPECT_THAT(header(a), ElementsAre(271, 88, 0x80c80084, ::testing::_, ::testing::_));
  EXPECT_EQ(a.title, "About...");
  std::vector<int> ids;
  for (const RcField& f : a.fields) ids.push_back(f.id);
  EXPECT_THAT(ids, ElementsAre(2001, 1001, 1046, 1005, 1007, 1, 1047));
  EXPECT_EQ(field(a, 2001)->style, 0x50020303u);
  EXPECT_EQ(field(a, 1)->style, 0x50030001u);
  EXPECT_EQ(field(a, 1047)->text, "Version: Feb-2007");
  EXPECT_FALSE(field(a, 1005)->text.empty());
  EXPECT_FALSE(field(a, 1007)->text.empty());
  std::array<int, 6> colour{};
  yyrcfieldcolour(104, 1047, colour);
  EXPECT_THAT(colour, ElementsAre(0, 0, 255, 256, 256, 256));
  yyrcfieldcolour(104, 1001, colour);
  EXPECT_THAT(colour, ElementsAre(256, 256, 256, 256, 256, 256));
  int font = -1, default_font = -1;
  yyrcfieldfont(104, 1001, font);
  yyrcfieldfont(104, 1046, default_font);  // the dialog's default
  EXPECT_EQ(std::pair(font, default_font), std::pair(1, 0));
}

TEST(ResourceDialogs, ToolkitDialogs) {
  struct Expect {
    int id, fields, width, height;
    std::uint32_t style;
    const char* title;
  };
  for (const Expect& e : {Expect{32110, 16, 268, 215, 0x80cc0004, ""}, Expect{32111, 16, 268, 215, 0x80cc0004, ""},
                          Expect{32116, 3, 160, 36, 0x80c80084, "New directory"},
                          Expect{32117, 13, 172, 63, 0x80c80084, "Properties"},
                          Expect{32123, 3, 160, 36, 0x80c80084, "Rename"},
                          Expect{32120, 5, 112, 54, 0x80c80084, "Goto Line"},
                          Expect{32103, 9, 235, 62, 0x80c80084, "Find"},
                          Expect{32104, 10, 230, 87, 0x80c80084, "Replace"}}) {
    RcDialog d = dialog(e.id);
    EXPECT_EQ(static_cast<int>(d.fields.size()), e.fields) << e.id;
    EXPECT_THAT(header(d), ElementsAre(e.width, e.height, e.style, ::testing::_, ::testing::_)) << e.id;
    EXPECT_EQ(d.title, e.title) << e.id;
  }

  // {dialog, field, style}, then {dialog, field, text}.
  const std::tuple<int, int, std::uint32_t> styles[] = {
      {32110, 32114, 0x58030040}, {32110, 1101, 0x50a300c1}, {32111, 1102, 0x50a308c1},
      {32110, 1001, 0x50820880},  {32110, 1009, 0x50230203}};
  for (auto [d, f, style] : styles) EXPECT_EQ(field(dialog(d), f)->style, style) << d << '/' << f;
  const std::tuple<int, int, const char*> texts[] = {
      {32110, 32120, "Back or right-click for history"}, {32111, 32120, "Back"},
      {32117, 1013, "Permissions"}, {32103, 1006, "Match whole word only"}, {32104, 1507, "Replace All"},
      {32120, 1002, "1"}, {32120, 1003, "(1-xxxxxx)"}};
  for (auto [d, f, text] : texts) EXPECT_EQ(field(dialog(d), f)->text, text) << d << '/' << f;
  RcDialog open = dialog(32110);
  EXPECT_EQ(field(open, 1101)->extra, 8u);
  EXPECT_EQ(field(open, 1009)->height, 62);
  int key = 0;
  for (auto [id, ch] : std::initializer_list<std::pair<int, char>>{
           {32120, 'B'}, {32121, 'F'}, {32105, 'H'}, {32104, 'U'}, {32113, 'd'}, {32114, 'P'}, {32119, 'M'}, {1012, 'n'}}) {
    yyrcfieldshortcut(32111, id, key);
    EXPECT_EQ(key, ch) << id;
  }
  yyrcfieldshortcut(32110, 1007, key);
  EXPECT_EQ(key, 0);

  for (auto [d, f, want] : {std::array{32116, 1001, 1024}, {32103, 1020, 1023}, {32123, 1007, 0}}) {
    int length = -1;
    yyrcfieldlength(d, f, length);
    EXPECT_EQ(length, want) << d << '/' << f;
  }
  RcDialog props = dialog(32117);
  EXPECT_EQ(field(props, 1013)->type, 3);
  EXPECT_EQ(field(props, 1002)->x, 88);
  EXPECT_EQ(field(props, 1002)->y, 34);
  EXPECT_EQ(field(dialog(32103), 1003)->type, 10);
  EXPECT_EQ(field(dialog(32104), 2)->y, 57);
  EXPECT_EQ(field(dialog(32120), 1002)->type, 5);
  EXPECT_EQ(field(dialog(32120), 1002)->extra, 0x8000u);
}

TEST(ResourceDialogs, TablesWithoutDataAnswerNone) {
  std::array<int, 6> values{1, 1, 1, 1, 1, 1};
  yyrcfieldtrackbar(102, 1038, values);
  EXPECT_THAT(values, ElementsAre(0, 0, 0, 0, 0, 0));
  int a = 9, b = 9, c = 9;
  yyrcfieldprogressbar(102, 1038, a, b, c);
  EXPECT_THAT((std::vector<int>{a, b, c}), ElementsAre(0, 0, 0));
  yyrcfieldtabcheck(102, 1038, a, b);
  EXPECT_THAT((std::vector<int>{a, b}), ElementsAre(-1, 0));
  yyrcfieldtreeview(102, 1038, a, b);
  EXPECT_THAT((std::vector<int>{a, b}), ElementsAre(-1, -1));
  yyrcfieldformatcheck(102, 1016, a);
  EXPECT_EQ(a, 0);
  std::string format(4, 'x');
  yyrcfieldformatload(102, 1016, format);
  EXPECT_EQ(format, "    ");
  yyrcaccelcheck(30001, a);
  EXPECT_EQ(a, -1);
  yyrchelpcheck(30001, a, b);
  EXPECT_THAT((std::vector<int>{a, b}), ElementsAre(-1, -1));
}

TEST(ResourceFonts, OneExtraFont) {
  int count = 0, family = 0, size = 0;
  yyrcfontcount(count);
  EXPECT_EQ(count, 1);
  yyrcfontlist(1, family, size);
  EXPECT_THAT((std::vector<int>{family, size}), ElementsAre(1, 12));
  yyrcfontlist(2, family, size);
  EXPECT_EQ(family, -1);
}

TEST(ResourceToolbar, ButtonsAndTooltips) {
  std::vector<int> ids;
  int w = 0, h = 0, status = -1;
  yyrctoolbarget(30101, ids, w, h, status);
  ASSERT_EQ(status, 0);
  EXPECT_THAT(ids, ElementsAre(40002, 40003, 40005, 40006, 0, 40008, 40009, 0, 40007));
  EXPECT_THAT((std::vector<int>{w, h}), ElementsAre(16, 16));

  using P = std::pair<int, std::string>;
  for (const P& p : {P{40002, "New Data"}, P{40005, "Save a Ombrel File"}, P{40006, "Print a Ombrel File"},
                     P{40008, "Run a calculation task"}, P{40009, "View the final Output Information"},
                     P{40007, "Quit of the Program"}}) {
    int n = 0;
    yyrcstringcheck(p.first, n);
    EXPECT_EQ(n, static_cast<int>(p.second.size()) + 1) << p.first;
    std::string text;
    yyrcstringload(p.first, text);
    EXPECT_EQ(text, p.second);
  }
  int n = 0;
  yyrcstringcheck(40003, n);  // Open has no tool tip
  EXPECT_EQ(n, -1);
  std::string sized(12, '#');
  yyrcstringload(40002, sized);
  EXPECT_EQ(sized, std::string("New Data\0   ", 12));
  std::string narrow(3, '#');
  yyrcstringload(40002, narrow);
  EXPECT_EQ(narrow, "New");
}

TEST(ResourceImages, AllImagesInflateToTheirSize) {
  struct Expect {
    int id, type, w, h;
  };
  for (const Expect& e : {Expect{30101, 1, 112, 16}, Expect{-1, 2, 32, 32}, Expect{2001, 2, 32, 32},
                          Expect{32120, 2, 24, 24}, Expect{32121, 2, 24, 24}, Expect{32104, 2, 24, 24},
                          Expect{32105, 2, 24, 24}, Expect{32113, 2, 24, 24}, Expect{32114, 2, 24, 24},
                          Expect{32119, 2, 24, 24}, Expect{32109, 1, 160, 16}, Expect{32117, 1, 320, 32},
                          Expect{32137, 2, 16, 16}}) {
    int w, h, hx, hy, bytes;
    yyrcimagecheck(e.id, e.type, w, h, hx, hy, bytes);
    EXPECT_THAT((std::vector<int>{w, h, hx}), ElementsAre(e.w, e.h, -1)) << e.id;
    EXPECT_GT(bytes, 0);
    const std::uint8_t* data = nullptr;
    yyrcimageload(e.id, e.type, data);
    EXPECT_NE(data, nullptr);

    std::vector<std::uint8_t> rgba;
    int status = -1;
    yyrcimagepixels(e.id, e.type, w, h, rgba, status);
    ASSERT_EQ(status, 0) << e.id;
    ASSERT_EQ(rgba.size(), static_cast<std::size_t>(e.w * e.h * 4));
    int opaque = 0;
    for (std::size_t p = 0; p < rgba.size(); p += 4) {
      // Either fully drawn or fully transparent, and transparent pixels carry
      // the key colour that strips drop.
      ASSERT_TRUE(rgba[p + 3] == 0 || rgba[p + 3] == 255) << e.id;
      if (rgba[p + 3] == 255) EXPECT_EQ(rgba[p] * 65536 + rgba[p + 1] * 256 + rgba[p + 2], 0xc0c0c0);
      else ++opaque;
    }
    EXPECT_GT(opaque, e.w * e.h / 8) << "image " << e.id << " is nearly empty";
  }
}

TEST(ResourceImages, IdentifierAndTypeMustBothMatch) {
  int w, h, hx, hy, bytes;
  yyrcimagecheck(30101, 2, w, h, hx, hy, bytes);
  EXPECT_THAT((std::vector<int>{w, h, hx, hy, bytes}), ElementsAre(-1, -1, -1, -1, -1));
  yyrcimagecheck(-1, 1, w, h, hx, hy, bytes);
  EXPECT_EQ(w, -1);
  const std::uint8_t* data = reinterpret_cast<const std::uint8_t*>(&w);
  yyrcimageload(-1, 3, data);
  EXPECT_EQ(data, nullptr);
}

// Identifiers that aren't there: -1 from the checks, defaults from the
// lookups, and the error code of the kind from the one-step helpers.
TEST(ResourceMissing, UnknownIdentifiersAnswerNone) {
  for (int id : {0, -999, 99999, 102 + 1}) {
    int a = 5, b = 5;
    yyrcmenucheck(id, a, b);
    EXPECT_THAT((std::vector<int>{a, b}), ElementsAre(-1, -1)) << id;
    yyrcdialogcheck(id, a, b);
    EXPECT_THAT((std::vector<int>{a, b}), ElementsAre(-1, -1)) << id;
    yyrctoolbarcheck(id, a, b, b);
    EXPECT_EQ(a, -1);
    yyrcstringcheck(id, a);
    EXPECT_EQ(a, -1);
  }
  // The last: a field of another dialog isn't found through this one.
  using Lookup = void (*)(int, int, int&);
  for (auto [lookup, d, f] : {std::tuple<Lookup, int, int>{yyrcfieldcheckbox, 99999, 1017}, {yyrcfieldlength, 102, 99999},
                              {yyrcfieldshortcut, 102, 1017}, {yyrcfieldfont, 99999, 1}, {yyrcfieldcheckbox, 104, 1017}}) {
    int v = 7;
    lookup(d, f, v);
    EXPECT_EQ(v, 0) << d << '/' << f;
  }
  double lo, hi;
  yyrcfieldrange(99999, 1037, lo, hi);
  EXPECT_GT(lo, hi);

  int status = 0;
  RcMenu m;
  yyrcmenuget(30002, m, status);
  EXPECT_EQ(status, 1002);
  EXPECT_TRUE(m.ids.empty());
  RcDialog d;
  yyrcdialogget(105, d, status);
  EXPECT_EQ(status, 1007);
  std::vector<std::uint8_t> rgba;
  int w, h;
  yyrcimagepixels(2002, 2, w, h, rgba, status);
  EXPECT_EQ(status, 1015);
  EXPECT_EQ(w, -1);
  std::vector<int> ids;
  yyrctoolbarget(30102, ids, w, h, status);
  EXPECT_EQ(status, 1002);
}

}  // namespace

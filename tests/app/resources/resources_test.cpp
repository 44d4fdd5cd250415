// The compiled-in tables as the program relies on them: every name of the
// generated header stands for what it names, the main form keeps the contract
// the application is written against, and the tables hold together (fields
// inside their dialogs, menus well formed, toolbar buttons with their tips,
// images whole). Last, the yyrc* contract itself: short spans, identifiers
// that aren't there, tables without data.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "app/resources/gombrel_ids.h"
#include "app/resources/gombrel_resources.h"
#include "toolkit/kernel/resources.h"

namespace {

// The program's own tables, the ones these tests read.
[[maybe_unused]] const bool kTablesInstalled = (yyrcinstall(gombrel_resource_tables()), true);

using ::testing::ElementsAre;
namespace ids = gombrel_ids;

// Field types as the tables number them.
enum FieldType { kLabel = 1, kPicture = 2, kGroup = 3, kString = 4, kInteger = 5, kReal = 6, kButton = 8,
                 kCheckBox = 9, kRadio = 10, kCombo = 11, kList = 12, kGrid = 15 };

// The generated header read back as (namespace, name, identifier), so that the
// tests reach every name without restating the list.
struct Named {
  std::string scope, name;
  int id = 0;
};

const std::vector<Named>& header_names() {
  static const std::vector<Named> names = [] {
    std::vector<Named> out;
    std::ifstream in(ZELV_BINARY_DIR "/generated/app/resources/gombrel_ids.h");
    const std::string open = "namespace ", def = "constexpr int ", equals = " = ";
    std::vector<std::string> scopes;
    for (std::string line; std::getline(in, line);) {
      if (line.rfind(open, 0) == 0 && line.size() > open.size() + 2 && line.ends_with(" {")) {
        scopes.push_back(line.substr(open.size(), line.size() - open.size() - 2));
      } else if (line.rfind('}', 0) == 0 && !scopes.empty()) {
        scopes.pop_back();
      } else if (line.rfind(def, 0) == 0 && line.ends_with(";") && scopes.size() == 2) {
        const std::size_t eq = line.find(equals);
        if (eq == std::string::npos) continue;
        out.push_back({scopes[1], line.substr(def.size(), eq - def.size()),
                       std::stoi(line.substr(eq + equals.size()))});
      }
    }
    return out;
  }();
  return names;
}

std::vector<Named> names_in(const std::string& scope) {
  std::vector<Named> out;
  for (const Named& n : header_names())
    if (n.scope == scope) out.push_back(n);
  return out;
}

RcDialog dialog(int id) {
  RcDialog d;
  int status = -1;
  yyrcdialogget(id, d, status);
  EXPECT_EQ(status, 0) << "dialog " << id;
  return d;
}

const RcField* find_field(const RcDialog& d, int id) {
  for (const RcField& f : d.fields)
    if (f.id == id) return &f;
  return nullptr;
}

RcMenu menu(int id) {
  RcMenu m;
  int status = -1;
  yyrcmenuget(id, m, status);
  EXPECT_EQ(status, 0) << "menu " << id;
  return m;
}

std::vector<int> children(const RcMenu& m, int first) {
  std::vector<int> v;
  for (int i = first; i >= 0; i = m.next[i]) v.push_back(i);
  return v;
}

std::vector<std::string> options(int dialog_id, int field_id, int& selected) {
  int count = 0, bytes = 0;
  yyrcfieldmenucheck(dialog_id, field_id, count, bytes);
  std::vector<int> pos(std::max(count, 0));
  std::vector<char> text(bytes);
  selected = -2;
  yyrcfieldmenuload(dialog_id, field_id, selected, pos, text);
  std::vector<std::string> out;
  for (int p : pos) out.push_back(p < 0 ? "" : std::string(text.data() + p));
  return out;
}

// The image type (1 bitmap, 2 icon, 3 cursor) an identifier has, 0 for none.
int image_type(int id) {
  for (int type = 1; type <= 3; ++type) {
    int w, h, hx, hy, bytes;
    yyrcimagecheck(id, type, w, h, hx, hy, bytes);
    if (w >= 0) return type;
  }
  return 0;
}

TEST(ResourceNames, EveryNameStandsForWhatItNames) {
  const auto dialogs = names_in("dialog"), menus = names_in("menu");
  // A header that doesn't read would make every check below vacuous.
  ASSERT_FALSE(dialogs.empty());
  ASSERT_FALSE(menus.empty());
  ASSERT_FALSE(names_in("main_form").empty());

  std::set<std::string> dialog_scopes;
  for (const Named& d : dialogs) {
    int count = -1, title = -1;
    yyrcdialogcheck(d.id, count, title);
    EXPECT_GE(count, 0) << "dialog::" << d.name;
    dialog_scopes.insert(d.name);
  }
  // Menu names: a menu, or an item of one of the named menus.
  std::set<int> items;
  for (const Named& n : menus) {
    int count = -1, bytes;
    yyrcmenucheck(n.id, count, bytes);
    if (count < 0) continue;
    for (int id : menu(n.id).ids) items.insert(id);
  }
  for (const Named& n : menus) {
    int count = -1, bytes;
    yyrcmenucheck(n.id, count, bytes);
    EXPECT_TRUE(count >= 0 || items.count(n.id)) << "menu::" << n.name;
  }
  for (const Named& t : names_in("toolbar")) {
    int count = -1, w, h;
    yyrctoolbarcheck(t.id, count, w, h);
    EXPECT_GT(count, 0) << "toolbar::" << t.name;
    EXPECT_EQ(image_type(t.id), 1) << "toolbar::" << t.name << " has no strip image";
  }
  for (const Named& im : names_in("image")) EXPECT_NE(image_type(im.id), 0) << "image::" << im.name;

  // Every other namespace is a named dialog's, and its names are fields of it.
  for (const Named& f : header_names()) {
    if (f.scope == "dialog" || f.scope == "menu" || f.scope == "toolbar" || f.scope == "image") continue;
    auto d = std::find_if(dialogs.begin(), dialogs.end(), [&](const Named& n) { return n.name == f.scope; });
    ASSERT_NE(d, dialogs.end()) << f.scope << " is no dialog's name";
    EXPECT_NE(find_field(dialog(d->id), f.id), nullptr) << f.scope << "::" << f.name;
  }
}

// The main form as the application addresses it, in the resource order, which
// is the order of creation and tabbing.
TEST(ResourceMainForm, FieldsHaveTheirTypesInTabOrder) {
  namespace form = ids::main_form;
  const std::pair<int, FieldType> contract[] = {
      {form::title_label, kLabel},
      {form::code_file, kString},
      {form::title, kString},
      {form::cell, kString},
      {form::space_group, kString},
      {form::wavelength, kReal},
      {form::reflection_file, kString},
      {form::reflection_format, kCombo},
      {form::transformation_matrix, kString},
      {form::friedel_law, kCheckBox},
      {form::scale_factor, kReal},
      {form::powder_output, kCheckBox},
      {form::propagation_vector, kString},
      {form::average_k_domains, kCheckBox},
      {form::twin, kCheckBox},
      {form::twin_name, kString},
      {form::diffractometer, kString},
      {form::twin_type, kCombo},
      {form::twin_space_group, kString},
      {form::domain_count, kInteger},
      {form::twin_matrices, kGrid},
      {form::ub_matrix, kString},
      {form::ub_transformation, kString},
      {form::cell_label, kLabel},
      {form::space_group_label, kLabel},
      {form::reflections_group, kGroup},
      {form::reflection_file_label, kLabel},
      {form::browse_reflection_file, kButton},
      {form::reflection_format_label, kLabel},
      {form::wavelength_label, kLabel},
      {form::transformation_matrix_label, kLabel},
      {form::propagation_vector_label, kLabel},
      {form::twin_group, kGroup},
      {form::code_file_group, kGroup},
      {form::general_group, kGroup},
      {form::magnetic_group, kGroup},
      {form::twin_name_label, kLabel},
      {form::twin_type_label, kLabel},
      {form::twin_space_group_label, kLabel},
      {form::diffractometer_label, kLabel},
      {form::domain_count_label, kLabel},
      {form::ub_matrix_label, kLabel},
      {form::ub_transformation_label, kLabel},
      {form::scale_factor_label, kLabel},
  };
  const RcDialog d = dialog(ids::dialog::main_form);
  ASSERT_EQ(d.fields.size(), std::size(contract));
  for (std::size_t k = 0; k < d.fields.size(); ++k) {
    EXPECT_EQ(d.fields[k].id, contract[k].first) << "position " << k;
    EXPECT_EQ(d.fields[k].type, contract[k].second) << "field " << d.fields[k].id;
  }
  EXPECT_EQ(d.title, "");
}

TEST(ResourceMainForm, InitialValuesOptionsAndGrid) {
  namespace form = ids::main_form;
  const int main_form = ids::dialog::main_form;
  for (auto [id, checked] : {std::pair{form::friedel_law, 1}, {form::powder_output, 0},
                             {form::average_k_domains, 0}, {form::twin, 0}}) {
    int v = -1;
    yyrcfieldcheckbox(main_form, id, v);
    EXPECT_EQ(v, checked) << id;
  }
  // What the form shows before a job is written into it.
  const RcDialog d = dialog(main_form);
  EXPECT_EQ(find_field(d, form::domain_count)->text, "0");
  EXPECT_EQ(find_field(d, form::scale_factor)->text, "1.0000");
  EXPECT_EQ(find_field(d, form::domain_count)->extra, 0x8000u);  // a spinner
  double lo = 0, hi = 0;
  yyrcfieldrange(main_form, form::domain_count, lo, hi);
  EXPECT_EQ(std::pair(lo, hi), std::pair(0.0, 24.0));

  // Option n is the job's code n - 1 (format) or n (twin type): the counts are
  // what the job file allows. Nothing is selected until the job is written.
  int selected = 0;
  EXPECT_EQ(options(main_form, form::reflection_format, selected).size(), 11u);
  EXPECT_EQ(selected, -1);
  EXPECT_THAT(options(main_form, form::twin_type, selected), ElementsAre("Type 1", "Type 2", "Type 3"));
  EXPECT_EQ(selected, -1);

  int cols, rows, tpl, width, label_bytes;
  yyrcfieldgridcheck(main_form, form::twin_matrices, cols, rows, tpl, width, label_bytes);
  EXPECT_EQ(tpl, ids::dialog::matrix_column);
  EXPECT_EQ(rows, 100);
  const RcDialog column = dialog(ids::dialog::matrix_column);
  ASSERT_EQ(column.fields.size(), 1u);
  EXPECT_EQ(cols, 1);
  EXPECT_EQ(column.fields[0].id, ids::matrix_column::matrix);
  int length = 0;
  yyrcfieldlength(ids::dialog::matrix_column, ids::matrix_column::matrix, length);
  EXPECT_EQ(length, 150);
}

TEST(ResourceAbout, FieldsTheAboutCommandUses) {
  const int about = ids::dialog::about;
  const RcDialog d = dialog(about);
  EXPECT_EQ(d.title, "About...");
  for (auto [id, type] : {std::pair{ids::about::icon, kPicture}, {ids::about::program_name, kLabel},
                          {ids::about::version, kLabel}, {ids::about::ok, kButton}}) {
    ASSERT_NE(find_field(d, id), nullptr) << id;
    EXPECT_EQ(find_field(d, id)->type, type) << id;
  }
  // The picture shows the image of its own identifier; the authors are named.
  EXPECT_EQ(image_type(ids::about::icon), 2);
  EXPECT_FALSE(find_field(d, ids::about::first_author)->text.empty());
  EXPECT_FALSE(find_field(d, ids::about::second_author)->text.empty());
  std::array<int, 6> colour{};
  yyrcfieldcolour(about, ids::about::version, colour);
  EXPECT_THAT(colour, ElementsAre(0, 0, 255, 256, 256, 256));
  int font = -1, family = -1, size = -1;
  yyrcfieldfont(about, ids::about::program_name, font);
  yyrcfontlist(font, family, size);
  EXPECT_EQ(font, 1);
  EXPECT_GT(size, 0);
}

// Faults of layout and cross-reference: a field outside its dialog, an
// identifier twice, options on a field that has none, a grid whose template
// doesn't match its columns, a font index without a font.
TEST(ResourceTables, EveryDialogHoldsTogether) {
  int fonts = 0;
  yyrcfontcount(fonts);
  for (const Named& n : names_in("dialog")) {
    const RcDialog d = dialog(n.id);
    EXPECT_GT(d.fields.size(), 0u) << n.name;
    std::set<int> seen;
    for (const RcField& f : d.fields) {
      const std::string where = n.name + " field " + std::to_string(f.id);
      EXPECT_TRUE(seen.insert(f.id).second) << where << " twice";
      EXPECT_GE(f.x, 0) << where;
      EXPECT_GE(f.y, 0) << where;
      EXPECT_LE(f.x + f.width, d.width) << where;
      // A combo's height is that of its open list, which may hang below the
      // dialog; a frame's bottom line may sit on the dialog's edge.
      const int reach = f.type == kCombo ? 1 : f.height, slack = f.type == kGroup ? 1 : 0;
      EXPECT_LE(f.y + reach, d.height + slack) << where;

      int count = -1, bytes = 0;
      yyrcfieldmenucheck(n.id, f.id, count, bytes);
      EXPECT_TRUE(count == -1 || f.type == kCombo || f.type == kList) << where << " has options";
      int checked = 0;
      yyrcfieldcheckbox(n.id, f.id, checked);
      EXPECT_TRUE(!checked || f.type == kCheckBox || f.type == kRadio) << where << " starts checked";
      int font = -1;
      yyrcfieldfont(n.id, f.id, font);
      EXPECT_TRUE(font >= 0 && font <= fonts) << where;
      if (f.type == kGrid) {
        int cols, rows, tpl, width, label_bytes;
        yyrcfieldgridcheck(n.id, f.id, cols, rows, tpl, width, label_bytes);
        EXPECT_EQ(static_cast<int>(dialog(tpl).fields.size()), cols) << where;
        EXPECT_GT(rows, 0) << where;
      }
    }
  }
}

// Each menu is one tree from item 0: every item reached once, a popup with
// children and only a popup, a separator without identifier or text.
TEST(ResourceMenus, EveryMenuIsAWellFormedTree) {
  for (const Named& n : names_in("menu")) {
    int count = -1, bytes;
    yyrcmenucheck(n.id, count, bytes);
    if (count < 0) continue;  // an item's name
    const RcMenu m = menu(n.id);
    std::vector<int> reached(count, 0);
    std::vector<int> pending{0};
    while (!pending.empty()) {
      int first = pending.back();
      pending.pop_back();
      for (int i : children(m, first)) {
        ASSERT_TRUE(i >= 0 && i < count && ++reached[i] == 1) << n.name << " item " << i;
        const bool popup = m.flags[i] & 65536, separator = m.flags[i] & 1;
        EXPECT_EQ(popup, m.child[i] >= 0) << n.name << " item " << m.ids[i];
        if (popup) pending.push_back(m.child[i]);
        EXPECT_EQ(separator, m.ids[i] == 0) << n.name << " item " << i;
        EXPECT_EQ(separator, m.item_text(i).empty()) << n.name << " item " << i;
      }
    }
    EXPECT_THAT(reached, ::testing::Each(1)) << n.name;
  }

  // The menu bar: Run acts from the bar itself; no item has a mnemonic.
  const RcMenu m = menu(ids::menu::main);
  std::vector<int> bar;
  for (int i : children(m, 0)) bar.push_back(m.ids[i]);
  EXPECT_THAT(bar, ElementsAre(ids::menu::file, ids::menu::run, ids::menu::view, ids::menu::help));
  EXPECT_EQ(m.child[children(m, 0)[1]], -1);
  EXPECT_THAT(m.mnemonic, ::testing::Each(-1));
}

// Toolbar buttons send menu commands: each is an item of the main menu, has
// its tool tip (Open alone has none), and has its picture in the strip.
TEST(ResourceToolbar, ButtonsAreMenuItemsWithToolTips) {
  std::vector<int> buttons;
  int w = 0, h = 0, status = -1;
  yyrctoolbarget(ids::toolbar::main, buttons, w, h, status);
  ASSERT_EQ(status, 0);
  const RcMenu m = menu(ids::menu::main);
  int pictures = 0;
  for (int id : buttons) {
    if (id == 0) continue;
    ++pictures;
    EXPECT_NE(std::find(m.ids.begin(), m.ids.end(), id), m.ids.end()) << id;
    int n = 0;
    yyrcstringcheck(id, n);
    if (id == ids::menu::file_open) {
      EXPECT_EQ(n, -1);
    } else {
      EXPECT_GT(n, 1) << "button " << id << " without tool tip";
    }
  }
  int sw, sh, hx, hy, bytes;
  yyrcimagecheck(ids::image::main_toolbar, 1, sw, sh, hx, hy, bytes);
  EXPECT_EQ(std::pair(sw, sh), std::pair(pictures * w, h));
}

TEST(ResourceImages, EveryImageInflatesToItsSize) {
  for (const Named& n : names_in("image")) {
    const int type = image_type(n.id);
    int w, h, status = -1;
    std::vector<std::uint8_t> rgba;
    yyrcimagepixels(n.id, type, w, h, rgba, status);
    ASSERT_EQ(status, 0) << n.name;
    ASSERT_EQ(rgba.size(), static_cast<std::size_t>(w * h * 4)) << n.name;
    int opaque = 0;
    for (std::size_t p = 0; p < rgba.size(); p += 4) {
      // Either fully drawn or fully transparent, and transparent pixels carry
      // the key colour that strips drop.
      ASSERT_TRUE(rgba[p + 3] == 0 || rgba[p + 3] == 255) << n.name;
      if (rgba[p + 3] == 255) {
        EXPECT_EQ(rgba[p] * 65536 + rgba[p + 1] * 256 + rgba[p + 2], 0xc0c0c0);
      } else {
        ++opaque;
      }
    }
    EXPECT_GT(opaque, w * h / 8) << "image " << n.name << " is nearly empty";
  }
}

// The yyrc* contract.

TEST(ResourceContract, ShortSpansAreFilledOnlyAsFarAsTheyReach) {
  std::vector<int> item_ids(2, 7), other(2);
  std::vector<char> text(3, 'z');
  yyrcmenuload(ids::menu::main, item_ids, other, other, other, other, other, text);
  EXPECT_THAT(item_ids, ElementsAre(ids::menu::file, ids::menu::file_new));
  EXPECT_EQ(std::string(text.data(), 3), "Fil");

  std::string sized(12, '#');
  yyrcstringload(ids::menu::file_new, sized);
  EXPECT_EQ(sized, std::string("New Data\0   ", 12));
  std::string narrow(3, '#');
  yyrcstringload(ids::menu::file_new, narrow);
  EXPECT_EQ(narrow, "New");
}

// Field by field, the offsets of yyrcfieldload_ agree with the texts of
// yyrcdialogget: -1 for none, each text NUL-ended in the pool.
TEST(ResourceContract, FieldTextOffsetsAgreeWithTheTexts) {
  const int id = ids::dialog::main_form;
  int count = 0, title_length = 0, w, h, anchor, font, bytes = 0;
  std::uint32_t style, layout;
  std::string title;
  yyrcdialogcheck(id, count, title_length);
  yyrcdialogload(id, w, h, style, layout, anchor, font, bytes, title);
  std::vector<int> fids(count), type(count), x(count), y(count), wd(count), ht(count), pos(count);
  std::vector<std::uint32_t> s1(count), s2(count), s3(count);
  std::vector<char> text(bytes);
  yyrcfieldload_(id, fids, type, x, y, wd, ht, s1, s2, s3, pos, text);
  const RcDialog d = dialog(id);
  ASSERT_EQ(d.fields.size(), static_cast<std::size_t>(count));
  for (int k = 0; k < count; ++k) {
    if (d.fields[k].text.empty()) {
      EXPECT_EQ(pos[k], -1) << fids[k];
    } else {
      EXPECT_EQ(std::string(text.data() + pos[k]), d.fields[k].text) << fids[k];
    }
  }
  EXPECT_EQ(text.back(), '\0');
}

TEST(ResourceContract, TablesWithoutDataAnswerNone) {
  const int form = ids::dialog::main_form, grid = ids::main_form::twin_matrices;
  std::array<int, 6> values{1, 1, 1, 1, 1, 1};
  yyrcfieldtrackbar(form, grid, values);
  EXPECT_THAT(values, ElementsAre(0, 0, 0, 0, 0, 0));
  int a = 9, b = 9, c = 9;
  yyrcfieldprogressbar(form, grid, a, b, c);
  EXPECT_THAT((std::vector<int>{a, b, c}), ElementsAre(0, 0, 0));
  yyrcfieldtabcheck(form, grid, a, b);
  EXPECT_THAT((std::vector<int>{a, b}), ElementsAre(-1, 0));
  yyrcfieldtreeview(form, grid, a, b);
  EXPECT_THAT((std::vector<int>{a, b}), ElementsAre(-1, -1));
  yyrcfieldformatcheck(form, ids::main_form::wavelength, a);
  EXPECT_EQ(a, 0);
  std::string format(4, 'x');
  yyrcfieldformatload(form, ids::main_form::wavelength, format);
  EXPECT_EQ(format, "    ");
  yyrcaccelcheck(ids::menu::main, a);
  EXPECT_EQ(a, -1);
  yyrchelpcheck(ids::menu::main, a, b);
  EXPECT_THAT((std::vector<int>{a, b}), ElementsAre(-1, -1));
  // No grid on a field that isn't one, no range on a field without it.
  int cols, rows, tpl, width, label_bytes;
  yyrcfieldgridcheck(form, ids::main_form::domain_count, cols, rows, tpl, width, label_bytes);
  EXPECT_THAT((std::vector<int>{cols, rows, tpl, width, label_bytes}), ElementsAre(-1, -1, -1, -1, 0));
  double lo = 0, hi = 0;
  yyrcfieldrange(form, ids::main_form::wavelength, lo, hi);
  EXPECT_EQ(std::pair(lo, hi), std::pair(1.0, -1.0));
}

TEST(ResourceContract, IdentifierAndTypeMustBothMatch) {
  int w, h, hx, hy, bytes;
  yyrcimagecheck(ids::image::main_toolbar, 2, w, h, hx, hy, bytes);
  EXPECT_THAT((std::vector<int>{w, h, hx, hy, bytes}), ElementsAre(-1, -1, -1, -1, -1));
  yyrcimagecheck(ids::image::program_icon, 1, w, h, hx, hy, bytes);
  EXPECT_EQ(w, -1);
  const std::uint8_t* data = reinterpret_cast<const std::uint8_t*>(&w);
  yyrcimageload(ids::image::program_icon, 3, data);
  EXPECT_EQ(data, nullptr);
}

// Identifiers that aren't there: -1 from the checks, defaults from the
// lookups, and the error code of the kind from the one-step helpers.
TEST(ResourceContract, UnknownIdentifiersAnswerNone) {
  for (int id : {0, -999, 99999, ids::dialog::main_form + 1}) {
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
  const int form = ids::dialog::main_form, friedel = ids::main_form::friedel_law;
  for (auto [lookup, d, f] : {std::tuple<Lookup, int, int>{yyrcfieldcheckbox, 99999, friedel},
                              {yyrcfieldlength, form, 99999}, {yyrcfieldshortcut, form, friedel},
                              {yyrcfieldfont, 99999, 1}, {yyrcfieldcheckbox, ids::dialog::about, friedel}}) {
    int v = 7;
    lookup(d, f, v);
    EXPECT_EQ(v, 0) << d << '/' << f;
  }
  double lo, hi;
  yyrcfieldrange(99999, ids::main_form::domain_count, lo, hi);
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
  std::vector<int> buttons;
  yyrctoolbarget(30102, buttons, w, h, status);
  EXPECT_EQ(status, 1002);
}

}  // namespace

// The yyrc* routines over the generated tables.
#include "toolkit/kernel/resources.h"

#include <zlib.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "toolkit/kernel/resource_tables.h"
#include "toolkit/base/fixed_text.h"

static_assert(std::endian::native == std::endian::little, "IPIXEL words are read as bytes, low byte first");

namespace {

// Tables with nothing in them but their closing records: what the toolkit
// sees before the application installs its own.
constexpr std::int32_t kNoMenus[] = {-999, 1};
constexpr std::int32_t kNoItems[] = {0, 0, 0, 0, 1, 0};
constexpr std::int32_t kNoDialog[22] = {-999, 1, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
constexpr std::int32_t kNoField[10] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
constexpr std::int32_t kNoWords[16] = {};
constexpr zelv_rc::RangeEntry kNoRange[1] = {};
constexpr std::int32_t kNoToolbars[] = {-999, 1, 0, 0};
constexpr std::int32_t kNoStrings[] = {-1, 1};
constexpr zelv_rc::ResourceTables kNoTables{
    0, 0, 0, 0, 0, 0, kNoMenus, kNoItems, "", kNoDialog, kNoField, "", "", kNoWords, kNoWords, kNoRange,
    kNoWords, kNoWords, kNoWords, kNoWords, "", kNoWords, kNoWords, "", kNoWords, kNoWords, kNoWords,
    kNoWords, kNoToolbars, kNoWords, kNoStrings, ""};

struct ResourceState {
  const zelv_rc::ResourceTables* tables = &kNoTables;
};
ResourceState& state() {
  static ResourceState s;
  return s;
}
const zelv_rc::ResourceTables& T() { return *state().tables; }

constexpr int kDialogWords = 22;
constexpr int kFieldWords = 10;

// Words of the dialog record that open each per-field table.
enum DialogWord {
  kFirstField = 1, kTitle = 8, kCheck = 9, kLength = 10, kRange = 11, kKey = 12, kColour = 13,
  kMenu = 15, kGrid = 18, kFont = 21
};

int find_menu(int id) {
  if (id == 0 || id == -999) return -1;
  for (int k = 0; k < T().N_MENUS; ++k)
    if (T().MENUS[2 * k] == id) return k;
  return -1;
}

int find_dialog(int id) {
  if (id == 0 || id == -999) return -1;
  for (int k = 0; k < T().N_DIALOGS; ++k)
    if (T().DIALOG[kDialogWords * k] == id) return k;
  return -1;
}

const std::int32_t* dialog_record(int k) { return T().DIALOG + kDialogWords * k; }

// Entries [first, end) of one dialog's slice of a per-field table, 0-based.
struct Slice {
  int first = 0, end = 0;
};

Slice slice(int dialog_index, DialogWord word) {
  return {dialog_record(dialog_index)[word] - 1, dialog_record(dialog_index + 1)[word] - 1};
}

// The entry for a field in a table of `words` words per entry, or null.
const std::int32_t* lookup(const std::int32_t* table, int words, DialogWord word, int dialog_id, int field_id) {
  int k = find_dialog(dialog_id);
  if (k < 0) return nullptr;
  Slice s = slice(k, word);
  for (int e = s.first; e < s.end; ++e)
    if (table[words * e] == field_id) return table + words * e;
  return nullptr;
}

// Copies pool bytes [begin, end), 0-based, as far as the span reaches.
void copy_pool(const char* pool, int begin, int end, std::span<char> out) {
  std::size_t n = std::min<std::size_t>(out.size(), static_cast<std::size_t>(std::max(0, end - begin)));
  if (n == 0) return;  // an empty span may have no storage at all
  std::memcpy(out.data(), pool + begin, n);
}

// Offset of a pool entry in a part starting at the 1-based position `base`;
// -1 when the entry has no text.
int offset(std::int32_t pos, std::int32_t next, std::int32_t base) { return next > pos ? pos - base : -1; }

// Offsets for consecutive entries of a position table, and the texts behind.
void load_texts(const std::int32_t* positions, int count, const char* pool, std::span<int> text_pos,
                std::span<char> text) {
  if (count <= 0) return;
  std::int32_t base = positions[0];
  for (int i = 0; i < count && static_cast<std::size_t>(i) < text_pos.size(); ++i)
    text_pos[i] = offset(positions[i], positions[i + 1], base);
  copy_pool(pool, base - 1, positions[count] - 1, text);
}

template <class T>
void put(std::span<T> s, int i, T v) {
  if (static_cast<std::size_t>(i) < s.size()) s[i] = v;
}

int find_image(int id, int type) {
  for (int k = 0; k < T().N_IMAGES; ++k)
    if (T().IMAGES[8 * k] == id && T().IMAGES[8 * k + 1] == type) return k;
  return -1;
}

int find_toolbar(int id) {
  if (id == -999) return -1;
  for (int k = 0; k < T().N_TOOLBARS; ++k)
    if (T().TOOLBARS[4 * k] == id) return k;
  return -1;
}

int find_string(int id) {
  if (id == -1) return -1;
  for (int k = 0; k < T().N_STRINGS; ++k)
    if (T().SLIST[2 * k] == id) return k;
  return -1;
}

}  // namespace

void yyrcinstall(const zelv_rc::ResourceTables& tables) { state().tables = &tables; }

void yyrcmenucheck(int menu_id, int& item_count, int& text_bytes) {
  int k = find_menu(menu_id);
  if (k < 0) {
    item_count = text_bytes = -1;
    return;
  }
  int first = T().MENUS[2 * k + 1] - 1, end = T().MENUS[2 * k + 3] - 1;
  item_count = end - first;
  text_bytes = T().ITEMS[6 * end + 4] - T().ITEMS[6 * first + 4];
}

void yyrcmenuload(int menu_id, std::span<int> ids, std::span<int> flags, std::span<int> next, std::span<int> child,
                  std::span<int> text_pos, std::span<int> mnemonic, std::span<char> text) {
  int k = find_menu(menu_id);
  if (k < 0) return;
  int first = T().MENUS[2 * k + 1] - 1, end = T().MENUS[2 * k + 3] - 1;
  std::int32_t base = T().ITEMS[6 * first + 4];
  for (int i = 0; i < end - first; ++i) {
    const std::int32_t* item = T().ITEMS + 6 * (first + i);
    put(ids, i, item[0]);
    put(flags, i, item[1]);
    put(next, i, item[2]);
    put(child, i, item[3]);
    put(text_pos, i, offset(item[4], item[6 + 4], base));
    put(mnemonic, i, item[5]);
  }
  copy_pool(T().MENU_COPTIONS, base - 1, T().ITEMS[6 * end + 4] - 1, text);
}

void yyrcaccelcheck(int, int& count) { count = -1; }
void yyrcaccelload(int, std::span<int>, std::span<int>, std::span<int>) {}

void yyrchelpcheck(int, int& count, int& text_bytes) { count = text_bytes = -1; }
void yyrchelpload(int, std::span<int>, std::span<int>, std::span<char>) {}

void yyrcfontcount(int& count) { count = T().N_FONTS; }

void yyrcfontlist(int font_index, int& family, int& size) {
  if (font_index < 1 || font_index > T().N_FONTS) {
    family = size = -1;
    return;
  }
  family = T().XFONT[2 * (font_index - 1)];
  size = T().XFONT[2 * (font_index - 1) + 1];
}

void yyrcdialogcheck_(int dialog_id, int& field_count, int& title_length) {
  int k = find_dialog(dialog_id);
  if (k < 0) {
    field_count = title_length = -1;
    return;
  }
  field_count = dialog_record(k + 1)[kFirstField] - dialog_record(k)[kFirstField];
  std::int32_t pos = dialog_record(k)[kTitle], next = dialog_record(k + 1)[kTitle];
  title_length = next > pos ? next - pos - 1 : 0;
}

// The window layer's name for the same question.
void yyrcdialogcheck(int dialog_id, int& field_count, int& title_length) {
  yyrcdialogcheck_(dialog_id, field_count, title_length);
}

void yyrcdialogload(int dialog_id, int& width, int& height, std::uint32_t& style, std::uint32_t& layout,
                    int& anchor_field, int& font_index, int& text_bytes, std::string& title) {
  int k = find_dialog(dialog_id);
  if (k < 0) return;
  const std::int32_t* d = dialog_record(k);
  width = d[2];
  height = d[3];
  style = static_cast<std::uint32_t>(d[4]);
  layout = static_cast<std::uint32_t>(d[5]);
  font_index = d[6];
  anchor_field = d[7];
  int f0 = d[kFirstField] - 1, f1 = dialog_record(k + 1)[kFirstField] - 1;
  text_bytes = T().FIELD[kFieldWords * f1 + 9] - T().FIELD[kFieldWords * f0 + 9];
  std::int32_t pos = d[kTitle], next = dialog_record(k + 1)[kTitle];
  assign_out(title, next > pos ? std::string_view(T().CTITLES + pos - 1, next - pos - 1) : std::string_view{});
}

void yyrcfieldload_(int dialog_id, std::span<int> ids, std::span<int> types, std::span<int> x, std::span<int> y,
                   std::span<int> width, std::span<int> height, std::span<std::uint32_t> style,
                   std::span<std::uint32_t> style2, std::span<std::uint32_t> extra, std::span<int> text_pos,
                   std::span<char> text) {
  int k = find_dialog(dialog_id);
  if (k < 0) return;
  int f0 = dialog_record(k)[kFirstField] - 1, f1 = dialog_record(k + 1)[kFirstField] - 1;
  std::int32_t base = T().FIELD[kFieldWords * f0 + 9];
  for (int i = 0; i < f1 - f0; ++i) {
    const std::int32_t* f = T().FIELD + kFieldWords * (f0 + i);
    put(ids, i, f[0]);
    put(types, i, f[1]);
    put(x, i, f[2]);
    put(y, i, f[3]);
    put(width, i, f[4]);
    put(height, i, f[5]);
    put(style, i, static_cast<std::uint32_t>(f[6]));
    put(style2, i, static_cast<std::uint32_t>(f[7]));
    put(extra, i, static_cast<std::uint32_t>(f[8]));
    put(text_pos, i, offset(f[9], f[kFieldWords + 9], base));
  }
  copy_pool(T().CONTENT, base - 1, T().FIELD[kFieldWords * f1 + 9] - 1, text);
}

void yyrcfieldcheckbox(int dialog_id, int field_id, int& checked) {
  checked = lookup(T().ICHECK, 1, kCheck, dialog_id, field_id) ? 1 : 0;
}

void yyrcfieldlength(int dialog_id, int field_id, int& length) {
  const std::int32_t* e = lookup(T().LENGTH, 2, kLength, dialog_id, field_id);
  length = e ? e[1] : 0;
}

void yyrcfieldrange(int dialog_id, int field_id, double& minimum, double& maximum) {
  minimum = 1.0;
  maximum = -1.0;
  int k = find_dialog(dialog_id);
  if (k < 0) return;
  Slice s = slice(k, kRange);
  for (int e = s.first; e < s.end; ++e)
    if (T().RANGE[e].field == field_id) {
      minimum = T().RANGE[e].minimum;
      maximum = T().RANGE[e].maximum;
      return;
    }
}

void yyrcfieldshortcut(int dialog_id, int field_id, int& character) {
  const std::int32_t* e = lookup(T().KEY, 2, kKey, dialog_id, field_id);
  character = e ? (e[1] & 0xff) : 0;
}

void yyrcfieldcolour(int dialog_id, int field_id, std::array<int, 6>& colours) {
  const std::int32_t* e = lookup(T().COLOUR, 7, kColour, dialog_id, field_id);
  for (int i = 0; i < 6; ++i) colours[i] = e ? e[1 + i] : 256;
}

void yyrcfieldtrackbar(int, int, std::array<int, 6>& values) { values.fill(0); }

void yyrcfieldmenucheck(int dialog_id, int field_id, int& option_count, int& text_bytes) {
  const std::int32_t* e = lookup(T().MENU, 3, kMenu, dialog_id, field_id);
  if (!e) {
    option_count = -1;
    text_bytes = 0;
    return;
  }
  int first = e[2] - 1, end = e[3 + 2] - 1;
  option_count = end - first;
  text_bytes = T().IOPTPOS[end] - T().IOPTPOS[first];
}

void yyrcfieldmenuload(int dialog_id, int field_id, int& selected, std::span<int> text_pos, std::span<char> text) {
  const std::int32_t* e = lookup(T().MENU, 3, kMenu, dialog_id, field_id);
  if (!e) {
    selected = -1;
    return;
  }
  selected = e[1];
  load_texts(T().IOPTPOS + e[2] - 1, e[3 + 2] - e[2], T().FIELD_COPTIONS, text_pos, text);
}

void yyrcfieldprogressbar(int, int, int& position, int& minimum, int& maximum) { position = minimum = maximum = 0; }

void yyrcfieldtabcheck(int, int, int& page_count, int& text_bytes) {
  page_count = -1;
  text_bytes = 0;
}
void yyrcfieldtabload(int, int, int& selected, std::span<int>, std::span<int>, std::span<char>) { selected = -1; }

void yyrcfieldgridcheck(int dialog_id, int field_id, int& columns, int& rows, int& template_dialog, int& label_width,
                        int& label_bytes) {
  const std::int32_t* e = lookup(T().GRID, 6, kGrid, dialog_id, field_id);
  if (!e) {
    columns = rows = template_dialog = label_width = -1;
    label_bytes = 0;
    return;
  }
  columns = e[1];
  rows = e[2];
  template_dialog = e[3];
  label_width = e[4];
  label_bytes = T().ILABPOS[e[5] - 1 + rows] - T().ILABPOS[e[5] - 1];
}

void yyrcfieldgridload(int dialog_id, int field_id, std::span<int> text_pos, std::span<char> text) {
  const std::int32_t* e = lookup(T().GRID, 6, kGrid, dialog_id, field_id);
  if (e) load_texts(T().ILABPOS + e[5] - 1, e[2], T().CLABELS, text_pos, text);
}

void yyrcfieldtreeview(int, int, int& menu_id, int& selected) { menu_id = selected = -1; }
void yyrcfieldformatcheck(int, int, int& length) { length = 0; }
void yyrcfieldformatload(int, int, std::string& format) { assign_out(format, {}); }

void yyrcfieldfont_(int dialog_id, int field_id, int& font_index) {
  int k = find_dialog(dialog_id);
  if (k < 0) {
    font_index = 0;
    return;
  }
  const std::int32_t* e = lookup(T().FONT, 2, kFont, dialog_id, field_id);
  font_index = e ? e[1] : dialog_record(k)[6];
}

// The display services' name for the same lookup.
void yyrcfieldfont(int dialog_id, int field_id, int& font_index) { yyrcfieldfont_(dialog_id, field_id, font_index); }

void yyrcimagecheck(int image_id, int type, int& width, int& height, int& hot_x, int& hot_y, int& data_bytes) {
  int k = find_image(image_id, type);
  if (k < 0) {
    width = height = hot_x = hot_y = data_bytes = -1;
    return;
  }
  const std::int32_t* im = T().IMAGES + 8 * k;
  width = im[2];
  height = im[3];
  hot_x = im[4];
  hot_y = im[5];
  data_bytes = im[7];
}

void yyrcimageload(int image_id, int type, const std::uint8_t*& data) {
  int k = find_image(image_id, type);
  data = k < 0 ? nullptr : reinterpret_cast<const std::uint8_t*>(T().IPIXEL + T().IMAGES[8 * k + 6] - 1);
}

void yyrctoolbarcheck(int toolbar_id, int& button_count, int& button_width, int& button_height) {
  int k = find_toolbar(toolbar_id);
  if (k < 0) {
    button_count = button_width = button_height = -1;
    return;
  }
  button_count = T().TOOLBARS[4 * (k + 1) + 1] - T().TOOLBARS[4 * k + 1];
  button_width = T().TOOLBARS[4 * k + 2];
  button_height = T().TOOLBARS[4 * k + 3];
}

void yyrctoolbarload(int toolbar_id, std::span<int> ids) {
  int k = find_toolbar(toolbar_id);
  if (k < 0) return;
  int first = T().TOOLBARS[4 * k + 1] - 1, end = T().TOOLBARS[4 * (k + 1) + 1] - 1;
  for (int i = 0; i < end - first; ++i) put(ids, i, T().IBUTTON[first + i]);
}

void yyrcstringcheck(int string_id, int& length_plus_one) {
  int k = find_string(string_id);
  length_plus_one = k < 0 ? -1 : T().SLIST[2 * k + 3] - T().SLIST[2 * k + 1] + 1;
}

void yyrcstringload(int string_id, std::string& text) {
  int k = find_string(string_id);
  if (k < 0) return;
  std::string_view s(T().CSTRING + T().SLIST[2 * k + 1] - 1, T().SLIST[2 * k + 3] - T().SLIST[2 * k + 1]);
  if (text.empty()) {
    text.assign(s);  // the string's own terminator is the NUL behind it
    return;
  }
  std::size_t width = text.size();
  std::string r(s.substr(0, std::min(s.size(), width)));
  if (r.size() < width) r += '\0';
  r.resize(width, ' ');
  text = std::move(r);
}

std::string RcMenu::item_text(std::size_t item) const {
  if (item >= text_pos.size() || text_pos[item] < 0) return {};
  return std::string(text.data() + text_pos[item]);
}

void yyrcmenuget(int menu_id, RcMenu& menu, int& status) {
  int count = 0, bytes = 0;
  yyrcmenucheck(menu_id, count, bytes);
  if (count < 0) {
    menu = {};
    status = 1002;
    return;
  }
  for (auto* v : {&menu.ids, &menu.flags, &menu.next, &menu.child, &menu.text_pos, &menu.mnemonic})
    v->assign(count, 0);
  menu.text.assign(bytes, '\0');
  yyrcmenuload(menu_id, menu.ids, menu.flags, menu.next, menu.child, menu.text_pos, menu.mnemonic, menu.text);
  status = 0;
}

void yyrcdialogget(int dialog_id, RcDialog& dialog, int& status) {
  int count = 0, title_length = 0;
  yyrcdialogcheck_(dialog_id, count, title_length);
  dialog = {};
  if (count < 0) {
    status = 1007;
    return;
  }
  int bytes = 0;
  yyrcdialogload(dialog_id, dialog.width, dialog.height, dialog.style, dialog.layout, dialog.anchor_field,
                 dialog.font_index, bytes, dialog.title);
  std::vector<int> ids(count), types(count), x(count), y(count), w(count), h(count), pos(count);
  std::vector<std::uint32_t> style(count), style2(count), extra(count);
  std::vector<char> text(bytes);
  yyrcfieldload_(dialog_id, ids, types, x, y, w, h, style, style2, extra, pos, text);
  dialog.fields.resize(count);
  for (int i = 0; i < count; ++i) {
    RcField& f = dialog.fields[i];
    f = {ids[i], types[i], x[i], y[i], w[i], h[i], style[i], style2[i], extra[i], {}};
    if (pos[i] >= 0) f.text = text.data() + pos[i];
  }
  status = 0;
}

void yyrcimagepixels(int image_id, int type, int& width, int& height, std::vector<std::uint8_t>& rgba, int& status) {
  int hx = 0, hy = 0, bytes = 0;
  yyrcimagecheck(image_id, type, width, height, hx, hy, bytes);
  rgba.clear();
  if (width < 1 || height < 1) {
    status = 1015;
    return;
  }
  const std::uint8_t* data = nullptr;
  yyrcimageload(image_id, type, data);
  uLongf size = static_cast<uLongf>(width) * height * 4;
  rgba.resize(size);
  if (uncompress(rgba.data(), &size, data, static_cast<uLong>(bytes)) != Z_OK ||
      size != static_cast<uLongf>(width) * height * 4) {
    rgba.clear();
    status = 1015;
    return;
  }
  status = 0;
}

void yyrctoolbarget(int toolbar_id, std::vector<int>& ids, int& button_width, int& button_height, int& status) {
  int count = 0;
  yyrctoolbarcheck(toolbar_id, count, button_width, button_height);
  if (count < 0) {
    ids.clear();
    status = 1002;
    return;
  }
  ids.assign(count, 0);
  yyrctoolbarload(toolbar_id, ids);
  status = 0;
}

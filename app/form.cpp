// The main form and the job state: the job shown in the form, the form read
// back and checked, and the form kept consistent while the user types.
#include "app/form.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>

#include "app/data_param.h"
#include "app/data_proc.h"
#include "app/resources/gombrel_ids.h"
#include "support/lorx_io_messages.h"
#include "support/lorx_string_utilities.h"
#include "toolkit/base/error.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/format.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_rows.h"
#include "toolkit/kernel/menu.h"

namespace data_proc {

using namespace data_param;

namespace {

namespace form = gombrel_ids::main_form;
namespace menu = gombrel_ids::menu;

// Numbers are read from at most this many characters of a field.
constexpr std::size_t kWorkText = 120;
// The grid's one column.
constexpr int kMatrixColumn = 1;
// The grid never shows fewer rows than this.
constexpr int kMinimumRows = 3;
// Cell states of the grid.
constexpr int kCellEditable = 1;
constexpr int kCellInactive = 0;
constexpr int kCellReadOnly = 2;
// Field states.
constexpr int kDisabled = 0;
constexpr int kEnabled = 1;

// The twin group: the fields that follow the twin check box, labels and inputs
// alike. The first 13 reach up to the grid; the UB fields come last.
constexpr std::array<int, 15> kTwinGroup = {
    form::twin_name_label,    form::diffractometer_label, form::twin_type_label,
    form::twin_space_group_label, form::domain_count_label, form::ub_matrix_label,
    form::ub_transformation_label, form::twin_name,         form::diffractometer,
    form::twin_type,          form::twin_space_group,     form::domain_count,
    form::twin_matrices,      form::ub_matrix,            form::ub_transformation};
constexpr std::size_t kTwinGroupUpToGrid = 13;

void set_twin_group(int state, std::size_t count = kTwinGroup.size()) {
  for (std::size_t i = 0; i < count; ++i) WDialogFieldState(kTwinGroup[i], state);
}

// Numbers as the form shows them: formatted, trimmed on the right only.
std::string numbers_text(std::string_view descriptor, std::span<const float> values) {
  std::array<FormatArg, 9> args{};
  std::size_t n = 0;
  for (float v : values) args[n++] = v;
  std::string out;
  format_record(descriptor, std::span<const FormatArg>(args.data(), n), out);
  if (out.size() > kWorkText) out.resize(kWorkText);
  return std::string(trimmed(out));
}

std::array<float, 9> row_by_row(const Mat3& m) {
  return {m[0][0], m[0][1], m[0][2], m[1][0], m[1][1], m[1][2], m[2][0], m[2][1], m[2][2]};
}

void from_row_by_row(std::span<const float> v, Mat3& m) {
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) m[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)] = v[static_cast<std::size_t>(3 * r + c)];
}

void put_matrix(int field, const Mat3& m, std::string_view descriptor) {
  const auto v = row_by_row(m);
  WDialogPutString(field, numbers_text(descriptor, v));
}

// "Domain " and the number, written in `width` columns and left-adjusted.
std::string domain_label(int i, int width) {
  std::string number;
  const std::array<FormatArg, 1> arg = {i};
  format_record("(I" + std::to_string(width) + ")", arg, number);
  std::string text = "Domain " + std::string(left_trimmed(number));
  text.resize(7 + static_cast<std::size_t>(width), ' ');
  return text;
}

// The leading bytes of a text that fit `width`, never ending inside a UTF-8
// character, so that a cut name still reads back as text.
std::string_view fitting(std::string_view text, std::size_t width) {
  if (text.size() <= width) return text;
  std::size_t n = width;
  const auto continuation = [&](std::size_t i) { return (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80; };
  if (continuation(n)) {
    while (n > 0 && continuation(n)) --n;  // n now at the lead byte of the cut character
  }
  return text.substr(0, n);
}

std::string field_text(int field) {
  std::string text;
  WDialogGetString(field, text);
  return text;
}

template <std::size_t N>
void get_text(int field, Fixed<N>& target) {
  target = fitting(field_text(field), N);
}

int check_box(int field) {
  int state = 0;
  WDialogGetCheckBox(field, state);
  return state;
}

// The numbers of a text as getnum reads them, from its first 120 characters;
// the count includes numbers beyond the room of `values`.
int numbers_of(std::string_view text, std::span<float> values) {
  std::array<int, 16> ints{};
  int count = 0;
  lorx_string_utilities::getnum(text.substr(0, std::min(text.size(), kWorkText)), values, ints, count);
  return count;
}

// A blank text gives a zero matrix and false; nine numbers fill it and give
// true; anything else is an error.
enum class MatrixText { blank, given, bad };
MatrixText read_matrix(std::string_view text, Mat3& m) {
  if (is_blank(text.substr(0, std::min(text.size(), kWorkText)))) {
    m = {};
    return MatrixText::blank;
  }
  std::array<float, 10> v{};
  if (numbers_of(text, v) != 9) return MatrixText::bad;
  from_row_by_row(v, m);
  return MatrixText::given;
}

// A real field: the value (the undefined value when there is none) and
// whether a number was there.
void get_real(int field, float& value, bool& given) {
  WInfoError(1);
  WDialogGetReal(field, value);
  given = WInfoError(1) == 0;
}

void fail(std::string_view message, int code) {
  lorx_io_messages::error_message(message);
  exit_code = code;
}

int grid_rows_for(int domains) { return std::max(domains, kMinimumRows); }

}  // namespace

void write_dialog_info() {
  WDialogPutString(form::code_file, codefile.trim());
  WDialogPutString(form::title, title.trim());
  WDialogPutCheckBox(form::powder_output, powder ? 1 : 0);
  if (cell_given) {
    const std::array<float, 6> c = {cel[0], cel[1], cel[2], ang[0], ang[1], ang[2]};
    WDialogPutString(form::cell, numbers_text("(3F12.6,2X,3F12.4)", c));
  } else {
    WDialogPutString(form::cell, "");
  }
  WDialogPutString(form::space_group, spgr.trim());
  WDialogPutReal(form::wavelength, wave_given ? wavel : 1.0f, "(f12.5)");
  WDialogPutString(form::reflection_file, file_dat.trim());
  WDialogPutOption(form::reflection_format, hkl_type + 1);
  if (transf_ind) put_matrix(form::transformation_matrix, transhkl, "(9F12.4)");
  else WDialogPutString(form::transformation_matrix, "");
  WDialogPutCheckBox(form::friedel_law, friedel ? 1 : 0);
  WDialogPutReal(form::scale_factor, scale_given ? scal_fact : 1.0f, "(g12.4)");
  WDialogPutString(form::propagation_vector, prop ? numbers_text("(3F10.4)", kv) : std::string());

  // The box can't be on without a valid propagation vector; a domain flag
  // without one leaves the box as it is.
  if (!domain) WDialogPutCheckBox(form::average_k_domains, 0);
  else if (prop) WDialogPutCheckBox(form::average_k_domains, 1);

  WGridRows(form::twin_matrices, grid_rows_for(nmat));
  if (!twinned) {
    WDialogPutCheckBox(form::twin, 0);
    set_twin_group(kDisabled);  // their text stays, greyed
    return;
  }
  WDialogPutCheckBox(form::twin, 1);
  set_twin_group(kEnabled);
  WDialogPutString(form::twin_name, twin_name.trim());
  WDialogPutString(form::diffractometer, machine.trim());
  WDialogPutOption(form::twin_type, itwin);
  if (ispg) WDialogPutString(form::twin_space_group, twin_spg.trim());
  if (iubm) put_matrix(form::ub_matrix, ubm, "(9F10.4)");
  if (itransf) put_matrix(form::ub_transformation, tr, "(9F10.4)");
  WDialogPutInteger(form::domain_count, nmat);

  if (nmat == 0) {
    WDialogFieldState(form::twin_matrices, kDisabled);
    return;
  }
  WDialogFieldState(form::twin_matrices, kEnabled);
  WGridRows(form::twin_matrices, grid_rows_for(nmat));
  for (int i = 1; i <= nmat && i <= max_domains; ++i) {
    WGridLabelRow(form::twin_matrices, i, domain_label(i, 3));
    WGridStateCell(form::twin_matrices, kMatrixColumn, i, kCellEditable);
    const auto v = row_by_row(twin[static_cast<std::size_t>(i)]);
    WGridPutCellString(form::twin_matrices, kMatrixColumn, i, numbers_text("(9F10.4)", v));
  }
  for (int row = nmat + 1; row <= kMinimumRows; ++row) {
    WGridLabelRow(form::twin_matrices, row, "");
    WGridStateCell(form::twin_matrices, kMatrixColumn, row, kCellReadOnly);
  }
}

void read_dialog_info() {
  exit_code = 0;
  get_text(form::code_file, codefile);
  get_text(form::title, title);
  powder = check_box(form::powder_output) == 1;

  {
    std::array<float, 7> c{};
    cell_given = numbers_of(field_text(form::cell), c) == 6;
    if (!cell_given) return fail("Bad Cell Parameters were introduced!", 1);
    cel = {c[0], c[1], c[2]};
    ang = {c[3], c[4], c[5]};
  }
  get_text(form::space_group, spgr);
  get_real(form::wavelength, wavel, wave_given);
  get_text(form::reflection_file, file_dat);
  {
    int option = 0;
    WDialogGetMenu(form::reflection_format, option);
    hkl_type = option - 1;
  }

  switch (read_matrix(field_text(form::transformation_matrix), transhkl)) {
    case MatrixText::blank: transf_ind = false; break;
    case MatrixText::given: transf_ind = true; break;
    case MatrixText::bad: transf_ind = false; return fail("Incorrect Transformation Matrix!", 1);
  }
  friedel = check_box(form::friedel_law) == 1;
  get_real(form::scale_factor, scal_fact, scale_given);

  {
    const std::string text = field_text(form::propagation_vector);
    std::array<float, 4> k{};
    const int count = numbers_of(text, k);
    if (is_blank(std::string_view(text).substr(0, std::min(text.size(), kWorkText)))) {
      prop = false;
    } else if (count == 3) {
      kv = {k[0], k[1], k[2]};
      prop = true;
      domain = check_box(form::average_k_domains) == 1;
    } else {
      prop = false;
      return fail("Incorrect Propagation Vector!", 1);
    }
  }

  if (check_box(form::twin) == 0) {
    twinned = false;  // the twin values stay in memory but aren't saved
    return;
  }
  get_text(form::twin_name, twin_name);
  get_text(form::diffractometer, machine);
  {
    const std::string spg = field_text(form::twin_space_group);
    const std::string_view work = std::string_view(spg).substr(0, std::min(spg.size(), kWorkText));
    ispg = !is_blank(work);
    if (ispg) twin_spg = fitting(trimmed(work), decltype(twin_spg)::width());
  }
  WDialogGetMenu(form::twin_type, itwin);
  {
    int n = 0;
    WDialogGetInteger(form::domain_count, n);
    nmat = std::clamp(n, 0, max_domains);
  }
  for (int i = 1; i <= nmat; ++i) {
    std::string cell;
    WGridGetCellString(form::twin_matrices, kMatrixColumn, i, cell);
    if (read_matrix(cell, twin[static_cast<std::size_t>(i)]) == MatrixText::bad)
      return fail("Bad TWIN Matrix parameters!", 1);
  }
  iubm = false;
  switch (read_matrix(field_text(form::ub_matrix), ubm)) {
    case MatrixText::blank: break;
    case MatrixText::given: iubm = true; break;
    case MatrixText::bad: return fail("Bad UB Matrix parameters!", 1);
  }
  itransf = false;
  switch (read_matrix(field_text(form::ub_transformation), tr)) {
    case MatrixText::blank: break;
    case MatrixText::given: itransf = true; break;
    case MatrixText::bad: return fail("Bad UB-Tranf Vector parameters!", -1);  // this one ends the program
  }
  twinned = true;
}

void evento_fieldchanged() {
  const int from = mensaje.Value1;
  const int to = mensaje.Value2;
  if (from == form::propagation_vector) {
    std::array<float, 4> k{};
    prop = numbers_of(field_text(form::propagation_vector), k) == 3;  // kv waits for Save
  }
  WMenuSetState(menu::file_save, 1, 1);
  WMenuSetState(menu::run, 1, 1);
  if (from != to) return;  // a mere move of the focus

  if (to == form::average_k_domains) {
    if (!(check_box(form::average_k_domains) == 1 && prop)) WDialogPutCheckBox(form::average_k_domains, 0);
    return;
  }
  if (to == form::twin) {
    const int state = check_box(form::twin);
    if (state == 0) {
      set_twin_group(kDisabled);
    } else if (state == 1) {
      set_twin_group(kEnabled, kTwinGroupUpToGrid);
      for (int i = 1; i <= nmat; ++i) {
        WGridStateCell(form::twin_matrices, kMatrixColumn, i, kCellEditable);
        WGridLabelRow(form::twin_matrices, i, domain_label(i, 2));
      }
      for (int row = nmat + 1; row <= kMinimumRows; ++row) {
        WGridStateCell(form::twin_matrices, kMatrixColumn, row, kCellInactive);
        WGridLabelRow(form::twin_matrices, row, "");
      }
      WDialogFieldState(form::ub_matrix, kEnabled);
      WDialogFieldState(form::ub_transformation, kEnabled);
    }
    return;
  }
  if (to == form::domain_count) {
    int n = 0;
    WDialogGetInteger(form::domain_count, n);
    n = std::clamp(n, 0, max_domains);
    if (n == nmat && n == 0) return;
    if (n < nmat) {
      if (n >= kMinimumRows) {
        WGridDeleteRows(form::twin_matrices, nmat, 1);
      } else {
        WGridPutCellString(form::twin_matrices, kMatrixColumn, nmat, "");
        WGridStateCell(form::twin_matrices, kMatrixColumn, nmat, kCellInactive);
        WGridLabelRow(form::twin_matrices, nmat, "");
      }
      nmat = n;
      return;
    }
    // A rise, or the same count again: the row n is made ready.
    if (n <= kMinimumRows) WGridStateCell(form::twin_matrices, kMatrixColumn, n, kCellEditable);
    else WGridRows(form::twin_matrices, n);
    WGridLabelRow(form::twin_matrices, n, domain_label(n, 2));
    nmat = n;
  }
}

}  // namespace data_proc

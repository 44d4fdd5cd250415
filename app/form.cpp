// The main form and the job state: the job shown in the form.
#include "app/form.h"

#include <array>
#include <span>
#include <string>
#include <variant>

#include "app/data_param.h"
#include "app/resources/gombrel_ids.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/format.h"

namespace data_proc {

using namespace data_param;

namespace {

namespace form = gombrel_ids::main_form;

// The twin group: the fields that follow the twin check box, labels and inputs alike.
constexpr std::array<int, 15> kTwinGroup = {
    form::twin_name_label,    form::diffractometer_label, form::twin_type_label,
    form::twin_space_group_label, form::domain_count_label, form::ub_matrix_label,
    form::ub_transformation_label, form::twin_name,         form::diffractometer,
    form::twin_type,          form::twin_space_group,     form::domain_count,
    form::twin_matrices,      form::ub_matrix,            form::ub_transformation};

// Numbers as the form shows them: formatted, trimmed on the right only.
std::string numbers_text(std::string_view descriptor, std::span<const float> values) {
  std::array<FormatArg, 9> args{};
  std::size_t n = 0;
  for (float v : values) args[n++] = v;
  std::string out;
  format_record(descriptor, std::span<const FormatArg>(args.data(), n), out);
  if (out.size() > 120) out.resize(120);
  return std::string(trimmed(out));
}

std::array<float, 9> row_by_row(const Mat3& m) {
  return {m[0][0], m[0][1], m[0][2], m[1][0], m[1][1], m[1][2], m[2][0], m[2][1], m[2][2]};
}

void put_matrix(int field, const Mat3& m, std::string_view descriptor) {
  const auto v = row_by_row(m);
  WDialogPutString(field, numbers_text(descriptor, v));
}

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

  if (!twinned) {
    WDialogPutCheckBox(form::twin, 0);
    for (int f : kTwinGroup) WDialogFieldState(f, 0);  // their text stays, greyed
    return;
  }
  WDialogPutCheckBox(form::twin, 1);
  for (int f : kTwinGroup) WDialogFieldState(f, 1);
  WDialogPutString(form::twin_name, twin_name.trim());
  WDialogPutString(form::diffractometer, machine.trim());
  WDialogPutOption(form::twin_type, itwin);
  if (ispg) WDialogPutString(form::twin_space_group, twin_spg.trim());
  if (iubm) put_matrix(form::ub_matrix, ubm, "(9F10.4)");
  if (itransf) put_matrix(form::ub_transformation, tr, "(9F10.4)");
  WDialogPutInteger(form::domain_count, nmat);
  // The domain matrices go into the grid once grid cells can hold values.
  if (nmat == 0) WDialogFieldState(form::twin_matrices, 0);
}

}  // namespace data_proc

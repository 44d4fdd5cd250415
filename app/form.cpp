// The main form and the job state: the job shown in the form.
#include "app/form.h"

#include <array>
#include <span>
#include <string>
#include <variant>

#include "app/data_param.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/format.h"

namespace data_proc {

using namespace data_param;

namespace {

// The twin group: the fields that follow the twin check box, labels and inputs alike.
constexpr std::array<int, 15> kTwinGroup = {1026, 1033, 1029, 1031, 1035, 1040, 1041, 1027,
                                            1034, 1030, 1032, 1037, 1038, 1042, 1043};

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
  WDialogPutString(1004, codefile.trim());
  WDialogPutString(1002, title.trim());
  WDialogPutCheckBox(1024, powder ? 1 : 0);
  if (cell_given) {
    const std::array<float, 6> c = {cel[0], cel[1], cel[2], ang[0], ang[1], ang[2]};
    WDialogPutString(1006, numbers_text("(3F12.6,2X,3F12.4)", c));
  } else {
    WDialogPutString(1006, "");
  }
  WDialogPutString(1008, spgr.trim());
  WDialogPutReal(1016, wave_given ? wavel : 1.0f, "(f12.5)");
  WDialogPutString(1011, file_dat.trim());
  WDialogPutOption(1014, hkl_type + 1);
  if (transf_ind) put_matrix(1019, transhkl, "(9F12.4)");
  else WDialogPutString(1019, "");
  WDialogPutCheckBox(1017, friedel ? 1 : 0);
  WDialogPutReal(1045, scale_given ? scal_fact : 1.0f, "(g12.4)");
  WDialogPutString(1021, prop ? numbers_text("(3F10.4)", kv) : std::string());

  // The box can't be on without a valid propagation vector; a domain flag
  // without one leaves the box as it is.
  if (!domain) WDialogPutCheckBox(1022, 0);
  else if (prop) WDialogPutCheckBox(1022, 1);

  if (!twinned) {
    WDialogPutCheckBox(1025, 0);
    for (int f : kTwinGroup) WDialogFieldState(f, 0);  // their text stays, greyed
    return;
  }
  WDialogPutCheckBox(1025, 1);
  for (int f : kTwinGroup) WDialogFieldState(f, 1);
  WDialogPutString(1027, twin_name.trim());
  WDialogPutString(1034, machine.trim());
  WDialogPutOption(1030, itwin);
  if (ispg) WDialogPutString(1032, twin_spg.trim());
  if (iubm) put_matrix(1042, ubm, "(9F10.4)");
  if (itransf) put_matrix(1043, tr, "(9F10.4)");
  WDialogPutInteger(1037, nmat);
  // The domain matrices go into the grid once grid cells can hold values.
  if (nmat == 0) WDialogFieldState(1038, 0);
}

}  // namespace data_proc

#include "toolkit/kernel/comdlg_attach.h"

namespace {
ComdlgHooks& hooks() {
  static ComdlgHooks h;
  return h;
}
}  // namespace

void yyAttachComdlg(const ComdlgHooks& h) { hooks() = h; }
const ComdlgHooks& yyComdlgHooks() { return hooks(); }

std::optional<std::string> yyComdlgChooseFile(std::string_view filter, int flags, std::string_view start,
                                              std::string_view title, int* filterindex) {
  if (!hooks().select_file) return std::nullopt;
  std::string name(start);
  if (!hooks().select_file(filter, flags, name, title, filterindex)) return std::nullopt;
  return name;
}

int yyComdlgAsk(int buttonSet, int icon, int defaultButton, std::string_view text, std::string_view title) {
  if (!hooks().message_box) return 2;
  return hooks().message_box(buttonSet, icon, defaultButton, text, title);
}

int yyComdlgPageSetup(zelvy_data::PageSetup& record, std::string_view title) {
  if (!hooks().page_setup) return 2;
  return hooks().page_setup(record, title);
}

int yyComdlgGridPrint(GridPrintOptions& options, zelvy_data::PageSetup& page) {
  if (!hooks().grid_print) return 2;
  return hooks().grid_print(options, page);
}

namespace {
HardcopyHooks& hardcopy_hooks() {
  static HardcopyHooks h;
  return h;
}
}  // namespace

void yyAttachHardcopy(const HardcopyHooks& h) { hardcopy_hooks() = h; }
const HardcopyHooks& yyHardcopyHooks() { return hardcopy_hooks(); }

// The page setup dialog and the arithmetic of paper, margins and printed area
// behind it.
#include "toolkit/comdlg/page_setup.h"

#include "toolkit/comdlg/file_selector.h"
#include "toolkit/comdlg/message_box.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/kernel/message.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr int kDialog = 1701;
enum Field : int {
  kOk = 1, kCancel = 2,
  kPaper = 1002, kPortrait = 1004, kLandscape = 1005,
  kLeftLabel = 1007, kLeft = 1011, kUnits = 1016, kCopies = 1017,
  kByCommand = 1020, kCommand = 1021, kToFile = 1022, kFile = 1023,
  kPreview = 1030, kBrowse = 1502, kOptions = 1503, kCentre = 1505,
};
constexpr int kFieldsLabelled = 4;
constexpr int kDisabled = 0, kEnabled = 1;

constexpr std::array<float, kUnitCount> kPointsPer{1.0f, 72.0f, 72.0f / 2.54f, 72.0f / 25.4f};
constexpr std::array<std::string_view, kUnitCount> kUnitNames{"points", "inches", "cm", "mm"};
// Decimals worth showing, and the spinner steps, by unit.
constexpr std::array<std::string_view, kUnitCount> kFormats{"(F8.1)", "(F8.2)", "(F8.2)", "(F8.1)"};
constexpr std::array<float, kUnitCount> kSteps{1.0f, 0.05f, 0.1f, 1.0f};
constexpr std::array<float, kUnitCount> kFastSteps{10.0f, 0.5f, 1.0f, 10.0f};

void paper_in(int paper, int orientation, int& width, int& height) {
  const auto& p = zelvy_data::paper_size(paper);
  width = orientation == 1 ? p.height : p.width;
  height = orientation == 1 ? p.width : p.height;
}

}  // namespace

void yycomdlgunits(int field, int unit) {
  std::string label;
  WDialogGetString(field, label);
  const auto open = label.find(" (");
  label = label.substr(0, open) + " (" + std::string(kUnitNames[static_cast<std::size_t>(unit)]) + ")";
  WDialogPutString(field, label);
}

namespace {

void put_margins(const std::array<float, 4>& margins, int unit) {
  const auto u = static_cast<std::size_t>(unit);
  for (int i = 0; i < kFieldsLabelled; ++i) {
    WDialogPutReal(kLeft + i, margins[static_cast<std::size_t>(i)], kFormats[u]);
    WDialogSpinnerStep(kLeft + i, kSteps[u], kFastSteps[u]);
    yycomdlgunits(kLeftLabel + i, unit);
  }
}

std::array<float, 4> get_margins() {
  std::array<float, 4> m{};
  for (int i = 0; i < kFieldsLabelled; ++i) WDialogGetReal(kLeft + i, m[static_cast<std::size_t>(i)]);
  return m;
}

PageSetupEntry read_entry(int unit) {
  PageSetupEntry e;
  WDialogGetMenu(kPaper, e.paper);
  int position = 1;
  WDialogGetRadioButton(kPortrait, position);
  e.orientation = position == 2 ? 1 : 0;
  e.unit = unit;
  e.margins = get_margins();
  WDialogGetInteger(kCopies, e.copies);
  WDialogGetRadioButton(kByCommand, position);
  e.destination = position == 1 ? 1 : 0;
  WDialogGetString(kCommand, e.command);
  WDialogGetString(kFile, e.file);
  return e;
}

// Margin fields enabled by what the others leave them.
void scale_state(int unit) {
  const auto enabled = yycomdlgpagesetupscalestate(read_entry(unit));
  for (int i = 0; i < kFieldsLabelled; ++i)
    WDialogFieldState(kLeft + i, enabled[static_cast<std::size_t>(i)] ? kEnabled : kDisabled);
}

// The preview of what the fields hold now; margins that don't fit yet show
// as the paper alone.
void preview(int unit) {
  zelvy_data::PageSetup shown;
  std::string message, title;
  PageSetupEntry e = read_entry(unit);
  if (e.command.find_first_not_of(' ') == std::string::npos) e.command = "-";
  if (e.file.find_first_not_of(' ') == std::string::npos) e.file = "-";
  if (!yypagesetupaccept(e, shown, message, title)) {
    shown.Paper = e.paper;
    shown.Orientation = e.orientation;
    shown.LeftMargin = shown.TopMargin = shown.RightMargin = shown.BottomMargin = 0;
  }
  yycomdlgpagesetuppreview(kPreview, shown);
}

}  // namespace

float yypageunitpoints(int unit) { return kPointsPer[static_cast<std::size_t>(std::clamp(unit, 0, kUnitCount - 1))]; }
std::string_view yypageunitname(int unit) {
  return kUnitNames[static_cast<std::size_t>(std::clamp(unit, 0, kUnitCount - 1))];
}

void yymarginsps(zelvy_data::PageSetup& r, int direction) {
  int pw = 0, ph = 0;
  paper_in(r.Paper, r.Orientation, pw, ph);
  if (direction == 1) {
    r.LeftMargin = std::max(r.XOffset, 0);
    r.TopMargin = std::max(r.YOffset, 0);
    r.RightMargin = std::max(pw - r.LeftMargin - r.Width, 0);
    r.BottomMargin = std::max(ph - r.TopMargin - r.Height, 0);
  } else if (direction == 2) {
    r.Width = pw - r.LeftMargin - r.RightMargin;
    r.Height = ph - r.TopMargin - r.BottomMargin;
    r.XOffset = r.LeftMargin;
    r.YOffset = r.TopMargin;
  }
}

MarginLimits yycomdlgpagesetupscale(int paper, int orientation, const std::array<float, 4>& margins,
                                    float multiplier) {
  MarginLimits limits;
  if (multiplier <= 0) return limits;
  int pw = 0, ph = 0;
  paper_in(paper, orientation, pw, ph);
  constexpr int kLeastArea = 1;
  for (std::size_t i = 0; i < margins.size(); ++i) {
    const int across = i % 2 == 0 ? pw : ph;
    const auto opposite = static_cast<int>(std::lround(std::max(margins[(i + 2) % 4], 0.0f) * multiplier));
    limits.upper[i] = static_cast<float>(std::max(across - opposite - kLeastArea, 0)) / multiplier;
  }
  return limits;
}

std::array<bool, 4> yycomdlgpagesetupscalestate(const PageSetupEntry& e) {
  const float per = yypageunitpoints(e.unit);
  const MarginLimits limits = yycomdlgpagesetupscale(e.paper, e.orientation, e.margins, per);
  // Half a point either side of the limit counts as on it.
  const float slack = 0.5f / per;
  std::array<bool, 4> enabled{};
  for (std::size_t i = 0; i < enabled.size(); ++i)
    enabled[i] = std::abs(e.margins[i] - limits.upper[i]) > slack;
  return enabled;
}

PageSetupEntry yypagesetupentry(const zelvy_data::PageSetup& r, int unit) {
  PageSetupEntry e;
  e.paper = r.Paper;
  e.orientation = r.Orientation;
  e.unit = unit;
  const float per = yypageunitpoints(unit);
  e.margins = {static_cast<float>(r.LeftMargin) / per, static_cast<float>(r.TopMargin) / per,
               static_cast<float>(r.RightMargin) / per, static_cast<float>(r.BottomMargin) / per};
  e.copies = r.Copies;
  e.destination = r.Destination;
  e.command = r.Command;
  e.file = r.File;
  return e;
}

bool yypagesetupaccept(const PageSetupEntry& e, zelvy_data::PageSetup& r, std::string& message, std::string& title) {
  int pw = 0, ph = 0;
  paper_in(e.paper, e.orientation, pw, ph);
  const float per = yypageunitpoints(e.unit);
  std::array<int, 4> m{};
  for (std::size_t i = 0; i < m.size(); ++i) m[i] = static_cast<int>(std::lround(e.margins[i] * per));
  if (m[0] + m[2] >= pw || m[1] + m[3] >= ph || *std::min_element(m.begin(), m.end()) < 0) {
    message = "The margins overlap. Enter a different margin size.";
    title = "Page Setup";
    return false;
  }
  const auto blank = [](const std::string& s) { return s.find_first_not_of(' ') == std::string::npos; };
  if (e.destination == 1 && blank(e.command)) {
    message = "Command required";
    title = "Command";
    return false;
  }
  if (e.destination != 1 && blank(e.file)) {
    message = "Filename required";
    title = "Filename";
    return false;
  }
  r.Paper = std::clamp(e.paper, 1, zelvy_data::kPaperCount);
  r.Orientation = e.orientation;
  r.LeftMargin = m[0];
  r.TopMargin = m[1];
  r.RightMargin = m[2];
  r.BottomMargin = m[3];
  r.Copies = std::max(e.copies, 1);
  r.Destination = e.destination;
  r.Command = e.command.substr(0, e.command.find_last_not_of(' ') + 1);
  r.File = e.file.substr(0, e.file.find_last_not_of(' ') + 1);
  yymarginsps(r, 2);
  return true;
}

int yycomdlgpagesetupps(zelvy_data::PageSetup& record, std::string_view title) {
  auto& zd = zelvy_data::data();
  const int previous = zd.icurdialog;
  WDialogLoad(kDialog);
  if (zd.icurdialog != kDialog) return kAnswerCancel;
  if (!title.empty()) WDialogTitle(title);

  int unit = kUnitPoints;
  const PageSetupEntry start = yypagesetupentry(record, unit);
  std::vector<std::string> papers;
  for (const auto& p : zelvy_data::kPaperSizes) papers.emplace_back(p.name);
  WDialogPutMenu(kPaper, papers, static_cast<int>(papers.size()), start.paper);
  std::vector<std::string> units(kUnitNames.begin(), kUnitNames.end());
  WDialogPutMenu(kUnits, units, kUnitCount, unit + 1);
  WDialogPutRadioButton(start.orientation == 1 ? kLandscape : kPortrait);
  WDialogPutRadioButton(start.destination == 1 ? kByCommand : kToFile);
  WDialogPutString(kCommand, start.command);
  WDialogPutString(kFile, start.file);
  WDialogPutInteger(kCopies, start.copies);
  put_margins(start.margins, unit);
  // Options only for a driver that is there.
  HardcopyOptionsEntry selected;
  const auto& hc = yyHardcopyHooks();
  if (!hc.get || !hc.get(selected) || selected.driver == 0) WDialogFieldState(kOptions, kDisabled);

  const int keepChanged = WInfoMessage(FieldChanged);
  WMessageEnable(FieldChanged, 1);
  wdialogshowcommon(kPaper, 3, 0);
  preview(unit);
  scale_state(unit);
  int result = 0;
  int type = 0;
  MessageRecord m;
  while (result == 0) {
    WMessage(type, m);
    if (m.Win != kDialog) continue;
    WDialogSelect(kDialog);
    if (type == CloseRequest) {
      result = kAnswerCancel;
    } else if (type == FieldChanged && m.Value2 == kUnits) {
      // The margins stay where they are on paper, in the new unit.
      const auto margins = get_margins();
      int chosen = unit + 1;
      WDialogGetMenu(kUnits, chosen);
      const int next = std::clamp(chosen - 1, 0, kUnitCount - 1);
      std::array<float, 4> converted{};
      for (std::size_t i = 0; i < margins.size(); ++i)
        converted[i] = margins[i] * yypageunitpoints(unit) / yypageunitpoints(next);
      unit = next;
      put_margins(converted, unit);
      scale_state(unit);
    } else if (type == FieldChanged) {
      preview(unit);
      scale_state(unit);
    } else if (type == PushButton) {
      switch (m.Value1) {
        case kCancel: result = kAnswerCancel; break;
        case kBrowse: {
          std::string name;
          WDialogGetString(kFile, name);
          WSelectFile("PostScript files (*.ps)|*.ps|All files|*|", 2, name, "Print to File");
          WDialogSelect(kDialog);
          if (zelvy_comdlg::data().icdlgbut == kAnswerOk) {
            WDialogPutString(kFile, name);
            WDialogPutRadioButton(kToFile);
          }
          break;
        }
        case kOptions:
          yycomdlghcoptions();
          WDialogSelect(kDialog);
          break;
        case kCentre: {
          auto mg = get_margins();
          const float x = (mg[0] + mg[2]) / 2, y = (mg[1] + mg[3]) / 2;
          put_margins({x, y, x, y}, unit);
          preview(unit);
          scale_state(unit);
          break;
        }
        case kOk: {
          std::string message, boxtitle;
          if (yypagesetupaccept(read_entry(unit), record, message, boxtitle)) {
            result = kAnswerOk;
          } else {
            constexpr int kOkOnly = 0, kWarning = 3;
            WMessageBox(kOkOnly, kWarning, 1, message, boxtitle);
            WDialogSelect(kDialog);
          }
          break;
        }
        default: break;
      }
    }
  }
  WDialogSelect(kDialog);
  WDialogUnload();
  yycomdlgpagesetuppreviewfree();
  WMessageEnable(FieldChanged, keepChanged);
  if (previous != 0) WDialogSelect(previous);
  else zd.icurdialog = 0;
  zelvy_comdlg::data().icdlgbut = result;
  return result;
}

// The main form bound to the job state: every job survives the trip through
// the form unchanged, bad fields stop a Save with their message, and the form
// follows the twin box, the number of domains and the propagation vector.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "app/data_init.h"
#include "app/data_param.h"
#include "app/data_proc.h"
#include "app/form.h"
#include "app/job_file.h"
#include "app/resources/gombrel_ids.h"
#include "app/resources/gombrel_resources.h"
#include "support/lorx_io_messages.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/grid/grid.h"
#include "toolkit/kernel/menu.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"

namespace {

using namespace data_param;
namespace fs = std::filesystem;
namespace form = gombrel_ids::main_form;
constexpr int kForm = gombrel_ids::dialog::main_form;
constexpr int kGrid = form::twin_matrices;

std::vector<std::string> g_messages;

std::string slurp(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

class FormBinding : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(gombrel_resource_tables());
    yyDialogAttach();
    yyGridAttach();
    WInitialise();
    lorx_io_messages::message_box_hook = [](int, int, int, std::string_view text, std::string_view) {
      g_messages.emplace_back(text);
    };
  }
  void SetUp() override {
    char tmpl[] = "/tmp/formbind-XXXXXX";
    ASSERT_NE(::mkdtemp(tmpl), nullptr);
    dir = tmpl;
    WindowOpen(0, 0, 0, {}, {}, {}, {}, kForm);
    WDialogSelect(kForm);
    data_init::init_variables();
    data_proc::exit_code = 0;
    g_messages.clear();
    job_file::set_message_sink([](std::string_view m) { g_messages.emplace_back(m); });
    zelvy_data::data().ierr = 0;
  }
  void TearDown() override {
    job_file::set_message_sink({});
    WindowClose();
    fs::remove_all(dir);
  }

  void read_job(const fs::path& p) {
    data_proc::exit_code = 0;
    file_inp = p.string();
    codefile = p.stem().string();
    data_proc::read_ombrel_file();
    ASSERT_EQ(data_proc::exit_code, 0) << p;
  }
  std::string write_job(const std::string& name) {
    file_inp = (dir / name).string();
    data_proc::write_ombrel_file();
    return slurp(dir / name);
  }
  // The values a job state holds that the form carries, forgotten, so that
  // only the form can bring them back.
  static void forget_form_values() {
    codefile = ""; title = ""; spgr = ""; file_dat = ""; twin_name = ""; machine = ""; twin_spg = "";
    cel = ang = kv = {};
    transhkl = tr = ubm = {};
    twin = {};
    wavel = scal_fact = 0;
    hkl_type = itwin = 0;
    cell_given = wave_given = transf_ind = scale_given = powder = prop = false;
    twinned = itransf = iubm = ispg = false;
    friedel = false;
  }
  static void changed(int from, int to) {
    mensaje = MessageRecord{};
    mensaje.Value1 = from;
    mensaje.Value2 = to;
    data_proc::evento_fieldchanged();
  }
  static std::string cell(int row) {
    std::string t;
    WGridGetCellString(kGrid, 1, row, t);
    return t;
  }
  static int rows() {
    int value = 0, error = 0;
    yyinfogrid_(kGrid, 3, value, error);
    return value;
  }
  fs::path dir;
};

// A twinned job of 24 domains, each matrix different.
void make_24_domain_job() {
  data_init::init_variables();
  codefile = "big24"; title = "Twenty-four domains"; spgr = "P 1";
  cel = {5.1f, 6.2f, 7.3f}; ang = {90, 95.5f, 90}; cell_given = true;
  file_dat = "big24.hkl"; file_out = "big24";
  wavel = 0.7107f; wave_given = true;
  twinned = true; twin_name = "many"; machine = "D19"; itwin = 2; nmat = max_domains;
  for (int i = 1; i <= nmat; ++i)
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c) twin[static_cast<std::size_t>(i)][r][c] = (r == c ? 1.0f : 0.0f) + 0.01f * static_cast<float>(i * (r + 2 * c));
}

TEST_F(FormBinding, EveryJobComesBackFromTheFormByteForByte) {
  std::vector<fs::path> jobs;
  for (const auto& e : fs::recursive_directory_iterator(fs::path(ZELV_SOURCE_DIR) / "examples"))
    if (e.path().extension() == ".omb") jobs.push_back(e.path());
  ASSERT_GE(jobs.size(), 3u);
  make_24_domain_job();
  write_job("big24.omb");
  jobs.push_back(dir / "big24.omb");

  for (const auto& job : jobs) {
    SCOPED_TRACE(job.string());
    // Each job in a form of its own: a form keeps the twin texts of an
    // earlier job when the next has none.
    WindowClose();
    WindowOpen(0, 0, 0, {}, {}, {}, {}, kForm);
    WDialogSelect(kForm);
    data_init::init_variables();
    read_job(job);
    // The form always shows a scale, 1.0 when the job gives none, and a Save
    // takes what it shows: a job comes back unchanged once it has its scale.
    if (!scale_given) {
      scale_given = true;
      scal_fact = 1.0f;
    }
    const std::string before = write_job("before.omb");
    data_proc::write_dialog_info();
    forget_form_values();
    data_proc::read_dialog_info();
    ASSERT_EQ(data_proc::exit_code, 0) << (g_messages.empty() ? "" : g_messages.back());
    EXPECT_EQ(write_job("after.omb"), before);
  }
  EXPECT_EQ(rows(), max_domains);
  EXPECT_EQ(cell(24).substr(0, 10), "    1.0000");
}

TEST_F(FormBinding, BadFieldsStopTheReadingWithTheirMessage) {
  read_job(fs::path(ZELV_SOURCE_DIR) / "examples/k2so4_twin/k2so4.omb");
  data_proc::write_dialog_info();
  const std::string spgr_before(spgr.trim());
  struct Case {
    int field;
    const char* text;
    const char* message;
    int exit_code;
  };
  const Case cases[] = {
      {form::cell, "5 5 5 90 90", "Bad Cell Parameters were introduced!", 1},
      {form::cell, "", "Bad Cell Parameters were introduced!", 1},
      {form::cell, "5 5 5 90 90 90 1", "Bad Cell Parameters were introduced!", 1},
      {form::cell, "5,1 5 5 90 90 90", "Bad Cell Parameters were introduced!", 1},
      {form::transformation_matrix, "1 0 0 0 1 0 0 0", "Incorrect Transformation Matrix!", 1},
      {form::propagation_vector, "1 2", "Incorrect Propagation Vector!", 1},
      {form::ub_matrix, "1 2 3", "Bad UB Matrix parameters!", 1},
      {form::ub_transformation, "x", "Bad UB-Tranf Vector parameters!", -1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    data_proc::write_dialog_info();
    WDialogPutString(c.field, c.text);
    WDialogPutString(form::space_group, "P 63/m m c");
    g_messages.clear();
    data_proc::read_dialog_info();
    EXPECT_EQ(data_proc::exit_code, c.exit_code);
    ASSERT_EQ(g_messages.size(), 1u);
    EXPECT_EQ(g_messages[0], c.message);
    // Fields after a bad cell stay as they were in the job state.
    if (c.field == form::cell) {
      EXPECT_EQ(spgr.trim(), spgr_before);
    }
    read_job(fs::path(ZELV_SOURCE_DIR) / "examples/k2so4_twin/k2so4.omb");
  }

  // A transformation of eight numbers clears a flag that was set.
  transf_ind = true;
  data_proc::write_dialog_info();
  WDialogPutString(form::transformation_matrix, "1 0 0 0 1 0 0 0");
  data_proc::read_dialog_info();
  EXPECT_FALSE(transf_ind);

  // A grid row of eight numbers is an error; a blank row a zero matrix.
  read_job(fs::path(ZELV_SOURCE_DIR) / "examples/k2so4_twin/k2so4.omb");
  ASSERT_GE(nmat, 2);
  data_proc::write_dialog_info();
  WGridPutCellString(kGrid, 1, 2, "1 2 3 4 5 6 7 8");
  g_messages.clear();
  data_proc::read_dialog_info();
  EXPECT_EQ(data_proc::exit_code, 1);
  ASSERT_EQ(g_messages.size(), 1u);
  EXPECT_EQ(g_messages[0], "Bad TWIN Matrix parameters!");
  WGridPutCellString(kGrid, 1, 2, "");
  data_proc::read_dialog_info();
  EXPECT_EQ(data_proc::exit_code, 0);
  EXPECT_EQ(twin[2], Mat3{});
}

TEST_F(FormBinding, NumbersTheFieldsCannotReadLeaveTheirFlagsFalse) {
  read_job(fs::path(ZELV_SOURCE_DIR) / "examples/silicon/si.omb");
  data_proc::write_dialog_info();
  WDialogPutString(form::wavelength, "");
  WDialogPutString(form::scale_factor, "");
  data_proc::read_dialog_info();
  EXPECT_EQ(data_proc::exit_code, 0);
  EXPECT_FALSE(wave_given);
  EXPECT_FALSE(scale_given);
  const std::string saved = write_job("nowave.omb");
  EXPECT_EQ(saved.find("WAVE"), std::string::npos);
  EXPECT_EQ(saved.find("SCALE"), std::string::npos);

  // After New the form shows 1.0 in both, which a Save then takes as given.
  data_init::init_variables();
  data_proc::write_dialog_info();
  std::string text;
  WDialogGetString(form::wavelength, text);
  EXPECT_EQ(text, "1.00000");
  WDialogPutString(form::cell, "5 5 5 90 90 90");
  data_proc::read_dialog_info();
  EXPECT_TRUE(wave_given);
  EXPECT_TRUE(scale_given);
  EXPECT_FLOAT_EQ(scal_fact, 1.0f);
}

TEST_F(FormBinding, TextThatDoesNotFitIsCutWhereTheJobKeepsIt) {
  data_proc::write_dialog_info();
  WDialogPutString(form::cell, "5 5 5 90 90 90");
  // 39 ASCII characters and a two-byte character across the 40th column.
  std::string name(39, 'a');
  name += "\xc3\xa9xyz";
  WDialogPutString(form::code_file, name);
  WDialogPutString(form::title, std::string(300, 'T'));
  data_proc::read_dialog_info();
  EXPECT_EQ(data_proc::exit_code, 0);
  EXPECT_EQ(codefile.trim(), std::string(39, 'a'));
  EXPECT_EQ(title.trim(), std::string(80, 'T'));
}

TEST_F(FormBinding, TheTwinBoxTheDomainsAndTheVectorKeepTheFormConsistent) {
  read_job(fs::path(ZELV_SOURCE_DIR) / "examples/silicon/si.omb");
  ASSERT_FALSE(twinned);
  data_proc::write_dialog_info();
  EXPECT_EQ(winfodialogfield(form::twin_name, 6), 0);
  EXPECT_EQ(winfodialogfield(kGrid, 6), 0);

  WDialogPutCheckBox(form::twin, 1);
  changed(form::twin, form::twin);
  for (int f : {form::twin_name, form::diffractometer, form::twin_type, form::twin_space_group, form::domain_count,
                kGrid, form::ub_matrix, form::ub_transformation})
    EXPECT_EQ(winfodialogfield(f, 6), 1) << f;
  // Save and Run come on with the first change.
  EXPECT_EQ(WMenuGetState(gombrel_ids::menu::file_save, 1), 1);
  EXPECT_EQ(WMenuGetState(gombrel_ids::menu::run, 1), 1);

  // Up from 0 to 5 one step at a time: the grid grows beyond its three rows.
  for (int n = 1; n <= 5; ++n) {
    WDialogPutInteger(form::domain_count, n);
    changed(form::domain_count, form::domain_count);
    EXPECT_EQ(nmat, n);
  }
  EXPECT_EQ(rows(), 5);
  WGridPutCellString(kGrid, 1, 4, "0 1 0 1 0 0 0 0 -1");
  EXPECT_EQ(cell(4), "0 1 0 1 0 0 0 0 -1");
  // Down to 2: each step empties the last domain's row; the rows stay.
  for (int n = 4; n >= 2; --n) {
    WDialogPutInteger(form::domain_count, n);
    changed(form::domain_count, form::domain_count);
  }
  EXPECT_EQ(nmat, 2);
  EXPECT_EQ(rows(), 5);
  for (int row = 3; row <= 5; ++row) EXPECT_EQ(cell(row), "") << row;

  // A vector of two numbers clears prop on leaving; the K-domains box then
  // can't stay on.
  WDialogPutString(form::propagation_vector, "1 2");
  changed(form::propagation_vector, form::title);
  EXPECT_FALSE(prop);
  WDialogPutCheckBox(form::average_k_domains, 1);
  changed(form::average_k_domains, form::average_k_domains);
  int state = -1;
  WDialogGetCheckBox(form::average_k_domains, state);
  EXPECT_EQ(state, 0);
  WDialogPutString(form::propagation_vector, "0.5 0 0");
  changed(form::propagation_vector, form::propagation_vector);
  EXPECT_TRUE(prop);
  WDialogPutCheckBox(form::average_k_domains, 1);
  changed(form::average_k_domains, form::average_k_domains);
  WDialogGetCheckBox(form::average_k_domains, state);
  EXPECT_EQ(state, 1);

  // Off again: the group greys, and a Save neither checks nor keeps it.
  WDialogPutCheckBox(form::twin, 0);
  changed(form::twin, form::twin);
  EXPECT_EQ(winfodialogfield(kGrid, 6), 0);
  WDialogPutString(form::ub_transformation, "nonsense");
  data_proc::read_dialog_info();
  EXPECT_EQ(data_proc::exit_code, 0);
  EXPECT_FALSE(twinned);
  EXPECT_EQ(write_job("si2.omb").find("TWIN"), std::string::npos);
}

}  // namespace

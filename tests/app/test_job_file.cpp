// The job file reader and writer.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <cfloat>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "app/data_param.h"
#include "app/data_proc.h"
#include "app/job_file.h"

namespace {

using namespace data_param;
namespace fs = std::filesystem;

void reset_job() {
  file_inp = ""; codefile = ""; file_dat = ""; file_out = "";
  title = ""; spgr = ""; twin_name = ""; machine = ""; twin_spg = "";
  cel = ang = kv = {};
  transhkl = tr = ubm = {};
  twin = {};
  wavel = scal_fact = epsg = warning = 0;
  hkl_type = itwin = nmat = 0;
  cell_given = wave_given = transf_ind = scale_given = powder = eps_given = prop = domain = false;
  twinned = itransf = iubm = ispg = false;
  friedel = true;
  data_proc::exit_code = 0;
}

std::string slurp(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

const Mat3 kIdentity{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
const std::string kIdentityText =
    "      1.0000      0.0000      0.0000      0.0000      1.0000      0.0000      0.0000      0.0000      1.0000";

class JobFile : public ::testing::Test {
 protected:
  void SetUp() override {
    char tmpl[] = "/tmp/jobfile-XXXXXX";
    ASSERT_NE(::mkdtemp(tmpl), nullptr);
    dir = tmpl;
    reset_job();
    job_file::set_message_sink([this](std::string_view m) { messages.emplace_back(m); });
  }
  void TearDown() override {
    job_file::set_message_sink({});
    fs::remove_all(dir);
  }

  // Reads `text` as the job file, on top of the present state.
  void read(const std::string& text) {
    std::ofstream(dir / "in.omb", std::ios::binary) << text;
    read_file(dir / "in.omb");
  }
  void read_file(const fs::path& p) {
    messages.clear();
    data_proc::exit_code = 0;
    file_inp = p.string();
    data_proc::read_ombrel_file();
  }
  std::string write(const std::string& name = "out.omb") {
    messages.clear();
    data_proc::exit_code = 0;
    file_inp = (dir / name).string();
    data_proc::write_ombrel_file();
    return slurp(dir / name);
  }

  // Exactly one message, and the failure code.
  void expect_fault(const std::string& message) {
    EXPECT_EQ(data_proc::exit_code, -1);
    EXPECT_EQ(messages, std::vector<std::string>{message});
  }
  void expect_no_fault() {
    EXPECT_EQ(data_proc::exit_code, 0);
    EXPECT_TRUE(messages.empty()) << messages.front();
  }

  fs::path dir;
  std::vector<std::string> messages;
};

// Title, reflection file, job name, space group, twin name, machine, twin space group.
using Texts = std::array<std::string, 7>;
Texts texts() {
  return {title.str(), file_dat.str(), file_out.str(), spgr.str(), twin_name.str(), machine.str(), twin_spg.str()};
}

// ---------------------------------------------------------------- writer

TEST_F(JobFile, WriterGivesTheSiliconJobColumnForColumn) {
  title = "silicon test";
  file_dat = "si.hkl";
  codefile = "si";
  file_out = "other";  // OUTFIL names the job, not the result files read
  cel = {5.431f, 5.431f, 5.431f};
  ang = {90, 90, 90};
  cell_given = wave_given = true;
  spgr = "F d -3 m";
  wavel = 1.5418f;
  hkl_type = 1;
  EXPECT_EQ(write(),
            "TITLE silicon test\nINPFIL si.hkl\nOUTFIL si\n"
            "CELL     5.431000    5.431000    5.431000     90.0000     90.0000     90.0000\n"
            "SPGR F d -3 m\nWAVE      1.54180\nHKL_T    1\n");
  expect_no_fault();
}

TEST_F(JobFile, WriterEmitsEveryOptionalLineInOrder) {
  hkl_type = 3;
  transhkl = tr = twin[1] = kIdentity;
  twin[2] = {{{-1, 0, 0}, {0, -1, 0}, {0, 0, 1}}};
  transf_ind = scale_given = powder = eps_given = prop = domain = twinned = itransf = ispg = true;
  friedel = false;
  scal_fact = 1.0f;
  epsg = 0.05f;
  warning = 2.5f;  // read, never written
  kv = {0.5f, 0, -0.25f};
  twin_name = " law A";
  itwin = 2;
  nmat = 2;
  machine = " D23";
  twin_spg = "P m m m";
  EXPECT_EQ(write(),
            "TITLE \nINPFIL \nOUTFIL \nHKL_T    3\nTRANSF " + kIdentityText +
                "\nNFRDL \nSCALE    1.000    \nPOWDER \nEPSIL       0.0500\n"
                "KVEC       0.5000      0.0000     -0.2500\nDOMAIN \nTWIN \n"
                "TWIN_nam  law A\nTWIN_typ    2\nTWIN_trf " + kIdentityText +
                "\nTWIN_mat " + kIdentityText +
                "\nTWIN_mat      -1.0000      0.0000      0.0000      0.0000     -1.0000"
                "      0.0000      0.0000      0.0000      1.0000\n"
                "TWIN_mac  D23\nTWIN_spg P m m m\nTWIN_end \n");
}

TEST_F(JobFile, ValuesTheLayoutCannotHoldBecomeAsterisksThatTheReaderRefuses) {
  cel = {1e9f, 5, 5};
  ang = {90, NAN, INFINITY};
  wavel = scal_fact = NAN;
  kv = {-1e12f, 0, 0};
  hkl_type = 123456;
  cell_given = wave_given = prop = scale_given = true;
  const std::string text = write("job.omb");
  const std::string stars(12, '*');
  for (const std::string& line :
       {"CELL " + stars + "    5.000000    5.000000     90.0000" + stars + stars, "WAVE " + stars,
        std::string("HKL_T ****"), "KVEC " + stars + "      0.0000      0.0000", "SCALE " + stars})
    EXPECT_NE(text.find(line + "\n"), std::string::npos) << line << "\n" << text;
  read_file(dir / "job.omb");
  expect_fault("Error reading the cell parameters!");
}

TEST_F(JobFile, FailedSaveShowsItsMessageAndLeavesTheOldFileAlone) {
  const std::string message = "Save procedure was impossible for the Input Ombrel File!";
  write("missing-dir/job.omb");
  expect_fault(message);

  // The disk fills up half-way: the old job survives, and no temporary file stays.
  std::ofstream(dir / "job.omb") << "TITLE old\n";
  title = "new";
  file_dat = std::string(250, 'x');
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit old{};
  ::getrlimit(RLIMIT_FSIZE, &old);
  const rlimit small{100, old.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &small);
  const std::string after = write("job.omb");
  ::setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, SIG_DFL);
  expect_fault(message);
  EXPECT_EQ(after, "TITLE old\n");
  EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 1);
}

TEST_F(JobFile, SaveReplacesTheFileKeepingItsModeAndLinks) {
  std::ofstream(dir / "real.omb") << "TITLE old\n";
  const auto mode = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
  fs::permissions(dir / "real.omb", mode);
  fs::create_symlink("real.omb", dir / "link.omb");
  title = "new";
  write("link.omb");
  EXPECT_EQ(data_proc::exit_code, 0);
  EXPECT_TRUE(fs::is_symlink(dir / "link.omb"));
  EXPECT_EQ(slurp(dir / "real.omb").substr(0, 10), "TITLE new\n");
  EXPECT_EQ(fs::status(dir / "real.omb").permissions() & fs::perms::all, mode);
}

// ---------------------------------------------------------------- reader

TEST_F(JobFile, MissingEmptyAndCommentOnlyFiles) {
  title = "kept";
  friedel = false;
  read_file(dir / "none.omb");
  expect_fault("Cannot Found the Input Ombrel File!");
  read_file("");
  expect_fault("Cannot Found the Input Ombrel File!");
  fs::create_directory(dir / "d.omb");
  read_file(dir / "d.omb");
  expect_fault("Open procedure was impossible for the Input Ombrel File!");
  for (const char* text : {"", "\n\n   \n", "! one\n    ! two\n!"}) {
    read(text);
    expect_no_fault();
  }
  EXPECT_EQ(title.str(), "kept");
  EXPECT_FALSE(friedel);
}

TEST_F(JobFile, KeysAreFiveCharactersOfAnyCaseAndTheLastOneWins) {
  read("   cell 1 2 3 90 90 90\n"
       "CELLS 9 9 9 9 9 9\n"            // unknown key
       "TWIN_nam outside\n"             // not a key outside a twin block
       "Transform 1 0 0 0 1 0 0 0 1\n"  // TRANSF
       "CELL 4,5,6 , 80 85 95\n"        // commas separate too
       "hkl_t +42,\n"                   // not checked against the range
       "WAVE 0.7107 ! Mo\n"             // what follows the value is ignored
       "SPGR   P 21/c\n"
       "WARN 1.5\n"                     // seen from column 7 only: ".5"
       "INPFILE my data.hkl ! run 2   \n"
       "OUTFIL res\n"
       "TITLE    spaced   title\n"
       "NFRDL\n");
  expect_no_fault();
  EXPECT_EQ(cel, (Vec3{4, 5, 6}));
  EXPECT_EQ(ang, (Vec3{80, 85, 95}));
  EXPECT_EQ(transhkl, kIdentity);
  EXPECT_TRUE(cell_given && transf_ind && wave_given && !friedel);
  EXPECT_EQ(hkl_type, 42);
  EXPECT_FLOAT_EQ(wavel, 0.7107f);
  EXPECT_FLOAT_EQ(warning, 0.5f);
  EXPECT_EQ(texts(), (Texts{"spaced   title", "my data.hkl ! run 2", "res", "P 21/c", "", "", ""}));
  read("TITLE\nINPFIL\n");  // bare keys clear what an earlier file set
  EXPECT_TRUE(title.blank() && file_dat.blank());
}

// Each failure: its one message, exit_code -1, keys before it kept, the rest
// of the file not read, and the flag of the failed key left as it was.
TEST_F(JobFile, UnreadableValueStopsTheReadingWithItsMessage) {
  const std::pair<const char*, const char*> cases[] = {
      {"KVEC 0.5 0.5", "Error reading the propagation vector!"},
      {"KVEC 0.5 x 0.5", "Error reading the propagation vector!"},
      {"CELL 5 5 5 90 90", "Error reading the cell parameters!"},
      {"CELL 1E99 5 5 90 90 90", "Error reading the cell parameters!"},
      {"CELL 5 5 5 90 90 -3.5E38", "Error reading the cell parameters!"},
      {"CELL 5 5 5 90 90 NaN", "Error reading the cell parameters!"},
      {"WAVE", "Error reading the wavelength!"},
      // A word without a digit in its mantissa is no number, never a zero.
      {"WAVE E5", "Error reading the wavelength!"},
      {"WAVE -", "Error reading the wavelength!"},
      {"WAVE .", "Error reading the wavelength!"},
      {"WAVE +.E1", "Error reading the wavelength!"},
      {"WAVE 1E", "Error reading the wavelength!"},
      {"WAVE 1.5E+", "Error reading the wavelength!"},
      {"WAVE 1.5E+1.0", "Error reading the wavelength!"},
      {"WAVE 1.5Q3", "Error reading the wavelength!"},
      {"WAVE 1..5", "Error reading the wavelength!"},
      {"WAVE --1", "Error reading the wavelength!"},
      {"WAVE 0x10", "Error reading the wavelength!"},
      {"WAVE inf", "Error reading the wavelength!"},
      {"HKL_T 2.5", "Error reading the type of the reflection file!"},
      {"HKL_T 1E2", "Error reading the type of the reflection file!"},
      {"HKL_T 1.0", "Error reading the type of the reflection file!"},
      {"HKL_T +-1", "Error reading the type of the reflection file!"},
      {"HKL_T +", "Error reading the type of the reflection file!"},
      {"HKL_T 99999999999", "Error reading the type of the reflection file!"},
      {"TRANSF 1 0 0 0 1 0 0 0", "Error reading the transformation matrix!"},
      {"SCALE abc", "Error reading the scale factor!"},
      {"SCALE   0.3403E+39", "Error reading the scale factor!"},
      {"EPSIL", "Error reading the EPSIL value!"},
      {"WARN  x", "Error reading the WARN value!"},
      {"TWIN\nTWIN_typ 2.5", "Error reading the TWIN law file, item: TWIN_typ"},
      {"TWIN\nTWIN_typ 2D0", "Error reading the TWIN law file, item: TWIN_typ"},
      {"TWIN\nTWIN_typ ! 2", "Error reading the TWIN law file, item: TWIN_typ"},
      {"TWIN\nTWIN_typ 4", "Illegal TWIN_typ: It should be 1,2 or 3!"},
      {"TWIN\nTWIN_typ 0", "Illegal TWIN_typ: It should be 1,2 or 3!"},
      {"TWIN\nTWIN_trf 1 0 0 0 1 0 0 0", "Error reading the TWIN law file, item: TWIN_trf"},
      {"TWIN\nTWIN_mat 1 0 0 0 1 0 0 0 ! 1", "Error reading the TWIN law file, item: TWIN_mat"},
      {"TWIN\nTWIN_ubm a b c d e f g h i", "Error reading the TWIN law file, item: TWIN_ubm"},
  };
  for (const auto& [line, message] : cases) {
    SCOPED_TRACE(line);
    reset_job();
    read(std::string("TITLE before\n") + line + "\nTWIN_end\nSPGR after\n");
    expect_fault(message);
    EXPECT_EQ(title.str(), "before");
    EXPECT_TRUE(spgr.blank());
    EXPECT_FALSE(prop || cell_given || wave_given || transf_ind || scale_given || eps_given || twinned);
    EXPECT_EQ(hkl_type, 0);
  }
}

// What the writer's G12.4 puts out for large or small values, and what a
// free-format read takes besides: signs, E or D exponents in either case, an
// exponent without its letter, tabs and commas between values.
TEST_F(JobFile, NumbersAreReadInFreeFormat) {
  read("SCALE   0.9690E+05\n"
       "EPSIL  -0.1235E+04\n"
       "WAVE 1D3\n"
       "WARN  +2.5d-1\n"
       "CELL +5.431e0\t5.431E+00,\t5.431 \t90. +.9e+2 , 9.0+1\n"
       "KVEC -.5,,0.5e-0\t\t-0.25D+00\n"
       "HKL_T\t+7\t\n"
       "TRANS 1D0 0 0 0 1.E0 0 0 0 -1d+0\n"
       "TWIN\n"
       "TWIN_typ\t+3\n"
       "TWIN_trf 2D0,0,0, 0,2D0,0, 0,0,2D0 ! doubled\n"
       "TWIN_mat\t-1\t0\t0\t0\t-1\t0\t0\t0\t1\n"
       "TWIN_ubm 0.1E+01 0 0 0 1 0 0 0 1\n"
       "TWIN_end\n");
  expect_no_fault();
  EXPECT_EQ(scal_fact, 96900.0f);
  EXPECT_EQ(epsg, -1235.0f);
  EXPECT_EQ(wavel, 1000.0f);
  EXPECT_EQ(warning, 0.25f);
  EXPECT_EQ(cel, (Vec3{5.431f, 5.431f, 5.431f}));
  EXPECT_EQ(ang, (Vec3{90, 90, 90}));
  EXPECT_EQ(kv, (Vec3{-0.5f, 0.5f, -0.25f}));
  EXPECT_EQ(hkl_type, 7);
  EXPECT_EQ(transhkl, (Mat3{{{1, 0, 0}, {0, 1, 0}, {0, 0, -1}}}));
  EXPECT_EQ(itwin, 3);
  EXPECT_EQ(tr, (Mat3{{{2, 0, 0}, {0, 2, 0}, {0, 0, 2}}}));
  EXPECT_EQ(twin[1], (Mat3{{{-1, 0, 0}, {0, -1, 0}, {0, 0, 1}}}));
  EXPECT_EQ(ubm, kIdentity);
  EXPECT_TRUE(scale_given && eps_given && wave_given && cell_given && prop && transf_ind && twinned);
  // The key itself still needs its blank: behind "WAVE" a tab makes an unknown key.
  read("WAVE\t2.0\n");
  expect_no_fault();
  EXPECT_EQ(wavel, 1000.0f);

  // The ends of the range: the largest real is read, one too small becomes a signed zero.
  read("SCALE 3.4028235E+38\nEPSIL -1E-50\nWAVE 1.4E-45\nKVEC 1e-4000 -0.0 1.17549435E-38\n");
  expect_no_fault();
  EXPECT_EQ(scal_fact, FLT_MAX);
  EXPECT_TRUE(epsg == 0 && std::signbit(epsg));
  EXPECT_EQ(wavel, std::numeric_limits<float>::denorm_min());
  EXPECT_TRUE(kv[0] == 0 && !std::signbit(kv[0]) && std::signbit(kv[1]));
  EXPECT_EQ(kv[2], FLT_MIN);

  // What the writer makes of a large scale factor opens again as it was written.
  scal_fact = 96904.0f;
  epsg = -1234.5f;
  scale_given = eps_given = true;
  const std::string text = write("big.omb");
  EXPECT_NE(text.find("SCALE   0.9690E+05"), std::string::npos) << text;
  scal_fact = epsg = 0;
  read_file(dir / "big.omb");
  expect_no_fault();
  EXPECT_EQ(scal_fact, 96900.0f);
  EXPECT_EQ(epsg, -1234.5f);
}

TEST_F(JobFile, OnlyTheFirst132CharactersOfALineCount) {
  read("CELL 1 2 3 90 90 90" + std::string(120, ' ') + "garbage\n");
  expect_no_fault();
  EXPECT_EQ(cel, (Vec3{1, 2, 3}));
  read("   TRANSF 1 0 0 0 1 0 0 0" + std::string(108, ' ') + "1\n");  // the 9th value is cut off
  expect_fault("Error reading the transformation matrix!");
  // The cut comes before the left-adjusting: leading blanks use up columns.
  read(std::string(10, ' ') + "INPFIL " + std::string(150, 'i') + "\n");
  EXPECT_EQ(file_dat.str(), std::string(132 - 10 - 7, 'i'));
  // A longer name is written in full all the same.
  file_dat = std::string(200, 'n');
  EXPECT_NE(write().find("INPFIL " + std::string(200, 'n') + "\n"), std::string::npos);
}

TEST_F(JobFile, CarriageReturnLineEndsAreNotPartOfTheValues) {
  read("TITLE crlf job\r\nINPFIL data.hkl\r\nHKL_T 1\r\nSPGR P 1\r\n"
       "TWIN\r\nTWIN_nam law\r\nTWIN_typ 3\r\nTWIN_mac D9\r\nTWIN_end\r\nKVEC 0 0 0.5\r");
  expect_no_fault();
  EXPECT_EQ(texts(), (Texts{"crlf job", "data.hkl", "", "P 1", " law", " D9", ""}));
  EXPECT_EQ(hkl_type, 1);
  EXPECT_EQ(itwin, 3);
  EXPECT_TRUE(twinned && prop);
  read("TITLE a\rb\n");  // inside a line it is text
  EXPECT_EQ(title.str(), "a\rb");
}

// ---------------------------------------------------------------- twin block

TEST_F(JobFile, TwinBlockValuesCommentsAndForeignLines) {
  read("TWIN\n"
       "# hash comment\n"
       "TWIN_nam law A ! note\n"
       "TWIN_typ 2 ! type\n"
       "TWIN_mat 1 0 0 0 1 0 0 0 1 ! identity\n"
       "twin_mat 1 0 0\n"       // not a keyword: skipped
       "CELL 1 1 1 90 90 90\n"  // ordinary keys are not read inside
       "TWIN_mat -1 0 0 0 -1 0 0 0 1\n"
       "TWIN_spg P m m m ! note\n"
       "TWIN_mac D23\n"
       "TWIN_end\n"
       "SPGR P 2\n");
  expect_no_fault();
  EXPECT_TRUE(twinned && ispg && !cell_given);
  // Reading goes on behind the block.
  EXPECT_EQ(texts(), (Texts{"", "", "", "P 2", " law A ! note", " D23", "P m m m"}));
  EXPECT_EQ(itwin, 2);
  EXPECT_EQ(nmat, 2);
  EXPECT_EQ(twin[1], kIdentity);
  EXPECT_EQ(twin[2][0][0], -1);
}

TEST_F(JobFile, TwinBlockCountsOfMatrices) {
  read("TWIN\nTWIN_typ 1\nTWIN_end\n");
  EXPECT_TRUE(twinned);
  EXPECT_EQ(nmat, 0);
  read("TWIN\nTWIN_mat 1 0 0 0 1 0 0 0 1\nTWIN_mat 1 0 0 0 1 0 0 0 1\n");  // the file ends inside
  expect_no_fault();
  EXPECT_EQ(nmat, 2);
  read("TWIN\nTWIN_mat 1 0 0 0 1 0 0 0 1\nTWIN_end\nTWIN\nTWIN_mat 2 0 0 0 2 0 0 0 2\n");
  EXPECT_EQ(nmat, 1);  // a second block starts counting again
  EXPECT_EQ(twin[1][0][0], 2);

  reset_job();
  std::string text = "TWIN\n";
  for (int i = 1; i <= 25; ++i) text += "TWIN_mat " + std::to_string(i) + " 0 0 0 1 0 0 0 1\n";
  read(text);
  expect_fault("Error reading the TWIN law file, item: TWIN_mat (more than 24 domains)");
  EXPECT_EQ(nmat, max_domains);
  EXPECT_EQ(twin[24][0][0], 24);
  EXPECT_FALSE(twinned);
}

// ---------------------------------------------------------------- round trips

// The state a file can carry. Names read without left-adjusting gain a blank
// on every trip, so they are compared left-adjusted.
auto carried() {
  return std::make_tuple(title.str(), spgr.str(), file_dat.str(), std::string(left_trimmed(twin_name.trim())),
                         std::string(left_trimmed(machine.trim())), twin_spg.str(), cel, ang, kv, wavel,
                         scal_fact, epsg, hkl_type, itwin, nmat, transhkl, tr, ubm, twin,
                         std::array{cell_given, wave_given, transf_ind, friedel, scale_given, powder,
                                    eps_given, prop, domain, twinned, itransf, iubm, ispg});
}

TEST_F(JobFile, EveryExampleSurvivesReadWriteRead) {
  int seen = 0;
  for (const auto& e : fs::recursive_directory_iterator(fs::path(ZELV_SOURCE_DIR) / "examples")) {
    if (e.path().extension() != ".omb") continue;
    SCOPED_TRACE(e.path().string());
    ++seen;
    reset_job();
    read_file(e.path());
    ASSERT_EQ(data_proc::exit_code, 0);
    const auto first = carried();
    const std::string job_name(file_out.trim());
    codefile = job_name;
    const std::string written = write();
    reset_job();
    read_file(dir / "out.omb");
    ASSERT_EQ(data_proc::exit_code, 0);
    EXPECT_TRUE(carried() == first);
    EXPECT_EQ(file_out.str(), job_name);
    if (e.path().filename() == "si.omb") {
      EXPECT_EQ(written, slurp(e.path()));
    }
  }
  EXPECT_GE(seen, 3);
  EXPECT_TRUE(messages.empty());
}

}  // namespace

// The front-end and the stand-in read the same job files the same way: jobs
// written by the front-end's writer, with values across the whole range, then
// retouched as a hand or another program would (tabs, commas, D exponents,
// lower case), and jobs typed by hand. The stand-in lists what it read with
// "--list"; the same listing is made from the front-end's job state.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "app/data_init.h"
#include "app/data_param.h"
#include "app/data_proc.h"
#include "app/job_file.h"

namespace {

using namespace data_param;
namespace fs = std::filesystem;

std::string numbers(const char* name, bool given, std::span<const float> values) {
  std::string s = std::string(name) + (given ? " yes" : " no");
  char buf[32];
  for (const float v : values) {
    std::snprintf(buf, sizeof buf, " %.9g", static_cast<double>(v));
    s += buf;
  }
  return s + "\n";
}
std::array<float, 9> flat(const Mat3& m) {
  return {m[0][0], m[0][1], m[0][2], m[1][0], m[1][1], m[1][2], m[2][0], m[2][1], m[2][2]};
}
std::string text(const char* name, std::string_view value) {
  return std::string(name) + " [" + std::string(value) + "]\n";
}

// The stand-in's listing, made from the front-end's job state.
std::string front_end_listing(const std::string& problem) {
  const std::array<float, 6> cell{cel[0], cel[1], cel[2], ang[0], ang[1], ang[2]};
  std::string s = text("title", title.trim()) + text("data_file", file_dat.trim()) +
                  text("result_name", file_out.trim()) + text("space_group", spgr.trim()) +
                  numbers("cell", cell_given, cell) + numbers("wavelength", wave_given, {&wavel, 1}) +
                  "hkl_type " + std::to_string(hkl_type) + "\n" +
                  numbers("transform", transf_ind, flat(transhkl)) + numbers("friedel", friedel, {}) +
                  numbers("scale", scale_given, {&scal_fact, 1}) + numbers("powder", powder, {}) +
                  numbers("epsil", eps_given, {&epsg, 1}) + numbers("kvec", prop, kv) +
                  numbers("domains_averaged", domain, {}) + numbers("warn", true, {&warning, 1}) +
                  numbers("twinned", twinned, {}) + text("twin_name", twin_name.trim()) +
                  "twin_type " + std::to_string(itwin) + "\n" + numbers("twin_transform", itransf, flat(tr));
  for (int i = 1; i <= nmat; ++i) s += numbers("twin_domain", true, flat(twin[i]));
  s += numbers("twin_ub", iubm, flat(ubm)) + text("machine", machine.trim()) +
       numbers("twin_space_group", ispg, {}) + text("twin_space_group", twin_spg.trim()) +
       text("problem", problem);
  return s;
}

class Agreement : public ::testing::Test {
 protected:
  void SetUp() override {
    // The writer flushes every save to disk; in memory that costs nothing.
    std::string tmpl = fs::is_directory("/dev/shm") ? "/dev/shm/agree-XXXXXX" : "/tmp/agree-XXXXXX";
    ASSERT_NE(::mkdtemp(tmpl.data()), nullptr);
    dir = tmpl;
    job_file::set_message_sink([this](std::string_view m) { problem = m; });
  }
  void TearDown() override {
    job_file::set_message_sink({});
    fs::remove_all(dir);
  }

  // Both readers on the file job.omb; true when they agree.
  ::testing::AssertionResult agree() {
    data_init::init_variables();
    problem.clear();
    data_proc::exit_code = 0;
    file_inp = (dir / "job.omb").string();
    data_proc::read_ombrel_file();
    const std::string front = front_end_listing(problem);
    last_failed = data_proc::exit_code != 0;

    const std::string cmd = "cd '" + dir.string() + "' && '" OMBREL_EXE "' --list job";
    std::FILE* pipe = ::popen(cmd.c_str(), "r");
    std::string stand_in;
    char buf[4096];
    for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, pipe)) > 0;) stand_in.append(buf, n);
    const int status = ::pclose(pipe);
    if (!WIFEXITED(status) || (WEXITSTATUS(status) != 0) != last_failed)
      return ::testing::AssertionFailure() << "exit status " << status;
    if (front != stand_in)
      return ::testing::AssertionFailure() << "front-end:\n" << front << "stand-in:\n" << stand_in;
    return ::testing::AssertionSuccess();
  }
  void put(const std::string& content) { std::ofstream(dir / "job.omb", std::ios::binary) << content; }
  std::string written() {
    std::ifstream in(dir / "job.omb", std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }

  fs::path dir;
  std::string problem;
  bool last_failed = false;
};

TEST_F(Agreement, HandWrittenJobs) {
  const char* const jobs[] = {
      "TITLE  free format\nINPFIL my data.hkl ! run\noutfil res\nSCALE   0.9690E+05\nEPSIL\t-1.5D-2\n"
      "WAVE 1D0\nWARN  +2.5d-1\ncell +5.431e0\t5.431E+00,\t5.431 \t90. +.9e+2 , 9.0+1\n"
      "KVEC -.5,,0.5e-0\t\t-0.25D+00\nHKL_T\t+7\nHKL_T 1\nTRANSFORM 1D0 0 0 0 1.E0 0 0 0 -1d+0\nNFRDL\nPOWDER\n"
      "DOMAIN\nTWIN\n# c\nTWIN_nam  law A ! note\nTWIN_typ\t+3 ! t\nTWIN_trf 2D0,0,0, 0,2D0,0, 0,0,2D0 ! x\n"
      "TWIN_mat\t-1\t0\t0\t0\t-1\t0\t0\t0\t1\ntwin_mat 1 0 0\nCELL 1 1 1 1 1 1\nTWIN_ubm 0.1E+01 0 0 0 1 0 0 0 1\n"
      "TWIN_mac D23 ! m\nTWIN_spg   P m m m ! s\nTWIN_end\nSPGR P 2\n",
      "SCALE 3.4028235E+38\nEPSIL -1E-50\nWAVE 1.4E-45\nKVEC 1e-4000 -0.0 1.17549435E-38\r\n",
      "TITLE before\nCELL 1 2 3 90 90 1e39\nSPGR after\n",
      "WAVE E5\n", "WAVE 1E\n", "WAVE 1.5E+1.0\n", "HKL_T 1.0\n", "HKL_T +-1\n", "HKL_T 99999999999\n",
      "SCALE   0.3403E+39\n", "KVEC 0.5 x 0.5\n", "TWIN\nTWIN_typ 2D0\n", "TWIN\nTWIN_typ 4\n",
      "TWIN\nTWIN_mat 1 0 0 0 1 0 0 0 ! 1\n", "TWIN\nTWIN_ubm a b c d e f g h i\nTWIN_end\n",
      "TWIN\nTWIN_nam first\nTWIN_mat 1 0 0 0 1 0 0 0 1\nTWIN_end\nTWIN\nTWIN_mat 2 0 0 0 2 0 0 0 2\n",
      "   TRANSF 1 0 0 0 1 0 0 0                                                                                      1\n",
      "WAVE\t2.0\nCELLS 1 2 3 4 5 6\nTITLE a\rb\n",
  };
  for (const char* job : jobs) {
    put(job);
    EXPECT_TRUE(agree()) << job;
  }
  std::string many = "TWIN\n";
  for (int i = 1; i <= 25; ++i) many += "TWIN_mat " + std::to_string(i) + " 0 0 0 1 0 0 0 1\n";
  put(many);
  EXPECT_TRUE(agree());
}

class Retouch {
 public:
  std::size_t pick(std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n - 1)(rng_); }

  // Mostly values the layouts show, now and then anything a 32-bit real holds.
  float real() {
    if (pick(20) == 0) return std::bit_cast<float>(static_cast<std::uint32_t>(rng_()));
    const float m = std::uniform_real_distribution<float>(-10, 10)(rng_);
    return m * std::pow(10.0f, static_cast<float>(pick(8)) - 5);
  }
  void fill(std::span<float> v) {
    for (float& x : v) x = real();
  }
  void fill(Mat3& m) {
    for (auto& row : m) fill(row);
  }

  // Blanks between values become tabs or commas, exponent letters D or lower case.
  std::string text(const std::string& job) {
    std::istringstream in(job);
    std::string out;
    for (std::string line; std::getline(in, line);) {
      const bool numeric = line.find_first_of("0123456789") < line.size() && line.rfind("TITLE", 0) != 0 &&
                           line.rfind("INPFIL", 0) != 0 && line.rfind("OUTFIL", 0) != 0;
      for (std::size_t i = 9; numeric && i < line.size(); ++i) {
        char& c = line[i];
        if (c == ' ' && pick(3) == 0) c = pick(2) ? '\t' : ',';
        else if (c == 'E') c = "EeDd"[pick(4)];
      }
      if (pick(8) == 0) line[0] = static_cast<char>(std::tolower(line[0]));
      out += line + (pick(6) ? "\n" : "\r\n");
    }
    return out;
  }

 private:
  std::mt19937 rng_{8128};
};

TEST_F(Agreement, JobsTheFrontEndWroteThenRetouched) {
  Retouch r;
  int read_through = 0;
  for (int i = 0; i < 100; ++i) {
    data_init::init_variables();
    title = " job " + std::to_string(i);
    file_dat = "data " + std::to_string(i) + ".hkl";
    codefile = "job";
    spgr = "P 21/c";
    cell_given = wave_given = scale_given = eps_given = prop = true;
    transf_ind = r.pick(2);
    friedel = r.pick(2);
    powder = domain = r.pick(2);
    r.fill(cel);
    r.fill(ang);
    r.fill(std::span(&wavel, 1));
    r.fill(std::span(&scal_fact, 1));
    r.fill(std::span(&epsg, 1));
    r.fill(kv);
    r.fill(transhkl);
    hkl_type = static_cast<int>(r.pick(12));
    twinned = r.pick(2);
    twin_name = " law ! " + std::to_string(i);
    itwin = 1 + static_cast<int>(r.pick(3));
    itransf = iubm = ispg = r.pick(2);
    r.fill(tr);
    r.fill(ubm);
    nmat = static_cast<int>(r.pick(4));
    for (int k = 1; k <= nmat; ++k) r.fill(twin[k]);
    machine = " D9";
    twin_spg = "P m m m";
    data_proc::exit_code = 0;
    file_inp = (dir / "job.omb").string();
    data_proc::write_ombrel_file();
    ASSERT_EQ(data_proc::exit_code, 0);
    const std::string job = r.text(written());
    put(job);
    ASSERT_TRUE(agree()) << job;
    read_through += !last_failed;
  }
  EXPECT_GT(read_through, 30);  // both outcomes are reached
  EXPECT_LT(read_through, 80);
}

}  // namespace

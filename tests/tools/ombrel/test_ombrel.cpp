// The stand-in reduction code, started as the front-end starts it: with the job
// name, in the job's directory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

std::string slurp(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// Lines that are not "!" comments.
std::vector<std::string> data_lines(const fs::path& p) {
  std::vector<std::string> lines;
  std::istringstream in(slurp(p));
  for (std::string l; std::getline(in, l);)
    if (!l.empty() && l[0] != '!') lines.push_back(l);
  return lines;
}

class Ombrel : public ::testing::Test {
 protected:
  void SetUp() override {
    char tmpl[] = "/tmp/ombrel-XXXXXX";
    ASSERT_NE(::mkdtemp(tmpl), nullptr);
    dir = tmpl;
  }
  void TearDown() override { fs::remove_all(dir); }

  void copy_example(const std::string& folder) {
    for (const auto& e : fs::directory_iterator(fs::path(ZELV_SOURCE_DIR) / "examples" / folder))
      fs::copy_file(e.path(), dir / e.path().filename());
  }
  void put(const std::string& name, const std::string& text) {
    std::ofstream(dir / name, std::ios::binary) << text;
  }

  // Runs the stand-in with the job name; returns its exit status.
  int run(const std::string& name) {
    const std::string cmd = "cd '" + dir.string() + "' && '" OMBREL_EXE "' '" + name + "' 2>stderr.txt";
    const int status = std::system(cmd.c_str());
    stderr_text = slurp(dir / "stderr.txt");
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  fs::path dir;
  std::string stderr_text;
};

TEST_F(Ombrel, EveryExampleGivesItsThreeFiles) {
  struct Example {
    const char* folder;
    const char* name;
    std::size_t merged;
    std::size_t rejected;
    const char* in_out;  // something the report must say about this job
  };
  const Example examples[] = {
      {"silicon", "si", 13, 0, "F d -3 m:1 (No. 227)"},
      {"mno_magnetic", "mno", 22, 3, "0.5000 0.5000 0.5000, K-domains averaged"},
      {"k2so4_twin", "k2so4", 41, 0, "reflections overlapped by another domain: 26"},
      {"nacl_cubic", "nacl", 46, 0, "Mean multiplicity               :    12.00"},
  };
  for (const auto& ex : examples) {
    SCOPED_TRACE(ex.folder);
    fs::remove_all(dir);
    fs::create_directory(dir);
    copy_example(ex.folder);
    ASSERT_EQ(run(ex.name), 0) << stderr_text;
    const std::string base = (dir / ex.name).string();
    const std::string out = slurp(base + ".out");
    EXPECT_THAT(out, HasSubstr("stand-in"));
    EXPECT_THAT(out, HasSubstr(ex.in_out));
    EXPECT_THAT(out, HasSubstr(std::string(ex.name) + ".int (" + std::to_string(ex.merged) + " merged reflections)"));
    EXPECT_EQ(data_lines(base + ".int").size(), ex.merged);
    EXPECT_EQ(data_lines(base + ".rej").size(), ex.rejected);
  }
}

TEST_F(Ombrel, IndicesAreTransformedAndBadLinesGetTheirReason) {
  copy_example("mno_magnetic");
  ASSERT_EQ(run("mno"), 0);
  const auto rej = data_lines(dir / "mno.rej");
  ASSERT_EQ(rej.size(), 3u);
  EXPECT_THAT(rej[0], HasSubstr("line       8: intensity in columns 13-20 is not a number"));
  EXPECT_THAT(rej[1], HasSubstr("sigma missing"));
  EXPECT_THAT(rej[2], HasSubstr("index in columns 9-12 is not an integer"));

  // A transformation that leaves the lattice, a scale, a line without weight.
  put("half.omb", "INPFIL r.hkl\nOUTFIL half\nHKL_T 1\nSPGR P 1\nSCALE 2\nTRANSF 0.5 0 0 0 1 0 0 0 1\n");
  put("r.hkl", "2 0 0 10 1\r\n1 0 0 10 1\n1 0 0 10 -1\n");
  ASSERT_EQ(run("half"), 0);
  EXPECT_EQ(data_lines(dir / "half.int"), std::vector<std::string>{"    1    0    0        20.000       2.000    1   0"});
  EXPECT_THAT(data_lines(dir / "half.rej"),
              ::testing::ElementsAre(HasSubstr("line       2: indices 0.500 0.000 0.000 are not integer"),
                                     HasSubstr("line       3: sigma is not positive")));
}

TEST_F(Ombrel, WhatCannotBeReducedIsSaidPlainly) {
  struct Case {
    std::string job, data;
    const char* said;
  };
  const char raw[] = "\x7f" "ELF\0\0\x01\x02garbage\n\0\xff";
  const std::string binary(raw, sizeof raw - 1);
  const Case cases[] = {
      {"SPGR P 7/q\nHKL_T 1\n", "1 2 3 4 5\n", "The space group \"P 7/q\" is not known"},
      {"SPGR P 1\nHKL_T 1\n", "", "holds no reflection"},
      {"SPGR P 1\nHKL_T 1\n", "! only a comment\n", "holds no reflection"},
      {"SPGR P 1\nHKL_T 8\n", "1 2 3 4 5\n", "HKL_T 8 is not read: flipping ratios"},
      {"SPGR P 1\nHKL_T 1\n", binary, "binary data"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.said);
    put("x.omb", "OUTFIL x\nINPFIL x.hkl\n" + c.job);
    put("x.hkl", c.data);
    EXPECT_EQ(run("x"), 3);
    EXPECT_THAT(slurp(dir / "x.out"), HasSubstr(c.said));
    EXPECT_THAT(slurp(dir / "x.out"), HasSubstr("NOTHING WAS REDUCED"));
    EXPECT_THAT(stderr_text, HasSubstr(c.said));
    EXPECT_TRUE(fs::exists(dir / "x.int"));
    EXPECT_TRUE(fs::exists(dir / "x.rej"));
  }
}

TEST_F(Ombrel, ResultFilesAreNamedFromOutfilOrElseTheJob) {
  // The first lacks its reflection file.
  put("job.omb", "OUTFIL result\nINPFIL none.hkl\nHKL_T 1\n");
  put("plain.omb", "TITLE no outfil\nHKL_T 8\n");
  for (auto [job, status, files, note] : {std::tuple{"job", 1, "result", "could not be opened"},
                                          {"plain", 3, "plain", "HKL_T 8 is not read"}}) {
    EXPECT_EQ(run(job) != 0, status != 0) << job;
    for (const char* ext : {".out", ".int", ".rej"}) EXPECT_TRUE(fs::exists(dir / (files + std::string(ext))));
    EXPECT_THAT(slurp(dir / (files + std::string(".out"))), HasSubstr(note));
  }
}

TEST_F(Ombrel, MissingOrBrokenJobIsReported) {
  EXPECT_NE(run("absent"), 0);
  EXPECT_THAT(stderr_text, HasSubstr("absent.omb"));
  EXPECT_FALSE(fs::exists(dir / "absent.out"));
  put("bad.omb", "OUTFIL bad\nKVEC 0.5\n");
  EXPECT_NE(run("bad"), 0);
  EXPECT_THAT(stderr_text, HasSubstr("Error reading the propagation vector!"));
  EXPECT_THAT(slurp(dir / "bad.out"), HasSubstr("Error reading the propagation vector!"));
}

// The stand-in reads job files as an outside program does: it carries nothing
// of the front-end, and so none of its display libraries.
TEST(OmbrelAlone, NeedsNoDisplayLibraries) {
  std::FILE* pipe = ::popen("ldd '" OMBREL_EXE "' 2>&1", "r");
  ASSERT_NE(pipe, nullptr);
  std::string libraries;
  char buf[4096];
  for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, pipe)) > 0;) libraries.append(buf, n);
  ASSERT_EQ(::pclose(pipe), 0) << libraries;
  ASSERT_THAT(libraries, HasSubstr("libc.so"));
  for (const char* lib : {"libXm.", "libXt.", "libX11.", "libXft."})
    EXPECT_THAT(libraries, ::testing::Not(HasSubstr(lib)));
}

}  // namespace

// The stand-in reduction code, started as the front-end starts it: with the job
// name, in the job's directory.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

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
    std::size_t reflections;
    std::size_t rejected;
    const char* in_out;  // something the report must say about this job
  };
  const Example examples[] = {
      {"silicon", "si", 36, 0, "F d -3 m"},
      {"mno_magnetic", "mno", 22, 3, "0.5000 0.5000 0.5000, K-domains averaged"},
      {"k2so4_twin", "k2so4", 48, 0, "Twin domains         : 3"},
  };
  for (const auto& ex : examples) {
    SCOPED_TRACE(ex.folder);
    fs::remove_all(dir);
    fs::create_directory(dir);
    copy_example(ex.folder);
    ASSERT_EQ(run(ex.name), 0) << stderr_text;
    const std::string base = (dir / ex.name).string();
    const std::string out = slurp(base + ".out");
    EXPECT_NE(out.find("stand-in"), std::string::npos);
    EXPECT_NE(out.find(ex.in_out), std::string::npos) << out;
    EXPECT_NE(out.find("Reflections written to " + std::string(ex.name) + ".int: " +
                       std::to_string(ex.reflections)),
              std::string::npos)
        << out;
    EXPECT_EQ(data_lines(base + ".int").size(), ex.reflections);
    EXPECT_EQ(data_lines(base + ".rej").size(), ex.rejected);
  }
}

TEST_F(Ombrel, IndicesAreTransformedAndBadLinesGetTheirReason) {
  copy_example("mno_magnetic");
  ASSERT_EQ(run("mno"), 0);
  const auto ints = data_lines(dir / "mno.int");
  ASSERT_FALSE(ints.empty());
  // 1 1 1 through (0 1 0 / -1 0 0 / 0 0 1).
  EXPECT_EQ(ints[0].substr(0, 12), "   1  -1   1");
  const auto rej = data_lines(dir / "mno.rej");
  ASSERT_EQ(rej.size(), 3u);
  EXPECT_NE(rej[0].find("intensity \"bad\" is not a number"), std::string::npos) << rej[0];
  EXPECT_NE(rej[1].find("fewer than 5 values"), std::string::npos) << rej[1];
  EXPECT_NE(rej[2].find("index \"x\" is not an integer"), std::string::npos) << rej[2];

  // A transformation that leaves the lattice.
  put("half.omb", "INPFIL r.hkl\nOUTFIL half\nHKL_T 0\nTRANSF 0.5 0 0 0 1 0 0 0 1\n");
  put("r.hkl", "2 0 0 10 1\r\n1 0 0 10 1\n1 0 0 10 -1\n");
  ASSERT_EQ(run("half"), 0);
  EXPECT_EQ(data_lines(dir / "half.int"), std::vector<std::string>{"   1   0   0        10.000       1.000"});
  const auto half_rej = data_lines(dir / "half.rej");
  ASSERT_EQ(half_rej.size(), 2u);
  EXPECT_NE(half_rej[0].find("are not integers"), std::string::npos);
  EXPECT_NE(half_rej[1].find("negative sigma"), std::string::npos);
}

TEST_F(Ombrel, ResultFilesAreNamedFromOutfilOrElseTheJob) {
  put("job.omb", "OUTFIL result\nINPFIL none.hkl\nHKL_T 1\n");
  EXPECT_NE(run("job"), 0);  // the reflection file is missing
  for (const char* ext : {".out", ".int", ".rej"}) EXPECT_TRUE(fs::exists(dir / ("result" + std::string(ext))));
  EXPECT_NE(slurp(dir / "result.out").find("could not be opened"), std::string::npos);

  put("plain.omb", "TITLE no outfil\nHKL_T 7\n");
  EXPECT_EQ(run("plain"), 0);
  for (const char* ext : {".out", ".int", ".rej"}) EXPECT_TRUE(fs::exists(dir / ("plain" + std::string(ext))));
  EXPECT_NE(slurp(dir / "plain.out").find("HKL_T 7 is not read"), std::string::npos);
}

TEST_F(Ombrel, MissingOrBrokenJobIsReported) {
  EXPECT_NE(run("absent"), 0);
  EXPECT_NE(stderr_text.find("absent.omb"), std::string::npos);
  EXPECT_FALSE(fs::exists(dir / "absent.out"));

  put("bad.omb", "OUTFIL bad\nKVEC 0.5\n");
  EXPECT_NE(run("bad"), 0);
  EXPECT_NE(stderr_text.find("Error reading the propagation vector!"), std::string::npos);
  EXPECT_NE(slurp(dir / "bad.out").find("Error reading the propagation vector!"), std::string::npos);
}

}  // namespace

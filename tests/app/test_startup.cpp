// The command line of the program: how the job argument is split into the
// job's directory, file and name, and where the process ends up.
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

namespace fs = std::filesystem;

namespace {

struct PipeCloser {
  void operator()(std::FILE* f) const { pclose(f); }
};

// Runs the probe in `dir` with the given argument text and returns its fields.
std::map<std::string, std::string> probe(const fs::path& dir, const std::string& args) {
  const std::string cmd = "cd '" + dir.string() + "' && '" PROBE_PATH "' " + args;
  std::unique_ptr<std::FILE, PipeCloser> p(popen(cmd.c_str(), "r"));
  std::map<std::string, std::string> out;
  if (!p) return out;
  std::array<char, 2048> line{};
  while (std::fgets(line.data(), line.size(), p.get())) {
    std::string s(line.data());
    auto eq = s.find('=');
    auto lb = s.find('['), rb = s.rfind(']');
    if (eq == std::string::npos || lb == std::string::npos || rb == std::string::npos) continue;
    out[s.substr(0, eq)] = s.substr(lb + 1, rb - lb - 1);
  }
  return out;
}

class StartupTest : public ::testing::Test {
 protected:
  void SetUp() override {
    root = fs::temp_directory_path() / ("gombrel_startup_" + std::to_string(::getpid()));
    fs::create_directories(root / "data" / "run1");
    root = fs::canonical(root);
  }
  void TearDown() override { fs::remove_all(root); }
  fs::path root;
};

TEST_F(StartupTest, PlatformSettings) {
  auto f = probe(root, "");
  EXPECT_EQ(f["var_system"], "UNIX");
  EXPECT_EQ(f["var_sep"], "/");
}

TEST_F(StartupTest, NoArgumentLeavesNamesBlankAndStaysInPlace) {
  auto f = probe(root, "");
  EXPECT_EQ(f["file_inp"], "");
  EXPECT_EQ(f["codefile"], "");
  EXPECT_EQ(f["working_dir"], root.string());
  EXPECT_EQ(f["actual_dir"], root.string());
  EXPECT_EQ(f["cwd"], root.string());
}

TEST_F(StartupTest, AbsolutePathChangesToItsDirectory) {
  const std::string dir = (root / "data" / "run1").string() + "/";
  auto f = probe(root, "'" + dir + "job.omb'");
  EXPECT_EQ(f["working_dir"], dir);
  EXPECT_EQ(f["file_inp"], "job.omb");
  EXPECT_EQ(f["codefile"], "job");
  EXPECT_EQ(f["actual_dir"], root.string());
  EXPECT_EQ(f["cwd"], (root / "data" / "run1").string());
}

TEST_F(StartupTest, RelativePathKeepsItsTrailingSeparator) {
  auto f = probe(root, "data/run1/x.omb");
  EXPECT_EQ(f["working_dir"], "data/run1/");
  EXPECT_EQ(f["file_inp"], "x.omb");
  EXPECT_EQ(f["cwd"], (root / "data" / "run1").string());
}

TEST_F(StartupTest, BareNameStaysInTheCurrentDirectory) {
  auto f = probe(root, "job.omb");
  EXPECT_EQ(f["working_dir"], root.string());
  EXPECT_EQ(f["file_inp"], "job.omb");
  EXPECT_EQ(f["cwd"], root.string());
}

TEST_F(StartupTest, JobNameIsCutAtTheFirstDotAndAtFortyCharacters) {
  EXPECT_EQ(probe(root, "job.a.omb")["codefile"], "job");
  auto f = probe(root, "job");
  EXPECT_EQ(f["codefile"], "job");
  EXPECT_EQ(f["file_inp"], "job");
  const std::string longname(45, 'n');
  EXPECT_EQ(probe(root, longname + ".omb")["codefile"], std::string(40, 'n'));
}

TEST_F(StartupTest, FurtherArgumentsAreIgnored) {
  auto f = probe(root, "a.omb b.omb");
  EXPECT_EQ(f["file_inp"], "a.omb");
  EXPECT_EQ(f["codefile"], "a");
}

TEST_F(StartupTest, MissingDirectoryLeavesTheProcessWhereItWas) {
  auto f = probe(root, "nothere/job.omb");
  EXPECT_EQ(f["working_dir"], "nothere/");
  EXPECT_EQ(f["cwd"], root.string());
}

}  // namespace

// The selector's text rules and the toolkit's well-known paths, without a display.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "toolkit/base/zelvy_data.h"
#include "toolkit/comdlg/file_selector.h"

namespace {

namespace fs = std::filesystem;

TEST(SelectorText, SplitPath) {
  struct Case { const char *path, *dir, *name; };
  for (const Case& c : {Case{"/a/b/job.omb", "/a/b", "job.omb"}, Case{"/job.omb", "/", "job.omb"},
                        Case{"/", "/", ""}, Case{"/a/b/", "/a/b", ""}, Case{"job.omb", "", "job.omb"},
                        Case{"  /x/y/..  ", "/x/y/..", ""}, Case{"", "", ""}}) {
    std::string dir = c.path, name;
    yycomdlgsplitpath(dir, name);
    EXPECT_EQ(dir, c.dir) << c.path;
    EXPECT_EQ(name, c.name) << c.path;
  }
}

TEST(SelectorText, FiltersParseByTheirLastCharacter) {
  auto f = yyselectfile_parsefilter("Ombrel Input Files (*.omb) |*.omb|All|*.omb;*.txt|   ");
  EXPECT_EQ(f.descriptions, (std::vector<std::string>{"Ombrel Input Files (*.omb) ", "All"}));
  EXPECT_EQ(f.patterns, (std::vector<std::string>{"*.omb", "*.omb;*.txt"}));
  f = yyselectfile_parsefilter("Jobs#*.omb#");
  EXPECT_EQ(f.patterns, (std::vector<std::string>{"*.omb"}));
  // None, or one character: everything, with one blank description.
  for (const char* none : {"", "|", "   "}) {
    f = yyselectfile_parsefilter(none);
    EXPECT_EQ(f.patterns, (std::vector<std::string>{"*"})) << none;
    EXPECT_EQ(f.descriptions, (std::vector<std::string>{" "})) << none;
  }
  // A last description without its pattern still counts, and lists everything.
  f = yyselectfile_parsefilter("A|*.a|B|");
  EXPECT_EQ(f.patterns, (std::vector<std::string>{"*.a", "*"}));
}

TEST(SelectorText, MatchFilterComparesWholePiecesExactly) {
  const std::vector<std::string> p{"*.omb", "*.txt;*.TXT", "*"};
  EXPECT_EQ(yyselectfile_matchfilter(p, "*.omb"), 1);
  EXPECT_EQ(yyselectfile_matchfilter(p, "*.TXT"), 2);
  EXPECT_EQ(yyselectfile_matchfilter(p, "*.Omb"), 0);
  EXPECT_EQ(yyselectfile_matchfilter(p, "*.om"), 0);
  EXPECT_EQ(yyselectfile_matchfilter(p, "*"), 3);
}

TEST(SelectorText, ControlCharactersShowAsMarks) {
  EXPECT_EQ(yyselectfile_shownname("a\nb\tc"), "a\xE2\x90\x8A" "b\xE2\x90\x89" "c");
  EXPECT_EQ(yyselectfile_shownname("ünï cødé"), "ünï cødé");
}

class WellKnownPaths : public ::testing::Test {
 protected:
  void SetUp() override {
    home_ = fs::temp_directory_path() / ("paths-" + std::to_string(::getpid()));
    fs::create_directories(home_);
    saved_home_ = std::getenv("HOME") ? std::getenv("HOME") : "";
    ::setenv("HOME", home_.c_str(), 1);
    ::unsetenv("XDG_CONFIG_HOME");
    zelvy_data::data().ierr = 0;
  }
  void TearDown() override {
    ::setenv("HOME", saved_home_.c_str(), 1);
    ::unsetenv("XDG_CONFIG_HOME");
    fs::remove_all(home_);
  }
  fs::path home_;
  std::string saved_home_;
};

TEST_F(WellKnownPaths, HomeAndConfigurationDirectory) {
  std::string t;
  WInfoFilename(14, t);
  EXPECT_EQ(t, home_.string());
  t.clear();
  WInfoFilename(16, t);
  EXPECT_EQ(t, (home_ / ".config").string());
  EXPECT_TRUE(fs::is_directory(home_ / ".config")) << "made when missing";
  EXPECT_EQ(fs::status(home_ / ".config").permissions() & fs::perms::all, fs::perms::owner_all);
  ::setenv("XDG_CONFIG_HOME", "/elsewhere/conf", 1);
  t.clear();
  WInfoFilename(16, t);
  EXPECT_EQ(t, "/elsewhere/conf");
}

TEST_F(WellKnownPaths, TemporaryNamesAndNarrowTexts) {
  std::string t;
  WInfoFilename(11, t);
  ASSERT_EQ(t.size(), std::string("/tmp/xx0123456789.tmp").size());
  EXPECT_TRUE(t.starts_with("/tmp/xx") && t.ends_with(".tmp")) << t;
  t.clear();
  WInfoFilename(99, t);
  EXPECT_EQ(t, "");
  t = "1234";
  WInfoFilename(10, t);
  EXPECT_EQ(t, "/tmp");
  EXPECT_EQ(zelvy_data::data().ierr, 1023);
}

}  // namespace

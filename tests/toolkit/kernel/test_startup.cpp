// Start-up without a display: the initialisation file, the base directory,
// the initialisation file search, temporary names, locale and system facts.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <array>
#include <fstream>
#include <string>

#include "toolkit/kernel/startup.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"

namespace fs = std::filesystem;

namespace {

// Each case starts from the defaults of the start-up table and a clean environment.
class StartupTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto& d = zelvy_data::data();
    d.cbrowser = {"firefox", "evince"};
    d.cdefdir = {"", ""};
    d.cdeffile = {"", "", "standard.chr"};
    d.ireqhw = {0, 0, 0};
    d.lfn = {40, 41, 42};
    d.idbug = 0;
    d.ierr = 0;
    d.bversionline = false;
    for (const char* v : {"ZELVY", "ZELVIDE", "ZELVINIT", "LC_ALL", "LC_PAPER", "LC_MEASUREMENT", "LANG"})
      ::unsetenv(v);
    dir_ = fs::temp_directory_path() / ("kernel_startup_" + std::to_string(::getpid()));
    fs::create_directories(dir_);
    old_ = fs::current_path();
    fs::current_path(dir_);
  }
  void TearDown() override {
    fs::current_path(old_);
    fs::remove_all(dir_);
    zelvy_data::data().idbug = 0;
  }
  void write(const fs::path& p, const std::string& text) { std::ofstream(p) << text; }

  fs::path dir_, old_;
};

TEST_F(StartupTest, IniKeywordsTakeEffectAndLaterLinesOverride) {
  write("a.ini",
        "  browser  =  my browser -new\n"
        "PDFREAD=okular\n"
        "CHARSET=greek.chr\n"
        "CHARDIR=/opt/chars\n"
        "PLOTTER = 3\n"
        "HPGL2=2\n"
        "PRINTER=1\n"
        "PRINTER=5\n"
        "DEBUG=2\n");
  ASSERT_TRUE(yyinireadfile("a.ini"));
  auto& d = zelvy_data::data();
  EXPECT_EQ(d.cbrowser, (std::array<std::string, 2>{"my browser -new", "okular"}));  // inner blanks kept
  EXPECT_EQ(d.cdeffile[2], "greek.chr");
  EXPECT_EQ(d.cdefdir[0], "/opt/chars");
  EXPECT_EQ(d.ireqhw, (std::array{5, 3, 2}));
  EXPECT_EQ(d.idbug, 2);
  EXPECT_FALSE(d.bversionline);
}

TEST_F(StartupTest, IniLineRules) {
  auto& d = zelvy_data::data();
  // "=" in column 1, no "=", a two-letter keyword, no value, a longer word, no integer.
  for (const char* line : {"=PRINTER=3", "PRINTER 3", "PR=3", "PRINTER=", "PRINTERS=3", "UNKNOWN=3", "PRINTER=two"}) {
    yyinireadline(line);
    EXPECT_EQ(d.ireqhw[0], 0) << line;
  }
  EXPECT_EQ(d.ierr, 0);
  yyinireadline("\tPRINTER\t=\t7");    // tabs read as blanks
  EXPECT_EQ(d.ireqhw[0], 7);
  yyinireadline("DEBUG=9");            // outside 0..4 leaves the level
  EXPECT_EQ(d.idbug, 0);

  // The version line is known by its first three letters.
  for (const auto& [line, is_version] : {std::pair{"VER=", true}, {"verbose = anything", true}, {"ve=1", false}}) {
    d.bversionline = false;
    yyinireadline(line);
    EXPECT_EQ(d.bversionline, is_version) << line;
  }

  // The channels may not collide.
  yyinireadline("LFNGEN=42");  // equals the plot channel
  EXPECT_EQ(d.lfn[0], 40);
  yyinireadline("LFNPLOTI=40");  // equals the general channel
  EXPECT_EQ(d.lfn[2], 42);
  yyinireadline("LFNGEN=50");
  yyinireadline("LFNPLOTI=40");
  EXPECT_EQ(d.lfn, (std::array{50, 41, 40}));

  // The record is cut at its length.
  yyinireadline("BROWSER=" + std::string(1030, 'x'));
  EXPECT_EQ(d.cbrowser[0].size(), 1034u - 8u);
  std::string late(1033, ' ');
  late += "=1";  // "=" in the last column
  late.replace(0, 7, "PRINTER");
  yyinireadline(late);
  EXPECT_EQ(d.ireqhw[0], 7);  // as the tabbed line left it
}

TEST_F(StartupTest, BaseDirectoryFromZelvyAndZelvide) {
  // {variable, value, base directory}; a null value unsets. In ZELVIDE the last
  // occurrence of the name counts, and a value without it is kept whole.
  const char* const cases[][3] = {{"ZELVY", "/opt/zelv", "/opt/zelv/"},
                                  {"ZELVY", "/opt/zelv/", "/opt/zelv/"},
                                  {"ZELVY", nullptr, ""},
                                  {"ZELVIDE", "/usr/local/ZelvIde12/bin", "/usr/local/"},
                                  {"ZELVIDE", "/a/zelvide/b/ZELVIDE", "/a/zelvide/b/"},
                                  {"ZELVIDE", "/usr/local/tools", "/usr/local/tools"},
                                  {"ZELVIDE", nullptr, ""}};
  for (const auto& c : cases) {
    c[1] ? ::setenv(c[0], c[1], 1) : ::unsetenv(c[0]);
    yywinitialise();
    EXPECT_EQ(zelvy_data::data().cdefdir[1], c[2]) << c[0] << "=" << (c[1] ? c[1] : "");
  }
}

TEST_F(StartupTest, IniFileSearchOrder) {
  EXPECT_EQ(yyinifilename(), "");
  EXPECT_FALSE(yyinireadfile("nothing.ini"));  // a missing file is no error
  EXPECT_FALSE(yyinireadfile(""));
  EXPECT_EQ(zelvy_data::data().ierr, 0);
  fs::create_directories("base");
  write("base/zelvy.ini", "PRINTER=1\n");
  zelvy_data::data().cdefdir[1] = (dir_ / "base/").string();
  EXPECT_EQ(yyinifilename(), (dir_ / "base/zelvy.ini").string());
  write("zelvy.ini", "PRINTER=2\n");
  EXPECT_EQ(yyinifilename(), "zelvy.ini");
  write("mine.ini", "PRINTER=3\n");
  ::setenv("ZELVINIT", (dir_ / "mine.ini").c_str(), 1);
  EXPECT_EQ(yyinifilename(), (dir_ / "mine.ini").string());
  ::setenv("ZELVINIT", (dir_ / "absent.ini").c_str(), 1);  // names nothing: the search goes on
  EXPECT_EQ(yyinifilename(), "zelvy.ini");
}

TEST_F(StartupTest, TemporaryNamesSkipExistingFiles) {
  yytmpprn();
  const std::string first = zelvy_data::data().ctmpfile[0];
  ASSERT_EQ(first.size(), std::string("/tmp/kqd0012345.plt").size());
  char uid[8];
  std::snprintf(uid, sizeof uid, "%05d", static_cast<int>(::getuid() % 100000));
  EXPECT_EQ(first.substr(0, 8) + first.substr(10), "/tmp/kqd" + std::string(uid) + ".plt");
  EXPECT_TRUE(zelvy_data::data().ctmpfile[1].ends_with(".dmp"));
  write(first, "taken");
  yytmpprn();
  EXPECT_NE(zelvy_data::data().ctmpfile[0], first);
  EXPECT_EQ(std::stoi(zelvy_data::data().ctmpfile[0].substr(8, 2)), std::stoi(first.substr(8, 2)) + 1);
  fs::remove(first);
}

TEST_F(StartupTest, PaperSizeAndMeasurementFromTheLocaleVariables) {
  EXPECT_EQ(yydefpapersize(), 5);
  ::setenv("LANG", "fr_CA.UTF-8", 1);
  EXPECT_EQ(yydefpapersize(), 9);
  ::setenv("LC_PAPER", "de_DE.UTF-8", 1);  // before LANG
  EXPECT_EQ(yydefpapersize(), 5);
  ::setenv("LC_ALL", "es_PR", 1);  // before all
  EXPECT_EQ(yydefpapersize(), 9);
  // A locale that isn't installed gives no measurement: the variables decide.
  ::setenv("LC_ALL", "xx_US.nowhere", 1);
  EXPECT_EQ(yymeasurement(), 1);
  ::setenv("LC_ALL", "xx_GB.nowhere", 1);
  EXPECT_EQ(yymeasurement(), 2);
}

TEST(SystemFacts, FixedAnswersAndVersion) {
  const int item_value[][2] = {{1, 4}, {6, '/'}, {21, -1}, {25, 64}, {67, 0}, {170, 1}};
  for (const auto& c : item_value) EXPECT_EQ(WInfoSystem(c[0]), c[1]) << c[0];
  EXPECT_GT(WInfoSystem(3), 200);  // a kernel release of 2.x or later
  EXPECT_EQ(WInfoSystem(20), '.');  // the C locale when nothing else is set
  std::string version(8, 'x');
  WInfoVersion(version);
  EXPECT_EQ(version, "12.0e   ");
}

}  // namespace

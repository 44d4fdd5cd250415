// Start-up without a display: the initialisation file, the base directory,
// the initialisation file search, temporary names, locale and system facts.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/zelvy_data.h"

namespace fs = std::filesystem;

namespace {

// Each case starts from the defaults of the start-up table and a clean environment.
class StartupTest : public ::testing::Test {
 protected:
  void SetUp() override {
    using namespace zelvy_data;
    cbrowser = {"firefox", "evince"};
    cdefdir = {"", ""};
    cdeffile = {"", "", "standard.chr"};
    ireqhw = {0, 0, 0};
    lfn = {40, 41, 42};
    idbug = 0;
    ierr = 0;
    bversionline = false;
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
    zelvy_data::idbug = 0;
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
  using namespace zelvy_data;
  EXPECT_EQ(cbrowser[0], "my browser -new");  // inner blanks kept
  EXPECT_EQ(cbrowser[1], "okular");
  EXPECT_EQ(cdeffile[2], "greek.chr");
  EXPECT_EQ(cdefdir[0], "/opt/chars");
  EXPECT_EQ(ireqhw[0], 5);
  EXPECT_EQ(ireqhw[1], 3);
  EXPECT_EQ(ireqhw[2], 2);
  EXPECT_EQ(idbug, 2);
  EXPECT_FALSE(bversionline);
}

TEST_F(StartupTest, IniLinesThatActAsComments) {
  using namespace zelvy_data;
  yyinireadline("=PRINTER=3");         // "=" in column 1
  yyinireadline("PRINTER 3");          // no "="
  yyinireadline("PR=3");               // keyword of two letters
  yyinireadline("PRINTER=");           // no value
  yyinireadline("PRINTERS=3");         // a longer word is another keyword
  yyinireadline("UNKNOWN=3");
  EXPECT_EQ(ireqhw[0], 0);
  yyinireadline("PRINTER=two");        // no integer: ignored, no error left
  EXPECT_EQ(ireqhw[0], 0);
  EXPECT_EQ(ierr, 0);
  yyinireadline("\tPRINTER\t=\t7");    // tabs read as blanks
  EXPECT_EQ(ireqhw[0], 7);
  yyinireadline("DEBUG=9");            // outside 0..4 leaves the level
  EXPECT_EQ(idbug, 0);
}

TEST_F(StartupTest, IniVersionLineByItsFirstThreeLetters) {
  yyinireadline("VER=");
  EXPECT_TRUE(zelvy_data::bversionline);
  zelvy_data::bversionline = false;
  yyinireadline("verbose = anything");
  EXPECT_TRUE(zelvy_data::bversionline);
  zelvy_data::bversionline = false;
  yyinireadline("ve=1");
  EXPECT_FALSE(zelvy_data::bversionline);
}

TEST_F(StartupTest, IniChannelsMayNotCollide) {
  using namespace zelvy_data;
  yyinireadline("LFNGEN=42");  // equals the plot channel
  EXPECT_EQ(lfn[0], 40);
  yyinireadline("LFNPLOTI=40");  // equals the general channel
  EXPECT_EQ(lfn[2], 42);
  yyinireadline("LFNGEN=50");
  yyinireadline("LFNPLOTI=40");
  EXPECT_EQ(lfn[0], 50);
  EXPECT_EQ(lfn[2], 40);
}

TEST_F(StartupTest, IniRecordIsCutAtItsLength) {
  std::string line = "BROWSER=" + std::string(1030, 'x');
  yyinireadline(line);
  EXPECT_EQ(zelvy_data::cbrowser[0].size(), 1034u - 8u);
  std::string late(1033, ' ');
  late += "=1";  // "=" in the last column
  late.replace(0, 7, "PRINTER");
  yyinireadline(late);
  EXPECT_EQ(zelvy_data::ireqhw[0], 0);
}

TEST_F(StartupTest, MissingIniFileIsNoError) {
  EXPECT_FALSE(yyinireadfile("nothing.ini"));
  EXPECT_FALSE(yyinireadfile(""));
  EXPECT_EQ(zelvy_data::ierr, 0);
}

TEST_F(StartupTest, BaseDirectoryFromZelvyAndZelvide) {
  ::setenv("ZELVY", "/opt/zelv", 1);
  yywinitialise();
  EXPECT_EQ(zelvy_data::cdefdir[1], "/opt/zelv/");
  ::setenv("ZELVY", "/opt/zelv/", 1);
  yywinitialise();
  EXPECT_EQ(zelvy_data::cdefdir[1], "/opt/zelv/");

  ::unsetenv("ZELVY");
  ::setenv("ZELVIDE", "/usr/local/ZelvIde12/bin", 1);
  yywinitialise();
  EXPECT_EQ(zelvy_data::cdefdir[1], "/usr/local/");
  ::setenv("ZELVIDE", "/a/zelvide/b/ZELVIDE", 1);  // the last occurrence counts
  yywinitialise();
  EXPECT_EQ(zelvy_data::cdefdir[1], "/a/zelvide/b/");
  ::setenv("ZELVIDE", "/usr/local/tools", 1);
  yywinitialise();
  EXPECT_EQ(zelvy_data::cdefdir[1], "/usr/local/tools");  // kept whole, nothing added
  ::unsetenv("ZELVIDE");
  yywinitialise();
  EXPECT_EQ(zelvy_data::cdefdir[1], "");
}

TEST_F(StartupTest, IniFileSearchOrder) {
  EXPECT_EQ(yyinifilename(), "");
  fs::create_directories("base");
  write("base/zelvy.ini", "PRINTER=1\n");
  zelvy_data::cdefdir[1] = (dir_ / "base/").string();
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
  const std::string first = zelvy_data::ctmpfile[0];
  ASSERT_EQ(first.size(), std::string("/tmp/kqd0012345.plt").size());
  EXPECT_EQ(first.substr(0, 8), "/tmp/kqd");
  EXPECT_EQ(first.substr(first.size() - 4), ".plt");
  EXPECT_EQ(zelvy_data::ctmpfile[1].substr(zelvy_data::ctmpfile[1].size() - 4), ".dmp");
  char uid[8];
  std::snprintf(uid, sizeof uid, "%05d", static_cast<int>(::getuid() % 100000));
  EXPECT_EQ(first.substr(10, 5), uid);
  write(first, "taken");
  yytmpprn();
  EXPECT_NE(zelvy_data::ctmpfile[0], first);
  EXPECT_EQ(std::stoi(zelvy_data::ctmpfile[0].substr(8, 2)), std::stoi(first.substr(8, 2)) + 1);
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
  EXPECT_EQ(WInfoSystem(1), 4);
  EXPECT_EQ(WInfoSystem(6), '/');
  EXPECT_EQ(WInfoSystem(21), -1);
  EXPECT_EQ(WInfoSystem(25), 64);
  EXPECT_EQ(WInfoSystem(67), 0);
  EXPECT_EQ(WInfoSystem(170), 1);
  EXPECT_GT(WInfoSystem(3), 200);  // a kernel release of 2.x or later
  EXPECT_EQ(WInfoSystem(20), '.');  // the C locale when nothing else is set
  std::string version(8, 'x');
  WInfoVersion(version);
  EXPECT_EQ(version, "12.0e   ");
}

}  // namespace

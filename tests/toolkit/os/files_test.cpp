// Files, directories, listings, environment, command line and program exit.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "tests/toolkit/os/os_test_support.h"
#include "toolkit/os/files.h"
#include "toolkit/base/fixed_text.h"

namespace {

class OsFilesTest : public OsTest {
 protected:
  void SetUp() override {
    OsTest::SetUp();
    char tmpl[] = "/tmp/zelv_files_XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    dir_ = tmpl;
    char cwd[4096];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    cwd_ = cwd;
  }
  void TearDown() override {
    ASSERT_EQ(chdir(cwd_.c_str()), 0);
    std::string cmd = "rm -rf " + dir_;
    ASSERT_EQ(std::system(cmd.c_str()), 0);
    OsTest::TearDown();
  }
  // A file of `size` bytes modified at `stamp` (seconds), inside the directory.
  std::string make(const std::string& name, std::size_t size = 0, long stamp = 1700000000) {
    const std::string path = dir_ + "/" + name;
    std::ofstream(path, std::ios::binary) << std::string(size, 'x');
    const timespec times[2] = {{stamp, 0}, {stamp, 0}};
    utimensat(AT_FDCWD, path.c_str(), times, 0);
    return path;
  }
  std::string read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
  }
  // Names of a listing, trimmed.
  std::vector<std::string> list(std::string_view pattern, int flags, int room = 50, std::vector<int>* sizes = nullptr) {
    std::vector<std::string> names(static_cast<std::size_t>(room));
    std::vector<int> sz(static_cast<std::size_t>(room));
    int count = room;
    IOsDirInfo(dir_, pattern, names, count, {}, sz, flags);
    names.resize(static_cast<std::size_t>(count));
    if (sizes) *sizes = std::vector<int>(sz.begin(), sz.begin() + count);
    return names;
  }
  std::string dir_, cwd_;
};

using Names = std::vector<std::string>;

TEST_F(OsFilesTest, ListingFiltersByPatternHiddenAndType) {
  for (const char* name : {"b.omb", "a.hkl", "C.OMB", "my file.txt", ".hidden.omb"}) make(name);
  mkdir((dir_ + "/sub").c_str(), 0755);
  EXPECT_EQ(list("", 8), (Names{"C.OMB", "a.hkl", "b.omb", "my file.txt"}));
  EXPECT_EQ(list("*.omb *.hkl", 8), (Names{"a.hkl", "b.omb"}));
  EXPECT_EQ(list("\"my f*\" *.OMB", 8), (Names{"C.OMB", "my file.txt"}));
  EXPECT_EQ(list("*.omb", 8 | 0x100), (Names{".hidden.omb", "b.omb"}));
  EXPECT_EQ(list("*.omb", 8 | 0x100 | 0x200), (Names{"b.omb"}));  // a leading dot must be matched
  int count = 0;
  IOsDirCount(dir_, "*.omb *.hkl", count);
  EXPECT_EQ(count, 2);

  zelvy_data::data().idirinfo = 2;
  EXPECT_EQ(list("", 8), (Names{"sub"}));
  EXPECT_EQ(list("", 8 | 0x100), (Names{".", "..", "sub"}));
  EXPECT_EQ(list("", 8 | 0x100 | 0x80), (Names{"sub"}));
  iosdirentrytype("fd");
  EXPECT_EQ(zelvy_data::data().idirinfo, 3);
  EXPECT_EQ(list("", 8).size(), 5u);
  iosdirentrytype("x");  // no letter: unchanged
  EXPECT_EQ(zelvy_data::data().idirinfo, 3);
  iosdirentrytype("F");
  IOsDirCount(dir_ + "/missing", "", count);
  EXPECT_EQ(count, 0);
}

TEST_F(OsFilesTest, ListingSortsByNameDateSizeAndExtension) {
  make("b.txt", 30, 1700000300);
  make("A.dat", 10, 1700000100);
  make("c.DAT", 20, 1700000200);
  make("a.bin", 40, 1700000000);
  for (auto [flags, names] : {std::pair{8, Names{"A.dat", "a.bin", "b.txt", "c.DAT"}},
                              {8 | 1, Names{"c.DAT", "b.txt", "a.bin", "A.dat"}},
                              {8 | 2, Names{"a.bin", "A.dat", "b.txt", "c.DAT"}},
                              {0x10, Names{"a.bin", "A.dat", "c.DAT", "b.txt"}},
                              {0x400 | 2, Names{"a.bin", "A.dat", "c.DAT", "b.txt"}},
                              {0x400, Names{"c.DAT", "a.bin", "A.dat", "b.txt"}}})  // "DAT" before "bin"
    EXPECT_EQ(list("", flags), names) << flags;
  std::vector<int> sizes;
  EXPECT_EQ(list("", 0x20 | 1, 50, &sizes), (Names{"a.bin", "b.txt", "c.DAT", "A.dat"}));
  EXPECT_EQ(sizes, (std::vector<int>{40, 30, 20, 10}));  // moved in step with the names
  EXPECT_EQ(list("", 0x10 | 0x20 | 8), list("", 8));  // name comes first among sort bits

  std::vector<std::string> names = {padded("", 4)};
  std::vector<int> dates(1);
  int count = 1;
  IOsDirInfo(dir_, "b.*", names, count, dates);
  EXPECT_EQ(names[0], "b.tx");  // a name text keeps its width
  EXPECT_EQ(dates[0], 1700000300);
}

TEST_F(OsFilesTest, ListingStopsWhenTheArrayIsFull) {
  for (int i = 0; i < 30; ++i) make("f" + std::to_string(100 + i));
  std::vector<std::string> first;  // directory order
  DIR* d = opendir(dir_.c_str());
  while (dirent* e = readdir(d))
    if (e->d_name[0] != '.' && first.size() < 10) first.push_back(e->d_name);
  closedir(d);
  std::sort(first.begin(), first.end());
  EXPECT_EQ(list("", 8, 10), first);
}

TEST_F(OsFilesTest, CopyAndDelete) {
  const std::string src = make("src.omb", 5);
  IOsCopyFile("  " + src, dir_ + "/dst.omb  ");
  EXPECT_EQ(read(dir_ + "/dst.omb"), "xxxxx");
  mkdir((dir_ + "/sub dir").c_str(), 0755);
  IOsCopyFile(src, dir_ + "/sub dir/");  // into a directory, name with a blank
  EXPECT_TRUE(iosfileexists(dir_ + "/sub dir/src.omb"));
  IOsDirChange(dir_ + "/sub dir");
  IOsCopyFile(src, "");  // into the current directory
  EXPECT_TRUE(iosfileexists("src.omb"));
  IOsCopyFile("src.omb", "  ");  // the same name twice
  EXPECT_EQ(error(), 55);
  IOsCopyFile("../src.omb", "copy.omb");
  EXPECT_TRUE(iosfileexists(dir_ + "/sub dir/copy.omb"));
  IOsCopyFile("   ", "x");
  EXPECT_EQ(error(), 0);

  for (const char* name : {"a.tmp", "b.tmp", "with blank.tmp"}) make(name);
  IOsDeleteFile(dir_ + "/*.tmp");  // a pattern through the shell
  EXPECT_FALSE(iosfileexists(dir_ + "/a.tmp"));
  EXPECT_FALSE(iosfileexists(dir_ + "/with blank.tmp"));
  EXPECT_TRUE(iosfileexists(src));
  make("star*.x");
  make("starry.x");
  IOsDeleteFile(dir_ + "/star*.x", 1);  // exactly that name
  EXPECT_FALSE(iosfileexists(dir_ + "/star*.x"));
  EXPECT_TRUE(iosfileexists(dir_ + "/starry.x"));
  IOsDeleteFile(dir_ + "/gone", 1);
  EXPECT_EQ(error(), 13);
  EXPECT_EQ(WInfoError(3), ENOENT);
  IOsDeleteFile(dir_ + "/gone");  // the shell's complaint is no error
  EXPECT_EQ(error(), 0);
}

TEST_F(OsFilesTest, DirectoriesAndPathTypes) {
  const std::string sub = dir_ + "/new";
  IOsDirMake(sub + "   ");
  EXPECT_EQ(error(), 0);
  IOsDirMake(sub);
  EXPECT_EQ(error(), 13);
  EXPECT_EQ(WInfoError(3), EEXIST);
  const std::string file = make("plain");
  symlink(sub.c_str(), (dir_ + "/link").c_str());
  // {path, type, directory, file}; a link is what it points to.
  const std::tuple<std::string, int, bool, bool> paths[] = {
      {sub, 2, true, false}, {file, 1, false, true}, {dir_ + "/none", 0, false, false}, {dir_ + "/link", 2, true, false}};
  for (const auto& [path, type, is_dir, is_file] : paths) {
    EXPECT_EQ(iospathtype(path), type) << path;
    EXPECT_EQ(iosdirexists(path), is_dir) << path;
    EXPECT_EQ(iosfileexists(path), is_file) << path;
  }
  EXPECT_TRUE(iosdirexists("  /  "));
  EXPECT_FALSE(iosdirexists("   "));

  IOsDirChange(sub);
  for (auto [width, want, err] : {std::tuple<int, std::string, int>{0, sub, 0}, {3, "   ", 1023}}) {
    std::string here = padded("", width);
    IOsDirName(here);
    EXPECT_EQ(here, want);
    EXPECT_EQ(error(), err);
  }
  IOsDirChange(dir_ + "/none");
  EXPECT_EQ(error(), 13);
  IOsDirChange(dir_);
  IOsDirDelete(sub);
  EXPECT_EQ(error(), 0);
  EXPECT_FALSE(iosdirexists(sub));
}

TEST_F(OsFilesTest, DeleteTreeRemovesEverythingButFollowsNoLink) {
  const std::string outside = dir_ + "/outside", tree = dir_ + "/tree";
  for (const char* sub : {"/outside", "/tree", "/tree/a", "/tree/a/.b"}) mkdir((dir_ + sub).c_str(), 0755);
  for (const char* name : {"outside/keep", "tree/a/.b/deep", "tree/a/file", "tree/.hidden"}) make(name);
  symlink(outside.c_str(), (tree + "/a/link").c_str());
  zelvy_data::data().idirinfo = 3;
  iosdeletetree(tree);
  EXPECT_EQ(error(), 0);
  EXPECT_EQ(iospathtype(tree), 0);
  EXPECT_TRUE(iosfileexists(outside + "/keep"));
  EXPECT_EQ(zelvy_data::data().idirinfo, 3);
  iosdeletetree(outside + "/keep");  // no directory: nothing happens
  EXPECT_TRUE(iosfileexists(outside + "/keep"));
}

TEST_F(OsFilesTest, FullPathName) {
  IOsDirChange(dir_);
  for (auto [path, want] : {std::pair<std::string, std::string>{"./x.omb", dir_ + "/x.omb"},
                            {"/a/./b/././c", "/a/b/c"}, {"a/../b", dir_ + "/a/../b"}}) {
    std::string full;
    iosfullpathname(path, full);
    EXPECT_EQ(full, want);
  }
  std::string full = padded("", 5);
  iosfullpathname("/a/b", full);
  EXPECT_EQ(full, "/a/b ");
  iosfullpathname("/abcdef", full);
  EXPECT_EQ(full, "     ");
  EXPECT_EQ(error(), 1023);
}

TEST_F(OsFilesTest, EnvironmentVariables) {
  unsetenv("ZELV_TEST_UNSET");
  setenv("ZELV_TEST_VAR", "value", 1);
  // {name, width of the output, value, error}: a value wider than the output is refused.
  const std::tuple<const char*, int, const char*, int> cases[] = {
      {"ZELV_TEST_UNSET", 8, "        ", 0}, {"ZELV_TEST_VAR  ", 8, "value   ", 0}, {"ZELV_TEST_VAR", 4, "    ", 1023}};
  for (auto [name, width, value, err] : cases) {
    std::string v = padded("old", width);
    IOsVariable(name, v);
    EXPECT_EQ(v, value) << name;
    EXPECT_EQ(error(), err) << name;
  }
}

TEST_F(OsFilesTest, CommandLineArguments) {
  const int n = yyosargcount();
  auto arg = [](int i, std::string text = "") {
    iosargument(i, text);
    return text;
  };
  EXPECT_NE(arg(0).find("toolkit_os_test"), std::string::npos);
  EXPECT_EQ(arg(-1), "");
  EXPECT_FALSE(arg(n).empty());
  EXPECT_EQ(arg(n + 1, padded("x", 3)), "   ");
}

TEST_F(OsFilesTest, ExitWritesItsLineAndEndsWithTheCode) {
  const std::string out = dir_ + "/stdout";
  const std::tuple<void (*)(std::string_view, int), const char*, int, const char*> cases[] = {
      {IOsExitProgram, "Cannot open X display.  ", 9, "Abnormal exit (code 9) : Cannot open X display.\n"},
      {iosexitprogram, "bye", 12, "Abnormal exit (code 12  ) : bye\n"},
      {IOsExitProgram, "   ", 0, ""}};
  for (auto [stop, message, code, line] : cases) {
    EXPECT_EXIT(
        {
          if (!std::freopen(out.c_str(), "w", stdout)) std::_Exit(99);
          stop(message, code);
        },
        ::testing::ExitedWithCode(code), "");
    EXPECT_EQ(read(out), line);
  }
}

}  // namespace

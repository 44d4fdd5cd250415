// Directory streams, glob matching, pattern texts and file information.
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "tests/toolkit/os/os_test_support.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/os/datetime.h"
#include "toolkit/os/files.h"

namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

// 2023-11-14 22:13:20 UTC.
constexpr long kKnownStamp = 1700000000;
const std::string kForeign = "\xc3\x85ngstr\xc3\xb6m run 2.hkl";  // non-ASCII letters and blanks

int open_descriptors() {
  return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator{}));
}

// A scratch directory:
//   a.omb b.omb c.hkl (kKnownStamp, 1025 bytes) <foreign>  .hidden.omb  .cache/
//   sub/  to_c -> c.hkl  to_sub -> sub  dangling -> nowhere  locked/ (mode 0)
class OsDirectoryTest : public OsTest {
 protected:
  void SetUp() override {
    OsTest::SetUp();
    char tmpl[] = "/tmp/zelv_dir_XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    dir_ = tmpl;
    chmod(dir_.c_str(), 0755);  // an unprivileged child must get in
    for (const char* name : {"a.omb", "b.omb", ".hidden.omb"}) make(name, 10);
    make("c.hkl", 1025, kKnownStamp);
    make(kForeign, 3);
    for (const char* sub : {"sub", ".cache", "locked"}) mkdir((dir_ + "/" + sub).c_str(), 0755);
    chmod((dir_ + "/locked").c_str(), 0);
    symlink("c.hkl", (dir_ + "/to_c").c_str());
    symlink("sub", (dir_ + "/to_sub").c_str());
    symlink("nowhere", (dir_ + "/dangling").c_str());
    if (const char* tz = std::getenv("TZ")) tz_ = tz;
  }
  void TearDown() override {
    if (tz_) setenv("TZ", tz_->c_str(), 1);
    else unsetenv("TZ");
    tzset();
    std::error_code ec;
    fs::permissions(dir_ + "/locked", fs::perms::owner_all, ec);
    fs::remove_all(dir_, ec);
    OsTest::TearDown();
  }
  void make(const std::string& name, std::size_t size, long stamp = kKnownStamp - 3600) {
    const std::string path = dir_ + "/" + name;
    std::ofstream(path, std::ios::binary) << std::string(size, 'x');
    const timespec times[2] = {{stamp, 0}, {stamp, 0}};
    utimensat(AT_FDCWD, path.c_str(), times, 0);
  }
  static void zone(const char* tz) {
    setenv("TZ", tz, 1);
    tzset();
  }
  Names list(std::string_view pattern, int flags, int room = 50) {
    Names names(static_cast<std::size_t>(room));
    int count = room;
    IOsDirInfo(dir_, pattern, names, count, {}, {}, flags);
    names.resize(static_cast<std::size_t>(std::max(count, 0)));
    return names;
  }
  // Runs `check` where file permissions bind: as root, in a child process that
  // has become an ordinary user first.
  static void unprivileged(const std::function<bool()>& check) {
    if (geteuid() != 0) {
      EXPECT_TRUE(check());
      return;
    }
    constexpr uid_t kNobody = 65534;
    EXPECT_EXIT(
        {
          if (setgid(kNobody) != 0 || setuid(kNobody) != 0) std::_Exit(2);
          std::_Exit(check() ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
  }
  std::string dir_;
  std::optional<std::string> tz_;
};

TEST_F(OsDirectoryTest, StreamReadsEveryEntryOnceThenEnds) {
  OsDir d;
  ASSERT_EQ(yyosdiropen(dir_, d), 0);
  std::multiset<std::string> seen;
  std::string name;
  while (yyosdirread(d, name) == 0 && !name.empty()) seen.insert(name);
  EXPECT_EQ(seen, (std::multiset<std::string>{".", "..", "a.omb", "b.omb", "c.hkl", kForeign, ".hidden.omb",
                                              ".cache", "sub", "to_c", "to_sub", "dangling", "locked"}));
  name = "stale";
  EXPECT_EQ(yyosdirread(d, name), 0);  // the end stays the end
  EXPECT_EQ(name, "");
  EXPECT_EQ(yyosdirclose(d), 0);
  EXPECT_EQ(d, nullptr);
  EXPECT_EQ(yyosdirread(d, name), 0);  // a closed stream reads as ended
  EXPECT_EQ(yyosdirclose(d), 0);

  ASSERT_EQ(yyosdiropen(dir_, d), 0);
  EXPECT_EQ(yyosdiropen(dir_ + "/missing", d), ENOENT);  // a failed open leaves no stream
  EXPECT_EQ(d, nullptr);
  EXPECT_EQ(yyosdiropen(dir_ + "/c.hkl", d), ENOTDIR);
}

TEST_F(OsDirectoryTest, UnreadableDirectoryIsReportedNotListed) {
  unprivileged([dir = dir_] {
    OsDir d;
    const int opened = yyosdiropen(dir + "/locked", d);
    int count = 7;
    IOsDirCount(dir + "/locked", "", count);
    const bool counted = count == 0 && WInfoError(1) == 13 && WInfoError(3) == EACCES;
    Names names(5);
    count = 5;
    IOsDirInfo(dir + "/locked", "*", names, count);
    const bool listed = count == 0 && WInfoError(1) == 13;
    IOsDirCount(dir, "", count);  // the directory around it is fine
    return opened == EACCES && !d && counted && listed && count > 0 && WInfoError(1) == 0;
  });
}

TEST_F(OsDirectoryTest, GlobMatching) {
  // {name, pattern, leading dot must be matched, matches}
  const std::tuple<std::string, std::string, bool, bool> cases[] = {
      {"a.omb", "*.omb", false, true},
      {"a.omb", "*.OMB", false, false},  // case counts
      {"a.omb", "?.omb", false, true},
      {"ab.omb", "?.omb", false, false},
      {"b.omb", "[ab].omb", false, true},
      {"c.omb", "[!ab].omb", false, true},
      {"a.omb", "a.omb", false, true},
      {kForeign, "*run ?.hkl", false, true},
      {kForeign, "\xc3\x85*", false, true},
      {".hidden", "*", false, true},
      {".hidden", "*", true, false},
      {".hidden", ".*", true, true},
      {".hidden", "?hidden", true, false},
      {"x.hidden", "*", true, true},  // only a leading dot is special
  };
  for (const auto& [name, pattern, period, want] : cases)
    EXPECT_EQ(yyosdirmatch(name, pattern, period), want) << name << " ~ " << pattern << " " << period;
}

TEST_F(OsDirectoryTest, PatternTextsSplitAtBlanksOrQuotes) {
  const std::pair<std::string, Names> cases[] = {
      {"*.omb *.hkl", {"*.omb", "*.hkl"}},
      {"  *.omb   ", {"*.omb"}},
      {"\"my f*\" *.OMB", {"my f*", "*.OMB"}},
      {"\"open end", {"open end"}},
      {"a \"\" b", {"a", "", "b"}},
      {std::string("x\0y", 3), {"x", "y"}},
      {"   ", {}},
      {"", {}},
  };
  for (const auto& [text, want] : cases) {
    Names got;
    std::size_t pos = 0;
    for (std::string v; yylocatevalue(text, pos, v);) got.push_back(v);
    EXPECT_EQ(got, want) << text;
  }
}

TEST_F(OsDirectoryTest, ListingTakesLinksAsWhatTheyPointTo) {
  EXPECT_EQ(list("", 8), (Names{"a.omb", "b.omb", "c.hkl", "to_c", kForeign}));  // no dangling link
  EXPECT_EQ(list("*.omb \"* run *\" to_*", 8), (Names{"a.omb", "b.omb", "to_c", kForeign}));
  EXPECT_EQ(list("*.omb", 8 | 0x100), (Names{".hidden.omb", "a.omb", "b.omb"}));
  zelvy_data::data().idirinfo = 2;
  EXPECT_EQ(list("", 8), (Names{"locked", "sub", "to_sub"}));
  EXPECT_EQ(list("", 8 | 0x100), (Names{".", "..", ".cache", "locked", "sub", "to_sub"}));
  EXPECT_EQ(list("", 8 | 0x100 | 0x200), (Names{".", "..", ".cache", "locked", "sub", "to_sub"}));
  EXPECT_EQ(list("*", 8 | 0x100 | 0x200 | 0x80), (Names{"locked", "sub", "to_sub"}));

  Names names(2);
  std::vector<int> dates(2), sizes(2);
  int count = 2;
  zelvy_data::data().idirinfo = 1;
  IOsDirInfo(dir_, "c.hkl to_c", names, count, dates, sizes);
  EXPECT_EQ(names, (Names{"c.hkl", "to_c"}));
  EXPECT_EQ(sizes, (std::vector<int>{1025, 1025}));
  EXPECT_EQ(dates, (std::vector<int>{kKnownStamp, kKnownStamp}));
}

TEST_F(OsDirectoryTest, FileInformationInLocalTime) {
  zone("UTC0");
  chmod((dir_ + "/c.hkl").c_str(), 0640);
  std::array<int, kFileInfoCount> v{};
  EXPECT_EQ(yyosfileinfo(dir_ + "/c.hkl", v), 0);
  EXPECT_EQ(v[0], 1025);
  EXPECT_EQ((std::vector<int>(v.begin() + 1, v.begin() + 7)), (std::vector<int>{2023, 11, 14, 22, 13, 20}));
  EXPECT_TRUE(S_ISREG(v[7]));
  EXPECT_EQ(v[7] & 07777, 0640);
  EXPECT_EQ(v[8], 2);
  EXPECT_EQ(v[9], kPathFile);

  std::array<int, kFileInfoCount> link{};
  EXPECT_EQ(yyosfileinfo(dir_ + "/to_c", link), 0);
  EXPECT_EQ(link, v);  // a link is what it points to
  EXPECT_EQ(yyosfileinfo(dir_ + "/sub", v), 0);
  EXPECT_EQ(v[9], kPathDirectory);
  EXPECT_EQ(yyosfileinfo(dir_ + "/dangling", v), ENOENT);
  EXPECT_EQ(v, (std::array<int, kFileInfoCount>{-1}));

  std::vector<int> out(10, -7);
  iosfileinfo(dir_ + "/" + kForeign + "   ", out, 9);
  EXPECT_EQ(out[0], 3);
  EXPECT_EQ(out[8], 1);  // three bytes are a kilobyte begun
  EXPECT_EQ(out[9], -7);  // only `count` values are written
  iosfileinfo(dir_ + "/none", out, 0);  // the size at least
  EXPECT_EQ(out[0], -1);
  EXPECT_EQ(out[1], 2023);
  EXPECT_EQ(error(), 0);  // a failed look-up is told by the size alone
}

TEST_F(OsDirectoryTest, DateAndTimeTextsOfAStamp) {
  // {zone, date text, time text}: the zone decides the day.
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"UTC0", "14/11/2023", "22:13:20"}, {"EET-2", "15/11/2023", "00:13:20"}, {"EST5", "14/11/2023", "17:13:20"}};
  for (const auto& [tz, date, time] : cases) {
    zone(tz);
    int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
    iosfiledate(kKnownStamp, y, mo, d);
    iosfiletime(kKnownStamp, h, mi, s);
    std::string date_text, time_text;
    wdatetostring(date_text, y, mo, d);
    WTimeToString(time_text, h, mi, s);
    EXPECT_EQ(date_text, date) << tz;
    EXPECT_EQ(time_text, time) << tz;
    std::vector<int> info(7);
    iosfileinfo(dir_ + "/c.hkl", info, 7);
    EXPECT_EQ(info, (std::vector<int>{1025, y, mo, d, h, mi, s})) << tz;
  }
  zone("UTC0");
  int y = 0, mo = 0, d = 0;
  yyosfiledate(4102444800LL, y, mo, d);  // past what 32 bits of seconds hold
  EXPECT_EQ(y * 10000 + mo * 100 + d, 21000101);
}

// The order of entries with equal keys is that of a plain selection sort over
// the directory order, whatever the listing does to be quick.
TEST_F(OsDirectoryTest, EqualKeysKeepTheOrderOfASelectionSort) {
  const std::string many = dir_ + "/many";
  mkdir(many.c_str(), 0755);
  constexpr int kFiles = 300;
  for (int i = 0; i < kFiles; ++i) {
    const std::string path = many + "/f" + std::to_string(i * 7919 % 1000);
    std::ofstream(path) << std::string(static_cast<std::size_t>(i % 7), 'x');
    const timespec times[2] = {{kKnownStamp + i % 5, 0}, {kKnownStamp + i % 5, 0}};
    utimensat(AT_FDCWD, path.c_str(), times, 0);
  }
  struct Entry {
    std::string name;
    int size, date;
  };
  std::vector<Entry> listed;  // directory order
  OsDir d;
  ASSERT_EQ(yyosdiropen(many, d), 0);
  for (std::string name; yyosdirread(d, name) == 0 && !name.empty();) {
    struct stat st {};
    if (name[0] != '.' && stat((many + "/" + name).c_str(), &st) == 0)
      listed.push_back({name, static_cast<int>(st.st_size), static_cast<int>(st.st_mtime)});
  }
  ASSERT_EQ(listed.size(), static_cast<std::size_t>(kFiles));
  const std::pair<int, int Entry::*> keys[] = {{0x20, &Entry::size}, {0x20 | 1, &Entry::size}, {0x10, &Entry::date},
                                                {0x10 | 1, &Entry::date}};
  for (const auto& [flags, member] : keys) {
    std::vector<Entry> want = listed;
    const bool reverse = flags & 1;
    for (std::size_t i = 0; i + 1 < want.size(); ++i) {
      std::size_t pick = i;
      for (std::size_t j = i + 1; j < want.size(); ++j)
        if (reverse ? want[pick].*member < want[j].*member : want[j].*member < want[pick].*member) pick = j;
      std::swap(want[i], want[pick]);
    }
    Names names(kFiles), expected;
    for (const auto& e : want) expected.push_back(e.name);
    int count = kFiles;
    IOsDirInfo(many, "", names, count, {}, {}, flags);
    EXPECT_EQ(names, expected) << flags;
  }
}

TEST_F(OsDirectoryTest, TenThousandEntriesLeaveNoDescriptorBehind) {
  constexpr int kFiles = 10000;
  const std::string big = dir_ + "/big";
  mkdir(big.c_str(), 0755);
  for (int i = 0; i < kFiles; ++i) std::ofstream(big + "/f" + std::to_string(i));
  const int before = open_descriptors();

  OsDir d;
  ASSERT_EQ(yyosdiropen(big, d), 0);
  int read = 0;
  for (std::string name; yyosdirread(d, name) == 0 && !name.empty();) ++read;
  EXPECT_EQ(read, kFiles + 2);
  EXPECT_EQ(yyosdirclose(d), 0);
  {
    OsDir early;  // left half-read: going out of scope closes it
    ASSERT_EQ(yyosdiropen(big, early), 0);
    std::string name;
    yyosdirread(early, name);
  }
  int count = 0;
  IOsDirCount(big, "", count);
  EXPECT_EQ(count, kFiles);
  IOsDirCount(big, "f1* f2?", count);
  EXPECT_EQ(count, 1111 + 10);

  Names names(kFiles);
  count = kFiles;
  IOsDirInfo(big, "", names, count);
  EXPECT_EQ(count, kFiles);
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
  Names few(10);
  count = 10;
  IOsDirInfo(big, "", few, count);  // stops long before the end
  EXPECT_EQ(count, 10);
  iosdeletetree(big);
  EXPECT_FALSE(iosdirexists(big));
  EXPECT_EQ(open_descriptors(), before);
}

}  // namespace

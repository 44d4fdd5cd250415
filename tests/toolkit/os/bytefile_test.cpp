// Byte files: open modes, reading to the end, seeking, failures.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/toolkit/os/os_test_support.h"
#include "toolkit/os/bytefile.h"

namespace {

class OsByteFileTest : public OsTest {
 protected:
  void SetUp() override {
    OsTest::SetUp();
    char tmpl[] = "/tmp/zelv_bytefile_XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    dir_ = tmpl;
    path_ = dir_ + "/data.bin";
  }
  void TearDown() override {
    std::remove(path_.c_str());
    rmdir(dir_.c_str());
    OsTest::TearDown();
  }
  std::string contents() const {
    std::ifstream in(path_, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
  }
  std::string dir_, path_;
};

TEST_F(OsByteFileTest, WriteThenReadToTheEnd) {
  int h = 0, n = 0;
  IFileOpen("  " + path_ + "  ", 1, h);
  ASSERT_GT(h, 0);
  IFileWriteChar(h, "abcdefXYZ", 6, n);  // only the first six
  EXPECT_EQ(n, 6);
  ifileclose(h);
  EXPECT_EQ(contents(), "abcdef");

  IFileOpen(path_, 0, h);
  ASSERT_GT(h, 0);
  std::string buf(4, '\0');
  IFileReadChar(h, buf, 4, n);
  EXPECT_EQ(n, 4);
  EXPECT_EQ(buf, "abcd");
  std::vector<unsigned char> bytes(10);
  IFileReadChar(h, bytes, 100, n);  // no more than the buffer, no more than there is
  EXPECT_EQ(n, 2);
  EXPECT_EQ(bytes[0], 'e');
  IFileReadChar(h, buf, 4, n);
  EXPECT_EQ(n, 0);  // the end, without error
  EXPECT_EQ(error(), 0);
  // Writing to a file opened for reading fails and moves nothing.
  IFileWriteChar(h, "q", 1, n);
  EXPECT_EQ(n, -1);
  EXPECT_EQ(error(), 2);
  EXPECT_EQ(zelvy_data::data().ioetype, 2);
  EXPECT_EQ(WInfoError(2), EBADF);
  ifileclose(h);
}

TEST_F(OsByteFileTest, ModesTruncateOrKeep) {
  int h = 0, n = 0;
  IFileOpen(path_, 1, h);
  IFileWriteChar(h, std::string("abcdef"), 6, n);
  ifileclose(h);
  IFileOpen(path_, 2, h);  // read and write keeps the contents
  IFileWriteChar(h, "XY", 2, n);
  ifileclose(h);
  EXPECT_EQ(contents(), "XYcdef");
  IFileOpen(path_, 1, h);  // write empties
  ifileclose(h);
  EXPECT_EQ(contents(), "");
  std::remove(path_.c_str());
  IFileOpen(path_, 2, h);  // read and write creates
  EXPECT_GT(h, 0);
  ifileclose(h);
  EXPECT_EQ(error(), 0);
}

TEST_F(OsByteFileTest, SeekOrigins) {
  int h = 0, n = 0;
  IFileOpen(path_, 2, h);
  IFileWriteChar(h, "0123456789", 10, n);
  auto seek = [&](int pos, int origin) {
    IFileSeek(h, pos, origin);
    return pos;
  };
  auto next = [&] {
    std::string c(1, ' ');
    IFileReadChar(h, c, 1, n);
    return c;
  };
  EXPECT_EQ(seek(-3, 2), 7);
  EXPECT_EQ(seek(-2, 1), 5);
  EXPECT_EQ(next(), "5");
  EXPECT_EQ(seek(2, 0), 2);
  EXPECT_EQ(seek(8, 5), 8);  // ignored: neither moves nor reports
  EXPECT_EQ(next(), "2");
  EXPECT_EQ(seek(-1, 0), -1);
  EXPECT_EQ(error(), 2);
  EXPECT_EQ(WInfoError(2), EINVAL);
  ifileclose(h);
}

TEST_F(OsByteFileTest, OpenFailures) {
  int h = 0;
  // A bad mode, no name, a file that isn't there.
  for (auto [name, mode] : {std::pair{path_, 3}, {std::string("    "), 1}, {dir_ + "/missing", 0}}) {
    IFileOpen(name, mode, h);
    EXPECT_EQ(h, -1) << name;
    EXPECT_EQ(zelvy_data::data().ioetype, 2);
    EXPECT_EQ(error(), 1) << name;
  }
  EXPECT_EQ(WInfoError(2), ENOENT);
  ifileclose(h);  // a failed handle may be closed without harm
  EXPECT_EQ(error(), 0);
  IFileOpen(path_, 1, h);
  ifileclose(h);
  int pos = 0, n = 0;
  IFileSeek(h, pos, 0);  // a closed handle
  EXPECT_EQ(pos, -1);
  EXPECT_EQ(error(), 2);
  IFileWriteChar(h, "x", 1, n);
  EXPECT_EQ(n, -1);
  EXPECT_EQ(error(), 2);
}

}  // namespace

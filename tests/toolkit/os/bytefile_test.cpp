// Byte files: open modes, reading to the end, seeking, failures.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
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
  EXPECT_EQ(zelvy_data::ioetype, 2);
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
  int pos = -3;
  IFileSeek(h, pos, 2);
  EXPECT_EQ(pos, 7);
  pos = -2;
  IFileSeek(h, pos, 1);
  EXPECT_EQ(pos, 5);
  std::string c(1, ' ');
  IFileReadChar(h, c, 1, n);
  EXPECT_EQ(c, "5");
  pos = 2;
  IFileSeek(h, pos, 0);
  EXPECT_EQ(pos, 2);
  pos = 8;
  IFileSeek(h, pos, 5);  // ignored: neither moves nor reports
  EXPECT_EQ(pos, 8);
  IFileReadChar(h, c, 1, n);
  EXPECT_EQ(c, "2");
  pos = -1;
  IFileSeek(h, pos, 0);
  EXPECT_EQ(pos, -1);
  EXPECT_EQ(error(), 2);
  EXPECT_EQ(WInfoError(2), EINVAL);
  ifileclose(h);
}

TEST_F(OsByteFileTest, OpenFailures) {
  int h = 0;
  IFileOpen(path_, 3, h);
  EXPECT_EQ(h, -1);
  EXPECT_EQ(error(), 1);
  EXPECT_EQ(zelvy_data::ioetype, 2);
  IFileOpen("    ", 1, h);
  EXPECT_EQ(h, -1);
  EXPECT_EQ(error(), 1);
  IFileOpen(dir_ + "/missing", 0, h);
  EXPECT_EQ(h, -1);
  EXPECT_EQ(error(), 1);
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

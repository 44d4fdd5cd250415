#include "toolkit/os/bytefile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/base/fixed_text.h"

namespace {

class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    if (this != &other) reset(std::exchange(other.fd_, -1));
    return *this;
  }
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;
  ~UniqueFd() { reset(); }

  int get() const { return fd_; }
  // Closes the descriptor; returns 0 or the error number of close.
  int reset(int fd = -1) {
    int err = 0;
    if (fd_ >= 0 && ::close(fd_) != 0) err = errno;
    fd_ = fd;
    return err;
  }

 private:
  int fd_ = -1;
};

// Handle h is files[h - 1]; a closed slot is reused.
std::vector<UniqueFd>& files() {
  static std::vector<UniqueFd> table;
  return table;
}

int descriptor(int handle) {
  auto& t = files();
  if (handle < 1 || static_cast<std::size_t>(handle) > t.size()) return -1;
  return t[static_cast<std::size_t>(handle) - 1].get();
}

void fail(int code, int err, std::string_view routine) {
  zelvy_data::data().ioetype = 2;
  zelvy_data::data().istat = err;
  yyerror(code, routine);
}

}  // namespace

int yyfileopen(std::string_view name, int mode, int& handle) {
  handle = -1;
  const std::string path(left_trimmed(trimmed(name)));
  if (path.empty()) return ENOENT;
  int oflags = O_CLOEXEC;
  switch (mode) {
    case 0: oflags |= O_RDONLY; break;
    case 1: oflags |= O_WRONLY | O_CREAT | O_TRUNC; break;
    case 2: oflags |= O_RDWR | O_CREAT; break;
    default: return EINVAL;
  }
  const int fd = ::open(path.c_str(), oflags, 0644);
  if (fd < 0) return errno;
  auto& t = files();
  std::size_t slot = 0;
  while (slot < t.size() && t[slot].get() >= 0) ++slot;
  if (slot == t.size()) t.emplace_back();
  t[slot].reset(fd);
  handle = static_cast<int>(slot) + 1;
  return 0;
}

void IFileOpen(std::string_view name, int mode, int& handle) {
  if (int err = yyfileopen(name, mode, handle)) fail(1, err, "IFileOpen");
}

void ifileclose(int handle) {
  if (descriptor(handle) < 0) return;
  if (int err = files()[static_cast<std::size_t>(handle) - 1].reset()) fail(3, err, "IFileClose");
}

namespace {

ssize_t read_once(int fd, void* buf, std::size_t n) {
  ssize_t r;
  do r = ::read(fd, buf, n);
  while (r < 0 && errno == EINTR);
  return r;
}

ssize_t write_once(int fd, const void* buf, std::size_t n) {
  ssize_t r;
  do r = ::write(fd, buf, n);
  while (r < 0 && errno == EINTR);
  return r;
}

std::size_t clamp_count(int count, std::size_t size) {
  return count <= 0 ? 0 : std::min(static_cast<std::size_t>(count), size);
}

void read_bytes(int handle, void* buf, std::size_t size, int count, int& nread) {
  const int fd = descriptor(handle);
  const ssize_t r = fd < 0 ? (errno = EBADF, -1) : read_once(fd, buf, clamp_count(count, size));
  if (r < 0) {
    nread = -1;
    fail(2, errno, "IFileReadChar");
    return;
  }
  nread = static_cast<int>(r);
}

void write_bytes(int handle, const void* buf, std::size_t size, int count, int& nwritten) {
  const int fd = descriptor(handle);
  const ssize_t r = fd < 0 ? (errno = EBADF, -1) : write_once(fd, buf, clamp_count(count, size));
  if (r < 0) {
    nwritten = -1;
    fail(2, errno, "IFileWriteChar");
    return;
  }
  nwritten = static_cast<int>(r);
}

}  // namespace

void IFileReadChar(int handle, std::span<char> bytes, int count, int& nread) {
  read_bytes(handle, bytes.data(), bytes.size(), count, nread);
}

void IFileReadChar(int handle, std::span<unsigned char> bytes, int count, int& nread) {
  read_bytes(handle, bytes.data(), bytes.size(), count, nread);
}

void IFileWriteChar(int handle, std::string_view bytes, int count, int& nwritten) {
  write_bytes(handle, bytes.data(), bytes.size(), count, nwritten);
}

void IFileWriteChar(int handle, std::span<const unsigned char> bytes, int count, int& nwritten) {
  write_bytes(handle, bytes.data(), bytes.size(), count, nwritten);
}

void IFileSeek(int handle, int& position, int origin) {
  int whence;
  switch (origin) {
    case 0: whence = SEEK_SET; break;
    case 1: whence = SEEK_CUR; break;
    case 2: whence = SEEK_END; break;
    default: return;
  }
  const int fd = descriptor(handle);
  const off_t r = fd < 0 ? (errno = EBADF, -1) : ::lseek(fd, position, whence);
  if (r < 0 || r > 2147483647) {
    const int err = r < 0 ? errno : EOVERFLOW;
    position = -1;
    fail(2, err, "IFileSeek");
    return;
  }
  position = static_cast<int>(r);
}

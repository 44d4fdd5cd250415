// Grid files on disk: the whole file is read before the grid is touched, so
// a file that can't be read, or isn't text, leaves the grid as it was.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_csv.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/grid/grid_window_private.h"

namespace {

// Error 2 is a read failure on load and a write failure on save.
constexpr int kOpenFailed = 1, kReadFailed = 2, kBadCell = 1017;
constexpr int kOptionLabels = 2, kOptionKeepBlanks = 8;
constexpr int kOptionNoQuotes = 1, kOptionUndefined = 4;

// The file's bytes; 0, 1 (can't open) or 2 (can't read). A regular file is
// read at its size in one go; anything else in blocks until its end.
int read_file(const std::string& name, std::string& data) {
  const int fd = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return kOpenFailed;
  data.clear();
  struct stat st {};
  constexpr std::size_t kBlock = 1 << 16;
  const std::size_t expected = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) ? static_cast<std::size_t>(st.st_size) : 0;
  // One byte more than the size, so that the end is seen without a regrow.
  std::size_t room = expected + 1;
  int status = 0;
  for (;;) {
    const std::size_t have = data.size();
    if (room < kBlock) room = kBlock;
    data.resize(have + room);
    const ssize_t n = ::read(fd, data.data() + have, room);
    if (n < 0) {
      data.resize(have);
      status = kReadFailed;
      break;
    }
    data.resize(have + static_cast<std::size_t>(n));
    if (n == 0) break;
    // Past the expected size only the end is left to see; a pipe's string
    // grows by doubling.
    room = expected > 0 ? kBlock : data.size();
  }
  ::close(fd);
  return status;
}

// A file's text: a regular file is mapped, so its bytes are read once, by
// the parser, and never copied; anything else is read into memory.
class FileText {
 public:
  FileText() = default;
  FileText(const FileText&) = delete;
  FileText& operator=(const FileText&) = delete;
  ~FileText() {
    if (map_) ::munmap(map_, size_);
  }
  // 0, 1 (can't open) or 2 (can't read).
  int load(const std::string& name) {
    const int fd = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return kOpenFailed;
    struct stat st {};
    if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0) {
      void* p = ::mmap(nullptr, static_cast<std::size_t>(st.st_size), PROT_READ, MAP_PRIVATE | MAP_POPULATE, fd, 0);
      if (p != MAP_FAILED) {
        map_ = p;
        size_ = static_cast<std::size_t>(st.st_size);
        ::close(fd);
        return 0;
      }
    }
    ::close(fd);
    return read_file(name, data_);
  }
  std::string_view view() const {
    return map_ ? std::string_view(static_cast<const char*>(map_), size_) : std::string_view(data_);
  }

 private:
  void* map_ = nullptr;
  std::size_t size_ = 0;
  std::string data_;
};

}  // namespace

void WGridLoad(int fieldid, std::string_view filename, std::optional<int> grow, std::optional<int> options) {
  int error = 0;
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return yyerror(error, "WGridLoad");
  FileText file;
  if (const int status = file.load(std::string(filename))) return yyerror(status, "WGridLoad");
  const std::string_view data = file.view();
  // A zero byte never stands in a text file: nothing of it is loaded.
  if (std::memchr(data.data(), '\0', data.size())) return yyerror(kReadFailed, "WGridLoad");
  GridPart& g = yyGridPart(grid);
  GridState& s = *g.st;
  const int opt = options.value_or(0);
  GridLoadOptions o;
  o.separator = yyGridFileSeparator(filename);
  o.grow = grow.value_or(0) == 1;
  o.labels = opt & kOptionLabels;
  o.keepBlanks = opt & kOptionKeepBlanks;
  o.columnLabelBar = g.colLabel;
  o.rowLabelBar = g.rowLabel;
  s.model.maxRows = g.maxNrow;
  if (s.selectionOn) yyGridWidgetSelectX(grid, false, 0, 0, 0, 0);
  yygridcellredrawoff(grid);
  const GridLoadResult r = yyGridModelLoad(s.model, data, o);
  s.redrawOff = false;  // the rows are shown anew below
  if (r.labelsChanged && g.colLabel)
    for (int c = 0; c < s.model.columnCount(); ++c) yyGridWidgetSetColumnLabelX(grid, c, s.model.columns[static_cast<std::size_t>(c)].label);
  yyGridShowRows(grid);
  if (r.error) yyerror(r.error, "WGridLoad");
}

void WGridSave(int fieldid, std::string_view filename, std::optional<int> firstColumn,
               std::optional<int> lastColumn, std::optional<int> firstRow, std::optional<int> lastRow,
               std::optional<int> options) {
  int error = 0;
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return yyerror(error, "WGridSave");
  GridPart& g = yyGridPart(grid);
  const GridModel& m = g.st->model;
  const int c1 = firstColumn.value_or(1) - 1, r1 = firstRow.value_or(1) - 1;
  const int c2 = std::min(lastColumn.value_or(m.columnCount()), m.columnCount()) - 1;
  const int r2 = std::min(lastRow.value_or(m.rows), m.rows) - 1;
  if (c1 < 0 || r1 < 0 || c1 > c2 || r1 > r2) return yyerror(kBadCell, "WGridSave");
  const int opt = options.value_or(0);
  GridSaveOptions o;
  o.separator = yyGridFileSeparator(filename);
  o.noQuotes = opt & kOptionNoQuotes;
  o.labels = opt & kOptionLabels;
  o.undefinedValues = opt & kOptionUndefined;
  o.columnLabelBar = g.colLabel;
  o.rowLabelBar = g.rowLabel;
  const auto& d = zelvy_data::data();
  o.integerUndefined = d.iundef;
  o.realUndefined = d.rundef;
  o.doubleUndefined = d.dundef;
  const int fd = ::open(std::string(filename).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) return yyerror(kOpenFailed, "WGridSave");
  // A short write gives up at once.
  const bool written = yyGridModelSaveChunks(m, c1, c2, r1, r2, o, [fd](std::string_view chunk) {
    while (!chunk.empty()) {
      const ssize_t n = ::write(fd, chunk.data(), chunk.size());
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) return false;
      chunk.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
  });
  const bool closed = ::close(fd) == 0;
  if (!written || !closed) yyerror(kReadFailed, "WGridSave");
}

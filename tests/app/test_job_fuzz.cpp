// The job file reader fed with thousands of damaged files built from the
// examples: it never crashes, never leaves the twin array, ends with exit_code
// 0 or -1 and shows exactly one message for a failure.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "app/data_param.h"
#include "app/data_proc.h"
#include "app/job_file.h"

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

std::vector<Lines> example_jobs() {
  std::vector<Lines> jobs;
  for (const auto& e : fs::recursive_directory_iterator(fs::path(ZELV_SOURCE_DIR) / "examples")) {
    if (e.path().extension() != ".omb") continue;
    std::ifstream in(e.path(), std::ios::binary);
    Lines lines;
    for (std::string l; std::getline(in, l);) lines.push_back(l);
    jobs.push_back(lines);
  }
  return jobs;
}

class Mutator {
 public:
  std::string job(const std::vector<Lines>& examples) {
    Lines lines = examples[pick(examples.size())];
    for (std::size_t n = 1 + pick(8); n > 0; --n) edit(lines);
    std::string text;
    for (const auto& l : lines) text += l + (pick(10) ? "\n" : "\r\n");
    if (!text.empty() && pick(5) == 0) text.pop_back();  // no final line end
    return text;
  }

 private:
  std::size_t pick(std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n - 1)(rng_); }
  template <std::size_t N>
  const char* any(const char* const (&words)[N]) { return words[pick(N)]; }
  std::string& some(Lines& lines) { return lines[pick(lines.size())]; }

  std::string random_line() {
    static const char* const keys[] = {"TITLE", "INPFIL", "KVEC", "TRANSF", "SCALE", "SPGR", "EPSIL",
                                       "NFRDL", "CELL", "WAVE", "HKL_T", "WARN", "TWIN", "DOMAIN",
                                       "TWIN_nam", "TWIN_typ", "TWIN_trf", "TWIN_mat", "TWIN_ubm",
                                       "TWIN_mac", "TWIN_spg", "TWIN_end", "!", "#", "twin_mat"};
    static const char* const numbers[] = {"1", "-0.5", "90", "1E99", "-", ".", "1.2.3", "1-2", "+3",
                                          "2147483648", "1e-40", "E", "1,", "NaN", "7E", "!"};
    std::string l = std::string(pick(4), ' ') + any(keys);
    for (std::size_t n = pick(12); n > 0; --n) l += std::string(1 + pick(2), pick(6) ? ' ' : ',') + any(numbers);
    return l;
  }

  void edit(Lines& lines) {
    const std::size_t kind = lines.empty() ? 0 : pick(8);
    switch (kind) {
      case 0: lines.insert(lines.begin() + static_cast<long>(pick(lines.size() + 1)), random_line()); break;
      case 1: lines.erase(lines.begin() + static_cast<long>(pick(lines.size()))); break;
      case 2: {  // 30 copies overflow the twin matrices
        const std::string copy = some(lines);
        lines.insert(lines.end(), pick(4) ? 1 : 30, copy);
      } break;
      case 3: for (auto& l : lines) if (!l.empty() && pick(4) == 0) l[pick(l.size())] = static_cast<char>(pick(256)); break;
      case 4: some(lines) += std::string(100 + pick(300), pick(2) ? ' ' : 'x'); break;
      case 5: { auto& l = some(lines); l.resize(pick(l.size() + 1)); } break;
      case 6: std::shuffle(lines.begin(), lines.end(), rng_); break;
      default: {
        std::string l(pick(200), ' ');
        for (auto& c : l) c = static_cast<char>(pick(256));
        lines.push_back(l);
      }
    }
  }

  std::mt19937 rng_{20261123};
};

TEST(JobFileRobustness, ThousandsOfDamagedFilesNeverBreakTheReader) {
  char tmpl[] = "/tmp/jobfuzz-XXXXXX";
  ASSERT_NE(::mkdtemp(tmpl), nullptr);
  const fs::path dir = tmpl, job = dir / "fuzz.omb";
  const auto examples = example_jobs();
  ASSERT_FALSE(examples.empty());
  int messages = 0, failed = 0;
  job_file::set_message_sink([&messages](std::string_view) { ++messages; });
  Mutator mutate;
  for (int i = 0; i < 4000; ++i) {
    // A new file each time: rewriting one in place makes some file systems flush it on close.
    fs::remove(job);
    std::ofstream(job, std::ios::binary) << mutate.job(examples);
    data_param::file_inp = job.string();
    data_proc::exit_code = 0;
    const int before = messages;
    data_proc::read_ombrel_file();
    const int code = data_proc::exit_code;
    ASSERT_TRUE(code == 0 || code == -1) << "file " << i;
    ASSERT_TRUE(data_param::nmat >= 0 && data_param::nmat <= data_param::max_domains) << "file " << i;
    ASSERT_EQ(messages - before, -code) << "file " << i;
    failed += -code;
    if (code == 0 && i % 64 == 0) {  // what was read can be saved again
      data_param::file_inp = (dir / "saved.omb").string();
      data_proc::write_ombrel_file();
      ASSERT_EQ(data_proc::exit_code, 0);
    }
  }
  EXPECT_GT(failed, 100);  // the mix reaches both outcomes
  EXPECT_LT(failed, 3900);
  job_file::set_message_sink({});
  fs::remove_all(dir);
}

}  // namespace

// Reading the reflection files of the formats a job can name (HKL_T 0 to 10).
// Every line that gives no reflection and is not a comment comes back with
// its line number and the reason, for the .rej file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace stand_in {

struct Observation {
  double hkl[3];  // as read; real for the formats and jobs that allow it
  double intensity, sigma;
  std::int32_t line;    // first line of the reflection in the file
  std::int32_t domain;  // domain code of HKL_T 10, 0 otherwise
};

struct RejectedLine {
  long line = 0;
  std::string reason;
  std::string text;  // the line, cut to a readable length
};

struct ReadResult {
  bool opened = false;
  std::string problem;  // why nothing could be read; empty otherwise
  long lines = 0;
  long comments = 0;  // comment and blank lines
  std::vector<Observation> observations;
  std::vector<RejectedLine> rejected;
};

// Indices beyond this are no reflection a diffractometer measures.
constexpr double kMaxIndex = 9999;

// Whether the columns of a format are known well enough to read it.
bool reads_format(int hkl_type);
// What the reader takes from a line of the format, for the report.
std::string format_description(int hkl_type);

// `real_indices`: non-integer indices are kept (satellites of a propagation
// vector); otherwise such a line is rejected.
ReadResult read_reflections(std::string_view text, int hkl_type, bool real_indices);
ReadResult read_reflection_file(const std::string& path, int hkl_type, bool real_indices);

}  // namespace stand_in

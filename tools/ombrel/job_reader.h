// The stand-in's own reader of the job file. It shares no code with the
// front-end, so that a job the front-end writes and cannot read the way a
// reduction code reads it shows up as a difference between the two.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace stand_in {

using Matrix = std::array<std::array<float, 3>, 3>;  // (row, column)

struct Twin {
  std::string name;     // as it stands behind the keyword, leading blank included
  int type = 0;
  bool has_transform = false;
  Matrix transform{};   // UB-matrix transformation
  std::vector<Matrix> domains;
  bool has_ub = false;
  Matrix ub{};
  std::string machine;  // likewise not left-adjusted
  bool has_space_group = false;
  std::string space_group;
};

// What the job file says. Texts are cut to the widths the front-end keeps.
struct JobFile {
  std::string title, data_file, result_name, space_group;
  bool has_cell = false;
  std::array<float, 6> cell{};  // a b c alpha beta gamma
  bool has_wavelength = false;
  float wavelength = 0;
  int hkl_type = 0;
  bool has_transform = false;
  Matrix transform{};
  bool friedel = true;
  bool has_scale = false;
  float scale = 0;
  bool powder = false;
  bool has_epsil = false;
  float epsil = 0;
  bool has_kvec = false;
  std::array<float, 3> kvec{};
  bool domains_averaged = false;
  float warn = 0;
  bool twinned = false;
  Twin twin;
  // Why the reading stopped early; empty when the whole file was read. What
  // stood in front of the faulty line is kept.
  std::string problem;
};

// Reads the job file at `path`; a file that can't be opened is a problem too.
JobFile read_job(const std::string& path);

// Every value of the job, numbers with all the digits of a 32-bit real, one per line.
std::string listing(const JobFile& job);

// Text helpers for the report.
std::string_view strip_right(std::string_view s);
std::string_view strip_left(std::string_view s);

}  // namespace stand_in

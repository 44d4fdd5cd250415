// The stand-in's handling of free-format reflection files: h k l intensity
// sigma per line, "!" or "#" lines are comments.
#pragma once

#include <optional>
#include <string>

#include "job_reader.h"

namespace stand_in {

struct Job {
  std::optional<Matrix> transform;  // new indices = T * old
  std::optional<float> scale;                 // applied to intensity and sigma
};

struct Result {
  bool opened = false;
  int lines = 0;     // lines in the file
  int comments = 0;  // comment and blank lines
  int written = 0;   // reflections written to the .int text
  int rejected = 0;  // lines written to the .rej text, each with its reason
  std::string int_text;
  std::string rej_text;
};

// HKL_T values whose files the stand-in reads.
inline bool reads_format(int hkl_type) { return hkl_type == 0 || hkl_type == 1; }

Result process(const std::string& path, const Job& job);

}  // namespace stand_in

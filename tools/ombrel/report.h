// The three result files of a run: .out (what was understood and done), .int
// (the merged reflections) and .rej (every line not used, with why).
#pragma once

#include <optional>
#include <string>

#include "job_reader.h"
#include "reduce.h"
#include "reflections.h"
#include "symmetry.h"

namespace stand_in {

std::string describe_job(const std::string& file, const JobFile& job);
std::string describe_symmetry(const SpaceGroup& group, const std::string& typed, bool friedel);
std::string describe_reading(const JobFile& job, const ReadResult& read);
std::string describe_reduction(const JobFile& job, const SpaceGroup& group, const ReadResult& read,
                               const Reduction& red);

std::string int_text(const std::string& source, const Reduction& red);
std::string rej_text(const std::string& source, const ReadResult& read, const Reduction* red);

extern const char* const kBanner;

}  // namespace stand_in

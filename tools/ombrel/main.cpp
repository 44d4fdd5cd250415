// ombrel NAME: the stand-in for the reduction code.
//
// Reads NAME.omb in the current directory with a job reader of its own and
// reduces the job's reflections: OUTFIL.out says what was understood and done,
// OUTFIL.int holds the merged reflections, OUTFIL.rej every line not used,
// with the reason. "ombrel --list NAME" prints the job as read, every number
// with all its digits, and writes no file.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "job_reader.h"
#include "reduce.h"
#include "reflections.h"
#include "report.h"
#include "symmetry.h"

namespace {

using stand_in::JobFile;

// Exit codes: the job was reduced; the job file is missing; the job could not be reduced.
constexpr int kDone = 0, kUsage = 2, kNoJob = 1, kNotReduced = 3;

bool write_file(const std::string& name, const std::string& text) {
  std::ofstream out(name, std::ios::binary | std::ios::trunc);
  out << text;
  out.close();
  if (!out) std::cerr << "ombrel: cannot write " << name << "\n";
  return static_cast<bool>(out);
}

stand_in::Settings settings_of(const JobFile& job) {
  stand_in::Settings s;
  if (job.has_transform) s.transform = job.transform;
  if (job.has_scale) s.scale = job.scale;
  s.friedel = job.friedel;
  if (job.has_kvec) s.kvec = std::array<double, 3>{job.kvec[0], job.kvec[1], job.kvec[2]};
  s.domains_averaged = job.domains_averaged;
  if (job.has_cell && job.cell[0] > 0 && job.cell[1] > 0 && job.cell[2] > 0) {
    std::array<double, 6> c{};
    for (int i = 0; i < 6; ++i) c[static_cast<std::size_t>(i)] = job.cell[static_cast<std::size_t>(i)];
    s.cell = c;
  }
  if (job.twinned) s.twins = job.twin.domains;
  s.domain_codes = job.hkl_type == 10;
  return s;
}

}  // namespace

int main(int argc, char** argv) {
  const bool list_only = argc > 2 && std::string_view(argv[1]) == "--list";
  const int name_arg = list_only ? 2 : 1;
  if (argc <= name_arg || std::string_view(argv[name_arg]).empty()) {
    std::cerr << "usage: ombrel [--list] NAME   (reads NAME.omb in the current directory)\n";
    return kUsage;
  }
  const std::string name = argv[name_arg];
  const std::string file = name + ".omb";
  std::error_code ec;
  if (!std::filesystem::is_regular_file(file, ec)) {
    std::cerr << "ombrel: job file " << file << " not found\n";
    return kNoJob;
  }

  const JobFile job = stand_in::read_job(file);
  if (list_only) {
    std::cout << stand_in::listing(job);
    return job.problem.empty() ? kDone : kNotReduced;
  }

  const std::string base = job.result_name.empty() ? name : job.result_name;
  std::string out = std::string(stand_in::kBanner) + stand_in::describe_job(file, job);
  std::string ints = "! No reflections: see " + base + ".out\n";
  std::string rejs = ints;
  std::string stop;  // why nothing was reduced

  std::optional<stand_in::SpaceGroup> group;
  const std::string typed = job.space_group.empty() ? "P 1" : job.space_group;
  if (!job.problem.empty()) {
    stop = "The job file could not be read completely: " + job.problem;
  } else if (!stand_in::reads_format(job.hkl_type)) {
    stop = "HKL_T " + std::to_string(job.hkl_type) + " is not read: " + stand_in::format_description(job.hkl_type) + ".";
  } else if (!(group = stand_in::SpaceGroup::find(typed, job.has_cell ? job.cell[3] : 0, job.has_cell ? job.cell[5] : 0))) {
    stop = "The space group \"" + job.space_group + "\" is not known: give a Hermann-Mauguin symbol such as\n"
           "  \"P 21/c\", \"P 1 21/n 1\", \"F d -3 m\", \"R -3 c :H\" or the number of the space group.";
  }
  if (stop.empty()) {
    if (job.space_group.empty()) out += "\n  No space group given: P 1 is assumed.\n";
    out += stand_in::describe_symmetry(*group, typed, job.friedel);
    const bool real_indices = job.has_kvec || job.hkl_type == 5 || job.has_transform;
    stand_in::ReadResult read = stand_in::read_reflection_file(job.data_file, job.hkl_type, real_indices);
    if (!read.problem.empty()) {
      stop = "Reflections: " + read.problem + ".";
      rejs = stand_in::rej_text(job.data_file, read, nullptr);
    } else {
      out += stand_in::describe_reading(job, read);
      if (read.observations.empty()) {
        stop = "The reflection file \"" + job.data_file + "\" holds no reflection.";
        rejs = stand_in::rej_text(job.data_file, read, nullptr);
      } else {
        std::vector<stand_in::Observation> observations = std::move(read.observations);
        read.observations = {};
        const stand_in::Reduction red = stand_in::reduce(std::move(observations), *group, settings_of(job));
        out += stand_in::describe_reduction(job, *group, read, red);
        ints = stand_in::int_text(job.data_file, red);
        rejs = stand_in::rej_text(job.data_file, read, &red);
        out += "\n  Files written: " + base + ".int (" + std::to_string(red.merged.size()) + " merged reflections), " +
               base + ".rej (" + std::to_string(read.rejected.size() + red.rejected.size()) + " lines not used)\n";
      }
    }
  }
  if (!stop.empty()) {
    out += "\n  NOTHING WAS REDUCED\n  " + stop + "\n";
    std::cerr << "ombrel: " << stop << "\n";
  }
  out += "\n  End of the stand-in run.\n";

  bool ok = write_file(base + ".out", out);
  ok = write_file(base + ".int", ints) && ok;
  ok = write_file(base + ".rej", rejs) && ok;
  return ok && stop.empty() ? kDone : kNotReduced;
}

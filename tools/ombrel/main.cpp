// ombrel NAME: the stand-in for the reduction code.
//
// Reads NAME.omb in the current directory with a job reader of its own, writes
// OUTFIL.out (the job as understood and what was done), OUTFIL.int (the
// reflections, indices transformed) and OUTFIL.rej (the lines it could not use,
// with the reason). It does no data reduction. "ombrel --list NAME" prints the
// job as read, every number with all its digits, and writes no file.
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <optional>

#include "job_reader.h"
#include "reflections.h"

namespace {

using stand_in::JobFile;
using stand_in::Matrix;
using stand_in::strip_left;
using stand_in::strip_right;

std::string printf_text(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string printf_text(const char* format, ...) {
  char buf[512];
  va_list args;
  va_start(args, format);
  std::vsnprintf(buf, sizeof buf, format, args);
  va_end(args);
  return buf;
}

std::string or_not_given(std::string_view text) {
  return text.empty() ? std::string("(not given)") : std::string(text);
}

std::string matrix_rows(const Matrix& m, const char* indent) {
  std::string s;
  for (const auto& row : m)
    s += printf_text("%s%10.4f%10.4f%10.4f\n", indent, row[0], row[1], row[2]);
  return s;
}

std::string describe_job(const std::string& file, const JobFile& job) {
  std::string s;
  s += printf_text("  Job file             : %s\n", file.c_str());
  s += "  Title                : " + or_not_given(job.title) + "\n";
  const auto& c = job.cell;
  if (job.has_cell)
    s += printf_text("  Cell                 : a =%9.4f  b =%9.4f  c =%9.4f\n"
                     "                         alpha =%8.3f  beta =%8.3f  gamma =%8.3f\n",
                     c[0], c[1], c[2], c[3], c[4], c[5]);
  else
    s += "  Cell                 : (not given)\n";
  s += "  Space group          : " + or_not_given(job.space_group) + "\n";
  s += job.has_wavelength ? printf_text("  Wavelength           : %.5f\n", job.wavelength)
                          : std::string("  Wavelength           : (not given)\n");
  s += "  Reflection file      : " + or_not_given(job.data_file) + "\n";
  s += printf_text("  Reflection format    : HKL_T %d%s\n", job.hkl_type,
                   stand_in::reads_format(job.hkl_type) ? " (free format: h k l intensity sigma)" : "");
  if (job.has_transform)
    s += "  Transformation of the indices (new = T * old), T:\n" + matrix_rows(job.transform, "      ");
  else
    s += "  Transformation       : none\n";
  s += job.friedel ? "  Friedel's law        : holds\n" : "  Friedel's law        : does not hold (NFRDL)\n";
  if (job.has_scale) s += printf_text("  Scale factor         : %g (applied to intensity and sigma)\n", job.scale);
  if (job.has_epsil) s += printf_text("  EPSIL                : %g\n", job.epsil);
  if (job.powder) s += "  Powder output        : requested; the stand-in does not write one\n";
  const auto& k = job.kvec;
  if (job.has_kvec)
    s += printf_text("  Propagation vector   : %.4f %.4f %.4f%s\n", k[0], k[1], k[2],
                     job.domains_averaged ? ", K-domains averaged" : "");
  else
    s += "  Propagation vector   : none\n";
  if (!job.twinned) {
    s += "  Twin laws            : none\n";
    return s;
  }
  const stand_in::Twin& t = job.twin;
  s += "  Twin law             : " + or_not_given(strip_left(t.name)) + "\n";
  s += printf_text("  Twin type            : %d\n", t.type);
  if (t.has_transform) s += "  UB-matrix transformation:\n" + matrix_rows(t.transform, "      ");
  s += printf_text("  Twin domains         : %zu\n", t.domains.size());
  for (std::size_t i = 0; i < t.domains.size(); ++i)
    s += printf_text("    domain %zu:\n", i + 1) + matrix_rows(t.domains[i], "      ");
  if (t.has_ub) s += "  UB matrix:\n" + matrix_rows(t.ub, "      ");
  s += "  Diffractometer       : " + or_not_given(strip_left(t.machine)) + "\n";
  if (t.has_space_group) s += "  Twin space group     : " + t.space_group + "\n";
  return s;
}

const char* const kBanner =
    " ======================================================================\n"
    "  OMBREL stand-in\n"
    " ======================================================================\n"
    "  This is the stand-in for the reduction code, built with the front-end\n"
    "  so that the whole workflow can be tried. It does no data reduction: it\n"
    "  reports the job as it understood it and, for free-format reflection\n"
    "  files, copies the reflections with the transformation matrix applied\n"
    "  to the indices.\n\n";

bool write_file(const std::string& name, const std::string& text) {
  std::ofstream out(name, std::ios::binary | std::ios::trunc);
  out << text;
  out.close();
  if (!out) std::cerr << "ombrel: cannot write " << name << "\n";
  return static_cast<bool>(out);
}

}  // namespace

int main(int argc, char** argv) {
  const bool list_only = argc > 2 && std::string_view(argv[1]) == "--list";
  const int name_arg = list_only ? 2 : 1;
  if (argc <= name_arg || std::string_view(argv[name_arg]).empty()) {
    std::cerr << "usage: ombrel [--list] NAME   (reads NAME.omb in the current directory)\n";
    return 2;
  }
  const std::string name = argv[name_arg];
  const std::string file = name + ".omb";
  std::error_code ec;
  if (!std::filesystem::is_regular_file(file, ec)) {
    std::cerr << "ombrel: job file " << file << " not found\n";
    return 1;
  }

  const JobFile job = stand_in::read_job(file);
  if (list_only) {
    std::cout << stand_in::listing(job);
    return job.problem.empty() ? 0 : 3;
  }
  const bool job_read = job.problem.empty();
  if (!job_read) std::cerr << "ombrel: " << job.problem << "\n";

  const std::string base = job.result_name.empty() ? name : job.result_name;
  std::string out = kBanner;
  out += describe_job(file, job);
  out += "\n";

  stand_in::Result result;
  if (!job_read) {
    out += "  The job file could not be read completely:\n";
    out += "    " + job.problem + "\n";
    out += "  Nothing was done.\n";
  } else if (!stand_in::reads_format(job.hkl_type)) {
    out += printf_text("  The stand-in reads only the free-format reflection files (HKL_T 0 and 1);\n"
                       "  HKL_T %d is not read. No reflections were written.\n", job.hkl_type);
  } else {
    stand_in::Job j;
    j.transform = job.has_transform ? std::optional<Matrix>(job.transform) : std::nullopt;
    j.scale = job.has_scale ? std::optional<float>(job.scale) : std::nullopt;
    result = stand_in::process(job.data_file, j);
    if (!result.opened) {
      out += "  The reflection file \"" + job.data_file + "\" could not be opened. No reflections were written.\n";
      std::cerr << "ombrel: reflection file \"" << job.data_file << "\" could not be opened\n";
    } else {
      out += printf_text("  Lines in %s: %d, of which %d comment or blank\n", job.data_file.c_str(), result.lines,
                         result.comments);
      out += printf_text("  Reflections written to %s.int: %d\n", base.c_str(), result.written);
      out += printf_text("  Lines rejected, with the reason, to %s.rej: %d\n", base.c_str(), result.rejected);
    }
  }
  out += "\n  End of the stand-in run.\n";

  bool ok = write_file(base + ".out", out);
  ok = write_file(base + ".int", result.int_text) && ok;
  ok = write_file(base + ".rej", result.rej_text) && ok;
  return ok && job_read && (result.opened || !stand_in::reads_format(job.hkl_type)) ? 0 : 3;
}

// ombrel NAME: the stand-in for the reduction code.
//
// Reads NAME.omb in the current directory with the front-end's own job reader,
// writes OUTFIL.out (the job as understood and what was done), OUTFIL.int (the
// reflections, indices transformed) and OUTFIL.rej (the lines it could not use,
// with the reason). It does no data reduction.
#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "app/data_param.h"
#include "app/data_proc.h"
#include "app/job_file.h"
#include "tools/ombrel/reflections.h"

namespace {

using namespace data_param;

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

std::string matrix_rows(const Mat3& m, const char* indent) {
  std::string s;
  for (const auto& row : m)
    s += printf_text("%s%10.4f%10.4f%10.4f\n", indent, row[0], row[1], row[2]);
  return s;
}

std::string describe_job(const std::string& job) {
  std::string s;
  s += printf_text("  Job file             : %s\n", job.c_str());
  s += "  Title                : " + or_not_given(title.trim()) + "\n";
  if (cell_given)
    s += printf_text("  Cell                 : a =%9.4f  b =%9.4f  c =%9.4f\n"
                     "                         alpha =%8.3f  beta =%8.3f  gamma =%8.3f\n",
                     cel[0], cel[1], cel[2], ang[0], ang[1], ang[2]);
  else
    s += "  Cell                 : (not given)\n";
  s += "  Space group          : " + or_not_given(spgr.trim()) + "\n";
  s += wave_given ? printf_text("  Wavelength           : %.5f\n", wavel)
                  : std::string("  Wavelength           : (not given)\n");
  s += "  Reflection file      : " + or_not_given(file_dat.trim()) + "\n";
  s += printf_text("  Reflection format    : HKL_T %d%s\n", hkl_type,
                   stand_in::reads_format(hkl_type) ? " (free format: h k l intensity sigma)" : "");
  if (transf_ind)
    s += "  Transformation of the indices (new = T * old), T:\n" + matrix_rows(transhkl, "      ");
  else
    s += "  Transformation       : none\n";
  s += friedel ? "  Friedel's law        : holds\n" : "  Friedel's law        : does not hold (NFRDL)\n";
  if (scale_given) s += printf_text("  Scale factor         : %g (applied to intensity and sigma)\n", scal_fact);
  if (eps_given) s += printf_text("  EPSIL                : %g\n", epsg);
  if (powder) s += "  Powder output        : requested; the stand-in does not write one\n";
  if (prop)
    s += printf_text("  Propagation vector   : %.4f %.4f %.4f%s\n", kv[0], kv[1], kv[2],
                     domain ? ", K-domains averaged" : "");
  else
    s += "  Propagation vector   : none\n";
  if (!twinned) {
    s += "  Twin laws            : none\n";
    return s;
  }
  s += "  Twin law             : " + or_not_given(trimmed(left_trimmed(twin_name.view()))) + "\n";
  s += printf_text("  Twin type            : %d\n", itwin);
  if (itransf) s += "  UB-matrix transformation:\n" + matrix_rows(tr, "      ");
  s += printf_text("  Twin domains         : %d\n", nmat);
  for (int i = 1; i <= std::min(nmat, max_domains); ++i)
    s += printf_text("    domain %d:\n", i) + matrix_rows(twin[i], "      ");
  if (iubm) s += "  UB matrix:\n" + matrix_rows(ubm, "      ");
  s += "  Diffractometer       : " + or_not_given(trimmed(left_trimmed(machine.view()))) + "\n";
  if (ispg) s += "  Twin space group     : " + std::string(twin_spg.trim()) + "\n";
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
  if (argc < 2 || std::string_view(argv[1]).empty()) {
    std::cerr << "usage: ombrel NAME   (reads NAME.omb in the current directory)\n";
    return 2;
  }
  const std::string name = argv[1];
  const std::string job = name + ".omb";
  std::error_code ec;
  if (!std::filesystem::is_regular_file(job, ec)) {
    std::cerr << "ombrel: job file " << job << " not found\n";
    return 1;
  }

  std::vector<std::string> problems;
  job_file::set_message_sink([&problems](std::string_view text) {
    problems.emplace_back(text);
    std::cerr << "ombrel: " << text << "\n";
  });
  file_inp = job;
  data_proc::exit_code = 0;
  data_proc::read_ombrel_file();
  const bool job_read = data_proc::exit_code == 0;

  const std::string base = file_out.blank() ? name : std::string(file_out.trim());
  std::string out = kBanner;
  out += describe_job(job);
  out += "\n";

  stand_in::Result result;
  std::string status;
  if (!job_read) {
    out += "  The job file could not be read completely:\n";
    for (const auto& p : problems) out += "    " + p + "\n";
    out += "  Nothing was done.\n";
  } else if (!stand_in::reads_format(hkl_type)) {
    out += printf_text("  The stand-in reads only the free-format reflection files (HKL_T 0 and 1);\n"
                       "  HKL_T %d is not read. No reflections were written.\n", hkl_type);
  } else {
    stand_in::Job j;
    j.transform = transf_ind ? std::optional<Mat3>(transhkl) : std::nullopt;
    j.scale = scale_given ? std::optional<float>(scal_fact) : std::nullopt;
    const std::string data(file_dat.trim());
    result = stand_in::process(data, j);
    if (!result.opened) {
      out += "  The reflection file \"" + data + "\" could not be opened. No reflections were written.\n";
      std::cerr << "ombrel: reflection file \"" << data << "\" could not be opened\n";
    } else {
      out += printf_text("  Lines in %s: %d, of which %d comment or blank\n", data.c_str(), result.lines,
                         result.comments);
      out += printf_text("  Reflections written to %s.int: %d\n", base.c_str(), result.written);
      out += printf_text("  Lines rejected, with the reason, to %s.rej: %d\n", base.c_str(), result.rejected);
    }
  }
  out += "\n  End of the stand-in run.\n";

  bool ok = write_file(base + ".out", out);
  ok = write_file(base + ".int", result.int_text) && ok;
  ok = write_file(base + ".rej", result.rej_text) && ok;
  return ok && job_read && (result.opened || !stand_in::reads_format(hkl_type)) ? 0 : 3;
}

#include "report.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <numbers>

namespace stand_in {

namespace {

// Absences listed one by one in .out; all of them are in .rej.
constexpr std::size_t kAbsencesListed = 20;
// An absence stronger than this many sigma puts the space group in question.
constexpr double kStrongAbsence = 3.0;

std::string printf_text(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string printf_text(const char* format, ...) {
  char buf[1024];
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
  for (const auto& row : m) s += printf_text("%s%10.4f%10.4f%10.4f\n", indent, row[0], row[1], row[2]);
  return s;
}

double percent(double part, double whole) { return whole > 0 ? 100 * part / whole : 0; }

}  // namespace

const char* const kBanner =
    " ======================================================================\n"
    "  OMBREL stand-in: a small data-reduction code\n"
    " ======================================================================\n"
    "  What it does: reads the reflection file, applies the transformation\n"
    "  matrix to the indices and the scale factor to intensities and sigmas,\n"
    "  indexes satellites of the propagation vector as h+k and h-k, sets the\n"
    "  systematic absences of the space group apart, brings every reflection\n"
    "  to the asymmetric unit of the Laue class (Friedel pairs apart when\n"
    "  Friedel's law does not hold), rejects outliers and merges equivalents\n"
    "  by their weighted mean; reports R_int, R_sigma, <I/sigma> and the\n"
    "  completeness in shells of sin(theta)/lambda.\n"
    "  What it does not do: no absorption, Lorentz-polarisation or extinction\n"
    "  correction, no refinement of cell or scale, no sharing out of the\n"
    "  intensity of twin-overlapped reflections, no powder output; the UB\n"
    "  matrix, the diffractometer and EPSIL are reported, not used.\n\n";

std::string describe_job(const std::string& file, const JobFile& job) {
  std::string s = "  THE JOB AS UNDERSTOOD\n";
  s += printf_text("  Job file             : %s\n", file.c_str());
  s += "  Title                : " + or_not_given(job.title) + "\n";
  const auto& c = job.cell;
  if (job.has_cell)
    s += printf_text("  Cell                 : a =%9.4f  b =%9.4f  c =%9.4f\n"
                     "                         alpha =%8.3f  beta =%8.3f  gamma =%8.3f\n",
                     c[0], c[1], c[2], c[3], c[4], c[5]);
  else
    s += "  Cell                 : (not given: no resolution shells, no completeness)\n";
  s += "  Space group          : " + or_not_given(job.space_group) + "\n";
  s += job.has_wavelength ? printf_text("  Wavelength           : %.5f\n", job.wavelength)
                          : std::string("  Wavelength           : (not given)\n");
  s += "  Reflection file      : " + or_not_given(job.data_file) + "\n";
  s += printf_text("  Reflection format    : HKL_T %d (%s)\n", job.hkl_type, format_description(job.hkl_type).c_str());
  if (job.has_transform)
    s += "  Transformation of the indices (new = T * old), T:\n" + matrix_rows(job.transform, "      ");
  else
    s += "  Transformation       : none\n";
  s += job.friedel ? "  Friedel's law        : holds\n" : "  Friedel's law        : does not hold (NFRDL)\n";
  if (job.has_scale) s += printf_text("  Scale factor         : %g (applied to intensity and sigma)\n", job.scale);
  if (job.has_epsil) s += printf_text("  EPSIL                : %g (not used)\n", job.epsil);
  if (job.powder) s += "  Powder output        : requested; the stand-in does not write one\n";
  const auto& k = job.kvec;
  if (job.has_kvec)
    s += printf_text("  Propagation vector   : %.4f %.4f %.4f%s\n", k[0], k[1], k[2],
                     job.domains_averaged ? ", K-domains averaged" : "");
  else
    s += "  Propagation vector   : none\n";
  if (!job.twinned) return s + "  Twin laws            : none\n";
  const Twin& t = job.twin;
  s += "  Twin law             : " + or_not_given(strip_left(t.name)) + "\n";
  s += printf_text("  Twin type            : %d\n", t.type);
  if (t.has_transform) s += "  UB-matrix transformation (not used):\n" + matrix_rows(t.transform, "      ");
  s += printf_text("  Twin domains         : %zu\n", t.domains.size());
  for (std::size_t i = 0; i < t.domains.size(); ++i)
    s += printf_text("    domain %zu:\n", i + 1) + matrix_rows(t.domains[i], "      ");
  if (t.has_ub) s += "  UB matrix (not used):\n" + matrix_rows(t.ub, "      ");
  s += "  Diffractometer       : " + or_not_given(strip_left(t.machine)) + "\n";
  if (t.has_space_group) s += "  Twin space group     : " + t.space_group + "\n";
  return s;
}

std::string describe_symmetry(const SpaceGroup& g, const std::string& typed, bool friedel) {
  std::string s = "\n  SYMMETRY\n";
  s += printf_text("  Space group          : %s (No. %d), typed as \"%s\"\n", g.symbol().c_str(), g.number(),
                   typed.c_str());
  s += printf_text("  Point group          : %s   Laue class: %s   Crystal system: %s\n", g.point_group().c_str(),
                   g.laue_class().c_str(), g.crystal_system().c_str());
  s += printf_text("  Lattice centring     : %c\n", g.centring());
  s += printf_text("  Operations           : %d (%d rotations times %d lattice translations)\n", g.order(),
                   g.point_group_order(), g.order() / g.point_group_order());
  s += friedel ? "  Equivalents          : Laue class " + g.laue_class() + ", Friedel pairs merged\n"
               : "  Equivalents          : point group " + g.point_group() + ", Friedel pairs kept apart\n";
  return s;
}

std::string describe_reading(const JobFile& job, const ReadResult& read) {
  std::string s = "\n  READING\n";
  s += "  Reflection file      : " + job.data_file + "\n";
  s += printf_text("  Lines                : %ld, of which %ld comment, blank or end\n", read.lines, read.comments);
  s += printf_text("  Reflections read     : %zu\n", read.observations.size());
  s += printf_text("  Lines not readable   : %zu (listed in .rej with the reason)\n", read.rejected.size());
  return s;
}

std::string describe_reduction(const JobFile& job, const SpaceGroup& g, const ReadResult& read, const Reduction& red) {
  std::string s = "\n  REDUCTION\n";
  s += printf_text("  Observations read               : %8ld\n", red.read);
  if (!red.domain_code_lines.empty()) {
    for (const auto& [code, n] : red.domain_code_lines) s += printf_text("    lines of domain %-3d           : %8ld\n", code, n);
    s += printf_text("    spots shared by domains       : %8ld (not merged)\n", red.domain_overlap_groups);
    s += printf_text("  Not domain 1 alone              : %8ld\n", red.other_domains);
  }
  if (job.has_kvec) {
    s += printf_text("  Satellites (h+k, h-k)           : %8ld\n", red.satellites);
    s += red.kvec_denominator > 0
             ? printf_text("    k is commensurate (%d k is a lattice vector)\n", red.kvec_denominator)
             : std::string("    k is incommensurate: satellites are merged with repeats of themselves only\n");
  }
  s += printf_text("  Not indexed                     : %8ld\n", red.unindexed);
  s += printf_text("  Systematically absent           : %8zu\n", red.absences.size());
  s += printf_text("  Outliers (> %g sigma)            : %8ld\n", kOutlierSigma, red.outliers);
  s += printf_text("  Used in the merge               : %8ld\n", red.used);
  s += printf_text("  Unique reflections (merged)     : %8zu\n", red.merged.size());
  s += printf_text("  Measured more than once         : %8ld\n", red.groups_with_equivalents);
  if (!red.merged.empty())
    s += printf_text("  Mean multiplicity               : %8.2f\n", double(red.used) / double(red.merged.size()));
  (void)read;

  if (!red.absences.empty()) {
    long strong = 0;
    for (const auto& a : red.absences) strong += a.intensity > kStrongAbsence * a.sigma;
    s += printf_text("\n  Systematic absences of %s: %zu, of which %ld with I > %g sigma%s\n", g.symbol().c_str(),
                     red.absences.size(), strong, kStrongAbsence,
                     strong > 0 ? "  <-- check the space group" : "");
    s += "        h     k     l           I       sigma   I/sigma  condition\n";
    for (std::size_t i = 0; i < red.absences.size() && i < kAbsencesListed; ++i) {
      const auto& a = red.absences[i];
      s += printf_text("    %5d %5d %5d %11.2f %11.2f %9.2f  %s\n", a.hkl[0], a.hkl[1], a.hkl[2], a.intensity, a.sigma,
                       a.intensity / a.sigma, a.why == Absence::centring ? "lattice centring" : "screw/glide");
    }
    if (red.absences.size() > kAbsencesListed) s += "    ... the rest are in .rej\n";
  }

  if (!red.twin_on_lattice.empty()) {
    s += "\n  TWIN DOMAINS (images of each used reflection through the domain's matrix)\n";
    for (std::size_t t = 0; t < red.twin_on_lattice.size(); ++t)
      s += printf_text("    domain %2zu: %8ld of %ld images fall on a lattice node\n", t + 1, red.twin_on_lattice[t],
                       red.used + red.outliers);
    s += printf_text("    reflections overlapped by another domain: %ld (%.1f%%); their intensities are\n"
                     "    merged as measured, not shared out between the domains\n",
                     red.twin_overlapped, percent(double(red.twin_overlapped), double(red.used + red.outliers)));
  }

  s += "\n  AGREEMENT OF EQUIVALENTS\n";
  s += "  R_int   = sum |I - <I>| / sum I over the reflections measured more than once\n";
  s += "  R_sigma = sum sigma(<I>) / sum <I> over the merged reflections\n";
  s += "  <I> is the weighted mean (weights 1/sigma^2); sigma(<I>)^2 = (s_c^2 + (n-1) s_s^2) / n, with\n";
  s += "  s_c from the sigmas of the n observations and s_s from their spread about <I>\n";
  if (red.shells.empty()) {
    s += "  (no cell: no resolution shells, no completeness)\n";
  } else {
    s += "\n    sin(th)/lambda  d_min(A)     N_obs  N_unique  Possible  Compl%  Mult   <I/sig>   R_int  R_sigma\n";
  }
  auto line = [&](const char* label, const Shell& sh) {
    const double d = sh.stol_high > 0 ? 1 / (2 * sh.stol_high) : 0;
    std::string possible = red.completeness_known ? printf_text("%9ld", sh.possible) : std::string("        -");
    std::string compl_ = red.completeness_known ? printf_text("%7.1f", percent(double(sh.unique), double(sh.possible)))
                                                : std::string("      -");
    // No reflection measured twice: no R_int to give.
    const std::string rint = sh.rint_den > 0 ? printf_text("%7.4f", sh.rint()) : std::string("      -");
    return printf_text("  %-17s %8.3f %9ld %9ld %s %s %5.2f %9.2f %s %8.4f\n", label, d, sh.observations, sh.unique,
                       possible.c_str(), compl_.c_str(), sh.unique ? double(sh.observations) / sh.unique : 0.0,
                       sh.mean_i_over_sigma(), rint.c_str(), sh.rsigma());
  };
  for (const Shell& sh : red.shells) {
    const std::string label = printf_text("%.4f-%.4f", sh.stol_low, sh.stol_high);
    s += line(label.c_str(), sh);
  }
  Shell all = red.overall;
  if (!red.shells.empty()) all.stol_high = red.shells.back().stol_high;
  if (red.shells.empty())
    s += printf_text("  Overall: N_obs %ld, N_unique %ld, <I/sig> %.2f, R_int %.4f, R_sigma %.4f\n", all.observations,
                     all.unique, all.mean_i_over_sigma(), all.rint(), all.rsigma());
  else
    s += line("overall", all);
  if (!red.shells.empty() && job.has_wavelength && job.wavelength > 0) {
    const double x = job.wavelength * all.stol_high;
    s += x <= 1 ? printf_text("\n  theta_max = %.2f degrees at lambda = %.5f\n", std::asin(x) * 180 / std::numbers::pi,
                              job.wavelength)
                : printf_text("\n  sin(theta)/lambda up to %.4f is beyond reach at lambda = %.5f: check cell and wavelength\n",
                              all.stol_high, job.wavelength);
  }
  if (!red.shells.empty() && !red.completeness_known)
    s += "  (the sphere of the data holds too many index triples: completeness not counted)\n";
  if (red.satellites > 0) s += "  Completeness counts the reflections of the lattice only, not the satellites.\n";
  return s;
}

std::string int_text(const std::string& source, const Reduction& red) {
  std::string s;
  s += "! Merged reflections from " + source + "\n";
  s += "! Layout (3I5,F14.3,F12.3,I5,I4): h k l, I, sigma(I), observations merged, satellite\n";
  s += "! (0: the reflection h k l itself; +1: h k l + k; -1: h k l - k)\n";
  s.reserve(s.size() + red.merged.size() * 56);
  char buf[128];
  for (const Merged& m : red.merged) {
    const int n = std::snprintf(buf, sizeof buf, "%5d%5d%5d%14.3f%12.3f%5d%4d\n", m.hkl[0], m.hkl[1], m.hkl[2],
                                m.intensity, m.sigma, m.n, m.satellite);
    s.append(buf, static_cast<std::size_t>(n));
  }
  return s;
}

std::string rej_text(const std::string& source, const ReadResult& read, const Reduction* red) {
  std::string s = "! Lines of " + source + " that were not used, with the reason.\n";
  if (!read.problem.empty()) s += "! " + read.problem + "\n";
  auto add = [&](const RejectedLine& r) { s += printf_text("line %7ld: ", r.line) + r.reason + ": " + r.text + "\n"; };
  // Both lists are in line order; the file is too.
  std::size_t i = 0, j = 0;
  const std::size_t nj = red ? red->rejected.size() : 0;
  while (i < read.rejected.size() || j < nj) {
    if (j >= nj || (i < read.rejected.size() && read.rejected[i].line <= red->rejected[j].line))
      add(read.rejected[i++]);
    else
      add(red->rejected[j++]);
  }
  return s;
}

}  // namespace stand_in
